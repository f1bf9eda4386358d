// Plain-text layout: widths against the AFM files read here, line boxes,
// alignment on the anchor and rotation about it.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "qvgui/text.h"
#include "text_layout_afm_reader.h"

namespace {

using namespace gui_objects::font;
using text_test::afm;
using text_test::referenceWidth;

constexpr double kTol = 1e-9;

StringProps props(const char* face, double size, double dpi) {
  StringProps p;
  p.faceName = face;
  p.size = size;
  p.dpi = dpi;
  return p;
}

TEST(TextLayout, PlainWidthIsAdvancesPlusKerningOnRandomText) {
  // Faces by name, weight and angle, with the AFM index they must resolve to.
  struct Face {
    const char* name;
    int weight, angle, index;
  };
  const Face faces[] = {{"Helvetica", 1, 0, 12},        {"Times", 2, 1, 35},       {"Courier", 1, 2, 10},
                        {"Palatino", 3, 0, 25},         {"AvantGarde", 1, 1, 2},   {"Bookman", 2, 0, 5},
                        {"NewCenturySchlbk", 1, 0, 20}, {"ZapfChancery", 1, 0, 36}};
  std::mt19937 rng(12);
  std::uniform_int_distribution<int> ch(32, 126), len(0, 24);
  std::uniform_real_distribution<double> size(4.0, 40.0), dpi(50.0, 300.0);
  for (const Face& f : faces) {
    ASSERT_TRUE(afm(f.index).loaded) << f.name;
    for (int trial = 0; trial < 60; ++trial) {
      std::string s(static_cast<std::size_t>(len(rng)), ' ');
      for (char& c : s) c = static_cast<char>(ch(rng));
      StringProps p = props(f.name, size(rng), dpi(rng));
      p.weight = f.weight;
      p.angle = f.angle;
      const TextLayout t = TextHandler(TextKind::Plain).layout(s, p);
      SCOPED_TRACE(testing::Message() << f.name << " '" << s << "'");
      const double k = p.size * p.dpi / 72.0 / 1000.0;
      EXPECT_NEAR(t.width, referenceWidth(f.index, s) * k, kTol * 1000);
      ASSERT_EQ(t.runs.size(), s.empty() ? 0u : 1u);
      if (s.empty()) continue;
      EXPECT_EQ(t.runs[0].afmIndex, f.index);
      EXPECT_EQ(t.runs[0].bytes, s);
      // Each glyph starts where the prefix before it ends.
      for (std::size_t i = 1; i < s.size(); i += 5)
        EXPECT_NEAR(t.runs[0].glyphX[i],
                    referenceWidth(f.index, s.substr(0, i + 1)) * k -
                        afm(f.index).glyphs.at(text_test::latin1Name(f.index, s[i])).wx * k,
                    1e-6);
      EXPECT_NEAR(t.ascent, afm(f.index).ascender * k, 1e-9);
      EXPECT_NEAR(t.descent, -afm(f.index).descender * k, 1e-9);
    }
  }
}

TEST(TextLayout, LinesArePitchApartAndAlignedWithinTheBlock) {
  const std::string lines[] = {"Wide first line", "ab", "", "Tail"};
  const std::string text = lines[0] + "\n" + lines[1] + "\n" + lines[2] + "\n" + lines[3];
  const double k = 12.0 * 2.0 / 1000.0;  // 12 pt at 144 dpi
  const text_test::AfmFile& h = afm(12);
  const double pitch = (h.bboxUry - h.bboxLly) * k * 1.5;
  StringProps p = props("Helvetica", 12, 144);
  p.lineSpacing = 1.5;
  p.horzAlign = TEXT_HALIGN_CENTER;
  const TextLayout t = TextHandler().layout(text, p);
  EXPECT_EQ(t.lineCount, 4);
  const double block = referenceWidth(12, lines[0]) * k;
  EXPECT_NEAR(t.width, block, 1e-9);
  EXPECT_NEAR(t.descent, 3 * pitch - h.descender * k, 1e-9);
  ASSERT_EQ(t.runs.size(), 3u);  // the empty line has no run
  const int lineOf[3] = {0, 1, 3};
  for (int r = 0; r < 3; ++r) {
    const std::string& s = lines[lineOf[r]];
    EXPECT_EQ(t.runs[r].bytes, s);
    EXPECT_EQ(t.runs[r].line, lineOf[r]);
    EXPECT_NEAR(t.runs[r].x, -referenceWidth(12, s) * k / 2, 1e-9);  // each line centred on the anchor
    EXPECT_NEAR(t.runs[r].y, lineOf[r] * pitch, 1e-9);
  }
}

TEST(TextLayout, AlignmentPlacesTheBoxOnTheAnchor) {
  const text_test::AfmFile& t = afm(32);
  const double k = 10.0 / 1000.0;
  const double w = referenceWidth(32, "Ty,") * k, asc = t.ascender * k, desc = -t.descender * k;
  struct Case {
    TextHorzAlign h;
    TextVertAlign v;
    double left, top;  // of the logical box
  };
  const Case cases[] = {
      {TEXT_HALIGN_LEFT, TEXT_VALIGN_BASELINE, 0, -asc},
      {TEXT_HALIGN_CENTER, TEXT_VALIGN_TOP, -w / 2, 0},
      {TEXT_HALIGN_RIGHT, TEXT_VALIGN_BOTTOM, -w, -asc - desc},
      {TEXT_HALIGN_LEFT, TEXT_VALIGN_MIDDLE, 0, -(asc + desc) / 2},
      {TEXT_HALIGN_RIGHT, TEXT_VALIGN_CAP, -w, t.capHeight * k - asc},
  };
  for (const Case& c : cases) {
    StringProps p = props("Times", 10, 72);
    p.horzAlign = c.h;
    p.vertAlign = c.v;
    const TextLayout l = TextHandler().layout("Ty,", p);
    SCOPED_TRACE(testing::Message() << c.h << "/" << c.v);
    EXPECT_NEAR(l.logical.left, c.left, 1e-9);
    EXPECT_NEAR(l.logical.right, c.left + w, 1e-9);
    EXPECT_NEAR(l.logical.top, c.top, 1e-9);
    EXPECT_NEAR(l.logical.bottom, c.top + asc + desc, 1e-9);
    ASSERT_EQ(l.runs.size(), 1u);
    EXPECT_NEAR(l.runs[0].x, c.left, 1e-9);
    EXPECT_NEAR(l.runs[0].y, c.top + asc, 1e-9);
    // Ink: from the top of T to the tail of y, from T's left edge.
    ASSERT_TRUE(l.hasInk);
    EXPECT_NEAR(l.ink.top, c.top + asc - t.glyphs.at("T").ury * k, 1e-9);
    EXPECT_NEAR(l.ink.bottom, c.top + asc - t.glyphs.at("y").lly * k, 1e-9);
    EXPECT_NEAR(l.ink.left, c.left + t.glyphs.at("T").llx * k, 1e-9);
  }
}

TEST(TextLayout, RotationTurnsTheAlignedBoxAboutTheAnchor) {
  StringProps p = props("Helvetica", 10, 72);
  const TextLayout upright = TextHandler().layout("Hello\nworld", p);
  const double w = upright.width, top = -upright.ascent, bottom = upright.descent;

  std::mt19937 rng(7);
  std::uniform_real_distribution<double> angle(-720, 720);
  for (int trial = 0; trial < 200; ++trial) {
    p.rotation = angle(rng);
    p.horzAlign = static_cast<TextHorzAlign>(trial % 3);
    p.vertAlign = static_cast<TextVertAlign>(trial % 5);
    const TextLayout t = TextHandler().layout("Hello\nworld", p);
    p.rotation = 0;
    const TextLayout flat = TextHandler().layout("Hello\nworld", p);
    const double c = std::cos(t.rotation * M_PI / 180), s = std::sin(t.rotation * M_PI / 180),
                 h = bottom - top;
    SCOPED_TRACE(t.rotation);
    EXPECT_NEAR(t.bounds.right - t.bounds.left, std::abs(w * c) + std::abs(h * s), 1e-9);
    EXPECT_NEAR(t.bounds.bottom - t.bounds.top, std::abs(w * s) + std::abs(h * c), 1e-9);
    // Screen-counterclockwise: the baseline runs along (cos, -sin), the box's
    // left side down along (sin, cos).
    EXPECT_NEAR(t.corners[1].x - t.corners[0].x, w * c, 1e-9);
    EXPECT_NEAR(t.corners[1].y - t.corners[0].y, -w * s, 1e-9);
    EXPECT_NEAR(t.corners[3].x - t.corners[0].x, h * s, 1e-9);
    EXPECT_NEAR(t.corners[3].y - t.corners[0].y, h * c, 1e-9);
    ASSERT_EQ(t.runs.size(), flat.runs.size());
    for (std::size_t r = 0; r < t.runs.size(); ++r) {
      EXPECT_NEAR(t.runs[r].x, flat.runs[r].x * c + flat.runs[r].y * s, 1e-9);
      EXPECT_NEAR(t.runs[r].y, -flat.runs[r].x * s + flat.runs[r].y * c, 1e-9);
    }
    EXPECT_NEAR(
        t.inkBounds.right - t.inkBounds.left,
        std::abs((flat.ink.right - flat.ink.left) * c) + std::abs((flat.ink.bottom - flat.ink.top) * s),
        1e-9);
  }
}

TEST(TextLayout, CharactersRecordsAndBadProps) {
  struct Case {
    const char* label;
    const char* text;
    std::size_t runs;
    const char* firstBytes;
    int firstFace;
  };
  // clang-format off
  const Case cases[] = {
      {"UTF-8 Latin-1 stays in the text face", "25\u00B0C \u00E9t\u00E9", 1, "25\260C \351t\351", 12},
      {"a stray byte is its Latin-1 character", "\261" "1", 1, "\261" "1", 12},
      {"Greek goes to Symbol", "\u03B1=1", 2, "a", 28},
      {"no glyph anywhere measures as ?", "\u20AC\205", 1, "??", 12},
      {"tabs are spaces, CR dropped", "a\tb\r", 1, "a b", 12},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const TextLayout t = TextHandler().layout(c.text, StringProps{});
    ASSERT_EQ(t.runs.size(), c.runs);
    EXPECT_EQ(t.runs[0].bytes, c.firstBytes);
    EXPECT_EQ(t.runs[0].afmIndex, c.firstFace);
  }

  zrFont* font = create_font();
  font_set_name(font, "Times New Roman");
  font_set_weight(font, FONT_WEIGHT_BOLD);
  const StringProps record = FontFactory::propsFor(font);
  destroy_font(font);
  EXPECT_EQ(FontFactory::make(record).afmIndex(), 33);

  // Nonsense sizes fall back to 10 pt at 72 dpi; unknown faces to Courier.
  StringProps bad = props("NoSuchFace", -3, std::nan(""));
  bad.lineSpacing = 0;
  bad.rotation = INFINITY;
  const TextLayout t = TextHandler().layout("ab\ncd", bad);
  ASSERT_EQ(t.runs.size(), 2u);
  EXPECT_EQ(t.runs[0].afmIndex, 8);
  EXPECT_NEAR(t.width, 12.0, 1e-12);  // two Courier advances of 600
  EXPECT_EQ(t.rotation, 0);
  EXPECT_GT(t.runs[1].y, t.runs[0].y);
  EXPECT_EQ(Font(44, 0).afmIndex(), 8);
}

}  // namespace
