// Runs of either path over one input, for comparing them.
#include "scan_paths.h"

#include <cstdio>

#include "fast_scan.h"
#include "fileio/file_stream.h"
#include "fileio/string_streams.h"
#include "scan_control.h"
#include "twhost/kx_memory.h"
#include "twhost/text.h"
#include "utf16_units.h"

namespace Tarnwicks::FileIO {

namespace {

void takeBlock(ScanRun& r, void* block, size_t total) {
  r.total = total;
  const size_t n = total * kxClassElementSize(r.cls);
  r.bytes.assign(static_cast<unsigned char*>(block), static_cast<unsigned char*>(block) + n);
  kxFreeEx(block);
}

template <class Control>
ScanRun general(const ustring& format, stream& s, const ScanSize& size) {
  ScanRun r;
  r.count = size.limit();
  Control control(format, s, &r.count, size.unlimited);
  r.normalEnd = control.scan();
  r.error = control.scanError;
  r.cls = control.buffer().getClassId();
  size_t total = 0;
  void* block = control.buffer().takeJoined(total);
  takeBlock(r, block, total);
  return r;
}

ScanRun fromFast(const FastOutcome& f) {
  ScanRun r;
  r.cls = f.cls;
  r.count = f.total;
  r.error = f.error;
  r.normalEnd = f.normalEnd;
  takeBlock(r, f.block, f.total);
  return r;
}

}  // namespace

ScanRun scanTextGeneral(const ustring& format, const ustring& text, const ScanSize& size) {
  const std::string utf8 = fl::i18n::to_string(text);
  inputStringStream in(utf8.data(), utf8.size());
  ScanRun r = general<sscanfScanControl>(format, in, size);
  r.position = utf16UnitsOfUtf8(in.begin, in.current);
  return r;
}

ScanRun scanTextFast(const ustring& format, const ustring& text, const ScanSize& size) {
  scanFormatParser parser(format);
  parser.parseFormat();
  size_t consumed = 0;
  ScanRun r =
      fromFast(fastScanText(planFastScan(parser), text.data(), text.size(), size, consumed));
  r.position = consumed;
  return r;
}

ScanRun scanFileBytes(const ustring& format, const std::string& bytes, const ScanSize& size,
                      bool fast) {
  static const FilePermission permission("r", 0);
  std::string copy = bytes;
  FILE* f = fmemopen(copy.data(), copy.size(), "r");
  if (f == nullptr) return ScanRun();
  ScanRun r;
  {
    fileStream s(f, "UTF-8", &permission);
    if (fast) {
      scanFormatParser parser(format);
      parser.parseFormat();
      r = fromFast(fastScanStream(planFastScan(parser), parser, s, size));
    } else {
      r = general<fscanfScanControl>(format, s, size);
    }
  }
  r.position = static_cast<size_t>(std::ftell(f));
  std::fclose(f);
  return r;
}

}  // namespace Tarnwicks::FileIO
