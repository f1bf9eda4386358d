// Homogeneous clipping of lines, strips and polygons against the view volume
// and user planes, planar projection of vertex sets, and the view frustum.
//
// Raises: vertex_vector::InvalidIndexException, BindingMismatchException and
// AppendException from VertexVector; InvalidWException from projection;
// InvalidFrustumException from ViewFrustum; ParallelException and
// ZeroLengthException from the planar projection of vertex sets. No host
// errors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <memory>
#include <type_traits>
#include <vector>

#include "qvgui/export.h"
#include "qvgui/geometry.h"

namespace gui_objects {

// ---- Outcodes -------------------------------------------------------------------
//
// One "outside" bit per clipping plane:
//
//   index  bit     outside when
//   0      0x001   x < -w
//   1      0x002   x >  w
//   2      0x004   y < -w
//   3      0x008   y >  w
//   4      0x010   z < -w
//   5      0x020   z >  w
//   6..11  0x040.. user plane (index - 6) is present and evaluate(p) <= 0
//
// A point exactly on a canonical boundary (x == w) is inside, a point exactly
// on a user plane is outside. Point4d::outCodeForPlane gives the bit of a
// plane, Point4d::calculateOutcodes the outcode of a point. User planes come
// as an array of six pointers (entries may be null); a plane's positive side
// is the visible side.
using Outcode = std::uint16_t;

inline constexpr std::size_t kCanonicalClipPlanes = 6;
inline constexpr std::size_t kUserClipPlanes = 6;
inline constexpr std::size_t kClipPlanes = kCanonicalClipPlanes + kUserClipPlanes;

// The fraction t along p0 -> p1 at which the segment meets clipping plane
// planeIndex; meaningful only for a plane the two points lie on different
// sides of. For finite points the result is always in [0, 1]: where the
// direct quotient overflows, cancels or leaves [0, 1], t is recomputed from
// the points scaled by a power of two and held in [0, 1]. A null user plane
// (or a null array), and an index of 12 or more, give 0.
[[nodiscard]] QVGUI_API double calculate_line_t(const Point4d& p0, const Point4d& p1, std::size_t planeIndex,
                                                const Plane3d* const* userPlanes);

namespace vertex_vector {
// An index at or beyond the vertex count (or beyond an attribute's values).
class QVGUI_API InvalidIndexException {};
// A vertex appended from a vector whose set of bound attributes differs.
class QVGUI_API BindingMismatchException {};
// An attribute value appended out of step with the vertices.
class QVGUI_API AppendException {};
}  // namespace vertex_vector

// ---- VertexVector ---------------------------------------------------------------
//
// One primitive's vertices in homogeneous clip space with their outcodes and
// optional per-vertex attributes. An attribute is either absent or holds one
// value per vertex. Appending a vertex to an empty vector adopts the source's
// attribute set; appending to a non-empty one requires the same set. Any
// change of the vertices drops the projection made by project().
class QVGUI_API VertexVector {
 public:
  // Allocates nothing until the first vertex or attribute arrives.
  VertexVector() noexcept;
  VertexVector(std::size_t count, const Point4d* vertices, const Plane3d* const* userPlanes);
  // The source's vertices at the given indices, in that order, with outcodes
  // and every bound attribute. InvalidIndexException for an index out of range.
  VertexVector(const VertexVector& source, std::size_t count, const std::size_t* indices);
  VertexVector(const VertexVector& other);
  // Leaves other empty and usable.
  VertexVector(VertexVector&& other) noexcept;
  VertexVector& operator=(const VertexVector& other);
  VertexVector& operator=(VertexVector&& other) noexcept;
  ~VertexVector();

  // Bind an attribute to every vertex, one value per vertex from the array,
  // replacing an earlier binding. A null array with vertices present throws
  // AppendException.
  void addRGBAColors(const Color4b* colors);
  void addColorIndices(const float* indices);
  void addTextureCoords(const Point2f* coords);
  void addNormals(const Point3d* normals);
  void addAmbientDiffuseSecondaryColors(const Point3f* colors);
  void addSpecularSecondaryColors(const Point3f* colors);

