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

// A table colour in 8-bit units less 256, so that a working value minus it
// is already the error's index into the share table.
struct TableColour {
  std::int32_t red, green, blue, unused;
};

// The errors in flight along one row: the 7/16 shares for the next pixel,
// the next row's error at x - 1 still missing pixel x's 3/16, and its error
// at x so far (pixel x - 1's 1/16).
struct RowErrors {
  std::int32_t carry[3];
  std::int32_t pending[3];
  std::int32_t fresh[3];
};

// Pixel x of row y: reads the error carried from the row above at from[x],
// writes the next row's finished error at into[x - 1] (into[-1] is a guard
// cell, never read as a pixel). No multiplications or divisions.
template <class MapEntry, class Load, class Emit>
inline void ditherPixel(RowErrors& s, int y, int x, const std::int32_t* from, std::int32_t* into,
                        const MapEntry* map, const TableColour* colours, const Shares* shares, Load& load,
                        Emit& emit) {
  std::int32_t v[3];
  load(y, x, v);
  const std::int32_t* const cell = from + 3 * x;
  std::int32_t w[3];
  for (int ch = 0; ch < 3; ++ch) {
    const std::int32_t a = v[ch] + cell[ch] + s.carry[ch];
    w[ch] = a < 0 ? 0 : (a > 255 ? 255 : a);
  }
  const std::int32_t index = map[((w[0] >> 3) << 10) | ((w[1] >> 3) << 5) | (w[2] >> 3)];
  emit(y, x, index);
  const TableColour& c = colours[index];
  const Shares* const sh[3] = {&shares[w[0] - c.red], &shares[w[1] - c.green], &shares[w[2] - c.blue]};
  std::int32_t* const below = into + 3 * x;
  for (int ch = 0; ch < 3; ++ch) {
    s.carry[ch] = sh[ch]->right;
    below[ch - 3] = s.pending[ch] + sh[ch]->belowLeft;
    s.pending[ch] = s.fresh[ch] + sh[ch]->below;
    s.fresh[ch] = sh[ch]->belowRight;
  }
}

// The right-most pixel's 1/16 and 7/16 fall off the edge; its 5/16 and the
// 3/16 of the pixel left of it finish the next row's last error.
inline void finishRow(const RowErrors& s, int columns, std::int32_t* into) {
  for (int ch = 0; ch < 3; ++ch) into[3 * (columns - 1) + ch] = s.pending[ch];
}

// Walks rows top to bottom and each row left to right. load(y, x, rgb) gives
// a pixel's incoming channel values (any int; clamped here), emit(y, x, index)
// takes its colour index. map holds the inverse colour map (bytes while the
// table has at most 256 colours, so that it stays in the first-level cache);
// buffers holds 6 * (columns + 2) ints.
//
// One pixel's choice waits on the error of the pixel before it, through three
// table loads; that chain, not arithmetic, sets the speed. So rows go in pairs,
// the second one pixel behind the first: pixel x - 1 of row y + 1 needs only
// pixels up to x of row y, and the two chains overlap. The errors and their
// order of addition are exactly those of a row-by-row walk.
template <class MapEntry, class Load, class Emit>
void diffuse(int rows, int columns, const MapEntry* map, const TableColour* colours, const Shares* shares,
             std::int32_t* buffers, Load load, Emit emit) {
  const std::size_t stride = 3 * (static_cast<std::size_t>(columns) + 2);
  for (std::size_t k = 0; k < 2 * stride; ++k) buffers[k] = 0;
  // a: errors into the even row of a pair (and out of its odd row);
  // b: errors from the even row into the odd row. Offset past the guard cell.
  std::int32_t* const a = buffers + 3;
  std::int32_t* const b = buffers + stride + 3;
  int y = 0;
  for (; y + 1 < rows; y += 2) {
    RowErrors even{}, odd{};
    ditherPixel(even, y, 0, a, b, map, colours, shares, load, emit);
    for (int x = 1; x < columns; ++x) {
      ditherPixel(even, y, x, a, b, map, colours, shares, load, emit);
      ditherPixel(odd, y + 1, x - 1, b, a, map, colours, shares, load, emit);
    }
    finishRow(even, columns, b);
    ditherPixel(odd, y + 1, columns - 1, b, a, map, colours, shares, load, emit);
    finishRow(odd, columns, a);
  }
  if (y < rows) {
    // The last row's errors go nowhere: b is scratch from here on.
    RowErrors last{};
    for (int x = 0; x < columns; ++x) ditherPixel(last, y, x, a, b, map, colours, shares, load, emit);
  }
}

}  // namespace qvgui_raster
