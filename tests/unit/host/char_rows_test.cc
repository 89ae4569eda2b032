// Cells of char rows made compact: they read, copy, change and free like
// any cell of char arrays, whether their elements have been made or not.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_frame.h"
#include "twhost/kx_memory.h"

namespace {

// A compact cell of the given rows, its blocks taken as a reader takes them.
kxArray* cellOfRows(const std::vector<std::u16string>& rows) {
  size_t units = 0;
  for (const auto& r : rows) units += r.size();
  auto* text = units ? static_cast<char16_t*>(kxMallocExCheck(units * sizeof(char16_t))) : nullptr;
  auto* ends = rows.empty() ? nullptr : static_cast<uint64_t*>(kxMallocExCheck(rows.size() * 8));
  uint64_t at = 0;
  for (size_t i = 0; i < rows.size(); ++i) {
    if (!rows[i].empty()) std::memcpy(text + at, rows[i].data(), rows[i].size() * 2);
    at += rows[i].size();
    ends[i] = at;
  }
  return kxCreateCellOfCharRows(text, ends, rows.size());
}

bool isCompact(const kxArray* cell) {
  const char16_t* units = nullptr;
  const uint64_t* ends = nullptr;
  return kxGetCharRows(cell, &units, &ends);
}

// Each element as an ordinary cell of char arrays holds it: class, shape
// (0-by-0 for an empty row) and units.
void expectRows(const kxArray* cell, const std::vector<std::u16string>& rows) {
  ASSERT_TRUE(kxIsCell(cell));
  ASSERT_EQ(kxGetM(cell), rows.size());
  ASSERT_EQ(kxGetN(cell), 1u);
  for (size_t i = 0; i < rows.size(); ++i) {
    SCOPED_TRACE("row " + std::to_string(i));
    const kxArray* e = kxGetCell(cell, i);
    ASSERT_NE(e, nullptr);
    EXPECT_TRUE(kxIsChar(e));
    EXPECT_EQ(kxGetM(e), rows[i].empty() ? 0u : 1u);
    EXPECT_EQ(kxGetN(e), rows[i].size());
    EXPECT_EQ(kxArrayToUString(e), rows[i]);
  }
}

const std::vector<std::u16string> kRows = {u"alpha", u"", u"x", u"caf\u00e9 \xd83d\xde00", u""};

TEST(CharRowsCell, ReadsDirectlyUntilAnElementIsAskedFor) {
  kxOwned cell(cellOfRows(kRows));
  const char16_t* units = nullptr;
  const uint64_t* ends = nullptr;
  ASSERT_TRUE(kxGetCharRows(cell.get(), &units, &ends));
  EXPECT_EQ(std::u16string(units, ends[0]), u"alpha");
  EXPECT_EQ(ends[4], ends[3]);
  expectRows(cell.get(), kRows);
  EXPECT_FALSE(isCompact(cell.get()));
}

TEST(CharRowsCell, OtherDimensionsOfTheSameCountKeepTheRows) {
  kxOwned cell(cellOfRows({u"a", u"bc", u"", u"d"}));
  size_t square[2] = {2, 2};
  kxSetDimensions(cell.get(), square, 2);
  EXPECT_TRUE(isCompact(cell.get()));
  size_t more[2] = {1, 6};
  kxSetDimensions(cell.get(), more, 2);
  EXPECT_FALSE(isCompact(cell.get()));  // no rows for the last two slots
  EXPECT_EQ(kxArrayToUString(kxGetCell(cell.get(), 1)), u"bc");
  EXPECT_EQ(kxGetCell(cell.get(), 5), nullptr);
}

TEST(CharRowsCell, EdgeShapes) {
  kxOwned none(cellOfRows({}));
  EXPECT_EQ(kxGetM(none.get()), 0u);
  EXPECT_EQ(kxGetN(none.get()), 1u);
  EXPECT_TRUE(kxIsEmpty(none.get()));
  expectRows(none.get(), {});
  kxOwned blanks(cellOfRows({u"", u"", u""}));  // rows but no units at all
  expectRows(blanks.get(), {u"", u"", u""});
}

TEST(CharRowsCell, CopiesAreCompactAndIndependent) {
  kxOwned cell(cellOfRows(kRows));
  kxOwned copy(kxDuplicateArray(cell.get()));
  EXPECT_TRUE(isCompact(copy.get()));
  cell.reset();
  expectRows(copy.get(), kRows);
  // A copy made after the elements were made is an ordinary deep copy.
  kxOwned again(kxDuplicateArray(copy.get()));
  EXPECT_FALSE(isCompact(again.get()));
  EXPECT_NE(kxGetCell(again.get(), 0), kxGetCell(copy.get(), 0));
  expectRows(again.get(), kRows);
}

TEST(CharRowsCell, ChangesToOneElementLeaveTheOthers) {
  kxOwned cell(cellOfRows(kRows));
  kxSetCell(cell.get(), 2, kxCreateDoubleScalar(7));
  kxSetCell(cell.get(), 0, nullptr);
  EXPECT_EQ(kxGetCell(cell.get(), 0), nullptr);
  EXPECT_EQ(kxGetScalar(kxGetCell(cell.get(), 2)), 7);
  EXPECT_EQ(kxArrayToUString(kxGetCell(cell.get(), 3)), kRows[3]);

  // Elements given back in another order through the slot block.
  kxOwned other(cellOfRows({u"a", u"b"}));
  auto** swapped = static_cast<kxArray**>(kxMallocExCheck(2 * sizeof(kxArray*)));
  swapped[0] = kxGetCell(other.get(), 1);
  swapped[1] = kxGetCell(other.get(), 0);
  kxSetCells(other.get(), swapped);
  expectRows(other.get(), {u"b", u"a"});
}

TEST(CharRowsCell, TheSlotBlockHoldsTheMadeElements) {
  kxOwned cell(cellOfRows({u"p", u"qr"}));
  auto** slots = static_cast<kxArray**>(kxGetData(cell.get()));
  EXPECT_FALSE(isCompact(cell.get()));
  EXPECT_EQ(slots[1], kxGetCell(cell.get(), 1));
  // New data for the cell frees what it held, compact or not.
  kxOwned compact(cellOfRows({u"gone"}));
  kxSetData(compact.get(), kxCallocExCheck(1, sizeof(kxArray*)));
  EXPECT_EQ(kxGetCell(compact.get(), 0), nullptr);
}

// Under the sanitizers these also show that nothing leaks or is freed twice.
TEST(CharRowsCell, TheCellOwnsItsBlocksInACallFrame) {
  {
    kxCallFrame frame;
    kxArray* cell = cellOfRows(kRows);
    EXPECT_EQ(frame.liveBlocks(), 0u);
    EXPECT_EQ(frame.liveArrays(), 1u);
    frame.keep(cell);
    kxDestroyArray(cell);
  }
  try {
    kxCallFrame frame;
    kxArray* cell = cellOfRows(kRows);
    kxGetCell(cell, 0);  // half the cases made, the other half left compact
    cellOfRows(kRows);
    kxThrowId("KORVAN:FileIO", "InvalidFid");
  } catch (...) {
  }
}

}  // namespace
