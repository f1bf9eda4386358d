// Clipping of lines and line strips in homogeneous clip space by the
// outcode form of Liang-Barsky.
#include <algorithm>

#include "clipping/vertex_vector_p.h"

namespace gui_objects {

namespace {

struct Span {
  double tIn;
  double tOut;
  [[nodiscard]] bool visible() const noexcept { return tIn < tOut; }
};

// The visible fraction interval of the segment i0 -> i1 of v.
Span visibleSpan(const VertexVector& v, std::size_t i0, std::size_t i1, const Plane3d* const* userPlanes) {
  const Outcode c0 = v.getOutcode(i0);
  const Outcode c1 = v.getOutcode(i1);
  Span span{0.0, 1.0};
  if ((c0 & c1) != 0) return Span{1.0, 0.0};  // both outside one plane
  const unsigned crossed = static_cast<unsigned>(c0 | c1);
  for (std::size_t plane = 0; plane < kClipPlanes; ++plane) {
    const Outcode bit = Point4d::outCodeForPlane(static_cast<int>(plane));
    if ((crossed & bit) == 0) continue;
    const double t = v.getPlaneFraction(i0, i1, plane, userPlanes);
    if ((c0 & bit) != 0)
      span.tIn = std::max(span.tIn, t);
    else
      span.tOut = std::min(span.tOut, t);
  }
  return span;
}

// Projects a finished run; false when a vertex has w <= 0.
bool projectRun(VertexVector& run) {
  try {
    run.project();
    return true;
  } catch (const InvalidWException&) {
    return false;
  }
}

}  // namespace

VertexVector clip_line(VertexVector& line, const Plane3d* const* userPlanes) {
  if (line.getSize() > 2) {
    const std::size_t firstTwo[2] = {0, 1};
    VertexVector head(line, 2, firstTwo);
    return clip_line(head, userPlanes);
  }
  if (line.getReject() || !detail::allFinite(line)) return VertexVector();
  if (line.getAccept()) {
    if (!projectRun(line)) return VertexVector();
    return line;
  }
  const Span span = visibleSpan(line, 0, 1, userPlanes);
  if (!span.visible()) return VertexVector();
  VertexVector result;
  // Both ends are re-interpolated, even at t == 0 or t == 1, so that every
  // output vertex went through the same arithmetic.
  result.clipVertexToFraction(line, 0, 1, span.tIn, userPlanes);
  result.clipVertexToFraction(line, 0, 1, span.tOut, userPlanes);
  detail::settleIntoVolume(result, userPlanes);
  if (!projectRun(result)) return VertexVector();
  return result;
}

std::vector<VertexVector> clip_linestrip(VertexVector& strip, const Plane3d* const* userPlanes) {
  std::vector<VertexVector> runs;
  const std::size_t n = strip.getSize();
  if (strip.getReject()) return runs;
  const bool finite = detail::allFinite(strip);
  if (finite && strip.getAccept()) {
    if (projectRun(strip)) runs.push_back(strip);
    return runs;
  }
  VertexVector run;
  auto finishRun = [&]() {
    if (run.getSize() >= 2) detail::settleIntoVolume(run, userPlanes);
    if (run.getSize() >= 2 && projectRun(run)) runs.push_back(std::move(run));
    run.clear();
  };
  // True while the open run ends exactly at the start vertex of the next
  // segment, i.e. the previous segment was not cut at its far end.
  bool runReachesVertex = false;
  for (std::size_t i = 0; i + 1 < n; ++i) {
    // A non-finite vertex breaks the strip: both segments at it are dropped.
    const bool usable = finite || (detail::finiteVertex(strip, i) && detail::finiteVertex(strip, i + 1));
    const Span span = usable ? visibleSpan(strip, i, i + 1, userPlanes) : Span{1.0, 0.0};
    if (!span.visible()) {
      finishRun();
      runReachesVertex = false;
      continue;
    }
    if (!(runReachesVertex && span.tIn == 0.0)) {
      finishRun();
      run.clipVertexToFraction(strip, i, i + 1, span.tIn, userPlanes);
    }
    run.clipVertexToFraction(strip, i, i + 1, span.tOut, userPlanes);
    runReachesVertex = span.tOut == 1.0;
  }
  finishRun();
  return runs;
}

}  // namespace gui_objects
