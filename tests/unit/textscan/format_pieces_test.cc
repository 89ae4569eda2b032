// formatParser: the pieces of a format as the package method reports them.
#include "textscan/format_pieces.h"

#include <gtest/gtest.h>

#include "support/builtin_calls.h"
#include "twhost/calls.h"
#include "twhost/kx_frame.h"

namespace {

using textscan::describeTextscanFormat;
using textscan::FormatInfo;

struct Piece {
  std::u16string text;
  bool skipped, literal, unknown;
};

std::vector<Piece> pieces(std::u16string_view format) {
  std::vector<Piece> out;
  for (const FormatInfo& p : describeTextscanFormat(format)) {
    out.push_back({p.text, p.isSkipped, p.isLiteral, p.isUnknown});
  }
  return out;
}

void expectPieces(std::u16string_view format, const std::vector<Piece>& want) {
  SCOPED_TRACE(std::string(format.begin(), format.end()));
  std::vector<Piece> got = pieces(format);
  ASSERT_EQ(got.size(), want.size());
  for (size_t i = 0; i < got.size(); ++i) {
    EXPECT_EQ(got[i].text, want[i].text) << i;
    EXPECT_EQ(got[i].skipped, want[i].skipped) << i;
    EXPECT_EQ(got[i].literal, want[i].literal) << i;
    EXPECT_EQ(got[i].unknown, want[i].unknown) << i;
  }
}

TEST(FormatPieces, EachPieceAsWrittenWithItsFlags) {
  expectPieces(u"", {});
  expectPieces(u"%f %*s", {{u"%f", false, false, false}, {u"%*s", true, false, false}});
  expectPieces(u"  a%%b\t%5.2f  ", {{u"a%%b", true, true, false}, {u"%5.2f", false, false, false}});
  expectPieces(u"%[ ] %{yyyy MM}D",
               {{u"%[ ]", false, false, false}, {u"%{yyyy MM}D", false, false, false}});
  expectPieces(u"%d9", {{u"%d", false, false, false}, {u"9", true, true, false}});
}

// The broken conversion is the last piece, and what follows it is in its
// text rather than in pieces of its own.
TEST(FormatPieces, ABrokenConversionEndsTheList) {
  expectPieces(u"%f %x %d", {{u"%f", false, false, false}, {u"%x %d", false, false, true}});
  expectPieces(u"lit %[abc", {{u"lit", true, true, false}, {u"%[abc", false, false, true}});
  expectPieces(u"%", {{u"%", false, false, true}});
}

TEST(FormatPieces, SkipMarkMovesToTheFront) {
  struct {
    const char16_t* written;
    const char16_t* shown;
  } cases[] = {{u"%*d", u"%*d"},   {u"%5*d", u"%*5d"},    {u"%*5*d", u"%*5d"},
               {u"%**d", u"%*d"},  {u"%*[**]", u"%*[*]"}, {u"%*[*a]", u"%*[a]"},
               {u"%-*s", u"%*-s"}, {u"%*[***]", u"%*[*]"}};
  for (const auto& c : cases) {
    std::u16string text = c.written;
    textscan::moveSkipMarkToFront(text);
    EXPECT_EQ(text, c.shown);
  }
}

class FormatParserMethod : public ::testing::Test {
 protected:
  void SetUp() override {
    KVInitialize_fileio();
    method_ = kcos::omFindMethod("korvan.iofun.internal.formatParser");
    ASSERT_NE(method_, nullptr);
  }
  // The struct for `format`, or the identifier of the error.
  std::pair<kxOwned, std::string> call(std::vector<kxArray*> in) {
    kxArray* out[2] = {nullptr, nullptr};
    int nlhs = 1;
    std::string error = test_support::raisedBy([&] {
      kxCallFrame frame;
      method_->invoke(nlhs, out, static_cast<int>(in.size()), in.data());
    });
    for (kxArray* a : in) kxDestroyArray(a);
    return {kxOwned(out[0]), error};
  }
  kcos::COSMethodInfo* method_ = nullptr;
};

TEST_F(FormatParserMethod, ReturnsTheFourRowsOfTheStruct) {
  auto [s, error] = call({kxCreateString("%5*d lit %f %x")});
  ASSERT_EQ(error, "");
  ASSERT_TRUE(s);
  ASSERT_EQ(kxGetNumberOfFields(s.get()), 4);
  const char* names[] = {"Format", "IsSkipped", "IsLiteral", "IsUnknown"};
  for (int i = 0; i < 4; ++i) EXPECT_STREQ(kxGetFieldNameByNumber(s.get(), i), names[i]);
  kxArray* format = kxGetFieldByNumber(s.get(), 0, 0);
  ASSERT_EQ(kxGetNumberOfElements(format), 4u);
  EXPECT_EQ(kxGetM(format), 1u);
  EXPECT_EQ(matrix::get_ustring(kxGetCell(format, 0)), u"%*5d");
  EXPECT_EQ(matrix::get_ustring(kxGetCell(format, 1)), u"lit");
  EXPECT_EQ(matrix::get_ustring(kxGetCell(format, 3)), u"%x");
  const bool rows[3][4] = {{1, 1, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}};
  for (int f = 0; f < 3; ++f) {
    kxArray* flags = kxGetFieldByNumber(s.get(), 0, f + 1);
    ASSERT_EQ(kxGetClassID(flags), kxLOGICAL_CLASS);
    ASSERT_EQ(kxGetNumberOfElements(flags), 4u);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(kxGetLogicals(flags)[i], rows[f][i]) << names[f + 1];
  }
}

TEST_F(FormatParserMethod, EmptyFormatGivesEmptyRows) {
  auto [s, error] = call({kxCreateString("")});
  ASSERT_TRUE(s);
  for (int f = 0; f < 4; ++f) {
    kxArray* field = kxGetFieldByNumber(s.get(), 0, f);
    EXPECT_EQ(kxGetM(field), 1u);
    EXPECT_EQ(kxGetN(field), 0u);
  }
}

TEST_F(FormatParserMethod, TakesExactlyOneCharacterArray) {
  EXPECT_EQ(call({}).second, "KORVAN:legacy:1");
  EXPECT_EQ(call({kxCreateString("%d"), kxCreateString("%d")}).second, "KORVAN:legacy:1");
  EXPECT_EQ(call({kxCreateDoubleScalar(1)}).second, "KORVAN:legacy:1");
}

}  // namespace
