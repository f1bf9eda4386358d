// Offscreen back end: a window record whose method table draws with Cairo into
// an image (written as PNG) or into a PDF or SVG document.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "qvgui/window.h"

#if defined(_WIN32)
#if defined(QVGUI_OFFSCREEN_BUILDING)
#define QVGUI_OFFSCREEN_API __declspec(dllexport)
#else
#define QVGUI_OFFSCREEN_API __declspec(dllimport)
#endif
#else
#define QVGUI_OFFSCREEN_API __attribute__((visibility("default")))
#endif

namespace qvgui::offscreen {

enum class Format { Png, Pdf, Svg };

// The format named by the extension of path (".png", ".pdf", ".svg", any
// letter case). Anything else throws std::invalid_argument naming the
// extension.
[[nodiscard]] QVGUI_OFFSCREEN_API Format formatForPath(const std::string& path);

// One pixel of the image, not premultiplied.
struct Pixel {
  std::uint8_t r;
  std::uint8_t g;
  std::uint8_t b;
  std::uint8_t a;
  friend bool operator==(const Pixel& x, const Pixel& y) noexcept {
    return x.r == y.r && x.g == y.g && x.b == y.b && x.a == y.a;
  }
  friend bool operator!=(const Pixel& x, const Pixel& y) noexcept { return !(x == y); }
};

// An image read back: one 0xAARRGGBB word per pixel, not premultiplied,
// rows from the top.
struct Image {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;
};

// Reads a PNG file of any colour type; throws std::runtime_error naming the
// path when it cannot.
[[nodiscard]] QVGUI_OFFSCREEN_API Image readPng(const std::string& path);

namespace detail {
struct CanvasState;
}

// A drawing surface with its own window record and method table.
//
// Device units are pixels at the canvas's dpi, y down; the vector formats
// keep those units and scale them to points on the page. The surface starts
// opaque white.
//
// Geometry conventions of the slots:
//   - a point (x, y), integer or not, is the centre of a pixel-sized square:
//     lines and outlines run through x + 0.5, y + 0.5, so a one-pixel line at
//     integer coordinates covers whole pixels;
//   - a rectangle (qvrect) covers the pixels left .. right - 1 and
//     top .. bottom - 1; PaintRect, PaintOval and EraseRect fill that area,
//     FrameRect and FrameOval stroke through the centres of its outer pixels;
//   - filled polygons (PaintPoly, and shaded faces on vector canvases) put
//     their vertices on pixel corners, as rectangle edges are, so fills that
//     share an edge, or meet a rectangle, tile without a seam; a polygon with
//     corners (10, 10) and (20, 20) fills the pixels 10 .. 19 like the
//     rectangle of the same numbers. DrawPoly strokes through the centres, so
//     a one-pixel outline covers the fill's first row and column and the row
//     and column just past its last;
//   - the missing-point marker -32768 in integer geometry and NaN in
//     PolyLineRP3 break a line; a polygon drops such vertices;
//   - on a PDF or SVG canvas (see setJoinFills), PaintRect and PaintPoly
//     calls in a row, with nothing else between them, are painted as one
//     shape, one element of the document, when the polygons are small and
//     their outlines do not touch themselves.
//
// Line widths are in points (wm_SetLineWidth), scaled by the pixels per point
// (dpi / 72); zero, negative and NaN widths draw one pixel wide. Dash lengths
// are in points times the line width; a stroke long enough to need more than
// a million dashes (a shape reaching far off the canvas) is drawn solid.
// Strokes with LINE_NONE draw nothing.
//
// Colours: wm_SetFGColorPtr sets the pen and fill colour, wm_SetBGColorPtr
// the colour EraseRect paints; wm_SetFigureBackgroundColor paints the whole
// surface. wm_SetFGColor takes a pixel 0xRRGGBB.
//
// Text: wm_SetWindowFont picks the standard face the library's metrics
// recognise for the font (guiDetermineAFMindex) at its size in points, and
// wm_DrawString draws bytes of the metrics' second table set (ISO Latin-1 for
// the text faces, the face's own encoding for Symbol and ZapfDingbats) with
// the URW outlines of that face, each glyph at the advance and kerning of the
// library's metrics: guiStringWidthDPI of a string is its drawn advance. The
// anchor is the pen position (wm_MoveTo); wm_SetTextAlignment places the
// string's advance box (left, centre, right) and its face's ascender, cap
// height, middle of ascender and descender, baseline or descender on it;
// wm_SetTextRotation turns it about the anchor, degrees counter-clockwise.
// The measuring slots (StringWidth, StringHeight, StringDescent,
// StringCapHeight, GetTextExtent) answer from the same metrics at the
// canvas's dpi. Until a font is set, text is Helvetica at 10 points; sizes
// are clamped into 0.01 .. 10000 points.
//
// Colour modes: true colour by default, the image's 32-bit pixel format
// (wm_GetTrueColorPixelInfo) 8 bits a channel, red at bit 16, green at 8, blue
// at 0. wm_SetVisual(win, VISUAL_PSEUDOCOLOR) turns on colour-table mode with
// the table given to wm_InstallColortable (or wm_InstallWindowColormap; not
// owned, it must outlive its use): drawing stays in true colour, and the PNG
// is dithered to the table's combined colours (dither_wrapper) when written;
// vector documents keep the colours as drawn. wm_SetFGColormapIndex and
// wm_ColormapIndex2ColorPtr look colours up in the installed table.
//
// Shaded faces: wm_FillInterpPoly and wm_DrawInterpPoly take per-vertex
// colours, three doubles (red, green, blue in 0 .. 1) per vertex in true
// colour and one index of the colour table (the one passed, else the
// installed one) per vertex in colour-table mode. An image canvas runs the
// library's rasteriser (FillInterpPolyRGB, DrawInterpPolyRGB, or the index
// versions) and lays the pixels it wrote over the image, aliased, inside the
// clip. A PDF canvas fills the face with a Gouraud mesh gradient (a fan of
// triangles from the first vertex, inside the outline; in colour-table mode
// it interpolates the vertices' colours, not their indices); an SVG canvas,
// whose format has no such gradient, fills it flat in the mean of its
// vertices' colours. Vector edges are one-pixel strokes with a linear
// gradient from one end's colour to the other's. wm_WarpTriangle maps
// a texture of colour-table indices with the rasteriser and lays the result
// over the surface as an image in every format. The rasteriser's buffers
// follow a face's bounding box, so a face reaching more than 64 pixels
// outside the image is first cut to a frame that far outside it, with values
// (and texture coordinates) interpolated at the cuts.
//
// Clip regions are unions of rectangles owned by the canvas: a region the
// caller never destroys is freed with the canvas. IntersectRegions and
// UnionRegions write into their second region. A region changed after
// wm_SetClipRegion clips as before until it is set again.
class QVGUI_OFFSCREEN_API Canvas {
 public:
  // widthPx and heightPx in 1 .. 32767, dpi finite and positive; anything else
  // throws std::invalid_argument.
  Canvas(Format format, int widthPx, int heightPx, double dpi);
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  // Pass to wm_* calls. The record lives as long as the canvas.
  [[nodiscard]] WinRec_tag* window() const noexcept;
  [[nodiscard]] Format format() const noexcept;
  [[nodiscard]] int width() const noexcept;
  [[nodiscard]] int height() const noexcept;
  [[nodiscard]] double dpi() const noexcept;

