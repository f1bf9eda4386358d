// Colour and raster: colour records and colour tables, quantisation,
// dithering, the polygon rasteriser, markers and hit tests.
//
// Raises: HostError with the host's out-of-memory identifier when a record
// cannot be allocated.
#pragma once

#include <cstdint>

#include "qvgui/export.h"

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
