// Extents of host arrays: supported classes, the column form, and every scan
// kernel against sample-by-sample accumulation on random data.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

#include "dataspace/limits_simd_p.h"
#include "qvgui/dataspace.h"
#include "qvhost/testing.h"

namespace {

using gk::Limits;
using gk::detail::ExtentsKernel;
using gui_objects::DataExtents;

struct ArrayDeleter {
  void operator()(zrArray_tag* a) const { zrDestroyArray(a); }
};
using ArrayPtr = std::unique_ptr<zrArray_tag, ArrayDeleter>;

template <typename T>
ArrayPtr makeArray(zrClassID cls, std::size_t m, std::size_t n, const std::vector<T>& values) {
  ArrayPtr a(zrCreateNumericMatrix(m, n, cls));
  if (!values.empty()) std::memcpy(zrGetData(a.get()), values.data(), values.size() * sizeof(T));
  return a;
}

// The documented rule itself: every element, in order, converted and added.
template <typename T>
DataExtents sampleBySample(const T* p, std::size_t n) {
  DataExtents e;
  for (std::size_t i = 0; i < n; ++i) e += static_cast<double>(p[i]);
  return e;
}

// Identical results, down to the sign of a zero bound.
void expectIdentical(const DataExtents& got, const DataExtents& want) {
  ASSERT_EQ(got, want);
  if (want.initialized()) {
    EXPECT_EQ(std::signbit(got.getMinValue()), std::signbit(want.getMinValue())) << got;
    EXPECT_EQ(std::signbit(got.getMaxValue()), std::signbit(want.getMaxValue())) << got;
  }
}

class KernelRestorer {
 public:
  ~KernelRestorer() { gk::detail::selectExtentsKernel(ExtentsKernel::kAuto); }
};

std::vector<ExtentsKernel> runnableKernels() {
  std::vector<ExtentsKernel> out;
  for (ExtentsKernel k : {ExtentsKernel::kScalar, ExtentsKernel::kSse2, ExtentsKernel::kAvx2}) {
    if (gk::detail::selectExtentsKernel(k)) out.push_back(k);
  }
  gk::detail::selectExtentsKernel(ExtentsKernel::kAuto);
  return out;
}

TEST(HostArrayExtents, UnusableArraysGiveEmptyExtents) {
  for (int id = 0; id <= 16; ++id) {
    EXPECT_EQ(Limits::isSupportedType(static_cast<zrClassID>(id)), id >= 6 && id <= 15) << "class " << id;
  }
  const double nan = std::numeric_limits<double>::quiet_NaN();
  ArrayPtr logical(zrCreateLogicalMatrix(2, 2)), text(zrCreateString("12"));
  ArrayPtr empty(zrCreateNumericMatrix(0, 3, zrDOUBLE_CLASS));
  ArrayPtr allNaN = makeArray<double>(zrDOUBLE_CLASS, 1, 3, {nan, nan, nan});
  for (const zrArray_tag* a :
       {static_cast<zrArray_tag*>(nullptr), logical.get(), text.get(), empty.get(), allNaN.get()}) {
    EXPECT_FALSE(Limits::computeExtents(a).initialized());
    EXPECT_FALSE(Limits::computeExtents(a, 0).initialized());
  }
}

TEST(HostArrayExtents, ColumnFormScansOneColumnOfTheMatrixView) {
  // 3 x 2 x 2 reads as M = 3, N = 4.
  const zrSize dims[3] = {3, 2, 2};
  ArrayPtr a(zrCreateNumericArray(3, dims, zrINT32_CLASS));
  auto* p = static_cast<std::int32_t*>(zrGetData(a.get()));
  for (int i = 0; i < 12; ++i) p[i] = (i % 2 ? -1 : 1) * i;  // 0 -1 2 -3 4 -5 6 -7 8 -9 10 -11
  // clang-format off
  struct Case { const char* label; std::uint64_t column; DataExtents want; };
  const Case cases[] = {
      {"first", 0, DataExtents(-1, -1, 2, 2)},      {"second", 1, DataExtents(-5, -3, 4, 4)},
      {"last", 3, DataExtents(-11, -9, 10, 10)},    {"past the end", 4, DataExtents()},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(Limits::computeExtents(a.get(), c.column), c.want);
  }
  ArrayPtr single = makeArray<double>(zrDOUBLE_CLASS, 3, 1, {1, 2, 3});
  EXPECT_FALSE(Limits::computeExtents(single.get(), 0).initialized());
  EXPECT_TRUE(Limits::computeExtents(single.get()).initialized());
}

// Random values of T with the special values floating data can hold.
template <typename T>
std::vector<T> randomValues(std::mt19937_64& rng, std::size_t n, int flavour) {
  std::vector<T> v(n);
  if constexpr (std::is_floating_point_v<T>) {
    const T inf = std::numeric_limits<T>::infinity();
    const T nan = std::numeric_limits<T>::quiet_NaN();
    std::uniform_real_distribution<double> val(-1000, 1000);
    std::uniform_int_distribution<int> kind(0, 15);
    for (T& x : v) {
      const int k = kind(rng);
      double d = val(rng);
      if (flavour == 1) d = -std::fabs(d) - 1;  // all negative
      if (flavour == 2) d = std::fabs(d) + 1;   // all positive
      x = static_cast<T>(d);
      if (flavour == 3 || k == 0) x = nan;
      if (k == 1) x = inf;
      if (k == 2) x = -inf;
      if (flavour == 4 || k == 3) x = (rng() % 2) ? T(0) : -T(0);
    }
  } else {
    using W = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;
    std::uniform_int_distribution<W> val(std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
    for (T& x : v) {
      x = static_cast<T>(val(rng));
      if (flavour == 1 && std::is_signed_v<T> && x >= 0) x = static_cast<T>(-1 - (x / 2));
      if (flavour == 2 && x <= 0) x = static_cast<T>(1 + (x / 2) * -1);
      if (flavour == 4) x = 0;
    }
  }
  return v;
}

template <typename T>
void checkClassAgainstSamples(zrClassID cls, std::mt19937_64& rng, int trials) {
  std::uniform_int_distribution<std::size_t> len(0, 80);
  for (int trial = 0; trial < trials; ++trial) {
    const int flavour = trial % 6;  // 0 and 5 mixed, 1 negative, 2 positive, 3 NaN, 4 zeros
    const std::size_t m = len(rng) + 1;
    const std::size_t n = 2 + trial % 3;
    const std::vector<T> values = randomValues<T>(rng, m * n, flavour);
    ArrayPtr a = makeArray<T>(cls, m, n, values);
    SCOPED_TRACE(::testing::Message() << "class " << cls << " trial " << trial << " m " << m);
    expectIdentical(Limits::computeExtents(a.get()), sampleBySample(values.data(), values.size()));
    // Columns start at odd element offsets, so the vector loads are misaligned.
    const std::size_t column = trial % n;
    expectIdentical(Limits::computeExtents(a.get(), column), sampleBySample(values.data() + column * m, m));
  }
}

TEST(HostArrayExtents, EveryKernelMatchesSampleBySampleOnRandomData) {
  KernelRestorer restore;
  for (ExtentsKernel kernel : runnableKernels()) {
    ASSERT_TRUE(gk::detail::selectExtentsKernel(kernel));
    SCOPED_TRACE(::testing::Message() << "kernel " << static_cast<int>(kernel));
    std::mt19937_64 rng(7 + static_cast<int>(kernel));
    checkClassAgainstSamples<double>(zrDOUBLE_CLASS, rng, 300);
    checkClassAgainstSamples<float>(zrSINGLE_CLASS, rng, 300);
    checkClassAgainstSamples<std::int8_t>(zrINT8_CLASS, rng, 60);
    checkClassAgainstSamples<std::uint8_t>(zrUINT8_CLASS, rng, 60);
    checkClassAgainstSamples<std::int16_t>(zrINT16_CLASS, rng, 300);
    checkClassAgainstSamples<std::uint16_t>(zrUINT16_CLASS, rng, 60);
    checkClassAgainstSamples<std::int32_t>(zrINT32_CLASS, rng, 60);
    checkClassAgainstSamples<std::uint32_t>(zrUINT32_CLASS, rng, 60);
    checkClassAgainstSamples<std::int64_t>(zrINT64_CLASS, rng, 60);
    checkClassAgainstSamples<std::uint64_t>(zrUINT64_CLASS, rng, 60);
  }
}

TEST(HostArrayExtents, ExtremeValuesSurviveEveryKernel) {
  KernelRestorer restore;
  const double inf = std::numeric_limits<double>::infinity();
  const double big = std::numeric_limits<double>::max();
  const double tiny = std::numeric_limits<double>::denorm_min();
  // clang-format off
  struct Case { const char* label; std::vector<double> values; };
  const Case cases[] = {
      {"infinities around finite extremes", {inf, -big, 3, -inf, big, -inf, 1, 2, 5, 6, 7, 8}},
      {"subnormals nearest zero", {-tiny, tiny, 0, -0.0, 1, -1, 2, -2, 3, -3, 4, -4, 5}},
      {"only infinities", {inf, -inf, inf, -inf, inf, -inf, inf, -inf, inf}},
      {"negative zero first", {-0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}},
      {"positive zero first", {0.0, -0.0, -0.0, -0.0, -0.0, -0.0, -0.0, -0.0, -0.0, -0.0}},
  };
  // clang-format on
  for (ExtentsKernel kernel : runnableKernels()) {
    ASSERT_TRUE(gk::detail::selectExtentsKernel(kernel));
    for (const Case& c : cases) {
      SCOPED_TRACE(::testing::Message() << c.label << ", kernel " << static_cast<int>(kernel));
      ArrayPtr a = makeArray<double>(zrDOUBLE_CLASS, 1, c.values.size(), c.values);
      expectIdentical(Limits::computeExtents(a.get()), sampleBySample(c.values.data(), c.values.size()));
    }
    const std::vector<std::int16_t> ends = {-32768, 32767, 0, 1, -1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5};
    ArrayPtr a = makeArray<std::int16_t>(zrINT16_CLASS, 1, ends.size(), ends);
    expectIdentical(Limits::computeExtents(a.get()), DataExtents(-32768, -1, 1, 32767));
  }
}

}  // namespace
