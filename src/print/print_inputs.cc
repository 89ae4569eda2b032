#include "print_inputs.h"

#include <unicode/ucnv.h>

#include <map>
#include <string>

#include "fileio/tcodn_stream.h"
#include "twhost/errors.h"
#include "twhost/kx_memory.h"

namespace Tarnwicks::FileIO {

void checkPrintValues(kxArray* const* values, int count, const char* catalog) {
  for (int i = 0; i < count; ++i) {
    const kxArray* v = values[i];
    if (!kxIsNumeric(v) && !kxIsChar(v) && !kxIsLogical(v)) {
      kxThrowId(catalog, "invalidInputType", std::string(kxGetClassName(v)));
    }
    if (kxIsSparse(v)) kxThrowId(catalog, "invalidInputAttribute");
  }
}

namespace {

// Stateless converters that map every ASCII unit to the same single byte.
// Stateful ones (ISO-2022, UTF-7 ...) are left out: their encoder may owe an
// escape back to ASCII.
bool asciiTransparent(const std::string& name) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* c = ucnv_open(name.c_str(), &status);
  if (U_FAILURE(status)) return false;
  bool ok = false;
  switch (ucnv_getType(c)) {
    case UCNV_SBCS:
    case UCNV_MBCS:
    case UCNV_LATIN_1:
    case UCNV_UTF8:
    case UCNV_US_ASCII: {
      UChar ascii[128];
      for (int i = 0; i < 128; ++i) ascii[i] = static_cast<UChar>(i);
      char bytes[512];
      int32_t n = ucnv_fromUChars(c, bytes, sizeof bytes, ascii, 128, &status);
      ok = U_SUCCESS(status) && n == 128;
      for (int i = 0; ok && i < 128; ++i) ok = bytes[i] == static_cast<char>(i);
      break;
    }
    default:
      break;
  }
  ucnv_close(c);
  return ok;
}

}  // namespace

bool writesAsciiAsBytes(stream& target) {
  // The console takes text and bytes by different routes; keep them apart.
  if (target.isConsole()) return false;
  TcodnStream* text = target.textLayer();
  if (text == nullptr || text->utf16()) return false;
  static std::map<std::string, bool> known;
  std::string name = text->encodingName();
  auto it = known.find(name);
  if (it == known.end()) it = known.emplace(name, asciiTransparent(name)).first;
  return it->second;
}

kxArray* takeStreamText(outputStringStream& text, bool emptyAsEmptyText) {
  size_t bytes = 0;
  void* block = text.release(bytes);
  size_t units = bytes / sizeof(char16_t);
  if (units == 0 && emptyAsEmptyText) {
    kxFreeEx(block);
    return kxCreateString("");
  }
  kxArray* a = kxCreateNumericMatrix(0, 0, kxCHAR_CLASS, kxREAL);
  kxSetN(a, units);
  kxSetM(a, 1);
  if (block != nullptr) kxSetData(a, block);
  return a;
}

}  // namespace Tarnwicks::FileIO
