// The methods the library adds to the host's packages when it is initialised.
#pragma once

namespace Tarnwicks::FileIO {

// Runs once, from KVInitialize_fileio, before the library pins itself.
void registerPackageMethods();

}  // namespace Tarnwicks::FileIO
