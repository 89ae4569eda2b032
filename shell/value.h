// The shell's values: host arrays under shared ownership.
//
// Assignment shares an array instead of copying it; a change through an
// index copies first unless the holder is the only one (copy on write). A
// value may also view an array that lives inside another one (a cell's
// content, a struct's field): it then keeps the outer array alive, and counts
// as shared with it, so it is never changed in place while the outer array is
// visible elsewhere.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "twhost/kx_array.h"

namespace tw {

class Value {
 public:
  Value() = default;
  // Takes ownership of an array made by the host's creators.
  static Value adopt(kxArray* a);
  // A view of `inner`, which lives inside `outer`.
  static Value view(const Value& outer, kxArray* inner);

  kxArray* get() const { return p_.get(); }
  kxArray* operator->() const { return p_.get(); }
  explicit operator bool() const { return static_cast<bool>(p_); }
  // True when nobody else can see the array: it may be changed in place.
  bool unique() const { return p_.use_count() == 1; }
  // A copy of the array for a container to adopt.
  kxArray* duplicate() const { return kxDuplicateArray(p_.get()); }

 private:
  std::shared_ptr<kxArray> p_;
};

// ---- making values ----------------------------------------------------------
Value makeScalar(double v);
Value makeLogical(bool v);
Value makeEmpty();  // [] : 0-by-0 double
Value makeCharRow(const ustring& text);
Value makeCharRowUtf8(const std::string& text);
Value makeNumeric(const std::vector<size_t>& dims, kxClassID cls, bool complex = false);
Value makeCell(const std::vector<size_t>& dims);  // every element []

// ---- looking at values -------------------------------------------------------
std::vector<size_t> dimsOf(const kxArray* a);
size_t numelOf(const kxArray* a);
std::string classNameOf(const kxArray* a);
// "2x3"
std::string sizeText(const std::vector<size_t>& dims);
bool isIntegerClass(kxClassID cls);
bool isNumericOrLogicalOrChar(const kxArray* a);
bool isRealDoubleScalar(const kxArray* a);
// Element i of a numeric, logical or char array as a double (real part).
double elementAsDouble(const kxArray* a, size_t i);
// The same, exact for 64-bit integers.
long double elementAsLongDouble(const kxArray* a, size_t i);
double imagAsDouble(const kxArray* a, size_t i);
// The text of a char array, as UTF-8; anything else raises a type error that
// names `what`.
std::string textOf(const kxArray* a, const char* what);
ustring utextOf(const kxArray* a, const char* what);
bool isCharRow(const kxArray* a);
// A real numeric or logical scalar, as a double; raises otherwise.
double scalarOf(const kxArray* a, const char* what);
// The truth of a condition: non-empty and every element non-zero.
bool isTrue(const kxArray* a);
// Deep equality of values, numbers compared across classes.
bool valuesEqual(const kxArray* a, const kxArray* b);

// Writes `v` into element i of a numeric, logical or char array, with the
// host's rules for the class (rounding, saturation).
void storeElement(kxArray* a, size_t i, long double v);

// A new array of class `cls` with the given size: numbers zero, cell and
// struct slots empty. A struct takes the field names of `fieldsFrom`.
kxArray* createArray(kxClassID cls, bool complex, const std::vector<size_t>& dims,
                     const kxArray* fieldsFrom = nullptr);
// Copies element `from` of `src` into element `to` of `dst`, converting a
// number, logical or char to the class of `dst`. Cell contents and struct
// fields (matched by name) are copied, not shared.
void transferElement(kxArray* dst, size_t to, const kxArray* src, size_t from);
// Empty cell and struct slots become [] so that every reader sees a value.
void fillEmptySlots(kxArray* a);

// An element of a cell or a struct field; null slots read as [].
Value cellElement(const Value& cell, size_t i);
Value fieldElement(const Value& s, size_t i, int field);

}  // namespace tw
