// The scan format parser: the grammar, the piece each conversion makes, the
// result class of a whole format, and faults that wait in an error piece.
#include <gtest/gtest.h>

#include <string>

#include "fileio/string_streams.h"
#include "scan/scan_format.h"
#include "scan_test_support.h"
#include "twhost/text.h"

namespace {

using namespace Tarnwicks::FileIO;

constexpr int kNone = 0;
constexpr int kBad = code(StreamError::InvalidFormat);

struct FormatCase {
  const char* format;
  // One letter per piece: L literal, N number, T text, E error.
  const char* kinds;
  kxClassID cls;
  int error;  // the code of the error piece, kNone without one
};

std::string kindsOf(const scanFormatParser& p) {
  std::string out;
  for (const PieceShape& s : p.shapes()) out += "LNTE"[s.kind];
  return out;
}

class Formats : public ::testing::TestWithParam<FormatCase> {};

TEST_P(Formats, PiecesClassAndFault) {
  const FormatCase& c = GetParam();
  scanFormatParser p(fl::i18n::to_ustring(c.format));
  p.parseFormat();
  EXPECT_EQ(kindsOf(p), c.kinds) << c.format;
  EXPECT_EQ(p.resultClass(), c.cls) << c.format;
  int code = 0;
  finFormatPiece* last = p.pieceAt(p.size() - 1, code);
  ASSERT_NE(last, nullptr);
  inputStringStream in("", 0);
  OutputBuffer out(kxDOUBLE_CLASS, 16, 16, 16);
  bool failed = false;
  code = 0;
  last->read(in, out, false, failed, code);
  if (c.error != kNone) {
    EXPECT_TRUE(failed) << c.format;
    EXPECT_EQ(code, c.error) << c.format;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Grammar, Formats,
    ::testing::Values(
        FormatCase{"%d", "N", kxDOUBLE_CLASS, kNone}, FormatCase{"%ld", "N", kxINT64_CLASS, kNone},
        FormatCase{"%li", "N", kxINT64_CLASS, kNone}, FormatCase{"%lu", "N", kxUINT64_CLASS, kNone},
        FormatCase{"%lx%lo", "NN", kxUINT64_CLASS, kNone},
        FormatCase{"%ld%lu", "NN", kxDOUBLE_CLASS, kNone},
        FormatCase{"%hd %f", "NLN", kxDOUBLE_CLASS, kNone},
        FormatCase{"%s", "T", kxCHAR_CLASS, kNone}, FormatCase{"%s%c", "TT", kxCHAR_CLASS, kNone},
        // A first text leaves the decision to the number after it.
        FormatCase{"%s%ld", "TN", kxINT64_CLASS, kNone},
        FormatCase{"%d%s", "NT", kxDOUBLE_CLASS, kNone},
        FormatCase{"x=%d,", "LNL", kxDOUBLE_CLASS, kNone},
        FormatCase{"100%% %d", "LN", kxDOUBLE_CLASS, kNone},
        FormatCase{"%[]a]%[^]a]", "TT", kxCHAR_CLASS, kNone},
        FormatCase{"%*5d", "N", kxDOUBLE_CLASS, kNone}, FormatCase{"%5", "E", kxCHAR_CLASS, kBad},
        FormatCase{"%0d", "E", kxCHAR_CLASS, kBad}, FormatCase{"%-3d", "E", kxCHAR_CLASS, kBad},
        FormatCase{"%hs", "E", kxCHAR_CLASS, kBad}, FormatCase{"%lc", "E", kxCHAR_CLASS, kBad},
        FormatCase{"%lld", "E", kxCHAR_CLASS, kBad}, FormatCase{"%*", "E", kxCHAR_CLASS, kBad},
        FormatCase{"%q", "E", kxCHAR_CLASS, kBad}, FormatCase{"%[abc", "E", kxCHAR_CLASS, kBad},
        FormatCase{"%", "E", kxCHAR_CLASS, kBad}, FormatCase{"", "E", kxCHAR_CLASS, kBad},
        // Pieces ahead of a fault stay.
        FormatCase{"%d %q %d", "NLE", kxDOUBLE_CLASS, kBad},
        FormatCase{"ab%", "LE", kxCHAR_CLASS, kBad}));

TEST(FormatCycle, WrapsAtTheEndAndRestoresWidths) {
  scanFormatParser p(u"%3c,");
  p.parseFormat();
  int code = 0;
  finFormatPiece* first = p.nextScanPiece(code);
  first->width = 1;  // a piece may use up its width
  EXPECT_FALSE(p.wrapped());
  EXPECT_TRUE(p.nextScanPiece(code)->isLiteral());
  EXPECT_FALSE(p.piecesLeftInPass());
  EXPECT_EQ(p.nextScanPiece(code), first);
  EXPECT_TRUE(p.wrapped());
  EXPECT_EQ(first->width, 3);
  EXPECT_EQ(p.pieceAt(2, code), nullptr);
  EXPECT_EQ(code, Tarnwicks::FileIO::code(StreamError::InternalError));
}

TEST(FormatText, PiecesKeepTheirTextWithoutTheStar) {
  scanFormatParser p(u"%*12lx%%%[^,]");
  p.parseFormat();
  int code = 0;
  EXPECT_EQ(p.pieceAt(0, code)->pieceFormat, u"%12lx");
  EXPECT_TRUE(p.pieceAt(0, code)->skipped);
  EXPECT_EQ(p.pieceAt(1, code)->pieceFormat, u"%%");
  EXPECT_EQ(p.pieceAt(2, code)->pieceFormat, u"%[^,]");
}

}  // namespace
