// Standard containers, ArrayVector layouts, UTF-16 strings, colour data and
// point lists to and from host arrays.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "bridge_test_support.h"

namespace {

using namespace gui_objects;
using namespace bridge_test;
namespace sc = gk::stlConvert;

TEST(BridgeStlConvert, NumericVectors) {
  ZrArrayPtr column = typed<std::int16_t>(zrINT16_CLASS, 3, 1, {-2, 0, 7});
  EXPECT_EQ(sc::toDoubleVector(column.get()), (std::vector<double>{-2, 0, 7}));
  EXPECT_EQ(sc::toFloatVector(column.get()), (std::vector<float>{-2, 0, 7}));
  ZrArrayPtr big(zrCreateNumericMatrix(1, 2, zrUINT64_CLASS));
  static_cast<std::uint64_t*>(zrGetData(big.get()))[1] = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(sc::toSizeTVector(big.get()),
            (std::vector<std::size_t>{0, std::numeric_limits<std::size_t>::max()}));
  ZrArrayPtr empty(zrCreateDoubleMatrix(0, 0));
  EXPECT_TRUE(sc::toDoubleVector(empty.get()).empty());

  struct Case {
    const char* label;
    ZrArrayPtr array;
    Failure asDoubles, asSizes;
  };
  std::vector<Case> cases;
  cases.push_back({"null", ZrArrayPtr(), Failure::Null, Failure::Null});
  cases.push_back({"matrix", doubles(2, 2, {}), Failure::Shape, Failure::Shape});
  cases.push_back({"char", ZrArrayPtr(zrCreateString("12")), Failure::Class, Failure::Class});
  cases.push_back({"negative", typed<std::int8_t>(zrINT8_CLASS, 1, 1, {-1}), Failure::None, Failure::Data});
  cases.push_back({"fraction", doubles(1, 2, {1, 2.5}), Failure::None, Failure::Data});
  cases.push_back({"NaN", doubles(1, 1, {std::nan("")}), Failure::None, Failure::Data});
  cases.push_back({"2^64", doubles(1, 1, {18446744073709551616.0}), Failure::None, Failure::Data});
  cases.push_back({"whole doubles", doubles(1, 2, {3, 1e15}), Failure::None, Failure::None});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(failureOf([&] { (void)sc::toDoubleVector(c.array.get()); }), c.asDoubles);
    EXPECT_EQ(failureOf([&] { (void)sc::toSizeTVector(c.array.get()); }), c.asSizes);
  }

  ZrArrayPtr back = sc::toZrArray(std::vector<double>{1, 2, 3});
  EXPECT_EQ(zrGetM(back.get()), 1u);
  EXPECT_EQ(sc::toDoubleVector(back.get()), (std::vector<double>{1, 2, 3}));
  ZrArrayPtr sizes = sc::toZrArray(std::vector<std::size_t>{4, 5});
  EXPECT_EQ(zrGetClassID(sizes.get()), zrUINT64_CLASS);
  EXPECT_EQ(sc::toSizeTVector(sizes.get()), (std::vector<std::size_t>{4, 5}));
  EXPECT_EQ(zrGetClassID(sc::toZrArray(std::vector<float>{0.5f}).get()), zrSINGLE_CLASS);
}

TEST(BridgeStlConvert, StringVectors) {
  const std::vector<std::string> words = {"one", "", "thr\xC3\xA9\x65"};
  ZrArrayPtr cell = sc::toZrArray(words);
  EXPECT_EQ(zrGetM(cell.get()), 3u);
  EXPECT_EQ(zrGetN(cell.get()), 1u);
  EXPECT_EQ(sc::toStringVector(cell.get()), words);

  const char* rows[] = {"ab ", "c"};
  ZrArrayPtr matrix(zrCreateCharMatrixFromStrings(2, rows));
  EXPECT_EQ(sc::toStringVector(matrix.get()), (std::vector<std::string>{"ab", "c"}));
  ZrArrayPtr single(zrCreateString("keep "));
  EXPECT_EQ(sc::toStringVector(single.get()), (std::vector<std::string>{"keep "}));

  ZrArrayPtr mixed = cellOf({zrCreateString("fine"), zrCreateDoubleScalar(1)});
  EXPECT_EQ(failureOf([&] { (void)sc::toStringVector(mixed.get()); }), Failure::Class);
  ZrArrayPtr number(zrCreateDoubleScalar(1));
  EXPECT_EQ(failureOf([&] { (void)sc::toStringVector(number.get()); }), Failure::Class);
  EXPECT_EQ(failureOf([&] { (void)sc::toStringVector(nullptr); }), Failure::Null);

  const char* withNull[] = {"a", nullptr};
  ZrArrayPtr fromPointers = gk::createCellArrayFromStrings(2, withNull);
  EXPECT_EQ(sc::toStringVector(fromPointers.get()), (std::vector<std::string>{"a", ""}));
  ZrArrayPtr fromUtf16 = gk::createCellArrayFromStrings({gk::UTF16String(u"x\u00e9"), gk::UTF16String()});
  EXPECT_EQ(sc::toStringVector(fromUtf16.get()), (std::vector<std::string>{"x\xC3\xA9", ""}));
}

