// The tick picker's linear search for nice limits and tick counts, and the
// per-axis passes that read and write the caller's AxisDescriptor.
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

#include "dataspace/ticks_p.h"

namespace gui_objects::tickpicker {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kMantissa[4] = {0.0, 1.0, 2.0, 5.0};  // nice mantissas, indices 1..3
constexpr AxisType kAxes[3] = {kXAxis, kYAxis, kZAxis};

// The decimal exponent of a raw step: log10 truncated toward zero, one less
// when the logarithm is negative. An exact negative power of ten therefore gets
// one less than its logarithm (0.1 -> -2), which the mantissa rules expect.
//
// log10 was the costliest part of the search, so it is asked only near a power
// of ten: when raw lies between 10^k and 10^(k+1) with a relative margin of
// 1e-12 (far more than log10's rounding moves the logarithm, even at |k| near
// 300), its logarithm is strictly inside (k, k + 1) and both rules give k.
int stepExponent(double raw) noexcept {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &raw, sizeof bits);
  const int biased = static_cast<int>((bits >> 52) & 0x7FF);
  if (biased != 0 && biased != 0x7FF) {
    // floor((binary exponent) * log10(2)), then settled against the table.
    int k = ((biased - 1023) * 78913) >> 18;
    while (k < detail::kPow10Max && detail::pow10i(k + 1) <= raw) ++k;
    while (k > detail::kPow10Min && detail::pow10i(k) > raw) --k;
    constexpr double kMargin = 1e-12;
    if (raw > detail::pow10i(k) * (1 + kMargin) && raw < detail::pow10i(k + 1) * (1 - kMargin)) return k;
  }
  const double lg = std::log10(raw);
  int e = static_cast<int>(lg);
  if (lg < 0) e -= 1;
  return e;
}

struct Candidate {
  double first;
  double last;
};

// The nice step a search for a raw step starts from: 10^e times mantissa j.
struct StepChoice {
  int e;
  int j;
};

StepChoice firstStep(double raw, InOut mode) noexcept {
  int e = stepExponent(raw);
  double m = raw / detail::pow10i(e);
  if (mode == kEnclosing && m > 5) {
    e += 1;
    m /= 10;
  }
  int j = 3;
  for (int i = 1; i <= 3; ++i) {
    if (kMantissa[i] >= m) {
      j = i;
      break;
    }
  }
  if (mode == kInside && j > 1) j -= 1;
  return {e, j};
}

// The first window of k + 1 ticks that the nice step sequence (from `s` on)
// places over [L, H], or (-inf, +inf) when the width overflows first.
Candidate searchWindow(double L, double H, StepChoice s, double k, InOut mode) noexcept {
  const bool inside = mode != kEnclosing;
  int e = s.e;
  int j = s.j;
  double step = detail::pow10i(e) * kMantissa[j];
  double width = step * k;
  while (std::isfinite(width)) {
    double first = inside ? std::ceil(L / step) * step : std::floor(L / step) * step;
    for (;;) {
      const double last = first + width;
      if (inside ? step >= H - last : (last > H || std::fabs(DBL_EPSILON * last) >= std::fabs(H - last))) {
        return {first, last};
      }
      const double next = first + step;
      if (!std::isfinite(next) || !std::isfinite(last)) return {next, last};
      // A step below the spacing of doubles at `first` would never move the
      // window; such a step is simply too small.
      if (next == first) break;
      first = next;
      if (first - L > 0.005 * step) break;
    }
    if (++j > 3) {
      j = 1;
      e += 1;
    }
    step = detail::pow10i(e) * kMantissa[j];
    width = step * k;
  }
  return {-kInf, kInf};
}

