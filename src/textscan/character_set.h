// A set of UTF-16 units with a constant-time test, for the option checks
// that compare every character of one user string with another.
#pragma once

#include <bitset>
#include <memory>
#include <string_view>

namespace textscan {

class CharacterSet {
 public:
  explicit CharacterSet(std::u16string_view members = {}) : bits_(std::make_unique<Bits>()) {
    for (char16_t c : members) bits_->set(c);
  }
  void add(char16_t c) { bits_->set(c); }
  bool contains(char16_t c) const { return bits_->test(c); }

 private:
  using Bits = std::bitset<0x10000>;  // 8 KiB, on the heap
  std::unique_ptr<Bits> bits_;
};

}  // namespace textscan
