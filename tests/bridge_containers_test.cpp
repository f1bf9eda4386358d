// Standard containers, ArrayVector layouts, UTF-16 strings, colour data and
// point lists to and from host arrays.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "qvgui/bridge.h"

namespace {

using namespace gui_objects;
using gk::ZrArrayPtr;

ZrArrayPtr doubles(zrSize m, zrSize n, const std::vector<double>& values) {
  ZrArrayPtr a(zrCreateDoubleMatrix(m, n));
  for (std::size_t k = 0; k < values.size(); ++k) zrGetPr(a.get())[k] = values[k];
  return a;
}

template <class T>
ZrArrayPtr typed(zrClassID cls, zrSize m, zrSize n, const std::vector<T>& values) {
  ZrArrayPtr a(zrCreateNumericMatrix(m, n, cls));
  for (std::size_t k = 0; k < values.size(); ++k) static_cast<T*>(zrGetData(a.get()))[k] = values[k];
  return a;
}

enum class Failure { None, Null, Class, Shape, Data, CDataType, RGBA };

Failure failureOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const NullArrayException&) {
    return Failure::Null;
  } catch (const InvalidArrayClassException&) {
    return Failure::Class;
  } catch (const InvalidArrayShapeException&) {
    return Failure::Shape;
  } catch (const InvalidArrayDataException&) {
    return Failure::Data;
  } catch (const invalidCDataTypeException&) {
    return Failure::CDataType;
  } catch (const cdata::InvalidRGBADataException&) {
    return Failure::RGBA;
  }
  return Failure::None;
}

TEST(BridgeStlConvert, NumericVectors) {
  ZrArrayPtr column = typed<std::int16_t>(zrINT16_CLASS, 3, 1, {-2, 0, 7});
  EXPECT_EQ(gk::stlConvert::toDoubleVector(column.get()), (std::vector<double>{-2, 0, 7}));
  EXPECT_EQ(gk::stlConvert::toFloatVector(column.get()), (std::vector<float>{-2, 0, 7}));
  ZrArrayPtr big = typed<std::uint64_t>(zrUINT64_CLASS, 1, 2, {0, std::numeric_limits<std::uint64_t>::max()});
  EXPECT_EQ(gk::stlConvert::toSizeTVector(big.get()),
            (std::vector<std::size_t>{0, std::numeric_limits<std::size_t>::max()}));
  ZrArrayPtr empty(zrCreateDoubleMatrix(0, 0));
  EXPECT_TRUE(gk::stlConvert::toDoubleVector(empty.get()).empty());

  ZrArrayPtr square = doubles(2, 2, {});
  ZrArrayPtr text(zrCreateString("12"));
  ZrArrayPtr negative = typed<std::int8_t>(zrINT8_CLASS, 1, 1, {-1});
  ZrArrayPtr fraction = doubles(1, 2, {1, 2.5});
  ZrArrayPtr nan = doubles(1, 1, {std::nan("")});
  ZrArrayPtr huge = doubles(1, 1, {18446744073709551616.0});
  ZrArrayPtr whole = doubles(1, 2, {3, 1e15});
  struct Case {
    const char* label;
    const zrArray_tag* array;
    Failure asDoubles, asSizes;
  };
  const Case cases[] = {
      {"null", nullptr, Failure::Null, Failure::Null},
      {"matrix", square.get(), Failure::Shape, Failure::Shape},
      {"char", text.get(), Failure::Class, Failure::Class},
      {"negative", negative.get(), Failure::None, Failure::Data},
      {"fraction", fraction.get(), Failure::None, Failure::Data},
      {"NaN", nan.get(), Failure::None, Failure::Data},
      {"2^64", huge.get(), Failure::None, Failure::Data},
      {"whole doubles", whole.get(), Failure::None, Failure::None},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(failureOf([&] { (void)gk::stlConvert::toDoubleVector(c.array); }), c.asDoubles);
    EXPECT_EQ(failureOf([&] { (void)gk::stlConvert::toSizeTVector(c.array); }), c.asSizes);
  }

  ZrArrayPtr back = gk::stlConvert::toZrArray(std::vector<double>{1, 2, 3});
  EXPECT_EQ(zrGetM(back.get()), 1u);
  EXPECT_EQ(gk::stlConvert::toDoubleVector(back.get()), (std::vector<double>{1, 2, 3}));
  ZrArrayPtr sizes = gk::stlConvert::toZrArray(std::vector<std::size_t>{4, 5});
  EXPECT_EQ(zrGetClassID(sizes.get()), zrUINT64_CLASS);
  EXPECT_EQ(gk::stlConvert::toSizeTVector(sizes.get()), (std::vector<std::size_t>{4, 5}));
  ZrArrayPtr floats = gk::stlConvert::toZrArray(std::vector<float>{0.5f});
  EXPECT_EQ(zrGetClassID(floats.get()), zrSINGLE_CLASS);
}

