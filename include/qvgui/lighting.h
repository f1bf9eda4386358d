// Lighting: radiance values and per-channel filters, surface materials,
// directional and point lights, and the integrator of diffuse and specular
// light at one surface point.
//
// Raises nothing: every operation is defined for every input.
#pragma once

#include <iosfwd>

#include "qvgui/export.h"
#include "qvgui/geometry.h"

namespace gui_objects {

// ---- Radiance ----------------------------------------------------------------------
//
// Light quantities per channel. Never negative: construction keeps a value
// only when it is greater than 0, so negatives and NaN become 0. No upper
// bound; the caller clamps when it turns radiance into a colour.
class QVGUI_API Radiance {
 public:
  constexpr Radiance() noexcept = default;
  constexpr Radiance(double red, double green, double blue) noexcept
      : red_(floorAtZero(red)), green_(floorAtZero(green)), blue_(floorAtZero(blue)) {}
  explicit constexpr Radiance(const Color3d& c) noexcept : Radiance(c.getRed(), c.getGreen(), c.getBlue()) {}

  [[nodiscard]] constexpr double getRed() const noexcept { return red_; }
  [[nodiscard]] constexpr double getGreen() const noexcept { return green_; }
  [[nodiscard]] constexpr double getBlue() const noexcept { return blue_; }

  // Sums and scalings are stored as computed, without clamping.
  constexpr Radiance& operator+=(const Radiance& b) noexcept {
    red_ += b.red_;
    green_ += b.green_;
    blue_ += b.blue_;
    return *this;
  }
  constexpr Radiance& operator*=(double s) noexcept {
    red_ *= s;
    green_ *= s;
    blue_ *= s;
    return *this;
  }
  // Exact per-channel equality.
  [[nodiscard]] constexpr bool operator==(const Radiance& b) const noexcept {
    return red_ == b.red_ && green_ == b.green_ && blue_ == b.blue_;
  }
  [[nodiscard]] constexpr bool operator!=(const Radiance& b) const noexcept { return !(*this == b); }

  // Channels clamped into [0, 1].
  [[nodiscard]] Color3d asColor3d() const noexcept;
  // Channels clamped into [0, 1], alpha 1.
  [[nodiscard]] Color4d asColor4d() const noexcept;

 private:
  static constexpr double floorAtZero(double v) noexcept { return v > 0.0 ? v : 0.0; }
  double red_ = 0.0;
  double green_ = 0.0;
  double blue_ = 0.0;
};

[[nodiscard]] constexpr Radiance operator+(Radiance a, const Radiance& b) noexcept { return a += b; }
[[nodiscard]] constexpr Radiance operator*(Radiance a, double s) noexcept { return a *= s; }
QVGUI_API std::ostream& operator<<(std::ostream& os, const Radiance& r);

// ---- Radiance filter ------------------------------------------------------------------
//
// Per-channel reflectances, clamped into [0, 1] on construction (NaN becomes 0).
class QVGUI_API RadianceFilter {
 public:
  constexpr RadianceFilter() noexcept = default;
  constexpr RadianceFilter(double red, double green, double blue) noexcept
      : red_(clampUnit(red)), green_(clampUnit(green)), blue_(clampUnit(blue)) {}

  [[nodiscard]] constexpr double getRed() const noexcept { return red_; }
  [[nodiscard]] constexpr double getGreen() const noexcept { return green_; }
  [[nodiscard]] constexpr double getBlue() const noexcept { return blue_; }

  // Per-channel filter x radiance, never negative.
  [[nodiscard]] constexpr Radiance operator()(const Radiance& r) const noexcept {
    return Radiance(red_ * r.getRed(), green_ * r.getGreen(), blue_ * r.getBlue());
  }
  [[nodiscard]] constexpr bool operator==(const RadianceFilter& b) const noexcept {
    return red_ == b.red_ && green_ == b.green_ && blue_ == b.blue_;
  }
  [[nodiscard]] constexpr bool operator!=(const RadianceFilter& b) const noexcept { return !(*this == b); }

