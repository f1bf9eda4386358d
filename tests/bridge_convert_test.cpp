// Host arrays to and from kernel values: class and shape checks of every
// reader, the layouts of the arrays made, and round trips on random values.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "qvgui/bridge.h"

namespace {

using namespace gui_objects;
using gk::ZrArrayPtr;
namespace oc = gk::objConvert;

template <class T>
void fill(void* data, const std::vector<double>& values) {
  for (std::size_t k = 0; k < values.size(); ++k) static_cast<T*>(data)[k] = static_cast<T>(values[k]);
}

using Filler = void (*)(void*, const std::vector<double>&);
struct NumericClass {
  zrClassID id;
  Filler fill;
};
constexpr NumericClass kNumericClasses[] = {
    {zrDOUBLE_CLASS, fill<double>},      {zrSINGLE_CLASS, fill<float>},
    {zrINT8_CLASS, fill<std::int8_t>},   {zrUINT8_CLASS, fill<std::uint8_t>},
    {zrINT16_CLASS, fill<std::int16_t>}, {zrUINT16_CLASS, fill<std::uint16_t>},
    {zrINT32_CLASS, fill<std::int32_t>}, {zrUINT32_CLASS, fill<std::uint32_t>},
    {zrINT64_CLASS, fill<std::int64_t>}, {zrUINT64_CLASS, fill<std::uint64_t>},
};

// An m-by-n array of the class holding the values (column-major), each
// converted to the element type.
ZrArrayPtr numeric(zrClassID cls, zrSize m, zrSize n, const std::vector<double>& values) {
  ZrArrayPtr a(zrCreateNumericMatrix(m, n, cls));
  for (const NumericClass& c : kNumericClasses) {
    if (c.id == cls) c.fill(zrGetData(a.get()), values);
  }
  return a;
}

ZrArrayPtr doubles(zrSize m, zrSize n, const std::vector<double>& values) {
  return numeric(zrDOUBLE_CLASS, m, n, values);
}

enum class Failure { None, Null, Class, Shape, Width, ZeroLength };

Failure failureOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const NullArrayException&) {
    return Failure::Null;
  } catch (const InvalidArrayClassException&) {
    return Failure::Class;
  } catch (const InvalidArrayShapeException&) {
    return Failure::Shape;
  } catch (const InvalidWidthException&) {
    return Failure::Width;
  } catch (const ZeroLengthException&) {
    return Failure::ZeroLength;
  }
  return Failure::None;
}

TEST(BridgeConvert, BoundingVolumeFromEveryNumericClass) {
  for (const NumericClass& numericClass : kNumericClasses) {
    const zrClassID cls = numericClass.id;
    ZrArrayPtr box = numeric(cls, 2, 3, {0, 1, 0, 1, 0, 1});  // [0 0 0; 1 1 1]
    SCOPED_TRACE(zrGetClassName(box.get()));
    EXPECT_EQ(oc::toBoundingVolume(box.get()), BoundingVolume(Point3d(0, 0, 0), Point3d(1, 1, 1)));
    ZrArrayPtr crossed = numeric(cls, 2, 3, {1, 0, 0, 1, 0, 1});  // [1 0 0; 0 1 1]
    EXPECT_EQ(failureOf([&] { (void)oc::toBoundingVolume(crossed.get()); }), Failure::Width);
    ZrArrayPtr flat = numeric(cls, 2, 3, {2, 2, 3, 3, 4, 4});
    EXPECT_EQ(oc::toBoundingVolume(flat.get()), BoundingVolume(Point3d(2, 3, 4), Point3d(2, 3, 4)));
    ZrArrayPtr tall = numeric(cls, 3, 2, {0, 0, 0, 1, 1, 1});
    EXPECT_EQ(failureOf([&] { (void)oc::toBoundingVolume(tall.get()); }), Failure::Shape);
  }
}

