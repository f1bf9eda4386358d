// Colour and raster: colour records and colour tables, quantisation,
// dithering, the polygon rasteriser, markers and hit tests.
#pragma once

#include <cstdint>

#include "qvgui/export.h"

struct WinRec_tag;
struct qvpoint;
struct winSysColorData_tag;  // owned by the window-system back end; opaque here
class NReals;

// ---- Colour records ----------------------------------------------------------
//
// One RGB colour and the device pixel a back end allocated for it. Records
// come from the host's checked allocator (a failed allocation raises the
// host's out-of-memory error) and belong to the caller until destroy_ColorPtr.
// Accessors and comparisons accept null: getters then answer 0 (pixel -1),
// setters do nothing.

struct Color_tag {
  double red;
  double green;
  double blue;
  std::int32_t pixel;  // -1: not yet allocated by a back end
  bool gotten;         // counted in a colour table's fixed colours; not freed while set
};

// Components 0, pixel -1, not gotten.
[[nodiscard]] QVGUI_API Color_tag* create_ColorPtr();
// The given components, unchecked; pixel -1, not gotten.
[[nodiscard]] QVGUI_API Color_tag* create_ColorPtrFromRGB(double red, double green, double blue);
// Components and pixel of c, not gotten; null gives null.
[[nodiscard]] QVGUI_API Color_tag* copy_ColorPtr(const Color_tag* c);
// Copies components and pixel; the target's gotten flag stays. Null on either
// side does nothing.
QVGUI_API void duplicate_ColorPtr(const Color_tag* from, Color_tag* to);
// Frees c unless it is null or gotten.
QVGUI_API void destroy_ColorPtr(Color_tag* c);

[[nodiscard]] QVGUI_API double get_ColorPtr_red(const Color_tag* c);
[[nodiscard]] QVGUI_API double get_ColorPtr_green(const Color_tag* c);
[[nodiscard]] QVGUI_API double get_ColorPtr_blue(const Color_tag* c);
[[nodiscard]] QVGUI_API std::int32_t get_ColorPtr_pixel(const Color_tag* c);
QVGUI_API void set_ColorPtr_red(Color_tag* c, double red);
QVGUI_API void set_ColorPtr_green(Color_tag* c, double green);
QVGUI_API void set_ColorPtr_blue(Color_tag* c, double blue);
QVGUI_API void set_ColorPtr_pixel(Color_tag* c, std::int32_t pixel);
[[nodiscard]] QVGUI_API bool gotten(const Color_tag* c);

// Exact equality of red, green and blue; false for a null record.
[[nodiscard]] QVGUI_API bool Is_ColorPtrRGB_Equal(const Color_tag* c, double red, double green, double blue);
// Exact equality of red, green and blue; the same record is always equal,
// otherwise a null record never is.
[[nodiscard]] QVGUI_API bool Is_ColorPtrColor_Equal(const Color_tag* a, const Color_tag* b);
// 1 for the same record, 0 when either is null, else 1 when red, green and
// blue are each equal under the host's utEqualWithinEps.
[[nodiscard]] QVGUI_API int suIsSameColor(const Color_tag* a, const Color_tag* b);

// ---- Colour tables -------------------------------------------------------------
//
// One per window colour table. Every colour array is planar: for n colours,
// n reds, then n greens, then n blues, each a double in [0, 1]. The combined
// table is what colour indices address:
//
//   combined = | colormap reds | dithermap reds | colormap greens | dithermap greens | ... |
//              '-------------- stride = combined_length ---------'
//
// (the dithermap blocks only while UseDithermap is set). Fields are public so
// back ends and drawing code can read them; write them through the functions
// below, which keep the combined table and the fixed-colour counts in step.
struct Colortable_tag {
  double* colormap_data;  // owned, 3 x colormap_length
  std::int32_t colormap_length;
  std::int32_t min_colormap_length;  // kept for the back ends; 64 at creation
  double* dithermap_data;            // owned, 3 x dithermap_length
  std::int32_t dithermap_length;
  double* combined_data;  // owned, 3 x combined_length
  std::int32_t combined_length;
  bool UseDithermap;
  double* fixed_data;  // owned, 3 x fixed_length
  std::int32_t fixed_length;
  std::int32_t* fixed_usage;  // owned, fixed_length reference counts, each >= 1
  double* extern_data;        // owned; its layout is the caller's business
  std::int32_t extern_length;
  winSysColorData_tag* wsd;   // the back end's own data, lives as long as the table
  bool colormap_installed;    // the back end's installed colormap matches combined_data
  bool dithermap_installed;   // UseDithermap at the last install
  bool initialized;           // true from creation; not otherwise used by this library
  std::int32_t num_reserved;  // device colours reserved by the back end
};

