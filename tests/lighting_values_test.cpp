// Radiance, radiance filters, materials and the two light sources.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "qvgui/lighting.h"

namespace {

using namespace gui_objects;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

void expectRadiance(const Radiance& r, double red, double green, double blue) {
  EXPECT_EQ(r.getRed(), red);
  EXPECT_EQ(r.getGreen(), green);
  EXPECT_EQ(r.getBlue(), blue);
}

TEST(Radiance, ConstructionKeepsOnlyPositiveValues) {
  struct Case {
    const char* label;
    double in[3];
    double out[3];
  };
  const Case cases[] = {
      {"negative and NaN become 0", {-1, 0.5, kNaN}, {0, 0.5, 0}},
      {"no upper bound", {2, 7.5, 1e30}, {2, 7.5, 1e30}},
      {"negative zero becomes +0", {-0.0, 0, 1e-300}, {0, 0, 1e-300}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const Radiance r(c.in[0], c.in[1], c.in[2]);
    expectRadiance(r, c.out[0], c.out[1], c.out[2]);
    EXPECT_FALSE(std::signbit(r.getRed()));
  }
  expectRadiance(Radiance(Color3d(0.25, 2.0, -1.0)), 0.25, 1.0, 0.0);
  expectRadiance(Radiance(), 0, 0, 0);
}

TEST(Radiance, ArithmeticAndColours) {
  const Radiance a(0.5, 1.5, 0.0), b(0.25, 0.0, 2.0);
  expectRadiance(a + b, 0.75, 1.5, 2.0);
  expectRadiance(a * 2.0, 1.0, 3.0, 0.0);
  // Products are stored as computed, even when that is negative.
  expectRadiance(b * -1.0, -0.25, -0.0, -2.0);
  Radiance c = a;
  c += b;
  c *= 0.5;
  expectRadiance(c, 0.375, 0.75, 1.0);
  EXPECT_TRUE(a == Radiance(0.5, 1.5, 0.0));
  EXPECT_FALSE(a == Radiance(0.5, 1.5, 1e-300));
  EXPECT_TRUE(a != b);

  const Color3d col = Radiance(2, 0, 0.4).asColor3d();
  EXPECT_EQ(col.getRed(), 1.0);
  EXPECT_EQ(col.getGreen(), 0.0);
  EXPECT_EQ(col.getBlue(), 0.4);
  const Color4d col4 = (b * -1.0).asColor4d();
  EXPECT_EQ(col4.getRed(), 0.0) << "negative channels clamp to 0 in colours";
  EXPECT_EQ(col4.getAlpha(), 1.0);
}

TEST(RadianceFilter, ClampsAndFilters) {
  struct Case {
    const char* label;
    double in[3];
    double out[3];
  };
  const Case cases[] = {
      {"above 1 and below 0", {1.5, -0.2, 0.3}, {1, 0, 0.3}},
      {"NaN becomes 0", {kNaN, 1, 0}, {0, 1, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const RadianceFilter f(c.in[0], c.in[1], c.in[2]);
    EXPECT_EQ(f.getRed(), c.out[0]);
    EXPECT_EQ(f.getGreen(), c.out[1]);
    EXPECT_EQ(f.getBlue(), c.out[2]);
  }
  expectRadiance(RadianceFilter(0.5, 1, 0)(Radiance(4, 3, 2)), 2, 3, 0);
  expectRadiance(RadianceFilter(0.5, 1, 0.25)(Radiance(2, 2, 2) * -1.0), 0, 0, 0);
  RadianceFilter g;
  g = RadianceFilter(0.1, 0.2, 0.3);
  EXPECT_EQ(g, RadianceFilter(0.1, 0.2, 0.3));
}

TEST(Material, DefaultsSettersAndFilters) {
  Material m;
  expectRadiance(m.getEmissiveRadiance(), 0, 0, 0);
  EXPECT_EQ(m.getSpecularShininess(), 10.0);
  expectRadiance(m.applyAmbientFilter(Radiance(1, 2, 3)), 1, 2, 3);

  m.setAmbientFilter(RadianceFilter(0.5, 0.5, 0.5));
  m.setDiffuseFilter(RadianceFilter(1, 0, 0));
  m.setSpecularFilter(RadianceFilter(0, 0, 1));
  m.setEmissiveRadiance(Radiance(0.1, 0.2, 0.3));
  const Radiance r(2, 4, 6);
  expectRadiance(m.applyAmbientFilter(r), 1, 2, 3);
  expectRadiance(m.applyDiffuseFilter(r), 2, 0, 0);
  expectRadiance(m.applySpecularFilter(r), 0, 0, 6);
  expectRadiance(m.getEmissiveRadiance(), 0.1, 0.2, 0.3);

  struct Case {
    double in, out;
  };
  for (const Case c : {Case{-4, 0}, Case{kNaN, 0}, Case{0, 0}, Case{32, 32}}) {
    SCOPED_TRACE(c.in);
    m.setSpecularShininess(c.in);
    EXPECT_EQ(m.getSpecularShininess(), c.out);
  }
  const Material copy(Radiance(1, 1, 1), RadianceFilter(), RadianceFilter(), RadianceFilter(), -3);
  EXPECT_EQ(copy.getSpecularShininess(), 0.0);
}

TEST(Lights, DirectionsAndRadiance) {
  const Radiance d(1, 0.5, 0.25), s(0.1, 0.2, 0.3);
  struct Case {
    const char* label;
    Vector3d direction;
    Vector3d expected;
  };
  const Case cases[] = {
      {"normalised", {0, 0, 5}, {0, 0, 1}},
      {"oblique", {3, 0, -4}, {0.6, 0, -0.8}},
      {"zero stays zero", {0, 0, 0}, {0, 0, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const DirectionalLight light(d, s, c.direction);
    for (const Point3d p : {Point3d(0, 0, 0), Point3d(1e6, -3, 7)})
      EXPECT_TRUE(nearlyEqual(light.getLightVectorAt(p), c.expected));
    DirectionalLight set;
    set.setDirection(c.direction);
    EXPECT_TRUE(nearlyEqual(set.getLightVectorAt(Point3d()), c.expected));
    EXPECT_EQ(light.getDiffuseRadianceAt(Point3d(5, 5, 5)), d);
    EXPECT_EQ(light.getSpecularRadianceAt(Point3d(5, 5, 5)), s);
  }

  PointLight bulb(d, s, Point3d(1, 2, 3));
  EXPECT_TRUE(nearlyEqual(bulb.getLightVectorAt(Point3d(1, 2, -7)), Vector3d(0, 0, 1)));
  EXPECT_TRUE(nearlyEqual(bulb.getLightVectorAt(Point3d(4, 6, 3)), Vector3d(-0.6, -0.8, 0)));
  EXPECT_TRUE(nearlyEqual(bulb.getLightVectorAt(Point3d(1, 2, 3)), Vector3d(0, 0, 0)));
  EXPECT_EQ(bulb.getDiffuseRadianceAt(Point3d(1e9, 0, 0)), d) << "no attenuation";
  bulb.setPosition(Point3d(0, 0, 0));
  bulb.setSpecularRadiance(Radiance(9, 9, 9));
  EXPECT_TRUE(nearlyEqual(bulb.getLightVectorAt(Point3d(0, 2, 0)), Vector3d(0, -1, 0)));
  EXPECT_EQ(bulb.getSpecularRadianceAt(Point3d()), Radiance(9, 9, 9));
}

TEST(Lights, CloneCopiesTheMostDerivedLight) {
  const DirectionalLight sun(Radiance(1, 1, 1), Radiance(0.5, 0.5, 0.5), Vector3d(0, 1, 0));
  const PointLight bulb(Radiance(2, 2, 2), Radiance(), Point3d(1, 1, 1));
  const Light& asSun = sun;
  const Light& asBulb = bulb;
  std::unique_ptr<Light> a(asSun.clone());
  std::unique_ptr<Light> b(asBulb.clone());
  ASSERT_NE(dynamic_cast<DirectionalLight*>(a.get()), nullptr);
  ASSERT_NE(dynamic_cast<PointLight*>(b.get()), nullptr);
  EXPECT_TRUE(nearlyEqual(a->getLightVectorAt(Point3d()), Vector3d(0, 1, 0)));
  EXPECT_EQ(a->getSpecularRadianceAt(Point3d()), Radiance(0.5, 0.5, 0.5));
  EXPECT_EQ(static_cast<PointLight*>(b.get())->getPosition().getX(), 1.0);
  EXPECT_EQ(b->getDiffuseRadianceAt(Point3d()), Radiance(2, 2, 2));

  DirectionalLight lights[3];  // default-constructible for arrays
  lights[1] = sun;
  EXPECT_TRUE(nearlyEqual(lights[1].getDirection(), Vector3d(0, 1, 0)));
  EXPECT_EQ(lights[0].getDiffuseRadianceAt(Point3d()), Radiance());
}

}  // namespace
