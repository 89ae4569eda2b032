// Expressions, calls by name, and assignment through subscripts.
#include "concat.h"
#include "interpreter.h"
#include "operators.h"
#include "shell_errors.h"
#include "twhost/errors.h"

namespace tw {

namespace {

// "a.b.c" for a chain of plain field names on a name; false otherwise.
bool dottedName(const Expr& e, std::string& out) {
  if (e.kind == ExprKind::Name) {
    out = e.name;
    return true;
  }
  if (e.kind != ExprKind::Field || !dottedName(*e.args[0], out)) return false;
  out += '.';
  out += e.name;
  return true;
}

}  // namespace

// ---- assignment -----------------------------------------------------------------

int Interpreter::assignTarget(const Expr& target, const Value& rhs) {
  if (target.kind == ExprKind::Name) {
    vars_[target.slot] = rhs;
    return target.slot;
  }
  std::vector<AssignStep> steps;
  const Expr* p = &target;
  while (p->kind != ExprKind::Name) {
    steps.insert(steps.begin(), AssignStep{p});
    p = p->args[0].get();
  }
  // The variable's array is taken out of the workspace so that, held only
  // here, it can be changed in place; an error puts it back untouched.
  Value& slot = vars_[p->slot];
  Value base = std::move(slot);
  try {
    slot = assignChain(base, steps, 0, rhs);
  } catch (...) {
    slot = std::move(base);
    throw;
  }
  return p->slot;
}

Value Interpreter::assignChain(const Value& base, const std::vector<AssignStep>& steps, size_t k,
                               const Value& rhs) {
  const Expr& e = *steps[k].expr;
  bool last = k + 1 == steps.size();
  switch (e.kind) {
    case ExprKind::Field:
    case ExprKind::DynField: {
      std::string name = fieldName(e);
      at(e);
      if (last) return assignField(base, name, rhs);
      Value sub;
      if (base && kxIsStruct(base.get()) && numelOf(base.get()) == 1) {
        int f = kxGetFieldNumber(base.get(), name.c_str());
        if (f >= 0) sub = fieldElement(base, 0, f);
      }
      Value inner = assignChain(sub, steps, k + 1, rhs);
      sub = Value();
      return assignField(base, name, inner);
    }
    case ExprKind::Call: {
      Subscripts subs = evalSubscripts(e, base);
      at(e);
      if (last) return assignParen(base, subs, rhs);
      Value sub;
      if (base) {
        try {
          sub = indexParen(base, subs);
        } catch (const fl::except::IUserException&) {
          // Past the end: the assignment below grows the array.
        }
      }
      Value inner = assignChain(sub, steps, k + 1, rhs);
      sub = Value();
      return assignParen(base, subs, inner);
    }
    case ExprKind::Brace: {
      Subscripts subs = evalSubscripts(e, base);
      at(e);
      if (last) return assignBrace(base, subs, rhs);
      Value sub;
      if (base && kxIsCell(base.get())) {
        try {
          std::vector<Value> found = indexBrace(base, subs);
          if (found.size() == 1) sub = found[0];
        } catch (const fl::except::IUserException&) {
        }
      }
      Value inner = assignChain(sub, steps, k + 1, rhs);
      sub = Value();
      return assignBrace(base, subs, inner);
    }
    default:
      shellError("BadTarget");
  }
}

// ---- expressions ----------------------------------------------------------------

std::string Interpreter::fieldName(const Expr& e) {
  if (e.kind == ExprKind::Field) return e.name;
  Value v = eval(*e.args[1]);
  if (!isCharRow(v.get()) || numelOf(v.get()) == 0) shellError("BadFieldName");
  return textOf(v.get(), "a field name");
}

Subscripts Interpreter::evalSubscripts(const Expr& e, const Value& base) {
  Subscripts subs;
  size_t n = e.args.size() - 1;
  subs.reserve(n);
  const kxArray* b = base ? base.get() : emptyValue_.get();
  std::vector<Value> values;
  for (size_t k = 0; k < n; ++k) {
    const Expr& arg = *e.args[k + 1];
    if (arg.kind == ExprKind::Colon) {
      subs.push_back(Subscript{true, Value()});
      continue;
    }
    ends_.push_back(EndFrame{b, k, n});
    values.clear();
    try {
      evalMulti(arg, values);
    } catch (...) {
      ends_.pop_back();
      throw;
    }
    ends_.pop_back();
    for (Value& v : values) subs.push_back(Subscript{false, std::move(v)});
  }
  return subs;
}

// Arguments of a call. 'end' inside them still refers to the array whose
// subscripts enclose the call, as in x(double(end)).
void Interpreter::evalArguments(const Expr& call, std::vector<Value>& out) {
  for (size_t k = 1; k < call.args.size(); ++k) {
    const Expr& arg = *call.args[k];
    if (arg.kind == ExprKind::Colon) {
      out.push_back(makeCharRowUtf8(":"));
    } else {
      evalMulti(arg, out);
    }
  }
}

const Callable* Interpreter::resolveCallable(const Expr& e) {
  if (e.callable) return e.callable;
  const Callable* c = nullptr;
  std::string dotted;
  if (dottedName(e, dotted)) c = findFunction(dotted);
  e.callable = c;
  return c;
}

bool Interpreter::tryCall(const Expr& e, int nlhs, std::vector<Value>& out) {
  const Expr* head = e.kind == ExprKind::Call ? e.args[0].get() : &e;
  if (head->kind != ExprKind::Name && head->kind != ExprKind::Field) return false;
  const Expr* root = rootOf(*head);
  if (root->kind != ExprKind::Name || vars_[root->slot]) return false;
  const Callable* fn = resolveCallable(*head);
  if (!fn) {
    // A chain on a function's result (f(1).x) is not itself a call.
    if (head != root && resolveCallable(*root)) return false;
    at(*root);
    if (head != root) {
      std::string dotted;
      dottedName(*head, dotted);
      shellError("UndefinedDotted", dotted);
    }
    shellError("UndefinedName", root->name);
  }
  std::vector<Value> args;
  if (e.kind == ExprKind::Call) evalArguments(e, args);
  at(e);
  out = call(*fn, nlhs, args);
  return true;
}

bool Interpreter::logicalScalar(const Expr& operand, const Expr& op) {
  Value v = eval(operand);
  at(op);
  const kxArray* a = v.get();
  if (!isNumericOrLogicalOrChar(a) || numelOf(a) != 1) {
    shellError("NotLogicalScalar", std::string(op.kind == ExprKind::AndAnd ? "&&" : "||"));
  }
  return elementAsDouble(a, 0) != 0 || imagAsDouble(a, 0) != 0;
}

RangeSteps Interpreter::evalRangeSteps(const Expr& range) {
  Value start = eval(*range.args[0]);
  Value step = range.args[1] ? eval(*range.args[1]) : Value();
  Value stop = eval(*range.args[2]);
  at(range);
  return makeRangeSteps(scalarOf(start.get(), "the start of a range"),
                        step ? scalarOf(step.get(), "the step of a range") : 1.0,
                        scalarOf(stop.get(), "the end of a range"));
}

Value Interpreter::eval(const Expr& e) {
  switch (e.kind) {
    case ExprKind::Number:
      if (!e.constant) {
        if (e.imaginary) {
          e.constant = Value::adopt(kxCreateDoubleMatrix(1, 1, kxCOMPLEX));
          *kxGetPi(e.constant.get()) = e.number;
        } else {
          e.constant = makeScalar(e.number);
        }
      }
      return e.constant;
    case ExprKind::Text:
      // '' is the empty text, 0-by-0, as the language has it.
      if (!e.constant) {
        e.constant = e.text.empty() ? Value::adopt(kxCreateCharMatrix(0, 0)) : makeCharRow(e.text);
      }
      return e.constant;
    case ExprKind::Name: {
      const Value& v = vars_[e.slot];
      if (v) return v;
      break;
    }
    case ExprKind::Colon:
      at(e);
      shellError("ColonOutsideIndex");
    case ExprKind::End: {
      at(e);
      if (ends_.empty()) shellError("EndOutsideIndex");
      const EndFrame& f = ends_.back();
      return makeScalar(static_cast<double>(endValue(f.base, f.position, f.count)));
    }
    case ExprKind::Unary: {
      Value a = eval(*e.args[0]);
      at(e);
      return unaryOperation(static_cast<UnaryOp>(e.op), a);
    }
    case ExprKind::Binary: {
      Value a = eval(*e.args[0]);
      Value b = eval(*e.args[1]);
      at(e);
      return binaryOperation(static_cast<BinaryOp>(e.op), a, b);
    }
    case ExprKind::AndAnd:
      return makeLogical(logicalScalar(*e.args[0], e) && logicalScalar(*e.args[1], e));
    case ExprKind::OrOr:
      return makeLogical(logicalScalar(*e.args[0], e) || logicalScalar(*e.args[1], e));
    case ExprKind::Range:
      return rangeValue(evalRangeSteps(e));
    case ExprKind::Transpose: {
      Value a = eval(*e.args[0]);
      at(e);
      return transposeOf(a, e.op != 0);
    }
    case ExprKind::Matrix: {
      std::vector<Value> rows, row;
      for (const auto& r : e.rows) {
        row.clear();
        for (const auto& el : r) evalMulti(*el, row);
        at(e);
        rows.push_back(horizontalJoin(row));
      }
      return rows.empty() ? makeEmpty() : verticalJoin(rows);
    }
    case ExprKind::CellArray: {
      std::vector<std::vector<Value>> rows;
      for (const auto& r : e.rows) {
        std::vector<Value> row;
        for (const auto& el : r) evalMulti(*el, row);
        if (!row.empty()) rows.push_back(std::move(row));
      }
      at(e);
      return cellFromRows(rows);
    }
    default:
      break;
  }
  std::vector<Value> values;
  evalMulti(e, values);
  if (values.empty()) {
    at(e);
    shellError("NoValue", rootOf(e)->name);
  }
  return values[0];
}

void Interpreter::evalMulti(const Expr& e, std::vector<Value>& out) {
  switch (e.kind) {
    case ExprKind::Name:
    case ExprKind::Call:
    case ExprKind::Field: {
      if (e.kind == ExprKind::Name && vars_[e.slot]) {
        out.push_back(vars_[e.slot]);
        return;
      }
      std::vector<Value> results;
      if (tryCall(e, 1, results)) {
        if (results.empty() || !results[0]) shellError("NoValue", rootOf(e)->name);
        out.push_back(results[0]);
        return;
      }
      Value base = eval(*e.args[0]);
      if (e.kind == ExprKind::Call) {
        Subscripts subs = evalSubscripts(e, base);
        at(e);
        out.push_back(indexParen(base, subs));
      } else {
        at(e);
        for (Value& v : fieldValues(base, e.name)) out.push_back(std::move(v));
      }
      return;
    }
    case ExprKind::DynField: {
      Value base = eval(*e.args[0]);
      std::string name = fieldName(e);
      at(e);
      for (Value& v : fieldValues(base, name)) out.push_back(std::move(v));
      return;
    }
    case ExprKind::Brace: {
      Value base = eval(*e.args[0]);
      Subscripts subs = evalSubscripts(e, base);
      at(e);
      for (Value& v : indexBrace(base, subs)) out.push_back(std::move(v));
      return;
    }
    default:
      out.push_back(eval(e));
  }
}

}  // namespace tw
