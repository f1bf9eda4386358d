// Error-diffusion dithering of true-colour images to colour-table indices,
// and of byte pixmaps to a table's fixed colours.
#include <cstddef>
#include <cstdint>
#include <limits>

#include "qvgui/raster.h"
#include "qvgui/window.h"
#include "raster/colortable_p.h"
#include "raster/dither_p.h"

namespace qvgui_raster {

void buildInverseMap(const std::int32_t* red, const std::int32_t* green, const std::int32_t* blue,
                     std::size_t n, std::int32_t* map) {
  // Distances grow by squares: from cell c to c + 1 the square of (8c + 4 - x)
  // grows by 16 (8c + 4 - x) + 64, so every distance is reached by additions.
  // Row and plane maxima let a colour skip rows and planes where it cannot
  // beat anything: the red (red + green) part alone is a lower bound.
  ZrBuffer<std::int32_t> dist = zrBuffer<std::int32_t>(kInverseCells);
  constexpr std::int32_t kFar = std::numeric_limits<std::int32_t>::max();
  std::int32_t rowMax[32 * 32];
  std::int32_t planeMax[32];
  for (int c = 0; c < kInverseCells; ++c) {
    dist[c] = kFar;
    map[c] = 0;
  }
  for (std::int32_t& m : rowMax) m = kFar;
  for (std::int32_t& m : planeMax) m = kFar;

  for (std::size_t i = 0; i < n; ++i) {
    const std::int32_t cr = red[i], cg = green[i], cb = blue[i];
    std::int32_t dr = 4 - cr;
    for (int r = 0; r < 32; ++r, dr += 8) {
      const std::int32_t dR = dr * dr;
      if (dR >= planeMax[r]) continue;
      std::int32_t dg = 4 - cg;
      std::int32_t newPlaneMax = 0;
      for (int g = 0; g < 32; ++g, dg += 8) {
        const int rg = (r << 5) | g;
        const std::int32_t dRG = dR + dg * dg;
        if (dRG < rowMax[rg]) {
          std::int32_t db = 4 - cb;
          std::int32_t d = dRG + db * db;
          std::int32_t step = 16 * db + 64;
          std::int32_t* const dcell = dist.get() + (rg << 5);
          std::int32_t* const mcell = map + (rg << 5);
          std::int32_t m = 0;
          for (int b = 0; b < 32; ++b) {
            if (d < dcell[b]) {
              dcell[b] = d;
              mcell[b] = static_cast<std::int32_t>(i);
            }
            m = dcell[b] > m ? dcell[b] : m;
            d += step;
            step += 128;
          }
          rowMax[rg] = m;
        }
        newPlaneMax = rowMax[rg] > newPlaneMax ? rowMax[rg] : newPlaneMax;
      }
      planeMax[r] = newPlaneMax;
    }
  }
}

void buildShares(Shares* table) {
  for (std::int32_t e = -256; e < 256; ++e) {
    const std::int32_t a = e < 0 ? -e : e;
    const std::int32_t sign = e < 0 ? -1 : 1;
    table[e + 256] = {sign * ((8 + a * 7) / 16), sign * ((8 + a * 5) / 16), sign * ((8 + a * 3) / 16),
                      sign * ((8 + a * 1) / 16)};
  }
}

}  // namespace qvgui_raster

