// The message catalogue: every identifier that the library and the host
// raise has a text with a place for each argument, every stream error code
// has its key and text, and arguments land in their places.
//
// The identifiers are found where they are raised: the sources under src/,
// host/ and include/ are read for the calls that name an identifier by its
// literal catalogue and key. An identifier added to the code without a text
// fails here; no list of them is kept in the test.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "twhost/catalog.h"
#include "twhost/errors.h"
#include "twhost/stream_errors.h"
#include "twhost/text.h"

namespace {

using Tarnwicks::FileIO::StreamError;

// ---- reading the sources --------------------------------------------------------

// A source text with its comments blanked out (string literals kept), so
// that an example in a comment counts for nothing.
std::string withoutComments(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '"' || c == '\'') {
      size_t j = i + 1;
      while (j < text.size() && text[j] != c) j += text[j] == '\\' ? 2 : 1;
      out.append(text, i, j + 1 - i);
      i = j;
    } else if (text.compare(i, 2, "//") == 0) {
      while (i < text.size() && text[i] != '\n') ++i;
      out += '\n';
    } else if (text.compare(i, 2, "/*") == 0) {
      size_t close = text.find("*/", i + 2);
      i = close == std::string::npos ? text.size() : close + 1;
      out += ' ';
    } else {
      out += c;
    }
  }
  return out;
}

// The arguments of the call whose "(" stands at `open`, split at the commas
// of its own level.
std::vector<std::string> callArguments(const std::string& text, size_t open) {
  std::vector<std::string> args(1);
  int depth = 0;
  for (size_t i = open + 1; i < text.size(); ++i) {
    char c = text[i];
    if (c == '"' || c == '\'') {
      size_t j = i + 1;
      while (j < text.size() && text[j] != c) j += text[j] == '\\' ? 2 : 1;
      args.back().append(text, i, j + 1 - i);
      i = j;
      continue;
    }
    if (c == '(' || c == '[' || c == '{') ++depth;
    if (c == ')' || c == ']' || c == '}') {
      if (depth == 0) break;
      --depth;
    }
    if (c == ',' && depth == 0) {
      args.emplace_back();
    } else {
      args.back() += c;
    }
  }
  if (args.size() == 1 && args[0].find_first_not_of(" \n\t") == std::string::npos) args.clear();
  return args;
}

// The string literals in a piece of code.
std::vector<std::string> literals(const std::string& code) {
  std::vector<std::string> found;
  static const std::regex literal("\"([^\"\\\\]*)\"");
  for (std::sregex_iterator it(code.begin(), code.end(), literal), end; it != end; ++it) {
    found.push_back((*it)[1]);
  }
  return found;
}

bool isOneLiteral(const std::string& code) {
  static const std::regex literal("\\s*\"[^\"\\\\]*\"\\s*");
  return std::regex_match(code, literal);
}

struct Raised {
  std::set<size_t> argumentCounts;  // one per call found
  std::string where;                // the first file that raises it
};

struct SourceIdentifiers {
  std::map<std::string, Raised> identifiers;  // "catalog:key"
  std::set<int> numbered;                     // n of kxErrMsg(n)
};

void readSource(const std::filesystem::path& path, SourceIdentifiers& out) {
  std::ifstream in(path);
  std::stringstream all;
  all << in.rdbuf();
  const std::string text = withoutComments(all.str());
  const std::string file = path.filename().string();

  // kxThrowId("catalog", "key", args...) and kxMsg(...): a key may be a
  // choice between literals ("a" : "b"); a catalogue or key held in a
  // variable is not followed.
  static const std::regex call("\\b(kxThrowId|kxMsg)\\s*\\(");
  for (std::sregex_iterator it(text.begin(), text.end(), call), end; it != end; ++it) {
    size_t open = static_cast<size_t>(it->position() + it->length() - 1);
    std::vector<std::string> args = callArguments(text, open);
    if (args.size() < 2 || !isOneLiteral(args[0])) continue;
    const std::string catalog = literals(args[0])[0];
    for (const std::string& key : literals(args[1])) {
      Raised& r = out.identifiers[catalog + ":" + key];
      r.argumentCounts.insert(args.size() - 2);
      if (r.where.empty()) r.where = file;
    }
  }
  // Error tags: a type per identifier, raised without arguments.
  static const std::regex tag(
      "catalog\\s*=\\s*\"([^\"]+)\";\\s*static constexpr const "
      "char\\*\\s*key\\s*=\\s*\"([^\"]+)\"");
  for (std::sregex_iterator it(text.begin(), text.end(), tag), end; it != end; ++it) {
    Raised& r = out.identifiers[(*it)[1].str() + ":" + (*it)[2].str()];
    r.argumentCounts.insert(0);
    if (r.where.empty()) r.where = file;
  }
  // Numbered messages, raised by number or kept as a default number.
  static const std::regex numbered("\\bkxErrMsg\\(\\s*(\\d+)\\s*\\)|messageNumber\\s*=\\s*(\\d+)");
  for (std::sregex_iterator it(text.begin(), text.end(), numbered), end; it != end; ++it) {
    out.numbered.insert(std::stoi((*it)[1].matched ? (*it)[1].str() : (*it)[2].str()));
  }
}

