// The texts of help: a summary, the calling forms and an example for each
// built-in of the library and each function of the shell, and the kinds
// of value the library makes besides arrays.
#pragma once

#include <span>

namespace tw {

struct HelpEntry {
  const char* name;
  const char* summary;  // one line, for the list that help alone prints
  const char* usage;    // the calling forms, one a line, with notes
  const char* example;  // lines that run as they stand
};

// The sixteen built-ins, in the order of the library's table.
std::span<const HelpEntry> builtinHelp();
// The shell's own functions.
std::span<const HelpEntry> functionHelp();
// The kinds of value textscan makes besides arrays (datetime, categorical).
std::span<const HelpEntry> valueHelp();

}  // namespace tw