// A logarithmic axis over [lo <= 0, hi > 0] keeps the positive side: from the
// smallest positive datum p (DBL_MAX when there is none) or a decade below hi.
// Manual limits at or below p settle on the decade below hi. Returns whether
// the limits are settled. The negative side runs through here negated.
bool keepPositiveSide(double* lo, double* hi, double p, bool autoLimits) {
  if (p == DBL_MAX) {
    *lo = *hi <= 1 ? *hi / 10 : 1;
    return false;
  }
  *lo = p;
  if (*hi > p) return false;
  if (autoLimits) {
    *hi = 10 * p;
    return false;
  }
  *lo = *hi / 10;
  return true;
}

}  // namespace

// ---- Linear search -----------------------------------------------------------------------------

// Tick counts below 2 have no step and are not searched (the search starts at
// 2 then, and that count counts as the first). NaN limits qualify for nothing.
int calculateLinearTicks(double* lower, double* upper, int minTicks, int maxTicks, InOut mode) {
  if (*lower == -kInf || *upper == kInf) return 3;
  double L = *lower;
  double H = *upper;
  if (std::isnan(L) || std::isnan(H)) return 0;
  if (H <= L) {
    // A fixed absolute widening, deliberately not relative to the values.
    L = *upper - 0.05;
    H = *lower + 0.05;
  }
  const bool inside = mode != kEnclosing;
  double best = inside ? DBL_MIN : DBL_MAX;
  maxTicks = std::min(maxTicks, kMaxTickCount);
  if (minTicks > maxTicks) return 0;
  const int firstCount = std::max(minTicks, 2);
  const double magnitude = std::fabs(L) + std::fabs(H);
  const bool prunable = magnitude < 1e300;
  int result = 0;
  for (int n = firstCount; n <= maxTicks; ++n) {
    const double k = n - 1;
    const double raw = (H - L) / k;
    Candidate c{-kInf, kInf};
    if (!(raw > 0)) continue;  // limits too large to have a gap between them
    if (std::isfinite(raw)) {
      const StepChoice s = firstStep(raw, mode);
      // In enclosing mode the window only widens as the search goes on, so a
      // count whose first width already exceeds the best span (beyond what
      // rounding of first and last can take back) is rejected unsearched. Far
      // from the double range's end no window can overflow, so skipping the
      // search cannot skip a "3" answer either.
      if (!inside && n != firstCount && prunable) {
        const double width = detail::pow10i(s.e) * kMantissa[s.j] * k;
        if (width * (1 - 16 * DBL_EPSILON) - 8 * DBL_EPSILON * magnitude > best) continue;
      }
      c = searchWindow(L, H, s, k, mode);
    }
    if (!std::isfinite(c.first) || !std::isfinite(c.last)) return 3;
    bool accept;
    if (inside) {
      accept = !(c.first < L) && !(c.last >= H && std::fabs(DBL_EPSILON * H) < std::fabs(c.last - H)) &&
               !(c.last - c.first < best);
    } else {
      const bool reachesH = c.last > H || std::fabs(DBL_EPSILON * c.last) >= std::fabs(H - c.last);
      // The first count always yields an answer, even one that misses a bound.
      accept = (L >= c.first && reachesH && c.last - c.first <= best) || n == firstCount;
    }
    if (accept) {
      best = c.last - c.first;
      *lower = c.first;
      *upper = c.last;
      result = n;
    }
  }
  return result;
}

