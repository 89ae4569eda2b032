// The option setters and their value checks. A setter either throws, or
// replaces what an earlier setting of the same option stored.
#include <algorithm>

#include "arguments.h"
#include "textscan/options.h"

namespace textscan {

namespace {

constexpr size_t kMaxCommentStrings = 2;

// A count option: a whole number, and not negative.
void checkCount(const kxArray* value, const char16_t* option, const char* negativeKey) {
  if (!isWholeNumber(value)) raise("NotAnIntegerValue", ustring(option));
  if (kxGetScalar(value) < 0) raise(negativeKey);
}

// The strings of a string argument or of a cell of them, as they are.
std::vector<ustring> stringsOf(const kxArray* value) {
  if (!kxIsCell(value)) return {matrix::get_ustring(value)};
  std::vector<ustring> strings;
  size_t n = kxGetNumberOfElements(value);
  strings.reserve(n);
  for (size_t i = 0; i < n; ++i) strings.push_back(matrix::get_ustring(kxGetCell(value, i)));
  return strings;
}

void requireString(const kxArray* value, const char16_t* option) {
  if (!isStringArgument(value)) raise("NotAString", ustring(option));
}

bool flagValue(const kxArray* value) {
  return kxGetScalar(value) != 0;
}

// A checked count; + 0.0 turns a given -0 into 0.
double countValue(const kxArray* value) {
  return kxGetScalar(value) + 0.0;
}

}  // namespace

template <>
void Validators::validate<InputParameter::CollectOutput>(const kxArray* value) {
  if (!isFlagScalar(value)) raise("NotNumericScalar", ustring(u"CollectOutput"));
}

template <>
void Validators::validate<InputParameter::ReturnOnError>(const kxArray* value) {
  if (!isFlagScalar(value)) raise("NotNumericScalar", ustring(u"ReturnOnError"));
}

// Refused under an identifier of its own, unlike its two neighbours.
template <>
void Validators::validate<InputParameter::MultipleDelimsAsOne>(const kxArray* value) {
  if (!isFlagScalar(value)) raise("NotAnIntegerValue", ustring(u"MultipleDelimsAsOne"));
}

template <>
void Validators::validate<InputParameter::CommentStyle>(const kxArray* value) {
  if (isStringArgument(value)) return;
  size_t n = kxIsCell(value) ? kxGetNumberOfElements(value) : 0;
  if (n == 0 || n > kMaxCommentStrings || !holdsOnlyStrings(value)) {
    raise("NonStringCellsInCommentStyle");
  }
}

template <>
void Validators::validate<InputParameter::Delimiter>(const kxArray* value) {
  if (isStringArgument(value)) return;
  if (kxIsCell(value) && kxIsEmpty(value)) raise("EmptyCellArrayInvalid", ustring(u"Delimiter"));
  if (!kxIsCell(value) || !holdsOnlyStrings(value)) {
    raise("NotAStringOrCellOfStrings", ustring(u"Delimiter"));
  }
}

template <>
void Validators::validate<InputParameter::TreatAsEmpty>(const kxArray* value) {
  if (kxIsCell(value)) {
    if (!holdsOnlyStrings(value)) raise("NonStringCellsInTreatAsEmpty");
  } else if (!isStringArgument(value)) {
    raise("NonStringsInTreatAsEmpty");
  }
}

template <>
void Validators::validate<InputParameter::HeaderColumns>(const kxArray* value) {
  checkCount(value, u"HeaderColumns", "LookforAndGetHeaderColumns");
}

template <>
void Validators::validate<InputParameter::HeaderLines>(const kxArray* value) {
  checkCount(value, u"HeaderLines", "LookforAndGetHeaderLines");
}

template <>
void Validators::validate<InputParameter::NumCharactersToSkip>(const kxArray* value) {
  checkCount(value, u"NumCharactersToSkip", "LookforAndGetNumCharactersToSkip");
}

void Options::setCollectOutput(const kxArray* value) {
  Validators::validate<InputParameter::CollectOutput>(value);
  collectOutput = flagValue(value);
}

void Options::setReturnOnError(const kxArray* value) {
  Validators::validate<InputParameter::ReturnOnError>(value);
  returnOnError = flagValue(value);
}

void Options::setMultipleDelimsAsOne(const kxArray* value) {
  Validators::validate<InputParameter::MultipleDelimsAsOne>(value);
  multipleDelimsAsOne = flagValue(value);
}

// Comment markers are taken as they are, without escapes.
void Options::setCommentStyle(const kxArray* value) {
  Validators::validate<InputParameter::CommentStyle>(value);
  commentStyle = stringsOf(value);
}

// A cell gives one delimiter per string, of any length; a string gives one
// per character.
void Options::setDelimiter(const kxArray* value) {
  Validators::validate<InputParameter::Delimiter>(value);
  const ustring label = u"Delimiter";
  std::vector<ustring> given;
  if (kxIsCell(value)) {
    for (ustring& s : stringsOf(value)) given.push_back(expandEscapeText(std::move(s), label));
  } else {
    for (char16_t c : expandEscapes(value, label)) given.emplace_back(1, c);
  }
  delimiters = std::move(given);
  delimiterIsDefault = false;
}

void Options::setEmptyValue(const kxArray* value) {
  if (!isNumericScalar(value)) raise("NotNumericScalar", ustring(u"EmptyValue"));
  emptyValue = kxGetScalar(value);
}

// Empty (detect), one character, or exactly CR LF.
void Options::setEndOfLine(const kxArray* value) {
  requireString(value, u"EndOfLine");
  ustring given = expandEscapes(value, u"EndOfLine");
  if (given.size() >= 2 && given != kCrLf) raise("LookforAndGetEndofline");
  endOfLine = std::move(given);
  endOfLineIsDefault = false;
}

void Options::setExpChars(const kxArray* value) {
  requireString(value, u"ExpChars");
  expChars = matrix::get_ustring(value);
}

void Options::setHeaderColumns(const kxArray* value) {
  Validators::validate<InputParameter::HeaderColumns>(value);
  headerColumns = countValue(value);
}

void Options::setHeaderLines(const kxArray* value) {
  Validators::validate<InputParameter::HeaderLines>(value);
  headerLines = countValue(value);
}

void Options::setNumCharactersToSkip(const kxArray* value) {
  Validators::validate<InputParameter::NumCharactersToSkip>(value);
  numCharactersToSkip = countValue(value);
}

// Taken as they are; a cell's strings are tried longest first by the reader.
void Options::setTreatAsEmpty(const kxArray* value) {
  Validators::validate<InputParameter::TreatAsEmpty>(value);
  std::vector<ustring> given = stringsOf(value);
  std::stable_sort(given.begin(), given.end(),
                   [](const ustring& a, const ustring& b) { return a.size() > b.size(); });
  treatAsEmpty = std::move(given);
}

// Kept as the array itself; the date columns check it when they use it.
void Options::setDateLocale(const kxArray* value) {
  requireString(value, u"DateLocale");
  dateLocale = value;
}

void Options::setWhitespace(const kxArray* value) {
  requireString(value, u"Whitespace");
  whitespace = expandEscapes(value, u"Whitespace");
  whitespaceIsDefault = false;
}

// Known by name only so that it can be refused with a message of its own.
void Options::setBufsize(const kxArray*) {
  raise("BufSizeDeprecation");
}

}  // namespace textscan
