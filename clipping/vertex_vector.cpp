// VertexVector: a primitive's clip-space vertices with outcodes and optional
// per-vertex attributes, appended, interpolated and projected as a unit.
#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>
#include <utility>

#include "clipping/vertex_vector_p.h"

namespace gui_objects {

namespace clip_detail {
void throwInvalidIndex() { throw vertex_vector::InvalidIndexException(); }
void throwBindingMismatch() { throw vertex_vector::BindingMismatchException(); }
void throwAppend() { throw vertex_vector::AppendException(); }

Point4d interpolateFinite(double t, Point4d const& a, Point4d const& b) noexcept {
  Point4d const p = interpolate(t, a, b);
  if (std::isfinite(p.getX()) && std::isfinite(p.getY()) && std::isfinite(p.getZ()) &&
      std::isfinite(p.getW()))
    return p;
  // b - a overflowed between two finite coordinates of opposite signs; the
  // weighted sum cannot overflow by more than rounding.
  auto const blend = [t](double u, double v) {
    double const c = (1 - t) * u + t * v;
    return std::fmax(-std::numeric_limits<double>::max(), std::fmin(c, std::numeric_limits<double>::max()));
  };
  auto const pick = [&](double c, double u, double v) { return std::isfinite(c) ? c : blend(u, v); };
  return Point4d(pick(p.getX(), a.getX(), b.getX()), pick(p.getY(), a.getY(), b.getY()),
                 pick(p.getZ(), a.getZ(), b.getZ()), pick(p.getW(), a.getW(), b.getW()));
}

bool finiteVertex(VertexVector const& v, std::size_t i) noexcept {
  Point4d const& p = v.getVertices()[i];
  return std::isfinite(p.getX()) && std::isfinite(p.getY()) && std::isfinite(p.getZ()) &&
         std::isfinite(p.getW());
}

bool allFinite(VertexVector const& v) noexcept {
  for (std::size_t i = 0; i < v.getSize(); ++i) {
    if (!finiteVertex(v, i)) return false;
  }
  return true;
}

void settleIntoVolume(VertexVector& v, Plane3d const* const* userPlanes) {
  std::size_t const n = v.getSize();
  Point4d const* const vertices = v.getVertices();
  // Only a w >= 0 has a volume to settle into; a vertex with w < 0 fails the
  // projection that follows anyway.
  auto const outside = [](Point4d const& p) {
    double const w = p.getW();
    return w >= 0 && !(std::fabs(p.getX()) <= w && std::fabs(p.getY()) <= w && std::fabs(p.getZ()) <= w);
  };
  std::size_t i = 0;
  while (i < n && !outside(vertices[i])) ++i;
  if (i == n) return;
  std::vector<Point4d> settled(vertices, vertices + n);
  for (Point4d& p : settled) {
    if (!outside(p)) continue;
    double const w = p.getW();
    p = Point4d(std::clamp(p.getX(), -w, w), std::clamp(p.getY(), -w, w), std::clamp(p.getZ(), -w, w), w);
  }
  VertexVector out(n, settled.data(), userPlanes);
  if (Color4b const* c = v.getRGBAColors()) out.addRGBAColors(c);
  if (float const* c = v.getColorIndices()) out.addColorIndices(c);
  if (Point2f const* c = v.getTextureCoords()) out.addTextureCoords(c);
  if (Point3d const* c = v.getNormals()) out.addNormals(c);
  if (Point3f const* c = v.getAmbientDiffuseSecondaryColors()) out.addAmbientDiffuseSecondaryColors(c);
  if (Point3f const* c = v.getSpecularSecondaryColors()) out.addSpecularSecondaryColors(c);
  v.swap(out);
}

}  // namespace clip_detail

using clip_detail::throwAppend;
using clip_detail::throwBindingMismatch;
using clip_detail::throwInvalidIndex;

namespace {

// A float attribute interpolated like the float points: the difference in
// float, scaled and added in double, narrowed at the end.
float interpolateFloat(double t, float a, float b) {
  float const d = b - a;
  return static_cast<float>(static_cast<double>(a) + static_cast<double>(d) * t);
}

template <class T>
void bindAll(std::optional<std::vector<T>>& slot, T const* values, std::size_t count) {
  if (values == nullptr && count > 0) throwAppend();
  std::vector<T> copy;
  if (count > 0) copy.assign(values, values + count);
  slot = std::move(copy);
}

template <class T>
void appendOne(std::optional<std::vector<T>>& slot, std::size_t vertexCount, T const& value) {
  std::size_t const have = slot ? slot->size() : 0;
  if (have + 1 != vertexCount) throwAppend();
  if (!slot) slot.emplace();
  slot->push_back(value);
}

// Room for one more element, growing geometrically: reserve(size + 1) alone
// would reallocate on every append.
template <class T>
void makeRoom(std::vector<T>& v) {
  if (v.size() == v.capacity()) v.reserve(2 * v.size() + 4);
}

bool sameBinding(VertexVector::Impl const& a, VertexVector::Impl const& b) {
  return a.rgbaColors.has_value() == b.rgbaColors.has_value() &&
         a.colorIndices.has_value() == b.colorIndices.has_value() &&
         a.textureCoords.has_value() == b.textureCoords.has_value() &&
         a.normals.has_value() == b.normals.has_value() &&
         a.ambientDiffuse.has_value() == b.ambientDiffuse.has_value() &&
         a.specular.has_value() == b.specular.has_value();
}

// Makes dst ready to receive one vertex from src: adopts src's attribute set
// when dst is empty, checks the sets agree otherwise, checks src holds every
// value of vertex index (and of index2 when interpolating), and reserves room
// so that the appends that follow cannot fail half-way.
void prepareAppend(VertexVector::Impl& dst, VertexVector::Impl const& src, std::size_t index,
                   std::size_t index2) {
  std::size_t const n = src.vertices.size();
  if (index >= n || index2 >= n) throwInvalidIndex();
  auto checkValues = [&](auto const& slot) {
    if (slot && (index >= slot->size() || index2 >= slot->size())) throwInvalidIndex();
  };
  src.forEachAttribute(checkValues);
  if (dst.vertices.empty()) {
    if (!sameBinding(dst, src)) {
      dst.forEachAttribute(src, [](auto& mine, auto const& theirs) {
        if (theirs)
          mine.emplace();
        else
          mine.reset();
      });
    }
  } else if (!sameBinding(dst, src)) {
    throwBindingMismatch();
  } else {
    // An out-of-step destination would stay out of step after the append.
    std::size_t const have = dst.vertices.size();
    bool inStep = true;
    dst.forEachAttribute([&](auto const& slot) {
      if (slot && slot->size() != have) inStep = false;
    });
    if (!inStep) throwAppend();
  }
  makeRoom(dst.vertices);
  makeRoom(dst.outcodes);
  dst.forEachAttribute([](auto& slot) {
    if (slot) makeRoom(*slot);
  });
}

}  // namespace

// ---- Construction ---------------------------------------------------------------

VertexVector::VertexVector() : impl_(std::make_unique<Impl>()) {}

VertexVector::VertexVector(std::size_t count, Point4d const* vertices, Plane3d const* const* userPlanes)
    : impl_(std::make_unique<Impl>()) {
  if (vertices == nullptr && count > 0) throwAppend();
  impl_->vertices.assign(vertices, vertices + count);
  impl_->outcodes.reserve(count);
  for (Point4d const& p : impl_->vertices) impl_->outcodes.push_back(p.calculateOutcodes(userPlanes));
}

VertexVector::VertexVector(VertexVector const& source, std::size_t count, std::size_t const* indices)
    : impl_(std::make_unique<Impl>()) {
  if (indices == nullptr && count > 0) throwInvalidIndex();
  for (std::size_t k = 0; k < count; ++k) addVertex(source, indices[k]);
  // An empty selection still carries the source's attribute set.
  if (count == 0) {
    impl_->forEachAttribute(*source.impl_, [](auto& mine, auto const& theirs) {
      if (theirs) mine.emplace();
    });
  }
}

VertexVector::VertexVector(VertexVector const& other) : impl_(std::make_unique<Impl>(*other.impl_)) {}

// The moved-from vector is left empty and usable, which costs an allocation.
VertexVector::VertexVector(VertexVector&& other) : impl_(std::make_unique<Impl>()) {
  impl_.swap(other.impl_);
}

VertexVector& VertexVector::operator=(VertexVector const& other) {
  if (this != &other) {
    auto copy = std::make_unique<Impl>(*other.impl_);
    impl_.swap(copy);
  }
  return *this;
}

VertexVector& VertexVector::operator=(VertexVector&& other) noexcept {
  impl_.swap(other.impl_);
  return *this;
}

VertexVector::~VertexVector() = default;

// ---- Attributes -----------------------------------------------------------------

void VertexVector::addRGBAColors(Color4b const* colors) { bindAll(impl_->rgbaColors, colors, getSize()); }
void VertexVector::addColorIndices(float const* indices) { bindAll(impl_->colorIndices, indices, getSize()); }
void VertexVector::addTextureCoords(Point2f const* coords) {
  bindAll(impl_->textureCoords, coords, getSize());
}
void VertexVector::addNormals(Point3d const* normals) { bindAll(impl_->normals, normals, getSize()); }
void VertexVector::addAmbientDiffuseSecondaryColors(Point3f const* colors) {
  bindAll(impl_->ambientDiffuse, colors, getSize());
}
void VertexVector::addSpecularSecondaryColors(Point3f const* colors) {
  bindAll(impl_->specular, colors, getSize());
}

void VertexVector::addRGBAColor(Color4b const& color) { appendOne(impl_->rgbaColors, getSize(), color); }
void VertexVector::addColorIndex(float index) { appendOne(impl_->colorIndices, getSize(), index); }
void VertexVector::addTextureCoord(Point2f const& coord) {
  appendOne(impl_->textureCoords, getSize(), coord);
}
void VertexVector::addNormal(Point3d const& normal) { appendOne(impl_->normals, getSize(), normal); }
void VertexVector::addAmbientDiffuseSecondaryColor(Point3f const& color) {
  appendOne(impl_->ambientDiffuse, getSize(), color);
}
void VertexVector::addSpecularSecondaryColor(Point3f const& color) {
  appendOne(impl_->specular, getSize(), color);
}

// ---- Appending vertices -----------------------------------------------------------

void VertexVector::addVertex(Point4d const& vertex, Plane3d const* const* userPlanes) {
  Outcode const code = vertex.calculateOutcodes(userPlanes);
  makeRoom(impl_->vertices);
  makeRoom(impl_->outcodes);
  impl_->dropProjection();
  impl_->vertices.push_back(vertex);
  impl_->outcodes.push_back(code);
}

void VertexVector::addVertex(VertexVector const& source, std::size_t index) {
  // A vector appended to itself must read from a stable copy.
  if (&source == this) {
    VertexVector const copy(source);
    addVertex(copy, index);
    return;
  }
  Impl const& src = *source.impl_;
  Impl& dst = *impl_;
  prepareAppend(dst, src, index, index);
  dst.dropProjection();
  dst.vertices.push_back(src.vertices[index]);
  dst.outcodes.push_back(src.outcodes[index]);
  dst.forEachAttribute(src, [&](auto& mine, auto const& theirs) {
    if (theirs) mine->push_back((*theirs)[index]);
  });
}

void VertexVector::clipVertexToFraction(VertexVector const& source, std::size_t i0, std::size_t i1, double t,
                                        Plane3d const* const* userPlanes) {
  if (&source == this) {
    VertexVector const copy(source);
    clipVertexToFraction(copy, i0, i1, t, userPlanes);
    return;
  }
  Impl const& src = *source.impl_;
  Impl& dst = *impl_;
  prepareAppend(dst, src, i0, i1);
  Point4d const p = clip_detail::interpolateFinite(t, src.vertices[i0], src.vertices[i1]);
  Outcode const code = p.calculateOutcodes(userPlanes);
  dst.dropProjection();
  dst.vertices.push_back(p);
  dst.outcodes.push_back(code);
  if (src.rgbaColors) dst.rgbaColors->push_back(interpolate(t, (*src.rgbaColors)[i0], (*src.rgbaColors)[i1]));
  if (src.colorIndices)
    dst.colorIndices->push_back(interpolateFloat(t, (*src.colorIndices)[i0], (*src.colorIndices)[i1]));
  if (src.textureCoords)
    dst.textureCoords->push_back(interpolate(t, (*src.textureCoords)[i0], (*src.textureCoords)[i1]));
  if (src.normals) dst.normals->push_back(interpolate(t, (*src.normals)[i0], (*src.normals)[i1]));
  if (src.ambientDiffuse)
    dst.ambientDiffuse->push_back(interpolate(t, (*src.ambientDiffuse)[i0], (*src.ambientDiffuse)[i1]));
  if (src.specular) dst.specular->push_back(interpolate(t, (*src.specular)[i0], (*src.specular)[i1]));
}

void VertexVector::clipVertexToPlane(VertexVector const& source, std::size_t i0, std::size_t i1,
                                     std::size_t planeIndex, Plane3d const* const* userPlanes) {
  double const t = source.getPlaneFraction(i0, i1, planeIndex, userPlanes);
  clipVertexToFraction(source, i0, i1, t, userPlanes);
}

double VertexVector::getPlaneFraction(std::size_t i0, std::size_t i1, std::size_t planeIndex,
                                      Plane3d const* const* userPlanes) const {
  std::size_t const n = impl_->vertices.size();
  if (i0 >= n || i1 >= n) throwInvalidIndex();
  return calculate_line_t(impl_->vertices[i0], impl_->vertices[i1], planeIndex, userPlanes);
}

// ---- Queries ------------------------------------------------------------------------

std::size_t VertexVector::getSize() const noexcept { return impl_->vertices.size(); }

Outcode VertexVector::getOutcode(std::size_t index) const {
  if (index >= impl_->outcodes.size()) throwInvalidIndex();
  return impl_->outcodes[index];
}

bool VertexVector::getAccept() const noexcept {
  for (Outcode c : impl_->outcodes)
    if (c != 0) return false;
  return true;
}

bool VertexVector::getReject() const noexcept {
  std::vector<Outcode> const& codes = impl_->outcodes;
  if (codes.size() <= 1) return true;
  Outcode common = codes[0];
  for (Outcode c : codes) {
    common = static_cast<Outcode>(common & c);
    if (common == 0) return false;
  }
  return true;
}

namespace {
template <class T>
T const* dataOrNull(std::optional<std::vector<T>> const& slot) noexcept {
  return slot ? slot->data() : nullptr;
}
}  // namespace

Point4d const* VertexVector::getVertices() const noexcept { return impl_->vertices.data(); }
Point3d const* VertexVector::getProjectedVertices() const noexcept {
  return impl_->isProjected ? impl_->projected.data() : nullptr;
}
double const* VertexVector::getInverseWCoords() const noexcept {
  return impl_->isProjected ? impl_->inverseW.data() : nullptr;
}
Color4b const* VertexVector::getRGBAColors() const noexcept { return dataOrNull(impl_->rgbaColors); }
float const* VertexVector::getColorIndices() const noexcept { return dataOrNull(impl_->colorIndices); }
Point2f const* VertexVector::getTextureCoords() const noexcept { return dataOrNull(impl_->textureCoords); }
Point3d const* VertexVector::getNormals() const noexcept { return dataOrNull(impl_->normals); }
Point3f const* VertexVector::getAmbientDiffuseSecondaryColors() const noexcept {
  return dataOrNull(impl_->ambientDiffuse);
}
Point3f const* VertexVector::getSpecularSecondaryColors() const noexcept {
  return dataOrNull(impl_->specular);
}
bool VertexVector::isProjected() const noexcept { return impl_->isProjected; }

// ---- Projection and housekeeping ------------------------------------------------------

void VertexVector::project() {
  std::vector<Point3d> projected;
  std::vector<double> inverseW;
  projected.reserve(impl_->vertices.size());
  inverseW.reserve(impl_->vertices.size());
  for (Point4d const& p : impl_->vertices) {
    double r = 0.0;
    Point3d q = p.project(&r);
    double const w = p.getW();
    // Multiplying by 1/w may round a vertex on the boundary to just beyond 1,
    // and 1/w overflows for a subnormal w; a vertex inside the volume is then
    // divided instead, which keeps it in [-1, 1].
    if (std::fabs(p.getX()) <= w && std::fabs(p.getY()) <= w && std::fabs(p.getZ()) <= w &&
        !(std::fabs(q.getX()) <= 1 && std::fabs(q.getY()) <= 1 && std::fabs(q.getZ()) <= 1)) {
      q = Point3d(p.getX() / w, p.getY() / w, p.getZ() / w);
    }
    projected.push_back(q);
    inverseW.push_back(std::fmin(r, std::numeric_limits<double>::max()));
  }
  impl_->projected.swap(projected);
  impl_->inverseW.swap(inverseW);
  impl_->isProjected = true;
}

void VertexVector::swap(VertexVector& other) noexcept { impl_.swap(other.impl_); }

void VertexVector::clear() noexcept {
  // Reset in place: the moved-from state of every member is valid and empty.
  impl_->vertices.clear();
  impl_->outcodes.clear();
  impl_->dropProjection();
  impl_->forEachAttribute([](auto& slot) { slot.reset(); });
}

void VertexVector::removeVertices() noexcept {
  impl_->vertices.clear();
  impl_->outcodes.clear();
  impl_->dropProjection();
  impl_->forEachAttribute([](auto& slot) {
    if (slot) slot->clear();
  });
}

std::ostream& operator<<(std::ostream& os, VertexVector const& v) {
  os << "VertexVector(" << v.getSize() << " vertices";
  Point4d const* p = v.getVertices();
  for (std::size_t i = 0; i < v.getSize(); ++i)
    os << (i == 0 ? ": " : ", ") << p[i] << " #" << v.getOutcode(i);
  return os << ")";
}

}  // namespace gui_objects
