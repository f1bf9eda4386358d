// The error-diffusion core shared by dither_wrapper and DitherPixMap.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

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
// error + 256 and rounded half away from zero, in the lane order the
// diffusion loop transposes them in.
struct Shares {
  std::int16_t belowLeft;   // 3/16
  std::int16_t below;       // 5/16
  std::int16_t right;       // 7/16
  std::int16_t belowRight;  // 1/16
};
static_assert(sizeof(Shares) == 8, "one share entry is one pixel's lanes");
void buildShares(Shares* table);  // 512 entries

// Pixels travel through the diffusion loop as four 16-bit lanes
//   | blue | green | red | 0 |
// so that one 64-bit register holds a pixel and the cell of the inverse map
// is three shifts and masks of it. A table colour is kept as 256 minus its
// 8-bit components in the same lanes: a clamped working value plus it is the
// three errors' indices into the share table at once, with no carry between
// lanes (every lane stays below 512).
using Lanes = std::uint64_t;
Lanes tableLanes(std::int32_t red, std::int32_t green, std::int32_t blue);

// Incoming values further than this from 0..255 clamp the same however the
// carried errors (less than 512 in magnitude) push them, so rows are cut to
// this range before they are narrowed to 16 bits.
inline constexpr std::int32_t kInputMargin = 1024;

// The diffusion walks rows top to bottom and each row left to right, with
// errors exactly those of a row-by-row walk.
//
// One pixel's choice waits on the error of the pixel before it, through three
// table loads; row by row, that chain would set the speed. So rows go in
// groups of kRowsInFlight, each kLag pixels behind the one above: pixel x of
// row y + 1 needs only pixels up to x + 1 of row y, and with some slack
// between them the chains overlap instead of waiting on each other.
inline constexpr int kRowsInFlight = 6;
inline constexpr int kLag = 8;

// ---- Eight 16-bit lanes ----------------------------------------------------
// Only the low four lanes carry a pixel; the high four ride along where an
// operation needs two pixels' worth.
#if defined(__SSE2__) || defined(_M_X64)
struct Lanes8 {
  __m128i v;
};
inline Lanes8 load4(const std::int16_t* p) { return {_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))}; }
inline void store4(std::int16_t* p, Lanes8 a) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), a.v); }
inline Lanes8 operator+(Lanes8 a, Lanes8 b) { return {_mm_add_epi16(a.v, b.v)}; }
inline Lanes8 clampByte(Lanes8 a) {
  return {_mm_max_epi16(_mm_min_epi16(a.v, _mm_set1_epi16(255)), _mm_setzero_si128())};
}
inline Lanes low64(Lanes8 a) { return static_cast<Lanes>(_mm_cvtsi128_si64(a.v)); }
// The high four lanes of a, then those of b.
inline Lanes8 highs(Lanes8 a, Lanes8 b) { return {_mm_unpackhi_epi64(a.v, b.v)}; }
// Shares of blue, green and red transposed into first = below-left | below
// and second = right | below-right, each channel in its lane.
inline void transpose(const Shares* b, const Shares* g, const Shares* r, Lanes8* first, Lanes8* second) {
  const __m128i t0 = _mm_unpacklo_epi16(load4(&b->belowLeft).v, load4(&g->belowLeft).v);
  const __m128i t1 = _mm_unpacklo_epi16(load4(&r->belowLeft).v, _mm_setzero_si128());
  first->v = _mm_unpacklo_epi32(t0, t1);
  second->v = _mm_unpackhi_epi32(t0, t1);
}
#else
struct Lanes8 {
  std::int16_t l[8];
};
inline Lanes8 load4(const std::int16_t* p) { return {{p[0], p[1], p[2], p[3], 0, 0, 0, 0}}; }
inline void store4(std::int16_t* p, Lanes8 a) {
  for (int k = 0; k < 4; ++k) p[k] = a.l[k];
}
inline Lanes8 operator+(Lanes8 a, Lanes8 b) {
  for (int k = 0; k < 8; ++k) a.l[k] = static_cast<std::int16_t>(a.l[k] + b.l[k]);
  return a;
}
inline Lanes8 clampByte(Lanes8 a) {
  for (std::int16_t& x : a.l) x = x < 0 ? 0 : (x > 255 ? 255 : x);
  return a;
}
inline Lanes low64(Lanes8 a) {
  Lanes v = 0;
  for (int k = 3; k >= 0; --k) v = (v << 16) | static_cast<std::uint16_t>(a.l[k]);
  return v;
}
inline Lanes8 highs(Lanes8 a, Lanes8 b) {
  return {{a.l[4], a.l[5], a.l[6], a.l[7], b.l[4], b.l[5], b.l[6], b.l[7]}};
}
inline void transpose(const Shares* b, const Shares* g, const Shares* r, Lanes8* first, Lanes8* second) {
  *first = {{b->belowLeft, g->belowLeft, r->belowLeft, 0, b->below, g->below, r->below, 0}};
  *second = {{b->right, g->right, r->right, 0, b->belowRight, g->belowRight, r->belowRight, 0}};
}
#endif

