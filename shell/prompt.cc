// The prompt, on libedit's readline interface.
#include "prompt.h"

#include <editline/readline.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "interpreter.h"
#include "interrupt.h"
#include "parser.h"
#include "top_level.h"

namespace tw {

namespace {

constexpr int kHistoryLength = 1000;
const char* const kHistoryName = ".tw_history";
const char* const kPrompt = ">> ";
const char* const kContinuationPrompt = ".. ";

std::string trimmed(const std::string& s) {
  size_t a = s.find_first_not_of(" \t\r");
  if (a == std::string::npos) return "";
  size_t b = s.find_last_not_of(" \t\r");
  return s.substr(a, b - a + 1);
}

// One byte of the terminal; -1 at its end, on an error, or on Ctrl-C.
int readByte() {
  for (;;) {
    if (interruptPending()) return -1;
    unsigned char c;
    ssize_t n = read(STDIN_FILENO, &c, 1);
    if (n == 1) return c;
    if (n < 0 && errno == EINTR) continue;  // interruptPending() decides
    return -1;
  }
}

// libedit's key reader: one character, decoded from UTF-8, or EOF. Returning
// EOF on Ctrl-C ends readline() at once with no line, and the flag then
// tells that apart from Ctrl-D.
int readKey(FILE*) {
  int lead = readByte();
  if (lead < 0) return EOF;
  if (lead < 0x80) return lead;
  int extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
  int code = lead & (0x3F >> extra);
  for (int k = 0; k < extra; ++k) {
    int next = readByte();
    if (next < 0) return EOF;
    code = (code << 6) | (next & 0x3F);
  }
  return code;
}

class History {
 public:
  History() : file_(historyFile()) {
    using_history();
    stifle_history(kHistoryLength);
    if (!file_.empty()) read_history(file_.c_str());
  }

  void add(const std::string& line) {
    if (line == last_) return;
    last_ = line;
    add_history(line.c_str());
    // Saved at once, so that a run that ends badly keeps its history.
    if (file_.empty() || write_history(file_.c_str()) != 0) return;
    chmod(file_.c_str(), S_IRUSR | S_IWUSR);
  }

 private:
  std::string file_;
  std::string last_;
};

}  // namespace

std::string historyFile() {
  const char* home = std::getenv("HOME");
  if (!home || !*home) {
    const passwd* user = getpwuid(getuid());
    home = user ? user->pw_dir : nullptr;
  }
  if (!home || !*home) return "";
  return std::string(home) + "/" + kHistoryName;
}

int runPrompt(Interpreter& interp) {
  // The line editor decodes and shows characters by LC_CTYPE; the rest of
  // tw keeps the C locale.
  if (!std::setlocale(LC_CTYPE, "C.UTF-8")) std::setlocale(LC_CTYPE, "");
  rl_catch_signals = 0;
  rl_getc_function = readKey;
  installInterruptHandler(InterruptMode::Prompt);
  History history;
  std::string pending;
  for (;;) {
    clearInterrupt();
    char* raw;
    {
      InterruptibleRead cutShort;
      raw = readline(pending.empty() ? kPrompt : kContinuationPrompt);
    }
    if (!raw) {
      if (!interruptPending()) break;  // Ctrl-D
      // Ctrl-C: what was typed, on this line and before it, is dropped.
      pending.clear();
      std::fputs("\n", stdout);
      std::fflush(stdout);
      continue;
    }
    std::string line(raw);
    std::free(raw);
    std::string t = trimmed(line);
    if (pending.empty() && (t == "exit" || t == "quit")) break;
    if (!t.empty()) history.add(line);
    pending += line + "\n";
    Block program;
    try {
      program = parseProgram(pending, interp.symbols());
    } catch (const SyntaxError& e) {
      if (e.incomplete) continue;
      reportSyntaxError(interp, "", pending, e);
      pending.clear();
      continue;
    }
    std::string source;
    source.swap(pending);
    runProgram(interp, "", source, program);
  }
  std::fputs("\n", stdout);
  return 0;
}

}  // namespace tw
