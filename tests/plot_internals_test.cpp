// The figure layer's inner pieces: band clipping against a sampled reference,
// contour lines of a linear field, tick label text and TeX-subset runs.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "plot/plot_p.h"
#include "plot/render_p.h"
#include "qvgui/dataspace.h"

namespace {

using namespace qvgui::plot;
using namespace qvgui::plot::detail;

double area(const std::vector<Pt>& p) {
  double a = 0;
  for (std::size_t k = 0; k < p.size(); ++k) {
    const Pt& u = p[k];
    const Pt& v = p[(k + 1) % p.size()];
    a += u.x * v.y - v.x * u.y;
  }
  return std::fabs(a) / 2;
}

// On a triangle the interpolated field is exactly linear, so the clipped part
// must match the share of sample points whose value lies in the band, and
// every vertex of it must lie in the band.
TEST(PlotBands, ClippedTriangleMatchesSampledBand) {
  std::mt19937_64 rng(4242);
  std::uniform_real_distribution<double> coord(-10, 10), value(-3, 3);
  constexpr int kSamples = 300;
  for (int trial = 0; trial < 300; ++trial) {
    const std::vector<Pt> tri = {
        {coord(rng), coord(rng)}, {coord(rng), coord(rng)}, {coord(rng), coord(rng)}};
    const double whole = area(tri);
    if (whole < 1) continue;
    const std::vector<double> v = {value(rng), value(rng), value(rng)};
    double lo = value(rng);
    double hi = value(rng);
    if (lo > hi) std::swap(lo, hi);
    if (trial % 5 == 0) lo = -INFINITY;  // the lowest band is open below
    const std::vector<Pt> piece = clipToBand(tri, v, lo, hi);
    // Slow reference: barycentric samples at cell centres.
    int inside = 0;
    int total = 0;
    for (int a = 0; a < kSamples; ++a) {
      for (int b = 0; a + b < kSamples; ++b) {
        const double s = (a + 1.0 / 3) / kSamples;
        const double t = (b + 1.0 / 3) / kSamples;
        const double f = v[0] + s * (v[1] - v[0]) + t * (v[2] - v[0]);
        inside += f >= lo && f < hi;
        ++total;
      }
    }
    const double want = whole * inside / total;
    SCOPED_TRACE(trial);
    EXPECT_NEAR(area(piece), want, 0.02 * whole + 1e-9);
    for (const Pt& p : piece) {
      // Barycentric coordinates of p give its value; it must lie in the band.
      const double det =
          (tri[1].x - tri[0].x) * (tri[2].y - tri[0].y) - (tri[2].x - tri[0].x) * (tri[1].y - tri[0].y);
      const double s =
          ((p.x - tri[0].x) * (tri[2].y - tri[0].y) - (tri[2].x - tri[0].x) * (p.y - tri[0].y)) / det;
      const double t =
          ((tri[1].x - tri[0].x) * (p.y - tri[0].y) - (p.x - tri[0].x) * (tri[1].y - tri[0].y)) / det;
      const double f = v[0] + s * (v[1] - v[0]) + t * (v[2] - v[0]);
      EXPECT_GE(f, lo - 1e-9);
      EXPECT_LE(f, hi + 1e-9);
      EXPECT_GE(s, -1e-9);
      EXPECT_GE(t, -1e-9);
      EXPECT_LE(s + t, 1 + 1e-9);
    }
  }
}

// Linear interpolation is exact on a plane, so every traced point of
// z = x + 2y lies on its level line; uneven x and y spacing and a grid with
// more rows than columns catch a row or column taken from the wrong end.
TEST(PlotContours, LinearFieldLinesLieOnTheirLevels) {
  GridData g;
  g.x = {0, 0.5, 2, 3};
  g.y = {-1, 0, 0.25, 1, 4};
  g.rows = g.y.size();
  g.columns = g.x.size();
  for (double y : g.y)
    for (double x : g.x) g.z.push_back(x + 2 * y);
  const std::vector<double> levels = {-1, 0.7, 3, 8.5};
  const std::vector<IsoLine> lines = traceContours(g, levels);
  ASSERT_EQ(lines.size(), levels.size());
  for (const IsoLine& line : lines) {
    SCOPED_TRACE(line.level);
    ASSERT_GE(line.points.size(), 2u);
    for (const Pt& p : line.points) {
      EXPECT_NEAR(p.x + 2 * p.y, line.level, 1e-9);
      EXPECT_GE(p.x, 0);
      EXPECT_LE(p.x, 3);
      EXPECT_GE(p.y, -1);
      EXPECT_LE(p.y, 4);
    }
  }
}

TEST(PlotContours, NiceLevelsStayInsideTheDataAscending) {
  const std::vector<double> z = {-0.37, 2.9, 1.1, std::nan(""), 0.2, INFINITY};
  for (int count : {2, 5, 10, 20}) {
    SCOPED_TRACE(count);
    const std::vector<double> l = niceLevels(z, count);
    ASSERT_GE(l.size(), 2u);
    EXPECT_LE(static_cast<int>(l.size()), count + 2);
    for (std::size_t k = 0; k < l.size(); ++k) {
      EXPECT_GE(l[k], -0.37);
      EXPECT_LE(l[k], 2.9);
      if (k > 0) {
        EXPECT_GT(l[k], l[k - 1]);
      }
    }
  }
  EXPECT_EQ(niceLevels({1.0, 1.0}, 5), std::vector<double>{1.0});
  EXPECT_TRUE(niceLevels({std::nan("")}, 5).empty());
}

// Against dense sampling: the pieces hold exactly the length of the line
// that lies outside the circle, and nothing of what lies inside.
TEST(PlotContours, LineBreaksExactlyOnTheLabelCircle) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> coord(-10, 10);
  const auto length = [](const std::vector<Pt>& run) {
    double sum = 0;
    for (std::size_t k = 1; k < run.size(); ++k)
      sum += std::hypot(run[k].x - run[k - 1].x, run[k].y - run[k - 1].y);
    return sum;
  };
  for (int trial = 0; trial < 300; ++trial) {
    std::vector<Pt> run(1 + rng() % 8);
    for (Pt& p : run) p = {coord(rng), coord(rng)};
    if (trial % 5 == 0 && run.size() > 2) run[1] = run[2];  // a repeated vertex
    const Pt c{coord(rng) / 2, coord(rng) / 2};
    const double r = 1 + std::abs(coord(rng)) / 2;
    double outside = 0;
    for (std::size_t k = 1; k < run.size(); ++k) {
      constexpr int kSteps = 20000;
      const double seg = std::hypot(run[k].x - run[k - 1].x, run[k].y - run[k - 1].y);
      for (int i = 0; i < kSteps; ++i) {
        const double t = (i + 0.5) / kSteps;
        const double x = run[k - 1].x + t * (run[k].x - run[k - 1].x),
                     y = run[k - 1].y + t * (run[k].y - run[k - 1].y);
        if (std::hypot(x - c.x, y - c.y) > r) outside += seg / kSteps;
      }
    }
    double kept = 0;
    for (const std::vector<Pt>& piece : outsideCircle(run, c, r)) {
      ASSERT_GE(piece.size(), 2u);
      for (std::size_t k = 1; k < piece.size(); ++k) {
        const Pt mid{(piece[k].x + piece[k - 1].x) / 2, (piece[k].y + piece[k - 1].y) / 2};
        EXPECT_GE(std::hypot(mid.x - c.x, mid.y - c.y), r - 1e-9) << "trial " << trial;
      }
      kept += length(piece);
    }
    EXPECT_NEAR(kept, outside, 1e-3 * (1 + length(run))) << "trial " << trial;
  }
}

