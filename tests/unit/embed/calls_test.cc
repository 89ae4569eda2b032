// Calls by name for embedders: owned outputs, one error type with the
// identifier, inputs written in place, and every name of the table reached.
#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>

#include "support/scratch_dir.h"
#include "twfileio/twfileio.h"
#include "twhost/errors.h"
#include "twhost/kx_frame.h"

namespace {

using test_support::ScratchDir;

// The identifier of the twfileio::Error a callable throws, "" when none.
template <class F>
std::string identifierOf(F&& f) {
  try {
    f();
  } catch (const twfileio::Error& e) {
    EXPECT_FALSE(std::string(e.what()).empty());
    EXPECT_EQ(e.message(), e.what());
    return e.identifier();
  }
  return "";
}

using EmbedCalls = ScratchDir;

TEST_F(EmbedCalls, WritesAndReadsAFileByName) {
  kxOwned values(kxCreateDoubleMatrix(2, 3, kxREAL));
  for (size_t i = 0; i < 6; ++i) kxGetPr(values.get())[i] = 0.5 * static_cast<double>(i);

  auto fid = twfileio::call("fopen", {path("d.bin"), "w"});
  ASSERT_EQ(fid.size(), 1u);
  EXPECT_EQ(kxGetScalar(twfileio::call("fwrite", {fid[0], values, "double"})[0].get()), 6);
  twfileio::call("fclose", {fid[0]});

  auto [reader, message] = twfileio::callN<2>("fopen", {path("d.bin")});
  EXPECT_EQ(kxArrayToUTF8StdString(message.get()), "");
  kxOwned size(kxCreateDoubleMatrix(1, 2, kxREAL));
  kxGetPr(size.get())[0] = 2;
  kxGetPr(size.get())[1] = 3;
  auto [data, count] = twfileio::callN<2>("fread", {reader, size, "double"});
  EXPECT_EQ(kxGetScalar(count.get()), 6);
  ASSERT_EQ(kxGetM(data.get()), 2u);
  ASSERT_EQ(kxGetN(data.get()), 3u);
  for (size_t i = 0; i < 6; ++i) EXPECT_EQ(kxGetPr(data.get())[i], kxGetPr(values.get())[i]);
  // The borrowed input is as it was.
  EXPECT_EQ(kxGetPr(values.get())[5], 2.5);
}

TEST_F(EmbedCalls, NumbersLogicalsAndTextsBecomeArraysOfTheirClass) {
  auto fid = twfileio::call("fopen", {path("t.txt"), std::string("w")});
  twfileio::call("fprintf", {fid[0], "%d %g %d|", 7, 2.5f, true});
  twfileio::call("fclose", {fid[0]});
  EXPECT_EQ(readFile("t.txt"), "7 2.5 1|");
  auto text = twfileio::call("sprintf", {"%s", "é"});
  EXPECT_EQ(kxArrayToUTF8StdString(text[0].get()), "é");
}

TEST_F(EmbedCalls, OutputsAskedForAreThereAndOthersAreNull) {
  auto none = twfileio::call("ftell", {1}, 0);
  ASSERT_EQ(none.size(), 1u);  // the built-in may still give its one value
  auto two = twfileio::call("fopen", {path("missing/x")}, 2);
  ASSERT_EQ(two.size(), 2u);
  EXPECT_EQ(kxGetScalar(two[0].get()), -1);
  EXPECT_FALSE(kxArrayToUTF8StdString(two[1].get()).empty());
}

struct FailingCall {
  const char* name;
  int nargout;
  const char* identifier;
};

class EmbedErrors : public ::testing::TestWithParam<FailingCall> {};

TEST_P(EmbedErrors, ArriveAsOneExceptionTypeWithTheIdentifier) {
  const FailingCall& c = GetParam();
  EXPECT_EQ(identifierOf([&] { twfileio::call(c.name, {99.5}, c.nargout); }), c.identifier);
}

INSTANTIATE_TEST_SUITE_P(
    Embed, EmbedErrors,
    ::testing::Values(FailingCall{"fread", 1, "KORVAN:FileIO:InvalidFid"},
                      FailingCall{"ftell", 2, "KORVAN:maxlhs"},
                      FailingCall{"ftell", 1000000, "KORVAN:maxlhs"},
                      FailingCall{"ftell", -1, "KORVAN:twfileio:NegativeOutputCount"},
                      FailingCall{"freed", 1, "KORVAN:twfileio:UnknownBuiltin"},
                      FailingCall{"fseek", 1, "KORVAN:minrhs"}),
    [](const auto& info) {
      return std::string(info.param.name) + "_" + std::to_string(info.index);
    });

TEST(EmbedNames, EveryNameOfTheTableReachesItsBuiltin) {
  EXPECT_EQ(twfileio::builtinNames().size(), Tarnwicks::FileIO::kFileioBuiltinCount);
  for (const char* name : twfileio::builtinNames()) {
    EXPECT_TRUE(twfileio::isBuiltin(name));
    // With no inputs every built-in fails, each in its own way, never as an
    // unknown name.
    std::string id = identifierOf([&] { twfileio::call(name, {}); });
    EXPECT_NE(id, "") << name;
    EXPECT_NE(id, "KORVAN:twfileio:UnknownBuiltin") << name;
  }
  EXPECT_FALSE(twfileio::isBuiltin("fgetl"));
}

// Outputs belong to their kxOwned alone: an error that later passes a frame
// enclosing the call must not free them.
TEST(EmbedOwnership, OutputsOutliveAnErrorOfAnEnclosingFrame) {
  std::vector<kxOwned> kept;
  try {
    kxCallFrame frame;
    kept = twfileio::call("sprintf", {"%d,", 42}, 2);
    EXPECT_EQ(frame.liveArrays(), 0u);
    throw std::runtime_error("the embedder's own failure");
  } catch (const std::runtime_error&) {
  }
  ASSERT_EQ(kept.size(), 2u);
  EXPECT_EQ(kxArrayToUTF8StdString(kept[0].get()), "42,");
}

}  // namespace
