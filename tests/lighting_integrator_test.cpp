// The integrator of diffuse and specular light at one surface point.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "qvgui/lighting.h"

namespace {

using namespace gui_objects;

void expectNear(const Radiance& r, const Radiance& expected) {
  EXPECT_NEAR(r.getRed(), expected.getRed(), 1e-12);
  EXPECT_NEAR(r.getGreen(), expected.getGreen(), 1e-12);
  EXPECT_NEAR(r.getBlue(), expected.getBlue(), 1e-12);
}

constexpr double kPi = 3.14159265358979323846;
const Radiance kDiffuse(1.0, 0.5, 0.25);
const Radiance kSpecular(0.8, 0.4, 0.2);
const Vector3d kUp(0, 0, 1);

Vector3d unit(double x, double y, double z) {
  const double l = std::sqrt(x * x + y * y + z * z);
  return Vector3d(x / l, y / l, z / l);
}

// One directional light on a surface facing up; returns (diffuse, specular).
std::pair<Radiance, Radiance> light1(const Material& m, const Vector3d& towardsLight, const Vector3d& view) {
  LightIntegrator integrator(m);
  integrator.addLightContribution(Point3d(), kUp, view, DirectionalLight(kDiffuse, kSpecular, towardsLight));
  return {integrator.getDiffuseContribution(), integrator.getSpecularContribution()};
}

TEST(LightIntegrator, ThresholdsAndShortcuts) {
  const double a = std::sqrt(1.0 - 1e-12), b = std::sqrt(1.0 - 4e-12);
  const double c60 = std::cos(kPi / 3), s60 = std::sin(kPi / 3);
  struct Case {
    const char* label;
    Vector3d towardsLight, view;
    double diffuseFactor, specularFactor;  // times kDiffuse, kSpecular
  };
  const Case cases[] = {
      {"light, view and normal aligned: f = 1", kUp, kUp, 1.0, 1.0},
      {"light exactly behind the surface", {1, 0, 0}, kUp, 0.0, 0.0},
      {"L.n = 1e-6 is not positive (strict)", {a, 0, 1e-6}, kUp, 0.0, 0.0},
      {"L.n = 2e-6 contributes, seen along the mirror", {b, 0, 2e-6}, {-b, 0, 2e-6}, 2e-6, 1.0},
      {"light below the surface", {0, 0, -1}, kUp, 0.0, 0.0},
      {"mirror direction: full specular", {s60, 0, c60}, {-s60, 0, c60}, c60, 1.0},
      {"half vector off the normal: power of shininess",
       {s60, 0, c60},
       kUp,
       c60,
       std::pow(std::cos(kPi / 6), 10)},
      {"view opposite the light: zero half vector", {0.6, 0, 0.8}, {-0.6, 0, -0.8}, 0.8, 0.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const auto [diffuse, specular] = light1(Material(), c.towardsLight, c.view);
    expectNear(diffuse, kDiffuse * c.diffuseFactor);
    expectNear(specular, kSpecular * c.specularFactor);
  }
}

TEST(LightIntegrator, MaterialShapesTheSums) {
  Material m;
  m.setDiffuseFilter(RadianceFilter(0.5, 0, 1));
  m.setSpecularFilter(RadianceFilter(1, 0.5, 0));
  const double c45 = std::cos(kPi / 4), h = std::cos(kPi / 8);
  struct Case {
    const char* label;
    double shininess, specularFactor;
  };
  const Case cases[] = {
      {"shininess 10", 10, std::pow(h, 10)},
      {"shininess 1", 1, h},
      {"shininess 0: full specular", 0, 1.0},
      {"negative shininess stores 0: full specular", -4, 1.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    m.setSpecularShininess(c.shininess);
    const auto [diffuse, specular] = light1(m, unit(1, 0, 1), kUp);
    expectNear(diffuse, Radiance(0.5 * c45, 0.0, 0.25 * c45));
    expectNear(specular, Radiance(0.8 * c.specularFactor, 0.2 * c.specularFactor, 0.0));
  }
}

TEST(LightIntegrator, PointLightAtTheSurfaceAddsNothing) {
  LightIntegrator integrator{Material()};
  const Point3d p(1, 2, 3);
  integrator.addLightContribution(p, kUp, kUp, PointLight(kDiffuse, kSpecular, p));
  EXPECT_EQ(integrator.getDiffuseContribution(), Radiance());
  EXPECT_EQ(integrator.getSpecularContribution(), Radiance());
  integrator.addLightContribution(p, kUp, kUp, PointLight(kDiffuse, kSpecular, Point3d(1, 2, 9)));
  EXPECT_EQ(integrator.getDiffuseContribution(), kDiffuse);
  EXPECT_EQ(integrator.getSpecularContribution(), kSpecular);
}

// Seeded random scenes: a point light far along a direction acts like the
// directional light, and several lights sum to the single-light integrals.
TEST(LightIntegrator, RandomScenesAgree) {
  std::mt19937 rng(99);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  auto randomUnit = [&] {
    for (;;) {
      const double x = u(rng), y = u(rng), z = u(rng);
      const double l = x * x + y * y + z * z;
      if (l > 0.01 && l < 1) return unit(x, y, z);
    }
  };
  for (int trial = 0; trial < 300; ++trial) {
    SCOPED_TRACE(trial);
    Material m(Radiance(), RadianceFilter(), RadianceFilter(u(rng), u(rng) + 1, 0.7),
               RadianceFilter(0.9, u(rng), 1), 1 + 20 * std::fabs(u(rng)));
    const Point3d p(u(rng), u(rng), u(rng));
    const Vector3d n = randomUnit(), view = randomUnit();
    DirectionalLight lights[4];  // copies are protected; arrays assign
    for (DirectionalLight& light : lights)
      light = DirectionalLight(Radiance(u(rng) + 1, 1, std::fabs(u(rng))),
                               Radiance(1, std::fabs(u(rng)), 0.5), randomUnit());

    LightIntegrator all(m);
    Radiance diffuseSum, specularSum;
    for (const DirectionalLight& light : lights) {
      all.addLightContribution(p, n, view, light);
      LightIntegrator one(m);
      one.addLightContribution(p, n, view, light);
      diffuseSum += one.getDiffuseContribution();
      specularSum += one.getSpecularContribution();

      LightIntegrator far(m);
      far.addLightContribution(p, n, view,
                               PointLight(light.getDiffuseRadiance(), light.getSpecularRadiance(),
                                          p + light.getDirection() * 1e3));
      EXPECT_NEAR(far.getDiffuseContribution().getRed(), one.getDiffuseContribution().getRed(), 1e-9);
      EXPECT_NEAR(far.getSpecularContribution().getGreen(), one.getSpecularContribution().getGreen(), 1e-9);
      // Never negative, and the diffuse term never exceeds the filtered light.
      EXPECT_GE(one.getDiffuseContribution().getRed(), 0.0);
      EXPECT_LE(one.getDiffuseContribution().getRed(),
                m.applyDiffuseFilter(light.getDiffuseRadiance()).getRed());
    }
    expectNear(all.getDiffuseContribution(), diffuseSum);
    expectNear(all.getSpecularContribution(), specularSum);
  }
}

}  // namespace
