// The character classes of one read (whitespace, delimiters, comments, the
// line end) and the moves over them: line end detection, header lines,
// comments, whitespace, delimiter matches.
//
// Every test starts with one table look-up for ASCII units; a unit beyond
// ASCII goes to a sorted list, which only text with such delimiters or
// whitespace ever fills. A byte stream (UTF-8 read as bytes) is used only
// when every special character is ASCII, so its bytes above 127 are plain
// data.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "char_stream.h"
#include "textscan/options.h"
#include "twhost/errors.h"

namespace textscan {

enum CharClass : uint8_t {
  kWhite = 1,
  kDelimiterStart = 2,
  kCommentStart = 4,
  kLineEnd = 8,
};

class ReadContext {
 public:
  // From the settled options, once the line end is known.
  explicit ReadContext(const Options& options);

  [[gnu::always_inline]] uint8_t classOf(char16_t c) const {
    if (c < kAscii) return asciiClass_[c];
    if (!hasWideSpecials_) return 0;
    return wideClass(c);
  }
  bool isSpecial(char16_t c) const { return classOf(c) != 0; }
  bool isWhite(char16_t c) const { return classOf(c) & kWhite; }
  bool isLineEndChar(char16_t c) const { return classOf(c) & kLineEnd; }
  // True when every special character is ASCII: the read may then work on
  // the bytes of UTF-8 text.
  bool asciiOnly() const { return !hasWideSpecials_; }

  std::vector<ustring> delimiters;  // longest first, none empty
  std::vector<ustring> comment;     // one or two strings
  int commentParts = 0;             // 0, 1 (to the line end) or 2 (open, close)
  ustring endOfLine;
  ustring whitespace;
  bool delimiterIsWhitespace = false;
  bool multipleDelimsAsOne = false;
  bool hasWhitespace = false;
  bool hasDelimiters = false;
  bool hasComment = false;
  bool hasEndOfLine = false;
  // Some delimiter is longer than one unit.
  bool hasLongDelimiters = false;

  // ---- the moves, over either stream ----------------------------------------
  // The length of the delimiter at the place, 0 for none.
  template <class S>
  size_t matchDelimiter(S& s, size_t offset = 0) const {
    char16_t c = s.peek(offset);
    if (!(classOf(c) & kDelimiterStart)) return 0;
    if (!hasLongDelimiters) return 1;
    for (const ustring& d : delimiters) {
      if (matchesAt(s, offset, d)) return d.size();
    }
    return 0;
  }

  template <class S>
  static bool matchesAt(S& s, size_t offset, const ustring& text) {
    for (size_t k = 0; k < text.size(); ++k) {
      if (s.peek(offset + k) != text[k]) return false;
    }
    return !text.empty();
  }

  template <class S>
  bool commentOpensHere(S& s) const {
    return commentParts > 0 && (classOf(s.peek()) & kCommentStart) && matchesAt(s, 0, comment[0]);
  }

  template <class S>
  bool atEndOfLine(S& s) const {
    return isLineEndChar(s.peek());
  }

  template <class S>
  void consumeEndOfLine(S& s) const {
    if (endOfLine.size() == 1) {
      if (atEndOfLine(s) || s.atEnd()) s.advance(1);
    } else if (endOfLine.size() == 2) {
      char16_t c = s.peek();
      if (c == u'\r') {
        s.advance(s.peek(1) == u'\n' ? 2 : 1);
      } else if (c == u'\n') {
        s.advance(1);
      }
    }
  }

  // Moves on to the first unit for which `stop` holds, or to the end. One
  // unit at a time, so that a long line never has to stand whole in memory.
  template <class S, class Stop>
  static void skipUntil(S& s, Stop stop) {
    for (char16_t c = s.peek(); c != kEndOfText && !stop(c); c = s.peek()) s.advance(1);
  }

  // `n` lines, each to its first line end character and past the line end.
  template <class S>
  void skipHeaderLines(S& s, double n) const {
    for (double line = 0; line < n; ++line) {
      if (s.atEnd()) return;
      skipUntil(s, [this](char16_t c) { return hasEndOfLine && isLineEndChar(c); });
      consumeEndOfLine(s);
    }
  }

  // At an opening of a comment: past it, to the line end or the closing.
  template <class S>
  void skipComment(S& s) const {
    s.advance(comment[0].size());
    if (commentParts == 1) {
      char16_t first = endOfLine.empty() ? kEndOfText : endOfLine[0];
      skipUntil(s, [first](char16_t c) { return c == first; });
      if (s.atEnd()) return;
      bool both = endOfLine.size() == 2 && s.peek(1) == endOfLine[1];
      s.advance(both ? 2 : 1);
      return;
    }
    const ustring& closing = comment[1];
    for (;;) {
      skipUntil(s, [&closing](char16_t c) { return c == closing[0]; });
      if (s.atEnd()) break;
      if (matchesAt(s, 0, closing)) {
        s.advance(closing.size());
        return;
      }
      s.advance(1);
    }
    kxWarningMsgId(kxMsg("KORVAN:textscan", "SkipComments"));
    s.advance(closing.size());
  }

  // At whitespace. Returns the length of a delimiter found where it stopped
  // (only where whitespace and delimiters overlap), else 0.
  template <class S>
  size_t skipWhitespace(S& s) const {
    if (!delimiterIsWhitespace) {
      size_t i = 0;
      while (isWhite(s.peek(i))) ++i;
      s.advance(i);
      return 0;
    }
    size_t d = matchDelimiter(s);
    if (d >= 2) return d;
    s.advance(1);
    return 0;
  }

  // The line end of the text, from its first line: "\r\n", "\r" or "\n".
  // Moves the stream; the caller goes back to the start.
  template <class S>
  static ustring detectEndOfLine(S& s) {
    while (s.peek() == u'\n') s.advance(1);
    skipUntil(s, [](char16_t c) { return c == u'\n' || c == u'\r'; });
    if (s.peek() != u'\r') return ustring(kLineFeed);
    while (s.peek() == u'\r') s.advance(1);
    return ustring(s.peek() == u'\n' ? kCrLf : kCarriageReturn);
  }

 private:
  static constexpr char16_t kAscii = 128;
  uint8_t wideClass(char16_t c) const;
  void mark(char16_t c, CharClass cls);

  uint8_t asciiClass_[kAscii] = {};
  // Beyond ASCII: sorted units with their classes.
  std::vector<std::pair<char16_t, uint8_t>> wide_;
  bool hasWideSpecials_ = false;
};

}  // namespace textscan
