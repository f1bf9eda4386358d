// Built-in metrics of the standard PostScript faces: face recognition, glyph
// and kerning queries, and the string measures of the flat interface.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

#include "qvgui/text.h"
#include "text/afm_p.h"

namespace gui_objects::font {

namespace {

using afm::kFaces;

const afm::GlyphTable* tableFor(int afmIndex, int tableSet) noexcept {
  if (afmIndex < 0 || afmIndex >= kAfmFontCount || tableSet < 0 || tableSet >= afm::kTableSets) {
    return nullptr;
  }
  return &kFaces[afm::faceOfIndex(afmIndex)].sets[tableSet];
}

// The hot loop of every width: one advance and one kerning entry per byte.
// The kerning matrix's zero row and column make the first byte and bytes
// outside any pair add nothing, so there is no branch on the pair.
std::int64_t widthUnits(const afm::GlyphTable& t, const unsigned char* s, std::size_t n) noexcept {
  std::int64_t sum = 0;
  const std::int16_t* kern = t.kern;
  const unsigned cols = t.kernCols;
  unsigned row = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const unsigned char c = s[i];
    sum += t.advance[c] + kern[row * cols + t.kernCol[c]];
    row = t.kernRow[c];
  }
  return sum;
}

// As widthUnits up to the terminating NUL, in one pass.
std::int64_t widthUnitsTerminated(const afm::GlyphTable& t, const unsigned char* s) noexcept {
  std::int64_t sum = 0;
  const std::int16_t* kern = t.kern;
  const unsigned cols = t.kernCols;
  unsigned row = 0;
  for (unsigned char c; (c = *s) != 0; ++s) {
    sum += t.advance[c] + kern[row * cols + t.kernCol[c]];
    row = t.kernRow[c];
  }
  return sum;
}

// ---- Face recognition ----------------------------------------------------------------

int compareIgnoringCase(const char* a, const char* b, std::size_t n) noexcept {
  for (std::size_t i = 0; i < n; ++i) {
    const int ca = std::tolower(static_cast<unsigned char>(a[i]));
    const int cb = std::tolower(static_cast<unsigned char>(b[i]));
    if (ca != cb) return ca - cb;
  }
  return 0;
}

struct Alias {
  const char* name;
  int base;
};
// "CourierNew" can never be reached here (the family match takes it first);
// it stays so the table reads as the list of names people use.
constexpr Alias kAliases[] = {
    {"Arial", 12}, {"CourierNew", 8}, {"TimesNewRoman", 32}, {"NewCenturySchoolbook", 20}};

constexpr int kCourier = 8;

// Base index of the face, or -1 when neither a family nor an alias matches.
int familyBase(const char* faceName) noexcept {
  char stripped[256];
  std::size_t n = 0;
  if (faceName) {
    for (const char* p = faceName; *p && n < sizeof stripped - 1; ++p) {
      if (*p != ' ') stripped[n++] = *p;
    }
  }
  stripped[n] = '\0';
  for (int base = 0; base < kAfmFontCount; base += 4) {
    const char* family = kFaces[afm::faceOfIndex(base)].postScriptName;
    const std::size_t len = std::min(n, std::strlen(family));
    if (compareIgnoringCase(stripped, family, len) == 0) return base;
  }
  for (const Alias& a : kAliases) {
    if (std::strlen(a.name) == n && compareIgnoringCase(stripped, a.name, n) == 0) return a.base;
  }
  return -1;
}

int styleOffset(int weight, int angle) noexcept {
  return (weight == 2 || weight == 3 ? 1 : 0) + (angle == 1 || angle == 2 ? 2 : 0);
}

// size x (dpi / 72) / 1000, truncated; the order of the operations is part of
// the result, since truncation makes it visible in the last pixel.
int scaled(double units, double size, double dpi) noexcept {
  const double v = units * size * (dpi / 72.0) / 1000.0;
  if (!(std::fabs(v) < 2147483647.0)) return 0;
  return static_cast<int>(v);
}

}  // namespace

// ---- The shared metric interface ---------------------------------------------------------

bool afmGlyph(int afmIndex, int tableSet, unsigned char code, GlyphMetrics* out) {
  const afm::GlyphTable* t = tableFor(afmIndex, tableSet);
  if (!t || t->glyph[code] == afm::kNoGlyph) return false;
  if (out) {
    out->advance = t->advance[code];
    out->llx = t->box[code][0];
    out->lly = t->box[code][1];
    out->urx = t->box[code][2];
    out->ury = t->box[code][3];
  }
  return true;
}

