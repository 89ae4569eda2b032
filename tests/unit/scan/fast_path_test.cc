// The fast path gives what the general path gives: for random texts of
// numbers, separators, Unicode spaces, zero units and stray characters,
// under every format the fast path takes and several sizes, the values (bit
// for bit), their class, the count, the code that ended the scan, how it
// ended, and where the input stands afterwards, on texts (sscanf) and on
// files (fscanf).
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "scan/fast_scan.h"
#include "scan/scan_paths.h"
#include "scan_test_support.h"
#include "twhost/text.h"

namespace {

using namespace Tarnwicks::FileIO;

void expectSame(const ScanRun& fast, const ScanRun& slow, const std::string& what) {
  EXPECT_EQ(fast.bytes, slow.bytes) << what;
  EXPECT_EQ(fast.cls, slow.cls) << what;
  EXPECT_EQ(fast.count, slow.count) << what;
  EXPECT_EQ(fast.error, slow.error) << what;
  EXPECT_EQ(fast.normalEnd, slow.normalEnd) << what;
  EXPECT_EQ(fast.position, slow.position) << what;
}

const char16_t* const kFormats[] = {
    u"%f",  u"%d",  u"%i",    u"%x",    u"%o",  u"%u",       u"%hd",     u"%ld",      u"%lu",
    u"%lx", u"%hf", u"%e %g", u" %d\n", u"%f ", u"%li\t%li", u"%hu %hu", u"\x3000%G", u"%ho"};

// Pieces of text a scan meets.
const char16_t* const kPieces[] = {u"0",
                                   u"1",
                                   u"7",
                                   u"9",
                                   u"12",
                                   u"-3",
                                   u"+4",
                                   u"0x1F",
                                   u"017",
                                   u"08",
                                   u"1.5",
                                   u"-.5",
                                   u"2e10",
                                   u"1e",
                                   u"inf",
                                   u"-NaN",
                                   u"in",
                                   u"n",
                                   u"x",
                                   u"-",
                                   u"ff",
                                   u" ",
                                   u"\t",
                                   u"\n",
                                   u"  ",
                                   u"\u3000",
                                   u"\u00a0",
                                   u"\u2028",
                                   u"é",
                                   u",",
                                   u"%",
                                   u"99999999999999999999999",
                                   u"18446744073709551616",
                                   u"-2147483649",
                                   u"4.9e-324",
                                   u"0x1p3",
                                   u"1e400",
                                   u"\U0001F600"};

ustring randomText(std::mt19937& rng) {
  ustring text;
  const size_t pieces = rng() % 12;
  for (size_t i = 0; i < pieces; ++i) {
    text += kPieces[rng() % std::size(kPieces)];
    if (rng() % 3 != 0) text += u' ';
  }
  if (rng() % 10 == 0) text.insert(text.size() / 2, 1, u'\0');
  return text;
}

ScanSize randomSize(std::mt19937& rng) {
  ScanSize size;
  switch (rng() % 4) {
    case 0:
      return size;
    case 1:
      size.rows = 1 + rng() % 5;
      size.columns = 1;
      size.unlimited = false;
      return size;
    default:
      size.rows = 1 + rng() % 3;
      size.columns = 1 + rng() % 3;
      size.unlimited = false;
      size.twoValues = true;
      return size;
  }
}

TEST(FastPath, TakesTheFormatsMeantForIt) {
  for (const char16_t* f : kFormats) {
    scanFormatParser p(f);
    p.parseFormat();
    EXPECT_TRUE(planFastScan(p).eligible) << fl::i18n::to_string(f);
  }
  for (const char16_t* f : {u"%s", u"%d,", u"%*d", u"%5f", u"%d %f", u"%d %q", u"x%d", u"%c"}) {
    scanFormatParser p(f);
    p.parseFormat();
    EXPECT_FALSE(planFastScan(p).eligible) << fl::i18n::to_string(f);
  }
}

TEST(FastPath, AgreesWithTheGeneralPathOnTexts) {
  std::mt19937 rng(11);
  uint64_t values = 0;
  for (int i = 0; i < 20000; ++i) {
    const ustring format = kFormats[rng() % std::size(kFormats)];
    const ustring text = randomText(rng);
    const ScanSize size = randomSize(rng);
    const ScanRun fast = scanTextFast(format, text, size);
    const ScanRun slow = scanTextGeneral(format, text, size);
    const std::string utf8 = fl::i18n::to_string(text);
    expectSame(fast, slow, "'" + utf8 + "' with '" + fl::i18n::to_string(format) + "'");
    if (HasFailure()) break;
    values += slow.count;
  }
  EXPECT_GT(values, 10000u) << "the texts should hold numbers";
}

TEST(FastPath, AgreesWithTheGeneralPathOnFiles) {
  std::mt19937 rng(12);
  for (int i = 0; i < 3000; ++i) {
    const ustring format = kFormats[rng() % std::size(kFormats)];
    std::string bytes = fl::i18n::to_string(randomText(rng));
    const ScanSize size = randomSize(rng);
    const ScanRun results[2] = {scanFileBytes(format, bytes, size, false),
                                scanFileBytes(format, bytes, size, true)};
    expectSame(results[1], results[0],
               "'" + bytes + "' with '" + fl::i18n::to_string(format) + "'");
    if (HasFailure()) break;
  }
}

}  // namespace