// Zero-filled table with wsd from the system-methods proxy, colormap_installed
// and initialized true, min_colormap_length 64.
[[nodiscard]] QVGUI_API Colortable_tag* create_ColortablePtr();
// Lets the system-methods proxy free wsd, then frees every array and the table.
// Null does nothing.
QVGUI_API void destroy_ColortablePtr(Colortable_tag* t);

// Plain field access; the length setters do not touch the arrays. Tables are
// not checked for null.
[[nodiscard]] QVGUI_API winSysColorData_tag* get_ColortablePtr_wsd(const Colortable_tag* t);
QVGUI_API void set_ColortablePtr_wsd(Colortable_tag* t, winSysColorData_tag* wsd);
[[nodiscard]] QVGUI_API std::int32_t get_ColortablePtr_colormap_length(const Colortable_tag* t);
QVGUI_API void set_ColortablePtr_colormap_length(Colortable_tag* t, std::int32_t n);
[[nodiscard]] QVGUI_API std::int32_t get_ColortablePtr_dithermap_length(const Colortable_tag* t);
QVGUI_API void set_ColortablePtr_dithermap_length(Colortable_tag* t, std::int32_t n);
[[nodiscard]] QVGUI_API std::int32_t get_ColortablePtr_min_colormap_length(const Colortable_tag* t);
QVGUI_API void set_ColortablePtr_min_colormap_length(Colortable_tag* t, std::int32_t n);
[[nodiscard]] QVGUI_API std::int32_t get_ColortablePtr_num_reserved(const Colortable_tag* t);
QVGUI_API void set_ColortablePtr_num_reserved(Colortable_tag* t, std::int32_t n);
[[nodiscard]] QVGUI_API std::int32_t get_ColortablePtr_fixed_length(const Colortable_tag* t);
QVGUI_API void set_ColortablePtr_fixed_length(Colortable_tag* t, std::int32_t n);
[[nodiscard]] QVGUI_API std::int32_t get_ColortablePtr_extern_length(const Colortable_tag* t);
QVGUI_API void set_ColortablePtr_extern_length(Colortable_tag* t, std::int32_t n);
[[nodiscard]] QVGUI_API std::int32_t get_ColortablePtr_combined_length(const Colortable_tag* t);
[[nodiscard]] QVGUI_API bool get_ColortablePtr_UseDithermap(const Colortable_tag* t);

// The arrays, still owned by the table.
[[nodiscard]] QVGUI_API double* get_ColortablePtr_colormap_data(const Colortable_tag* t);
[[nodiscard]] QVGUI_API double* get_ColortablePtr_dithermap_data(const Colortable_tag* t);
[[nodiscard]] QVGUI_API double* get_ColortablePtr_combined_data(const Colortable_tag* t);
[[nodiscard]] QVGUI_API double* get_ColortablePtr_fixed_data(const Colortable_tag* t);
[[nodiscard]] QVGUI_API double* get_ColortablePtr_extern_data(const Colortable_tag* t);
// Free the old array and take ownership of p (from the host's checked
// allocator). The length is set separately.
QVGUI_API void set_ColortablePtr_fixed_data(Colortable_tag* t, double* p);
QVGUI_API void set_ColortablePtr_extern_data(Colortable_tag* t, double* p);

