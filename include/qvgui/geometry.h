// The geometry kernel: points, vectors, colours, 4x4 matrices, the data
// transformer and the exception family every other subsystem throws.
//
// Raises: the internal errors (IInternalException and its subclasses), the
// user errors (IUserException: the InvalidArrayException family) and the tag
// classes ParallelException, InvalidQuadException, InvalidInsetException,
// RectangleCrossedPointsException; no host errors. The catch list below
// catches everything any part of the library throws.
#pragma once

#include <boost/exception/exception.hpp>
#include <cstdint>
#include <exception>
#include <iosfwd>
#include <string>
#include <type_traits>

#include "qvgui/export.h"

extern "C" QVGUI_API const char libqvgui_version[];
extern "C" QVGUI_API const char libqvgui_build_date[];

// A colour record of the colour-table interface (declared in qvgui/raster.h).
struct Color_tag;

// ---- Interchange records of the flat interface ------------------------------

// A device point: the vertical coordinate first, then the horizontal one.
struct qvpoint {
  std::int16_t v;  // y
  std::int16_t h;  // x
};

struct Spoint2 {
  std::int32_t x;
  std::int32_t y;
};

struct Real_point {
  double x;
  double y;
};

struct Real_point3 {
  double x;
  double y;
  double z;
};

namespace gui_objects {

class Plane3d;
class Vector2i;
class Vector2d;
class Vector3d;

// ---- Exceptions --------------------------------------------------------------
//
// Three kinds. Internal errors carry a fixed English text; user errors carry a
// catalogue identifier and its localised text; tag exceptions carry nothing and
// are caught by type. The first two take part in boost's cloning protocol, so a
// boost::exception_ptr taken with boost::current_exception() keeps the dynamic
// type and boost::rethrow_exception() throws the same class again.

// The root of the library's text-carrying exceptions.
class QVGUI_API IException : public boost::exception, public boost::exception_detail::clone_base {
 public:
  ~IException() noexcept override;
  [[nodiscard]] virtual const char* what() const noexcept = 0;

 protected:
  IException() noexcept = default;
  IException(const IException&) noexcept = default;
  IException& operator=(const IException&) noexcept = default;
};

// A fault inside the library or a broken precondition of a caller in code.
class QVGUI_API IInternalException : public IException {
 public:
  ~IInternalException() noexcept override;

 protected:
  IInternalException() noexcept = default;
  IInternalException(const IInternalException&) noexcept = default;
  IInternalException& operator=(const IInternalException&) noexcept = default;
};

// A fault in what the user gave; its text is meant to be shown to the user.
class QVGUI_API IUserException : public IException {
 public:
  ~IUserException() noexcept override;

 protected:
  IUserException() noexcept = default;
  IUserException(const IUserException&) noexcept = default;
  IUserException& operator=(const IUserException&) noexcept = default;
};

// The internal-error classes: name and what() text.
#define QVGUI_INTERNAL_EXCEPTIONS(X)                                                                         \
  X(ShortOverflowException, "Attempt to cast a point to 16 bits which had coordinates which were too large") \
  X(InvalidWException, "Attempt to project a Point4d with W==0")                                             \
  X(ZeroLengthException, "Attempt to normalize a zero length vector")                                        \
  X(InvalidScaleException, "Scale factor <= 0")                                                              \
  X(InvalidAxisException, "Attempt to rotate around a zero length axis")                                     \
  X(InvalidCoordinateFrameException, "Basis vectors are not orthogonal and right handed")                    \
  X(InvalidBoundsException, "Cannot create a projection matrix with volume <= 0")                            \
  X(InvalidJacobianException, "Cannot compute the Jacobian of a nonaffine transform")                        \
  X(InvalidAxisAlignedBoundingBoxException, "Invalid AxisAlignedBoundingBox")                                \
  X(InvalidWidthException, "Invalid width")

#define QVGUI_DECLARE_INTERNAL_EXCEPTION(Name, Text)                   \
  class QVGUI_API Name : public IInternalException {                   \
   public:                                                             \
    Name() noexcept = default;                                         \
    Name(const Name&) noexcept = default;                              \
    Name& operator=(const Name&) noexcept = default;                   \
    ~Name() noexcept override;                                         \
    [[nodiscard]] const char* what() const noexcept override;          \
                                                                       \
   private:                                                            \
    const boost::exception_detail::clone_base* clone() const override; \
    void rethrow() const override;                                     \
  };
QVGUI_INTERNAL_EXCEPTIONS(QVGUI_DECLARE_INTERNAL_EXCEPTION)
#undef QVGUI_DECLARE_INTERNAL_EXCEPTION

// A host array that the library cannot use. The text is the message
// catalogue's entry for the identifier in the global locale at construction.
class QVGUI_API InvalidArrayException : public IUserException {
 public:
  InvalidArrayException(const InvalidArrayException&) = default;
  InvalidArrayException& operator=(const InvalidArrayException&) = default;
  ~InvalidArrayException() noexcept override;
  [[nodiscard]] const char* what() const noexcept override;
  [[nodiscard]] const std::string& identifier() const noexcept { return identifier_; }
  [[nodiscard]] const std::string& message() const noexcept { return message_; }

 protected:
  explicit InvalidArrayException(const char* identifier);

 private:
  std::string identifier_;
  std::string message_;
};

// The host-array errors: class name and catalogue identifier.
#define QVGUI_ARRAY_EXCEPTIONS(X)                                        \
  X(NullArrayException, "Tavrix::gui::array::NullArray")                 \
  X(InvalidArrayClassException, "Tavrix::gui::array::InvalidArrayClass") \
  X(InvalidArrayShapeException, "Tavrix::gui::array::InvalidArrayShape") \
  X(InvalidArrayDataException, "Tavrix::gui::array::InvalidArrayData")

#define QVGUI_DECLARE_ARRAY_EXCEPTION(Name, Identifier)                \
  class QVGUI_API Name : public InvalidArrayException {                \
   public:                                                             \
    Name();                                                            \
    Name(const Name&) = default;                                       \
    Name& operator=(const Name&) = default;                            \
    ~Name() noexcept override;                                         \
                                                                       \
   private:                                                            \
    const boost::exception_detail::clone_base* clone() const override; \
    void rethrow() const override;                                     \
  };
QVGUI_ARRAY_EXCEPTIONS(QVGUI_DECLARE_ARRAY_EXCEPTION)
#undef QVGUI_DECLARE_ARRAY_EXCEPTION

// Tag exceptions: thrown by value, caught by type, no text.
class QVGUI_API ParallelException {};
class QVGUI_API InvalidQuadException {};
class QVGUI_API InvalidInsetException {};
class QVGUI_API RectangleCrossedPointsException {};
class QVGUI_API InvalidFrustumException {};
class QVGUI_API InvalidDataException {};
class QVGUI_API InvalidDataExtentsException {};

// ---- Catching everything the library throws --------------------------------
//
// The library's exceptions have no common base: the tag classes are empty by
// design. A caller that must stop every failure at one boundary lists, in
// this order (derived before base):
//
//   catch (const gui_objects::IException& e)            // internal and user errors
//   catch (const HostError& e)                          // host errors by identifier
//   catch (const ScriptException& e)                    // user code run by callbacks
//   catch (const boost::numeric::bad_numeric_cast& e)   // narrowed element counts
//   catch (const std::exception& e)                     // invalidXYZTypeException,
//                                                       // invalidCDataTypeException,
//                                                       // MCallbackValueException
//   catch (const gui_objects::cdata::InvalidRGBADataException&)
//   catch (const gui_objects::ParallelException&)
//   catch (const gui_objects::InvalidQuadException&)
//   catch (const gui_objects::InvalidInsetException&)
//   catch (const gui_objects::RectangleCrossedPointsException&)
//   catch (const gui_objects::InvalidFrustumException&)
//   catch (const gui_objects::InvalidDataException&)
//   catch (const gui_objects::InvalidDataExtentsException&)
//   catch (const gui_objects::vertex_vector::InvalidIndexException&)
//   catch (const gui_objects::vertex_vector::BindingMismatchException&)
//   catch (const gui_objects::vertex_vector::AppendException&)
//   catch (const gui_objects::camera_utils::BadLimitsException&)
//   catch (const gui_objects::camera_utils::CouldNotFitCameraException&)
//   catch (const gui_objects::convert_from_string_utils::ParseException&)
//
// HostError and ScriptException derive from std::exception, so a boundary
// that needs no distinction may fold them into the std::exception clause.

// ---- Scalar tolerance --------------------------------------------------------

// The library-wide tolerance test: absolute (1e-7) when both magnitudes are
// below 1, relative (1e-7 of the larger magnitude) above. Strictly less than
// the threshold. Two zeros are equal, NaN is never equal, equal infinities are.
[[nodiscard]] QVGUI_API bool nearlyEqual(double a, double b) noexcept;
// x > 1e-6 and x < -1e-6.
[[nodiscard]] QVGUI_API bool nearlyPositive(double x) noexcept;
[[nodiscard]] QVGUI_API bool nearlyNegative(double x) noexcept;

// ---- Points ------------------------------------------------------------------
//
// Comparisons: == is exact (NaN never equal); < is lexicographic in x, y, z,
// where an equal or unordered (NaN) component defers to the next one.

class Point2f;
class Point2d;

class QVGUI_API Point2i {
 public:
  constexpr Point2i() noexcept = default;
  constexpr Point2i(std::int32_t x, std::int32_t y) noexcept : x_(x), y_(y) {}
  constexpr Point2i(qvpoint p) noexcept : x_(p.h), y_(p.v) {}
  constexpr Point2i(Spoint2 p) noexcept : x_(p.x), y_(p.y) {}

