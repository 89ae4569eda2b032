// fileStream: bytes, unread, positions, and lines in every terminator form,
// with the fast line reader checked against the character-at-a-time one.
#include "fileio/file_stream.h"

#include <random>

#include "fileio/attributes.h"
#include "fileio/output_buffer.h"
#include "files_test_support.h"

namespace {

using namespace Tarnwicks::FileIO;

// Exposes the character-at-a-time reader of lines.
class TestStream : public fileStream {
 public:
  using fileStream::fileStream;
  int readLineByChars(int64_t limit, OutputBuffer& buffer) {
    if (limit != -1 && limit < 1) return 0;
    return readLineSlow(limit, buffer, 0, 0, 0);
  }
};

class FileStreamTest : public files_test::ScratchDir {
 protected:
  TestStream& open(const std::string& bytes, const char* encoding = "", const char* mode = "r") {
    std::string name = writeFile("f" + std::to_string(++count), bytes);
    s.reset();
    if (file) std::fclose(file);
    permission = FilePermission(mode, 0);
    file = std::fopen(name.c_str(), permission.cMode);
    s = std::make_unique<TestStream>(file, encoding, &permission);
    return *s;
  }
  void TearDown() override {
    s.reset();
    if (file) std::fclose(file);
    file = nullptr;
    ScratchDir::TearDown();
  }
  struct Line {
    std::u16string text;
    int terminator;
  };
  // The three line readers: character by character (the rule), the general
  // fast reader, and fgets's way (a whole buffered line at once, else the
  // general reader).
  enum class Reader { kChars, kGeneral, kWholeFirst };
  Line line(int64_t limit = -1, Reader reader = Reader::kGeneral) {
    int t = 0;
    if (reader == Reader::kWholeFirst) {
      if (kxOwned whole{s->readWholeLine(limit, t)}) return {kxArrayToUString(whole.get()), t};
    }
    OutputBuffer b(kxCHAR_CLASS, 1024, 64, 8388608);
    t = reader == Reader::kChars ? s->readLineByChars(limit, b) : s->readLine(limit, b);
    kxOwned a(b.toArray());
    return {kxArrayToUString(a.get()), t};
  }
  Line line(int64_t limit, bool slow) {
    return line(limit, slow ? Reader::kChars : Reader::kGeneral);
  }

