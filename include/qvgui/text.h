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

#include <string_view>

namespace gui_objects::font {

// Measuring and laying out the strings of text objects with the built-in AFM
// metrics. A TextHandler of one kind is the entry point: validate() checks a
// string, layout() places it. Inside, the Interpreter turns the markup into a
// flat list of TextAtoms, and the atoms are placed with the metrics of Fonts
// (a face at a size) that the FontFactory makes from the StringProps. The
// result, a TextLayout, holds glyph runs ready for a back end's DrawString
// and the boxes a figure needs for alignment and tight layout.
//
// Three kinds of markup:
//
//   Plain  the string as it is; '\n' breaks lines.
//   Tex    the subset of TeX people write in plot labels:
//            x^2  x_{i,j}  e^{-x^{2}}      scripts, braces group, scripts nest
//            \alpha..\omega \Gamma..\Omega Greek letters (Symbol face)
//            \infty \pm \times \div \leq \geq \neq \approx \equiv \sim \propto
//            \circ \degree \cdot \bullet \ldots \partial \nabla \int \sum
//            \prod \surd \in \notin \subset \supset \cup \cap \forall
//            \exists \emptyset \neg \wedge \vee \perp \angle \prime \aleph
//            \Re \Im \wp \oplus \otimes \langle \rangle \clubsuit ..
//            \leftarrow \rightarrow (\to) \uparrow \downarrow \leftrightarrow
//            \Leftarrow \Rightarrow \Uparrow \Downarrow \Leftrightarrow
//            \bf \it \sl \rm          weight and angle for the rest of the group
//            \textbf{..} \textit{..} \textrm{..} \mathbf \mathit \mathrm
//            \fontname{Times}         face for the rest of the group
//            \fontsize{14}            size in points (up to 10000) for the rest of the group
//            \color{red}  \color[rgb]{0.2,0.4,1}
//            \, \: \; \  \quad \qquad spaces of 3/18, 4/18, 5/18, 1/3, 1, 2 em
//            \{ \} \_ \^ \\ \% \$ \& \# \~   the character itself
//          '%' '$' '&' '#' '~' are ordinary characters; '\n' breaks lines.
//          As in TeX, spaces after a command word are skipped (\alpha x
//          gives no space; write \alpha\ x or {\alpha} x).
//   Latex  text with $..$ (or $$..$$) math. Outside math only the text
//          commands are allowed (\bf \it \rm \textbf.. \fontsize \color,
//          spaces and escapes); inside math also scripts and symbols, and
//          letters are set in the italic of the face unless a font command
//          chose the shape, and '-' is the minus sign of the Symbol face.
//          Spaces typed in math are ignored; formulas space themselves as
//          TeX does in its common cases: 4/18 em around a binary operator
//          (+ - \pm \times \cdot ..., none when it is a sign), 5/18 em around
//          a relation (= < > \leq \approx \in \to ...), nothing in scripts.
//          '%' starts a comment to the end of the line, '~' is a space, '\\'
//          and '\n' break lines, '&' and '#' are errors.
//          There is no DVI interpreter: the string is checked as LaTeX, its
//          '$' delimiters are dropped and it is laid out with the Tex subset.
//
// Colour names: black white red green blue cyan magenta yellow gray
// darkGreen orange lightBlue. \color[rgb] components are clamped into [0, 1].
//
// Scripts: each level is set at 0.7 of the size of what it is attached to; a
// superscript's baseline rises 0.4 of that size, a subscript's falls 0.2.
// A superscript and a subscript on the same base (x^a_b, x_b^a) start at the
// same x; the pen then moves past the wider one.
//
// Bad markup never throws. validate() reports the first error (byte offset
// into the string and a message); layout() reports the same error in its
// result and still lays out the whole string, recovering at each error:
// an unknown command, a stray '}', '&' or '#', a trailing '\' or a script
// without argument is drawn literally; groups and math left open are closed at
// the end; a math-only construct outside math is set as math; a second
// superscript or subscript starts a new pair; a bad \fontsize or \color
// argument is skipped and changes nothing.
//
// Characters: the string is read as UTF-8, and a byte that does not start a
// valid UTF-8 sequence stands for the Latin-1 character of that code. Code
// points up to 255 are drawn in the text face with table set 1 (ISO Latin-1);
// Greek letters and the mathematical characters of the symbol list above are
// drawn in the Symbol face; anything else, and a code the face has no glyph
// for, is drawn and measured as '?'. Tabs count as spaces, '\r' and the other
// control characters are dropped.
//
// Geometry: layout coordinates are device pixels at StringProps::dpi with y
// growing downwards, relative to the anchor point of the text. Widths are the
// AFM advances plus the kerning of consecutive characters in one run, not
// rounded. A line's logical ascent and descent are the largest of its runs'
// Ascender and Descender, raised or lowered with scripts, and at least the
// base font's. Runs in Symbol or ZapfDingbats use the base face's values, so
// symbols sit in the line of the text around them (a base face of either
// kind uses its own, which the tables take from its font box).
// Baselines are one line pitch apart: the base font's box height (FontBBox)
// times lineSpacing, or more when a line's ascent plus the previous line's
// descent need it. Every line is aligned within the block as the block is
// aligned on the anchor:
//
//   horizontal  LEFT: block's left edge on the anchor, CENTER: its middle,
//               RIGHT: its right edge
//   vertical    TOP: top of the first line's ascent, CAP: first baseline one
//               cap height (base font) below the anchor, MIDDLE: middle of the
//               block, BASELINE: first baseline, BOTTOM: bottom of the last
//               line's descent
//
// Rotation turns the aligned block about the anchor by `rotation` degrees,
// counterclockwise as seen on the screen: (x, y) -> (x cos + y sin,
// -x sin + y cos) in y-down coordinates.

// A value outside the enumeration counts as Plain.
enum class TextKind : int { Plain = 0, Tex = 1, Latex = 2 };

// No error: offset is npos and the message empty.
struct TextError {
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);
  std::size_t offset = npos;  // byte offset into the string
  std::string message;
  [[nodiscard]] bool ok() const noexcept { return offset == npos; }
};

