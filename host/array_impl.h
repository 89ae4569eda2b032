// The host's private layout of an array, shared by the host's own files.
#pragma once

#include <string>
#include <vector>

#include "twhost/kx_array.h"

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
};

namespace twhost {

size_t elementCount(const std::vector<size_t>& dims);
// Data blocks of arrays: zeroed or not, at least one byte, huge-page advised
// when large. Not recorded in any call frame.
void* allocData(size_t bytes, bool zero);
void freeData(void* p);

// Call-frame records (frame.cc).
void recordArray(kxArray* a);
void forgetArray(kxArray* a);
void recordBlock(void* p);
void forgetBlock(void* p);

}  // namespace twhost