const SourceIdentifiers& sourceIdentifiers() {
  static const SourceIdentifiers found = [] {
    SourceIdentifiers s;
    for (const char* folder : {"src", "host", "include"}) {
      for (const auto& entry : std::filesystem::recursive_directory_iterator(
               std::filesystem::path(TW_SOURCE_DIR) / folder)) {
        const std::string ext = entry.path().extension().string();
        if (entry.is_regular_file() && (ext == ".cc" || ext == ".h")) readSource(entry.path(), s);
      }
    }
    return s;
  }();
  return found;
}

// ---- the texts ------------------------------------------------------------------

// The placeholders {N} that a text holds.
std::set<int> placeholders(const std::string& text) {
  std::set<int> found;
  for (size_t i = text.find('{'); i != std::string::npos; i = text.find('{', i + 1)) {
    size_t close = text.find('}', i);
    if (close == std::string::npos || close == i + 1) continue;
    std::string inside = text.substr(i + 1, close - i - 1);
    if (inside.find_first_not_of("0123456789") == std::string::npos)
      found.insert(std::stoi(inside));
  }
  return found;
}

std::set<int> firstPlaces(size_t n) {
  std::set<int> places;
  for (int i = 0; i < static_cast<int>(n); ++i) places.insert(i);
  return places;
}

resource_core::BaseMsgID split(const std::string& identifier) {
  size_t colon = identifier.rfind(':');
  return {identifier.substr(0, colon), identifier.substr(colon + 1)};
}

TEST(HostCatalog, SourcesAreReadForTheIdentifiersTheyRaise) {
  // A reader that found nothing would let every check below pass.
  const auto& ids = sourceIdentifiers().identifiers;
  ASSERT_TRUE(ids.count("KORVAN:FileIO:InvalidFid"));
  ASSERT_TRUE(ids.count("KORVAN:iofun:InvalidDefaultEncoding"));     // one side of a choice
  ASSERT_TRUE(ids.count("KORVAN:legacy_two_part:badprecision_mx"));  // an error tag
  ASSERT_TRUE(ids.count("KORVAN:internal"));                         // a call over several lines
  EXPECT_EQ(ids.at("KORVAN:iofun:InvalidEncoding").argumentCounts, std::set<size_t>{1});
  EXPECT_TRUE(sourceIdentifiers().numbered.count(26));
  EXPECT_TRUE(sourceIdentifiers().numbered.count(34));  // a default number
}

TEST(HostCatalog, EveryIdentifierRaisedHasATextWithAPlaceForEachArgument) {
  for (const auto& [identifier, raised] : sourceIdentifiers().identifiers) {
    if (!kxHasMessage(identifier)) {
      ADD_FAILURE() << identifier << ", raised in " << raised.where << ", has no text";
      continue;
    }
    std::string text = kxMessageText(split(identifier));
    EXPECT_FALSE(text.empty()) << identifier;
    // Every call gives the same arguments, and the text has a place for each.
    if (raised.argumentCounts.size() != 1) {
      ADD_FAILURE() << identifier << " is raised with different counts of arguments";
      continue;
    }
    EXPECT_EQ(placeholders(text), firstPlaces(*raised.argumentCounts.begin()))
        << identifier << ": " << text;
  }
}

TEST(HostCatalog, EveryNumberedMessageRaisedHasAText) {
  for (int n : sourceIdentifiers().numbered) {
    std::string id = "KORVAN:legacy:" + std::to_string(n);
    EXPECT_TRUE(kxHasMessage(id)) << id;
    try {
      kxErrMsg(n);
    } catch (const fl::except::IUserException& e) {
      EXPECT_EQ(e.get_error_id(), id);
      EXPECT_EQ(e.get_message(), kxMessageText({"KORVAN:legacy", std::to_string(n)}));
    }
  }
}

TEST(HostCatalog, EveryTextNumbersItsPlaceholdersFromZero) {
  for (const std::string& identifier : kxCatalogIdentifiers()) {
    std::string text = kxMessageText(split(identifier));
    std::set<int> places = placeholders(text);
    EXPECT_EQ(places, firstPlaces(places.size())) << identifier << ": " << text;
  }
}