// ---- The diffusion loop ----------------------------------------------------
// The rows of a group share their buffers, pixel by pixel, so that one
// pointer and a constant offset reach every row's lanes:
//   in:     [x][row k][lane]       incoming values of the group's rows
//   errors: [x + 1][slot k][lane]  row k reads slot k and accumulates into
//                                  slot k + 1 (kRowsInFlight + 1 slots);
//                                  x = -1 is a guard
inline constexpr std::size_t kInStride = 4 * kRowsInFlight;
inline constexpr std::size_t kErrorStride = 4 * (kRowsInFlight + 1);

// What a row carries from one pixel to the next: the 7/16 shares, and the
// two cells of the row below it is still adding to.
struct RowState {
  Lanes8 carry;
  Lanes8 pending;  // into[x - 1] | into[x] before pixel x
};

// from and into point at the pixel's own cells.
template <class Map>
inline std::int32_t ditherPixel(RowState& row, const std::int16_t* in, const std::int16_t* from,
                                std::int16_t* into, const Map& map, const Lanes* colours,
                                const Shares* shares) {
  const Lanes w = low64(clampByte(load4(in) + load4(from) + row.carry));
  const auto cell = static_cast<std::size_t>(((w >> 3) & 0x1F) | ((w >> 14) & 0x3E0) | ((w >> 25) & 0x7C00));
  const auto index = static_cast<std::int32_t>(map[cell]);
  const Lanes errors = w + colours[index];
  Lanes8 first, second;
  transpose(&shares[static_cast<std::uint16_t>(errors)], &shares[static_cast<std::uint16_t>(errors >> 16)],
            &shares[errors >> 32], &first, &second);
  const Lanes8 done = row.pending + first;
  store4(into - kErrorStride, done);
  row.pending = highs(done, second);
  row.carry = second;
  return index;
}

// The group's rows, each kLag pixels behind the one above. The rows' states
// and sinks are locals so that they stay in registers: the output stores are
// bytes, which may alias anything reached through a pointer.
template <int Rows, class Map, class Sink>
void diffuseGroup(int columns, const std::int16_t* in, std::int16_t* errors, const Sink* groupSinks, Map map,
                  const Lanes* colours, const Shares* shares) {
  RowState rows[Rows] = {};
  Sink sinks[Rows];
  for (int k = 0; k < Rows; ++k) sinks[k] = groupSinks[k];
  const auto step = [&](int k, int x) {
    const auto at = static_cast<std::size_t>(x);
    std::int16_t* const from = errors + (at + 1) * kErrorStride + 4 * static_cast<std::size_t>(k);
    sinks[k](x, ditherPixel(rows[k], in + at * kInStride + 4 * k, from, from + 4, map, colours, shares));
  };
  const auto checked = [&](int t) {
    for (int k = 0; k < Rows; ++k) {
      const int x = t - k * kLag;
      if (x < 0 || x >= columns) continue;
      step(k, x);
      // The row's last cell is complete once its last pixel is done, and the
      // row below is about to read it.
      if (x == columns - 1)
        store4(errors + (static_cast<std::size_t>(x) + 1) * kErrorStride + 4 * (k + 1), rows[k].pending);
    }
  };
  constexpr int kSpan = (Rows - 1) * kLag;
  const int head = kSpan < columns - 1 ? kSpan : columns - 1;
  int t = 0;
  for (; t < head; ++t) checked(t);
  for (; t < columns - 1; ++t) {
    for (int k = 0; k < Rows; ++k) step(k, t - k * kLag);
  }
  for (; t < columns + kSpan; ++t) checked(t);
}

