// The number readers of fscanf on files, and on strings for sscanf.
#include <cmath>

#include "fileio/attributes.h"
#include "fileio/file_stream.h"
#include "fileio/string_streams.h"
#include "files_test_support.h"

namespace {

using namespace Tarnwicks::FileIO;

class NumberTest : public files_test::StreamOnFile {
 protected:
  fileStream& open(const std::string& bytes) { return openStream("n", bytes, "r", ""); }
  std::string rest() {
    std::string out;
    char c;
    while (s->read(1, &c, 1) == 1) out += c;
    return out;
  }
};

enum Reader { kSigned, kUnsigned, kHex, kOctal, kAny };

struct IntCase {
  Reader reader;
  const char* text;
  int width;
  uint64_t value;
  bool negative;
  int error;  // 0, -9, or 1 for "errno or -1"
  const char* rest;
};

class Integers : public NumberTest, public ::testing::WithParamInterface<IntCase> {};

TEST_P(Integers, ReadOne) {
  const IntCase& c = GetParam();
  stream& st = open(c.text);
  int error = 0;
  bool negative = false;
  uint64_t v = 0;
  switch (c.reader) {
    case kSigned:
      v = st.readSigned(c.width, error, negative);
      break;
    case kUnsigned:
      v = st.readUnsigned(c.width, error, negative);
      break;
    case kHex:
      v = st.readHex(c.width, error, negative);
      break;
    case kOctal:
      v = st.readOctal(c.width, error, negative);
      break;
    case kAny:
      v = st.readAnyBase(c.width, error, negative);
      break;
  }
  EXPECT_EQ(v, c.value) << c.text;
  EXPECT_EQ(negative, c.negative) << c.text;
  if (c.error == 1) {
    EXPECT_NE(error, 0) << c.text;
  } else {
    EXPECT_EQ(error, c.error) << c.text;
  }
  EXPECT_EQ(rest(), c.rest) << c.text;
}

INSTANTIATE_TEST_SUITE_P(
    Forms, Integers,
    ::testing::Values(
        IntCase{kSigned, "007", -1, 7, false, 0, ""}, IntCase{kSigned, "0", -1, 0, false, 0, ""},
        IntCase{kSigned, "  -42 x", -1, 42, true, 0, " x"},
        IntCase{kSigned, "+5", -1, 5, false, 0, ""}, IntCase{kSigned, "x", -1, 0, false, 1, "x"},
        IntCase{kSigned, "-x", -1, 0, true, 1, "-x"}, IntCase{kSigned, "123", 2, 12, false, 0, "3"},
        IntCase{kSigned, "-123", 2, 1, true, 0, "23"},
        IntCase{kSigned, "000123", 4, 1, false, 0, "23"},
        IntCase{kSigned, "123456789012345678901234567890;", -1, 9223372036854775807u, false, 0,
                ";"},
        IntCase{kUnsigned, "18446744073709551615", -1, 18446744073709551615u, false, 0, ""},
        IntCase{kHex, "ffZ", -1, 255, false, 0, "Z"}, IntCase{kOctal, "778", -1, 63, false, 0, "8"},
        IntCase{kAny, "0x1f", -1, 31, false, 0, ""}, IntCase{kAny, "017", -1, 15, false, 0, ""},
        IntCase{kAny, "19", -1, 19, false, 0, ""}, IntCase{kAny, "-0X10 ", -1, 16, true, 0, " "}));

TEST_F(NumberTest, Doubles) {
  struct Case {
    const char* text;
    double value;
    int status;  // 0x7fffffff success
    const char* rest;
  };
  const double inf = INFINITY;
  const Case cases[] = {{" 1.5e3;", 1500, 0x7fffffff, ";"}, {"-Inf", -inf, 0x7fffffff, ""},
                        {"inf", inf, 0x7fffffff, ""},       {"+NaN!", NAN, 0x7fffffff, "!"},
                        {"-Ix", -1.0, -1, "-Ix"},           {"na", -1.0, -1, "na"},
                        {"-2.25", -2.25, 0x7fffffff, ""},   {"abc", 0, -1, "abc"}};
  for (const Case& c : cases) {
    open(c.text);
    int status = 0x7fffffff;
    double v = s->readDouble(-1, status);
    if (std::isnan(c.value)) {
      EXPECT_TRUE(std::isnan(v)) << c.text;
    } else if (status == 0x7fffffff) {
      EXPECT_EQ(v, c.value) << c.text;
    }
    EXPECT_EQ(status, c.status) << c.text;
    EXPECT_EQ(rest(), c.rest) << c.text;
  }
  open("12345");
  int status = 0x7fffffff;
  EXPECT_EQ(s->readDouble(3, status), 123.0);
  EXPECT_EQ(rest(), "45");
}

TEST(StringNumberTest, ReadsInPlaceAndReportsNothingLeft) {
  const std::string text = " 12 \xe3\x80\x80-7 0x1f abc";
  inputStringStream in(text.data(), text.size());
  int error = 0;
  bool negative = false;
  EXPECT_EQ(in.readSigned(-1, error, negative), 12u);
  EXPECT_EQ(in.readSigned(-1, error, negative), 7u);  // after an ideographic space
  EXPECT_TRUE(negative);
  EXPECT_EQ(in.readAnyBase(-1, error, negative), 31u);
  EXPECT_EQ(error, 0);
  in.readSigned(-1, error, negative);
  EXPECT_EQ(error, -9);
  in.current = in.end;
  EXPECT_EQ(in.readSigned(-1, error, negative), 0u);
  EXPECT_EQ(error, 0);
  EXPECT_TRUE(in.atEnd());
}

}  // namespace
