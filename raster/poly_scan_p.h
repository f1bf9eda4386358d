// The even-odd scan converter behind FillInterpPoly and its true-colour and
// bilinear variants: integer Bresenham edges carrying N interpolated channels,
// handing each row's spans to a writer.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

#include "raster/poly_p.h"

namespace qvgui_raster {

// Inline room for the common small polygons, so filling a triangle or a
// quadrilateral does not touch the heap.
template <class T, int Inline>
class ScratchArray {
 public:
  // cppcheck-suppress uninitMemberVar ; scratch: every element is written before it is read
  explicit ScratchArray(std::int32_t n)
      : data_(n <= Inline ? inline_ : (heap_.reset(new T[n]), heap_.get())) {}
  T& operator[](std::int32_t i) noexcept { return data_[i]; }
  T* data() noexcept { return data_; }

 private:
  T inline_[Inline];
  std::unique_ptr<T[]> heap_;
  T* data_;
};

template <int N>
struct FillEdge {
  std::int32_t err;
  std::int32_t x;
  std::int32_t y;
  std::int32_t adx2;  // 2|dx|
  std::int32_t ady2;  // 2|dy|
  std::int32_t sx;    // x step: -1, 0, +1 (y always grows)
  std::int32_t dy;    // > 0
  std::int32_t ex;
  std::int32_t ey;
  std::int32_t y0;
  bool xMajor;
  double v0[N];
  double dv[N];

  // Value of channel k on row Y: linear in y from the upper end.
  [[nodiscard]] double valueAt(int k, std::int32_t Y) const noexcept {
    return v0[k] + (static_cast<double>(Y - y0) / dy) * dv[k];
  }

  // Moves to the first Bresenham pixel of the next row; an edge at its lower
  // end stays there.
  void advance() noexcept {
    if (!xMajor) {
      if (y == ey) {
        x = ex;
        return;
      }
      if (err >= 0) {
        x += sx;
        err -= ady2;
      }
      err += adx2;
      ++y;
      return;
    }
    const std::int32_t row = y;
    while (y == row) {
      if (x == ex) {
        y = ey;
        return;
      }
      if (err >= 0) {
        ++y;
        err -= adx2;
      }
      err += ady2;
      x += sx;
    }
  }
};

// Scan-converts the polygon, calling span(Y, xl, vl, xr, vr) for every
// even-odd span of row Y with the N channel values at its ends (xl <= xr).
// `values` holds N doubles per vertex. Vertices with a missing coordinate are
// dropped and the ring closes over the others.
template <int N, class Span>
void scanConvert(const Polygon2* poly, const double* values, Span&& span) {
  if (poly == nullptr || poly->points == nullptr || poly->count <= 0 || values == nullptr) return;
  const std::int32_t n = poly->count;
  const qvpoint32* pts = poly->points;

  ScratchArray<FillEdge<N>, 16> edges(n);
  std::int32_t ne = 0;
  auto addEdge = [&](std::int32_t a, std::int32_t b) {
    if (pts[a].y == pts[b].y) return;
    if (pts[b].y < pts[a].y) std::swap(a, b);
    FillEdge<N>& e = edges[ne++];
    const std::int32_t dx = pts[b].x - pts[a].x;
    const std::int32_t dy = pts[b].y - pts[a].y;
    const std::int32_t adx = dx < 0 ? -dx : dx;
    e.x = pts[a].x;
    e.y = pts[a].y;
    e.y0 = pts[a].y;
    e.ex = pts[b].x;
    e.ey = pts[b].y;
    e.dy = dy;
    e.adx2 = 2 * adx;
    e.ady2 = 2 * dy;
    e.sx = (dx > 0) - (dx < 0);
    e.xMajor = adx > dy;
    e.err = e.xMajor ? 2 * dy - adx : 2 * adx - dy;
    for (int k = 0; k < N; ++k) {
      e.v0[k] = values[a * N + k];
      e.dv[k] = values[b * N + k] - values[a * N + k];
    }
  };
  std::int32_t first = -1;
  std::int32_t prev = -1;
  for (std::int32_t i = 0; i < n; ++i) {
    if (isMissing(pts[i])) continue;
    if (prev < 0) {
      first = i;
    } else {
      addEdge(prev, i);
    }
    prev = i;
  }
  if (prev >= 0 && prev != first) addEdge(prev, first);
  if (ne == 0) return;

  // Edges in order of their upper ends; the active list in order of x.
  ScratchArray<FillEdge<N>*, 16> pending(ne);
  ScratchArray<FillEdge<N>*, 16> active(ne);
  for (std::int32_t i = 0; i < ne; ++i) pending[i] = &edges[i];
  std::sort(pending.data(), pending.data() + ne,
            [](const FillEdge<N>* a, const FillEdge<N>* b) { return a->y0 < b->y0; });

  std::int32_t next = 0;
  std::int32_t na = 0;
  double vl[N];
  double vr[N];
  for (std::int32_t Y = pending[0]->y0;; ++Y) {
    while (next < ne && pending[next]->y0 == Y) active[na++] = pending[next++];
    if (na == 0) break;
    // The list stays nearly sorted from row to row: insertion sort is linear.
    for (std::int32_t i = 1; i < na; ++i) {
      FillEdge<N>* e = active[i];
      std::int32_t j = i;
      for (; j > 0 && active[j - 1]->x > e->x; --j) active[j] = active[j - 1];
      active[j] = e;
    }
    const FillEdge<N>* left = nullptr;
    for (std::int32_t i = 0; i < na; ++i) {
      const FillEdge<N>* e = active[i];
      if (e->ey == Y) continue;  // an edge's lower end belongs to no span
      if (left == nullptr) {
        left = e;
        continue;
      }
      for (int k = 0; k < N; ++k) {
        vl[k] = left->valueAt(k, Y);
        vr[k] = e->valueAt(k, Y);
      }
      span(Y, left->x, vl, e->x, vr);
      left = nullptr;
    }
    std::int32_t kept = 0;
    for (std::int32_t i = 0; i < na; ++i) {
      FillEdge<N>* e = active[i];
      e->advance();
      if (e->y != Y) active[kept++] = e;
    }
    na = kept;
  }
}

}  // namespace qvgui_raster
