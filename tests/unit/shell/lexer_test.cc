// Tokens, with the attention on what depends on context: blanks and
// quotes inside brackets, numbers next to operators, comments.
#include "lexer.h"

#include <gtest/gtest.h>

#include <cmath>

#include "twhost/text.h"

namespace tw {
namespace {

std::vector<Tok> kinds(const std::string& src) {
  std::vector<Tok> out;
  for (const Token& t : tokenize(src)) out.push_back(t.kind);
  return out;
}

TEST(Lexer, BlankBeforeSignInsideBracketsSeparatesElements) {
  EXPECT_EQ(kinds("[1 -2]"), (std::vector<Tok>{Tok::LBracket, Tok::Number, Tok::Comma, Tok::Minus,
                                               Tok::Number, Tok::RBracket, Tok::End}));
  EXPECT_EQ(kinds("[1 - 2]"), (std::vector<Tok>{Tok::LBracket, Tok::Number, Tok::Minus, Tok::Number,
                                                Tok::RBracket, Tok::End}));
}

TEST(Lexer, BlankOutsideBracketsIsNotASeparator) {
  EXPECT_EQ(kinds("1 -2"), (std::vector<Tok>{Tok::Number, Tok::Minus, Tok::Number, Tok::End}));
}

TEST(Lexer, ParenthesesInsideBracketsIgnoreBlanks) {
  EXPECT_EQ(
      kinds("[f(1, 2) 3]"),
      (std::vector<Tok>{Tok::LBracket, Tok::Name, Tok::LParen, Tok::Number, Tok::Comma, Tok::Number,
                        Tok::RParen, Tok::Comma, Tok::Number, Tok::RBracket, Tok::End}));
}

TEST(Lexer, QuoteAfterValueTransposesAndAfterBlankInBracketsStartsText) {
  std::vector<Token> t = tokenize("[a' 'b']");
  ASSERT_EQ(t.size(), 7u);
  EXPECT_EQ(t[1].kind, Tok::Name);
  EXPECT_EQ(t[2].kind, Tok::Quote);
  EXPECT_EQ(t[3].kind, Tok::Comma);
  EXPECT_EQ(t[4].kind, Tok::Text);
  EXPECT_EQ(t[4].text, u"b");
}

TEST(Lexer, QuoteAtStartOfExpressionIsText) {
  std::vector<Token> t = tokenize("x = 'it''s'");
  ASSERT_EQ(t[2].kind, Tok::Text);
  EXPECT_EQ(t[2].text, u"it's");
}

TEST(Lexer, DoubleQuotedTextDoublesItsQuoteAndKeepsBackslashes) {
  std::vector<Token> t = tokenize(R"("a""b\n")");
  ASSERT_EQ(t[0].kind, Tok::Text);
  EXPECT_EQ(t[0].text, u"a\"b\\n");
}

TEST(Lexer, TextIsDecodedFromUtf8) {
  std::vector<Token> t = tokenize("'\xC3\xA9\xF0\x9F\x98\x80'");
  EXPECT_EQ(t[0].text, (std::u16string{0xE9, 0xD83D, 0xDE00}));
}

TEST(Lexer, NumbersInTheirForms) {
  std::vector<Token> t = tokenize("1 1.5 .5 1e3 2.5E-2 3i 4.5j");
  std::vector<double> values;
  for (const Token& k : t) {
    if (k.kind == Tok::Number) values.push_back(k.number);
  }
  EXPECT_EQ(values, (std::vector<double>{1, 1.5, 0.5, 1000, 0.025, 3, 4.5}));
  EXPECT_FALSE(t[4].imaginary);
  EXPECT_TRUE(t[5].imaginary);
  EXPECT_TRUE(t[6].imaginary);
}

TEST(Lexer, PointBeforeElementWiseOperatorBelongsToTheOperator) {
  EXPECT_EQ(kinds("1./x"), (std::vector<Tok>{Tok::Number, Tok::DotSlash, Tok::Name, Tok::End}));
  EXPECT_EQ(kinds("2.^x"), (std::vector<Tok>{Tok::Number, Tok::DotCaret, Tok::Name, Tok::End}));
}

TEST(Lexer, HugeAndTinyLiteralsBecomeInfinityAndZero) {
  std::vector<Token> t = tokenize("1e400 1e-400");
  EXPECT_TRUE(std::isinf(t[0].number));
  EXPECT_EQ(t[1].number, 0.0);
}

TEST(Lexer, CommentsAndContinuationsVanish) {
  EXPECT_EQ(kinds("a % note\nb"), (std::vector<Tok>{Tok::Name, Tok::Newline, Tok::Name, Tok::End}));
  EXPECT_EQ(kinds("a + ... more\n b"),
            (std::vector<Tok>{Tok::Name, Tok::Plus, Tok::Name, Tok::End}));
  EXPECT_EQ(kinds("a\n%{\nhidden\n%}\nb"),
            (std::vector<Tok>{Tok::Name, Tok::Newline, Tok::Newline, Tok::Name, Tok::End}));
}

TEST(Lexer, NewlineInsideBracketsEndsARow) {
  EXPECT_EQ(kinds("[1\n2]"), (std::vector<Tok>{Tok::LBracket, Tok::Number, Tok::Semicolon,
                                               Tok::Number, Tok::RBracket, Tok::End}));
}

TEST(Lexer, KeywordAfterDotIsAFieldName) {
  std::vector<Token> t = tokenize("s.end = 1; end");
  EXPECT_EQ(t[2].kind, Tok::Name);
  EXPECT_EQ(t[6].kind, Tok::KwEnd);
}

TEST(Lexer, UnclosedBracketIsIncompleteButUnclosedTextIsNot) {
  try {
    tokenize("x = [1 2");
    FAIL();
  } catch (const SyntaxError& e) {
    EXPECT_TRUE(e.incomplete);
  }
  try {
    tokenize("x = 'abc\ny = 1");
    FAIL();
  } catch (const SyntaxError& e) {
    EXPECT_FALSE(e.incomplete);
    EXPECT_EQ(e.line, 1);
    EXPECT_EQ(e.column, 5);
  }
}

TEST(Lexer, MismatchedClosingBracketIsAnError) {
  EXPECT_THROW(tokenize("(1]"), SyntaxError);
  EXPECT_THROW(tokenize("x = 1)"), SyntaxError);
}

TEST(Lexer, NumberRunningIntoANameIsAnError) {
  EXPECT_THROW(tokenize("2x"), SyntaxError);
}

// The texts of a command's words, or "(not a command)".
std::string commandWords(const std::string& src) {
  std::vector<Token> t = tokenize(src);
  if (t.size() < 3 || t[1].kind != Tok::LParen || t[2].kind == Tok::Number) {
    return "(not a command)";
  }
  std::string words;
  for (const Token& k : t) {
    if (k.kind == Tok::Text) words += (words.empty() ? "" : "|") + fl::i18n::to_string(k.text);
  }
  return words;
}

TEST(Lexer, HelpAndFormatTakeWordsWhenWrittenAsCommands) {
  const std::pair<const char*, const char*> cases[] = {
      {"format long", "long"},
      {"help fopen", "fopen"},
      {"  help   fread  ; x = 1", "fread"},
      {"help 'two words' more % a comment", "two words|more"},
      {"format('long')", "long"},  // the call as it stands
      {"format = 3", "(not a command)"},
  };
  for (const auto& [src, words] : cases) EXPECT_EQ(commandWords(src), words) << src;
  // After a separator a command starts a statement of its own.
  std::vector<Token> t = tokenize("x = 1, format short");
  EXPECT_EQ(t[4].name, "format");
  EXPECT_EQ(t[5].kind, Tok::LParen);
  EXPECT_EQ(fl::i18n::to_string(t[6].text), "short");
  EXPECT_EQ(t[6].column, 15);
}

TEST(Lexer, OtherNamesFollowedByWordsStayExpressions) {
  EXPECT_EQ(kinds("disp hello"), (std::vector<Tok>{Tok::Name, Tok::Name, Tok::End}));
  EXPECT_EQ(kinds("[help fopen]"), (std::vector<Tok>{Tok::LBracket, Tok::Name, Tok::Comma,
                                                     Tok::Name, Tok::RBracket, Tok::End}));
}

}  // namespace
}  // namespace tw
