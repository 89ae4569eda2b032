#include "format_pieces.h"

#include <string>

#include "bodies.h"
#include "format_parser.h"
#include "twhost/calls.h"
#include "twhost/errors.h"

namespace textscan {

namespace {

// Where a skip star goes in the text of a skipped conversion.
constexpr size_t kStarAt = 1;

// The method object of the package: one character vector in, one struct out.
class FormatParseFunc : public kcos::COSMethodInfo {
 public:
  std::string name() const override { return "formatParser"; }
  void invoke(int& nlhs, kxArray** plhs, int nrhs, kxArray** prhs) override;
};

enum PieceField : int { kFormatField, kIsSkippedField, kIsLiteralField, kIsUnknownField, kFields };
const char* kPieceFieldNames[kFields] = {"Format", "IsSkipped", "IsLiteral", "IsUnknown"};

void FormatParseFunc::invoke(int& nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  if (nrhs != 1 || !kxIsChar(prhs[0])) kxErrMsg(1);
  std::vector<FormatInfo> pieces = describeTextscanFormat(matrix::get_ustring(prhs[0]));
  size_t n = pieces.size();
  kxArray* result = kxCreateStructMatrix(1, 1, kFields, kPieceFieldNames);
  kxArray* texts = kxCreateCellMatrix(1, n);
  kxArray* skipped = kxCreateLogicalMatrix(1, n);
  kxArray* literal = kxCreateLogicalMatrix(1, n);
  kxArray* unknown = kxCreateLogicalMatrix(1, n);
  for (size_t i = 0; i < n; ++i) {
    FormatInfo& piece = pieces[i];
    kxGetLogicals(skipped)[i] = piece.isSkipped;
    kxGetLogicals(literal)[i] = piece.isLiteral;
    kxGetLogicals(unknown)[i] = piece.isUnknown;
    if (piece.isSkipped && !piece.isLiteral) moveSkipMarkToFront(piece.text);
    kxSetCell(texts, i, kxCreateStringFromNChars_UTF16(piece.text.data(), piece.text.size()));
  }
  kxSetFieldByNumber(result, 0, kFormatField, texts);
  kxSetFieldByNumber(result, 0, kIsSkippedField, skipped);
  kxSetFieldByNumber(result, 0, kIsLiteralField, literal);
  kxSetFieldByNumber(result, 0, kIsUnknownField, unknown);
  plhs[0] = result;
  nlhs = 1;
}

}  // namespace

std::vector<FormatInfo> describeTextscanFormat(std::u16string_view format) {
  std::vector<FormatInfo> pieces;
  FormatCursor cursor(format);
  cursor.skipSeparators();
  while (!cursor.atEnd()) {
    size_t start = cursor.position;
    FormatDescription item = nextItem(cursor);
    FormatInfo piece;
    piece.text.assign(format.substr(start, cursor.itemEnd - start));
    piece.isSkipped = item.skip;
    piece.isLiteral = item.type == LiteralField;
    piece.isUnknown = item.type == NoField;
    pieces.push_back(std::move(piece));
  }
  return pieces;
}

void moveSkipMarkToFront(ustring& text) {
  if (text.empty()) return;
  if (text.size() == kStarAt || text[kStarAt] != u'*') text.insert(kStarAt, 1, u'*');
  // Later stars go, but a unit right after a removed star is kept as it is,
  // so of two stars in a row past the front the second stays.
  size_t out = kStarAt + 1;
  for (size_t in = out; in < text.size(); ++in) {
    if (text[in] == u'*') {
      if (++in == text.size()) break;
    }
    text[out++] = text[in];
  }
  text.resize(out);
}

void registerFormatParser() {
  kcos::Package* korvan = kcos::omGetGlobalPackage("korvan");
  kcos::Package* internal =
      kcos::omGetSubPackage(kcos::omGetSubPackage(korvan, "iofun"), "internal");
  internal->addMethod(new FormatParseFunc);
}

}  // namespace textscan