  [[nodiscard]] constexpr std::int32_t getX() const noexcept { return x_; }
  [[nodiscard]] constexpr std::int32_t getY() const noexcept { return y_; }
  constexpr void setX(std::int32_t x) noexcept { x_ = x; }
  constexpr void setY(std::int32_t y) noexcept { y_ = y; }

  // Both coordinates must fit in [-32768, 32767], else ShortOverflowException.
  operator qvpoint() const;
  constexpr operator Spoint2() const noexcept { return Spoint2{x_, y_}; }

  [[nodiscard]] Point2f asPoint2f() const noexcept;
  [[nodiscard]] Point2d asPoint2d() const noexcept;
  // Computed in double with hypot.
  [[nodiscard]] double distance(const Point2i& other) const noexcept;

  // Integer arithmetic wraps around on overflow (two's complement).
  Point2i& operator+=(const Vector2i& v) noexcept;
  Point2i& operator-=(const Vector2i& v) noexcept;

 private:
  std::int32_t x_ = 0;
  std::int32_t y_ = 0;
};

class QVGUI_API Point2f {
 public:
  constexpr Point2f() noexcept = default;
  constexpr Point2f(float x, float y) noexcept : x_(x), y_(y) {}

  [[nodiscard]] constexpr float getX() const noexcept { return x_; }
  [[nodiscard]] constexpr float getY() const noexcept { return y_; }
  constexpr void setX(float x) noexcept { x_ = x; }
  constexpr void setY(float y) noexcept { y_ = y; }

  // Truncates toward zero. NaN gives 0 and values beyond the 32-bit range
  // saturate at its ends, so no input is undefined.
  [[nodiscard]] Point2i asPoint2i() const noexcept;
  [[nodiscard]] Point2d asPoint2d() const noexcept;
  [[nodiscard]] double distance(const Point2f& other) const noexcept;

 private:
  float x_ = 0.0f;
  float y_ = 0.0f;
};

class QVGUI_API Point2d {
 public:
  constexpr Point2d() noexcept = default;
  constexpr Point2d(double x, double y) noexcept : x_(x), y_(y) {}
  constexpr Point2d(Real_point p) noexcept : x_(p.x), y_(p.y) {}

  [[nodiscard]] constexpr double getX() const noexcept { return x_; }
  [[nodiscard]] constexpr double getY() const noexcept { return y_; }
  constexpr void setX(double x) noexcept { x_ = x; }
  constexpr void setY(double y) noexcept { y_ = y; }

  constexpr operator Real_point() const noexcept { return Real_point{x_, y_}; }

  // Truncates toward zero; NaN gives 0, out-of-range values saturate.
  [[nodiscard]] Point2i asPoint2i() const noexcept;
  [[nodiscard]] Point2f asPoint2f() const noexcept;
  [[nodiscard]] double distance(const Point2d& other) const noexcept;

  Point2d& operator+=(const Vector2d& v) noexcept;
  Point2d& operator-=(const Vector2d& v) noexcept;

 private:
  double x_ = 0.0;
  double y_ = 0.0;
};

class Point3d;

class QVGUI_API Point3f {
 public:
  constexpr Point3f() noexcept = default;
  constexpr Point3f(float x, float y, float z) noexcept : x_(x), y_(y), z_(z) {}

  [[nodiscard]] constexpr float getX() const noexcept { return x_; }
  [[nodiscard]] constexpr float getY() const noexcept { return y_; }
  [[nodiscard]] constexpr float getZ() const noexcept { return z_; }
  constexpr void setX(float x) noexcept { x_ = x; }
  constexpr void setY(float y) noexcept { y_ = y; }
  constexpr void setZ(float z) noexcept { z_ = z; }

  [[nodiscard]] Point3d asPoint3d() const noexcept;
  // Widened to double, then as Point3d::distance.
  [[nodiscard]] double distance(const Point3f& other) const noexcept;

 private:
  float x_ = 0.0f;
  float y_ = 0.0f;
  float z_ = 0.0f;
};

class QVGUI_API Point3d {
 public:
  constexpr Point3d() noexcept = default;
  constexpr Point3d(double x, double y, double z) noexcept : x_(x), y_(y), z_(z) {}
  constexpr Point3d(const Real_point3& p) noexcept : x_(p.x), y_(p.y), z_(p.z) {}

  [[nodiscard]] constexpr double getX() const noexcept { return x_; }
  [[nodiscard]] constexpr double getY() const noexcept { return y_; }
  [[nodiscard]] constexpr double getZ() const noexcept { return z_; }
  constexpr void setX(double x) noexcept { x_ = x; }
  constexpr void setY(double y) noexcept { y_ = y; }
  constexpr void setZ(double z) noexcept { z_ = z; }

  constexpr operator Real_point3() const noexcept { return Real_point3{x_, y_, z_}; }

  [[nodiscard]] Point3f asPoint3f() const noexcept;
  // Plain square root of the sum of squares (Vector3d::length).
  [[nodiscard]] double distance(const Point3d& other) const noexcept;

  Point3d& operator+=(const Vector3d& v) noexcept;
  Point3d& operator-=(const Vector3d& v) noexcept;

 private:
  double x_ = 0.0;
  double y_ = 0.0;
  double z_ = 0.0;
};

// A homogeneous point; w = 1 for positions, w = 0 for directions.
class QVGUI_API Point4d {
 public:
  constexpr Point4d() noexcept = default;
  constexpr Point4d(double x, double y, double z, double w) noexcept : x_(x), y_(y), z_(z), w_(w) {}
  // w = 1.
  explicit Point4d(const Point3d& p) noexcept;
  // w = 0: a direction.
  explicit Point4d(const Vector3d& v) noexcept;

  [[nodiscard]] constexpr double getX() const noexcept { return x_; }
  [[nodiscard]] constexpr double getY() const noexcept { return y_; }
  [[nodiscard]] constexpr double getZ() const noexcept { return z_; }
  [[nodiscard]] constexpr double getW() const noexcept { return w_; }
  constexpr void setX(double x) noexcept { x_ = x; }
  constexpr void setY(double y) noexcept { y_ = y; }
  constexpr void setZ(double z) noexcept { z_ = z; }
  constexpr void setW(double w) noexcept { w_ = w; }

  // (x, y, z) times r = 1/w. Throws InvalidWException for every w <= 0, not
  // only w == 0: points behind the eye have no meaningful projection. A NaN w
  // is not refused: it passes and gives NaN coordinates.
  [[nodiscard]] Point3d project() const;
  // As project(); also stores r into *inverseW when the pointer is not null.
  [[nodiscard]] Point3d project(double* inverseW) const;

  // The outcode bit of clipping plane `index` (0..11).
  [[nodiscard]] static constexpr std::uint16_t outCodeForPlane(int index) noexcept {
    return static_cast<std::uint16_t>(1u << index);
  }
  // The clipping outcode of this point against the six canonical planes and
  // up to six user planes (null array or null entries contribute nothing).
  // Defined with the clipping code.
  [[nodiscard]] std::uint16_t calculateOutcodes(const Plane3d* const* userPlanes) const;

 private:
  double x_ = 0.0;
  double y_ = 0.0;
  double z_ = 0.0;
  double w_ = 1.0;
};

// ---- Vectors -----------------------------------------------------------------

class QVGUI_API Vector2i {
 public:
  constexpr Vector2i() noexcept = default;
  constexpr Vector2i(std::int32_t x, std::int32_t y) noexcept : x_(x), y_(y) {}
  explicit constexpr Vector2i(const Point2i& p) noexcept : x_(p.getX()), y_(p.getY()) {}

  [[nodiscard]] constexpr std::int32_t getX() const noexcept { return x_; }
  [[nodiscard]] constexpr std::int32_t getY() const noexcept { return y_; }
  constexpr void setX(std::int32_t x) noexcept { x_ = x; }
  constexpr void setY(std::int32_t y) noexcept { y_ = y; }

  // All integer results are 32-bit and wrap around on overflow (two's
  // complement); lengthSquared() of a long vector is therefore wrong on purpose.
  [[nodiscard]] Vector2i operator-() const noexcept;
  [[nodiscard]] Vector2i perpDot() const noexcept;  // (-y, x)
  [[nodiscard]] std::int32_t dot(const Vector2i& b) const noexcept;
  [[nodiscard]] std::int32_t cross(const Vector2i& b) const noexcept;  // x*b.y - y*b.x
  [[nodiscard]] std::int32_t lengthSquared() const noexcept;
  // sqrt of lengthSquared() (so it inherits the wrap-around).
  [[nodiscard]] double length() const noexcept;
  Vector2i& operator*=(std::int32_t s) noexcept;

