// fileStream::readLine: one line, terminator included.
//
// The rule is character by character through the decoder. For UTF-8 and
// single-byte encodings the same result comes far faster by scanning
// the bytes the C stream has already buffered: runs of plain characters are
// widened straight into the OutputBuffer, and only terminators, multi-byte
// UTF-8 sequences and bytes the decoding table can't map take a closer look.
// Anything unusual (a bad sequence, a character split by the end of the C
// buffer, a decoder holding part of a character) hands the rest of the line
// to the character-at-a-time reader, so both paths agree exactly.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "c_file_buffer.h"
#include "fileio/file_stream.h"
#include "fileio/output_buffer.h"

namespace Tarnwicks::FileIO {

namespace {

bool isTerminator(char16_t c) {
  return c == u'\n' || c == u'\r';
}

// A well-formed UTF-8 sequence of 2 to 4 bytes at p, entirely before e:
// its length and the unit it stands for (26 for a supplementary character,
// which the surrogate rule turns into that one unit). 0 when it is anything
// else, which only the converter may decide.
int decodeUtf8(const unsigned char* p, const unsigned char* e, char16_t& unit) {
  auto cont = [](unsigned char b) { return (b & 0xC0) == 0x80; };
  unsigned char b0 = p[0];
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    if (e - p < 2 || !cont(p[1])) return 0;
    unit = char16_t(((b0 & 0x1F) << 6) | (p[1] & 0x3F));
    return 2;
  }
  if (b0 >= 0xE0 && b0 <= 0xEF) {
    if (e - p < 3 || !cont(p[1]) || !cont(p[2])) return 0;
    if (b0 == 0xE0 && p[1] < 0xA0) return 0;   // overlong
    if (b0 == 0xED && p[1] >= 0xA0) return 0;  // a surrogate
    unit = char16_t(((b0 & 0x0F) << 12) | ((p[1] & 0x3F) << 6) | (p[2] & 0x3F));
    return 3;
  }
  if (b0 >= 0xF0 && b0 <= 0xF4) {
    if (e - p < 4 || !cont(p[1]) || !cont(p[2]) || !cont(p[3])) return 0;
    if (b0 == 0xF0 && p[1] < 0x90) return 0;   // overlong
    if (b0 == 0xF4 && p[1] >= 0x90) return 0;  // beyond U+10FFFF
    unit = 26;
    return 4;
  }
  return 0;
}

// The length of the run of plain ASCII at p (no CR, LF or byte above 0x7F),
// at most n: sixteen bytes a step where the machine allows.
size_t asciiRun(const unsigned char* p, size_t n) {
  size_t k = 0;
#if defined(__SSE2__)
  const __m128i cr = _mm_set1_epi8('\r');
  const __m128i lf = _mm_set1_epi8('\n');
  for (; k + 16 <= n; k += 16) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + k));
    __m128i stop = _mm_or_si128(_mm_cmpeq_epi8(v, cr), _mm_cmpeq_epi8(v, lf));
    int mask = _mm_movemask_epi8(stop) | _mm_movemask_epi8(v);  // high bit: not ASCII
    if (mask != 0) return k + static_cast<size_t>(__builtin_ctz(static_cast<unsigned>(mask)));
  }
#endif
  while (k < n && p[k] < 0x80 && p[k] != '\r' && p[k] != '\n') ++k;
  return k;
}

// Widens n ASCII bytes to UTF-16 units.
void widenAscii(const unsigned char* p, size_t n, char16_t* dst) {
  size_t i = 0;
#if defined(__SSE2__)
  const __m128i zero = _mm_setzero_si128();
  for (; i + 16 <= n; i += 16) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), _mm_unpacklo_epi8(v, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i + 8), _mm_unpackhi_epi8(v, zero));
  }
#endif
  for (; i < n; ++i) dst[i] = p[i];
}

// The length of the run at p (at most n bytes) that the table decodes
// one byte to one unit, with no terminator among them.
size_t tableRun(const FastDecoder& fast, const unsigned char* p, size_t n) {
  size_t k = 0;
  while (k < n && !fast.special[p[k]]) ++k;
  return k;
}

}  // namespace

kxArray* fileStream::readWholeLine(int64_t limit, int& terminator) {
  if (!kHaveBufferAccess || fast.kind == FastDecoder::kNone) return nullptr;
  BufferedBytes in{file};
  const unsigned char* p = in.begin();
  const unsigned char* e = in.end();
  const size_t have = static_cast<size_t>(e - p);
  // Cheapest test first: a decoder holding bytes means the line began in an
  // earlier read, which only the general reader continues.
  if (have < 2 || inUsed < inBytes.length) return nullptr;
  const size_t k = fast.kind == FastDecoder::kUtf8 ? asciiRun(p, have) : tableRun(fast, p, have);
  // The line must end inside the buffer, at a terminator whose follower is
  // there too, so that a pair is told from a single terminator without a
  // refill.
  if (k + 1 >= have) return nullptr;
  const char16_t u = fast.unit[p[k]];
  if (!fast.special[p[k]] || !isTerminator(u)) return nullptr;
  const unsigned char b2 = p[k + 1];
  const char16_t u2 = fast.unit[b2];
  int term = 1;
  if (fast.special[b2]) {
    if (isTerminator(u2) && u2 != u) {
      term = 2;
    } else if (!isTerminator(u2)) {
      // A byte only the decoder can judge: the general reader looks at it.
      return nullptr;
    }
  }
  const size_t n = k + static_cast<size_t>(term);
  if (limit != -1 && static_cast<uint64_t>(limit) < n) return nullptr;
  if (converterHoldsBytes()) return nullptr;
  kxArray* line = kxCreateUninitNumericMatrix(1, n, kxCHAR_CLASS, kxREAL);
  char16_t* dst = kxGetChars(line);
  if (fast.kind == FastDecoder::kUtf8) {
    widenAscii(p, n, dst);
  } else {
    for (size_t i = 0; i < n; ++i) dst[i] = fast.unit[p[i]];
  }
  lastByte = p[n - 1];
  in.consume(p + n);
  // Only the end of the buffer can be the end of the file.
  if (p + n == e) peek();
  terminator = term;
  return line;
}

