// The automatic camera: target, position, derived view angles and up vector,
// through a fake axes object that records what it is told.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace cu = gui_objects::camera_utils;
using gui_objects::Point3d;
using gui_objects::Vector3d;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kRoot3 = std::sqrt(3.0);

struct Axis {
  double min = 0.0, max = 1.0;
  bool log = false, reverse = false;
};

class FakeAxes : public cu::CameraModeProxy {
 public:
  FakeAxes(const Axis (&axes)[3], Point3d box, double az, double el)
      : CameraModeProxy(axes[0].log, axes[1].log, axes[2].log), box_(box), view_(az, el) {
    for (int k = 0; k < 3; ++k) {
      setRenderLimits(k, axes[k].min, axes[k].max);
      reverse_[k] = axes[k].reverse;
    }
  }

  bool targetAuto = true, positionAuto = true, upAuto = true, twoD = false;
  Point3d target, position;
  Vector3d up;
  std::vector<std::string> calls;

  template <typename T>
  void record(const char* call, T& field, const T& value) {
    calls.push_back(call);
    field = value;
  }

  bool isCameraTargetModeAuto() const override { return targetAuto; }
  bool isCameraPositionModeAuto() const override { return positionAuto; }
  bool isCameraUpVectorModeAuto() const override { return upAuto; }
  bool isCamera2D() const override { return twoD; }
  void setCameraTarget(const Point3d& p) override { record("target", target, p); }
  void setCameraPosition(const Point3d& p) override { record("position", position, p); }
  void setCameraUpVector(const Vector3d& v) override { record("up", up, v); }
  Point3d getCameraPosition() const override { return position; }
  Point3d getCameraTarget() const override { return target; }
  Vector3d getCameraUpVector() const override { return up; }
  Point3d getPlotBoxAspectRatio() const override { return box_; }
  void setView(double az, double el) override { record("view", view_, std::pair{az, el}); }
  double getViewAzimuth() const override { return view_.first; }
  double getViewElevation() const override { return view_.second; }
  bool isAxisReverse(int axis) const override { return reverse_[axis]; }

 private:
  Point3d box_;
  std::pair<double, double> view_;
  bool reverse_[3] = {};
};

}  // namespace

TEST(SetAutoCameraModes, AutomaticTargetAndPosition) {
  const double r3 = kRoot3;
  // clang-format off
  struct Case { const char* label; Axis axes[3]; Point3d box; double az, el; Point3d target, position; };
  const Case cases[] = {
      {"front view of the unit box", {{}, {}, {}}, {1, 1, 1}, 0, 0, {0.5, 0.5, 0.5}, {0.5, 0.5 - 5 * r3, 0.5}},
      {"from the right", {{}, {}, {}}, {1, 1, 1}, 90, 0, {0.5, 0.5, 0.5}, {0.5 + 5 * r3, 0.5, 0.5}},
      {"from above, wide limits", {{-2, 2}, {0, 10}, {}}, {1, 1, 1}, 0, 90, {0, 5, 0.5}, {0, 5, 0.5 + 5 * r3}},
      // d = 3; x offset 5 * 3 / 2 box units, times the span 4.
      {"flat plot box", {{0, 4}, {}, {}}, {2, 1, 2}, 90, 0, {2, 0.5, 0.5}, {32, 0.5, 0.5}},
      // Log z [1, 100]: centre 50.5, offset 5 sqrt3 (100/1 - 1) 1.
      {"log z from above", {{}, {}, {1, 100, true}}, {1, 1, 1}, 0, 90, {0.5, 0.5, 50.5}, {0.5, 0.5, 50.5 + 495 * r3}},
      {"reversed x from the right", {{0, 2, false, true}, {}, {}}, {1, 1, 1}, 90, 0, {1, 0.5, 0.5},
       {1 - 10 * r3, 0.5, 0.5}},
      {"reversed y from the front", {{}, {0, 1, false, true}, {}}, {1, 1, 1}, 0, 0, {0.5, 0.5, 0.5},
       {0.5, 0.5 + 5 * r3, 0.5}},
  };
  // clang-format on
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeAxes axes(c.axes, c.box, c.az, c.el);
    cu::setAutoCameraModes(axes);
    EXPECT_TRUE(gui_objects::nearlyEqual(axes.target, c.target)) << axes.target;
    EXPECT_TRUE(gui_objects::nearlyEqual(axes.position, c.position)) << axes.position;
  }
}