TEST(HostCatalog, ArgumentsOfEveryKindArePlacedInOrder) {
  std::string text = kxMessageText(kxMsg("KORVAN:textscan", "BadFormatString", 7L,
                                         std::u16string(u"%q \u00E9"), std::string("detail")));
  size_t seven = text.find('7');
  size_t rest = text.find("%q \xC3\xA9");
  size_t detail = text.find("detail");
  ASSERT_NE(seven, std::string::npos) << text;
  ASSERT_NE(rest, std::string::npos) << text;
  ASSERT_NE(detail, std::string::npos) << text;
  EXPECT_EQ(text.find('{'), std::string::npos) << text;

  std::string shell = kxMessageText(
      kxMsg("KORVAN:shell", "ConversionFailed", std::string("cell"), std::string("int8")));
  EXPECT_LT(shell.find("cell"), shell.find("int8")) << shell;
}

TEST(HostCatalog, MissingArgumentsLeaveTheirPlaceholders) {
  std::string text = kxMessageText({"KORVAN:iofun", "InvalidEncoding"});
  EXPECT_NE(text.find("{0}"), std::string::npos) << text;
}

TEST(HostCatalog, ExceptionsTakeTheirMessageFromTheCatalogue) {
  try {
    kxThrowId("KORVAN:fwrite", "UnsupportedClass", std::string("cell"));
    FAIL();
  } catch (const fl::except::IUserException& e) {
    EXPECT_EQ(e.get_error_id(), "KORVAN:fwrite:UnsupportedClass");
    EXPECT_NE(e.get_message().find("cell"), std::string::npos);
  }
}

TEST(HostCatalog, UnknownIdentifierTextNamesIt) {
  EXPECT_FALSE(kxHasMessage("KORVAN:nowhere:nothing"));
  EXPECT_NE(kxMessageText({"KORVAN:nowhere", "nothing"}).find("KORVAN:nowhere:nothing"),
            std::string::npos);
}

TEST(HostCatalog, RegisteredMessagesAreFoundAndListed) {
  kxRegisterMessage("KORVAN:test:Registered", "got {0} and {1}");
  EXPECT_TRUE(kxHasMessage("KORVAN:test:Registered"));
  EXPECT_EQ(kxMessageText(kxMsg("KORVAN:test", "Registered", 1L, std::string("b"))), "got 1 and b");
  std::vector<std::string> all = kxCatalogIdentifiers();
  EXPECT_TRUE(std::find(all.begin(), all.end(), "KORVAN:test:Registered") != all.end());
}

TEST(HostCatalog, PlaceholderLikeTextThatIsNotOneStays) {
  kxRegisterMessage("KORVAN:test:Braces", "%{yyyy}D {x} {} {0");
  EXPECT_EQ(kxMessageText(kxMsg("KORVAN:test", "Braces", 5L)), "%{yyyy}D {x} {} {0");
}

// ---- stream error numbers ------------------------------------------------------

TEST(HostStreamErrors, ZeroHasNoText) {
  EXPECT_EQ(kxStreamErrorText(0), u"");
}

TEST(HostStreamErrors, EveryCodeHasItsOwnKeyAndItsText) {
  std::set<std::string> keys;
  for (int code = Tarnwicks::FileIO::kFirstStreamError; code >= Tarnwicks::FileIO::kLastStreamError;
       --code) {
    const char* key = kxStreamErrorKey(code);
    ASSERT_NE(key, nullptr) << code;
    EXPECT_TRUE(keys.insert(key).second) << key << " names two codes";
    std::string id = std::string("KORVAN:FileIO:") + key;
    ASSERT_TRUE(kxHasMessage(id)) << id;
    std::string text = kxMessageText({"KORVAN:FileIO", key});
    EXPECT_TRUE(placeholders(text).empty()) << id;
    EXPECT_EQ(kxStreamErrorText(code), fl::i18n::to_ustring(text)) << code;
  }
}

TEST(HostStreamErrors, KeysAreTheNamesOfTheCodes) {
  using Tarnwicks::FileIO::code;
  EXPECT_STREQ(kxStreamErrorKey(code(StreamError::NoHelp)), "NoHelp");
  EXPECT_STREQ(kxStreamErrorKey(code(StreamError::MatchingFailure)), "MatchingFailure");
  EXPECT_STREQ(kxStreamErrorKey(code(StreamError::InternalError)), "InternalError");
}

TEST(HostStreamErrors, OtherNumbersUseTheSystemText) {
  for (int code : {2, 5, 28, Tarnwicks::FileIO::kLastStreamError - 1, 9999}) {
    EXPECT_EQ(kxStreamErrorKey(code), nullptr) << code;
    EXPECT_EQ(kxStreamErrorText(code), fl::i18n::to_ustring(std::strerror(code))) << code;
  }
}

}  // namespace
