// Grid (surface) data as faces and vertices and back: one quadrilateral per
// grid cell, one vertex per grid point.
#include <cstdint>
#include <limits>

#include "geometry/messages_p.h"
#include "qvgui/surface.h"
#include "surface/host_memory_p.h"
#include "surface/numeric_p.h"

namespace gui_objects {

namespace {

[[nodiscard]] std::size_t cellCount(std::size_t rows, std::size_t columns) noexcept {
  return rows >= 2 && columns >= 2 ? (rows - 1) * (columns - 1) : 0;
}

}  // namespace

FaceVertexDescriptor createFaceVertexDescriptor(std::size_t rows, std::size_t columns) {
  // The element count alone overflows, so the request is reported as the
  // largest size there is.
  if (columns != 0 && rows > std::numeric_limits<std::size_t>::max() / 4 / columns) {
    qvgui_messages::raise::outOfMemory(std::numeric_limits<std::size_t>::max());
  }
  const std::size_t nv = rows * columns;
  const std::size_t nf = cellCount(rows, columns);
  detail::ArrayHolder faces(zrCreateDoubleMatrix(nf, 4));
  detail::ArrayHolder vertices(zrCreateDoubleMatrix(nv, 3));
  double* f = zrGetPr(faces.get());
  for (std::size_t j = 0; j + 1 < columns && nf != 0; ++j) {
    for (std::size_t i = 0; i + 1 < rows; ++i) {
      const std::size_t face = i + j * (rows - 1);
      const double v = static_cast<double>(i + j * rows + 1);  // 1-based vertex of (i, j)
      const double r = static_cast<double>(rows);
      f[face] = v;
      f[face + nf] = v + 1.0;
      f[face + 2 * nf] = v + 1.0 + r;
      f[face + 3 * nf] = v + r;
    }
  }
  FaceVertexDescriptor descriptor;
  descriptor.rows = rows;
  descriptor.columns = columns;
  descriptor.vertices = vertices.release();
  descriptor.faces = faces.release();
  return descriptor;
}

void destroyFaceVertexDescriptor(FaceVertexDescriptor& descriptor) noexcept {
  zrDestroyArray(descriptor.faces);
  zrDestroyArray(descriptor.vertices);
  descriptor = FaceVertexDescriptor();
}

bool convert_XYZ_to_FaceVertex(FaceVertexDescriptor& descriptor, const zrArray_tag* data,
                               std::size_t coordinate) {
  if (coordinate > 2 || descriptor.faces == nullptr || descriptor.vertices == nullptr || data == nullptr)
    return false;
  if (!zrIsNumeric(data)) throw invalidXYZTypeException();
  const auto rows = static_cast<std::size_t>(descriptor.rows);
  const auto columns = static_cast<std::size_t>(descriptor.columns);
  const std::size_t nv = rows * columns;
  if (zrGetM(descriptor.vertices) != nv || zrGetN(descriptor.vertices) < 3) return false;
  double* out = zrGetPr(descriptor.vertices);
  if (out == nullptr) return false;
  out += coordinate * nv;

  // How grid point (i, j) finds its value: full grid, one value per column
  // (x only) or one value per row (y only).
  enum class Layout { Grid, PerColumn, PerRow } layout;
  const std::size_t count = zrGetNumberOfElements(data);
  if (zrGetNumberOfDimensions(data) == 2 && zrGetM(data) == rows && zrGetN(data) == columns) {
    layout = Layout::Grid;
  } else if (zrIsVector(data) && coordinate == 0 && count == columns) {
    layout = Layout::PerColumn;
  } else if (zrIsVector(data) && coordinate == 1 && count == rows) {
    layout = Layout::PerRow;
  } else {
    return false;
  }

  detail::visitNumeric(data, [&](const auto* in) {
    for (std::size_t j = 0; j < columns; ++j) {
      for (std::size_t i = 0; i < rows; ++i) {
        const std::size_t k = i + j * rows;
        const std::size_t from = layout == Layout::Grid ? k : layout == Layout::PerColumn ? j : i;
        out[k] = static_cast<double>(in[from]);
      }
    }
  });
  descriptor.coordinatesSet |= std::uint64_t{1} << coordinate;
  return true;
}

zrArray_tag* convert_FaceVertexCData_to_CData(const FaceVertexDescriptor& descriptor,
                                              const zrArray_tag* faceVertexCData) {
  if (faceVertexCData == nullptr || descriptor.rows == 0 || descriptor.columns == 0) return nullptr;
  if (!zrIsNumeric(faceVertexCData)) throw invalidCDataTypeException();
  const auto rows = static_cast<std::size_t>(descriptor.rows);
  const auto columns = static_cast<std::size_t>(descriptor.columns);
  const std::size_t nv = rows * columns;
  const std::size_t nf = cellCount(rows, columns);
  const std::size_t inRows = zrGetM(faceVertexCData);
  const std::size_t channels = zrGetN(faceVertexCData);
  if (zrGetNumberOfDimensions(faceVertexCData) != 2 || (channels != 1 && channels != 3)) return nullptr;
  const bool perVertex = inRows == nv;
  if (!perVertex && (inRows != nf || nf == 0)) return nullptr;

  detail::ArrayHolder result(channels == 1 ? zrCreateDoubleMatrix(rows, columns) : [&] {
    const zrSize dims[3] = {rows, columns, 3};
    return zrCreateNumericArray(3, dims, zrDOUBLE_CLASS);
  }());
  double* out = zrGetPr(result.get());
  detail::visitNumeric(faceVertexCData, [&](const auto* in) {
    for (std::size_t c = 0; c < channels; ++c) {
      double* plane = out + c * nv;
      const auto* src = in + c * inRows;
      for (std::size_t j = 0; j < columns; ++j) {
        for (std::size_t i = 0; i < rows; ++i) {
          double value;
          if (perVertex) {
            value = static_cast<double>(src[i + j * rows]);
          } else if (i + 1 < rows && j + 1 < columns) {
            value = static_cast<double>(src[i + j * (rows - 1)]);
          } else {
            value = std::numeric_limits<double>::quiet_NaN();  // starts no cell
          }
          plane[i + j * rows] = value;
        }
      }
    }
  });
  return result.release();
}

}  // namespace gui_objects