  // Supply the attribute value of the latest vertex: accepted only when the
  // attribute holds exactly one value fewer than there are vertices (an absent
  // attribute counts as none, so it can be started on the first vertex only);
  // otherwise AppendException.
  void addRGBAColor(const Color4b& color);
  void addColorIndex(float index);
  void addTextureCoord(const Point2f& coord);
  void addNormal(const Point3d& normal);
  void addAmbientDiffuseSecondaryColor(const Point3f& color);
  void addSpecularSecondaryColor(const Point3f& color);

  // Appends one vertex with its outcode computed from userPlanes; attributes
  // follow through the single-value appends above.
  void addVertex(const Point4d& vertex, const Plane3d* const* userPlanes);
  // Appends the source's vertex, outcode and attribute values.
  void addVertex(const VertexVector& source, std::size_t index);
  // Appends the point at fraction t from source vertex i0 towards i1, every
  // attribute interpolated at the same t, the outcode recomputed.
  void clipVertexToFraction(const VertexVector& source, std::size_t i0, std::size_t i1, double t,
                            const Plane3d* const* userPlanes);
  void clipVertexToPlane(const VertexVector& source, std::size_t i0, std::size_t i1, std::size_t planeIndex,
                         const Plane3d* const* userPlanes);
  [[nodiscard]] double getPlaneFraction(std::size_t i0, std::size_t i1, std::size_t planeIndex,
                                        const Plane3d* const* userPlanes) const;

  [[nodiscard]] std::size_t getSize() const noexcept;
  [[nodiscard]] Outcode getOutcode(std::size_t index) const;
  // True when empty or every outcode is 0.
  [[nodiscard]] bool getAccept() const noexcept;
  // True when empty, when a single vertex (it never forms a visible primitive),
  // or when every vertex is outside one common plane.
  [[nodiscard]] bool getReject() const noexcept;

  // Array views; null for an absent attribute, and for the projected arrays
  // before project().
  [[nodiscard]] const Point4d* getVertices() const noexcept;
  [[nodiscard]] const Point3d* getProjectedVertices() const noexcept;
  [[nodiscard]] const double* getInverseWCoords() const noexcept;
  [[nodiscard]] const Color4b* getRGBAColors() const noexcept;
  [[nodiscard]] const float* getColorIndices() const noexcept;
  [[nodiscard]] const Point2f* getTextureCoords() const noexcept;
  [[nodiscard]] const Point3d* getNormals() const noexcept;
  [[nodiscard]] const Point3f* getAmbientDiffuseSecondaryColors() const noexcept;
  [[nodiscard]] const Point3f* getSpecularSecondaryColors() const noexcept;
  [[nodiscard]] bool isProjected() const noexcept;

  // Divides every vertex by its w, keeping 1/w per vertex (at most DBL_MAX).
  // A vertex inside the canonical volume projects into [-1, 1] even where
  // multiplying by 1/w would round beyond it. InvalidWException (and nothing
  // changed) when a vertex has w <= 0.
  void project();

  void swap(VertexVector& other) noexcept;
  // Removes the vertices and every attribute binding.
  void clear() noexcept;
  // Removes the vertices but keeps the attribute bindings, now empty.
  void removeVertices() noexcept;

  struct Impl;

 private:
  [[nodiscard]] const Impl& read() const noexcept;
  Impl& own();

