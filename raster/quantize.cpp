// The fast quantiser: true-colour images with few distinct colours become
// fixed colours of the window's colour table.
#include <cstddef>
#include <cstdint>

#include "qvgui/host.h"
#include "qvgui/raster.h"
#include "qvgui/window.h"

namespace {

constexpr int kMaxDistinct = 64;

struct Channel {
  std::uint32_t mask;
  std::int32_t shift;
  double max;
};

// Shifts outside 0..31 would be undefined; the back end never reports them,
// so they are only kept from doing harm.
Channel channel(double max, std::int32_t shift) {
  const std::int32_t s = shift < 0 ? 0 : (shift > 31 ? 31 : shift);
  const std::uint32_t m = max >= 1.0 && max < 4294967296.0 ? static_cast<std::uint32_t>(max) : 0u;
  return {m << s, s, max};
}

double component(std::uint32_t v, const Channel& c) {
  return static_cast<double>((v & c.mask) >> c.shift) / c.max;
}

// Puts the distinct values back over the first `done` pixels (now indices).
void restore(std::uint32_t* pixels, std::size_t done, const std::uint32_t* distinct) {
  for (std::size_t k = done; k-- > 0;) pixels[k] = distinct[pixels[k]];
}

}  // namespace

bool fast_quantize(int width, int height, std::uint32_t* pixels, Color_tag*** colors_out, int* count_out,
                   WinRec_tag* win, Colortable_tag* t, const _TrueColorPixelInfo_tag* info) {
  const Channel red = channel(info->red_max, info->red_shift);
  const Channel green = channel(info->green_max, info->green_shift);
  const Channel blue = channel(info->blue_max, info->blue_shift);
  const std::size_t n =
      width > 0 && height > 0 ? static_cast<std::size_t>(width) * static_cast<std::size_t>(height) : 0;

  std::uint32_t distinct[kMaxDistinct];
  std::uint32_t count = 0;
  // Images come in runs of one colour; the last hit saves the linear search.
  std::uint32_t lastValue = 0;
  std::uint32_t lastIndex = kMaxDistinct;
  for (std::size_t p = 0; p < n; ++p) {
    const std::uint32_t v = pixels[p];
    if (lastIndex != kMaxDistinct && v == lastValue) {
      pixels[p] = lastIndex;
      continue;
    }
    std::uint32_t i = 0;
    while (i < count && distinct[i] != v) ++i;
    if (i == count) {
      if (count == kMaxDistinct) {
        restore(pixels, p, distinct);
        *colors_out = nullptr;
        *count_out = 0;
        return true;
      }
      distinct[count++] = v;
    }
    pixels[p] = i;
    lastValue = v;
    lastIndex = i;
  }

  // From here on a failure (no memory, or the back end) puts the image back
  // and frees what was made, so the caller sees the pixels it passed in.
  Color_tag** colours = nullptr;
  std::uint32_t made = 0;
  try {
    colours = static_cast<Color_tag**>(utCallocWithCheck(count == 0 ? 1 : count, sizeof(Color_tag*)));
    for (; made < count; ++made) {
      const std::uint32_t v = distinct[made];
      colours[made] = create_ColorPtrFromRGB(component(v, red), component(v, green), component(v, blue));
    }
    wm_AllocateFixedColors(win, colours, static_cast<int>(count), t);
  } catch (...) {
    for (std::uint32_t k = 0; k < made; ++k) destroy_ColorPtr(colours[k]);
    utFree(colours);
    restore(pixels, n, distinct);
    throw;
  }
  for (std::size_t p = 0; p < n; ++p) pixels[p] = static_cast<std::uint32_t>(colours[pixels[p]]->pixel);
  *colors_out = colours;
  *count_out = static_cast<int>(count);
  return false;
}
