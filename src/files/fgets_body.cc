// The body of fgets: one line with its terminator, and the terminator's
// character codes.
#include "bodies.h"
#include "body_support.h"
#include "fileio/file_manager.h"
#include "fileio/output_buffer.h"
#include "twhost/errors.h"

namespace Tarnwicks::FileIO {

namespace {

// The limit in characters, -1 for none.
int64_t lineLimit(const kxArray* a) {
  if (!kxIsDouble(a)) kxThrowId("KORVAN:fgets", "ncharMustBeDouble");
  if (kxIsEmpty(a)) kxErrMsg(36);
  int64_t n = 0;
  bool isNaN = false, isInf = false;
  numericScalarValue(a, n, &isNaN, &isInf);  // 2.7 reads up to 2: the exactness doesn't matter
  if (isNaN || n < 0) kxThrowId("KORVAN:fgets", "InvalidSize");
  return isInf ? -1 : n;
}

}  // namespace

int fgetsBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  twAbsFile* file = fileFromArray(prhs[0]);
  int64_t limit = nrhs >= 2 ? lineLimit(prhs[1]) : -1;
  fileStream* s = file->getStream();
  if (!s->getCarry().finish()) {
    file->lastError = code(StreamError::WriteCarryByteFailed);
    plhs[0] = kxCreateString("");
    if (nlhs > 1) plhs[1] = kxCreateDoubleMatrix(0, 0, kxREAL);
    return 0;
  }
  s->errorCode = 0;
  int terminator = 0;
  // A line that lies whole in the C buffer is made at its final size; any
  // other goes through the general reader and its growing buffer.
  kxOwned text(s->readWholeLine(limit, terminator));
  if (!text) {
    OutputBuffer line(kxCHAR_CLASS, 1024, 64, 8388608);
    terminator = s->readLine(limit, line);
    if (!line.empty()) text.reset(line.toArray());
  }
  if (terminator != 0) file->lastError = 0;
  const bool nonEmpty = text != nullptr;
  if (!nonEmpty && s->readHasFailed() && s->errorCode != 0) {
    // Nothing can be read (a folder, a file open for writing only): the
    // system's reason, and -1 as at the end, so that a reading loop ends.
    file->lastError = s->errorCode;
  } else if (nonEmpty && !file->permission.read) {
    file->lastError = code(StreamError::IsOpenRead);
  } else if (s->atEnd()) {
    file->lastError = code(StreamError::EndOfFile);
  }
  kxArray* codes = nullptr;
  if (nlhs > 1) {
    if (terminator != 0) {
      const char16_t* end = kxGetChars(text.get()) + kxGetNumberOfElements(text.get());
      codes = kxCreateDoubleMatrix(1, static_cast<size_t>(terminator), kxREAL);
      for (int i = 0; i < terminator; ++i) kxGetPr(codes)[i] = end[i - terminator];
    } else {
      codes = kxCreateDoubleMatrix(0, 0, kxREAL);
    }
  }
  if (nonEmpty) {
    plhs[0] = text.release();
  } else {
    plhs[0] = s->atEnd() ? kxCreateDoubleScalar(-1.0) : kxCreateString("");
  }
  if (nlhs > 1) plhs[1] = codes;
  return 0;
}

}  // namespace Tarnwicks::FileIO