// Replace the colormap (dithermap) with floor(values.count / 3) planar colours;
// trailing values that do not make a whole colour are dropped unchecked. A
// value below 0 or above 1 raises Tavrix::gui::colorptr::ColormapElementOutOfRange
// (DithermapElementOutOfRange) and leaves the table exactly as it was; NaN is
// accepted. A pending interrupt is honoured before the swap, and interrupts
// are deferred while the arrays are swapped. Clears colormap_installed
// (dithermap_installed) and rebuilds the combined table (for the dithermap only
// while UseDithermap is set).
QVGUI_API void set_ColortablePtr_colormap_data(Colortable_tag* t, const NReals& values);
QVGUI_API void set_ColortablePtr_dithermap_data(Colortable_tag* t, const NReals& values);
// A changed flag is stored, the combined table rebuilt and the window's
// colormap reinstalled (wm_InstallWindowColormap); an unchanged flag does nothing.
QVGUI_API void set_ColortablePtr_UseDithermap(WinRec_tag* win, Colortable_tag* t, bool flag);

// ---- Fixed colours ---------------------------------------------------------------
//
// Colours that drawing asked for by value, reference counted. Matching is at
// 8-bit precision: each component x is compared as (int)(x * 255 + 0.5), so
// colours closer than half a step share one entry; an entry keeps the exact
// components of the colour that created it.

// Index of the first fixed colour equal to c at 8-bit precision; fixed_length
// when there is none.
[[nodiscard]] QVGUI_API unsigned int fixed_ColorPtr_to_index(const Color_tag* c, const Colortable_tag* t);
// The same, numbered after the combined table (colormap, then dithermap).
[[nodiscard]] QVGUI_API unsigned int fixed_ColorPtr_to_TavrixColorspaceIndex(const Color_tag* c,
                                                                             const Colortable_tag* t);
// Usage count of fixed colour i (unchecked).
[[nodiscard]] QVGUI_API std::int32_t fixed_index_to_usage(unsigned int i, const Colortable_tag* t);
// Counts c once more (a new entry with count 1 when it has no match) and sets
// its gotten flag.
QVGUI_API void add_ColorPtr_to_fixed_data(Color_tag* c, Colortable_tag* t);
// Counts c once less; an entry whose count reaches zero is removed at once
// (order of the others kept). Clears c's gotten flag. Removing a colour that
// is not in the list is the caller's fault and is not detected.
QVGUI_API void remove_ColorPtr_from_fixed_data(Color_tag* c, Colortable_tag* t);

// ---- Averages and quantisation ------------------------------------------------------

// The pixel format of a true-colour window, filled by wm_GetTrueColorPixelInfo:
// a channel's value is (pixel >> shift) & (int)max, its mask (int)max << shift.
struct _TrueColorPixelInfo_tag {
  double red_max;
  double green_max;
  double blue_max;
  std::int32_t red_shift;
  std::int32_t green_shift;
  std::int32_t blue_shift;
};

// Mean of n combined-table colours; indices are truncated to unsigned and not
// checked; n = 0 gives NaN components. out's pixel and gotten stay.
QVGUI_API void avgRGBColor(const double* indices, int n, const Colortable_tag* t, Color_tag* out);

// Quantises width x height true-colour pixels in place when they hold at most
// 64 distinct values: each distinct value becomes a new colour record (pixel
// filled by wm_AllocateFixedColors) and each pixel that colour's device pixel.
// *colors_out receives the array of *count_out records, owned by the caller
// (records with destroy_ColorPtr, the array with utFree). With more than 64
// values the pixels are left as they were, *colors_out is null, *count_out 0,
// and the answer is true ("gave up").
[[nodiscard]] QVGUI_API bool fast_quantize(int width, int height, std::uint32_t* pixels,
                                           Color_tag*** colors_out, int* count_out, WinRec_tag* win,
                                           Colortable_tag* t, const _TrueColorPixelInfo_tag* info);

