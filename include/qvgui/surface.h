// Surface computations: contour tracing over gridded data, lighting normals of
// face-vertex patches, and conversions between grid and face-vertex data.
//
// Raises: InvalidDataException, invalidXYZTypeException and
// invalidCDataTypeException for unusable data; HostError with the host's
// out-of-memory identifier; the warning
// "Tavrix::gui::surface::PatchFacesElementExceedsVerticesLength" (the face is
// skipped). Contour tracing stops quietly on a user's interrupt.
#pragma once

#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "qvgui/dataspace.h"
#include "qvgui/export.h"
#include "qvgui/geometry.h"
#include "qvgui/host.h"

namespace gui_objects {

// ---- Contour result ----------------------------------------------------------
//
// Accumulates traced lines in the classic two-row contour matrix. Each line is
// a header column followed by one column per point:
//
//   | level  x1 x2 ... xn  level  x1 ... |
//   | n      y1 y2 ... yn  m      y1 ... |
//
// Storage is reserved in whole blocks of 256 doubles and at least doubles when
// it has to grow, so a long series of appends costs linear time in all.
class QVGUI_API ContourResult {
 public:
  // Holds an empty 2 x 0 double matrix.
  ContourResult();
  // Destroys a matrix that was not released.
  ~ContourResult();
  ContourResult(const ContourResult&) = delete;
  ContourResult& operator=(const ContourResult&) = delete;
  // The matrix moves along; the source is left as after release().
  ContourResult(ContourResult&& other) noexcept : matrix_(other.matrix_), capacity_(other.capacity_) {
    other.matrix_ = nullptr;
    other.capacity_ = 0;
  }
  ContourResult& operator=(ContourResult&& other) noexcept {
    if (this != &other) {
      ContourResult dropped(std::move(*this));
      matrix_ = other.matrix_;
      capacity_ = other.capacity_;
      other.matrix_ = nullptr;
      other.capacity_ = 0;
    }
    return *this;
  }

  // Appends one line; does nothing after release() or when count <= 0.
  void append(double level, int count, const Real_point* points);
  // Hands the matrix to the caller (who destroys it) and keeps nothing.
  [[nodiscard]] zrArray_tag* release() noexcept;
  // True without a matrix, without two rows, without columns, or when no
  // header column holds a nonzero point count.
  [[nodiscard]] bool isEmpty() const;

 private:
  zrArray_tag* matrix_;
  std::size_t capacity_;  // doubles reserved in the matrix storage
};

// Results travel by value (out of functions, into containers) without a copy.
static_assert(std::is_nothrow_move_constructible_v<ContourResult>);
static_assert(std::is_nothrow_move_assignable_v<ContourResult>);

// ---- Contour engine -----------------------------------------------------------
//
// Traces iso-lines of z over a rows x columns grid. z is column-major
// (z[j*rows + i] is row i, column j); x has one entry per column; row i uses
// y[rows - 1 - i], so rows run in reverse order of the y array.
//
// Box (i, j) has corners (i, j), (i+1, j), (i, j+1), (i+1, j+1) and sides
//
//             side 3
//      (i,j) -------- (i,j+1)
//        |               |
//   side 0               side 2
//        |               |
//    (i+1,j) -------- (i+1,j+1)
//             side 1
//
// Each grid edge has one used flag shared by the two boxes beside it, kept in
// one byte per grid point:
//   sides 1, 3 (edges along j): bit 1 of byte rows*j + i   (+1 for side 1)
//   sides 0, 2 (edges along i): bit 2 of byte (rows-1)*j + i (+(rows-1) for side 2)
//
// Numeric rules: an edge is crossed when its corners straddle the level with
// the low end open (b < L <= a), except that a level equal to zmin also takes
// edges whose lower corner equals it. NaN corners are holes: lines stop at them
// and start beside them. Infinite corners count as +-DBL_MAX. Saddle boxes are
// resolved by the average of their four corners.
//
// An interrupt pending in the host stops the tracing quietly; lines already
// appended stay in the result. The engine polls before every start that could
// produce a line and at every step of a line.
class QVGUI_API ContourEngine {
 public:
  // Allocates rows*columns zeroed flag bytes (host checked allocation). A
  // negative dimension counts as 0.
  ContourEngine(int rows, int columns);
  ~ContourEngine();
  ContourEngine(const ContourEngine&) = delete;
  ContourEngine& operator=(const ContourEngine&) = delete;

