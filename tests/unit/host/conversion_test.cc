// Conversions between classes (AssignToVoidBuffer) on the values where the
// saturating rules matter, the typed view KxData, and the machine formats.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "twhost/kx_array.h"
#include "twhost/kx_data.h"

namespace {

// Destination classes in the column order of the table below.
constexpr kxClassID kColumns[] = {kxINT8_CLASS,    kxUINT8_CLASS,  kxINT16_CLASS,  kxUINT16_CLASS,
                                  kxINT32_CLASS,   kxUINT32_CLASS, kxINT64_CLASS,  kxUINT64_CLASS,
                                  kxLOGICAL_CLASS, kxCHAR_CLASS,   kxSINGLE_CLASS, kxDOUBLE_CLASS};
constexpr size_t kColumnCount = sizeof(kColumns) / sizeof(kColumns[0]);

// Reads a value of the class from text into 8 bytes of storage.
std::vector<unsigned char> parseAs(kxClassID cls, const std::string& text) {
  std::vector<unsigned char> out(8, 0);
  auto intoInt = [&](auto v) {
    std::from_chars(text.data(), text.data() + text.size(), v);
    std::memcpy(out.data(), &v, sizeof v);
  };
  switch (cls) {
    case kxDOUBLE_CLASS: {
      double v = std::strtod(text.c_str(), nullptr);
      std::memcpy(out.data(), &v, sizeof v);
      break;
    }
    case kxSINGLE_CLASS: {
      float v = std::strtof(text.c_str(), nullptr);
      std::memcpy(out.data(), &v, sizeof v);
      break;
    }
    case kxINT8_CLASS:
      intoInt(int8_t{});
      break;
    case kxUINT8_CLASS:
    case kxLOGICAL_CLASS:
      intoInt(uint8_t{});
      break;
    case kxINT16_CLASS:
      intoInt(int16_t{});
      break;
    case kxUINT16_CLASS:
    case kxCHAR_CLASS:
      intoInt(uint16_t{});
      break;
    case kxINT32_CLASS:
      intoInt(int32_t{});
      break;
    case kxUINT32_CLASS:
      intoInt(uint32_t{});
      break;
    case kxINT64_CLASS:
      intoInt(int64_t{});
      break;
    case kxUINT64_CLASS:
      intoInt(uint64_t{});
      break;
    default:
      ADD_FAILURE() << "no parser for class " << cls;
  }
  return out;
}

// Shows an element as the table writes it: whole numbers below 1e21 in full, NaN as
// "nan" whatever its sign, and other values with all their digits.
std::string show(kxClassID cls, const unsigned char* p) {
  auto whole = [](auto v) { return std::to_string(v); };
  auto floating = [](double v) {
    if (std::isnan(v)) return std::string("nan");
    if (std::isinf(v)) return std::string(v < 0 ? "-inf" : "inf");
    char buf[64];
    bool whole = v == std::trunc(v) && std::fabs(v) < 1e21;
    std::snprintf(buf, sizeof buf, whole ? "%.0f" : "%.17g", v);
    return std::string(buf);
  };
  auto get = [p](auto v) {
    std::memcpy(&v, p, sizeof v);
    return v;
  };
  switch (cls) {
    case kxDOUBLE_CLASS:
      return floating(get(double{}));
    case kxSINGLE_CLASS:
      return floating(get(float{}));
    case kxINT8_CLASS:
      return whole(int{get(int8_t{})});
    case kxUINT8_CLASS:
    case kxLOGICAL_CLASS:
      return whole(unsigned{get(uint8_t{})});
    case kxINT16_CLASS:
      return whole(get(int16_t{}));
    case kxUINT16_CLASS:
    case kxCHAR_CLASS:
      return whole(get(uint16_t{}));
    case kxINT32_CLASS:
      return whole(get(int32_t{}));
    case kxUINT32_CLASS:
      return whole(get(uint32_t{}));
    case kxINT64_CLASS:
      return whole(get(int64_t{}));
    case kxUINT64_CLASS:
      return whole(get(uint64_t{}));
    default:
      return "?";
  }
}

struct SaturationRow {
  kxClassID from;
  std::string value;
  // int8 uint8 int16 uint16 int32 uint32 int64 uint64 logical char single double
  std::vector<std::string> expected;
};

const SaturationRow kRows[] = {
    {kxDOUBLE_CLASS, "nan", {"0", "0", "0", "0", "0", "0", "0", "0", "1", "0", "nan", "nan"}},
    {kxDOUBLE_CLASS,
     "inf",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854775807",
      "18446744073709551615", "1", "65535", "inf", "inf"}},
    {kxDOUBLE_CLASS,
     "-inf",
     {"-128", "0", "-32768", "0", "-2147483648", "0", "-9223372036854775808", "0", "1", "0", "-inf",
      "-inf"}},
    {kxDOUBLE_CLASS, "0.5", {"1", "1", "1", "1", "1", "1", "1", "1", "1", "1", "0.5", "0.5"}},
    {kxDOUBLE_CLASS,
     "-0.5",
     {"-1", "0", "-1", "0", "-1", "0", "-1", "0", "1", "0", "-0.5", "-0.5"}},
    {kxDOUBLE_CLASS, "1.5", {"2", "2", "2", "2", "2", "2", "2", "2", "1", "2", "1.5", "1.5"}},
    {kxDOUBLE_CLASS,
     "-1.5",
     {"-2", "0", "-2", "0", "-2", "0", "-2", "0", "1", "0", "-1.5", "-1.5"}},
    {kxDOUBLE_CLASS, "2.5", {"3", "3", "3", "3", "3", "3", "3", "3", "1", "3", "2.5", "2.5"}},
    {kxDOUBLE_CLASS, "-0.0", {"0", "0", "0", "0", "0", "0", "0", "0", "0", "0", "-0", "-0"}},
    {kxDOUBLE_CLASS,
     "0.49999999999999994",
     {"0", "0", "0", "0", "0", "0", "0", "0", "1", "0", "0.5", "0.49999999999999994"}},
    {kxDOUBLE_CLASS,
     "127.5",
     {"127", "128", "128", "128", "128", "128", "128", "128", "1", "128", "127.5", "127.5"}},
    {kxDOUBLE_CLASS,
     "-128.5",
     {"-128", "0", "-129", "0", "-129", "0", "-129", "0", "1", "0", "-128.5", "-128.5"}},
    {kxDOUBLE_CLASS,
     "255.5",
     {"127", "255", "256", "256", "256", "256", "256", "256", "1", "256", "255.5", "255.5"}},
    {kxDOUBLE_CLASS,
     "-32768.5",
     {"-128", "0", "-32768", "0", "-32769", "0", "-32769", "0", "1", "0", "-32768.5", "-32768.5"}},
    {kxDOUBLE_CLASS,
     "65535.5",
     {"127", "255", "32767", "65535", "65536", "65536", "65536", "65536", "1", "65535", "65535.5",
      "65535.5"}},
    {kxDOUBLE_CLASS,
     "2147483647.5",
     {"127", "255", "32767", "65535", "2147483647", "2147483648", "2147483648", "2147483648", "1",
      "65535", "2147483648", "2147483647.5"}},
    {kxDOUBLE_CLASS,
     "-2147483648.5",
     {"-128", "0", "-32768", "0", "-2147483648", "0", "-2147483649", "0", "1", "0", "-2147483648",
      "-2147483648.5"}},
    {kxDOUBLE_CLASS,
     "4294967295.5",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "4294967296", "4294967296", "1",
      "65535", "4294967296", "4294967295.5"}},
    // 2^53 + 1 is not a double: the text reads as 2^53.
    {kxDOUBLE_CLASS,
     "9007199254740993",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9007199254740992",
      "9007199254740992", "1", "65535", "9007199254740992", "9007199254740992"}},
    // The largest double below 2^63 fits int64 exactly.
    {kxDOUBLE_CLASS,
     "9223372036854774784",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854774784",
      "9223372036854774784", "1", "65535", "9223372036854775808", "9223372036854774784"}},
    {kxDOUBLE_CLASS,
     "9223372036854775808",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854775807",
      "9223372036854775808", "1", "65535", "9223372036854775808", "9223372036854775808"}},
    {kxDOUBLE_CLASS,
     "-9223372036854775808",
     {"-128", "0", "-32768", "0", "-2147483648", "0", "-9223372036854775808", "0", "1", "0",
      "-9223372036854775808", "-9223372036854775808"}},
    {kxDOUBLE_CLASS,
     "-9223372036854777856",
     {"-128", "0", "-32768", "0", "-2147483648", "0", "-9223372036854775808", "0", "1", "0",
      "-9223372036854775808", "-9223372036854777856"}},
    // The largest double below 2^64 fits uint64 exactly.
    {kxDOUBLE_CLASS,
     "18446744073709549568",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854775807",
      "18446744073709549568", "1", "65535", "18446744073709551616", "18446744073709549568"}},
    {kxDOUBLE_CLASS,
     "18446744073709551616",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854775807",
      "18446744073709551615", "1", "65535", "18446744073709551616", "18446744073709551616"}},
    {kxDOUBLE_CLASS,
     "1e20",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854775807",
      "18446744073709551615", "1", "65535", "100000002004087734272", "100000000000000000000"}},
    {kxDOUBLE_CLASS,
     "1e300",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854775807",
      "18446744073709551615", "1", "65535", "inf", "1.0000000000000001e+300"}},
    {kxSINGLE_CLASS, "nan", {"0", "0", "0", "0", "0", "0", "0", "0", "1", "0", "nan", "nan"}},
    {kxSINGLE_CLASS,
     "-1.5",
     {"-2", "0", "-2", "0", "-2", "0", "-2", "0", "1", "0", "-1.5", "-1.5"}},
    {kxSINGLE_CLASS,
     "3.40282347e38",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854775807",
      "18446744073709551615", "1", "65535", "3.4028234663852886e+38", "3.4028234663852886e+38"}},
    {kxINT64_CLASS,
     "9223372036854775807",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854775807",
      "9223372036854775807", "1", "65535", "9223372036854775808", "9223372036854775808"}},
    {kxINT64_CLASS,
     "-9223372036854775808",
     {"-128", "0", "-32768", "0", "-2147483648", "0", "-9223372036854775808", "0", "1", "0",
      "-9223372036854775808", "-9223372036854775808"}},
    // Ties between doubles round to even: 2^53 + 1 down, 2^53 + 3 up.
    {kxINT64_CLASS,
     "9007199254740993",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9007199254740993",
      "9007199254740993", "1", "65535", "9007199254740992", "9007199254740992"}},
    {kxINT64_CLASS,
     "9007199254740995",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9007199254740995",
      "9007199254740995", "1", "65535", "9007199254740992", "9007199254740996"}},
    {kxUINT64_CLASS,
     "18446744073709551615",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854775807",
      "18446744073709551615", "1", "65535", "18446744073709551616", "18446744073709551616"}},
    {kxUINT64_CLASS,
     "9223372036854775808",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "9223372036854775807",
      "9223372036854775808", "1", "65535", "9223372036854775808", "9223372036854775808"}},
    {kxINT8_CLASS, "-1", {"-1", "0", "-1", "0", "-1", "0", "-1", "0", "1", "0", "-1", "-1"}},
    {kxINT8_CLASS,
     "-128",
     {"-128", "0", "-128", "0", "-128", "0", "-128", "0", "1", "0", "-128", "-128"}},
    {kxUINT8_CLASS,
     "255",
     {"127", "255", "255", "255", "255", "255", "255", "255", "1", "255", "255", "255"}},
    {kxINT16_CLASS,
     "-32768",
     {"-128", "0", "-32768", "0", "-32768", "0", "-32768", "0", "1", "0", "-32768", "-32768"}},
    {kxUINT16_CLASS,
     "65535",
     {"127", "255", "32767", "65535", "65535", "65535", "65535", "65535", "1", "65535", "65535",
      "65535"}},
    {kxINT32_CLASS,
     "70000",
     {"127", "255", "32767", "65535", "70000", "70000", "70000", "70000", "1", "65535", "70000",
      "70000"}},
    {kxINT32_CLASS,
     "-2147483648",
     {"-128", "0", "-32768", "0", "-2147483648", "0", "-2147483648", "0", "1", "0", "-2147483648",
      "-2147483648"}},
    {kxUINT32_CLASS,
     "4294967295",
     {"127", "255", "32767", "65535", "2147483647", "4294967295", "4294967295", "4294967295", "1",
      "65535", "4294967296", "4294967295"}},
    {kxCHAR_CLASS,
     "65535",
     {"127", "255", "32767", "65535", "65535", "65535", "65535", "65535", "1", "65535", "65535",
      "65535"}},
    {kxCHAR_CLASS, "0", {"0", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0"}},
    {kxLOGICAL_CLASS, "1", {"1", "1", "1", "1", "1", "1", "1", "1", "1", "1", "1", "1"}},
    // Any non-zero byte in a logical block counts as true.
    {kxLOGICAL_CLASS, "2", {"1", "1", "1", "1", "1", "1", "1", "1", "2", "1", "1", "1"}},
};

class Saturation : public ::testing::TestWithParam<SaturationRow> {};

TEST_P(Saturation, EveryDestinationClassGetsTheSaturatedRoundedValue) {
  const SaturationRow& row = GetParam();
  ASSERT_EQ(row.expected.size(), kColumnCount);
  std::vector<unsigned char> src = parseAs(row.from, row.value);
  for (size_t c = 0; c < kColumnCount; ++c) {
    unsigned char out[8] = {};
    AssignToVoidBuffer(kColumns[c], out, row.from, src.data(), 1);
    EXPECT_EQ(show(kColumns[c], out), row.expected[c])
        << kxClassNameOf(row.from) << " " << row.value << " -> " << kxClassNameOf(kColumns[c]);
  }
}

INSTANTIATE_TEST_SUITE_P(Host, Saturation, ::testing::ValuesIn(kRows));

TEST(HostConversion, ConvertsEveryElementOfAnUnalignedBlock) {
  std::vector<double> values;
  for (int i = 0; i < 1000; ++i) values.push_back(i * 0.75 - 300);
  std::vector<unsigned char> raw(values.size() * 8 + 1);
  std::memcpy(raw.data() + 1, values.data(), values.size() * 8);
  std::vector<unsigned char> out(values.size() * 2 + 1);
  AssignToVoidBuffer(kxINT16_CLASS, out.data() + 1, KxData(kxDOUBLE_CLASS, raw.data() + 1),
                     values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    int16_t got;
    std::memcpy(&got, out.data() + 1 + 2 * i, 2);
    ASSERT_EQ(got, static_cast<int16_t>(std::round(values[i]))) << values[i];
  }
}

TEST(HostConversion, RoundingAgreesWithRoundHalfAwayAcrossMagnitudes) {
  // Random bit patterns cover every exponent, including the ranges where a
  // double has a fraction of exactly one half and where it has none.
  std::mt19937_64 rng(99);
  for (int i = 0; i < 200000; ++i) {
    uint64_t bits = rng();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    if (!std::isfinite(v)) continue;
    int unusedExponent = 0;
    // The fraction, scaled to below 2^63 so that int64 holds every result.
    v = std::ldexp(std::frexp(v, &unusedExponent), static_cast<int>(rng() % 64));
    int64_t got;
    AssignToVoidBuffer(kxINT64_CLASS, &got, kxDOUBLE_CLASS, &v, 1);
    ASSERT_EQ(got, static_cast<int64_t>(std::round(v))) << std::hexfloat << v;
  }
}

TEST(HostConversion, UnknownSourceClassCopiesRawBytes) {
  const unsigned char bytes[] = {0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x40};
  float out[2];
  AssignToVoidBuffer(kxSINGLE_CLASS, out, kxUNKNOWN_CLASS, bytes, 2);
  EXPECT_EQ(out[0], 1.0f);
  EXPECT_EQ(out[1], 2.0f);
}

TEST(HostConversion, ArrayViewReadsElementsAsDoubles) {
  kxOwned a(kxCreateNumericMatrix(1, 2, kxUINT64_CLASS, kxREAL));
  static_cast<uint64_t*>(kxGetData(a.get()))[1] = UINT64_MAX;
  KxData view(a.get());
  EXPECT_EQ(view.classId(), kxUINT64_CLASS);
  EXPECT_EQ(view.asDouble(1), 18446744073709551616.0);
  EXPECT_TRUE(view.indexIsFinite(1));

  const double d[] = {1, NAN, -INFINITY};
  KxData dv(kxDOUBLE_CLASS, d);
  EXPECT_TRUE(dv.indexIsFinite(0));
  EXPECT_FALSE(dv.indexIsFinite(1));
  EXPECT_FALSE(dv.indexIsFinite(2));
  const float f[] = {INFINITY};
  EXPECT_FALSE(KxData(kxSINGLE_CLASS, f).indexIsFinite(0));
}

// ---- machine formats -------------------------------------------------------------

TEST(HostMachineFormat, ListHasNamedLittleAndBigEndianEntries) {
  ASSERT_EQ(utGetNumDataSizeTypes(), 8);
  EXPECT_EQ(utGetDataSizeType(), 0);  // the build machines are little-endian
  EXPECT_STREQ(utGetDataSizeTypeName(0), "ieee-le");
  EXPECT_STREQ(utGetDataSizeTypeName(1), "ieee-be");
  EXPECT_STREQ(utGetDataSizeTypeName(5), "ieee-le.l64");
  EXPECT_STREQ(utGetDataSizeTypeName(6), "ieee-be.l64");
  for (int reserved : {2, 3, 4}) EXPECT_STREQ(utGetDataSizeTypeName(reserved), "");
  for (int format = 0; format < 8; ++format) {
    EXPECT_EQ(utGetDataEndianType(format), format == 1 || format == 6 ? 1 : 0) << format;
  }
}

TEST(HostMachineFormat, PrecisionCodeSizesAndSigns) {
  // code:                1  2  3  4  5  6  7  8  9 10 11 12 13
  const int sizes[] = {1, 1, 1, 2, 4, 8, 1, 2, 4, 8, 4, 8, 1};
  const bool signs[] = {false, false, true,  true, true, true, false,
                        false, false, false, true, true, false};
  for (int format : {0, 1, 5, 6}) {
    for (int code = 1; code <= 13; ++code) {
      EXPECT_EQ(utDconvertSize(format, code), sizes[code - 1]) << format << " " << code;
    }
  }
  for (int code = 1; code <= 13; ++code) EXPECT_EQ(utDconvertSign(code), signs[code - 1]) << code;
}

TEST(HostMachineFormat, SignBitSeesNegativeZeroAndNaN) {
  EXPECT_TRUE(utSignBit(-0.0));
  EXPECT_FALSE(utSignBit(0.0));
  EXPECT_TRUE(utSignBit(-std::numeric_limits<double>::quiet_NaN()));
  EXPECT_TRUE(utSignBit(-INFINITY));
}

TEST(HostClock, WallClockIsSecondsSinceTheEpoch) {
  double t = utWallClock();
  EXPECT_GT(t, 1.6e9);  // after 2020
  EXPECT_LE(t, utWallClock());
}

}  // namespace
