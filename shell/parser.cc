// A recursive-descent parser. Precedence, loosest first: || && | & the
// comparisons, ranges, + -, * / .* ./ \, unary - + ~, ^ .^, and the
// postfix forms: subscripts, fields and transposes.
#include "parser.h"

#include <utility>

namespace tw {

namespace {

class Parser {
 public:
  Parser(std::vector<Token> tokens, SymbolTable& symbols)
      : toks_(std::move(tokens)), symbols_(symbols) {}

  Block program() {
    Block b = block({});
    if (!at(Tok::End)) unexpected();
    return b;
  }

 private:
  std::vector<Token> toks_;
  SymbolTable& symbols_;
  size_t pos_ = 0;
  int subscriptDepth_ = 0;  // inside x(...) or x{...}, where 'end' is a value

  const Token& cur() const { return toks_[pos_]; }
  const Token& ahead(size_t n) const { return toks_[std::min(pos_ + n, toks_.size() - 1)]; }
  bool at(Tok k) const { return cur().kind == k; }
  bool accept(Tok k) {
    if (!at(k)) return false;
    ++pos_;
    return true;
  }

  [[noreturn]] void fail(const std::string& what, const Token& where, bool incomplete = false) {
    throw SyntaxError{what, where.line, where.column, incomplete};
  }
  [[noreturn]] void unexpected() {
    fail(std::string("unexpected ") + tokenName(cur().kind), cur(), at(Tok::End));
  }
  void expect(Tok k, const char* context) {
    if (accept(k)) return;
    fail(std::string("expected ") + tokenName(k) + " " + context + ", found " +
             tokenName(cur().kind),
         cur(), at(Tok::End));
  }

  static void startAt(Stmt& s, const Token& t) {
    s.line = t.line;
    s.column = t.column;
  }

  ExprPtr node(ExprKind kind, const Token& at) {
    auto e = std::make_unique<Expr>();
    e->kind = kind;
    e->line = at.line;
    e->column = at.column;
    return e;
  }

  // ---- statements ------------------------------------------------------------

  bool isSeparator() const { return at(Tok::Comma) || at(Tok::Semicolon) || at(Tok::Newline); }

  // Statements up to one of the closing keywords (not consumed).
  Block block(std::initializer_list<Tok> closers) {
    Block b;
    for (;;) {
      while (isSeparator()) ++pos_;
      if (at(Tok::End)) return b;
      for (Tok c : closers) {
        if (at(c)) return b;
      }
      b.push_back(statement());
    }
  }

  // After a statement: ';' hides its value; ',' or a line end shows it.
  void finish(Stmt& s) {
    if (accept(Tok::Semicolon)) {
      s.display = false;
    } else if (accept(Tok::Comma) || accept(Tok::Newline)) {
      s.display = true;
    } else if (at(Tok::End) || at(Tok::KwEnd) || at(Tok::KwElse) || at(Tok::KwElseif) ||
               at(Tok::KwCatch)) {
      s.display = true;
    } else {
      fail(std::string("expected the end of the statement, found ") + tokenName(cur().kind), cur());
    }
  }

  void endBlock(const Token& opener, const char* what) {
    if (at(Tok::End)) fail(std::string("this '") + what + "' has no 'end'", opener, true);
    expect(Tok::KwEnd, "to close the block");
  }

  Stmt statement() {
    const Token& first = cur();
    Stmt s;
    startAt(s, first);
    switch (first.kind) {
      case Tok::KwIf:
        return ifStatement();
      case Tok::KwWhile: {
        ++pos_;
        s.kind = StmtKind::While;
        s.expr = expression();
        s.body = block({Tok::KwEnd});
        endBlock(first, "while");
        finish(s);
        return s;
      }
      case Tok::KwFor:
        return forStatement();
      case Tok::KwTry:
        return tryStatement();
      case Tok::KwBreak:
      case Tok::KwContinue:
      case Tok::KwReturn:
        ++pos_;
        s.kind = first.kind == Tok::KwBreak      ? StmtKind::Break
                 : first.kind == Tok::KwContinue ? StmtKind::Continue
                                                 : StmtKind::Return;
        finish(s);
        return s;
      case Tok::KwEnd:
      case Tok::KwElse:
      case Tok::KwElseif:
      case Tok::KwCatch:
        fail(std::string(tokenName(first.kind)) + " without a block to belong to", first);
      default:
        break;
    }
    if (at(Tok::LBracket) && isMultiAssignment()) return multiAssignment();
    ExprPtr e = expression();
    if (accept(Tok::Assign)) {
      checkTarget(*e);
      s.kind = StmtKind::Assign;
      s.targets.push_back(std::move(e));
      s.expr = expression();
    } else {
      s.kind = StmtKind::Expr;
      s.expr = std::move(e);
    }
    finish(s);
    return s;
  }