// City-block distance of two points below 7 (deliberately not Euclidean);
// false when either is null.
[[nodiscard]] QVGUI_API bool close_enough(const qvpoint* a, const qvpoint* b);

// ---- Dithering -----------------------------------------------------------------------

// Converts rows x columns 32-bit pixels in the window's true-colour format
// (wm_GetTrueColorPixelInfo) to one combined-table index per pixel by
// Floyd-Steinberg error diffusion (rows left to right, no serpentine) against
// the table's combined colours. Each pixel takes the table colour nearest to
// the centre of its 5-bit-per-channel cell (the earlier colour on ties).
// out receives rows x columns bytes written bottom-up: input row 0 becomes
// the last output row; indices above 255 keep their low byte. A channel is
// scaled to 8 bits by 255.5 / (max - 1), so its top value overshoots and
// clamps to 255. Inputs are not validated; an empty table gives index 0
// everywhere. Buffers come from the host's array allocator (out of memory
// raises its error; out is then partly written).
QVGUI_API void dither_wrapper(WinRec_tag* win, int rows, int columns, const std::uint32_t* pixels,
                              unsigned char* out, const Colortable_tag* table);

// Dithers a pixmap of width x height 4-byte pixels (red, green, blue, then a
// byte left alone), rows top-down, in place to the table's fixed colours, on
// the same error-diffusion scheme as dither_wrapper (without its channel
// scaling): each pixel becomes the fixed colour nearest its 5-bit cell, in
// 8-bit units, so fixed_ColorPtr_to_index finds every colour written, and the
// rest of its error passes to its neighbours. With no fixed colours the
// pixmap is left as it was.
QVGUI_API void DitherPixMap(unsigned char* pixels, int width, int height, const Colortable_tag* table);

// A byte grid with a free offset. data holds rows x (columns + 1) bytes (one
// spare byte per row that the accessors never address); byte (row, column) is
// data[row * columns + column].
struct Bump {
  unsigned char* data;
  std::uint32_t columns;
  std::uint32_t rows;
  std::int32_t xoffset;
  std::int32_t yoffset;
};

// Zeroed record; null when either allocation fails.
[[nodiscard]] QVGUI_API Bump* CreateBump(std::uint32_t columns, std::uint32_t rows, std::int32_t xoffset,
                                         std::int32_t yoffset);
QVGUI_API void DestroyBump(Bump* b);  // null does nothing
QVGUI_API void ClearBump(Bump* b);    // zeroes rows x columns bytes; null does nothing
[[nodiscard]] QVGUI_API unsigned char* GetBumpData(const Bump* b);
QVGUI_API void GetBumpSize(const Bump* b, std::uint32_t* columns, std::uint32_t* rows);
QVGUI_API void GetBumpOffsets(const Bump* b, std::int32_t* x, std::int32_t* y);
QVGUI_API void SetBumpOffsets(Bump* b, std::int32_t x, std::int32_t y);
// Unchecked.
[[nodiscard]] QVGUI_API unsigned char GetBumpBit(const Bump* b, std::uint32_t row, std::uint32_t column);
QVGUI_API void SetBumpBit(Bump* b, std::uint32_t row, std::uint32_t column, unsigned char value);

// ---- Rasteriser, markers and hit tests ----
//
// Software rendering for back ends that cannot shade a polygon themselves.
// Coordinates are device pixels, y growing downwards. A coordinate of -32768
// marks a missing point (a vertex clipped away or without data).

struct qvrect;

// One polygon vertex: x then y (note: qvpoint stores y first).
struct qvpoint32 {
  std::int32_t x;
  std::int32_t y;
};

// A polygon handed between the library and the back ends; closed implicitly
// (the last vertex joins the first).
struct Polygon2 {
  qvpoint32* points;
  std::int32_t count;
};

// A colour of tagRenderCData: which member is meant follows from its kind.
union RenderColor_tag {
  std::int32_t index;  // kind 1: a colormap index
  Color_tag* color;    // kind 2: a colour record
};

