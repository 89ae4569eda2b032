// The tokenizer.
#include "lexer.h"

#include <cctype>
#include <unordered_map>

#include "twhost/kx_data.h"
#include "twhost/text.h"

namespace tw {

namespace {

const std::unordered_map<std::string, Tok>& keywords() {
  static const std::unordered_map<std::string, Tok> k = {
      {"if", Tok::KwIf},       {"elseif", Tok::KwElseif},     {"else", Tok::KwElse},
      {"end", Tok::KwEnd},     {"while", Tok::KwWhile},       {"for", Tok::KwFor},
      {"break", Tok::KwBreak}, {"continue", Tok::KwContinue}, {"return", Tok::KwReturn},
      {"try", Tok::KwTry},     {"catch", Tok::KwCatch},
  };
  return k;
}

// Names that take their arguments as words when written as commands:
// "format long" is format('long').
bool isCommandWord(const std::string& name) {
  return name == "help" || name == "format";
}

bool isNameStart(char c) {
  return std::isalpha(static_cast<unsigned char>(c));
}
bool isNameChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

class Lexer {
 public:
  explicit Lexer(const std::string& s) : src_(s) {}

  std::vector<Token> run() {
    while (pos_ < src_.size()) step();
    if (!brackets_.empty()) {
      fail(std::string("'") + brackets_.back().open + "' is never closed", brackets_.back().line,
           brackets_.back().column, true);
    }
    push(Tok::End);
    return std::move(out_);
  }

 private:
  struct Open {
    char open;
    int line;
    int column;
  };

  const std::string& src_;
  size_t pos_ = 0;
  int line_ = 1;
  size_t lineStart_ = 0;
  std::vector<Open> brackets_;
  std::vector<Token> out_;
  bool sawSpace_ = false;

  char peek(size_t ahead = 0) const {
    return pos_ + ahead < src_.size() ? src_[pos_ + ahead] : '\0';
  }
  int column() const { return static_cast<int>(pos_ - lineStart_) + 1; }

  [[noreturn]] void fail(const std::string& what, int line, int col, bool incomplete = false) {
    throw SyntaxError{what, line, col, incomplete};
  }
  [[noreturn]] void fail(const std::string& what) { fail(what, line_, column()); }

  Token& push(Tok kind) {
    out_.push_back(Token{kind, line_, column(), {}, {}, 0, false});
    sawSpace_ = false;
    return out_.back();
  }

  bool inMatrix() const {
    return !brackets_.empty() && (brackets_.back().open == '[' || brackets_.back().open == '{');
  }

  bool afterOperand() const {
    if (out_.empty()) return false;
    switch (out_.back().kind) {
      case Tok::Number:
      case Tok::Text:
      case Tok::Name:
      case Tok::RParen:
      case Tok::RBracket:
      case Tok::RBrace:
      case Tok::Quote:
      case Tok::DotQuote:
      case Tok::KwEnd:
        return true;
      default:
        return false;
    }
  }

  // In a matrix, after blank space that follows an operand: does the next
  // character begin a new element?
  bool startsElement() const {
    char c = peek(), n = peek(1);
    if (c == '\'' || c == '"' || c == '(' || c == '[' || c == '{' || c == '@') return true;
    if (isNameStart(c) || isDigit(c)) return true;
    if (c == '.' && isDigit(n)) return true;
    if (c == '~') return n != '=';
    if (c == '+' || c == '-') return n != ' ' && n != '\t' && n != '=' && n != '\n' && n != '\r';
    return false;
  }

  void newline() {
    ++pos_;
    ++line_;
    lineStart_ = pos_;
  }

  void skipToLineEnd() {
    while (pos_ < src_.size() && src_[pos_] != '\n') ++pos_;
  }

