// Parse, run, report.
#include "top_level.h"

#include <unistd.h>

#include <cstdio>

#include "interrupt.h"
#include "parser.h"
#include "twhost/errors.h"

namespace tw {

void reportSyntaxError(Interpreter& interp, const std::string& file, const std::string& source,
                       const SyntaxError& e) {
  std::fflush(stdout);
  interp.reporter().error("KORVAN:shell:SyntaxError", "Syntax error: " + e.message + ".",
                          locate(file, source, e.line, e.column));
}

Outcome runProgram(Interpreter& interp, const std::string& file, const std::string& source,
                   const Block& program) {
  interp.setSource(file, source);
  Outcome outcome = Outcome::Done;
  kxErrorReport report;
  try {
    interp.run(program);
  } catch (const Interrupted& e) {
    outcome = Outcome::Interrupted;
    report = {e.get_error_id(), e.get_message()};
  } catch (...) {
    outcome = Outcome::Error;
    report = kxDescribeException(std::current_exception());
  }
  std::fflush(stdout);
  // The terminal echoed ^C where the cursor stood; the report starts afresh.
  if (outcome == Outcome::Interrupted && isatty(STDERR_FILENO)) std::fputs("\n", stderr);
  if (outcome != Outcome::Done) {
    interp.reporter().error(report.identifier, report.message, interp.location());
  }
  return outcome;
}

Outcome runSource(Interpreter& interp, const std::string& file, const std::string& source) {
  Block program;
  try {
    program = parseProgram(source, interp.symbols());
  } catch (const SyntaxError& e) {
    reportSyntaxError(interp, file, source, e);
    return Outcome::SyntaxError;
  }
  return runProgram(interp, file, source, program);
}

}  // namespace tw
