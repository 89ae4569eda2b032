// FreadRequest: the classes an fread call reads and makes, its stop rule,
// and the requests that its readers must never see.
#include "transfer/fread_request.h"

#include <gtest/gtest.h>

#include "twhost/errors.h"

namespace {

using namespace Tarnwicks::FileIO;

PrecisionString precisionOf(const char* text) {
  PrecisionString p;
  EXPECT_TRUE(p.parse(text)) << text;
  return p;
}

TEST(FreadRequest, ClassesComeFromThePrecision) {
  struct Case {
    const char* precision;
    kxClassID input, output, result;
  };
  const Case cases[] = {
      {"uint8=>double", kxUINT8_CLASS, kxDOUBLE_CLASS, kxDOUBLE_CLASS},
      {"*int16", kxINT16_CLASS, kxINT16_CLASS, kxINT16_CLASS},
      {"char=>char", kxCHAR_CLASS, kxCHAR_CLASS, kxCHAR_CLASS},
      // "noconvert" moves bytes, gathered into elements of the class read.
      {"int32=>noconvert", kxINT32_CLASS, kxINT32_CLASS, kxINT32_CLASS},
      {"*noconvert", kxUINT8_CLASS, kxUINT8_CLASS, kxUINT8_CLASS},
  };
  for (const Case& c : cases) {
    PrecisionString p = precisionOf(c.precision);
    FreadRequest r(p, 4, false, 0);
    EXPECT_EQ(r.inputClass(), c.input) << c.precision;
    EXPECT_EQ(r.outputClass(), c.output) << c.precision;
    EXPECT_EQ(r.resultClass(), c.result) << c.precision;
    EXPECT_EQ(freadResultClass(p), c.result) << c.precision;
  }
}

TEST(FreadRequest, StopRuleCountsOrReadsToTheEnd) {
  PrecisionString p = precisionOf("uint8");
  StopRule counted = FreadRequest(p, 3000, false, 0).stopRule();
  EXPECT_FALSE(counted.readsAll());
  EXPECT_EQ(counted.blockSize(), 1024u);
  EXPECT_EQ(counted.nextBlock(1024, 2500), 500u);
  EXPECT_FALSE(counted.wantsMore(3000));
  StopRule all = FreadRequest(p, 0, true, 0).stopRule();
  EXPECT_TRUE(all.readsAll());
  EXPECT_TRUE(all.wantsMore(1u << 30));
  EXPECT_EQ(all.nextBlock(4096, 1u << 30), 4096u);
}

TEST(FreadRequest, RequestsThatDoNotHoldTogetherRaiseAnInternalError) {
  PrecisionString p = precisionOf("uint8");
  PrecisionString tooWide = precisionOf("ubit8");
  tooWide.bitCount = 65;
  PrecisionString noClass = precisionOf("uint8");
  noClass.inputCode = 0;
  auto raisesInternal = [](auto make) {
    try {
      make();
    } catch (const fl::except::IUserException& e) {
      return e.get_error_id() == "KORVAN:internal";
    }
    return false;
  };
  EXPECT_TRUE(raisesInternal([&] { FreadRequest(p, 1, false, -1); }));
  EXPECT_TRUE(raisesInternal([&] { FreadRequest(tooWide, 1, false, 0); }));
  EXPECT_TRUE(raisesInternal([&] { FreadRequest(noClass, 1, false, 0); }));
  EXPECT_FALSE(raisesInternal([&] { FreadRequest(p, 1, false, 8); }));
}

}  // namespace
