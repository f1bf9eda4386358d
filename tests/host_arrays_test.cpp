// Host arrays: shapes, classes, equality, cell/struct ownership and behaviour
// when allocations fail.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "host_test_support.h"

namespace {

using host_test::Array;
using host_test::errorId;

std::vector<zrSize> dimsOf(const zrArray_tag* a) {
  return {zrGetDimensions(a), zrGetDimensions(a) + zrGetNumberOfDimensions(a)};
}

class HostArrays : public ::testing::Test {
 protected:
  void SetUp() override { baseline_ = hostLiveArrayCount(); }
  void TearDown() override { EXPECT_EQ(hostLiveArrayCount(), baseline_) << "host arrays leaked"; }
  std::int64_t baseline_ = 0;
};

TEST_F(HostArrays, ClassTableGivesNamesSizesAndKinds) {
  struct Row {
    zrClassID id;
    const char* name;
    zrSize size;
    bool numeric;
  };
  const Row rows[] = {
      {zrDOUBLE_CLASS, "double", 8, true},    {zrSINGLE_CLASS, "single", 4, true},
      {zrINT8_CLASS, "int8", 1, true},        {zrUINT8_CLASS, "uint8", 1, true},
      {zrINT16_CLASS, "int16", 2, true},      {zrUINT16_CLASS, "uint16", 2, true},
      {zrINT32_CLASS, "int32", 4, true},      {zrUINT32_CLASS, "uint32", 4, true},
      {zrINT64_CLASS, "int64", 8, true},      {zrUINT64_CLASS, "uint64", 8, true},
      {zrLOGICAL_CLASS, "logical", 1, false}, {zrCHAR_CLASS, "char", 2, false},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.name);
    Array a(zrCreateNumericMatrix(2, 3, r.id));
    EXPECT_EQ(zrGetClassID(a.get()), r.id);
    EXPECT_STREQ(zrGetClassName(a.get()), r.name);
    EXPECT_EQ(zrGetElementSize(a.get()), r.size);
    EXPECT_EQ(zrIsNumeric(a.get()), r.numeric);
    EXPECT_EQ(zrIsDouble(a.get()), r.id == zrDOUBLE_CLASS);
    EXPECT_EQ(zrGetPr(a.get()) != nullptr, r.id == zrDOUBLE_CLASS);
    const auto* bytes = static_cast<const unsigned char*>(zrGetData(a.get()));
    for (zrSize k = 0; k < 6 * r.size; ++k) ASSERT_EQ(bytes[k], 0) << "not zero-filled at byte " << k;
  }
  EXPECT_EQ(errorId([] { zrCreateNumericMatrix(1, 1, zrCELL_CLASS); }), "Tavrix::host::InvalidClass");
  EXPECT_EQ(errorId([] { zrCreateNumericMatrix(1, 1, static_cast<zrClassID>(99)); }),
            "Tavrix::host::InvalidClass");
}

TEST_F(HostArrays, ShapesAreCanonicalAndGetNFoldsTrailingDimensions) {
  struct Row {
    const char* label;
    std::vector<zrSize> dims;
    zrSize ndim;  // passed to the call; may be shorter than dims
    std::vector<zrSize> expected;
    zrSize m, n;
  };
  const Row rows[] = {
      {"3-D", {2, 3, 4}, 3, {2, 3, 4}, 2, 12},
      {"trailing 1 dropped", {2, 3, 1, 1}, 4, {2, 3}, 2, 3},
      {"inner 1 kept", {2, 1, 3}, 3, {2, 1, 3}, 2, 3},
      {"one dimension is a column", {5}, 1, {5, 1}, 5, 1},
      {"no dimensions is a scalar", {}, 0, {1, 1}, 1, 1},
      {"empty 3-D", {0, 3, 2}, 3, {0, 3, 2}, 0, 6},
      {"1 x 1 x 1 is 1 x 1", {1, 1, 1}, 3, {1, 1}, 1, 1},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.label);
    Array a(zrCreateNumericArray(r.ndim, r.dims.data(), zrINT16_CLASS));
    EXPECT_EQ(dimsOf(a.get()), r.expected);
    EXPECT_EQ(zrGetM(a.get()), r.m);
    EXPECT_EQ(zrGetN(a.get()), r.n);
    EXPECT_EQ(zrGetNumberOfElements(a.get()), r.m * r.n);
  }
}

