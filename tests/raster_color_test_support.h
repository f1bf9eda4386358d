// A window whose method table answers the colour calls of the raster code
// from plain test state, shared by the colour-table and dithering tests.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "qvgui/raster.h"
#include "qvgui/window.h"

namespace raster_test {

// What the window's colour slots see and answer. One window at a time.
struct ColorSlots {
  _TrueColorPixelInfo_tag info{255.0, 255.0, 255.0, 16, 8, 0};
  int installs = 0;
  int allocations = 0;
  std::int32_t nextPixel = 1000;  // AllocateFixedColors numbers colours from here
};

inline ColorSlots& slots() {
  static ColorSlots s;
  return s;
}

class ColorWindow {
 public:
  ColorWindow() : methods_(wm_Create()), win_(wr_Create(0, nullptr)) {
    slots() = ColorSlots{};
    swm_GetTrueColorPixelInfo(methods_,
                              [](WinRec_tag*, _TrueColorPixelInfo_tag* info) { *info = slots().info; });
    swm_InstallWindowColormap(methods_, [](WinRec_tag*, Colortable_tag* t) {
      ++slots().installs;
      t->colormap_installed = true;
      t->dithermap_installed = t->UseDithermap;
    });
    swm_AllocateFixedColors(methods_, [](WinRec_tag*, Color_tag** colours, int n, Colortable_tag*) {
      ++slots().allocations;
      for (int i = 0; i < n; ++i) colours[i]->pixel = slots().nextPixel + i;
    });
    swr_winMethods(win_, methods_);
  }
  ~ColorWindow() {
    wr_Destroy(win_);
    wm_Destroy(methods_);
  }
  ColorWindow(const ColorWindow&) = delete;
  ColorWindow& operator=(const ColorWindow&) = delete;
  WinRec_tag* get() const { return win_; }

 private:
  winMethods_tag* methods_;
  WinRec_tag* win_;
};

struct TableDeleter {
  void operator()(Colortable_tag* t) const { destroy_ColortablePtr(t); }
};
using Table = std::unique_ptr<Colortable_tag, TableDeleter>;

}  // namespace raster_test
