// Code run at the top level: parsed, run, and whatever it did not catch
// reported with where it happened.
#pragma once

#include <string>

#include "interpreter.h"
#include "lexer.h"

namespace tw {

enum class Outcome { Done, SyntaxError, Error, Interrupted };

void reportSyntaxError(Interpreter& interp, const std::string& file, const std::string& source,
                       const SyntaxError& e);

// Runs statements parsed from `source`, which `file` names in reports
// (empty at the prompt).
Outcome runProgram(Interpreter& interp, const std::string& file, const std::string& source,
                   const Block& program);

// Parses and runs.
Outcome runSource(Interpreter& interp, const std::string& file, const std::string& source);

}  // namespace tw
