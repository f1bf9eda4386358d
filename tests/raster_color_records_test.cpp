// Colour records: creation and ownership, field access, the three equality
// tests, and the kernel colours' conversions to and from records.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "geometry_test_support.h"
#include "qvgui/raster.h"

namespace {

using gui_objects::Color3d;
using gui_objects::Color4d;
using gui_objects::kNaN;

struct Destroy {
  void operator()(Color_tag* c) const {
    if (c) c->gotten = false;
    destroy_ColorPtr(c);
  }
};
using Record = std::unique_ptr<Color_tag, Destroy>;

TEST(ColorRecords, CreateCopyDuplicate) {
  Record blank(create_ColorPtr());
  EXPECT_TRUE(Is_ColorPtrRGB_Equal(blank.get(), 0, 0, 0));
  EXPECT_EQ(get_ColorPtr_pixel(blank.get()), -1);
  EXPECT_FALSE(gotten(blank.get()));

  Record rgb(create_ColorPtrFromRGB(2.0, -1.0, 0.5));  // stored unchecked
  EXPECT_EQ(get_ColorPtr_green(rgb.get()), -1.0);
  set_ColorPtr_pixel(rgb.get(), 17);
  rgb->gotten = true;

  Record copy(copy_ColorPtr(rgb.get()));
  EXPECT_TRUE(Is_ColorPtrColor_Equal(copy.get(), rgb.get()));
  EXPECT_FALSE(gotten(copy.get())) << "a copy is not in any colour table";

  blank->gotten = true;
  duplicate_ColorPtr(copy.get(), blank.get());
  EXPECT_TRUE(Is_ColorPtrRGB_Equal(blank.get(), 2.0, -1.0, 0.5));
  EXPECT_EQ(get_ColorPtr_pixel(blank.get()), 17);
  EXPECT_TRUE(gotten(blank.get())) << "duplicate leaves the target's flag alone";
  duplicate_ColorPtr(nullptr, blank.get());
  duplicate_ColorPtr(copy.get(), nullptr);
}

TEST(ColorRecords, GottenRecordsSurviveDestroy) {
  Color_tag* c = create_ColorPtrFromRGB(0.1, 0.2, 0.3);
  c->gotten = true;
  destroy_ColorPtr(c);
  // Still alive (the sanitizer build would report a use after free here).
  EXPECT_EQ(get_ColorPtr_green(c), 0.2);
  c->gotten = false;
  destroy_ColorPtr(c);
  destroy_ColorPtr(nullptr);
}

TEST(ColorRecords, NullIsHarmless) {
  EXPECT_EQ(get_ColorPtr_blue(nullptr), 0.0);
  EXPECT_EQ(get_ColorPtr_pixel(nullptr), -1);
  set_ColorPtr_red(nullptr, 1.0);
  EXPECT_EQ(copy_ColorPtr(nullptr), nullptr);
  EXPECT_FALSE(gotten(nullptr));
  EXPECT_FALSE(Is_ColorPtrRGB_Equal(nullptr, 0, 0, 0));
}

TEST(ColorRecords, EqualityTests) {
  Record a(create_ColorPtrFromRGB(0.1, 0.2, 0.3));
  Record ulp(create_ColorPtrFromRGB(0.1, 0.2, std::nextafter(0.3, 1.0)));
  Record far(create_ColorPtrFromRGB(0.1, 0.2 + 1e-12, 0.3));
  Record nan(create_ColorPtrFromRGB(kNaN, 0, 0));
  Record nan2(create_ColorPtrFromRGB(kNaN, 0, 0));
  struct Case {
    const char* label;
    const Color_tag *x, *y;
    bool exact;
    int same;
  };
  const Case cases[] = {
      {"same record", a.get(), a.get(), true, 1},
      {"same record even with NaN", nan.get(), nan.get(), true, 1},
      {"one ulp apart", a.get(), ulp.get(), false, 1},
      {"1e-12 apart", a.get(), far.get(), false, 0},
      {"NaN in different records", nan.get(), nan2.get(), false, 0},
      {"null on one side", a.get(), nullptr, false, 0},
      {"null on the other", nullptr, a.get(), false, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(Is_ColorPtrColor_Equal(c.x, c.y), c.exact);
    EXPECT_EQ(suIsSameColor(c.x, c.y), c.same);
  }
  EXPECT_TRUE(Is_ColorPtrRGB_Equal(a.get(), 0.1, 0.2, 0.3));
  EXPECT_FALSE(Is_ColorPtrRGB_Equal(a.get(), 0.1, 0.2, std::nextafter(0.3, 1.0)));
}

TEST(ColorRecords, KernelColoursConvert) {
  Record out(create_ColorPtrFromRGB(1.5, -0.5, 0.25));
  EXPECT_EQ(Color3d(out.get()), Color3d(1, 0, 0.25));
  EXPECT_EQ(Color4d(out.get()), Color4d(1, 0, 0.25, 1));
  EXPECT_EQ(Color4d(static_cast<Color_tag*>(nullptr)), Color4d(0, 0, 0, 1));

  Record made(Color3d(0.2, 0.4, 0.6).asColorPtr());
  EXPECT_TRUE(Is_ColorPtrRGB_Equal(made.get(), 0.2, 0.4, 0.6));
  EXPECT_EQ(get_ColorPtr_pixel(made.get()), -1);
  EXPECT_FALSE(gotten(made.get()));
}

}  // namespace
