// Contour tracing: exact answers on planes, pyramids, saddles and holes, the
// contour matrix, interrupts, and a property check against a slow reference.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "qvgui/surface.h"
#include "qvhost/testing.h"

namespace {

using namespace gui_objects;
using Points = std::vector<Real_point>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Line {
  double level;
  Points points;
};

// A grid in the engine's layout: z column-major, row i at y[rows - 1 - i].
struct Grid {
  int rows = 0;
  int columns = 0;
  std::vector<double> x, y, z;

  double& at(int i, int j) { return z[static_cast<std::size_t>(j) * rows + i]; }
  double at(int i, int j) const { return z[static_cast<std::size_t>(j) * rows + i]; }
  double rowY(int i) const { return y[rows - 1 - i]; }
};

template <typename F>
Grid gridOf(std::vector<double> x, std::vector<double> y, F f) {
  Grid g{static_cast<int>(y.size()), static_cast<int>(x.size()), std::move(x), std::move(y), {}};
  g.z.resize(static_cast<std::size_t>(g.rows) * g.columns);
  for (int j = 0; j < g.columns; ++j)
    for (int i = 0; i < g.rows; ++i) g.at(i, j) = f(g.x[j], g.rowY(i));
  return g;
}

// Unit spacing from (x0, y0).
Grid makeGrid(int rows, int columns, double (*f)(double x, double y), double x0 = 0, double y0 = 0) {
  std::vector<double> x(columns), y(rows);
  std::iota(x.begin(), x.end(), x0);
  std::iota(y.begin(), y.end(), y0);
  return gridOf(std::move(x), std::move(y), f);
}

Grid withZ(Grid g, std::vector<double> z) {
  g.z = std::move(z);
  return g;
}

Grid withHole(Grid g, int i, int j) {
  g.at(i, j) = kNaN;
  return g;
}

std::pair<double, double> dataRange(const Grid& g) {
  double lo = kInf, hi = -kInf;
  for (double v : g.z)
    if (!std::isnan(v)) lo = std::min(lo, v), hi = std::max(hi, v);
  return {lo, hi};
}

// d holds n columns of (level, count) headers each followed by count points.
std::vector<Line> parse(const double* d, std::size_t n) {
  std::vector<Line> lines;
  for (std::size_t c = 0; c < n;) {
    Line line{d[2 * c], {}};
    const auto count = static_cast<std::size_t>(d[2 * c + 1]);
    EXPECT_GT(count, 0u);
    EXPECT_LE(c + 1 + count, n);
    for (std::size_t k = 1; k <= count && c + k < n; ++k)
      line.points.push_back({d[2 * (c + k)], d[2 * (c + k) + 1]});
    lines.push_back(line);
    c += count + 1;
  }
  return lines;
}

std::vector<double> plot(const Grid& g, const std::vector<double>& levels, double zmin, double zmax,
                         int workspace) {
  ContourEngine engine(g.rows, g.columns);
  engine.allocWorkSpace(workspace);
  engine.setXYZPtrsAndZMinMax(g.x.data(), g.y.data(), g.z.data(), zmin, zmax);
  ContourResult result;
  EXPECT_NO_THROW(engine.plotContours(levels.data(), static_cast<int>(levels.size()), result));
  zrArray_tag* m = result.release();
  if (m == nullptr) return {};
  EXPECT_EQ(zrGetM(m), 2u);
  std::vector<double> v(zrGetPr(m), zrGetPr(m) + 2 * zrGetN(m));
  zrDestroyArray(m);
  return v;
}

std::vector<Line> trace(const Grid& g, const std::vector<double>& levels, double zmin, double zmax,
                        int workspace = 100) {
  const std::vector<double> v = plot(g, levels, zmin, zmax, workspace);
  return parse(v.data(), v.size() / 2);
}

// ---- Exact answers ---------------------------------------------------------------

// z = |x| + |y| with 0 on the grid: interpolation is exact, so every level is
// one closed diamond.
TEST(ContourEngine, PyramidGivesClosedDiamonds) {
  const Grid g = makeGrid(
      9, 11, [](double x, double y) { return std::fabs(x) + std::fabs(y); }, -5, -4);
  const std::vector<double> levels{0.5, 1.7, 3.25};
  const std::vector<Line> lines = trace(g, levels, 0.0, 9.0);
  ASSERT_EQ(lines.size(), levels.size());
  for (std::size_t k = 0; k < lines.size(); ++k) {
    SCOPED_TRACE(levels[k]);
    const Line& line = lines[k];
    EXPECT_EQ(line.level, levels[k]);
    ASSERT_GE(line.points.size(), 5u);
    EXPECT_EQ(line.points.front().x, line.points.back().x);
    EXPECT_EQ(line.points.front().y, line.points.back().y);
    for (const Real_point& p : line.points) EXPECT_NEAR(std::fabs(p.x) + std::fabs(p.y), levels[k], 1e-12);
    // A diamond of radius r crosses 2 * (2 floor(r) + 1) edges in each direction,
    // plus the repeated start point.
    EXPECT_EQ(line.points.size(), static_cast<std::size_t>(8 * std::floor(levels[k]) + 4) + 1);
  }
}

// A vertical line at x through every row, walking from row 0 downwards.
Points column(double x, int rows) {
  Points p;
  for (int i = rows - 1; i >= 0; --i) p.push_back({x, static_cast<double>(i)});
  return p;
}

TEST(ContourEngine, ExactLines) {
  const Grid square = makeGrid(2, 2, [](double, double) { return 0.0; });
  const Grid plane6 = makeGrid(6, 5, [](double x, double) { return x; });
  const Grid hole = withHole(makeGrid(5, 5, [](double x, double) { return x; }), 2, 2);
  const Grid ridge = withHole(makeGrid(5, 5, [](double x, double) { return -std::fabs(x - 2); }), 2, 2);
  // On the 2 x 2 saddle with corners 0, 1, 1, 0 the centre average (0.5)
  // decides whether the high or the low corners are joined.
  const Grid saddle = withZ(square, {0, 1, 1, 0});
  const Grid diagonal = makeGrid(4, 4, [](double x, double y) { return x + y; });
  using Expected = std::vector<std::pair<double, Points>>;
  struct Case {
    const char* label;
    Grid grid;
    std::vector<double> levels;
    double zmin, zmax, tol;
    Expected expected;
  };
  // clang-format off
  const Case cases[] = {
      {"plane, between columns", plane6, {1.25, 2.5}, 0, 4, 0,
       {{1.25, column(1.25, 6)}, {2.5, column(2.5, 6)}}},
      {"plane, on a grid value (low end open)", plane6, {3}, 0, 4, 0, {{3, column(3, 6)}}},
      {"plane, repeated level traced once", plane6, {1.5, 1.5, 1.5}, 0, 4, 0, {{1.5, column(1.5, 6)}}},
      {"plane, repeat only counts when adjacent", plane6, {1.5, 2.5, 1.5}, 0, 4, 0,
       {{1.5, column(1.5, 6)}, {2.5, column(2.5, 6)}, {1.5, column(1.5, 6)}}},
      {"plane, outside the data range adds nothing", plane6, {-1, 4 + 1e-9, 9}, 0, 4, 0, {}},
      {"plane, the range ends are inclusive", plane6, {4}, 0, 4, 0, {{4, column(4, 6)}}},
      {"plane, level equal to zmin is kept", plane6, {0}, 0, 4, 0, {{0, column(0, 6)}}},
      {"plane, a grid minimum that is not zmin is lost", plane6, {0}, -1, 4, 0, {}},
      {"saddle, centre not above the level: high corners cut off", saddle, {0.5}, 0, 1, 1e-15,
       {{0.5, {{0.5, 1}, {1, 0.5}}}, {0.5, {{0.5, 0}, {0, 0.5}}}}},
      {"saddle, centre above the level: low corners cut off", saddle, {0.4}, 0, 1, 1e-15,
       {{0.4, {{0.4, 1}, {0, 0.6}}}, {0.4, {{0.6, 0}, {1, 0.4}}}}},
      {"saddle, centre below the level", saddle, {0.75}, 0, 1, 1e-15,
       {{0.75, {{0.75, 1}, {1, 0.75}}}, {0.75, {{0.25, 0}, {0, 0.25}}}}},
      {"+inf on the right: crossing hugs the finite corner", withZ(square, {0, 0, kInf, kInf}), {1}, -10, 10,
       1e-12, {{1, {{0, 1}, {0, 0}}}}},
      {"-inf on the left: crossing hugs the finite corner", withZ(square, {-kInf, -kInf, 0, 0}), {-1}, -10, 10,
       1e-12, {{-1, {{1, 1}, {1, 0}}}}},
      // Both pieces start beside the hole: holes are tried first.
      {"a hole cuts the line through it in two", hole, {1.5}, 0, 4, 0,
       {{1.5, {{1.5, 3}, {1.5, 4}}}, {1.5, {{1.5, 1}, {1.5, 0}}}}},
      // In the order of the neighbours table: above-left, above-right, below-right, below-left.
      {"a ridge through a hole gives four pieces", ridge, {-0.5}, -2, 0, 0,
       {{-0.5, {{1.5, 3}, {1.5, 4}}}, {-0.5, {{2.5, 3}, {2.5, 4}}},
        {-0.5, {{2.5, 1}, {2.5, 0}}}, {-0.5, {{1.5, 1}, {1.5, 0}}}}},
      {"a level clear of the hole's boxes is untouched", hole, {3.5}, 0, 4, 0, {{3.5, column(3.5, 5)}}},
      // Corner crossings on two edges in a row are stored once.
      {"a level through grid points", diagonal, {3}, 0, 6, 0, {{3, {{3, 0}, {2, 1}, {1, 2}, {0, 3}}}}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const std::vector<Line> lines = trace(c.grid, c.levels, c.zmin, c.zmax);
    ASSERT_EQ(lines.size(), c.expected.size());
    for (std::size_t k = 0; k < lines.size(); ++k) {
      const Points& expected = c.expected[k].second;
      EXPECT_EQ(lines[k].level, c.expected[k].first) << "line " << k;
      ASSERT_EQ(lines[k].points.size(), expected.size()) << "line " << k;
      for (std::size_t p = 0; p < expected.size(); ++p) {
        EXPECT_NEAR(lines[k].points[p].x, expected[p].x, c.tol) << "line " << k << " point " << p;
        EXPECT_NEAR(lines[k].points[p].y, expected[p].y, c.tol) << "line " << k << " point " << p;
      }
    }
  }
}

TEST(ContourEngine, NothingHappensWithoutSetUp) {
  const Grid g = makeGrid(4, 4, [](double x, double y) { return x * y; });
  const double level = 2.0;
  struct Case {
    const char* label;
    bool workspace, arrays;
    int rows, columns;
  };
  // clang-format off
  const Case cases[] = {
      {"no workspace", false, true, 4, 4}, {"no arrays", true, false, 4, 4},
      {"a single row has no boxes", true, true, 1, 4}, {"a single column has no boxes", true, true, 4, 1},
      {"negative size", true, true, -3, 4},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    ContourEngine engine(c.rows, c.columns);
    if (c.workspace) engine.allocWorkSpace(10);
    if (c.arrays) engine.setXYZPtrsAndZMinMax(g.x.data(), g.y.data(), g.z.data(), 0.0, 9.0);
    ContourResult result;
    engine.plotContours(&level, 1, result);
    EXPECT_TRUE(result.isEmpty());
  }
}

// A workspace of one or two points must grow on the way, keeping the line.
TEST(ContourEngine, TinyWorkspaceGivesSameLines) {
  const Grid g = makeGrid(30, 20, [](double x, double y) { return std::sin(0.3 * x) + std::cos(0.2 * y); });
  const std::vector<double> levels{-0.5, 0.1, 0.9};
  const std::vector<double> reference = plot(g, levels, -2.0, 2.0, 4096);
  ASSERT_FALSE(reference.empty());
  for (int workspace : {0, 1, 2, 3, 17}) {
    SCOPED_TRACE(workspace);
    EXPECT_EQ(plot(g, levels, -2.0, 2.0, workspace), reference);
  }
}

TEST(ContourEngine, InterruptStopsQuietlyKeepingWholeLines) {
  const Grid g = makeGrid(40, 40, [](double x, double y) { return std::sin(0.4 * x) * std::cos(0.3 * y); });
  const std::vector<double> levels{-0.6, -0.3, 0.0, 0.3, 0.6};
  auto run = [&](std::uint64_t after, bool pendingBefore) {
    utSetInterruptAfterQueries(after);
    utSetInterruptPending(pendingBefore);
    std::vector<double> v = plot(g, levels, -1.0, 1.0, 64);
    utSetInterruptAfterQueries(0);
    utSetInterruptPending(false);
    return v;
  };
  const std::vector<double> full = run(0, false);
  ASSERT_FALSE(full.empty());

  EXPECT_TRUE(run(0, true).empty()) << "pending before the call";
  std::size_t previous = 0;
  int partial = 0;
  for (std::uint64_t after : {1u, 2u, 5u, 10u, 20u, 50u, 100u, 200u, 400u, 800u, 1600u, 3200u, 1000000u}) {
    SCOPED_TRACE(after);
    const std::vector<double> part = run(after, false);
    // What is kept is a run of complete lines from the start of the full result.
    ASSERT_LE(part.size(), full.size());
    if (!part.empty() && part.size() < full.size()) ++partial;
    EXPECT_TRUE(std::equal(part.begin(), part.end(), full.begin()));
    EXPECT_NO_FATAL_FAILURE(parse(part.data(), part.size() / 2));
    EXPECT_GE(part.size(), previous);
    previous = part.size();
  }
  EXPECT_GE(partial, 2) << "interrupts part-way keep the lines already traced";
  EXPECT_EQ(previous, full.size()) << "an interrupt that never comes changes nothing";
}

TEST(ContourResult, AppendsHeaderAndPointColumns) {
  ContourResult result;
  result.append(1.0, 0, nullptr);
  EXPECT_TRUE(result.isEmpty());

  // Enough lines to cross several 256-double blocks.
  std::vector<double> expected;
  std::mt19937 rng(7);
  for (int line = 0; line < 40; ++line) {
    const int count = 1 + static_cast<int>(rng() % 90);
    Points pts(count);
    for (int k = 0; k < count; ++k) pts[k] = {line + 0.001 * k, -k - 0.5};
    result.append(0.25 * line, count, pts.data());
    expected.insert(expected.end(), {0.25 * line, static_cast<double>(count)});
    for (const Real_point& p : pts) expected.insert(expected.end(), {p.x, p.y});
    EXPECT_FALSE(result.isEmpty());
    if (line == 20) {
      // Halfway, the matrix and its reserve travel out and back.
      ContourResult moved(std::move(result));
      result = std::move(moved);
      EXPECT_TRUE(moved.isEmpty());  // NOLINT(bugprone-use-after-move)
    }
  }
  zrArray_tag* m = result.release();
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(zrGetM(m), 2u);
  ASSERT_EQ(2 * zrGetN(m), expected.size());
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), zrGetPr(m)));
  zrDestroyArray(m);

  // Released: holds nothing, appends are ignored, a second release is null.
  EXPECT_TRUE(result.isEmpty());
  const Real_point p{1, 2};
  result.append(1.0, 1, &p);
  EXPECT_TRUE(result.isEmpty());
  EXPECT_EQ(result.release(), nullptr);
}

