// TcodnStream: decoding and encoding through ICU converters.
#include "fileio/tcodn_stream.h"

#include <strings.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <clocale>
#include <cstring>
#include <string>
#include <unordered_map>

#include "fileio/output_buffer.h"
#include "twhost/errors.h"
#include "twhost/text.h"

namespace Tarnwicks::FileIO {

namespace {

// The substitution stays ICU's own; these callbacks only keep the status
// that the default substitution would hide, so that a bad or unmappable
// character reaches errorCode (InvalidChar, TruncatedChar, IllegalChar)
// while the text goes on.
void U_CALLCONV recordToUnicode(const void* context, UConverterToUnicodeArgs* args,
                                const char* codeUnits, int32_t length,
                                UConverterCallbackReason reason, UErrorCode* err) {
  if (reason <= UCNV_IRREGULAR && U_FAILURE(*err)) {
    static_cast<TcodnStream*>(const_cast<void*>(context))->pendingStatus = *err;
  }
  UCNV_TO_U_CALLBACK_SUBSTITUTE(nullptr, args, codeUnits, length, reason, err);
}

void U_CALLCONV recordFromUnicode(const void* context, UConverterFromUnicodeArgs* args,
                                  const UChar* codeUnits, int32_t length, UChar32 codePoint,
                                  UConverterCallbackReason reason, UErrorCode* err) {
  if (reason <= UCNV_IRREGULAR && U_FAILURE(*err)) {
    static_cast<TcodnStream*>(const_cast<void*>(context))->pendingStatus = *err;
  }
  UCNV_FROM_U_CALLBACK_SUBSTITUTE(nullptr, args, codeUnits, length, codePoint, reason, err);
}

bool isHighSurrogate(char16_t u) {
  return (u & 0xFC00) == 0xD800;
}
bool isLowSurrogate(char16_t u) {
  return (u & 0xFC00) == 0xDC00;
}

// The decoding table of a single-byte converter, probed byte by byte with
// a converter that stops at anything it can't map cleanly; those bytes are
// left to ICU at read time. Probing costs 256 conversions, so each table is
// made once per encoding and kept for the life of the process.
void probeTable(const char* name, FastDecoder& fast) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* probe = ucnv_open(name, &status);
  if (U_FAILURE(status)) return;
  ucnv_setToUCallBack(probe, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  for (int b = 0; b < 256; ++b) {
    char byte = static_cast<char>(b);
    const char* src = &byte;
    UChar out[4];
    UChar* target = out;
    status = U_ZERO_ERROR;
    ucnv_resetToUnicode(probe);
    ucnv_toUnicode(probe, &target, out + 4, &src, &byte + 1, nullptr, true, &status);
    bool clean = U_SUCCESS(status) && target - out == 1 && (out[0] & 0xF800) != 0xD800;
    fast.unit[b] = clean ? out[0] : 0;
    fast.special[b] = !clean || out[0] == u'\n' || out[0] == u'\r';
  }
  ucnv_close(probe);
  fast.kind = FastDecoder::kTable;
}

void buildTable(const char* name, FastDecoder& fast) {
  static std::unordered_map<std::string, FastDecoder> tables;
  auto it = tables.find(name);
  if (it == tables.end()) {
    FastDecoder made;
    probeTable(name, made);
    it = tables.emplace(name, made).first;
  }
  fast = it->second;
}

void buildUtf8(FastDecoder& fast) {
  for (int b = 0; b < 256; ++b) {
    fast.unit[b] = b < 0x80 ? char16_t(b) : 0;
    fast.special[b] = b >= 0x80 || b == '\n' || b == '\r';
  }
  fast.kind = FastDecoder::kUtf8;
}

}  // namespace

namespace {

// The converter of `encoding` ("" or null: the host's default). Raises
// InvalidEncoding, or InvalidDefaultEncoding for the default, with the name
// when ICU can't open it.
UConverter* openConverter(const char* encoding, bool& usedDefault) {
  const char* name = encoding;
  usedDefault = name == nullptr || *name == '\0';
  if (usedDefault) name = svGetDefaultCharacterSet();
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open(name, &status);
  if (status > U_ZERO_ERROR) {
    if (converter) ucnv_close(converter);
    kxThrowId("KORVAN:iofun", usedDefault ? "InvalidDefaultEncoding" : "InvalidEncoding",
              std::string(name));
  }
  return converter;
}

}  // namespace

void TcodnStream::requireConverter(const char* encoding) {
  bool usedDefault = false;
  ucnv_close(openConverter(encoding, usedDefault));
}

TcodnStream::TcodnStream(const char* encoding) : inBytes(2) {
  setlocale(LC_NUMERIC, "C");
  converter = openConverter(encoding, usedDefault);
  UErrorCode status = U_ZERO_ERROR;
  const char* canonical = ucnv_getName(converter, &status);
  if (U_FAILURE(status) || canonical == nullptr) canonical = "";
  // Encodings in which every byte sequence stands for itself once decoded
  // keep their surrogates; all others lose supplementary characters (26).
  isSingleByteClean = strcasecmp(canonical, "ibm-5348_P100-1997") == 0 ||
                      strcasecmp(canonical, "ibm-943_P15A-2003") == 0 ||
                      strcasecmp(canonical, "ISO-8859-1") == 0 ||
                      strcasecmp(canonical, "US-ASCII") == 0;
  isUtf16 = strcasecmp(canonical, "UTF-16") == 0;

  status = U_ZERO_ERROR;
  ucnv_setToUCallBack(converter, recordToUnicode, this, nullptr, nullptr, &status);
  ucnv_setFromUCallBack(converter, recordFromUnicode, this, nullptr, nullptr, &status);

  // The Unicode forms that choose their byte order write a mark first.
  writesByteOrderMark =
      ucnv_getType(converter) == UCNV_UTF16 || ucnv_getType(converter) == UCNV_UTF32;
  switch (ucnv_getType(converter)) {
    case UCNV_ISO_2022:
    case UCNV_EBCDIC_STATEFUL:
    case UCNV_HZ:
    case UCNV_SCSU:
    case UCNV_BOCU1:
    case UCNV_UTF7:
    case UCNV_IMAP_MAILBOX:
    case UCNV_LMBCS_1:
      statefulEncoding = true;
      break;
    default:
      statefulEncoding = false;
  }

  if (strcasecmp(canonical, "UTF-8") == 0) {
    buildUtf8(fast);
  } else if (ucnv_getMaxCharSize(converter) == 1) {
    UConverterType type = ucnv_getType(converter);
    if (type == UCNV_SBCS || type == UCNV_LATIN_1 || type == UCNV_US_ASCII) {
      buildTable(canonical, fast);
    }
  }
}

TcodnStream::~TcodnStream() {
  if (converter) ucnv_close(converter);
}

std::string TcodnStream::encodingName() const {
  UErrorCode status = U_ZERO_ERROR;
  const char* name = converter ? ucnv_getName(converter, &status) : nullptr;
  return U_SUCCESS(status) && name ? std::string(name) : std::string();
}

int TcodnStream::codeOfStatus(int status) {
  if (status <= 0) return 0;
  switch (status) {
    case U_INVALID_CHAR_FOUND:
      return code(StreamError::InvalidChar);
    case U_TRUNCATED_CHAR_FOUND:
      return code(StreamError::TruncatedChar);
    case U_ILLEGAL_CHAR_FOUND:
      return code(StreamError::IllegalChar);
    case U_INVALID_TABLE_FORMAT:
      return code(StreamError::InvalidTableFormat);
    case U_BUFFER_OVERFLOW_ERROR:
      return code(StreamError::BufferOverflow);
    default:
      return code(StreamError::UnknownError);
  }
}

void TcodnStream::recordStatus(int status) {
  if (int code = codeOfStatus(status)) errorCode = code;
}

bool TcodnStream::converterHoldsBytes() const {
  UErrorCode status = U_ZERO_ERROR;
  return ucnv_toUCountPending(converter, &status) > 0 || inUsed < inBytes.length;
}

size_t TcodnStream::readChars(char16_t* buffer, size_t count, size_t& bytesConsumed) {
  bytesConsumed = 0;
  if (count == 0) return 0;
  size_t total = 0;
  bool endOfInput = false;
  int decodeCode = 0;  // reapplied at the end: the end of input clears errorCode
  for (;;) {
    if (inUsed >= inBytes.length) {
      // Never read ahead of what `count` units can need.
      size_t want = std::min<size_t>(count - total, 0x7fffffff);
      inBytes.reserve(want);
      size_t got = read(want, inBytes.data, 1);
      inBytes.length = got;
      inUsed = 0;
      if (got == 0) endOfInput = true;
      bytesConsumed += got;
    }
    UChar* start = reinterpret_cast<UChar*>(buffer + total);
    UChar* target = start;
    const char* source = inBytes.data + inUsed;
    UErrorCode status = U_ZERO_ERROR;
    pendingStatus = 0;
    ucnv_toUnicode(converter, &target, reinterpret_cast<UChar*>(buffer + count), &source,
                   inBytes.data + inBytes.length, nullptr, endOfInput, &status);
    inUsed = static_cast<size_t>(source - inBytes.data);
    size_t produced = static_cast<size_t>(target - start);
    char16_t* units = buffer + total;
    if (produced > 0 && isHighSurrogate(units[produced - 1])) {
      // A pair split over two calls is not kept: its second half goes.
      ucnv_resetToUnicode(converter);
    }
    if (!isSingleByteClean) {
      char16_t* end = std::remove_if(units, units + produced, isLowSurrogate);
      produced = static_cast<size_t>(end - units);
      std::replace_if(units, units + produced, isHighSurrogate, char16_t(26));
    }
    // A full target is how ICU says it stopped early; it is no error here.
    if (status == U_BUFFER_OVERFLOW_ERROR) status = U_ZERO_ERROR;
    if (int code = codeOfStatus(pendingStatus)) decodeCode = code;
    if (int code = codeOfStatus(status)) decodeCode = code;
    total += produced;
    if ((produced == 0 && endOfInput) || total >= count) break;
  }
  // Bytes read but not decoded (the converter stopped at a full target) go
  // back to the medium, so that its position is always where decoding stands.
  if (size_t leftover = inBytes.length - inUsed) {
    unread(static_cast<int64_t>(leftover));
    bytesConsumed -= std::min(bytesConsumed, leftover);
  }
  inBytes.length = inUsed = 0;
  if (decodeCode) errorCode = decodeCode;
  return total;
}

size_t TcodnStream::readOneChar(char16_t* unitsOut, size_t& bytesConsumed) {
  return readChars(unitsOut, 1, bytesConsumed);
}

UConverter* TcodnStream::saveDecoder() const {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* copy = ucnv_clone(converter, &status);
  if (U_FAILURE(status)) {
    if (copy) ucnv_close(copy);
    return nullptr;
  }
  return copy;
}

void TcodnStream::restoreDecoder(UConverter* saved) {
  if (saved == nullptr) return;
  // The copy has the callbacks with this stream as their context, and the
  // encoder's state as it was, which no read changes.
  ucnv_close(converter);
  converter = saved;
}

void TcodnStream::dropSavedDecoder(UConverter* saved) {
  if (saved) ucnv_close(saved);
}

void TcodnStream::skipWhite() {
  char16_t c;
  size_t bytes = 0;
  while (readChars(&c, 1, bytes) == 1) {
    if (!twu_isspace(c)) {
      unread(static_cast<int64_t>(bytes));
      return;
    }
  }
}

size_t TcodnStream::readCharsCount(OutputBuffer& buffer, size_t n) {
  size_t got = 0;
  while (got < n) {
    size_t want = n - got;
    auto* room = static_cast<char16_t*>(buffer.reserve(want));
    size_t bytes = 0;
    size_t came = readChars(room, want, bytes);
    buffer.commit(came);
    got += came;
    if (came < want) break;
  }
  return got;
}

// Each block is one readCharsCount of the block's size; a block that comes
// back short is the end of input.
size_t TcodnStream::readCharsToEnd(OutputBuffer& buffer) {
  size_t got = 0;
  for (;;) {
    buffer.grow();
    size_t want = buffer.getBlockSize();
    size_t came = readCharsCount(buffer, want);
    got += came;
    if (came < want) return got;
  }
}

size_t TcodnStream::readWord(OutputBuffer& buffer, int64_t maxChars) {
  size_t got = 0;
  char16_t c;
  size_t bytes = 0;
  while ((maxChars < 0 || int64_t(got) < maxChars) && readChars(&c, 1, bytes) == 1) {
    if (twu_isspace(c)) {
      unread(static_cast<int64_t>(bytes));
      break;
    }
    buffer.push(&c);
    ++got;
  }
  return got;
}

size_t TcodnStream::writeChars(size_t count, const char16_t* chars) {
  if (chars == nullptr || count == 0) return 0;
  if (isUtf16) return write(count, chars, 2);
  // A lead surrogate that the converter kept from the last call continues
  // here; it is no longer waiting for the end of the write.
  textPending = false;
  // Nothing is flushed here: a lead surrogate at the end stays in the
  // converter for a trail that the next call may bring, and a stateful
  // encoding keeps its shift state, so that consecutive texts need no
  // escape sequences between them. finishText() ends both, before bytes
  // that bypass the converter (numbers) and at the end of the call.
  const size_t maxSize = static_cast<size_t>(ucnv_getMaxCharSize(converter));
  const size_t room = maxSize * (count + 10);
  outBytes.reserve(room);
  if (outOffsets.size() < outBytes.capacity) outOffsets.resize(outBytes.capacity);
  char* target = outBytes.data;
  char* const targetEnd = outBytes.data + outBytes.capacity;
  int32_t* offsets = outOffsets.data();
  const UChar* const sourceStart = reinterpret_cast<const UChar*>(chars);
  const UChar* source = sourceStart;
  const UChar* const sourceEnd = source + count;
  UErrorCode status = U_ZERO_ERROR;
  pendingStatus = 0;
  // ICU takes the target's length as a 32-bit count: huge texts go in spans.
  // Offsets count from the source of each call; they are made absolute.
  auto convert = [&](char* limit) {
    char* from = target;
    const UChar* base = source;
    ucnv_fromUnicode(converter, &target, limit, &source, sourceEnd, offsets, false, &status);
    for (char* p = from; p < target; ++p, ++offsets) {
      if (*offsets >= 0) *offsets += static_cast<int32_t>(base - sourceStart);
    }
  };
  constexpr size_t kSpan = 0x7fffffff;
  while (size_t(targetEnd - target) >= kSpan + 1 && source < sourceEnd && U_SUCCESS(status)) {
    convert(target + kSpan);
    if (status == U_BUFFER_OVERFLOW_ERROR) status = U_ZERO_ERROR;
  }
  if (U_SUCCESS(status)) convert(targetEnd);
  const size_t bytes = static_cast<size_t>(target - outBytes.data);
  const size_t written = bytes ? write(bytes, outBytes.data, 1) : 0;
  recordStatus(pendingStatus);
  recordStatus(status);
  UErrorCode pendingCheck = U_ZERO_ERROR;
  textPending = statefulEncoding || ucnv_fromUCountPending(converter, &pendingCheck) > 0;
  const size_t consumed = static_cast<size_t>(source - sourceStart);
  if (written == bytes) return consumed;
  // The units whose bytes all went out: those before the unit of the first
  // byte that did not. A byte of a character held from an earlier call
  // (offset -1) means none of this call's did.
  const int32_t first = outOffsets[written];
  return first > 0 ? static_cast<size_t>(first) : 0;
}

void TcodnStream::finishText() {
  if (!textPending || isUtf16) return;
  textPending = false;
  char bytes[32];
  char* target = bytes;
  const UChar* source = nullptr;
  UErrorCode status = U_ZERO_ERROR;
  pendingStatus = 0;
  ucnv_fromUnicode(converter, &target, bytes + sizeof bytes, &source, source, nullptr, true,
                   &status);
  if (target > bytes) write(static_cast<size_t>(target - bytes), bytes, 1);
  // Ending the text reset the encoder, and an encoder that begins with a
  // byte-order mark would now write a second one in the middle of the
  // file. A character converted and thrown away puts it past its mark.
  if (writesByteOrderMark) {
    char scratch[16];
    char* t = scratch;
    const UChar plain = u'A';
    const UChar* from = &plain;
    UErrorCode ignored = U_ZERO_ERROR;
    ucnv_fromUnicode(converter, &t, scratch + sizeof scratch, &from, from + 1, nullptr, false,
                     &ignored);
  }
  // What waited was a lead surrogate without its trail: ill-formed text,
  // which ICU reports as cut short.
  if (pendingStatus == U_TRUNCATED_CHAR_FOUND) pendingStatus = U_ILLEGAL_CHAR_FOUND;
  if (status == U_TRUNCATED_CHAR_FOUND) status = U_ILLEGAL_CHAR_FOUND;
  recordStatus(pendingStatus);
  recordStatus(status);
}

}  // namespace Tarnwicks::FileIO
