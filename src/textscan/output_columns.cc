// The columns' results, the column of each conversion, and the result cell.
#include "output_columns.h"

#include <algorithm>
#include <cstring>

#include "textscan/options.h"
#include "twhost/errors.h"
#include "twhost/kx_memory.h"
#include "utf8_units.h"

namespace textscan {

TextColumnMaker requireTextColumnMaker(SpecifierType kind);

template <>
constexpr kxClassID classOfValues<double>() {
  return kxDOUBLE_CLASS;
}
template <>
constexpr kxClassID classOfValues<float>() {
  return kxSINGLE_CLASS;
}
template <>
constexpr kxClassID classOfValues<int8_t>() {
  return kxINT8_CLASS;
}
template <>
constexpr kxClassID classOfValues<uint8_t>() {
  return kxUINT8_CLASS;
}
template <>
constexpr kxClassID classOfValues<int16_t>() {
  return kxINT16_CLASS;
}
template <>
constexpr kxClassID classOfValues<uint16_t>() {
  return kxUINT16_CLASS;
}
template <>
constexpr kxClassID classOfValues<int32_t>() {
  return kxINT32_CLASS;
}
template <>
constexpr kxClassID classOfValues<uint32_t>() {
  return kxUINT32_CLASS;
}
template <>
constexpr kxClassID classOfValues<int64_t>() {
  return kxINT64_CLASS;
}
template <>
constexpr kxClassID classOfValues<uint64_t>() {
  return kxUINT64_CLASS;
}

namespace {

// An n-by-1 array of the class over the block (adopted; null for none).
kxArray* columnArray(kxClassID cls, size_t n, void* block) {
  kxArray* a = kxCreateNumericMatrix(0, 0, cls, kxREAL);
  size_t dims[2] = {n, 1};
  kxSetDimensions(a, dims, 2);
  if (block) kxSetData(a, block);
  return a;
}

}  // namespace

template <class T>
kxArray* NumericColumn<T>::getResult() {
  size_t n = real_.size();
  kxArray* a = columnArray(this->columnClass, n, real_.release());
  if (hasImaginary_) {
    kxOwned guard(a);
    void* imag = imaginary_.release();
    if (imag) kxSetImagData(a, imag);
    a = guard.release();
  }
  count_ = 0;
  return a;
}

template class NumericColumn<double>;
template class NumericColumn<float>;
template class NumericColumn<int8_t>;
template class NumericColumn<uint8_t>;
template class NumericColumn<int16_t>;
template class NumericColumn<uint16_t>;
template class NumericColumn<int32_t>;
template class NumericColumn<uint32_t>;
template class NumericColumn<int64_t>;
template class NumericColumn<uint64_t>;

// ---- %c ------------------------------------------------------------------------

CharColumn::CharColumn(int32_t width)
    : OutputColumn(kxCHAR_CLASS), width_(width < 0 ? 1 : static_cast<size_t>(width)) {}

void CharColumn::add(const char16_t* text, size_t n) {
  ++count_;
  if (n == 0) {
    chars_.append(width_, u'\0');
  } else {
    chars_.append(text, n);
  }
}

void CharColumn::add(const char* text, size_t n) {
  ++count_;
  if (n == 0) {
    chars_.append(width_, u'\0');
  } else {
    FieldText(text, n).appendTo(chars_);
  }
}

void CharColumn::addEmptyField() {
  add(static_cast<const char16_t*>(nullptr), 0);
}

// One row per field: field r, character c at c * rows + r.
kxArray* CharColumn::getResult() {
  size_t rows = count_;
  size_t cols = rows == 0 ? width_ : chars_.size() / rows;
  kxArray* a = kxCreateUninitNumericMatrix(rows, cols, kxCHAR_CLASS, kxREAL);
  if (rows != 0 && cols != 0) {
    char16_t* out = kxGetChars(a);
    for (size_t r = 0; r < rows; ++r) {
      for (size_t c = 0; c < cols; ++c) out[c * rows + r] = chars_[r * cols + c];
    }
  }
  chars_.clear();
  count_ = 0;
  return a;
}

// ---- strings ---------------------------------------------------------------------

void StringColumn::add(const char16_t* text, size_t n) {
  size_t at = units_.size();
  char16_t* out = units_.extend(n);
  if (quote_ != 0 && n != 0 && text[0] == quote_) {
    units_.truncate(at + stripQuotes(quote_, text, text + n, out));
  } else if (n != 0) {
    std::memcpy(out, text, n * sizeof(char16_t));
  }
  ends_.push_back(units_.size());
}

void StringColumn::add(const char* text, size_t n) {
  bool quoted = quote_ != 0 && n != 0 && text[0] == static_cast<char>(quote_);
  if (quoted &&
      !std::all_of(text, text + n, [](char c) { return static_cast<uint8_t>(c) < 0x80; })) {
    // Beyond ASCII the quotes go after decoding, as from decoded text.
    decoded_.clear();
    FieldText(text, n).appendTo(decoded_);
    add(decoded_.data(), decoded_.size());
    return;
  }
  // A byte gives at most one unit.
  size_t at = units_.size();
  char16_t* out = units_.extend(n);
  size_t written =
      quoted ? stripQuotes(quote_, text, text + n, out) : decodeUtf8Units(text, n, out);
  units_.truncate(at + written);
  ends_.push_back(units_.size());
}

// An empty field is a 0-by-0 char array, any other a 1-by-n row: the rule of
// the host's cell of char rows.
kxArray* StringColumn::getResult() {
  size_t n = ends_.size();
  char16_t* units = units_.release();
  uint64_t* ends = ends_.release();
  return kxCreateCellOfCharRows(units, ends, n);
}

// ---- the column of a conversion ------------------------------------------------

std::unique_ptr<OutputColumn> makeColumn(const FormatDescription& item, const Options& options) {
  if (item.skip) return nullptr;
  double e = options.emptyValue;
  switch (item.type) {
    case Int32Alias:
    case Int32Field:
      return std::make_unique<NumericColumn<int32_t>>(e);
    case Int8Field:
      return std::make_unique<NumericColumn<int8_t>>(e);
    case Int16Field:
      return std::make_unique<NumericColumn<int16_t>>(e);
    case Int64Field:
      return std::make_unique<NumericColumn<int64_t>>(e);
    case UInt32Alias:
    case UInt32Field:
      return std::make_unique<NumericColumn<uint32_t>>(e);
    case UInt8Field:
      return std::make_unique<NumericColumn<uint8_t>>(e);
    case UInt16Field:
      return std::make_unique<NumericColumn<uint16_t>>(e);
    case UInt64Field:
      return std::make_unique<NumericColumn<uint64_t>>(e);
    case DoubleAlias:
    case DoubleField:
    case NumberField:
      return std::make_unique<NumericColumn<double>>(e);
    case SingleField:
      return std::make_unique<NumericColumn<float>>(e);
    case CharacterField:
      return std::make_unique<CharColumn>(item.width);
    case StringField:
    case SetField:
    case NegatedSetField:
      return std::make_unique<StringColumn>();
    case QuotedField:
      return std::make_unique<StringColumn>(u'"');
    case ApostropheQuotedField:
      return std::make_unique<StringColumn>(u'\'');
    case CategoricalField:
    case DatetimeField:
      return std::make_unique<PluginColumn>(requireTextColumnMaker(item.type)(item, options));
    default:
      return nullptr;
  }
}

// ---- the result cell -----------------------------------------------------------

namespace {

// Neighbouring arrays of one class side by side: m rows (the first array's),
// the columns of all of them. Each source is destroyed once copied.
kxArray* mergeGroup(std::vector<kxArray*>& parts, kxClassID cls) {
  std::vector<kxOwned> owned;
  for (kxArray* p : parts) owned.emplace_back(p);
  parts.clear();
  size_t m = kxGetM(owned[0].get());
  size_t columns = 0;
  bool complex = false;
  for (const kxOwned& p : owned) {
    columns += kxGetN(p.get());
    complex |= kxIsComplex(p.get());
  }
  kxArray* out;
  if (cls == kxCELL_CLASS) {
    out = kxCreateCellMatrix(m, owned.size());
    for (size_t k = 0; k < owned.size(); ++k) {
      size_t rows = std::min(m, kxGetNumberOfElements(owned[k].get()));
      for (size_t r = 0; r < rows; ++r) {
        kxSetCell(out, k * m + r, kxDuplicateArray(kxGetCell(owned[k].get(), r)));
      }
    }
    return out;
  }
  out = cls == kxCHAR_CLASS ? kxCreateCharMatrix(m, columns)
                            : kxCreateNumericMatrix(m, columns, cls, complex ? kxCOMPLEX : kxREAL);
  size_t element = kxClassElementSize(cls);
  auto* real = static_cast<char*>(kxGetData(out));
  auto* imag = complex ? static_cast<char*>(kxGetImagData(out)) : nullptr;
  size_t at = 0;
  for (const kxOwned& p : owned) {
    size_t bytes = std::min(kxGetNumberOfElements(p.get()), m * kxGetN(p.get())) * element;
    if (bytes != 0) {
      std::memcpy(real + at, kxGetData(p.get()), bytes);
      if (imag && kxIsComplex(p.get())) std::memcpy(imag + at, kxGetImagData(p.get()), bytes);
    }
    at += m * kxGetN(p.get()) * element;
  }
  return out;
}

}  // namespace

kxArray* assembleResults(std::vector<std::unique_ptr<OutputColumn>>& columns, bool collectOutput) {
  std::vector<kxOwned> results;
  if (!collectOutput) {
    for (auto& c : columns) results.emplace_back(c->getResult());
  } else {
    for (size_t i = 0; i < columns.size();) {
      OutputColumn& first = *columns[i];
      if (first.columnClass == kxOBJECT_CLASS) {
        results.emplace_back(first.getResult());
        ++i;
        continue;
      }
      uint64_t rows = first.fieldCount();
      std::vector<kxArray*> group;
      std::vector<kxOwned> held;
      held.emplace_back(first.getResult());
      size_t j = i + 1;
      for (; j < columns.size() && columns[j]->columnClass == first.columnClass; ++j) {
        if (columns[j]->fieldCount() < rows) columns[j]->addEmptyField();
        held.emplace_back(columns[j]->getResult());
      }
      if (held.size() == 1) {
        results.push_back(std::move(held[0]));
      } else {
        for (kxOwned& h : held) group.push_back(h.release());
        results.emplace_back(mergeGroup(group, first.columnClass));
      }
      i = j;
    }
  }
  kxArray* cell = kxCreateCellMatrix(1, results.size());
  for (size_t k = 0; k < results.size(); ++k) kxSetCell(cell, k, results[k].release());
  return cell;
}

}  // namespace textscan
