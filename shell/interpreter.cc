// The workspace, calls, and statements.
#include "interpreter.h"

#include "interrupt.h"
#include "operators.h"
#include "shell_errors.h"
#include "twhost/errors.h"

namespace tw {

namespace {

Interpreter* g_current = nullptr;

constexpr int kMaxOutputs = 64;
// Room past the outputs asked for, so that a function that writes one
// output too many does not write outside the array.
constexpr int kSpareOutputs = 8;

Value errorStruct(const kxErrorReport& r) {
  const char* names[] = {"identifier", "message"};
  Value s = Value::adopt(kxCreateStructMatrix(1, 1, 2, names));
  kxSetFieldByNumber(s.get(), 0, 0, kxCreateString(r.identifier.c_str()));
  kxSetFieldByNumber(s.get(), 0, 1, kxCreateString(r.message.c_str()));
  return s;
}

}  // namespace

Interpreter::Interpreter(Reporter& reporter) : reporter_(&reporter), previous_(g_current) {
  ansSlot_ = symbols_.intern("ans");
  emptyValue_ = makeEmpty();
  g_current = this;
}

Interpreter::~Interpreter() {
  g_current = previous_;
}

Interpreter* Interpreter::current() {
  return g_current;
}

void Interpreter::addBuiltin(const std::string& name, BuiltinEntry entry) {
  auto c = std::make_unique<Callable>();
  c->kind = Callable::Kind::Builtin;
  c->name = name;
  c->entry = entry;
  callables_[name] = std::move(c);
}

const Callable* Interpreter::findFunction(const std::string& name) {
  auto it = callables_.find(name);
  if (it != callables_.end()) return it->second.get();
  auto c = std::make_unique<Callable>();
  c->name = name;
  if (const kxFunction* fn = kxFindFunction(name)) {
    c->kind = Callable::Kind::Host;
    c->function = fn;
  } else if (name.find('.') != std::string::npos) {
    kcos::COSMethodInfo* m = kcos::omFindMethod(name);
    if (!m) return nullptr;
    c->kind = Callable::Kind::Method;
    c->method = m;
  } else {
    return nullptr;
  }
  return (callables_[name] = std::move(c)).get();
}

std::vector<Value> Interpreter::call(const Callable& fn, int nlhs, const std::vector<Value>& args) {
  if (nlhs > kMaxOutputs) shellError("TooManyOutputs", fn.name);
  int slots = nlhs > 0 ? nlhs : 1;
  kxArray* plhs[kMaxOutputs + kSpareOutputs] = {};
  std::vector<kxArray*> prhs;
  prhs.reserve(args.size());
  for (const Value& v : args) prhs.push_back(v.get());
  int nrhs = static_cast<int>(prhs.size());
  kxArray** in = prhs.empty() ? nullptr : prhs.data();
  switch (fn.kind) {
    case Callable::Kind::Builtin:
      kxCallBuiltin(fn.entry, nlhs, plhs, nrhs, in);
      break;
    case Callable::Kind::Host:
    case Callable::Kind::Method: {
      // On an error the frame frees what the call made, outputs included.
      kxCallFrame frame;
      if (fn.kind == Callable::Kind::Host) {
        (*fn.function)(nlhs, plhs, nrhs, in);
      } else {
        int n = nlhs;
        fn.method->invoke(n, plhs, nrhs, in);
      }
      break;
    }
  }
  std::vector<Value> out(slots);
  for (int i = 0; i < kMaxOutputs + kSpareOutputs; ++i) {
    if (!plhs[i]) continue;
    Value v = Value::adopt(plhs[i]);
    if (i < slots) out[i] = std::move(v);
  }
  return out;
}

std::vector<Value> Interpreter::callNamed(const std::string& name, int nlhs,
                                          const std::vector<Value>& args) {
  const Callable* fn = findFunction(name);
  if (!fn) shellError("UndefinedFunction", name);
  return call(*fn, nlhs, args);
}

bool Interpreter::isVariable(const std::string& name) const {
  int slot = symbols_.find(name);
  return slot >= 0 && static_cast<size_t>(slot) < vars_.size() && vars_[slot];
}

void Interpreter::warn(const std::string& identifier, const std::string& message) {
  if (allWarningsOff_ || (!identifier.empty() && warningsOff_.count(identifier))) return;
  reporter_->warning(identifier, message, location());
}

void Interpreter::setWarningEnabled(const std::string& identifier, bool on) {
  if (identifier == "all") {
    allWarningsOff_ = !on;
    warningsOff_.clear();
  } else if (on) {
    warningsOff_.erase(identifier);
  } else {
    warningsOff_.insert(identifier);
  }
}

// ---- where we are -------------------------------------------------------------

void Interpreter::setSource(std::string file, std::string text) {
  sourceFile_ = std::move(file);
  sourceText_ = std::move(text);
  line_ = 0;
  column_ = 0;
}

SourceLocation Interpreter::location() const {
  return locate(sourceFile_, sourceText_, line_, column_);
}

void Interpreter::at(const Expr& e) {
  const Expr* start = rootOf(e);
  line_ = start->line;
  column_ = start->column;
}

bool Interpreter::condition(const Expr& e) {
  Value v = eval(e);
  at(e);
  return isTrue(v.get());
}

// ---- statements -------------------------------------------------------------

void Interpreter::run(const Block& program) {
  if (vars_.size() < symbols_.size()) vars_.resize(symbols_.size());
  exec(program);
}

Flow Interpreter::exec(const Block& block) {
  for (const Stmt& s : block) {
    Flow f = execStatement(s);
    if (f != Flow::Normal) return f;
  }
  return Flow::Normal;
}

Flow Interpreter::execStatement(const Stmt& s) {
  at(s);
  checkInterrupt();
  switch (s.kind) {
    case StmtKind::Expr:
      execExpression(s);
      return Flow::Normal;
    case StmtKind::Assign:
      execAssign(s);
      return Flow::Normal;
    case StmtKind::MultiAssign:
      execMultiAssign(s);
      return Flow::Normal;
    case StmtKind::If:
      for (const IfClause& c : s.clauses) {
        if (!c.condition || condition(*c.condition)) return exec(c.body);
      }
      return Flow::Normal;
    case StmtKind::While:
      for (;;) {
        at(s);
        checkInterrupt();
        if (!condition(*s.expr)) return Flow::Normal;
        Flow f = exec(s.body);
        if (f == Flow::Break) return Flow::Normal;
        if (f == Flow::Return) return f;
      }
    case StmtKind::For:
      return execFor(s);
    case StmtKind::Try:
      return execTry(s);
    case StmtKind::Break:
      return Flow::Break;
    case StmtKind::Continue:
      return Flow::Continue;
    case StmtKind::Return:
      return Flow::Return;
  }
  return Flow::Normal;
}

// The loop variable is overwritten in place when nothing else holds it, so
// that a counting loop makes no new arrays.
Flow Interpreter::execFor(const Stmt& s) {
  Value& var = vars_[s.slot];
  auto body = [&]() {
    at(s);
    checkInterrupt();
    Flow f = exec(s.body);
    return f == Flow::Continue ? Flow::Normal : f;
  };
  if (s.expr->kind == ExprKind::Range) {
    RangeSteps steps = evalRangeSteps(*s.expr);
    for (size_t k = 0; k < steps.count; ++k) {
      double v = steps.element(k);
      if (var && var.unique() && isRealDoubleScalar(var.get())) {
        *kxGetPr(var.get()) = v;
      } else {
        var = makeScalar(v);
      }
      Flow f = body();
      if (f == Flow::Break) break;
      if (f == Flow::Return) return f;
    }
    return Flow::Normal;
  }
  Value all = eval(*s.expr);
  at(*s.expr);
  const kxArray* a = all.get();
  size_t rows = kxGetM(a), cols = numelOf(a) == 0 ? 0 : kxGetN(a);
  for (size_t j = 0; j < cols; ++j) {
    if (rows == 1 && kxIsDouble(a) && !kxIsComplex(a)) {
      var = makeScalar(kxGetPr(a)[j]);
    } else {
      Subscripts subs(2);
      subs[0].colon = true;
      subs[1].value = makeScalar(static_cast<double>(j + 1));
      var = indexParen(all, subs);
    }
    Flow f = body();
    if (f == Flow::Break) break;
    if (f == Flow::Return) return f;
  }
  return Flow::Normal;
}

Flow Interpreter::execTry(const Stmt& s) {
  kxErrorReport report;
  try {
    return exec(s.body);
  } catch (const Interrupted&) {
    throw;  // Ctrl-C ends the script's statement whatever it catches
  } catch (const fl::except::IUserException& e) {
    // The common case, read without throwing the error again.
    report = {e.get_error_id(), e.get_message()};
  } catch (...) {
    report = kxDescribeException(std::current_exception());
  }
  if (s.slot >= 0) vars_[s.slot] = errorStruct(report);
  return exec(s.handler);
}

void Interpreter::show(const std::string& name, const Value& v) {
  reporter_->display(name, v.get(), numberFormat_);
}

void Interpreter::execExpression(const Stmt& s) {
  const Expr& e = *s.expr;
  if (e.kind == ExprKind::Name && vars_[e.slot]) {
    if (s.display) show(e.name, vars_[e.slot]);
    return;
  }
  std::vector<Value> values;
  if (tryCall(e, 0, values)) {
    if (values.empty() || !values[0]) return;
    values.resize(1);
  } else {
    evalMulti(e, values);
  }
  for (const Value& v : values) {
    vars_[ansSlot_] = v;
    if (s.display) show("ans", v);
  }
}

void Interpreter::execAssign(const Stmt& s) {
  std::vector<Value> values;
  Value rhs;
  if (tryCall(*s.expr, 1, values)) {
    if (values.empty() || !values[0]) shellError("NoValue", rootOf(*s.expr)->name);
    rhs = values[0];
  } else {
    rhs = eval(*s.expr);
  }
  at(*s.targets[0]);
  int slot = assignTarget(*s.targets[0], rhs);
  if (s.display) show(symbols_.name(slot), vars_[slot]);
}

void Interpreter::execMultiAssign(const Stmt& s) {
  int n = static_cast<int>(s.targets.size());
  std::vector<Value> values;
  if (!tryCall(*s.expr, n, values)) evalMulti(*s.expr, values);
  std::vector<int> shown;
  for (int i = 0; i < n; ++i) {
    if (!s.targets[i]) continue;
    at(*s.targets[i]);
    if (static_cast<size_t>(i) >= values.size() || !values[i]) {
      shellError("TooFewOutputs", static_cast<long>(i + 1));
    }
    shown.push_back(assignTarget(*s.targets[i], values[i]));
  }
  if (s.display) {
    for (int slot : shown) show(symbols_.name(slot), vars_[slot]);
  }
}

}  // namespace tw