// diffuseGroup for every group size, indexed by size - 1.
template <class Map, class Sink, std::size_t... Less1>
constexpr auto groupRunner(std::index_sequence<Less1...>) {
  return std::array{&diffuseGroup<static_cast<int>(Less1) + 1, Map, Sink>...};
}

// A row of planar red, green and blue values into its lanes, kInStride apart.
inline void packRow(const std::int32_t* planar, std::size_t cols, std::int16_t* row) {
  std::size_t x = 0;
#if defined(__SSE2__) || defined(_M_X64)
  const __m128i low = _mm_set1_epi16(-kInputMargin), high = _mm_set1_epi16(255 + kInputMargin);
  const __m128i zero = _mm_setzero_si128();
  const auto narrow = [&](const std::int32_t* p) {
    const __m128i wide0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i wide1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 4));
    return _mm_max_epi16(_mm_min_epi16(_mm_packs_epi32(wide0, wide1), high), low);
  };
  for (; x + 8 <= cols; x += 8) {
    const __m128i r = narrow(planar + x), g = narrow(planar + cols + x), b = narrow(planar + 2 * cols + x);
    const __m128i bg[2] = {_mm_unpacklo_epi16(b, g), _mm_unpackhi_epi16(b, g)};
    const __m128i r0[2] = {_mm_unpacklo_epi16(r, zero), _mm_unpackhi_epi16(r, zero)};
    for (std::size_t half = 0; half < 2; ++half) {
      const __m128i pair[2] = {_mm_unpacklo_epi32(bg[half], r0[half]),
                               _mm_unpackhi_epi32(bg[half], r0[half])};
      for (std::size_t j = 0; j < 2; ++j) {
        std::int16_t* const at = row + (x + 4 * half + 2 * j) * kInStride;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(at), pair[j]);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(at + kInStride), _mm_unpackhi_epi64(pair[j], pair[j]));
      }
    }
  }
#endif
  const auto clamp = [](std::int32_t v) {
    return static_cast<std::int16_t>(v < -kInputMargin ? -kInputMargin
                                                       : (v > 255 + kInputMargin ? 255 + kInputMargin : v));
  };
  for (; x < cols; ++x) {
    std::int16_t* const at = row + x * kInStride;
    at[0] = clamp(planar[2 * cols + x]);
    at[1] = clamp(planar[cols + x]);
    at[2] = clamp(planar[x]);
    at[3] = 0;
  }
}

// prepare(y, in) fills in[x], in[columns + x] and in[2 columns + x] with row
// y's incoming red, green and blue values (any int; clamped when used);
// sink(y) gives row y's output, an object whose (x, index) takes pixel x's
// colour index. map[cell] gives the inverse colour map's entry (a pointer to
// bytes while the table has at most 256 colours, so that it stays in the
// first-level cache, or an object that fills cells in on demand), colours the
// tableLanes of every table colour.
template <class Map, class Prepare, class SinkOf>
void diffuse(int rows, int columns, Map map, const Lanes* colours, const Shares* shares, Prepare prepare,
             SinkOf sink) {
  const auto cols = static_cast<std::size_t>(columns);
  ZrBuffer<std::int16_t> errors = zrBuffer<std::int16_t>((cols + 1) * kErrorStride);
  ZrBuffer<std::int16_t> in = zrBuffer<std::int16_t>(cols * kInStride);
  ZrBuffer<std::int32_t> planar = zrBuffer<std::int32_t>(3 * cols);

  using Sink = decltype(sink(0));
  Sink sinks[kRowsInFlight];
  for (int y = 0; y < rows; y += kRowsInFlight) {
    const int group = rows - y < kRowsInFlight ? rows - y : kRowsInFlight;
    for (int k = 0; k < group; ++k) {
      prepare(y + k, planar.get());
      packRow(planar.get(), cols, in.get() + 4 * static_cast<std::size_t>(k));
      sinks[k] = sink(y + k);
    }
    groupRunner<Map, Sink>(std::make_index_sequence<kRowsInFlight>())[group - 1](
        columns, in.get(), errors.get(), sinks, map, colours, shares);
    // The last row's errors are the next group's first.
    if (group == kRowsInFlight) {
      for (std::size_t x = 0; x <= cols; ++x) {
        for (std::size_t lane = 0; lane < 4; ++lane)
          errors[x * kErrorStride + lane] = errors[x * kErrorStride + 4 * kRowsInFlight + lane];
      }
    }
  }
}

}  // namespace qvgui_raster
