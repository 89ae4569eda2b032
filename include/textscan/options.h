// textscan::Options: the arguments of textscan and textscanOptionsQuery,
// checked and settled into one record. Everything the read does comes from
// this record; nothing downstream looks at the caller's arguments again.
//
// Construction does every check, in a fixed order, and throws the first
// failure as a "KORVAN:textscan" error (the one exception is a bad file
// identifier, "KORVAN:FileIO:InvalidFid"). It issues one warning,
// "KORVAN:textscan:DelimiterSpaceConflict", when the caller's whitespace and
// delimiters overlap.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "textscan/format_description.h"
#include "twhost/kx_array.h"

namespace textscan {

// Space, backspace and tab: the whitespace when the caller gives none, and
// always the separators between items of a format.
inline constexpr std::u16string_view kDefaultWhitespace = u" \b\t";
inline constexpr std::u16string_view kDefaultExpChars = u"eEdD";
inline constexpr std::u16string_view kLineFeed = u"\n";
inline constexpr std::u16string_view kCarriageReturn = u"\r";
inline constexpr std::u16string_view kCrLf = u"\r\n";
inline constexpr std::u16string_view kDigits = u"0123456789";
inline constexpr std::u16string_view kSpace = u" ";
inline constexpr std::u16string_view kNaNWord = u"NaN";
inline constexpr std::u16string_view kInfWord = u"Inf";
// The characters that can open a number.
inline constexpr std::u16string_view kNumberOpeners = u"+-.iInN";

// The default "EmptyValue": a NaN with the sign bit set.
inline constexpr uint64_t kEmptyValueBits = 0xFFF8000000000000ull;

// The options, numbered. "Bufsize" has no number: it is known by name only,
// to be refused.
enum class InputParameter : int {
  CollectOutput = 1,
  CommentStyle = 2,
  Delimiter = 3,
  EmptyValue = 4,
  EndOfLine = 5,
  ExpChars = 6,
  HeaderColumns = 7,
  HeaderLines = 8,
  MultipleDelimsAsOne = 9,
  ReturnOnError = 10,
  TreatAsEmpty = 11,
  DateLocale = 12,
  Whitespace = 13,
  NumCharactersToSkip = 14,
};

// Value checks of the options whose check stands apart from their setter.
// Each throws the option's error or returns.
struct Validators {
  template <InputParameter P>
  static void validate(const kxArray* value);
};
template <>
void Validators::validate<InputParameter::CollectOutput>(const kxArray*);
template <>
void Validators::validate<InputParameter::CommentStyle>(const kxArray*);
template <>
void Validators::validate<InputParameter::Delimiter>(const kxArray*);
template <>
void Validators::validate<InputParameter::HeaderColumns>(const kxArray*);
template <>
void Validators::validate<InputParameter::HeaderLines>(const kxArray*);
template <>
void Validators::validate<InputParameter::MultipleDelimsAsOne>(const kxArray*);
template <>
void Validators::validate<InputParameter::ReturnOnError>(const kxArray*);
template <>
void Validators::validate<InputParameter::TreatAsEmpty>(const kxArray*);
template <>
void Validators::validate<InputParameter::NumCharactersToSkip>(const kxArray*);

class Options {
 public:
  // Settles the inputs of one call: source, format, optional repeat count,
  // then name-value pairs. `nlhs` plays no part in the checks. `prhs` is
  // borrowed and must outlive the record (`source` and `dateLocale` point
  // into it).
  Options(int nlhs, int nrhs, kxArray* const* prhs);

