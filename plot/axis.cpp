// Axis limits and ticks: the data extents of the children, merged and made nice
// by the tick picker through the figure's axes object.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "plot/plot_p.h"
#include "qvgui/bridge.h"
#include "qvgui/host.h"

namespace qvgui::plot::detail {

using namespace gui_objects::tickpicker;

AxisScale AxesDescriptor::getAxisScale(AxisType a) const {
  return axis[a].scale == Scale::Log ? kLogScale : kLinearScale;
}

void AxesDescriptor::setAxisTickData(AxisType a, NReals* ticks) {
  std::unique_ptr<NReals> owned(ticks);
  axis[a].ticks.clear();
  if (owned) axis[a].ticks.assign(owned->begin(), owned->end());
}

gui_objects::DataExtents extentsOf(const std::vector<double>& values) {
  if (values.empty()) return {};
  gui_objects::ZrArrayPtr array(zrCreateDoubleMatrix(values.size(), 1));
  std::memcpy(zrGetPr(array.get()), values.data(), values.size() * sizeof(double));
  return gk::Limits::computeExtents(array.get());
}

void settleAxis(AxesDescriptor& desc, AxisType a, const gui_objects::DataExtents& e, double lengthPx,
                double labelSpacingPx) {
  AxisState& s = desc.axis[a];
  const bool log = s.scale == Scale::Log;
  double lo = 0;
  double hi = 1;
  if (s.manual) {
    lo = s.manualLimits[0];
    hi = s.manualLimits[1];
  } else if (e.initialized()) {
    lo = e.getMinValue();
    hi = e.getMaxValue();
    if (log) {
      // One sign side: the positive one when there is any, else the negative.
      if (e.containsPositives()) {
        lo = std::isnan(e.getMinPositive()) ? hi / 10 : e.getMinPositive();
      } else if (e.containsNegatives()) {
        hi = std::isnan(e.getMaxNegative()) ? lo / 10 : e.getMaxNegative();
      } else {
        lo = 1;
        hi = 10;
      }
    }
  } else if (log) {
    lo = 1;
    hi = 10;
  }
  if (lo == hi) {
    const double pad = lo == 0 ? 1 : std::fabs(lo) * 0.1;
    lo -= pad;
    hi += pad;
    if (log && lo <= 0) lo = hi / 100;
  }
  s.inner[kMaxNegativeData] = -DBL_MAX;
  s.inner[kMinPositiveData] = DBL_MAX;
  if (e.initialized()) {
    if (!std::isnan(e.getMaxNegative())) s.inner[kMaxNegativeData] = e.getMaxNegative();
    if (!std::isnan(e.getMinPositive())) s.inner[kMinPositiveData] = e.getMinPositive();
  }
  s.render[0] = lo;
  s.render[1] = hi;
  s.minTicks = 3;
  s.maxTicks = std::clamp(static_cast<int>(lengthPx / std::max(labelSpacingPx, 1.0)) + 1, 3, 11);
  nicefyLimits(desc, a);
  computeAxisTicks(desc, a, 0, 0);
  // Ticks a rounding step outside the limits would be drawn off the axis.
  const double span = s.render[1] - s.render[0];
  const double slack = log ? 1e-9 * std::fabs(s.render[1]) : 1e-9 * std::fabs(span);
  std::vector<double> kept;
  for (double t : s.ticks) {
    if (t >= s.render[0] - slack && t <= s.render[1] + slack)
      kept.push_back(std::fabs(t) < 1e-12 * std::fabs(span) ? 0.0 : t);
  }
  s.ticks.swap(kept);
}

namespace {

bool isPowerOfTen(double v, int* exponent) {
  if (!(v > 0)) return false;
  const double e = std::round(std::log10(v));
  if (std::fabs(v / std::pow(10.0, e) - 1.0) > 1e-9) return false;
  *exponent = static_cast<int>(e);
  return true;
}

}  // namespace

std::vector<std::string> tickLabels(const std::vector<double>& ticks, Scale scale) {
  std::vector<std::string> out(ticks.size());
  if (scale == Scale::Log) {
    bool allPowers = true;
    for (std::size_t k = 0; k < ticks.size(); ++k) {
      int e = 0;
      if (!isPowerOfTen(std::fabs(ticks[k]), &e)) {
        allPowers = false;
        break;
      }
      out[k] = std::string(ticks[k] < 0 ? "-" : "") + "10^{" + std::to_string(e) + "}";
    }
    if (allPowers) return out;
  }
  double largest = 0;
  for (double t : ticks) largest = std::max(largest, std::fabs(t));
  const double step = ticks.size() > 1 ? std::fabs(ticks[1] - ticks[0]) : std::max(largest, 1.0);
  // Fixed notation with the fewest decimals that keeps every label distinct
  // and true to its tick within a part in 1e6 of the step; exponents only for
  // very large or very small magnitudes.
  const bool fixed = largest < 1e6 && (largest >= 1e-4 || largest == 0);
  for (int digits = fixed ? 0 : 1; digits <= 17; ++digits) {
    bool ok = true;
    for (std::size_t k = 0; k < ticks.size() && ok; ++k) {
      char buf[64];
      std::snprintf(buf, sizeof buf, fixed ? "%.*f" : "%.*g", digits, ticks[k]);
      out[k] = buf;
      if (out[k].find_first_not_of("-0.") == std::string::npos) out[k] = "0";
      if (std::fabs(std::strtod(out[k].c_str(), nullptr) - ticks[k]) > 1e-6 * step) ok = false;
      if (k > 0 && out[k] == out[k - 1]) ok = false;
    }
    if (ok) break;
  }
  return out;
}

}  // namespace qvgui::plot::detail
