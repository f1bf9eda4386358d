// Fonts and text: font records with their deferred unit conversion, the
// built-in metrics of the 35 standard PostScript faces, and the text handlers
// that measure and lay out plain, TeX and LaTeX strings.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qvgui/export.h"
#include "qvgui/window.h"

// ---- Enumerations and records -------------------------------------------------------

// Units of a font size. Only these two have a meaning of their own here; every
// other value is the host's and is converted by the font proxy.
enum UnitTypes : int {
  UNITS_NORMALIZED = 2,  // a fraction of the font's height reference
  UNITS_POINTS = 3,
};

// 2 and 3 count as bold for the metrics.
enum FontWeightType : int {
  FONT_WEIGHT_LIGHT = 0,
  FONT_WEIGHT_NORMAL = 1,
  FONT_WEIGHT_DEMI = 2,
  FONT_WEIGHT_BOLD = 3,
};

// 1 and 2 count as slanted for the metrics.
enum FontAngleType : int {
  FONT_ANGLE_NORMAL = 0,
  FONT_ANGLE_ITALIC = 1,
  FONT_ANGLE_OBLIQUE = 2,
};

// Where the platform looks for the face; carried for the back ends, never
// interpreted here.
enum FontLocationType : int {
  FONT_LOCATION_SYSTEM = 0,
};

// The host's rectangle in real units, as the font proxy converts it.
struct tavrixRect_tag {
  double x;
  double y;
  double width;
  double height;
};

// A font description. Records from create_font/copy_font live in memory of
// the host's checked allocator and are released with destroy_font.
//
// The size may be given in units that need a reference (the normalised unit
// is a fraction of the height reference), so a unit change is remembered as
// "conversion pending" with the size still in the stored units; the
// conversion runs as soon as no side of it is normalised without a known
// reference. Conversion goes through the font proxy's convertTavrixRect with
// the font's window, or the root window when the font has none.
struct QVGUI_API zrFont {
  zrFont();
  // Every field but the realised font, which stays with the original; the
  // copy is invalid so that a back end realises its own.
  zrFont(const zrFont& other);
  zrFont& operator=(const zrFont&) = delete;
  // Lets the system-methods proxy release the realised font first.
  ~zrFont();

  [[nodiscard]] const char* getName() const noexcept { return name_; }
  // Switching to the proxy's fixed-width face name leaves the system name
  // empty, to be resolved by getSystemName.
  void setName(const char* name);
  [[nodiscard]] const char* getSystemName();

  // -1.0 while the conversion is still pending.
  [[nodiscard]] double getSize();
  // A different value is taken in the current units and ends a pending conversion.
  void setSize(double size);
  [[nodiscard]] UnitTypes getUnits() const noexcept { return units_; }
  void setUnits(UnitTypes units);
  // Rounded point size. While the conversion stays pending the stored size is
  // converted from the current units, deliberately, so a deferred normalised
  // size yields a provisional value rather than -1.
  [[nodiscard]] int getPointSize();
  // -1.0 while the conversion is pending, else the point size in screen pixels.
  [[nodiscard]] double getPointSizeForJava();

  [[nodiscard]] FontWeightType getWeight() const noexcept { return weight_; }
  void setWeight(FontWeightType weight) noexcept { weight_ = weight; }
  [[nodiscard]] FontAngleType getAngle() const noexcept { return angle_; }
  void setAngle(FontAngleType angle) noexcept { angle_ = angle; }
  [[nodiscard]] FontLocationType getLocation() const noexcept { return location_; }
  void setLocation(FontLocationType location) noexcept { location_ = location; }
  [[nodiscard]] bool getSmoothing() const noexcept { return smoothing_; }
  void setSmoothing(bool smoothing) noexcept { smoothing_ = smoothing; }
  [[nodiscard]] void* getSystemPtr() const noexcept { return systemPtr_; }
  void setSystemPtr(void* ptr) noexcept { systemPtr_ = ptr; }
  [[nodiscard]] bool getInvalid() const noexcept { return invalid_; }
  // Invalidating also releases the realised font through the system-methods proxy.
  void setInvalid(bool invalid);

  [[nodiscard]] int getHeightReference() const noexcept { return heightReference_; }
  void setHeightReference(int height, WinRec_tag* win);
  [[nodiscard]] bool getHeightIndependentOfReference() const noexcept {
    return units_ != UNITS_NORMALIZED && storedUnits_ != UNITS_NORMALIZED;
  }
  [[nodiscard]] WinRec_tag* getWindow() const noexcept { return window_; }
  void setWindow(WinRec_tag* win) noexcept { window_ = win; }

