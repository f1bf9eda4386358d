// Homogeneous clipping: outcodes, VertexVector bookkeeping, and polygons,
// lines and strips checked against plain Euclidean references.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "geometry_test_support.h"

using namespace gui_objects;

namespace {

using Planes = std::vector<const Plane3d*>;

VertexVector make(const std::vector<Point4d>& pts, const Plane3d* const* planes = nullptr) {
  return VertexVector(pts.size(), pts.data(), planes);
}

std::vector<Point3d> projected(const VertexVector& v) {
  const Point3d* p = v.getProjectedVertices();
  return p == nullptr ? std::vector<Point3d>() : std::vector<Point3d>(p, p + v.getSize());
}

double polygonArea(const std::vector<Point3d>& poly) {
  if (poly.size() < 3) return 0.0;
  Vector3d n;
  for (std::size_t i = 0; i < poly.size(); ++i)
    n += newell_area(poly[(i + poly.size() - 1) % poly.size()], poly[i]);
  return n.length() / 2.0;
}

// ---- A plain Euclidean reference: the projected primitive against the cube
// [-1, 1]^3 and the user half-spaces n.p - d > 0.
struct HalfSpace {
  Vector3d n;
  double d;
  double eval(const Point3d& p) const { return n.dot(Vector3d(p)) - d; }
};

std::vector<HalfSpace> referenceHalfSpaces(const Planes& user) {
  std::vector<HalfSpace> hs = {{{1, 0, 0}, -1},  {{-1, 0, 0}, -1}, {{0, 1, 0}, -1},
                               {{0, -1, 0}, -1}, {{0, 0, 1}, -1},  {{0, 0, -1}, -1}};
  for (const Plane3d* p : user)
    if (p != nullptr) hs.push_back({p->getNormal(), p->getOffset()});
  return hs;
}

std::vector<Point3d> referenceClip(std::vector<Point3d> poly, const std::vector<HalfSpace>& hs) {
  for (const HalfSpace& h : hs) {
    std::vector<Point3d> out;
    for (std::size_t i = 0; i < poly.size(); ++i) {
      const Point3d& a = poly[(i + poly.size() - 1) % poly.size()];
      const Point3d& b = poly[i];
      const double ea = h.eval(a), eb = h.eval(b);
      if ((ea >= 0) != (eb >= 0)) out.push_back(interpolate(ea / (ea - eb), a, b));
      if (eb >= 0) out.push_back(b);
    }
    poly.swap(out);
  }
  return poly;
}

// Visible length of a projected segment by dense sampling.
double sampledVisibleLength(const Point3d& a, const Point3d& b, const std::vector<HalfSpace>& hs,
                            int samples) {
  int inside = 0;
  for (int k = 0; k < samples; ++k) {
    const Point3d p = interpolate((k + 0.5) / samples, a, b);
    bool in = true;
    for (const HalfSpace& h : hs) in = in && h.eval(p) > 0;
    inside += in ? 1 : 0;
  }
  return a.distance(b) * inside / samples;
}

// Attributes that are linear in the homogeneous position, so that a clipped
// vertex must carry the same linear function of its own position.
float colorIndexOf(const Point4d& p) {
  return static_cast<float>(0.3 * p.getX() - 0.2 * p.getY() + 0.1 * p.getZ() + 0.5 * p.getW());
}
Point3d normalOf(const Point4d& p) { return Point3d(p.getX() + p.getW(), p.getY() - p.getZ(), 2 * p.getW()); }

void bindLinearAttributes(VertexVector& v) {
  std::vector<float> ci;
  std::vector<Point3d> normals;
  std::vector<Point2f> tex;
  for (std::size_t i = 0; i < v.getSize(); ++i) {
    const Point4d& p = v.getVertices()[i];
    ci.push_back(colorIndexOf(p));
    normals.push_back(normalOf(p));
    tex.emplace_back(static_cast<float>(p.getX()), static_cast<float>(p.getW()));
  }
  v.addColorIndices(ci.data());
  v.addNormals(normals.data());
  v.addTextureCoords(tex.data());
}

// Every output vertex lies inside the canonical volume and the user planes
// (allowing for rounding) and carries its own linear attributes.
void expectValidOutput(const VertexVector& v, const Planes& user) {
  ASSERT_TRUE(v.isProjected());
  ASSERT_NE(v.getColorIndices(), nullptr);
  ASSERT_NE(v.getNormals(), nullptr);
  ASSERT_NE(v.getTextureCoords(), nullptr);
  for (std::size_t i = 0; i < v.getSize(); ++i) {
    const Point4d& p = v.getVertices()[i];
    const double tol = 1e-9 * (1.0 + std::fabs(p.getW()));
    for (double c : {p.getX(), p.getY(), p.getZ()}) {
      EXPECT_GE(c, -p.getW() - tol);
      EXPECT_LE(c, p.getW() + tol);
    }
    for (const Plane3d* plane : user) {
      if (plane != nullptr) {
        EXPECT_GE(plane->evaluate(p), -tol);
      }
    }
    EXPECT_NEAR(v.getColorIndices()[i], colorIndexOf(p), 1e-5);
    EXPECT_TRUE(nearlyEqual(v.getNormals()[i], normalOf(p)));
    EXPECT_NEAR(v.getTextureCoords()[i].getX(), p.getX(), 1e-5);
    EXPECT_NEAR(v.getTextureCoords()[i].getY(), p.getW(), 1e-5);
  }
}

Point4d randomClipPoint(std::mt19937& rng) {
  std::uniform_real_distribution<double> wd(0.5, 2.0), cd(-2.5, 2.5);
  const double w = wd(rng);
  return Point4d(w * cd(rng), w * cd(rng), w * cd(rng), w);
}

Planes randomUserPlanes(std::mt19937& rng, std::vector<Plane3d>& storage) {
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::uniform_int_distribution<int> count(0, 2);
  storage.clear();
  const int n = count(rng);
  for (int i = 0; i < n; ++i) storage.emplace_back(Vector3d(u(rng), u(rng), u(rng) + 0.1), 0.5 * u(rng));
  Planes planes(6, nullptr);
  // Spread over the slots, leaving nulls in between.
  for (int i = 0; i < n; ++i)
    planes[static_cast<std::size_t>(2 * i + 1)] = &storage[static_cast<std::size_t>(i)];
  return planes;
}

}  // namespace

