// Offscreen back end: text is drawn where the library's metrics say, with
// every alignment and rotation, in every standard face.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "offscreen_test_support.h"
#include "qvgui/text.h"

namespace {

using gui_objects::font::afmGlyph;
using gui_objects::font::afmKern;
using gui_objects::font::GlyphMetrics;
using offscreen_test::rgb;
using qvgui::offscreen::Canvas;
using qvgui::offscreen::Format;

struct Box {
  double left, top, right, bottom;  // device pixels, right and bottom exclusive
};

// The box of the pixels with visible ink; all zero when none has.
Box inkBox(const Canvas& c) {
  Box b{1e9, 1e9, -1e9, -1e9};
  for (int y = 0; y < c.height(); ++y)
    for (int x = 0; x < c.width(); ++x)
      if (c.pixel(x, y).r < 224) {
        b.left = std::min<double>(b.left, x);
        b.top = std::min<double>(b.top, y);
        b.right = std::max<double>(b.right, x + 1);
        b.bottom = std::max<double>(b.bottom, y + 1);
      }
  return b.right < b.left ? Box{0, 0, 0, 0} : b;
}

void setFont(WinRec_tag* win, const char* name, double points, FontWeightType weight = FONT_WEIGHT_NORMAL,
             FontAngleType angle = FONT_ANGLE_NORMAL) {
  zrFont* f = create_font();
  font_set_name(f, name);
  font_set_size(f, points);
  font_set_weight(f, weight);
  font_set_angle(f, angle);
  wm_SetWindowFont(win, f);
  destroy_font(f);
}

// Slow reference: the ink of a left/baseline string from the metric tables
// alone, glyph by glyph (first glyph's left bearing to the last's right edge).
Box expectedInk(int afmIndex, const std::string& s, double px, double x0, double baseline) {
  double pen = 0.0, left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;
  for (std::size_t i = 0; i < s.size(); ++i) {
    const unsigned char c = s[i];
    GlyphMetrics m{};
    if (!afmGlyph(afmIndex, 1, c, &m)) continue;
    if (i > 0) pen += afmKern(afmIndex, 1, s[i - 1], c) * px / 1000.0;
    if (m.urx > m.llx) {
      left = std::min(left, pen + m.llx * px / 1000.0);
      right = std::max(right, pen + m.urx * px / 1000.0);
      top = std::min(top, -m.ury * px / 1000.0);
      bottom = std::max(bottom, -m.lly * px / 1000.0);
    }
    pen += m.advance * px / 1000.0;
  }
  return Box{x0 + left, baseline + top, x0 + right, baseline + bottom};
}

void expectBoxNear(const Box& got, const Box& want, double tol) {
  EXPECT_NEAR(got.left, want.left, tol);
  EXPECT_NEAR(got.top, want.top, tol);
  EXPECT_NEAR(got.right, want.right, tol);
  EXPECT_NEAR(got.bottom, want.bottom, tol);
}

// The drawn ink spans what the metrics give, kerning included ("AVAVAV" is
// several pixels narrower kerned than not), and the measured width agrees.
// The tolerance covers the pixel grid (a pixel with any ink counts) and the
// outlines' small departures from the metric boxes.
TEST(OffscreenText, DrawnInkMatchesTheMetrics) {
  struct Case {
    const char* face;
    FontWeightType weight;
    FontAngleType angle;
    const char* text;
  };
  const Case cases[] = {
      {"Helvetica", FONT_WEIGHT_NORMAL, FONT_ANGLE_NORMAL, "Hello, World"},
      {"Helvetica", FONT_WEIGHT_BOLD, FONT_ANGLE_NORMAL, "AVAVAV Wave"},
      {"Times", FONT_WEIGHT_NORMAL, FONT_ANGLE_ITALIC, "Tyre 10^3"},
      {"Courier", FONT_WEIGHT_NORMAL, FONT_ANGLE_NORMAL, "x = 0.25"},
      {"Palatino", FONT_WEIGHT_BOLD, FONT_ANGLE_NORMAL, "\xb5m \xb1 \xd7\xb0"},  // µm ± ×°
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    Canvas canvas(Format::Png, 400, 80, 144.0);
    WinRec_tag* win = canvas.window();
    setFont(win, c.face, 12.0, c.weight, c.angle);
    wm_SetTextAlignment(win, TEXT_HALIGN_LEFT, TEXT_VALIGN_BASELINE);
    wm_MoveTo(win, 20, 50);
    wm_DrawString(win, c.text);
    const int index = gui_objects::font::afmIndexFor(c.face, c.weight, c.angle);
    const double px = 12.0 * 2.0;
    expectBoxNear(inkBox(canvas), expectedInk(index, c.text, px, 20.5, 50.5), 1.5);
    EXPECT_EQ(wm_StringWidth(win, c.text), guiStringWidthDPI(c.text, 1, index, 12.0, 144.0));
  }
}

// Each alignment moves the ink by the measured width and the face's vertical
// metrics, and rotation turns it about the anchor, counter-clockwise. The
// expectations move the ink of the plain left/baseline drawing, so the
// outlines' own small differences from the metric boxes cancel. Times tells
// the top (ascender 683) from the cap height (662) by 3 pixels at this size.
TEST(OffscreenText, AlignmentAndRotationPlaceTheInk) {
  const int times = gui_objects::font::afmIndexFor("Times", 1, 0);
  const gui_objects::font::FaceMetrics face = gui_objects::font::afmFaceMetrics(times);
  const double s = 72.0 * 144.0 / 72.0 / 1000.0;  // pixels per unit
  const double w = gui_objects::font::afmStringWidth(times, 1, "H", 1) * s;
  const double asc = face.ascender * s, desc = -face.descender * s, cap = face.capHeight * s;
  const double mid = (asc - desc) / 2;
  const double ax = 300.5, ay = 300.5;

  auto draw = [](TextHorzAlign h, TextVertAlign v, int rotation) {
    Canvas canvas(Format::Png, 600, 600, 144.0);
    WinRec_tag* win = canvas.window();
    setFont(win, "Times", 72.0);
    wm_SetTextAlignment(win, h, v);
    wm_SetTextRotation(win, rotation);
    wm_MoveTo(win, 300, 300);
    wm_DrawString(win, "H");
    return inkBox(canvas);
  };
  // The reference ink relative to the anchor.
  const Box b0 = draw(TEXT_HALIGN_LEFT, TEXT_VALIGN_BASELINE, 0);
  const double l = b0.left - ax, r = b0.right - ax, t = b0.top - ay, b = b0.bottom - ay;

  struct Case {
    const char* label;
    TextHorzAlign h;
    TextVertAlign v;
    int rotation;
    double dx, dy;  // shift of the text in its own frame, before rotation
  };
  const Case cases[] = {
      {"centre baseline", TEXT_HALIGN_CENTER, TEXT_VALIGN_BASELINE, 0, -w / 2, 0},
      {"right baseline", TEXT_HALIGN_RIGHT, TEXT_VALIGN_BASELINE, 0, -w, 0},
      {"left top", TEXT_HALIGN_LEFT, TEXT_VALIGN_TOP, 0, 0, asc},
      {"left cap", TEXT_HALIGN_LEFT, TEXT_VALIGN_CAP, 0, 0, cap},
      {"left middle", TEXT_HALIGN_LEFT, TEXT_VALIGN_MIDDLE, 0, 0, mid},
      {"left bottom", TEXT_HALIGN_LEFT, TEXT_VALIGN_BOTTOM, 0, 0, -desc},
      {"left baseline 90", TEXT_HALIGN_LEFT, TEXT_VALIGN_BASELINE, 90, 0, 0},
      {"right top -90", TEXT_HALIGN_RIGHT, TEXT_VALIGN_TOP, -90, -w, asc},
      {"centre middle 180", TEXT_HALIGN_CENTER, TEXT_VALIGN_MIDDLE, 180, -w / 2, mid},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    // The shifted box in the text's frame (y down), then turned by the
    // rotation: 90 maps (x, y) to (y, -x), -90 to (-y, x), 180 to (-x, -y).
    const double x0 = l + c.dx, x1 = r + c.dx, y0 = t + c.dy, y1 = b + c.dy;
    Box want{};
    switch (c.rotation) {
      case 0:
        want = {x0, y0, x1, y1};
        break;
      case 90:
        want = {y0, -x1, y1, -x0};
        break;
      case -90:
        want = {-y1, x0, -y0, x1};
        break;
      case 180:
        want = {-x1, -y1, -x0, -y0};
        break;
    }
    want = {ax + want.left, ay + want.top, ax + want.right, ay + want.bottom};
    expectBoxNear(draw(c.h, c.v, c.rotation), want, 1.5);
  }
}

// Every face of the metric table has its outlines and finds its glyphs by
// name: a capital letter (a dingbat or Greek letter in the symbol faces)
// leaves ink in every one of the 44 styles.
TEST(OffscreenText, EveryFaceDraws) {
  const char* families[] = {"AvantGarde",       "Bookman",  "Courier", "Helvetica", "Helvetica-Narrow",
                            "NewCenturySchlbk", "Palatino", "Symbol",  "Times",     "ZapfChancery",
                            "ZapfDingbats"};
  for (const char* family : families)
    for (FontWeightType w : {FONT_WEIGHT_NORMAL, FONT_WEIGHT_BOLD})
      for (FontAngleType a : {FONT_ANGLE_NORMAL, FONT_ANGLE_ITALIC}) {
        SCOPED_TRACE(std::string(family) + " " + std::to_string(w) + " " + std::to_string(a));
        Canvas canvas(Format::Png, 60, 40, 72.0);
        WinRec_tag* win = canvas.window();
        setFont(win, family, 20.0, w, a);
        wm_SetTextAlignment(win, TEXT_HALIGN_LEFT, TEXT_VALIGN_BASELINE);
        wm_MoveTo(win, 10, 30);
        wm_DrawString(win, "A");
        EXPECT_GT(offscreen_test::inkSum(canvas), 10.0);
      }
}

}  // namespace
