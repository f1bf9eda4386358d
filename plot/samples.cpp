// The sample figures: the same data for the README pictures, the golden
// images, the command-line tool and the speed comparison.
#include <cmath>
#include <stdexcept>

#include "qvgui/plot.h"

namespace qvgui::plot {

namespace {

// Two Gaussian hills of opposite sign on a gentle slope.
double hills(double x, double y) {
  return std::exp(-((x - 1) * (x - 1) + y * y)) -
         0.8 * std::exp(-((x + 1) * (x + 1) + (y - 0.5) * (y - 0.5)) / 0.7) + 0.1 * x;
}

std::vector<double> linspace(double a, double b, std::size_t n) {
  std::vector<double> v(n);
  for (std::size_t k = 0; k < n; ++k)
    v[k] = a + (b - a) * static_cast<double>(k) / static_cast<double>(n - 1);
  return v;
}

void contourSample(Figure& f) {
  const std::vector<double> x = linspace(-3, 3, 161);
  const std::vector<double> y = linspace(-2.5, 2.5, 121);
  std::vector<double> z(x.size() * y.size());
  for (std::size_t i = 0; i < y.size(); ++i)
    for (std::size_t j = 0; j < x.size(); ++j) z[i * x.size() + j] = hills(x[j], y[i]);
  Axes& ax = f.addAxes();
  const Grid g{z, y.size(), x.size(), x, y};
  const std::vector<double> levels = {-0.8, -0.6, -0.4, -0.2, 0, 0.2, 0.4, 0.6, 0.8, 1.0};
  ax.contourf(g, levels);
  ax.contour(g, levels, 0, true);
  ax.colorbar("height z");
  ax.setTitle("Two hills: z = e^{-r_1^2} - 0.8 e^{-r_2^2/0.7} + 0.1x");
  ax.setXLabel("x (m)");
  ax.setYLabel("y (m)");
}

void surfaceSample(Figure& f) {
  const std::vector<double> x = linspace(-8, 8, 49);
  const std::vector<double> y = linspace(-8, 8, 49);
  std::vector<double> z(x.size() * y.size());
  for (std::size_t i = 0; i < y.size(); ++i) {
    for (std::size_t j = 0; j < x.size(); ++j) {
      const double r = std::hypot(x[j], y[i]) + 1e-9;
      z[i * x.size() + j] = std::sin(r) / r;
    }
  }
  Axes& ax = f.addAxes(true);
  ax.surface(Grid{z, y.size(), x.size(), x, y});
  ax.setView(-37.5, 30);
  ax.setTitle("sin(r)/r, lit");
  ax.setXLabel("x");
  ax.setYLabel("y");
  ax.setZLabel("z");
  ax.colorbar();
}

void linesSample(Figure& f) {
  std::vector<double> freq(25);
  for (std::size_t k = 0; k < freq.size(); ++k)
    freq[k] = std::pow(10.0, 0.5 + 3.5 * static_cast<double>(k) / 24);
  Axes& ax = f.addAxes();
  const double cutoffs[3] = {30, 300, 3000};
  const Rgb colors[3] = {{0.0, 0.447, 0.741}, {0.85, 0.325, 0.098}, {0.466, 0.674, 0.188}};
  const Marker markers[3] = {Marker::Circle, Marker::Square, Marker::TriangleUp};
  const char* labels[3] = {"f_c = 30 Hz", "f_c = 300 Hz", "f_c = 3000 Hz"};
  for (int k = 0; k < 3; ++k) {
    std::vector<double> gain(freq.size());
    for (std::size_t i = 0; i < freq.size(); ++i) {
      const double q = freq[i] / cutoffs[k];
      gain[i] = 1.0 / (1.0 + q * q);
    }
    LineOptions o;
    o.color = colors[k];
    o.marker = markers[k];
    o.markerSizePt = 5;
    o.label = labels[k];
    ax.plot(freq, gain, o);
  }
  ax.legend();
  ax.setXScale(Scale::Log);
  ax.setYScale(Scale::Log);
  ax.setGrid(true);
  ax.setTitle("First-order low-pass filters");
  ax.setXLabel("frequency f (Hz)");
  ax.setYLabel("|H(f)|^2 = 1/(1 + (f/f_c)^2)");
}

}  // namespace

std::vector<std::string> sampleNames() { return {"contourf", "surface", "lines"}; }

Figure sampleFigure(const std::string& name, int widthPx, int heightPx, double dpi) {
  Figure f(widthPx, heightPx, dpi);
  if (name == "contourf") {
    contourSample(f);
  } else if (name == "surface") {
    surfaceSample(f);
  } else if (name == "lines") {
    linesSample(f);
  } else {
    throw std::invalid_argument("unknown sample '" + name + "' (contourf, surface, lines)");
  }
  return f;
}

}  // namespace qvgui::plot
