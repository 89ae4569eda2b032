// The bodies of fseek, ftell, feof and ferror.
#include <cmath>

#include "bodies.h"
#include "body_support.h"
#include "fileio/file_manager.h"
#include "twhost/errors.h"

namespace Tarnwicks::FileIO {

namespace {

enum Origin { kFromStart = -1, kFromCurrent = 0, kFromEnd = 1, kNoOrigin = -2 };

Origin originOf(const kxArray* a) {
  if (kxIsChar(a)) {
    std::string text = kxArrayToStdString(a);
    if (text == "bof") return kFromStart;
    if (text == "cof") return kFromCurrent;
    if (text == "eof") return kFromEnd;
    return kNoOrigin;
  }
  double v = kxIsEmpty(a) ? -2.0 : kxGetScalar(a);
  if (v == -1.0) return kFromStart;
  if (v == 0.0) return kFromCurrent;
  if (v == 1.0) return kFromEnd;
  return kNoOrigin;
}

// Moves the file; false with lastError set when the offset is bad or the
// move fails. Offsets are checked against the file's size: a seek never
// goes before the start or past the end.
bool seek(twAbsFile* file, Origin origin, const kxArray* offsetArray) {
  int64_t offset = 0;
  bool isNaN = false, isInf = false;
  if (!numericScalarValue(offsetArray, offset, &isNaN, &isInf)) {
    const StreamError why = isNaN        ? StreamError::BadOffsetNaN
                            : !isInf     ? StreamError::BadOffsetInt
                            : offset > 0 ? StreamError::BadOffsetAfterEnd
                                         : StreamError::BadOffsetBeforeBegin;
    file->lastError = code(why);
    return false;
  }
  fileStream* s = file->getStream();
  if (!s->getCarry().beforeSeek()) {
    file->lastError = s->errorOr(StreamError::FseekFailedNegOne);
    return false;
  }
  int64_t start = 0;
  if (!tellPosition(file, start) || start == kUnknownPosition) return false;
  // Setting the position to itself drops what the C stream read ahead.
  s->setPosition(start);

  auto fail = [file](StreamError why) {
    file->lastError = code(why);
    return false;
  };
  int64_t size = 0;
  auto needSize = [&]() {
    if (s->getFileSize(size)) return true;
    file->lastError = s->errorOr(StreamError::NoHelp);
    return false;
  };
  int64_t target = 0;
  switch (origin) {
    case kFromStart:
      if (offset < 0) return fail(StreamError::BadOffsetBeforeBegin);
      if (!needSize()) return false;
      if (offset > size) return fail(StreamError::BadOffsetAfterEnd);
      target = offset;
      break;
    case kFromCurrent:
      if (offset < 0 && -(offset + 1) >= start) return fail(StreamError::BadOffsetBeforeBegin);
      if (!needSize()) return false;
      if (__builtin_add_overflow(start, offset, &target) || target > size)
        return fail(StreamError::BadOffsetAfterEnd);
      break;
    case kFromEnd:
      if (offset > 0) return fail(StreamError::BadOffsetAfterEnd);
      if (!needSize()) return false;
      if (offset < -size) return fail(StreamError::BadOffsetBeforeBegin);
      target = size + offset;
      break;
    default:
      return false;
  }
  if (s->hasFile() && s->setPosition(target) != 0) {
    file->lastError = s->errorOr(StreamError::NoHelp);
    return false;
  }
  int64_t now = 0;
  tellPosition(file, now);
  if (now == start) s->getCarry().active = false;
  return true;
}

}  // namespace

int fseekBody(int, kxArray** plhs, int, kxArray** prhs) {
  twAbsFile* file = fileFromArray(prhs[0]);
  const kxArray* offset = prhs[1];
  const kxArray* origin = prhs[2];
  if (!kxIsNumeric(offset)) kxThrowId("KORVAN:fseek", "offsetMustBeDouble");
  if (!kxIsDouble(origin) && !kxIsChar(origin)) kxThrowId("KORVAN:fseek", "originMustBeDouble");
  if (kxGetNumberOfElements(offset) != 1 || kxIsComplex(offset)) kxErrMsg(28);
  Origin from = originOf(origin);
  if (from == kNoOrigin) kxErrMsg(29);
  bool moved = seek(file, from, offset);
  plhs[0] = kxCreateDoubleScalar(moved ? 0.0 : -1.0);
  return moved ? 0 : 1;
}

int ftellBody(int, kxArray** plhs, int, kxArray** prhs) {
  twAbsFile* file = fileFromArray(prhs[0]);
  int64_t position = 0;
  bool ok = tellPosition(file, position);
  plhs[0] = kxCreateDoubleScalar(ok ? double(position) : -1.0);
  return ok ? 0 : 1;
}

int feofBody(int, kxArray** plhs, int, kxArray** prhs) {
  twAbsFile* file = fileFromArray(prhs[0]);
  fileStream* s = file->getStream();
  s->getCarry().beforeEofTest();
  bool atEnd = s->hasFile() && s->atEnd();
  file->lastError = 0;
  plhs[0] = kxCreateDoubleScalar(atEnd ? 1.0 : 0.0);
  return 0;
}

int ferrorBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  twAbsFile* file = fileFromArray(prhs[0]);
  // What is reported is the error before any clearing.
  int error = file->lastError;
  if (nrhs == 2) {
    if (!kxIsChar(prhs[1])) kxErrMsg(32);
    if (kxArrayToStdString(prhs[1]) != "clear") kxErrMsg(33);
    file->lastError = 0;
    if (file->getStream()) file->getStream()->clearError();
  }
  plhs[0] = errorTextArray(error);
  if (nlhs > 1) plhs[1] = kxCreateDoubleScalar(error);
  return 0;
}

}  // namespace Tarnwicks::FileIO