  // Borrows the three arrays; the caller keeps them alive while tracing.
  void setXYZPtrsAndZMinMax(const double* x, const double* y, const double* z, double zmin,
                            double zmax) noexcept;
  // The same with the arrays' lengths, checked against the grid: x needs
  // `columns` values, y `rows` and z rows * columns (longer arrays are fine,
  // their tails unused; an empty grid needs none). A shorter or null array
  // raises the host error Tavrix::gui::surface::ContourArraySizeMismatch
  // naming it, and the engine keeps the arrays it had.
  void setXYZAndZMinMax(const double* x, std::size_t xCount, const double* y, std::size_t yCount,
                        const double* z, std::size_t zCount, double zmin, double zmax);
  // A zeroed workspace of that many points (negative counts as 0); it doubles
  // whenever a line fills it.
  void allocWorkSpace(int points);
  // Traces every level in order; repeated consecutive levels are traced once,
  // levels outside [zmin, zmax] add nothing. Does nothing until the arrays and
  // the workspace are set.
  void plotContours(const double* levels, int count, ContourResult& result);

 private:
  void clearFlags() noexcept;
  [[nodiscard]] unsigned char* get_pflag() const noexcept;
  [[nodiscard]] unsigned char getMask() const noexcept;
  [[nodiscard]] bool get_used_flag() const noexcept;
  void set_used_flag() noexcept;
  [[nodiscard]] int next_box() noexcept;
  [[nodiscard]] static constexpr int nextSide(int side) noexcept { return (side + 1) & 3; }
  [[nodiscard]] int cont_intercept(Real_point* point) const noexcept;
  [[nodiscard]] int cont_ambig(Real_point* point) noexcept;
  [[nodiscard]] bool cont_start(Real_point* buffer);
  [[nodiscard]] bool findLines(double level, ContourResult& result, const std::size_t* holes,
                               std::size_t holeCount);
  [[nodiscard]] bool tryStart(int i, int j, int side, ContourResult& result);
  void growWorkSpace();

  const double* z_;
  const double* x_;
  const double* yEnd_;
  unsigned char* flags_;
  std::uint32_t flagCount_;
  double level_;
  int pointCount_;
  int capacity_;
  int side_;
  int i_;
  int j_;
  int rows_;
  int columns_;
  Real_point* workspace_;
  double zmin_;
  double zmax_;
};

// ---- Patches in face-vertex form ------------------------------------------------
//
// Vertices are an nv x 2 or nv x 3 double matrix (x, y[, z] per row); faces an
// nf x maxv double matrix of 1-based vertex numbers, NaN ending a face early.
// Element (r, c) of an R-row matrix is at r + c*R.

// Implemented by the host's patch object. Slot order is part of the contract.
class QVGUI_API PatchProxy {
 public:
  virtual ~PatchProxy();
  [[nodiscard]] virtual const zrArray_tag* getFaces() = 0;
  [[nodiscard]] virtual const zrArray_tag* getVertices() = 0;
  // Stores a copy of the given nv x 3 matrix.
  virtual void setVertexNormals(zrArray_tag* normals) = 0;
  // The stored vertex normals, written in place.
  [[nodiscard]] virtual zrArray_tag* getVertexNormals() = 0;
  // Stores a copy of the given nf x 3 matrix.
  virtual void setFaceNormals(zrArray_tag* normals) = 0;
  // The stored face normals, written in place; may be null.
  [[nodiscard]] virtual zrArray_tag* getFaceNormals() = 0;
  // A state that storing normals may change; computePatchNormals restores it.
  [[nodiscard]] virtual std::int32_t getNormalsMode() = 0;
  virtual void setNormalsMode(std::int32_t mode) = 0;

 protected:
  PatchProxy() = default;
  PatchProxy(const PatchProxy&) = default;
  PatchProxy& operator=(const PatchProxy&) = default;
};

// How many leading entries of face `face` (0-based) are usable vertex numbers.
// NaN ends the face quietly; an entry below 1 or above vertexCount (infinities
// included) raises the host warning
// "Tavrix::gui::surface::PatchFacesElementExceedsVerticesLength" and rejects
// the whole face (0).
[[nodiscard]] QVGUI_API std::size_t howManyPatchVerticesAreOk(std::size_t face, std::size_t faceCount,
                                                              std::size_t maxVertices, const double* faces,
                                                              std::size_t vertexCount);

// Recomputes the proxy's vertex and face normals. Faces are fan-triangulated
// from their first vertex; triangle normals are (V[cur]-V[i0]) x (V[prev]-V[i0]),
// not normalised, so larger triangles weigh more. A face normal is that of the
// face's last non-degenerate triangle; a vertex normal is the mean of the
// triangle normals it received, NaN when it received none. Faces with fewer
// than three usable entries or a non-finite vertex are skipped.
QVGUI_API void computePatchNormals(PatchProxy& proxy);

// Data extents of the vertices that faces reference.
class QVGUI_API FaceVertexExtents {
 public:
  // Minimums and smallest positives start at DBL_MAX, maximums and largest
  // negatives at -DBL_MAX.
  FaceVertexExtents() noexcept;