  std::unique_ptr<Impl> impl_;  // null until needed; reads as empty
};

// std::vector<VertexVector> moves rather than copies its elements on growth
// only while these hold.
static_assert(std::is_nothrow_default_constructible_v<VertexVector>);
static_assert(std::is_nothrow_move_constructible_v<VertexVector>);
static_assert(std::is_nothrow_move_assignable_v<VertexVector>);

QVGUI_API std::ostream& operator<<(std::ostream& os, const VertexVector& v);

// Clipped output is what a rasteriser consumes, so from finite input it holds
// no NaN and no infinity, and every projected coordinate lies in [-1, 1]:
// crossings are computed so that they cannot overflow, and a vertex that
// rounding leaves just outside the volume is moved onto its boundary. A vertex
// with a NaN or infinite coordinate is never visible and neither is any part
// of a primitive that has it as an end: a polygon with one is empty, a line
// with one is empty, and a line strip is broken there (the segments on both
// sides of it are dropped).
//
// The visible part of a polygon (Sutherland-Hodgman over the twelve planes),
// projected; empty when less than a triangle remains.
[[nodiscard]] QVGUI_API VertexVector clip_polygon(VertexVector& polygon, const Plane3d* const* userPlanes);
// The visible part of the line through vertices 0 and 1 (further vertices are
// ignored), projected; both ends are re-interpolated. Empty when invisible.
[[nodiscard]] QVGUI_API VertexVector clip_line(VertexVector& line, const Plane3d* const* userPlanes);
// The visible parts of a line strip as runs of at least two projected
// vertices. Consecutive segments share a run when the vertex between them is
// inside the view volume; a run is broken wherever the strip leaves it.
[[nodiscard]] QVGUI_API std::vector<VertexVector> clip_linestrip(VertexVector& strip,
                                                                 const Plane3d* const* userPlanes);

// ---- Planar projection of vertex sets ----------------------------------------------

// The caller's vertices, reached by index.
class QVGUI_API VertexSet {
 public:
  virtual ~VertexSet();
  [[nodiscard]] virtual Point3d getVertex(std::size_t index) const = 0;
  [[nodiscard]] virtual std::size_t getNumVertices() const = 0;

 protected:
  VertexSet() = default;
  VertexSet(const VertexSet&) = default;
  VertexSet& operator=(const VertexSet&) = default;
};

// A 2-D coordinate system laid into a plane: orthonormal axes u, v with
// (u, v, normal) right-handed, origin at the plane's point nearest (0, 0, 0).
class QVGUI_API Projector {
 public:
  Projector();
  Projector(const Projector& other);
  Projector& operator=(const Projector& other);
  ~Projector();

  // Never throws: a plane whose normal cannot be normalised (zero, or not
  // finite) is stored but the previous axes and origin stay.
  void setProjection(const Plane3d& plane) noexcept;

  [[nodiscard]] Point2d project(const Point3d& p) const noexcept;
  [[nodiscard]] Point3d unproject(const Point2d& q) const noexcept;

  [[nodiscard]] Vector3d getUAxis() const noexcept;
  [[nodiscard]] Vector3d getVAxis() const noexcept;
  [[nodiscard]] Point3d getOrigin() const noexcept;
  [[nodiscard]] Plane3d getPlane() const noexcept;

  struct Impl;

 private:
  [[nodiscard]] const Impl& read() const noexcept;
  Impl& own();

  std::unique_ptr<Impl> impl_;  // null until needed; reads as empty
};

// A face's vertices mapped into a projector's plane with a reverse lookup from
// exact 2-D positions back to vertex indices. The vertex set is borrowed and
// must outlive this object.
class QVGUI_API ProjectedVertexSet {
 public:
  // What findVert returns for a position never added.
  static constexpr std::size_t kNotFound = 2147483647;

  ProjectedVertexSet(const VertexSet& vertices, const Projector& projector);
  ProjectedVertexSet(const ProjectedVertexSet& other);
  ProjectedVertexSet& operator=(const ProjectedVertexSet& other);
  ~ProjectedVertexSet();

  // Projects the vertex and records it under its 2-D position unless that
  // exact position is taken already (the first index wins).
  Point2d addVertex(std::size_t index);
  // The index stored under exactly q (no tolerance), or kNotFound.
  [[nodiscard]] std::size_t findVert(const Point2d& q) const;

  struct Impl;

 private:
  [[nodiscard]] const Impl& read() const noexcept;
  Impl& own();

