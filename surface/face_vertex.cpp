// Face-vertex data read back: the data extents of the vertices faces use, and
// per-face coordinate matrices for the host's X, Y and Z data.
#include <cfloat>
#include <cmath>
#include <limits>

#include "qvgui/surface.h"
#include "surface/host_memory_p.h"
#include "surface/numeric_p.h"

namespace gui_objects {

namespace {

[[noreturn]] void raiseInvalidData() { throw InvalidDataException(); }

// Minimum, maximum, largest negative and smallest positive of one coordinate.
struct AxisRange {
  double& minimum;
  double& maximum;
  double& largestNegative;
  double& smallestPositive;

  void take(double v) noexcept {
    if (v > maximum) {
      maximum = v;
    } else if (minimum > v) {
      minimum = v;
    }
    if (v < 0.0 && v > largestNegative) {
      largestNegative = v;
    } else if (v > 0.0 && smallestPositive > v) {
      smallestPositive = v;
    }
  }
};

}  // namespace

// ---- Extents ------------------------------------------------------------------------

FaceVertexExtents::FaceVertexExtents() noexcept
    : values{DBL_MAX,  -DBL_MAX, DBL_MAX,  -DBL_MAX, DBL_MAX,  -DBL_MAX,
             -DBL_MAX, DBL_MAX,  -DBL_MAX, DBL_MAX,  -DBL_MAX, DBL_MAX} {}

double FaceVertexExtents::getLimit(tickpicker::AxisType axis,
                                   tickpicker::OuterLimitIndices index) const noexcept {
  const int a = static_cast<int>(axis);
  const int k = static_cast<int>(index);
  if (a < 0 || a > 2 || k < 0 || k > 1) return std::numeric_limits<double>::quiet_NaN();
  return values[2 * a + k];
}

double FaceVertexExtents::getInnerLimit(tickpicker::AxisType axis,
                                        tickpicker::InnerLimitIndices index) const noexcept {
  const int a = static_cast<int>(axis);
  const int k = static_cast<int>(index);
  if (a < 0 || a > 2 || k < 0 || k > 1) return std::numeric_limits<double>::quiet_NaN();
  return values[6 + 2 * a + k];
}

bool FaceVertexExtents::hasZeroZ() const noexcept { return values[4] == 0.0 && values[5] == 0.0; }

FaceVertexExtents computeFaceVertexExtents(const zrArray_tag* faces, const zrArray_tag* vertices) {
  if (faces == nullptr || vertices == nullptr) raiseInvalidData();
  const std::size_t nv = zrGetM(vertices);
  const std::size_t dim = zrGetN(vertices);
  const std::size_t nf = zrGetM(faces);
  const std::size_t maxv = zrGetN(faces);
  const double* vdata = zrGetPr(vertices);
  const double* fdata = zrGetPr(faces);

  FaceVertexExtents extents;
  double* e = extents.values;
  const bool hasZ = dim >= 3;
  if (dim == 2) e[4] = e[5] = 0.0;
  if (nf == 0 || maxv == 0) return extents;
  if (fdata == nullptr || vdata == nullptr || dim < 2) raiseInvalidData();

  AxisRange ranges[3] = {{e[0], e[1], e[6], e[7]}, {e[2], e[3], e[8], e[9]}, {e[4], e[5], e[10], e[11]}};
  const std::size_t coordinates = hasZ ? 3 : 2;
  detail::CheckedArray<std::uint64_t> visited((nv + 63) / 64);
  bool first = true;
  for (std::size_t f = 0; f < nf; ++f) {
    for (std::size_t c = 0; c < maxv; ++c) {
      const double value = fdata[f + c * nf];
      if (!std::isfinite(value)) break;
      const double index = value - 1.0;
      if (index < 0.0 || !(index < static_cast<double>(nv))) raiseInvalidData();
      const auto vertex = static_cast<std::size_t>(index);
      std::uint64_t& word = visited[vertex / 64];
      const std::uint64_t bit = std::uint64_t{1} << (vertex % 64);
      if ((word & bit) != 0) continue;
      word |= bit;

      double v[3];
      bool finite = true;
      for (std::size_t k = 0; k < coordinates; ++k) {
        v[k] = vdata[vertex + k * nv];
        finite = finite && std::isfinite(v[k]);
      }
      if (!finite) continue;
      for (std::size_t k = 0; k < coordinates; ++k) {
        if (first) ranges[k].minimum = v[k];
        ranges[k].take(v[k]);
      }
      first = false;
    }
  }
  return extents;
}

// ---- Per-face coordinates ---------------------------------------------------------------

zrArray_tag* convert_FaceVertex_to_XYZ(const zrArray_tag* faces, const zrArray_tag* vertices,
                                       std::size_t coordinate) {
  if (faces == nullptr || vertices == nullptr) return nullptr;
  if (coordinate >= 3 || coordinate >= zrGetN(vertices)) return nullptr;
  const std::size_t nv = zrGetM(vertices);
  const std::size_t nf = zrGetM(faces);
  const std::size_t maxv = zrGetN(faces);
  const double* fdata = zrGetPr(faces);
  if (fdata == nullptr && nf * maxv != 0) return nullptr;

  detail::ArrayHolder result(zrCreateDoubleMatrix(maxv, nf));
  double* out = zrGetPr(result.get());
  const bool numeric = detail::visitNumeric(vertices, [&](const auto* vdata) {
    const auto* column = vdata + coordinate * nv;
    for (std::size_t f = 0; f < nf; ++f) {
      double* dst = out + f * maxv;
      double last = 0.0;
      std::size_t r = 0;
      for (; r < maxv; ++r) {
        const double value = fdata[f + r * nf];
        // Entries below 1 end the face too, so that unvalidated faces cannot
        // read outside the vertex matrix.
        if (!(value >= 1.0 && value <= static_cast<double>(nv))) break;
        last = static_cast<double>(column[static_cast<std::size_t>(value - 1.0)]);
        dst[r] = last;
      }
      for (; r < maxv; ++r) dst[r] = last;
    }
  });
  if (!numeric) throw invalidXYZTypeException();
  return result.release();
}

}  // namespace gui_objects
