// Colours: clamping, byte conversions, opacity and interpolation.
#include <gtest/gtest.h>

#include <cmath>

#include "geometry_test_support.h"

namespace {

using namespace gui_objects;

TEST(Colors, ClampOnEveryWrite) {
  struct Case {
    const char* label;
    double in, out;
  };
  const Case cases[] = {
      {"above one", 2.0, 1.0},      {"below zero", -1.0, 0.0},          {"NaN", kNaN, 0.0},
      {"+infinity", kInf, 1.0},     {"-infinity", -kInf, 0.0},          {"one stays", 1.0, 1.0},
      {"inside stays", 0.25, 0.25}, {"just above one", 1.0000001, 1.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(Color3d(c.in, c.in, c.in), Color3d(c.out, c.out, c.out));
    EXPECT_EQ(Color4d(0.5, 0.5, 0.5, c.in).getAlpha(), c.out);
    Color4d set;
    set.setRed(c.in);
    set.setGreen(c.in);
    set.setBlue(c.in);
    set.setAlpha(c.in);
    EXPECT_EQ(set, Color4d(c.out, c.out, c.out, c.out));
    Color3d set3;
    set3.setGreen(c.in);
    EXPECT_EQ(set3.getGreen(), c.out);
  }
  // Negative zero is not > 0, so it comes out as positive zero.
  EXPECT_FALSE(std::signbit(Color3d(-0.0, 0, 0).getRed()));
}

TEST(Colors, ByteConversions) {
  struct Case {
    const char* label;
    double c;
    std::uint8_t byte;
  };
  const Case cases[] = {
      {"half rounds up", 0.5, 128},
      {"just under a half step", 127.49 / 255.0, 127},
      {"just over", 127.51 / 255.0, 128},
      {"small truncates to zero", 0.001, 0},
      {"one", 1.0, 255},
      {"clamped above", 7.0, 255},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(Color3d(c.c, 0, c.c).asColor4b(), Color4b(c.byte, 0, c.byte, 255));
    EXPECT_EQ(Color4d(0, c.c, 0, c.c).asColor4b(), Color4b(0, c.byte, 0, c.byte));
  }
  // Back to double through the reciprocal, and every byte survives the round trip.
  EXPECT_EQ(Color4b(255, 0, 1, 0).asColor4d(), Color4d(1, 0, 0.00392156862745098, 0));
  for (int k = 0; k < 256; ++k) {
    const auto b = static_cast<std::uint8_t>(k);
    const Color4b byte(b, static_cast<std::uint8_t>(255 - k), b, b);
    ASSERT_EQ(byte.asColor4d().asColor4b(), byte) << k;
  }
}

TEST(Colors, Opacity) {
  EXPECT_TRUE(Color4d(0, 0, 0, 1 - 1e-8).isOpaque());
  EXPECT_FALSE(Color4d(0, 0, 0, 0.99).isOpaque());
  EXPECT_TRUE(Color4b().isOpaque());
  EXPECT_FALSE(Color4b(0, 0, 0, 254).isOpaque());
  EXPECT_EQ(Color3d(0.1, 0.2, 0.3).asColor4d(), Color4d(0.1, 0.2, 0.3, 1));
}

TEST(Colors, InterpolationClampsT) {
  const Color3d red(1, 0, 0), blue(0, 0, 1);
  struct Case {
    const char* label;
    double t;
    Color3d expected;
  };
  const Case cases[] = {
      {"beyond the end", 1.5, blue},
      {"before the start", -1.0, red},
      {"NaN t counts as 0", kNaN, red},
      {"quarter", 0.25, Color3d(0.75, 0, 0.25)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_TRUE(nearlyEqual(interpolate(c.t, red, blue), c.expected));
    const Color4d expected4(c.expected.getRed(), 0, c.expected.getBlue(), c.expected.getBlue());
    EXPECT_TRUE(nearlyEqual(interpolate(c.t, Color4d(1, 0, 0, 0), Color4d(0, 0, 1, 1)), expected4));
  }
  EXPECT_EQ(interpolate(0.5, Color4b(0, 0, 0, 255), Color4b(255, 255, 255, 255)),
            Color4b(128, 128, 128, 255));
  EXPECT_EQ(interpolate(3.0, Color4b(0, 0, 0, 0), Color4b(10, 20, 30, 40)), Color4b(10, 20, 30, 40));
}

}  // namespace