 private:
  std::int32_t x_ = 0;
  std::int32_t y_ = 0;
};

class QVGUI_API Vector2d {
 public:
  constexpr Vector2d() noexcept = default;
  constexpr Vector2d(double x, double y) noexcept : x_(x), y_(y) {}
  explicit constexpr Vector2d(const Point2d& p) noexcept : x_(p.getX()), y_(p.getY()) {}

  [[nodiscard]] constexpr double getX() const noexcept { return x_; }
  [[nodiscard]] constexpr double getY() const noexcept { return y_; }
  constexpr void setX(double x) noexcept { x_ = x; }
  constexpr void setY(double y) noexcept { y_ = y; }

  [[nodiscard]] constexpr Vector2d operator-() const noexcept { return Vector2d(-x_, -y_); }
  [[nodiscard]] constexpr Vector2d perpDot() const noexcept { return Vector2d(-y_, x_); }
  [[nodiscard]] constexpr double dot(const Vector2d& b) const noexcept { return x_ * b.x_ + y_ * b.y_; }
  [[nodiscard]] constexpr double cross(const Vector2d& b) const noexcept { return x_ * b.y_ - y_ * b.x_; }
  [[nodiscard]] constexpr double lengthSquared() const noexcept { return x_ * x_ + y_ * y_; }
  // hypot(x, y): no overflow or underflow of the squares.
  [[nodiscard]] double length() const noexcept;
  // Multiplies by 1/hypot(x, y); ZeroLengthException when the length is <= 0.
  Vector2d& normalize();
  // This vector is the mirror axis: returns v mirrored about the line of the
  // unit axis, 2(n.v)n - v. ZeroLengthException for a zero axis.
  [[nodiscard]] Vector2d reflect(const Vector2d& v) const;

  Vector2d& operator*=(double s) noexcept;
  Vector2d& operator+=(const Vector2d& b) noexcept;
  Vector2d& operator-=(const Vector2d& b) noexcept;

 private:
  double x_ = 0.0;
  double y_ = 0.0;
};

class QVGUI_API Vector3d {
 public:
  constexpr Vector3d() noexcept = default;
  constexpr Vector3d(double x, double y, double z) noexcept : x_(x), y_(y), z_(z) {}
  explicit constexpr Vector3d(const Point3d& p) noexcept : x_(p.getX()), y_(p.getY()), z_(p.getZ()) {}

  [[nodiscard]] constexpr double getX() const noexcept { return x_; }
  [[nodiscard]] constexpr double getY() const noexcept { return y_; }
  [[nodiscard]] constexpr double getZ() const noexcept { return z_; }
  constexpr void setX(double x) noexcept { x_ = x; }
  constexpr void setY(double y) noexcept { y_ = y; }
  constexpr void setZ(double z) noexcept { z_ = z; }

  [[nodiscard]] constexpr Vector3d operator-() const noexcept { return Vector3d(-x_, -y_, -z_); }
  // Summed as ((0 + x*x') + y*y') + z*z'.
  [[nodiscard]] double dot(const Vector3d& b) const noexcept;
  [[nodiscard]] Vector3d cross(const Vector3d& b) const noexcept;
  // sqrt(x^2 + y^2 + z^2): the squares may overflow (see normalize_carefully).
  [[nodiscard]] double length() const noexcept;
  [[nodiscard]] double lengthSquared() const noexcept;

  // Three normalisations with different numerics:
  // normalize()            multiplies by 1/sqrt(x^2+y^2+z^2); throws
  //                        ZeroLengthException when that length is <= 0 (a NaN
  //                        length passes and gives NaN components).
  // normalize_noexception() leaves zero vectors and vectors whose squared length
  //                        is nearlyEqual to 1 untouched, never throws.
  // normalize_carefully()  divides by hypot(hypot(x, y), z): safe for huge and
  //                        tiny components; throws ZeroLengthException.
  Vector3d& normalize();
  Vector3d& normalize_noexception() noexcept;
  Vector3d& normalize_carefully();
  // This vector is the mirror axis: 2(n.v)n - v with n the normalize()d axis.
  [[nodiscard]] Vector3d reflect(const Vector3d& v) const;

  Vector3d& operator*=(double s) noexcept;
  Vector3d& operator+=(const Vector3d& b) noexcept;
  Vector3d& operator-=(const Vector3d& b) noexcept;

 private:
  double x_ = 0.0;
  double y_ = 0.0;
  double z_ = 0.0;
};

// ---- Colours -----------------------------------------------------------------
//
// Color3d and Color4d clamp every component into [0, 1] on every write with
// v' = (v > 1 ? 1 : v); (v' > 0 ? v' : 0), so NaN becomes 0. Nothing throws.

class Color4d;
class Color4b;

class QVGUI_API Color3d {
 public:
  constexpr Color3d() noexcept = default;
  constexpr Color3d(double r, double g, double b) noexcept : r_(clamp(r)), g_(clamp(g)), b_(clamp(b)) {}
  // Red, green and blue of the record (clamped); black for a null record.
  // Defined with the colour records (raster subsystem).
  explicit Color3d(Color_tag* color);

  [[nodiscard]] constexpr double getRed() const noexcept { return r_; }
  [[nodiscard]] constexpr double getGreen() const noexcept { return g_; }
  [[nodiscard]] constexpr double getBlue() const noexcept { return b_; }
  constexpr void setRed(double r) noexcept { r_ = clamp(r); }
  constexpr void setGreen(double g) noexcept { g_ = clamp(g); }
  constexpr void setBlue(double b) noexcept { b_ = clamp(b); }

  // A new colour record with these components; the caller destroys it with
  // destroy_ColorPtr. Defined with the colour records (raster subsystem).
  [[nodiscard]] Color_tag* asColorPtr() const;
  [[nodiscard]] Color4d asColor4d() const noexcept;  // alpha 1
  // Each byte is trunc(c * 255 + 0.5); alpha 255.
  [[nodiscard]] Color4b asColor4b() const noexcept;

 private:
  static constexpr double clamp(double v) noexcept {
    const double upper = v > 1.0 ? 1.0 : v;
    return upper > 0.0 ? upper : 0.0;
  }
  double r_ = 0.0;
  double g_ = 0.0;
  double b_ = 0.0;
};

class QVGUI_API Color4d {
 public:
  constexpr Color4d() noexcept = default;
  constexpr Color4d(double r, double g, double b, double a) noexcept
      : r_(clamp(r)), g_(clamp(g)), b_(clamp(b)), a_(clamp(a)) {}
  // Red, green and blue of the record (clamped), always opaque: the record
  // has no alpha. Black for a null record. Defined with the colour records.
  explicit Color4d(Color_tag* color);

  [[nodiscard]] constexpr double getRed() const noexcept { return r_; }
  [[nodiscard]] constexpr double getGreen() const noexcept { return g_; }
  [[nodiscard]] constexpr double getBlue() const noexcept { return b_; }
  [[nodiscard]] constexpr double getAlpha() const noexcept { return a_; }
  constexpr void setRed(double r) noexcept { r_ = clamp(r); }
  constexpr void setGreen(double g) noexcept { g_ = clamp(g); }
  constexpr void setBlue(double b) noexcept { b_ = clamp(b); }
  constexpr void setAlpha(double a) noexcept { a_ = clamp(a); }

  // nearlyEqual(alpha, 1).
  [[nodiscard]] bool isOpaque() const noexcept;
  // Each byte is trunc(c * 255 + 0.5).
  [[nodiscard]] Color4b asColor4b() const noexcept;

 private:
  static constexpr double clamp(double v) noexcept {
    const double upper = v > 1.0 ? 1.0 : v;
    return upper > 0.0 ? upper : 0.0;
  }
  double r_ = 0.0;
  double g_ = 0.0;
  double b_ = 0.0;
  double a_ = 1.0;
};

// 8-bit RGBA, stored red, green, blue, alpha.
class QVGUI_API Color4b {
 public:
  constexpr Color4b() noexcept = default;
  constexpr Color4b(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a = 255) noexcept
      : r_(r), g_(g), b_(b), a_(a) {}

  [[nodiscard]] constexpr std::uint8_t getRed() const noexcept { return r_; }
  [[nodiscard]] constexpr std::uint8_t getGreen() const noexcept { return g_; }
  [[nodiscard]] constexpr std::uint8_t getBlue() const noexcept { return b_; }
  [[nodiscard]] constexpr std::uint8_t getAlpha() const noexcept { return a_; }
  constexpr void setRed(std::uint8_t r) noexcept { r_ = r; }
  constexpr void setGreen(std::uint8_t g) noexcept { g_ = g; }
  constexpr void setBlue(std::uint8_t b) noexcept { b_ = b; }
  constexpr void setAlpha(std::uint8_t a) noexcept { a_ = a; }

  [[nodiscard]] constexpr bool isOpaque() const noexcept { return a_ == 255; }
  // Each component is byte * 0.00392156862745098 (the double nearest 1/255,
  // multiplied rather than divided).
  [[nodiscard]] Color4d asColor4d() const noexcept;

