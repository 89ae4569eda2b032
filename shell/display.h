// The console form of values: a header with the size and class, then the
// elements in aligned columns; cells and structs nested below, indented.
#pragma once

#include <string>

#include "twhost/kx_array.h"

namespace tw {

// "x = ..." with a trailing newline.
std::string displayText(const std::string& name, const kxArray* a);
// What disp(x) prints: the value without its name; a char row as its text.
std::string dispText(const kxArray* a);

}  // namespace tw
