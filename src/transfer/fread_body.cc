// The fread built-in: the meaning of its inputs, the choice of reader, and
// the result.
#include <memory>

#include "bodies.h"
#include "fileio/attributes.h"
#include "fileio/file_manager.h"
#include "fread_bits.h"
#include "fread_readers.h"
#include "fread_result.h"
#include "twhost/errors.h"
#include "twhost/kx_data.h"

namespace Tarnwicks::FileIO {

namespace {

// The inputs after the fid, by their number and by which of them are text.
struct FreadInputs {
  const kxArray* size = nullptr;
  const kxArray* precision = nullptr;
  const kxArray* skip = nullptr;
  const kxArray* machineFormat = nullptr;
};

FreadInputs sortInputs(int nrhs, kxArray** prhs) {
  FreadInputs in;
  auto isText = [&](int i) { return kxIsChar(prhs[i]); };
  switch (nrhs) {
    case 2:
      (isText(1) ? in.precision : in.size) = prhs[1];
      break;
    case 3:
      if (isText(1)) {
        in.precision = prhs[1];
        (isText(2) ? in.machineFormat : in.skip) = prhs[2];
      } else {
        in.size = prhs[1];
        in.precision = prhs[2];
      }
      break;
    case 4:
      if (isText(1)) {
        in.precision = prhs[1];
        in.skip = prhs[2];
        in.machineFormat = prhs[3];
      } else {
        in.size = prhs[1];
        in.precision = prhs[2];
        (isText(3) ? in.machineFormat : in.skip) = prhs[3];
      }
      break;
    case 5:
      in.size = prhs[1];
      in.precision = prhs[2];
      in.skip = prhs[3];
      in.machineFormat = prhs[4];
      break;
    default:
      break;
  }
  return in;
}

std::unique_ptr<FreadReader> chooseReader(stream& s, const FreadRequest& r) {
  if (r.format() == utGetDataSizeType() && r.bitCount() == 0) {
    if (r.inputClass() != r.outputClass()) return std::make_unique<FreadDifferent>(s, r);
    if (r.skip() != 0) return std::make_unique<FreadSameWithSkip>(s, r);
    return std::make_unique<FreadSameNoSkip>(s, r);
  }
  const int code = r.precision().inputCode;
  if (r.bitCount() != 0 && code != kPrecChar && code != kPrecSingle && code != kPrecDouble) {
    return std::make_unique<FreadBitConvert>(s, r);
  }
  return std::make_unique<FreadConvert>(s, r);
}

}  // namespace

int freadBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  twAbsFile* file = fileFromArray(prhs[0]);
  MachineFormat machine = file->machineFormat;
  PrecisionString precision;
  precision.format = machine.format;
  SizeAttribute size;
  SkipAttribute skip;

  // The machine format first: the sizes a precision implies depend on it.
  const FreadInputs in = sortInputs(nrhs, prhs);
  if (in.machineFormat != nullptr) {
    machine.load(in.machineFormat);
    precision.format = machine.format;
  }
  if (in.precision != nullptr) precision.load(in.precision);
  if (in.size != nullptr) size.parse(in.size);
  if (in.skip != nullptr) skip.parse(in.skip);
  size.validate();
  precision.validate();
  skip.validate();
  if (!machine.valid) kxErrMsg(machine.messageNumber);
  // A repeat count means nothing without a skip.
  if (skip.rows == 0) precision.repeat = 1;

  const kxClassID resultClass = freadResultClass(precision);
  auto giveCount = [&](double n) {
    if (nlhs >= 2) plhs[1] = kxCreateDoubleScalar(n);
  };
  if (size.rows * size.columns == 0 && !size.unbounded) {
    // Nothing asked for: the file is not touched, its error state stays.
    plhs[0] = kxCreateNumericMatrix(static_cast<size_t>(size.rows),
                                    static_cast<size_t>(size.columns), resultClass, kxREAL);
    giveCount(0);
    return 0;
  }

  // "noconvert" moves bytes: the size counts bytes of the file, gathered
  // into elements of the result class as they stand.
  const bool noConvert = precision.inputCode == kPrecNoConvert;
  const size_t unitBytes = noConvert ? kxClassElementSize(resultClass) : 1;
  if (noConvert) size.adjustForNoConvert(unitBytes);

  const FreadRequest request(
      precision, static_cast<uint64_t>(size.rows) * static_cast<uint64_t>(size.columns) * unitBytes,
      size.unbounded, skip.rows);

  stream* s = file->getStream();
  // The state reported is this call's own.
  s->errorCode = 0;
  std::unique_ptr<FreadReader> reader = chooseReader(*s, request);
  reader->run();

  const size_t total = reader->buffer().totalElements();
  const ResultShape shape = freadResultShape(total, static_cast<size_t>(size.rows), size.isMatrix,
                                             resultClass == kxCHAR_CLASS, unitBytes, noConvert);
  plhs[0] =
      makeFreadResult(reader->buffer(), reader->room(), shape, resultClass, unitBytes, noConvert);

  int status = reader->status();
  if (status == code(StreamError::NoHelp)) {
    // A short read: a file that can't be read, or its end.
    if (total == 0 && !file->permission.read) {
      status = code(StreamError::IsOpenRead);
    } else if (s->atEnd()) {
      status = code(StreamError::EndOfFile);
    }
  }
  file->lastError = status;
  giveCount(static_cast<double>(total));
  return 0;
}

}  // namespace Tarnwicks::FileIO
