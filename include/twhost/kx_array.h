// The host's array: the one value type that crosses between the host and the
// library. The layout is private to the host; everything goes through these
// calls. Data blocks come from the kxMalloc family (kx_memory.h) and are owned
// by the array that adopts them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "twhost/export.h"

using ustring = std::u16string;

enum kxClassID : int32_t {
  kxUNKNOWN_CLASS = 0,
  kxCELL_CLASS = 1,
  kxSTRUCT_CLASS = 2,
  kxLOGICAL_CLASS = 3,
  kxCHAR_CLASS = 4,
  kxVOID_CLASS = 5,
  kxDOUBLE_CLASS = 6,
  kxSINGLE_CLASS = 7,
  kxINT8_CLASS = 8,
  kxUINT8_CLASS = 9,
  kxINT16_CLASS = 10,
  kxUINT16_CLASS = 11,
  kxINT32_CLASS = 12,
  kxUINT32_CLASS = 13,
  kxINT64_CLASS = 14,
  kxUINT64_CLASS = 15,
  kxFUNCTION_CLASS = 16,
  // Values of a named class (datetime, categorical): a property struct plus
  // the class name. Stored ids above 16 are resolved by the non-trivial query.
  kxOBJECT_CLASS = 17,
};

enum kxComplexity : int32_t { kxREAL = 0, kxCOMPLEX = 1 };

using kxLogical = bool;
using kxChar = char16_t;

struct kxArray_tag;
using kxArray = kxArray_tag;

// Element size in bytes of the numeric, logical and char classes; 0 otherwise.
TW_HOST size_t kxClassElementSize(kxClassID cls);
// "double", "int8", "cell", ... and the object's own name for objects.
TW_HOST const char* kxClassNameOf(kxClassID cls);

// ---- queries ---------------------------------------------------------------
TW_HOST kxClassID kxGetClassID(const kxArray* a);
TW_HOST const char* kxGetClassName(const kxArray* a);
TW_HOST bool kxIsNumeric(const kxArray* a);
TW_HOST bool kxIsSparse(const kxArray* a);
TW_HOST bool kxIsComplex(const kxArray* a);
TW_HOST bool kxIsChar(const kxArray* a);
TW_HOST bool kxIsLogical(const kxArray* a);
TW_HOST bool kxIsDouble(const kxArray* a);
TW_HOST bool kxIsCell(const kxArray* a);
TW_HOST bool kxIsStruct(const kxArray* a);
TW_HOST bool kxIsObject(const kxArray* a);
TW_HOST bool kxIsEmpty(const kxArray* a);
TW_HOST bool kxIsScalar(const kxArray* a);
// True for a 2-d array with one dimension equal to 1 (a 1-by-1 counts).
TW_HOST bool kxIsVector(const kxArray* a);
// A real numeric scalar whose value is an integer.
TW_HOST bool kxIsIntScalar(const kxArray* a);
TW_HOST bool kxIsLogicalScalar(const kxArray* a);
TW_HOST bool kxIsLogicalScalarTrue(const kxArray* a);

TW_HOST size_t kxGetNumberOfElements(const kxArray* a);
TW_HOST size_t kxGetM(const kxArray* a);
// Columns, counting every trailing dimension: prod(dims(2:end)).
TW_HOST size_t kxGetN(const kxArray* a);
TW_HOST size_t kxGetNumberOfDimensions(const kxArray* a);
TW_HOST const size_t* kxGetDimensions(const kxArray* a);
TW_HOST size_t kxGetElementSize(const kxArray* a);

TW_HOST void* kxGetData(const kxArray* a);
TW_HOST void* kxGetImagData(const kxArray* a);
TW_HOST double* kxGetPr(const kxArray* a);
TW_HOST double* kxGetPi(const kxArray* a);
TW_HOST kxLogical* kxGetLogicals(const kxArray* a);
TW_HOST kxChar* kxGetChars(const kxArray* a);
// First element as a double (real part); NaN for an empty or non-numeric array.
TW_HOST double kxGetScalar(const kxArray* a);

