// Bodies of built-ins that are not written yet. Each is weak, so that the
// subsystem that defines the real body replaces it at link time.
#include "frame/bodies.h"
#include "host/errors.h"

namespace Tarnwicks::FileIO {

namespace {
[[noreturn]] void pending() {
  kxThrowId("KORVAN:legacy_two_part", "notimplemented_mx");
}
}  // namespace

#define TW_PENDING_BODY(name)                                      \
  __attribute__((weak)) int name(int, kxArray**, int, kxArray**) { \
    pending();                                                     \
  }

TW_PENDING_BODY(fopenBody)
TW_PENDING_BODY(fcloseBody)
TW_PENDING_BODY(freadBody)
TW_PENDING_BODY(fwriteBody)
TW_PENDING_BODY(fscanfBody)
TW_PENDING_BODY(fprintfBody)
TW_PENDING_BODY(sscanfBody)
TW_PENDING_BODY(sprintfBody)
TW_PENDING_BODY(sprintfcBody)
TW_PENDING_BODY(fgetsBody)
TW_PENDING_BODY(fseekBody)
TW_PENDING_BODY(ftellBody)
TW_PENDING_BODY(ferrorBody)
TW_PENDING_BODY(feofBody)
TW_PENDING_BODY(textscanBody)
TW_PENDING_BODY(textscanOptionsQueryBody)

__attribute__((weak)) void registerFormatParser() {}

}  // namespace Tarnwicks::FileIO