 private:
  static constexpr double clampUnit(double v) noexcept {
    const double upper = v > 1.0 ? 1.0 : v;
    return upper > 0.0 ? upper : 0.0;
  }
  double red_ = 1.0;
  double green_ = 1.0;
  double blue_ = 1.0;
};

QVGUI_API std::ostream& operator<<(std::ostream& os, const RadianceFilter& f);

// ---- Material ---------------------------------------------------------------------------
//
// Defaults: no emission, every filter (1, 1, 1), shininess 10.
class QVGUI_API Material {
 public:
  constexpr Material() noexcept = default;
  constexpr Material(const Radiance& emissive, const RadianceFilter& ambient, const RadianceFilter& diffuse,
                     const RadianceFilter& specular, double shininess) noexcept
      : emissive_(emissive),
        ambient_(ambient),
        diffuse_(diffuse),
        specular_(specular),
        shininess_(floorAtZero(shininess)) {}

  constexpr void setEmissiveRadiance(const Radiance& r) noexcept { emissive_ = r; }
  constexpr void setAmbientFilter(const RadianceFilter& f) noexcept { ambient_ = f; }
  constexpr void setDiffuseFilter(const RadianceFilter& f) noexcept { diffuse_ = f; }
  constexpr void setSpecularFilter(const RadianceFilter& f) noexcept { specular_ = f; }
  // Negative and NaN shininess become 0.
  constexpr void setSpecularShininess(double s) noexcept { shininess_ = floorAtZero(s); }

  [[nodiscard]] constexpr const Radiance& getEmissiveRadiance() const noexcept { return emissive_; }
  [[nodiscard]] constexpr double getSpecularShininess() const noexcept { return shininess_; }
  [[nodiscard]] constexpr const RadianceFilter& getAmbientFilter() const noexcept { return ambient_; }
  [[nodiscard]] constexpr const RadianceFilter& getDiffuseFilter() const noexcept { return diffuse_; }
  [[nodiscard]] constexpr const RadianceFilter& getSpecularFilter() const noexcept { return specular_; }

  [[nodiscard]] constexpr Radiance applyAmbientFilter(const Radiance& r) const noexcept {
    return ambient_(r);
  }
  [[nodiscard]] constexpr Radiance applyDiffuseFilter(const Radiance& r) const noexcept {
    return diffuse_(r);
  }
  [[nodiscard]] constexpr Radiance applySpecularFilter(const Radiance& r) const noexcept {
    return specular_(r);
  }

 private:
  static constexpr double floorAtZero(double v) noexcept { return v > 0.0 ? v : 0.0; }
  Radiance emissive_;
  RadianceFilter ambient_;
  RadianceFilter diffuse_;
  RadianceFilter specular_;
  double shininess_ = 10.0;
};

// ---- Lights -----------------------------------------------------------------------------

// A light source. Virtual slots in order: destructor, getLightVectorAt,
// getDiffuseRadianceAt, getSpecularRadianceAt, doClone.
class QVGUI_API Light {
 public:
  virtual ~Light();
  // Unit vector from the surface point towards the light (zero when there is
  // no direction).
  [[nodiscard]] virtual Vector3d getLightVectorAt(const Point3d& point) const = 0;
  [[nodiscard]] virtual Radiance getDiffuseRadianceAt(const Point3d& point) const = 0;
  [[nodiscard]] virtual Radiance getSpecularRadianceAt(const Point3d& point) const = 0;

  void setDiffuseRadiance(const Radiance& r) noexcept { diffuse_ = r; }
  void setSpecularRadiance(const Radiance& r) noexcept { specular_ = r; }
  [[nodiscard]] const Radiance& getDiffuseRadiance() const noexcept { return diffuse_; }
  [[nodiscard]] const Radiance& getSpecularRadiance() const noexcept { return specular_; }

