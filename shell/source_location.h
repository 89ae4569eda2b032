// Where in the source something happened: the file, the line and the column,
// with the text of that line so that it can be shown with a caret under the
// column.
#pragma once

#include <string>

namespace tw {

struct SourceLocation {
  std::string file;  // the script as named on the command line; empty at the prompt
  int line = 0;      // from 1; 0 when unknown
  int column = 0;    // in characters, from 1; 0 when unknown
  std::string text;  // the line itself, without its line end
};

// The location of byte column `byteColumn` (from 1) of line `line` of
// `source`, with the column counted in characters.
SourceLocation locate(const std::string& file, const std::string& source, int line, int byteColumn);

// The line and, under it, a caret at the column; both indented by `indent`
// and ending in a newline. Empty when the location has no line text.
std::string caretLines(const SourceLocation& where, int indent);

}  // namespace tw
