// Camera fitting: view and viewport transforms, and the property that a
// fitted camera frames every corner of a bounding volume in its viewport.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace cu = gui_objects::camera_utils;
using gui_objects::BoundingVolume;
using gui_objects::Matrix4x4d;
using gui_objects::Point3d;
using gui_objects::Point4d;
using gui_objects::Rectangle2d;
using gui_objects::Vector3d;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// An axes object as the fitting sees it: a camera and a viewport.
class FakeViewport : public cu::ViewPortTransformProxy, public cu::CameraPositionProxy {
 public:
  Rectangle2d rect{0, 0, 400, 300};
  Point3d position{0, -10, 0};
  Point3d target{0, 0, 0};
  Vector3d up{0, 0, 1};
  Matrix4x4d projection;
  bool warpToFillOff = true;
  int positionsSet = 0;

  Rectangle2d getPosition() const override { return rect; }
  Matrix4x4d getProjectionTransform() const override { return projection; }
  Matrix4x4d getViewTransform() const override { return cu::makeViewTransform(position, target, up); }
  bool isWarpToFillOff() const override { return warpToFillOff; }
  bool isCameraViewAngleModeAuto() const override { return true; }
  bool isXConstraint() const override { return false; }

  void setPosition(const Point3d& p) override {
    ++positionsSet;
    position = p;
  }
  void setTarget(const Point3d& p) override { target = p; }
  void setUpVector(const Vector3d& v) override { up = v; }
};

std::vector<Point3d> cornersOf(const BoundingVolume& v) {
  std::vector<Point3d> out;
  for (double x : {v.getXMin(), v.getXMax()})
    for (double y : {v.getYMin(), v.getYMax()})
      for (double z : {v.getZMin(), v.getZMax()}) out.emplace_back(x, y, z);
  return out;
}

// Takes every corner through view, projection and viewport transform, one
// step at a time, and fails when one lands outside the viewport or the depth
// range. The tolerance allows for rounding in eye space, which grows with the
// coordinates' magnitude relative to the volume's projected size. Returns the
// largest distance of a corner from the viewport centre, in half-sizes.
double checkFramed(const Matrix4x4d& view, const Matrix4x4d& projection, const Rectangle2d& rect,
                   const BoundingVolume& volume) {
  const Matrix4x4d toPixels = cu::makeViewPortTransform(rect);
  double magnitude = std::hypot(view.get(1, 4), view.get(2, 4), view.get(3, 4));
  double projected = 0.0;
  for (const Point3d& c : cornersOf(volume)) {
    const Point4d eye = transform(view, c);
    magnitude = std::max({magnitude, std::fabs(c.getX()), std::fabs(c.getY()), std::fabs(c.getZ())});
    projected = std::max({projected, std::fabs(eye.getX()), std::fabs(eye.getY())});
  }
  const double tol = 1e-9 + (projected > 0 ? 1e-14 * magnitude / projected : 0.0);
  double reach = 0.0;
  for (const Point3d& c : cornersOf(volume)) {
    const Point4d clip = transform(projection, transform(view, c));
    EXPECT_GT(clip.getW(), 0.0) << "corner " << c << " behind the eye";
    if (!(clip.getW() > 0.0)) continue;
    const Point3d ndc = clip.project();
    EXPECT_LE(std::fabs(ndc.getX()), 1 + tol) << "corner " << c << " at " << ndc;
    EXPECT_LE(std::fabs(ndc.getY()), 1 + tol) << "corner " << c << " at " << ndc;
    EXPECT_LE(std::fabs(ndc.getZ()), 1 + tol) << "corner " << c << " at " << ndc;
    const Point3d px = transform(toPixels, ndc).project();
    const double slackX = 2 * tol * rect.getWidth();
    const double slackY = 2 * tol * rect.getHeight();
    EXPECT_GE(px.getX(), rect.getXMin() - slackX);
    EXPECT_LE(px.getX(), rect.getXMax() + slackX);
    EXPECT_GE(px.getY(), rect.getYMin() - slackY);
    EXPECT_LE(px.getY(), rect.getYMax() + slackY);
    reach = std::max({reach, std::fabs(ndc.getX()), std::fabs(ndc.getY())});
  }
  return std::fabs(reach - 1.0) <= tol ? 1.0 : reach;
}

