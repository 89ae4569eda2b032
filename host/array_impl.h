// The host's private layout of an array, shared by the host's own files.
#pragma once

#include <string>
#include <vector>

#include "twhost/kx_array.h"

namespace twhost {
struct CharRows;
}

struct kxArray_tag {
  kxClassID cls = kxDOUBLE_CLASS;
  std::vector<size_t> dims{0, 0};  // always at least two
  // Numeric, logical and char: the element block. Cell: kxArray*[n].
  // Struct: kxArray*[n * fields.size()], element-major. Never null.
  void* pr = nullptr;
  void* pi = nullptr;  // imaginary block of a complex numeric array, else null
  bool sparse = false;
  std::vector<std::string> fields;
  std::string className;     // objects
  kxArray* props = nullptr;  // objects: 1-by-1 struct of properties
  // A cell of char rows still in its compact form (char_rows.cc); its `pr`
  // is then a placeholder until the elements are made. Else null.
  twhost::CharRows* rows = nullptr;
};

namespace twhost {

size_t elementCount(const std::vector<size_t>& dims);
// Data blocks of arrays: zeroed or not, at least one byte, huge-page advised
// when large. Not recorded in any call frame.
void* allocData(size_t bytes, bool zero);
void freeData(void* p);

// Cells of char rows (char_rows.cc). The elements of a compact cell are
// made as arrays, and the compact form given up, the first time anything
// reads or changes the cell's slots; a no-op for any other array.
void makeRowElements(const kxArray* cell);
// Frees the compact form of the cell (its placeholder `pr` stays).
void dropCharRows(kxArray* cell);
// A copy of the compact form of `from` for the new cell `to`.
void copyCharRows(const kxArray* from, kxArray* to);

// Call-frame records (frame.cc).
void recordArray(kxArray* a);
void forgetArray(kxArray* a);
void recordBlock(void* p);
void forgetBlock(void* p);

}  // namespace twhost
