// libFuzzer target for the encoding layer of file streams: random bytes
// read, and random UTF-16 written, in the encodings users meet.
//
// Checks, beyond the sanitizers:
//  - reading lines from a buffered file (the fast path over the C buffer),
//    the way fgets does (a line whole in the buffer made at once, else the
//    fast path), and from an unbuffered one (where nearly every character
//    takes the converter's path) gives the same lines, terminators and
//    error code, and the lines joined are the text one bulk read gives;
//  - writing a text in one call, or split in two at any unit (a surrogate
//    pair included), gives the same bytes (the same text, for encodings
//    with shift states), and every call reports all its units.
//
// Input: byte 0 picks the encoding, byte 1 the direction and the split;
// the rest is the bytes to read, or the UTF-16 units to write.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "fileio/attributes.h"
#include "fileio/file_stream.h"
#include "fileio/output_buffer.h"
#include "twhost/errors.h"
#include "twhost/kx_array.h"

namespace {

using namespace Tarnwicks::FileIO;

const char* const kEncodings[] = {"UTF-8",    "ISO-8859-1", "windows-1252", "Shift_JIS", "UTF-16LE",
                                  "UTF-16BE", "UTF-32LE",   "EUC-KR",       "GB18030",   "Big5",
                                  "KOI8-R",   "US-ASCII",   "ISO-2022-JP"};
constexpr size_t kEncodingCount = sizeof kEncodings / sizeof kEncodings[0];
constexpr size_t kStatefulEncoding = kEncodingCount - 1;
constexpr size_t kMaxLines = 4096;

void check(bool ok) {
  if (!ok) std::abort();
}

void ignoreWarning(const std::string&, const std::string&) {}

struct Reading {
  std::u16string text;  // every line, joined
  std::string terminators;
  int errorCode = 0;
};

// The ways lines are read.
enum class LineReader { kBuffered, kWholeFirst, kUnbuffered };

Reading readLines(const std::string& bytes, const char* encoding, LineReader how) {
  Reading r;
  FILE* f = fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "rb");
  if (how == LineReader::kUnbuffered) setvbuf(f, nullptr, _IONBF, 0);
  FilePermission p;
  {
    fileStream s(f, encoding, &p);
    for (size_t i = 0; i < kMaxLines; ++i) {
      int terminator = 0;
      kxOwned a(how == LineReader::kWholeFirst ? s.readWholeLine(-1, terminator) : nullptr);
      if (!a) {
        OutputBuffer line(kxCHAR_CLASS, 64, 64, 1024);
        terminator = s.readLine(-1, line);
        if (line.empty()) break;
        a.reset(line.toArray());
      }
      r.text += kxArrayToUString(a.get());
      r.terminators += char('0' + terminator);
    }
    r.errorCode = s.errorCode;
  }
  std::fclose(f);
  return r;
}

std::u16string readAll(const std::string& bytes, const char* encoding) {
  FILE* f = fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "rb");
  FilePermission p;
  std::u16string text(bytes.size() + 1, u'\0');
  size_t consumed = 0;
  {
    fileStream s(f, encoding, &p);
    text.resize(s.readChars(text.data(), text.size(), consumed));
  }
  std::fclose(f);
  return text;
}

std::string write(const std::u16string& text, const char* encoding, size_t split) {
  char* out = nullptr;
  size_t length = 0;
  FILE* f = open_memstream(&out, &length);
  FilePermission p("w", 0);
  {
    fileStream s(f, encoding, &p);
    check(s.writeChars(split, text.data()) == split);
    check(s.writeChars(text.size() - split, text.data() + split) == text.size() - split);
    s.finishText();
  }
  std::fclose(f);
  std::string bytes(out, length);
  std::free(out);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool quiet = (kxSetWarningHandler(ignoreWarning), true);
  (void)quiet;
  if (size < 2) return 0;
  const size_t which = data[0] % kEncodingCount;
  const char* encoding = kEncodings[which];
  const bool writing = (data[1] & 1) != 0;
  const std::string rest(reinterpret_cast<const char*>(data + 2), size - 2);
  if (!writing) {
    if (rest.empty()) return 0;
    const Reading fast = readLines(rest, encoding, LineReader::kBuffered);
    const Reading whole = readLines(rest, encoding, LineReader::kWholeFirst);
    const Reading slow = readLines(rest, encoding, LineReader::kUnbuffered);
    check(fast.text == slow.text && fast.terminators == slow.terminators &&
          fast.errorCode == slow.errorCode);
    check(whole.text == fast.text && whole.terminators == fast.terminators &&
          whole.errorCode == fast.errorCode);
    if (fast.terminators.size() < kMaxLines) check(fast.text == readAll(rest, encoding));
    return 0;
  }
  std::u16string text(rest.size() / 2, u'\0');
  std::memcpy(text.data(), rest.data(), text.size() * 2);
  if (text.empty()) return 0;
  const size_t split = (data[1] >> 1) % (text.size() + 1);
  const std::string whole = write(text, encoding, 0);
  const std::string parts = write(text, encoding, split);
  if (which == kStatefulEncoding) {
    check(readAll(whole, encoding) == readAll(parts, encoding));
  } else {
    check(whole == parts);
  }
  return 0;
}
