#include "date_column.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "date_locale.h"
#include "pattern_rules.h"
#include "quoted_text.h"
#include "twhost/calls.h"
#include "twhost/errors.h"
#include "twhost/kx_memory.h"

namespace datetime {

namespace {

// A format that spells month names (MMM, MMMM) or day names (eee to eeeee)
// reads nothing in the wrong language: the locale is the likely fault.
bool spellsNames(const ustring& format) {
  auto months = std::count(format.begin(), format.end(), u'M');
  auto days = std::count(format.begin(), format.end(), u'e');
  return months == 3 || months == 4 || (days >= 3 && days <= 5);
}

}  // namespace

DatetimeFieldConverter::DatetimeFieldConverter(const ustring& format, const kxArray* locale)
    : format_(format), locale_(locale), guessing_(format.empty()), localeGiven_(locale) {
  if (hasUnquotedZoneLetter(format_)) kxThrowId("KORVAN:textscan", "TimeZoneSupport", format_);
  if (!locale_) {
    defaultLocale_.reset(kxCreateString(defaultDateLocaleName().c_str()));
    locale_ = defaultLocale_.get();
  }
  if (guessing_) {
    guesser_ = std::make_unique<formatGuesser>(locale_);
  } else {
    parser_ = std::make_shared<datetimeICUParser>(format_, locale_);
  }
}

void DatetimeFieldConverter::addField(const textscan::FieldText& text) {
  const char16_t* units = text.wide();
  size_t length = text.length();
  if (text.isNarrow()) {
    DateValue v;
    // A quoted field is unquoted before it is read; the fast path reads
    // plain ASCII only.
    if (!guessing_ && length != 0 && text.narrow()[0] != '"' &&
        parser_->parseFast(text.narrow(), length, v)) {
      append(v);
      return;
    }
    decoded_.clear();
    text.appendTo(decoded_);
    units = decoded_.data();
    length = decoded_.size();
  }
  if (guessing_) {
    guess(units, length);
  } else if (length == 0) {
    append(DateValue::notATime());
  } else {
    addParsed(units, length);
  }
}

void DatetimeFieldConverter::guess(const char16_t* units, size_t length) {
  size_t left = guesser_->narrowCandidates(units, length);
  if (heldFields_.empty() && left == 0) throw textscan::UnableToGuessFormat();
  heldFields_.push_back(length ? ustring(units, length) : ustring());
  if (left == 1) commitGuess();
}

void DatetimeFieldConverter::commitGuess() {
  guessing_ = false;
  parser_ = guesser_->takeWinner(format_);
  if (!parser_) return;
  for (const ustring& field : heldFields_) {
    if (field.empty()) {
      append(DateValue::notATime());
    } else {
      addParsed(field.data(), field.size());
    }
  }
  heldFields_ = {};
  guesser_.reset();
}

void DatetimeFieldConverter::reportAllNaT() const {
  if (!localeGiven_ && spellsNames(format_)) {
    kxThrowId("KORVAN:textscan", "AllNatSuggestLocale", matrix::get_ustring(locale_));
  }
  kxThrowId("KORVAN:textscan", "AllNatSuggestOther", format_);
}

kxArray* DatetimeFieldConverter::getResult() {
  if (guessing_) commitGuess();
  size_t n = real_.size();
  if (n != 0 && std::all_of(real_.begin(), real_.end(), [](double h) { return std::isnan(h); })) {
    reportAllNaT();
  }
  kxOwned dates(kxCreateDoubleMatrix(n, 1, kxCOMPLEX));
  if (n) {
    std::memcpy(kxGetPr(dates.get()), real_.data(), n * sizeof(double));
    std::memcpy(kxGetPi(dates.get()), imaginary_.data(), n * sizeof(double));
  }
  real_ = {};
  imaginary_ = {};
  kxOwned format(kxCreateStringFromNChars_UTF16(format_.data(), format_.size()));
  kxArray* out[1] = {};
  kxArray* in[] = {dates.get(), format.get()};
  inCallFcn(1, out, 2, in, "datetime.textscanCreateFromStrings");
  return out[0];
}

}  // namespace datetime