// What a string is laid out with. The face is resolved like guiDetermineAFMindex
// (unknown faces measure as Courier). Weight 2 or 3 is bold, angle 1 or 2
// slanted. A size outside (0, 10000] points counts as 10, a dpi outside
// (0, 100000] as 72, a lineSpacing outside (0, 1000] as 1; NaN is outside.
struct StringProps {
  std::string faceName = "Helvetica";
  double size = 10.0;  // points
  int weight = 1;
  int angle = 0;
  Color3d color{0.0, 0.0, 0.0};
  TextHorzAlign horzAlign = TEXT_HALIGN_LEFT;
  TextVertAlign vertAlign = TEXT_VALIGN_BASELINE;
  double rotation = 0.0;  // degrees, counterclockwise on the screen
  double dpi = 72.0;      // pixels per inch of the output
  double lineSpacing = 1.0;
};

// One AFM face at one size; all results in points. An index outside
// 0..kAfmFontCount-1 counts as Courier, a size outside (0, 10000] as 10.
class QVGUI_API Font {
 public:
  Font() noexcept = default;
  Font(int afmIndex, double size) noexcept;

  [[nodiscard]] int afmIndex() const noexcept { return afmIndex_; }
  [[nodiscard]] double size() const noexcept { return size_; }
  // Symbol and ZapfDingbats: their bytes are in the face's own encoding.
  [[nodiscard]] bool isPictorial() const noexcept;
  // Sum of the table set 1 advances plus the kerning of consecutive bytes.
  [[nodiscard]] double width(std::string_view bytes) const noexcept;
  [[nodiscard]] double ascent() const noexcept;   // Ascender, else FontBBox top
  [[nodiscard]] double descent() const noexcept;  // -Descender, else -FontBBox bottom
  [[nodiscard]] double capHeight() const noexcept;
  [[nodiscard]] double boxHeight() const noexcept;  // FontBBox top - bottom