 private:
  std::uint8_t r_ = 0;
  std::uint8_t g_ = 0;
  std::uint8_t b_ = 0;
  std::uint8_t a_ = 255;
};

// ---- Free functions over points, vectors and colours -------------------------

#define QVGUI_POINT_COMPARISONS(T)                                          \
  [[nodiscard]] QVGUI_API bool operator==(const T& a, const T& b) noexcept; \
  [[nodiscard]] QVGUI_API bool operator!=(const T& a, const T& b) noexcept; \
  [[nodiscard]] QVGUI_API bool operator<(const T& a, const T& b) noexcept;
QVGUI_POINT_COMPARISONS(Point2i)
QVGUI_POINT_COMPARISONS(Point2f)
QVGUI_POINT_COMPARISONS(Point2d)
QVGUI_POINT_COMPARISONS(Point3f)
QVGUI_POINT_COMPARISONS(Point3d)
#undef QVGUI_POINT_COMPARISONS

// Exact component-wise equality for the remaining value types.
#define QVGUI_EXACT_EQUALITY(T)                                             \
  [[nodiscard]] QVGUI_API bool operator==(const T& a, const T& b) noexcept; \
  [[nodiscard]] QVGUI_API bool operator!=(const T& a, const T& b) noexcept;
QVGUI_EXACT_EQUALITY(Point4d)
QVGUI_EXACT_EQUALITY(Vector2i)
QVGUI_EXACT_EQUALITY(Vector2d)
QVGUI_EXACT_EQUALITY(Vector3d)
QVGUI_EXACT_EQUALITY(Color3d)
QVGUI_EXACT_EQUALITY(Color4d)
QVGUI_EXACT_EQUALITY(Color4b)
#undef QVGUI_EXACT_EQUALITY

// Component-wise scalar nearlyEqual; float components are widened first.
[[nodiscard]] QVGUI_API bool nearlyEqual(const Point2f& a, const Point2f& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Point2d& a, const Point2d& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Point3f& a, const Point3f& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Point3d& a, const Point3d& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Point4d& a, const Point4d& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Vector2d& a, const Vector2d& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Vector3d& a, const Vector3d& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Color3d& a, const Color3d& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Color4d& a, const Color4d& b) noexcept;

// Point differences and point/vector arithmetic.
[[nodiscard]] QVGUI_API Vector2i operator-(const Point2i& a, const Point2i& b) noexcept;
[[nodiscard]] QVGUI_API Vector2d operator-(const Point2d& a, const Point2d& b) noexcept;
[[nodiscard]] QVGUI_API Vector3d operator-(const Point3d& a, const Point3d& b) noexcept;
[[nodiscard]] QVGUI_API Point2i operator+(const Point2i& p, const Vector2i& v) noexcept;
[[nodiscard]] QVGUI_API Point2d operator+(const Point2d& p, const Vector2d& v) noexcept;
[[nodiscard]] QVGUI_API Point3d operator+(const Point3d& p, const Vector3d& v) noexcept;
[[nodiscard]] QVGUI_API Point2i operator-(const Point2i& p, const Vector2i& v) noexcept;
[[nodiscard]] QVGUI_API Point2d operator-(const Point2d& p, const Vector2d& v) noexcept;
[[nodiscard]] QVGUI_API Point3d operator-(const Point3d& p, const Vector3d& v) noexcept;

// Vector arithmetic. Division multiplies by 1/s; s = 0 is not checked.
[[nodiscard]] QVGUI_API Vector2d operator+(const Vector2d& a, const Vector2d& b) noexcept;
[[nodiscard]] QVGUI_API Vector2d operator-(const Vector2d& a, const Vector2d& b) noexcept;
[[nodiscard]] QVGUI_API Vector2d operator*(const Vector2d& v, double s) noexcept;
[[nodiscard]] QVGUI_API Vector2d operator*(double s, const Vector2d& v) noexcept;
[[nodiscard]] QVGUI_API Vector2d operator/(const Vector2d& v, double s) noexcept;
[[nodiscard]] QVGUI_API Vector3d operator+(const Vector3d& a, const Vector3d& b) noexcept;
[[nodiscard]] QVGUI_API Vector3d operator-(const Vector3d& a, const Vector3d& b) noexcept;
[[nodiscard]] QVGUI_API Vector3d operator*(const Vector3d& v, double s) noexcept;
[[nodiscard]] QVGUI_API Vector3d operator*(double s, const Vector3d& v) noexcept;
[[nodiscard]] QVGUI_API Vector3d operator/(const Vector3d& v, double s) noexcept;

// a + (b - a) * t, t not clamped (extrapolates). For float points b - a is
// taken in float, the rest in double, and the result narrowed to float.
[[nodiscard]] QVGUI_API Point2f interpolate(double t, const Point2f& a, const Point2f& b) noexcept;
[[nodiscard]] QVGUI_API Point2d interpolate(double t, const Point2d& a, const Point2d& b) noexcept;
[[nodiscard]] QVGUI_API Point3f interpolate(double t, const Point3f& a, const Point3f& b) noexcept;
[[nodiscard]] QVGUI_API Point3d interpolate(double t, const Point3d& a, const Point3d& b) noexcept;
[[nodiscard]] QVGUI_API Point4d interpolate(double t, const Point4d& a, const Point4d& b) noexcept;
[[nodiscard]] QVGUI_API Vector2d interpolate(double t, const Vector2d& a, const Vector2d& b) noexcept;
[[nodiscard]] QVGUI_API Vector3d interpolate(double t, const Vector3d& a, const Vector3d& b) noexcept;
// Colours clamp t into [0, 1] first, then (1 - t) a + t b. Color4b goes
// through Color4d and back.
[[nodiscard]] QVGUI_API Color3d interpolate(double t, const Color3d& a, const Color3d& b) noexcept;
[[nodiscard]] QVGUI_API Color4d interpolate(double t, const Color4d& a, const Color4d& b) noexcept;
[[nodiscard]] QVGUI_API Color4b interpolate(double t, const Color4b& a, const Color4b& b) noexcept;

// Component-wise minimum / maximum. b's component wins only when strictly
// smaller (larger), so ties and NaN keep a's component.
#define QVGUI_MIN_MAX_POINT(T)                                          \
  [[nodiscard]] QVGUI_API T min_point(const T& a, const T& b) noexcept; \
  [[nodiscard]] QVGUI_API T max_point(const T& a, const T& b) noexcept;
QVGUI_MIN_MAX_POINT(Point2i)
QVGUI_MIN_MAX_POINT(Point2f)
QVGUI_MIN_MAX_POINT(Point2d)
QVGUI_MIN_MAX_POINT(Point3f)
QVGUI_MIN_MAX_POINT(Point3d)
#undef QVGUI_MIN_MAX_POINT

// The contribution of the edge p -> q to Newell's polygon normal. Summed over
// the edges of a closed polygon it gives twice the area times the unit normal.
[[nodiscard]] QVGUI_API Vector3d newell_area(const Point3d& p, const Point3d& q) noexcept;

// ---- Matrices ----------------------------------------------------------------

// A 4x4 double matrix for column vectors (p' = M p), stored column-major:
// element k is row k % 4, column k / 4.
//   | m0 m4 m8  m12 |
//   | m1 m5 m9  m13 |     m12..m14 translation, m3 m7 m11 m15 bottom row
//   | m2 m6 m10 m14 |
//   | m3 m7 m11 m15 |
class QVGUI_API Matrix4x4d {
 public:
  // The identity.
  Matrix4x4d() noexcept;
  // Sixteen values, column-major.
  explicit Matrix4x4d(const double* values) noexcept;
  Matrix4x4d(const Matrix4x4d& other) noexcept = default;
  // Returns a const copy rather than a reference; callers rely on this form.
  const Matrix4x4d operator=(const Matrix4x4d& other) noexcept;

  [[nodiscard]] static Matrix4x4d createTranslation(const Vector3d& t) noexcept;
  [[nodiscard]] static Matrix4x4d createScale(double s) noexcept;
  [[nodiscard]] static Matrix4x4d createScale(const Vector3d& s) noexcept;
  // Right-handed rotations, angle in radians.
  [[nodiscard]] static Matrix4x4d createXRotation(double angle) noexcept;
  [[nodiscard]] static Matrix4x4d createYRotation(double angle) noexcept;
  [[nodiscard]] static Matrix4x4d createZRotation(double angle) noexcept;
  // Rodrigues' formula; counter-clockwise looking down the axis towards the
  // origin. InvalidAxisException when dot(axis, axis) < 1e-10.
  [[nodiscard]] static Matrix4x4d createRotation(const Vector3d& axis, double angle);
  [[nodiscard]] static Matrix4x4d createFromPointer(const double* values) noexcept;
  // The classic perspective frustum (eye down -z, depth in [-1, 1]).
  // InvalidBoundsException unless left < right, bottom < top, near < far;
  // NaN passes, and near is not required to be positive.
  [[nodiscard]] static Matrix4x4d createFrustum(double left, double right, double bottom, double top,
                                                double zNear, double zFar);
  // The classic orthographic box. InvalidBoundsException unless left < right
  // and bottom < top; near == far is not checked (divides by zero).
  [[nodiscard]] static Matrix4x4d createOrtho(double left, double right, double bottom, double top,
                                              double zNear, double zFar);
  // Rows u, v, w: maps p to (u.p, v.p, w.p). The vectors must be pairwise
  // orthogonal (dot products nearlyEqual to 0) and (u x v).w >= 0, else
  // InvalidCoordinateFrameException. Not normalised here.
  [[nodiscard]] static Matrix4x4d createCoordinateFrame(const Vector3d& u, const Vector3d& v,
                                                        const Vector3d& w);
  // m without its translation; InvalidJacobianException unless m.isAffine().
  [[nodiscard]] static Matrix4x4d createJacobian(const Matrix4x4d& m);

