// The message catalogue: every identifier the library and host raise has a
// text, arguments land in their places, and stream error numbers turn into
// the right text.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "twhost/catalog.h"
#include "twhost/errors.h"
#include "twhost/text.h"

namespace {

struct Expected {
  const char* identifier;
  int arguments;
};

// Every identifier raised anywhere, with its count of arguments.
const Expected kIdentifiers[] = {
    {"KORVAN:maxlhs", 0},
    {"KORVAN:maxrhs", 0},
    {"KORVAN:minrhs", 0},
    {"KORVAN:nomem", 0},
    {"KORVAN:internal", 1},
    {"KORVAN:shell:ConversionFailed", 2},
    {"KORVAN:shell:UndefinedFunction", 1},
    {"KORVAN:numericOverflow", 0},
    {"KORVAN:FileIO:InvalidFid", 0},
    {"KORVAN:FileIO:InvalidIntPrecision", 0},
    {"KORVAN:FileIO:InvalidUIntPrecision", 0},
    {"KORVAN:FileIO:sizeMustBeNumeric", 0},
    {"KORVAN:legacy_two_part:badfilename_mx", 0},
    {"KORVAN:legacy_two_part:badmachformat_mx", 0},
    {"KORVAN:legacy_two_part:badpermission_mx", 0},
    {"KORVAN:legacy_two_part:badprecision_mx", 0},
    {"KORVAN:legacy_two_part:badsize_mx", 0},
    {"KORVAN:legacy_two_part:badskip_mx", 0},
    {"KORVAN:legacy_two_part:notimplemented_mx", 0},
    {"KORVAN:fopen:NotScalarIntValued", 0},
    {"KORVAN:fopen:NotVectorChar", 0},
    {"KORVAN:fopen:InvalidInput", 0},
    {"KORVAN:fopen:IncorrectFileMode", 0},
    {"KORVAN:fopen:ConflictingExclusiveFileModes", 0},
    {"KORVAN:fopen:EncodingString", 0},
    {"KORVAN:fopen:InvalidCharacter", 0},
    {"KORVAN:iofun:InvalidEncoding", 1},
    {"KORVAN:iofun:InvalidDefaultEncoding", 1},
    {"KORVAN:iofun:UnsupportedEncoding", 1},
    {"KORVAN:fseek:offsetMustBeDouble", 0},
    {"KORVAN:fseek:originMustBeDouble", 0},
    {"KORVAN:fgets:ncharMustBeDouble", 0},
    {"KORVAN:fgets:InvalidSize", 0},
    {"KORVAN:fwrite:UnsupportedClass", 1},
    {"KORVAN:fwrite:UnsupportedAttribute", 0},
    {"KORVAN:printf:invalidInputType", 1},
    {"KORVAN:printf:invalidInputAttribute", 0},
    {"KORVAN:printf:NoControlCharacterInFormat", 0},
    {"KORVAN:printf:OctalCharCodeInvalid", 0},
    {"KORVAN:printf:HexCharCodeInvalid", 0},
    {"KORVAN:printf:OctalCharCodeOutOfRange", 0},
    {"KORVAN:printf:HexCharCodeOutOfRange", 0},
    {"KORVAN:printf:BadEscapeSequenceInFormat", 1},
    {"KORVAN:sprintfc:invalidInputType", 1},
    {"KORVAN:sprintfc:invalidInputAttribute", 0},
    {"KORVAN:sprintfc:invalidThirdInputType", 0},
    {"KORVAN:sprintfc:invalidFormatType", 0},
    {"KORVAN:textscan:AllNatSuggestFormat", 1},
    {"KORVAN:textscan:AllNatSuggestLocale", 1},
    {"KORVAN:textscan:AllNatSuggestOther", 1},
    {"KORVAN:textscan:BadFormatString", 3},
    {"KORVAN:textscan:BufSizeDeprecation", 0},
    {"KORVAN:textscan:BuildFormatString", 0},
    {"KORVAN:textscan:ClosingDateFormat", 0},
    {"KORVAN:textscan:ClosingSet", 0},
    {"KORVAN:textscan:DelimiterSpaceConflict", 0},
    {"KORVAN:textscan:EmptyCellArrayInvalid", 1},
    {"KORVAN:textscan:EmptyFormatString", 0},
    {"KORVAN:textscan:IncompleteFormat", 0},
    {"KORVAN:textscan:IncorrectEscapeConstant", 1},
    {"KORVAN:textscan:LookforAndGetEndofline", 0},
    {"KORVAN:textscan:LookforAndGetHeaderColumns", 0},
    {"KORVAN:textscan:LookforAndGetHeaderLines", 0},
    {"KORVAN:textscan:LookforAndGetNumCharactersToSkip", 0},
    {"KORVAN:textscan:NoInput", 0},
    {"KORVAN:textscan:NonStringCellsInCommentStyle", 0},
    {"KORVAN:textscan:NonStringCellsInTreatAsEmpty", 0},
    {"KORVAN:textscan:NonStringsInTreatAsEmpty", 0},
    {"KORVAN:textscan:NotAString", 1},
    {"KORVAN:textscan:NotAStringOrCellOfStrings", 1},
    {"KORVAN:textscan:NotAnIntegerValue", 1},
    {"KORVAN:textscan:NotNumericScalar", 1},
    {"KORVAN:textscan:NumericInTreatAsEmpty", 0},
    {"KORVAN:textscan:SecondInput", 0},
    {"KORVAN:textscan:SkipComments", 0},
    {"KORVAN:textscan:TimeZoneSupport", 1},
    {"KORVAN:textscan:UnableToGuessFormat", 3},
    {"KORVAN:textscan:UnableToReadFile", 0},
    {"KORVAN:textscan:UnknownOption", 1},
    {"KORVAN:textscan:UnpairedParamsValues", 0},
    {"KORVAN:textscan:UnsupportedSpecifier", 1},
    {"KORVAN:textscan:WrongInputType", 0},
    {"KORVAN:textscan:handleErrorAndShowInfo", 4},
    {"KORVAN:textscan:standardStream", 0},
    {"KORVAN:datetime:FormatConflict_Zz", 1},
    {"KORVAN:datetime:InvalidFractionalSeconds", 0},
    {"KORVAN:datetime:InvalidLocale", 0},
    {"KORVAN:datetime:InvalidLocaleString", 1},
    {"KORVAN:datetime:ParseErrs", 1},
    {"KORVAN:datetime:kexErrors:ICUError", 2},
    {"KORVAN:datetime:localizedStrings:Locale", 0},
};

const char* const kStreamKeys[] = {"NoHelp",
                                   "CannotOpenFile",
                                   "IsOpenRead",
                                   "EndOfFile",
                                   "IsOpenWrite",
                                   "NoSpace",
                                   "FlushError",
                                   "InvalidFormat",
                                   "MatchingFailure",
                                   "SizeTooBig",
                                   "NoMemory",
                                   "NoMemoryForString",
                                   "NotEnoughArgs",
                                   "UnsupportedDirective",
                                   "BadWidthNaN",
                                   "BadWidthNegInf",
                                   "BadWidthInf",
                                   "BadWidthInt",
                                   "BadWidthEmptyArg",
                                   "BadPrecisionNaN",
                                   "BadPrecisionNegInf",
                                   "BadPrecisionInf",
                                   "BadPrecisionInt",
                                   "BadPrecisionEmptyArg",
                                   "BadOffsetNaN",
                                   "BadOffsetBeforeBegin",
                                   "BadOffsetAfterEnd",
                                   "BadOffsetInt",
                                   "EmptyArg",
                                   "UngetcFailed",
                                   "WriteCarryByteFailed",
                                   "RequireBinaryFile",
                                   "FseekFailed",
                                   "ReadFailed",
                                   "FseekFailedNegOne",
                                   "FseekFailedSkip",
                                   "InvalidChar",
                                   "TruncatedChar",
                                   "IllegalChar",
                                   "InvalidTableFormat",
                                   "BufferOverflow",
                                   "UnknownError",
                                   "NonScalarNumbered",
                                   "NumberedMoreThanArgc",
                                   "InternalError"};

const int kNumberedMessages[] = {1, 2, 3, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 39};

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

resource_core::BaseMsgID split(const std::string& identifier) {
  size_t colon = identifier.rfind(':');
  return {identifier.substr(0, colon), identifier.substr(colon + 1)};
}

TEST(HostCatalog, EveryIdentifierHasATextWithOnePlaceholderPerArgument) {
  for (const Expected& e : kIdentifiers) {
    ASSERT_TRUE(kxHasMessage(e.identifier)) << e.identifier;
    std::string text = kxMessageText(split(e.identifier));
    EXPECT_FALSE(text.empty()) << e.identifier;
    std::set<int> wanted;
    for (int i = 0; i < e.arguments; ++i) wanted.insert(i);
    EXPECT_EQ(placeholders(text), wanted) << e.identifier << ": " << text;
  }
}

TEST(HostCatalog, EveryStreamErrorKeyHasAText) {
  for (const char* key : kStreamKeys) {
    std::string id = std::string("KORVAN:FileIO:") + key;
    ASSERT_TRUE(kxHasMessage(id)) << id;
    EXPECT_TRUE(placeholders(kxMessageText({"KORVAN:FileIO", key})).empty()) << id;
  }
}

TEST(HostCatalog, EveryNumberedMessageHasAText) {
  for (int n : kNumberedMessages) {
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

TEST(HostCatalog, ListingHoldsEveryExpectedIdentifier) {
  std::vector<std::string> all = kxCatalogIdentifiers();
  std::set<std::string> listed(all.begin(), all.end());
  for (const Expected& e : kIdentifiers) EXPECT_TRUE(listed.count(e.identifier)) << e.identifier;
  for (int n : kNumberedMessages) EXPECT_TRUE(listed.count("KORVAN:legacy:" + std::to_string(n)));
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

TEST(HostStreamErrors, CodesMinusOneToMinusFortyFiveUseTheirKeys) {
  for (int i = 0; i < 45; ++i) {
    int code = -(i + 1);
    ASSERT_NE(kxStreamErrorKey(code), nullptr) << code;
    EXPECT_STREQ(kxStreamErrorKey(code), kStreamKeys[i]) << code;
    EXPECT_EQ(kxStreamErrorText(code),
              fl::i18n::to_ustring(kxMessageText({"KORVAN:FileIO", kStreamKeys[i]})))
        << code;
  }
}

TEST(HostStreamErrors, OtherNumbersUseTheSystemText) {
  for (int code : {2, 5, 28, -46, 9999}) {
    EXPECT_EQ(kxStreamErrorKey(code), nullptr) << code;
    EXPECT_EQ(kxStreamErrorText(code), fl::i18n::to_ustring(std::strerror(code))) << code;
  }
}

}  // namespace