TEST_F(HostArrays, ShapePredicates) {
  struct Row {
    const char* label;
    std::vector<zrSize> dims;
    bool empty, scalar, vector;
  };
  const Row rows[] = {
      {"1x1", {1, 1}, false, true, true},       {"1x5", {1, 5}, false, false, true},
      {"5x1", {5, 1}, false, false, true},      {"0x1", {0, 1}, true, false, true},
      {"1x0", {1, 0}, true, false, true},       {"0x0", {0, 0}, true, false, false},
      {"2x2", {2, 2}, false, false, false},     {"1x1x2", {1, 1, 2}, false, false, false},
      {"3x0x2", {3, 0, 2}, true, false, false},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.label);
    Array a(zrCreateCellArray(r.dims.size(), r.dims.data()));
    EXPECT_EQ(zrIsEmpty(a.get()), r.empty);
    EXPECT_EQ(zrIsScalar(a.get()), r.scalar);
    EXPECT_EQ(zrIsVector(a.get()), r.vector);
  }
}

TEST_F(HostArrays, SetDimensionsRejectsBadInputAndLeavesShape) {
  Array a(zrCreateDoubleMatrix(2, 6));
  const zrSize good[3] = {3, 2, 2};
  const zrSize overflow[3] = {std::numeric_limits<zrSize>::max() / 2 + 1, 2, 1};
  EXPECT_FALSE(zrSetDimensions(a.get(), nullptr, 2));
  EXPECT_FALSE(zrSetDimensions(a.get(), good, 1));
  EXPECT_FALSE(zrSetDimensions(a.get(), good, 0));
  EXPECT_EQ(errorId([&] { zrSetDimensions(a.get(), overflow, 3); }), kHostOutOfMemoryId);
  EXPECT_EQ(dimsOf(a.get()), (std::vector<zrSize>{2, 6}));
  zrGetPr(a.get())[11] = 7;
  EXPECT_TRUE(zrSetDimensions(a.get(), good, 3));
  EXPECT_EQ(dimsOf(a.get()), (std::vector<zrSize>{3, 2, 2}));
  EXPECT_EQ(zrGetPr(a.get())[11], 7.0) << "reshaping keeps the elements in order";
  zrSetN(a.get(), 4);  // makes it 2-D
  EXPECT_EQ(dimsOf(a.get()), (std::vector<zrSize>{3, 4}));
  zrSetM(a.get(), 1);
  EXPECT_EQ(dimsOf(a.get()), (std::vector<zrSize>{1, 4}));
  EXPECT_EQ(errorId([] { zrSetM(nullptr, 1); }), "Tavrix::host::NullArray");
}

TEST_F(HostArrays, ElementCountOverflowRaisesOutOfMemory) {
  const zrSize big = std::numeric_limits<zrSize>::max() / 2 + 1;
  const zrSize elements[3] = {big, 2, 1};    // element count wraps to 0
  const zrSize bytes[2] = {big / 4 + 1, 1};  // element count fits, bytes wrap
  EXPECT_EQ(errorId([&] { zrCreateNumericArray(3, elements, zrUINT8_CLASS); }), kHostOutOfMemoryId);
  EXPECT_EQ(errorId([&] { zrCreateNumericArray(2, bytes, zrDOUBLE_CLASS); }), kHostOutOfMemoryId);
  EXPECT_EQ(errorId([&] { zrCreateCellArray(3, elements); }), kHostOutOfMemoryId);
  EXPECT_EQ(errorId([&] { zrCreateDoubleMatrix(big, 4); }), kHostOutOfMemoryId);
}

// ---- Equality --------------------------------------------------------------------------

template <class T>
void store(void* data, double v) {
  *static_cast<T*>(data) = static_cast<T>(v);
}

