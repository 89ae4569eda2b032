// sprintfc: a numeric matrix formatted row by row into a cell array of
// texts. With a true third input every conversion is signed and followed by
// "i", which is how the imaginary parts of complex numbers are written.
//
// A row is formatted on its own: when its values run out in a later cell of
// a wrapped format, that is no fault, and a row that fails does not stop the
// rows after it.
#include "bodies.h"
#include "fileio/error_text.h"
#include "fileio/escapes.h"
#include "fileio/string_streams.h"
#include "format_parser.h"
#include "print_inputs.h"
#include "twhost/errors.h"
#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

namespace {

// M empty texts in an M by 1 cell: the result when the format can't start.
void emptyResult(int nlhs, kxArray** plhs, size_t rows, int code) {
  kxArray* cell = kxCreateCellMatrix(rows, 1);
  for (size_t r = 0; r < rows; ++r) kxSetCell(cell, r, kxCreateString(""));
  plhs[0] = cell;
  if (nlhs >= 2) plhs[1] = errorTextArray(code);
  if (nlhs >= 3) plhs[2] = kxCreateLogicalScalar(false);
}

}  // namespace

int sprintfcBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  if (!kxIsChar(prhs[0])) kxErrMsg(27);
  checkPrintValues(prhs + 1, 1, "KORVAN:sprintfc");
  if (nrhs >= 3 && !kxIsLogical(prhs[2])) kxThrowId("KORVAN:sprintfc", "invalidThirdInputType");
  bool alwaysSigned = nrhs >= 3 && kxIsLogicalScalarTrue(prhs[2]);

  ustring format = matrix::get_ustring(prhs[0]);
  bool escapesFailed = translateEscapes(format);
  int status = escapesFailed ? 1 : 0;
  PrintFormatParser parser(format, alwaysSigned);
  if (parser.numberingStyle() == PrintFormatParser::kNumbered) {
    kxThrowId("KORVAN:sprintfc", "invalidFormatType");
  }

  kxArray* matrix = prhs[1];
  printfMatrixArgumentSource source(matrix);
  size_t rows = kxGetM(matrix);
  size_t columns = kxGetN(matrix);

  size_t cells = 1;
  bool wrapped = false;
  uint64_t perPass = parser.argumentsPerPass();
  if (!parser.hasStringConversion() && perPass > 0) {
    cells = static_cast<size_t>((columns + perPass - 1) / perPass);
    wrapped = cells != 1;
  } else if (!parser.hasStringConversion() && parser.pieces().empty()) {
    emptyResult(nlhs, plhs, rows, parser.formatError());
    return status;
  }

  foutFormatPiece* piece;
  try {
    piece = parser.nextPiece();
  } catch (int code) {
    emptyResult(nlhs, plhs, rows, code);
    return status;
  }

  kxArray* cell = kxCreateCellMatrix(rows, cells);
  outputStringStream text("UTF-16");
  PrintSink sink(text, PrintSink::Mode::Units, false);
  int overallError = 0;
  for (size_t r = 0; r < rows; ++r) {
    source.restartRow(r);
    int rowError = 0;
    for (size_t c = 0; c < cells; ++c) {
      if (rowError == 0) {
        try {
          while (piece != nullptr) {
            piece->output(sink, source);
            if (alwaysSigned && piece->isConversion()) sink.putText(u"i", 1);
            piece = parser.nextPiece();
            if (piece == nullptr && parser.hasStringConversion() && source.hasMoreData()) {
              piece = parser.restartPieces();
              wrapped = true;
            }
          }
        } catch (int fault) {
          // A last cell of a wrapped format that runs out of values is no
          // fault.
          if (!(fault == code(StreamError::NotEnoughArgs) && wrapped)) rowError = fault;
        }
      }
      try {
        piece = parser.restartPieces();
      } catch (int) {
        piece = nullptr;
      }
      sink.flush();
      kxSetCell(cell, r + c * rows, takeStreamText(text, true));
    }
    if (rowError != 0) overallError = rowError;
  }
  plhs[0] = cell;
  if (nlhs >= 2) plhs[1] = errorTextArray(overallError);
  if (nlhs >= 3) plhs[2] = kxCreateLogicalScalar(parser.endsLeftJustifiedWithSpaces());
  return status;
}

}  // namespace Tarnwicks::FileIO
