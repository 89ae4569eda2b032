// The print format parser: pieces, their narrow formats, and the faults.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "print/conversion_matcher.h"
#include "print/format_parser.h"
#include "twhost/stream_errors.h"
#include "twhost/text.h"

namespace {

using Tarnwicks::FileIO::ConversionMatch;
using Tarnwicks::FileIO::findConversion;
using Tarnwicks::FileIO::foutFormatPiece;
using Tarnwicks::FileIO::kFieldAbsent;
using Tarnwicks::FileIO::kFieldNumber;
using Tarnwicks::FileIO::kFieldNumberedStar;
using Tarnwicks::FileIO::kFieldStar;
using Tarnwicks::FileIO::kFlagZero;
using Tarnwicks::FileIO::PieceKind;
using Tarnwicks::FileIO::PrintFormatParser;

const int kInvalid = Tarnwicks::FileIO::code(Tarnwicks::FileIO::StreamError::InvalidFormat);
// Numbering styles.
const int kNone = PrintFormatParser::kUndecided;
const int kSeq = PrintFormatParser::kSequential;
const int kNum = PrintFormatParser::kNumbered;

// A parse summed up: each piece as its narrow format, or as "'text'" for a
// literal; then the fault, the style and the values a pass takes.
struct Parsed {
  std::vector<std::string> pieces;
  int error;
  int style;
  uint64_t perPass;
};

Parsed parse(const std::u16string& format, bool alwaysSigned = false) {
  PrintFormatParser p(format, alwaysSigned);
  Parsed r{{}, p.formatError(), p.numberingStyle(), p.argumentsPerPass()};
  for (const auto& piece : p.pieces()) {
    if (piece->kind() == PieceKind::Literal) {
      auto& lit = static_cast<const Tarnwicks::FileIO::foutFormatPieceForLiterals&>(*piece);
      r.pieces.push_back("'" + fl::i18n::to_string(lit.text()) + "'");
    } else {
      r.pieces.push_back(piece->narrowFormat());
    }
  }
  return r;
}

struct ParseCase {
  const char16_t* format;
  std::vector<std::string> pieces;
  int error;
  int style;
  uint64_t perPass;
};

class Parser : public ::testing::TestWithParam<ParseCase> {};

TEST_P(Parser, Pieces) {
  const ParseCase& c = GetParam();
  Parsed p = parse(c.format);
  EXPECT_EQ(p.pieces, c.pieces);
  EXPECT_EQ(p.error, c.error);
  EXPECT_EQ(p.style, c.style);
  EXPECT_EQ(p.perPass, c.perPass);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Parser,
    ::testing::Values(
        ParseCase{u"", {}, kInvalid, kNone, 0}, ParseCase{u"abc", {"'abc'"}, 0, kNone, 0},
        ParseCase{u"%d", {"%ld"}, 0, kSeq, 1}, ParseCase{u"%-+5.3d", {"%-+5.3ld"}, 0, kSeq, 1},
        // Length modifiers never reach the text: integers are printed long.
        ParseCase{
            u"%hd %ld %lu %hx", {"%ld", "' '", "%ld", "' '", "%lu", "' '", "%lx"}, 0, kSeq, 4},
        ParseCase{u"x=%5.2f\n", {"'x='", "%5.2f", "'\n'"}, 0, kSeq, 1},
        ParseCase{u"%%", {"'%'"}, 0, kNone, 0},
        ParseCase{u"a%%b", {"'a'", "'%'", "'b'"}, 0, kNone, 0},
        ParseCase{u"%5%", {}, kInvalid, kNone, 0},
        ParseCase{u"abc%", {"'abc'"}, kInvalid, kNone, 0}, ParseCase{u"%y", {}, kInvalid, kNone, 0},
        ParseCase{u"%5", {}, kInvalid, kNone, 0},
        ParseCase{
            u"%bx %tx %bo %tu", {"%lx", "' '", "%lx", "' '", "%lo", "' '", "%lu"}, 0, kSeq, 4},
        ParseCase{u"%bd", {}, kInvalid, kSeq, 1}, ParseCase{u"%ti", {}, kInvalid, kSeq, 1},
        ParseCase{u"%le", {}, kInvalid, kSeq, 1}, ParseCase{u"%hs", {}, kInvalid, kSeq, 1},
        // A written negative precision is no precision; "." alone is zero.
        ParseCase{u"%.-3d", {"%ld"}, 0, kSeq, 1}, ParseCase{u"%.d", {"%.ld"}, 0, kSeq, 1},
        ParseCase{u"%--d", {}, kInvalid, kSeq, 1}, ParseCase{u"%-0d", {"%-0ld"}, 0, kSeq, 1},
        ParseCase{u"%05d %50d", {"%05ld", "' '", "%50ld"}, 0, kSeq, 2},
        ParseCase{u"%.2c", {}, kInvalid, kSeq, 1}, ParseCase{u"%.-2c", {"%c"}, 0, kSeq, 1},
        // Stars count as values of the pass; numbered ones do not.
        ParseCase{u"%*.*f", {"%*.*f"}, 0, kSeq, 3}, ParseCase{u"%2$*1$d", {"%*ld"}, 0, kNum, 1},
        ParseCase{u"%1$d %2$s", {"%ld", "' '", "%s"}, 0, kNum, 2},
        // Numbered and sequential don't mix: the fault comes at the second
        // conversion, after the pieces before it.
        ParseCase{u"%1$d %d", {"%ld", "' '"}, kInvalid, kNum, 2},
        ParseCase{u"%d %1$d", {"%ld", "' '"}, kInvalid, kSeq, 2},
        ParseCase{u"%1$*d", {}, kInvalid, kNum, 2}, ParseCase{u"%0$d", {}, kInvalid, kNone, 0},
        ParseCase{u"%#o%#x% d%+i", {"%#lo", "%#lx", "% ld", "%+li"}, 0, kSeq, 4}));

TEST(Parser, AlwaysSignedForcesPlusAndDropsWidth) {
  EXPECT_EQ(parse(u"%5.2f", true).pieces, std::vector<std::string>{"%+.2f"});
  EXPECT_EQ(parse(u"%+5.2f", true).pieces, std::vector<std::string>{"%+.2f"});
  EXPECT_EQ(parse(u"%-*d", true).pieces, std::vector<std::string>{"%+-ld"});
  EXPECT_EQ(parse(u"%-*d", true).perPass, 1u);
  EXPECT_EQ(parse(u"%.*f", true).pieces, std::vector<std::string>{"%+.*f"});
}

TEST(Parser, FlagsWidthAndPrecisionKinds) {
  PrintFormatParser p(u"%05d%*.*f%3$*2$.*1$x", false);
  ASSERT_EQ(p.formatError(), kInvalid);  // sequential then numbered
  PrintFormatParser q(u"%05d%*.*f", false);
  ASSERT_EQ(q.pieces().size(), 2u);
  const foutFormatPiece& a = *q.pieces()[0];
  EXPECT_EQ(a.flags(), kFlagZero);
  EXPECT_EQ(a.widthField().kind, kFieldNumber);
  EXPECT_EQ(a.widthField().resolved, 5u);
  EXPECT_EQ(a.precisionField().kind, kFieldAbsent);
  const foutFormatPiece& b = *q.pieces()[1];
  EXPECT_EQ(b.widthField().kind, kFieldStar);
  EXPECT_EQ(b.precisionField().kind, kFieldStar);
  PrintFormatParser r(u"%3$*2$.*1$x", false);
  ASSERT_EQ(r.pieces().size(), 1u);
  EXPECT_EQ(r.pieces()[0]->widthField().kind, kFieldNumberedStar);
  EXPECT_EQ(r.pieces()[0]->widthField().value, 2u);
  EXPECT_EQ(r.pieces()[0]->precisionField().value, 1u);
}

TEST(Parser, IterationThrowsTheFaultAfterTheLastPiece) {
  PrintFormatParser p(u"abc%", false);
  EXPECT_NE(p.nextPiece(), nullptr);
  try {
    p.nextPiece();
    FAIL() << "no fault thrown";
  } catch (int code) {
    EXPECT_EQ(code, kInvalid);
  }
  PrintFormatParser numbered(u"%1$d", false);
  EXPECT_NE(numbered.nextPiece(), nullptr);
  EXPECT_EQ(numbered.nextPiece(), nullptr);
  EXPECT_EQ(numbered.restartPieces(), nullptr);
  PrintFormatParser sequential(u"%d", false);
  foutFormatPiece* first = sequential.nextPiece();
  EXPECT_EQ(sequential.restartPieces(), first);
}

TEST(Parser, StringConversionAndTrailingSpaces) {
  EXPECT_TRUE(PrintFormatParser(u"%s", false).hasStringConversion());
  EXPECT_FALSE(PrintFormatParser(u"%d", false).hasStringConversion());
  EXPECT_TRUE(PrintFormatParser(u"%-5d", false).endsLeftJustifiedWithSpaces());
  EXPECT_TRUE(PrintFormatParser(u"%-5d  \t", false).endsLeftJustifiedWithSpaces());
  EXPECT_FALSE(PrintFormatParser(u"%-5d x", false).endsLeftJustifiedWithSpaces());
  EXPECT_FALSE(PrintFormatParser(u"%5d", false).endsLeftJustifiedWithSpaces());
  EXPECT_FALSE(PrintFormatParser(u"%-5d%5d", false).endsLeftJustifiedWithSpaces());
}

TEST(Matcher, CapturesTheWholeConversion) {
  std::u16string f = u"ab%12$-+*3$.*4$lx%";
  ConversionMatch m;
  ASSERT_TRUE(findConversion(f.data(), f.size(), 0, m));
  EXPECT_EQ(m.start, 2u);
  EXPECT_EQ(f.substr(m.start, m.length), u"%12$-+*3$.*4$lx");
  EXPECT_EQ(f.substr(m.number.start, m.number.length), u"12$");
  EXPECT_EQ(f.substr(m.flags.start, m.flags.length), u"-+");
  EXPECT_EQ(f.substr(m.width.start, m.width.length), u"*3$");
  EXPECT_EQ(f.substr(m.precision.start, m.precision.length), u".*4$");
  EXPECT_EQ(f.substr(m.lengthModifier.start, m.lengthModifier.length), u"l");
  EXPECT_EQ(f.substr(m.conversion.start, m.conversion.length), u"x");
  ASSERT_TRUE(findConversion(f.data(), f.size(), m.start + m.length, m));
  EXPECT_EQ(m.length, 1u);
  EXPECT_TRUE(m.conversion.empty());
  EXPECT_FALSE(findConversion(f.data(), f.size(), f.size(), m));
  // A star's number stands in for the conversion's own when that is absent.
  std::u16string g = u"%*2$d";
  ASSERT_TRUE(findConversion(g.data(), g.size(), 0, m));
  EXPECT_EQ(g.substr(m.number.start, m.number.length), u"2$");
  // Digits without "$" are a width, not a number.
  std::u16string h = u"%12d";
  ASSERT_TRUE(findConversion(h.data(), h.size(), 0, m));
  EXPECT_TRUE(m.number.empty());
  EXPECT_EQ(h.substr(m.width.start, m.width.length), u"12");
}

}  // namespace
