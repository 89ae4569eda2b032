// sscanf against the C library's sscanf: for every numeric conversion and
// length, over signs, leading zeros, hexadecimal prefixes, widths, overflow,
// subnormals and long digit runs, the value stored is what the C library
// reads with the 64-bit form of the conversion, clamped to the piece's type,
// and the next index is where it stopped.
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "scan_test_support.h"

namespace {

using namespace scan_test;

enum class Clamp { None, Int16, Int32, Uint16, Uint32, Float };

struct Conversion {
  const char* ours;  // the conversion letters of our format, after "%" and a width
  const char* peer;  // the C library's 64-bit form
  bool floating;
  bool isSigned;
  Clamp clamp;
  kxClassID cls;
};

const Conversion kConversions[] = {
    {"d", "lld", false, true, Clamp::Int32, kxDOUBLE_CLASS},
    {"hd", "lld", false, true, Clamp::Int16, kxDOUBLE_CLASS},
    {"ld", "lld", false, true, Clamp::None, kxINT64_CLASS},
    {"i", "lli", false, true, Clamp::Int32, kxDOUBLE_CLASS},
    {"hi", "lli", false, true, Clamp::Int16, kxDOUBLE_CLASS},
    {"li", "lli", false, true, Clamp::None, kxINT64_CLASS},
    {"u", "llu", false, false, Clamp::Uint32, kxDOUBLE_CLASS},
    {"hu", "llu", false, false, Clamp::Uint16, kxDOUBLE_CLASS},
    {"lu", "llu", false, false, Clamp::None, kxUINT64_CLASS},
    {"x", "llx", false, false, Clamp::Uint32, kxDOUBLE_CLASS},
    {"X", "llX", false, false, Clamp::Uint32, kxDOUBLE_CLASS},
    {"lx", "llx", false, false, Clamp::None, kxUINT64_CLASS},
    {"o", "llo", false, false, Clamp::Uint32, kxDOUBLE_CLASS},
    {"ho", "llo", false, false, Clamp::Uint16, kxDOUBLE_CLASS},
    {"lo", "llo", false, false, Clamp::None, kxUINT64_CLASS},
    {"f", "lf", true, true, Clamp::None, kxDOUBLE_CLASS},
    {"e", "le", true, true, Clamp::None, kxDOUBLE_CLASS},
    {"g", "lg", true, true, Clamp::None, kxDOUBLE_CLASS},
    {"E", "lE", true, true, Clamp::None, kxDOUBLE_CLASS},
    {"lf", "lf", true, true, Clamp::None, kxDOUBLE_CLASS},
    {"hf", "lf", true, true, Clamp::Float, kxDOUBLE_CLASS},
};

const char* const kTexts[] = {
    // signs and zeros
    "0",
    "-0",
    "+0",
    "7",
    "-7",
    "+7",
    "007",
    "-007",
    "000000000000000000000000000001",
    "  42 rest",
    "\t\n-13,",
    // hexadecimal and octal prefixes
    "0x1f",
    "0X1F",
    "-0x10",
    "0x",
    "0xg",
    "017",
    "019",
    "08",
    "ff",
    "-ff",
    "0777",
    // the edges of the integer types
    "32767",
    "32768",
    "-32768",
    "-32769",
    "65535",
    "65536",
    "2147483647",
    "2147483648",
    "-2147483648",
    "-2147483649",
    "4294967295",
    "4294967296",
    "-1",
    "-4294967295",
    "-4294967296",
    "-4294967297",
    "9007199254740991",
    "9007199254740992",
    "9007199254740993",
    "-9007199254740993",
    "9223372036854775807",
    "9223372036854775808",
    "-9223372036854775808",
    "-9223372036854775809",
    "18446744073709551615",
    "18446744073709551616",
    "-18446744073709551615",
    "-18446744073709551616",
    "0xffffffffffffffff",
    "0x10000000000000000",
    "1777777777777777777777",
    "2000000000000000000000",
    // long digit runs, past every field
    "123456789012345678901234567890",
    "-123456789012345678901234567890",
    "1234567890123456789012345678901234567890123456789012345678901234567890123",
    // floating forms
    "3.14159",
    "-2.5e-3",
    "1E10",
    ".5",
    "5.",
    "-.5e+2",
    "1e308",
    "1.8e308",
    "-1e400",
    "4.9e-324",
    "2.4703282292062327e-324",
    "2.4703282292062328e-324",
    "2.2250738585072011e-308",
    "2.2250738585072014e-308",
    "1e-400",
    "0x1p-1074",
    "0x1.fffffffffffffp1023",
    "0x1.8p1",
    "inf",
    "-Inf",
    "INFINITY",
    "nan",
    "-NaN",
    "1.00000000000000011102230246251565404236316680908203125",
    "1.00000000000000011102230246251565404236316680908203124",
    "9007199254740993.0000000000000000000001",
    "123456789012345678901234567890e-10",
    // nothing to read
    "abc",
    "-",
    "+x",
    ".",
    "",
};

const int kWidths[] = {-1, 1, 2, 3, 5, 8, 20, 30};

uint64_t clampPeer(uint64_t raw, bool negative, const Conversion& c) {
  auto clampSigned = [](int64_t v, int64_t lo, int64_t hi) {
    return static_cast<uint64_t>(v < lo ? lo : v > hi ? hi : v);
  };
  auto clampUnsigned = [&](uint64_t largest) {
    if (!negative) return raw > largest ? largest : raw;
    return ~raw <= largest ? (raw & largest) : 0;
  };
  const auto v = static_cast<int64_t>(raw);
  switch (c.clamp) {
    case Clamp::Int16:
      return clampSigned(v, INT16_MIN, INT16_MAX);
    case Clamp::Int32:
      return clampSigned(v, INT32_MIN, INT32_MAX);
    case Clamp::Uint16:
      return clampUnsigned(UINT16_MAX);
    case Clamp::Uint32:
      return clampUnsigned(UINT32_MAX);
    default:
      return raw;
  }
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
// The C library's reading of `text`: true with the value (as the bits
// of its double, or the 64-bit integer) when it converted one.
bool peerRead(const std::string& text, const Conversion& c, int width, double& real,
              uint64_t& integer) {
  std::string format = "%";
  if (width > 0) format += std::to_string(width);
  format += c.peer;
  if (c.floating) return std::sscanf(text.c_str(), format.c_str(), &real) == 1;
  unsigned long long v = 0;
  if (std::sscanf(text.c_str(), format.c_str(), &v) != 1) return false;
  integer = v;
  return true;
}
#pragma GCC diagnostic pop

bool negativeText(const std::string& text) {
  size_t i = text.find_first_not_of(" \t\n\v\f\r");
  return i != std::string::npos && text[i] == '-';
}

TEST(SscanfPeer, EveryConversionReadsWhatTheCLibraryReads) {
  int compared = 0;
  for (const Conversion& c : kConversions) {
    for (const char* text : kTexts) {
      for (int width : kWidths) {
        std::string format = "%";
        if (width > 0) format += std::to_string(width);
        format += c.ours;
        SCOPED_TRACE("sscanf('" + std::string(text) + "', '" + format + "')");
        Outcome r = sscanf(text, format);
        ASSERT_EQ(r.error, "");
        double real = 0;
        uint64_t integer = 0;
        if (!peerRead(text, c, width, real, integer)) continue;
        ++compared;
        ASSERT_GE(kxGetNumberOfElements(r.at(0)), 1u);
        EXPECT_EQ(r.cls(), c.cls);
        if (c.floating) {
          double ours = r.values()[0];
          double expected = c.clamp == Clamp::Float ? double(float(real)) : real;
          if (std::isnan(expected)) {
            EXPECT_TRUE(std::isnan(ours));
          } else {
            EXPECT_EQ(ours, expected);
            EXPECT_EQ(std::signbit(ours), std::signbit(expected));
          }
        } else {
          uint64_t expected = clampPeer(integer, negativeText(text), c);
          if (c.cls == kxDOUBLE_CLASS) {
            double e = c.isSigned ? double(int64_t(expected)) : double(expected);
            EXPECT_EQ(r.values()[0], e);
          } else {
            EXPECT_EQ(bitsAt(r, 0), expected);
          }
        }
      }
    }
  }
  EXPECT_GT(compared, 2000);
}

// Where reading stopped: the next index is one past what the C library's
// %n reports after the same conversion, for texts that both read.
TEST(SscanfPeer, NextIndexIsWhereTheCLibraryStopped) {
  for (const Conversion& c : kConversions) {
    for (const char* text : kTexts) {
      std::string format = std::string("%") + c.peer + "%n";
      double real = 0;
      unsigned long long integer = 0;
      int consumed = -1;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
      int n = c.floating ? std::sscanf(text, format.c_str(), &real, &consumed)
                         : std::sscanf(text, format.c_str(), &integer, &consumed);
#pragma GCC diagnostic pop
      // A "0x" without digits: the scanner takes the "x" as well, the C
      // conversions that read texts in place take only the "0".
      const std::string t = text;
      const size_t x = t.find("0x");
      if (n != 1 || (x != std::string::npos && !std::isxdigit(t[x + 2]))) continue;
      SCOPED_TRACE(std::string(text) + " with %" + c.ours);
      Outcome r = call(kSlotSscanf, 4, {str(text), str(std::string("%") + c.ours), num(1)});
      EXPECT_EQ(r.number(3), consumed + 1);
    }
  }
}

}  // namespace