// ---- Outcodes --------------------------------------------------------------------------

TEST(Outcodes, BitsPerPlane) {
  const Plane3d above(Vector3d(0, 1, 0), 0.5);  // visible where y > 0.5 w
  const Plane3d* user[6] = {nullptr, nullptr, &above, nullptr, nullptr, nullptr};
  struct Case {
    const char* label;
    Point4d p;
    std::uint16_t withoutUser, withUser;
  };
  const Case cases[] = {
      {"centre", {0, 0.75, 0, 1}, 0x000, 0x000},
      {"x == w is inside", {1, 0.75, 0, 1}, 0x000, 0x000},
      {"x == -w is inside", {-2, 1.5, 0, 2}, 0x000, 0x000},
      {"left", {-1.5, 0.75, 0, 1}, 0x001, 0x001},
      {"right", {1.5, 0.75, 0, 1}, 0x002, 0x002},
      {"below, also outside the user plane", {0, -1.5, 0, 1}, 0x004, 0x004 | 0x100},
      {"on the user plane is outside", {0, 0.5, 0, 1}, 0x000, 0x100},
      {"far and above", {0, 1.5, 3, 1}, 0x028, 0x028},
      {"near", {0, 0.75, -3, 1}, 0x010, 0x010},
      {"negative w is outside every canonical plane", {0, 0, 0, -1}, 0x03f, 0x03f},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(c.p.calculateOutcodes(nullptr), c.withoutUser);
    EXPECT_EQ(c.p.calculateOutcodes(user), c.withUser);
  }
  EXPECT_EQ(Point4d::outCodeForPlane(11), 0x800);
}