  // One string per delimiter; a string "Delimiter" gives one per character.
  std::vector<ustring> delimiters;
  // "TreatAsEmpty"; a cell's strings longest first.
  std::vector<ustring> treatAsEmpty;
  // Characters skipped around fields.
  ustring whitespace;
  // One string opens a comment to the end of the line; two open and close.
  std::vector<ustring> commentStyle;
  // Empty: detect the line end from the data (while endOfLineIsDefault).
  ustring endOfLine;
  ustring expChars{kDefaultExpChars};
  std::vector<FormatDescription> format;
  const kxArray* source = nullptr;      // a file identifier or the text itself
  const kxArray* dateLocale = nullptr;  // "DateLocale", as given
  // How many times the format is applied.
  double numberOfLines = std::numeric_limits<double>::infinity();
  double headerColumns = 0;
  double headerLines = 0;
  double emptyValue = std::bit_cast<double>(kEmptyValueBits);
  bool collectOutput = false;
  bool returnOnError = true;
  bool multipleDelimsAsOne = false;
  double numCharactersToSkip = 0;
  bool whitespaceIsDefault = true;
  bool delimiterIsDefault = true;
  bool endOfLineIsDefault = true;
  bool numberOfLinesIsInfinite = true;
  // The format holds %s, %q or %t.
  bool formatHasStringFields = false;
  // A space was appended to the caller's whitespace.
  bool spaceAddedToWhitespace = false;
  // A space ends a quoted field (only with the default delimiters).
  bool spaceEndsQuotedField = false;
  // The caller's whitespace held a space.
  bool whitespaceHasSpace = false;
  // Where a string field stops; filled by collectStopStrings at the read.
  std::vector<ustring> stopStrings;
  // The second result of textscan, and the passes over the format so far.
  int64_t finalPosition = 0;
  int64_t rowsRead = 0;

  // The setters, one per option, reached through optionHandlers. Each
  // checks its value and throws, or stores it; list setters replace the
  // whole list.
  void setCollectOutput(const kxArray* value);
  void setCommentStyle(const kxArray* value);
  void setDelimiter(const kxArray* value);
  void setEmptyValue(const kxArray* value);
  void setEndOfLine(const kxArray* value);
  void setExpChars(const kxArray* value);
  void setHeaderColumns(const kxArray* value);
  void setHeaderLines(const kxArray* value);
  void setMultipleDelimsAsOne(const kxArray* value);
  void setReturnOnError(const kxArray* value);
  void setTreatAsEmpty(const kxArray* value);
  void setDateLocale(const kxArray* value);
  void setWhitespace(const kxArray* value);
  void setBufsize(const kxArray* value);
  void setNumCharactersToSkip(const kxArray* value);

 private:
  void checkSource(const kxArray* value);
  void setRepeatCount(const kxArray* value);
  void normaliseWhitespace();
  void addWhitespaceToDelimiters();
  void removeDelimitersFromWhitespace();
  void checkTreatAsEmpty() const;
};

using OptionSetter = void (Options::*)(const kxArray*);
struct OptionHandler {
  std::string_view name;
  OptionSetter setter;
};

// Every option name with its setter, in the order the lookup tries them.
extern const OptionHandler optionHandlers[15];

// The handler of an option name: folded ASCII case, whole names only. A
// name that is no string, or names no option, throws.
const OptionHandler& findOptionHandler(const kxArray* name);

// Backslash escapes of an option value: \\, \b, \n, \r and \t become their
// characters; a final lone backslash stays; any other escape throws
// "KORVAN:textscan:IncorrectEscapeConstant" naming `label`.
ustring expandEscapes(const kxArray* value, const ustring& label);
ustring expandEscapeText(ustring text, const ustring& label);

// The reverse: line feed, carriage return, backslash, backspace and tab
// written as their escapes, so that a shown value can be given back.
ustring renderEscapeText(std::u16string_view text);
// The same as a new 1-by-n char array.
kxArray* renderEscapes(const ustring& text);

// At the read, once the line end is known: a CR LF line end makes a "\n"
// delimiter stand for "\r\n" and "\r" too; a CR line end turns "\n"
// delimiters into "\r".
void prepareDelimitersForLineEnd(Options& options);
// The strings that end a string field: the delimiters and each character of
// the line end. Left empty when there are no delimiters and no whitespace at
// all by default.
void collectStopStrings(Options& options);

}  // namespace textscan
