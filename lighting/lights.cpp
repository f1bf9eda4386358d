// Directional and point light sources.
#include "qvgui/lighting.h"

namespace gui_objects {

Light::~Light() = default;

// ---- Directional light -------------------------------------------------------------

DirectionalLight::DirectionalLight(const Radiance& diffuse, const Radiance& specular,
                                   const Vector3d& direction) noexcept
    : Light(diffuse, specular), direction_(direction) {
  direction_.normalize_noexception();
}

DirectionalLight::~DirectionalLight() = default;

void DirectionalLight::setDirection(const Vector3d& direction) noexcept {
  direction_ = direction;
  direction_.normalize_noexception();
}

Vector3d DirectionalLight::getLightVectorAt(const Point3d& /*point*/) const { return direction_; }

Radiance DirectionalLight::getDiffuseRadianceAt(const Point3d& /*point*/) const {
  return getDiffuseRadiance();
}

Radiance DirectionalLight::getSpecularRadianceAt(const Point3d& /*point*/) const {
  return getSpecularRadiance();
}

Light* DirectionalLight::doClone() const { return new DirectionalLight(*this); }

// ---- Point light -----------------------------------------------------------------------

PointLight::PointLight(const Radiance& diffuse, const Radiance& specular, const Point3d& position) noexcept
    : Light(diffuse, specular), position_(position) {}

PointLight::~PointLight() = default;

Vector3d PointLight::getLightVectorAt(const Point3d& point) const {
  Vector3d towardsLight = position_ - point;
  towardsLight.normalize_noexception();
  return towardsLight;
}

Radiance PointLight::getDiffuseRadianceAt(const Point3d& /*point*/) const { return getDiffuseRadiance(); }

Radiance PointLight::getSpecularRadianceAt(const Point3d& /*point*/) const { return getSpecularRadiance(); }

Light* PointLight::doClone() const { return new PointLight(*this); }

}  // namespace gui_objects