TEST(BridgeConvert, ReaderChecksInOrder) {
  ZrArrayPtr text(zrCreateString("abcdef"));
  ZrArrayPtr logical(zrCreateLogicalMatrix(2, 3));
  ZrArrayPtr emptyDouble(zrCreateDoubleMatrix(0, 0));
  ZrArrayPtr emptyInt8(zrCreateNumericMatrix(0, 3, zrINT8_CLASS));
  ZrArrayPtr box = doubles(2, 3, {0, 1, 0, 1, 0, 1});
  ZrArrayPtr sameRows = doubles(2, 3, {1, 1, 2, 2, 3, 3});
  const zrSize dims3[] = {2, 3, 1};
  ZrArrayPtr threeD(zrCreateNumericArray(3, dims3, zrDOUBLE_CLASS));
  ZrArrayPtr nanBox = doubles(2, 3, {std::nan(""), 1, 0, 1, 0, 1});
  struct Case {
    const char* label;
    const zrArray_tag* array;
    Failure volume, line, segment;
  };
  const Case cases[] = {
      {"null", nullptr, Failure::Null, Failure::Null, Failure::Null},
      {"char", text.get(), Failure::Class, Failure::Class, Failure::Class},
      {"logical", logical.get(), Failure::Class, Failure::Class, Failure::Class},
      {"empty double", emptyDouble.get(), Failure::Shape, Failure::Null, Failure::Null},
      {"empty int8", emptyInt8.get(), Failure::Shape, Failure::Null, Failure::Null},
      {"2x3", box.get(), Failure::None, Failure::None, Failure::None},
      {"both rows the same point", sameRows.get(), Failure::None, Failure::ZeroLength, Failure::None},
      {"2x3x1 stays 2-D", threeD.get(), Failure::None, Failure::ZeroLength, Failure::None},
      {"NaN limit passes", nanBox.get(), Failure::None, Failure::None, Failure::None},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(failureOf([&] { (void)oc::toBoundingVolume(c.array); }), c.volume);
    EXPECT_EQ(failureOf([&] { (void)oc::toLine3d(c.array); }), c.line);
    EXPECT_EQ(failureOf([&] { (void)oc::toLineSegment3d(c.array); }), c.segment);
  }
  // The per-class readers take only their own class.
  ZrArrayPtr singleBox = numeric(zrSINGLE_CLASS, 2, 3, {0, 1, 0, 1, 0, 1});
  EXPECT_EQ(failureOf([&] { (void)oc::readBoundingVolume<double>(singleBox.get()); }), Failure::Class);
  EXPECT_EQ(failureOf([&] { (void)oc::readBoundingVolume<float>(singleBox.get()); }), Failure::None);
  EXPECT_EQ(failureOf([&] { (void)oc::readPoint3d<std::int32_t>(singleBox.get()); }), Failure::Class);
}

TEST(BridgeConvert, LinesTakeOnePointPerRow) {
  for (const NumericClass& numericClass : kNumericClasses) {
    const zrClassID cls = numericClass.id;
    ZrArrayPtr rows = numeric(cls, 2, 3, {1, 4, 2, 5, 3, 6});  // [1 2 3; 4 5 6]
    SCOPED_TRACE(zrGetClassName(rows.get()));
    const Line3d line = oc::toLine3d(rows.get());
    EXPECT_EQ(line.getPoint(), Point3d(1, 2, 3));
    EXPECT_EQ(line.getEnd(), Point3d(4, 5, 6));
    const LineSegment3d segment = oc::toLineSegment3d(rows.get());
    EXPECT_EQ(segment.getStart(), Point3d(1, 2, 3));
    EXPECT_EQ(segment.getEnd(), Point3d(4, 5, 6));
  }
}

