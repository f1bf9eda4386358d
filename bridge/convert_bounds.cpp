// Host arrays to and from bounding volumes, lines, segments and rectangles:
// the 2-by-3 "one point per row" forms.
#include "bridge/array_p.h"

namespace gk::objConvert {

using gui_objects::BoundingVolume;
using gui_objects::Line3d;
using gui_objects::LineSegment3d;
using gui_objects::Point3d;

namespace {

struct TwoRows {
  Point3d first;
  Point3d second;
};

// The two rows of a 2-by-3 array of element type T. Column-major, so row 1 is
// elements 0, 2, 4 and row 2 is elements 1, 3, 5.
template <class T>
TwoRows readTwoRows(const zrArray_tag* array) {
  if (!detail::isMatrix(array, 2, 3)) detail::raiseArrayShape();
  const T* v = static_cast<const T*>(zrGetData(array));
  auto d = [v](int k) { return static_cast<double>(v[k]); };
  return {Point3d(d(0), d(2), d(4)), Point3d(d(1), d(3), d(5))};
}

// Lines treat an empty array like a missing one.
template <class T>
TwoRows readLineRows(const zrArray_tag* array) {
  detail::requireClass<T>(array);
  if (zrIsEmpty(array)) detail::raiseNullArray();
  return readTwoRows<T>(array);
}

}  // namespace

template <class T>
BoundingVolume readBoundingVolume(const zrArray_tag* array) {
  detail::requireClass<T>(array);
  const TwoRows rows = readTwoRows<T>(array);
  const Point3d& lo = rows.first;
  const Point3d& hi = rows.second;
  // NaN limits pass: only an ordered pair the wrong way round is an error.
  if (lo.getX() > hi.getX() || lo.getY() > hi.getY() || lo.getZ() > hi.getZ()) detail::raiseWidth();
  return BoundingVolume(lo, hi);
}

template <class T>
Line3d readLine3d(const zrArray_tag* array) {
  const TwoRows rows = readLineRows<T>(array);
  return Line3d(rows.first, rows.second);
}

template <class T>
LineSegment3d readLineSegment3d(const zrArray_tag* array) {
  const TwoRows rows = readLineRows<T>(array);
  return LineSegment3d(rows.first, rows.second);
}

#define QVGUI_BRIDGE_INSTANTIATE(T, ID)                              \
  template BoundingVolume readBoundingVolume<T>(const zrArray_tag*); \
  template Line3d readLine3d<T>(const zrArray_tag*);                 \
  template LineSegment3d readLineSegment3d<T>(const zrArray_tag*);
QVGUI_NUMERIC_CLASSES(QVGUI_BRIDGE_INSTANTIATE)
#undef QVGUI_BRIDGE_INSTANTIATE

BoundingVolume toBoundingVolume(const zrArray_tag* array) {
  if (array == nullptr) detail::raiseNullArray();
  return detail::dispatchNumeric(zrGetClassID(array), [array](auto tag) {
    return readBoundingVolume<typename decltype(tag)::type>(array);
  });
}

Line3d toLine3d(const zrArray_tag* array) {
  if (array == nullptr) detail::raiseNullArray();
  return detail::dispatchNumeric(
      zrGetClassID(array), [array](auto tag) { return readLine3d<typename decltype(tag)::type>(array); });
}

LineSegment3d toLineSegment3d(const zrArray_tag* array) {
  if (array == nullptr) detail::raiseNullArray();
  return detail::dispatchNumeric(zrGetClassID(array), [array](auto tag) {
    return readLineSegment3d<typename decltype(tag)::type>(array);
  });
}

ZrArrayPtr toZrArray(const BoundingVolume& volume) {
  return toZrArray(Point3d(volume.getXMin(), volume.getYMin(), volume.getZMin()),
                   Point3d(volume.getXMax(), volume.getYMax(), volume.getZMax()));
}

ZrArrayPtr toZrArray(const gui_objects::Rectangle2i& rectangle) {
  const double v[4] = {double(rectangle.getYMin()), double(rectangle.getXMin()), double(rectangle.getYMax()),
                       double(rectangle.getXMax())};
  return detail::makeMatrix(1, 4, v);
}

}  // namespace gk::objConvert