// What drRenderPoly needs to draw one face. Kinds: 0 none, 1 colormap index,
// 2 colour record.
struct tagRenderCData {
  std::int16_t faceColorKind;
  std::int16_t edgeColorKind;
  RenderColor_tag faceColor;
  RenderColor_tag edgeColor;
  Colortable_tag* colortable;  // handed on to the back end
  int* faceData;               // per-vertex data handed on to wm_PaintPoly
  int* edgeData;               // per-vertex data handed on to wm_DrawPoly
};

// ---- Pixmap and mask ------------------------------------------------------------
//
// The rasteriser draws into two byte buffers covering a bounding box `bounds`
// of W = right - left + 1 columns and H = bottom - top + 1 rows:
//
//   pixmap  one byte per pixel, rows padded to S = (W + 3) & ~3 bytes;
//           pixel (x, y) at (y - top) * S + (x - left)
//   mask    one byte per pixel, no padding;
//           pixel (x, y) at (y - top) * W + (x - left); 1 = written, 0 = untouched
//
// A value written to the pixmap is the integer part (toward zero) of the
// interpolated value; callers supply values in 0 to 255 (values outside are
// clamped into it, NaN writes 0). The true-colour variants write 32-bit
// pixels 0xFFRRGGBB (opaque, so already premultiplied) with row stride W and
// no padding; their mask may be null when the caller needs none.
//
// Nothing here validates its input: vertices must lie inside `bounds` and the
// buffers must match it, as AllocatePolygonPixmap makes them.

// Bounding box of the usable vertices (a coordinate equal to -32768 is left
// out) and zero-filled buffers from zrCalloc, which the caller frees with
// zrFree. A polygon without a usable vertex gives an all-zero rectangle and
// null buffers; callers then draw nothing. When an allocation fails the
// host's out-of-memory error is raised and the outputs are left as they were.
QVGUI_API void AllocatePolygonPixmap(const Polygon2* poly, qvrect* bounds, unsigned char** pixmap,
                                     unsigned char** mask);

// Even-odd fill with one value per vertex (values[i] belongs to points[i]),
// interpolated linearly along the edges (in double precision) and across each
// row (in single precision, which a byte result cannot tell apart), as in
// Gouraud shading. Every edge covers its rows from its upper end up to but not
// including its lower end, so the row of a polygon's lowest vertex stays empty
// and faces stacked one above the other do not both draw the row they share.
// Edges step in integer Bresenham arithmetic: on each row an edge's x is its
// first Bresenham pixel of that row, and each row's span includes both ends.
// Vertices with a missing coordinate are dropped and the polygon closes over
// the others.
QVGUI_API void FillInterpPoly(const Polygon2* poly, const double* values, const qvrect* bounds,
                              unsigned char* pixmap, unsigned char* mask);

// The same fill in true colour: `rgb` holds red, green and blue per vertex
// (3 * count doubles) in 0 to 1, clamped; each pixel gets the rounded 8-bit
// value of its interpolated channels.
QVGUI_API void FillInterpPolyRGB(const Polygon2* poly, const double* rgb, const qvrect* bounds,
                                 std::uint32_t* pixels, unsigned char* mask);

// Bilinear corner-colour mode: fills a quadrilateral (exactly four usable
// vertices, else nothing is drawn) whose corners carry the values c[0] to
// c[3] in vertex order. Corner k stands at the parameter position (0,0),
// (1,0), (1,1), (0,1) for k = 0..3; the walkers carry that (s, t) position
// along the edges and across each row like a texture coordinate, and each
// pixel gets (1-s)(1-t) c0 + s(1-t) c1 + st c2 + (1-s)t c3. This is exact
// bilinear interpolation on parallelograms and a continuous approximation of
// it on other quadrilaterals. Rows, edges and the pixel set are those of
// FillInterpPoly.
QVGUI_API void FillBilinearPoly(const Polygon2* poly, const double* corners, const qvrect* bounds,
                                unsigned char* pixmap, unsigned char* mask);

