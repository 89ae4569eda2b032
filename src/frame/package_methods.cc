#include "package_methods.h"

#include "datetime/columns.h"
#include "textscan/bodies.h"

namespace Tarnwicks::FileIO {

void registerPackageMethods() {
  textscan::registerFormatParser();
  // Not a package method, but start-up work of the same kind: textscan's %D
  // and %C conversions come from the datetime area.
  datetime::installTextscanColumns();
}

}  // namespace Tarnwicks::FileIO
