#include "format_guesser.h"

#include <cmath>

#include "date_locale.h"
#include "twhost/calls.h"
#include "twhost/errors.h"

namespace datetime {

namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

// The interpreter's count as an unsigned 64-bit number; from two to the
// 63rd up the top bit is set by hand, as a signed conversion would fail.
uint64_t countOf(double v) {
  if (!(v > 0)) return 0;
  if (v >= kTwoTo63) return static_cast<uint64_t>(v - kTwoTo63) | (uint64_t{1} << 63);
  return static_cast<uint64_t>(v);
}

bool parses(datetimeICUParser& parser, std::u16string_view text) {
  DateValue v;
  parser.parseDateText(text, v);
  return v.isParsed();
}

}  // namespace

formatGuesser::formatGuesser(const kxArray* locale) : locale_(locale) {
  constexpr int kOutputs = 2;
  kxArray* out[kOutputs] = {};
  kxArray* in[] = {const_cast<kxArray*>(locale)};
  inCallFcn(kOutputs, out, locale ? 1 : 0, in, "datetime.getFormatsForGuessing");
  kxOwned list(out[0]);
  kxOwned count(out[1]);
  if (list && kxIsCell(list.get())) {
    for (size_t i = 0; i < kxGetNumberOfElements(list.get()); ++i) {
      const kxArray* entry = kxGetCell(list.get(), i);
      formats_.push_back(entry ? matrix::get_ustring(entry) : ustring());
    }
  }
  priorityCount_ = countOf(count ? kxGetScalar(count.get()) : 0);
}

// The locale is settled once, for the first candidate, and named to the
// rest.
std::shared_ptr<datetimeICUParser> formatGuesser::parserFor(const ustring& format) {
  if (localeName_.empty()) localeName_ = requireDateLocale(locale_);
  return std::make_shared<datetimeICUParser>(format, localeName_);
}

size_t formatGuesser::narrowCandidates(const char16_t* units, size_t length) {
  if (parsers_.empty()) return scanCandidates(units, length);
  if (formats_.size() == 1) return 1;
  std::u16string_view text(units, length);
  bool first = parses(*parsers_[0], text);
  bool second = parses(*parsers_[1], text);
  size_t count = size_t{first} + size_t{second};
  if (second && !first) {
    formats_[0] = formats_[1];
    parsers_[0] = parsers_[1];
  }
  if (count == 1) {
    formats_.erase(formats_.begin() + 1);
    parsers_.erase(parsers_.begin() + 1);
  }
  return count;
}

size_t formatGuesser::scanCandidates(const char16_t* units, size_t length) {
  if (priorityCount_ == 0) return 0;
  size_t block = std::min<uint64_t>(priorityCount_, formats_.size());
  for (size_t i = 0; i < block; ++i) {
    auto parser = parserFor(formats_[i]);
    if (parser->parseDateField(units, length).isParsed()) {
      formats_ = {formats_[i]};
      parsers_.push_back(std::move(parser));
      return 1;
    }
  }
  formats_.erase(formats_.begin(), formats_.begin() + static_cast<long>(block));
  priorityCount_ = 0;
  std::vector<ustring> kept;
  for (const ustring& format : formats_) {
    auto parser = parserFor(format);
    if (!parser->parseDateField(units, length).isParsed()) continue;
    kept.push_back(format);
    parsers_.push_back(std::move(parser));
  }
  formats_ = std::move(kept);
  return formats_.size();
}

std::shared_ptr<datetimeICUParser> formatGuesser::takeWinner(ustring& format) {
  if (formats_.size() >= 2) {
    kxWarningMsgId(
        kxMsg("KORVAN:textscan", "UnableToGuessFormat", formats_[0], formats_[1], formats_[0]));
  }
  if (parsers_.empty()) return nullptr;
  format = formats_[0];
  return parsers_[0];
}

}  // namespace datetime
