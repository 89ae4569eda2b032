// Ctrl-C. The signal only raises a flag; the interpreter looks at it before
// each statement and at each turn of a loop, and throws Interrupted there.
// So a built-in always runs to its end, and neither the library's table of
// files nor any array is left half made.
#pragma once

#include "shell_errors.h"

namespace tw {

// "KORVAN:shell:Interrupted". A script's try/catch does not catch it.
class Interrupted : public UserError {
 public:
  Interrupted();
};

enum class InterruptMode {
  Prompt,  // every Ctrl-C only asks the running statement to stop
  Script,  // a second Ctrl-C before the first was seen ends the process
};

void installInterruptHandler(InterruptMode mode);

bool interruptPending();
void clearInterrupt();
// Throws Interrupted, once, when Ctrl-C was pressed since the last look.
void checkInterrupt();

// While a line is read at the prompt, Ctrl-C cuts the read short (the read
// fails with EINTR) instead of waiting for the line to end. Outside, system
// calls resume after the signal, so that no built-in sees a spurious failure.
class InterruptibleRead {
 public:
  InterruptibleRead();
  ~InterruptibleRead();
  InterruptibleRead(const InterruptibleRead&) = delete;
  InterruptibleRead& operator=(const InterruptibleRead&) = delete;
};

}  // namespace tw
