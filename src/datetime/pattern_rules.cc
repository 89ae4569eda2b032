#include "pattern_rules.h"

namespace datetime {

namespace {

constexpr char16_t kQuote = u'\'';

// The C library's tolower in the "C" locale: only ASCII letters are letters.
bool isAsciiLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

}  // namespace

ustring trailingLiteralOf(const ustring& pattern) {
  if (pattern.empty()) return {};
  constexpr long kNone = -1;
  long length = static_cast<long>(pattern.size());
  bool inQuote = pattern[0] == kQuote;
  long start = inQuote ? kNone : 1;
  for (long i = 0; i < length; ++i) {
    char16_t c = pattern[static_cast<size_t>(i)];
    if (inQuote) {
      if (c != kQuote) continue;
      inQuote = false;
      if (i == length - 1) {
        --length;  // a closing quote at the end is not part of the literal
      } else {
        start = kNone;
      }
    } else if (isAsciiLetter(c)) {
      start = kNone;
    } else if (c == kQuote) {
      start = i + 1;
      inQuote = true;
    } else if (start == kNone) {
      start = i;
    }
  }
  if (start == kNone || start >= length) return {};
  return pattern.substr(static_cast<size_t>(start), static_cast<size_t>(length - start));
}

bool hasUnquotedZoneLetter(const ustring& pattern) {
  bool quoted = false;
  for (char16_t c : pattern) {
    if (c == kQuote) {
      quoted = !quoted;
    } else if (!quoted && (c == u'Z' || c == u'z' || c == u'X' || c == u'x')) {
      return true;
    }
  }
  return false;
}

bool holdsAnyOf(const ustring& pattern, const char16_t* letters) {
  return pattern.find_first_of(letters) != ustring::npos;
}

FractionRun fractionRunOf(const ustring& pattern) {
  FractionRun run;
  run.first = pattern.find(u'S');
  if (run.first != ustring::npos) run.last = pattern.rfind(u'S');
  return run;
}

}  // namespace datetime
