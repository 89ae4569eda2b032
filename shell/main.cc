// tw: runs scripts of the shell's language on top of libtwfileio.
//
//   tw [--lib PATH] [--json PATH] SCRIPT
//   tw [--lib PATH] [--json PATH] -e CODE
//   tw [--lib PATH] [--json PATH]          (a prompt on a terminal, else stdin)
//   tw [--lib PATH] --version
//
// Exit status: 0 success, 1 an uncaught error or data that could not be
// written to a file left open, 2 a usage or syntax error, 130 a script
// stopped by Ctrl-C.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>

#include "functions.h"
#include "interpreter.h"
#include "interrupt.h"
#include "library.h"
#include "prompt.h"
#include "reporter.h"
#include "shell_errors.h"
#include "top_level.h"
#include "twhost/errors.h"
#include "value.h"

namespace {

using namespace tw;

constexpr int kExitError = 1;
constexpr int kExitUsage = 2;
constexpr int kExitInterrupted = 130;  // what shells report for a death by SIGINT

// How reports name code that comes from no file.
const char* const kCommandLineName = "<command line>";
const char* const kStandardInputName = "<stdin>";

const char* const kUsage =
    "usage: tw [--lib PATH] [--json PATH] [SCRIPT | -e CODE]\n"
    "       tw [--lib PATH] --version\n"
    "  SCRIPT        run a script file\n"
    "  -e CODE       run the code given\n"
    "  --json PATH   append displayed values, warnings and errors to PATH as JSON records\n"
    "  --lib PATH    load libtwfileio from PATH instead of beside tw\n"
    "  --version     print the library's version and build date\n"
    "With neither SCRIPT nor -e, tw reads commands at a prompt (or from standard input).\n"
    "At the prompt, 'help' lists the functions and 'help NAME' explains one.\n";

int usage(const std::string& problem) {
  std::cerr << "tw: " << problem << "\n" << kUsage;
  return kExitUsage;
}

int failure(const std::string& problem, int status) {
  std::cerr << "tw: " << problem << "\n";
  return status;
}

void onWarning(const std::string& identifier, const std::string& message) {
  if (Interpreter* interp = Interpreter::current()) {
    interp->warn(identifier, message);
  } else {
    std::fflush(stdout);
    std::fprintf(stderr, "Warning: %s\n", message.c_str());
  }
}

// The whole file, or why it cannot be had.
bool readFile(const std::string& path, std::string& out, std::string& why) {
  int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    why = std::strerror(errno);
    return false;
  }
  struct stat info {};
  if (fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    close(fd);
    why = "it is a folder";
    return false;
  }
  char buffer[1 << 16];
  for (;;) {
    ssize_t n = read(fd, buffer, sizeof buffer);
    if (n > 0) {
      out.append(buffer, static_cast<size_t>(n));
    } else if (n == 0) {
      break;
    } else if (errno != EINTR) {
      why = std::strerror(errno);
      close(fd);
      return false;
    }
  }
  close(fd);
  return true;
}

int exitStatus(Outcome outcome) {
  switch (outcome) {
    case Outcome::Done:
      return 0;
    case Outcome::SyntaxError:
      return kExitUsage;
    case Outcome::Error:
      return kExitError;
    case Outcome::Interrupted:
      return kExitInterrupted;
  }
  return kExitError;
}

// Files the run left open are closed while the shell can still report:
// one whose data could not all be written out warns with the system's
// reason, and the run then fails (status 1) if nothing else failed it,
// since data the script wrote were lost.
int closeFilesLeftOpen(Interpreter& interp, int status) {
  try {
    std::vector<Value> result = interp.callNamed("fclose", 1, {makeCharRowUtf8("all")});
    bool lost = !result.empty() && result[0] && elementAsDouble(result[0].get(), 0) != 0;
    if (lost && status == 0) return kExitError;
  } catch (...) {
    if (status == 0) return kExitError;
  }
  return status;
}

int printVersion(const std::string& libPath) {
  LibraryVersion v;
  std::string problem = readLibraryVersion(libPath, v);
  if (!problem.empty()) return failure("cannot load the file library: " + problem, kExitError);
  std::cout << "libtwfileio " << v.version << ", built " << v.buildDate << "\n"
            << "  " << v.path << "\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string jsonPath, libPath, code, script;
  bool haveCode = false, version = false;
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
    } else if (a == "--version") {
      version = true;
    } else if (!a.empty() && a[0] == '-') {
      return usage("unknown option " + a);
    } else if (script.empty()) {
      script = a;
    } else {
      return usage("only one script can be run");
    }
  }
  if (haveCode && !script.empty()) return usage("give a script or -e, not both");
  if (libPath.empty()) libPath = defaultLibraryPath();
  if (version) return printVersion(libPath);

  std::string source, why;
  if (!script.empty() && !readFile(script, source, why)) {
    return failure("cannot read " + script + ": " + why, kExitUsage);
  }

  std::unique_ptr<Reporter> reporter;
  if (!jsonPath.empty()) {
    auto json = std::make_unique<JsonReporter>();
    if (!json->open(jsonPath)) {
      return failure("cannot write " + jsonPath + ": " + std::strerror(errno), kExitUsage);
    }
    reporter = std::move(json);
  } else {
    reporter = std::make_unique<ConsoleReporter>();
  }

  registerShellMessages();
  Interpreter interp(*reporter);
  registerHostFunctions(interp);
  kxSetWarningHandler(onWarning);
  std::string problem = loadLibrary(libPath, interp);
  if (!problem.empty()) return failure("cannot load the file library: " + problem, kExitError);

  bool prompt = !haveCode && script.empty() && isatty(STDIN_FILENO);
  if (prompt) return closeFilesLeftOpen(interp, runPrompt(interp));
  installInterruptHandler(InterruptMode::Script);
  int status;
  if (haveCode) {
    status = exitStatus(runSource(interp, kCommandLineName, code));
  } else if (!script.empty()) {
    status = exitStatus(runSource(interp, script, source));
  } else {
    std::ostringstream in;
    in << std::cin.rdbuf();
    status = exitStatus(runSource(interp, kStandardInputName, in.str()));
  }
  return closeFilesLeftOpen(interp, status);
}