TEST(PlotTicks, LabelsByTable) {
  struct Case {
    const char* label;
    std::vector<double> ticks;
    Scale scale;
    std::vector<std::string> want;
  };
  // clang-format off
  const Case cases[] = {
      {"integers", {0, 5, 10}, Scale::Linear, {"0", "5", "10"}},
      {"halves keep one decimal", {0, 0.5, 1}, Scale::Linear, {"0", "0.5", "1.0"}},
      {"rounding noise", {0.1, 0.2, 0.30000000000000004}, Scale::Linear, {"0.1", "0.2", "0.3"}},
      {"negative zero", {-0.2, -0.0, 0.2}, Scale::Linear, {"-0.2", "0", "0.2"}},
      {"tiny values use exponents", {1e-5, 2e-5, 3e-5}, Scale::Linear, {"1e-05", "2e-05", "3e-05"}},
      {"huge values use exponents", {1e6, 2e6}, Scale::Linear, {"1e+06", "2e+06"}},
      {"decades", {0.01, 1, 100}, Scale::Log, {"10^{-2}", "10^{0}", "10^{2}"}},
      {"log but not decades", {2, 5, 10}, Scale::Log, {"2", "5", "10"}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(tickLabels(c.ticks, c.scale), c.want);
  }
}

// On the tick picker's own choices for random ranges the labels read back as
// their ticks (within a millionth of a step) and never repeat.
TEST(PlotTicks, LabelsOfPickedTicksReadBackDistinct) {
  std::mt19937_64 rng(77);
  std::uniform_real_distribution<double> mag(-6, 7), frac(0.01, 1);
  for (int i = 0; i < 2000; ++i) {
    const double scale = std::pow(10.0, mag(rng));
    double lo = (frac(rng) - 0.5) * scale;
    double hi = lo + frac(rng) * scale;
    const int n =
        gui_objects::tickpicker::calculateLinearTicks(&lo, &hi, 3, 9, gui_objects::tickpicker::kEnclosing);
    if (n < 2) continue;
    std::vector<double> ticks;
    for (int k = 0; k < n; ++k) ticks.push_back(lo + (hi - lo) * k / (n - 1));
    const std::vector<std::string> labels = tickLabels(ticks, Scale::Linear);
    const double step = (hi - lo) / (n - 1);
    for (std::size_t k = 0; k < ticks.size(); ++k) {
      ASSERT_NEAR(std::strtod(labels[k].c_str(), nullptr), ticks[k], 1e-6 * step) << labels[k];
      if (k > 0) {
        ASSERT_NE(labels[k], labels[k - 1]);
      }
    }
  }
}

struct RunWant {
  std::string bytes;
  bool symbol;
  double scale, rise;
};

TEST(PlotTex, LabelsSplitIntoRuns) {
  struct Case {
    const char* text;
    std::vector<RunWant> want;
  };
  const double s = 0.7;
  // clang-format off
  const Case cases[] = {
      {"plain text", {{"plain text", false, 1, 0}}},
      {"x^{2}", {{"x", false, 1, 0}, {"2", false, s, 0.42}}},
      {"x_10", {{"x", false, 1, 0}, {"1", false, s, -0.2}, {"0", false, 1, 0}}},
      {"\\alpha_{ij}", {{"a", true, 1, 0}, {"ij", false, s, -0.2}}},
      {"10^{-3} \\Omega", {{"10", false, 1, 0}, {"-3", false, s, 0.42}, {" ", false, 1, 0}, {"W", true, 1, 0}}},
      {"e^{-r_1^2}", {{"e", false, 1, 0}, {"-r", false, s, 0.42}, {"1", false, s * s, 0.42 - 0.2 * s},
                      {"2", false, s * s, 0.42 + 0.42 * s}}},
      {"\\{a\\}", {{"{a}", false, 1, 0}}},
      {"\\unknown x", {{"\\unknown x", false, 1, 0}}},
      {"a^", {{"a^", false, 1, 0}}},
      {"90\\circ", {{"90", false, 1, 0}, {"\xB0", true, 1, 0}}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const std::vector<TextRun> runs = layoutTex(c.text);
    ASSERT_EQ(runs.size(), c.want.size());
    for (std::size_t k = 0; k < runs.size(); ++k) {
      EXPECT_EQ(runs[k].bytes, c.want[k].bytes);
      EXPECT_EQ(runs[k].symbol, c.want[k].symbol);
      EXPECT_NEAR(runs[k].scale, c.want[k].scale, 1e-12);
      EXPECT_NEAR(runs[k].rise, c.want[k].rise, 1e-12);
    }
  }
}

}  // namespace