Array scalarOf(zrClassID cls, double v) {
  static const std::pair<zrClassID, void (*)(void*, double)> kStores[] = {
      {zrDOUBLE_CLASS, store<double>},      {zrSINGLE_CLASS, store<float>},
      {zrINT8_CLASS, store<std::int8_t>},   {zrUINT8_CLASS, store<std::uint8_t>},
      {zrINT16_CLASS, store<std::int16_t>}, {zrUINT16_CLASS, store<std::uint16_t>},
      {zrINT32_CLASS, store<std::int32_t>}, {zrUINT32_CLASS, store<std::uint32_t>},
      {zrINT64_CLASS, store<std::int64_t>}, {zrUINT64_CLASS, store<std::uint64_t>},
      {zrLOGICAL_CLASS, store<bool>},       {zrCHAR_CLASS, store<char16_t>},
  };
  Array a(zrCreateNumericMatrix(1, 1, cls));
  for (const auto& [id, write] : kStores) {
    if (id == cls) write(zrGetData(a.get()), v);
  }
  return a;
}

TEST_F(HostArrays, EqualityComparesClassShapeAndValues) {
  const zrClassID classes[] = {zrDOUBLE_CLASS, zrSINGLE_CLASS, zrINT8_CLASS,    zrUINT8_CLASS,
                               zrINT16_CLASS,  zrUINT16_CLASS, zrINT32_CLASS,   zrUINT32_CLASS,
                               zrINT64_CLASS,  zrUINT64_CLASS, zrLOGICAL_CLASS, zrCHAR_CLASS};
  for (zrClassID cls : classes) {
    SCOPED_TRACE(zrGetClassName(scalarOf(cls, 0).get()));
    EXPECT_TRUE(zrArrayEqual(scalarOf(cls, 1).get(), scalarOf(cls, 1).get()));
    EXPECT_FALSE(zrArrayEqual(scalarOf(cls, 1).get(), scalarOf(cls, 0).get()));
    const zrClassID other = cls == zrDOUBLE_CLASS ? zrSINGLE_CLASS : zrDOUBLE_CLASS;
    EXPECT_FALSE(zrArrayEqual(scalarOf(cls, 1).get(), scalarOf(other, 1).get())) << "class must match";
  }
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(zrArrayEqual(scalarOf(zrDOUBLE_CLASS, nan).get(), scalarOf(zrDOUBLE_CLASS, nan).get()));
  EXPECT_FALSE(zrArrayEqual(scalarOf(zrSINGLE_CLASS, nan).get(), scalarOf(zrSINGLE_CLASS, nan).get()));
  EXPECT_TRUE(zrArrayEqual(scalarOf(zrDOUBLE_CLASS, 0.0).get(), scalarOf(zrDOUBLE_CLASS, -0.0).get()));
  // Above 2^53 neighbouring 64-bit integers round to the same double.
  Array big1 = scalarOf(zrINT64_CLASS, 0), big2 = scalarOf(zrINT64_CLASS, 0);
  *static_cast<std::int64_t*>(zrGetData(big1.get())) = (std::int64_t{1} << 60) + 1;
  *static_cast<std::int64_t*>(zrGetData(big2.get())) = (std::int64_t{1} << 60);
  EXPECT_FALSE(zrArrayEqual(big1.get(), big2.get()));
  Array u1 = scalarOf(zrUINT64_CLASS, 0), u2 = scalarOf(zrUINT64_CLASS, 0);
  *static_cast<std::uint64_t*>(zrGetData(u1.get())) = ~std::uint64_t{0};
  *static_cast<std::uint64_t*>(zrGetData(u2.get())) = ~std::uint64_t{0} - 1;
  EXPECT_FALSE(zrArrayEqual(u1.get(), u2.get()));
  // Takes ownership of both arrays.
  auto equal = [](zrArray_tag* a, zrArray_tag* b) { return zrArrayEqual(Array(a).get(), Array(b).get()); };
  // Same elements, different shape.
  EXPECT_FALSE(equal(zrCreateDoubleMatrix(2, 3), zrCreateDoubleMatrix(3, 2)));
  const zrSize d3[3] = {2, 3, 1}, d4[3] = {2, 1, 3};
  EXPECT_TRUE(equal(zrCreateNumericArray(3, d3, zrDOUBLE_CLASS), zrCreateDoubleMatrix(2, 3)));
  EXPECT_FALSE(equal(zrCreateNumericArray(3, d4, zrDOUBLE_CLASS), zrCreateDoubleMatrix(2, 3)));
  EXPECT_TRUE(equal(nullptr, nullptr));
  EXPECT_FALSE(equal(zrCreateDoubleMatrix(0, 0), nullptr));
  // Function handles compare by name.
  EXPECT_TRUE(equal(zrCreateFunctionHandle("f"), zrCreateFunctionHandle("f")));
  EXPECT_FALSE(equal(zrCreateFunctionHandle("f"), zrCreateFunctionHandle("g")));
}