TEST(BridgeConvert, PointsAndMatrices) {
  ZrArrayPtr row = doubles(1, 3, {1, 2, 3});
  ZrArrayPtr column = doubles(3, 1, {1, 2, 3});
  ZrArrayPtr four = doubles(1, 4, {1, 2, 3, 4});
  ZrArrayPtr square = doubles(3, 3, {});
  ZrArrayPtr none(zrCreateDoubleMatrix(0, 3));
  ZrArrayPtr ints = numeric(zrINT16_CLASS, 1, 3, {-1, 0, 300});
  ZrArrayPtr text(zrCreateString("abc"));
  EXPECT_EQ(oc::toPoint3d(row.get()), Point3d(1, 2, 3));
  EXPECT_EQ(oc::toPoint3d(column.get()), Point3d(1, 2, 3));
  EXPECT_EQ(oc::toPoint3d(ints.get()), Point3d(-1, 0, 300));
  EXPECT_EQ(failureOf([&] { (void)oc::toPoint3d(four.get()); }), Failure::Shape);
  EXPECT_EQ(failureOf([&] { (void)oc::toPoint3d(square.get()); }), Failure::Shape);
  EXPECT_EQ(failureOf([&] { (void)oc::toPoint3d(none.get()); }), Failure::Shape);
  EXPECT_EQ(failureOf([&] { (void)oc::toPoint3d(text.get()); }), Failure::Class);
  EXPECT_EQ(failureOf([&] { (void)oc::toPoint3d(nullptr); }), Failure::Null);

  EXPECT_TRUE(oc::toMatrix4x4d(nullptr).isIdentity());
  ZrArrayPtr empty(zrCreateDoubleMatrix(0, 0));
  EXPECT_TRUE(oc::toMatrix4x4d(empty.get()).isIdentity());
  ZrArrayPtr emptySingle(zrCreateNumericMatrix(0, 4, zrSINGLE_CLASS));
  EXPECT_TRUE(oc::toMatrix4x4d(emptySingle.get()).isIdentity());
  ZrArrayPtr single = numeric(zrSINGLE_CLASS, 4, 4, {});
  EXPECT_EQ(failureOf([&] { (void)oc::toMatrix4x4d(single.get()); }), Failure::Class);
  ZrArrayPtr wide = doubles(4, 3, {});
  EXPECT_EQ(failureOf([&] { (void)oc::toMatrix4x4d(wide.get()); }), Failure::Shape);
  std::vector<double> values(16);
  for (int k = 0; k < 16; ++k) values[k] = k + 1;
  ZrArrayPtr m = doubles(4, 4, values);
  const Matrix4x4d read = oc::toMatrix4x4d(m.get());
  EXPECT_EQ(read.get(2, 1), 2.0);  // element 1 of the array: row 2, column 1
  EXPECT_EQ(read.get(1, 2), 5.0);
}

TEST(BridgeConvert, RandomRoundTrips) {
  std::mt19937 rng(77);
  std::uniform_real_distribution<double> v(-1e3, 1e3);
  for (int trial = 0; trial < 200; ++trial) {
    const Point3d a(v(rng), v(rng), v(rng));
    const Point3d b(v(rng), v(rng), v(rng));
    const BoundingVolume volume(a, b);
    ZrArrayPtr array = oc::toZrArray(volume);
    ASSERT_EQ(zrGetM(array.get()), 2u);
    ASSERT_EQ(zrGetN(array.get()), 3u);
    EXPECT_EQ(oc::toBoundingVolume(array.get()), volume);

    double values[16];
    for (double& x : values) x = v(rng);
    const Matrix4x4d matrix(values);
    ZrArrayPtr m = oc::toZrArray(matrix);
    EXPECT_EQ(oc::toMatrix4x4d(m.get()), matrix);

    ZrArrayPtr p = oc::toZrArray(a);
    EXPECT_EQ(oc::toPoint3d(p.get()), a);
    ZrArrayPtr line = oc::toZrArray(a, b);
    EXPECT_EQ(oc::toLineSegment3d(line.get()).getStart(), a);
    EXPECT_EQ(oc::toLineSegment3d(line.get()).getEnd(), b);
  }
}

