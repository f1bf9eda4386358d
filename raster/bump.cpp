// Bump records: byte grids with a free offset.
#include <cstddef>
#include <cstring>

#include "qvgui/host.h"
#include "qvgui/raster.h"

namespace {

// The host's allocator, but a failure answers null: callers of these records
// test for it instead of unwinding.
void* allocOrNull(std::size_t count, std::size_t size) noexcept {
  try {
    return utCallocWithCheck(count, size);
  } catch (const HostError&) {
    return nullptr;
  }
}

}  // namespace

Bump* CreateBump(std::uint32_t columns, std::uint32_t rows, std::int32_t xoffset, std::int32_t yoffset) {
  auto* b = static_cast<Bump*>(allocOrNull(1, sizeof(Bump)));
  if (b == nullptr) return nullptr;
  const std::size_t bytes = static_cast<std::size_t>(rows) * (static_cast<std::size_t>(columns) + 1);
  b->data = static_cast<unsigned char*>(allocOrNull(bytes, 1));
  if (b->data == nullptr) {
    utFree(b);
    return nullptr;
  }
  b->columns = columns;
  b->rows = rows;
  b->xoffset = xoffset;
  b->yoffset = yoffset;
  return b;
}

void DestroyBump(Bump* b) {
  if (b == nullptr) return;
  utFree(b->data);
  utFree(b);
}

void ClearBump(Bump* b) {
  if (b == nullptr) return;
  std::memset(b->data, 0, static_cast<std::size_t>(b->rows) * b->columns);
}

unsigned char* GetBumpData(const Bump* b) { return b->data; }

void GetBumpSize(const Bump* b, std::uint32_t* columns, std::uint32_t* rows) {
  *columns = b->columns;
  *rows = b->rows;
}

void GetBumpOffsets(const Bump* b, std::int32_t* x, std::int32_t* y) {
  *x = b->xoffset;
  *y = b->yoffset;
}

void SetBumpOffsets(Bump* b, std::int32_t x, std::int32_t y) {
  b->xoffset = x;
  b->yoffset = y;
}

unsigned char GetBumpBit(const Bump* b, std::uint32_t row, std::uint32_t column) {
  return b->data[static_cast<std::size_t>(row) * b->columns + column];
}

void SetBumpBit(Bump* b, std::uint32_t row, std::uint32_t column, unsigned char value) {
  b->data[static_cast<std::size_t>(row) * b->columns + column] = value;
}
