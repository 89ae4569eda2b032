// %C and %D columns read the same whichever way the text comes: a UTF-8
// file as bytes or decoded, in normal blocks (where most fields take the
// reader's one-scan path) or in blocks of three units (where most reach the
// window's end and take the full reader), and a char array. Random rows of
// quotes, blanks, delimiters, comments, line ends and multi-byte text, under
// the options that change how a field ends.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "datetime/category_collector.h"
#include "datetime/columns.h"
#include "support/builtin_calls.h"
#include "support/scratch_dir.h"
#include "textscan/column.h"
#include "textscan/read_paths_check.h"
#include "textscan/read_switches.h"
#include "twhost/kx_data.h"

namespace {

using textscan::check::callSlot;
using textscan::check::transcript;

constexpr size_t kTinyBlock = 3;
constexpr char kError[] = "KORVAN:";

// The outcome of a read, with datetime and categorical values opened up
// into their properties (their data is not in the object itself).
std::string describe(const kxArray* a) {
  if (!a || !kxIsObject(a)) return transcript(a);
  std::string out = std::string(kxGetObjectClassName(a)) + "(";
  const kxArray* props = kxGetObjectProperties(a);
  for (int f = 0; props && f < kxGetNumberOfFields(props); ++f) {
    out += std::string(kxGetFieldNameByNumber(props, f)) + "=" +
           transcript(kxGetFieldByNumber(props, 0, f)) + ";";
  }
  return out + ")";
}

std::string outcomeOf(const kxArray* source, const std::vector<const kxArray*>& args) {
  std::vector<const kxArray*> all{source};
  all.insert(all.end(), args.begin(), args.end());
  std::string error;
  std::vector<kxOwned> out = callSlot(Tarnwicks::FileIO::kSlotTextscan, 2, all, error);
  if (!error.empty()) return error;
  std::string text;
  for (size_t i = 0; i < kxGetNumberOfElements(out[0].get()); ++i) {
    text += describe(kxGetCell(out[0].get(), i)) + "\n";
  }
  return text + "@" + std::to_string(kxGetScalar(out[1].get()));
}

struct Call {
  std::string format;
  std::vector<std::pair<std::string, std::string>> options;

  std::vector<kxOwned> args() const {
    std::vector<kxOwned> a;
    a.emplace_back(kxCreateString(format.c_str()));
    for (const auto& [name, value] : options) {
      a.emplace_back(kxCreateString(name.c_str()));
      // Numbers as numbers, the rest as text.
      bool number =
          !value.empty() && (std::isdigit(static_cast<unsigned char>(value[0])) || value[0] == '-');
      a.emplace_back(number ? kxCreateDoubleScalar(std::stod(value))
                            : kxCreateString(value.c_str()));
    }
    return a;
  }
};

// Each element of a categorical as its category's name, none for undefined.
std::vector<std::optional<std::u16string>> namesOf(const kxArray* categorical) {
  const kxArray* props = kxGetObjectProperties(categorical);
  const kxArray* categories = kxGetField(props, 0, "Categories");
  const kxArray* codes = kxGetField(props, 0, "Codes");
  std::vector<std::optional<std::u16string>> out;
  for (size_t i = 0; i < kxGetNumberOfElements(codes); ++i) {
    auto code = static_cast<size_t>(KxData(codes).asDouble(i));
    if (code == 0) {
      out.emplace_back();
    } else {
      out.emplace_back(matrix::get_ustring(kxGetCell(categories, code - 1)));
    }
  }
  return out;
}

// What %C must give for the texts %q reads from the same fields.
std::vector<std::optional<std::u16string>> categoriesOfTexts(const kxArray* cell) {
  std::vector<std::optional<std::u16string>> out;
  for (size_t i = 0; i < kxGetNumberOfElements(cell); ++i) {
    const kxArray* e = kxGetCell(cell, i);
    std::u16string text = e ? matrix::get_ustring(e) : std::u16string();
    if (datetime::isUndefinedCategory(text)) {
      out.emplace_back();
    } else {
      out.emplace_back(text);
    }
  }
  return out;
}

class ColumnReadPaths : public test_support::ScratchDir {
 protected:
  static void SetUpTestSuite() { datetime::installTextscanColumns(); }

  test_support::CaughtWarnings quiet;  // guessed formats and comments warn
  int readsWithValues = 0;

  std::string readFile(const std::string& path, const Call& call, bool bytes, size_t block) {
    textscan::setFastPathEnabled(bytes);
    textscan::setFileBlockUnits(block);
    std::vector<kxOwned> owned = call.args();
    std::vector<const kxArray*> args;
    for (const kxOwned& a : owned) args.push_back(a.get());
    kxOwned name(kxCreateString(path.c_str()));
    std::string error;
    std::vector<kxOwned> fid = callSlot(Tarnwicks::FileIO::kSlotFopen, 1, {name.get()}, error);
    std::string outcome = outcomeOf(fid[0].get(), args);
    callSlot(Tarnwicks::FileIO::kSlotFclose, 1, {fid[0].get()}, error);
    textscan::setFastPathEnabled(true);
    textscan::setFileBlockUnits(0);
    return outcome;
  }