TEST(Outcodes, LineFractionLandsOnEachPlane) {
  std::mt19937 rng(5);
  const Plane3d tilted(Vector3d(1, 1, 1), 0.2);
  const Plane3d* user[6] = {nullptr, nullptr, nullptr, &tilted, nullptr, nullptr};
  int checked = 0;
  for (int i = 0; i < 4000; ++i) {
    const Point4d a = randomClipPoint(rng), b = randomClipPoint(rng);
    const std::uint16_t ca = a.calculateOutcodes(user), cb = b.calculateOutcodes(user);
    for (int plane = 0; plane < 12; ++plane) {
      const std::uint16_t bit = Point4d::outCodeForPlane(plane);
      if (((ca ^ cb) & bit) == 0) continue;
      const double t = calculate_line_t(a, b, static_cast<std::size_t>(plane), user);
      ASSERT_GE(t, 0.0);
      ASSERT_LE(t, 1.0);
      const Point4d p = interpolate(t, a, b);
      const double sides[6] = {p.getX() + p.getW(), p.getX() - p.getW(), p.getY() + p.getW(),
                               p.getY() - p.getW(), p.getZ() + p.getW(), p.getZ() - p.getW()};
      const double onPlane = plane < 6 ? sides[plane] : tilted.evaluate(p);
      ASSERT_NEAR(onPlane, 0.0, 1e-12) << "plane " << plane;
      ++checked;
    }
  }
  EXPECT_GT(checked, 1000);
  EXPECT_EQ(calculate_line_t(Point4d(0, 0, 0, 1), Point4d(2, 0, 0, 1), 12, user), 0.0);
  EXPECT_EQ(calculate_line_t(Point4d(0, 0, 0, 1), Point4d(2, 0, 0, 1), 6, user), 0.0);  // null slot
  EXPECT_EQ(calculate_line_t(Point4d(0, 0, 0, 1), Point4d(2, 0, 0, 1), 9, nullptr), 0.0);
}

// ---- VertexVector ----------------------------------------------------------------------

