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

// Pixel x of a row: its incoming channel values are in[x], in[plane + x] and
// in[2 plane + x], the error
// carried from the row above at from[3x..], and carry holds the 7/16 shares
// from the pixel before. The next row's errors are accumulated in place at
// into[x - 1] and into[x] and started at into[x + 1]; into[-1] and into[columns]
// are guard cells, never read as pixels. No multiplications or divisions.
template <class MapEntry>
inline std::int32_t ditherPixel(std::int32_t* carry, int x, const std::int32_t* in, std::size_t plane,
                                const std::int32_t* from, std::int32_t* into, const MapEntry* map,
                                const TableColour* colours, const Shares* shares) {
  std::int32_t w[3];
  for (int ch = 0; ch < 3; ++ch) {
    const std::int32_t a = in[ch * plane + static_cast<std::size_t>(x)] + from[3 * x + ch] + carry[ch];
    w[ch] = a < 0 ? 0 : (a > 255 ? 255 : a);
  }
  const std::int32_t index = map[((w[0] >> 3) << 10) | ((w[1] >> 3) << 5) | (w[2] >> 3)];
  const TableColour& c = colours[index];
  // Unsigned, so the index needs no sign extension: it lies in 1..511.
  const auto at = [shares](std::int32_t v, std::int32_t less256) {
    return &shares[static_cast<std::uint32_t>(v) - static_cast<std::uint32_t>(less256)];
  };
  const Shares* const sh[3] = {at(w[0], c.red), at(w[1], c.green), at(w[2], c.blue)};
  std::int32_t* const below = into + 3 * x;
  for (int ch = 0; ch < 3; ++ch) {
    carry[ch] = sh[ch]->right;
    below[ch - 3] += sh[ch]->belowLeft;
    below[ch] += sh[ch]->below;
    below[ch + 3] = sh[ch]->belowRight;
  }
  return index;
}

// Walks rows top to bottom and each row left to right. prepare(y, in) fills
// in[x], in[columns + x] and in[2 columns + x] with row y's incoming red,
// green and blue values (any int; clamped when
// used), emit(y, x, index) takes each pixel's colour index. map holds the
// inverse colour map (bytes while the table has at most 256 colours, so that
// it stays in the first-level cache); buffers holds 12 * (columns + 2) ints.
//
// One pixel's choice waits on the error of the pixel before it, through three
// table loads; that chain, not arithmetic, sets the speed. So rows go in pairs,
// the second kLag pixels behind the first: pixel x of row y + 1 needs only
// pixels up to x + 1 of row y, and with some slack between them the two
// chains overlap instead of waiting on each other. The errors and their
// order of addition are exactly those of a row-by-row walk.
inline constexpr int kLag = 8;

template <class MapEntry, class Prepare, class Emit>
void diffuse(int rows, int columns, const MapEntry* map, const TableColour* colours, const Shares* shares,
             std::int32_t* buffers, Prepare prepare, Emit emit) {
  const std::size_t stride = 3 * (static_cast<std::size_t>(columns) + 2);
  const auto plane = static_cast<std::size_t>(columns);
  for (std::size_t k = 0; k < 2 * stride; ++k) buffers[k] = 0;
  // a: errors into the even row of a pair (and out of its odd row);
  // b: errors from the even row into the odd row. Offset past the guard cell.
  std::int32_t* const a = buffers + 3;
  std::int32_t* const b = buffers + stride + 3;
  std::int32_t* const inEven = buffers + 2 * stride;
  std::int32_t* const inOdd = buffers + 3 * stride;
  int y = 0;
  for (; y + 1 < rows; y += 2) {
    prepare(y, inEven);
    prepare(y + 1, inOdd);
    std::int32_t even[3] = {0, 0, 0}, odd[3] = {0, 0, 0};
    // A row's first pixel adds into cells -1 and 0 of the next row's errors,
    // which still hold what the row before read: start them at zero.
    for (int k = -3; k < 3; ++k) b[k] = 0;
    const int lead = columns < kLag ? columns : kLag;
    for (int x = 0; x < lead; ++x)
      emit(y, x, ditherPixel(even, x, inEven, plane, a, b, map, colours, shares));
    // The even row has read a[0] and a[1]; the odd row's errors go there now.
    for (int k = -3; k < 3; ++k) a[k] = 0;
    for (int x = kLag; x < columns; ++x) {
      emit(y, x, ditherPixel(even, x, inEven, plane, a, b, map, colours, shares));
      emit(y + 1, x - kLag, ditherPixel(odd, x - kLag, inOdd, plane, b, a, map, colours, shares));
    }
    for (int x = columns - lead; x < columns; ++x) {
      emit(y + 1, x, ditherPixel(odd, x, inOdd, plane, b, a, map, colours, shares));
    }
  }
  if (y < rows) {
    // The last row's errors go nowhere: b is scratch from here on.
    prepare(y, inEven);
    std::int32_t last[3] = {0, 0, 0};
    for (int x = 0; x < columns; ++x)
      emit(y, x, ditherPixel(last, x, inEven, plane, a, b, map, colours, shares));
  }
}

}  // namespace qvgui_raster
