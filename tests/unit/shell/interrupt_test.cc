// Ctrl-C as the interpreter sees it: a flag raised by the signal, read
// before each statement, which a script's try/catch cannot swallow.
#include "interrupt.h"

#include <gtest/gtest.h>

#include <csignal>
#include <vector>

#include "interpreter.h"
#include "parser.h"

namespace tw {
namespace {

class RecordingReporter : public Reporter {
 public:
  void display(const std::string& name, const kxArray*, NumberFormat) override {
    shown.push_back(name);
  }
  void warning(const std::string&, const std::string&, const SourceLocation&) override {}
  void error(const std::string&, const std::string&, const SourceLocation&) override {}
  std::vector<std::string> shown;
};

class InterruptTest : public ::testing::Test {
 protected:
  void SetUp() override {
    registerShellMessages();
    installInterruptHandler(InterruptMode::Prompt);
    clearInterrupt();
  }
  void TearDown() override {
    clearInterrupt();
    std::signal(SIGINT, SIG_DFL);
  }
  void run(const std::string& code) { interp.run(parseProgram(code, interp.symbols())); }

  RecordingReporter reporter;
  Interpreter interp{reporter};
};

TEST_F(InterruptTest, TheSignalOnlyRaisesTheFlag) {
  EXPECT_FALSE(interruptPending());
  std::raise(SIGINT);
  EXPECT_TRUE(interruptPending());
  EXPECT_THROW(checkInterrupt(), Interrupted);
  EXPECT_FALSE(interruptPending());  // seen once
  EXPECT_NO_THROW(checkInterrupt());
}

TEST_F(InterruptTest, StopsTheNextStatementThroughTryAndKeepsTheWorkspace) {
  run("x = 1;");
  std::raise(SIGINT);
  EXPECT_THROW(run("try, y = 2, catch, y = 3, end"), Interrupted);
  EXPECT_TRUE(reporter.shown.empty());  // neither branch ran
  EXPECT_TRUE(interp.isVariable("x"));
  EXPECT_FALSE(interp.isVariable("y"));
  run("z = x + 1");  // the next statement runs as usual
  EXPECT_EQ(reporter.shown, std::vector<std::string>{"z"});
}

TEST_F(InterruptTest, TheInterruptIsReportedWhereTheStatementStands) {
  interp.setSource("s.tw", "a = 1;\n  b = 2;\n");
  std::raise(SIGINT);
  try {
    run("a = 1;\n  b = 2;\n");
    FAIL() << "not interrupted";
  } catch (const Interrupted& e) {
    EXPECT_EQ(e.get_error_id(), "KORVAN:shell:Interrupted");
  }
  SourceLocation where = interp.location();
  EXPECT_EQ(where.line, 1);
  EXPECT_EQ(where.column, 1);
}

}  // namespace
}  // namespace tw