TEST(VertexVector, TrivialAcceptAndReject) {
  struct Case {
    const char* label;
    std::vector<Point4d> pts;
    bool accept, reject;
  };
  const Case cases[] = {
      {"empty", {}, true, true},
      {"single inside vertex", {{0, 0, 0, 1}}, true, true},
      {"all inside", {{0, 0, 0, 1}, {1, 1, 1, 1}}, true, false},
      {"all right of x = w", {{2, 0, 0, 1}, {3, 5, 0, 1}, {4, -5, 0, 1}}, false, true},
      {"outside different planes", {{2, 0, 0, 1}, {-2, 0, 0, 1}}, false, false},
      {"common bit found late", {{2, 2, 0, 1}, {2, -2, 0, 1}, {3, 0, 0, 1}}, false, true},
      {"one inside", {{2, 0, 0, 1}, {0, 0, 0, 1}, {3, 0, 0, 1}}, false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const VertexVector v = make(c.pts);
    EXPECT_EQ(v.getAccept(), c.accept);
    EXPECT_EQ(v.getReject(), c.reject);
  }
}

TEST(VertexVector, AttributeBookkeepingAndErrors) {
  VertexVector v = make({{0, 0, 0, 1}, {1, 0, 0, 1}});
  EXPECT_EQ(v.getRGBAColors(), nullptr);
  EXPECT_THROW((void)v.getOutcode(2), vertex_vector::InvalidIndexException);
  EXPECT_THROW((void)v.getPlaneFraction(0, 2, 1, nullptr), vertex_vector::InvalidIndexException);
  const Color4b colors[] = {{255, 0, 0, 255}, {0, 0, 255, 255}};
  v.addRGBAColors(colors);
  ASSERT_NE(v.getRGBAColors(), nullptr);
  EXPECT_EQ(v.getRGBAColors()[1], colors[1]);
  EXPECT_THROW(v.addNormals(nullptr), vertex_vector::AppendException);
  // A single value for an attribute that already has one per vertex.
  EXPECT_THROW(v.addRGBAColor(Color4b()), vertex_vector::AppendException);
  // Starting an attribute late is out of step too.
  EXPECT_THROW(v.addColorIndex(1.0f), vertex_vector::AppendException);
  EXPECT_EQ(v.getColorIndices(), nullptr);

  // Building vertex by vertex.
  VertexVector built;
  built.addVertex(Point4d(0, 0, 0, 1), nullptr);
  built.addColorIndex(0.25f);
  built.addVertex(Point4d(2, 0, 0, 1), nullptr);
  EXPECT_EQ(built.getOutcode(1), 0x002);

  // Appending from a vector with another attribute set.
  VertexVector target;
  target.addVertex(v, 1);  // empty: adopts the colour binding
  EXPECT_NE(target.getRGBAColors(), nullptr);
  EXPECT_THROW(target.addVertex(built, 0), vertex_vector::BindingMismatchException);
  EXPECT_THROW(target.addVertex(v, 7), vertex_vector::InvalidIndexException);
  EXPECT_THROW(target.clipVertexToFraction(v, 0, 9, 0.5, nullptr), vertex_vector::InvalidIndexException);
  EXPECT_EQ(target.getSize(), 1u);  // nothing half-appended
  target.clipVertexToFraction(v, 0, 1, 0.5, nullptr);
  EXPECT_EQ(target.getRGBAColors()[1], interpolate(0.5, colors[0], colors[1]));
  EXPECT_EQ(target.getVertices()[1], Point4d(0.5, 0, 0, 1));

  const std::size_t pick[] = {1, 1, 0};
  const VertexVector picked(v, 3, pick);
  EXPECT_EQ(picked.getRGBAColors()[2], colors[0]);
  const std::size_t bad[] = {0, 5};
  EXPECT_THROW(VertexVector(v, 2, bad), vertex_vector::InvalidIndexException);

  VertexVector other = picked;
  other.clear();
  EXPECT_EQ(other.getRGBAColors(), nullptr);
  other.addVertex(built, 0);  // a cleared vector adopts again
  EXPECT_NE(other.getColorIndices(), nullptr);
}

TEST(VertexVector, ProjectIsAllOrNothing) {
  VertexVector v = make({{2, 4, 6, 2}, {1, 1, 1, 0.5}});
  v.project();
  ASSERT_TRUE(v.isProjected());
  EXPECT_EQ(v.getProjectedVertices()[0], Point3d(1, 2, 3));
  EXPECT_EQ(v.getInverseWCoords()[1], 2.0);
  v.addVertex(Point4d(1, 1, 1, 0), nullptr);
  EXPECT_EQ(v.getProjectedVertices(), nullptr);  // appending drops the projection
  EXPECT_THROW(v.project(), InvalidWException);
  EXPECT_FALSE(v.isProjected());
  VertexVector negative = make({{0, 0, 0, 1}, {0, 0, 0, -1}});
  EXPECT_THROW(negative.project(), InvalidWException);
}

// ---- Polygons --------------------------------------------------------------------------

TEST(ClipPolygon, HandPickedCases) {
  // Straddling x = w: a quadrilateral with two vertices on x = w and colours
  // interpolated at the crossing fractions.
  VertexVector straddle = make({{0, 0, 0, 1}, {2, 0, 0, 1}, {2, 0.5, 0, 1}, {0, 0.5, 0, 1}});
  const Color4b colors[] = {{0, 0, 0, 255}, {200, 100, 0, 255}, {200, 100, 50, 255}, {0, 0, 50, 255}};
  straddle.addRGBAColors(colors);
  const VertexVector quad = clip_polygon(straddle, nullptr);
  ASSERT_EQ(quad.getSize(), 4u);
  int onBoundary = 0;
  for (std::size_t i = 0; i < quad.getSize(); ++i) {
    const Point4d p = quad.getVertices()[i];
    if (p.getX() == p.getW()) {
      ++onBoundary;
      const std::size_t from = p.getY() == 0 ? 0 : 3, to = p.getY() == 0 ? 1 : 2;
      const double t = calculate_line_t(straddle.getVertices()[from], straddle.getVertices()[to], 1, nullptr);
      EXPECT_EQ(quad.getRGBAColors()[i], interpolate(t, colors[from], colors[to]));
    }
  }
  EXPECT_EQ(onBoundary, 2);
  EXPECT_NEAR(polygonArea(projected(quad)), 0.5, 1e-12);

  // A vertex at w == 0 (the origin of clip space) is accepted but cannot be
  // projected: the result is empty rather than an exception.
  VertexVector degenerate = make({{0, 0, 0, 0}, {0.5, 0, 0, 1}, {0, 0.5, 0, 1}});
  EXPECT_EQ(clip_polygon(degenerate, nullptr).getSize(), 0u);
}

TEST(ClipPolygon, RandomPolygonsMatchEuclideanReference) {
  std::mt19937 rng(31337);
  std::uniform_int_distribution<int> sides(3, 6);
  std::vector<Plane3d> storage;
  int nonEmpty = 0;
  for (int i = 0; i < 1500; ++i) {
    const Planes user = randomUserPlanes(rng, storage);
    // A planar convex polygon: random triangles, or a fan around a centre in one plane.
    const int n = sides(rng);
    std::vector<Point4d> pts;
    const Point4d c = randomClipPoint(rng), du = randomClipPoint(rng), dv = randomClipPoint(rng);
    bool positiveW = true;
    for (int k = 0; k < n; ++k) {
      const double s = 0.5 * std::cos(2 * kPi * k / n), t = 0.5 * std::sin(2 * kPi * k / n);
      pts.emplace_back(c.getX() + s * du.getX() + t * dv.getX(), c.getY() + s * du.getY() + t * dv.getY(),
                       c.getZ() + s * du.getZ() + t * dv.getZ(), c.getW() + s * du.getW() + t * dv.getW());
      positiveW = positiveW && pts.back().getW() > 0.05;
    }
    if (!positiveW) continue;
    VertexVector poly = make(pts, user.data());
    bindLinearAttributes(poly);
    const VertexVector clipped = clip_polygon(poly, user.data());

    std::vector<Point3d> proj;
    for (const Point4d& p : pts) proj.push_back(p.project());
    const std::vector<Point3d> ref = referenceClip(proj, referenceHalfSpaces(user));
    SCOPED_TRACE(::testing::Message() << "polygon " << i << ": " << poly);
    const double refArea = polygonArea(ref), area = polygonArea(projected(clipped));
    ASSERT_NEAR(area, refArea, 1e-9 * (1.0 + refArea));
    if (clipped.getSize() == 0) continue;
    ++nonEmpty;
    ASSERT_GE(clipped.getSize(), 3u);
    expectValidOutput(clipped, user);
  }
  EXPECT_GT(nonEmpty, 200);
}

// ---- Lines and strips ----------------------------------------------------------------

TEST(ClipLine, ExactStartAndOnlyTheFirstTwoVertices) {
  // The re-interpolated start at t = 0 is the start itself.
  VertexVector leaving = make({{0.25, 0.5, 0, 1}, {3, 0, 0, 1}});
  EXPECT_EQ(clip_line(leaving, nullptr).getVertices()[0], Point4d(0.25, 0.5, 0, 1));
  // Only the first two vertices make the line.
  VertexVector three = make({{0, 0, 0, 1}, {2, 0, 0, 1}, {9, 9, 9, 1}});
  EXPECT_EQ(clip_line(three, nullptr).getSize(), 2u);
}

TEST(ClipLine, RandomLinesMatchSampledLength) {
  std::mt19937 rng(8);
  std::vector<Plane3d> storage;
  int visible = 0;
  constexpr int kSamples = 4000;
  for (int i = 0; i < 600; ++i) {
    const Planes user = randomUserPlanes(rng, storage);
    const Point4d a = randomClipPoint(rng), b = randomClipPoint(rng);
    VertexVector line = make({a, b}, user.data());
    bindLinearAttributes(line);
    const VertexVector out = clip_line(line, user.data());
    const double length =
        out.getSize() == 2 ? out.getProjectedVertices()[0].distance(out.getProjectedVertices()[1]) : 0.0;
    const Point3d pa = a.project(), pb = b.project();
    const double ref = sampledVisibleLength(pa, pb, referenceHalfSpaces(user), kSamples);
    SCOPED_TRACE(::testing::Message() << "line " << a << " -> " << b);
    ASSERT_NEAR(length, ref, 2.0 * pa.distance(pb) / kSamples + 1e-12);
    if (out.getSize() == 0) continue;
    ++visible;
    expectValidOutput(out, user);
  }
  EXPECT_GT(visible, 100);
}

TEST(ClipLinestrip, WholeAndTooShortStrips) {
  VertexVector allIn = make({{0, 0, 0, 1}, {0.1, 0, 0, 1}, {0.2, 0.3, 0, 1}});
  const std::vector<VertexVector> one = clip_linestrip(allIn, nullptr);
  ASSERT_EQ(one.size(), 1u);
  EXPECT_EQ(one[0].getSize(), 3u);
  VertexVector lone = make({{0, 0, 0, 1}});
  EXPECT_TRUE(clip_linestrip(lone, nullptr).empty());
}

TEST(ClipLinestrip, RandomStripsAgreeWithSegmentClipping) {
  std::mt19937 rng(64);
  std::uniform_int_distribution<int> length(2, 12);
  std::vector<Plane3d> storage;
  for (int i = 0; i < 400; ++i) {
    const Planes user = randomUserPlanes(rng, storage);
    std::vector<Point4d> pts;
    const int n = length(rng);
    for (int k = 0; k < n; ++k) pts.push_back(randomClipPoint(rng));
    VertexVector strip = make(pts, user.data());
    bindLinearAttributes(strip);
    const std::vector<VertexVector> runs = clip_linestrip(strip, user.data());

    // Reference: each segment clipped on its own; a new run starts unless the
    // previous visible piece ended where this one starts, at an inside vertex.
    double refLength = 0.0;
    std::vector<std::size_t> refSizes;  // vertices per run
    bool open = false;
    for (int k = 0; k + 1 < n; ++k) {
      VertexVector seg = make({pts[k], pts[k + 1]}, user.data());
      const VertexVector piece = clip_line(seg, user.data());
      if (piece.getSize() == 0) {
        open = false;
        continue;
      }
      refLength += piece.getProjectedVertices()[0].distance(piece.getProjectedVertices()[1]);
      const bool continues = open && seg.getOutcode(0) == 0;
      if (continues) {
        ++refSizes.back();
      } else {
        refSizes.push_back(2);
      }
      open = seg.getOutcode(1) == 0;
    }
    double runLength = 0.0;
    std::vector<std::size_t> sizes;
    for (const VertexVector& run : runs) {
      sizes.push_back(run.getSize());
      expectValidOutput(run, user);
      for (std::size_t k = 0; k + 1 < run.getSize(); ++k)
        runLength += run.getProjectedVertices()[k].distance(run.getProjectedVertices()[k + 1]);
    }
    SCOPED_TRACE(::testing::Message() << "strip " << strip);
    EXPECT_EQ(sizes, refSizes);
    EXPECT_NEAR(runLength, refLength, 1e-9 * (1.0 + refLength));
  }
}