  // Column-major, sixteen values.
  [[nodiscard]] const double* getPointer() const noexcept { return m_; }
  // 1-based row and column; not range-checked.
  [[nodiscard]] double get(int row, int column) const noexcept { return m_[(row - 1) + 4 * (column - 1)]; }
  // 1-based row and column; not range-checked.
  void set(int row, int column, double value) noexcept { m_[(row - 1) + 4 * (column - 1)] = value; }

  void setIdentity() noexcept;
  // this = this * b (b acts first on a point).
  Matrix4x4d& operator*=(const Matrix4x4d& b) noexcept;
  [[nodiscard]] Point4d transform(const Point4d& p) const noexcept;

  // Full inverse by cofactors. A singular matrix gives infinities or NaNs,
  // never an exception.
  void invert() noexcept;
  void transpose() noexcept;
  [[nodiscard]] Matrix4x4d createInverseTranspose() const noexcept;
  // For normals: the cofactor matrix of the upper-left 3x3 block (det times
  // the inverse transpose, without the division, so singular blocks work and
  // scale is kept); no translation, bottom row (0, 0, 0, 1). Renormalise the
  // transformed normals.
  [[nodiscard]] Matrix4x4d createNormalTransform() const noexcept;

  // Exact comparison with the identity; NaN makes it false.
  [[nodiscard]] bool isIdentity() const noexcept;
  // Bottom row (0, 0, 0, 1) under the host's utEqualWithinEps (a few units in
  // the last place), the same test the Transformer classification uses.
  [[nodiscard]] bool isAffine() const noexcept;
  // (c0 x c1) . c2 > 0 for the first three columns' xyz.
  [[nodiscard]] bool isRightHanded() const noexcept;

 private:
  double m_[16];
};

// Exact, element by element; NaN is never equal.
[[nodiscard]] QVGUI_API bool operator==(const Matrix4x4d& a, const Matrix4x4d& b) noexcept;
[[nodiscard]] QVGUI_API bool operator!=(const Matrix4x4d& a, const Matrix4x4d& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Matrix4x4d& a, const Matrix4x4d& b) noexcept;
[[nodiscard]] QVGUI_API Matrix4x4d operator*(const Matrix4x4d& a, const Matrix4x4d& b) noexcept;
// m p, all four rows; project the result when needed.
[[nodiscard]] QVGUI_API Point4d transform(const Matrix4x4d& m, const Point4d& p) noexcept;
// m (p, 1).
[[nodiscard]] QVGUI_API Point4d transform(const Matrix4x4d& m, const Point3d& p) noexcept;

// ---- Data transformer ----------------------------------------------------------

// A matrix classified once so that points take the cheapest correct path.
// The classification compares with the host's utEqualWithinEps, as isAffine:
//   General     the bottom row is not (0, 0, 0, 1);
//   Affine      some off-diagonal element of the 3x3 block is not 0;
//   Identity    diagonal 1 and translation 0;
//   ScaleOffset otherwise (diagonal scale, possibly negative or zero, plus
//               translation).
class QVGUI_API Transformer {
 public:
  enum TransformMode : std::int32_t { Identity = 0, ScaleOffset = 1, Affine = 2, General = 3 };

  explicit Transformer(const Matrix4x4d& matrix) noexcept;
  Transformer(const Transformer&) noexcept = default;
  Transformer& operator=(const Transformer&) noexcept = default;

  [[nodiscard]] TransformMode getMode() const noexcept { return mode_; }
  [[nodiscard]] const Matrix4x4d& getMatrix() const noexcept { return matrix_; }

  // In General mode a point whose w comes out <= 0 (behind the eye) becomes
  // (0, 0, 0) silently; clip in homogeneous space to see such points.
  [[nodiscard]] Point3d transform(const Point3d& p) const noexcept;
  // Directions: no translation; in General mode M (d, 0) with w dropped.
  [[nodiscard]] Vector3d transformVector(const Vector3d& d) const noexcept;

 private:
  static TransformMode determine_mode(const Matrix4x4d& m) noexcept;
  void initialize_scale_and_offset() noexcept;

  Matrix4x4d matrix_;
  TransformMode mode_;
  double scale_[3] = {0.0, 0.0, 0.0};
  double offset_[3] = {0.0, 0.0, 0.0};
};

// ---- Printing ------------------------------------------------------------------

QVGUI_API std::ostream& operator<<(std::ostream& os, const Point2i& p);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Point2f& p);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Point2d& p);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Point3f& p);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Point3d& p);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Point4d& p);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Vector2i& v);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Vector2d& v);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Vector3d& v);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Color3d& c);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Color4d& c);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Color4b& c);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Matrix4x4d& m);
QVGUI_API std::ostream& operator<<(std::ostream& os, Transformer::TransformMode mode);

// ---- Exceptions of the host-array data conversions -----------------------------

class QVGUI_API invalidXYZTypeException : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override;  // "X,Y or Z Data is non numeric"
};

class QVGUI_API invalidCDataTypeException : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override;  // "CData is non numeric"
};

namespace cdata {
// Colour data that is not valid RGB(A). Polymorphic, no data.
class QVGUI_API InvalidRGBADataException {
 public:
  InvalidRGBADataException() noexcept = default;
  InvalidRGBADataException(const InvalidRGBADataException&) noexcept = default;
  InvalidRGBADataException& operator=(const InvalidRGBADataException&) noexcept = default;
  virtual ~InvalidRGBADataException();
};
}  // namespace cdata

}  // namespace gui_objects

// Streams for the interchange records, so failures print readable values.
QVGUI_API std::ostream& operator<<(std::ostream& os, const qvpoint& p);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Spoint2& p);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Real_point& p);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Real_point3& p);

// ---- Planes, lines and quads ---------------------------------------------------

namespace gui_objects {

class Line3d;
class Rectangle2d;
class AABB2d;
class VertexSet;  // qvgui/clipping.h

// An oriented plane: the points p with n.p = d, n of unit length. Every
// constructor and every operation that builds a plane renormalises: a normal
// whose squared length is 0 within the host tolerance (utEqualWithinEps)
// throws ZeroLengthException, otherwise n is normalised and d divided by the
// old length of n.
class QVGUI_API Plane3d {
 public:
  // The plane z = 0 with normal (0, 0, 1).
  Plane3d();
  // A non-unit normal scales the offset too: ((0, 0, 2), 4) is z = 2.
  Plane3d(const Vector3d& normal, double offset);
  Plane3d(const Point3d& p, const Vector3d& normal);
  // Normal (p1 - p0) x (p2 - p0): counter-clockwise points face the viewer.
  // Coincident or collinear points throw ZeroLengthException.
  Plane3d(const Point3d& p0, const Point3d& p1, const Point3d& p2);

  [[nodiscard]] Vector3d getNormal() const noexcept { return Vector3d(a_, b_, c_); }
  [[nodiscard]] double getOffset() const noexcept { return d_; }

  // n.p - d: positive on the side the normal points to.
  [[nodiscard]] double distance(const Point3d& p) const noexcept;
  // a x + b y + c z - d w, the homogeneous form used by clipping.
  [[nodiscard]] double evaluate(const Point4d& p) const noexcept;
  [[nodiscard]] Point3d nearestPointOnPlane(const Point3d& p) const noexcept;
  // The plane moved along its normal: offset d + delta.
  [[nodiscard]] Plane3d offset(double delta) const;
  // The same plane facing the other way.
  [[nodiscard]] Plane3d negate() const;
  // The line parameter t at which l meets the plane; ParallelException when
  // n.T is 0 within the host tolerance.
  [[nodiscard]] double intersectionParameter(const Line3d& l) const;
  [[nodiscard]] Point3d intersect(const Line3d& l) const;

 private:
  void renormalize();

  double a_ = 0.0;
  double b_ = 0.0;
  double c_ = 1.0;
  double d_ = 0.0;
};

// (a, b, c, -d) times the inverse transpose of m, renormalised.
[[nodiscard]] QVGUI_API Plane3d transform(const Matrix4x4d& m, const Plane3d& p);
[[nodiscard]] QVGUI_API bool nearlyEqual(const Plane3d& a, const Plane3d& b) noexcept;
// Exact, on the four numbers.
[[nodiscard]] QVGUI_API bool operator==(const Plane3d& a, const Plane3d& b) noexcept;
[[nodiscard]] QVGUI_API bool operator!=(const Plane3d& a, const Plane3d& b) noexcept;
QVGUI_API std::ostream& operator<<(std::ostream& os, const Plane3d& p);

// The plane through a polygon: Newell's normal (for four points the cross
// product of the diagonals), through the centroid of the points. Fewer than
// three points, or a normal whose squared length is at most 2^-51, give the
// normal (0, 0, 1).
[[nodiscard]] QVGUI_API Plane3d fitPlaneThroughPoints(const VertexSet& vertices, const std::size_t* indices,
                                                      std::size_t count);

// An infinite 2-D line through point with direction tangent; end is
// point + tangent, so evaluate(0) is the point and evaluate(1) the end. A
// tangent whose squared length is 0 within the host tolerance throws
// ZeroLengthException.
class QVGUI_API Line2d {
 public:
  Line2d(const Point2d& a, const Point2d& b);
  Line2d(const Point2d& point, const Vector2d& tangent);

