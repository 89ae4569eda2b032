// The columns of a read: one per kept conversion, each turning the text of
// its fields into values and, at the end, into one host array.
//
// The read loop knows each column's concrete type from its conversion and
// calls its add functions directly (inline, no virtual call per field).
// Only the end-of-read operations (padding, count, result) go through the
// base, once per column.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "block_vector.h"
#include "number_conversion.h"
#include "textscan/column.h"
#include "textscan/number_lexer.h"
#include "twhost/kx_array.h"

namespace textscan {

class Options;

class OutputColumn {
 public:
  explicit OutputColumn(kxClassID cls) : columnClass(cls) {}
  virtual ~OutputColumn() = default;
  // One empty field: the padding of "CollectOutput".
  virtual void addEmptyField() = 0;
  virtual uint64_t fieldCount() const = 0;
  // The column's array; the column is empty afterwards.
  virtual kxArray* getResult() = 0;

  const kxClassID columnClass;
};

// The class of a numeric column's values.
template <class T>
constexpr kxClassID classOfValues();

template <class T>
class NumericColumn final : public OutputColumn {
 public:
  explicit NumericColumn(double emptyValue)
      : OutputColumn(classOfValues<T>()), empty_(emptyValueAs<T>(emptyValue)) {}

  void addEmptyField() override {
    ++count_;
    if (hasImaginary_) imaginary_.push_back(0);
    real_.push_back(empty_);
  }

  // A real number read as `x` from the `n` units at `text`.
  template <class CharT>
  void addReal(double x, const CharT* text, size_t n) {
    ++count_;
    real_.push_back(toColumnType<T>(x, text, n));
    if (hasImaginary_) imaginary_.push_back(0);
  }

  // A lexed number whose text starts at `field`.
  template <class CharT>
  void add(const CharT* field, const LexedNumber& n) {
    if (n.form == NumberForm::Real) {
      ++count_;
      real_.push_back(convert(field, n.real));
      if (hasImaginary_) imaginary_.push_back(0);
      return;
    }
    if (n.form == NumberForm::None) {
      addEmptyField();
      return;
    }
    ++count_;
    if (!hasImaginary_) {
      // Earlier rows get an imaginary part of 0 only now: a column that
      // never sees a complex value never pays for the second store.
      hasImaginary_ = true;
      imaginary_.appendRepeated(real_.size(), 0);
    }
    real_.push_back(n.form == NumberForm::Complex ? convert(field, n.real) : T(0));
    imaginary_.push_back(convert(field, n.imaginary));
  }

  uint64_t fieldCount() const override { return count_; }
  kxArray* getResult() override;

 private:
  template <class CharT>
  static T convert(const CharT* field, const NumberPart& part) {
    double x = partValue(field, part);
    if constexpr (sizeof(T) < 8 || std::is_floating_point_v<T>) {
      return toColumnType<T>(x, field, 0);
    } else {
      return toColumnType<T>(x, field + part.begin, part.end - part.begin);
    }
  }

  BlockVector<T> real_;
  BlockVector<T> imaginary_;
  T empty_;
  bool hasImaginary_ = false;
  uint64_t count_ = 0;
};

// %c: every field is `width` units; an empty one is `width` zeros.
class CharColumn final : public OutputColumn {
 public:
  explicit CharColumn(int32_t width);
  void add(const char16_t* text, size_t n);
  void add(const char* text, size_t n);
  void addEmptyField() override;
  uint64_t fieldCount() const override { return count_; }
  kxArray* getResult() override;

 private:
  std::u16string chars_;
  size_t width_;
  uint64_t count_ = 0;
};

// %s, %[...], %[^...] (no quote) and %q, %t (quote set): a cell column of
// char rows. The text of all fields is kept in one store, with where each
// field ends in another, and the host's cell of char rows adopts the two
// at the end: no array is made per field.
class StringColumn final : public OutputColumn {
 public:
  explicit StringColumn(char16_t quote = 0) : OutputColumn(kxCELL_CLASS), quote_(quote) {}
  void add(const char16_t* text, size_t n);
  void add(const char* text, size_t n);
  void addEmptyField() override { ends_.push_back(units_.size()); }
  uint64_t fieldCount() const override { return ends_.size(); }
  kxArray* getResult() override;

 private:
  char16_t quote_;
  BlockVector<char16_t> units_;  // every field's text, one after the other
  BlockVector<uint64_t> ends_;   // where each field's text ends in units_
  std::u16string decoded_;       // a quoted field of UTF-8 bytes, decoded
};

// A column of another area (dates, categories), behind its interface.
class PluginColumn final : public OutputColumn {
 public:
  explicit PluginColumn(std::unique_ptr<TextColumn> column)
      : OutputColumn(column->resultClass()), column_(std::move(column)) {}
  template <class CharT>
  void add(const CharT* text, size_t n) {
    column_->addField(FieldText(text, n));
  }
  void addEmptyField() override {
    column_->addField(FieldText(static_cast<const char16_t*>(nullptr), 0));
  }
  uint64_t fieldCount() const override { return column_->fieldCount(); }
  kxArray* getResult() override { return column_->getResult(); }

 private:
  std::unique_ptr<TextColumn> column_;
};

// The column of a conversion, or null for a skipped one and a literal.
std::unique_ptr<OutputColumn> makeColumn(const FormatDescription& item, const Options& options);

// The result cell: one array per column, or with "CollectOutput" the
// neighbours of one class merged into one array. Columns are emptied.
kxArray* assembleResults(std::vector<std::unique_ptr<OutputColumn>>& columns, bool collectOutput);

}  // namespace textscan
