// How textscan reads a format, piece by piece, without reading any data:
// what the package method korvan.iofun.internal.formatParser reports.
#pragma once

#include <string_view>
#include <vector>

#include "textscan/format_description.h"

namespace textscan {

struct FormatInfo {
  ustring text;  // the piece as written, without the separators after it
  bool isSkipped = false;
  bool isLiteral = false;
  bool isUnknown = false;
};

// The pieces of `format` in order. A broken conversion is the last piece,
// flagged unknown, and its text runs to the end of the format; nothing is
// thrown for it.
std::vector<FormatInfo> describeTextscanFormat(std::u16string_view format);

// The text a skipped conversion is shown with: its star right after the
// "%", and a star written further along taken out.
void moveSkipMarkToFront(ustring& text);

}  // namespace textscan