TEST(BridgeStlConvert, StringVectors) {
  const std::vector<std::string> words = {"one", "", "thr\xC3\xA9\x65"};
  ZrArrayPtr cell = gk::stlConvert::toZrArray(words);
  EXPECT_EQ(zrGetM(cell.get()), 3u);
  EXPECT_EQ(zrGetN(cell.get()), 1u);
  EXPECT_EQ(gk::stlConvert::toStringVector(cell.get()), words);

  const char* rows[] = {"ab ", "c"};
  ZrArrayPtr matrix(zrCreateCharMatrixFromStrings(2, rows));
  EXPECT_EQ(gk::stlConvert::toStringVector(matrix.get()), (std::vector<std::string>{"ab", "c"}));
  ZrArrayPtr single(zrCreateString("keep "));
  EXPECT_EQ(gk::stlConvert::toStringVector(single.get()), (std::vector<std::string>{"keep "}));

  ZrArrayPtr mixed(zrCreateCellMatrix(1, 2));
  zrSetCell(mixed.get(), 0, zrCreateString("fine"));
  zrSetCell(mixed.get(), 1, zrCreateDoubleScalar(1));
  EXPECT_EQ(failureOf([&] { (void)gk::stlConvert::toStringVector(mixed.get()); }), Failure::Class);
  ZrArrayPtr number(zrCreateDoubleScalar(1));
  EXPECT_EQ(failureOf([&] { (void)gk::stlConvert::toStringVector(number.get()); }), Failure::Class);
  EXPECT_EQ(failureOf([&] { (void)gk::stlConvert::toStringVector(nullptr); }), Failure::Null);

  const char* withNull[] = {"a", nullptr};
  ZrArrayPtr fromPointers = gk::createCellArrayFromStrings(2, withNull);
  EXPECT_EQ(gk::stlConvert::toStringVector(fromPointers.get()), (std::vector<std::string>{"a", ""}));
  ZrArrayPtr fromUtf16 = gk::createCellArrayFromStrings({gk::UTF16String(u"x\u00e9"), gk::UTF16String()});
  EXPECT_EQ(gk::stlConvert::toStringVector(fromUtf16.get()), (std::vector<std::string>{"x\xC3\xA9", ""}));
}

TEST(BridgeArrayVector, LayoutsRoundTrip) {
  gk::ArrayVectorPoint3d points;
  points.push_back(Point3d(1, 2, 3));
  points.push_back(Point3d(4, 5, 6));
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
  ZrArrayPtr s = sizes.toZrArray();
  EXPECT_EQ(gk::ArrayVectorSizeT(s.get()).values(), sizes.values());
  const gk::ArrayVectorFloat values(std::vector<float>{0.25f, -1.0f});
  ZrArrayPtr v = values.toZrArray();
  ZrArrayPtr vColumn = typed<float>(zrSINGLE_CLASS, 2, 1, {0.25f, -1.0f});
  EXPECT_EQ(gk::ArrayVectorFloat(vColumn.get()).values(), values.values());
  EXPECT_EQ(gk::ArrayVectorFloat(v.get()).values(), values.values());

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
  ZrArrayPtr a = s.toZrArray();
  EXPECT_EQ(gk::UTF16String(a.get()), s);
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

  const zrSize fourPlanes[] = {1, 1, 4};
  ZrArrayPtr rgba(zrCreateNumericArray(3, fourPlanes, zrDOUBLE_CLASS));
  EXPECT_EQ(failureOf([&] { gk::CData x(rgba.get()); }), Failure::RGBA);
  const zrSize dimsD[] = {1, 1, 3};
  ZrArrayPtr outOfRange(zrCreateNumericArray(3, dimsD, zrDOUBLE_CLASS));
  zrGetPr(outOfRange.get())[1] = 2;
  EXPECT_EQ(failureOf([&] { gk::CData x(outOfRange.get()); }), Failure::RGBA);
  ZrArrayPtr text(zrCreateString("abc"));
  EXPECT_EQ(failureOf([&] { gk::CData x(text.get()); }), Failure::CDataType);
}

TEST(BridgeNPoints, FromAndToHost) {
  ZrArrayPtr rows = doubles(3, 2, {1, 2, 3, 4, 5, 6});  // points (1,4) (2,5) (3,6)
  NPoints* a = Matrix_to_NPoints(rows.get());
  ASSERT_EQ(a->count, 3);
  EXPECT_EQ(a->points[1].x, 2.0);
  EXPECT_EQ(a->points[1].y, 5.0);
  ZrArrayPtr back(NPoints_to_Matrix(a));
  EXPECT_TRUE(zrArrayEqual(back.get(), rows.get()));
  free_NPoints(a);

  ZrArrayPtr columns = typed<std::int32_t>(zrINT32_CLASS, 2, 3, {1, 4, 2, 5, 3, 6});
  NPoints* b = Matrix_to_NPoints(columns.get());
  ASSERT_EQ(b->count, 3);
  EXPECT_EQ(b->points[2].x, 3.0);
  EXPECT_EQ(b->points[2].y, 6.0);
  free_NPoints(b);

  ZrArrayPtr empty(zrCreateDoubleMatrix(0, 0));
  NPoints* c = Matrix_to_NPoints(empty.get());
  EXPECT_EQ(c->count, 0);
  free_NPoints(c);
  free_NPoints(nullptr);

  ZrArrayPtr wrong = doubles(3, 3, {});
  ZrArrayPtr text(zrCreateString("ab"));
  EXPECT_EQ(failureOf([&] { free_NPoints(Matrix_to_NPoints(wrong.get())); }), Failure::Shape);
  EXPECT_EQ(failureOf([&] { free_NPoints(Matrix_to_NPoints(text.get())); }), Failure::Class);
  EXPECT_EQ(failureOf([&] { free_NPoints(Matrix_to_NPoints(nullptr)); }), Failure::Null);
}

}  // namespace
