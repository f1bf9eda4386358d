// Private state of VertexVector: the vertex arrays and the six optional
// attribute arrays, shared by the vector's methods and the clippers.
#pragma once

#include <optional>
#include <vector>

#include "qvgui/clipping.h"

namespace gui_objects {

struct VertexVector::Impl {
  std::vector<Point4d> vertices;
  std::vector<Outcode> outcodes;
  std::vector<Point3d> projected;
  std::vector<double> inverseW;
  bool isProjected = false;

  std::optional<std::vector<Color4b>> rgbaColors;
  std::optional<std::vector<float>> colorIndices;
  std::optional<std::vector<Point2f>> textureCoords;
  std::optional<std::vector<Point3d>> normals;
  std::optional<std::vector<Point3f>> ambientDiffuse;
  std::optional<std::vector<Point3f>> specular;

  // Applies f to each attribute of this and the matching one of other, as
  // (std::optional<std::vector<T>>& mine, std::optional<std::vector<T>> const& theirs).
  template <class F>
  void forEachAttribute(const Impl& other, F&& f) {
    f(rgbaColors, other.rgbaColors);
    f(colorIndices, other.colorIndices);
    f(textureCoords, other.textureCoords);
    f(normals, other.normals);
    f(ambientDiffuse, other.ambientDiffuse);
    f(specular, other.specular);
  }
  // One list of the attributes serves the const and the non-const visit.
  template <class Self, class F>
  static void visitAttributes(Self& self, F& f) {
    f(self.rgbaColors);
    f(self.colorIndices);
    f(self.textureCoords);
    f(self.normals);
    f(self.ambientDiffuse);
    f(self.specular);
  }
  template <class F>
  void forEachAttribute(F&& f) {
    visitAttributes(*this, f);
  }
  template <class F>
  void forEachAttribute(F&& f) const {
    visitAttributes(*this, f);
  }

  void dropProjection() noexcept {
    projected.clear();
    inverseW.clear();
    isProjected = false;
  }
};

namespace detail {
[[noreturn]] void throwInvalidIndex();
[[noreturn]] void throwBindingMismatch();
[[noreturn]] void throwAppend();

// interpolate(t, a, b), except that a coordinate which overflows between two
// finite ones is blended as (1 - t) a + t b instead, so finite input stays
// finite.
Point4d interpolateFinite(double t, const Point4d& a, const Point4d& b) noexcept;

// True when every coordinate of every vertex is finite.
bool allFinite(const VertexVector& v) noexcept;
// True when vertex i is finite.
bool finiteVertex(const VertexVector& v, std::size_t i) noexcept;
// Moves every vertex that rounding left just outside the canonical volume
// onto its boundary (x, y and z into [-w, w]), recomputing outcodes; the
// attributes stay.
void settleIntoVolume(VertexVector& v, const Plane3d* const* userPlanes);
}  // namespace detail

}  // namespace gui_objects