// Equality against a slow element-by-element reference on random arrays of
// random classes, with a few elements perturbed (sometimes into NaN).
TEST_F(HostArrays, EqualityMatchesReferenceOnRandomArrays) {
  std::mt19937 rng(20261121);
  const zrClassID classes[] = {zrDOUBLE_CLASS, zrSINGLE_CLASS, zrINT8_CLASS,   zrUINT16_CLASS,
                               zrINT32_CLASS,  zrINT64_CLASS,  zrUINT64_CLASS, zrLOGICAL_CLASS};
  for (int trial = 0; trial < 400; ++trial) {
    const zrClassID cls = classes[rng() % 8];
    const zrSize dims[3] = {rng() % 4, 1 + rng() % 3, 1 + rng() % 2};
    Array a(zrCreateNumericArray(3, dims, cls));
    const zrSize n = zrGetNumberOfElements(a.get()), size = zrGetElementSize(a.get());
    auto* pa = static_cast<unsigned char*>(zrGetData(a.get()));
    for (zrSize k = 0; k < n * size; ++k) pa[k] = static_cast<unsigned char>(rng() % 3);  // small values
    if (cls == zrLOGICAL_CLASS) {
      for (zrSize k = 0; k < n; ++k) pa[k] = pa[k] & 1;
    }
    Array b(zrDuplicateArray(a.get()));
    auto* pb = static_cast<unsigned char*>(zrGetData(b.get()));
    if (n > 0 && rng() % 2) {
      const zrSize k = rng() % n;
      if (cls == zrDOUBLE_CLASS && rng() % 2) {
        static_cast<double*>(zrGetData(a.get()))[k] = std::nan("");
        static_cast<double*>(zrGetData(b.get()))[k] = std::nan("");
      } else if (cls == zrLOGICAL_CLASS) {
        pb[k] = !pb[k];
      } else {
        pb[k * size] ^= 1;
      }
    }
    bool expected = true;
    for (zrSize k = 0; k < n && expected; ++k) {
      if (cls == zrDOUBLE_CLASS) {
        const double x = static_cast<double*>(zrGetData(a.get()))[k],
                     y = static_cast<double*>(zrGetData(b.get()))[k];
        expected = !std::isnan(x) && x == y;
      } else if (cls == zrSINGLE_CLASS) {
        const float x = static_cast<float*>(zrGetData(a.get()))[k],
                    y = static_cast<float*>(zrGetData(b.get()))[k];
        expected = !std::isnan(x) && x == y;
      } else {
        expected = std::memcmp(pa + k * size, pb + k * size, size) == 0;
      }
    }
    ASSERT_EQ(zrArrayEqual(a.get(), b.get()), expected) << "trial " << trial;
  }
}

// ---- Cells and structs ----------------------------------------------------------------------