 private:
  int afmIndex_ = 12;
  double size_ = 10.0;
};

class QVGUI_API FontFactory {
 public:
  [[nodiscard]] static Font make(const char* faceName, int weight, int angle, double size);
  [[nodiscard]] static Font make(const StringProps& props);
  [[nodiscard]] static Font symbol(double size) noexcept;
  // Layout properties of a font record: its system name, weight and angle,
  // and its size in points by getPointSize, so a pending conversion runs
  // through the font proxy; a size not known yet counts as 10. A null record
  // gives the defaults.
  [[nodiscard]] static StringProps propsFor(zrFont* font);
};

// The interpreter's output: a flat list of drawing steps. Glyphs atoms carry
// their bytes already in the face's encoding (table set 1, or the Symbol
// encoding); the script steps move the pen for stacked scripts:
//   ScriptMark  remember the pen's x
//   ScriptSwap  the first script ended: remember its end, go back to the mark
//   ScriptJoin  the second ended: go to the farther of the two ends
enum class AtomOp : std::uint8_t { Glyphs, Space, LineBreak, ScriptMark, ScriptSwap, ScriptJoin };

struct TextAtom {
  AtomOp op = AtomOp::Glyphs;
  int afmIndex = 12;
  double size = 10.0;  // points
  double rise = 0.0;   // baseline shift, points, upwards
  double space = 0.0;  // Space: width in points
  Color3d color;
  std::size_t offset = 0;  // byte offset of the atom's source
  std::string bytes;
};

class QVGUI_API Interpreter {
 public:
  explicit Interpreter(TextKind kind) noexcept : kind_(kind) {}
  [[nodiscard]] TextKind kind() const noexcept { return kind_; }
  // Appends the atoms of text to out (when out is not null) and returns the
  // first markup error.
  TextError interpret(std::string_view text, const StringProps& props, std::vector<TextAtom>* out) const;

 private:
  TextKind kind_;
};

// One run of glyphs in one face, size and colour on one baseline. The run's
// origin (x, y) is the start of its baseline relative to the anchor, after
// alignment and rotation; glyph i starts glyphX[i] pixels along the rotated
// baseline from the origin.
struct GlyphRun {
  int afmIndex = 12;
  double size = 10.0;  // points
  Color3d color;
  std::string bytes;  // table set 1, or the face's own encoding for Symbol and ZapfDingbats
  double x = 0.0, y = 0.0;
  double advance = 0.0;  // pixels from the origin to the pen after the run
  std::vector<double> glyphX;
  int line = 0;
};

// Boxes are Real_rect in layout pixels (top < bottom). Without ink (nothing
// but spaces) hasInk is false and both ink boxes are all zero.
struct TextLayout {
  std::vector<GlyphRun> runs;
  int lineCount = 0;
  double width = 0.0;    // widest line
  double ascent = 0.0;   // above the first baseline
  double descent = 0.0;  // below the first baseline, to the bottom of the last line
  Real_rect logical{};   // aligned block before rotation
  bool hasInk = false;
  Real_rect ink{};          // union of glyph boxes, aligned, before rotation
  Real_point corners[4]{};  // logical box after rotation: top-left, top-right, bottom-right, bottom-left
  Real_rect bounds{};       // axis-aligned bounds of the rotated logical box
  Real_rect inkBounds{};    // axis-aligned bounds of the rotated ink box
  double rotation = 0.0;    // degrees as laid out: 0 for a rotation that was not finite
  TextError error;
};

class QVGUI_API TextHandler {
 public:
  explicit TextHandler(TextKind kind = TextKind::Plain) noexcept : kind_(kind) {}
  [[nodiscard]] TextKind kind() const noexcept { return kind_; }
  [[nodiscard]] TextError validate(std::string_view text) const;
  [[nodiscard]] TextLayout layout(std::string_view text, const StringProps& props) const;

 private:
  TextKind kind_;
};

}  // namespace gui_objects::font
