// libFuzzer target for textscan's options and format grammar: random option
// pairs (names, classes and values) and random formats, built into Options
// and queried through textscanOptionsQuery.
//
// Beyond the sanitizers (crashes, leaks) it checks:
// - a failure is one of the reader's own identifiers, never another error;
// - the query shows every list and text so that expanding it gives the
//   settled value back;
// - a format, split into pieces by formatParser and joined again with
//   spaces, parses to the same items; a format is refused exactly when its
//   last piece is unknown.
//
// Input: byte 0 the source kind, byte 1 the format length and the format
// bytes, then a byte of option count and per option a name byte and a
// value (a class byte and its contents).
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "fileio/builtin_table.h"
#include "textscan/format_parser.h"
#include "textscan/format_pieces.h"
#include "textscan/options.h"
#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_data.h"
#include "twhost/kx_frame.h"

namespace {

using namespace textscan;

const char* const kOptionNames[] = {
    "CollectOutput", "CommentStyle",  "Delimiter",   "EmptyValue",          "EndOfLine",
    "ExpChars",      "HeaderColumns", "HeaderLines", "MultipleDelimsAsOne", "ReturnOnError",
    "TreatAsEmpty",  "DateLocale",    "Whitespace",  "NumCharactersToSkip", "Bufsize"};
constexpr size_t kOptionCount = sizeof kOptionNames / sizeof kOptionNames[0];

const double kNumbers[] = {0, 1, -1, 2.5, 3, -0.0, 0.5, 1e300, -7, NAN, INFINITY, -INFINITY};
constexpr size_t kNumberCount = sizeof kNumbers / sizeof kNumbers[0];

// Formats are drawn mostly from the grammar's own characters.
const char16_t kFormatAlphabet[] = u"%%%*-.0123456789dufncsqtCD[]^{}, \t\b\\xyzN";
// Option texts: escapes, blanks, line ends, digits and letters of numbers.
const char16_t kTextAlphabet[] = u"\\\\bnrtq ,;\t\n\r0123456789.+-eEdDiINnaAfF/x";

const std::set<std::string> kAllowed = {
    "KORVAN:FileIO:InvalidFid",
    "KORVAN:textscan:BadFormatString",
    "KORVAN:textscan:BufSizeDeprecation",
    "KORVAN:textscan:EmptyCellArrayInvalid",
    "KORVAN:textscan:IncorrectEscapeConstant",
    "KORVAN:textscan:LookforAndGetEndofline",
    "KORVAN:textscan:LookforAndGetHeaderColumns",
    "KORVAN:textscan:LookforAndGetHeaderLines",
    "KORVAN:textscan:LookforAndGetNumCharactersToSkip",
    "KORVAN:textscan:NoInput",
    "KORVAN:textscan:NonStringCellsInCommentStyle",
    "KORVAN:textscan:NonStringCellsInTreatAsEmpty",
    "KORVAN:textscan:NonStringsInTreatAsEmpty",
    "KORVAN:textscan:NotAString",
    "KORVAN:textscan:NotAStringOrCellOfStrings",
    "KORVAN:textscan:NotAnIntegerValue",
    "KORVAN:textscan:NotNumericScalar",
    "KORVAN:textscan:NumericInTreatAsEmpty",
    "KORVAN:textscan:SecondInput",
    "KORVAN:textscan:UnknownOption",
    "KORVAN:textscan:UnpairedParamsValues",
    "KORVAN:textscan:WrongInputType",
    "KORVAN:textscan:standardStream",
};

struct Reader {
  const uint8_t* p;
  size_t n;
  uint8_t byte() {
    if (n == 0) return 0;
    --n;
    return *p++;
  }
};

std::u16string text(Reader& in, const char16_t* alphabet, size_t alphabetSize, size_t maxLength) {
  std::u16string s;
  size_t length = in.byte() % (maxLength + 1);
  for (size_t i = 0; i < length; ++i) {
    uint8_t b = in.byte();
    // Now and then a unit beyond ASCII, or the end-of-text unit.
    s.push_back(b == 0xff   ? char16_t(0xFFFF)
                : b == 0xfe ? char16_t(0x131)
                            : alphabet[b % alphabetSize]);
  }
  return s;
}

std::u16string optionText(Reader& in) {
  return text(in, kTextAlphabet, sizeof kTextAlphabet / 2 - 1, 12);
}

kxArray* string16(const std::u16string& s) {
  return kxCreateStringFromNChars_UTF16(s.data(), s.size());
}

kxArray* scalarOf(kxClassID cls, double v) {
  kxArray* a = kxCreateNumericMatrix(1, 1, cls, kxREAL);
  AssignToVoidBuffer(cls, kxGetData(a), kxDOUBLE_CLASS, &v, 1);
  return a;
}

kxArray* value(Reader& in, int depth = 0) {
  uint8_t kind = in.byte() % 11;
  double number = kNumbers[in.byte() % kNumberCount];
  switch (kind) {
    case 0:
    case 1:
      return string16(optionText(in));
    case 2:
      return kxCreateDoubleScalar(number);
    case 3:
      return kxCreateLogicalScalar(in.byte() & 1);
    case 4:
      return scalarOf(kxINT8_CLASS, number);
    case 5: {
      size_t count = in.byte() % 4;
      kxArray* cell = kxCreateCellMatrix(1, count);
      for (size_t i = 0; i < count; ++i) {
        kxSetCell(cell, i, depth < 1 ? value(in, depth + 1) : string16(optionText(in)));
      }
      return cell;
    }
    case 6:
      return kxCreateDoubleMatrix(0, 0, kxREAL);
    case 7: {
      kxArray* a = kxCreateDoubleMatrix(1, 1, kxCOMPLEX);
      kxGetPr(a)[0] = number;
      kxGetPi(a)[0] = 1;
      return a;
    }
    case 8:
      return kxCreateDoubleMatrix(1, 2, kxREAL);
    case 9:
      return kxCreateCharMatrix(2, 1);
    default:
      return kxCreateString("");
  }
}

kxArray* optionName(Reader& in) {
  uint8_t pick = in.byte();
  if (pick >= 0xf0) return value(in);  // anything at all in the name's place
  if (pick >= 0xe0) return string16(optionText(in));
  std::string name = kOptionNames[pick % kOptionCount];
  if (pick & 0x80) {
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  if ((pick & 0x70) == 0x70) name.pop_back();  // a partial name
  return kxCreateString(name.c_str());
}

kxArray* source(Reader& in) {
  switch (in.byte() % 6) {
    case 0:
      return kxCreateDoubleScalar(kNumbers[in.byte() % kNumberCount]);
    case 1:
      return scalarOf(kxUINT8_CLASS, 3);
    case 2:
      return kxCreateCellMatrix(1, 1);
    case 3:
      return kxCreateString("");
    default:
      return kxCreateString("1,2\n3,4\n");
  }
}

void quietWarnings(const std::string&, const std::string&) {}

[[noreturn]] void fault(const char* what) {
  fprintf(stderr, "textscan_options_fuzz: %s\n", what);
  std::abort();
}

// The query shows each list and text so that expanding it gives the
// settled value back.
void checkQuery(const Options& o, std::vector<kxArray*>& args) {
  kxArray* out[2] = {nullptr, nullptr};
  kxCallBuiltin(QueryKVFcnTable_fileio()->entries[Tarnwicks::FileIO::kSlotTextscanOptionsQuery], 1,
                out, static_cast<int>(args.size()), args.data());
  kxOwned s(out[0]);
  auto readBack = [&](const char* field) {
    return expandEscapeText(matrix::get_ustring(kxGetField(s.get(), 0, field)), u"x");
  };
  auto readBackList = [&](const char* field) {
    const kxArray* cell = kxGetField(s.get(), 0, field);
    std::vector<ustring> list;
    for (size_t i = 0; i < kxGetNumberOfElements(cell); ++i) {
      list.push_back(expandEscapeText(matrix::get_ustring(kxGetCell(cell, i)), u"x"));
    }
    return list;
  };
  if (readBack("Whitespace") != o.whitespace || readBack("EndOfLine") != o.endOfLine ||
      readBack("ExpChars") != o.expChars || readBackList("Delimiter") != o.delimiters ||
      readBackList("TreatAsEmpty") != o.treatAsEmpty ||
      readBackList("CommentStyle") != o.commentStyle) {
    fault("the query does not show the settled options");
  }
  if (kxGetScalar(kxGetField(s.get(), 0, "NumberOfLines")) != o.numberOfLines &&
      !std::isnan(o.numberOfLines)) {
    fault("the query shows another repeat count");
  }
}

// Pieces joined with spaces parse to the same items, and a format fails
// exactly when its last piece is unknown.
void checkPieces(const std::u16string& format, bool formatRefused) {
  std::vector<FormatInfo> pieces = describeTextscanFormat(format);
  bool unknown = !pieces.empty() && pieces.back().isUnknown;
  for (size_t i = 0; i + 1 < pieces.size(); ++i) {
    if (pieces[i].isUnknown) fault("an unknown piece before the last");
  }
  if (unknown != formatRefused) fault("formatParser and the parser disagree on a bad format");
  if (unknown) return;
  std::u16string joined;
  for (const FormatInfo& p : pieces) joined += p.text + u" ";
  FormatCursor a(format), b(joined);
  a.skipSeparators();
  b.skipSeparators();
  while (!a.atEnd() || !b.atEnd()) {
    if (a.atEnd() || b.atEnd() || !(nextItem(a) == nextItem(b))) {
      fault("pieces joined again parse to other items");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static bool ready = (kxSetWarningHandler(&quietWarnings), KVInitialize_fileio(), true);
  (void)ready;
  Reader in{data, size};
  std::vector<kxArray*> args;
  args.push_back(source(in));
  std::u16string format = text(in, kFormatAlphabet, sizeof kFormatAlphabet / 2 - 1, 40);
  args.push_back(string16(format));
  uint8_t shape = in.byte();
  if (shape & 1) args.push_back(kxCreateDoubleScalar(kNumbers[in.byte() % kNumberCount]));
  size_t options = (shape >> 1) % 6;
  for (size_t i = 0; i < options; ++i) {
    args.push_back(optionName(in));
    if (!(shape & 0x80) || i + 1 < options) args.push_back(value(in));  // now and then unpaired
  }
  std::vector<kxOwned> keep(args.begin(), args.end());

  try {
    Options o(1, static_cast<int>(args.size()), args.data());
    checkQuery(o, args);
  } catch (const fl::except::IUserException& e) {
    if (!kAllowed.count(e.get_error_id())) fault(e.get_error_id().c_str());
  }

  // The format on its own: refused by the parser exactly when formatParser
  // ends in an unknown piece.
  std::u16string expanded;
  try {
    expanded = expandEscapeText(format, u"Format");
  } catch (const fl::except::IUserException&) {
    return 0;
  }
  kxOwned plainSource(kxCreateString("x")), formatArray(string16(format));
  kxArray* two[] = {plainSource.get(), formatArray.get()};
  bool refused = false;
  try {
    Options alone(1, 2, two);
  } catch (const fl::except::IUserException& e) {
    std::string id = e.get_error_id();
    if (id != "KORVAN:textscan:BadFormatString" && id != "KORVAN:textscan:SecondInput") {
      fault(id.c_str());
    }
    refused = id == "KORVAN:textscan:BadFormatString";
  }
  checkPieces(expanded, refused);
  return 0;
}
