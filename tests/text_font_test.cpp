// Font records: defaults, copies, names, the deferred unit conversion against
// a small model over random operation sequences, and equality.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "qvgui/text.h"

namespace {

using gui_objects::FontProxy;
using gui_objects::SystemMethodsProxy;
using gui_objects::WindowProxy;
using gui_objects::WindowProxyRegistry;

// ---- Proxies with a known unit system ---------------------------------------------------
//
// Units 0 inches, 1 centimetres, 2 normalised (a fraction of the reference
// height in pixels), 3 points, 4 pixels at 96 per inch.

double pointsPer(int unit, double referencePixels) {
  switch (unit) {
    case 0:
      return 72.0;
    case 1:
      return 72.0 / 2.54;
    case 2:
      return referencePixels * 0.75;
    case 4:
      return 0.75;
    default:
      return 1.0;
  }
}

double convert(double v, int from, int to, double referencePixels) {
  return v * pointsPer(from, referencePixels) / pointsPer(to, referencePixels);
}

WinRec_tag* const kRoot = reinterpret_cast<WinRec_tag*>(0x1000);
WinRec_tag* const kFigure = reinterpret_cast<WinRec_tag*>(0x2000);

struct UnitFontProxy : FontProxy {
  const char* getFixedWidthFontName() const override { return "FixedWidth"; }
  const char* getFixedWidthSystemFontName() const override { return "Courier 10 Pitch"; }
  void convertTavrixRect(WinRec_tag* win, tavrixRect_tag* rect, UnitTypes from, UnitTypes to,
                         qvrect* out) const override {
    ++calls;
    lastWindow = win;
    lastReference = *out;
    rect->height = convert(rect->height, from, to, out->bottom - out->top);
  }
  mutable int calls = 0;
  mutable WinRec_tag* lastWindow = nullptr;
  mutable qvrect lastReference{};
};

struct RecordingSystem : SystemMethodsProxy {
  void freeSystemFont(zrFont* font) const override { freed.push_back(font); }
  mutable std::vector<zrFont*> freed;
};

struct Window : WindowProxy {
  Window(FontProxy* f, SystemMethodsProxy* s) {
    windowClass_ = 1;
    fontProxy_ = f;
    systemMethodsProxy_ = s;
  }
  WinRec_tag* getRootWindow() const override { return kRoot; }
};

UnitFontProxy g_fonts;
RecordingSystem g_system;
Window g_window(&g_fonts, &g_system);

class text_font : public ::testing::Test {
 protected:
  void SetUp() override {
    WindowProxyRegistry::RegisterProxy(&g_window);
    g_system.freed.clear();
    g_fonts.calls = 0;
  }
};

struct FontDeleter {
  void operator()(zrFont* f) const { destroy_font(f); }
};
using FontPtr = std::unique_ptr<zrFont, FontDeleter>;
FontPtr makeFont() { return FontPtr(create_font()); }

// ---- Life cycle -------------------------------------------------------------------------

TEST_F(text_font, DefaultsCopiesAndRelease) {
  FontPtr f = makeFont();
  EXPECT_STREQ(font_get_name(f.get()), "helvetica");
  EXPECT_STREQ(font_get_system_name(f.get()), "helvetica");
  EXPECT_EQ(font_get_size(f.get()), 10.0);
  EXPECT_EQ(font_get_units(f.get()), UNITS_POINTS);
  EXPECT_FALSE(font_getsmoothing(f.get()));
  EXPECT_EQ(get_font_height_reference(f.get()), -1);
  EXPECT_EQ(font_getsysptr(f.get()), nullptr);
  EXPECT_EQ(font_get_weight(f.get()), 1);
  EXPECT_EQ(font_get_angle(f.get()), 0);
  EXPECT_EQ(font_get_location(f.get()), 0);
  EXPECT_TRUE(font_getinvalid(f.get()));

  int realised = 0;
  font_set_name(f.get(), "Times");
  font_set_units(f.get(), UNITS_NORMALIZED);  // pending: no reference yet
  font_setsmoothing(f.get(), true);
  font_set_weight(f.get(), FONT_WEIGHT_BOLD);
  font_set_location(f.get(), static_cast<FontLocationType>(4));
  font_setsysptr(f.get(), &realised);
  font_setinvalid(f.get(), false);
  FontPtr c(copy_font(f.get()));
  EXPECT_EQ(font_getsysptr(c.get()), nullptr);
  EXPECT_TRUE(font_getinvalid(c.get()));
  EXPECT_STREQ(font_get_name(c.get()), "Times");
  EXPECT_STREQ(font_get_system_name(c.get()), "Times");
  EXPECT_TRUE(c->getConversionPending());
  EXPECT_EQ(font_get_weight(c.get()), FONT_WEIGHT_BOLD);
  EXPECT_EQ(font_get_location(c.get()), 4);
  EXPECT_EQ(font_getsysptr(f.get()), &realised);  // the original keeps its realised font

  // Only invalidating releases the realised font; destroying always asks.
  g_system.freed.clear();
  font_setinvalid(f.get(), false);
  EXPECT_TRUE(g_system.freed.empty());
  font_setinvalid(f.get(), true);
  ASSERT_EQ(g_system.freed.size(), 1u);
  zrFont* raw = c.release();
  destroy_font(raw);
  EXPECT_EQ(g_system.freed.back(), raw);
  EXPECT_EQ(copy_font(nullptr), nullptr);
  destroy_font(nullptr);
}

TEST_F(text_font, NamesAndTheFixedWidthFace) {
  struct Case {
    const char* set;
    const char *name, *systemName;
    bool invalidated;
  };
  // Applied in order to one font.
  const Case steps[] = {
      {"Arial", "Arial", "Arial", true},
      {"Arial", "Arial", "Arial", false},  // same name: nothing changes
      {"arial", "arial", "arial", true},   // names are case-sensitive
      {"fixedwidth", "fixedwidth", "Courier 10 Pitch", true},
      {"Helvetica", "Helvetica", "Helvetica", true},
      {"", "", "", true},
      {"", "", "", true},  // an empty name is always stored again
  };
  FontPtr f = makeFont();
  for (const Case& s : steps) {
    SCOPED_TRACE(std::string("set '") + s.set + "'");
    font_setinvalid(f.get(), false);
    font_set_name(f.get(), s.set);
    EXPECT_EQ(font_getinvalid(f.get()), s.invalidated);
    EXPECT_STREQ(font_get_name(f.get()), s.name);
    EXPECT_STREQ(font_get_system_name(f.get()), s.systemName);
  }
}

// ---- Deferred conversion ----------------------------------------------------------------

// The conversion rules written out plainly, with the proxy's unit system.
struct Model {
  double size = 10.0;
  int units = 3, stored = 3;
  bool pending = false, referenceUnknown = true, invalid = false;
  int reference = -1;

