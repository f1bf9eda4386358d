// Host arrays to and from points and matrices, and the vertex, strip and
// index arrays handed to the renderer.
#include <initializer_list>
#include <string>

#include "bridge/array_p.h"

namespace gk::objConvert {

using gui_objects::Matrix4x4d;
using gui_objects::Point2d;
using gui_objects::Point3d;
using gui_objects::Point3f;

// ---- From host arrays ------------------------------------------------------------

Matrix4x4d toMatrix4x4d(const zrArray_tag* array) {
  if (array == nullptr || zrIsEmpty(array)) return Matrix4x4d();
  if (zrGetClassID(array) != zrDOUBLE_CLASS) detail::raiseArrayClass();
  if (!detail::isMatrix(array, 4, 4)) detail::raiseArrayShape();
  return Matrix4x4d(zrGetPr(array));
}

template <class T>
Point3d readPoint3d(const zrArray_tag* array) {
  detail::requireClass<T>(array);
  if (zrGetNumberOfDimensions(array) != 2 || zrGetNumberOfElements(array) != 3 ||
      (zrGetM(array) != 1 && zrGetN(array) != 1)) {
    detail::raiseArrayShape();
  }
  const T* v = static_cast<const T*>(zrGetData(array));
  return Point3d(static_cast<double>(v[0]), static_cast<double>(v[1]), static_cast<double>(v[2]));
}

#define QVGUI_BRIDGE_INSTANTIATE(T, ID) template Point3d readPoint3d<T>(const zrArray_tag*);
QVGUI_NUMERIC_CLASSES(QVGUI_BRIDGE_INSTANTIATE)
#undef QVGUI_BRIDGE_INSTANTIATE

Point3d toPoint3d(const zrArray_tag* array) {
  if (array == nullptr) detail::raiseNullArray();
  return detail::dispatchNumeric(
      zrGetClassID(array), [array](auto tag) { return readPoint3d<typename decltype(tag)::type>(array); });
}

// ---- To host arrays ----------------------------------------------------------------

ZrArrayPtr toZrArray(double value) { return ZrArrayPtr(zrCreateDoubleScalar(value)); }

ZrArrayPtr toZrArray(const wchar_t* text) {
  if (text == nullptr) return ZrArrayPtr(zrCreateString(nullptr));
  std::u16string utf16;
  for (const wchar_t* p = text; *p != L'\0'; ++p) {
    auto c = static_cast<std::uint32_t>(*p);
    if constexpr (sizeof(wchar_t) == 2) {
      utf16 += static_cast<char16_t>(c);  // already UTF-16
    } else {
      if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = 0xFFFD;
      if (c >= 0x10000) {
        c -= 0x10000;
        utf16 += static_cast<char16_t>(0xD800 + (c >> 10));
        utf16 += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
      } else {
        utf16 += static_cast<char16_t>(c);
      }
    }
  }
  return ZrArrayPtr(zrCreateString_UTF16(utf16.c_str()));
}

ZrArrayPtr toZrArray(const Point2d& point) {
  const double v[2] = {point.getX(), point.getY()};
  return detail::makeMatrix(1, 2, v);
}

ZrArrayPtr toZrArray(const Point3d& point) {
  const double v[3] = {point.getX(), point.getY(), point.getZ()};
  return detail::makeMatrix(1, 3, v);
}

ZrArrayPtr toZrArray(const Point3d& first, const Point3d& second) {
  // Column-major: x of both rows, then y, then z.
  const double v[6] = {first.getX(), second.getX(), first.getY(), second.getY(), first.getZ(), second.getZ()};
  return detail::makeMatrix(2, 3, v);
}

ZrArrayPtr toZrArray(const Matrix4x4d& matrix) { return detail::makeMatrix(4, 4, matrix.getPointer()); }

ZrArrayPtr toZrArray(const NPoints& points) {
  const std::size_t n = points.count > 0 ? static_cast<std::size_t>(points.count) : 0;
  ZrArrayPtr array(zrCreateDoubleMatrix(n, 2));
  double* out = zrGetPr(array.get());
  for (std::size_t k = 0; k < n; ++k) {
    out[k] = points.points[k].x;
    out[n + k] = points.points[k].y;
  }
  return array;
}

// ---- Renderer arrays ----------------------------------------------------------------

namespace {

ZrArrayPtr vertexData(std::initializer_list<Point3f> points) {
  ZrArrayPtr array(zrCreateNumericMatrix(3, points.size(), zrSINGLE_CLASS));
  float* out = static_cast<float*>(zrGetData(array.get()));
  for (const Point3f& p : points) {
    *out++ = p.getX();
    *out++ = p.getY();
    *out++ = p.getZ();
  }
  return array;
}

ZrArrayPtr uint32Row(std::initializer_list<std::uint32_t> values) {
  return detail::makeMatrix<std::uint32_t>(1, values.size(), values.begin());
}

}  // namespace

ZrArrayPtr createVertexData(const Point3f& a) { return vertexData({a}); }
ZrArrayPtr createVertexData(const Point3f& a, const Point3f& b) { return vertexData({a, b}); }
ZrArrayPtr createVertexData(const Point3f& a, const Point3f& b, const Point3f& c) {
  return vertexData({a, b, c});
}
ZrArrayPtr createVertexData(const Point3f& a, const Point3f& b, const Point3f& c, const Point3f& d) {
  return vertexData({a, b, c, d});
}

ZrArrayPtr createStripData(std::uint32_t a, std::uint32_t b) { return uint32Row({a, b}); }
ZrArrayPtr createStripData(std::uint32_t a, std::uint32_t b, std::uint32_t c) { return uint32Row({a, b, c}); }
ZrArrayPtr createStripData(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  return uint32Row({a, b, c, d});
}

ZrArrayPtr createVertexIndices(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
  return uint32Row({a, b, c});
}

ZrArrayPtr createVertexIndices(std::size_t count, const std::uint32_t* indices) {
  if (count > 0 && indices == nullptr) detail::raiseNullArray();
  return detail::makeMatrix<std::uint32_t>(1, count, indices);
}

}  // namespace gk::objConvert
