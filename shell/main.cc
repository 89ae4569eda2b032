// tw: runs scripts of the shell's language on top of libtwfileio.
//
//   tw [--lib PATH] [--json PATH] SCRIPT
//   tw [--lib PATH] [--json PATH] -e CODE
//   tw [--lib PATH] [--json PATH]          (a prompt on a terminal, else stdin)
//
// Exit status: 0 success, 1 an uncaught error, 2 a usage or syntax error.
#include <editline/readline.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "functions.h"
#include "interpreter.h"
#include "library.h"
#include "parser.h"
#include "reporter.h"
#include "shell_errors.h"
#include "twhost/errors.h"

namespace {

using namespace tw;

constexpr int kExitError = 1;
constexpr int kExitUsage = 2;

const char* const kUsage =
    "usage: tw [--lib PATH] [--json PATH] [SCRIPT | -e CODE]\n"
    "  SCRIPT        run a script file\n"
    "  -e CODE       run the code given\n"
    "  --json PATH   append displayed values, warnings and errors to PATH as JSON records\n"
    "  --lib PATH    load libtwfileio from PATH instead of beside tw\n"
    "With neither SCRIPT nor -e, tw reads commands at a prompt (or from standard input).\n";

int usage(const std::string& problem) {
  std::cerr << "tw: " << problem << "\n" << kUsage;
  return kExitUsage;
}

void onWarning(const std::string& identifier, const std::string& message) {
  if (Interpreter* interp = Interpreter::current()) {
    interp->warn(identifier, message);
  } else {
    std::fflush(stdout);
    std::fprintf(stderr, "Warning: %s\n", message.c_str());
  }
}

void reportSyntaxError(Reporter& reporter, const SyntaxError& e) {
  std::string message = "Syntax error at line " + std::to_string(e.line) + ", column " +
                        std::to_string(e.column) + ": " + e.message + ".";
  reporter.error("KORVAN:shell:SyntaxError", message, 0);
}

// Runs a chunk of source; the exit status it calls for.
int runSource(Interpreter& interp, const std::string& source) {
  Block program;
  try {
    program = parseProgram(source, interp.symbols());
  } catch (const SyntaxError& e) {
    reportSyntaxError(interp.reporter(), e);
    return kExitUsage;
  }
  try {
    interp.run(program);
  } catch (...) {
    kxErrorReport r = kxDescribeException(std::current_exception());
    std::fflush(stdout);
    interp.reporter().error(r.identifier, r.message, interp.line());
    return kExitError;
  }
  std::fflush(stdout);
  return 0;
}

std::string trimmed(const std::string& s) {
  size_t a = s.find_first_not_of(" \t\r");
  if (a == std::string::npos) return "";
  size_t b = s.find_last_not_of(" \t\r");
  return s.substr(a, b - a + 1);
}

// The prompt: lines are gathered until they make complete statements.
int interactive(Interpreter& interp) {
  std::string pending;
  for (;;) {
    char* raw = readline(pending.empty() ? ">> " : ".. ");
    if (!raw) break;
    std::string line(raw);
    std::free(raw);
    std::string t = trimmed(line);
    if (pending.empty() && (t == "exit" || t == "quit")) break;
    if (!t.empty()) add_history(line.c_str());
    pending += line + "\n";
    Block program;
    try {
      program = parseProgram(pending, interp.symbols());
    } catch (const SyntaxError& e) {
      if (e.incomplete) continue;
      reportSyntaxError(interp.reporter(), e);
      pending.clear();
      continue;
    }
    pending.clear();
    try {
      interp.run(program);
    } catch (...) {
      kxErrorReport r = kxDescribeException(std::current_exception());
      std::fflush(stdout);
      interp.reporter().error(r.identifier, r.message, 0);
    }
    std::fflush(stdout);
  }
  std::cout << "\n";
  return 0;
}

bool readFile(const std::string& path, std::string& out) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::ostringstream s;
  s << in.rdbuf();
  out = s.str();
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::string jsonPath, libPath, code, script;
  bool haveCode = false;
  for (int i = 1; i < argc; ++i) {
    std::string a = argv[i];
    auto value = [&](std::string& into) {
      if (i + 1 >= argc) return false;
      into = argv[++i];
      return true;
    };
    if (a == "--json") {
      if (!value(jsonPath)) return usage("--json needs a file name");
    } else if (a == "--lib") {
      if (!value(libPath)) return usage("--lib needs a path");
    } else if (a == "-e") {
      if (!value(code)) return usage("-e needs code");
      haveCode = true;
    } else if (a == "-h" || a == "--help") {
      std::cout << kUsage;
      return 0;
    } else if (!a.empty() && a[0] == '-') {
      return usage("unknown option " + a);
    } else if (script.empty()) {
      script = a;
    } else {
      return usage("only one script can be run");
    }
  }
  if (haveCode && !script.empty()) return usage("give a script or -e, not both");

  std::string source;
  if (!script.empty() && !readFile(script, source)) return usage("cannot read " + script);

  std::unique_ptr<Reporter> reporter;
  if (!jsonPath.empty()) {
    auto json = std::make_unique<JsonReporter>();
    if (!json->open(jsonPath)) return usage("cannot write " + jsonPath);
    reporter = std::move(json);
  } else {
    reporter = std::make_unique<ConsoleReporter>();
  }

  registerShellMessages();
  Interpreter interp(*reporter);
  registerHostFunctions(interp);
  kxSetWarningHandler(onWarning);
  if (libPath.empty()) libPath = defaultLibraryPath();
  std::string problem = loadLibrary(libPath, interp);
  if (!problem.empty()) {
    std::cerr << "tw: cannot load the file library: " << problem << "\n";
    return kExitError;
  }

  if (haveCode) return runSource(interp, code);
  if (!script.empty()) return runSource(interp, source);
  if (isatty(0)) return interactive(interp);
  std::ostringstream in;
  in << std::cin.rdbuf();
  return runSource(interp, in.str());
}
