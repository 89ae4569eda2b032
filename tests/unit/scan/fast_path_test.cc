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

#include "fileio/file_stream.h"
#include "fileio/string_streams.h"
#include "scan/fast_scan.h"
#include "scan/scan_control.h"
#include "scan_test_support.h"
#include "twhost/kx_memory.h"
#include "twhost/text.h"

namespace {

using namespace Tarnwicks::FileIO;

struct Raw {
  std::vector<unsigned char> bytes;
  kxClassID cls = kxUNKNOWN_CLASS;
  uint64_t count = 0;
  int error = 0;
  bool normalEnd = false;
  size_t position = 0;  // units (texts) or bytes (files) read
};

void takeBlock(Raw& r, void* block, size_t total) {
  const size_t n = total * kxClassElementSize(r.cls);
  r.bytes.assign(static_cast<unsigned char*>(block), static_cast<unsigned char*>(block) + n);
  kxFreeEx(block);
}

size_t unitsOfUtf8(const std::string& s, size_t bytes) {
  size_t units = 0;
  for (size_t i = 0; i < bytes; ++i) {
    auto b = static_cast<unsigned char>(s[i]);
    if ((b & 0xC0) != 0x80) units += b >= 0xF0 ? 2 : 1;
  }
  return units;
}

template <class Control>
Raw general(const ustring& format, stream& s, const ScanSize& size) {
  Raw r;
  r.count = size.limit();
  Control control(format, s, &r.count, size.unlimited);
  r.normalEnd = control.scan();
  r.error = control.scanError;
  r.cls = control.buffer().getClassId();
  size_t total = 0;
  void* block = control.buffer().takeJoined(total);
  takeBlock(r, block, total);
  return r;
}

Raw fromFast(const FastOutcome& f) {
  Raw r;
  r.cls = f.cls;
  r.count = f.total;
  r.error = f.error;
  r.normalEnd = f.normalEnd;
  takeBlock(r, f.block, f.total);
  return r;
}

void expectSame(const Raw& fast, const Raw& slow, const std::string& what) {
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
    scanFormatParser parser(format);
    parser.parseFormat();
    size_t consumed = 0;
    Raw fast =
        fromFast(fastScanText(planFastScan(parser), text.data(), text.size(), size, consumed));
    fast.position = consumed;
    const std::string utf8 = fl::i18n::to_string(text);
    inputStringStream in(utf8.data(), utf8.size());
    Raw slow = general<sscanfScanControl>(format, in, size);
    slow.position = unitsOfUtf8(utf8, static_cast<size_t>(in.current - in.begin));
    expectSame(fast, slow, "'" + utf8 + "' with '" + fl::i18n::to_string(format) + "'");
    if (HasFailure()) break;
    values += slow.count;
  }
  EXPECT_GT(values, 10000u) << "the texts should hold numbers";
}

TEST(FastPath, AgreesWithTheGeneralPathOnFiles) {
  static const FilePermission permission("r", 0);
  std::mt19937 rng(12);
  for (int i = 0; i < 3000; ++i) {
    const ustring format = kFormats[rng() % std::size(kFormats)];
    std::string bytes = fl::i18n::to_string(randomText(rng));
    const ScanSize size = randomSize(rng);
    Raw results[2];
    for (int fast = 0; fast < 2; ++fast) {
      FILE* f = fmemopen(bytes.data(), bytes.size(), "r");
      ASSERT_NE(f, nullptr);
      {
        fileStream s(f, "UTF-8", &permission);
        if (fast) {
          scanFormatParser parser(format);
          parser.parseFormat();
          results[fast] = fromFast(fastScanStream(planFastScan(parser), parser, s, size));
        } else {
          results[fast] = general<fscanfScanControl>(format, s, size);
        }
      }
      results[fast].position = static_cast<size_t>(std::ftell(f));
      std::fclose(f);
    }
    expectSame(results[1], results[0],
               "'" + bytes + "' with '" + fl::i18n::to_string(format) + "'");
    if (HasFailure()) break;
  }
}

}  // namespace
