// The textscan format grammar: a format text split into its items.
//
//   conversion = "%" ["*"] ["-"] [width] ["." [precision]] ["*"] letter [suffix]
//   letters    d u (suffix 8 16 32 64), f (suffix 32 64), n c s q t C D,
//              "[" set "]", "[^" set "]", "{" date pattern "}D"
//   literal    any run up to a separator (space, backspace, tab) or a lone
//              "%"; "%%" stands for "%"
//
// Separators only part items; a format cannot ask for a space.
#pragma once

#include <cstddef>
#include <string_view>

#include "textscan/format_description.h"
#include "textscan/options.h"

namespace textscan {

// A walk over one format text.
struct FormatCursor {
  explicit FormatCursor(std::u16string_view format) : text(format) {}

  std::u16string_view text;
  size_t position = 0;
  // The detail of a failed item, as message text; empty while none failed.
  ustring errorMessage;
  // Where the failed item is reported: 0-based.
  size_t errorPosition = 0;
  // Where the last item's own text ended, before the separators after it.
  size_t itemEnd = 0;

  bool atEnd() const { return position >= text.size(); }
  void skipSeparators();
};

// The item at the cursor; the cursor ends past it and past the separators
// that follow. A failed item has type NoField, sets the error, and leaves
// the cursor at the end of the format.
FormatDescription nextItem(FormatCursor& cursor);

// Splits `format` (escapes already expanded) into options.format, sets
// formatHasStringFields, and makes a format of zero-width items run once.
// Throws "KORVAN:textscan:BadFormatString" for a failed item, with its
// 1-based position, the format from there on and the detail text; and
// "KORVAN:textscan:SecondInput" for a format of separators only.
void parseFormat(Options& options, const ustring& format);

}  // namespace textscan