// ---- Property check against a slow reference ---------------------------------------------

// Every edge the level crosses, by the half-open rule, with its interpolated
// point. Edge ids: along i (column c, rows i..i+1) = 2*(c*rows + i); along j
// (row r, columns j..j+1) = 2*(j*rows + r) + 1.
struct RefCrossing {
  long id;
  Real_point p;
};

std::vector<RefCrossing> referenceCrossings(const Grid& g, double level, double zmin) {
  std::vector<RefCrossing> out;
  auto crosses = [&](double a, double b) {
    if (a == b) return false;
    const double lo = std::min(a, b), hi = std::max(a, b);
    return level == zmin ? lo <= level : (lo < level && level <= hi);
  };
  auto lerp = [&](double p0, double p1, double a, double b) {
    return p0 + (level - a) / (b - a) * (p1 - p0);
  };
  for (int c = 0; c < g.columns; ++c)
    for (int i = 0; i + 1 < g.rows; ++i) {
      const double a = g.at(i, c), b = g.at(i + 1, c);
      if (crosses(a, b))
        out.push_back({2L * (c * g.rows + i), {g.x[c], lerp(g.rowY(i), g.rowY(i + 1), a, b)}});
    }
  for (int j = 0; j + 1 < g.columns; ++j)
    for (int r = 0; r < g.rows; ++r) {
      const double a = g.at(r, j), b = g.at(r, j + 1);
      if (crosses(a, b))
        out.push_back({2L * (j * g.rows + r) + 1, {lerp(g.x[j], g.x[j + 1], a, b), g.rowY(r)}});
    }
  return out;
}

