#include "package_methods.h"

namespace Tarnwicks::FileIO {

// No area adds a package method yet; the format parser of the delimited
// text reader will register itself here.
void registerPackageMethods() {}

}  // namespace Tarnwicks::FileIO