// A random box: centre anywhere, widths spread over nine decades, and now and
// then flat (one zero width) or a stick (two zero widths).
BoundingVolume randomVolume(std::mt19937_64& rng) {
  std::uniform_real_distribution<double> centre(-100.0, 100.0), decades(-6.0, 3.0);
  std::uniform_int_distribution<int> flatness(0, 9);
  double w[3];
  for (double& x : w) x = std::pow(10.0, decades(rng));
  const int f = flatness(rng);
  if (f <= 2) w[f] = 0.0;
  if (f == 3) w[0] = w[1] = 0.0;
  return BoundingVolume(Point3d(centre(rng), centre(rng), centre(rng)), w[0], w[1], w[2]);
}

// Camera direction from angles; exact quarter turns come out exactly vertical.
Vector3d directionOf(double az, double el) {
  return Vector3d(cu::sind(az) * cu::cosd(el), -cu::cosd(az) * cu::cosd(el), cu::sind(el));
}

double randomAngle(std::mt19937_64& rng, double range) {
  std::uniform_real_distribution<double> any(-range, range);
  std::uniform_int_distribution<int> pick(0, 4);
  // One sample in five is a whole multiple of 90 degrees, including the poles.
  return pick(rng) == 0 ? 90.0 * std::round(any(rng) / 90.0) : any(rng);
}

void placeCamera(std::mt19937_64& rng, FakeViewport& vp, const BoundingVolume& volume) {
  std::uniform_real_distribution<double> unit(-1.0, 1.0), distance(0.01, 1000.0), size(10.0, 2000.0);
  const double az = randomAngle(rng, 180.0);
  const Vector3d dir = directionOf(az, randomAngle(rng, 90.0));
  const Point3d c = volume.getCenter();
  vp.target = Point3d(c.getX() + unit(rng) * volume.getXWidth(), c.getY() + unit(rng) * volume.getYWidth(),
                      c.getZ() + unit(rng) * volume.getZWidth());
  vp.position = vp.target + dir * distance(rng);
  vp.up = cu::chooseUpVector3D(-dir, az);
  const double x0 = unit(rng) * 500, y0 = unit(rng) * 500;
  vp.rect = Rectangle2d(x0, y0, x0 + size(rng), y0 + size(rng));
  vp.warpToFillOff = unit(rng) > -0.5;
}

}  // namespace

TEST(CameraTransforms, MapKnownPoints) {
  const Matrix4x4d view = cu::makeViewTransform(Point3d(1, 2, 8), Point3d(1, 2, 3), Vector3d(0, 3, 0));
  EXPECT_TRUE(gui_objects::nearlyEqual(transform(view, Point3d(1, 2, 3)), Point4d(0, 0, -5, 1)));
  EXPECT_TRUE(gui_objects::nearlyEqual(transform(view, Point3d(2, 2, 8)), Point4d(1, 0, 0, 1)));
  EXPECT_TRUE(gui_objects::nearlyEqual(transform(view, Point3d(1, 3, 8)), Point4d(0, 1, 0, 1)));
  EXPECT_TRUE(view.isRightHanded());
  // A tilted up vector is straightened into the image plane.
  const Matrix4x4d tilted = cu::makeViewTransform(Point3d(0, -5, 0), Point3d(0, 0, 0), Vector3d(0, -1, 1));
  EXPECT_TRUE(gui_objects::nearlyEqual(transform(tilted, Point3d(0, 0, 1)), Point4d(0, 1, -5, 1)));

  const Matrix4x4d m = cu::makeViewPortTransform(Rectangle2d(10, 20, 110, 70));
  EXPECT_EQ(transform(m, Point3d(-1, 1, -1)).project(), Point3d(10, 20, 0));  // top left, near
  EXPECT_EQ(transform(m, Point3d(1, -1, 1)).project(), Point3d(110, 70, 1));  // bottom right, far
  EXPECT_EQ(transform(m, Point3d(0, 0, 0)).project(), Point3d(60, 45, 0.5));

  // The target lands mid-viewport; one unit right (+x seen from -y) half-way
  // to the right edge, one unit up at the top.
  FakeViewport vp;
  vp.rect = Rectangle2d(10, 20, 210, 120);
  vp.projection = Matrix4x4d::createOrtho(-2, 2, -1, 1, 1, 20);
  const Matrix4x4d w = cu::makeWorldToPixelTransform(vp);
  EXPECT_TRUE(gui_objects::nearlyEqual(transform(w, Point3d(0, 0, 0)).project(), Point3d(110, 70, 9.0 / 19)));
  EXPECT_TRUE(gui_objects::nearlyEqual(transform(w, Point3d(1, 0, 0)).project(), Point3d(160, 70, 9.0 / 19)));
  EXPECT_TRUE(gui_objects::nearlyEqual(transform(w, Point3d(0, 0, 1)).project(), Point3d(110, 20, 9.0 / 19)));
}

