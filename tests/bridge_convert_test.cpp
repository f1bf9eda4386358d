// Host arrays to and from kernel values: class and shape checks of every
// reader, the layouts of the arrays made, and round trips on random values.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "bridge_test_support.h"

namespace {

using namespace gui_objects;
using namespace bridge_test;
namespace oc = gk::objConvert;

using Maker = ZrArrayPtr (*)(zrClassID, zrSize, zrSize, const std::vector<double>&);
constexpr std::pair<zrClassID, Maker> kNumericClasses[] = {
    {zrDOUBLE_CLASS, typed<double>},      {zrSINGLE_CLASS, typed<float>},
    {zrINT8_CLASS, typed<std::int8_t>},   {zrUINT8_CLASS, typed<std::uint8_t>},
    {zrINT16_CLASS, typed<std::int16_t>}, {zrUINT16_CLASS, typed<std::uint16_t>},
    {zrINT32_CLASS, typed<std::int32_t>}, {zrUINT32_CLASS, typed<std::uint32_t>},
    {zrINT64_CLASS, typed<std::int64_t>}, {zrUINT64_CLASS, typed<std::uint64_t>},
};

// An m-by-n array of the class holding the values (column-major).
ZrArrayPtr numeric(zrClassID cls, zrSize m, zrSize n, const std::vector<double>& values) {
  for (const auto& [id, make] : kNumericClasses) {
    if (id == cls) return make(cls, m, n, values);
  }
  return ZrArrayPtr();
}

TEST(BridgeConvert, BoxesAndLinesFromEveryNumericClass) {
  for (const auto& [cls, make] : kNumericClasses) {
    ZrArrayPtr box = make(cls, 2, 3, {0, 1, 0, 1, 0, 1});  // [0 0 0; 1 1 1]
    SCOPED_TRACE(zrGetClassName(box.get()));
    EXPECT_EQ(oc::toBoundingVolume(box.get()), BoundingVolume(Point3d(0, 0, 0), Point3d(1, 1, 1)));
    ZrArrayPtr crossed = make(cls, 2, 3, {1, 0, 0, 1, 0, 1});  // [1 0 0; 0 1 1]
    EXPECT_EQ(failureOf([&] { (void)oc::toBoundingVolume(crossed.get()); }), Failure::Width);
    ZrArrayPtr flat = make(cls, 2, 3, {2, 2, 3, 3, 4, 4});
    EXPECT_EQ(oc::toBoundingVolume(flat.get()), BoundingVolume(Point3d(2, 3, 4), Point3d(2, 3, 4)));
    ZrArrayPtr tall = make(cls, 3, 2, {0, 0, 0, 1, 1, 1});
    EXPECT_EQ(failureOf([&] { (void)oc::toBoundingVolume(tall.get()); }), Failure::Shape);

    ZrArrayPtr rows = make(cls, 2, 3, {1, 4, 2, 5, 3, 6});  // [1 2 3; 4 5 6]
    const Line3d line = oc::toLine3d(rows.get());
    EXPECT_EQ(line.getPoint(), Point3d(1, 2, 3));
    EXPECT_EQ(line.getEnd(), Point3d(4, 5, 6));
    const LineSegment3d segment = oc::toLineSegment3d(rows.get());
    EXPECT_EQ(segment.getStart(), Point3d(1, 2, 3));
    EXPECT_EQ(segment.getEnd(), Point3d(4, 5, 6));
  }
}

TEST(BridgeConvert, ReaderChecksInOrder) {
  const zrSize dims3[] = {2, 3, 1};
  struct Case {
    const char* label;
    ZrArrayPtr array;
    Failure volume, line, segment;
  };
  std::vector<Case> cases;
  cases.push_back({"null", ZrArrayPtr(), Failure::Null, Failure::Null, Failure::Null});
  cases.push_back(
      {"char", ZrArrayPtr(zrCreateString("abcdef")), Failure::Class, Failure::Class, Failure::Class});
  cases.push_back(
      {"logical", ZrArrayPtr(zrCreateLogicalMatrix(2, 3)), Failure::Class, Failure::Class, Failure::Class});
  cases.push_back({"empty double", doubles(0, 0, {}), Failure::Shape, Failure::Null, Failure::Null});
  cases.push_back(
      {"empty int8", numeric(zrINT8_CLASS, 0, 3, {}), Failure::Shape, Failure::Null, Failure::Null});
  cases.push_back({"2x3", doubles(2, 3, {0, 1, 0, 1, 0, 1}), Failure::None, Failure::None, Failure::None});
  cases.push_back({"both rows the same point", doubles(2, 3, {1, 1, 2, 2, 3, 3}), Failure::None,
                   Failure::ZeroLength, Failure::None});
  cases.push_back({"2x3x1 stays 2-D", ZrArrayPtr(zrCreateNumericArray(3, dims3, zrDOUBLE_CLASS)),
                   Failure::None, Failure::ZeroLength, Failure::None});
  cases.push_back({"NaN limit passes", doubles(2, 3, {std::nan(""), 1, 0, 1, 0, 1}), Failure::None,
                   Failure::None, Failure::None});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(failureOf([&] { (void)oc::toBoundingVolume(c.array.get()); }), c.volume);
    EXPECT_EQ(failureOf([&] { (void)oc::toLine3d(c.array.get()); }), c.line);
    EXPECT_EQ(failureOf([&] { (void)oc::toLineSegment3d(c.array.get()); }), c.segment);
  }
  // The per-class readers take only their own class.
  ZrArrayPtr singleBox = numeric(zrSINGLE_CLASS, 2, 3, {0, 1, 0, 1, 0, 1});
  EXPECT_EQ(failureOf([&] { (void)oc::readBoundingVolume<double>(singleBox.get()); }), Failure::Class);
  EXPECT_EQ(failureOf([&] { (void)oc::readBoundingVolume<float>(singleBox.get()); }), Failure::None);
  EXPECT_EQ(failureOf([&] { (void)oc::readPoint3d<std::int32_t>(singleBox.get()); }), Failure::Class);
}