  [[nodiscard]] Point2d getPoint() const noexcept { return point_; }
  [[nodiscard]] Vector2d getTangent() const noexcept { return tangent_; }
  [[nodiscard]] Point2d getEnd() const noexcept { return end_; }

  // Makes the tangent unit length (ZeroLengthException when zero) and moves
  // the end to point + tangent.
  Line2d& normalize();
  // (1 - t) point + t end; t is not clamped.
  [[nodiscard]] Point2d evaluate(double t) const noexcept;
  [[nodiscard]] Point2d nearestPointOnLine(const Point2d& p) const noexcept;
  // Unsigned distance; rounding that would make the radicand negative gives 0.
  [[nodiscard]] double distance(const Point2d& p) const noexcept;
  // Moves the line by d.
  Line2d& offset(const Vector2d& d) noexcept;
  // Moves the line s tangent lengths to the left of its direction.
  Line2d& offset(double s) noexcept;
  // ParallelException when the sine of the angle between the lines is below
  // 0.001 (or not a number).
  [[nodiscard]] Point2d intersect(const Line2d& other) const;

 private:
  Point2d point_;
  Vector2d tangent_;
  Point2d end_;
};

// The 3-D counterpart of Line2d.
class QVGUI_API Line3d {
 public:
  Line3d(const Point3d& a, const Point3d& b);
  Line3d(const Point3d& point, const Vector3d& tangent);

  [[nodiscard]] Point3d getPoint() const noexcept { return point_; }
  [[nodiscard]] Vector3d getTangent() const noexcept { return tangent_; }
  [[nodiscard]] Point3d getEnd() const noexcept { return end_; }

  Line3d& normalize();
  [[nodiscard]] Point3d evaluate(double t) const noexcept;
  [[nodiscard]] Point3d nearestPointOnLine(const Point3d& p) const noexcept;
  [[nodiscard]] double distance(const Point3d& p) const noexcept;
  Line3d& offset(const Vector3d& d) noexcept;

 private:
  Point3d point_;
  Vector3d tangent_;
  Point3d end_;
};

QVGUI_API std::ostream& operator<<(std::ostream& os, const Line2d& l);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Line3d& l);

// A segment between two points; the default segment is invalid.
class QVGUI_API LineSegment3d {
 public:
  constexpr LineSegment3d() noexcept = default;
  constexpr LineSegment3d(const Point3d& start, const Point3d& end) noexcept
      : start_(start), end_(end), valid_(true) {}

  [[nodiscard]] constexpr bool isValid() const noexcept { return valid_; }
  [[nodiscard]] constexpr Point3d getStart() const noexcept { return start_; }
  [[nodiscard]] constexpr Point3d getEnd() const noexcept { return end_; }
  // Unit direction; ZeroLengthException for a degenerate segment.
  [[nodiscard]] Vector3d getDirection() const;
  [[nodiscard]] double getLength() const noexcept;
  [[nodiscard]] Point3d evaluate(double t) const noexcept;
  [[nodiscard]] Line3d asLine3d() const;

 private:
  Point3d start_;
  Point3d end_;
  bool valid_ = false;
};

// Start and end under nearlyEqual.
[[nodiscard]] QVGUI_API bool nearlyEqual(const LineSegment3d& a, const LineSegment3d& b) noexcept;
QVGUI_API std::ostream& operator<<(std::ostream& os, const LineSegment3d& s);

// A parameterised rectangle in space: the points rawOrigin + s u + t v for s
// in the u range and t in the v range (each a Point2d holding min, max). The
// bases must be perpendicular (u.v nearlyEqual to 0) and the ranges ordered,
// else InvalidQuadException. The default quad is the unit square in z = 0,
// marked invalid.
class QVGUI_API Quad3d {
 public:
  Quad3d() noexcept = default;
  Quad3d(const Point3d& origin, const Vector3d& u, const Vector3d& v);
  Quad3d(const Point3d& origin, const Vector3d& u, const Vector3d& v, const Point2d& uRange,
         const Point2d& vRange);
  // other's frame with new (checked) ranges.
  Quad3d(const Quad3d& other, const Point2d& uRange, const Point2d& vRange);

  [[nodiscard]] bool isValid() const noexcept { return valid_; }
  [[nodiscard]] Point3d getRawOrigin() const noexcept { return origin_; }
  [[nodiscard]] Vector3d getUBasis() const noexcept { return u_; }
  [[nodiscard]] Vector3d getVBasis() const noexcept { return v_; }
  [[nodiscard]] Point2d getURange() const noexcept { return uRange_; }
  [[nodiscard]] Point2d getVRange() const noexcept { return vRange_; }

  // u range x v range; unset if a range is not ordered.
  [[nodiscard]] AABB2d getUVBounds() const;
  // The corner at the range minima, and the edge vectors spanning the ranges.
  [[nodiscard]] Point3d getOrigin() const;
  [[nodiscard]] Vector3d getUVector() const;
  [[nodiscard]] Vector3d getVVector() const;
  [[nodiscard]] Point3d evaluate(double s, double t) const noexcept;
  // The same rectangle with ranges [0, 1] x [0, 1].
  [[nodiscard]] Quad3d reparameterize() const;

 private:
  Point3d origin_;
  Vector3d u_{1.0, 0.0, 0.0};
  Vector3d v_{0.0, 1.0, 0.0};
  Point2d uRange_{0.0, 1.0};
  Point2d vRange_{0.0, 1.0};
  bool valid_ = false;
};

// The quad through the transformed (and projected) origin and basis ends,
// with the same ranges; invalid when the bases are no longer perpendicular.
// InvalidWException when one of the three points lands at w <= 0.
[[nodiscard]] QVGUI_API Quad3d transform(const Matrix4x4d& m, const Quad3d& q);
[[nodiscard]] QVGUI_API bool nearlyEqual(const Quad3d& a, const Quad3d& b);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Quad3d& q);

// How far the left, bottom, right and top sides of a rectangle move inward.
// Never negative: the constructor, scaleby and interpolate throw
// InvalidInsetException rather than make a negative inset.
class QVGUI_API Inset2d {
 public:
  constexpr Inset2d() noexcept = default;
  Inset2d(double xMin, double yMin, double xMax, double yMax);

  [[nodiscard]] constexpr double getXMin() const noexcept { return xMin_; }
  [[nodiscard]] constexpr double getYMin() const noexcept { return yMin_; }
  [[nodiscard]] constexpr double getXMax() const noexcept { return xMax_; }
  [[nodiscard]] constexpr double getYMax() const noexcept { return yMax_; }

  // r shrunk by the insets; InvalidInsetException when they do not fit.
  [[nodiscard]] Rectangle2d apply(const Rectangle2d& r) const;
  // r grown by the insets.
  [[nodiscard]] Rectangle2d unapply(const Rectangle2d& r) const;
  // x insets times sx, y insets times sy; negative factors throw.
  Inset2d& scaleby(double sx, double sy);
  // Reads the insets as fractions of an outer box and turns them into the
  // absolute insets around an inner box of w x h. Fractions summing to 1 or
  // more along an axis (with a margin of one double epsilon) throw.
  Inset2d& renormalize(double w, double h);
  // Component-wise maximum.
  [[nodiscard]] Inset2d max(const Inset2d& other) const noexcept;

 private:
  double xMin_ = 0.0;
  double yMin_ = 0.0;
  double xMax_ = 0.0;
  double yMax_ = 0.0;
};

[[nodiscard]] QVGUI_API bool operator==(const Inset2d& a, const Inset2d& b) noexcept;
[[nodiscard]] QVGUI_API bool operator!=(const Inset2d& a, const Inset2d& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Inset2d& a, const Inset2d& b) noexcept;
[[nodiscard]] QVGUI_API Inset2d interpolate(double t, const Inset2d& a, const Inset2d& b);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Inset2d& i);

}  // namespace gui_objects

// ---- Bounds and rectangles -----------------------------------------------------

// The flat integer rectangle. y grows downwards: top is the smaller y.
// Width = right - left, height = bottom - top.
struct qvrect {
  std::int32_t top;
  std::int32_t left;
  std::int32_t bottom;
  std::int32_t right;
};

// The flat floating rectangle; its fields mirror qvrect's and convert to a
// Rectangle2d field for field (top = yMin, left = xMin, bottom = yMax, right = xMax).
struct Real_rect {
  double top;
  double left;
  double bottom;
  double right;
};

// The flat rectangle interface. Nothing is validated: crossed rectangles are
// taken as they are, integer sums wrap around on overflow, and a null record
// is ignored (queries on it answer 0 or false).
QVGUI_API void guiSetRect(qvrect* r, std::int32_t left, std::int32_t top, std::int32_t right,
                          std::int32_t bottom) noexcept;
