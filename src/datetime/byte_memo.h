// A memo from the bytes of a field to the code the field was given, for
// columns whose code is a function of the field's text alone. It lets a
// repeated field of a UTF-8 file skip decoding, unquoting and the lookup by
// name. Open addressing over one arena of bytes; it stops taking entries
// past a fixed count, so a column of all-distinct fields costs it no more
// than that.
//
// Cost: one hash of the field and, mostly, one comparison; no allocation
// on a hit.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace datetime {

class ByteMemo {
 public:
  // The code remembered for these bytes, or kNone.
  uint64_t find(const char* bytes, size_t length) const {
    if (slots_.empty()) return kNone;
    uint64_t key = keyOf(bytes, length);
    uint64_t h = hashOf(bytes, length, key);
    for (size_t i = h & mask_;; i = (i + 1) & mask_) {
      const Slot& s = slots_[i];
      if (s.length == kEmpty) return kNone;
      if (s.hash == h && s.length == length && s.key == key &&
          (length <= kWord || std::memcmp(arena_.data() + s.offset, bytes, length) == 0)) {
        return s.code;
      }
    }
  }

  void remember(const char* bytes, size_t length, uint64_t code) {
    if (count_ >= kMaxEntries || length >= kEmpty || arena_.size() + length >= kEmpty) return;
    if ((count_ + 1) * 2 > slots_.size()) grow();
    uint64_t key = keyOf(bytes, length);
    uint64_t h = hashOf(bytes, length, key);
    size_t i = h & mask_;
    while (slots_[i].length != kEmpty) i = (i + 1) & mask_;
    slots_[i] = {h, key, static_cast<uint32_t>(arena_.size()), static_cast<uint32_t>(length), code};
    arena_.append(bytes, length);
    ++count_;
  }

  static constexpr uint64_t kNone = UINT64_MAX;

 private:
  static constexpr uint32_t kEmpty = UINT32_MAX;
  static constexpr size_t kMaxEntries = 1 << 16;
  static constexpr size_t kFirstSlots = 64;
  static constexpr size_t kWord = sizeof(uint64_t);
  static constexpr size_t kHalfWord = sizeof(uint32_t);

  struct Slot {
    uint64_t hash = 0;
    uint64_t key = 0;
    uint32_t offset = 0;
    uint32_t length = kEmpty;
    uint64_t code = 0;
  };

  static uint64_t load(const char* p, size_t n) {
    uint64_t w = 0;
    std::memcpy(&w, p, n);
    return w;
  }

  // Up to eight bytes, all of them in one word (so that equal keys and
  // lengths mean equal bytes); past eight, the first and last four. Loads
  // overlap rather than loop.
  static uint64_t keyOf(const char* p, size_t n) {
    if (n >= kHalfWord) {
      return load(p, kHalfWord) | load(p + n - kHalfWord, kHalfWord) << (8 * kHalfWord);
    }
    if (n == 0) return 0;
    constexpr int kByte = 8;
    return static_cast<uint64_t>(static_cast<unsigned char>(p[0])) |
           static_cast<uint64_t>(static_cast<unsigned char>(p[n / 2])) << kByte |
           static_cast<uint64_t>(static_cast<unsigned char>(p[n - 1])) << 2 * kByte;
  }

  // The key mixed with the length and, past eight bytes, every word: fields
  // are short, and this costs a few cycles where a general string hash
  // costs tens.
  static uint64_t hashOf(const char* p, size_t n, uint64_t key) {
    constexpr uint64_t kSeed = 0x9E3779B97F4A7C15ULL;
    constexpr uint64_t kMix = 0xFF51AFD7ED558CCDULL;
    constexpr int kShift = 32;
    uint64_t h = (key ^ (n + 1) * kSeed) * kMix;
    for (size_t i = 0; n > kWord && i + kWord <= n; i += kWord) {
      h = (h ^ load(p + i, kWord)) * kMix;
    }
    return h ^ h >> kShift;
  }

  void grow() {
    std::vector<Slot> old = std::move(slots_);
    slots_.assign(old.empty() ? kFirstSlots : old.size() * 2, Slot{});
    mask_ = slots_.size() - 1;
    for (const Slot& s : old) {
      if (s.length == kEmpty) continue;
      size_t i = s.hash & mask_;
      while (slots_[i].length != kEmpty) i = (i + 1) & mask_;
      slots_[i] = s;
    }
  }

  std::vector<Slot> slots_;
  std::string arena_;
  size_t mask_ = 0;
  size_t count_ = 0;
};

}  // namespace datetime