namespace {

using namespace qvgui_raster;

// A table component as an 8-bit integer. Colormap values are checked on entry
// but NaN is let through, and fixed colours are never checked: both are kept
// inside 0..255 so that every error stays a valid share-table index.
std::int32_t tableByte(double x) {
  const std::int32_t v = eightBit(x);
  return v < 0 ? 0 : (v > 255 ? 255 : v);
}

// Saturating, NaN-free double to int for the channel scale.
std::int32_t saturate(double x) {
  if (!(x > -1.0e6)) return x < 0.0 ? -1000000 : 0;
  return x > 1.0e6 ? 1000000 : static_cast<std::int32_t>(x);
}

struct Channel {
  std::int32_t shift;
  std::uint32_t max;
  ZrBuffer<std::int32_t> scale;  // value -> 8-bit (unclamped); null for wide channels
  double factor;
};

constexpr std::uint32_t kWidestTable = 1u << 16;

Channel channel(double max, std::int32_t shift) {
  Channel c;
  c.shift = shift < 0 ? 0 : (shift > 31 ? 31 : shift);
  c.max = max >= 1.0 && max < 4294967296.0 ? static_cast<std::uint32_t>(max) : 0u;
  // Deliberately max - 1: the top value lands above 255 and is clamped.
  c.factor = 255.5 / (max - 1.0);
  if (c.max < kWidestTable) {
    c.scale = zrBuffer<std::int32_t>(c.max + 1);
    for (std::uint32_t v = 0; v <= c.max; ++v) c.scale[v] = saturate(v * c.factor);
  }
  return c;
}

// Whether single-precision arithmetic gives every value of the channel's
// scale table; it does for the usual channel widths, and then the scaling
// vectorises.
bool exactInFloat(const Channel& c) {
  if (!c.scale) return false;
  const auto f = static_cast<float>(c.factor);
  if (!(f < 1.0e6f)) return false;
  for (std::uint32_t v = 0; v <= c.max; ++v) {
    if (static_cast<std::int32_t>(static_cast<float>(static_cast<std::int32_t>(v)) * f) != c.scale[v])
      return false;
  }
  return true;
}

std::int32_t channelValue(std::uint32_t pixel, const Channel& c) {
  const std::uint32_t v = (pixel >> c.shift) & c.max;
  return c.scale ? c.scale[v] : saturate(v * c.factor);
}

// A table's colours: 8-bit planar integers for the inverse map, and the
// same less 256 for the diffusion loop.
struct TableBytes {
  ZrBuffer<std::int32_t> red, green, blue;
  ZrBuffer<TableColour> colours;
  std::size_t n;
};

TableBytes tableBytes(const double* planar, std::size_t n) {
  TableBytes t{zrBuffer<std::int32_t>(n), zrBuffer<std::int32_t>(n), zrBuffer<std::int32_t>(n),
               zrBuffer<TableColour>(n), n};
  for (std::size_t i = 0; i < n; ++i) {
    t.red[i] = tableByte(planar[i]);
    t.green[i] = tableByte(planar[n + i]);
    t.blue[i] = tableByte(planar[2 * n + i]);
    t.colours[i] = {t.red[i] - 256, t.green[i] - 256, t.blue[i] - 256, 0};
  }
  // The inverse map answers colour 0 even for an empty table.
  if (n == 0) t.colours[0] = {-256, -256, -256, 0};
  return t;
}

// Builds the inverse map and runs the diffusion with the narrowest map cells
// that hold every index.
template <class Load, class Emit>
void run(const TableBytes& t, int rows, int columns, Load load, Emit emit) {
  ZrBuffer<std::int32_t> map = zrBuffer<std::int32_t>(kInverseCells);
  buildInverseMap(t.red.get(), t.green.get(), t.blue.get(), t.n, map.get());
  ZrBuffer<Shares> shares = zrBuffer<Shares>(512);
  buildShares(shares.get());
  if (rows <= 0 || columns <= 0) return;
  ZrBuffer<std::int32_t> buffer = zrBuffer<std::int32_t>(12 * (static_cast<std::size_t>(columns) + 2));
  if (t.n <= 256) {
    ZrBuffer<std::uint8_t> small = zrBuffer<std::uint8_t>(kInverseCells);
    for (int c = 0; c < kInverseCells; ++c) small[c] = static_cast<std::uint8_t>(map[c]);
    diffuse(rows, columns, small.get(), t.colours.get(), shares.get(), buffer.get(), load, emit);
  } else {
    diffuse(rows, columns, map.get(), t.colours.get(), shares.get(), buffer.get(), load, emit);
  }
}

}  // namespace

