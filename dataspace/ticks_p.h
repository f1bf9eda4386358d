// Helpers shared by the linear and logarithmic halves of the tick picker.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "dataspace/ticks_pow10_p.h"
#include "qvgui/dataspace.h"

namespace gui_objects::tickpicker::detail {

// 10^e for integer e, correctly rounded (0 below the double range, +infinity
// above). A table lookup: the picker asks for it in every candidate step.
inline double pow10i(int e) noexcept {
  if (e < kPow10Min) return 0.0;
  if (e > kPow10Max) return std::numeric_limits<double>::infinity();
  return kPowersOfTen[e - kPow10Min];
}

// A caller's tick count or bias held within +-kMaxTickCount (see dataspace.h).
inline int clampCount(int n) noexcept { return std::clamp(n, -kMaxTickCount, kMaxTickCount); }

// 10^x for the exponent of a tick: whole exponents come from the table (exact
// powers of ten), others from std::pow.
double pow10x(double x) noexcept;

// Decade ticks 10^k (negated when `negative`) for k = kLo .. kHi, thinned to
// at most maxTicks values by keeping only the multiples of the smallest nice
// decade step (1, 2, 5, 10, 20, ...) that fits. Appended in ascending value
// order to a new record.
NReals* decadeTicks(int kLo, int kHi, bool negative, int maxTicks);

// calculateTickMarkPos for every scale but the logarithmic one, writing into
// `spare` when it has room for the ticks (else into a new record).
NReals* linearTickMarkPos(AxisDescriptor& desc, AxisType axis, int numTicks, double tickLower,
                          double tickUpper, double renderLower, double renderUpper,
                          std::unique_ptr<NReals> spare);

// The logarithmic pass after the decade rule of calculateTickMarkPos: repairs
// sub-decade and zero-touching ranges (see ticks_log.cpp). Takes ownership of
// `ticks` and returns the record to hand out.
NReals* finishLogTicks(AxisDescriptor& desc, AxisType axis, NReals* ticks, double renderLower,
                       double renderUpper);

}  // namespace gui_objects::tickpicker::detail
