// Colour data of graphics objects (single colours, indexed and true-colour
// arrays) and the flat point lists.
#include <boost/numeric/conversion/cast.hpp>
#include <cmath>

#include "bridge/array_p.h"

namespace gk {

namespace {

// One colour channel of a true-colour array; NaN and out-of-range values fail.
std::uint8_t channel(const zrArray_tag* array, std::size_t i) {
  switch (zrGetClassID(array)) {
    case zrUINT8_CLASS:
      return static_cast<const std::uint8_t*>(zrGetData(array))[i];
    case zrDOUBLE_CLASS:
    case zrSINGLE_CLASS: {
      const double v = detail::numericElement(array, i);
      if (!(v >= 0.0 && v <= 1.0)) detail::raiseRGBAData();
      return static_cast<std::uint8_t>(std::lround(v * 255.0));
    }
    default:
      detail::raiseRGBAData();
  }
}

void requireNumericColourData(const zrArray_tag* array) {
  if (array == nullptr) detail::raiseNullArray();
  if (!zrIsNumeric(array)) detail::raiseCDataType();
}

}  // namespace

gui_objects::Color4b colordata_util::hcColorData(const zrArray_tag* rgba) {
  requireNumericColourData(rgba);
  const std::size_t n = zrGetNumberOfElements(rgba);
  if (!zrIsVector(rgba) || (n != 3 && n != 4)) detail::raiseRGBAData();
  return gui_objects::Color4b(channel(rgba, 0), channel(rgba, 1), channel(rgba, 2),
                              n == 4 ? channel(rgba, 3) : std::uint8_t{255});
}

CData::CData(const zrArray_tag* array) {
  requireNumericColourData(array);
  const zrSize* dims = zrGetDimensions(array);
  const zrSize ndim = zrGetNumberOfDimensions(array);
  rows_ = dims[0];
  columns_ = dims[1];
  if (ndim == 2) {
    indices_.resize(rows_ * columns_);
    for (std::size_t k = 0; k < indices_.size(); ++k) indices_[k] = detail::numericElement(array, k);
    return;
  }
  if (ndim != 3 || dims[2] != 3) detail::raiseRGBAData();
  trueColor_ = true;
  const std::size_t plane = rows_ * columns_;
  colors_.reserve(plane);
  for (std::size_t k = 0; k < plane; ++k) {
    colors_.emplace_back(channel(array, k), channel(array, plane + k), channel(array, 2 * plane + k));
  }
}

double CData::index(std::size_t i) const noexcept { return trueColor_ ? std::nan("") : indices_[i]; }

gui_objects::Color4b CData::color(std::size_t i) const noexcept {
  return trueColor_ ? colors_[i] : gui_objects::Color4b();
}

}  // namespace gk

// ---- Flat point lists ---------------------------------------------------------------

NPoints* create_NPoints(std::int32_t count) {
  const std::size_t n = count > 0 ? static_cast<std::size_t>(count) : 0;
  auto* points = static_cast<NPoints*>(utCallocWithCheck(1, sizeof(NPoints)));
  try {
    points->points = static_cast<Real_point*>(utCallocWithCheck(n == 0 ? 1 : n, sizeof(Real_point)));
  } catch (...) {
    utFree(points);
    throw;
  }
  points->count = static_cast<std::int32_t>(n);
  return points;
}

void free_NPoints(NPoints* points) {
  if (points == nullptr) return;
  utFree(points->points);
  utFree(points);
}

NPoints* Matrix_to_NPoints(const zrArray_tag* array) {
  if (array == nullptr) gk::detail::raiseNullArray();
  if (!zrIsNumeric(array)) gk::detail::raiseArrayClass();
  std::size_t count = 0;
  bool pointPerRow = true;
  if (!zrIsEmpty(array)) {
    if (zrGetNumberOfDimensions(array) != 2) gk::detail::raiseArrayShape();
    if (zrGetN(array) == 2) {
      count = zrGetM(array);
    } else if (zrGetM(array) == 2) {
      count = zrGetN(array);
      pointPerRow = false;
    } else {
      gk::detail::raiseArrayShape();
    }
  }
  NPoints* points = create_NPoints(boost::numeric_cast<std::int32_t>(count));
  for (std::size_t k = 0; k < count; ++k) {
    const std::size_t xi = pointPerRow ? k : 2 * k;
    const std::size_t yi = pointPerRow ? count + k : 2 * k + 1;
    points->points[k] =
        Real_point{gk::detail::numericElement(array, xi), gk::detail::numericElement(array, yi)};
  }
  return points;
}

zrArray_tag* NPoints_to_Matrix(const NPoints* points) {
  return gk::objConvert::toZrArray(points != nullptr ? *points : NPoints{0, nullptr}).release();
}
