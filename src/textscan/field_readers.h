// Field readers: for one format item, how much of the text at the current
// place is this field. A reader converts nothing; it gives a length, and
// the field is the text from the stream's place on (a numeric reader first
// moves past leading spaces, or past a "TreatAsEmpty" word). A field that
// cannot be read here gives `ok` false; the stream then stays where the
// reader left it. No allocation, no throw, no virtual call.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "read_context.h"
#include "textscan/format_description.h"
#include "textscan/number_lexer.h"

namespace textscan {

// A set of units with an ASCII table and a sorted list beyond it.
class UnitSet {
 public:
  UnitSet() = default;
  explicit UnitSet(std::u16string_view units) {
    for (char16_t c : units) add(c);
  }
  void add(char16_t c) {
    if (c < 128) {
      ascii_[c >> 6] |= uint64_t{1} << (c & 63);
    } else if (!std::binary_search(wide_.begin(), wide_.end(), c)) {
      wide_.insert(std::lower_bound(wide_.begin(), wide_.end(), c), c);
    }
  }
  bool contains(char16_t c) const {
    if (c < 128) return (ascii_[c >> 6] >> (c & 63)) & 1;
    return !wide_.empty() && std::binary_search(wide_.begin(), wide_.end(), c);
  }
  bool asciiOnly() const { return wide_.empty(); }

 private:
  uint64_t ascii_[2] = {0, 0};
  std::u16string wide_;
};

// The strings that end a string field, longest first.
struct StopStrings {
  std::vector<ustring> strings;
  UnitSet firstUnits;
  bool anyLong = false;

  explicit StopStrings(std::vector<ustring> list = {}) : strings(std::move(list)) {
    std::stable_sort(strings.begin(), strings.end(),
                     [](const ustring& a, const ustring& b) { return a.size() > b.size(); });
    auto empty =
        std::find_if(strings.begin(), strings.end(), [](const ustring& s) { return s.empty(); });
    strings.erase(empty, strings.end());
    for (const ustring& s : strings) {
      if (s[0] != kEndOfText) firstUnits.add(s[0]);
      anyLong |= s.size() > 1;
    }
  }
  template <class S>
  bool matchAt(S& s, size_t i) const {
    if (!anyLong) return true;  // the first unit matched, and it is the whole string
    for (const ustring& t : strings) {
      if (ReadContext::matchesAt(s, i, t)) return true;
    }
    return false;
  }
};

struct FieldResult {
  size_t length = 0;
  bool ok = true;
};

// What one format item reads with; made once per read.
struct ItemReader {
  SpecifierType type = NoField;
  bool skip = false;
  bool hasWidth = false;
  size_t width = 0;
  ustring literal;
  UnitSet members;  // %[...] and %[^...]
  char16_t quote = u'"';
  const StopStrings* stops = nullptr;
  NumberSyntax syntax{kDefaultExpChars};
  // A numeric item without width or precision whose exponent letters
  // include "e" and "E": its common numbers can be read in one pass.
  bool plainNumbers = false;
  // A %s, %q, %t, %C or %D item without width whose stops are all one unit
  // long: its common fields (unquoted, ending inside the window) take one
  // scan.
  bool plainText = false;
  const char* label = "";
};

// ---- the scans ------------------------------------------------------------

// The offset, from the place and starting at `from`, of the first unit for
// which `stop` holds, not looking at `bound` or beyond; the end of the input
// stops it too. Works over the buffered window, refilling at its end.
template <class S, class Stop>
size_t scanFor(S& s, size_t from, size_t bound, Stop stop) {
  size_t i = from;
  for (;;) {
    size_t n = std::min(s.buffered(), bound);
    const auto* p = s.data() + s.head();
    while (i < n) {
      if (stop(S::unit(p[i]))) return i;
      ++i;
    }
    if (i >= bound || !s.available(i + 1)) return i;
  }
}

// The end of a string field from `from`: the first stop string, the end of
// the input, or `bound`.
template <class S>
size_t scanToStop(S& s, const StopStrings& stops, size_t from, size_t bound = SIZE_MAX) {
  size_t i = from;
  for (;;) {
    i = scanFor(s, i, bound, [&](char16_t c) { return stops.firstUnits.contains(c); });
    if (i >= bound || s.peek(i) == kEndOfText || stops.matchAt(s, i)) return i;
    ++i;
  }
}

// ---- the readers ----------------------------------------------------------

template <class S>
FieldResult readString(const ItemReader& r, S& s) {
  if (!r.hasWidth) return {scanToStop(s, *r.stops, 0)};
  return {std::min(scanToStop(s, *r.stops, 0, r.width), r.width)};
}

// The closing quote of a field opened at the place: the first lone quote
// from `from` on; doubled quotes are passed. `doubled` counts them.
template <class S>
size_t findClosingQuote(S& s, char16_t quote, size_t bound, size_t& doubled) {
  size_t i = 1;
  doubled = 0;
  for (;;) {
    i = scanFor(s, i, bound, [quote](char16_t c) { return c == quote; });
    if (i >= bound || s.peek(i) == kEndOfText) return i;
    if (s.peek(i + 1) != quote) return i;
    ++doubled;
    i += 2;
  }
}

template <class S>
FieldResult readQuoted(const ItemReader& r, S& s) {
  if (s.peek() != r.quote) return readString(r, s);
  size_t doubled;
  if (!r.hasWidth) {
    size_t closing = findClosingQuote(s, r.quote, SIZE_MAX, doubled);
    return {scanToStop(s, *r.stops, closing)};
  }
  // The width counts the content, not the quotes.
  size_t bound = 2 * r.width + 3;
  size_t closing = findClosingQuote(s, r.quote, bound, doubled);
  size_t stop = scanToStop(s, *r.stops, std::min(closing, bound), bound);
  size_t raw = 1 + doubled + r.width;
  if (r.width > stop) return {stop};
  if (closing > raw) return {std::min(raw, stop)};
  bool quoteThere = closing < bound && s.peek(closing) == r.quote;
  return {std::min(raw + quoteThere, stop)};
}

template <class S>
FieldResult readCharacters(const ItemReader& r, S& s) {
  if (!s.available(r.width)) return {0, false};
  return {r.width};
}

template <class S>
FieldResult readSet(const ItemReader& r, S& s, const ReadContext& ctx) {
  size_t bound = r.hasWidth ? r.width : SIZE_MAX;
  bool negated = r.type == NegatedSetField;
  size_t run = scanFor(s, 0, bound, [&](char16_t c) { return r.members.contains(c) == negated; });
  if (run > 0) return {run};
  if (!negated) return {0, false};
  // An empty %[^...] field is fine where a field may end.
  char16_t c = s.peek();
  if (c == kEndOfText || ctx.isLineEndChar(c) || ctx.matchDelimiter(s) > 0) return {0};
  return {0, !r.members.contains(c)};
}

template <class S>
FieldResult readLiteral(const ItemReader& r, S& s) {
  if (ReadContext::matchesAt(s, 0, r.literal)) return {r.literal.size()};
  return {0, false};
}

}  // namespace textscan