TEST_F(HostArrays, CellsOwnTheirContents) {
  Array cell(zrCreateCellMatrix(2, 2));
  EXPECT_EQ(zrGetCell(cell.get(), 3), nullptr);
  zrArray_tag* first = zrCreateDoubleScalar(1);
  zrSetCell(cell.get(), 0, first);
  zrSetCell(cell.get(), 0, first);  // the same pointer again must not free it
  EXPECT_EQ(zrGetCell(cell.get(), 0), first);
  const std::int64_t before = hostLiveArrayCount();
  zrSetCell(cell.get(), 0, zrCreateString("x"));  // destroys the number
  EXPECT_EQ(hostLiveArrayCount(), before);
  zrSetCell(cell.get(), 3, zrCreateCellMatrix(1, 1));
  zrSetCell(zrGetCell(cell.get(), 3), 0, zrCreateDoubleScalar(7));

  Array copy(zrDuplicateArray(cell.get()));
  EXPECT_TRUE(zrArrayEqual(copy.get(), cell.get()));
  EXPECT_NE(zrGetCell(copy.get(), 3), zrGetCell(cell.get(), 3)) << "copies must be deep";
  zrGetPr(zrGetCell(zrGetCell(copy.get(), 3), 0))[0] = 8;
  EXPECT_FALSE(zrArrayEqual(copy.get(), cell.get()));
  // An empty cell reads as the empty double matrix.
  Array withEmpty(zrCreateCellMatrix(1, 1));
  Array withZero(zrCreateCellMatrix(1, 1));
  zrSetCell(withZero.get(), 0, zrCreateDoubleMatrix(0, 0));
  EXPECT_TRUE(zrArrayEqual(withEmpty.get(), withZero.get()));

  // On a raised error the caller keeps the value.
  Array keep(zrCreateDoubleScalar(2));
  EXPECT_EQ(errorId([&] { zrSetCell(cell.get(), 4, keep.get()); }), "Tavrix::host::IndexOutOfRange");
  EXPECT_EQ(errorId([&] { zrSetCell(keep.get(), 0, keep.get()); }), "Tavrix::host::InvalidClass");
  EXPECT_EQ(errorId([&] { zrGetCell(cell.get(), 4); }), "Tavrix::host::IndexOutOfRange");
}

TEST_F(HostArrays, CellShapeChangesKeepTheCells) {
  Array cell(zrCreateCellMatrix(1, 2));
  zrSetCell(cell.get(), 1, zrCreateDoubleScalar(5));
  zrSetN(cell.get(), 1);  // shrinks: the second cell is out of sight but alive
  EXPECT_EQ(errorId([&] { zrGetCell(cell.get(), 1); }), "Tavrix::host::IndexOutOfRange");
  zrSetM(cell.get(), 3);  // grows back over it
  ASSERT_NE(zrGetCell(cell.get(), 1), nullptr);
  EXPECT_EQ(zrGetPr(zrGetCell(cell.get(), 1))[0], 5.0);
  EXPECT_EQ(zrGetCell(cell.get(), 2), nullptr);
}

TEST_F(HostArrays, StructFieldsByName) {
  const char* names[] = {"alpha", "beta"};
  Array s(zrCreateStructMatrix(1, 2, 2, names));
  EXPECT_EQ(zrGetNumberOfFields(s.get()), 2);
  EXPECT_STREQ(zrGetFieldNameByNumber(s.get(), 1), "beta");
  EXPECT_EQ(zrGetFieldNameByNumber(s.get(), 2), nullptr);
  zrSetField(s.get(), 1, "alpha", zrCreateDoubleScalar(1));
  zrSetField(s.get(), 1, "beta", zrCreateDoubleScalar(2));
  zrSetField(s.get(), 0, "beta", zrCreateDoubleScalar(3));
  // A new field leaves the existing values where they were.
  EXPECT_EQ(zrAddField(s.get(), "gamma"), 2);
  EXPECT_EQ(zrAddField(s.get(), "alpha"), 0);
  EXPECT_EQ(zrGetPr(zrGetField(s.get(), 1, "alpha"))[0], 1.0);
  EXPECT_EQ(zrGetPr(zrGetField(s.get(), 1, "beta"))[0], 2.0);
  EXPECT_EQ(zrGetPr(zrGetField(s.get(), 0, "beta"))[0], 3.0);
  EXPECT_EQ(zrGetField(s.get(), 0, "gamma"), nullptr);
  EXPECT_EQ(zrGetField(s.get(), 0, "delta"), nullptr);

  Array keep(zrCreateDoubleScalar(0));
  EXPECT_EQ(errorId([&] { zrSetField(s.get(), 0, "delta", keep.get()); }), "Tavrix::host::UnknownField");
  EXPECT_EQ(errorId([&] { zrSetField(s.get(), 2, "alpha", keep.get()); }), "Tavrix::host::IndexOutOfRange");
  EXPECT_EQ(errorId([&] { zrAddField(s.get(), "1bad"); }), "Tavrix::host::InvalidFieldName");

  // Field order does not matter for equality; values do.
  const char* reversed[] = {"gamma", "beta", "alpha"};
  Array t(zrCreateStructMatrix(1, 2, 3, reversed));
  zrSetField(t.get(), 1, "alpha", zrCreateDoubleScalar(1));
  zrSetField(t.get(), 1, "beta", zrCreateDoubleScalar(2));
  zrSetField(t.get(), 0, "beta", zrCreateDoubleScalar(3));
  EXPECT_TRUE(zrArrayEqual(s.get(), t.get()));
  zrSetField(t.get(), 0, "gamma", zrCreateDoubleScalar(4));
  EXPECT_FALSE(zrArrayEqual(s.get(), t.get()));

  const char* twice[] = {"a", "a"};
  EXPECT_EQ(errorId([&] { zrCreateStructMatrix(1, 1, 2, twice); }), "Tavrix::host::InvalidFieldName");
}