int fileStream::readLine(int64_t limit, OutputBuffer& buffer) {
  if (limit != -1 && limit < 1) return 0;
  if (!kHaveBufferAccess || fast.kind == FastDecoder::kNone || converterHoldsBytes()) {
    return readLineSlow(limit, buffer, 0, 0, 0);
  }
  BufferedBytes in{file};
  int64_t count = 0;
  for (;;) {
    const unsigned char* p = in.begin();
    const unsigned char* e = in.end();
    if (p == e) {
      beforeRefill();
      errno = 0;
      if (!in.refill()) {
        // As a short read would: the end of the file, or an error.
        recordReadState();
        return 0;
      }
      continue;
    }
    // A run of plain characters, measured first so that the buffer holds
    // exactly the line, then widened straight into it.
    size_t room = static_cast<size_t>(e - p);
    if (limit != -1) room = std::min<size_t>(room, static_cast<size_t>(limit - count));
    size_t k = 0;
    if (fast.kind == FastDecoder::kUtf8) {
      k = asciiRun(p, room);
    } else {
      while (k < room && !fast.special[p[k]]) ++k;
    }
    if (k) {
      size_t want = k;
      auto* dst = static_cast<char16_t*>(buffer.reserve(want));
      if (fast.kind == FastDecoder::kUtf8) {
        widenAscii(p, k, dst);
      } else {
        for (size_t i = 0; i < k; ++i) dst[i] = fast.unit[p[i]];
      }
      p += k;
      count += static_cast<int64_t>(k);
      lastByte = p[-1];
      in.consume(p);
      if (limit != -1 && count >= limit) {
        if (p == e) peek();
        return 0;
      }
      if (p == e) continue;
    }

    const unsigned char b = *p;
    const char16_t u = fast.unit[b];
    if (isTerminator(u)) {
      buffer.push(&u);
      ++count;
      lastByte = b;
      in.consume(p + 1);
      if (limit != -1 && count >= limit) {
        peek();
        return 1;
      }
      // CR LF and LF CR are one terminator.
      if (in.begin() == in.end()) {
        beforeRefill();
        errno = 0;
        if (!in.refill()) {
          recordReadState();  // as the read of the next character would
          return 1;
        }
      }
      const unsigned char b2 = *in.begin();
      const char16_t u2 = fast.unit[b2];
      if (isTerminator(u2) && u2 != u && fast.special[b2]) {
        buffer.push(&u2);
        lastByte = b2;
        in.consume(in.begin() + 1);
        peek();
        return 2;
      }
      if (fast.special[b2]) {
        // Let the decoder look at the next character and give it back, as
        // the character-at-a-time reader does: a bad byte there records its
        // error now.
        char16_t next;
        size_t bytes = 0;
        UConverter* before = saveDecoder();
        if (readOneChar(&next, bytes) != 0) unread(static_cast<int64_t>(bytes));
        restoreDecoder(before);
        peek();
      }
      return 1;
    }
    if (fast.kind == FastDecoder::kUtf8 && b >= 0x80) {
      char16_t unit = 0;
      int len = decodeUtf8(p, e, unit);
      if (len > 0) {
        buffer.push(&unit);
        ++count;
        lastByte = p[len - 1];
        in.consume(p + len);
        if (limit != -1 && count >= limit) {
          peek();
          return 0;
        }
        continue;
      }
    }
    // Only the converter can say what comes next.
    return readLineSlow(limit, buffer, count, 0, 0);
  }
}

int fileStream::readLineSlow(int64_t limit, OutputBuffer& buffer, int64_t count, int terminator,
                             char16_t previous) {
  for (;;) {
    char16_t c = 0;
    size_t bytes = 0;
    // The character after a terminator is looked at and, unless it makes a
    // pair, given back; the decoder must then forget it too, or bytes it
    // took to judge a bad sequence would come out twice.
    UConverter* before = isTerminator(previous) ? saveDecoder() : nullptr;
    if (readOneChar(&c, bytes) == 0) {
      restoreDecoder(before);
      if (count > 0) peek();
      return terminator;
    }
    if (isTerminator(previous)) {
      if (isTerminator(c) && c != previous) {
        dropSavedDecoder(before);
        buffer.push(&c);
        peek();
        return 2;
      }
      unread(static_cast<int64_t>(bytes));
      restoreDecoder(before);
      peek();
      return 1;
    }
    buffer.push(&c);
    ++count;
    if (isTerminator(c)) {
      terminator = 1;
      previous = c;
    }
    if (limit != -1 && count >= limit) {
      peek();
      return terminator;
    }
  }
}

}  // namespace Tarnwicks::FileIO