TEST(ComputeHeight, WiderOfTheTwoConstraints) {
  const BoundingVolume cube(Point3d(0, 0, 0), 2, 2, 2);
  const Matrix4x4d front = cu::makeViewTransform(Point3d(0, -5, 0), Point3d(0, 0, 0), Vector3d(0, 0, 1));
  // clang-format off
  struct Case { const char* label; BoundingVolume volume; double aspect; double height; };
  const Case cases[] = {
      {"square viewport", cube, 1.0, 2.0},
      {"wide viewport: height decides", cube, 2.0, 2.0},
      {"tall viewport: width decides", cube, 0.5, 4.0},
      {"box off the line of sight", BoundingVolume(Point3d(3, 0, 0), Point3d(4, 1, 1)), 1.0, 8.0},
      {"stick along the line of sight", BoundingVolume(Point3d(0, -1, 0), Point3d(0, 1, 0)), 1.0, 0.0},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_NEAR(cu::computeHeight(front, c.volume, c.aspect), c.height, 1e-12);
  }
}

TEST(FitOrthographicCamera, FramesEveryCornerTightly) {
  std::mt19937_64 rng(4242);
  int fitted = 0;
  for (int i = 0; i < 3000; ++i) {
    const BoundingVolume volume = randomVolume(rng);
    FakeViewport vp;
    placeCamera(rng, vp, volume);
    SCOPED_TRACE(testing::Message() << "case " << i << " volume " << volume << " eye " << vp.position
                                    << " up " << vp.up << " warp off " << vp.warpToFillOff);
    Matrix4x4d projection;
    try {
      projection = cu::fitOrthographicCamera(vp, volume);
    } catch (const cu::CouldNotFitCameraException&) {
      // Only a volume seen as a single point cannot be framed.
      const Matrix4x4d view = vp.getViewTransform();
      ASSERT_EQ(cu::computeHeight(view, volume, 1.0), 0.0);
      continue;
    }
    ++fitted;
    vp.projection = projection;
    const double reach = checkFramed(vp.getViewTransform(), projection, vp.rect, volume);
    ASSERT_FALSE(HasFailure());
    // Tight: some corner touches the viewport's edge.
    ASSERT_EQ(reach, 1.0);
  }
  EXPECT_GT(fitted, 2900);
}