  // A new copy of the most-derived light; the caller deletes it.
  [[nodiscard]] Light* clone() const { return doClone(); }

 protected:
  Light() noexcept = default;
  Light(const Radiance& diffuse, const Radiance& specular) noexcept
      : diffuse_(diffuse), specular_(specular) {}
  Light(const Light&) noexcept = default;
  Light& operator=(const Light&) noexcept = default;
  [[nodiscard]] virtual Light* doClone() const = 0;

 private:
  Radiance diffuse_;
  Radiance specular_;
};

// Light from one direction, given pointing from the scene towards the light;
// the same radiance everywhere.
class QVGUI_API DirectionalLight : public Light {
 public:
  // No direction and no radiance (for arrays of lights).
  DirectionalLight() noexcept = default;
  // The direction is normalised without throwing; a zero direction stays zero.
  DirectionalLight(const Radiance& diffuse, const Radiance& specular, const Vector3d& direction) noexcept;
  DirectionalLight& operator=(const DirectionalLight&) noexcept = default;
  ~DirectionalLight() override;

  void setDirection(const Vector3d& direction) noexcept;
  [[nodiscard]] const Vector3d& getDirection() const noexcept { return direction_; }

  [[nodiscard]] Vector3d getLightVectorAt(const Point3d& point) const override;
  [[nodiscard]] Radiance getDiffuseRadianceAt(const Point3d& point) const override;
  [[nodiscard]] Radiance getSpecularRadianceAt(const Point3d& point) const override;

 protected:
  DirectionalLight(const DirectionalLight&) noexcept = default;
  [[nodiscard]] Light* doClone() const override;

 private:
  Vector3d direction_;
};

// Light from a position; no distance attenuation.
class QVGUI_API PointLight : public Light {
 public:
  // At the origin with no radiance (for arrays of lights).
  PointLight() noexcept = default;
  PointLight(const Radiance& diffuse, const Radiance& specular, const Point3d& position) noexcept;
  PointLight& operator=(const PointLight&) noexcept = default;
  ~PointLight() override;

  void setPosition(const Point3d& position) noexcept { position_ = position; }
  [[nodiscard]] const Point3d& getPosition() const noexcept { return position_; }

  // normalize_noexception(position - point): zero at the light's own position.
  [[nodiscard]] Vector3d getLightVectorAt(const Point3d& point) const override;
  [[nodiscard]] Radiance getDiffuseRadianceAt(const Point3d& point) const override;
  [[nodiscard]] Radiance getSpecularRadianceAt(const Point3d& point) const override;

 protected:
  PointLight(const PointLight&) noexcept = default;
  [[nodiscard]] Light* doClone() const override;

 private:
  Point3d position_;
};

// ---- Integrator ---------------------------------------------------------------------------
//
// Sums the diffuse and specular (half-vector) light at one surface point; one
// integrator per point. Ambient and emissive terms are the caller's. The sums
// are not clamped.
class QVGUI_API LightIntegrator {
 public:
  explicit LightIntegrator(const Material& material) noexcept : material_(material) {}

  // normal and view are unit vectors; view points from the surface towards the
  // eye. A light contributes only when L.normal > 1e-6, and a specular term
  // only when H.normal > 1e-6 (H the normalised midpoint of L and view). The
  // specular factor is (H.normal)^shininess, except that it is exactly 1 when
  // H.normal is nearlyEqual to 1 or the shininess is nearlyEqual to 0.
  void addLightContribution(const Point3d& point, const Vector3d& normal, const Vector3d& view,
                            const Light& light);

  [[nodiscard]] const Radiance& getDiffuseContribution() const noexcept { return diffuse_; }
  [[nodiscard]] const Radiance& getSpecularContribution() const noexcept { return specular_; }

 private:
  Material material_;
  Radiance diffuse_;
  Radiance specular_;
};

}  // namespace gui_objects