int pickBiasedTickAndLimits(AxisType, double* lower, double* upper, int minTicks, int maxTicks, int biasLow,
                            int biasHigh) {
  const double savedLower = *lower;
  const double savedUpper = *upper;
  // Every count the loop forms stays within 2 * kMaxTickCount + 2 of zero; a
  // lower bias beyond that compares like one just past it.
  minTicks = std::clamp(minTicks, -kMaxTickCount, kMaxTickCount + 1);
  maxTicks = detail::clampCount(maxTicks);
  biasLow = std::clamp(biasLow, -kMaxTickCount - 2, kMaxTickCount + 2);
  biasHigh = std::clamp(biasHigh, -kMaxTickCount, 100);
  int n = calculateLinearTicks(lower, upper, minTicks, maxTicks, kInside);
  if (n != 0) return n;
  int curMin = minTicks;
  int curMax = maxTicks;
  int limit = biasHigh;
  int lowBound = biasLow;
  int shrink = 0;
  while (limit < 100) {
    bool shrinking = false;
    if (curMax < limit) {
      curMax += 1;
      curMin = curMax;
    } else if (curMin <= lowBound || minTicks - shrink <= 2) {
      // Shrinking also stops once the smallest count reached 2: counts below
      // search nothing new, and the exact counts tried in between would repeat
      // forever. The limit always grows, so the widening ends.
      shrink = 0;
      curMax = limit + 1;
      lowBound = minTicks + 1;
      curMin = maxTicks + 1;
      limit = std::max(limit + 1, static_cast<int>(limit * 1.5));
    } else {
      shrink += 1;
      curMax = maxTicks;
      curMin = minTicks - shrink;
      shrinking = true;
    }
    *lower = savedLower;
    *upper = savedUpper;
    // A shrinking step adds one count below a range already searched in vain.
    // Inside mode judges every count on its own once nothing was accepted, so
    // the new count alone decides, and the shrinking costs linear, not
    // quadratic, time in the counts.
    n = calculateLinearTicks(lower, upper, curMin, shrinking ? std::min(curMin, curMax) : curMax, kInside);
    if (n != 0) return n;
  }
  return 0;
}

void estimateNumberOfTicks(int* outMin, int* outMax, int low, int cap, const Point2d& p0, const Point2d& p1,
                           double spacingY, double spacingX, bool inclusive) {
  const double rx = spacingX == 0 ? kInf : std::fabs(p0.getX() - p1.getX()) / spacingX;
  const double ry = spacingY == 0 ? kInf : std::fabs(p0.getY() - p1.getY()) / spacingY;
  // Truncated in double first so that infinite or huge ratios land on the cap
  // instead of overflowing int; a NaN ratio counts as room for one tick.
  double larger = std::fmax(rx, ry);
  if (std::isnan(larger)) larger = 0;
  const double fitting = std::trunc(larger) + 1;
  int m = cap;
  if (fitting < cap)
    m = fitting < std::numeric_limits<int>::min() / 2 ? std::numeric_limits<int>::min() / 2
                                                      : static_cast<int>(fitting);
  low = std::max(low, std::numeric_limits<int>::min() + 1);
  const int baseCount = inclusive ? low : low - 1;
  int maxCount = std::max(m, baseCount);
  int minCount;
  if (maxCount >= low) {
    minCount = (maxCount == low && !inclusive) ? low - 1 : low;
  } else {
    minCount = maxCount;
    maxCount = maxCount + 1;
  }
  *outMin = minCount;
  *outMax = maxCount;
}

// ---- Per-axis passes ---------------------------------------------------------------------------

void nicefyLimits(AxisDescriptor& desc, AxisType axis) {
  const bool autoLimits = desc.isAxisLimitModeAuto(axis);
  const AxisScale scale = desc.getAxisScale(axis);
  const bool fixed = desc.isPbarDarInManual(axis);
  if (scale != kLogScale && (fixed || !autoLimits)) return;
  double lo = desc.getRenderLimit(axis, kLowerRenderLimit);
  double hi = desc.getRenderLimit(axis, kUpperRenderLimit);
  int minTicks = 0;
  int maxTicks = 0;
  desc.normalized3ToNumTics(axis, &minTicks, &maxTicks);

  if (scale == kLinearScale) {
    double niceLo = lo;
    double niceHi = hi;
    const int n = calculateLinearTicks(&niceLo, &niceHi, minTicks, maxTicks, kEnclosing);
    desc.setNumTicksInRange(axis, n);
    desc.setOffsetToGoodTick(axis, 0);
    lo = std::min(niceLo, lo);
    hi = std::max(niceHi, hi);
  } else if (scale == kLogScale) {
    bool settled = false;
    if (lo <= 0 && 0 <= hi) {
      // Only one sign side can be shown; without data on it, fall back to a
      // decade next to the other limit.
      if (hi > 0) {
        settled = keepPositiveSide(&lo, &hi, desc.getInnerLimit(axis, kMinPositiveData), autoLimits);
      } else if (lo < 0) {
        double a = -hi;
        double b = -lo;
        settled = keepPositiveSide(&a, &b, -desc.getInnerLimit(axis, kMaxNegativeData), autoLimits);
        lo = -b;
        hi = -a;
      }
    }
    if (!settled && autoLimits) {
      if (lo > 0) {
        calculateLogTicks(&lo, &hi, maxTicks, kLimitValues);
      } else if (hi < 0) {
        double a = -hi;
        double b = -lo;
        calculateLogTicks(&a, &b, maxTicks, kLimitValues);
        lo = -b;
        hi = -a;
      }
    }
  }
  desc.setRenderLimit(axis, kLowerRenderLimit, lo);
  desc.setRenderLimit(axis, kUpperRenderLimit, hi);
  if (autoLimits) desc.setAxisLimitsData(axis, lo, hi);
}

