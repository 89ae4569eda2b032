// The JSON forms that scripts cannot make yet (datetime and categorical
// objects, empty slots) and the rules for text and numbers.
#include "json_writer.h"

#include <gtest/gtest.h>

#include <cmath>

#include "value.h"

namespace tw {
namespace {

kxArray* charRow(const char16_t* text) {
  return kxCreateStringFromNChars_UTF16(text, std::char_traits<char16_t>::length(text));
}

kxArray* properties(std::initializer_list<std::pair<const char*, kxArray*>> fields) {
  kxArray* s = kxCreateStructMatrix(1, 1, 0, nullptr);
  for (const auto& [name, value] : fields) kxSetField(s, 0, name, value);
  return s;
}

TEST(JsonWriter, DatetimeGivesFormatAndHighLowPairs) {
  kxArray* data = kxCreateDoubleMatrix(1, 2, kxCOMPLEX);
  kxGetPr(data)[0] = 86400000;
  kxGetPi(data)[0] = 0.25;
  kxGetPr(data)[1] = NAN;  // NaT
  kxGetPi(data)[1] = 0;
  size_t dims[2] = {1, 2};
  kxOwned d(kxCreateObjectArray("datetime", 2, dims,
                                properties({{"Format", charRow(u"yyyy-MM-dd")}, {"Data", data}})));
  EXPECT_EQ(jsonValue(d.get()), R"({"class": "datetime", "size": [1, 2], "format": "yyyy-MM-dd", )"
                                R"("data": [[86400000, 0.25], ["NaN", 0]]})");
}

TEST(JsonWriter, DatetimeWithRealDataHasZeroLowParts) {
  kxArray* data = kxCreateDoubleScalar(-1.5);
  size_t dims[2] = {1, 1};
  kxOwned d(kxCreateObjectArray("datetime", 2, dims,
                                properties({{"Format", charRow(u"")}, {"Data", data}})));
  EXPECT_EQ(jsonValue(d.get()),
            R"({"class": "datetime", "size": [1, 1], "format": "", "data": [[-1.5, 0]]})");
}

TEST(JsonWriter, CategoricalNamesEachCodeAndNullForUndefined) {
  kxArray* cats = kxCreateCellMatrix(2, 1);
  kxSetCell(cats, 0, charRow(u"low"));
  kxSetCell(cats, 1, charRow(u"h\u00E9"));
  kxArray* codes = kxCreateNumericMatrix(3, 1, kxUINT32_CLASS, kxREAL);
  uint32_t* c = static_cast<uint32_t*>(kxGetData(codes));
  c[0] = 2;
  c[1] = 0;
  c[2] = 1;
  size_t dims[2] = {3, 1};
  kxOwned v(kxCreateObjectArray("categorical", 2, dims,
                                properties({{"Categories", cats}, {"Codes", codes}})));
  EXPECT_EQ(jsonValue(v.get()),
            R"({"class": "categorical", "size": [3, 1], "categories": ["low", "h\u00E9"], )"
            R"("data": ["h\u00E9", null, "low"]})");
}

TEST(JsonWriter, CategoricalAcceptsDoubleCodesWithNaN) {
  kxArray* cats = kxCreateCellMatrix(1, 1);
  kxSetCell(cats, 0, charRow(u"a"));
  kxArray* codes = kxCreateDoubleMatrix(1, 2, kxREAL);
  kxGetPr(codes)[0] = 1;
  kxGetPr(codes)[1] = NAN;
  size_t dims[2] = {1, 2};
  kxOwned v(kxCreateObjectArray("categorical", 2, dims,
                                properties({{"Categories", cats}, {"Codes", codes}})));
  EXPECT_EQ(
      jsonValue(v.get()),
      R"({"class": "categorical", "size": [1, 2], "categories": ["a"], "data": ["a", null]})");
}

TEST(JsonWriter, OtherObjectsShowTheirProperties) {
  size_t dims[2] = {1, 1};
  kxOwned v(
      kxCreateObjectArray("thing", 2, dims, properties({{"P", kxCreateLogicalScalar(true)}})));
  EXPECT_EQ(jsonValue(v.get()),
            R"({"class": "thing", "size": [1, 1], "properties": {"class": "struct", )"
            R"("size": [1, 1], "fields": ["P"], "data": [{"P": {"class": "logical", )"
            R"("size": [1, 1], "real": [1]}}]}})");
}

TEST(JsonWriter, EmptySlotsOfCellsAndStructsAreEmptyDoubles) {
  kxOwned c(kxCreateCellMatrix(1, 1));
  EXPECT_EQ(jsonValue(c.get()),
            R"({"class": "cell", "size": [1, 1], "data": [{"class": "double", "size": [0, 0], )"
            R"("real": []}]})");
  const char* names[] = {"f"};
  kxOwned s(kxCreateStructMatrix(1, 1, 1, names));
  EXPECT_EQ(jsonValue(s.get()),
            R"({"class": "struct", "size": [1, 1], "fields": ["f"], "data": [{"f": )"
            R"({"class": "double", "size": [0, 0], "real": []}}]})");
}

TEST(JsonWriter, TextEscapesEverythingButPrintableAscii) {
  std::string out;
  appendJsonString(out, std::u16string{u'a', u'"', u'\\', 0, 0x1F, 0x7F, 0xE9, 0xD800, u'~'});
  EXPECT_EQ(out, R"("a\"\\\u0000\u001F\u007F\u00E9\uD800~")");
}

TEST(JsonWriter, CharMatrixRowsAreReadAcrossColumns) {
  kxOwned a(kxCreateCharMatrixFromRows({u"ab", u"c"}));
  EXPECT_EQ(jsonValue(a.get()), R"({"class": "char", "size": [2, 2], "rows": ["ab", "c "]})");
}

TEST(JsonWriter, SinglesUseTheShortestDigitsOfTheSingle) {
  kxOwned a(kxCreateNumericMatrix(1, 3, kxSINGLE_CLASS, kxREAL));
  float* f = static_cast<float*>(kxGetData(a.get()));
  f[0] = 0.1f;
  f[1] = 1.0f / 3.0f;
  f[2] = -INFINITY;
  EXPECT_EQ(jsonValue(a.get()),
            R"({"class": "single", "size": [1, 3], "real": [0.1, 0.33333334, "-Inf"]})");
}

TEST(JsonWriter, RecordsWrapValuesAndMessages) {
  kxOwned a(kxCreateDoubleScalar(2));
  EXPECT_EQ(jsonDisplayRecord("x", a.get()),
            R"({"name": "x", "value": {"class": "double", "size": [1, 1], "real": [2]}})");
  SourceLocation where{"s.tw", 3, 5, "x = y"};
  EXPECT_EQ(jsonMessageRecord("warning", "a:b", "caf\xC3\xA9", where),
            R"({"warning": {"identifier": "a:b", "message": "caf\u00E9", "file": "s.tw", )"
            R"("line": 3, "column": 5}})");
  // At the prompt there is no file, and a location can be unknown.
  EXPECT_EQ(jsonMessageRecord("error", "a:b", "m", SourceLocation{}),
            R"({"error": {"identifier": "a:b", "message": "m", "file": null, "line": null, )"
            R"("column": null}})");
}

}  // namespace
}  // namespace tw
