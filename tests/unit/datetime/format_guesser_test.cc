// The format guesser over the host's table of candidates and over tables
// of the test's own, with the warnings it raises.
#include "datetime/format_guesser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "twhost/calls.h"
#include "twhost/errors.h"

namespace {

using datetime::formatGuesser;
using datetime::ustring;

std::vector<std::string> g_warnings;

void recordWarning(const std::string& identifier, const std::string& message) {
  g_warnings.push_back(identifier + ": " + message);
}

class Guesser : public ::testing::Test {
 protected:
  void SetUp() override {
    g_warnings.clear();
    previous_ = kxSetWarningHandler(recordWarning);
    hostTable_ = *kxFindFunction("datetime.getFormatsForGuessing");
  }
  void TearDown() override {
    kxSetWarningHandler(previous_);
    kxRegisterFunction("datetime.getFormatsForGuessing", hostTable_);
  }
  // Replaces the host's table by these formats, the first `priority` of
  // them the priority block.
  void useTable(std::vector<std::u16string> formats, double priority) {
    kxRegisterFunction("datetime.getFormatsForGuessing", [formats, priority](int, kxArray** plhs,
                                                                             int, kxArray**) {
      plhs[0] = kxCreateCellMatrix(formats.size(), 1);
      for (size_t i = 0; i < formats.size(); ++i) {
        kxSetCell(plhs[0], i, kxCreateStringFromNChars_UTF16(formats[i].data(), formats[i].size()));
      }
      plhs[1] = kxCreateDoubleScalar(priority);
    });
  }
  size_t narrow(formatGuesser& g, const std::u16string& field) {
    return g.narrowCandidates(field.data(), field.size());
  }

  kxOwned locale_{kxCreateString("en_US")};
  kxWarningHandler previous_ = nullptr;
  kxFunction hostTable_;
};

TEST_F(Guesser, AnISOFieldSettlesOnThePriorityBlockAtOnce) {
  formatGuesser g(locale_.get());
  EXPECT_EQ(narrow(g, u"2021-06-30 12:34:56.789"), 1u);
  ustring format;
  ASSERT_TRUE(g.takeWinner(format));
  EXPECT_EQ(format, u"yyyy-MM-dd HH:mm:ss.SSSSSSSSS");
  EXPECT_TRUE(g_warnings.empty());
}

TEST_F(Guesser, LaterFieldsNarrowDayAndMonth) {
  formatGuesser g(locale_.get());
  EXPECT_EQ(narrow(g, u"01/02/2020"), 2u);  // month first in en_US, then day first
  EXPECT_EQ(g.candidates()[0], u"M/d/y");
  EXPECT_EQ(g.candidates()[1], u"d/M/y");
  EXPECT_EQ(narrow(g, u"garbage"), 0u);  // read by neither: nobody is dropped
  EXPECT_EQ(narrow(g, u"25/12/2020"), 1u);
  ustring format;
  ASSERT_TRUE(g.takeWinner(format));
  EXPECT_EQ(format, u"d/M/y");
  EXPECT_TRUE(g_warnings.empty());
}

TEST_F(Guesser, TwoSurvivorsAtTheEndWarnAndTheFirstIsUsed) {
  formatGuesser g(locale_.get());
  narrow(g, u"01/02/2020");
  narrow(g, u"03/04/2020");
  ustring format;
  ASSERT_TRUE(g.takeWinner(format));
  EXPECT_EQ(format, u"M/d/y");
  ASSERT_EQ(g_warnings.size(), 1u);
  EXPECT_EQ(g_warnings[0].rfind("KORVAN:textscan:UnableToGuessFormat: ", 0), 0u);
  EXPECT_NE(g_warnings[0].find("'M/d/y' and 'd/M/y'"), std::string::npos) << g_warnings[0];
}

TEST_F(Guesser, EmptyAndNaTFirstFieldsLeaveNothing) {
  for (const char16_t* first : {u"", u"NaT", u"\"\""}) {
    formatGuesser g(locale_.get());
    EXPECT_EQ(narrow(g, first), 0u);
    EXPECT_EQ(narrow(g, u"2020-01-02"), 0u);  // a failed scan is not repeated
  }
  // Inf is read by every format.
  formatGuesser g(locale_.get());
  EXPECT_EQ(narrow(g, u"Inf"), 1u);
}

TEST_F(Guesser, ANoPriorityTableTriesNothing) {
  useTable({u"yyyy-MM-dd"}, 0);
  formatGuesser g(locale_.get());
  EXPECT_EQ(narrow(g, u"2020-01-02"), 0u);
  ustring format = u"unchanged";
  EXPECT_FALSE(g.takeWinner(format));
  EXPECT_EQ(format, u"unchanged");
}

TEST_F(Guesser, OnlyTheFirstTwoSurvivorsAreTestedOnLaterFields) {
  useTable({u"HH:mm:ss", u"yyyy", u"M/d/y", u"d/M/y", u"M/d/yyyy"}, 2);
  formatGuesser g(locale_.get());
  EXPECT_EQ(narrow(g, u"\"01/02/2020\""), 3u);  // the scan unquotes
  // The second falls away, which settles the guess, though the third was
  // never tested against this field: the commit warns.
  EXPECT_EQ(narrow(g, u"12/25/2020"), 1u);
  ustring format;
  ASSERT_TRUE(g.takeWinner(format));
  EXPECT_EQ(format, u"M/d/y");
  ASSERT_EQ(g_warnings.size(), 1u);
  EXPECT_NE(g_warnings[0].find("'M/d/y' and 'M/d/yyyy'"), std::string::npos) << g_warnings[0];
}

TEST_F(Guesser, TheHostsTableDependsOnTheLocale) {
  kxOwned german(kxCreateString("de_DE"));
  formatGuesser g(german.get());
  EXPECT_EQ(narrow(g, u"01.02.2020"), 2u);
  EXPECT_EQ(g.candidates()[0], u"d.M.y");
}

}  // namespace
