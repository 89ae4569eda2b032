// Source locations and the caret under a column.
#include "source_location.h"

#include <algorithm>

namespace tw {

namespace {

bool isContinuationByte(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// Bytes [start, end) of line `line`; false when the source has fewer lines.
bool lineBounds(const std::string& source, int line, size_t& start, size_t& end) {
  start = 0;
  for (int k = 1; k < line; ++k) {
    size_t eol = source.find('\n', start);
    if (eol == std::string::npos) return false;
    start = eol + 1;
  }
  end = source.find('\n', start);
  if (end == std::string::npos) end = source.size();
  if (end > start && source[end - 1] == '\r') --end;
  return true;
}

}  // namespace

SourceLocation locate(const std::string& file, const std::string& source, int line,
                      int byteColumn) {
  SourceLocation where;
  where.file = file;
  size_t start, end;
  if (line <= 0 || !lineBounds(source, line, start, end)) return where;
  where.line = line;
  where.text = source.substr(start, end - start);
  if (byteColumn <= 0) return where;
  size_t bytes = std::min(static_cast<size_t>(byteColumn - 1), where.text.size());
  int column = 1;
  for (size_t i = 0; i < bytes; ++i) {
    if (!isContinuationByte(where.text[i])) ++column;
  }
  where.column = column;
  return where;
}

std::string caretLines(const SourceLocation& where, int indent) {
  if (where.text.empty()) return "";
  std::string pad(static_cast<size_t>(indent), ' ');
  std::string out = pad + where.text + "\n";
  if (where.column <= 0) return out;
  // Tabs are copied so that the caret lines up however wide a tab shows.
  std::string under = pad;
  int column = 1;
  for (size_t i = 0; i < where.text.size() && column < where.column; ++i) {
    if (isContinuationByte(where.text[i])) continue;
    under += where.text[i] == '\t' ? '\t' : ' ';
    ++column;
  }
  return out + under + "^\n";
}

}  // namespace tw
