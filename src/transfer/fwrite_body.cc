// The fwrite built-in: its inputs, the transfer, and what the file reports.
#include <string>

#include "bodies.h"
#include "fileio/attributes.h"
#include "fileio/file_manager.h"
#include "fwrite_transfer.h"
#include "twhost/errors.h"

namespace Tarnwicks::FileIO {

int fwriteBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  twAbsFile* file = fileFromArray(prhs[0]);
  const kxArray* data = prhs[1];
  // The data are checked before any other input is looked at.
  if (!(kxIsNumeric(data) || kxIsLogical(data) || kxIsChar(data))) {
    kxThrowId("KORVAN:fwrite", "UnsupportedClass", std::string(kxGetClassName(data)));
  }
  if (kxIsSparse(data)) kxThrowId("KORVAN:fwrite", "UnsupportedAttribute");

  MachineFormat machine = file->machineFormat;
  PrecisionString precision(kxGetClassID(data));
  precision.format = machine.format;
  SkipAttribute skip;

  const kxArray* precisionArg = nrhs >= 3 ? prhs[2] : nullptr;
  const kxArray* skipArg = nullptr;
  const kxArray* machineArg = nullptr;
  if (nrhs == 4) {
    (kxIsChar(prhs[3]) ? machineArg : skipArg) = prhs[3];
  } else if (nrhs == 5) {
    skipArg = prhs[3];
    machineArg = prhs[4];
  }
  // The machine format first, so that the precision is read in its terms.
  if (machineArg != nullptr) {
    machine.load(machineArg);
    precision.format = machine.format;
  }
  if (precisionArg != nullptr) precision.load(precisionArg);
  if (skipArg != nullptr) skip.parse(skipArg);
  precision.validate();
  if (!machine.valid) kxErrMsg(machine.messageNumber);
  skip.validate();

  FileIO::stream* s = file->getStream();
  uint64_t count = kxGetNumberOfElements(data);
  if (precision.outputCode == kPrecNoConvert) count *= kxGetElementSize(data);

  double result = 0;
  if (count == 0) {
    file->lastError = 0;
  } else {
    s->errorCode = 0;
    FwriteTransfer transfer(s, kxGetData(data), kxGetClassID(data), precision.format,
                            precision.outputCode, count, skip.rows);
    const bool failed = transfer.write(precision.bitCount, precision.repeat, precision.sizeValue);
    file->lastError = transfer.status;
    result = static_cast<double>(transfer.count);
    if (!failed) {
      if (file->endOfWrite()) {
        // Substituted characters were written; the user hears of them.
        file->lastError = isTextFault(s->errorCode) ? s->errorCode : 0;
      } else {
        result = 0;
      }
    } else if (transfer.status == code(StreamError::NoHelp)) {
      if (transfer.count == 0) {
        file->lastError = code(StreamError::NoSpace);
      } else if (file->permission.read && file->permission.update) {
        file->lastError = code(StreamError::IsOpenWrite);
      }
    }
  }
  // A write to the screen without an output asked for leaves no result.
  if (nlhs > 0 || !s->isConsole()) plhs[0] = kxCreateDoubleScalar(result);
  return 0;
}

}  // namespace Tarnwicks::FileIO
