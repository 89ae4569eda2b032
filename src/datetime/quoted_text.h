// The quote rule of quoted fields, shared with textscan's strings: dates and
// categories in double quotes are unquoted before they are read.
#pragma once

#include "textscan/column.h"

namespace datetime {

constexpr char16_t kDoubleQuote = u'"';

using textscan::stripQuotes;

}  // namespace datetime
