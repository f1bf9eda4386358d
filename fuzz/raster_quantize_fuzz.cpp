// Fuzzes the fast quantiser and the dithering of the same image, for any
// size, pixel format (channel maxima 1 to 65535, shifts 0 to 31) and content:
// no crash, a refused image comes back unchanged, an accepted one holds only
// the device pixels of the colours handed out.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "qvgui/dataspace.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"
#include "qvgui/window.h"

namespace {

_TrueColorPixelInfo_tag g_info;

WinRec_tag* window() {
  static WinRec_tag* win = [] {
    winMethods_tag* methods = wm_Create();
    swm_GetTrueColorPixelInfo(methods, [](WinRec_tag*, _TrueColorPixelInfo_tag* info) { *info = g_info; });
    swm_AllocateFixedColors(methods, [](WinRec_tag*, Color_tag** colours, int n, Colortable_tag*) {
      for (int i = 0; i < n; ++i) colours[i]->pixel = 7 * i + 3;
    });
    WinRec_tag* w = wr_Create(0, nullptr);
    swr_winMethods(w, methods);
    return w;
  }();
  return win;
}

struct Reader {
  const std::uint8_t* data;
  std::size_t size;
  std::uint32_t next(int bytes) {
    std::uint32_t v = 0;
    for (int i = 0; i < bytes; ++i) {
      v = (v << 8) | (size > 0 ? *data : 0u);
      if (size > 0) {
        ++data;
        --size;
      }
    }
    return v;
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Reader in{data, size};
  const int width = static_cast<int>(in.next(1) % 40);
  const int height = static_cast<int>(in.next(1) % 40);
  g_info.red_max = 1 + in.next(2) % 65535;
  g_info.green_max = 1 + in.next(2) % 65535;
  g_info.blue_max = 1 + in.next(2) % 65535;
  g_info.red_shift = static_cast<std::int32_t>(in.next(1) % 32);
  g_info.green_shift = static_cast<std::int32_t>(in.next(1) % 32);
  g_info.blue_shift = static_cast<std::int32_t>(in.next(1) % 32);
  // A small palette of pixel values keeps some images under 64 colours.
  const std::uint32_t paletteSize = 1 + in.next(1) % 80;
  std::vector<std::uint32_t> palette(paletteSize);
  for (std::uint32_t& p : palette) p = in.next(4);
  std::vector<std::uint32_t> image(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  for (std::uint32_t& p : image) p = palette[in.next(1) % paletteSize];
  std::vector<double> table(3 * (in.next(1) % 20));
  for (double& v : table) v = in.next(1) / 255.0;

  Colortable_tag* t = create_ColortablePtr();
  set_ColortablePtr_colormap_data(t, NReals(table.data(), static_cast<int>(table.size())));

  std::vector<unsigned char> out(image.size() + 1, 0xA5);
  dither_wrapper(window(), height, width, image.data(), out.data(), t);
  if (out.back() != 0xA5) __builtin_trap();
  for (std::size_t p = 0; p + 1 < out.size(); ++p) {
    if (t->combined_length > 0 ? out[p] >= t->combined_length : out[p] != 0) __builtin_trap();
  }

  const std::vector<std::uint32_t> original = image;
  Color_tag** colours = nullptr;
  int count = -1;
  const bool gaveUp = fast_quantize(width, height, image.data(), &colours, &count, window(), t, &g_info);
  if (gaveUp) {
    if (colours != nullptr || count != 0 || image != original) __builtin_trap();
  } else {
    if (count < 0 || count > 64) __builtin_trap();
    for (std::uint32_t p : image) {
      if (p % 7 != 3 || p / 7 >= static_cast<std::uint32_t>(count)) __builtin_trap();
    }
    for (int i = 0; i < count; ++i) destroy_ColorPtr(colours[i]);
    utFree(colours);
  }
  destroy_ColortablePtr(t);
  return 0;
}
