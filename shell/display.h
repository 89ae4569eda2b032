// The console form of values: a header with the size and class, then the
// elements in aligned columns; cells and structs nested below, indented.
#pragma once

#include <string>

#include "number_format.h"
#include "twhost/kx_array.h"

namespace tw {

// "x = ..." with a trailing newline.
std::string displayText(const std::string& name, const kxArray* a,
                        const DisplayOptions& options = {});
// What disp(x) prints: the value without its name; a char row as its text.
std::string dispText(const kxArray* a, const DisplayOptions& options = {});

// The width of the terminal that standard output goes to; else $COLUMNS,
// else 80.
int terminalWidth();

}  // namespace tw