TEST(BridgeArrayVector, LayoutsRoundTrip) {
  const gk::ArrayVectorPoint3d points(std::vector<Point3d>{Point3d(1, 2, 3), Point3d(4, 5, 6)});
  ZrArrayPtr p = points.toZrArray();
  EXPECT_EQ(zrGetClassID(p.get()), zrDOUBLE_CLASS);
  EXPECT_EQ(zrGetM(p.get()), 3u);
  EXPECT_EQ(zrGetN(p.get()), 2u);
  EXPECT_EQ(zrGetPr(p.get())[3], 4.0);
  EXPECT_EQ(gk::ArrayVectorPoint3d(p.get()).values(), points.values());

  const gk::ArrayVectorPoint3f floats(std::vector<Point3f>{Point3f(1, 2, 3)});
  ZrArrayPtr f = floats.toZrArray();
  EXPECT_EQ(zrGetClassID(f.get()), zrSINGLE_CLASS);
  EXPECT_EQ(gk::ArrayVectorPoint3f(f.get()).values(), floats.values());

  const gk::ArrayVectorColor4b colours(std::vector<Color4b>{Color4b(1, 2, 3, 4), Color4b(5, 6, 7)});
  ZrArrayPtr c = colours.toZrArray();
  EXPECT_EQ(zrGetClassID(c.get()), zrUINT8_CLASS);
  EXPECT_EQ(zrGetM(c.get()), 4u);
  EXPECT_EQ(static_cast<const std::uint8_t*>(zrGetData(c.get()))[7], 255);
  EXPECT_EQ(gk::ArrayVectorColor4b(c.get()).values(), colours.values());

  const gk::ArrayVectorSizeT sizes(std::vector<std::size_t>{9, 8});
  EXPECT_EQ(gk::ArrayVectorSizeT(sizes.toZrArray().get()).values(), sizes.values());
  const gk::ArrayVectorFloat values(std::vector<float>{0.25f, -1.0f});
  ZrArrayPtr vColumn = typed<float>(zrSINGLE_CLASS, 2, 1, {0.25, -1.0});
  EXPECT_EQ(gk::ArrayVectorFloat(vColumn.get()).values(), values.values());
  EXPECT_EQ(gk::ArrayVectorFloat(values.toZrArray().get()).values(), values.values());

  ZrArrayPtr empty(zrCreateDoubleMatrix(0, 0));
  EXPECT_TRUE(gk::ArrayVectorPoint3d(empty.get()).empty());
  ZrArrayPtr twoRows = doubles(2, 3, {});
  ZrArrayPtr singles = typed<float>(zrSINGLE_CLASS, 3, 1, {});
  EXPECT_EQ(failureOf([&] { gk::ArrayVectorPoint3d x(twoRows.get()); }), Failure::Shape);
  EXPECT_EQ(failureOf([&] { gk::ArrayVectorPoint3d x(singles.get()); }), Failure::Class);
  EXPECT_EQ(failureOf([&] { gk::ArrayVectorFloat x(twoRows.get()); }), Failure::Class);
  EXPECT_EQ(failureOf([&] { gk::ArrayVectorColor4b x(nullptr); }), Failure::Null);
}

TEST(BridgeUTF16String, FromAndToHost) {
  const gk::UTF16String s("gr\xC3\xBC\xC3\x9F");
  EXPECT_EQ(s.str(), u"gr\u00fc\u00df");
  EXPECT_EQ(s.toUTF8(), "gr\xC3\xBC\xC3\x9F");
  EXPECT_EQ(gk::UTF16String(s.toZrArray().get()), s);
  EXPECT_TRUE(gk::UTF16String(static_cast<const char*>(nullptr)).empty());
  ZrArrayPtr number(zrCreateDoubleScalar(1));
  EXPECT_EQ(failureOf([&] { gk::UTF16String x(number.get()); }), Failure::Class);
  EXPECT_EQ(failureOf([&] { gk::UTF16String x(static_cast<const zrArray_tag*>(nullptr)); }), Failure::Null);
}

