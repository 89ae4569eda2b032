// textscanOptionsQuery: the options of a textscan call as it would see them.
#include "bodies.h"
#include "textscan/options.h"
#include "twhost/errors.h"

namespace textscan {

namespace {

// The fields of the query's struct, in their order.
enum QueryField : int {
  kStream,
  kFormat,  // declared and left empty
  kNumberOfLines,
  kCollectOutput,
  kCommentStyle,
  kDelimiter,
  kEmptyValue,
  kEndOfLine,
  kExpChars,
  kHeaderColumns,
  kHeaderLines,
  kMultipleDelimsAsOne,
  kReturnOnError,
  kTreatAsEmpty,
  kWhitespace,
  kNumCharactersToSkip,
  kQueryFieldCount,
};

const char* kQueryFieldNames[kQueryFieldCount] = {
    "Stream",        "Format",        "NumberOfLines", "CollectOutput",
    "CommentStyle",  "Delimiter",     "EmptyValue",    "EndOfLine",
    "ExpChars",      "HeaderColumns", "HeaderLines",   "MultipleDelimsAsOne",
    "ReturnOnError", "TreatAsEmpty",  "Whitespace",    "NumCharactersToSkip",
};

// A 1-by-n cell of the strings, each shown with its escapes.
kxArray* renderedList(const std::vector<ustring>& strings) {
  kxArray* cell = kxCreateCellMatrix(1, strings.size());
  for (size_t i = 0; i < strings.size(); ++i) kxSetCell(cell, i, renderEscapes(strings[i]));
  return cell;
}

// The effective options as the user can read them, and give back.
kxArray* describeOptions(const Options& o) {
  kxArray* s = kxCreateStructMatrix(1, 1, kQueryFieldCount, kQueryFieldNames);
  auto set = [s](QueryField field, kxArray* value) { kxSetFieldByNumber(s, 0, field, value); };
  set(kStream, kxCreateSharedDataCopy(o.source));
  set(kNumberOfLines, kxCreateDoubleScalar(o.numberOfLines));
  set(kCollectOutput, kxCreateLogicalScalar(o.collectOutput));
  set(kCommentStyle, renderedList(o.commentStyle));
  set(kDelimiter, renderedList(o.delimiters));
  set(kEmptyValue, kxCreateDoubleScalar(o.emptyValue));
  set(kEndOfLine, renderEscapes(o.endOfLine));
  set(kExpChars, renderEscapes(o.expChars));
  set(kHeaderColumns, kxCreateDoubleScalar(o.headerColumns));
  set(kHeaderLines, kxCreateDoubleScalar(o.headerLines));
  set(kMultipleDelimsAsOne, kxCreateLogicalScalar(o.multipleDelimsAsOne));
  set(kReturnOnError, kxCreateLogicalScalar(o.returnOnError));
  set(kTreatAsEmpty, renderedList(o.treatAsEmpty));
  set(kWhitespace, renderEscapes(o.whitespace));
  set(kNumCharactersToSkip, kxCreateDoubleScalar(o.numCharactersToSkip));
  return s;
}

}  // namespace

// With one output the struct; with none (or two) only the checks and their
// warnings.
int textscanOptionsQueryBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  Options options(nlhs, nrhs, prhs);
  if (nlhs == 1) plhs[0] = describeOptions(options);
  return 0;
}

}  // namespace textscan
