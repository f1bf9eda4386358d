// Logarithmic axes: decade limits, and the pass that turns the exponent ticks
// into decade ticks a reader expects (also for sub-decade and zero-touching
// ranges).
//
// Rules of the pass after the exponent ticks of calculateTickMarkPos:
//  * Ticks that are all exact powers of ten (at least two) stay: every decade,
//    or every step-th one when calculateLogTicks thinned a long range.
//  * A range that reaches zero shows its positive side (or, with no positive
//    values, its negative side) from the smallest known data value of that
//    side (or one decade next to the other limit) to the render limit.
//  * Other ranges get the decades inside them when there are at least two,
//    thinned to the axis's largest tick count by the steps 1, 2, 5, 10, 20, ...
//    decades and kept on multiples of that step; otherwise 1-2-5 values
//    (1, 2, 5, 10, 20, ...), then 1..9 values, then the linear nice ticks of
//    the range, whichever first gives between two and the largest tick count.
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <memory>
#include <vector>

#include "dataspace/ticks_p.h"

namespace gui_objects::tickpicker {
namespace detail {
namespace {

// The smallest k with 10^k >= v, and the largest with 10^k <= v (v > 0 finite).
int ceilDecade(double v) noexcept {
  int k = static_cast<int>(std::ceil(std::log10(v)));
  while (pow10i(k - 1) >= v) --k;
  while (pow10i(k) < v) ++k;
  return k;
}
int floorDecade(double v) noexcept {
  int k = static_cast<int>(std::floor(std::log10(v)));
  while (pow10i(k + 1) <= v) ++k;
  while (pow10i(k) > v) --k;
  return k;
}

// Values m * 10^k (m from `mantissas`) inside [lo, hi], ascending.
std::vector<double> mantissaTicks(double lo, double hi, std::initializer_list<int> mantissas,
                                  std::size_t cap) {
  std::vector<double> out;
  for (int k = floorDecade(lo); k <= floorDecade(hi); ++k) {
    for (int m : mantissas) {
      const double v = m * pow10i(k);
      if (v >= lo && v <= hi) out.push_back(v);
      if (out.size() > cap) return out;
    }
  }
  return out;
}

NReals* recordOf(const std::vector<double>& values, bool negative) {
  auto* r = new NReals(static_cast<int>(values.size()));
  if (negative) {
    for (auto it = values.rbegin(); it != values.rend(); ++it) r->append(-*it);
  } else {
    for (double v : values) r->append(v);
  }
  return r;
}

// Ticks for the magnitude range [lo, hi] (0 < lo <= hi), negated when the
// axis shows negative values. Null when the range is unusable.
NReals* ticksForMagnitudes(double lo, double hi, bool negative, int maxTicks) {
  if (!(lo > 0) || !(hi >= lo) || !std::isfinite(hi)) return nullptr;
  const int kLo = ceilDecade(lo);
  const int kHi = floorDecade(hi);
  if (kHi - kLo + 1 >= 2) return decadeTicks(kLo, kHi, negative, maxTicks);
  const auto cap = static_cast<std::size_t>(maxTicks);
  std::vector<double> v = mantissaTicks(lo, hi, {1, 2, 5}, cap);
  if (v.size() >= 2 && v.size() <= cap) return recordOf(v, negative);
  v = mantissaTicks(lo, hi, {1, 2, 3, 4, 5, 6, 7, 8, 9}, cap);
  if (v.size() >= 2 && v.size() <= cap) return recordOf(v, negative);
  double first = lo;
  double last = hi;
  const int n = calculateLinearTicks(&first, &last, 2, maxTicks, kInside);
  if (n >= 2 && first >= lo && last <= hi) {
    std::vector<double> lin;
    const double step = (last - first) / (n - 1);
    for (int i = 0; i < n; ++i) lin.push_back(first + i * step);
    return recordOf(lin, negative);
  }
  return recordOf(mantissaTicks(lo, hi, {1}, cap), negative);
}

}  // namespace

double pow10x(double x) noexcept {
  if (x == std::trunc(x) && std::fabs(x) < 1000) return pow10i(static_cast<int>(x));
  return std::pow(10.0, x);
}

NReals* decadeTicks(int kLo, int kHi, bool negative, int maxTicks) {
  maxTicks = std::max(maxTicks, 2);
  const int span = kHi - kLo + 1;
  int step = 1;
  for (int scale = 1; span > 0; scale *= 10) {
    int found = 0;
    for (int m : {1, 2, 5}) {
      const int s = m * scale;
      // Decades on multiples of s inside [kLo, kHi].
      const int first = static_cast<int>(std::ceil(static_cast<double>(kLo) / s)) * s;
      const int count = first > kHi ? 0 : (kHi - first) / s + 1;
      if (count <= maxTicks) {
        found = s;
        break;
      }
    }
    if (found != 0) {
      step = found;
      break;
    }
  }
  std::vector<double> values;
  if (span > 0) {
    const int first = static_cast<int>(std::ceil(static_cast<double>(kLo) / step)) * step;
    for (int k = first; k <= kHi; k += step) values.push_back(pow10i(k));
  }
  return recordOf(values, negative);
}

NReals* finishLogTicks(AxisDescriptor& desc, AxisType axis, NReals* ticks, double renderLower,
                       double renderUpper) {
  std::unique_ptr<NReals> kept(ticks);
  int minTicks = 0;
  int maxTicks = 0;
  desc.normalized3ToNumTics(axis, &minTicks, &maxTicks);
  maxTicks = std::max(maxTicks, 2);

  NReals* replaced = nullptr;
  if (renderLower <= 0 && 0 <= renderUpper) {
    if (renderUpper > 0) {
      const double p = desc.getInnerLimit(axis, kMinPositiveData);
      const double from = (p > 0 && p < DBL_MAX) ? p : (renderUpper <= 1 ? renderUpper / 10 : 1.0);
      replaced = ticksForMagnitudes(std::min(from, renderUpper), renderUpper, false, maxTicks);
    } else if (renderLower < 0) {
      const double q = desc.getInnerLimit(axis, kMaxNegativeData);
      const double from = (q < 0 && q > -DBL_MAX) ? -q : (renderLower >= -1 ? -renderLower / 10 : 1.0);
      replaced = ticksForMagnitudes(std::min(from, -renderLower), -renderLower, true, maxTicks);
    }
    if (replaced == nullptr) replaced = new NReals(0);
    return replaced;
  }
  const bool decades = std::all_of(kept->begin(), kept->end(), [](double v) {
    const double m = std::fabs(v);
    return m > 0 && std::isfinite(m) && m == pow10i(static_cast<int>(std::lround(std::log10(m))));
  });
  if (decades && kept->count >= 2) return kept.release();
  const bool negative = renderUpper < 0;
  const double lo = negative ? -renderUpper : renderLower;
  const double hi = negative ? -renderLower : renderUpper;
  replaced = ticksForMagnitudes(lo, hi, negative, maxTicks);
  return replaced != nullptr ? replaced : kept.release();
}

}  // namespace detail

// ---- Decade limits -----------------------------------------------------------------------------

// Limits that are not positive finite numbers have no logarithm: nothing
// qualifies (0) and they are left alone.
int calculateLogTicks(double* lower, double* upper, int maxTicks, LimitType limitType) {
  if (!(*lower > 0) || !(*upper > 0) || !std::isfinite(*lower) || !std::isfinite(*upper)) return 0;
  maxTicks = detail::clampCount(maxTicks);
  double a = std::log10(*lower);
  double b = std::log10(*upper);
  const double A0 = std::trunc(a);
  const double B0 = std::trunc(b);
  double A = A0;
  double B = B0;
  int n;
  if (A != B) {
    // Widen to whole decades, with half a percent of slack so that a limit a
    // hair beyond a power of ten does not cost a whole decade.
    if (std::pow(10.0, A) > std::pow(10.0, a) * 1.005) A -= 1;
    if (std::pow(10.0, b) * 0.995 > std::pow(10.0, B)) B += 1;
    a = A;
    b = B;
    n = static_cast<int>(std::trunc(B - A + 1.5));
  } else {
    n = maxTicks - 1;
  }
  const double savedA = a;
  const double savedB = b;
  if (n > maxTicks) n = calculateLinearTicks(&a, &b, 2, maxTicks, kEnclosing);

  if (limitType == kLimitValues) {
    double lo = std::pow(10.0, a);
    double hi = std::pow(10.0, b);
    if (lo == 0) {
      lo = DBL_EPSILON * DBL_MIN;  // the smallest subnormal
      if (lo >= hi) hi = 10 * lo;
    }
    if (hi == std::numeric_limits<double>::infinity()) {
      hi = DBL_MAX;
      if (lo >= hi) lo = hi / 10;
    }
    *lower = lo;
    *upper = hi;
    return n;
  }
  const bool underflow = std::pow(10.0, a) == 0;
  const bool overflow = std::pow(10.0, b) == std::numeric_limits<double>::infinity();
  if (underflow || overflow) {
    if (n >= 4) {
      if (underflow) {
        n -= 1;
        a += (b - a) / n;
      }
      if (overflow) {
        n -= 1;
        b -= (b - a) / n;
      }
    } else {
      a = savedA;
      b = savedB;
      n = calculateLinearTicks(&a, &b, 2, maxTicks, kInside);
    }
  }
  *lower = a;
  *upper = b;
  return n;
}

}  // namespace gui_objects::tickpicker
