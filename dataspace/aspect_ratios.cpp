// The aspect-ratio rules of a three-dimensional axes: how plot-box ratio,
// data ratio and automatic limits settle one another.
#include <algorithm>
#include <cmath>

#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace gui_objects::data_space_utils {

AxisLimitsProxy::~AxisLimitsProxy() = default;
RenderLimitsProxy::~RenderLimitsProxy() = default;

namespace {

struct Triple {
  double v[3];
};

Triple components(const Vector3d& a) noexcept { return Triple{{a.getX(), a.getY(), a.getZ()}}; }
Vector3d asVector(const Triple& t) noexcept { return Vector3d(t.v[0], t.v[1], t.v[2]); }

double smallest(const Triple& t) noexcept { return std::min(t.v[0], std::min(t.v[1], t.v[2])); }

Triple dividedBy(const Triple& t, double d) noexcept { return Triple{{t.v[0] / d, t.v[1] / d, t.v[2] / d}}; }

// Publishes new limits of one axis everywhere they live and marks the axis
// as constrained by both ratios.
void publishLimits(RenderLimitsProxy& render, AxisLimitsProxy& limits, int axis, double lo, double hi) {
  render.setRenderLimits(axis, lo, hi);
  limits.setAxisLimits(axis, lo, hi);
  render.setBothPlotAndDataAspectRatio_manual(axis, true);
}

double renderCentre(const RenderLimitsProxy& render, int axis) {
  return (render.getRenderLimit(axis, 1) + render.getRenderLimit(axis, 0)) * 0.5;
}

// Both ratios fixed, all limits automatic: one common scale F large enough
// for every normal axis' span; the box keeps its centre.
void fitAllLimits(RenderLimitsProxy& render, AxisLimitsProxy& limits, const Triple& pn, const Triple& dn,
                  const Triple& spans) {
  Triple w{};
  double scale = 0.0;
  bool anyNormal = false;
  for (int k = 0; k < 3; ++k) {
    w.v[k] = dn.v[k] * pn.v[k];
    if (render.isLimitStateNormal(k)) {
      const double f = spans.v[k] / w.v[k];
      scale = anyNormal ? std::max(scale, f) : f;
      anyNormal = true;
    }
  }
  if (!anyNormal) scale = 1.0;
  for (int k = 0; k < 3; ++k) {
    const double lo = render.getRenderLimit(k, 0);
    const double centre = renderCentre(render, k);
    const double half = w.v[k] * scale * 0.5;
    double newLo = centre - half;
    double newHi = centre + half;
    // A logarithmic axis cannot reach zero: keep the size, anchor at the
    // current positive lower end.
    if (limits.getAxisScaleIsLog(k) && newLo <= 0.0) {
      newLo = lo;
      newHi = lo + w.v[k] * scale;
    }
    publishLimits(render, limits, k, newLo, newHi);
  }
}

// Both ratios fixed and only axis `fixed` has user limits: it sets the scale.
void fitAroundFixedAxis(RenderLimitsProxy& render, AxisLimitsProxy& limits, const Triple& pn,
                        const Triple& dn, const Triple& spans, int fixed) {
  const double scale = spans.v[fixed] / (dn.v[fixed] * pn.v[fixed]);
  for (int k = 0; k < 3; ++k) {
    if (k == fixed) continue;
    const double centre = renderCentre(render, k);
    const double half = scale * pn.v[k] * dn.v[k] * 0.5;
    publishLimits(render, limits, k, centre - half, centre + half);
  }
}

}  // namespace

Vector3d restrictAspectRatios(const Vector3d& ratios, double limit) {
  const Triple v = components(ratios);
  const Triple r = dividedBy(v, smallest(v));
  const double largestRatio = std::max(r.v[0], std::max(r.v[1], r.v[2]));
  if (largestRatio <= limit) return ratios;

  // Ties resolve by this fixed comparison order, so equal ratios always
  // land in the same roles.
  int big;
  int mid;
  int small;
  const double rx = r.v[0], ry = r.v[1], rz = r.v[2];
  if (ry > rx) {
    if (rz > ry) {
      big = 2, mid = 1, small = 0;
    } else if (rx > rz) {
      big = 1, mid = 0, small = 2;
    } else {
      big = 1, mid = 2, small = 0;
    }
  } else if (rz > rx) {
    big = 2, mid = 0, small = 1;
  } else if (ry > rz) {
    big = 0, mid = 1, small = 2;
  } else {
    big = 0, mid = 2, small = 1;
  }

  const double m = r.v[mid];
  Triple out{};
  out.v[big] = limit;
  out.v[small] = r.v[small];
  // A middle ratio geometrically nearer the largest is scaled down with it;
  // one nearer the smallest keeps its ratio (capped at the limit).
  out.v[mid] = m * m > largestRatio ? std::max(m / largestRatio * limit, 1.0) : std::min(m, limit);
  Vector3d result = asVector(out);
  result.normalize();
  return result;
}

void computeAspectRatios(RenderLimitsProxy& render, AxisLimitsProxy& limits, double limit) {
  Triple p = components(limits.getPlotBoxAspectRatio());
  Triple d = components(limits.getDataAspectRatio());
  const Triple pn = dividedBy(p, smallest(p));
  const Triple dn = dividedBy(d, smallest(d));
  Triple spans{};
  for (int k = 0; k < 3; ++k)
    spans.v[k] = std::fabs(render.getRenderLimit(k, 1) - render.getRenderLimit(k, 0));
  const Triple q = dividedBy(spans, smallest(spans));

  const int mode =
      (limits.getDataAspectRatioModeIsAuto() ? 2 : 0) + (limits.getPlotBoxAspectRatioModeIsAuto() ? 1 : 0);
  for (int k = 0; k < 3; ++k) render.setBothPlotAndDataAspectRatio_manual(k, false);

  const auto spansOverDataRatio = [&]() {
    return Vector3d(q.v[0] / d.v[0], q.v[1] / d.v[1], q.v[2] / d.v[2]);
  };
  switch (mode) {
    case 0: {
      const int code =
          (limits.isManual(0) ? 1 : 0) + (limits.isManual(1) ? 2 : 0) + (limits.isManual(2) ? 4 : 0);
      switch (code) {
        case 0:
          fitAllLimits(render, limits, pn, dn, spans);
          break;
        case 1:
          fitAroundFixedAxis(render, limits, pn, dn, spans, 0);
          break;
        case 2:
          fitAroundFixedAxis(render, limits, pn, dn, spans, 1);
          break;
        case 4:
          fitAroundFixedAxis(render, limits, pn, dn, spans, 2);
          break;
        default:
          p = components(restrictAspectRatios(spansOverDataRatio(), limit));
          break;
      }
      break;
    }
    case 1:
      p = components(restrictAspectRatios(spansOverDataRatio(), limit));
      break;
    case 2:
      for (int k = 0; k < 3; ++k) d.v[k] = q.v[k] / p.v[k];
      break;
    default:
      p = Triple{{1.0, 1.0, 1.0}};
      d = q;
      break;
  }

  limits.setPlotBoxAspectRatio(asVector(p));
  limits.setDataAspectRatio(asVector(d));
  limits.setOldStyleAspectRatio(p.v[0] / p.v[1], d.v[1] / d.v[0]);
}

}  // namespace gui_objects::data_space_utils
