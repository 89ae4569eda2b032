// The interactive prompt.
#pragma once

#include <string>

namespace tw {

class Interpreter;

// Reads statements at a prompt until Ctrl-D, "exit" or "quit". Lines are
// gathered until they make whole statements. Ctrl-C at the prompt drops the
// line being typed; while statements run it stops them, and every variable
// stays. History is kept from one run to the next in historyFile().
int runPrompt(Interpreter& interp);

// ~/.tw_history; empty when there is no home folder.
std::string historyFile();

}  // namespace tw