  // PNG: writes the image as it is now (drawing may go on afterwards).
  // PDF and SVG: finishes the document on the first call and writes it; later
  // drawing is ignored, later saves write the same document. Throws
  // std::runtime_error naming the path when the file cannot be written.
  void save(const std::string& path);

  // Whether fills (rectangles, ovals, polygons) are anti-aliased; on by
  // default. Two anti-aliased fills of different colours (or painted apart)
  // sharing a slanted edge each cover part of the pixels along it, and the
  // paper shows through the blend as a faint seam; without anti-aliasing
  // every pixel belongs to exactly one of them, so fills that tile an area
  // (filled contour bands) leave none. Strokes and text stay anti-aliased.
  void setFillAntialias(bool on) noexcept;

  // Whether PaintRect and PaintPoly calls in a row, with nothing else between
  // them, are painted as one shape (when the polygons are small and their
  // outlines do not touch themselves). The picture is the same as painting
  // them one by one, except that anti-aliased fills sharing a slanted edge
  // show no seam along it. On by default for PDF and SVG, where it makes the
  // document several times smaller; off for PNG, where Cairo paints many
  // small shapes faster than one large one.
  void setJoinFills(bool on) noexcept;

  // The zlib level of the PNG written by save, 0 (none) to 9 (smallest);
  // anything else throws std::invalid_argument. The default, 3, writes a
  // figure three to six times faster than level 6, for a file a seventh to a
  // fifth larger.
  void setPngCompression(int level);

  // The pixel at (x, y) of a PNG canvas as drawn (before any dithering); throws std::out_of_range outside the
  // image and std::logic_error for a vector canvas.
  [[nodiscard]] Pixel pixel(int x, int y) const;

  // The image as save writes it, row by row from the top, one 0xAARRGGBB
  // word per pixel, not premultiplied: in colour-table mode dithered to the
  // installed table. Throws std::logic_error for a vector canvas.
  [[nodiscard]] std::vector<std::uint32_t> image() const;

  // The canvas that owns win, or null when win is not a canvas's window.
  [[nodiscard]] static Canvas* fromWindow(WinRec_tag* win) noexcept;

 private:
  std::unique_ptr<detail::CanvasState> state_;
};

}  // namespace qvgui::offscreen
