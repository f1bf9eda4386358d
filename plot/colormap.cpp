// Colour maps: piecewise-linear paths through a few control colours chosen
// along perceptually even steps, so equal data steps read as equal colour steps.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <stdexcept>

#include "qvgui/plot.h"

namespace qvgui::plot {

namespace {

struct Stop {
  double r, g, b;
};

// clang-format off
constexpr Stop kViridis[] = {
    {0.267, 0.005, 0.329}, {0.283, 0.141, 0.458}, {0.254, 0.265, 0.530}, {0.207, 0.372, 0.553},
    {0.164, 0.471, 0.558}, {0.128, 0.567, 0.551}, {0.135, 0.659, 0.518}, {0.267, 0.749, 0.441},
    {0.478, 0.821, 0.318}, {0.741, 0.873, 0.150}, {0.993, 0.906, 0.144}};
constexpr Stop kMagma[] = {
    {0.001, 0.000, 0.014}, {0.135, 0.069, 0.310}, {0.316, 0.071, 0.485}, {0.513, 0.148, 0.508},
    {0.716, 0.215, 0.475}, {0.904, 0.318, 0.392}, {0.987, 0.535, 0.382}, {0.996, 0.765, 0.527},
    {0.987, 0.991, 0.750}};
constexpr Stop kGray[] = {{0, 0, 0}, {1, 1, 1}};
constexpr Stop kCoolWarm[] = {
    {0.230, 0.299, 0.754}, {0.552, 0.690, 0.996}, {0.865, 0.865, 0.865}, {0.958, 0.603, 0.482},
    {0.706, 0.016, 0.150}};
// clang-format on

template <std::size_t N>
Rgb along(const Stop (&stops)[N], double t) noexcept {
  const double pos = t * static_cast<double>(N - 1);
  const std::size_t k = std::min(static_cast<std::size_t>(pos), N - 2);
  const double f = pos - static_cast<double>(k);
  const Stop& a = stops[k];
  const Stop& b = stops[k + 1];
  return Rgb{a.r + (b.r - a.r) * f, a.g + (b.g - a.g) * f, a.b + (b.b - a.b) * f};
}

}  // namespace

Rgb colorAt(ColorMap map, double t) noexcept {
  t = std::isnan(t) ? 0.0 : std::clamp(t, 0.0, 1.0);
  switch (map) {
    case ColorMap::Viridis:
      return along(kViridis, t);
    case ColorMap::Magma:
      return along(kMagma, t);
    case ColorMap::Gray:
      return along(kGray, t);
    case ColorMap::CoolWarm:
      return along(kCoolWarm, t);
  }
  return along(kViridis, t);
}

ColorMap colorMapByName(const std::string& name) {
  std::string n(name);
  std::transform(n.begin(), n.end(), n.begin(), [](unsigned char ch) { return std::tolower(ch); });
  if (n == "viridis") return ColorMap::Viridis;
  if (n == "magma") return ColorMap::Magma;
  if (n == "gray" || n == "grey") return ColorMap::Gray;
  if (n == "coolwarm") return ColorMap::CoolWarm;
  throw std::invalid_argument("unknown colour map '" + name + "' (viridis, magma, gray, coolwarm)");
}

}  // namespace qvgui::plot
