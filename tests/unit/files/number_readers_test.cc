// The number readers of fscanf on files, and on strings for sscanf: their
// forms, the C library's scanner as the peer of the file rules, and the
// independence of the result from where the C buffer ends.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <vector>

#include "fileio/attributes.h"
#include "fileio/file_stream.h"
#include "fileio/number_readers.h"
#include "fileio/screen_streams.h"
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

enum Reader { kSigned, kUnsigned, kHex, kOctal, kAny, kReaderCount };
using IntegerReader = uint64_t (*)(stream&, int, int&, bool&);
// By Reader.
const IntegerReader kIntegerReaders[] = {readSigned, readUnsigned, readHex, readOctal, readAnyBase};

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
  uint64_t v = kIntegerReaders[c.reader](st, c.width, error, negative);
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
    double v = readDouble(*s, -1, status);
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
  EXPECT_EQ(readDouble(*s, 3, status), 123.0);
  EXPECT_EQ(rest(), "45");
}

TEST(StringNumberTest, ReadsInPlaceAndReportsNothingLeft) {
  const std::string text = " 12 \xe3\x80\x80-7 0x1f abc";
  inputStringStream in(text.data(), text.size());
  int error = 0;
  bool negative = false;
  EXPECT_EQ(readSigned(in, -1, error, negative), 12u);
  EXPECT_EQ(readSigned(in, -1, error, negative), 7u);  // after an ideographic space
  EXPECT_TRUE(negative);
  EXPECT_EQ(readAnyBase(in, -1, error, negative), 31u);
  EXPECT_EQ(error, 0);
  readSigned(in, -1, error, negative);
  EXPECT_EQ(error, -9);
  in.current = in.end;
  EXPECT_EQ(readSigned(in, -1, error, negative), 0u);
  EXPECT_EQ(error, 0);
  EXPECT_TRUE(in.atEnd());
}

// ---- the file rules against the C library's scanner ----------------------------

// A fileStream on a FILE in memory, buffered `bufferBytes` at a time (0:
// the C library's choice).
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& text, size_t bufferBytes = 0)
      : text_(text), file_(fmemopen(text_.data(), text_.size(), "r")) {
    if (bufferBytes != 0) setvbuf(file_, nullptr, _IOFBF, bufferBytes);
    stream_ = std::make_unique<fileStream>(file_, "", &permission_);
  }
  ~MemoryFile() {
    stream_.reset();
    std::fclose(file_);
  }
  fileStream& stream() { return *stream_; }
  FILE* file() { return file_; }
  std::string rest() {
    std::string out;
    for (int c; (c = getc(file_)) != EOF;) out += static_cast<char>(c);
    return out;
  }

 private:
  std::string text_;
  FILE* file_;
  FilePermission permission_{"r", 0};
  std::unique_ptr<fileStream> stream_;
};

TEST(ScannerRules, DoublesAreReadAsTheCScannerReadsThem) {
  const char* texts[] = {"1.2.3",
                         "1e",
                         "1e+",
                         "1e+x",
                         ".",
                         ".x",
                         "-.x",
                         "-x",
                         "0x",
                         "0x.p",
                         "0x1p",
                         "1..2",
                         "1e5.5",
                         "0xg",
                         "00x1",
                         "+-1",
                         "- 1",
                         "0x1.8p1z",
                         "1,5",
                         "1e-",
                         "e5",
                         "0e",
                         "0.e1",
                         "  +.5e2",
                         "1E+3",
                         "0X1P-2",
                         "-0",
                         "9e999",
                         "1e-400",
                         "4.9406564584124654e-324",
                         "123456789012345678901234567890e-5"};
  std::vector<std::string> all(std::begin(texts), std::end(texts));
  // Longer than the reader keeps on its stack.
  all.push_back("0." + std::string(300, '0') + "12345678901234567890123e301x");
  all.push_back(std::string(200, '9') + ".5");
  for (const std::string& held : all) {
    const char* text = held.c_str();
    for (int width : {-1, 1, 2, 3, 4, 250}) {
      // The peer: fscanf's "%le" on the same bytes. The reader gives its
      // sign back on a failure, which fscanf can't.
      MemoryFile peer(text);
      char format[16];
      std::snprintf(format, sizeof format, width > 0 ? "%%%dle" : "%%le", width);
      double want = 0;
      const bool ok = std::fscanf(peer.file(), format, &want) == 1;
      std::string wantRest = peer.rest();
      const char* first = text + std::strspn(text, " \t\n\v\f\r");
      if (!ok && (*first == '-' || *first == '+')) wantRest.insert(wantRest.begin(), *first);

      MemoryFile mine(text);
      int status = kReadSuccess;
      double v = readDouble(mine.stream(), width, status);
      EXPECT_EQ(status == kReadSuccess, ok) << text << " width " << width;
      if (ok) {
        EXPECT_EQ(v, want) << text << " width " << width;
      }
      EXPECT_EQ(mine.rest(), wantRest) << text << " width " << width;
    }
  }
}

