// Splits source text into tokens.
//
// Inside [ ] and { } whitespace can separate elements and a newline ends a
// row, so the lexer keeps a stack of open brackets and emits the separators
// itself: `[1 -2]` has two elements, `[1 - 2]` one, and `[a' 'b']` is a
// transpose followed by a text.
#pragma once

#include <string>
#include <vector>

#include "twhost/kx_array.h"

namespace tw {

enum class Tok {
  End,  // end of the source
  Newline,
  Comma,
  Semicolon,
  Number,
  Text,
  Name,
  // keywords
  KwIf,
  KwElseif,
  KwElse,
  KwEnd,
  KwWhile,
  KwFor,
  KwBreak,
  KwContinue,
  KwReturn,
  KwTry,
  KwCatch,
  // operators and punctuation
  Plus,
  Minus,
  Star,
  Slash,
  Backslash,
  Caret,
  DotStar,
  DotSlash,
  DotCaret,
  Quote,     // ' as transpose
  DotQuote,  // .'
  Eq,        // ==
  Ne,        // ~=
  Lt,
  Le,
  Gt,
  Ge,
  Not,  // ~
  AndAnd,
  OrOr,
  And,
  Or,
  Assign,
  Colon,
  Dot,
  LParen,
  RParen,
  LBracket,
  RBracket,
  LBrace,
  RBrace,
};

struct Token {
  Tok kind;
  int line;
  int column;
  std::string name;  // Name
  ustring text;      // Text
  double number = 0;
  bool imaginary = false;  // Number written with an i or j suffix
};

// A source that cannot be read or parsed. `incomplete` is set when more
// input could complete it (an open block, bracket or text), which the
// interactive prompt uses to ask for another line.
struct SyntaxError {
  std::string message;
  int line;
  int column;
  bool incomplete;
};

// Throws SyntaxError.
std::vector<Token> tokenize(const std::string& source);

const char* tokenName(Tok t);

}  // namespace tw
