// Columns that textscan fills from the text of each field: the way other
// areas plug their own conversions (%D dates, %C categories) into the read.
//
// The read owns one column per kept conversion. For each field of that
// conversion, row after row, it calls addField with the field's text; at the
// end of the read it calls getResult once. A column of this family sees the
// text as the reader found it and decides everything else itself: quotes,
// blanks, what an empty field means, and the array it delivers.
//
// The numbers, characters and strings of textscan have columns of their own
// inside the reader (no virtual call per field); this interface costs one
// virtual call per field, which the conversions that use it can afford.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "textscan/format_description.h"
#include "twhost/kx_array.h"

namespace textscan {

class Options;

// The text of one field, as a view into the reader's buffer: valid only for
// the call that receives it. Text read from a char array or from a file in
// an encoding other than UTF-8 comes as UTF-16 units; text from a UTF-8 (or
// ASCII) file comes as its bytes, undecoded, because most fields never need
// decoding. `length` counts units of the form at hand. The text of a quoted
// conversion keeps its quotes (see stripQuotes).
class FieldText {
 public:
  FieldText(const char16_t* units, size_t length) : wide_(units), length_(length) {}
  FieldText(const char* utf8, size_t length) : narrow_(utf8), length_(length) {}

  bool isNarrow() const { return narrow_ != nullptr; }
  bool empty() const { return length_ == 0; }
  size_t length() const { return length_; }
  // Null unless the text is of that form.
  const char16_t* wide() const { return wide_; }
  const char* narrow() const { return narrow_; }

  // The field as UTF-16 appended to `out`. Narrow text is decoded exactly as
  // the file's decoder would have done it (invalid bytes give U+FFFD, a
  // character beyond the 16-bit range gives unit 26), so a column sees the
  // same characters whichever form reached it. Cost: one pass, no
  // allocation beyond the growth of `out`.
  void appendTo(ustring& out) const;

 private:
  const char16_t* wide_ = nullptr;
  const char* narrow_ = nullptr;
  size_t length_ = 0;
};

class TextColumn {
 public:
  virtual ~TextColumn() = default;

  // One field, in the order of the rows. An empty text is an empty field: two
  // delimiters in a row, or the padding of a short row. A field that holds no
  // valid value is a value of its own kind (NaT, an undefined category), not
  // an error; only a fault of configuration may throw.
  virtual void addField(const FieldText& text) = 0;
  // Every field added so far. "CollectOutput" compares it between neighbours
  // of one class and pads the shorter with one empty field.
  virtual uint64_t fieldCount() const = 0;
  // kxOBJECT_CLASS for a value of a named class, which never merges with its
  // neighbours under "CollectOutput".
  virtual kxClassID resultClass() const = 0;
  // The column's array, handed over once at the end of the read; the column
  // is empty afterwards. May throw UnableToGuessFormat (a date column that
  // found no format), which the read reports with the locale's default.
  virtual kxArray* getResult() = 0;
};

// Thrown by a date column that could not settle a format from its fields;
// the read turns it into "KORVAN:textscan:AllNatSuggestFormat" (a warning
// when "ReturnOnError" holds, an error otherwise).
struct UnableToGuessFormat : std::exception {
  const char* what() const noexcept override { return "textscan: no date format fits"; }
};

// Makes the column of one kept conversion. `item` is the conversion (its
// `text` holds a date pattern); `options` gives "DateLocale" and the rest.
using TextColumnMaker = std::unique_ptr<TextColumn> (*)(const FormatDescription& item,
                                                        const Options& options);

// Installs the maker of CategoricalField or DatetimeField columns; call it
// once at start-up. Until a maker is installed, a format with that conversion
// raises "KORVAN:FileIO:NotBuiltYet" naming the conversion. The fields of
// both kinds are read like %q: quoted text may hold delimiters.
void setTextColumnMaker(SpecifierType kind, TextColumnMaker maker);

// The quote rule of quoted fields. `first` points at the opening quote; the
// units up to `last` are written to `out` (room for last - first units) with
// the opening quote dropped, each doubled quote made single, and the first
// lone quote dropped as the closing one; what follows it is copied as it
// stands, quotes included. Returns the units written.
size_t stripQuotes(char16_t quote, const char16_t* first, const char16_t* last, char16_t* out);
// The same over ASCII bytes (all below 0x80: for other bytes, decode first,
// since a quote may end a malformed sequence), each written as its unit.
size_t stripQuotes(char16_t quote, const char* first, const char* last, char16_t* out);

}  // namespace textscan
