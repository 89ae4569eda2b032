// The evaluator: runs statements against one workspace of variables, and
// calls built-ins, host functions and package methods.
#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ast.h"
#include "indexing.h"
#include "operators.h"
#include "reporter.h"
#include "twhost/calls.h"
#include "twhost/kx_frame.h"
#include "value.h"

namespace tw {

struct Callable {
  enum class Kind { Builtin, Host, Method };
  Kind kind;
  std::string name;
  BuiltinEntry entry = nullptr;           // a slot of the library
  const kxFunction* function = nullptr;   // registered by name
  kcos::COSMethodInfo* method = nullptr;  // offered by a package
};

enum class Flow { Normal, Break, Continue, Return };

class Interpreter {
 public:
  explicit Interpreter(Reporter& reporter);
  ~Interpreter();
  Interpreter(const Interpreter&) = delete;
  Interpreter& operator=(const Interpreter&) = delete;

  SymbolTable& symbols() { return symbols_; }
  Reporter& reporter() { return *reporter_; }

  void addBuiltin(const std::string& name, BuiltinEntry entry);
  // A built-in, a registered function, or a package method; null if none.
  const Callable* findFunction(const std::string& name);

  // The source that the statements given to run() were parsed from: `file`
  // names it in reports (empty at the prompt) and `text` shows its lines.
  void setSource(std::string file, std::string text);

  // Runs statements; an uncaught error passes out of here, and location()
  // then tells where it happened.
  void run(const Block& program);
  // Where the statement or the part of an expression that runs now, or that
  // raised the last error, starts.
  SourceLocation location() const;

  // Calls a function; the result holds max(nlhs, 1) slots, empty where the
  // function stored nothing.
  std::vector<Value> call(const Callable& fn, int nlhs, const std::vector<Value>& args);
  // The same by name; raises when the name is unknown.
  std::vector<Value> callNamed(const std::string& name, int nlhs, const std::vector<Value>& args);

  bool isVariable(const std::string& name) const;

  // How the console shows numbers: set by format, read by display and disp.
  NumberFormat numberFormat() const { return numberFormat_; }
  void setNumberFormat(NumberFormat f) { numberFormat_ = f; }

  // Warnings pass through here so that they can be turned off by identifier.
  void warn(const std::string& identifier, const std::string& message);
  void setWarningEnabled(const std::string& identifier, bool on);

  // The interpreter that host functions and the warning handler talk to.
  static Interpreter* current();

 private:
  struct EndFrame {
    const kxArray* base;
    size_t position;
    size_t count;
  };
  struct AssignStep {
    const Expr* expr;  // a Call, Brace, Field or DynField
  };

  Flow exec(const Block& block);
  Flow execStatement(const Stmt& s);
  Flow execFor(const Stmt& s);
  Flow execTry(const Stmt& s);
  void execExpression(const Stmt& s);
  void execAssign(const Stmt& s);
  void execMultiAssign(const Stmt& s);

  Value eval(const Expr& e);
  void evalMulti(const Expr& e, std::vector<Value>& out);
  // The operand of && or || as one truth value.
  bool logicalScalar(const Expr& operand, const Expr& op);
  // The value of an if or while condition.
  bool condition(const Expr& e);
  RangeSteps evalRangeSteps(const Expr& range);
  // Calls `e` when it names a function; false when it is not a call.
  bool tryCall(const Expr& e, int nlhs, std::vector<Value>& out);
  const Callable* resolveCallable(const Expr& e);
  void evalArguments(const Expr& call, std::vector<Value>& out);
  Subscripts evalSubscripts(const Expr& e, const Value& base);
  std::string fieldName(const Expr& e);

  int assignTarget(const Expr& target, const Value& rhs);
  Value assignChain(const Value& base, const std::vector<AssignStep>& steps, size_t k,
                    const Value& rhs);
  void show(const std::string& name, const Value& v);
  // Marks `e` as the part that runs now; a subscript or field chain counts
  // from its root, so x(4) and s.a.b point at x and s.
  void at(const Expr& e);
  void at(const Stmt& s) {
    line_ = s.line;
    column_ = s.column;
  }

  Reporter* reporter_;
  SymbolTable symbols_;
  std::vector<Value> vars_;
  std::vector<EndFrame> ends_;
  std::unordered_map<std::string, std::unique_ptr<Callable>> callables_;
  std::unordered_set<std::string> warningsOff_;
  bool allWarningsOff_ = false;
  NumberFormat numberFormat_ = NumberFormat::Short;
  int ansSlot_;
  std::string sourceFile_;
  std::string sourceText_;
  int line_ = 0;
  int column_ = 0;  // bytes from the start of the line, from 1
  Value emptyValue_;
  Interpreter* previous_;
};

}  // namespace tw