TEST(SetAutoCameraModes, QuarterTurnOffsetsAreExactlyZero) {
  // From straight above, the x and y offsets must vanish exactly: with a
  // naive cos(90 degrees) the position would drift off the vertical and the
  // up vector would fall back to (0, 0, 1).
  const Axis axes[3] = {{0, 1e6}, {0, 1e6}, {}};
  FakeAxes fake(axes, Point3d(1, 1, 1), 30.0, 90.0);
  cu::setAutoCameraModes(fake);
  EXPECT_EQ(fake.position.getX(), 5e5);
  EXPECT_EQ(fake.position.getY(), 5e5);
  EXPECT_NEAR(fake.up.getX(), -0.5, 1e-15);
  EXPECT_NEAR(fake.up.getY(), std::sqrt(3.0) / 2, 1e-15);
  EXPECT_EQ(fake.up.getZ(), 0.0);
}

TEST(SetAutoCameraModes, ManualPositionDerivesTheViewAngles) {
  const Axis axes[3] = {{}, {}, {}};
  FakeAxes fake(axes, Point3d(1, 1, 1), 12.0, 34.0);
  fake.positionAuto = false;
  fake.position = Point3d(0.5, 0.5, 10.0);
  cu::setAutoCameraModes(fake);
  EXPECT_EQ(fake.getViewAzimuth(), 0.0);
  EXPECT_NEAR(fake.getViewElevation(), 90.0, 1e-12);
  // Derived angles 0/90 make the view two-dimensional: the top-view up vector.
  EXPECT_EQ(fake.up, Vector3d(0, 1, 0));
  EXPECT_EQ(fake.calls, (std::vector<std::string>{"target", "view", "up"}));
}

TEST(SetAutoCameraModes, DerivedAnglesInvertTheAutomaticPosition) {
  // Handing the automatic position for (az, el) back as a manual one recovers
  // (az, el). Only for a cubic box: an elongated one skews the derived angles.
  std::mt19937_64 rng(99);
  std::uniform_real_distribution<double> azd(-179.0, 179.0), eld(-89.0, 89.0), boxd(0.2, 5.0);
  std::uniform_real_distribution<double> lod(-50.0, 50.0), spand(0.01, 100.0);
  std::bernoulli_distribution coin(0.3);
  for (int i = 0; i < 500; ++i) {
    Axis axes[3];
    for (Axis& a : axes) {
      a.log = coin(rng);
      a.reverse = coin(rng);
      a.min = a.log ? std::exp(lod(rng) / 10) : lod(rng);
      a.max = a.log ? a.min * (1 + spand(rng)) : a.min + spand(rng);
    }
    const double az = azd(rng), el = eld(rng), side = boxd(rng);
    const Point3d box(side, side, side);
    SCOPED_TRACE(testing::Message() << "case " << i << " az " << az << " el " << el);
    FakeAxes automatic(axes, box, az, el);
    cu::setAutoCameraModes(automatic);

    FakeAxes manual(axes, box, 0.0, 0.0);
    manual.positionAuto = false;
    manual.position = automatic.position;
    cu::setAutoCameraModes(manual);
    ASSERT_NEAR(manual.getViewAzimuth(), az, 1e-7);
    ASSERT_NEAR(manual.getViewElevation(), el, 1e-7);
  }
}

TEST(SetAutoCameraModes, InfinitePositionThrowsBeforeSettingIt) {
  // clang-format off
  struct Case { const char* label; Axis axes[3]; Point3d box; };
  const Case cases[] = {
      {"infinite limit", {{0, kInf}, {}, {}}, Point3d(1, 1, 1)},
      {"zero plot-box component", {{}, {}, {}}, Point3d(1, 0, 1)},
      {"infinite logarithmic limit", {{}, {}, {1, kInf, true}}, Point3d(1, 1, 1)},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    // Azimuth 37.5: the x offset is positive, so an infinite upper x limit
    // gives inf + inf (an infinite position), not inf - inf (NaN, no throw).
    FakeAxes fake(c.axes, c.box, 37.5, 30.0);
    EXPECT_THROW(cu::setAutoCameraModes(fake), cu::BadLimitsException);
    EXPECT_EQ(fake.calls, (std::vector<std::string>{"target"}));
  }
}

TEST(SetAutoCameraModes, CameraOnItsTargetIsRejectedBeforeAnyViewChange) {
  const Axis axes[3] = {{}, {}, {}};
  FakeAxes fake(axes, Point3d(1, 1, 1), -37.5, 30.0);
  fake.positionAuto = false;
  fake.targetAuto = false;
  fake.position = Point3d(0.5, 0.5, 0.5);
  fake.target = Point3d(0.5, 0.5, 0.5);
  EXPECT_THROW(cu::setAutoCameraModes(fake), gui_objects::ZeroLengthException);
  EXPECT_TRUE(fake.calls.empty());
}
