// help: the list of functions, and the calling forms and an example of one.
#include <algorithm>
#include <string>

#include "functions.h"
#include "help_texts.h"
#include "interpreter.h"
#include "shell_errors.h"
#include "value.h"

namespace tw {

namespace {

constexpr int kIndent = 2;
constexpr size_t kNameColumn = 22;
// More inputs than any built-in's count check wants before it lets a call
// through to the body.
constexpr int kMostProbeInputs = 4;

const char* const kNotBuiltYet = "KORVAN:FileIO:NotBuiltYet";

bool isCountError(const std::string& id) {
  return id == "KORVAN:minrhs" || id == "KORVAN:maxrhs" || id == "KORVAN:legacy:2";
}

// Whether the library's table holds the placeholder for `name`, which
// raises NotBuiltYet. Calling is the only way to tell. A gateway checks the
// count of inputs before anything else, so the probe offers 1, 2, ...
// fieldless structs, which every built-in refuses at its first argument,
// until the count passes; then the placeholder raises NotBuiltYet and a real
// body some other error.
//
// The text readers check their text and format before anything else, so a
// struct stops them at that check even when their read is missing; they are
// probed with a text and an empty format, which reads and writes nothing.
bool notBuiltYet(Interpreter& interp, const std::string& name) {
  const Callable* fn = interp.findFunction(name);
  if (!fn || fn->kind != Callable::Kind::Builtin) return false;
  static const char* const kTextReaders[] = {"sscanf", "textscan", "textscanOptionsQuery"};
  if (std::find(std::begin(kTextReaders), std::end(kTextReaders), name) != std::end(kTextReaders)) {
    try {
      interp.call(*fn, 0, {Value::adopt(kxCreateString("x")), Value::adopt(kxCreateString(""))});
      return false;
    } catch (const fl::except::IUserException& e) {
      return e.get_error_id() == kNotBuiltYet;
    }
  }
  std::vector<Value> args;
  for (int n = 1; n <= kMostProbeInputs; ++n) {
    args.push_back(Value::adopt(kxCreateStructMatrix(1, 1, 0, nullptr)));
    try {
      interp.call(*fn, 0, args);
      return false;
    } catch (const fl::except::IUserException& e) {
      std::string id = e.get_error_id();
      if (id == kNotBuiltYet) return true;
      if (!isCountError(id)) return false;
    }
  }
  return false;
}

// Lines of `text`, each indented.
std::string indented(const std::string& text, int indent) {
  std::string out, pad(static_cast<size_t>(indent), ' ');
  size_t start = 0;
  while (start <= text.size()) {
    size_t eol = text.find('\n', start);
    if (eol == std::string::npos) eol = text.size();
    out += pad + text.substr(start, eol - start) + "\n";
    start = eol + 1;
  }
  return out;
}

const HelpEntry* find(std::span<const HelpEntry> entries, const std::string& name) {
  for (const HelpEntry& e : entries) {
    if (name == e.name) return &e;
  }
  return nullptr;
}

std::string listLine(const std::string& name, const std::string& summary) {
  std::string line(static_cast<size_t>(kIndent), ' ');
  line += name;
  line += std::string(name.size() < kNameColumn ? kNameColumn - name.size() : 1, ' ');
  return line + summary + "\n";
}

std::string listing(Interpreter& interp) {
  std::string out = "Built-ins of the file library:\n";
  for (const HelpEntry& e : builtinHelp()) {
    std::string summary = e.summary;
    if (notBuiltYet(interp, e.name)) summary += " (not built yet)";
    out += listLine(e.name, summary);
  }
  out += "Functions of the shell:\n";
  // In the order of the help texts, which group them by purpose; a function
  // without a text still shows.
  std::vector<std::string> names = shellFunctionNames();
  for (const HelpEntry& e : functionHelp()) {
    auto it = std::find(names.begin(), names.end(), e.name);
    if (it == names.end()) continue;
    names.erase(it);
    out += listLine(e.name, e.summary);
  }
  for (const std::string& name : names) out += listLine(name, "");
  out += "Values that textscan makes:\n";
  for (const HelpEntry& e : valueHelp()) out += listLine(e.name, e.summary);
  out +=
      "help NAME shows how to call one, with an example. 'format long' shows every\n"
      "digit; exit, quit or Ctrl-D leaves; Ctrl-C stops what runs.\n";
  return out;
}

std::string entryText(Interpreter& interp, const HelpEntry& e, bool builtin) {
  std::string out = std::string(e.name) + ": " + e.summary + "\n";
  out += indented(e.usage, kIndent);
  if (builtin) {
    out += notBuiltYet(interp, e.name)
               ? "  A built-in of the file library, not built yet: calling it raises\n"
                 "  " +
                     std::string(kNotBuiltYet) + ".\n"
               : "  A built-in of the file library.\n";
  }
  return out + "Example:\n" + indented(e.example, kIndent);
}

}  // namespace

void registerHelpFunction(Interpreter& interp) {
  Interpreter* ip = &interp;
  registerShellFunction("help", [ip](int nlhs, kxArray**, int nrhs, kxArray** prhs) {
    checkArgCount("help", nrhs, 0, 1);
    checkOutCount("help", nlhs, 0);
    if (nrhs == 0) {
      writeOut(listing(*ip));
      return;
    }
    if (!isCharRow(prhs[0])) shellError("NeedText", std::string("help"), classNameOf(prhs[0]));
    std::string name = textOf(prhs[0], "a name");
    if (const HelpEntry* e = find(builtinHelp(), name)) {
      writeOut(entryText(*ip, *e, true));
    } else if (const HelpEntry* f = find(functionHelp(), name)) {
      writeOut(entryText(*ip, *f, false));
    } else if (const HelpEntry* v = find(valueHelp(), name)) {
      writeOut(entryText(*ip, *v, false));
    } else {
      shellError("NoHelp", name);
    }
  });
}

}  // namespace tw