void nicefyLimits(AxisDescriptor& desc) {
  for (AxisType axis : kAxes) nicefyLimits(desc, axis);
}

void computeAxisTicks(AxisDescriptor& desc, AxisType axis, int biasLow, int biasHigh) {
  const double renderLo = desc.getRenderLimit(axis, kLowerRenderLimit);
  const double renderHi = desc.getRenderLimit(axis, kUpperRenderLimit);
  if (!desc.isAxisTickModeAuto(axis)) {
    desc.setNumTicksInRange(axis, 0);
    const int count = desc.getNumTickMarkPos(axis);
    bool seenInside = false;
    for (int i = 0; i < count; ++i) {
      const double tick = desc.getTickMarkPos(axis, i);
      if (renderLo <= tick && tick <= renderHi) {
        if (!seenInside) desc.setOffsetToGoodTick(axis, i);
        seenInside = true;
        desc.incrementNumTicksInRange(axis);
      }
    }
    return;
  }
  double lo = renderLo;
  double hi = renderHi;
  int n = 2;
  int minTicks = 0;
  int maxTicks = 0;
  desc.normalized3ToNumTics(axis, &minTicks, &maxTicks);
  const AxisScale scale = desc.getAxisScale(axis);
  if (scale == kLinearScale) {
    n = pickBiasedTickAndLimits(axis, &lo, &hi, minTicks, maxTicks, biasLow, biasHigh);
  } else if (scale == kLogScale && !(lo <= 0 && 0 <= hi)) {
    if (hi < 0) {
      // Mirrored onto the positive side; calculateTickMarkPos negates the
      // values again because both render limits are negative.
      const double a = -hi;
      hi = -lo;
      lo = a;
    }
    n = calculateLogTicks(&lo, &hi, maxTicks, kLimitExponents);
  }
  // The record is allocated before the descriptor changes, so that running
  // out of memory leaves the axis as it was. Logarithmic ticks never touch
  // the descriptor while they are made; linear ones count the extra render
  // limit ticks on it and get room for both up front.
  if (scale == kLogScale) {
    std::unique_ptr<NReals> ticks(calculateTickMarkPos(desc, axis, n, lo, hi, renderLo, renderHi, scale));
    desc.setNumTicksInRange(axis, n);
    desc.setOffsetToGoodTick(axis, 0);
    desc.setAxisTickData(axis, ticks.release());
    return;
  }
  std::unique_ptr<NReals> spare(new NReals(n + 2));
  desc.setNumTicksInRange(axis, n);
  desc.setOffsetToGoodTick(axis, 0);
  NReals* ticks = detail::linearTickMarkPos(desc, axis, desc.getNumTicksInRange(axis), lo, hi, renderLo,
                                            renderHi, std::move(spare));
  desc.setAxisTickData(axis, ticks);
}

void computeAxisTicks(AxisDescriptor& desc, int biasLow, int biasHigh) {
  for (AxisType axis : kAxes) computeAxisTicks(desc, axis, biasLow, biasHigh);
}

