// The column of a %D conversion. With a format, each field is parsed as it
// arrives (the fast path reads UTF-8 bytes without decoding them); without
// one, the format guesser picks it, and only the fields before the guess is
// settled are held as text.
//
// At the end the dates go to the interpreter's
// "datetime.textscanCreateFromStrings" as one complex column (high parts
// real, low parts imaginary) with the format. A column whose every date is
// NaT reports it instead: "AllNatSuggestLocale" when the format spells
// month or day names and no "DateLocale" was given, "AllNatSuggestOther"
// otherwise.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "date_parser.h"
#include "format_guesser.h"
#include "textscan/column.h"

namespace datetime {

class DatetimeFieldConverter final : public textscan::TextColumn {
 public:
  // `format` is the conversion's pattern, empty to guess; `locale` the
  // "DateLocale" value or null. A time zone in the format throws
  // "KORVAN:textscan:TimeZoneSupport".
  DatetimeFieldConverter(const ustring& format, const kxArray* locale);

  void addField(const textscan::FieldText& text) override;
  // The fields held while guessing: 0 once the format is known.
  uint64_t fieldCount() const override { return heldFields_.size(); }
  kxClassID resultClass() const override { return kxOBJECT_CLASS; }
  kxArray* getResult() override;

 private:
  void append(DateValue v) {
    real_.push_back(v.high);
    imaginary_.push_back(v.low);
  }
  void addParsed(const char16_t* units, size_t length) {
    append(parser_->parseDateField(units, length));
  }
  void guess(const char16_t* units, size_t length);
  void commitGuess();
  [[noreturn]] void reportAllNaT() const;

  std::shared_ptr<datetimeICUParser> parser_;  // empty while guessing
  std::unique_ptr<formatGuesser> guesser_;     // only when the format was empty
  std::vector<ustring> heldFields_;
  std::vector<double> real_;
  std::vector<double> imaginary_;
  ustring format_;
  kxOwned defaultLocale_;  // made when no "DateLocale" was given
  const kxArray* locale_;
  bool guessing_;
  bool localeGiven_;
  ustring decoded_;  // a field of UTF-8 bytes, decoded
};

}  // namespace datetime