  // A line holding only "%{" opens a block comment that a line holding only
  // "%}" closes.
  bool blockCommentStart() const {
    if (peek() != '%' || peek(1) != '{') return false;
    for (size_t i = lineStart_; i < pos_; ++i) {
      if (src_[i] != ' ' && src_[i] != '\t') return false;
    }
    size_t i = pos_ + 2;
    while (i < src_.size() && (src_[i] == ' ' || src_[i] == '\t' || src_[i] == '\r')) ++i;
    return i >= src_.size() || src_[i] == '\n';
  }

  void skipBlockComment() {
    int startLine = line_, startCol = column();
    skipToLineEnd();
    while (pos_ < src_.size()) {
      newline();
      size_t i = pos_;
      while (i < src_.size() && (src_[i] == ' ' || src_[i] == '\t')) ++i;
      bool closes = src_.compare(i, 2, "%}") == 0;
      skipToLineEnd();
      if (closes) return;
    }
    fail("a block comment is never closed", startLine, startCol, true);
  }

  void step() {
    char c = peek();
    if (c == ' ' || c == '\t' || c == '\r') {
      ++pos_;
      sawSpace_ = true;
      return;
    }
    if (c == '.' && peek(1) == '.' && peek(2) == '.') {  // continuation
      skipToLineEnd();
      if (pos_ < src_.size()) newline();
      sawSpace_ = true;
      return;
    }
    if (c == '%') {
      if (blockCommentStart()) {
        skipBlockComment();
      } else {
        skipToLineEnd();
      }
      return;
    }
    if (c == '\n') {
      if (inMatrix()) {
        push(Tok::Semicolon);
      } else if (brackets_.empty()) {
        push(Tok::Newline);
      }
      newline();
      return;
    }
    if (inMatrix() && sawSpace_ && afterOperand() && startsElement()) push(Tok::Comma);

    if (c == '\'') {
      if (afterOperand() && !(sawSpace_ && inMatrix())) {
        push(Tok::Quote);
        ++pos_;
      } else {
        text('\'');
      }
      return;
    }
    if (c == '"') return text('"');
    if (isDigit(c) || (c == '.' && isDigit(peek(1)))) return number();
    if (isNameStart(c)) return name();
    punctuation();
  }

  void text(char quote) {
    int startLine = line_, startCol = column();
    ++pos_;
    std::string raw;
    for (;;) {
      if (pos_ >= src_.size() || src_[pos_] == '\n') {
        fail("a text is not closed on its line", startLine, startCol);
      }
      char c = src_[pos_++];
      if (c == quote) {
        if (peek() == quote) {
          raw += quote;
          ++pos_;
          continue;
        }
        break;
      }
      raw += c;
    }
    Token& t = out_.emplace_back(Token{Tok::Text, startLine, startCol, {}, {}, 0, false});
    t.text = fl::i18n::to_ustring(raw);
    sawSpace_ = false;
  }

  void number() {
    int startCol = column();
    size_t start = pos_;
    while (isDigit(peek())) ++pos_;
    // A point belongs to the number unless it starts an element-wise
    // operator: 1./x is 1 ./ x.
    if (peek() == '.' && peek(1) != '*' && peek(1) != '/' && peek(1) != '^' && peek(1) != '\\' &&
        peek(1) != '\'' && !(peek(1) == '.' && peek(2) == '.')) {
      ++pos_;
      while (isDigit(peek())) ++pos_;
    }
    if ((peek() == 'e' || peek() == 'E') &&
        (isDigit(peek(1)) || ((peek(1) == '+' || peek(1) == '-') && isDigit(peek(2))))) {
      pos_ += 2;
      while (isDigit(peek())) ++pos_;
    }
    std::string digits = src_.substr(start, pos_ - start);
    if (digits[0] == '.') digits.insert(digits.begin(), '0');
    // The host's reader: locale-free, correctly rounded, and it turns
    // overflow into Inf and underflow into 0 the way the language does.
    double v = ut_strtod(digits.c_str(), nullptr);
    bool imag = false;
    if ((peek() == 'i' || peek() == 'j') && !isNameChar(peek(1))) {
      imag = true;
      ++pos_;
    }
    if (isNameChar(peek())) fail("a number runs into a name", line_, column());
    Token t{Tok::Number, line_, startCol, {}, {}, v, imag};
    out_.push_back(t);
    sawSpace_ = false;
  }

