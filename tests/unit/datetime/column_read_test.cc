// %C and %D columns read the same whichever way the text comes: a UTF-8
// file as bytes or decoded, in normal blocks (where most fields take the
// reader's one-scan path) or in blocks of three units (where most reach the
// window's end and take the full reader), and a char array. Random rows of
// quotes, blanks, delimiters, comments, line ends and multi-byte text, under
// the options that change how a field ends.
#include <gtest/gtest.h>

#include <cctype>
#include <random>
#include <string>
#include <vector>

#include "datetime/column_read_check.h"
#include "datetime/columns.h"
#include "support/builtin_calls.h"
#include "support/scratch_dir.h"
#include "textscan/column.h"

namespace {

using namespace datetime::check;

constexpr size_t kTinyBlock = 3;
constexpr char kError[] = "KORVAN:";

using Options = std::vector<std::pair<std::string, std::string>>;

// Name-value pairs as arrays: numbers as numbers, the rest as text.
std::vector<kxOwned> optionArrays(const Options& options) {
  std::vector<kxOwned> a;
  for (const auto& [name, value] : options) {
    a.emplace_back(kxCreateString(name.c_str()));
    bool number =
        !value.empty() && (std::isdigit(static_cast<unsigned char>(value[0])) || value[0] == '-');
    a.emplace_back(number ? kxCreateDoubleScalar(std::stod(value)) : kxCreateString(value.c_str()));
  }
  return a;
}

std::vector<const kxArray*> borrowed(const std::vector<kxOwned>& owned) {
  std::vector<const kxArray*> out;
  for (const kxOwned& a : owned) out.push_back(a.get());
  return out;
}

std::string randomText(std::mt19937& rng, const std::vector<const char*>& pieces, int most) {
  std::string text;
  int n = 1 + static_cast<int>(rng() % static_cast<unsigned>(most));
  for (int k = 0; k < n; ++k) text += pieces[rng() % pieces.size()];
  return text;
}

class ColumnReadPaths : public test_support::ScratchDir {
 protected:
  static void SetUpTestSuite() { datetime::installTextscanColumns(); }

  test_support::CaughtWarnings quiet;  // guessed formats and comments warn
  int readsWithValues = 0;

  void expectSameEverywhere(const std::string& text, const std::string& format,
                            const Options& options) {
    std::vector<kxOwned> owned = optionArrays(options);
    owned.insert(owned.begin(), kxOwned(kxCreateString(format.c_str())));
    std::vector<const kxArray*> args = borrowed(owned);
    std::string path = writeFile("input.txt", text);
    std::string bytes = fileOutcome(path, args, true, 0);
    if (bytes.compare(0, std::size(kError) - 1, kError) != 0) ++readsWithValues;
    SCOPED_TRACE("format \"" + format + "\" on \"" + text + "\"");
    EXPECT_EQ(fileOutcome(path, args, false, 0), bytes);
    EXPECT_EQ(fileOutcome(path, args, true, kTinyBlock), bytes);
    EXPECT_EQ(fileOutcome(path, args, false, kTinyBlock), bytes);
    std::u16string decoded;
    textscan::FieldText(text.data(), text.size()).appendTo(decoded);
    kxOwned source(kxCreateStringFromNChars_UTF16(decoded.data(), decoded.size()));
    EXPECT_EQ(withoutPosition(outcomeOf(source.get(), args)), withoutPosition(bytes));
  }
};

TEST_F(ColumnReadPaths, RandomRowsAgree) {
  const std::vector<const char*> pieces = {
      "alpha", "b",           "caf\xc3\xa9", "\"q,uo\"\"te\"", "\"",   " ",   "\t",
      ",",     ",,",          "\n",          "\r\n",           "#c\n", "Inf", "x y",
      "2024",  "<undefined>", "2024-01-02",  "1999-12-31",
  };
  const std::pair<std::string, Options> calls[] = {
      {"%C", {}},
      {"%C %C", {{"Delimiter", ","}}},
      {"%C %f", {{"Delimiter", ","}, {"EmptyValue", "-1"}}},
      {"%C", {{"CommentStyle", "#"}}},
      {"%C %C", {{"Delimiter", ","}, {"MultipleDelimsAsOne", "1"}}},
      {"%C", {{"Whitespace", ""}, {"Delimiter", ","}}},
      {"%C", {{"EndOfLine", "\\r\\n"}}},
      {"%C", {{"Delimiter", ",,"}}},
      {"%{yyyy-MM-dd}D %C", {{"Delimiter", ","}, {"ReturnOnError", "1"}}},
      {"%C %{yyyy-MM-dd}D", {}},
  };
  std::mt19937 rng(29);
  constexpr int kTextsPerCall = 40;
  constexpr int kMostPieces = 24;
  for (const auto& [format, options] : calls) {
    for (int t = 0; t < kTextsPerCall; ++t) {
      expectSameEverywhere(randomText(rng, pieces, kMostPieces), format, options);
    }
  }
  // Most reads give values: the comparisons are not of errors alone.
  EXPECT_GT(readsWithValues, static_cast<int>(std::size(calls)) * kTextsPerCall / 2);
}

// The fields of %C, read from a char array (whole in the reader's window,
// so that plain fields take its one-scan path), are those that %q reads
// from the same text in a file in tiny blocks (where nearly every field
// takes the full reader), and their categories follow from those texts.
TEST_F(ColumnReadPaths, CategoriesAreTheFieldsThatTheFullReaderFinds) {
  const std::vector<const char*> pieces = {
      "alpha", "b",  "\"q,uo\"\"te\"", "\"",   " ",           "\t",  ",",
      ",,",    "\n", "\r\n",           "#c\n", "<undefined>", "x y", "caf\xc3\xa9"};
  const std::pair<int, Options> calls[] = {
      {1, {}},
      {2, {{"Delimiter", ","}}},
      {2, {{"Delimiter", ","}, {"MultipleDelimsAsOne", "1"}}},
      {1, {{"CommentStyle", "#"}}},
      {1, {{"Whitespace", ""}, {"Delimiter", ","}}},
  };
  std::mt19937 rng(31);
  constexpr int kTextsPerCall = 60;
  constexpr int kMostPieces = 30;
  for (const auto& [columns, options] : calls) {
    std::vector<kxOwned> owned = optionArrays(options);
    for (int t = 0; t < kTextsPerCall; ++t) {
      std::string text = randomText(rng, pieces, kMostPieces);
      std::string path = writeFile("input.txt", text);
      std::u16string wide;
      textscan::FieldText(text.data(), text.size()).appendTo(wide);
      kxOwned source(kxCreateStringFromNChars_UTF16(wide.data(), wide.size()));
      std::string why;
      EXPECT_TRUE(categoriesMatchQuotedTexts(source.get(), path, columns, borrowed(owned), why))
          << why << " on \"" << text << "\"";
    }
  }
}

}  // namespace