// Outline with interpolated values: each edge (i, i + 1 mod count) is a
// Bresenham line of max(|dx|, |dy|) + 1 pixels whose value runs from one end's
// value to the other's; a later edge overwrites the vertex it shares with the
// previous one. An edge is skipped when either end's value is -32768.0 or
// either end has a missing coordinate; a NaN value is drawn (as 0).
QVGUI_API void DrawInterpPoly(const Polygon2* poly, const double* values, const qvrect* bounds,
                              unsigned char* pixmap, unsigned char* mask);
// The outline in true colour, `rgb` as for FillInterpPolyRGB. An edge is
// skipped when either end has a missing coordinate.
QVGUI_API void DrawInterpPolyRGB(const Polygon2* poly, const double* rgb, const qvrect* bounds,
                                 std::uint32_t* pixels, unsigned char* mask);

// Maps a texture of colormap indices onto a triangle. `texcoords` are three
// (u, v) pairs in texel units, u along columns and v along rows; `texture`
// holds rows x columns indices row by row. Edges and spans step in 13.19
// fixed point (one texel = 524288) with no division per pixel. Texel lookups
// shift and clamp as unsigned values, so a coordinate left of or above the
// texture lands on its last column or row rather than its first; texture
// coordinates must be finite and within +-4096 texels. A texel whose low byte
// is not below the low byte of `ncolours` becomes ncolours - 1; ncolours < 1
// draws nothing. The colour table is not used. Edges with a missing
// coordinate are left out.
QVGUI_API void WarpTriangle(const Polygon2* tri, const qvrect* bounds, Colortable_tag* colortable,
                            unsigned long rows, unsigned long columns, const double (*texcoords)[2],
                            const int* texture, int ncolours, unsigned char* pixmap, unsigned char* mask);

// Resamples part of an image of values into the pixmap and mask of `bounds`.
// `image` is rows x columns doubles in column-major order (element (r, c) at
// c * rows + r, as in a host array). The sub-matrix of subRows x subColumns
// elements starting at (firstRow, firstColumn) is stretched over the
// rectangle `dest` (inclusive edges, left/top the sub-matrix's first column
// and row), sampling at pixel centres: element centres sit at the centres of
// equal cells of `dest`. Nearest-element sampling, or with `bilinear` a blend
// of the four nearest elements (clamped at the sub-matrix border). Only
// pixels inside both `dest` and `bounds` are written; a sample that involves
// a NaN element is left unwritten (transparent). Returns false and draws
// nothing when the sub-matrix does not lie inside the image or is empty, or
// when `dest` is crossed.
QVGUI_API bool ExtractSubMatrixAndInterpolateIntoPixmap(const double* image, std::int32_t rows,
                                                        std::int32_t columns, std::int32_t firstRow,
                                                        std::int32_t firstColumn, std::int32_t subRows,
                                                        std::int32_t subColumns, const qvrect* dest,
                                                        bool bilinear, const qvrect* bounds,
                                                        unsigned char* pixmap, unsigned char* mask);

// ---- Small drawing routines --------------------------------------------------------

