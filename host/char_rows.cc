// Cells of char rows in their compact form: every row's units in one block
// and where each row ends in another, so that a reader's million strings
// cost two blocks rather than three allocations each. The elements become
// ordinary arrays the first time anything reaches for the slots.
#include <algorithm>
#include <cstring>
#include <new>

#include "array_impl.h"
#include "twhost/errors.h"
#include "twhost/kx_frame.h"
#include "twhost/kx_memory.h"

namespace twhost {

struct CharRows {
  char16_t* units = nullptr;  // allocData block, or null when no row has units
  uint64_t* ends = nullptr;   // allocData block of `count` ends, or null
  size_t count = 0;
};

namespace {

size_t unitsOf(const CharRows& rows) {
  return rows.count == 0 ? 0 : static_cast<size_t>(rows.ends[rows.count - 1]);
}

void freeRows(CharRows* rows) {
  freeData(rows->units);
  freeData(rows->ends);
  delete rows;
}

// Row `i` as an array of its own, no longer recorded in any call frame.
kxArray* rowArray(const CharRows& rows, size_t i) {
  uint64_t start = i == 0 ? 0 : rows.ends[i - 1];
  size_t length = static_cast<size_t>(rows.ends[i] - start);
  kxArray* a = length == 0 ? kxCreateCharMatrix(0, 0)
                           : kxCreateStringFromNChars_UTF16(rows.units + start, length);
  kxReleaseFromFrames(a);
  return a;
}

}  // namespace

void makeRowElements(const kxArray* cell) {
  if (!cell->rows) return;
  // Logically const: the cell holds the same values afterwards.
  auto* a = const_cast<kxArray*>(cell);
  const CharRows& rows = *a->rows;
  size_t slots = elementCount(a->dims);
  auto** made = static_cast<kxArray**>(allocData(slots * sizeof(kxArray*), true));
  size_t i = 0;
  try {
    for (size_t n = std::min(slots, rows.count); i < n; ++i) made[i] = rowArray(rows, i);
  } catch (...) {
    // The cell stays compact and whole.
    while (i > 0) kxDestroyArray(made[--i]);
    freeData(made);
    throw;
  }
  freeData(a->pr);
  a->pr = made;
  dropCharRows(a);
}

void dropCharRows(kxArray* cell) {
  if (!cell->rows) return;
  freeRows(cell->rows);
  cell->rows = nullptr;
}

void copyCharRows(const kxArray* from, kxArray* to) {
  const CharRows& source = *from->rows;
  size_t units = unitsOf(source);
  auto* rows = new CharRows;
  try {
    rows->count = source.count;
    if (units != 0) {
      rows->units = static_cast<char16_t*>(allocData(units * sizeof(char16_t), false));
      std::memcpy(rows->units, source.units, units * sizeof(char16_t));
    }
    if (source.count != 0) {
      rows->ends = static_cast<uint64_t*>(allocData(source.count * sizeof(uint64_t), false));
      std::memcpy(rows->ends, source.ends, source.count * sizeof(uint64_t));
    }
  } catch (...) {
    freeRows(rows);
    throw;
  }
  to->rows = rows;
}

}  // namespace twhost

kxArray* kxCreateCellOfCharRows(char16_t* units, uint64_t* ends, size_t n) {
  // The blocks are the cell's from the start, so that a failure below
  // frees them rather than leaving them to the caller's frame.
  if (units) twhost::forgetBlock(units);
  if (ends) twhost::forgetBlock(ends);
  auto* rows = new (std::nothrow) twhost::CharRows{units, ends, ends ? n : 0};
  if (!rows) {
    twhost::freeData(units);
    twhost::freeData(ends);
    fl::except::bad_alloc();
  }
  kxArray* cell;
  try {
    cell = kxCreateCellMatrix(0, 1);
  } catch (...) {
    twhost::freeData(units);
    twhost::freeData(ends);
    delete rows;
    throw;
  }
  cell->dims = {n, 1};
  cell->rows = rows;
  return cell;
}

bool kxGetCharRows(const kxArray* cell, const char16_t** units, const uint64_t** ends) {
  // A cell whose dimensions were changed to another count no longer has
  // one row for each slot.
  if (!cell->rows || twhost::elementCount(cell->dims) != cell->rows->count) return false;
  *units = cell->rows->units;
  *ends = cell->rows->ends;
  return true;
}