  // Same object, or exactly the same name (case counts), point size, weight
  // and angle. Location, smoothing and units do not take part.
  [[nodiscard]] bool isEqual(zrFont* other);

  [[nodiscard]] bool getConversionPending() const noexcept { return conversionPending_; }
  [[nodiscard]] UnitTypes getStoredUnits() const noexcept { return storedUnits_; }

 private:
  void update();
  [[nodiscard]] double convertSize(double size, UnitTypes from, UnitTypes to) const;

  char* name_;
  double size_ = 10.0;
  UnitTypes units_ = UNITS_POINTS;
  UnitTypes storedUnits_ = UNITS_POINTS;
  bool smoothing_ = false;
  bool conversionPending_ = false;
  std::int32_t heightReference_ = -1;
  bool referenceUnknown_ = true;
  void* systemPtr_ = nullptr;
  FontWeightType weight_ = FONT_WEIGHT_NORMAL;
  FontAngleType angle_ = FONT_ANGLE_NORMAL;
  FontLocationType location_ = FONT_LOCATION_SYSTEM;
  bool invalid_ = true;
  char* systemName_;
  WinRec_tag* window_ = nullptr;
};

// ---- Font records: flat interface ---------------------------------------------------------
//
// Each takes the font first and forwards to the operation of the same meaning.

[[nodiscard]] QVGUI_API zrFont* create_font();
[[nodiscard]] QVGUI_API zrFont* copy_font(const zrFont* font);
QVGUI_API void destroy_font(zrFont* font);
[[nodiscard]] QVGUI_API const char* font_get_name(zrFont* font);
QVGUI_API void font_set_name(zrFont* font, const char* name);
[[nodiscard]] QVGUI_API const char* font_get_system_name(zrFont* font);
[[nodiscard]] QVGUI_API double font_get_size(zrFont* font);
QVGUI_API void font_set_size(zrFont* font, double size);
[[nodiscard]] QVGUI_API UnitTypes font_get_units(zrFont* font);
QVGUI_API void font_set_units(zrFont* font, UnitTypes units);
[[nodiscard]] QVGUI_API int font_get_pointsize(zrFont* font);
[[nodiscard]] QVGUI_API double font_get_pointsize_for_java(zrFont* font);
[[nodiscard]] QVGUI_API FontWeightType font_get_weight(zrFont* font);
QVGUI_API void font_set_weight(zrFont* font, FontWeightType weight);
[[nodiscard]] QVGUI_API FontAngleType font_get_angle(zrFont* font);
QVGUI_API void font_set_angle(zrFont* font, FontAngleType angle);
[[nodiscard]] QVGUI_API FontLocationType font_get_location(zrFont* font);
QVGUI_API void font_set_location(zrFont* font, FontLocationType location);
[[nodiscard]] QVGUI_API bool font_getsmoothing(zrFont* font);
QVGUI_API void font_setsmoothing(zrFont* font, bool smoothing);
[[nodiscard]] QVGUI_API void* font_getsysptr(zrFont* font);
QVGUI_API void font_setsysptr(zrFont* font, void* ptr);
[[nodiscard]] QVGUI_API bool font_getinvalid(zrFont* font);
QVGUI_API void font_setinvalid(zrFont* font, bool invalid);
[[nodiscard]] QVGUI_API int get_font_height_reference(zrFont* font);
QVGUI_API void set_font_height_reference(zrFont* font, int height, WinRec_tag* win);
[[nodiscard]] QVGUI_API bool font_height_independent_of_reference(zrFont* font);
[[nodiscard]] QVGUI_API bool font_compare(zrFont* a, zrFont* b);