// ---- creation --------------------------------------------------------------
TW_HOST kxArray* kxCreateDoubleScalar(double v);
TW_HOST kxArray* kxCreateLogicalScalar(bool v);
TW_HOST kxArray* kxCreateDoubleMatrix(size_t m, size_t n, kxComplexity c);
TW_HOST kxArray* kxCreateLogicalMatrix(size_t m, size_t n);
TW_HOST kxArray* kxCreateNumericMatrix(size_t m, size_t n, kxClassID cls, kxComplexity c);
TW_HOST kxArray* kxCreateUninitNumericMatrix(size_t m, size_t n, kxClassID cls, kxComplexity c);
TW_HOST kxArray* kxCreateNumericArray(size_t ndim, const size_t* dims, kxClassID cls,
                                      kxComplexity c);
TW_HOST kxArray* kxCreateCharMatrix(size_t m, size_t n);
TW_HOST kxArray* kxCreateCellMatrix(size_t m, size_t n);
TW_HOST kxArray* kxCreateCellArray(size_t ndim, const size_t* dims);
TW_HOST kxArray* kxCreateStructMatrix(size_t m, size_t n, int nfields, const char** names);
TW_HOST kxArray* kxCreateStructArray(size_t ndim, const size_t* dims, int nfields,
                                     const char** names);
// A char array from UTF-8 text: 1-by-n, except that "" gives 0-by-0.
TW_HOST kxArray* kxCreateString(const char* utf8);
// Always 1-by-n, so 1-by-0 for n = 0.
TW_HOST kxArray* kxCreateStringFromNChars_UTF16(const char16_t* chars, size_t n);
// An n-by-1 cell of char rows made in O(1) allocations, for readers that
// make millions of short texts: row i is the units [ends[i-1], ends[i]) of
// `units` (from 0 for the first), a 1-by-len char array, or the empty text
// (0-by-0) when it has none. The cell adopts both blocks (from kxMallocEx;
// null when there are no units or no rows). It is a cell like any other:
// its elements are made as arrays the first time something asks for one
// (kxGetCell, kxSetCell, kxGetData...), at the cost of making them one by
// one; until then copying and destroying it cost a copy or free of the two
// blocks, and kxGetCharRows reads it directly.
TW_HOST kxArray* kxCreateCellOfCharRows(char16_t* units, uint64_t* ends, size_t n);
// The blocks of a cell made by kxCreateCellOfCharRows whose elements have not
// been made yet (borrowed; kxGetNumberOfElements rows); false, with the
// pointers untouched, for any other array.
TW_HOST bool kxGetCharRows(const kxArray* cell, const char16_t** units, const uint64_t** ends);
// A char matrix whose rows are the given texts, padded with blanks.
TW_HOST kxArray* kxCreateCharMatrixFromRows(const std::vector<ustring>& rows);
// An object value of a named class: `props` (adopted) is a 1-by-1 struct of
// its properties; the value's own size is given by dims.
TW_HOST kxArray* kxCreateObjectArray(const char* className, size_t ndim, const size_t* dims,
                                     kxArray* props);
TW_HOST kxArray* kxCreateSparseDouble(size_t m, size_t n);

TW_HOST kxArray* kxCreateSharedDataCopy(const kxArray* a);
TW_HOST kxArray* kxDuplicateArray(const kxArray* a);
TW_HOST void kxDestroyArray(kxArray* a);

// Returns `a` itself when it already has class `cls`, else a new converted
// array that the caller destroys. Conversion follows the host's rules.
TW_HOST kxArray* kxMustBe(const kxArray* a, kxClassID cls);

