// Text of the offscreen back end: the standard PostScript faces drawn with
// the URW base35 outlines through FreeType and Cairo, each glyph placed at
// the advance and kerning of the library's own metrics, so that a string
// measured with guiStringWidthDPI is the string drawn.
#include <cairo-ft.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "backends/offscreen/canvas_p.h"
#include "qvgui/text.h"

namespace qvgui::offscreen::detail {
namespace {

using gui_objects::font::afmGlyph;
using gui_objects::font::afmGlyphName;
using gui_objects::font::afmKern;
using gui_objects::font::GlyphMetrics;
using gui_objects::font::kAfmFontCount;

// Strings reach the back end in the second table set (ISO Latin-1 for the
// text faces, the built-in encoding for Symbol and ZapfDingbats).
constexpr int kTableSet = 1;

// The outline file of each AFM index (four styles per family: +1 bold, +2
// slanted).
// clang-format off
constexpr const char* kFaceFiles[kAfmFontCount] = {
    "URWGothic-Book", "URWGothic-Demi", "URWGothic-BookOblique", "URWGothic-DemiOblique",
    "URWBookman-Light", "URWBookman-Demi", "URWBookman-LightItalic", "URWBookman-DemiItalic",
    "NimbusMonoPS-Regular", "NimbusMonoPS-Bold", "NimbusMonoPS-Italic", "NimbusMonoPS-BoldItalic",
    "NimbusSans-Regular", "NimbusSans-Bold", "NimbusSans-Italic", "NimbusSans-BoldItalic",
    "NimbusSansNarrow-Regular", "NimbusSansNarrow-Bold", "NimbusSansNarrow-Oblique", "NimbusSansNarrow-BoldOblique",
    "C059-Roman", "C059-Bold", "C059-Italic", "C059-BdIta",
    "P052-Roman", "P052-Bold", "P052-Italic", "P052-BoldItalic",
    "StandardSymbolsPS", "StandardSymbolsPS", "StandardSymbolsPS", "StandardSymbolsPS",
    "NimbusRoman-Regular", "NimbusRoman-Bold", "NimbusRoman-Italic", "NimbusRoman-BoldItalic",
    "Z003-MediumItalic", "Z003-MediumItalic", "Z003-MediumItalic", "Z003-MediumItalic",
    "D050000L", "D050000L", "D050000L", "D050000L",
};
// clang-format on

// ---- Faces, loaded once per process ------------------------------------------------
//
// The graphics thread is the only caller, so the cache needs no lock. Cairo
// may keep a font face alive in its own caches after we let go, so the
// FreeType face is released by Cairo's destroy hook, not by us.

struct Face {
  bool tried = false;
  cairo_font_face_t* cairo = nullptr;  // null when the file could not be loaded
  std::array<unsigned, 256> glyph{};   // glyph index per code of the table set; 0 none
};

FT_Library library() {
  static FT_Library lib = [] {
    FT_Library l = nullptr;
    if (FT_Init_FreeType(&l) != 0) l = nullptr;
    return l;
  }();
  return lib;
}

cairo_user_data_key_t ftFaceKey;

void releaseFtFace(void* face) { FT_Done_Face(static_cast<FT_Face>(face)); }

Face& faceFor(int afmIndex) {
  static std::array<Face, kAfmFontCount> faces;
  Face& f = faces[afmIndex];
  if (f.tried) return f;
  f.tried = true;
  FT_Library lib = library();
  if (!lib) return f;
  const std::string path = std::string(QVGUI_URW_FONT_DIR) + "/" + kFaceFiles[afmIndex] + ".otf";
  FT_Face ft = nullptr;
  if (FT_New_Face(lib, path.c_str(), 0, &ft) != 0) return f;
  cairo_font_face_t* cf = cairo_ft_font_face_create_for_ft_face(ft, FT_LOAD_NO_HINTING);
  if (cairo_font_face_set_user_data(cf, &ftFaceKey, ft, releaseFtFace) != CAIRO_STATUS_SUCCESS) {
    cairo_font_face_destroy(cf);
    FT_Done_Face(ft);
    return f;
  }
  f.cairo = cf;
  for (int code = 0; code < 256; ++code) {
    const char* name = afmGlyphName(afmIndex, kTableSet, static_cast<unsigned char>(code));
    if (name && FT_HAS_GLYPH_NAMES(ft)) f.glyph[code] = FT_Get_Name_Index(ft, name);
  }
  return f;
}

// ---- Layout ---------------------------------------------------------------------

double sizePx(const CanvasState& st) { return st.fontSizePt * st.pixelsPerPoint(); }

// Glyph positions along the baseline from 0, in pixels, and the total advance.
struct Run {
  std::vector<cairo_glyph_t> glyphs;
  double advance = 0.0;
};

Run layOut(const CanvasState& st, const Face& face, const char* text) {
  Run run;
  const double scale = sizePx(st) / 1000.0;
  double pen = 0.0;
  unsigned char prev = 0;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p; ++p) {
    GlyphMetrics m{};
    if (!afmGlyph(st.afmIndex, kTableSet, *p, &m)) continue;
    if (prev) pen += afmKern(st.afmIndex, kTableSet, prev, *p) * scale;
    if (face.glyph[*p]) run.glyphs.push_back(cairo_glyph_t{face.glyph[*p], pen, 0.0});
    pen += m.advance * scale;
    prev = *p;
  }
  run.advance = pen;
  return run;
}

// The baseline's offset below the anchor for a vertical alignment, from the
// face's ascender, descender and cap height.
double baselineOffset(const CanvasState& st, TextVertAlign align) {
  const gui_objects::font::FaceMetrics f = gui_objects::font::afmFaceMetrics(st.afmIndex);
  const double scale = sizePx(st) / 1000.0;
  switch (align) {
    case TEXT_VALIGN_TOP:
      return f.ascender * scale;
    case TEXT_VALIGN_CAP:
      return f.capHeight * scale;
    case TEXT_VALIGN_MIDDLE:
      return (f.ascender + f.descender) / 2.0 * scale;
    case TEXT_VALIGN_BOTTOM:
      return f.descender * scale;
    default:
      return 0.0;
  }
}

double startOffset(double advance, TextHorzAlign align) {
  switch (align) {
    case TEXT_HALIGN_CENTER:
      return -advance / 2.0;
    case TEXT_HALIGN_RIGHT:
      return -advance;
    default:
      return 0.0;
  }
}

// ---- Slots --------------------------------------------------------------------

// Sizes outside what a page can show are clamped, so that Cairo's font
// matrix stays invertible.
constexpr double kMinPointSize = 0.01;
constexpr double kMaxPointSize = 10000.0;

// A size in points is taken as it is (the record's rounded point size would
// overflow for absurd ones); other units go through the record's conversion.
double pointSizeOf(zrFont* font) {
  const double size = font->getUnits() == UNITS_POINTS ? font->getSize() : font->getPointSize();
  if (!(size > 0.0)) return 10.0;
  return std::min(std::max(size, kMinPointSize), kMaxPointSize);
}

void SetWindowFont(WinRec_tag* win, zrFont* font) {
  if (!font) return;
  CanvasState& st = stateOf(win);
  int index = 0;
  guiDetermineAFMindex(font, &index);
  if (index >= 0 && index < kAfmFontCount) st.afmIndex = index;
  st.fontSizePt = pointSizeOf(font);
}

// Draws at the pen position with the window's alignment and rotation
// (degrees counter-clockwise, as on the page).
void DrawString(WinRec_tag* win, const char* text) {
  if (!text || !*text) return;
  CanvasState& st = stateOf(win);
  Face& face = faceFor(st.afmIndex);
  if (!face.cairo) return;
  Run run = layOut(st, face, text);
  if (run.glyphs.empty()) return;
  const double dx = startOffset(run.advance, wm_GetTextHorizontalAlignment(win));
  const double dy = baselineOffset(st, wm_GetTextVerticalAlignment(win));
  const qvpoint pen = wm_GetPenPosition(win);
  cairo_t* cr = st.cr;
  cairo_save(cr);
  cairo_translate(cr, pen.h + kCentre, pen.v + kCentre);
  cairo_rotate(cr, -wm_GetTextRotation(win) * M_PI / 180.0);
  cairo_translate(cr, dx, dy);
  cairo_set_font_face(cr, face.cairo);
  cairo_set_font_size(cr, sizePx(st));
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  cairo_set_font_options(cr, options);
  cairo_font_options_destroy(options);
  setSourceRgb(st, st.fg);
  cairo_show_glyphs(cr, run.glyphs.data(), static_cast<int>(run.glyphs.size()));
  cairo_restore(cr);
}

int StringWidth(WinRec_tag* win, const char* text) {
  const CanvasState& st = stateOf(win);
  return guiStringWidthDPI(text, kTableSet, st.afmIndex, st.fontSizePt, st.dpi);
}

int StringHeight(WinRec_tag* win) {
  const CanvasState& st = stateOf(win);
  return guiStringHeightDPI(st.afmIndex, st.fontSizePt, st.dpi);
}

int StringDescent(WinRec_tag* win) {
  const CanvasState& st = stateOf(win);
  return guiStringDescentDPI(st.afmIndex, st.fontSizePt, st.dpi);
}

int StringCapHeight(WinRec_tag* win) {
  const CanvasState& st = stateOf(win);
  return static_cast<int>(gui_objects::font::afmFaceMetrics(st.afmIndex).capHeight * sizePx(st) / 1000.0);
}

// The string's box with its top-left corner at the origin: the measured
// width by the face's height.
void GetTextExtent(WinRec_tag* win, const char* text, qvrect* out) {
  if (!out) return;
  *out = qvrect{0, 0, StringHeight(win), StringWidth(win, text)};
}

}  // namespace

void installText(winMethods_tag* m) {
  swm_SetWindowFont(m, SetWindowFont);
  swm_SetUnadjWindowFont(m, SetWindowFont);
  swm_DrawString(m, DrawString);
  swm_StringWidth(m, StringWidth);
  swm_StringHeight(m, StringHeight);
  swm_StringDescent(m, StringDescent);
  swm_StringCapHeight(m, StringCapHeight);
  swm_GetTextExtent(m, GetTextExtent);
}

}  // namespace qvgui::offscreen::detail
