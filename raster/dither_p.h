// The error-diffusion core shared by dither_wrapper and DitherPixMap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "qvgui/host.h"

namespace qvgui_raster {

struct ZrFree {
  void operator()(void* p) const noexcept { zrFree(p); }
};
template <class T>
using ZrBuffer = std::unique_ptr<T[], ZrFree>;

// Zero-filled storage from the host's array allocator.
template <class T>
ZrBuffer<T> zrBuffer(std::size_t n) {
  return ZrBuffer<T>(static_cast<T*>(zrCalloc(n == 0 ? 1 : n, sizeof(T))));
}

inline constexpr int kInverseCells = 32 * 32 * 32;

// Index of the colour in (red, green, blue) nearest to each 5-bit cell's
// centre (8c + 4 in 8-bit units), the earlier colour on ties; colours are
// planar 8-bit integers. An empty list leaves every cell at colour 0.
void buildInverseMap(const std::int32_t* red, const std::int32_t* green, const std::int32_t* blue,
                     std::size_t n, std::int32_t* map);

// The four Floyd-Steinberg shares of every error -256..255, stored at
// error + 256 and rounded half away from zero.
struct Shares {
  std::int32_t right;       // 7/16
  std::int32_t below;       // 5/16
  std::int32_t belowLeft;   // 3/16
  std::int32_t belowRight;  // 1/16
};
void buildShares(Shares* table);  // 512 entries

// Walks rows top to bottom and each row left to right. load(y, x, rgb) gives
// a pixel's incoming channel values (any int; clamped here), emit(y, x, index)
// takes its colour index. Table components are stored minus 256 so that the
// difference is already an index into the share table; buffer holds
// 3 * (columns + 2) ints. The loop itself has no multiplications or divisions.
template <class Load, class Emit>
void diffuse(int rows, int columns, const std::int32_t* map, const std::int32_t* redLess256,
             const std::int32_t* greenLess256, const std::int32_t* blueLess256, const Shares* shares,
             std::int32_t* buffer, Load load, Emit emit) {
  // buffer[3 * (x + 1) + ch]: the error carried into pixel x of the current
  // row from the row above. While pixel x is done, entries left of x already
  // hold the next row's errors; the write to x - 1 trails the read of x.
  std::int32_t* const row = buffer + 3;
  for (int ch = 0; ch < 3 * (columns + 2); ++ch) buffer[ch] = 0;
  for (int y = 0; y < rows; ++y) {
    std::int32_t carry[3] = {0, 0, 0};    // 7/16 share for pixel x
    std::int32_t pending[3] = {0, 0, 0};  // next row at x - 1, still missing x's 3/16
    std::int32_t fresh[3] = {0, 0, 0};    // next row at x, so far x - 1's 1/16
    for (int x = 0; x < columns; ++x) {
      std::int32_t v[3];
      load(y, x, v);
      std::int32_t* const cell = row + 3 * x;
      for (int ch = 0; ch < 3; ++ch) {
        std::int32_t w = v[ch] + cell[ch] + carry[ch];
        w = w < 0 ? 0 : (w > 255 ? 255 : w);
        v[ch] = w;
      }
      const std::int32_t index = map[((v[0] >> 3) << 10) | ((v[1] >> 3) << 5) | (v[2] >> 3)];
      emit(y, x, index);
      const Shares& sr = shares[v[0] - redLess256[index]];
      const Shares& sg = shares[v[1] - greenLess256[index]];
      const Shares& sb = shares[v[2] - blueLess256[index]];
      const Shares* s[3] = {&sr, &sg, &sb};
      for (int ch = 0; ch < 3; ++ch) {
        carry[ch] = s[ch]->right;
        // x - 1 = -1 writes the guard cell, never read as a pixel.
        cell[ch - 3] = pending[ch] + s[ch]->belowLeft;
        pending[ch] = fresh[ch] + s[ch]->below;
        fresh[ch] = s[ch]->belowRight;
      }
    }
    // The right-most pixel's 1/16 (in fresh) and 7/16 (in carry) fall off the edge.
    if (columns > 0) {
      for (int ch = 0; ch < 3; ++ch) row[3 * (columns - 1) + ch] = pending[ch];
    }
    // After the last row the buffer is simply dropped: no error leaves the image.
  }
}

}  // namespace qvgui_raster
