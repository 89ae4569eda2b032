// Categories: codes in order of first appearance, names sorted, quotes and
// undefined fields, and the narrowing of the code class.
#include "datetime/category_collector.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "twhost/kx_data.h"

namespace {

using datetime::CategoricalFieldConverter;
using datetime::isUndefinedCategory;

struct Categorical {
  std::vector<std::u16string> categories;
  std::vector<double> codes;  // 1-based positions in categories, 0 undefined
  kxClassID codeClass = kxUNKNOWN_CLASS;
};

Categorical collect(const std::vector<std::u16string>& fields) {
  CategoricalFieldConverter c;
  for (const auto& f : fields) c.addField(f.data(), f.size());
  EXPECT_EQ(c.fieldCount(), fields.size());
  kxOwned value(c.getResult());
  EXPECT_STREQ(kxGetObjectClassName(value.get()), "categorical");
  EXPECT_EQ(kxGetNumberOfElements(value.get()), fields.size());
  const kxArray* props = kxGetObjectProperties(value.get());
  const kxArray* cats = kxGetField(props, 0, "Categories");
  const kxArray* codes = kxGetField(props, 0, "Codes");
  Categorical out;
  for (size_t i = 0; i < kxGetNumberOfElements(cats); ++i) {
    out.categories.push_back(matrix::get_ustring(kxGetCell(cats, i)));
  }
  for (size_t i = 0; i < kxGetNumberOfElements(codes); ++i) {
    out.codes.push_back(KxData(codes).asDouble(i));
  }
  out.codeClass = kxGetClassID(codes);
  return out;
}

TEST(Categories, NamesAreSortedAndCodesPointAtThem) {
  Categorical c = collect({u"pear", u"apple", u"pear", u"Zebra", u"apple", u"app"});
  EXPECT_EQ(c.categories, (std::vector<std::u16string>{u"Zebra", u"app", u"apple", u"pear"}));
  EXPECT_EQ(c.codes, (std::vector<double>{4, 3, 4, 1, 3, 2}));
  EXPECT_EQ(c.codeClass, kxUINT8_CLASS);
}

TEST(Categories, QuotedTextSharesTheCodeOfItsPlainForm) {
  Categorical c = collect({u"say \"hi\"", u"\"say \"\"hi\"\"\"", u"\"x\"", u"x"});
  EXPECT_EQ(c.categories, (std::vector<std::u16string>{u"say \"hi\"", u"x"}));
  EXPECT_EQ(c.codes, (std::vector<double>{1, 1, 2, 2}));
}

TEST(Categories, BlankAndUndefinedFieldsHaveNoCategory) {
  Categorical c = collect(
      {u"", u"   ", u"<undefined>", u" <undefined>\t", u"<UNDEFINED>", u"\"\"", u" a ", u"a"});
  EXPECT_EQ(c.categories, (std::vector<std::u16string>{u" a ", u"<UNDEFINED>", u"a"}));
  EXPECT_EQ(c.codes, (std::vector<double>{0, 0, 0, 0, 2, 0, 1, 3}));
}

TEST(Categories, UndefinedTextRule) {
  EXPECT_TRUE(isUndefinedCategory(u""));
  EXPECT_TRUE(isUndefinedCategory(u" \t "));
  EXPECT_TRUE(isUndefinedCategory(u"  <undefined>  "));
  EXPECT_FALSE(isUndefinedCategory(u"<undefined>x"));
  EXPECT_FALSE(isUndefinedCategory(u"x<undefined>"));
  EXPECT_FALSE(isUndefinedCategory(u"<undefined"));
}

TEST(Categories, CodeClassNarrowsByTheNumberOfCategories) {
  auto fields = [](int n) {
    std::vector<std::u16string> out;
    for (int i = 0; i < n; ++i) {
      std::string s = "c" + std::to_string(i);
      out.emplace_back(s.begin(), s.end());
    }
    return out;
  };
  EXPECT_EQ(collect(fields(254)).codeClass, kxUINT8_CLASS);
  Categorical wide = collect(fields(255));
  EXPECT_EQ(wide.codeClass, kxUINT16_CLASS);
  // Codes still point at the right names after the sort ("c10" before "c2").
  for (size_t i = 0; i < wide.codes.size(); ++i) {
    std::string s = "c" + std::to_string(i);
    EXPECT_EQ(wide.categories[static_cast<size_t>(wide.codes[i]) - 1],
              std::u16string(s.begin(), s.end()));
  }
}

TEST(Categories, AColumnWithoutFieldsIsEmpty) {
  Categorical c = collect({});
  EXPECT_TRUE(c.categories.empty());
  EXPECT_TRUE(c.codes.empty());
  EXPECT_EQ(c.codeClass, kxUINT8_CLASS);
}

}  // namespace