double afmKern(int afmIndex, int tableSet, unsigned char first, unsigned char second) {
  const afm::GlyphTable* t = tableFor(afmIndex, tableSet);
  if (!t) return 0.0;
  return t->kern[t->kernRow[first] * t->kernCols + t->kernCol[second]];
}

const char* afmGlyphName(int afmIndex, int tableSet, unsigned char code) {
  const afm::GlyphTable* t = tableFor(afmIndex, tableSet);
  if (!t || t->glyph[code] == afm::kNoGlyph) return nullptr;
  return kFaces[afm::faceOfIndex(afmIndex)].glyphNames[t->glyph[code]];
}

int afmCodeForGlyphName(int afmIndex, int tableSet, const char* glyphName) {
  const afm::GlyphTable* t = tableFor(afmIndex, tableSet);
  if (!t || !glyphName) return -1;
  const char* const* names = kFaces[afm::faceOfIndex(afmIndex)].glyphNames;
  for (int c = 0; c < 256; ++c) {
    if (t->glyph[c] != afm::kNoGlyph && std::strcmp(names[t->glyph[c]], glyphName) == 0) return c;
  }
  return -1;
}

FaceMetrics afmFaceMetrics(int afmIndex) {
  if (afmIndex < 0 || afmIndex >= kAfmFontCount) return FaceMetrics{};
  const afm::Face& f = kFaces[afm::faceOfIndex(afmIndex)];
  return FaceMetrics{double(f.ascender), double(f.descender), double(f.capHeight), double(f.xHeight),
                     double(f.bbox[0]),  double(f.bbox[1]),   double(f.bbox[2]),   double(f.bbox[3])};
}

int afmIndexFor(const char* faceName, int weight, int angle) {
  const int base = familyBase(faceName);
  return (base < 0 ? kCourier : base) + styleOffset(weight, angle);
}

double afmStringWidth(int afmIndex, int tableSet, const char* text, std::size_t n) {
  const afm::GlyphTable* t = tableFor(afmIndex, tableSet);
  if (!t || !text) return 0.0;
  return static_cast<double>(widthUnits(*t, reinterpret_cast<const unsigned char*>(text), n));
}

}  // namespace gui_objects::font

// ---- Flat interface -----------------------------------------------------------------------

using namespace gui_objects::font;

int guiDetermineAFMindex(zrFont* font, int* index) {
  const char* name = font ? font->getSystemName() : "";
  const int base = familyBase(name);
  const int weight = font ? font->getWeight() : 0;
  const int angle = font ? font->getAngle() : 0;
  if (index) *index = (base < 0 ? kCourier : base) + styleOffset(weight, angle);
  return base < 0 ? 0 : 1;
}

const char* guiGetAfmFontName(int index) {
  if (index < 0 || index >= kAfmFontCount) return nullptr;
  return afm::kFaces[afm::faceOfIndex(index)].postScriptName;
}

int guiStringWidthDPI(const char* string, int flag, int index, double size, double dpi) {
  const afm::GlyphTable* t = tableFor(index, flag ? 1 : 0);
  if (!t || !string) return 0;
  const std::int64_t units = widthUnitsTerminated(*t, reinterpret_cast<const unsigned char*>(string));
  return scaled(static_cast<double>(units), size, dpi);
}

int guiStringHeightDPI(int index, double size, double dpi) {
  if (index < 0 || index >= kAfmFontCount) return 0;
  const afm::Face& f = afm::kFaces[afm::faceOfIndex(index)];
  return scaled(f.ascender - f.descender, size, dpi);
}

int guiStringDescentDPI(int index, double size, double dpi) {
  if (index < 0 || index >= kAfmFontCount) return 0;
  return scaled(-afm::kFaces[afm::faceOfIndex(index)].descender, size, dpi);
}

void guiStringExtremeAscentDescentDPI(const char* string, int* ascent, int* descent, int flag, int index,
                                      double size, double dpi) {
  const afm::GlyphTable* t = tableFor(index, flag ? 1 : 0);
  int up = 0, down = 0;
  if (t && string && *string) {
    int top = -1000, bottom = 1000;
    for (const unsigned char* p = reinterpret_cast<const unsigned char*>(string); *p; ++p) {
      const int ury = t->box[*p][3], lly = t->box[*p][1];
      if (ury > top) top = ury;
      if (lly < bottom) bottom = lly < 0 ? -lly : lly;
    }
    up = scaled(top, size, dpi);
    down = scaled(bottom, size, dpi);
  }
  if (ascent) *ascent = up;
  if (descent) *descent = down;
}