// The points strictly between two points of a Bresenham line, thinned to at
// most `limit` evenly spread points (coordinates taken as 16-bit values).
// Returns static storage of at most 15 points that the next call overwrites;
// `limit` is clamped into 0 to 15. Equal points give no points.
[[nodiscard]] QVGUI_API Polygon2* uiBresenhamPolygon2(qvpoint from, qvpoint to, int limit);
// The corners (left, top), (left, bottom), (right, bottom), (right, top), in
// static storage that the next call overwrites.
[[nodiscard]] QVGUI_API Polygon2* drRect2Polygon2(const qvrect* rect);
// A new clip region (wm_CreateClipRegion) holding the rectangle.
[[nodiscard]] QVGUI_API void* drRect2ClipRegion(WinRec_tag* win, const qvrect* rect);
// Maps a point from the rectangle `local` onto `global`, scaling each axis;
// a rectangle whose top is below its bottom counts as flipped, and a flip
// between the two mirrors y. A zero-width or zero-height local rectangle
// scales that axis by 0.
QVGUI_API void drLocal2Global(const qvrect* local, const qvrect* global, std::int16_t* x, std::int16_t* y);
// c = 1 - red, m = 1 - green, y = 1 - blue, k = min(c, m, y), then k taken
// off c, m and y (deliberately not divided by 1 - k). A null colour is black.
QVGUI_API void drRgb2Cmyk(const Color_tag* colour, double* c, double* m, double* y, double* k);
// Fills (wm_PaintPoly) then outlines (wm_DrawPoly) the polygon in the colours
// of `render`, a kind of 0 skipping that part. The foreground is set first
// unless the window draws in GO_ERASE_MODE, which keeps its own colour.
// A null record does nothing.
QVGUI_API void drRenderPoly(WinRec_tag* win, const Polygon2* poly, tagRenderCData* render);

// ---- Markers and hit tests ------------------------------------------------------------
//
// Marker codes: 0 plus, 1 circle, 2 asterisk, 3 point, 4 diagonal cross (these
// five have no polygon), 5 square, 6 diamond, 7 to 10 triangles with the apex
// below, above, right and left of the centre, 11 five-pointed star, 12
// six-pointed star.

// Most points any marker polygon uses: size the point buffer for this.
inline constexpr int kMarkerPolyMaxPoints = 13;

// Fills poly->points (kMarkerPolyMaxPoints room) and poly->count with the
// marker of `size` pixels around `centre` for codes 5 to 12; any other code
// leaves poly untouched. Closed outlines repeat their first vertex.
QVGUI_API void geoGetMarkerPoly(int code, std::int16_t size, qvpoint32 centre, Polygon2* poly);
// Bounding box of every vertex (none skipped), grown by the integer part of
// half the line width plus one pixel on each side. Deliberately inverted:
// top receives the largest y and bottom the smallest.
QVGUI_API void geoFindPolyBounds(const Polygon2* poly, int linewidth, qvrect* rect);
// True when pt is inside the polygon by the even-odd rule; outside the grown
// bounds it is false, and a polygon whose grown bounds are under 5 pixels wide
// or tall is hit anywhere inside them. Vertices on the point's row count as
// below it; vertices with a missing coordinate are dropped from the crossing
// count. The line width only grows the bounds.
[[nodiscard]] QVGUI_API bool geoPtInPolygon(qvpoint32 pt, int linewidth, const Polygon2* poly);
// dx^2 + dy^2 <= radius^2: the boundary is a hit.
[[nodiscard]] QVGUI_API bool geoPtInCircle(qvpoint32 pt, qvpoint32 centre, int radius);
// (dx / a)^2 + (dy / b)^2 < 1: the boundary is a miss (unlike the circle).
[[nodiscard]] QVGUI_API bool geoPtInOval(qvpoint32 pt, qvpoint32 centre, int a, int b);
// Whether a click at pt hits the marker `code` of `size` points (converted
// with the window's wm_PixelsPerPoint) drawn at `centre` with a line width
// in pixels. Bars and crosses are padded by one pixel. Codes outside 0 to 12
// never hit. A window without a method table or without its PixelsPerPoint
// slot uses the screen's pixels per point (ws_GetScreenPixelsPerPoint).
[[nodiscard]] QVGUI_API bool geoIsPtInMarkerTerritory(WinRec_tag* win, qvpoint32 pt, int code,
                                                      std::int16_t size, int linewidth, qvpoint32 centre);
// Snaps both coordinates in place to multiples of 5: a remainder of 4 snaps
// up and 0 to 3 down, and negative values snap toward zero (13 -> 10,
// 14 -> 15, -7 -> -5, -9 -> -5). Deliberately not nearest-multiple rounding.
// Returns the new v.
QVGUI_API std::int16_t grid(qvpoint* point);
