// The syntax tree of the shell's language, and the table that gives every
// variable name a slot so that evaluation never looks names up by text.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "twhost/kx_array.h"
#include "value.h"

namespace tw {

struct Callable;

enum class ExprKind {
  Number,
  Text,
  Name,
  Colon,  // a lone ':' as a subscript
  End,    // 'end' inside a subscript
  Unary,
  Binary,
  AndAnd,
  OrOr,
  Range,      // args: start, step (may be null), stop
  Transpose,  // op 1: conjugating (')
  Call,       // args: base, arguments: x(...) indexes, f(...) calls
  Brace,      // args: base, subscripts
  Field,      // args: base; name: the field
  DynField,   // args: base, name expression
  Matrix,     // rows
  CellArray,  // rows
};

enum class UnaryOp { Minus, Plus, Not };

enum class BinaryOp {
  Add,
  Sub,
  Mul,
  Div,
  LeftDiv,
  Pow,
  ElMul,
  ElDiv,
  ElPow,
  Eq,
  Ne,
  Lt,
  Le,
  Gt,
  Ge,
  And,
  Or,
};

const char* binaryOpText(BinaryOp op);

struct Expr;
using ExprPtr = std::unique_ptr<Expr>;

struct Expr {
  ExprKind kind;
  int line = 0;
  int column = 0;
  double number = 0;
  bool imaginary = false;
  ustring text;
  std::string name;  // Name, Field
  int slot = -1;     // Name: the variable slot
  int op = 0;        // UnaryOp, BinaryOp, or Transpose's conjugating flag
  std::vector<ExprPtr> args;
  std::vector<std::vector<ExprPtr>> rows;
  // Filled at run time: the function a name, or a dotted chain of names,
  // turned out to be, and how many links of the chain it took.
  mutable const Callable* callable = nullptr;
  // Literals are made once; values are never changed in place while shared.
  mutable Value constant;
};

// The name at the bottom of a chain of subscripts and fields: x in x(1).a.
const Expr* rootOf(const Expr& e);

enum class StmtKind { Expr, Assign, MultiAssign, If, While, For, Break, Continue, Return, Try };

struct Stmt;
using Block = std::vector<Stmt>;

struct IfClause {
  ExprPtr condition;  // null for else
  Block body;
};

struct Stmt {
  StmtKind kind;
  int line = 0;
  int column = 0;
  bool display = true;  // no ';' after it
  ExprPtr expr;         // the expression, the right-hand side, the loop's range or condition
  std::vector<ExprPtr> targets;  // assignments; null for a '~' output
  std::vector<IfClause> clauses;
  Block body;     // loops, try
  Block handler;  // catch
  int slot = -1;  // for's variable, catch's variable (-1: none)
};

// Variable names and their slots; slots are never given back, so a parsed
// tree stays valid for the life of the table.
class SymbolTable {
 public:
  int intern(const std::string& name);
  int find(const std::string& name) const;  // -1 when unknown
  const std::string& name(int slot) const { return names_[slot]; }
  size_t size() const { return names_.size(); }

 private:
  std::unordered_map<std::string, int> slots_;
  std::vector<std::string> names_;
};

}  // namespace tw
