#include "package_methods.h"

#include "textscan/bodies.h"

namespace Tarnwicks::FileIO {

void registerPackageMethods() {
  textscan::registerFormatParser();
}

}  // namespace Tarnwicks::FileIO
