// Error-diffusion dithering of true-colour images to colour-table indices,
// and of byte pixmaps to a table's fixed colours.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>

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
  // beat anything: the red (red + green) part alone is a lower bound. Tables
  // often list similar colours together, and taken in that order each of the
  // first few colours would still win nearly every cell; taken in a stride
  // across the table the space fills quickly and the bounds bite. Ties go to
  // the lower index whatever the order.
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

  std::size_t stride = n / 3 + 1;
  while (std::gcd(stride, n) > 1) ++stride;
  for (std::size_t k = 0, i = 0; k < n; ++k, i = (i + stride) % n) {
    const std::int32_t cr = red[i], cg = green[i], cb = blue[i];
    const auto index = static_cast<std::int32_t>(i);
    std::int32_t dB[32];
    for (std::int32_t b = 0, db = 4 - cb, d = db * db, step = 16 * db + 64; b < 32;
         ++b, d += step, step += 128)
      dB[b] = d;
    std::int32_t dr = 4 - cr;
    for (int r = 0; r < 32; ++r, dr += 8) {
      const std::int32_t dR = dr * dr;
      if (dR > planeMax[r]) continue;
      std::int32_t dg = 4 - cg;
      std::int32_t newPlaneMax = 0;
      for (int g = 0; g < 32; ++g, dg += 8) {
        const int rg = (r << 5) | g;
        const std::int32_t dRG = dR + dg * dg;
        if (dRG <= rowMax[rg]) {
          std::int32_t* const dcell = dist.get() + (rg << 5);
          std::int32_t* const mcell = map + (rg << 5);
          std::int32_t m = 0;
          // Branch-free, so that it runs several cells at a time.
          for (int b = 0; b < 32; ++b) {
            const std::int32_t d = dRG + dB[b];
            const bool nearer = d < dcell[b] || (d == dcell[b] && index < mcell[b]);
            mcell[b] = nearer ? index : mcell[b];
            dcell[b] = nearer ? d : dcell[b];
            m = dcell[b] > m ? dcell[b] : m;
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
    const auto share = [&](std::int32_t sixteenths) {
      return static_cast<std::int16_t>(sign * ((8 + a * sixteenths) / 16));
    };
    table[e + 256] = {share(3), share(5), share(7), share(1)};
  }
}

Lanes tableLanes(std::int32_t red, std::int32_t green, std::int32_t blue) {
  return static_cast<Lanes>(256 - blue) | (static_cast<Lanes>(256 - green) << 16) |
         (static_cast<Lanes>(256 - red) << 32);
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
  ZrBuffer<std::int32_t> scale;  // value -> 8-bit (unclamped); null when not worth a table
  double factor;
};

constexpr std::uint32_t kWidestTable = 1u << 16;

// A scale table only pays when the image has more pixels than the table has
// entries; a small image on a deep display scales each pixel as it comes.
Channel channel(double max, std::int32_t shift, std::size_t pixels) {
  Channel c;
  c.shift = shift < 0 ? 0 : (shift > 31 ? 31 : shift);
  c.max = max >= 1.0 && max < 4294967296.0 ? static_cast<std::uint32_t>(max) : 0u;
  // Deliberately max - 1: the top value lands above 255 and is clamped.
  c.factor = 255.5 / (max - 1.0);
  if (c.max < kWidestTable && c.max < pixels) {
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

// A table's colours: 8-bit planar integers for the inverse map and the
// output of DitherPixMap, and their lanes for the diffusion loop.
struct TableBytes {
  ZrBuffer<std::int32_t> red, green, blue;
  ZrBuffer<Lanes> lanes;
  std::size_t n;
};

TableBytes tableBytes(const double* planar, std::size_t n) {
  TableBytes t{zrBuffer<std::int32_t>(n), zrBuffer<std::int32_t>(n), zrBuffer<std::int32_t>(n),
               zrBuffer<Lanes>(n), n};
  for (std::size_t i = 0; i < n; ++i) {
    t.red[i] = tableByte(planar[i]);
    t.green[i] = tableByte(planar[n + i]);
    t.blue[i] = tableByte(planar[2 * n + i]);
    t.lanes[i] = tableLanes(t.red[i], t.green[i], t.blue[i]);
  }
  // The inverse map answers colour 0 even for an empty table.
  if (n == 0) t.lanes[0] = tableLanes(0, 0, 0);
  return t;
}

// Output rows of dither_wrapper: one colour index a pixel.
struct RowBytes {
  unsigned char* row;
  void operator()(int x, std::int32_t index) const { row[x] = static_cast<unsigned char>(index); }
};

// Output rows of DitherPixMap: the chosen colour written over the pixel.
struct RowColours {
  unsigned char* row;
  const std::int32_t *red, *green, *blue;
  void operator()(int x, std::int32_t index) const {
    unsigned char* p = row + 4 * static_cast<std::size_t>(x);
    p[0] = static_cast<unsigned char>(red[index]);
    p[1] = static_cast<unsigned char>(green[index]);
    p[2] = static_cast<unsigned char>(blue[index]);
  }
};

// The inverse map filled in as cells are looked up: the same entries as
// buildInverseMap, for images that would meet only a few of its cells.
template <class Entry>
struct LazyInverseMap {
  static constexpr auto kUnknown = static_cast<Entry>(~Entry{0});  // all bits set, never an index
  Entry* cells;
  const TableBytes* table;

  Entry operator[](std::size_t cell) const {
    Entry& entry = cells[cell];
    if (entry == kUnknown) entry = static_cast<Entry>(nearest(cell));
    return entry;
  }

  std::int32_t nearest(std::size_t cell) const {
    const auto centre = [cell](int shift) {
      return static_cast<std::int32_t>(((cell >> shift) & 31) * 8 + 4);
    };
    const std::int32_t r = centre(10), g = centre(5), b = centre(0);
    std::int32_t best = 0;
    std::int32_t bestDistance = std::numeric_limits<std::int32_t>::max();
    for (std::size_t i = 0; i < table->n; ++i) {
      const std::int32_t dr = r - table->red[i], dg = g - table->green[i], db = b - table->blue[i];
      const std::int32_t d = dr * dr + dg * dg + db * db;
      if (d < bestDistance) {
        bestDistance = d;
        best = static_cast<std::int32_t>(i);
      }
    }
    return best;
  }
};

template <class Entry, class Load, class Emit>
void diffuseLazily(const TableBytes& t, int rows, int columns, const Shares* shares, Load load, Emit emit) {
  ZrBuffer<Entry> cells = zrBuffer<Entry>(kInverseCells);
  std::memset(cells.get(), 0xFF, kInverseCells * sizeof(Entry));
  diffuse(rows, columns, LazyInverseMap<Entry>{cells.get(), &t}, t.lanes.get(), shares, load, emit);
}

// Runs the diffusion with the narrowest map cells that hold every index. The
// whole inverse map costs about as much as looking up eight times its cells
// one by one, so a small image looks up only the cells it meets.
template <class Load, class Emit>
void run(const TableBytes& t, int rows, int columns, Load load, Emit emit) {
  if (rows <= 0 || columns <= 0) return;
  ZrBuffer<Shares> shares = zrBuffer<Shares>(512);
  buildShares(shares.get());
  const std::size_t pixels = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
  if (pixels <= 8 * static_cast<std::size_t>(kInverseCells) / (t.n > 0 ? t.n : 1)) {
    if (t.n < 256)
      diffuseLazily<std::uint8_t>(t, rows, columns, shares.get(), load, emit);
    else
      diffuseLazily<std::int32_t>(t, rows, columns, shares.get(), load, emit);
    return;
  }
  ZrBuffer<std::int32_t> map = zrBuffer<std::int32_t>(kInverseCells);
  buildInverseMap(t.red.get(), t.green.get(), t.blue.get(), t.n, map.get());
  if (t.n <= 256) {
    ZrBuffer<std::uint8_t> small = zrBuffer<std::uint8_t>(kInverseCells);
    for (int c = 0; c < kInverseCells; ++c) small[c] = static_cast<std::uint8_t>(map[c]);
    diffuse(rows, columns, small.get(), t.lanes.get(), shares.get(), load, emit);
  } else {
    diffuse(rows, columns, map.get(), t.lanes.get(), shares.get(), load, emit);
  }
}

}  // namespace

void dither_wrapper(WinRec_tag* win, int rows, int columns, const std::uint32_t* pixels, unsigned char* out,
                    const Colortable_tag* table) {
  const std::size_t n = table->combined_length > 0 ? static_cast<std::size_t>(table->combined_length) : 0;
  const TableBytes colours = tableBytes(table->combined_data, n);

  _TrueColorPixelInfo_tag info{};
  wm_GetTrueColorPixelInfo(win, &info);
  const std::size_t pixelCount =
      rows > 0 && columns > 0 ? static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns) : 0;
  const Channel red = channel(info.red_max, info.red_shift, pixelCount);
  const Channel green = channel(info.green_max, info.green_shift, pixelCount);
  const Channel blue = channel(info.blue_max, info.blue_shift, pixelCount);

  const auto cols = static_cast<std::size_t>(columns > 0 ? columns : 0);
  const std::size_t last = rows > 0 ? static_cast<std::size_t>(rows) - 1 : 0;
  // Output rows go bottom-up: input row 0 is the last output row.
  const auto emit = [out, cols, last](int y) {
    return RowBytes{out + (last - static_cast<std::size_t>(y)) * cols};
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
    // Channels too wide for a scale table, or images too small to need one.
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
  const std::int32_t* const red = colours.red.get();
  const std::int32_t* const green = colours.green.get();
  const std::int32_t* const blue = colours.blue.get();
  const auto load = [pixels, w](int y, std::int32_t* in) {
    const unsigned char* p = pixels + 4 * static_cast<std::size_t>(y) * w;
    for (std::size_t x = 0; x < w; ++x) {
      in[x] = p[4 * x];
      in[w + x] = p[4 * x + 1];
      in[2 * w + x] = p[4 * x + 2];
    }
  };
  const auto emit = [pixels, w, red, green, blue](int y) {
    return RowColours{pixels + 4 * static_cast<std::size_t>(y) * w, red, green, blue};
  };
  run(colours, height, width, load, emit);
}
