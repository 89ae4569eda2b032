// What the date parser reads off a pattern before ICU sees it: the literal
// text a date must end with, the time-zone letters it refuses, the run of
// fraction letters, and which parts of the date the pattern leaves to the
// defaults.
#pragma once

#include <cstddef>
#include <string>

namespace datetime {

using ustring = std::u16string;

// The literal text at the end of a pattern, which every date read with it
// must end with. `pattern` is already trimmed. One left-to-right scan that
// toggles on apostrophes; a pattern that starts with an apostrophe reads its
// quotes inverted, and a pattern without letters loses its first unit. Both
// quirks are part of the rule that existing formats were written against.
ustring trailingLiteralOf(const ustring& pattern);

// True when a time-zone letter (Z, z, X, x) stands outside apostrophes.
bool hasUnquotedZoneLetter(const ustring& pattern);

// True when any of `letters` occurs anywhere in the pattern, quoted or not.
bool holdsAnyOf(const ustring& pattern, const char16_t* letters);

// The first and last "S" of the pattern, quoted or not; first is npos when
// there is none.
struct FractionRun {
  size_t first = ustring::npos;
  size_t last = ustring::npos;
  size_t length() const { return first == ustring::npos ? 0 : last - first + 1; }
};
FractionRun fractionRunOf(const ustring& pattern);

}  // namespace datetime
