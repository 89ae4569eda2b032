// libFuzzer target for the texts fopen reads: the permission, the machine
// format and the encoding.
//
// Checks, beyond the sanitizers:
//  - the permission parser agrees with a plain restatement of the rule (a
//    first letter of "rwaWA", only letters of "rwab+AWt", exactly one of
//    reading, writing and appending), and the C mode it makes is that
//    letter, "+" for update, and "b";
//  - a machine format that parses names a format whose own name parses
//    back to it; one that doesn't leaves the index meaning none;
//  - an encoding is refused exactly when ICU can't open it;
//  - a text loaded from an array that holds a NUL is never usable.
//
// Input: byte 0 picks the attribute; the rest is the text (as UTF-16 pairs
// for the array form).
#include <unicode/ucnv.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fileio/attributes.h"
#include "fileio/tcodn_stream.h"
#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_data.h"

namespace {

using namespace Tarnwicks::FileIO;

void check(bool ok) {
  if (!ok) std::abort();
}

void ignoreWarning(const std::string&, const std::string&) {}

void permission(const std::string& text) {
  FilePermission p;
  const bool ok = p.parse(text.c_str());
  bool expected = !text.empty() && std::strchr("rwaWA", text[0]) != nullptr;
  bool update = false;
  for (char c : text) {
    if (std::strchr("rwab+AWt", c) == nullptr) expected = false;
    if (c == '+') update = true;
  }
  const bool reads = text.find('r') != std::string::npos;
  const bool writes = text.find_first_of("wW") != std::string::npos;
  const bool appends = text.find_first_of("aA") != std::string::npos;
  expected = expected && int(reads) + int(writes) + int(appends) == 1;
  check(ok == expected);
  if (!ok) return;
  const char letter = reads ? 'r' : writes ? 'w' : 'a';
  const std::string mode = std::string(1, letter) + (update ? "+" : "") + "b";
  check(mode == p.cMode);
  check(p.read == reads && p.write == writes && p.append == appends && p.update == update);
  check(p.autoFlush == (text.find_first_of("WA") == std::string::npos));
}

void machineFormat(const std::string& text) {
  MachineFormat m;
  const int none = utGetNumDataSizeTypes() - 1;
  if (!m.parse(text.c_str())) {
    check(m.format == none);
    return;
  }
  check(m.format >= 0 && m.format < none);
  const char* name = utGetDataSizeTypeName(m.format);
  if (name != nullptr && *name != '\0') {
    MachineFormat back;
    check(back.parse(name) && back.format == m.format);
  }
}

void encoding(const std::string& text) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* c = ucnv_open(text.empty() ? nullptr : text.c_str(), &status);
  const bool opens = status <= U_ZERO_ERROR;
  if (c) ucnv_close(c);
  bool refused = false;
  try {
    TcodnStream::requireConverter(text.c_str());
  } catch (...) {
    refused = true;
  }
  // The empty text is the host's default, which always opens.
  if (!text.empty()) check(refused == !opens);
}

void fromArray(const uint8_t* data, size_t size) {
  std::u16string units(size / 2, u'\0');
  std::memcpy(units.data(), data, units.size() * 2);
  kxOwned a(kxCreateStringFromNChars_UTF16(units.data(), units.size()));
  const bool nul = units.find(u'\0') != std::u16string::npos;
  FilePermission p;
  p.load(a.get());
  MachineFormat m;
  m.load(a.get());
  EncodingAttribute e;
  e.load(a.get());
  if (nul) check(!p.valid && !m.valid && !e.valid);
  check(e.valid == !nul);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool quiet = (kxSetWarningHandler(ignoreWarning), true);
  (void)quiet;
  if (size < 1) return 0;
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::string cText = text.c_str();  // what a C text of it holds
  switch (data[0] % 4) {
    case 0:
      permission(cText);
      break;
    case 1:
      machineFormat(cText);
      break;
    case 2:
      encoding(cText);
      break;
    default:
      fromArray(data + 1, size - 1);
  }
  return 0;
}
