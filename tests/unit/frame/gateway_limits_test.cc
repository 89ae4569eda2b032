// Argument-count limits of every slot: which error each gateway raises, and
// that counts within the limits get past the gateway.
#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <string>
#include <vector>

#include "fileio/builtin_table.h"
#include "frame/gateways.h"
#include "frame/not_built_yet.h"
#include "twhost/errors.h"
#include "twhost/kx_frame.h"

namespace {

using Tarnwicks::FileIO::BuiltinTable;
using Tarnwicks::FileIO::kBuiltinNames;
using Tarnwicks::FileIO::kSlotLimits;

// Calls a slot with nlhs outputs and nrhs double-scalar inputs (fid 1, the
// standard output, so that bodies which look at the inputs see a real file),
// and gives the identifier of the error it raised, or "" when none.
std::string callSlot(int slot, int nlhs, int nrhs) {
  std::vector<kxArray*> in;
  for (int i = 0; i < nrhs; ++i) in.push_back(kxCreateDoubleScalar(1));
  std::vector<kxArray*> out(nlhs + 1, nullptr);
  std::string id;
  try {
    kxCallBuiltin(QueryKVFcnTable_fileio()->entries[slot], nlhs, out.data(), nrhs, in.data());
  } catch (const fl::except::IUserException& e) {
    id = e.get_error_id();
  }
  for (auto* a : in) kxDestroyArray(a);
  for (auto* a : out) kxDestroyArray(a);
  return id;
}

bool isCountError(const std::string& id) {
  return id == "KORVAN:maxlhs" || id == "KORVAN:maxrhs" || id == "KORVAN:minrhs" ||
         id == "KORVAN:legacy:2" || id == "KORVAN:legacy:3";
}

class GatewayLimits : public ::testing::TestWithParam<int> {};

TEST_P(GatewayLimits, TooManyOutputsIsRefusedFirst) {
  int slot = GetParam();
  const auto& lim = kSlotLimits[slot];
  // Too many outputs wins even when the inputs are wrong too, except in the
  // legacy gateways, which look at the inputs first.
  std::string id = callSlot(slot, lim.maxOut + 1, lim.minIn);
  EXPECT_EQ(id, lim.legacy ? "KORVAN:legacy:3" : "KORVAN:maxlhs") << kBuiltinNames[slot];
  if (lim.minIn > 0) {
    id = callSlot(slot, lim.maxOut + 1, lim.minIn - 1);
    EXPECT_EQ(id, lim.legacy ? "KORVAN:legacy:2" : "KORVAN:maxlhs") << kBuiltinNames[slot];
  }
}

TEST_P(GatewayLimits, TooFewInputsIsRefused) {
  int slot = GetParam();
  const auto& lim = kSlotLimits[slot];
  std::string expected = lim.legacy ? "KORVAN:legacy:2" : "KORVAN:minrhs";
  for (int n = 0; n < lim.minIn; ++n) {
    EXPECT_EQ(callSlot(slot, 0, n), expected) << kBuiltinNames[slot] << " with " << n;
  }
}

TEST_P(GatewayLimits, TooManyInputsIsRefused) {
  int slot = GetParam();
  const auto& lim = kSlotLimits[slot];
  if (lim.maxIn < 0) GTEST_SKIP() << kBuiltinNames[slot] << " takes any number of inputs";
  // A built-in with one fixed input count reports every mismatch as too few.
  std::string expected = lim.minIn == lim.maxIn ? "KORVAN:minrhs" : "KORVAN:maxrhs";
  EXPECT_EQ(callSlot(slot, 0, lim.maxIn + 1), expected) << kBuiltinNames[slot];
  EXPECT_EQ(callSlot(slot, 0, lim.maxIn + 3), expected) << kBuiltinNames[slot];
}

TEST_P(GatewayLimits, CountsWithinTheLimitsReachTheBody) {
  int slot = GetParam();
  const auto& lim = kSlotLimits[slot];
  int maxIn = lim.maxIn < 0 ? lim.minIn + 2 : lim.maxIn;
  for (int nlhs = 0; nlhs <= lim.maxOut; ++nlhs) {
    for (int nrhs = lim.minIn; nrhs <= maxIn; ++nrhs) {
      std::string id = callSlot(slot, nlhs, nrhs);
      EXPECT_FALSE(isCountError(id))
          << kBuiltinNames[slot] << " nlhs " << nlhs << " nrhs " << nrhs << ": " << id;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(AllSlots, GatewayLimits, ::testing::Range(0, 16),
                         [](const auto& info) { return std::string(kBuiltinNames[info.param]); });

struct LimitRow {
  const char* name;
  int maxOut, minIn, maxIn;
};

// The limits as users know them, independent of the table in the code.
TEST(GatewayLimitsTable, MatchesTheDocumentedLimits) {
  const LimitRow rows[] = {
      {"fopen", 4, 1, 4},     {"fclose", 1, 1, 1},
      {"fread", 2, 1, 5},     {"fwrite", 1, 2, 5},
      {"fscanf", 2, 2, 3},    {"fprintf", 1, 1, -1},
      {"sscanf", 4, 2, 3},    {"sprintf", 2, 1, -1},
      {"sprintfc", 3, 2, 3},  {"fgets", 2, 1, 2},
      {"fseek", 1, 3, 3},     {"ftell", 1, 1, 1},
      {"ferror", 2, 1, 2},    {"feof", 1, 1, 1},
      {"textscan", 2, 2, -1}, {"textscanOptionsQuery", 2, 2, -1},
  };
  for (int slot = 0; slot < 16; ++slot) {
    SCOPED_TRACE(rows[slot].name);
    EXPECT_STREQ(kBuiltinNames[slot], rows[slot].name);
    EXPECT_EQ(kSlotLimits[slot].maxOut, rows[slot].maxOut);
    EXPECT_EQ(kSlotLimits[slot].minIn, rows[slot].minIn);
    EXPECT_EQ(kSlotLimits[slot].maxIn, rows[slot].maxIn);
  }
}

TEST(GatewayLimitsTable, SprintfAcceptsTwoOutputsButNotThree) {
  EXPECT_FALSE(isCountError(callSlot(Tarnwicks::FileIO::kSlotSprintf, 2, 1)));
  EXPECT_EQ(callSlot(Tarnwicks::FileIO::kSlotSprintf, 3, 1), "KORVAN:legacy:3");
  EXPECT_EQ(callSlot(Tarnwicks::FileIO::kSlotSprintf, 0, 0), "KORVAN:legacy:2");
}

TEST(LibraryEntry, TableIsTheSameBeforeAndAfterInitialisation) {
  const BuiltinTable* before = QueryKVFcnTable_fileio();
  EXPECT_EQ(before->fileioBuiltinCount, 16u);
  EXPECT_EQ(before->fileioTableIdA, 0x3e2b3ce3u);
  EXPECT_EQ(before->fileioTableIdB, 0x55ba9d45u);
  KVInitialize_fileio();
  KVInitialize_fileio();
  KVTerminate_fileio();
  EXPECT_EQ(QueryKVFcnTable_fileio(), before);
  for (int i = 0; i < 16; ++i) EXPECT_NE(before->entries[i], nullptr);
}

TEST(LibraryEntry, VersionIsFourNumbers) {
  std::string v = libtwfileio_version;
  EXPECT_EQ(std::count(v.begin(), v.end(), '.'), 3) << v;
  EXPECT_EQ(std::strlen(libtwfileio_build_date), 11u) << libtwfileio_build_date;
}

TEST(LibraryEntry, FileFormsOfPrintAndScanLeaveTheNumericLocaleAtC) {
  setlocale(LC_NUMERIC, "C.UTF-8");
  callSlot(Tarnwicks::FileIO::kSlotSprintf, 0, 1);
  EXPECT_STREQ(setlocale(LC_NUMERIC, nullptr), "C.UTF-8") << "sprintf must not touch it";
  callSlot(Tarnwicks::FileIO::kSlotFprintf, 0, 1);
  EXPECT_STREQ(setlocale(LC_NUMERIC, nullptr), "C");
  setlocale(LC_NUMERIC, "C.UTF-8");
  callSlot(Tarnwicks::FileIO::kSlotFscanf, 0, 2);
  EXPECT_STREQ(setlocale(LC_NUMERIC, nullptr), "C");
}

}  // namespace

namespace {

// A built-in whose area is not in the build yet names itself, so that the
// user is not told something about files that is not true.
TEST(NotBuiltYet, RaisesAnErrorNamingTheBuiltin) {
  std::vector<kxArray*> in = {kxCreateString("x"), kxCreateString("%d")};
  std::vector<kxArray*> out(2, nullptr);
  std::string message;
  try {
    kxCallBuiltin(Tarnwicks::FileIO::notBuiltYet<Tarnwicks::FileIO::kSlotFscanf>, 1, out.data(), 2,
                  in.data());
    ADD_FAILURE() << "the placeholder returned";
  } catch (const fl::except::IUserException& e) {
    EXPECT_EQ(e.get_error_id(), "KORVAN:FileIO:NotBuiltYet");
    message = e.get_message();
  }
  for (auto* a : in) kxDestroyArray(a);
  EXPECT_NE(message.find("fscanf"), std::string::npos) << message;
}

// Every area is built: no slot of the table is the placeholder any more.
TEST(NotBuiltYet, NoSlotOfTheTableRaisesIt) {
  for (int slot = 0; slot < 16; ++slot) {
    std::vector<kxArray*> in = {kxCreateString("x"), kxCreateString("%d")};
    std::vector<kxArray*> out(3, nullptr);
    std::string id;
    try {
      kxCallBuiltin(QueryKVFcnTable_fileio()->entries[slot], 1, out.data(), 2, in.data());
    } catch (const fl::except::IUserException& e) {
      id = e.get_error_id();
    }
    EXPECT_NE(id, "KORVAN:FileIO:NotBuiltYet") << kBuiltinNames[slot];
    for (auto* a : in) kxDestroyArray(a);
    for (auto* a : out) kxDestroyArray(a);
  }
}

}  // namespace
