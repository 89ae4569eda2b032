// Where the numeric pieces read from.
#include "pieces.h"

namespace Tarnwicks::FileIO {

ByteSource& numberSource(stream& s) {
  ByteSource* in = s.byteSource();
  if (in == nullptr) stream::notImplemented();
  return *in;
}

}  // namespace Tarnwicks::FileIO
