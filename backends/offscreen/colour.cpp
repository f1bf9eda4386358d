// Colour modes of the offscreen back end: the true-colour pixel format of
// the image, colour indices through the installed colour table, and the
// dithering of the written image in colour-table mode.
#include <cmath>
#include <cstring>

#include "backends/offscreen/canvas_p.h"
#include "qvgui/raster.h"

namespace qvgui::offscreen::detail {

bool tableColour(const Colortable_tag* table, double index, Rgb* out) noexcept {
  if (!table || !table->combined_data || !(index >= 0.0)) return false;
  const std::int32_t n = table->combined_length;
  const double i = std::floor(index);
  if (i >= n) return false;
  const auto k = static_cast<std::int32_t>(i);
  const double* c = table->combined_data;
  *out = Rgb{c[k], c[n + k], c[2 * n + k]};
  return true;
}

namespace {

// Cairo's ARGB32 word: 0xAARRGGBB in native order.
constexpr _TrueColorPixelInfo_tag kPixelInfo{255.0, 255.0, 255.0, 16, 8, 0};

std::uint32_t packRgb(const Rgb& c) {
  auto channel = [](double v) -> std::uint32_t {
    if (!(v > 0.0)) return 0;
    return v >= 1.0 ? 255u : static_cast<std::uint32_t>(v * 255.0 + 0.5);
  };
  return 0xff000000u | (channel(c.r) << 16) | (channel(c.g) << 8) | channel(c.b);
}

}  // namespace

std::vector<std::uint32_t> finalImage(CanvasState& st) {
  cairo_surface_flush(st.surface);
  const int w = st.width, h = st.height;
  const int stride = cairo_image_surface_get_stride(st.surface);
  const unsigned char* data = cairo_image_surface_get_data(st.surface);
  std::vector<std::uint32_t> image(static_cast<std::size_t>(w) * h);
  for (int y = 0; y < h; ++y) std::memcpy(&image[std::size_t(y) * w], data + std::size_t(y) * stride, 4u * w);
  const bool dither = st.visual == VISUAL_PSEUDOCOLOR && st.table && st.table->combined_length > 0;
  if (!dither) {
    // Undo Cairo's premultiplied alpha.
    for (std::uint32_t& p : image) {
      const std::uint32_t a = p >> 24;
      if (a == 255) continue;
      if (a == 0) {
        p = 0;
        continue;
      }
      auto un = [a](std::uint32_t c) { return (c * 255 + a / 2) / a; };
      p = (a << 24) | (un((p >> 16) & 0xff) << 16) | (un((p >> 8) & 0xff) << 8) | un(p & 0xff);
    }
    return image;
  }
  std::vector<unsigned char> indices(image.size());
  dither_wrapper(st.win, h, w, image.data(), indices.data(), st.table);
  // The dithered rows come out bottom-up.
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      Rgb c;
      if (!tableColour(st.table, indices[std::size_t(h - 1 - y) * w + x], &c)) c = Rgb{};
      image[std::size_t(y) * w + x] = packRgb(c);
    }
  return image;
}

namespace {

void GetTrueColorPixelInfo(WinRec_tag*, _TrueColorPixelInfo_tag* info) {
  if (info) *info = kPixelInfo;
}

// Only the two visuals a buffer can be are taken; others leave the mode.
void SetVisual(WinRec_tag* win, int visual) {
  if (visual == VISUAL_TRUECOLOR || visual == VISUAL_PSEUDOCOLOR) stateOf(win).visual = VisualType(visual);
}

VisualType GetVisualType(WinRec_tag* win) { return stateOf(win).visual; }
bool IsWindowTrueColor(WinRec_tag* win) { return stateOf(win).visual == VISUAL_TRUECOLOR; }
int GetScreenDepth(WinRec_tag* win) { return stateOf(win).visual == VISUAL_TRUECOLOR ? 32 : 8; }

void InstallColortable(WinRec_tag* win, Colortable_tag* table) { stateOf(win).table = table; }

// The buffer takes any colours, so the table's maps are installed at once.
void InstallWindowColormap(WinRec_tag* win, Colortable_tag* table) {
  stateOf(win).table = table;
  if (!table) return;
  table->colormap_installed = true;
  table->dithermap_installed = table->UseDithermap;
}

// An index outside the table leaves the pen as it was.
void SetFGColormapIndex(WinRec_tag* win, int index) {
  CanvasState& st = stateOf(win);
  Rgb c;
  if (tableColour(st.table, index, &c)) st.fg = c;
}

void ColormapIndex2ColorPtr(WinRec_tag* win, int index, Color_tag* out) {
  Rgb c;
  if (out && tableColour(stateOf(win).table, index, &c)) {
    out->red = c.r;
    out->green = c.g;
    out->blue = c.b;
  }
}

}  // namespace

void installColour(winMethods_tag* m) {
  swm_GetTrueColorPixelInfo(m, GetTrueColorPixelInfo);
  swm_SetVisual(m, SetVisual);
  swm_GetVisualType(m, GetVisualType);
  swm_IsWindowTrueColor(m, IsWindowTrueColor);
  swm_GetScreenDepth(m, GetScreenDepth);
  swm_InstallColortable(m, InstallColortable);
  swm_InstallWindowColormap(m, InstallWindowColormap);
  swm_SetFGColormapIndex(m, SetFGColormapIndex);
  swm_ColormapIndex2ColorPtr(m, ColormapIndex2ColorPtr);
}

}  // namespace qvgui::offscreen::detail
