// Helpers shared by the linear and logarithmic halves of the tick picker.
#pragma once

#include <cmath>
#include <limits>

#include "qvgui/dataspace.h"

namespace gui_objects::tickpicker::detail {

// 10^e for integer e, the same value std::pow(10.0, e) gives, from a table:
// the picker asks for it in every candidate step, and pow dominated the cost.
// Out-of-range exponents give 0 or +infinity as pow would.
double pow10i(int e) noexcept;

// 10^x for the exponent of a tick: whole exponents come from the table (exact
// powers of ten), others from std::pow.
double pow10x(double x) noexcept;

// Decade ticks 10^k (negated when `negative`) for k = kLo .. kHi, thinned to
// at most maxTicks values by keeping only the multiples of the smallest nice
// decade step (1, 2, 5, 10, 20, ...) that fits. Appended in ascending value
// order to a new record.
NReals* decadeTicks(int kLo, int kHi, bool negative, int maxTicks);

// The logarithmic pass after the decade rule of calculateTickMarkPos: repairs
// sub-decade and zero-touching ranges (see ticks_log.cpp). Takes ownership of
// `ticks` and returns the record to hand out.
NReals* finishLogTicks(AxisDescriptor& desc, AxisType axis, NReals* ticks, double renderLower,
                       double renderUpper);

}  // namespace gui_objects::tickpicker::detail