// Boxes (i, j) beside an edge, as i*columns + j.
std::vector<long> boxesOf(long id, const Grid& g) {
  std::vector<long> boxes;
  const long cell = id / 2, a = cell / g.rows, b = cell % g.rows;
  if (id % 2 == 0) {  // a = column, b = row
    if (a > 0) boxes.push_back(b * g.columns + a - 1);
    if (a < g.columns - 1) boxes.push_back(b * g.columns + a);
  } else {  // a = column, b = row of a horizontal edge
    if (b > 0) boxes.push_back((b - 1) * g.columns + a);
    if (b < g.rows - 1) boxes.push_back(b * g.columns + a);
  }
  return boxes;
}

TEST(ContourEngine, RandomSmoothGridsMatchReference) {
  std::mt19937 rng(20240521);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int trial = 0; trial < 30; ++trial) {
    SCOPED_TRACE(trial);
    const int rows = 5 + static_cast<int>(rng() % 30), columns = 5 + static_cast<int>(rng() % 30);
    // Irregular, increasing coordinates.
    std::vector<double> xs, ys;
    double s = -3.0;
    for (int j = 0; j < columns; ++j) xs.push_back(s += 0.05 + unit(rng));
    s = -2.0;
    for (int k = 0; k < rows; ++k) ys.push_back(s += 0.05 + unit(rng));
    const double fx = 0.2 + unit(rng), fy = 0.2 + unit(rng), ph = 6 * unit(rng), w = unit(rng);
    const Grid g = gridOf(xs, ys, [&](double x, double y) {
      return std::sin(fx * x + ph) * std::cos(fy * y) + w * std::exp(-0.1 * (x * x + y * y));
    });
    const auto [lo, hi] = dataRange(g);
    std::vector<double> levels;
    for (int k = 0; k < 6; ++k) levels.push_back(lo + (hi - lo) * unit(rng));
    levels.push_back(lo);  // the zmin rule

    const std::vector<Line> lines = trace(g, levels, lo, hi, 8);
    for (double level : levels) {
      SCOPED_TRACE(level);
      const std::vector<RefCrossing> ref = referenceCrossings(g, level, lo);
      std::vector<bool> seen(ref.size(), false);
      for (const Line& line : lines) {
        if (line.level != level) continue;
        long previousEdge = -1;
        for (const Real_point& p : line.points) {
          // The point must be the crossing of a reference edge; at zmin the
          // edges around a grid minimum all cross at that grid point.
          long edge = -1;
          int matches = 0;
          for (std::size_t k = 0; k < ref.size(); ++k) {
            const double tol = 1e-9 * (1 + std::fabs(ref[k].p.x) + std::fabs(ref[k].p.y));
            if (std::fabs(ref[k].p.x - p.x) <= tol && std::fabs(ref[k].p.y - p.y) <= tol) {
              edge = ref[k].id;
              seen[k] = true;
              ++matches;
            }
          }
          ASSERT_NE(edge, -1) << "point (" << p.x << ", " << p.y << ") is on no crossed edge";
          if (matches > 1) edge = -1;
          if (previousEdge != -1 && edge != -1 && previousEdge != edge) {
            // Consecutive points share a box.
            const std::vector<long> a = boxesOf(previousEdge, g), b = boxesOf(edge, g);
            EXPECT_TRUE(std::any_of(a.begin(), a.end(),
                                    [&](long box) { return std::find(b.begin(), b.end(), box) != b.end(); }));
          }
          previousEdge = edge;
        }
      }
      for (std::size_t k = 0; k < ref.size(); ++k)
        EXPECT_TRUE(seen[k]) << "crossed edge " << ref[k].id << " in no line";
    }
  }
}

}  // namespace
