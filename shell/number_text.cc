// Shortest round-trip text through std::to_chars.
#include "number_text.h"

#include <charconv>

namespace tw {

std::string shortestText(double v) {
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf, v);
  return std::string(buf, r.ptr);
}

std::string shortestText(float v) {
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf, v);
  return std::string(buf, r.ptr);
}

}  // namespace tw
