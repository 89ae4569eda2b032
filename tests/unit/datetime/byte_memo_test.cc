// The memo of field bytes to codes: every remembered text is found with its
// code through growth, texts that differ in one byte or in length are told
// apart, and nothing else is found.
#include "datetime/byte_memo.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

namespace {

using datetime::ByteMemo;

TEST(ByteMemo, FindsWhatItRemembersAndNothingElse) {
  std::mt19937 rng(5);
  std::map<std::string, uint64_t> truth;
  ByteMemo memo;
  for (uint64_t code = 0; code < 5000; ++code) {
    std::string text(rng() % 20, '\0');
    for (char& c : text) c = static_cast<char>("ab\0\xff"[rng() % 4]);
    if (!truth.emplace(text, code).second) continue;
    memo.remember(text.data(), text.size(), code);
  }
  for (const auto& [text, code] : truth) EXPECT_EQ(memo.find(text.data(), text.size()), code);
  for (int i = 0; i < 5000; ++i) {
    std::string text(rng() % 24, '\0');
    for (char& c : text) c = static_cast<char>("abc"[rng() % 3]);
    auto it = truth.find(text);
    EXPECT_EQ(memo.find(text.data(), text.size()),
              it == truth.end() ? ByteMemo::kNone : it->second);
  }
}

TEST(ByteMemo, StopsTakingEntriesPastItsLimit) {
  ByteMemo memo;
  for (uint64_t i = 0; i < 70000; ++i) {
    std::string text = std::to_string(i);
    memo.remember(text.data(), text.size(), i);
  }
  EXPECT_EQ(memo.find("0", 1), 0u);
  EXPECT_EQ(memo.find("69999", 5), ByteMemo::kNone);
}

}  // namespace