TEST_F(HostArrays, SetDataHandsOverStorage) {
  Array a(zrCreateDoubleMatrix(0, 0));
  auto* data = static_cast<double*>(zrMalloc(3 * sizeof(double)));
  data[0] = 1, data[1] = 2, data[2] = 3;
  zrSetPr(a.get(), data);  // the old storage is freed (ASan would see a leak)
  zrSetM(a.get(), 1);
  zrSetN(a.get(), 3);
  EXPECT_EQ(zrGetPr(Array(zrDuplicateArray(a.get())).get())[2], 3.0);
  Array cell(zrCreateCellMatrix(1, 1));
  EXPECT_EQ(errorId([&] { zrSetData(cell.get(), nullptr); }), "Tavrix::host::InvalidClass");
}

// Every allocation of a nested copy fails in turn: each attempt either works
// or raises out-of-memory, and nothing is left behind either way.
TEST_F(HostArrays, FailedAllocationsLeakNothing) {
  const char* names[] = {"x", "y"};
  Array source(zrCreateStructMatrix(1, 2, 2, names));
  zrArray_tag* inner = zrCreateCellMatrix(1, 3);
  zrSetCell(inner, 0, zrCreateString("text"));
  zrSetCell(inner, 2, zrCreateFunctionHandle("f"));
  zrSetField(source.get(), 1, "y", inner);
  zrSetField(source.get(), 0, "x", zrCreateDoubleMatrix(2, 2));
  const std::int64_t live = hostLiveArrayCount();
  int failures = 0;
  for (std::int64_t budget = 0;; ++budget) {
    SCOPED_TRACE(budget);
    bool ok = false;
    {
      HostAllocationFailureScope scope(budget);
      try {
        Array copy(zrDuplicateArray(source.get()));
        ok = true;
        EXPECT_TRUE(zrArrayEqual(copy.get(), source.get()));
      } catch (const HostError& e) {
        EXPECT_EQ(e.identifier(), kHostOutOfMemoryId);
        ++failures;
      }
    }
    EXPECT_EQ(hostLiveArrayCount(), live);
    if (ok) break;
    ASSERT_LT(budget, 100);
  }
  EXPECT_GT(failures, 5);
  EXPECT_EQ(hostAllocationFailureBudget(), -1);
}

TEST_F(HostArrays, NullArraysAreReported) {
  EXPECT_EQ(errorId([] { zrGetNumberOfElements(nullptr); }), "Tavrix::host::NullArray");
  EXPECT_EQ(errorId([] { zrGetClassID(nullptr); }), "Tavrix::host::NullArray");
  EXPECT_EQ(errorId([] { zrArrayToString(nullptr); }), "Tavrix::host::NullArray");
  EXPECT_EQ(zrDuplicateArray(nullptr), nullptr);
  zrDestroyArray(nullptr);
  EXPECT_EQ(errorId([] { zrCreateFunctionHandle(""); }), "Tavrix::host::InvalidFunctionName");
}

}  // namespace
