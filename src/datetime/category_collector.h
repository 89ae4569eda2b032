// The values of a %C conversion: each field's text becomes the code of its
// category, numbered from 1 in order of first appearance, 0 for undefined
// (an empty or blank field, or "<undefined>" with blanks around it). Text
// in double quotes is unquoted first, so "a" and a share a code; other text
// is kept as it stands, blanks included.
//
// At the end the interpreter's "categorical" is called with the codes, the
// code of each category, and the names in sorted order (by UTF-16 units,
// shorter first on a tie), all in the narrowest unsigned class that holds
// the codes: up to 254 categories give uint8, up to 65534 uint16.
//
// Cost per field: one hash of the text and, for a new category, one copy of
// it; a repeat of the previous field's category costs a comparison only.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "code_store.h"
#include "twhost/kx_array.h"

namespace datetime {

using ustring = std::u16string;

// True for empty or blank text, and for "<undefined>" (case-sensitive) with
// only blanks around it.
bool isUndefinedCategory(std::u16string_view text);

class CategoricalFieldConverter {
 public:
  void addField(const char16_t* units, size_t length);
  // Appends a code that an earlier field was given; returns it.
  void addCode(uint64_t code) { categoryCodes_.push(code); }
  // The code of the last field added.
  uint64_t lastFieldCode() const { return categoryCodes_.back(); }
  uint64_t fieldCount() const { return categoryCodes_.size(); }
  size_t categoryCount() const { return names_.size(); }
  // The categorical value; the collector is empty afterwards.
  kxArray* getResult();

 private:
  void addCategory(std::u16string_view text);

  ustring scratchText_;  // unquoted field text; only grows
  CodeStore categoryCodes_;
  std::deque<ustring> names_;  // by code - 1; a deque keeps the keys below in place
  std::unordered_map<std::u16string_view, uint64_t> codeOf_;
  std::u16string_view lastName_;
  uint64_t lastCode_ = 0;
};

}  // namespace datetime
