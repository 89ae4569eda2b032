// Calls by name and the package registry.
#include <gtest/gtest.h>

#include "twhost/calls.h"
#include "twhost/errors.h"
#include "twhost/kx_frame.h"

namespace {

TEST(HostCalls, RegisteredFunctionIsCalledWithItsArguments) {
  kxRegisterFunction("twice", [](int, kxArray** plhs, int, kxArray** prhs) {
    plhs[0] = kxCreateDoubleScalar(2 * kxGetScalar(prhs[0]));
  });
  kxArray* in = kxCreateDoubleScalar(21);
  kxArray* out = nullptr;
  EXPECT_EQ(inCallFcn(1, &out, 1, &in, "twice"), 0);
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(kxGetScalar(out), 42);
  kxDestroyArray(in);
  kxDestroyArray(out);
}

TEST(HostCalls, TrapHandsTheErrorBackAndFreesWhatTheCallMade) {
  kxRegisterFunction("fails", [](int, kxArray** plhs, int, kxArray**) {
    plhs[0] = kxCreateDoubleMatrix(1000, 1, kxREAL);
    kxThrowId("KORVAN:FileIO", "InvalidFid");
  });
  kxCallFrame outer;
  kxArray* out = nullptr;
  std::exception_ptr e = inCallFcnWithTrap(1, &out, 0, nullptr, "fails");
  ASSERT_TRUE(e);
  EXPECT_EQ(kxDescribeException(e).identifier, "KORVAN:FileIO:InvalidFid");
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(outer.liveArrays(), 0u);
}

TEST(HostCalls, UnknownNameIsAnError) {
  kxArray* out = nullptr;
  std::exception_ptr e = inCallFcnWithTrap(1, &out, 0, nullptr, "no.such.function");
  ASSERT_TRUE(e);
  EXPECT_EQ(kxDescribeException(e).identifier, "KORVAN:shell:UndefinedFunction");
}

class Echo : public kcos::COSMethodInfo {
 public:
  std::string name() const override { return "echo"; }
  void invoke(int& nlhs, kxArray** plhs, int, kxArray** prhs) override {
    nlhs = 1;
    plhs[0] = kxDuplicateArray(prhs[0]);
  }
};

TEST(HostPackages, MethodIsFoundByItsDottedName) {
  kcos::Package* p = kcos::omGetGlobalPackage("korvan");
  p = kcos::omGetSubPackage(kcos::omGetSubPackage(p, "test"), "inner");
  p->addMethod(new Echo);
  EXPECT_EQ(kcos::omGetSubPackage(kcos::omGetGlobalPackage("korvan"), "test"),
            kcos::omGetSubPackage(kcos::omGetGlobalPackage("korvan"), "test"))
      << "packages are made once";
  kcos::COSMethodInfo* m = kcos::omFindMethod("korvan.test.inner.echo");
  ASSERT_NE(m, nullptr);
  kxArray* in = kxCreateString("abc");
  kxArray* out = nullptr;
  int nlhs = 0;
  m->invoke(nlhs, &out, 1, &in);
  EXPECT_EQ(nlhs, 1);
  EXPECT_EQ(kxArrayToUTF8StdString(out), "abc");
  kxDestroyArray(in);
  kxDestroyArray(out);
  EXPECT_EQ(kcos::omFindMethod("korvan.test.inner.other"), nullptr);
  EXPECT_EQ(kcos::omFindMethod("korvan.nothing.echo"), nullptr);
}

}  // namespace