  Stmt ifStatement() {
    const Token& opener = cur();
    Stmt s;
    s.kind = StmtKind::If;
    startAt(s, opener);
    ++pos_;
    for (;;) {
      IfClause c;
      c.condition = expression();
      c.body = block({Tok::KwElseif, Tok::KwElse, Tok::KwEnd});
      s.clauses.push_back(std::move(c));
      if (!accept(Tok::KwElseif)) break;
    }
    if (accept(Tok::KwElse)) {
      IfClause c;
      c.body = block({Tok::KwEnd});
      s.clauses.push_back(std::move(c));
    }
    endBlock(opener, "if");
    finish(s);
    return s;
  }

  Stmt forStatement() {
    const Token& opener = cur();
    Stmt s;
    s.kind = StmtKind::For;
    startAt(s, opener);
    ++pos_;
    bool paren = accept(Tok::LParen);
    if (!at(Tok::Name)) fail("expected the loop variable after 'for'", cur(), at(Tok::End));
    s.slot = symbols_.intern(cur().name);
    ++pos_;
    expect(Tok::Assign, "after the loop variable");
    s.expr = expression();
    if (paren) expect(Tok::RParen, "to close the loop header");
    s.body = block({Tok::KwEnd});
    endBlock(opener, "for");
    finish(s);
    return s;
  }

  Stmt tryStatement() {
    const Token& opener = cur();
    Stmt s;
    s.kind = StmtKind::Try;
    startAt(s, opener);
    ++pos_;
    s.body = block({Tok::KwCatch, Tok::KwEnd});
    if (accept(Tok::KwCatch)) {
      if (at(Tok::Name) && cur().line == toks_[pos_ - 1].line) {
        s.slot = symbols_.intern(cur().name);
        ++pos_;
      }
      s.handler = block({Tok::KwEnd});
    }
    endBlock(opener, "try");
    finish(s);
    return s;
  }

  // '[' ... ']' '=' at the start of a statement.
  bool isMultiAssignment() const {
    int depth = 0;
    for (size_t i = pos_; i < toks_.size(); ++i) {
      Tok k = toks_[i].kind;
      if (k == Tok::LBracket || k == Tok::LParen || k == Tok::LBrace) ++depth;
      if (k == Tok::RBracket || k == Tok::RParen || k == Tok::RBrace) {
        if (--depth == 0) return i + 1 < toks_.size() && toks_[i + 1].kind == Tok::Assign;
      }
      if (k == Tok::End || k == Tok::Newline) return false;
    }
    return false;
  }

  Stmt multiAssignment() {
    Stmt s;
    s.kind = StmtKind::MultiAssign;
    startAt(s, cur());
    expect(Tok::LBracket, "");
    for (;;) {
      while (accept(Tok::Comma)) {
      }
      if (accept(Tok::RBracket)) break;
      if (at(Tok::Not) && (ahead(1).kind == Tok::Comma || ahead(1).kind == Tok::RBracket)) {
        ++pos_;
        s.targets.push_back(nullptr);
        continue;
      }
      ExprPtr t = postfix();
      checkTarget(*t);
      s.targets.push_back(std::move(t));
      if (!at(Tok::Comma) && !at(Tok::RBracket)) unexpected();
    }
    if (s.targets.empty()) fail("an assignment needs at least one output", cur());
    expect(Tok::Assign, "");
    s.expr = expression();
    finish(s);
    return s;
  }

  // A target is a name followed by any subscripts and fields.
  void checkTarget(const Expr& e) {
    const Expr* p = &e;
    for (;;) {
      switch (p->kind) {
        case ExprKind::Name:
          return;
        case ExprKind::Call:
        case ExprKind::Brace:
        case ExprKind::Field:
        case ExprKind::DynField:
          p = p->args[0].get();
          continue;
        default:
          throw SyntaxError{"only a variable, its elements or its fields can be assigned to",
                            e.line, e.column, false};
      }
    }
  }

  // ---- expressions ------------------------------------------------------------

  ExprPtr expression() { return orOr(); }

  ExprPtr binary(ExprKind kind, int op, ExprPtr l, ExprPtr r, const Token& at) {
    auto e = node(kind, at);
    e->op = op;
    e->args.push_back(std::move(l));
    e->args.push_back(std::move(r));
    return e;
  }

