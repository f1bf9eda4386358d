// VertexVector: a primitive's clip-space vertices with outcodes and optional
// per-vertex attributes, appended, interpolated and projected as a unit.
#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>
#include <utility>

#include "clipping/vertex_vector_p.h"

namespace gui_objects {

namespace detail {
void throwInvalidIndex() { throw vertex_vector::InvalidIndexException(); }
void throwBindingMismatch() { throw vertex_vector::BindingMismatchException(); }
void throwAppend() { throw vertex_vector::AppendException(); }

Point4d interpolateFinite(double t, const Point4d& a, const Point4d& b) noexcept {
  const Point4d p = interpolate(t, a, b);
  if (std::isfinite(p.getX()) && std::isfinite(p.getY()) && std::isfinite(p.getZ()) &&
      std::isfinite(p.getW()))
    return p;
  // b - a overflowed between two finite coordinates of opposite signs; the
  // weighted sum cannot overflow by more than rounding.
  const auto blend = [t](double u, double v) {
    double const c = (1 - t) * u + t * v;
    return std::fmax(-std::numeric_limits<double>::max(), std::fmin(c, std::numeric_limits<double>::max()));
  };
  const auto pick = [&](double c, double u, double v) { return std::isfinite(c) ? c : blend(u, v); };
  return Point4d(pick(p.getX(), a.getX(), b.getX()), pick(p.getY(), a.getY(), b.getY()),
                 pick(p.getZ(), a.getZ(), b.getZ()), pick(p.getW(), a.getW(), b.getW()));
}

bool finiteVertex(const VertexVector& v, std::size_t i) noexcept {
  const Point4d& p = v.getVertices()[i];
  return std::isfinite(p.getX()) && std::isfinite(p.getY()) && std::isfinite(p.getZ()) &&
         std::isfinite(p.getW());
}

bool allFinite(const VertexVector& v) noexcept {
  for (std::size_t i = 0; i < v.getSize(); ++i) {
    if (!finiteVertex(v, i)) return false;
  }
  return true;
}

void settleIntoVolume(VertexVector& v, const Plane3d* const* userPlanes) {
  std::size_t const n = v.getSize();
  const Point4d* const vertices = v.getVertices();
  // Only a w >= 0 has a volume to settle into; a vertex with w < 0 fails the
  // projection that follows anyway.
  const auto outside = [](const Point4d& p) {
    double const w = p.getW();
    return w >= 0 && !(std::fabs(p.getX()) <= w && std::fabs(p.getY()) <= w && std::fabs(p.getZ()) <= w);
  };
  std::size_t i = 0;
  while (i < n && !outside(vertices[i])) ++i;
  if (i == n) return;
  std::vector<Point4d> settled(vertices, vertices + n);
  for (Point4d& p : settled) {
    if (!outside(p)) continue;
    const double w = p.getW();
    p = Point4d(std::clamp(p.getX(), -w, w), std::clamp(p.getY(), -w, w), std::clamp(p.getZ(), -w, w), w);
  }
  VertexVector out(n, settled.data(), userPlanes);
  if (const Color4b* c = v.getRGBAColors()) out.addRGBAColors(c);
  if (const float* c = v.getColorIndices()) out.addColorIndices(c);
  if (const Point2f* c = v.getTextureCoords()) out.addTextureCoords(c);
  if (const Point3d* c = v.getNormals()) out.addNormals(c);
  if (const Point3f* c = v.getAmbientDiffuseSecondaryColors()) out.addAmbientDiffuseSecondaryColors(c);
  if (const Point3f* c = v.getSpecularSecondaryColors()) out.addSpecularSecondaryColors(c);
  v.swap(out);
}

}  // namespace detail

using detail::throwAppend;
using detail::throwBindingMismatch;
using detail::throwInvalidIndex;

namespace {

// A float attribute interpolated like the float points: the difference in
// float, scaled and added in double, narrowed at the end.
float interpolateFloat(double t, float a, float b) {
  const float d = b - a;
  return static_cast<float>(static_cast<double>(a) + static_cast<double>(d) * t);
}

template <class T>
void bindAll(std::optional<std::vector<T>>& slot, const T* values, std::size_t count) {
  if (values == nullptr && count > 0) throwAppend();
  std::vector<T> copy;
  if (count > 0) copy.assign(values, values + count);
  slot = std::move(copy);
}

template <class T>
void appendOne(std::optional<std::vector<T>>& slot, std::size_t vertexCount, const T& value) {
  const std::size_t have = slot ? slot->size() : 0;
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

bool sameBinding(const VertexVector::Impl& a, const VertexVector::Impl& b) {
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
void prepareAppend(VertexVector::Impl& dst, const VertexVector::Impl& src, std::size_t index,
                   std::size_t index2) {
  const std::size_t n = src.vertices.size();
  if (index >= n || index2 >= n) throwInvalidIndex();
  auto checkValues = [&](const auto& slot) {
    if (slot && (index >= slot->size() || index2 >= slot->size())) throwInvalidIndex();
  };
  src.forEachAttribute(checkValues);
  if (dst.vertices.empty()) {
    if (!sameBinding(dst, src)) {
      dst.forEachAttribute(src, [](auto& mine, const auto& theirs) {
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
    const std::size_t have = dst.vertices.size();
    bool inStep = true;
    dst.forEachAttribute([&](const auto& slot) {
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

VertexVector::VertexVector() noexcept = default;

VertexVector::VertexVector(std::size_t count, const Point4d* vertices, const Plane3d* const* userPlanes) {
  if (vertices == nullptr && count > 0) throwAppend();
  own().vertices.assign(vertices, vertices + count);
  own().outcodes.reserve(count);
  for (const Point4d& p : own().vertices) own().outcodes.push_back(p.calculateOutcodes(userPlanes));
}

VertexVector::VertexVector(const VertexVector& source, std::size_t count, const std::size_t* indices) {
  if (indices == nullptr && count > 0) throwInvalidIndex();
  for (std::size_t k = 0; k < count; ++k) addVertex(source, indices[k]);
  // An empty selection still carries the source's attribute set.
  if (count == 0) {
    own().forEachAttribute(source.read(), [](auto& mine, const auto& theirs) {
      if (theirs) mine.emplace();
    });
  }
}

VertexVector::VertexVector(const VertexVector& other)
    : impl_(other.impl_ ? std::make_unique<Impl>(*other.impl_) : nullptr) {}

// The moved-from vector is left empty and usable: no state reads as empty.
VertexVector::VertexVector(VertexVector&& other) noexcept : impl_(std::move(other.impl_)) {}

VertexVector& VertexVector::operator=(const VertexVector& other) {
  if (this != &other) {
    auto copy = other.impl_ ? std::make_unique<Impl>(*other.impl_) : nullptr;
    impl_.swap(copy);
  }
  return *this;
}

VertexVector& VertexVector::operator=(VertexVector&& other) noexcept {
  impl_.swap(other.impl_);
  return *this;
}

VertexVector::~VertexVector() = default;

// A vector that never held anything has no state; it reads as this one.
const VertexVector::Impl& VertexVector::read() const noexcept {
  static const Impl empty;
  return impl_ ? *impl_ : empty;
}

VertexVector::Impl& VertexVector::own() {
  if (!impl_) impl_ = std::make_unique<Impl>();
  return *impl_;
}

// ---- Attributes -----------------------------------------------------------------

void VertexVector::addRGBAColors(const Color4b* colors) { bindAll(own().rgbaColors, colors, getSize()); }
void VertexVector::addColorIndices(const float* indices) { bindAll(own().colorIndices, indices, getSize()); }
void VertexVector::addTextureCoords(const Point2f* coords) {
  bindAll(own().textureCoords, coords, getSize());
}
void VertexVector::addNormals(const Point3d* normals) { bindAll(own().normals, normals, getSize()); }
void VertexVector::addAmbientDiffuseSecondaryColors(const Point3f* colors) {
  bindAll(own().ambientDiffuse, colors, getSize());
}
void VertexVector::addSpecularSecondaryColors(const Point3f* colors) {
  bindAll(own().specular, colors, getSize());
}

void VertexVector::addRGBAColor(const Color4b& color) { appendOne(own().rgbaColors, getSize(), color); }
void VertexVector::addColorIndex(float index) { appendOne(own().colorIndices, getSize(), index); }
void VertexVector::addTextureCoord(const Point2f& coord) { appendOne(own().textureCoords, getSize(), coord); }
void VertexVector::addNormal(const Point3d& normal) { appendOne(own().normals, getSize(), normal); }
void VertexVector::addAmbientDiffuseSecondaryColor(const Point3f& color) {
  appendOne(own().ambientDiffuse, getSize(), color);
}
void VertexVector::addSpecularSecondaryColor(const Point3f& color) {
  appendOne(own().specular, getSize(), color);
}

// ---- Appending vertices -----------------------------------------------------------

void VertexVector::addVertex(const Point4d& vertex, const Plane3d* const* userPlanes) {
  const Outcode code = vertex.calculateOutcodes(userPlanes);
  makeRoom(own().vertices);
  makeRoom(own().outcodes);
  own().dropProjection();
  own().vertices.push_back(vertex);
  own().outcodes.push_back(code);
}

void VertexVector::addVertex(const VertexVector& source, std::size_t index) {
  // A vector appended to itself must read from a stable copy.
  if (&source == this) {
    const VertexVector copy(source);
    addVertex(copy, index);
    return;
  }
  const Impl& src = source.read();
  Impl& dst = own();
  prepareAppend(dst, src, index, index);
  dst.dropProjection();
  dst.vertices.push_back(src.vertices[index]);
  dst.outcodes.push_back(src.outcodes[index]);
  dst.forEachAttribute(src, [&](auto& mine, const auto& theirs) {
    if (theirs) mine->push_back((*theirs)[index]);
  });
}

void VertexVector::clipVertexToFraction(const VertexVector& source, std::size_t i0, std::size_t i1, double t,
                                        const Plane3d* const* userPlanes) {
  if (&source == this) {
    const VertexVector copy(source);
    clipVertexToFraction(copy, i0, i1, t, userPlanes);
    return;
  }
  const Impl& src = source.read();
  Impl& dst = own();
  prepareAppend(dst, src, i0, i1);
  const Point4d p = detail::interpolateFinite(t, src.vertices[i0], src.vertices[i1]);
  const Outcode code = p.calculateOutcodes(userPlanes);
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

void VertexVector::clipVertexToPlane(const VertexVector& source, std::size_t i0, std::size_t i1,
                                     std::size_t planeIndex, const Plane3d* const* userPlanes) {
  const double t = source.getPlaneFraction(i0, i1, planeIndex, userPlanes);
  clipVertexToFraction(source, i0, i1, t, userPlanes);
}

double VertexVector::getPlaneFraction(std::size_t i0, std::size_t i1, std::size_t planeIndex,
                                      const Plane3d* const* userPlanes) const {
  const std::size_t n = read().vertices.size();
  if (i0 >= n || i1 >= n) throwInvalidIndex();
  return calculate_line_t(read().vertices[i0], read().vertices[i1], planeIndex, userPlanes);
}

// ---- Queries ------------------------------------------------------------------------

std::size_t VertexVector::getSize() const noexcept { return read().vertices.size(); }

Outcode VertexVector::getOutcode(std::size_t index) const {
  if (index >= read().outcodes.size()) throwInvalidIndex();
  return read().outcodes[index];
}

bool VertexVector::getAccept() const noexcept {
  for (Outcode c : read().outcodes)
    if (c != 0) return false;
  return true;
}

bool VertexVector::getReject() const noexcept {
  const std::vector<Outcode>& codes = read().outcodes;
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
const T* dataOrNull(const std::optional<std::vector<T>>& slot) noexcept {
  return slot ? slot->data() : nullptr;
}
}  // namespace

const Point4d* VertexVector::getVertices() const noexcept { return read().vertices.data(); }
const Point3d* VertexVector::getProjectedVertices() const noexcept {
  return read().isProjected ? read().projected.data() : nullptr;
}
const double* VertexVector::getInverseWCoords() const noexcept {
  return read().isProjected ? read().inverseW.data() : nullptr;
}
const Color4b* VertexVector::getRGBAColors() const noexcept { return dataOrNull(read().rgbaColors); }
const float* VertexVector::getColorIndices() const noexcept { return dataOrNull(read().colorIndices); }
const Point2f* VertexVector::getTextureCoords() const noexcept { return dataOrNull(read().textureCoords); }
const Point3d* VertexVector::getNormals() const noexcept { return dataOrNull(read().normals); }
const Point3f* VertexVector::getAmbientDiffuseSecondaryColors() const noexcept {
  return dataOrNull(read().ambientDiffuse);
}
const Point3f* VertexVector::getSpecularSecondaryColors() const noexcept {
  return dataOrNull(read().specular);
}
bool VertexVector::isProjected() const noexcept { return read().isProjected; }

// ---- Projection and housekeeping ------------------------------------------------------

void VertexVector::project() {
  std::vector<Point3d> projected;
  std::vector<double> inverseW;
  projected.reserve(own().vertices.size());
  inverseW.reserve(own().vertices.size());
  for (const Point4d& p : own().vertices) {
    double r = 0.0;
    Point3d q = p.project(&r);
    const double w = p.getW();
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
  own().projected.swap(projected);
  own().inverseW.swap(inverseW);
  own().isProjected = true;
}

void VertexVector::swap(VertexVector& other) noexcept { impl_.swap(other.impl_); }

void VertexVector::clear() noexcept {
  if (!impl_) return;
  // Reset in place, so the storage serves the next primitive.
  impl_->vertices.clear();
  impl_->outcodes.clear();
  impl_->dropProjection();
  impl_->forEachAttribute([](auto& slot) { slot.reset(); });
}

void VertexVector::removeVertices() noexcept {
  if (!impl_) return;
  impl_->vertices.clear();
  impl_->outcodes.clear();
  impl_->dropProjection();
  impl_->forEachAttribute([](auto& slot) {
    if (slot) slot->clear();
  });
}

std::ostream& operator<<(std::ostream& os, const VertexVector& v) {
  os << "VertexVector(" << v.getSize() << " vertices";
  const Point4d* p = v.getVertices();
  for (std::size_t i = 0; i < v.getSize(); ++i)
    os << (i == 0 ? ": " : ", ") << p[i] << " #" << v.getOutcode(i);
  return os << ")";
}

}  // namespace gui_objects