TEST_F(NumberTest, AWidthIsNeverExceeded) {
  int error = 0;
  bool negative = false;
  // The prefix takes the width: no digit, and the x stays.
  EXPECT_EQ(readAnyBase(open("0x1f"), 1, error, negative), 0u);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(rest(), "x1f");
  EXPECT_EQ(readSigned(open("-05"), 2, error, negative), 0u);
  EXPECT_EQ(rest(), "5");
  EXPECT_EQ(readSigned(open("-5"), 1, error, negative), 0u);
  EXPECT_NE(error, 0);
  EXPECT_EQ(rest(), "-5");
}

TEST_F(NumberTest, AWordIsLookedAtNoFurtherThanItsEnd) {
  int status = kReadSuccess;
  EXPECT_EQ(readDouble(open("-inf"), -1, status), -INFINITY);
  EXPECT_FALSE(s->atEnd());  // nothing has looked past the word yet
}

// ---- window boundaries ---------------------------------------------------------

// Every reader on every text gives the same values, codes and rest whether
// the C library buffers one byte, a few, or the whole file: the reader's
// window ends wherever the buffer does.
TEST(ScannerRules, WhereTheCBufferEndsChangesNothing) {
  const char* texts[] = {"  -0x00fF9 z",
                         "+000000000000000000000000000000123",
                         "0",
                         "-",
                         "-Inf",
                         "-inX",
                         " nan",
                         "1.5e-3x",
                         "0x1.8p1z",
                         "-.x",
                         "123456789012345678901234567890;",
                         "  \n\t 42",
                         "0x",
                         "7 8 9"};
  struct Read {
    std::string values;
    std::string rest;
    bool atEnd;
  };
  auto readAll = [](const char* text, int reader, int width, size_t bufferBytes) {
    MemoryFile memory(text, bufferBytes);
    fileStream& s = memory.stream();
    Read r;
    for (int i = 0; i < 3; ++i) {
      int error = 0;
      bool negative = false;
      int status = kReadSuccess;
      if (reader < kReaderCount) {
        r.values += std::to_string(kIntegerReaders[reader](s, width, error, negative));
      } else {
        r.values += std::to_string(readDouble(s, width, status));
        error = status == kReadSuccess ? 0 : status;
      }
      r.values += " " + std::to_string(error) + (negative ? "-" : "+") + ";";
    }
    r.atEnd = s.atEnd();
    r.rest = memory.rest();
    return r;
  };
  for (const char* text : texts) {
    for (int reader = 0; reader <= kReaderCount; ++reader) {  // the last: doubles
      for (int width : {-1, 2, 5, 30}) {
        Read whole = readAll(text, reader, width, 0);
        for (size_t bytes : {1, 2, 3}) {
          Read pieces = readAll(text, reader, width, bytes);
          EXPECT_EQ(pieces.values, whole.values)
              << text << " reader " << reader << " width " << width << " buffer " << bytes;
          EXPECT_EQ(pieces.rest, whole.rest) << text << " reader " << reader;
          EXPECT_EQ(pieces.atEnd, whole.atEnd) << text << " reader " << reader;
        }
      }
    }
  }
}

// ---- streams without numbers ---------------------------------------------------

TEST(NumberSources, StreamsThatCantBeReadByNumberRaise) {
  FilePermission permission("r", 1);
  screenStreamBase screen(stdin, &permission);
  outputStringStream out;
  int error = 0, status = kReadSuccess;
  bool negative = false;
  EXPECT_EQ(files_test::raisedBy([&] { readSigned(screen, -1, error, negative); }),
            "KORVAN:legacy_two_part:notimplemented_mx");
  EXPECT_EQ(files_test::raisedBy([&] { readDouble(out, -1, status); }),
            "KORVAN:legacy_two_part:notimplemented_mx");
  // Both still have their text layer.
  EXPECT_EQ(screen.textLayer(), &screen);
  EXPECT_EQ(out.textLayer(), &out);
}

}  // namespace
