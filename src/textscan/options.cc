// Construction of textscan::Options: the first inputs, the repeat count and
// the name-value pairs, then the settling of format, whitespace and
// delimiters.
#include "textscan/options.h"

#include <cmath>

#include "arguments.h"
#include "format_parser.h"
#include "textscan/number_lexer.h"

namespace textscan {

// The lookup tries them in this order; the first whole match wins.
const OptionHandler optionHandlers[15] = {
    {"CollectOutput", &Options::setCollectOutput},
    {"CommentStyle", &Options::setCommentStyle},
    {"Delimiter", &Options::setDelimiter},
    {"EmptyValue", &Options::setEmptyValue},
    {"EndOfLine", &Options::setEndOfLine},
    {"ExpChars", &Options::setExpChars},
    {"HeaderColumns", &Options::setHeaderColumns},
    {"HeaderLines", &Options::setHeaderLines},
    {"MultipleDelimsAsOne", &Options::setMultipleDelimsAsOne},
    {"ReturnOnError", &Options::setReturnOnError},
    {"TreatAsEmpty", &Options::setTreatAsEmpty},
    {"DateLocale", &Options::setDateLocale},
    {"Whitespace", &Options::setWhitespace},
    {"Bufsize", &Options::setBufsize},
    {"NumCharactersToSkip", &Options::setNumCharactersToSkip},
};

namespace {

// The first file identifier that is not a standard stream.
constexpr double kFirstUserFid = 3;
constexpr int kFirstPairAfterCount = 3;
constexpr int kFirstPairWithoutCount = 2;

// Whole names only, ASCII case folded; a unit beyond ASCII never matches.
bool sameOptionName(std::u16string_view given, std::string_view known) {
  if (given.size() != known.size()) return false;
  for (size_t i = 0; i < given.size(); ++i) {
    if (given[i] >= 128) return false;
    if (foldAsciiCase(given[i]) != foldAsciiCase(static_cast<char16_t>(known[i]))) return false;
  }
  return true;
}

}  // namespace

const OptionHandler& findOptionHandler(const kxArray* name) {
  if (!isStringArgument(name)) raise("NotAString", ustring(u"Parameter Name"));
  ustring given = matrix::get_ustring(name);
  for (const OptionHandler& handler : optionHandlers) {
    if (sameOptionName(given, handler.name)) return handler;
  }
  raise("UnknownOption", given);
}

Options::Options(int /*nlhs*/, int nrhs, kxArray* const* prhs) {
  if (nrhs < 2) matrix::detail::error_minrhs();
  checkSource(prhs[0]);
  source = prhs[0];
  if (!isStringArgument(prhs[1])) raise("SecondInput");
  ustring formatText = expandEscapes(prhs[1], u"Format");

  if (nrhs > 2) {
    int firstPair;
    if (kxIsNumeric(prhs[2])) {
      setRepeatCount(prhs[2]);
      if (nrhs % 2 == 0) raise("UnpairedParamsValues");
      firstPair = kFirstPairAfterCount;
    } else {
      if (!kxIsChar(prhs[2])) raise("NotNumericScalar", ustring(u"Number of lines"));
      if (nrhs % 2 != 0) raise("UnpairedParamsValues");
      firstPair = kFirstPairWithoutCount;
    }
    // An option given twice is set twice: the last value stands.
    for (int i = firstPair; i + 1 < nrhs; i += 2) {
      (this->*findOptionHandler(prhs[i]).setter)(prhs[i + 1]);
    }
  }

  parseFormat(*this, formatText);
  normaliseWhitespace();
  addWhitespaceToDelimiters();
  if (!delimiterIsDefault) removeDelimitersFromWhitespace();
  checkTreatAsEmpty();
}

void Options::checkSource(const kxArray* value) {
  if (kxIsEmpty(value)) raise("NoInput");
  if (kxIsDouble(value)) {
    double fid = kxGetScalar(value);
    if (kxIsScalar(value) && fid >= kFirstUserFid) return;
    if (kxIsScalar(value) && fid >= 0 && fid < kFirstUserFid) raise("standardStream");
    kxThrowId("KORVAN:FileIO", "InvalidFid");
  }
  if (!kxIsChar(value)) raise("WrongInputType");
}

// A negative or NaN count reads to the end; any other is rounded up, so
// that 2.5 reads three times.
void Options::setRepeatCount(const kxArray* value) {
  if (kxIsComplex(value)) raise("NotNumericScalar", ustring(u"Number of lines"));
  if (!kxIsEmpty(value) && !kxIsScalar(value)) {
    raise("NotNumericScalar", ustring(u"Number of lines"));
  }
  double count = kxGetScalar(value);  // NaN for an empty array
  if (std::isnan(count) || count < 0) {
    numberOfLines = std::numeric_limits<double>::infinity();
  } else {
    numberOfLines = std::ceil(count) + 0.0;  // + 0.0 turns -0 into 0
  }
  numberOfLinesIsInfinite = std::isinf(numberOfLines);
}

}  // namespace textscan