  // axis: 0 x, 1 y, 2 z; index 0 minimum, 1 maximum.
  [[nodiscard]] double getLimit(tickpicker::AxisType axis,
                                tickpicker::OuterLimitIndices index) const noexcept;
  // axis: 0 x, 1 y, 2 z; index 0 largest negative, 1 smallest positive.
  [[nodiscard]] double getInnerLimit(tickpicker::AxisType axis,
                                     tickpicker::InnerLimitIndices index) const noexcept;
  // Both z limits are exactly 0 (two-column vertices, or a flat patch at z = 0).
  [[nodiscard]] bool hasZeroZ() const noexcept;

  // Storage order: xmin xmax ymin ymax zmin zmax, then x largest negative,
  // x smallest positive, y ..., z ... .
  double values[12];
};

// Throws InvalidDataException for a missing matrix or an entry that is not a
// vertex number; each face ends at its first non-finite entry. Vertices with
// a non-finite coordinate are ignored.
[[nodiscard]] QVGUI_API FaceVertexExtents computeFaceVertexExtents(const zrArray_tag* faces,
                                                                   const zrArray_tag* vertices);

// A new maxv x nf double matrix whose column f holds coordinate `coordinate`
// (0 x, 1 y, 2 z) of face f's vertices; a face ending early (NaN or a number
// above nv) is padded with its last copied value (0 when none). Null when an
// argument is null or the vertices have no such column. Entries below 1 are
// not checked: validate faces with howManyPatchVerticesAreOk first.
[[nodiscard]] QVGUI_API zrArray_tag* convert_FaceVertex_to_XYZ(const zrArray_tag* faces,
                                                               const zrArray_tag* vertices,
                                                               std::size_t coordinate);

// ---- Grid data as faces and vertices -----------------------------------------------
//
// A rows x columns grid becomes rows*columns vertices and (rows-1)*(columns-1)
// quadrilateral faces. Grid point (i, j) is vertex i + j*rows (0-based); the
// face of grid cell (i, j) is row i + j*(rows-1) of the face matrix and lists
// the 1-based vertices of (i, j), (i+1, j), (i+1, j+1), (i, j+1).
//
// The descriptor is a plain record: copies share the arrays, and the caller
// destroys them once (destroyFaceVertexDescriptor).
struct QVGUI_API FaceVertexDescriptor {
  zrArray_tag* faces = nullptr;      // nf x 4 double matrix of 1-based vertex numbers
  zrArray_tag* vertices = nullptr;   // nv x 3 double matrix, filled per coordinate
  std::uint64_t rows = 0;            // grid rows
  std::uint64_t columns = 0;         // grid columns
  std::uint64_t coordinatesSet = 0;  // bit c set once coordinate c was written
};

// A descriptor for a rows x columns grid: the face matrix filled, the vertex
// matrix zeroed.
[[nodiscard]] QVGUI_API FaceVertexDescriptor createFaceVertexDescriptor(std::size_t rows,
                                                                        std::size_t columns);
// Destroys both arrays and resets the descriptor to its default.
QVGUI_API void destroyFaceVertexDescriptor(FaceVertexDescriptor& descriptor) noexcept;

// Writes coordinate `coordinate` (0 x, 1 y, 2 z) of every vertex from grid
// data of any numeric class, read as double. The data is either a rows x
// columns matrix or, for x, a vector of `columns` values (one per column) and,
// for y, a vector of `rows` values (one per row). False when coordinate > 2,
// the descriptor has no arrays, data is null, or the shapes do not fit.
// Non-numeric data throws invalidXYZTypeException.
[[nodiscard]] QVGUI_API bool convert_XYZ_to_FaceVertex(FaceVertexDescriptor& descriptor,
                                                       const zrArray_tag* data, std::size_t coordinate);

// Turns face-vertex colour data back into grid colour data. Per-vertex data
// (nv rows) maps vertex i + j*rows to grid point (i, j); per-face data (nf
// rows) maps the face of cell (i, j) to grid point (i, j), and the last grid
// row and column, which start no cell, are NaN. One column gives a rows x
// columns matrix (indexed colours), three columns a rows x columns x 3 array
// (true colour). Any numeric class is read as double. Null when an argument
// is missing or the shape fits neither form; non-numeric data throws
// invalidCDataTypeException.
[[nodiscard]] QVGUI_API zrArray_tag* convert_FaceVertexCData_to_CData(const FaceVertexDescriptor& descriptor,
                                                                      const zrArray_tag* faceVertexCData);

}  // namespace gui_objects
