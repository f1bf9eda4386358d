// Contour tracing: exact answers on planes, pyramids, saddles and holes, the
// contour matrix, interrupts, and a property check against a slow reference.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "qvgui/host.h"
#include "qvgui/surface.h"

namespace {

using namespace gui_objects;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Line {
  double level;
  std::vector<Real_point> points;
};

// A grid in the engine's layout: z column-major, row i at y[rows - 1 - i].
struct Grid {
  int rows = 0;
  int columns = 0;
  std::vector<double> x, y, z;

  double& at(int i, int j) { return z[static_cast<std::size_t>(j) * rows + i]; }
  double rowY(int i) const { return y[rows - 1 - i]; }
};

Grid makeGrid(int rows, int columns, double (*f)(double x, double y)) {
  Grid g;
  g.rows = rows;
  g.columns = columns;
  for (int j = 0; j < columns; ++j) g.x.push_back(j);
  for (int k = 0; k < rows; ++k) g.y.push_back(k);
  g.z.resize(static_cast<std::size_t>(rows) * columns);
  for (int j = 0; j < columns; ++j)
    for (int i = 0; i < rows; ++i) g.at(i, j) = f(g.x[j], g.rowY(i));
  return g;
}

std::pair<double, double> dataRange(const Grid& g) {
  double lo = kInf, hi = -kInf;
  for (double v : g.z)
    if (!std::isnan(v)) lo = std::min(lo, v), hi = std::max(hi, v);
  return {lo, hi};
}

std::vector<Line> parse(const zrArray_tag* m) {
  std::vector<Line> lines;
  EXPECT_EQ(zrGetM(m), 2u);
  const double* d = zrGetPr(m);
  const std::size_t n = zrGetN(m);
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

std::vector<Line> trace(const Grid& g, const std::vector<double>& levels, double zmin, double zmax,
                        int workspace = 100) {
  ContourEngine engine(g.rows, g.columns);
  engine.allocWorkSpace(workspace);
  engine.setXYZPtrsAndZMinMax(g.x.data(), g.y.data(), g.z.data(), zmin, zmax);
  ContourResult result;
  engine.plotContours(levels.data(), static_cast<int>(levels.size()), result);
  zrArray_tag* m = result.release();
  std::vector<Line> lines = parse(m);
  zrDestroyArray(m);
  return lines;
}

std::vector<Line> trace(const Grid& g, const std::vector<double>& levels) {
  const auto [lo, hi] = dataRange(g);
  return trace(g, levels, lo, hi);
}

bool samePoint(const Real_point& a, const Real_point& b) { return a.x == b.x && a.y == b.y; }

// ---- Exact answers ---------------------------------------------------------------

// z = x: every level is one straight line from the first row to the last.
TEST(ContourEngine, PlaneGivesOneStraightLinePerLevel) {
  const Grid g = makeGrid(6, 5, [](double x, double) { return x; });
  struct Case {
    const char* label;
    std::vector<double> levels;
    double zmin;
    std::vector<double> expectedX;  // one line per entry
  };
  const Case cases[] = {
      {"between columns", {1.25, 2.5}, 0.0, {1.25, 2.5}},
      {"on a grid value (low end open)", {3.0}, 0.0, {3.0}},
      {"repeated level traced once", {1.5, 1.5, 1.5}, 0.0, {1.5}},
      {"repeat only counts when adjacent", {1.5, 2.5, 1.5}, 0.0, {1.5, 2.5, 1.5}},
      {"outside the data range adds nothing", {-1.0, 4.0 + 1e-9, 9.0}, 0.0, {}},
      {"the range ends are inclusive", {4.0}, 0.0, {4.0}},
      {"level equal to zmin is kept", {0.0}, 0.0, {0.0}},
      {"a grid minimum that is not zmin is lost", {0.0}, -1.0, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const std::vector<Line> lines = trace(g, c.levels, c.zmin, 4.0);
    ASSERT_EQ(lines.size(), c.expectedX.size());
    for (std::size_t k = 0; k < lines.size(); ++k) {
      EXPECT_EQ(lines[k].level, c.expectedX[k]);
      ASSERT_EQ(lines[k].points.size(), 6u);
      for (int i = 0; i < 6; ++i) {
        EXPECT_DOUBLE_EQ(lines[k].points[i].x, c.expectedX[k]);
        EXPECT_EQ(lines[k].points[i].y, g.rowY(i));  // walks from row 0 downwards
      }
    }
  }
}

// z = |x| + |y| with 0 on the grid: interpolation is exact, so every level is
// one closed diamond.
TEST(ContourEngine, PyramidGivesClosedDiamonds) {
  Grid g;
  g.rows = 9;
  g.columns = 11;
  for (int j = 0; j < g.columns; ++j) g.x.push_back(j - 5);
  for (int k = 0; k < g.rows; ++k) g.y.push_back(k - 4);
  g.z.resize(99);
  for (int j = 0; j < g.columns; ++j)
    for (int i = 0; i < g.rows; ++i) g.at(i, j) = std::fabs(g.x[j]) + std::fabs(g.rowY(i));

  const std::vector<double> levels{0.5, 1.7, 3.25};
  const std::vector<Line> lines = trace(g, levels);
  ASSERT_EQ(lines.size(), levels.size());
  for (std::size_t k = 0; k < lines.size(); ++k) {
    SCOPED_TRACE(levels[k]);
    const Line& line = lines[k];
    EXPECT_EQ(line.level, levels[k]);
    ASSERT_GE(line.points.size(), 5u);
    EXPECT_TRUE(samePoint(line.points.front(), line.points.back()));
    for (const Real_point& p : line.points) EXPECT_NEAR(std::fabs(p.x) + std::fabs(p.y), levels[k], 1e-12);
    // A diamond of radius r crosses 2 * (2 floor(r) + 1) edges in each direction,
    // plus the repeated start point.
    EXPECT_EQ(line.points.size(), static_cast<std::size_t>(8 * std::floor(levels[k]) + 4) + 1);
  }
}

// The 2 x 2 saddle with corners 0, 1, 1, 0: the centre average (0.5) decides
// whether the high or the low corners are joined.
TEST(ContourEngine, SaddleResolvedByCentreAverage) {
  Grid g;
  g.rows = 2;
  g.columns = 2;
  g.x = {0, 1};
  g.y = {0, 1};
  g.z = {0, 1, 1, 0};
  struct Case {
    const char* label;
    double level;
    std::vector<std::vector<Real_point>> expected;
  };
  const Case cases[] = {
      {"centre not above the level: high corners cut off", 0.5, {{{0.5, 1}, {1, 0.5}}, {{0.5, 0}, {0, 0.5}}}},
      {"centre above the level: low corners cut off", 0.4, {{{0.4, 1}, {0, 0.6}}, {{0.6, 0}, {1, 0.4}}}},
      {"centre below the level", 0.75, {{{0.75, 1}, {1, 0.75}}, {{0.25, 0}, {0, 0.25}}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const std::vector<Line> lines = trace(g, {c.level}, 0.0, 1.0);
    ASSERT_EQ(lines.size(), c.expected.size());
    for (std::size_t k = 0; k < lines.size(); ++k) {
      ASSERT_EQ(lines[k].points.size(), c.expected[k].size());
      for (std::size_t p = 0; p < c.expected[k].size(); ++p) {
        EXPECT_DOUBLE_EQ(lines[k].points[p].x, c.expected[k][p].x) << "line " << k << " point " << p;
        EXPECT_DOUBLE_EQ(lines[k].points[p].y, c.expected[k][p].y) << "line " << k << " point " << p;
      }
    }
  }
}

// A NaN cuts the line through it in two; both pieces start beside the hole
// (holes are tried first, in the order of the table of neighbours).
TEST(ContourEngine, HoleSplitsLine) {
  Grid g = makeGrid(5, 5, [](double x, double) { return x; });
  g.at(2, 2) = kNaN;
  const std::vector<Line> lines = trace(g, {1.5}, 0.0, 4.0);
  ASSERT_EQ(lines.size(), 2u);
  ASSERT_EQ(lines[0].points.size(), 2u);
  ASSERT_EQ(lines[1].points.size(), 2u);
  EXPECT_EQ(lines[0].points[0].y, g.rowY(1));
  EXPECT_EQ(lines[0].points[1].y, g.rowY(0));
  EXPECT_EQ(lines[1].points[0].y, g.rowY(3));
  EXPECT_EQ(lines[1].points[1].y, g.rowY(4));
  for (const Line& line : lines)
    for (const Real_point& p : line.points) EXPECT_EQ(p.x, 1.5);

  // A ridge through the hole: four pieces, in the order of the neighbours
  // table (above-left, above-right, below-right, below-left).
  Grid ridge = makeGrid(5, 5, [](double x, double) { return -std::fabs(x - 2); });
  ridge.at(2, 2) = kNaN;
  const std::vector<Line> pieces = trace(ridge, {-0.5}, -2.0, 0.0);
  ASSERT_EQ(pieces.size(), 4u);
  const double expectedX[4] = {1.5, 2.5, 2.5, 1.5};
  const int expectedRows[4][2] = {{1, 0}, {1, 0}, {3, 4}, {3, 4}};
  for (int k = 0; k < 4; ++k) {
    SCOPED_TRACE(k);
    ASSERT_EQ(pieces[k].points.size(), 2u);
    for (int p = 0; p < 2; ++p) {
      EXPECT_EQ(pieces[k].points[p].x, expectedX[k]);
      EXPECT_EQ(pieces[k].points[p].y, ridge.rowY(expectedRows[k][p]));
    }
  }

  // A level that stays clear of the hole's boxes is untouched.
  const std::vector<Line> clear = trace(g, {3.5}, 0.0, 4.0);
  ASSERT_EQ(clear.size(), 1u);
  EXPECT_EQ(clear[0].points.size(), 5u);
}

TEST(ContourEngine, InfiniteCornersAreClamped) {
  Grid g;
  g.rows = 2;
  g.columns = 2;
  g.x = {0, 1};
  g.y = {0, 1};
  struct Case {
    const char* label;
    std::vector<double> z;
    double level;
    double expectedX;
  };
  const Case cases[] = {
      {"+inf on the right: crossing hugs the finite corner", {0, 0, kInf, kInf}, 1.0, 0.0},
      {"-inf on the left: crossing hugs the finite corner", {-kInf, -kInf, 0, 0}, -1.0, 1.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    g.z = c.z;
    const std::vector<Line> lines = trace(g, {c.level}, -10.0, 10.0);
    ASSERT_EQ(lines.size(), 1u);
    ASSERT_EQ(lines[0].points.size(), 2u);
    for (const Real_point& p : lines[0].points) {
      EXPECT_TRUE(std::isfinite(p.x));
      EXPECT_NEAR(p.x, c.expectedX, 1e-12);
    }
  }
}

// Levels through grid points give corner crossings on two edges in a row;
// the repeated point is stored once.
TEST(ContourEngine, ConsecutiveEqualPointsStoredOnce) {
  const Grid g = makeGrid(4, 4, [](double x, double y) { return x + y; });
  const std::vector<Line> lines = trace(g, {3.0}, 0.0, 6.0);
  ASSERT_EQ(lines.size(), 1u);
  // The anti-diagonal x + y = 3 through the grid points (0,3) (1,2) (2,1) (3,0).
  const std::vector<Real_point> expected{{3, 0}, {2, 1}, {1, 2}, {0, 3}};
  ASSERT_EQ(lines[0].points.size(), expected.size());
  for (std::size_t k = 0; k < expected.size(); ++k) {
    EXPECT_EQ(lines[0].points[k].x, expected[k].x);
    EXPECT_EQ(lines[0].points[k].y, expected[k].y);
  }
}

TEST(ContourEngine, NothingHappensWithoutSetUp) {
  const Grid g = makeGrid(4, 4, [](double x, double y) { return x * y; });
  const double level = 2.0;
  struct Case {
    const char* label;
    bool workspace;
    bool arrays;
    int rows, columns;
  };
  const Case cases[] = {
      {"no workspace", false, true, 4, 4},
      {"no arrays", true, false, 4, 4},
      {"a single row has no boxes", true, true, 1, 4},
      {"a single column has no boxes", true, true, 4, 1},
      {"negative size", true, true, -3, 4},
  };
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
  const std::vector<Line> reference = trace(g, levels, -2.0, 2.0, 4096);
  for (int workspace : {0, 1, 2, 3, 17}) {
    SCOPED_TRACE(workspace);
    const std::vector<Line> lines = trace(g, levels, -2.0, 2.0, workspace);
    ASSERT_EQ(lines.size(), reference.size());
    for (std::size_t k = 0; k < lines.size(); ++k) {
      ASSERT_EQ(lines[k].points.size(), reference[k].points.size());
      for (std::size_t p = 0; p < lines[k].points.size(); ++p)
        EXPECT_TRUE(samePoint(lines[k].points[p], reference[k].points[p]));
    }
  }
}

// ---- Interrupts ---------------------------------------------------------------------

class InterruptGuard {
 public:
  ~InterruptGuard() {
    utSetInterruptAfterQueries(0);
    utSetInterruptPending(false);
  }
};

std::vector<double> matrixValues(zrArray_tag* m) {
  const double* d = zrGetPr(m);
  std::vector<double> v(d, d + 2 * zrGetN(m));
  zrDestroyArray(m);
  return v;
}

TEST(ContourEngine, InterruptStopsQuietlyKeepingWholeLines) {
  InterruptGuard guard;
  const Grid g = makeGrid(40, 40, [](double x, double y) { return std::sin(0.4 * x) * std::cos(0.3 * y); });
  const std::vector<double> levels{-0.6, -0.3, 0.0, 0.3, 0.6};
  auto run = [&](std::uint64_t after, bool pendingBefore) {
    utSetInterruptAfterQueries(after);
    utSetInterruptPending(pendingBefore);
    ContourEngine engine(g.rows, g.columns);
    engine.allocWorkSpace(64);
    engine.setXYZPtrsAndZMinMax(g.x.data(), g.y.data(), g.z.data(), -1.0, 1.0);
    ContourResult result;
    EXPECT_NO_THROW(engine.plotContours(levels.data(), static_cast<int>(levels.size()), result));
    utSetInterruptAfterQueries(0);
    utSetInterruptPending(false);
    return matrixValues(result.release());
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
    EXPECT_NO_FATAL_FAILURE({
      zrArray_tag* m = zrCreateDoubleMatrix(2, part.size() / 2);
      std::copy(part.begin(), part.end(), zrGetPr(m));
      parse(m);
      zrDestroyArray(m);
    });
    EXPECT_GE(part.size(), previous);
    previous = part.size();
  }
  EXPECT_GE(partial, 2) << "interrupts part-way keep the lines already traced";
  EXPECT_EQ(previous, full.size()) << "an interrupt that never comes changes nothing";
}

// ---- Contour matrix ------------------------------------------------------------------

TEST(ContourResult, AppendsHeaderAndPointColumns) {
  ContourResult result;
  EXPECT_TRUE(result.isEmpty());
  result.append(1.0, 0, nullptr);
  EXPECT_TRUE(result.isEmpty());

  // Enough lines to cross several 256-double blocks.
  std::vector<double> expected;
  std::mt19937 rng(7);
  for (int line = 0; line < 40; ++line) {
    const int count = 1 + static_cast<int>(rng() % 90);
    std::vector<Real_point> pts(count);
    for (int k = 0; k < count; ++k) pts[k] = {line + 0.001 * k, -k - 0.5};
    result.append(0.25 * line, count, pts.data());
    expected.push_back(0.25 * line);
    expected.push_back(count);
    for (const Real_point& p : pts) expected.push_back(p.x), expected.push_back(p.y);
    EXPECT_FALSE(result.isEmpty());
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

bool crosses(double a, double b, double level, bool atMin) {
  const double lo = std::min(a, b), hi = std::max(a, b);
  if (a == b) return false;
  return atMin ? lo <= level : (lo < level && level <= hi);
}

std::vector<RefCrossing> referenceCrossings(const Grid& g, double level, double zmin) {
  std::vector<RefCrossing> out;
  const bool atMin = level == zmin;
  auto lerp = [](double p0, double p1, double a, double b, double level) {
    return p0 + (level - a) / (b - a) * (p1 - p0);
  };
  Grid& m = const_cast<Grid&>(g);
  for (int c = 0; c < g.columns; ++c)
    for (int i = 0; i + 1 < g.rows; ++i) {
      const double a = m.at(i, c), b = m.at(i + 1, c);
      if (crosses(a, b, level, atMin))
        out.push_back({2L * (c * g.rows + i), {g.x[c], lerp(g.rowY(i), g.rowY(i + 1), a, b, level)}});
    }
  for (int j = 0; j + 1 < g.columns; ++j)
    for (int r = 0; r < g.rows; ++r) {
      const double a = m.at(r, j), b = m.at(r, j + 1);
      if (crosses(a, b, level, atMin))
        out.push_back({2L * (j * g.rows + r) + 1, {lerp(g.x[j], g.x[j + 1], a, b, level), g.rowY(r)}});
    }
  return out;
}

// Boxes (i, j) beside an edge, as i*columns + j.
std::vector<long> boxesOf(long id, const Grid& g) {
  std::vector<long> boxes;
  const long cell = id / 2;
  if (id % 2 == 0) {
    const long c = cell / g.rows, i = cell % g.rows;
    if (c > 0) boxes.push_back(i * g.columns + c - 1);
    if (c < g.columns - 1) boxes.push_back(i * g.columns + c);
  } else {
    const long j = cell / g.rows, r = cell % g.rows;
    if (r > 0) boxes.push_back((r - 1) * g.columns + j);
    if (r < g.rows - 1) boxes.push_back(r * g.columns + j);
  }
  return boxes;
}

TEST(ContourEngine, RandomSmoothGridsMatchReference) {
  std::mt19937 rng(20240521);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int trial = 0; trial < 30; ++trial) {
    SCOPED_TRACE(trial);
    Grid g;
    g.rows = 5 + static_cast<int>(rng() % 30);
    g.columns = 5 + static_cast<int>(rng() % 30);
    // Irregular, increasing coordinates.
    double s = -3.0;
    for (int j = 0; j < g.columns; ++j) g.x.push_back(s += 0.05 + unit(rng));
    s = -2.0;
    for (int k = 0; k < g.rows; ++k) g.y.push_back(s += 0.05 + unit(rng));
    const double fx = 0.2 + unit(rng), fy = 0.2 + unit(rng), ph = 6 * unit(rng), w = unit(rng);
    g.z.resize(static_cast<std::size_t>(g.rows) * g.columns);
    for (int j = 0; j < g.columns; ++j)
      for (int i = 0; i < g.rows; ++i) {
        const double x = g.x[j], y = g.rowY(i);
        g.at(i, j) = std::sin(fx * x + ph) * std::cos(fy * y) + w * std::exp(-0.1 * (x * x + y * y));
      }
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
