// The shape of parsed statements: precedence, targets, blocks and the
// errors that tell the prompt to wait for more input.
#include "parser.h"

#include <gtest/gtest.h>

namespace tw {
namespace {

// A compact rendering of an expression tree.
std::string show(const Expr& e) {
  switch (e.kind) {
    case ExprKind::Number:
      return e.imaginary ? "i" : std::to_string(static_cast<int>(e.number));
    case ExprKind::Text:
      return "'t'";
    case ExprKind::Name:
      return e.name;
    case ExprKind::Colon:
      return ":";
    case ExprKind::End:
      return "end";
    case ExprKind::Unary: {
      const char* op[] = {"-", "+", "~"};
      return std::string("(") + op[e.op] + show(*e.args[0]) + ")";
    }
    case ExprKind::Binary:
      return "(" + show(*e.args[0]) + " " + binaryOpText(static_cast<BinaryOp>(e.op)) + " " +
             show(*e.args[1]) + ")";
    case ExprKind::AndAnd:
      return "(" + show(*e.args[0]) + " && " + show(*e.args[1]) + ")";
    case ExprKind::OrOr:
      return "(" + show(*e.args[0]) + " || " + show(*e.args[1]) + ")";
    case ExprKind::Range:
      return "(" + show(*e.args[0]) + ":" + (e.args[1] ? show(*e.args[1]) + ":" : "") +
             show(*e.args[2]) + ")";
    case ExprKind::Transpose:
      return show(*e.args[0]) + (e.op ? "'" : ".'");
    case ExprKind::Call:
    case ExprKind::Brace: {
      std::string s = show(*e.args[0]) + (e.kind == ExprKind::Call ? "(" : "{");
      for (size_t i = 1; i < e.args.size(); ++i) s += (i > 1 ? "," : "") + show(*e.args[i]);
      return s + (e.kind == ExprKind::Call ? ")" : "}");
    }
    case ExprKind::Field:
      return show(*e.args[0]) + "." + e.name;
    case ExprKind::DynField:
      return show(*e.args[0]) + ".(" + show(*e.args[1]) + ")";
    case ExprKind::Matrix:
    case ExprKind::CellArray: {
      std::string s = e.kind == ExprKind::Matrix ? "[" : "{";
      for (size_t r = 0; r < e.rows.size(); ++r) {
        if (r) s += ";";
        for (size_t c = 0; c < e.rows[r].size(); ++c) s += (c ? "," : "") + show(*e.rows[r][c]);
      }
      return s + (e.kind == ExprKind::Matrix ? "]" : "}");
    }
  }
  return "?";
}

Block parse(const std::string& src) {
  SymbolTable symbols;
  return parseProgram(src, symbols);
}

std::string expr(const std::string& src) {
  Block b = parse(src);
  EXPECT_EQ(b.size(), 1u);
  EXPECT_EQ(b[0].kind, StmtKind::Expr);
  return show(*b[0].expr);
}

TEST(Parser, ArithmeticPrecedence) {
  EXPECT_EQ(expr("1 + 2 * 3"), "(1 + (2 * 3))");
  EXPECT_EQ(expr("1 - 2 - 3"), "((1 - 2) - 3)");
  EXPECT_EQ(expr("-2 ^ 2"), "(-(2 ^ 2))");
  EXPECT_EQ(expr("2 ^ -1"), "(2 ^ (-1))");
  EXPECT_EQ(expr("2 ^ 3 ^ 2"), "((2 ^ 3) ^ 2)");
  EXPECT_EQ(expr("a .* b ./ c"), "((a .* b) ./ c)");
}

TEST(Parser, RangesBindLooserThanArithmeticAndTighterThanComparison) {
  EXPECT_EQ(expr("1:n+1"), "(1:(n + 1))");
  EXPECT_EQ(expr("1:2:9"), "(1:2:9)");
  EXPECT_EQ(expr("a < 1:3"), "(a < (1:3))");
}

TEST(Parser, LogicalOperatorsInOrder) {
  EXPECT_EQ(expr("a || b && c"), "(a || (b && c))");
  EXPECT_EQ(expr("a | b & c"), "(a | (b & c))");
  EXPECT_EQ(expr("a == b & c"), "((a == b) & c)");
  EXPECT_EQ(expr("~a == b"), "((~a) == b)");
}

TEST(Parser, PostfixFormsChain) {
  EXPECT_EQ(expr("s.a(2).b{3}"), "s.a(2).b{3}");
  EXPECT_EQ(expr("s.(n)"), "s.(n)");
  EXPECT_EQ(expr("x'"), "x'");
  EXPECT_EQ(expr("x.'"), "x.'");
  EXPECT_EQ(expr("-x'"), "(-x')");
}

TEST(Parser, ColonAndEndAsSubscripts) {
  EXPECT_EQ(expr("x(:, end)"), "x(:,end)");
  EXPECT_EQ(expr("x(end - 1)"), "x((end - 1))");
  EXPECT_EQ(expr("x([1 end])"), "x([1,end])");
  EXPECT_EQ(expr("c{end}(end)"), "c{end}(end)");
}

TEST(Parser, EndOutsideSubscriptsIsAnError) {
  EXPECT_THROW(parse("x = end"), SyntaxError);
}

TEST(Parser, MatrixAndCellRows) {
  EXPECT_EQ(expr("[1 2; 3 4]"), "[1,2;3,4]");
  EXPECT_EQ(expr("[1, 2;]"), "[1,2]");
  EXPECT_EQ(expr("[]"), "[]");
  EXPECT_EQ(expr("{1, 'a'; [], {}}"), "{1,'t';[],{}}");
}

TEST(Parser, SemicolonHidesAndCommaShows) {
  Block b = parse("a = 1; b = 2, c = 3\nd = 4;");
  ASSERT_EQ(b.size(), 4u);
  EXPECT_FALSE(b[0].display);
  EXPECT_TRUE(b[1].display);
  EXPECT_TRUE(b[2].display);
  EXPECT_FALSE(b[3].display);
}

TEST(Parser, AssignmentTargets) {
  Block b = parse("s.a(2).b = 1");
  ASSERT_EQ(b[0].kind, StmtKind::Assign);
  EXPECT_EQ(show(*b[0].targets[0]), "s.a(2).b");
  EXPECT_THROW(parse("1 = 2"), SyntaxError);
  EXPECT_THROW(parse("x' = 2"), SyntaxError);
}

TEST(Parser, MultipleAssignmentWithSkippedOutputs) {
  Block b = parse("[~, b, c(2)] = f(x)");
  ASSERT_EQ(b[0].kind, StmtKind::MultiAssign);
  ASSERT_EQ(b[0].targets.size(), 3u);
  EXPECT_EQ(b[0].targets[0], nullptr);
  EXPECT_EQ(show(*b[0].targets[1]), "b");
  EXPECT_EQ(show(*b[0].targets[2]), "c(2)");
  EXPECT_EQ(show(*b[0].expr), "f(x)");
}

TEST(Parser, BracketThatIsNotATargetListIsAMatrix) {
  Block b = parse("[a, b] == c");
  EXPECT_EQ(b[0].kind, StmtKind::Expr);
}

TEST(Parser, BlocksOnOneLineAndOnMany) {
  Block b = parse("if a, x = 1, elseif b, x = 2, else, x = 3, end");
  ASSERT_EQ(b[0].kind, StmtKind::If);
  ASSERT_EQ(b[0].clauses.size(), 3u);
  EXPECT_EQ(b[0].clauses[2].condition, nullptr);

  b = parse("for k = 1:3\n  x = k;\nend\nwhile x, break, end");
  ASSERT_EQ(b.size(), 2u);
  EXPECT_EQ(b[0].kind, StmtKind::For);
  EXPECT_EQ(b[0].body.size(), 1u);
  EXPECT_EQ(b[1].kind, StmtKind::While);
  EXPECT_EQ(b[1].body[0].kind, StmtKind::Break);
}

TEST(Parser, CatchNamesItsVariableOnlyOnItsOwnLine) {
  SymbolTable symbols;
  Block b = parseProgram("try, x, catch err\n y, end", symbols);
  EXPECT_EQ(b[0].slot, symbols.find("err"));
  b = parseProgram("try, x, catch\n y, end", symbols);
  EXPECT_EQ(b[0].slot, -1);
  EXPECT_EQ(b[0].handler.size(), 1u);
}

TEST(Parser, NamesShareSlots) {
  SymbolTable symbols;
  Block b = parseProgram("x = 1; y = x + x;", symbols);
  EXPECT_EQ(b[0].targets[0]->slot, b[1].expr->args[0]->slot);
  EXPECT_NE(b[1].targets[0]->slot, b[0].targets[0]->slot);
}

TEST(Parser, OpenBlockIsIncomplete) {
  for (const char* src : {"if x", "for k = 1:3\n x", "while 1\n", "try\n x\ncatch"}) {
    try {
      parse(src);
      ADD_FAILURE() << src;
    } catch (const SyntaxError& e) {
      EXPECT_TRUE(e.incomplete) << src;
    }
  }
}

TEST(Parser, StrayKeywordsAndTokensAreErrors) {
  for (const char* src : {"end", "else", "x = 1 2", "x = (1", "x = [1 2)", "f(1,)", "x ="}) {
    EXPECT_THROW(parse(src), SyntaxError) << src;
  }
}

TEST(Parser, SyntaxErrorPointsAtTheToken) {
  try {
    parse("x = 1;\ny = 2 +* 3");
    FAIL();
  } catch (const SyntaxError& e) {
    EXPECT_EQ(e.line, 2);
    EXPECT_EQ(e.column, 8);
    EXPECT_FALSE(e.incomplete);
  }
}

}  // namespace
}  // namespace tw