TEST(BridgeConvert, ArraysMade) {
  // The arrays made here are double, single or uint32.
  auto values = [](const ZrArrayPtr& a) {
    std::vector<double> out;
    const void* d = zrGetData(a.get());
    const zrClassID c = zrGetClassID(a.get());
    for (zrSize k = 0; k < zrGetNumberOfElements(a.get()); ++k) {
      out.push_back(c == zrDOUBLE_CLASS   ? static_cast<const double*>(d)[k]
                    : c == zrSINGLE_CLASS ? static_cast<const float*>(d)[k]
                                          : static_cast<const std::uint32_t*>(d)[k]);
    }
    return out;
  };
  struct Case {
    const char* label;
    ZrArrayPtr array;
    zrClassID cls;
    zrSize m, n;
    std::vector<double> values;
  };
  std::vector<Case> cases;
  cases.push_back({"scalar", oc::toZrArray(2.5), zrDOUBLE_CLASS, 1, 1, {2.5}});
  cases.push_back({"Point2d", oc::toZrArray(Point2d(1, 2)), zrDOUBLE_CLASS, 1, 2, {1, 2}});
  cases.push_back({"Point3d", oc::toZrArray(Point3d(1, 2, 3)), zrDOUBLE_CLASS, 1, 3, {1, 2, 3}});
  cases.push_back({"two points",
                   oc::toZrArray(Point3d(1, 2, 3), Point3d(4, 5, 6)),
                   zrDOUBLE_CLASS,
                   2,
                   3,
                   {1, 4, 2, 5, 3, 6}});
  cases.push_back({"rectangle in storage order",
                   oc::toZrArray(Rectangle2i(1, 2, 3, 4)),
                   zrDOUBLE_CLASS,
                   1,
                   4,
                   {2, 1, 4, 3}});
  cases.push_back({"box",
                   oc::toZrArray(BoundingVolume(Point3d(4, 5, 6), Point3d(1, 2, 3))),
                   zrDOUBLE_CLASS,
                   2,
                   3,
                   {1, 4, 2, 5, 3, 6}});
  cases.push_back({"one vertex", oc::createVertexData(Point3f(1, 2, 3)), zrSINGLE_CLASS, 3, 1, {1, 2, 3}});
  cases.push_back(
      {"four vertices",
       oc::createVertexData(Point3f(1, 2, 3), Point3f(4, 5, 6), Point3f(7, 8, 9), Point3f(10, 11, 12)),
       zrSINGLE_CLASS,
       3,
       4,
       {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}});
  cases.push_back({"two strips", oc::createStripData(3, 4), zrUINT32_CLASS, 1, 2, {3, 4}});
  cases.push_back({"four strips",
                   oc::createStripData(1, 2, 3, 4000000000u),
                   zrUINT32_CLASS,
                   1,
                   4,
                   {1, 2, 3, 4000000000.0}});
  cases.push_back({"triangle", oc::createVertexIndices(0, 2, 1), zrUINT32_CLASS, 1, 3, {0, 2, 1}});
  const std::uint32_t indices[] = {5, 6, 7, 8, 9};
  cases.push_back({"index copy", oc::createVertexIndices(5, indices), zrUINT32_CLASS, 1, 5, {5, 6, 7, 8, 9}});
  cases.push_back({"no indices", oc::createVertexIndices(0, nullptr), zrUINT32_CLASS, 1, 0, {}});
  Real_point pts[] = {{1, 2}, {3, 4}, {5, 6}};
  cases.push_back({"point list", oc::toZrArray(NPoints{3, pts}), zrDOUBLE_CLASS, 3, 2, {1, 3, 5, 2, 4, 6}});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(zrGetClassID(c.array.get()), c.cls);
    EXPECT_EQ(zrGetM(c.array.get()), c.m);
    EXPECT_EQ(zrGetN(c.array.get()), c.n);
    EXPECT_EQ(values(c.array), c.values);
  }
}

TEST(BridgeConvert, WideStrings) {
  ZrArrayPtr s = oc::toZrArray(L"a\u00e9\U0001F600");
  ASSERT_TRUE(zrIsChar(s.get()));
  const std::u16string want = u"a\u00e9\U0001F600";
  ASSERT_EQ(zrGetNumberOfElements(s.get()), want.size());  // the emoji is a surrogate pair
  EXPECT_EQ(std::u16string(zrGetChars(s.get()), want.size()), want);
  ZrArrayPtr none = oc::toZrArray(static_cast<const wchar_t*>(nullptr));
  EXPECT_TRUE(zrIsChar(none.get()));
  EXPECT_TRUE(zrIsEmpty(none.get()));
}

TEST(BridgeConvert, AllocationFailuresLeakNothing) {
  const std::int64_t live = hostLiveArrayCount();
  const std::vector<std::function<void()>> makers = {
      [] { (void)oc::toZrArray(Point3d(1, 2, 3), Point3d(4, 5, 6)); },
      [] { (void)oc::createVertexData(Point3f(), Point3f(), Point3f()); },
      [] { (void)oc::toZrArray(L"text"); },
      [] { (void)oc::toZrArray(Rectangle2i(0, 0, 1, 1)); },
  };
  for (std::size_t i = 0; i < makers.size(); ++i) {
    for (std::int64_t budget = 0; budget < 4; ++budget) {
      SCOPED_TRACE(testing::Message() << "maker " << i << " budget " << budget);
      try {
        HostAllocationFailureScope scope(budget);
        makers[i]();
      } catch (const HostError& e) {
        EXPECT_EQ(e.identifier(), kHostOutOfMemoryId);
      }
      EXPECT_EQ(hostLiveArrayCount(), live);
    }
  }
}

}  // namespace