void dither_wrapper(WinRec_tag* win, int rows, int columns, const std::uint32_t* pixels, unsigned char* out,
                    const Colortable_tag* table) {
  const std::size_t n = table->combined_length > 0 ? static_cast<std::size_t>(table->combined_length) : 0;
  const TableBytes colours = tableBytes(table->combined_data, n);

  _TrueColorPixelInfo_tag info{};
  wm_GetTrueColorPixelInfo(win, &info);
  const Channel red = channel(info.red_max, info.red_shift);
  const Channel green = channel(info.green_max, info.green_shift);
  const Channel blue = channel(info.blue_max, info.blue_shift);

  const auto cols = static_cast<std::size_t>(columns > 0 ? columns : 0);
  const std::size_t last = rows > 0 ? static_cast<std::size_t>(rows) - 1 : 0;
  // Output rows go bottom-up: input row 0 is the last output row. Everything
  // the lambdas use is copied in, since stores through `out` could otherwise
  // alias it and force reloads in the loop.
  const auto emit = [out, cols, last](int y, int x, std::int32_t index) {
    out[(last - static_cast<std::size_t>(y)) * cols + static_cast<std::size_t>(x)] =
        static_cast<unsigned char>(index);
  };
  if (red.scale && green.scale && blue.scale) {
    const std::int32_t* const sr = red.scale.get();
    const std::int32_t* const sg = green.scale.get();
    const std::int32_t* const sb = blue.scale.get();
    const std::uint32_t mr = red.max, mg = green.max, mb = blue.max;
    const std::int32_t hr = red.shift, hg = green.shift, hb = blue.shift;
    if (exactInFloat(red) && exactInFloat(green) && exactInFloat(blue)) {
      // The same values as the scale tables, four pixels at a time.
      const float fr = static_cast<float>(red.factor), fg = static_cast<float>(green.factor),
                  fb = static_cast<float>(blue.factor);
      const auto load = [=](int y, std::int32_t* in) {
        const std::uint32_t* row = pixels + static_cast<std::size_t>(y) * cols;
        std::int32_t* const inG = in + cols;
        std::int32_t* const inB = in + 2 * cols;
        for (std::size_t x = 0; x < cols; ++x) {
          const std::uint32_t p = row[x];
          in[x] =
              static_cast<std::int32_t>(static_cast<float>(static_cast<std::int32_t>((p >> hr) & mr)) * fr);
          inG[x] =
              static_cast<std::int32_t>(static_cast<float>(static_cast<std::int32_t>((p >> hg) & mg)) * fg);
          inB[x] =
              static_cast<std::int32_t>(static_cast<float>(static_cast<std::int32_t>((p >> hb) & mb)) * fb);
        }
      };
      run(colours, rows, columns, load, emit);
      return;
    }
    const auto load = [=](int y, std::int32_t* in) {
      const std::uint32_t* row = pixels + static_cast<std::size_t>(y) * cols;
      for (std::size_t x = 0; x < cols; ++x) {
        const std::uint32_t p = row[x];
        in[x] = sr[(p >> hr) & mr];
        in[cols + x] = sg[(p >> hg) & mg];
        in[2 * cols + x] = sb[(p >> hb) & mb];
      }
    };
    run(colours, rows, columns, load, emit);
  } else {
    // Channels too wide for a scale table (never seen from a real display).
    const auto load = [&](int y, std::int32_t* in) {
      const std::uint32_t* row = pixels + static_cast<std::size_t>(y) * cols;
      for (std::size_t x = 0; x < cols; ++x) {
        in[x] = channelValue(row[x], red);
        in[cols + x] = channelValue(row[x], green);
        in[2 * cols + x] = channelValue(row[x], blue);
      }
    };
    run(colours, rows, columns, load, emit);
  }
}

void DitherPixMap(unsigned char* pixels, int width, int height, const Colortable_tag* table) {
  const std::size_t n = table->fixed_length > 0 ? static_cast<std::size_t>(table->fixed_length) : 0;
  if (n == 0 || width <= 0 || height <= 0) return;
  const TableBytes colours = tableBytes(table->fixed_data, n);
  const auto w = static_cast<std::size_t>(width);
  const TableColour* const c = colours.colours.get();
  const auto load = [pixels, w](int y, std::int32_t* in) {
    const unsigned char* p = pixels + 4 * static_cast<std::size_t>(y) * w;
    for (std::size_t x = 0; x < w; ++x) {
      in[x] = p[4 * x];
      in[w + x] = p[4 * x + 1];
      in[2 * w + x] = p[4 * x + 2];
    }
  };
  const auto emit = [pixels, w, c](int y, int x, std::int32_t index) {
    unsigned char* p = pixels + 4 * (static_cast<std::size_t>(y) * w + static_cast<std::size_t>(x));
    p[0] = static_cast<unsigned char>(c[index].red + 256);
    p[1] = static_cast<unsigned char>(c[index].green + 256);
    p[2] = static_cast<unsigned char>(c[index].blue + 256);
  };
  run(colours, height, width, load, emit);
}