TEST(FitPerspectiveCameraByPosition, FramesEveryCornerAndKeepsTheLineOfSight) {
  std::mt19937_64 rng(777);
  std::uniform_real_distribution<double> angle(0.5, 170.0);
  for (int i = 0; i < 3000; ++i) {
    const BoundingVolume volume = randomVolume(rng);
    FakeViewport vp;
    placeCamera(rng, vp, volume);
    if (volume.getXWidth() == 0 && volume.getYWidth() == 0 && volume.getZWidth() == 0) continue;
    const double viewAngle = angle(rng);
    const Point3d before = vp.position;
    SCOPED_TRACE(testing::Message() << "case " << i << " volume " << volume << " eye " << before << " angle "
                                    << viewAngle);
    vp.projection =
        cu::fitPerspectiveCameraByPosition(vp, vp, volume, vp.position, vp.target, vp.up, viewAngle);
    ASSERT_EQ(vp.positionsSet, 1);
    // Look from the new position along the old line of sight. (Rebuilding the
    // view towards the target instead would turn a tiny direction error into a
    // visible roll when the line of sight is nearly along the up vector.)
    Vector3d oldDir = before - vp.target;
    oldDir.normalize();
    const double reachOut = std::max(1.0, (vp.position - vp.target).length());
    checkFramed(cu::makeViewTransform(vp.position, vp.position - oldDir * reachOut, vp.up), vp.projection,
                vp.rect, volume);
    ASSERT_FALSE(HasFailure());
    // The camera moved along its line of sight and stayed on the viewer's side.
    const Vector3d moved = vp.position - vp.target;
    const double scale = std::max({1.0, std::fabs(before.getX()), std::fabs(before.getY()),
                                   std::fabs(before.getZ()), std::fabs(vp.position.getX()),
                                   std::fabs(vp.position.getY()), std::fabs(vp.position.getZ())});
    ASSERT_LE(moved.cross(oldDir).length(), 1e-12 * scale) << "left the line of sight: " << vp.position;
    ASSERT_GT(moved.dot(oldDir), 0.0) << "passed the target: " << vp.position;
  }
}

TEST(CameraFitting, UnframeableInputThrowsAndPublishesNothing) {
  const BoundingVolume cube(Point3d(0, 0, 0), 2, 2, 2);
  const Rectangle2d rect(0, 0, 100, 50);
  const Point3d eye(0, -10, 0);
  const Vector3d up(0, 0, 1);
  const BoundingVolume point(Point3d(0, 3, 0), Point3d(0, 3, 0)), stick(Point3d(0, -3, 0), Point3d(0, 3, 0));
  // clang-format off
  struct Case {
    const char* label; BoundingVolume volume; Rectangle2d rect; Point3d position; Vector3d up; double angle;
    bool orthoThrows, perspectiveThrows = true;
  };
  const Case cases[] = {
      {"unset volume", BoundingVolume(), rect, eye, up, 30, true},
      {"NaN volume", BoundingVolume(Point3d(kNaN, 0, 0), Point3d(1, 1, 1)), rect, eye, up, 30, true},
      {"point on the line of sight", point, rect, eye, up, 30, true},
      // Seen end-on a stick is a point to an orthographic camera only.
      {"stick along the line of sight", stick, rect, eye, up, 30, true, false},
      {"empty viewport", cube, Rectangle2d(5, 5, 5, 50), eye, up, 30, true},
      {"zero view angle", cube, rect, eye, up, 0, false},
      {"straight view angle", cube, rect, eye, up, 180, false},
      {"NaN view angle", cube, rect, eye, up, kNaN, false},
      {"eye on the target", cube, rect, Point3d(0, 0, 0), up, 30, true},
      {"up along the line of sight", cube, rect, eye, Vector3d(0, 2, 0), 30, true},
      {"zero up vector", cube, rect, eye, Vector3d(0, 0, 0), 30, true},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeViewport vp;
    vp.rect = c.rect;
    vp.position = c.position;
    vp.up = c.up;
    if (c.perspectiveThrows) {
      EXPECT_THROW(
          (void)cu::fitPerspectiveCameraByPosition(vp, vp, c.volume, c.position, vp.target, c.up, c.angle),
          cu::CouldNotFitCameraException);
      EXPECT_EQ(vp.positionsSet, 0);
    }
    if (c.orthoThrows) {
      EXPECT_THROW((void)cu::fitOrthographicCamera(vp, c.volume), cu::CouldNotFitCameraException);
    }
  }
}
