// Building the character classes of a read from its options.
#include "read_context.h"

#include <set>

namespace textscan {

ReadContext::ReadContext(const Options& options)
    : endOfLine(options.endOfLine),
      whitespace(options.whitespace),
      multipleDelimsAsOne(options.multipleDelimsAsOne) {
  for (const ustring& d : options.delimiters) delimiters.push_back(d);
  std::stable_sort(delimiters.begin(), delimiters.end(),
                   [](const ustring& a, const ustring& b) { return a.size() > b.size(); });
  auto firstEmpty = std::find_if(delimiters.begin(), delimiters.end(),
                                 [](const ustring& d) { return d.empty(); });
  delimiters.erase(firstEmpty, delimiters.end());

  comment = options.commentStyle;
  hasComment = !comment.empty();
  if (hasComment && !comment[0].empty()) {
    commentParts = comment.size() == 2 && !comment[1].empty() ? 2 : 1;
  }
  hasWhitespace = !whitespace.empty();
  hasDelimiters = !delimiters.empty();
  hasEndOfLine = !endOfLine.empty();

  // Whitespace first, then the delimiters' first units: a delimiter whose
  // first unit is already known overlaps with whitespace, and the skips then
  // look for it unit by unit.
  std::set<char16_t> seen;
  for (char16_t c : whitespace) {
    seen.insert(c);
    mark(c, kWhite);
  }
  for (const ustring& d : delimiters) {
    if (!seen.insert(d[0]).second) delimiterIsWhitespace = true;
    mark(d[0], kDelimiterStart);
    if (d.size() > 1) hasLongDelimiters = true;
  }
  if (commentParts > 0) mark(comment[0][0], kCommentStart);
  for (char16_t c : endOfLine) mark(c, kLineEnd);
}

void ReadContext::mark(char16_t c, CharClass cls) {
  // The end of the text opens nothing: it is tested on its own everywhere.
  if (c == kEndOfText) return;
  if (c < kAscii) {
    asciiClass_[c] |= cls;
    return;
  }
  hasWideSpecials_ = true;
  auto at = std::lower_bound(wide_.begin(), wide_.end(), std::make_pair(c, uint8_t{0}));
  if (at != wide_.end() && at->first == c) {
    at->second |= cls;
  } else {
    wide_.insert(at, {c, static_cast<uint8_t>(cls)});
  }
}

uint8_t ReadContext::wideClass(char16_t c) const {
  auto at = std::lower_bound(wide_.begin(), wide_.end(), std::make_pair(c, uint8_t{0}));
  return at != wide_.end() && at->first == c ? at->second : 0;
}

}  // namespace textscan