  bool atStatementStart() const {
    if (!brackets_.empty()) return false;
    if (out_.empty()) return true;
    Tok last = out_.back().kind;
    return last == Tok::Newline || last == Tok::Semicolon || last == Tok::Comma;
  }

  bool endsCommand(char c) const {
    return c == '\0' || c == '\n' || c == '\r' || c == ',' || c == ';' || c == '%';
  }

  // After a command word and a blank: unless what follows makes it an
  // expression (an assignment or a call), the rest of the statement is
  // words, each passed as a text.
  bool commandArguments() {
    size_t p = pos_;
    while (p < src_.size() && (src_[p] == ' ' || src_[p] == '\t')) ++p;
    if (p == pos_ || p >= src_.size()) return false;
    char next = src_[p];
    if (endsCommand(next) || next == '=' || next == '(') return false;
    pos_ = p;
    push(Tok::LParen);
    bool first = true;
    for (;;) {
      while (peek() == ' ' || peek() == '\t') ++pos_;
      if (endsCommand(peek())) break;
      if (!first) push(Tok::Comma);
      first = false;
      if (peek() == '\'') {
        text('\'');
        continue;
      }
      Token& word = push(Tok::Text);
      size_t start = pos_;
      while (!endsCommand(peek()) && peek() != ' ' && peek() != '\t') ++pos_;
      word.text = fl::i18n::to_ustring(src_.substr(start, pos_ - start));
    }
    push(Tok::RParen);
    return true;
  }

  void name() {
    bool command = atStatementStart();
    int startCol = column();
    size_t start = pos_;
    while (isNameChar(peek())) ++pos_;
    std::string n = src_.substr(start, pos_ - start);
    auto it = keywords().find(n);
    // Field names may be keywords: s.end is a field.
    bool afterDot = !out_.empty() && out_.back().kind == Tok::Dot;
    Token t{(it != keywords().end() && !afterDot) ? it->second : Tok::Name,
            line_,
            startCol,
            n,
            {},
            0,
            false};
    out_.push_back(t);
    sawSpace_ = false;
    if (command && t.kind == Tok::Name && isCommandWord(n)) commandArguments();
  }

  void open(char c, Tok kind) {
    brackets_.push_back(Open{c, line_, column()});
    push(kind);
    ++pos_;
  }

  void close(char c, Tok kind) {
    char want = c == ')' ? '(' : c == ']' ? '[' : '{';
    if (brackets_.empty() || brackets_.back().open != want) {
      fail(std::string("unexpected '") + c + "'");
    }
    brackets_.pop_back();
    push(kind);
    ++pos_;
  }

  void op(Tok kind, size_t len) {
    push(kind);
    pos_ += len;
  }

