// TcodnStream: the text layer between bytes and UTF-16, on an ICU converter
// for any encoding that ICU can open.
//
// Reading decodes through the converter, with two rules of this system: a
// surrogate pair never arrives as a pair (unless the encoding is single-byte
// clean, a supplementary character becomes the one unit 26), and a pair split
// over two reads is dropped. Bad or truncated input never raises: ICU's own
// substitution stands in the text and errorCode takes the code of the fault
// (InvalidChar, TruncatedChar, IllegalChar ... UnknownError).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fileio/safe_sized_string.h"
#include "fileio/stream.h"

struct UConverter;

namespace Tarnwicks::FileIO {

// How a converter's bytes can be decoded without calling ICU per character:
// a table for single-byte encodings, plus the UTF-8 rules. Bytes the table
// marks `special` need care: a line terminator, the lead byte of a UTF-8
// sequence, or a byte only ICU can decode.
struct FastDecoder {
  enum Kind { kNone, kTable, kUtf8 };
  Kind kind = kNone;
  char16_t unit[256] = {};
  bool special[256] = {};
};

class TcodnStream : public stream {
 public:
  // `encoding` empty means the host's default character set. Raises
  // "KORVAN:iofun:InvalidEncoding" (or InvalidDefaultEncoding for the
  // default) with the name when ICU can't open it. Sets LC_NUMERIC to "C".
  explicit TcodnStream(const char* encoding);
  // Raises as the constructor would when ICU can't open `encoding`: the
  // check a caller makes before it touches anything it can't undo.
  static void requireConverter(const char* encoding);
  ~TcodnStream() override;

  // UTF-16 units out in the stream's encoding, through write(). "UTF-16"
  // passes the units through as they stand (machine order, no mark).
  // Returns the units consumed whose bytes all went out: every unit, unless
  // the write came short. A character the encoding lacks, or a lone
  // surrogate, goes out as the converter's substitute and sets errorCode
  // (InvalidChar, IllegalChar); what follows it is written all the same. A
  // lead surrogate at the end waits in the converter for its trail: the
  // next writeChars continues it, and finishText() ends it.
  size_t writeChars(size_t count, const char16_t* chars) override;
  // Ends a text write: a lead surrogate still waiting goes out as the
  // substitute, with its code. Called at the end of every writing call and
  // before any bytes that bypass the converter.
  void finishText();
  TcodnStream* textLayer() override { return this; }

  // The converter's canonical name as ICU gives it ("UTF-8",
  // "ibm-5348_P100-1997" for windows-1252).
  std::string encodingName() const;

  // Reads up to `count` UTF-16 units; `bytesConsumed` gets the bytes taken
  // from read(). Returns the units stored (fewer at end of input).
  size_t readChars(char16_t* buffer, size_t count, size_t& bytesConsumed);
  // Skips white space (twu_isspace) and gives back the bytes of the first
  // character that is not.
  void skipWhite();
  // fread of char: `n` units into a char OutputBuffer; stops as soon as one
  // pass gives fewer units than it asked for. Returns units read.
  size_t readCharsCount(OutputBuffer& buffer, size_t n);
  // The same to the end of input, in growing blocks.
  size_t readCharsToEnd(OutputBuffer& buffer);
  // fscanf's %s: up to `maxChars` (-1: no limit) units that are not white
  // space; the white space that ends the word is given back. Returns units.
  size_t readWord(OutputBuffer& buffer, int64_t maxChars);

  bool singleByteClean() const { return isSingleByteClean; }
  bool utf16() const { return isUtf16; }
  bool usedDefaultEncoding() const { return usedDefault; }
  const FastDecoder& fastDecoder() const { return fast; }

  // Turns an ICU status into errorCode, positive statuses only:
  // U_INVALID_CHAR_FOUND InvalidChar, U_TRUNCATED_CHAR_FOUND TruncatedChar,
  // U_ILLEGAL_CHAR_FOUND IllegalChar, U_INVALID_TABLE_FORMAT
  // InvalidTableFormat, U_BUFFER_OVERFLOW_ERROR BufferOverflow, any other
  // UnknownError.
  void recordStatus(int status);
  static int codeOfStatus(int status);
  // Status that ICU's default substitution saw, kept by our callbacks.
  int pendingStatus = 0;

 protected:
  // Whether the converter holds part of a character from an earlier read.
  bool converterHoldsBytes() const;
  // Decodes exactly one character (one or more units) from read(), the slow
  // way; `unitsOut` gets the units (at most 2 are kept). Returns the count of
  // units, 0 at end of input.
  size_t readOneChar(char16_t* unitsOut, size_t& bytesConsumed);
  // A copy of the decoder's state, for a reader that looks at a character
  // and gives it back (null when it can't be had: the reader then gives back
  // only the bytes). restoreDecoder puts the copy in place of the decoder;
  // dropSavedDecoder discards it. Both take null. Cost: one allocation.
  UConverter* saveDecoder() const;
  void restoreDecoder(UConverter* saved);
  static void dropSavedDecoder(UConverter* saved);

  UConverter* converter = nullptr;
  SafeSizedStringT<char> inBytes;
  size_t inUsed = 0;  // bytes of inBytes already handed to the converter
  SafeSizedStringT<char16_t> wideWork;
  bool isSingleByteClean = false;
  bool isUtf16 = false;
  SafeSizedStringT<char> outBytes;
  std::vector<int32_t> outOffsets;   // for each byte of outBytes, its unit
  bool textPending = false;          // a lead surrogate or a shift state to end
  bool statefulEncoding = false;     // shift states, ended by finishText()
  bool writesByteOrderMark = false;  // "UTF-32", "UTF-16,version=1": a mark first
  SafeSizedStringT<char16_t> wideOut;
  bool usedDefault = false;
  FastDecoder fast;
};

}  // namespace Tarnwicks::FileIO