// ---- Built-in metrics: flat interface ------------------------------------------------------
//
// AFM font index: 0 AvantGarde-Book, 1 -Demi, 2 -BookOblique, 3 -DemiOblique,
// then in the same style order Bookman (4), Courier (8), Helvetica (12),
// Helvetica-Narrow (16), NewCenturySchlbk (20), Palatino (24), Symbol (28),
// Times (32), ZapfChancery-MediumItalic (36), ZapfDingbats (40); Symbol,
// ZapfChancery and ZapfDingbats repeat one face for all four styles.
//
// Table sets (the flag: 0 the first set, non-zero the second):
//   0  each face's own encoding as its AFM file gives it: StandardEncoding for
//      the text faces (39 is quoteright, 96 quoteleft), the built-in encoding
//      for Symbol and ZapfDingbats.
//   1  ISO 8859-1 for the text faces: codes 32-126 and 160-255 by glyph name
//      (39 the straight quote, 96 the grave, 160 a space, 173 a hyphen), so
//      é, °, µ, ±, × measure right; codes 0-31 and 127-159 have no glyph. For
//      Symbol and ZapfDingbats the same as set 0. Strings handed to a back
//      end's DrawString are bytes in this set.
// A code without a glyph measures 0 and has an all-zero box.
//
// Results are thousandths of the font size scaled by size x (dpi / 72) / 1000
// and truncated toward zero. Out-of-range indices measure 0. Strings are
// NUL-terminated bytes; null counts as empty.
//
//   height  = Ascender - Descender of the face (top of the tall letters to the
//             bottom of the descenders, without the accents and extremes of
//             the FontBBox), so that height - descent is the ascent.
//   descent = -Descender, a positive depth below the baseline.

// Recognises the font's system name (spaces removed; prefix match on the
// family names, then the aliases Arial, CourierNew, TimesNewRoman,
// NewCenturySchoolbook) and adds 1 for weights 2 and 3, 2 for angles 1 and 2.
// Returns 1 when the face was recognised, 0 when Courier stood in.
QVGUI_API int guiDetermineAFMindex(zrFont* font, int* index);
// The PostScript name of an AFM index; null out of range.
[[nodiscard]] QVGUI_API const char* guiGetAfmFontName(int index);
// Advance widths plus the kerning of each consecutive pair.
[[nodiscard]] QVGUI_API int guiStringWidthDPI(const char* string, int flag, int index, double size,
                                              double dpi);
[[nodiscard]] QVGUI_API int guiStringHeightDPI(int index, double size, double dpi);
[[nodiscard]] QVGUI_API int guiStringDescentDPI(int index, double size, double dpi);
// Highest glyph top and deepest glyph bottom of the string, from the glyph
// boxes. The descent starts at 1000 and is replaced by |lly| whenever a
// glyph's signed lly is below the value held, so once a descender has been
// seen a later glyph with a smaller signed bottom (even one sitting on the
// baseline) replaces it: the comparison of a signed value against a stored
// magnitude is the established behaviour and is kept. Empty: 0 and 0.
QVGUI_API void guiStringExtremeAscentDescentDPI(const char* string, int* ascent, int* descent, int flag,
                                                int index, double size, double dpi);

// ---- Built-in metrics: the shared metric interface -------------------------------------------

namespace gui_objects::font {

// Thousandths of the font size (AFM units), y upwards from the baseline.
struct GlyphMetrics {
  double advance;
  double llx, lly, urx, ury;
};

struct FaceMetrics {
  double ascender, descender, capHeight, xHeight;  // descender negative
  double llx, lly, urx, ury;                       // FontBBox
};

constexpr int kAfmFontCount = 44;  // AFM font indices 0..43

// Out-of-range indices or table sets answer as no glyph, 0, null or -1.
[[nodiscard]] QVGUI_API bool afmGlyph(int afmIndex, int tableSet, unsigned char code, GlyphMetrics* out);
// Kerning of the pair in thousandths; 0 when none.
[[nodiscard]] QVGUI_API double afmKern(int afmIndex, int tableSet, unsigned char first, unsigned char second);
[[nodiscard]] QVGUI_API const char* afmGlyphName(int afmIndex, int tableSet, unsigned char code);
// The lowest code showing the glyph; -1 when none.
[[nodiscard]] QVGUI_API int afmCodeForGlyphName(int afmIndex, int tableSet, const char* glyphName);
// All zero for an out-of-range index.
[[nodiscard]] QVGUI_API FaceMetrics afmFaceMetrics(int afmIndex);
// guiDetermineAFMindex's rules for a face name, weight and angle; Courier's
// index when the face is not recognised.
[[nodiscard]] QVGUI_API int afmIndexFor(const char* faceName, int weight, int angle);
// Advance widths plus pair kerning of n bytes, in thousandths, unscaled.
[[nodiscard]] QVGUI_API double afmStringWidth(int afmIndex, int tableSet, const char* text, std::size_t n);

}  // namespace gui_objects::font

// ---- Text handlers ----
