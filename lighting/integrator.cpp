// Diffuse and specular (half-vector) light at one surface point.
#include <cmath>

#include "qvgui/lighting.h"

namespace gui_objects {

void LightIntegrator::addLightContribution(const Point3d& point, const Vector3d& normal, const Vector3d& view,
                                           const Light& light) {
  const Vector3d towardsLight = light.getLightVectorAt(point);
  const Radiance diffuse = light.getDiffuseRadianceAt(point);
  const Radiance specular = light.getSpecularRadianceAt(point);

  const double cosine = towardsLight.dot(normal);
  if (!nearlyPositive(cosine)) return;  // behind the surface or grazing
  diffuse_ += material_.applyDiffuseFilter(diffuse) * cosine;

  Vector3d half = interpolate(0.5, towardsLight, view);
  half.normalize_noexception();
  const double s = half.dot(normal);
  if (!nearlyPositive(s)) return;

  // Seen along the mirror direction, or with a shininess of 0, the full
  // specular radiance arrives; pow is not consulted for either.
  double factor = 1.0;
  const double shininess = material_.getSpecularShininess();
  if (!nearlyEqual(s, 1.0) && !nearlyEqual(shininess, 0.0)) factor = std::pow(s, shininess);
  specular_ += material_.applySpecularFilter(specular) * factor;
}

}  // namespace gui_objects
