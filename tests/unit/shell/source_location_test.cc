// Source locations: which line, which column in characters, and the caret
// that points at it.
#include "source_location.h"

#include <gtest/gtest.h>

namespace tw {
namespace {

TEST(SourceLocation, FindsTheLineAndCountsColumnsInCharacters) {
  const std::string source = "a = 1;\r\nb = 'caf\xC3\xA9' + x\nlast";
  SourceLocation where = locate("s.tw", source, 2, 16);  // the byte of x
  EXPECT_EQ(where.file, "s.tw");
  EXPECT_EQ(where.line, 2);
  EXPECT_EQ(where.text, "b = 'caf\xC3\xA9' + x");
  EXPECT_EQ(where.column, 15);                         // é is two bytes and one character
  EXPECT_EQ(locate("", source, 1, 1).text, "a = 1;");  // without the CR
  EXPECT_EQ(locate("", source, 3, 2).text, "last");
}

TEST(SourceLocation, UnknownLinesGiveNoTextAndNoColumn) {
  SourceLocation past = locate("s.tw", "one line", 5, 3);
  EXPECT_EQ(past.file, "s.tw");
  EXPECT_EQ(past.line, 0);
  EXPECT_EQ(past.column, 0);
  EXPECT_EQ(caretLines(past, 4), "");
  EXPECT_EQ(locate("", "x", 0, 0).line, 0);
}

TEST(SourceLocation, TheCaretStandsUnderTheColumnPastTabsAndWideCharacters) {
  struct Case {
    std::string line;
    int byteColumn;
    int indent;
    std::string caret;
  };
  const Case cases[] = {
      {"y = x(4)", 5, 6, "      y = x(4)\n          ^\n"},
      {"\tz = w", 6, 2, "  \tz = w\n  \t    ^\n"},
      {"s = '\xC3\xA9' + 1", 12, 2, "  s = '\xC3\xA9' + 1\n            ^\n"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(caretLines(locate("f", c.line, 1, c.byteColumn), c.indent), c.caret) << c.line;
  }
}

}  // namespace
}  // namespace tw
