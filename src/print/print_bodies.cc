// The bodies of fprintf and sprintf (and builtins::util::fiSprintf).
//
// Neither raises for what goes wrong while printing: a bad format, a bad star
// value or values that run out leave their code as the file's last error,
// for ferror (fprintf), or as the second output (sprintf), after whatever was
// printed before the fault. Only wrong argument classes raise, before any output.
#include "bodies.h"
#include "fileio/error_text.h"
#include "fileio/escapes.h"
#include "fileio/file_manager.h"
#include "fileio/string_streams.h"
#include "format_runner.h"
#include "print_inputs.h"
#include "twhost/errors.h"
#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

namespace {

void setCount(int nlhs, kxArray** plhs, bool screen, double count) {
  // On the screen the count is only given when asked for, so that a bare
  // fprintf(1, ...) shows nothing more than its text.
  if (nlhs >= 1 || !screen) plhs[0] = kxCreateDoubleScalar(count);
}

}  // namespace

int fprintfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  if (nrhs < 1) kxErrMsg(2);
  if (nlhs > 1) kxErrMsg(3);
  twAbsFile* file;
  int formatAt;
  if (kxIsIntScalar(prhs[0])) {
    if (nrhs < 2) kxErrMsg(35);
    if (!kxIsChar(prhs[1])) kxErrMsg(27);
    file = fileFromArray(prhs[0]);
    formatAt = 1;
  } else {
    // A format first writes to the screen; anything else is no file at all.
    file = FileMgr::instance().require(kxIsChar(prhs[0]) ? 1 : -1);
    formatAt = 0;
  }
  kxArray* const* values = prhs + formatAt + 1;
  int valueCount = nrhs - formatAt - 1;
  checkPrintValues(values, valueCount, "KORVAN:printf");
  ustring format = matrix::get_ustring(prhs[formatAt]);
  bool escapesFailed = translateEscapes(format);

  fileStream* out = file->getStream();
  bool screen = out->isConsole();
  if (!out->getCarry().finish()) {
    file->lastError = code(StreamError::WriteCarryByteFailed);
    if (nlhs >= 1) plhs[0] = kxCreateDoubleScalar(0);
    return 1;
  }

  out->bytesWritten = 0;
  out->errorCode = 0;
  PrintSink sink(*out, PrintSink::Mode::Bytes, writesAsciiAsBytes(*out));
  PrintFormatRunner runner(format, sink, values, static_cast<uint64_t>(valueCount));
  bool ok = runner.run();
  bool flushed = true;
  int fault = runner.errorCode;
  if (ok) {
    flushed = file->endOfWrite();
  } else if (fault == code(StreamError::NoHelp)) {
    // A failed write that the stream could not explain: nothing out at all
    // means a full device; a file open for reading can't be written.
    if (out->bytesWritten == 0) {
      fault = code(StreamError::NoSpace);
    } else if (!file->permission.write && !file->permission.append && !file->permission.update) {
      fault = code(StreamError::IsOpenWrite);
    }
  }
  setCount(nlhs, plhs, screen, flushed ? static_cast<double>(out->bytesWritten) : 0.0);

  if (escapesFailed) {
    file->lastError = code(StreamError::InvalidFormat);
  } else if (fault != 0) {
    file->lastError = fault;
  } else if (flushed) {
    // Substituted characters were written; the user hears of them.
    file->lastError = isTextFault(out->errorCode) ? out->errorCode : 0;
  }
  return (escapesFailed || !ok || !flushed) ? 1 : 0;
}

int sprintfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  if (nrhs < 1) kxErrMsg(2);
  if (nlhs > 2) kxErrMsg(3);
  if (!kxIsChar(prhs[0])) kxErrMsg(27);
  checkPrintValues(prhs + 1, nrhs - 1, "KORVAN:printf");
  ustring format = matrix::get_ustring(prhs[0]);
  bool escapesFailed = translateEscapes(format);

  outputStringStream text("UTF-16");
  int code;
  {
    PrintSink sink(text, PrintSink::Mode::Units, false);
    PrintFormatRunner runner(format, sink, prhs + 1, static_cast<uint64_t>(nrhs - 1));
    runner.run();
    code = runner.errorCode;
  }
  plhs[0] = takeStreamText(text, false);
  if (nlhs >= 2) plhs[1] = errorTextArray(code);
  return escapesFailed ? 1 : 0;
}

}  // namespace Tarnwicks::FileIO
