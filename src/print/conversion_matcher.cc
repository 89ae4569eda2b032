#include "conversion_matcher.h"

#include <cstring>

namespace Tarnwicks::FileIO {

namespace {

bool isDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

bool isOneOf(char16_t c, const char* set) {
  return c != 0 && c < 0x80 && std::strchr(set, static_cast<char>(c)) != nullptr;
}

class Cursor {
 public:
  Cursor(const char16_t* text, size_t n, size_t at) : text_(text), n_(n), at_(at) {}

  size_t at() const { return at_; }
  bool peek(char16_t c) const { return at_ < n_ && text_[at_] == c; }
  bool peekDigit(char16_t lowest) const {
    return at_ < n_ && text_[at_] >= lowest && text_[at_] <= u'9';
  }
  bool peekOneOf(const char* set) const { return at_ < n_ && isOneOf(text_[at_], set); }
  void skip() { ++at_; }
  void skipDigits() {
    while (at_ < n_ && isDigit(text_[at_])) ++at_;
  }
  CaptureSpan since(size_t start) const {
    return {static_cast<uint32_t>(start), static_cast<uint32_t>(at_ - start)};
  }

  // numberSpec, or nothing consumed when it does not match in full.
  CaptureSpan numberSpec() {
    size_t start = at_;
    if (!peekDigit(u'1')) return {};
    skip();
    skipDigits();
    if (!peek(u'$')) {
      at_ = start;
      return {};
    }
    skip();
    return since(start);
  }

 private:
  const char16_t* text_;
  size_t n_;
  size_t at_;
};

}  // namespace

bool findConversion(const char16_t* text, size_t n, size_t from, ConversionMatch& m) {
  size_t percent = from;
  while (percent < n && text[percent] != u'%') ++percent;
  if (percent >= n) return false;

  m = ConversionMatch{};
  m.start = percent;
  Cursor c(text, n, percent + 1);

  CaptureSpan own = c.numberSpec();

  size_t flagsStart = c.at();
  while (c.peekOneOf("-+ #0")) c.skip();
  m.flags = c.since(flagsStart);

  size_t widthStart = c.at();
  if (c.peek(u'*')) {
    c.skip();
    m.widthNumber = c.numberSpec();
  } else if (c.peekDigit(u'1')) {
    c.skipDigits();
  }
  m.width = c.since(widthStart);

  size_t precisionStart = c.at();
  if (c.peek(u'.')) {
    c.skip();
    if (c.peek(u'*')) {
      c.skip();
      m.precisionNumber = c.numberSpec();
    } else {
      if (c.peek(u'-')) c.skip();
      c.skipDigits();
    }
  }
  m.precision = c.since(precisionStart);

  size_t lengthStart = c.at();
  if (c.peekOneOf("hlbt")) c.skip();
  m.lengthModifier = c.since(lengthStart);

  size_t conversionStart = c.at();
  if (c.peekOneOf("diouxXeEfgGsc%")) c.skip();
  m.conversion = c.since(conversionStart);

  m.number = !own.empty() ? own : !m.widthNumber.empty() ? m.widthNumber : m.precisionNumber;
  m.length = c.at() - percent;
  return true;
}

}  // namespace Tarnwicks::FileIO