TEST(BridgeConvert, PointsAndMatrices) {
  EXPECT_EQ(oc::toPoint3d(doubles(1, 3, {1, 2, 3}).get()), Point3d(1, 2, 3));
  EXPECT_EQ(oc::toPoint3d(doubles(3, 1, {1, 2, 3}).get()), Point3d(1, 2, 3));
  EXPECT_EQ(oc::toPoint3d(numeric(zrINT16_CLASS, 1, 3, {-1, 0, 300}).get()), Point3d(-1, 0, 300));
  struct Case {
    const char* label;
    ZrArrayPtr array;
    Failure point, matrix;
  };
  std::vector<Case> cases;
  cases.push_back({"1x4", doubles(1, 4, {1, 2, 3, 4}), Failure::Shape, Failure::Shape});
  cases.push_back({"3x3", doubles(3, 3, {}), Failure::Shape, Failure::Shape});
  cases.push_back({"0x3", doubles(0, 3, {}), Failure::Shape, Failure::None});
  cases.push_back({"char", ZrArrayPtr(zrCreateString("abc")), Failure::Class, Failure::Class});
  cases.push_back({"null", ZrArrayPtr(), Failure::Null, Failure::None});
  cases.push_back({"empty single", numeric(zrSINGLE_CLASS, 0, 4, {}), Failure::Shape, Failure::None});
  cases.push_back({"4x4 single", numeric(zrSINGLE_CLASS, 4, 4, {}), Failure::Shape, Failure::Class});
  cases.push_back({"4x3", doubles(4, 3, {}), Failure::Shape, Failure::Shape});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(failureOf([&] { (void)oc::toPoint3d(c.array.get()); }), c.point);
    // Empty and absent matrices read as the identity.
    Matrix4x4d read;
    EXPECT_EQ(failureOf([&] { read = oc::toMatrix4x4d(c.array.get()); }), c.matrix);
    if (c.matrix == Failure::None) {
      EXPECT_TRUE(read.isIdentity());
    }
  }
  std::vector<double> values(16);
  for (int k = 0; k < 16; ++k) values[k] = k + 1;
  const Matrix4x4d read = oc::toMatrix4x4d(doubles(4, 4, values).get());
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
    EXPECT_EQ(oc::toMatrix4x4d(oc::toZrArray(matrix).get()), matrix);
    EXPECT_EQ(oc::toPoint3d(oc::toZrArray(a).get()), a);
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
  const Point3f p1(1, 2, 3), p2(4, 5, 6), p3(7, 8, 9), p4(10, 11, 12);
  const std::uint32_t indices[] = {5, 6, 7, 8, 9};
  Real_point pts[] = {{1, 2}, {3, 4}, {5, 6}};
  const BoundingVolume box(Point3d(4, 5, 6), Point3d(1, 2, 3));
  constexpr zrClassID D = zrDOUBLE_CLASS, S = zrSINGLE_CLASS, U = zrUINT32_CLASS;
  std::vector<Case> cases;
  cases.push_back({"scalar", oc::toZrArray(2.5), D, 1, 1, {2.5}});
  cases.push_back({"Point2d", oc::toZrArray(Point2d(1, 2)), D, 1, 2, {1, 2}});
  cases.push_back({"Point3d", oc::toZrArray(Point3d(1, 2, 3)), D, 1, 3, {1, 2, 3}});
  cases.push_back(
      {"two points", oc::toZrArray(Point3d(1, 2, 3), Point3d(4, 5, 6)), D, 2, 3, {1, 4, 2, 5, 3, 6}});
  cases.push_back(
      {"rectangle in storage order", oc::toZrArray(Rectangle2i(1, 2, 3, 4)), D, 1, 4, {2, 1, 4, 3}});
  cases.push_back({"box", oc::toZrArray(box), D, 2, 3, {1, 4, 2, 5, 3, 6}});
  cases.push_back({"one vertex", oc::createVertexData(p1), S, 3, 1, {1, 2, 3}});
  cases.push_back({"four vertices",
                   oc::createVertexData(p1, p2, p3, p4),
                   S,
                   3,
                   4,
                   {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}});
  cases.push_back({"two strips", oc::createStripData(3, 4), U, 1, 2, {3, 4}});
  cases.push_back(
      {"four strips", oc::createStripData(1, 2, 3, 4000000000u), U, 1, 4, {1, 2, 3, 4000000000.0}});
  cases.push_back({"triangle", oc::createVertexIndices(0, 2, 1), U, 1, 3, {0, 2, 1}});
  cases.push_back({"index copy", oc::createVertexIndices(5, indices), U, 1, 5, {5, 6, 7, 8, 9}});
  cases.push_back({"no indices", oc::createVertexIndices(0, nullptr), U, 1, 0, {}});
  cases.push_back({"point list", oc::toZrArray(NPoints{3, pts}), D, 3, 2, {1, 3, 5, 2, 4, 6}});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(zrGetClassID(c.array.get()), c.cls);
    EXPECT_EQ(zrGetM(c.array.get()), c.m);
    EXPECT_EQ(zrGetN(c.array.get()), c.n);
    EXPECT_EQ(values(c.array), c.values);
  }

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
