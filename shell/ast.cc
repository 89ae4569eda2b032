// Operator names and the table of variable slots.
#include "ast.h"

namespace tw {

const char* binaryOpText(BinaryOp op) {
  switch (op) {
    case BinaryOp::Add:
      return "+";
    case BinaryOp::Sub:
      return "-";
    case BinaryOp::Mul:
      return "*";
    case BinaryOp::Div:
      return "/";
    case BinaryOp::LeftDiv:
      return "\\";
    case BinaryOp::Pow:
      return "^";
    case BinaryOp::ElMul:
      return ".*";
    case BinaryOp::ElDiv:
      return "./";
    case BinaryOp::ElPow:
      return ".^";
    case BinaryOp::Eq:
      return "==";
    case BinaryOp::Ne:
      return "~=";
    case BinaryOp::Lt:
      return "<";
    case BinaryOp::Le:
      return "<=";
    case BinaryOp::Gt:
      return ">";
    case BinaryOp::Ge:
      return ">=";
    case BinaryOp::And:
      return "&";
    case BinaryOp::Or:
      return "|";
  }
  return "?";
}

int SymbolTable::intern(const std::string& name) {
  auto [it, added] = slots_.try_emplace(name, static_cast<int>(names_.size()));
  if (added) names_.push_back(name);
  return it->second;
}

int SymbolTable::find(const std::string& name) const {
  auto it = slots_.find(name);
  return it == slots_.end() ? -1 : it->second;
}

const Expr* rootOf(const Expr& e) {
  const Expr* p = &e;
  while (p->kind == ExprKind::Call || p->kind == ExprKind::Brace || p->kind == ExprKind::Field ||
         p->kind == ExprKind::DynField) {
    p = p->args[0].get();
  }
  return p;
}

}  // namespace tw