QVGUI_API void guiCopyRect(qvrect* dst, const qvrect* src) noexcept;
// Half-open (pixel convention): left <= h < right and top <= v < bottom. 1 or 0.
[[nodiscard]] QVGUI_API int guiPtInRect(qvpoint p, const qvrect* r) noexcept;
// Closed: left <= h <= right and top <= v <= bottom. 1 or 0.
[[nodiscard]] QVGUI_API int guiPointInRect(const qvpoint* p, const qvrect* r) noexcept;
QVGUI_API void guiOffsetRect(qvrect* r, std::int32_t dx, std::int32_t dy) noexcept;
// left += dx, right -= dx, top += dy, bottom -= dy.
QVGUI_API void guiInsetRect(qvrect* r, std::int32_t dx, std::int32_t dy) noexcept;
[[nodiscard]] QVGUI_API bool guiEqualRect(const qvrect* a, const qvrect* b) noexcept;
// True when a.right >= b.left, a.left <= b.right, a.top < b.bottom and
// a.bottom > b.top: rectangles touching along a vertical edge intersect (in a
// zero-width rectangle), those touching along a horizontal edge do not. out
// (may be null) gets the intersection, or all zero when there is none.
QVGUI_API bool guiSectRect(const qvrect* a, const qvrect* b, qvrect* out) noexcept;
// Minima of top and left, maxima of bottom and right; empty rectangles count.
QVGUI_API void guiUnionRect(const qvrect* a, const qvrect* b, qvrect* out) noexcept;
[[nodiscard]] QVGUI_API std::int32_t guiRectX(const qvrect* r) noexcept;       // left
[[nodiscard]] QVGUI_API std::int32_t guiRectY(const qvrect* r) noexcept;       // top
[[nodiscard]] QVGUI_API std::int32_t guiRectWidth(const qvrect* r) noexcept;   // right - left
[[nodiscard]] QVGUI_API std::int32_t guiRectHeight(const qvrect* r) noexcept;  // bottom - top
// top == bottom or left == right (compare Rectangle2i::isEmpty, which needs both).
[[nodiscard]] QVGUI_API bool guiIsEmptyRect(const qvrect* r) noexcept;
[[nodiscard]] QVGUI_API bool guiAreRectsSameSize(const qvrect* a, const qvrect* b) noexcept;
// Rotates the corners about the origin by degrees (counter-clockwise on
// screen) and takes top from the rotated top-right corner, left from the
// top-left, bottom from the bottom-left and right from the bottom-right. Not
// reordered: meant for multiples of 90 degrees. Corners travel as qvpoint, so
// coordinates outside the 16-bit range wrap.
QVGUI_API void guiRotateRect(qvrect* r, int degrees) noexcept;
// Stores a, b, c, d as top, left, bottom, right.
QVGUI_API void guiSetRealRect(Real_rect* r, double a, double b, double c, double d) noexcept;

QVGUI_API std::ostream& operator<<(std::ostream& os, const qvrect& r);
QVGUI_API std::ostream& operator<<(std::ostream& os, const Real_rect& r);

namespace gui_objects {

class Rectangle2d;

// An integer rectangle, stored in qvrect order (yMin, xMin, yMax, xMax) so
// that conversion to and from qvrect copies the fields unchanged. Invariant
// xMin <= xMax and yMin <= yMax; every operation that could cross it throws
// RectangleCrossedPointsException and leaves the rectangle unchanged.
// Integer sums wrap around on overflow.
class QVGUI_API Rectangle2i {
 public:
  constexpr Rectangle2i() noexcept = default;
  Rectangle2i(std::int32_t xMin, std::int32_t yMin, std::int32_t xMax, std::int32_t yMax);
  // The box spanned by two corners in any order; never throws.
  Rectangle2i(const Point2i& a, const Point2i& b) noexcept;
  // origin is the minimum corner; a negative size throws.
  Rectangle2i(const Point2i& origin, std::int32_t width, std::int32_t height);
  explicit Rectangle2i(const qvrect& r);
  operator qvrect() const noexcept { return qvrect{yMin_, xMin_, yMax_, xMax_}; }

  [[nodiscard]] constexpr std::int32_t getXMin() const noexcept { return xMin_; }
  [[nodiscard]] constexpr std::int32_t getYMin() const noexcept { return yMin_; }
  [[nodiscard]] constexpr std::int32_t getXMax() const noexcept { return xMax_; }
  [[nodiscard]] constexpr std::int32_t getYMax() const noexcept { return yMax_; }
  [[nodiscard]] std::int32_t getWidth() const noexcept;
  [[nodiscard]] std::int32_t getHeight() const noexcept;
  // Integer midpoints, truncated toward zero.
  [[nodiscard]] Point2i getCenter() const noexcept;

  // Closed on all four sides.
  [[nodiscard]] bool isInside(const Point2i& p) const noexcept;
  // Only when degenerate in both directions (unlike guiIsEmptyRect).
  [[nodiscard]] bool isEmpty() const noexcept { return xMin_ == xMax_ && yMin_ == yMax_; }
  [[nodiscard]] bool sameSize(const Rectangle2i& other) const noexcept;

  Rectangle2i& operator+=(const Vector2i& d) noexcept;
  Rectangle2i& operator-=(const Vector2i& d) noexcept;
  // Moves each side inward by d (outward for negative components).
  void inset(const Vector2i& d);
  void outset(const Vector2i& d);

  [[nodiscard]] Rectangle2d asRectangle2d() const noexcept;

 private:
  std::int32_t yMin_ = 0;
  std::int32_t xMin_ = 0;
  std::int32_t yMax_ = 0;
  std::int32_t xMax_ = 0;
};

[[nodiscard]] QVGUI_API bool operator==(const Rectangle2i& a, const Rectangle2i& b) noexcept;
[[nodiscard]] QVGUI_API bool operator!=(const Rectangle2i& a, const Rectangle2i& b) noexcept;
[[nodiscard]] QVGUI_API Rectangle2i operator+(const Rectangle2i& r, const Vector2i& d) noexcept;
[[nodiscard]] QVGUI_API Rectangle2i operator-(const Rectangle2i& r, const Vector2i& d) noexcept;
[[nodiscard]] QVGUI_API Rectangle2i unionRect(const Rectangle2i& a, const Rectangle2i& b) noexcept;
QVGUI_API std::ostream& operator<<(std::ostream& os, const Rectangle2i& r);

// A floating rectangle, stored (yMin, xMin, yMax, xMax), invariant as
// Rectangle2i. NaN limits count as crossed.
class QVGUI_API Rectangle2d {
 public:
  constexpr Rectangle2d() noexcept = default;
  Rectangle2d(double xMin, double yMin, double xMax, double yMax);
  Rectangle2d(const Point2d& a, const Point2d& b) noexcept;
  Rectangle2d(const Point2d& origin, double width, double height);
  explicit Rectangle2d(const Real_rect& r);
  operator Real_rect() const noexcept { return Real_rect{yMin_, xMin_, yMax_, xMax_}; }

  [[nodiscard]] constexpr double getXMin() const noexcept { return xMin_; }
  [[nodiscard]] constexpr double getYMin() const noexcept { return yMin_; }
  [[nodiscard]] constexpr double getXMax() const noexcept { return xMax_; }
  [[nodiscard]] constexpr double getYMax() const noexcept { return yMax_; }
  [[nodiscard]] constexpr double getWidth() const noexcept { return xMax_ - xMin_; }
  [[nodiscard]] constexpr double getHeight() const noexcept { return yMax_ - yMin_; }
  [[nodiscard]] Point2d getCenter() const noexcept;

  [[nodiscard]] bool isInside(const Point2d& p) const noexcept;  // closed
  // Exactly degenerate in both directions.
  [[nodiscard]] bool isEmpty() const noexcept { return xMin_ == xMax_ && yMin_ == yMax_; }
  // Exactly equal width and height.
  [[nodiscard]] bool sameSize(const Rectangle2d& other) const noexcept;

  Rectangle2d& operator+=(const Vector2d& d) noexcept;
  Rectangle2d& operator-=(const Vector2d& d) noexcept;
  void inset(const Vector2d& d);
  void outset(const Vector2d& d);

  // Rounds outward to whole numbers, except that a limit within two units in
  // the last place above (maxima) or below (minima) a whole number stays on
  // it: 2.3 becomes 2 as a minimum and 3 as a maximum, 2.0000000000000004
  // stays 2 on both sides. Limits beyond the 32-bit range saturate.
  [[nodiscard]] Rectangle2i asRectangle2i() const;

 private:
  double yMin_ = 0.0;
  double xMin_ = 0.0;
  double yMax_ = 0.0;
  double xMax_ = 0.0;
};

[[nodiscard]] QVGUI_API bool operator==(const Rectangle2d& a, const Rectangle2d& b) noexcept;
[[nodiscard]] QVGUI_API bool operator!=(const Rectangle2d& a, const Rectangle2d& b) noexcept;
[[nodiscard]] QVGUI_API Rectangle2d operator+(const Rectangle2d& r, const Vector2d& d) noexcept;
[[nodiscard]] QVGUI_API Rectangle2d operator-(const Rectangle2d& r, const Vector2d& d) noexcept;
[[nodiscard]] QVGUI_API Rectangle2d unionRect(const Rectangle2d& a, const Rectangle2d& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const Rectangle2d& a, const Rectangle2d& b) noexcept;
QVGUI_API std::ostream& operator<<(std::ostream& os, const Rectangle2d& r);

// A 2-D box that may be unset. Reading a limit or corner of an unset box
// throws InvalidAxisAlignedBoundingBoxException; width and height read 0.
// "Lower" is the smaller y.
class QVGUI_API AABB2d {
 public:
  constexpr AABB2d() noexcept = default;
  explicit AABB2d(const Rectangle2d& r) noexcept : bounds_(r), valid_(true) {}

