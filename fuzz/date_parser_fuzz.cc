// libFuzzer target for the date parser: random patterns and random field
// texts, and random fields for both date paths.
//
// Beyond the sanitizers it checks that the two paths agree:
// - whenever the fast path claims a value, ICU reads the same text to the
//   same bits, and recognises it;
// - the parser's answer (fast path first) equals ICU's alone, flag and bits;
// - the byte form of the fast path reads ASCII text as the UTF-16 form does.
// A pattern the parser refuses must be refused with an identifier, never
// with anything else.
//
// Input: byte 0 chooses the mode. Even: the rest up to the first byte 0xFF
// is a pattern over kPatternAlphabet, and what follows is the text. Odd:
// byte 1 picks one of the patterns the fast path takes, and the rest is the
// text, over kTextAlphabet. Bytes of an alphabet stand for themselves.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "datetime/date_parser.h"
#include "twhost/errors.h"

namespace {

using datetime::datetimeICUParser;
using datetime::DateValue;

const char16_t kPatternAlphabet[] = u"yyyyMMMddHHmmssSSSSaEhkKLuDG'-/:. T,xZ";
const char16_t kTextAlphabet[] = u"0123456789-/:. T\tZ+,aAPMJanNTIfE\u0663\u00a0";
const char16_t* const kFastPatterns[] = {u"yyyy-MM-dd HH:mm:ss.SSS",
                                         u"yyyy-MM-dd'T'HH:mm:ss",
                                         u"yyyy-MM-dd HH:mm:ss.SSSSSS",
                                         u"dd/MM/yyyy",
                                         u"M/d/yy",
                                         u"d.M.y HH:mm",
                                         u"yyyyMMdd",
                                         u"yyMMddHHmmss",
                                         u"HH:mm:ss.S",
                                         u"yyyy-MM-dd HH:mm:ss.SSSSSSSSS"};

[[noreturn]] void fault(const char* what, const std::u16string& pattern,
                        const std::u16string& text) {
  std::string p(pattern.begin(), pattern.end()), t(text.begin(), text.end());
  fprintf(stderr, "date_parser_fuzz: %s; pattern \"%s\", text \"%s\"\n", what, p.c_str(),
          t.c_str());
  std::abort();
}

// A byte that is itself in the alphabet stands for itself, so that seeds and
// dictionaries can be written as text; any other byte picks a unit.
std::u16string mapped(const uint8_t* data, size_t size, const char16_t* alphabet, size_t count) {
  std::u16string out;
  for (size_t i = 0; i < size; ++i) {
    bool itself = std::char_traits<char16_t>::find(alphabet, count, data[i]) != nullptr;
    out += itself ? static_cast<char16_t>(data[i]) : alphabet[data[i] % count];
  }
  return out;
}

bool sameBits(DateValue a, DateValue b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

bool isAscii(const std::u16string& s) {
  for (char16_t c : s) {
    if (c > 0x7F) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  std::u16string pattern;
  const uint8_t* rest = data + 1;
  size_t restSize = size - 1;
  if (data[0] % 2 == 0) {
    const uint8_t* split = static_cast<const uint8_t*>(std::memchr(rest, 0xFF, restSize));
    size_t patternSize = split ? static_cast<size_t>(split - rest) : restSize;
    pattern = mapped(rest, patternSize, kPatternAlphabet, std::size(kPatternAlphabet) - 1);
    rest += split ? patternSize + 1 : patternSize;
    restSize -= split ? patternSize + 1 : patternSize;
  } else {
    pattern = kFastPatterns[data[1] % std::size(kFastPatterns)];
    ++rest;
    --restSize;
  }
  std::u16string text = mapped(rest, restSize, kTextAlphabet, std::size(kTextAlphabet) - 1);
  try {
    datetimeICUParser parser(pattern, std::string("en_US"));
    DateValue fast, icu, both;
    bool claimed = parser.parseFast(text.data(), text.size(), fast);
    bool recognised = parser.parseDateTextWithICU(text, icu);
    if (claimed && !recognised) fault("fast path read what ICU refuses", pattern, text);
    if (claimed && !sameBits(fast, icu)) fault("fast path and ICU disagree", pattern, text);
    bool answer = parser.parseDateText(text, both);
    if (answer != recognised || !sameBits(both, icu)) fault("parser and ICU differ", pattern, text);
    if (isAscii(text)) {
      std::string bytes(text.begin(), text.end());
      DateValue narrow;
      bool narrowClaimed = parser.parseFast(bytes.data(), bytes.size(), narrow);
      if (narrowClaimed != claimed || (claimed && !sameBits(narrow, fast))) {
        fault("byte and UTF-16 fast paths differ", pattern, text);
      }
    }
  } catch (const fl::except::IUserException& e) {
    if (e.get_error_id().rfind("KORVAN:datetime:", 0) != 0)
      fault("unexpected error", pattern, text);
  }
  return 0;
}
