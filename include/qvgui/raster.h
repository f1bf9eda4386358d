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
// the table's combined colours. out receives rows x columns bytes written
// bottom-up: input row 0 becomes the last output row. A channel is scaled to
// 8 bits by 255.5 / (max - 1), so its top value overshoots and clamps to 255.
// Inputs are not validated; an empty table gives index 0 everywhere.
QVGUI_API void dither_wrapper(WinRec_tag* win, int rows, int columns, const std::uint32_t* pixels,
                              unsigned char* out, const Colortable_tag* table);

// Dithers a pixmap of width x height 4-byte pixels (red, green, blue, then a
// byte left alone), rows top-down, in place to the table's fixed colours, on
// the same error-diffusion scheme as dither_wrapper: each pixel becomes the
// nearest fixed colour in 8-bit units (so fixed_ColorPtr_to_index finds every
// output colour) and the rest of its error passes to its neighbours. With no
// fixed colours the pixmap is left as it was.
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
