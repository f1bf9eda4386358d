// Minor tick positions between (and beyond) the major ticks of an axis.
//
// Linear axes: the major step is the most frequent gap between neighbouring
// major ticks that is a nice number (render limits shown as extra major ticks
// sit at odd distances and do not set it). It is split into `linearSubdivisions`
// intervals, by default 4 for a step of 2 times a power of ten and 5 for 1 or
// 5 times one. Minor ticks lie on that grid, anchored at a major tick, off the
// major grid, within the render limits.
// Logarithmic axes (magnitudes; negated for a negative axis): with a major
// tick at every decade, 2..9 times each decade; with majors every few decades,
// the decades in between; with non-decade majors, every m * 10^k (m = 1..9)
// that is not a major tick. Always within the render limits.
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "dataspace/ticks_p.h"

namespace gui_objects::tickpicker {
namespace {

// Fills out[0 .. capacity) ascending; returns how many were written.
class MinorWriter {
 public:
  MinorWriter(double* out, int capacity) : out_(out), capacity_(capacity) {}
  bool full() const noexcept { return written_ >= capacity_; }
  void put(double v) noexcept {
    if (!full()) out_[written_++] = v;
  }

 private:
  double* out_;
  int capacity_;
  int written_ = 0;
};

int niceSubdivisions(double step) noexcept {
  const double mantissa = step / std::pow(10.0, std::floor(std::log10(step)));
  return std::fabs(mantissa - 2.0) < 0.5 ? 4 : 5;
}

bool isNiceGap(double gap) noexcept {
  const double mantissa = gap / std::pow(10.0, std::floor(std::log10(gap)));
  for (double nice : {1.0, 2.0, 5.0, 10.0}) {
    if (std::fabs(mantissa - nice) <= 1e-9 * nice) return true;
  }
  return false;
}

void linearMinors(const std::vector<double>& majors, double lo, double hi, int subdivisions, MinorWriter& w) {
  // The major step: the most frequent nice gap (the larger on a tie), so that
  // render limits shown as extra ticks at odd distances do not set it; without
  // any nice gap, the smallest gap.
  double step = std::numeric_limits<double>::infinity();
  double anchor = majors.front();
  int bestVotes = 0;
  for (std::size_t i = 1; i < majors.size(); ++i) {
    const double gap = majors[i] - majors[i - 1];
    if (!(gap > 0) || !isNiceGap(gap)) continue;
    int votes = 0;
    for (std::size_t j = 1; j < majors.size(); ++j) {
      if (std::fabs(majors[j] - majors[j - 1] - gap) <= 1e-9 * gap) ++votes;
    }
    if (votes > bestVotes || (votes == bestVotes && gap > step * (1 + 1e-9))) {
      bestVotes = votes;
      step = gap;
      anchor = majors[i];
    }
  }
  if (bestVotes == 0) {
    for (std::size_t i = 1; i < majors.size(); ++i) {
      const double gap = majors[i] - majors[i - 1];
      if (gap > 0 && gap < step) {
        step = gap;
        anchor = majors[i];
      }
    }
  }
  if (!std::isfinite(step)) return;
  const int sub = subdivisions > 0 ? subdivisions : niceSubdivisions(step);
  if (sub < 2) return;
  const double d = step / sub;
  const double iFirst = std::ceil((lo - anchor) / d - 1e-9);
  const double iLast = std::floor((hi - anchor) / d + 1e-9);
  // Grid indices beyond 2^53 no longer step by one; no sensible axis gets there.
  if (!(iFirst <= iLast) || !(std::fabs(iFirst) < 0x1p52) || !(std::fabs(iLast) < 0x1p52)) return;
  // Off the major grid a minor lands on a major only by rounding, a few times
  // per major; more often than that the subdivision is finer than the doubles
  // near the anchor, every position rounds onto a major and the walk would
  // never write anything, so it stops.
  std::size_t onMajorLeft = 4 * majors.size() + 4;
  for (double i = iFirst; i <= iLast && !w.full(); ++i) {
    if (std::fmod(i, sub) == 0) continue;  // on the major grid
    const double v = anchor + i * d;
    const bool onMajor =
        std::any_of(majors.begin(), majors.end(), [&](double m) { return std::fabs(m - v) <= 1e-9 * step; });
    if (!onMajor) {
      w.put(v);
    } else if (--onMajorLeft == 0) {
      break;
    }
  }
}

// Magnitude minors in [lo, hi] (0 < lo < hi), ascending.
std::vector<double> logMinors(const std::vector<double>& majors, double lo, double hi) {
  std::vector<double> out;
  auto isDecade = [](double v) {
    return v > 0 && v == detail::pow10i(static_cast<int>(std::lround(std::log10(v))));
  };
  const bool decades = std::all_of(majors.begin(), majors.end(), isDecade);
  int decadeStep = 1;
  if (decades && majors.size() >= 2) {
    // By exponents: the ratio of the extreme decades overflows.
    decadeStep = static_cast<int>(std::lround(std::log10(majors[1])) - std::lround(std::log10(majors[0])));
  }
  const int kLo = static_cast<int>(std::floor(std::log10(lo))) - 1;
  const int kHi = static_cast<int>(std::ceil(std::log10(hi))) + 1;
  const std::size_t limit = 100000;  // no axis shows more; guards absurd ranges
  auto onMajor = [&](double v) {
    return std::any_of(majors.begin(), majors.end(), [&](double m) { return std::fabs(m - v) <= 1e-12 * m; });
  };
  for (int k = kLo; k <= kHi && out.size() < limit; ++k) {
    const double p = detail::pow10i(k);
    if (decades && decadeStep > 1) {
      if (p >= lo && p <= hi && !onMajor(p)) out.push_back(p);
      continue;
    }
    for (int m = decades ? 2 : 1; m <= 9; ++m) {
      const double v = m * p;
      if (v >= lo && v <= hi && !onMajor(v)) out.push_back(v);
    }
  }
  return out;
}

}  // namespace

void calculateMinorTickMarkPos(AxisDescriptor& desc, AxisType axis, double* majorTicks, int numMajor,
                               double* out, const TickGeometryDescriptor& geometry, int capacity) {
  if (out == nullptr || capacity <= 0) return;
  std::fill(out, out + capacity, std::numeric_limits<double>::quiet_NaN());
  desc.setMinorTickSpacing(axis, geometry.scale);
  if (majorTicks == nullptr || numMajor <= 0) return;

  std::vector<double> majors;
  for (int i = 0; i < numMajor; ++i) {
    if (std::isfinite(majorTicks[i])) majors.push_back(majorTicks[i]);
  }
  if (majors.empty()) return;
  std::sort(majors.begin(), majors.end());
  double lo = geometry.renderLower;
  double hi = geometry.renderUpper;
  if (!(lo < hi)) {
    // No usable render limits: stay between the outer major ticks.
    lo = majors.front();
    hi = majors.back();
  }
  MinorWriter writer(out, capacity);

  if (geometry.scale != kLogScale) {
    linearMinors(majors, lo, hi, geometry.linearSubdivisions, writer);
    return;
  }
  const bool negative = majors.back() < 0;
  std::vector<double> magnitudes;
  for (double m : majors) {
    if (negative ? m < 0 : m > 0) magnitudes.push_back(std::fabs(m));
  }
  if (magnitudes.empty()) return;
  std::sort(magnitudes.begin(), magnitudes.end());
  double mLo = negative ? -hi : lo;
  double mHi = negative ? -lo : hi;
  if (!(mLo > 0)) mLo = magnitudes.front() / 10;
  // A decade below the smallest subnormal is no longer a double.
  if (!(mLo > 0)) mLo = std::numeric_limits<double>::denorm_min();
  if (!(mHi > mLo) || !std::isfinite(mHi)) return;
  std::vector<double> minors = logMinors(magnitudes, mLo, mHi);
  if (negative) {
    for (auto it = minors.rbegin(); it != minors.rend(); ++it) writer.put(-*it);
  } else {
    for (double v : minors) writer.put(v);
  }
}

}  // namespace gui_objects::tickpicker
