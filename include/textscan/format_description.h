// One item of a textscan format: a conversion or a literal, as the format
// parser leaves it for the readers and columns of the read.
#pragma once

#include <cstdint>
#include <string>

namespace textscan {

using ustring = std::u16string;

// The kinds of format item. The numbers are stable: the readers and columns
// switch on them, and the aliases 1, 6 and 11 (never made by the parser) are
// read as 4, 9 and 13.
enum SpecifierType : int32_t {
  LiteralField = 0,
  Int32Alias = 1,
  Int8Field = 2,   // %d8
  Int16Field = 3,  // %d16
  Int32Field = 4,  // %d, %d32
  Int64Field = 5,  // %d64
  UInt32Alias = 6,
  UInt8Field = 7,    // %u8
  UInt16Field = 8,   // %u16
  UInt32Field = 9,   // %u, %u32
  UInt64Field = 10,  // %u64
  DoubleAlias = 11,
  SingleField = 12,            // %f32
  DoubleField = 13,            // %f, %f64
  NumberField = 14,            // %n
  CharacterField = 15,         // %c
  StringField = 16,            // %s
  QuotedField = 17,            // %q, quoted by "
  ApostropheQuotedField = 18,  // %t, quoted by '
  SetField = 19,               // %[...]
  NegatedSetField = 20,        // %[^...]
  CategoricalField = 21,       // %C
  DatetimeField = 22,          // %D, %{...}D
  NoField = 23,                // a failed item, and the start value of every item
};

inline constexpr int32_t kNoWidth = -1;
inline constexpr int32_t kNoPrecision = -1;

// A plain record: the parser fills it, the read copies it into its readers
// and columns.
struct FormatDescription {
  // A literal's text (each "%%" reduced to "%"), a set's members as written,
  // or the date pattern between the braces of %{...}D; empty otherwise.
  ustring text;
  // Field width, or kNoWidth. For a literal, its length after reduction.
  int32_t width = kNoWidth;
  // Digits after the point, or kNoPrecision.
  int32_t precision = kNoPrecision;
  SpecifierType type = NoField;
  // Read but not kept. Always true for a literal.
  bool skip = false;

  friend bool operator==(const FormatDescription&, const FormatDescription&) = default;
};

// The kinds read as numbers by the number grammar (the aliases included).
constexpr bool isNumericType(SpecifierType t) {
  return t >= Int32Alias && t <= NumberField;
}

// The kinds whose text may hold spaces once the format decides so: %s, %q
// and %t. Their presence keeps an added space out of the delimiters.
constexpr bool isStringType(SpecifierType t) {
  return t == StringField || t == QuotedField || t == ApostropheQuotedField;
}

}  // namespace textscan
