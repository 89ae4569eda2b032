// textscanOptionsQuery and textscan through their slots: the struct of the
// effective options, and textscan's checks before its read.
#include <gtest/gtest.h>

#include <cmath>

#include "textscan_test_support.h"

namespace {

using namespace textscan_test;
using Tarnwicks::FileIO::kSlotTextscan;
using Tarnwicks::FileIO::kSlotTextscanOptionsQuery;
using test_support::call;

std::u16string cellText(const kxArray* cell, size_t i) {
  return matrix::get_ustring(kxGetCell(cell, i));
}

TEST(OptionsQuery, SixteenFieldsInOrderWithTheirClasses) {
  auto r =
      call(kSlotTextscanOptionsQuery, 1,
           {str("a,b"), str("%s %f"), num(2.5), str("Delimiter"), str(",\\t"), str("CommentStyle"),
            cellOf({str("/*"), str("*/")}), str("EndOfLine"), str("\\r\\n"), str("TreatAsEmpty"),
            cellOf({str("NA"), str("N\\A")}), str("ExpChars"), str("e"), str("EmptyValue"), num(-1),
            str("HeaderLines"), num(1), str("ReturnOnError"), num(0)});
  ASSERT_EQ(r.error, "");
  const kxArray* s = r.at();
  const char* names[] = {"Stream",        "Format",        "NumberOfLines", "CollectOutput",
                         "CommentStyle",  "Delimiter",     "EmptyValue",    "EndOfLine",
                         "ExpChars",      "HeaderColumns", "HeaderLines",   "MultipleDelimsAsOne",
                         "ReturnOnError", "TreatAsEmpty",  "Whitespace",    "NumCharactersToSkip"};
  ASSERT_EQ(kxGetNumberOfFields(s), 16);
  for (int i = 0; i < 16; ++i) EXPECT_STREQ(kxGetFieldNameByNumber(s, i), names[i]);
  auto field = [&](const char* name) { return kxGetField(s, 0, name); };

  EXPECT_EQ(matrix::get_ustring(field("Stream")), u"a,b");
  EXPECT_EQ(field("Format"), nullptr) << "declared, never set";
  EXPECT_EQ(kxGetScalar(field("NumberOfLines")), 3);
  for (const char* n :
       {"NumberOfLines", "EmptyValue", "HeaderColumns", "HeaderLines", "NumCharactersToSkip"}) {
    EXPECT_EQ(kxGetClassID(field(n)), kxDOUBLE_CLASS) << n;
    EXPECT_TRUE(kxIsScalar(field(n))) << n;
  }
  for (const char* n : {"CollectOutput", "MultipleDelimsAsOne", "ReturnOnError"}) {
    EXPECT_TRUE(kxIsLogicalScalar(field(n))) << n;
  }
  EXPECT_FALSE(kxIsLogicalScalarTrue(field("ReturnOnError")));
  EXPECT_EQ(kxGetScalar(field("EmptyValue")), -1);
  EXPECT_EQ(kxGetScalar(field("HeaderLines")), 1);

  // Lists are 1-by-n cells, texts are shown with their escapes.
  const kxArray* delimiter = field("Delimiter");
  ASSERT_EQ(kxGetM(delimiter), 1u);
  ASSERT_EQ(kxGetN(delimiter), 2u);
  EXPECT_EQ(cellText(delimiter, 0), u",");
  EXPECT_EQ(cellText(delimiter, 1), u"\\t");
  EXPECT_EQ(cellText(field("CommentStyle"), 1), u"*/");
  EXPECT_EQ(cellText(field("TreatAsEmpty"), 0), u"N\\\\A") << "longest first";
  EXPECT_EQ(matrix::get_ustring(field("EndOfLine")), u"\\r\\n");
  EXPECT_EQ(matrix::get_ustring(field("ExpChars")), u"e");
  EXPECT_EQ(matrix::get_ustring(field("Whitespace")), u" \\b");
}

TEST(OptionsQuery, DefaultsShowTheSettledWhitespaceAndDelimiters) {
  auto r = call(kSlotTextscanOptionsQuery, 1, {num(3), str("%f")});
  ASSERT_EQ(r.error, "");
  const kxArray* s = r.at();
  EXPECT_EQ(kxGetScalar(kxGetField(s, 0, "Stream")), 3);
  EXPECT_TRUE(std::isinf(kxGetScalar(kxGetField(s, 0, "NumberOfLines"))));
  EXPECT_TRUE(std::isnan(kxGetScalar(kxGetField(s, 0, "EmptyValue"))));
  const kxArray* delimiter = kxGetField(s, 0, "Delimiter");
  ASSERT_EQ(kxGetN(delimiter), 3u);
  EXPECT_EQ(cellText(delimiter, 1), u"\\b");
  for (const char* list : {"CommentStyle", "TreatAsEmpty"}) {
    const kxArray* cell = kxGetField(s, 0, list);
    EXPECT_EQ(kxGetClassID(cell), kxCELL_CLASS) << list;
    EXPECT_EQ(kxGetM(cell), 1u) << list;
    EXPECT_EQ(kxGetN(cell), 0u) << list;
  }
  const kxArray* eol = kxGetField(s, 0, "EndOfLine");
  EXPECT_EQ(kxGetM(eol), 1u);
  EXPECT_EQ(kxGetN(eol), 0u);
  EXPECT_EQ(matrix::get_ustring(kxGetField(s, 0, "Whitespace")), u" \\b\\t");
}

// Without an output the call checks everything, warns, and makes nothing.
TEST(OptionsQuery, WithoutOutputsOnlyChecks) {
  test_support::CaughtWarnings warnings;
  auto r = call(kSlotTextscanOptionsQuery, 0,
                {str("1"), str("%f"), str("Delimiter"), str(","), str("Whitespace"), str(", ")});
  EXPECT_EQ(r.error, "");
  EXPECT_EQ(r.at(0), nullptr);
  EXPECT_EQ(warnings.ids(), std::vector<std::string>{"KORVAN:textscan:DelimiterSpaceConflict"});
  r = call(kSlotTextscanOptionsQuery, 0, {str("1"), str("%f"), str("Bufsize"), num(1)});
  EXPECT_EQ(r.error, "KORVAN:textscan:BufSizeDeprecation");
  r = call(kSlotTextscanOptionsQuery, 2, {str("1"), str("%f")});
  EXPECT_EQ(r.error, "");
  EXPECT_EQ(r.at(0), nullptr);
}

TEST(TextscanGateway, ChecksItsOptionsBeforeReading) {
  EXPECT_EQ(call(kSlotTextscan, 1, {str("1"), str("%f"), str("delim"), str(",")}).error,
            "KORVAN:textscan:UnknownOption");
  EXPECT_EQ(call(kSlotTextscan, 1, {num(1), str("%f")}).error, "KORVAN:textscan:standardStream");
  EXPECT_EQ(call(kSlotTextscan, 1, {str("1"), str("%y")}).error, "KORVAN:textscan:BadFormatString");
  auto r = call(kSlotTextscan, 2, {str("1 2"), str("%f"), str("Delimiter"), str(",")});
  EXPECT_EQ(r.error, "");
  EXPECT_EQ(call(kSlotTextscan, 3, {str("1"), str("%f")}).error, "KORVAN:maxlhs");
  EXPECT_EQ(call(kSlotTextscan, 0, {str("1")}).error, "KORVAN:minrhs");
}

}  // namespace
