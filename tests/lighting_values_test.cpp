// Radiance, radiance filters, materials and the two light sources.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "qvgui/lighting.h"

namespace {

using namespace gui_objects;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

void expectRadiance(const Radiance& r, double red, double green, double blue) {
  EXPECT_EQ(r.getRed(), red);
  EXPECT_EQ(r.getGreen(), green);
  EXPECT_EQ(r.getBlue(), blue);
}

// Radiance keeps only positive values (no upper bound); filters clamp to [0, 1].
TEST(Radiance, ConstructionAndFiltersClamp) {
  struct Case {
    const char* label;
    double in[3], radiance[3], filter[3];
  };
  const Case cases[] = {
      {"negative and NaN become 0", {-1, 0.5, kNaN}, {0, 0.5, 0}, {0, 0.5, 0}},
      {"only filters are bounded above", {2, 7.5, 1e30}, {2, 7.5, 1e30}, {1, 1, 1}},
      {"negative zero becomes +0", {-0.0, 1, 1e-300}, {0, 1, 1e-300}, {0, 1, 1e-300}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const Radiance r(c.in[0], c.in[1], c.in[2]);
    expectRadiance(r, c.radiance[0], c.radiance[1], c.radiance[2]);
    EXPECT_FALSE(std::signbit(r.getRed()));
    const RadianceFilter f(c.in[0], c.in[1], c.in[2]);
    EXPECT_EQ(f, RadianceFilter(c.filter[0], c.filter[1], c.filter[2]));
    EXPECT_FALSE(std::signbit(f.getRed()));
  }
  expectRadiance(Radiance(Color3d(0.25, 2.0, -1.0)), 0.25, 1.0, 0.0);
  expectRadiance(RadianceFilter(0.5, 1, 0)(Radiance(4, 3, 2)), 2, 3, 0);
  expectRadiance(RadianceFilter(0.5, 1, 0.25)(Radiance(2, 2, 2) * -1.0), 0, 0, 0);
}

// Products are stored as computed, even when negative; colours clamp.
TEST(Radiance, NegativeProductsAndColours) {
  const Radiance b(0.25, 0.0, 2.0);
  expectRadiance(b * -1.0, -0.25, -0.0, -2.0);
  Radiance c = b;
  c *= -2.0;
  expectRadiance(c, -0.5, -0.0, -4.0);
  const Color3d col = Radiance(2, 0, 0.4).asColor3d();
  EXPECT_EQ(col.getRed(), 1.0);
  EXPECT_EQ(col.getBlue(), 0.4);
  const Color4d col4 = (b * -1.0).asColor4d();
  EXPECT_EQ(col4.getRed(), 0.0);
  EXPECT_EQ(col4.getAlpha(), 1.0);
}

TEST(Material, ShininessAndAmbientFilter) {
  Material m;
  EXPECT_EQ(m.getSpecularShininess(), 10.0);
  expectRadiance(m.applyAmbientFilter(Radiance(1, 2, 3)), 1, 2, 3);
  m.setAmbientFilter(RadianceFilter(0.5, 0, 1));
  expectRadiance(m.applyAmbientFilter(Radiance(2, 4, 6)), 1, 0, 6);
  const double cases[][2] = {{-4, 0}, {kNaN, 0}, {0, 0}, {32, 32}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c[0]);
    m.setSpecularShininess(c[0]);
    EXPECT_EQ(m.getSpecularShininess(), c[1]);
    EXPECT_EQ(Material(Radiance(), {}, {}, {}, c[0]).getSpecularShininess(), c[1]);
  }
}

TEST(Lights, LightVectors) {
  const Radiance d(1, 0.5, 0.25);
  struct Case {
    const char* label;
    Vector3d direction, expected;
  };
  const Case cases[] = {
      {"normalised", {0, 0, 5}, {0, 0, 1}},
      {"oblique", {3, 0, -4}, {0.6, 0, -0.8}},
      {"zero stays zero", {0, 0, 0}, {0, 0, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const DirectionalLight light(d, d, c.direction);
    for (const Point3d p : {Point3d(0, 0, 0), Point3d(1e6, -3, 7)})
      EXPECT_TRUE(nearlyEqual(light.getLightVectorAt(p), c.expected));
    DirectionalLight set;
    set.setDirection(c.direction);
    EXPECT_TRUE(nearlyEqual(set.getLightVectorAt(Point3d()), c.expected));
  }

  // From the lit point towards the bulb, with no attenuation.
  const PointLight bulb(d, d, Point3d(1, 2, 3));
  EXPECT_TRUE(nearlyEqual(bulb.getLightVectorAt(Point3d(4, 6, 3)), Vector3d(-0.6, -0.8, 0)));
  EXPECT_EQ(bulb.getDiffuseRadianceAt(Point3d(1e9, 0, 0)), d);
}

}  // namespace