  ExprPtr orOr() {
    ExprPtr l = andAnd();
    while (at(Tok::OrOr)) {
      const Token& t = cur();
      ++pos_;
      l = binary(ExprKind::OrOr, 0, std::move(l), andAnd(), t);
    }
    return l;
  }

  ExprPtr andAnd() {
    ExprPtr l = elementOr();
    while (at(Tok::AndAnd)) {
      const Token& t = cur();
      ++pos_;
      l = binary(ExprKind::AndAnd, 0, std::move(l), elementOr(), t);
    }
    return l;
  }

  ExprPtr elementOr() {
    ExprPtr l = elementAnd();
    while (at(Tok::Or)) {
      const Token& t = cur();
      ++pos_;
      l = binary(ExprKind::Binary, static_cast<int>(BinaryOp::Or), std::move(l), elementAnd(), t);
    }
    return l;
  }

  ExprPtr elementAnd() {
    ExprPtr l = comparison();
    while (at(Tok::And)) {
      const Token& t = cur();
      ++pos_;
      l = binary(ExprKind::Binary, static_cast<int>(BinaryOp::And), std::move(l), comparison(), t);
    }
    return l;
  }

  ExprPtr comparison() {
    ExprPtr l = range();
    for (;;) {
      BinaryOp op;
      switch (cur().kind) {
        case Tok::Eq:
          op = BinaryOp::Eq;
          break;
        case Tok::Ne:
          op = BinaryOp::Ne;
          break;
        case Tok::Lt:
          op = BinaryOp::Lt;
          break;
        case Tok::Le:
          op = BinaryOp::Le;
          break;
        case Tok::Gt:
          op = BinaryOp::Gt;
          break;
        case Tok::Ge:
          op = BinaryOp::Ge;
          break;
        default:
          return l;
      }
      const Token& t = cur();
      ++pos_;
      l = binary(ExprKind::Binary, static_cast<int>(op), std::move(l), range(), t);
    }
  }

  ExprPtr range() {
    ExprPtr first = additive();
    if (!at(Tok::Colon)) return first;
    const Token& t = cur();
    ++pos_;
    ExprPtr second = additive();
    auto e = node(ExprKind::Range, t);
    e->args.push_back(std::move(first));
    if (accept(Tok::Colon)) {
      e->args.push_back(std::move(second));
      e->args.push_back(additive());
    } else {
      e->args.push_back(nullptr);
      e->args.push_back(std::move(second));
    }
    return e;
  }

  ExprPtr additive() {
    ExprPtr l = multiplicative();
    while (at(Tok::Plus) || at(Tok::Minus)) {
      const Token& t = cur();
      BinaryOp op = at(Tok::Plus) ? BinaryOp::Add : BinaryOp::Sub;
      ++pos_;
      l = binary(ExprKind::Binary, static_cast<int>(op), std::move(l), multiplicative(), t);
    }
    return l;
  }

  ExprPtr multiplicative() {
    ExprPtr l = unary();
    for (;;) {
      BinaryOp op;
      switch (cur().kind) {
        case Tok::Star:
          op = BinaryOp::Mul;
          break;
        case Tok::Slash:
          op = BinaryOp::Div;
          break;
        case Tok::Backslash:
          op = BinaryOp::LeftDiv;
          break;
        case Tok::DotStar:
          op = BinaryOp::ElMul;
          break;
        case Tok::DotSlash:
          op = BinaryOp::ElDiv;
          break;
        default:
          return l;
      }
      const Token& t = cur();
      ++pos_;
      l = binary(ExprKind::Binary, static_cast<int>(op), std::move(l), unary(), t);
    }
  }

  ExprPtr unary() {
    UnaryOp op;
    switch (cur().kind) {
      case Tok::Minus:
        op = UnaryOp::Minus;
        break;
      case Tok::Plus:
        op = UnaryOp::Plus;
        break;
      case Tok::Not:
        op = UnaryOp::Not;
        break;
      default:
        return power();
    }
    const Token& t = cur();
    ++pos_;
    auto e = node(ExprKind::Unary, t);
    e->op = static_cast<int>(op);
    e->args.push_back(unary());
    return e;
  }

  // The exponent may carry its own sign: 2^-1.
  ExprPtr powerOperand() {
    if (at(Tok::Minus) || at(Tok::Plus) || at(Tok::Not)) {
      const Token& t = cur();
      UnaryOp op = at(Tok::Minus) ? UnaryOp::Minus : at(Tok::Plus) ? UnaryOp::Plus : UnaryOp::Not;
      ++pos_;
      auto e = node(ExprKind::Unary, t);
      e->op = static_cast<int>(op);
      e->args.push_back(powerOperand());
      return e;
    }
    return postfix();
  }