  void expectSameEverywhere(const std::string& text, const Call& call) {
    std::string path = writeFile("input.txt", text);
    std::string bytes = readFile(path, call, true, 0);
    if (bytes.compare(0, std::size(kError) - 1, kError) != 0) ++readsWithValues;
    SCOPED_TRACE("format \"" + call.format + "\" on \"" + text + "\"");
    EXPECT_EQ(readFile(path, call, false, 0), bytes);
    EXPECT_EQ(readFile(path, call, true, kTinyBlock), bytes);
    EXPECT_EQ(readFile(path, call, false, kTinyBlock), bytes);
    if (text.empty()) return;  // an empty char array is refused outright
    std::u16string decoded;
    textscan::FieldText(text.data(), text.size()).appendTo(decoded);
    kxOwned source(kxCreateStringFromNChars_UTF16(decoded.data(), decoded.size()));
    std::vector<kxOwned> owned = call.args();
    std::vector<const kxArray*> args;
    for (const kxOwned& a : owned) args.push_back(a.get());
    // The position counts units of the char array, not bytes of the file.
    std::string inMemory = outcomeOf(source.get(), args);
    EXPECT_EQ(inMemory.substr(0, inMemory.rfind('@')), bytes.substr(0, bytes.rfind('@')));
  }
};

TEST_F(ColumnReadPaths, RandomRowsAgree) {
  const char* const pieces[] = {
      "alpha", "b",    "caf\xc3\xa9", "\"q,uo\"\"te\"", "\"",         " ",   "\t", ",", ",,", "\n",
      "\r\n",  "#c\n", "<undefined>", "2024-01-02",     "1999-12-31", "Inf", "x y"};
  const Call calls[] = {
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
  for (const Call& call : calls) {
    for (int t = 0; t < kTextsPerCall; ++t) {
      std::string text;
      int n = static_cast<int>(rng() % kMostPieces);
      for (int k = 0; k < n; ++k) text += pieces[rng() % std::size(pieces)];
      expectSameEverywhere(text, call);
    }
  }
  // Most reads give values: the comparisons are not of errors alone.
  EXPECT_GT(readsWithValues, static_cast<int>(std::size(calls)) * kTextsPerCall / 2);
}

// The fields of %C are those of %q, which takes the full reader every time
// (a string column has no one-scan path), and their categories follow from
// the texts %q gives.
TEST_F(ColumnReadPaths, CategoriesAreTheFieldsThatQuotedStringsRead) {
  const char* const pieces[] = {"alpha", "b",  "\"q,uo\"\"te\"", "\"",   " ",           "\t", ",",
                                ",,",    "\n", "\r\n",           "#c\n", "<undefined>", "x y"};
  const std::vector<std::pair<std::string, std::string>> optionSets[] = {
      {},
      {{"Delimiter", ","}},
      {{"Delimiter", ","}, {"MultipleDelimsAsOne", "1"}},
      {{"CommentStyle", "#"}},
      {{"Whitespace", ""}, {"Delimiter", ","}},
  };
  std::mt19937 rng(31);
  constexpr int kTextsPerOptions = 60;
  constexpr int kMostPieces = 30;
  for (const auto& options : optionSets) {
    for (int t = 0; t < kTextsPerOptions; ++t) {
      std::string text;
      int n = 1 + static_cast<int>(rng() % kMostPieces);
      for (int k = 0; k < n; ++k) text += pieces[rng() % std::size(pieces)];
      SCOPED_TRACE("text \"" + text + "\"");
      std::u16string wide(text.begin(), text.end());
      kxOwned source(kxCreateStringFromNChars_UTF16(wide.data(), wide.size()));
      auto read = [&](const char* format) {
        std::vector<kxOwned> owned = Call{format, options}.args();
        std::vector<const kxArray*> args{source.get()};
        for (const kxOwned& a : owned) args.push_back(a.get());
        std::string error;
        std::vector<kxOwned> out = callSlot(Tarnwicks::FileIO::kSlotTextscan, 2, args, error);
        EXPECT_EQ(error, "");
        return out;
      };
      std::vector<kxOwned> categories = read("%C");
      std::vector<kxOwned> texts = read("%q");
      if (!categories[0] || !texts[0]) continue;
      EXPECT_EQ(namesOf(kxGetCell(categories[0].get(), 0)),
                categoriesOfTexts(kxGetCell(texts[0].get(), 0)));
      EXPECT_EQ(kxGetScalar(categories[1].get()), kxGetScalar(texts[1].get()));
    }
  }
}

}  // namespace