  AABB2d& operator+=(const Point2d& p) noexcept;
  // An unset operand is ignored; an unset box takes the other.
  AABB2d& operator+=(const AABB2d& other) noexcept;

  [[nodiscard]] bool contains(const Point2d& p) const noexcept;  // closed; false when unset
  [[nodiscard]] constexpr bool isValid() const noexcept { return valid_; }
  [[nodiscard]] double getXMin() const;
  [[nodiscard]] double getXMax() const;
  [[nodiscard]] double getYMin() const;
  [[nodiscard]] double getYMax() const;
  [[nodiscard]] Point2d getLowerLeft() const;
  [[nodiscard]] Point2d getLowerRight() const;
  [[nodiscard]] Point2d getUpperLeft() const;
  [[nodiscard]] Point2d getUpperRight() const;
  [[nodiscard]] Rectangle2d getBounds() const;
  [[nodiscard]] double getWidth() const noexcept { return valid_ ? bounds_.getWidth() : 0.0; }
  [[nodiscard]] double getHeight() const noexcept { return valid_ ? bounds_.getHeight() : 0.0; }

 private:
  Rectangle2d bounds_;
  bool valid_ = false;
};

// Two unset boxes are equal; an unset box equals no set one.
[[nodiscard]] QVGUI_API bool operator==(const AABB2d& a, const AABB2d& b) noexcept;
[[nodiscard]] QVGUI_API bool operator!=(const AABB2d& a, const AABB2d& b) noexcept;
[[nodiscard]] QVGUI_API bool nearlyEqual(const AABB2d& a, const AABB2d& b) noexcept;
QVGUI_API std::ostream& operator<<(std::ostream& os, const AABB2d& b);

// A 3-D box that may be unset (all limits zero then).
class QVGUI_API BoundingVolume {
 public:
  constexpr BoundingVolume() noexcept = default;
  // center -/+ width/2 per axis; InvalidWidthException for a negative width
  // (NaN is not rejected).
  BoundingVolume(const Point3d& center, double xWidth, double yWidth, double zWidth);
  BoundingVolume(const Point3d& a, const Point3d& b) noexcept;
  // Unset for count 0 or a null array.
  BoundingVolume(const Point3d* points, std::size_t count) noexcept;

  [[nodiscard]] constexpr double getXMin() const noexcept { return xMin_; }
  [[nodiscard]] constexpr double getXMax() const noexcept { return xMax_; }
  [[nodiscard]] constexpr double getYMin() const noexcept { return yMin_; }
  [[nodiscard]] constexpr double getYMax() const noexcept { return yMax_; }
  [[nodiscard]] constexpr double getZMin() const noexcept { return zMin_; }
  [[nodiscard]] constexpr double getZMax() const noexcept { return zMax_; }
  [[nodiscard]] Point3d getCenter() const noexcept;
  [[nodiscard]] constexpr double getXWidth() const noexcept { return xMax_ - xMin_; }
  [[nodiscard]] constexpr double getYWidth() const noexcept { return yMax_ - yMin_; }
  [[nodiscard]] constexpr double getZWidth() const noexcept { return zMax_ - zMin_; }
  [[nodiscard]] constexpr bool isValid() const noexcept { return valid_; }

  [[nodiscard]] bool isInside(const Point3d& p) const noexcept;          // closed; false when unset
  [[nodiscard]] bool isStrictlyInside(const Point3d& p) const noexcept;  // open; false when unset
  // Unset, or some width nearlyEqual to 0.
  [[nodiscard]] bool isEmpty() const noexcept;
  // Each limit moves outward by f times its axis width (f < 0 shrinks).
  void inflate(double f) noexcept;
  // Union; an unset operand is ignored, an unset volume takes the other.
  BoundingVolume& operator+=(const BoundingVolume& other) noexcept;
  void swap(BoundingVolume& other) noexcept;

 private:
  double xMin_ = 0.0;
  double xMax_ = 0.0;
  double yMin_ = 0.0;
  double yMax_ = 0.0;
  double zMin_ = 0.0;
  double zMax_ = 0.0;
  bool valid_ = false;
};

[[nodiscard]] QVGUI_API bool operator==(const BoundingVolume& a, const BoundingVolume& b) noexcept;
[[nodiscard]] QVGUI_API bool operator!=(const BoundingVolume& a, const BoundingVolume& b) noexcept;
// The six limits under nearlyEqual (the valid flags are not compared).
[[nodiscard]] QVGUI_API bool nearlyEqual(const BoundingVolume& a, const BoundingVolume& b) noexcept;
// The box of the eight transformed corners; unset stays unset. A corner that
// lands at w <= 0 throws InvalidWException.
[[nodiscard]] QVGUI_API BoundingVolume transform(const Matrix4x4d& m, const BoundingVolume& v);
QVGUI_API std::ostream& operator<<(std::ostream& os, const BoundingVolume& v);

// A box snapped to a grid of cells: bounds in grid units, the half-open range
// of covered cell indices [grid.xMin, grid.xMax) x [grid.yMin, grid.yMax), and
// the cell size along x and y.
class QVGUI_API GriddedBounds {
 public:
  GriddedBounds() noexcept = default;
  GriddedBounds(const AABB2d& bounds, const Rectangle2i& grid, std::size_t xStride,
                std::size_t yStride) noexcept
      : bounds_(bounds), grid_(grid), xStride_(xStride), yStride_(yStride) {}

  [[nodiscard]] const AABB2d& getBounds() const noexcept { return bounds_; }
  [[nodiscard]] const Rectangle2i& getGrid() const noexcept { return grid_; }
  [[nodiscard]] std::size_t getXStride() const noexcept { return xStride_; }
  [[nodiscard]] std::size_t getYStride() const noexcept { return yStride_; }

 private:
  AABB2d bounds_;
  Rectangle2i grid_;
  std::size_t xStride_ = 1;
  std::size_t yStride_ = 1;
};

// Enlarges a box (in grid units, e.g. pixels) to whole cells of a grid whose
// cell boundaries lie at xOrigin + i * xStride and yOrigin + j * yStride for
// every integer i, j. Cell i spans [xOrigin + i * xStride, xOrigin + (i + 1) * xStride].
// The result's grid is the smallest half-open index range whose cells cover
// the box (at least one cell per axis, so a degenerate box on a cell boundary
// gets the cell above it), and its bounds are exactly those cells' extent.
// A zero stride throws InvalidWidthException; an unset box, non-finite
// limits, or cell indices beyond the 32-bit range throw
// InvalidAxisAlignedBoundingBoxException.
[[nodiscard]] QVGUI_API GriddedBounds expand_bounds_to_grid(const AABB2d& bounds, std::size_t xOrigin,
                                                            std::size_t yOrigin, std::size_t xStride,
                                                            std::size_t yStride);
QVGUI_API std::ostream& operator<<(std::ostream& os, const GriddedBounds& g);

// The root of region classes defined elsewhere.
class QVGUI_API RegionBase {
 public:
  virtual ~RegionBase() = 0;

 protected:
  RegionBase() = default;
  RegionBase(const RegionBase&) = default;
  RegionBase& operator=(const RegionBase&) = default;
};

// The kernel's values are plain: making, moving and swapping them neither
// allocates nor throws.
#define QVGUI_PLAIN_VALUE(T)                                 \
  static_assert(std::is_nothrow_default_constructible_v<T>); \
  static_assert(std::is_nothrow_move_constructible_v<T>);    \
  static_assert(std::is_nothrow_move_assignable_v<T>);
QVGUI_PLAIN_VALUE(Point2i)
QVGUI_PLAIN_VALUE(Point2f)
QVGUI_PLAIN_VALUE(Point2d)
QVGUI_PLAIN_VALUE(Point3f)
QVGUI_PLAIN_VALUE(Point3d)
QVGUI_PLAIN_VALUE(Point4d)
QVGUI_PLAIN_VALUE(Vector2i)
QVGUI_PLAIN_VALUE(Vector2d)
QVGUI_PLAIN_VALUE(Vector3d)
QVGUI_PLAIN_VALUE(Color3d)
QVGUI_PLAIN_VALUE(Color4d)
QVGUI_PLAIN_VALUE(Color4b)
QVGUI_PLAIN_VALUE(Matrix4x4d)
QVGUI_PLAIN_VALUE(Quad3d)
QVGUI_PLAIN_VALUE(Inset2d)
QVGUI_PLAIN_VALUE(Rectangle2i)
QVGUI_PLAIN_VALUE(Rectangle2d)
QVGUI_PLAIN_VALUE(AABB2d)
QVGUI_PLAIN_VALUE(BoundingVolume)
#undef QVGUI_PLAIN_VALUE

}  // namespace gui_objects
