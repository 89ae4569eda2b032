#include "category_collector.h"

#include <algorithm>
#include <exception>
#include <numeric>

#include "quoted_text.h"
#include "twhost/calls.h"
#include "twhost/errors.h"
#include "twhost/kx_data.h"
#include "twhost/text.h"

namespace datetime {

namespace {

constexpr std::u16string_view kUndefined = u"<undefined>";

bool allBlank(std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), [](char16_t c) { return twu_isspace(c); });
}

// A column of `cls` holding the values.
kxArray* valueColumn(kxClassID cls, const std::vector<uint64_t>& values) {
  kxArray* a = kxCreateUninitNumericMatrix(values.size(), 1, cls, kxREAL);
  void* data = kxGetData(a);
  auto narrow = [&](auto* out) {
    using T = std::remove_pointer_t<decltype(out)>;
    std::transform(values.begin(), values.end(), out, [](uint64_t v) { return static_cast<T>(v); });
  };
  switch (cls) {
    case kxUINT8_CLASS:
      narrow(static_cast<uint8_t*>(data));
      break;
    case kxUINT16_CLASS:
      narrow(static_cast<uint16_t*>(data));
      break;
    case kxUINT32_CLASS:
      narrow(static_cast<uint32_t*>(data));
      break;
    default:
      narrow(static_cast<uint64_t*>(data));
      break;
  }
  return a;
}

}  // namespace

bool isUndefinedCategory(std::u16string_view text) {
  size_t start = 0;
  while (start < text.size() && twu_isspace(text[start])) ++start;
  if (start == text.size()) return true;
  if (text.substr(start, kUndefined.size()) != kUndefined) return false;
  return allBlank(text.substr(start + kUndefined.size()));
}

void CategoricalFieldConverter::addField(const char16_t* units, size_t length) {
  std::u16string_view text(units, length);
  if (length != 0 && units[0] == kDoubleQuote) {
    if (scratchText_.size() < length) scratchText_.resize(length);
    size_t n = stripQuotes(kDoubleQuote, units, units + length, scratchText_.data());
    text = std::u16string_view(scratchText_.data(), n);
  }
  if (length == 0 || isUndefinedCategory(text)) {
    categoryCodes_.push(0);
    return;
  }
  addCategory(text);
}

void CategoricalFieldConverter::addCategory(std::u16string_view text) {
  if (lastCode_ != 0 && text == lastName_) {
    categoryCodes_.push(lastCode_);
    return;
  }
  auto it = codeOf_.find(text);
  if (it == codeOf_.end()) {
    names_.emplace_back(text);
    it = codeOf_.emplace(std::u16string_view(names_.back()), names_.size()).first;
  }
  lastName_ = it->first;
  lastCode_ = it->second;
  categoryCodes_.push(lastCode_);
}

kxArray* CategoricalFieldConverter::getResult() {
  uint64_t k = names_.size();
  // Codes are given in order of first appearance, so the largest is k and
  // the store has narrowed the codes to the class that k needs.
  kxClassID cls = categoryCodes_.codeClass();
  std::vector<size_t> order(k);
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return names_[a] < names_[b]; });
  std::vector<uint64_t> codeOfName(k);
  kxOwned names(kxCreateCellMatrix(k, 1));
  for (size_t i = 0; i < k; ++i) {
    const ustring& name = names_[order[i]];
    kxSetCell(names.get(), i, kxCreateStringFromNChars_UTF16(name.data(), name.size()));
    codeOfName[i] = order[i] + 1;
  }
  kxOwned values(valueColumn(cls, codeOfName));
  kxArray* codes = categoryCodes_.release();
  codeOf_.clear();
  names_.clear();
  lastCode_ = 0;
  kxArray* out[1] = {};
  kxArray* in[] = {codes, values.get(), names.get()};
  std::exception_ptr failure = inCallFcnWithTrap(1, out, 3, in, "categorical");
  kxDestroyArray(codes);
  if (failure) std::rethrow_exception(failure);
  return out[0];
}

}  // namespace datetime
