// The SIGINT handler and its flag.
#include "interrupt.h"

#include <csignal>

namespace tw {

namespace {

volatile std::sig_atomic_t g_pending = 0;
volatile std::sig_atomic_t g_endOnSecond = 0;

extern "C" void onInterrupt(int) {
  if (g_pending && g_endOnSecond) {
    std::signal(SIGINT, SIG_DFL);
    std::raise(SIGINT);
    return;
  }
  g_pending = 1;
}

void setHandler(bool restartCalls) {
  struct sigaction action {};
  action.sa_handler = onInterrupt;
  sigemptyset(&action.sa_mask);
  action.sa_flags = restartCalls ? SA_RESTART : 0;
  sigaction(SIGINT, &action, nullptr);
}

}  // namespace

Interrupted::Interrupted()
    : UserError("KORVAN:shell:Interrupted", shellMessageText("Interrupted")) {}

void installInterruptHandler(InterruptMode mode) {
  g_endOnSecond = mode == InterruptMode::Script;
  setHandler(true);
}

bool interruptPending() {
  return g_pending != 0;
}

void clearInterrupt() {
  g_pending = 0;
}

void checkInterrupt() {
  if (!g_pending) return;
  g_pending = 0;
  throw Interrupted();
}

InterruptibleRead::InterruptibleRead() {
  setHandler(false);
}

InterruptibleRead::~InterruptibleRead() {
  setHandler(true);
}

}  // namespace tw