TEST(BridgeColorData, SingleColours) {
  struct Case {
    const char* label;
    ZrArrayPtr value;
    Failure failure;
    Color4b want;
  };
  std::vector<Case> cases;
  cases.push_back({"rgb doubles", doubles(1, 3, {1, 0.5, 0}), Failure::None, Color4b(255, 128, 0, 255)});
  cases.push_back({"rgba column", doubles(4, 1, {0, 0, 1, 0.2}), Failure::None, Color4b(0, 0, 255, 51)});
  cases.push_back({"uint8 as is", typed<std::uint8_t>(zrUINT8_CLASS, 1, 3, {1, 2, 3}), Failure::None,
                   Color4b(1, 2, 3, 255)});
  cases.push_back(
      {"single", typed<float>(zrSINGLE_CLASS, 1, 3, {0, 1, 1}), Failure::None, Color4b(0, 255, 255)});
  cases.push_back({"above one", doubles(1, 3, {1.01, 0, 0}), Failure::RGBA, Color4b()});
  cases.push_back({"below zero", doubles(1, 3, {0, -0.1, 0}), Failure::RGBA, Color4b()});
  cases.push_back({"NaN", doubles(1, 3, {0, 0, std::nan("")}), Failure::RGBA, Color4b()});
  cases.push_back({"two values", doubles(1, 2, {0, 0}), Failure::RGBA, Color4b()});
  cases.push_back({"3x3", doubles(3, 3, {}), Failure::RGBA, Color4b()});
  cases.push_back({"int16", typed<std::int16_t>(zrINT16_CLASS, 1, 3, {}), Failure::RGBA, Color4b()});
  cases.push_back({"char", ZrArrayPtr(zrCreateString("red")), Failure::CDataType, Color4b()});
  cases.push_back({"null", ZrArrayPtr(), Failure::Null, Color4b()});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Color4b got;
    EXPECT_EQ(failureOf([&] { got = gk::colordata_util::hcColorData(c.value.get()); }), c.failure);
    if (c.failure == Failure::None) {
      EXPECT_EQ(got, c.want);
    }
  }
}

TEST(BridgeColorData, IndexedAndTrueColour) {
  ZrArrayPtr indexed = doubles(2, 2, {1, 2, 3, std::nan("")});
  const gk::CData a(indexed.get());
  EXPECT_FALSE(a.isTrueColor());
  EXPECT_EQ(a.count(), 4u);
  EXPECT_EQ(a.index(2), 3.0);
  EXPECT_TRUE(std::isnan(a.index(3)));

  const zrSize dims[] = {1, 2, 3};
  ZrArrayPtr rgb(zrCreateNumericArray(3, dims, zrUINT8_CLASS));
  const std::uint8_t planes[] = {10, 20, 30, 40, 50, 60};  // R plane, G plane, B plane
  std::copy(planes, planes + 6, static_cast<std::uint8_t*>(zrGetData(rgb.get())));
  const gk::CData b(rgb.get());
  EXPECT_TRUE(b.isTrueColor());
  EXPECT_EQ(b.rows(), 1u);
  EXPECT_EQ(b.columns(), 2u);
  EXPECT_EQ(b.color(1), Color4b(20, 40, 60));

  const zrSize fourPlanes[] = {1, 1, 4}, threePlanes[] = {1, 1, 3};
  ZrArrayPtr rgba(zrCreateNumericArray(3, fourPlanes, zrDOUBLE_CLASS));
  ZrArrayPtr outOfRange(zrCreateNumericArray(3, threePlanes, zrDOUBLE_CLASS));
  zrGetPr(outOfRange.get())[1] = 2;
  ZrArrayPtr text(zrCreateString("abc"));
  EXPECT_EQ(failureOf([&] { gk::CData x(rgba.get()); }), Failure::RGBA);
  EXPECT_EQ(failureOf([&] { gk::CData x(outOfRange.get()); }), Failure::RGBA);
  EXPECT_EQ(failureOf([&] { gk::CData x(text.get()); }), Failure::CDataType);
}

TEST(BridgeNPoints, FromAndToHost) {
  ZrArrayPtr rows = doubles(3, 2, {1, 2, 3, 4, 5, 6});  // points (1,4) (2,5) (3,6)
  ZrArrayPtr columns = typed<std::int32_t>(zrINT32_CLASS, 2, 3, {1, 4, 2, 5, 3, 6});
  for (const ZrArrayPtr* a : {&rows, &columns}) {
    NPoints* read = Matrix_to_NPoints(a->get());
    ASSERT_EQ(read->count, 3);
    EXPECT_EQ(read->points[1].x, 2.0);
    EXPECT_EQ(read->points[2].y, 6.0);
    ZrArrayPtr back(NPoints_to_Matrix(read));
    EXPECT_TRUE(zrArrayEqual(back.get(), rows.get()));
    free_NPoints(read);
  }
  ZrArrayPtr empty(zrCreateDoubleMatrix(0, 0));
  NPoints* none = Matrix_to_NPoints(empty.get());
  EXPECT_EQ(none->count, 0);
  free_NPoints(none);
  free_NPoints(nullptr);

  ZrArrayPtr wrong = doubles(3, 3, {});
  ZrArrayPtr text(zrCreateString("ab"));
  EXPECT_EQ(failureOf([&] { free_NPoints(Matrix_to_NPoints(wrong.get())); }), Failure::Shape);
  EXPECT_EQ(failureOf([&] { free_NPoints(Matrix_to_NPoints(text.get())); }), Failure::Class);
  EXPECT_EQ(failureOf([&] { free_NPoints(Matrix_to_NPoints(nullptr)); }), Failure::Null);
}

}  // namespace