  void punctuation() {
    char c = peek(), n = peek(1);
    switch (c) {
      case '(':
        return open('(', Tok::LParen);
      case '[':
        return open('[', Tok::LBracket);
      case '{':
        return open('{', Tok::LBrace);
      case ')':
        return close(')', Tok::RParen);
      case ']':
        return close(']', Tok::RBracket);
      case '}':
        return close('}', Tok::RBrace);
      case ',':
        return op(Tok::Comma, 1);
      case ';':
        return op(Tok::Semicolon, 1);
      case '+':
        return op(Tok::Plus, 1);
      case '-':
        return op(Tok::Minus, 1);
      case '*':
        return op(Tok::Star, 1);
      case '/':
        return op(Tok::Slash, 1);
      case '\\':
        return op(Tok::Backslash, 1);
      case '^':
        return op(Tok::Caret, 1);
      case ':':
        return op(Tok::Colon, 1);
      case '.':
        if (n == '*') return op(Tok::DotStar, 2);
        if (n == '/') return op(Tok::DotSlash, 2);
        if (n == '^') return op(Tok::DotCaret, 2);
        if (n == '\'') return op(Tok::DotQuote, 2);
        return op(Tok::Dot, 1);
      case '=':
        return n == '=' ? op(Tok::Eq, 2) : op(Tok::Assign, 1);
      case '~':
        return n == '=' ? op(Tok::Ne, 2) : op(Tok::Not, 1);
      case '!':
        return n == '=' ? op(Tok::Ne, 2) : op(Tok::Not, 1);
      case '<':
        return n == '=' ? op(Tok::Le, 2) : op(Tok::Lt, 1);
      case '>':
        return n == '=' ? op(Tok::Ge, 2) : op(Tok::Gt, 1);
      case '&':
        return n == '&' ? op(Tok::AndAnd, 2) : op(Tok::And, 1);
      case '|':
        return n == '|' ? op(Tok::OrOr, 2) : op(Tok::Or, 1);
      default:
        break;
    }
    unsigned char u = static_cast<unsigned char>(c);
    if (u < 0x20 || u >= 0x7F) fail("a character that has no meaning here");
    fail(std::string("'") + c + "' has no meaning here");
  }
};

}  // namespace

std::vector<Token> tokenize(const std::string& source) {
  return Lexer(source).run();
}

const char* tokenName(Tok t) {
  switch (t) {
    case Tok::End:
      return "the end of the input";
    case Tok::Newline:
      return "the end of the line";
    case Tok::Comma:
      return "','";
    case Tok::Semicolon:
      return "';'";
    case Tok::Number:
      return "a number";
    case Tok::Text:
      return "a text";
    case Tok::Name:
      return "a name";
    case Tok::KwIf:
      return "'if'";
    case Tok::KwElseif:
      return "'elseif'";
    case Tok::KwElse:
      return "'else'";
    case Tok::KwEnd:
      return "'end'";
    case Tok::KwWhile:
      return "'while'";
    case Tok::KwFor:
      return "'for'";
    case Tok::KwBreak:
      return "'break'";
    case Tok::KwContinue:
      return "'continue'";
    case Tok::KwReturn:
      return "'return'";
    case Tok::KwTry:
      return "'try'";
    case Tok::KwCatch:
      return "'catch'";
    case Tok::Plus:
      return "'+'";
    case Tok::Minus:
      return "'-'";
    case Tok::Star:
      return "'*'";
    case Tok::Slash:
      return "'/'";
    case Tok::Backslash:
      return "'\\'";
    case Tok::Caret:
      return "'^'";
    case Tok::DotStar:
      return "'.*'";
    case Tok::DotSlash:
      return "'./'";
    case Tok::DotCaret:
      return "'.^'";
    case Tok::Quote:
      return "'''";
    case Tok::DotQuote:
      return "'.''";
    case Tok::Eq:
      return "'=='";
    case Tok::Ne:
      return "'~='";
    case Tok::Lt:
      return "'<'";
    case Tok::Le:
      return "'<='";
    case Tok::Gt:
      return "'>'";
    case Tok::Ge:
      return "'>='";
    case Tok::Not:
      return "'~'";
    case Tok::AndAnd:
      return "'&&'";
    case Tok::OrOr:
      return "'||'";
    case Tok::And:
      return "'&'";
    case Tok::Or:
      return "'|'";
    case Tok::Assign:
      return "'='";
    case Tok::Colon:
      return "':'";
    case Tok::Dot:
      return "'.'";
    case Tok::LParen:
      return "'('";
    case Tok::RParen:
      return "')'";
    case Tok::LBracket:
      return "'['";
    case Tok::RBracket:
      return "']'";
    case Tok::LBrace:
      return "'{'";
    case Tok::RBrace:
      return "'}'";
  }
  return "?";
}

}  // namespace tw
