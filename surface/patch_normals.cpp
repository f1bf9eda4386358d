// Lighting normals of face-vertex patches: face-entry checks and per-face and
// per-vertex normals from fan triangulation.
#include <cmath>
#include <cstdint>
#include <cstring>

#include "geometry/messages_p.h"
#include "qvgui/surface.h"
#include "surface/host_memory_p.h"

namespace gui_objects {

namespace {

// The quiet NaN with the sign bit set (0xFFF8000000000000) marks vertices that
// no face reached.
[[nodiscard]] double vertexWithoutNormal() noexcept {
  const std::uint64_t bits = 0xFFF8000000000000ULL;
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

void warnBadFaceEntry(double value, std::size_t position, std::size_t face, std::size_t vertexCount) {
  qvgui_messages::warn::patchFacesElementExceedsVerticesLength(
      value, static_cast<unsigned long long>(position), static_cast<unsigned long long>(face),
      static_cast<unsigned long long>(vertexCount));
}

// One vertex of a two- or three-column vertex matrix.
struct VertexMatrix {
  const double* data;
  std::size_t count;
  std::size_t dim;

  [[nodiscard]] Vector3d at(std::size_t v) const noexcept {
    return Vector3d(data[v], data[v + count], dim >= 3 ? data[v + 2 * count] : 0.0);
  }
  [[nodiscard]] bool isFinite(std::size_t v) const noexcept {
    return std::isfinite(data[v]) && std::isfinite(data[v + count]) &&
           (dim < 3 || std::isfinite(data[v + 2 * count]));
  }
};

// Adds n to row v of an nv x 3 matrix.
inline void addToRow(double* m, std::size_t stride, std::size_t v, const Vector3d& n) noexcept {
  m[v] += n.getX();
  m[v + stride] += n.getY();
  m[v + 2 * stride] += n.getZ();
}

}  // namespace

PatchProxy::~PatchProxy() = default;

std::size_t howManyPatchVerticesAreOk(std::size_t face, std::size_t faceCount, std::size_t maxVertices,
                                      const double* faces, std::size_t vertexCount) {
  if (faces == nullptr) return 0;
  const auto nv = static_cast<double>(vertexCount);
  for (std::size_t pos = 0; pos < maxVertices; ++pos) {
    const double value = faces[face + pos * faceCount];
    if (std::isnan(value)) return pos;
    if (value < 1.0 || value > nv) {
      warnBadFaceEntry(value, pos + 1, face + 1, vertexCount);
      return 0;
    }
  }
  return maxVertices;
}

void computePatchNormals(PatchProxy& proxy) {
  const zrArray_tag* vertices = proxy.getVertices();
  const zrArray_tag* faces = proxy.getFaces();
  if (vertices == nullptr || faces == nullptr) return;
  const double* vdata = zrGetPr(vertices);
  const double* fdata = zrGetPr(faces);
  if (vdata == nullptr || fdata == nullptr) return;
  const std::size_t nv = zrGetM(vertices);
  const std::size_t dim = zrGetN(vertices);
  const std::size_t nf = zrGetM(faces);
  const std::size_t maxv = zrGetN(faces);
  if (dim < 2) return;  // not x, y[, z] rows

  // Reset both normal matrices; the proxy keeps copies, so the temporaries go
  // at once. Storing may change the normals mode, which is put back.
  const std::int32_t mode = proxy.getNormalsMode();
  {
    detail::ArrayHolder vertexZeros(zrCreateDoubleMatrix(nv, 3));
    proxy.setVertexNormals(vertexZeros.get());
  }
  {
    detail::ArrayHolder faceZeros(zrCreateDoubleMatrix(nf, 3));
    proxy.setFaceNormals(faceZeros.get());
  }
  proxy.setNormalsMode(mode);

  zrArray_tag* vertexNormals = proxy.getVertexNormals();
  if (vertexNormals == nullptr || zrGetPr(vertexNormals) == nullptr || zrGetM(vertexNormals) < nv ||
      zrGetN(vertexNormals) < 3)
    return;
  double* vn = zrGetPr(vertexNormals);
  const std::size_t vnStride = zrGetM(vertexNormals);
  zrArray_tag* faceNormals = proxy.getFaceNormals();
  double* fn = nullptr;
  std::size_t fnStride = 0;
  if (faceNormals != nullptr && zrGetPr(faceNormals) != nullptr && zrGetM(faceNormals) >= nf &&
      zrGetN(faceNormals) >= 3) {
    fn = zrGetPr(faceNormals);
    fnStride = zrGetM(faceNormals);
  }

  for (std::size_t c = 0; c < 3; ++c) std::memset(vn + c * vnStride, 0, nv * sizeof(double));
  detail::CheckedArray<std::uint64_t> counts(nv);
  const VertexMatrix v{vdata, nv, dim};

  for (std::size_t f = 0; f < nf; ++f) {
    const std::size_t k = howManyPatchVerticesAreOk(f, nf, maxv, fdata, nv);
    if (k < 3) continue;
    const double* entry = fdata + f;  // entry[m * nf] is vertex number m of face f
    bool finite = true;
    for (std::size_t m = 0; m < k && finite; ++m)
      finite = v.isFinite(static_cast<std::size_t>(static_cast<int>(entry[m * nf]) - 1));
    if (!finite) continue;

    const auto i0 = static_cast<std::size_t>(static_cast<int>(entry[0]) - 1);
    auto prev = static_cast<std::size_t>(static_cast<int>(entry[nf]) - 1);
    const Vector3d origin = v.at(i0);
    for (std::size_t m = 2; m < k; ++m) {
      const auto cur = static_cast<std::size_t>(static_cast<int>(entry[m * nf]) - 1);
      if (cur != prev && cur != i0) {
        // Second edge crossed with the first: the winding the host's renderer
        // expects.
        const Vector3d n = (v.at(cur) - origin).cross(v.at(prev) - origin);
        if (fn != nullptr) {
          fn[f] = n.getX();
          fn[f + fnStride] = n.getY();
          fn[f + 2 * fnStride] = n.getZ();
        }
        if (m == 2) {
          addToRow(vn, vnStride, i0, n);
          addToRow(vn, vnStride, prev, n);
          ++counts[i0];
          ++counts[prev];
        }
        addToRow(vn, vnStride, cur, n);
        ++counts[cur];
      }
      prev = cur;
    }
  }

  const double none = vertexWithoutNormal();
  for (std::size_t r = 0; r < nv; ++r) {
    for (std::size_t c = 0; c < 3; ++c) {
      double& value = vn[r + c * vnStride];
      value = counts[r] == 0 ? none : value / static_cast<double>(counts[r]);
    }
  }
}

}  // namespace gui_objects
