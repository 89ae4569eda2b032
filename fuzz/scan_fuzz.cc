// libFuzzer target for scan formats and the scan itself: random formats
// over random text.
//
// Checks, beyond the sanitizers:
//  - for a format the fast path takes, the fast and general paths agree on
//    texts (sscanf) and on files (fscanf): values bit for bit, class, count,
//    error code, how the scan ended, and where the input stands;
//  - the general path on any format never reads outside the text, never
//    counts past the size, stores numbers one element per conversion, and
//    ends (a format that stores nothing does not loop);
//  - sscanf through the table gives a next index within the text and a
//    result of the count's elements for numeric formats.
//
// Input: byte 0 picks the format (from a list that the fast path takes, or
// the next byte's count of input bytes as the format itself), byte 1 the
// size; the rest is the text.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "fileio/builtin_table.h"
#include "scan/fast_scan.h"
#include "scan/scan_paths.h"
#include "twhost/kx_frame.h"
#include "twhost/text.h"

namespace {

using namespace Tarnwicks::FileIO;

const char* const kFastFormats[] = {"%f",    "%d",  "%i",       "%x",      "%o",  "%u",
                                    "%hd",   "%ld", "%lu",      "%lx",     "%hf", "%e %g",
                                    " %d\n", "%f ", "%li\t%li", "%hu %hu", "%ho", "%hi"};
constexpr size_t kMostFormatBytes = 24;

ScanSize sizeOf(uint8_t b) {
  ScanSize size;
  if (b < 128) return size;
  size.unlimited = false;
  size.rows = 1 + (b & 7);
  size.columns = 1 + ((b >> 3) & 3);
  size.twoValues = size.columns > 1;
  return size;
}

bool numericOnly(const scanFormatParser& p) {
  for (const PieceShape& s : p.shapes()) {
    if (s.kind == PieceShape::Text) return false;
  }
  return true;
}

void checkFastAgainstGeneral(const ustring& format, const ustring& text, const ScanSize& size) {
  scanFormatParser parser(format);
  parser.parseFormat();
  const ScanRun slow = scanTextGeneral(format, text, size);
  if (slow.position > text.size()) __builtin_trap();
  if (!size.unlimited && slow.count > size.limit()) __builtin_trap();
  if (numericOnly(parser) && slow.total != slow.count) __builtin_trap();
  if (!planFastScan(parser).eligible) return;
  if (!(scanTextFast(format, text, size) == slow)) __builtin_trap();
  // The same on a file of the text's UTF-8.
  const std::string bytes = fl::i18n::to_string(text);
  if (!(scanFileBytes(format, bytes, size, true) == scanFileBytes(format, bytes, size, false))) {
    __builtin_trap();
  }
}

// sscanf through the table: the next index stays within the text.
void checkBody(const ustring& format, const ustring& text) {
  kxArray* in[2] = {kxCreateStringFromNChars_UTF16(text.data(), text.size()),
                    kxCreateStringFromNChars_UTF16(format.data(), format.size())};
  kxArray* out[5] = {};
  kxCallBuiltin(QueryKVFcnTable_fileio()->entries[kSlotSscanf], 4, out, 2, in);
  const double next = kxGetScalar(out[3]);
  if (next < 1 || next > static_cast<double>(text.size()) + 1) __builtin_trap();
  for (kxArray* a : in) kxDestroyArray(a);
  for (kxArray* a : out) kxDestroyArray(a);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  const uint8_t pick = data[0];
  const ScanSize scanSize = sizeOf(data[1]);
  data += 2;
  size -= 2;
  std::string format;
  if (pick < 128) {
    format = kFastFormats[pick % std::size(kFastFormats)];
  } else {
    const size_t n = std::min<size_t>({size, kMostFormatBytes, static_cast<size_t>(pick & 31)});
    format.assign(reinterpret_cast<const char*>(data), n);
    data += n;
    size -= n;
  }
  const ustring format16 = fl::i18n::to_ustring(format);
  const ustring text = fl::i18n::to_ustring(std::string(reinterpret_cast<const char*>(data), size));
  checkFastAgainstGeneral(format16, text, scanSize);
  checkBody(format16, text);
  return 0;
}