  void update() {
    if (!pending || (referenceUnknown && (units == 2 || stored == 2))) return;
    size = convert(size, stored, units, reference);
    stored = units;
    pending = false;
  }
  void setUnits(int u) {
    if (u == units) return;
    if (!pending) {
      stored = units;
      pending = true;
    }
    units = u;
    invalid = true;
    update();
  }
  void setReference(int h) {
    referenceUnknown = false;
    if (h == reference) return;
    reference = h;
    update();
    if (units == 2) invalid = true;
  }
  void setSize(double s) {
    if (s == size) return;
    size = s;
    stored = units;
    pending = false;
    invalid = true;
  }
  double getSize() {
    update();
    return pending ? -1.0 : size;
  }
  int getPointSize() {
    update();
    return static_cast<int>(convert(size, units, 3, reference) + 0.5);
  }
};

TEST_F(text_font, DeferredConversionFollowsTheModel) {
  std::mt19937 rng(7);
  const int unitChoices[] = {0, 1, 2, 3, 4};
  const int references[] = {40, 100, 100, 600};
  const double sizes[] = {0.05, 0.5, 8.0, 10.0, 12.5};
  std::uniform_int_distribution<int> op(0, 5), pick(0, 3), pickUnit(0, 4), pickSize(0, 4);
  for (int run = 0; run < 300; ++run) {
    FontPtr f = makeFont();
    Model m;
    std::string trail;
    for (int step = 0; step < 12; ++step) {
      font_setinvalid(f.get(), false);
      m.invalid = false;
      switch (op(rng)) {
        case 0:
        case 1: {
          const int u = unitChoices[pickUnit(rng)];
          trail += " units" + std::to_string(u);
          font_set_units(f.get(), static_cast<UnitTypes>(u));
          m.setUnits(u);
          break;
        }
        case 2: {
          const int h = references[pick(rng)];
          trail += " ref" + std::to_string(h);
          set_font_height_reference(f.get(), h, step % 2 ? kFigure : nullptr);
          m.setReference(h);
          break;
        }
        case 3: {
          const double s = sizes[pickSize(rng)];
          trail += " size" + std::to_string(s);
          font_set_size(f.get(), s);
          m.setSize(s);
          break;
        }
        case 4:
          trail += " getSize";
          ASSERT_DOUBLE_EQ(font_get_size(f.get()), m.getSize()) << trail;
          break;
        default:
          trail += " getPointSize";
          ASSERT_EQ(font_get_pointsize(f.get()), m.getPointSize()) << trail;
          break;
      }
      ASSERT_EQ(f->getConversionPending(), m.pending) << trail;
      ASSERT_EQ(font_get_units(f.get()), m.units) << trail;
      ASSERT_EQ(f->getStoredUnits(), m.stored) << trail;
      ASSERT_EQ(font_getinvalid(f.get()), m.invalid) << trail;
      ASSERT_EQ(font_height_independent_of_reference(f.get()), m.units != 2 && m.stored != 2) << trail;
    }
  }
}

TEST_F(text_font, ConversionCornersAndTheWindowUsed) {
  FontPtr f = makeFont();
  // Normalised before any reference: pending, -1, and a provisional point size.
  font_set_units(f.get(), UNITS_NORMALIZED);
  EXPECT_EQ(font_get_size(f.get()), -1.0);
  EXPECT_EQ(font_get_pointsize_for_java(f.get()), -1.0);
  EXPECT_EQ(font_get_pointsize(f.get()), static_cast<int>(convert(10.0, 2, 3, -1.0) + 0.5));
  // ... and back to points leaves the size untouched, with no conversion at all.
  g_fonts.calls = 0;
  font_set_units(f.get(), UNITS_POINTS);
  EXPECT_EQ(font_get_size(f.get()), 10.0);
  EXPECT_EQ(g_fonts.calls, 0);

  // Without a window of its own the font converts with the root window, and
  // the reference rectangle spans the height reference.
  FontPtr g = makeFont();
  font_set_units(g.get(), static_cast<UnitTypes>(0));
  EXPECT_DOUBLE_EQ(font_get_size(g.get()), 10.0 / 72.0);
  EXPECT_EQ(g_fonts.lastWindow, kRoot);
  EXPECT_EQ(g.get()->getWindow(), nullptr);
  set_font_height_reference(g.get(), 200, kFigure);
  font_set_units(g.get(), UNITS_NORMALIZED);
  EXPECT_EQ(g_fonts.lastWindow, kFigure);
  EXPECT_EQ(g_fonts.lastReference.top, 0);
  EXPECT_EQ(g_fonts.lastReference.bottom, 200);
  EXPECT_EQ(g_fonts.lastReference.right, 1);
  EXPECT_DOUBLE_EQ(font_get_size(g.get()), 10.0 / 150.0);

  ws_SetScreenPixelsPerPoint(1.5);
  FontPtr h = makeFont();
  font_set_size(h.get(), 11.6);
  EXPECT_DOUBLE_EQ(font_get_pointsize_for_java(h.get()), 12 * 1.5);
  ws_SetScreenPixelsPerPoint(1.0);
}

// ---- Equality -------------------------------------------------------------------------------

TEST_F(text_font, EqualityUsesNamePointSizeWeightAndAngle) {
  struct Case {
    const char* label;
    void (*change)(zrFont*);
    bool equal;
  };
  const Case cases[] = {
      {"untouched", [](zrFont*) {}, true},
      {"name case", [](zrFont* f) { font_set_name(f, "Helvetica"); }, false},
      {"location", [](zrFont* f) { font_set_location(f, static_cast<FontLocationType>(1)); }, true},
      {"smoothing", [](zrFont* f) { font_setsmoothing(f, true); }, true},
      {"weight", [](zrFont* f) { font_set_weight(f, FONT_WEIGHT_DEMI); }, false},
      {"angle", [](zrFont* f) { font_set_angle(f, FONT_ANGLE_ITALIC); }, false},
      {"size rounding to the same points", [](zrFont* f) { font_set_size(f, 10.4); }, true},
      {"size rounding up", [](zrFont* f) { font_set_size(f, 10.5); }, false},
      {"same size in inches",
       [](zrFont* f) {
         font_set_units(f, static_cast<UnitTypes>(0));
         font_set_size(f, 10.0 / 72.0);
       },
       true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FontPtr a = makeFont(), b = makeFont();
    c.change(b.get());
    EXPECT_EQ(font_compare(a.get(), b.get()), c.equal);
    EXPECT_EQ(font_compare(b.get(), a.get()), c.equal);
    EXPECT_TRUE(font_compare(b.get(), b.get()));
  }
}

}  // namespace
