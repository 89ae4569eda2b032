// The entry of a built-in whose area is not in this build yet. Calling it
// raises "KORVAN:FileIO:NotBuiltYet" with the built-in's name, so that a user
// learns which built-in is missing rather than something about files.
#pragma once

#include "fileio/builtin_table.h"
#include "twhost/errors.h"

namespace Tarnwicks::FileIO {

template <BuiltinSlot S>
[[noreturn]] int notBuiltYet(int, kxArray**, int, kxArray**) {
  kxThrowId("KORVAN:FileIO", "NotBuiltYet", std::string(kBuiltinNames[S]));
}

}  // namespace Tarnwicks::FileIO
