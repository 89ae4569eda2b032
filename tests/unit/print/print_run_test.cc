// A format applied to values: the four outcomes of a conversion, star fields,
// numbered arguments, flattening and reuse of the format, and the faults.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "print_test_support.h"

namespace {

using namespace print_test;
using E = Tarnwicks::FileIO::StreamError;

const double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

struct RunCase {
  const char* name;
  std::string format;
  std::function<std::vector<kxArray*>()> args;
  std::string text;
  int code;
};

class Runs : public ::testing::TestWithParam<RunCase> {};

TEST_P(Runs, PrintWhatAUserExpects) {
  const RunCase& c = GetParam();
  for (bool batch : {true, false}) {
    Printed p = run(c.format, c.args(), batch);
    EXPECT_EQ(p.text, c.text) << c.name << (batch ? "" : " (pieces only)");
    EXPECT_EQ(p.code, c.code) << c.name << (batch ? "" : " (pieces only)");
  }
}

using A = std::vector<kxArray*>;

INSTANTIATE_TEST_SUITE_P(
    Outcomes, Runs,
    ::testing::Values(
        RunCase{"int", "%d", [] { return A{num(3)}; }, "3", 0},
        RunCase{"fraction through e", "%d", [] { return A{num(3.5)}; }, "3.500000e+00", 0},
        RunCase{"inf", "%d", [] { return A{num(kInf)}; }, "Inf", 0},
        RunCase{"neg inf", "%d", [] { return A{num(-kInf)}; }, "-Inf", 0},
        RunCase{"nan", "%d", [] { return A{num(kNaN)}; }, "NaN", 0},
        RunCase{"plus inf", "%+d", [] { return A{num(kInf)}; }, "+Inf", 0},
        RunCase{"space inf", "% d", [] { return A{num(kInf)}; }, " Inf", 0},
        RunCase{"plus space inf", "%+ d", [] { return A{num(kInf)}; }, "+Inf", 0},
        RunCase{"plus nan", "%+d", [] { return A{num(kNaN)}; }, "NaN", 0},
        RunCase{"zero pad inf", "%05d", [] { return A{num(kInf)}; }, "  Inf", 0},
        RunCase{"left inf", "%-6f|", [] { return A{num(-kInf)}; }, "-Inf  |", 0},
        RunCase{"f nan", "%8.3f", [] { return A{num(kNaN)}; }, "     NaN", 0},
        RunCase{"u of -1", "%u", [] { return A{num(-1)}; }, "-1.000000e+00", 0},
        RunCase{"x of 255", "%x", [] { return A{num(255)}; }, "ff", 0},
        RunCase{"x keeps its fields in e", "%5.2x", [] { return A{num(-1)}; }, "-1.00e+00", 0},
        RunCase{"2^63 fails %d", "%d", [] { return A{num(9223372036854775808.0)}; }, "9.223372e+18",
                0},
        RunCase{"-2^63 is %d", "%d", [] { return A{num(-9223372036854775808.0)}; },
                "-9223372036854775808", 0},
        RunCase{"2^64 fails %u", "%u", [] { return A{num(18446744073709551616.0)}; },
                "1.844674e+19", 0},
        RunCase{"2^53+1 in int64", "%d",
                [] { return A{exact<int64_t>(kxINT64_CLASS, {9007199254740993LL})}; },
                "9007199254740993", 0},
        RunCase{"uint64 max as %d", "%d",
                [] { return A{exact<uint64_t>(kxUINT64_CLASS, {~0ULL})}; }, "1.844674e+19", 0},
        RunCase{"uint64 max as %u", "%u",
                [] { return A{exact<uint64_t>(kxUINT64_CLASS, {~0ULL})}; }, "18446744073709551615",
                0},
        RunCase{"negative int8 as %x", "%x", [] { return A{array(kxINT8_CLASS, {-5})}; },
                "-5.000000e+00", 0},
        RunCase{"minus zero", "%d %f",
                [] {
                  return A{num(-0.0), num(-0.0)};
                },
                "0 -0.000000", 0},
        RunCase{"single", "%g %d",
                [] {
                  return A{array(kxSINGLE_CLASS, {0.1, 16777217})};
                },
                "0.1 16777216", 0},
        RunCase{"logical", "%d%d",
                [] {
                  return A{array(kxLOGICAL_CLASS, {1, 0})};
                },
                "10", 0},
        RunCase{"s of 65", "%s", [] { return A{num(65)}; }, "A", 0},
        RunCase{"s of 3.5", "%s", [] { return A{num(3.5)}; }, "3.500000e+00", 0},
        RunCase{"s of -1", "%s|", [] { return A{num(-1)}; }, "|", 0},
        RunCase{"s codes then e", "%s",
                [] {
                  return A{doubles({65, 66, 3.5})};
                },
                "AB3.500000e+00", 0},
        RunCase{"s of text", "[%s]", [] { return A{str("abc")}; }, "[abc]", 0},
        RunCase{"s takes all text", "%s-",
                [] {
                  return A{str("ab"), str("cd")};
                },
                "ab-cd-", 0},
        RunCase{"d of text", "%d,", [] { return A{str("ab")}; }, "97,98,", 0},
        RunCase{"s precision", "%.2s|%5.1s|%-4s|",
                [] {
                  return A{str("abc"), str("xyz"), str("q")};
                },
                "ab|    x|q   |", 0},
        RunCase{"s zero flag pads", "%05s|%-05s", [] { return A{str("ab"), str("cd")}; },
                "000ab|cd000", 0},
        RunCase{"s of nan", "%5s", [] { return A{num(kNaN)}; }, "  NaN", 0},
        RunCase{"c of 70000", "%c", [] { return A{num(70000)}; }, "7.000000e+04", 0},
        RunCase{"c", "%c%c%-3c|%3c", [] { return A{str("ab"), num(67), num(68)}; }, "abC  |  D", 0},
        RunCase{"empty pads s", "%5s|", [] { return A{empty()}; }, "     |", 0},
        RunCase{"empty skips d", "%5d|", [] { return A{empty()}; }, "|", 0},
        RunCase{"star width", "%*d|", [] { return A{num(-5), num(1)}; }, "    1|", 0},
        RunCase{"negative star width left for s", "%*s|", [] { return A{num(-5), str("a")}; },
                "a    |", 0},
        RunCase{"negative star precision", "%.*f", [] { return A{num(-1), num(M_PI)}; }, "3.141593",
                0},
        RunCase{"fractional star width", "%*d|", [] { return A{num(2.7), num(1)}; }, " 1|", 0},
        RunCase{"star words", "%*d|%*d|", [] { return A{num(6), num(kInf), num(-6), num(kInf)}; },
                "   Inf|+Inf  |", 0},
        RunCase{"star nan", "%*d", [] { return A{num(kNaN), num(1)}; }, "", code(E::BadWidthNaN)},
        RunCase{"star -inf", "%*d", [] { return A{num(-kInf), num(1)}; }, "",
                code(E::BadWidthNegInf)},
        RunCase{"star inf", "%*d", [] { return A{num(kInf), num(1)}; }, "", code(E::BadWidthInf)},
        RunCase{"star too big", "%*d", [] { return A{num(3e9), num(1)}; }, "",
                code(E::BadWidthInt)},
        RunCase{"star empty", "a%*d", [] { return A{empty(), num(1)}; }, "a",
                code(E::BadWidthEmptyArg)},
        RunCase{"precision nan", "%.*f", [] { return A{num(kNaN), num(1)}; }, "",
                code(E::BadPrecisionNaN)},
        RunCase{"precision -inf", "%.*f", [] { return A{num(-kInf), num(1)}; }, "",
                code(E::BadPrecisionNegInf)},
        RunCase{"precision inf", "%.*f", [] { return A{num(kInf), num(1)}; }, "",
                code(E::BadPrecisionInf)},
        RunCase{"precision too big", "%.*f", [] { return A{num(-3e9), num(1)}; }, "",
                code(E::BadPrecisionInt)},
        RunCase{"precision empty", "%.*f", [] { return A{empty(), num(1)}; }, "",
                code(E::BadPrecisionEmptyArg)},
        RunCase{"star runs out", "%*d", [] { return A{num(3)}; }, "", code(E::NotEnoughArgs)},
        RunCase{"bits of 1", "%bx %tx %#bx %bX", [] { return A{doubles({1, 1, 1, -2})}; },
                "3ff0000000000000 3f800000 0x3ff0000000000000 C000000000000000", 0},
        RunCase{"bits of inf", "%bx", [] { return A{num(kInf)}; }, "7ff0000000000000", 0},
        RunCase{"bits of int", "%tx", [] { return A{array(kxINT32_CLASS, {2})}; }, "40000000", 0},
        RunCase{"bits octal decimal", "%bo|%#bo|%bu|%tu|%to",
                [] { return A{doubles({1, 1, 1, 1, 1})}; },
                "0377600000000000000000|00377600000000000000000|04607182418800017408|"
                "1065353216|07740000000",
                0},
        RunCase{"bits width precision", "%20bx|%-20tx|%.20tx|%020tx|%#.3tx",
                [] { return A{doubles({1, 1, 1, 1, 1})}; },
                "    3ff0000000000000|3f800000            |0000000000003f800000|"
                "0000000000003f800000|0x3f800000",
                0},
        RunCase{"bits of empty", "%bx|", [] { return A{empty()}; }, "|", 0}));

INSTANTIATE_TEST_SUITE_P(
    Passes, Runs,
    ::testing::Values(
        RunCase{"reuse stops mid pass", "%d %d",
                [] {
                  return A{doubles({1, 2, 3})};
                },
                "1 23 ", code(E::NotEnoughArgs)},
        RunCase{"reuse across arrays", "%d,",
                [] {
                  return A{doubles({1, 2}), num(3), doubles({4, 5}, 2)};
                },
                "1,2,3,4,5,", 0},
        RunCase{"column order", "%d",
                [] {
                  return A{doubles({1, 2, 3, 4}, 2)};
                },
                "1234", 0},
        RunCase{"no conversion with data", "abc", [] { return A{num(1)}; }, "abc",
                code(E::MatchingFailure)},
        RunCase{"no data", "abc", [] { return A{}; }, "abc", 0},
        RunCase{"no values at all", "x=%d\n", [] { return A{}; }, "x=", code(E::NotEnoughArgs)},
        RunCase{"s without value", "%s", [] { return A{}; }, "", code(E::NotEnoughArgs)},
        RunCase{"bad conversion", "%y", [] { return A{num(1)}; }, "", code(E::InvalidFormat)},
        RunCase{"empty format", "", [] { return A{num(1)}; }, "", code(E::InvalidFormat)},
        RunCase{"text before a fault", "abc%", [] { return A{}; }, "abc", code(E::InvalidFormat)},
        RunCase{"fault after good pieces", "%d %1$d",
                [] {
                  return A{num(1), num(2)};
                },
                "1 ", code(E::InvalidFormat)},
        RunCase{"empty mid list", "%d|",
                [] {
                  return A{num(1), empty(), num(2)};
                },
                "1||2|", 0},
        // An empty last argument gives one more pass, which skips it.
        RunCase{"empty last", "<%d>",
                [] {
                  return A{num(1), empty()};
                },
                "<1><>", 0},
        RunCase{"percent", "100%%\n", [] { return A{}; }, "100%\n", 0},
        RunCase{"mixed classes", "%d %g\n",
                [] {
                  return A{array(kxUINT8_CLASS, {200, 7}), array(kxINT16_CLASS, {-3, 4})};
                },
                "200 7\n-3 4\n", 0},
        RunCase{"unicode literal", "\xC3\xA9%d\xE2\x82\xAC", [] { return A{num(1)}; },
                "\xC3\xA9"
                "1\xE2\x82\xAC",
                0}));

INSTANTIATE_TEST_SUITE_P(
    Numbered, Runs,
    ::testing::Values(RunCase{"swap", "%2$s %1$d",
                              [] {
                                return A{num(5), str("ab")};
                              },
                              "ab 5", 0},
                      RunCase{"once only", "%1$d;",
                              [] {
                                return A{num(5), num(6)};
                              },
                              "5;", 0},
                      RunCase{"numbered star", "%2$*1$d|",
                              [] {
                                return A{num(4), num(7)};
                              },
                              "   7|", 0},
                      RunCase{"numbered precision", "%3$.*2$f",
                              [] {
                                return A{num(0), num(2), num(M_PI)};
                              },
                              "3.14", 0},
                      RunCase{"beyond", "a%3$d", [] { return A{num(1)}; }, "a",
                              code(E::NumberedMoreThanArgc)},
                      RunCase{"not scalar", "a%1$d",
                              [] {
                                return A{doubles({1, 2})};
                              },
                              "a", code(E::NonScalarNumbered)},
                      RunCase{"empty numbered", "a%1$d", [] { return A{empty()}; }, "a",
                              code(E::NonScalarNumbered)},
                      RunCase{"numbered text", "%1$s!", [] { return A{str("q")}; }, "q!", 0}));

// The oracle: one conversion of a format against printf, over flags, widths,
// precisions and values at the edges, on both paths of the runner.
TEST(RunsAgainstPrintf, DoubleConversions) {
  const double values[] = {0.0,
                           -0.0,
                           1.0,
                           -1.5,
                           2.5,
                           0.125,
                           1e-5,
                           1e21,
                           1e100,
                           -1e300,
                           5e-324,
                           2.2250738585072009e-308,
                           9007199254740991.0,
                           9007199254740993.0,
                           9223372036854775808.0,
                           18446744073709551616.0,
                           123.456};
  const char* flagSets[] = {"", "-", "+", " ", "#", "0", "-+", "+0", " 0", "#0", "-#"};
  for (const char* flags : flagSets) {
    for (const char* width : {"", "1", "12"}) {
      for (const char* precision : {"", ".", ".0", ".3", ".17"}) {
        for (char conv : {'e', 'E', 'f', 'g', 'G'}) {
          std::string format = std::string("%") + flags + width + precision + conv;
          for (bool batch : {true, false}) {
            Printed p =
                run(format + "|",
                    {doubles(std::vector<double>(std::begin(values), std::end(values)))}, batch);
            std::string expected;
            for (double v : values) expected += cprintf(format.c_str(), v) + "|";
            ASSERT_EQ(p.text, expected) << format;
            ASSERT_EQ(p.code, 0);
          }
        }
      }
    }
  }
}

TEST(RunsAgainstPrintf, IntegerConversions) {
  const double values[] = {
      0, 1, -1, 42, -42, 255, 65535, 1e15, -9007199254740991.0, 9007199254740992.0, 4294967296.0};
  const char* flagSets[] = {"", "-", "+", " ", "#", "0", "-0", "+0", "#0", "- "};
  for (const char* flags : flagSets) {
    for (const char* width : {"", "1", "9", "25"}) {
      for (const char* precision : {"", ".", ".0", ".5", ".22"}) {
        for (char conv : {'d', 'i', 'o', 'u', 'x', 'X'}) {
          std::string format = std::string("%") + flags + width + precision + conv;
          std::string narrow = std::string("%") + flags + width + precision + "l" + conv;
          std::string eFormat = std::string("%") + flags + width + precision + "e";
          for (bool batch : {true, false}) {
            Printed p =
                run(format + ",",
                    {doubles(std::vector<double>(std::begin(values), std::end(values)))}, batch);
            std::string expected;
            for (double v : values) {
              bool isSigned = conv == 'd' || conv == 'i';
              if (!isSigned && v < 0) {
                expected += cprintf(eFormat.c_str(), v);  // no unsigned form for it
              } else if (isSigned) {
                expected += cprintf(narrow.c_str(), static_cast<long>(v));
              } else {
                expected += cprintf(narrow.c_str(), static_cast<unsigned long>(v));
              }
              expected += ",";
            }
            ASSERT_EQ(p.text, expected) << format;
          }
        }
      }
    }
  }
}

TEST(RunsAgainstPrintf, NonIntegersThroughE) {
  for (const char* format : {"%d", "%+8.2i", "%-#12o", "%010x", "% .0u", "%#X"}) {
    std::string eFormat(format);
    eFormat.back() = 'e';
    for (double v : {0.5, -1.25, 1e300, 3.0e-310}) {
      Printed p = run(format, {num(v)});
      EXPECT_EQ(p.text, cprintf(eFormat.c_str(), v)) << format << " of " << v;
    }
  }
}

TEST(RunsAgainstPrintf, StarWidthsAndPrecisions) {
  for (double w : {0.0, 1.0, 7.0, 20.0, -9.0}) {
    for (double prec : {-3.0, 0.0, 2.0, 11.0}) {
      for (char conv : {'f', 'e', 'g', 'd', 'x'}) {
        std::string format = std::string("%*.*") + conv;
        Printed p = run(format, {num(w), num(prec), num(1234.5678)});
        // The sign of a star width is dropped for these conversions; a
        // negative star precision means none.
        std::string narrow = std::string("%*") + (prec < 0 ? "" : ".*") + conv;
        std::string expected;
        int width = static_cast<int>(std::fabs(w));
        if (conv == 'd' || conv == 'x') {
          // 1234.5678 is not whole: the conversion gives way to %e.
          narrow.back() = 'e';
        }
        expected = prec < 0 ? cprintf(narrow.c_str(), width, 1234.5678)
                            : cprintf(narrow.c_str(), width, static_cast<int>(prec), 1234.5678);
        EXPECT_EQ(p.text, expected) << format << " " << w << " " << prec;
      }
    }
  }
}

TEST(RunsAgainstPrintf, NumberedArguments) {
  Printed p = run("%3$+*1$.*2$f|%1$d", {num(12), num(3), num(-M_PI)});
  EXPECT_EQ(p.text, cprintf("%+*.*f|%ld", 12, 3, -M_PI, 12L));
  EXPECT_EQ(p.code, 0);
}

TEST(RunsAgainstPrintf, EveryClassOnBothPaths) {
  const std::vector<double> values = {0, 1, 2, 100, 127, -128, 255, 1e9, -7.5};
  for (kxClassID cls : {kxDOUBLE_CLASS, kxSINGLE_CLASS, kxINT8_CLASS, kxUINT8_CLASS, kxINT16_CLASS,
                        kxUINT16_CLASS, kxINT32_CLASS, kxUINT32_CLASS, kxINT64_CLASS,
                        kxUINT64_CLASS, kxLOGICAL_CLASS, kxCHAR_CLASS}) {
    for (const char* format : {"%d;", "%u;", "%5.1f;", "%x;", "%g %e\n", "[%c]"}) {
      Printed batch = run(format, {array(cls, values)}, true);
      Printed pieces = run(format, {array(cls, values)}, false);
      EXPECT_EQ(batch.text, pieces.text) << format << " class " << cls;
      EXPECT_EQ(batch.code, pieces.code) << format << " class " << cls;
    }
  }
}

}  // namespace
