// Settling whitespace and delimiters once all options are in, the stop
// strings of the read, and the check that "TreatAsEmpty" holds no number.
#include <algorithm>

#include "arguments.h"
#include "character_set.h"
#include "textscan/number_lexer.h"
#include "textscan/options.h"

namespace textscan {

namespace {

constexpr char16_t kSpaceChar = u' ';

bool contains(const std::vector<ustring>& list, std::u16string_view s) {
  return std::find(list.begin(), list.end(), s) != list.end();
}

bool isWord(std::u16string_view text, std::u16string_view word) {
  return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                    [](char16_t a, char16_t b) { return foldAsciiCase(a) == foldAsciiCase(b); });
}

// True when `text`, apart from blanks around it, is one number, real or
// complex, other than the bare words Inf and NaN.
bool isNumberText(std::u16string_view text, const CharacterSet& blanks,
                  const NumberSyntax& syntax) {
  size_t first = 0;
  while (first < text.size() && blanks.contains(text[first])) ++first;
  std::u16string_view rest = text.substr(first);
  LexedNumber number = lexNumber(rest, syntax);
  if (number.form == NumberForm::None) return false;
  size_t end = number.length;
  while (end < rest.size() && blanks.contains(rest[end])) ++end;
  if (end != rest.size()) return false;
  // "Inf" and "NaN" as words of their own may well mark missing data; with
  // a sign or a unit letter they are plainly numbers.
  std::u16string_view numberText = rest.substr(0, number.length);
  return !isWord(numberText, kInfWord) && !isWord(numberText, kNaNWord);
}

}  // namespace

// The caller's whitespace gains a space unless it is empty or has one.
void Options::normaliseWhitespace() {
  if (whitespaceIsDefault) {
    whitespace = kDefaultWhitespace;
  } else if (!whitespace.empty()) {
    whitespaceHasSpace = whitespace.find(kSpaceChar) != ustring::npos;
    if (!whitespaceHasSpace) {
      whitespace.push_back(kSpaceChar);
      spaceAddedToWhitespace = true;
    }
  }
  spaceEndsQuotedField = delimiterIsDefault && whitespaceHasSpace;
}

// With no delimiter given, whitespace characters delimit fields too. A space
// that only this program added stays out when the format reads strings, so
// that a string field can hold spaces.
void Options::addWhitespaceToDelimiters() {
  if (!delimiterIsDefault) return;
  bool keepSpace = whitespaceIsDefault || whitespaceHasSpace ||
                   (spaceAddedToWhitespace && !formatHasStringFields);
  for (char16_t c : whitespace) {
    if (c == kSpaceChar && !keepSpace) continue;
    delimiters.emplace_back(1, c);
  }
}

// A character cannot be both: one that is also a one-character delimiter
// leaves the whitespace. When the caller set both, that is worth a warning.
void Options::removeDelimitersFromWhitespace() {
  CharacterSet singleDelimiters;
  for (const ustring& d : delimiters) {
    if (d.size() == 1) singleDelimiters.add(d[0]);
  }
  bool conflict = false;
  auto removed = std::remove_if(whitespace.begin(), whitespace.end(), [&](char16_t c) {
    if (!singleDelimiters.contains(c)) return false;
    if (!(c == kSpaceChar && spaceAddedToWhitespace)) conflict = true;
    return true;
  });
  whitespace.erase(removed, whitespace.end());
  if (conflict && !delimiterIsDefault && !whitespaceIsDefault) {
    kxWarningMsgId(kxMsg(kCatalog, "DelimiterSpaceConflict"));
  }
}

void Options::checkTreatAsEmpty() const {
  if (treatAsEmpty.empty()) return;
  CharacterSet blanks(whitespace);
  blanks.add(kSpaceChar);
  NumberSyntax syntax(expChars);
  for (const ustring& s : treatAsEmpty) {
    if (isNumberText(s, blanks, syntax)) raise("NumericInTreatAsEmpty");
  }
}

void prepareDelimitersForLineEnd(Options& options) {
  std::vector<ustring>& delimiters = options.delimiters;
  if (options.endOfLine == kCrLf && contains(delimiters, kLineFeed)) {
    delimiters.emplace_back(kCrLf);
    delimiters.emplace_back(kCarriageReturn);
  } else if (options.endOfLine == kCarriageReturn) {
    std::replace(delimiters.begin(), delimiters.end(), ustring(kLineFeed),
                 ustring(kCarriageReturn));
  }
}

void collectStopStrings(Options& options) {
  if (options.delimiterIsDefault && options.delimiters.empty() && options.whitespace.empty()) {
    return;
  }
  options.stopStrings = options.delimiters;
  for (char16_t c : options.endOfLine) options.stopStrings.emplace_back(1, c);
}

}  // namespace textscan