  ExprPtr power() {
    ExprPtr l = postfix();
    while (at(Tok::Caret) || at(Tok::DotCaret)) {
      const Token& t = cur();
      BinaryOp op = at(Tok::Caret) ? BinaryOp::Pow : BinaryOp::ElPow;
      ++pos_;
      l = binary(ExprKind::Binary, static_cast<int>(op), std::move(l), powerOperand(), t);
    }
    return l;
  }

  ExprPtr postfix() {
    ExprPtr e = primary();
    for (;;) {
      const Token& t = cur();
      if (at(Tok::LParen) || at(Tok::LBrace)) {
        bool paren = at(Tok::LParen);
        ++pos_;
        auto call = node(paren ? ExprKind::Call : ExprKind::Brace, t);
        call->args.push_back(std::move(e));
        subscripts(*call, paren ? Tok::RParen : Tok::RBrace);
        e = std::move(call);
      } else if (at(Tok::Dot)) {
        ++pos_;
        if (at(Tok::Name)) {
          auto f = node(ExprKind::Field, t);
          f->name = cur().name;
          ++pos_;
          f->args.push_back(std::move(e));
          e = std::move(f);
        } else if (accept(Tok::LParen)) {
          auto f = node(ExprKind::DynField, t);
          f->args.push_back(std::move(e));
          f->args.push_back(expression());
          expect(Tok::RParen, "after a field name expression");
          e = std::move(f);
        } else {
          fail("expected a field name after '.'", cur(), at(Tok::End));
        }
      } else if (at(Tok::Quote) || at(Tok::DotQuote)) {
        auto tr = node(ExprKind::Transpose, t);
        tr->op = at(Tok::Quote) ? 1 : 0;
        ++pos_;
        tr->args.push_back(std::move(e));
        e = std::move(tr);
      } else {
        return e;
      }
    }
  }

  void subscripts(Expr& call, Tok closer) {
    ++subscriptDepth_;
    if (!accept(closer)) {
      for (;;) {
        if (at(Tok::Colon) && (ahead(1).kind == Tok::Comma || ahead(1).kind == closer)) {
          call.args.push_back(node(ExprKind::Colon, cur()));
          ++pos_;
        } else {
          call.args.push_back(expression());
        }
        if (accept(closer)) break;
        expect(Tok::Comma, "between arguments");
      }
    }
    --subscriptDepth_;
  }

  ExprPtr primary() {
    const Token& t = cur();
    switch (t.kind) {
      case Tok::Number: {
        auto e = node(ExprKind::Number, t);
        e->number = t.number;
        e->imaginary = t.imaginary;
        ++pos_;
        return e;
      }
      case Tok::Text: {
        auto e = node(ExprKind::Text, t);
        e->text = t.text;
        ++pos_;
        return e;
      }
      case Tok::Name: {
        auto e = node(ExprKind::Name, t);
        e->name = t.name;
        e->slot = symbols_.intern(t.name);
        ++pos_;
        return e;
      }
      case Tok::LParen: {
        ++pos_;
        // Inside plain parentheses 'end' keeps the meaning of the enclosing
        // subscript, as in x((end)).
        ExprPtr e = expression();
        expect(Tok::RParen, "to close the parenthesis");
        return e;
      }
      case Tok::LBracket:
      case Tok::LBrace:
        return matrix();
      case Tok::KwEnd:
        if (subscriptDepth_ > 0) {
          ++pos_;
          return node(ExprKind::End, t);
        }
        break;
      default:
        break;
    }
    unexpected();
  }

  ExprPtr matrix() {
    const Token& t = cur();
    bool cell = at(Tok::LBrace);
    Tok closer = cell ? Tok::RBrace : Tok::RBracket;
    ++pos_;
    auto e = node(cell ? ExprKind::CellArray : ExprKind::Matrix, t);
    std::vector<ExprPtr> row;
    // 'end' inside brackets within a subscript still refers to that subscript.
    for (;;) {
      if (accept(closer)) break;
      if (accept(Tok::Semicolon)) {
        if (!row.empty()) e->rows.push_back(std::move(row));
        row.clear();
        continue;
      }
      if (accept(Tok::Comma)) continue;
      if (at(Tok::End)) fail("a bracket is never closed", t, true);
      row.push_back(expression());
      if (!at(Tok::Comma) && !at(Tok::Semicolon) && !at(closer)) unexpected();
    }
    if (!row.empty()) e->rows.push_back(std::move(row));
    return e;
  }
};

}  // namespace

Block parseProgram(const std::string& source, SymbolTable& symbols) {
  return Parser(tokenize(source), symbols).program();
}

}  // namespace tw