// ---- changing an array -----------------------------------------------------
// The setters adopt what they are given: blocks from kxMallocEx, arrays made
// by the creators. What they replace is freed.
TW_HOST void kxSetData(kxArray* a, void* block);
// Takes the data block out of a real numeric, logical or char array: the
// caller owns it from now on and frees it with kxFree. The array is left
// 0-by-0 of the same class, still to be destroyed by its owner. Null, with
// the array untouched, for complex and sparse arrays and for classes that
// hold arrays or nothing (cell, struct, object, function). No copy, O(1).
//
// With kxSetData it also lends a block the caller keeps to a call that only
// reads its inputs (the built-ins never write into what they borrow):
// kxSetData(a, lent) before the call, kxDetachData(a) after it, also when it
// fails, and only then kxDestroyArray(a).
TW_HOST void* kxDetachData(kxArray* a);
TW_HOST void kxSetImagData(kxArray* a, void* block);
TW_HOST void kxSetM(kxArray* a, size_t m);
TW_HOST void kxSetN(kxArray* a, size_t n);
TW_HOST void kxSetDimensions(kxArray* a, const size_t* dims, size_t ndim);
TW_HOST void kxSetCell(kxArray* cell, size_t index, kxArray* value);
// Adopts a kxMallocEx block of kxGetNumberOfElements(cell) array pointers.
TW_HOST void kxSetCells(kxArray* cell, kxArray** values);
TW_HOST kxArray* kxGetCell(const kxArray* cell, size_t index);

TW_HOST int kxGetNumberOfFields(const kxArray* s);
TW_HOST const char* kxGetFieldNameByNumber(const kxArray* s, int field);
TW_HOST int kxGetFieldNumber(const kxArray* s, const char* name);
TW_HOST int kxAddField(kxArray* s, const char* name);
TW_HOST kxArray* kxGetField(const kxArray* s, size_t index, const char* name);
TW_HOST kxArray* kxGetFieldByNumber(const kxArray* s, size_t index, int field);
TW_HOST void kxSetField(kxArray* s, size_t index, const char* name, kxArray* value);
TW_HOST void kxSetFieldByNumber(kxArray* s, size_t index, int field, kxArray* value);

// Objects: the class name and the property struct (borrowed).
TW_HOST const char* kxGetObjectClassName(const kxArray* a);
TW_HOST kxArray* kxGetObjectProperties(const kxArray* a);

enum kxVariableScope : int32_t { kxLOCAL_SCOPE = 0, kxGLOBAL_SCOPE = 1 };
TW_HOST void kxSetArrayScope(kxArray* a, kxVariableScope scope);

// ---- text out of an array ---------------------------------------------------
// Characters in column-major order. Non-char arrays give their values as codes.
TW_HOST ustring kxArrayToUString(const kxArray* a);
TW_HOST std::string kxArrayToUTF8StdString(const kxArray* a);
// Narrow text for short keywords: units above 0xFF become '?'.
TW_HOST std::string kxArrayToStdString(const kxArray* a);
// A new NUL-terminated UTF-16 block from kxMallocEx.
TW_HOST char16_t* kxArrayToString_UTF16(const kxArray* a);
// A new NUL-terminated UTF-8 text made with the given allocator.
TW_HOST char* kxCreateCStrFromArray(const kxArray* a, void* (*allocator)(size_t));
TW_HOST char* kxArray2String(const kxArray* a);

// ---- owned arrays -----------------------------------------------------------
struct kxDestroyDeleter {
  void operator()(kxArray* a) const { kxDestroyArray(a); }
};
using kxOwned = std::unique_ptr<kxArray, kxDestroyDeleter>;

namespace matrix {
TW_HOST ustring get_ustring(const kxArray* a);
// Borrowed pointer to the char data and its length.
TW_HOST size_t get_kxchar_ptr_and_len(const kxArray* a, const char16_t*& ptr);
TW_HOST kxOwned create(const char16_t* chars, size_t n);
// Releases an owned array so that it can be stored in plhs.
inline kxArray* to_korvan(kxOwned owned) {
  return owned.release();
}
}  // namespace matrix
