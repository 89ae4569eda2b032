// The host's arrays: creation, shapes, complex data, cells and structs,
// copies, text and class conversion.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_memory.h"

namespace {

std::vector<size_t> dimsOf(const kxArray* a) {
  return {kxGetDimensions(a), kxGetDimensions(a) + kxGetNumberOfDimensions(a)};
}

struct ClassCase {
  kxClassID cls;
  const char* name;
  size_t elementSize;
};

class CreateEveryClass : public ::testing::TestWithParam<ClassCase> {};

TEST_P(CreateEveryClass, MakesAZeroedMatrixOfTheClass) {
  const ClassCase& c = GetParam();
  kxOwned a(kxCreateNumericMatrix(3, 4, c.cls, kxREAL));
  EXPECT_EQ(kxGetClassID(a.get()), c.cls);
  EXPECT_STREQ(kxGetClassName(a.get()), c.name);
  EXPECT_EQ(kxGetElementSize(a.get()), c.elementSize);
  EXPECT_EQ(kxGetNumberOfElements(a.get()), 12u);
  EXPECT_EQ(kxGetM(a.get()), 3u);
  EXPECT_EQ(kxGetN(a.get()), 4u);
  EXPECT_FALSE(kxIsComplex(a.get()));
  std::vector<unsigned char> zeros(12 * c.elementSize, 0);
  EXPECT_EQ(std::memcmp(kxGetData(a.get()), zeros.data(), zeros.size()), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Host, CreateEveryClass,
    ::testing::Values(ClassCase{kxLOGICAL_CLASS, "logical", 1}, ClassCase{kxCHAR_CLASS, "char", 2},
                      ClassCase{kxDOUBLE_CLASS, "double", 8},
                      ClassCase{kxSINGLE_CLASS, "single", 4}, ClassCase{kxINT8_CLASS, "int8", 1},
                      ClassCase{kxUINT8_CLASS, "uint8", 1}, ClassCase{kxINT16_CLASS, "int16", 2},
                      ClassCase{kxUINT16_CLASS, "uint16", 2}, ClassCase{kxINT32_CLASS, "int32", 4},
                      ClassCase{kxUINT32_CLASS, "uint32", 4}, ClassCase{kxINT64_CLASS, "int64", 8},
                      ClassCase{kxUINT64_CLASS, "uint64", 8}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(HostArray, ScalarsHoldTheirValue) {
  kxOwned d(kxCreateDoubleScalar(-2.5));
  EXPECT_TRUE(kxIsDouble(d.get()));
  EXPECT_TRUE(kxIsScalar(d.get()));
  EXPECT_EQ(kxGetScalar(d.get()), -2.5);
  EXPECT_FALSE(kxIsIntScalar(d.get()));

  kxOwned t(kxCreateLogicalScalar(true));
  EXPECT_TRUE(kxIsLogicalScalarTrue(t.get()));
  kxOwned f(kxCreateLogicalScalar(false));
  EXPECT_TRUE(kxIsLogicalScalar(f.get()));
  EXPECT_FALSE(kxIsLogicalScalarTrue(f.get()));
}

TEST(HostArray, ScalarOfAnEmptyOrNonNumericArrayIsNaN) {
  kxOwned empty(kxCreateDoubleMatrix(0, 3, kxREAL));
  EXPECT_TRUE(std::isnan(kxGetScalar(empty.get())));
  kxOwned cell(kxCreateCellMatrix(1, 1));
  EXPECT_TRUE(std::isnan(kxGetScalar(cell.get())));
}

TEST(HostArray, IntScalarAcceptsWholeValuesOfAnyNumericClass) {
  kxOwned i(kxCreateNumericMatrix(1, 1, kxINT64_CLASS, kxREAL));
  *static_cast<int64_t*>(kxGetData(i.get())) = INT64_MAX;
  EXPECT_TRUE(kxIsIntScalar(i.get()));
  kxOwned inf(kxCreateDoubleScalar(INFINITY));
  EXPECT_FALSE(kxIsIntScalar(inf.get()));
  kxOwned two(kxCreateDoubleMatrix(1, 2, kxREAL));
  EXPECT_FALSE(kxIsIntScalar(two.get()));
}

struct DimsCase {
  std::vector<size_t> given;
  std::vector<size_t> stored;
  size_t n;  // kxGetN
};

class NdSizes : public ::testing::TestWithParam<DimsCase> {};

TEST_P(NdSizes, TrailingSingletonsAreDroppedAndNCountsAllColumns) {
  const DimsCase& c = GetParam();
  kxOwned a(kxCreateNumericArray(c.given.size(), c.given.data(), kxDOUBLE_CLASS, kxREAL));
  EXPECT_EQ(dimsOf(a.get()), c.stored);
  EXPECT_EQ(kxGetN(a.get()), c.n);
  kxOwned cell(kxCreateCellArray(c.given.size(), c.given.data()));
  EXPECT_EQ(dimsOf(cell.get()), c.stored);
}

INSTANTIATE_TEST_SUITE_P(Host, NdSizes,
                         ::testing::Values(DimsCase{{2, 3, 4}, {2, 3, 4}, 12},
                                           DimsCase{{2, 3, 1, 1}, {2, 3}, 3},
                                           DimsCase{{2, 1, 4, 1}, {2, 1, 4}, 4},
                                           DimsCase{{5}, {5, 1}, 1}, DimsCase{{}, {0, 0}, 0},
                                           DimsCase{{1, 1, 1}, {1, 1}, 1},
                                           DimsCase{{0, 3, 2}, {0, 3, 2}, 6}));

TEST(HostArray, VectorMeansTwoDimensionsWithASingleton) {
  size_t nd[] = {1, 3, 2};
  kxOwned cube(kxCreateNumericArray(3, nd, kxDOUBLE_CLASS, kxREAL));
  EXPECT_FALSE(kxIsVector(cube.get()));
  kxOwned row(kxCreateDoubleMatrix(1, 5, kxREAL));
  EXPECT_TRUE(kxIsVector(row.get()));
  kxOwned one(kxCreateDoubleScalar(1));
  EXPECT_TRUE(kxIsVector(one.get()));
}

TEST(HostArray, ComplexHasASeparateImaginaryBlock) {
  kxOwned a(kxCreateDoubleMatrix(2, 2, kxCOMPLEX));
  ASSERT_TRUE(kxIsComplex(a.get()));
  ASSERT_NE(kxGetPi(a.get()), nullptr);
  EXPECT_NE(kxGetPi(a.get()), kxGetPr(a.get()));
  kxGetPi(a.get())[3] = 7;
  EXPECT_EQ(kxGetPr(a.get())[3], 0);

  kxOwned i(kxCreateNumericMatrix(1, 3, kxINT16_CLASS, kxCOMPLEX));
  EXPECT_TRUE(kxIsComplex(i.get()));
  kxSetImagData(i.get(), nullptr);
  EXPECT_FALSE(kxIsComplex(i.get()));
}

TEST(HostArray, SetDataStoresTheGivenBlock) {
  kxOwned a(kxCreateDoubleMatrix(0, 0, kxREAL));
  auto* block = static_cast<double*>(kxMallocExCheck(3 * sizeof(double)));
  block[0] = 1, block[1] = 2, block[2] = 3;
  kxSetData(a.get(), block);
  kxSetM(a.get(), 1);
  kxSetN(a.get(), 3);
  EXPECT_EQ(kxGetPr(a.get()), block);
  EXPECT_EQ(kxGetNumberOfElements(a.get()), 3u);
}

TEST(HostArray, DetachHandsTheBlockOverAndLeavesAnEmptyArray) {
  kxOwned a(kxCreateNumericMatrix(2, 3, kxINT16_CLASS, kxREAL));
  void* block = kxGetData(a.get());
  static_cast<int16_t*>(block)[5] = 7;
  EXPECT_EQ(kxDetachData(a.get()), block);
  EXPECT_EQ(kxGetClassID(a.get()), kxINT16_CLASS);
  EXPECT_EQ(kxGetNumberOfElements(a.get()), 0u);
  EXPECT_NE(kxGetData(a.get()), block);
  a.reset();
  EXPECT_EQ(static_cast<int16_t*>(block)[5], 7);  // the caller's now
  kxFree(block);
}

TEST(HostArray, DetachRefusesArraysWhoseDataIsNotOneBlock) {
  kxOwned complex(kxCreateDoubleMatrix(1, 2, kxCOMPLEX));
  kxOwned cell(kxCreateCellMatrix(1, 1));
  kxOwned sparse(kxCreateSparseDouble(2, 2));
  for (kxArray* a : {complex.get(), cell.get(), sparse.get()}) {
    void* before = kxGetData(a);
    EXPECT_EQ(kxDetachData(a), nullptr) << kxGetClassName(a);
    EXPECT_EQ(kxGetData(a), before);
  }
}

TEST(HostArray, ALentBlockIsTakenBackUntouched) {
  double lent[3] = {1, 2, 3};
  kxOwned a(kxCreateDoubleMatrix(0, 0, kxREAL));
  kxSetData(a.get(), lent);
  kxSetN(a.get(), 3);
  kxSetM(a.get(), 1);
  EXPECT_EQ(kxGetScalar(a.get()), 1);
  EXPECT_EQ(kxDetachData(a.get()), lent);
}

TEST(HostArray, CellsAdoptTheArraysTheyAreGiven) {
  kxOwned cell(kxCreateCellMatrix(1, 2));
  EXPECT_EQ(kxGetCell(cell.get(), 0), nullptr);
  kxArray* first = kxCreateDoubleScalar(1);
  kxSetCell(cell.get(), 0, first);
  EXPECT_EQ(kxGetCell(cell.get(), 0), first);
  // Replacing frees the old element; setting the same one again keeps it.
  kxSetCell(cell.get(), 0, first);
  EXPECT_EQ(kxGetScalar(kxGetCell(cell.get(), 0)), 1);
  kxSetCell(cell.get(), 0, kxCreateDoubleScalar(2));
  EXPECT_EQ(kxGetScalar(kxGetCell(cell.get(), 0)), 2);

  auto** block = static_cast<kxArray**>(kxCallocExCheck(2, sizeof(kxArray*)));
  block[0] = kxCreateString("a");
  block[1] = kxGetCell(cell.get(), 0);  // kept across the swap
  kxSetCells(cell.get(), block);
  EXPECT_EQ(kxGetCell(cell.get(), 0), block[0]);
  EXPECT_EQ(kxGetScalar(kxGetCell(cell.get(), 1)), 2);
}

TEST(HostArray, StructFieldsAreAddedAndFound) {
  const char* names[] = {"a", "b"};
  kxOwned s(kxCreateStructMatrix(1, 2, 2, names));
  EXPECT_EQ(kxGetNumberOfFields(s.get()), 2);
  EXPECT_EQ(kxGetFieldNumber(s.get(), "b"), 1);
  EXPECT_EQ(kxGetFieldNumber(s.get(), "c"), -1);
  EXPECT_EQ(kxGetField(s.get(), 1, "a"), nullptr);

  kxArray* v = kxCreateDoubleScalar(5);
  kxSetField(s.get(), 1, "b", v);
  EXPECT_EQ(kxGetField(s.get(), 1, "b"), v);
  kxSetField(s.get(), 0, "c", kxCreateDoubleScalar(6));
  EXPECT_EQ(kxGetNumberOfFields(s.get()), 3);
  EXPECT_STREQ(kxGetFieldNameByNumber(s.get(), 2), "c");
  // Adding a field keeps what the others hold.
  EXPECT_EQ(kxGetField(s.get(), 1, "b"), v);
  EXPECT_EQ(kxGetScalar(kxGetFieldByNumber(s.get(), 0, 2)), 6);
  EXPECT_EQ(kxAddField(s.get(), "a"), 0);
}

TEST(HostArray, DuplicateIsDeep) {
  kxOwned cell(kxCreateCellMatrix(1, 1));
  kxArray* inner = kxCreateDoubleMatrix(1, 2, kxCOMPLEX);
  kxGetPi(inner)[1] = 4;
  kxSetCell(cell.get(), 0, inner);
  kxOwned copy(kxDuplicateArray(cell.get()));
  kxArray* innerCopy = kxGetCell(copy.get(), 0);
  ASSERT_NE(innerCopy, inner);
  EXPECT_EQ(kxGetPi(innerCopy)[1], 4);
  kxGetPi(inner)[1] = 9;
  EXPECT_EQ(kxGetPi(innerCopy)[1], 4);

  kxOwned shared(kxCreateSharedDataCopy(inner));
  EXPECT_EQ(kxGetPi(shared.get())[1], 9);
  EXPECT_TRUE(kxIsComplex(shared.get()));
}

TEST(HostArray, ObjectsKeepTheirClassNameAndProperties) {
  kxArray* props = kxCreateStructMatrix(1, 1, 0, nullptr);
  size_t dims[] = {2, 3};
  kxOwned obj(kxCreateObjectArray("datetime", 2, dims, props));
  EXPECT_TRUE(kxIsObject(obj.get()));
  EXPECT_STREQ(kxGetClassName(obj.get()), "datetime");
  EXPECT_EQ(kxGetObjectProperties(obj.get()), props);
  EXPECT_EQ(kxGetNumberOfElements(obj.get()), 6u);
  kxOwned copy(kxDuplicateArray(obj.get()));
  EXPECT_STREQ(kxGetObjectClassName(copy.get()), "datetime");
  EXPECT_NE(kxGetObjectProperties(copy.get()), props);
}

// ---- text --------------------------------------------------------------------

TEST(HostArrayText, EmptyTextsHaveTheirOwnShapes) {
  kxOwned fromUtf8(kxCreateString(""));
  EXPECT_EQ(dimsOf(fromUtf8.get()), (std::vector<size_t>{0, 0}));
  EXPECT_TRUE(kxIsChar(fromUtf8.get()));
  kxOwned fromUnits(kxCreateStringFromNChars_UTF16(u"", 0));
  EXPECT_EQ(dimsOf(fromUnits.get()), (std::vector<size_t>{1, 0}));
}

TEST(HostArrayText, Utf8RoundTripKeepsSupplementaryCharactersAsPairs) {
  const char* text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z";  // a é € 😀 z
  kxOwned s(kxCreateString(text));
  EXPECT_EQ(kxGetM(s.get()), 1u);
  EXPECT_EQ(kxGetN(s.get()), 6u);
  EXPECT_EQ(matrix::get_ustring(s.get()), u"a\u00E9\u20AC\U0001F600z");
  EXPECT_EQ(kxArrayToUTF8StdString(s.get()), text);
  char* c = kxCreateCStrFromArray(s.get(), kxMallocEx);
  EXPECT_STREQ(c, text);
  kxFreeEx(c);
}

TEST(HostArrayText, NarrowTextMarksWideUnitsWithQuestionMarks) {
  kxOwned s(kxCreateStringFromNChars_UTF16(u"b\u00F6f\u20AC", 4));
  EXPECT_EQ(kxArrayToStdString(s.get()),
            "b\xF6"
            "f?");
}

TEST(HostArrayText, BorrowedCharsAndUtf16Copies) {
  kxOwned s = matrix::create(u"xyz", 3);
  const char16_t* p = nullptr;
  EXPECT_EQ(matrix::get_kxchar_ptr_and_len(s.get(), p), 3u);
  EXPECT_EQ(p, kxGetChars(s.get()));
  char16_t* copy = kxArrayToString_UTF16(s.get());
  EXPECT_EQ(std::u16string(copy), u"xyz");
  kxFreeEx(copy);
  kxOwned d(kxCreateDoubleScalar(3));
  EXPECT_EQ(matrix::get_kxchar_ptr_and_len(d.get(), p), 0u);
}

TEST(HostArrayText, CharMatrixRowsArePaddedWithBlanks) {
  kxOwned m(kxCreateCharMatrixFromRows({u"ab", u"c"}));
  EXPECT_EQ(dimsOf(m.get()), (std::vector<size_t>{2, 2}));
  // Column-major: a c b ' '
  EXPECT_EQ(matrix::get_ustring(m.get()), u"acb ");
}

TEST(HostArrayText, NumbersBecomeCharacterCodes) {
  kxOwned d(kxCreateDoubleMatrix(1, 3, kxREAL));
  kxGetPr(d.get())[0] = 72;
  kxGetPr(d.get())[1] = 105.4;
  kxGetPr(d.get())[2] = 70000;
  EXPECT_EQ(kxArrayToUString(d.get()), u"Hi\uFFFF");
}

// ---- kxMustBe ------------------------------------------------------------------

TEST(HostMustBe, SameClassGivesTheArrayItself) {
  kxOwned a(kxCreateDoubleScalar(1));
  EXPECT_EQ(kxMustBe(a.get(), kxDOUBLE_CLASS), a.get());
}

TEST(HostMustBe, OtherClassGivesAConvertedCopyOfTheSameShape) {
  size_t dims[] = {1, 2, 2};
  kxOwned a(kxCreateNumericArray(3, dims, kxDOUBLE_CLASS, kxCOMPLEX));
  kxGetPr(a.get())[0] = 300.5;
  kxGetPi(a.get())[3] = -2.5;
  kxOwned b(kxMustBe(a.get(), kxUINT8_CLASS));
  ASSERT_NE(b.get(), a.get());
  EXPECT_EQ(dimsOf(b.get()), dimsOf(a.get()));
  EXPECT_EQ(static_cast<uint8_t*>(kxGetData(b.get()))[0], 255);
  ASSERT_TRUE(kxIsComplex(b.get()));
  EXPECT_EQ(static_cast<uint8_t*>(kxGetImagData(b.get()))[3], 0);
}

TEST(HostMustBe, CellsAndStructsDoNotConvert) {
  kxOwned cell(kxCreateCellMatrix(1, 1));
  try {
    kxMustBe(cell.get(), kxDOUBLE_CLASS);
    FAIL() << "no error";
  } catch (const fl::except::IUserException& e) {
    EXPECT_EQ(e.get_error_id(), "KORVAN:shell:ConversionFailed");
    EXPECT_NE(e.get_message().find("cell"), std::string::npos);
    EXPECT_NE(e.get_message().find("double"), std::string::npos);
  }
  kxOwned d(kxCreateDoubleScalar(1));
  EXPECT_THROW(kxMustBe(d.get(), kxSTRUCT_CLASS), fl::except::IMsgIDException);
}

}  // namespace

namespace {

// The records of destroyed arrays are used again: nothing of the array
// before (fields, class name, sparseness, shape) shows in the next ones,
// whichever creator makes them.
TEST(HostArray, ANewArrayKeepsNothingOfADestroyedOne) {
  const char* names[] = {"alpha", "beta"};
  const size_t dims3[] = {2, 3, 4};
  for (int round = 0; round < 3; ++round) {
    kxDestroyArray(kxCreateStructMatrix(2, 2, 2, names));
    kxDestroyArray(kxCreateObjectArray("thing", 2, dims3, kxCreateStructMatrix(1, 1, 1, names)));
    kxDestroyArray(kxCreateSparseDouble(5, 5));
    kxDestroyArray(kxCreateNumericArray(3, dims3, kxINT8_CLASS, kxCOMPLEX));
  }
  std::vector<kxOwned> made;
  for (int i = 0; i < 8; ++i) {
    made.emplace_back(kxCreateDoubleScalar(i));
    made.emplace_back(kxCreateUninitNumericMatrix(1, 7, kxCHAR_CLASS, kxREAL));
  }
  for (const kxOwned& a : made) {
    EXPECT_EQ(kxGetNumberOfFields(a.get()), 0);
    EXPECT_FALSE(kxIsSparse(a.get()));
    EXPECT_FALSE(kxIsComplex(a.get()));
    EXPECT_EQ(kxGetNumberOfDimensions(a.get()), 2u);
    EXPECT_EQ(kxGetM(a.get()), 1u);
  }
  EXPECT_STREQ(kxGetClassName(made[0].get()), "double");
  EXPECT_EQ(kxGetN(made[1].get()), 7u);
  EXPECT_STREQ(kxGetClassName(made[1].get()), "char");
}

}  // namespace