// ---- Major tick positions ----------------------------------------------------------------------

namespace {

// The tick step, or the ratio step when the span overflows.
double majorStep(int numTicks, double tickLower, double tickUpper, bool* ratio) noexcept {
  double step = tickUpper - tickLower;
  *ratio = false;
  if (step > DBL_MAX) {
    // The span overflows; the ticks are then spaced as multiples of the lower one.
    step = tickUpper / tickLower - 1;
    *ratio = true;
  }
  return numTicks > 1 ? step / (numTicks - 1) : 0.0;
}

}  // namespace

NReals* detail::linearTickMarkPos(AxisDescriptor& desc, AxisType axis, int numTicks, double tickLower,
                                  double tickUpper, double renderLower, double renderUpper,
                                  std::unique_ptr<NReals> spare) {
  if (numTicks <= 0) {
    if (spare == nullptr) return new NReals(0);
    spare->count = 0;
    return spare.release();
  }
  bool ratio = false;
  const double step = majorStep(numTicks, tickLower, tickUpper, &ratio);

  // A render limit at least a full step beyond the nice ticks is shown as a
  // tick of its own.
  const bool extraLow = step <= renderLower - tickLower;
  int start = 0;
  if (extraLow) {
    desc.incrementNumTicksInRange(axis);
    start = desc.getOffsetToGoodTick(axis);
  }
  const bool extraHigh = step <= renderUpper - tickUpper;
  if (extraHigh) desc.incrementNumTicksInRange(axis);

  // The record holds what the descriptor counts; room is made for every value
  // written even when the descriptor counts fewer.
  const int reported = desc.getNumTicksInRange(axis);
  const int needed = numTicks + (extraLow ? 1 : 0) + (extraHigh ? 1 : 0);
  const int room = std::max(reported, needed);
  NReals* ticks = spare != nullptr && spare->capacity() >= room ? spare.release() : new NReals(room);
  std::fill(ticks->values, ticks->values + ticks->capacity(), std::numeric_limits<double>::quiet_NaN());
  const int shift = extraLow ? 1 : 0;
  for (int i = 0; i < numTicks; ++i) {
    const double t = start + i;
    ticks->values[i + shift] = ratio ? (t * step + 1) * tickLower : tickLower + t * step;
  }
  if (extraLow) ticks->values[0] = renderLower;
  if (extraHigh) ticks->values[numTicks + shift] = renderUpper;
  ticks->count = std::clamp(reported, 0, ticks->capacity());
  return ticks;
}

NReals* calculateTickMarkPos(AxisDescriptor& desc, AxisType axis, int numTicks, double tickLower,
                             double tickUpper, double renderLower, double renderUpper, AxisScale scale) {
  if (scale != kLogScale) {
    return detail::linearTickMarkPos(desc, axis, numTicks, tickLower, tickUpper, renderLower, renderUpper,
                                     nullptr);
  }
  if (numTicks <= 0) return new NReals(0);
  bool ratio = false;
  const double step = majorStep(numTicks, tickLower, tickUpper, &ratio);

  {
    std::unique_ptr<NReals> ticks(new NReals(std::max(numTicks, desc.getNumTicksInRange(axis))));
    const bool negative = renderLower < 0 && renderUpper < 0;
    for (int i = 0; i < numTicks; ++i) {
      const double v = negative ? -detail::pow10x(tickLower + (numTicks - 1 - i) * step)
                                : detail::pow10x(tickLower + i * step);
      if (renderLower <= v && v <= renderUpper) ticks->append(v);
    }
    return detail::finishLogTicks(desc, axis, ticks.release(), renderLower, renderUpper);
  }
}

// ---- Interfaces --------------------------------------------------------------------------------

AxisDescriptor::~AxisDescriptor() = default;

namespace test {

NullAxisDescriptor::~NullAxisDescriptor() = default;

void NullAxisDescriptor::setAxisTickData(AxisType, NReals* ticks) { delete ticks; }

}  // namespace test
}  // namespace gui_objects::tickpicker
