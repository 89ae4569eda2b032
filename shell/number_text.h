// Numbers as text: the shortest digits that read back as the same value.
#pragma once

#include <string>

namespace tw {

std::string shortestText(double v);
// The shortest digits that read back as the same single.
std::string shortestText(float v);

}  // namespace tw
