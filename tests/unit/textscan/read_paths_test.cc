// A UTF-8 file read as bytes and read decoded gives the same result and
// position; reads in tiny blocks (every refill and drop within a few bytes)
// give the same as reads in normal blocks; a char array of the decoded
// text gives the same result as the file; and a char array of ASCII text
// read as bytes gives the same result and position as read in units.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/builtin_calls.h"
#include "support/scratch_dir.h"
#include "textscan/column.h"
#include "textscan/read_paths_check.h"
#include "textscan/read_switches.h"

namespace {

using namespace textscan::check;

constexpr size_t kTinyBlock = 3;

struct Switches {
  ~Switches() {
    textscan::setFastPathEnabled(true);
    textscan::setFileBlockUnits(0);
  }
};

ReadOutcome readWith(const std::string& path, const MadeCall& call, bool bytes, size_t block) {
  Switches restore;
  textscan::setFastPathEnabled(bytes);
  textscan::setFileBlockUnits(block);
  return readFile(path, "UTF-8", call.view());
}

ReadOutcome readTextWith(const kxArray* source, const MadeCall& call, bool bytes, size_t block) {
  Switches restore;
  textscan::setFastPathEnabled(bytes);
  textscan::setFileBlockUnits(block);
  return readSource(source, call.view());
}

class ReadPaths : public test_support::ScratchDir {
 protected:
  test_support::CaughtWarnings quiet;  // unclosed comments warn

  void expectSameEverywhere(const std::string& text, const MadeCall& call) {
    std::string path = writeFile("input.txt", text);
    ReadOutcome bytes = readWith(path, call, true, 0);
    SCOPED_TRACE("format \"" + call.format + "\" on \"" + text + "\"");
    EXPECT_EQ(readWith(path, call, false, 0), bytes);
    EXPECT_EQ(readWith(path, call, true, kTinyBlock), bytes);
    EXPECT_EQ(readWith(path, call, false, kTinyBlock), bytes);
    if (text.empty()) return;  // an empty char array is refused outright
    std::u16string decoded;
    textscan::FieldText(text.data(), text.size()).appendTo(decoded);
    kxOwned source(kxCreateStringFromNChars_UTF16(decoded.data(), decoded.size()));
    ReadOutcome units = readTextWith(source.get(), call, false, 0);
    EXPECT_EQ(units.result, bytes.result);
    EXPECT_EQ(readTextWith(source.get(), call, true, 0), units);
    EXPECT_EQ(readTextWith(source.get(), call, true, kTinyBlock), units);
  }
};

TEST_F(ReadPaths, ChosenCasesAgree) {
  struct Case {
    const char* text;
    uint8_t choice[kChoiceBytes];
  };
  const Case cases[] = {
      {"1,2\n3,4\n", {1, 0, 0, 0, 0, 1, 0, 0}},
      {"caf\xc3\xa9,\"a,\"\"b\",3\r\n\xe2\x82\xac,x,4\r\n", {2, 2, 3, 1, 0, 1, 0, 0}},
      {"# note\n1 2 /* x */ 3\n\xf0\x9f\x98\x80 NA 5", {2, 0, 2, 0, 0, 0, 8 | 64, 0}},
      {"1\xef\xbf\xbf 2 3", {0, 0, 0, 0, 0, 0, 0, 0}},
      {"\xe2\x82\xac\xe2\x82\xac 12 34\n5", {1, 0, 0, 0, 0, 0, 0, 1 + 4 * 5}},
      {"bad \xff\xfe bytes,\xed\xa0\x80,\xe2\x82", {2, 2, 2, 2, 0, 1, 2, 0}},
      {"1\xc3\xa9 2\xc3\xa9 3", {0, 0, 0, 0, 0, 5, 0, 0}},
      // ASCII, so a char array of it is read as bytes: widths and %c, a
      // skip, a line end given, and a failure partway.
      {"abcdef,1.5\nghijkl,2.5\n", {1, 14, 15, 0, 0, 1, 0, 0}},
      {"12345 678\n9 10 11\n", {3, 17, 1, 0, 0, 0, 0, 1 + 4 * 1}},
      {"1 2 3\n4 5 6\n", {0, 0, 0, 0, 0, 0, 0, 1}},
      {"1,x,3\n", {1, 1, 0, 0, 0, 1, 2, 0}},
      // A quote ends a malformed sequence: quotes go after decoding.
      {"\"ab\xe2\"\x82\xac,1\n\"x\"\"y\",2\n", {1, 3, 0, 0, 0, 1, 0, 0}},
  };
  for (const Case& c : cases) expectSameEverywhere(c.text, makeCall(c.choice));
}

TEST_F(ReadPaths, RandomCallsAgree) {
  std::mt19937 rng(13);
  const char* const pieces[] = {"1",
                                "23",
                                ".5",
                                "-",
                                "e",
                                "i",
                                "+",
                                "x",
                                "a",
                                "b",
                                ",",
                                ";",
                                " ",
                                "\t",
                                "\n",
                                "\r",
                                "\"",
                                "'",
                                "#",
                                "/*",
                                "*/",
                                "NA",
                                "NaN",
                                "\xc3\xa9",
                                "\xe2\x82\xac",
                                "\xf0\x9f\x98\x80",
                                "\xff",
                                "\xef\xbf"};
  // The pieces from "\xc3\xa9" on are beyond ASCII; every other round
  // leaves them out, so that char arrays are read as bytes too.
  constexpr size_t kAsciiPieces = 23;
  for (int round = 0; round < 400; ++round) {
    uint8_t choice[kChoiceBytes];
    for (uint8_t& b : choice) b = static_cast<uint8_t>(rng());
    size_t usable = round % 2 ? kAsciiPieces : std::size(pieces);
    std::string text;
    for (size_t k = rng() % 40; k > 0; --k) text += pieces[rng() % usable];
    expectSameEverywhere(text, makeCall(choice));
  }
}

}  // namespace