  std::unique_ptr<Impl> impl_;  // null until needed; reads as empty
};

// ---- View frustum ---------------------------------------------------------------------
//
// The region a camera sees, as six inward-facing planes in world coordinates
// (the positive side of each is inside), in the order of the canonical clip
// planes: left, right, bottom, top, near, far.
//
// Conventions: the camera sits at the eye and looks at the target; "up" need
// not be perpendicular to the view direction, it only fixes the roll. The view
// angle is the full vertical field of view in degrees, strictly between 0 and
// 180; the orthographic extent is the full height of the view volume in world
// units; aspect is width / height. Near and far are distances along the view
// direction from the eye; near must be positive for a perspective view and
// below far in both. Degenerate or non-finite input throws
// InvalidFrustumException.
//
// getProjectionMatrix() * getViewMatrix() (the view applied first, to column
// vectors) maps exactly this region to the canonical volume -w <= x, y, z <= w (the createFrustum /
// createOrtho conventions), so world points inside the frustum clip to outcode 0.
class QVGUI_API ViewFrustum {
 public:
  enum class Kind : std::int32_t { Perspective = 0, Orthographic = 1 };
  enum PlaneIndex : std::size_t { Left = 0, Right = 1, Bottom = 2, Top = 3, Near = 4, Far = 5 };

  [[nodiscard]] static ViewFrustum perspective(const Point3d& eye, const Point3d& target, const Vector3d& up,
                                               double viewAngleDegrees, double aspect, double nearDistance,
                                               double farDistance);
  [[nodiscard]] static ViewFrustum orthographic(const Point3d& eye, const Point3d& target, const Vector3d& up,
                                                double extent, double aspect, double nearDistance,
                                                double farDistance);

  [[nodiscard]] Kind getKind() const noexcept { return kind_; }
  [[nodiscard]] const Plane3d& getPlane(PlaneIndex index) const noexcept { return planes_[index]; }
  // The six planes in PlaneIndex order.
  [[nodiscard]] const Plane3d* getPlanes() const noexcept { return planes_; }

  // Closed test: true when p is on the inner side of, or on, all six planes.
  [[nodiscard]] bool isInside(const Point3d& p) const noexcept;

  [[nodiscard]] Point3d getEye() const noexcept { return eye_; }
  // Unit camera axes: forward (towards the target), right and true up.
  [[nodiscard]] Vector3d getForward() const noexcept { return forward_; }
  [[nodiscard]] Vector3d getRight() const noexcept { return right_; }
  [[nodiscard]] Vector3d getUp() const noexcept { return up_; }
  [[nodiscard]] double getNear() const noexcept { return near_; }
  [[nodiscard]] double getFar() const noexcept { return far_; }
  // Half the width and height of the view: for a perspective view at unit
  // distance from the eye (tangents), for an orthographic one in world units.
  [[nodiscard]] double getHalfWidth() const noexcept { return halfWidth_; }
  [[nodiscard]] double getHalfHeight() const noexcept { return halfHeight_; }

  // World to eye coordinates (eye at the origin looking down -z).
  [[nodiscard]] Matrix4x4d getViewMatrix() const;
  // Eye to homogeneous clip coordinates.
  [[nodiscard]] Matrix4x4d getProjectionMatrix() const;

 private:
  ViewFrustum() = default;
  // Camera axes, depth range and half extents: all but the planes.
  static ViewFrustum framed(Kind kind, const Point3d& eye, const Point3d& target, const Vector3d& up,
                            double nearDistance, double farDistance, double halfHeight, double aspect);

  Kind kind_ = Kind::Perspective;
  Point3d eye_;
  Vector3d forward_, right_, up_;
  double near_ = 0.0, far_ = 0.0, halfWidth_ = 0.0, halfHeight_ = 0.0;
  Plane3d planes_[6];
};

QVGUI_API std::ostream& operator<<(std::ostream& os, const ViewFrustum& f);

}  // namespace gui_objects