  FilePermission permission;
  FILE* file = nullptr;
  std::unique_ptr<TestStream> s;
  int count = 0;
};

TEST_F(FileStreamTest, ShortReadIsNoError) {
  TestStream& st = open("ab");
  char buf[3];
  EXPECT_EQ(st.read(3, buf, 1), 2u);
  EXPECT_EQ(st.errorCode, 0);
  EXPECT_TRUE(st.atEnd());
}

TEST_F(FileStreamTest, ElementReadsCountElements) {
  TestStream& st = open(std::string("\x01\x00\x02\x00\x03", 5));
  uint16_t v[3] = {};
  EXPECT_EQ(st.read(3, v, 2), 2u);
  EXPECT_EQ(v[0], 1);
  EXPECT_EQ(v[1], 2);
}

TEST_F(FileStreamTest, UnreadOfOneByteEvenWhenItIsZeroOr255) {
  for (const std::string& bytes :
       {std::string("\x00z", 2), std::string("\xffz"), std::string("qz")}) {
    TestStream& st = open(bytes);
    char c = 0;
    ASSERT_EQ(st.read(1, &c, 1), 1u);
    ASSERT_TRUE(st.unread(1));
    char again = 1;
    ASSERT_EQ(st.read(1, &again, 1), 1u);
    EXPECT_EQ(again, bytes[0]);
  }
}

TEST_F(FileStreamTest, PositionsAndSize) {
  TestStream& st = open("hello world");
  int64_t size = 0, pos = -1;
  ASSERT_TRUE(st.getFileSize(size));
  EXPECT_EQ(size, 11);
  char buf[5];
  st.read(5, buf, 1);
  ASSERT_EQ(st.getPosition(pos), 0);
  EXPECT_EQ(pos, 5);
  const int64_t mark = pos;
  st.read(3, buf, 1);
  st.setPosition(mark);
  st.getPosition(pos);
  EXPECT_EQ(pos, 5);
  EXPECT_EQ(st.setPosition(1), 0);
  st.read(1, buf, 1);
  EXPECT_EQ(buf[0], 'e');
}

TEST_F(FileStreamTest, WriteCountsBytesAndReadOnlyFileFails) {
  TestStream& w = open("", "", "w");
  double v[2] = {1, 2};
  EXPECT_EQ(w.write(2, v, 8), 2u);
  EXPECT_EQ(w.bytesWritten, 16u);
  TestStream& r = open("abc");
  EXPECT_EQ(r.write(1, "x", 1), 0u);
  EXPECT_NE(r.errorCode, 0);
}

struct LineCase {
  const char* bytes;
  int64_t limit;
  std::u16string first;
  int terminator;
  std::u16string next;  // what a following readLine gives
};

class Lines : public FileStreamTest,
              public ::testing::WithParamInterface<std::tuple<LineCase, bool>> {};

TEST_P(Lines, TerminatorsAndLimits) {
  const auto& [c, slow] = GetParam();
  open(c.bytes);
  Line l = line(c.limit, slow);
  EXPECT_EQ(l.text, c.first) << c.bytes;
  EXPECT_EQ(l.terminator, c.terminator) << c.bytes;
  EXPECT_EQ(line(-1, slow).text, c.next) << c.bytes;
}

INSTANTIATE_TEST_SUITE_P(
    AllTerminators, Lines,
    ::testing::Combine(
        ::testing::Values(
            LineCase{"a\r\nb", -1, u"a\r\n", 2, u"b"}, LineCase{"a\n\rb", -1, u"a\n\r", 2, u"b"},
            LineCase{"a\rb", -1, u"a\r", 1, u"b"}, LineCase{"a\nb", -1, u"a\n", 1, u"b"},
            LineCase{"a\n\nb", -1, u"a\n", 1, u"\n"}, LineCase{"a\r\rb", -1, u"a\r", 1, u"\r"},
            LineCase{"\n", -1, u"\n", 1, u""},
            LineCase{"abc", -1, u"abc", 0, u""}, LineCase{"abcdef\n", 3, u"abc", 0, u"def\n"},
            LineCase{"ab\r\n", 3, u"ab\r", 1, u"\n"}, LineCase{"ab\ncd", 0, u"", 0, u"ab\n"},
            LineCase{"", -1, u"", 0, u""}),
        ::testing::Bool()));

TEST_F(FileStreamTest, EndFlagSetByThePeekAfterTheLastLine) {
  open("one\ntwo\n");
  line();
  EXPECT_FALSE(s->atEnd());
  line();
  EXPECT_TRUE(s->atEnd());  // nothing follows: the peek has seen the end
}

// Random text in each fast encoding, with every terminator and limits:
// the fast readers give exactly what the character-at-a-time one gives,
// position, error and end flag too. Texts run to several C buffers, so that
// lines, characters and CR LF pairs straddle refills.
class FastLines : public FileStreamTest, public ::testing::WithParamInterface<bool> {};

TEST_P(FastLines, EqualCharacterLines) {
  // Plain text is what the whole-line reader takes; the rest sends it back.
  const char* const kPlain = "the quick brown fox jumps over the lazy dog";
  const Reader fastReader = GetParam() ? Reader::kWholeFirst : Reader::kGeneral;
  std::mt19937 rng(7);
  const std::vector<std::string> pieces = {
      "a",    "bc",   "\n",           "\r",           "\r\n",
      "\n\r", " ",    "\xc3\xa9",     "\xe2\x82\xac", "\xf0\x9f\x98\x80",
      "\xff", "\xc3", "\xed\xa0\x80", "\xe0\x80\x80", "\x80",
      "\x9d", "\x81", kPlain,         kPlain,         kPlain};
  for (const char* encoding : {"UTF-8", "ISO-8859-1", "windows-1252", "US-ASCII", "ibm-037"}) {
    files_test::CaughtWarnings quiet;
    for (int round = 0; round < 40; ++round) {
      std::string text;
      int n = 1 + int(rng() % 3000);  // long enough to cross the C buffer
      for (int i = 0; i < n; ++i) text += pieces[rng() % pieces.size()];
      int64_t limit = round % 3 == 0 ? int64_t(rng() % 7) : -1;
      open(text, encoding);
      std::vector<Line> fastLines;
      std::vector<int> fastErrors;
      std::vector<int64_t> fastPos;
      for (int i = 0; i < 100000 && !s->atEnd(); ++i) {
        fastLines.push_back(line(limit, fastReader));
        fastErrors.push_back(s->errorCode);
        int64_t p = 0;
        s->getPosition(p);
        fastPos.push_back(p);
        if (limit == 0) break;
      }
      open(text, encoding);
      for (size_t i = 0; i < fastLines.size(); ++i) {
        Line l = line(limit, true);
        ASSERT_EQ(l.text, fastLines[i].text) << encoding << " round " << round << " line " << i;
        ASSERT_EQ(l.terminator, fastLines[i].terminator) << encoding << " line " << i;
        ASSERT_EQ(s->errorCode, fastErrors[i]) << encoding << " line " << i;
        int64_t p = 0;
        s->getPosition(p);
        ASSERT_EQ(p, fastPos[i]) << encoding << " line " << i;
      }
      EXPECT_EQ(s->atEnd(), limit != 0)
          << encoding << " round " << round << " lines " << fastLines.size() << " limit " << limit;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(GeneralAndWholeLine, FastLines, ::testing::Bool());

}  // namespace

namespace {

// Lines read one after another give the text that one read of every
// character gives, in encodings whose decoder takes bytes ahead to judge a
// bad sequence (GB18030 looks up to three bytes past a lead byte): the
// character after a line end is looked at and given back, and must come
// out once.
TEST_F(FileStreamTest, LinesAndBulkCharactersAgreeOnMalformedMultiByteText) {
  std::mt19937 rng(11);
  const unsigned char pool[] = {0x81, 0x30, 0x39, 0xfe, 0xff, 0x80, 0x41, 0x0a, 0x0d,
                                0x84, 0x31, 0xa4, 0x90, 0xe3, 0x32, 0x9a, 0x33};
  for (const char* encoding : {"GB18030", "Shift_JIS", "EUC-KR", "Big5", "EUC-JP"}) {
    for (int round = 0; round < 300; ++round) {
      std::string bytes;
      const int n = 1 + int(rng() % 24);
      for (int i = 0; i < n; ++i) bytes += static_cast<char>(pool[rng() % sizeof pool]);
      open(bytes, encoding);
      std::u16string lines;
      for (int i = 0; i < 100 && !s->atEnd(); ++i) lines += line(-1, Reader::kGeneral).text;
      open(bytes, encoding);
      OutputBuffer all(kxCHAR_CLASS, 64, 64, 64);
      s->readCharsToEnd(all);
      kxOwned a(all.toArray());
      std::string hex;
      for (unsigned char b : bytes) hex += " " + std::to_string(b);
      ASSERT_EQ(lines, kxArrayToUString(a.get())) << encoding << ":" << hex;
    }
  }
}

}  // namespace

namespace {

// A file read on and on gets a larger C buffer after some refills. Lines,
// terminators, positions and the end flag stay exactly what the character
// reader gives on the small buffer, across the swap; a seek starts the
// count over, and a file read in place never grows.
TEST_F(FileStreamTest, ReadingOnAndOnGrowsTheBufferAndChangesNothingRead) {
  std::mt19937 rng(5);
  const std::vector<std::string> pieces = {
      "plain text of a line ", "\n", "\r\n", "\xc3\xa9", "x", "\r", "0123456789"};
  std::string text;
  while (text.size() < 300000) text += pieces[rng() % pieces.size()];
  auto bufferSize = [&] { return size_t(file->_IO_buf_end - file->_IO_buf_base); };

  open(text);
  std::vector<Line> expected;
  std::vector<int64_t> positions;
  while (!s->atEnd()) {
    expected.push_back(line(-1, Reader::kChars));
    s->getPosition(positions.emplace_back());
  }
  const size_t smallBuffer = bufferSize();
  ASSERT_LT(smallBuffer, fileStream::kGrownBufferSize);

  for (Reader reader : {Reader::kGeneral, Reader::kWholeFirst}) {
    open(text);
    s->allowBufferGrowth();
    for (size_t i = 0; i < expected.size(); ++i) {
      Line l = line(-1, reader);
      ASSERT_EQ(l.text, expected[i].text) << "line " << i;
      ASSERT_EQ(l.terminator, expected[i].terminator) << "line " << i;
      int64_t p = 0;
      s->getPosition(p);
      ASSERT_EQ(p, positions[i]) << "line " << i;
      ASSERT_EQ(s->atEnd(), i + 1 == expected.size()) << "line " << i;
    }
    EXPECT_EQ(bufferSize(), fileStream::kGrownBufferSize);
    // The stream owns the grown buffer: the file is closed first.
    std::fclose(file);
    file = nullptr;
    s.reset();
  }

  // A seek before every few lines: the buffer stays as it was.
  open(text);
  s->allowBufferGrowth();
  for (size_t i = 0; i + 1 < expected.size(); i += 7) {
    s->setPosition(i == 0 ? 0 : positions[i - 1]);
    ASSERT_EQ(line(-1, Reader::kWholeFirst).text, expected[i].text) << "line " << i;
  }
  EXPECT_EQ(bufferSize(), smallBuffer);
  std::fclose(file);
  file = nullptr;
}

}  // namespace
