// The contour matrix: traced lines collected as header and point columns of a
// two-row host double matrix.
#include <algorithm>
#include <cstring>

#include "qvgui/surface.h"

namespace gui_objects {

namespace {

constexpr std::size_t kBlock = 256;  // doubles

[[nodiscard]] constexpr std::size_t roundUpToBlock(std::size_t n) noexcept {
  return (n + kBlock - 1) / kBlock * kBlock;
}

}  // namespace

ContourResult::ContourResult() : matrix_(zrCreateDoubleMatrix(2, 0)), capacity_(0) {}

ContourResult::~ContourResult() { zrDestroyArray(matrix_); }

void ContourResult::append(double level, int count, const Real_point* points) {
  if (matrix_ == nullptr || count <= 0 || points == nullptr) return;
  const std::size_t columns = zrGetN(matrix_);
  const std::size_t stored = 2 * columns;
  const std::size_t needed = stored + 2 + 2 * static_cast<std::size_t>(count);
  if (needed > capacity_) {
    // Growing by whole blocks alone would copy the matrix on nearly every
    // append; at least doubling keeps a long run of appends linear.
    const std::size_t grown = roundUpToBlock(std::max(needed, 2 * capacity_));
    auto* data = static_cast<double*>(zrCalloc(grown, sizeof(double)));
    if (stored != 0) std::memcpy(data, zrGetPr(matrix_), stored * sizeof(double));
    zrSetPr(matrix_, data);  // frees the old storage
    capacity_ = grown;
  }
  double* out = zrGetPr(matrix_) + stored;
  out[0] = level;
  out[1] = static_cast<double>(count);
  out += 2;
  for (int k = 0; k < count; ++k) {
    out[2 * k] = points[k].x;
    out[2 * k + 1] = points[k].y;
  }
  zrSetN(matrix_, columns + static_cast<std::size_t>(count) + 1);
}

zrArray_tag* ContourResult::release() noexcept {
  zrArray_tag* matrix = matrix_;
  matrix_ = nullptr;
  capacity_ = 0;
  return matrix;
}

bool ContourResult::isEmpty() const {
  if (matrix_ == nullptr || zrGetM(matrix_) != 2) return true;
  const std::size_t columns = zrGetN(matrix_);
  if (columns == 0) return true;
  const double* data = zrGetPr(matrix_);
  std::size_t column = 0;
  while (column < columns) {
    const double count = data[2 * column + 1];
    if (count != 0) return false;
    column += 1;
  }
  return true;
}

}  // namespace gui_objects
