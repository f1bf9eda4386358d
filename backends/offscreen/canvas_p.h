// The state behind a canvas's window record, shared by the slot files.
#pragma once

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "qvgui/offscreen.h"

namespace qvgui::offscreen::detail {

// The window class the canvas's records carry, so that a record can be told
// apart from another back end's before its object pointer is trusted.
inline constexpr int kCanvasWindowClass = 0x0ff5c;

// A union of rectangles, in device pixels (left .. right - 1, top .. bottom - 1).
struct Region {
  std::vector<qvrect> rects;
};

struct Rgb {
  double r = 0.0;
  double g = 0.0;
  double b = 0.0;
};

struct CanvasState {
  Canvas* owner = nullptr;
  Format format = Format::Png;
  int width = 0;
  int height = 0;
  double dpi = 72.0;

  cairo_surface_t* surface = nullptr;
  cairo_t* cr = nullptr;
  std::string document;  // the PDF or SVG bytes as Cairo writes them
  bool finished = false;
  int pngLevel = 3;
  bool fillAntialias = true;
  bool joinFills = false;
  // The current path holds fills in the pen colour that are not painted yet:
  // rectangles and simple polygons, all turning the same way.
  bool fillPending = false;

  WinRec_tag* win = nullptr;
  winMethods_tag* methods = nullptr;

  Rgb fg;
  Rgb bg{1.0, 1.0, 1.0};
  double lineWidthPt = 0.5;
  LineJoins join = LINE_JOIN_MITER;
  LineCaps cap = LINE_CAP_BUTT;
  double penX = 0.0;  // where the back end's pen is, for LineTo
  double penY = 0.0;

  // Colour-table mode: drawing stays in true colour and the PNG is dithered
  // to the table's colours when it is written.
  VisualType visual = VISUAL_TRUECOLOR;
  Colortable_tag* table = nullptr;  // the installed table, not owned

  int afmIndex = 12;  // Helvetica until a font is set
  double fontSizePt = 10.0;

  std::vector<std::unique_ptr<Region>> regions;

  ~CanvasState();
  [[nodiscard]] double pixelsPerPoint() const noexcept { return dpi / 72.0; }
};

// The state of a canvas's window; win must be a canvas's window. A drawing
// context that an earlier call put into an error state (Cairo keeps errors
// sticky) is replaced first, with the window's clip set again, so one bad
// call does not blank everything after it. Pending fills are painted first,
// so that whatever the caller does next comes after them.
CanvasState& stateOf(WinRec_tag* win) noexcept;

// stateOf for the slots that add to the pending fills: nothing is painted.
CanvasState& fillingStateOf(WinRec_tag* win) noexcept;

// Paints the pending fills, if any, as one shape.
void paintPendingFills(CanvasState& st) noexcept;

// Sets the clip to a region of the canvas (null or unknown: no clip).
void applyClip(CanvasState& st, void* region);

inline void setSourceRgb(CanvasState& st, const Rgb& c) { cairo_set_source_rgb(st.cr, c.r, c.g, c.b); }

// Colour index of the combined table (colormap, then dithermap); false when
// there is no table or the index is outside it.
bool tableColour(const Colortable_tag* table, double index, Rgb* out) noexcept;

// The image as written: in colour-table mode dithered to the installed
// table, rows top-down, 0xAARRGGBB, straight alpha (the surface is opaque
// unless a caller painted transparency, which dithering does not keep).
std::vector<std::uint32_t> finalImage(CanvasState& st);

// Writes 0xAARRGGBB pixels (straight alpha) as PNG at a zlib level 0 .. 9;
// RGB when every pixel is opaque. False (and no file left) on failure.
bool writePng(const std::string& path, const std::vector<std::uint32_t>& image, int w, int h, int level);

// Slot installers, one per topic file.
void installDrawing(winMethods_tag* methods);
void installClip(winMethods_tag* methods);
void installText(winMethods_tag* methods);
void installColour(winMethods_tag* methods);
void installShading(winMethods_tag* methods);

// The pixel-centre offset of point geometry (see offscreen.h).
inline constexpr double kCentre = 0.5;
inline constexpr std::int32_t kMissingPoint = -32768;

}  // namespace qvgui::offscreen::detail
