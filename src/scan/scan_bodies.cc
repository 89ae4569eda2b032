// The bodies of fscanf and sscanf.
//
// Neither raises for what it meets in the input or the format: a failed
// match, the end of input or a bad format end the scan with the data read so
// far, and leave their code in the file's last error (fscanf, for ferror) or
// in the error text output (sscanf). Only wrong argument classes and sizes
// raise, before anything is read.
#include <string>

#include "bodies.h"
#include "fast_scan.h"
#include "fileio/error_text.h"
#include "fileio/escapes.h"
#include "fileio/file_manager.h"
#include "fileio/string_streams.h"
#include "scan_control.h"
#include "scan_result.h"
#include "twhost/errors.h"
#include "twhost/text.h"
#include "utf16_units.h"

namespace Tarnwicks::FileIO {

namespace {

// The size argument, when there is one; raises for a bad one.
ScanSize sizeArgument(int nrhs, kxArray** prhs) {
  if (nrhs < 3) return ScanSize();
  SizeAttribute size;
  size.parse(prhs[2]);
  size.validate();
  return ScanSize(size);
}

// What one scan produced, by either path.
struct ScanOutcome {
  void* block = nullptr;  // kxMallocEx, adopted by the result
  size_t total = 0;       // elements in the block
  kxClassID cls = kxDOUBLE_CLASS;
  uint64_t count = 0;  // conversions
  int error = 0;       // what ended the scan
  bool normalEnd = false;
};

// The general path: every piece through scanControl.
template <class Control>
ScanOutcome scanGeneral(const ustring& format, stream& s, const ScanSize& size) {
  ScanOutcome out;
  out.count = size.limit();
  Control control(format, s, &out.count, size.unlimited);
  out.normalEnd = control.scan();
  out.error = control.scanError;
  out.cls = control.buffer().getClassId();
  out.block = control.buffer().takeJoined(out.total);
  return out;
}

ScanOutcome fromFast(const FastOutcome& fast) {
  ScanOutcome out;
  out.block = fast.block;
  out.total = out.count = fast.total;
  out.cls = fast.cls;
  out.error = fast.error;
  out.normalEnd = fast.normalEnd;
  return out;
}

// The format parsed for a look at its shape.
struct ParsedFormat {
  explicit ParsedFormat(const ustring& format) : parser(format) {
    parser.parseFormat();
    plan = planFastScan(parser);
  }
  scanFormatParser parser;
  FastPlan plan;
};

bool canRead(const twAbsFile& file) {
  return file.permission.read || file.permission.update;
}

}  // namespace

int fscanfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  twAbsFile* file = fileFromArray(prhs[0]);
  if (!kxIsChar(prhs[1])) kxErrMsg(27);
  const ScanSize size = sizeArgument(nrhs, prhs);
  ustring format = matrix::get_ustring(prhs[1]);
  const bool escapesFailed = translateEscapes(format);
  auto giveCount = [&](uint64_t n) {
    if (nlhs >= 2) plhs[1] = kxCreateDoubleScalar(static_cast<double>(n));
  };
  if (size.holdsNothing()) {
    plhs[0] = emptyScanResult(size);
    giveCount(0);
    return escapesFailed ? 1 : 0;
  }

  fileStream* s = file->getStream();
  if (!s->getCarry().finish()) {
    file->lastError = code(StreamError::WriteCarryByteFailed);
    plhs[0] = kxCreateDoubleMatrix(0, 0, kxREAL);
    giveCount(0);
    return 1;
  }
  // The state reported is this call's own.
  s->errorCode = 0;
  ParsedFormat parsed(format);
  ScanOutcome out = parsed.plan.eligible
                        ? fromFast(fastScanStream(parsed.plan, parsed.parser, *s, size))
                        : scanGeneral<fscanfScanControl>(format, *s, size);
  file->lastError = out.error;
  if (!out.normalEnd) {
    if (out.total == 0 && !canRead(*file)) {
      file->lastError = code(StreamError::IsOpenRead);
    } else if (s->atEnd()) {
      file->lastError = code(StreamError::EndOfFile);
    }
  }
  plhs[0] = scanResultArray(out.block, out.total, out.cls, size);
  giveCount(out.count);
  if (escapesFailed) file->lastError = code(StreamError::InvalidFormat);
  return escapesFailed ? 1 : 0;
}

int sscanfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  if (!kxIsChar(prhs[0])) kxErrMsg(31);
  if (!kxIsChar(prhs[1])) kxErrMsg(27);
  const ScanSize size = sizeArgument(nrhs, prhs);
  ustring format = matrix::get_ustring(prhs[1]);
  const bool escapesFailed = translateEscapes(format);
  auto giveRest = [&](uint64_t count, int error, size_t nextIndex) {
    if (nlhs >= 2) plhs[1] = kxCreateDoubleScalar(static_cast<double>(count));
    if (nlhs >= 3) plhs[2] = errorTextArray(error);
    if (nlhs >= 4) plhs[3] = kxCreateDoubleScalar(static_cast<double>(nextIndex));
  };
  if (size.holdsNothing()) {
    plhs[0] = emptyScanResult(size);
    giveRest(0, 0, 1);
    return escapesFailed ? 1 : 0;
  }

  ParsedFormat parsed(format);
  if (parsed.plan.eligible) {
    size_t consumed = 0;
    const ScanOutcome out = fromFast(fastScanText(parsed.plan, kxGetChars(prhs[0]),
                                                  kxGetNumberOfElements(prhs[0]), size, consumed));
    plhs[0] = scanResultArray(out.block, out.total, out.cls, size);
    giveRest(out.count, out.error, consumed + 1);
    return escapesFailed ? 1 : 0;
  }
  std::string text = kxArrayToUTF8StdString(prhs[0]);
  inputStringStream in(text.c_str(), text.size(), "UTF-8");
  ScanOutcome out = scanGeneral<sscanfScanControl>(format, in, size);
  plhs[0] = scanResultArray(out.block, out.total, out.cls, size);
  giveRest(out.count, out.error, utf16UnitsOfUtf8(in.begin, in.current) + 1);
  return escapesFailed ? 1 : 0;
}

}  // namespace Tarnwicks::FileIO
