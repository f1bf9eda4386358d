// Colour records of the flat colour-table interface, and the kernel colours'
// conversions to and from them.
#include "qvgui/geometry.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"

namespace {

Color_tag* newColorRecord(double red, double green, double blue, std::int32_t pixel) {
  auto* c = static_cast<Color_tag*>(utMallocWithCheck(sizeof(Color_tag)));
  c->red = red;
  c->green = green;
  c->blue = blue;
  c->pixel = pixel;
  c->gotten = false;
  return c;
}

}  // namespace

// ---- Records ------------------------------------------------------------------------

Color_tag* create_ColorPtr() { return newColorRecord(0.0, 0.0, 0.0, -1); }

Color_tag* create_ColorPtrFromRGB(double red, double green, double blue) {
  return newColorRecord(red, green, blue, -1);
}

Color_tag* copy_ColorPtr(const Color_tag* c) {
  return c == nullptr ? nullptr : newColorRecord(c->red, c->green, c->blue, c->pixel);
}

void duplicate_ColorPtr(const Color_tag* from, Color_tag* to) {
  if (from == nullptr || to == nullptr || from == to) return;
  to->red = from->red;
  to->green = from->green;
  to->blue = from->blue;
  to->pixel = from->pixel;
}

// A gotten colour is still referenced by a colour table's fixed colours; that
// table frees it when the last reference goes.
void destroy_ColorPtr(Color_tag* c) {
  if (c == nullptr || c->gotten) return;
  utFree(c);
}

// ---- Field access ---------------------------------------------------------------------

double get_ColorPtr_red(const Color_tag* c) { return c ? c->red : 0.0; }
double get_ColorPtr_green(const Color_tag* c) { return c ? c->green : 0.0; }
double get_ColorPtr_blue(const Color_tag* c) { return c ? c->blue : 0.0; }
std::int32_t get_ColorPtr_pixel(const Color_tag* c) { return c ? c->pixel : -1; }

void set_ColorPtr_red(Color_tag* c, double red) {
  if (c) c->red = red;
}
void set_ColorPtr_green(Color_tag* c, double green) {
  if (c) c->green = green;
}
void set_ColorPtr_blue(Color_tag* c, double blue) {
  if (c) c->blue = blue;
}
void set_ColorPtr_pixel(Color_tag* c, std::int32_t pixel) {
  if (c) c->pixel = pixel;
}

bool gotten(const Color_tag* c) { return c != nullptr && c->gotten; }

// ---- Comparisons ----------------------------------------------------------------------

bool Is_ColorPtrRGB_Equal(const Color_tag* c, double red, double green, double blue) {
  return c != nullptr && c->red == red && c->green == green && c->blue == blue;
}

bool Is_ColorPtrColor_Equal(const Color_tag* a, const Color_tag* b) {
  if (a == b) return true;
  if (a == nullptr || b == nullptr) return false;
  return a->red == b->red && a->green == b->green && a->blue == b->blue;
}

int suIsSameColor(const Color_tag* a, const Color_tag* b) {
  if (a == b) return 1;
  if (a == nullptr || b == nullptr) return 0;
  return utEqualWithinEps(a->red, b->red) && utEqualWithinEps(a->green, b->green) &&
                 utEqualWithinEps(a->blue, b->blue)
             ? 1
             : 0;
}

// ---- Kernel colours -------------------------------------------------------------------
//
// Defined here rather than with the colour classes so that the geometry kernel
// does not depend on the raster code.

namespace gui_objects {

Color3d::Color3d(Color_tag* color) {
  if (color == nullptr) return;
  setRed(get_ColorPtr_red(color));
  setGreen(get_ColorPtr_green(color));
  setBlue(get_ColorPtr_blue(color));
}

// The record has no alpha: the colour stays opaque.
Color4d::Color4d(Color_tag* color) {
  if (color == nullptr) return;
  setRed(get_ColorPtr_red(color));
  setGreen(get_ColorPtr_green(color));
  setBlue(get_ColorPtr_blue(color));
}

Color_tag* Color3d::asColorPtr() const { return create_ColorPtrFromRGB(r_, g_, b_); }

}  // namespace gui_objects
