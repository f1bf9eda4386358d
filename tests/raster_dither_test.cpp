// Dithering: dither_wrapper and DitherPixMap against a slow reference written
// straight from the rules (full working planes, brute-force nearest colours,
// shares computed by division), hand-picked images, the mean-colour property
// and the Bump records.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "qvgui/dataspace.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"
#include "qvhost/testing.h"
#include "raster_color_test_support.h"

namespace {

using raster_test::ColorWindow;
using raster_test::slots;
using raster_test::Table;
using Rgb = std::array<int, 3>;

// ---- The reference --------------------------------------------------------------------

int share(int e, int w) { return e >= 0 ? (8 + e * w) / 16 : -((8 - e * w) / 16); }

int nearest(const std::vector<Rgb>& table, int r5, int g5, int b5) {
  const int centre[3] = {8 * r5 + 4, 8 * g5 + 4, 8 * b5 + 4};
  int best = 0;
  long bestDistance = -1;
  for (std::size_t i = 0; i < table.size(); ++i) {
    long d = 0;
    for (int ch = 0; ch < 3; ++ch)
      d += static_cast<long>(centre[ch] - table[i][ch]) * (centre[ch] - table[i][ch]);
    if (bestDistance < 0 || d < bestDistance) {
      bestDistance = d;
      best = static_cast<int>(i);
    }
  }
  return best;
}

// Indices in input order (row 0 first) for rows x columns working values.
std::vector<int> referenceDiffuse(int rows, int columns, std::vector<Rgb> work,
                                  const std::vector<Rgb>& table) {
  std::vector<int> out(work.size());
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x) {
      Rgb& v = work[y * columns + x];
      for (int& c : v) c = std::min(255, std::max(0, c));
      const int index = nearest(table, v[0] / 8, v[1] / 8, v[2] / 8);
      out[y * columns + x] = index;
      const Rgb chosen = table.empty() ? Rgb{0, 0, 0} : table[index];
      for (int ch = 0; ch < 3; ++ch) {
        const int e = v[ch] - chosen[ch];
        if (x + 1 < columns) work[y * columns + x + 1][ch] += share(e, 7);
        if (y + 1 < rows) {
          work[(y + 1) * columns + x][ch] += share(e, 5);
          if (x > 0) work[(y + 1) * columns + x - 1][ch] += share(e, 3);
          if (x + 1 < columns) work[(y + 1) * columns + x + 1][ch] += share(e, 1);
        }
      }
    }
  }
  return out;
}

std::vector<unsigned char> referenceWrapper(int rows, int columns, const std::vector<std::uint32_t>& pixels,
                                            const std::vector<std::array<double, 3>>& colours,
                                            const _TrueColorPixelInfo_tag& f) {
  std::vector<Rgb> table;
  for (const auto& c : colours) {
    table.push_back({static_cast<int>(c[0] * 255.0 + 0.5), static_cast<int>(c[1] * 255.0 + 0.5),
                     static_cast<int>(c[2] * 255.0 + 0.5)});
  }
  const double maxima[3] = {f.red_max, f.green_max, f.blue_max};
  const int shifts[3] = {f.red_shift, f.green_shift, f.blue_shift};
  std::vector<Rgb> work;
  for (std::uint32_t p : pixels) {
    Rgb v;
    for (int ch = 0; ch < 3; ++ch) {
      const std::uint32_t raw = (p >> shifts[ch]) & static_cast<std::uint32_t>(maxima[ch]);
      v[ch] = static_cast<int>(raw * (255.5 / (maxima[ch] - 1)));
    }
    work.push_back(v);
  }
  const std::vector<int> indices = referenceDiffuse(rows, columns, work, table);
  std::vector<unsigned char> out(indices.size());
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x) {
      out[(rows - 1 - y) * columns + x] = static_cast<unsigned char>(indices[y * columns + x]);
    }
  }
  return out;
}

NReals planar(const std::vector<std::array<double, 3>>& colours) {
  std::vector<double> v;
  for (int ch = 0; ch < 3; ++ch) {
    for (const auto& c : colours) v.push_back(c[ch]);
  }
  return NReals(v.data(), static_cast<int>(v.size()));
}

std::vector<unsigned char> dither(ColorWindow& win, const Colortable_tag* t, int rows, int columns,
                                  const std::vector<std::uint32_t>& pixels) {
  std::vector<unsigned char> out(static_cast<std::size_t>(rows * columns) + 1, 0xEE);
  dither_wrapper(win.get(), rows, columns, pixels.data(), out.data(), t);
  EXPECT_EQ(out.back(), 0xEE) << "wrote past the output";
  out.pop_back();
  return out;
}

// ---- dither_wrapper ------------------------------------------------------------------------

TEST(Dither, MatchesTheReferenceOnRandomImagesTablesAndFormats) {
  ColorWindow win;
  std::mt19937 rng(2024);
  const std::vector<_TrueColorPixelInfo_tag> formats = {
      {255, 255, 255, 16, 8, 0},
      {31, 63, 31, 11, 5, 0},
      {1023, 1023, 1023, 20, 10, 0},
      {15, 15, 15, 0, 4, 8},
      // Wide channels: scale table only, and no table at all.
      {65535, 255, 255, 0, 16, 24},
      {131071, 127, 3, 0, 17, 29}};
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int run = 0; run < 300; ++run) {
    const _TrueColorPixelInfo_tag& f = formats[run % formats.size()];
    // Rows go in staggered groups: heights up to 14 end groups at every size
    // and hand errors on from group to group, widths up to 64 run a whole
    // group at once. Past 256 colours the inverse map needs wider cells.
    // Every fifth image is large: only those build the whole inverse map,
    // and a channel's scale table needs more pixels than the channel has
    // values.
    const int rows = 1 + static_cast<int>(rng() % 14);
    const int columns =
        run % 5 == 4 ? 70000 / rows + 1 : 1 + static_cast<int>(rng() % (run % 2 == 0 ? 9 : 64));
    std::vector<std::array<double, 3>> colours(run % 25 == 7 || run % 25 == 9 ? 257 + rng() % 100
                                                                              : rng() % 12);
    for (auto& c : colours) c = {unit(rng), unit(rng), unit(rng)};
    if (colours.size() > 2) colours[colours.size() - 1] = colours[0];  // ties keep the earlier colour
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(rows * columns));
    for (auto& p : pixels) p = static_cast<std::uint32_t>(rng());
    if (run % 3 == 0) {
      for (auto& p : pixels) p = pixels[0];  // uniform patches stress the error carry
    }
    SCOPED_TRACE("run " + std::to_string(run) + ": " + std::to_string(rows) + "x" + std::to_string(columns) +
                 ", " + std::to_string(colours.size()) + " colours");
    slots().info = f;
    Table t(create_ColortablePtr());
    set_ColortablePtr_colormap_data(t.get(), planar(colours));
    ASSERT_EQ(dither(win, t.get(), rows, columns, pixels),
              referenceWrapper(rows, columns, pixels, colours, f));
  }
}

TEST(Dither, HandPickedImages) {
  struct Case {
    const char* label;
    std::vector<std::array<double, 3>> table;
    int rows, columns;
    std::vector<std::uint32_t> pixels;
    std::vector<unsigned char> expected;
  };
  const std::array<double, 3> black{0, 0, 0}, white{1, 1, 1}, red{1, 0, 0}, blue{0, 0, 1};
  const std::vector<Case> cases = {
      // 255 * 255.5 / 254 overshoots to 256: clamped, so white stays in the
      // top cell and leaves no error.
      {"top value clamps to 255", {black, red, white}, 1, 3, {0xffffff, 0xffffff, 0xffffff}, {2, 2, 2}},
      {"first input row is the last output row",
       {red, blue},
       2,
       3,
       {0xff0000, 0xff0000, 0xff0000, 0xff, 0xff, 0xff},
       {1, 1, 1, 0, 0, 0}},
      // Grey 100 on black/white: 100 -> black, error 100 gives 44 right: 144 -> white,
      // error -111 gives -49 right: 51 -> black, error 51 gives 22: 122 -> black.
      {"one row carries only to the right",
       {black, white},
       1,
       4,
       {0x646464, 0x646464, 0x646464, 0x646464},
       {0, 1, 0, 0}},
      {"empty table answers index 0", {}, 2, 2, {0xffffff, 0x123456, 0, 0x808080}, {0, 0, 0, 0}},
  };
  ColorWindow win;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Table t(create_ColortablePtr());
    if (!c.table.empty()) set_ColortablePtr_colormap_data(t.get(), planar(c.table));
    EXPECT_EQ(dither(win, t.get(), c.rows, c.columns, c.pixels), c.expected);
  }
}

// A uniform patch dithered to a 6-level cube keeps its mean colour: within
// one cube step for any colour, and in practice far closer.
TEST(Dither, UniformPatchesKeepTheirMeanColour) {
  ColorWindow win;
  std::vector<std::array<double, 3>> cube;
  for (int b = 0; b < 6; ++b) {
    for (int g = 0; g < 6; ++g) {
      for (int r = 0; r < 6; ++r) cube.push_back({r / 5.0, g / 5.0, b / 5.0});
    }
  }
  Table t(create_ColortablePtr());
  set_ColortablePtr_colormap_data(t.get(), planar(cube));
  std::mt19937 rng(9);
  const int n = 48;
  for (int run = 0; run < 200; ++run) {
    const std::uint32_t rgb = static_cast<std::uint32_t>(rng()) & 0xffffff;
    const std::vector<std::uint32_t> pixels(n * n, rgb);
    const std::vector<unsigned char> out = dither(win, t.get(), n, n, pixels);
    double mean[3] = {0, 0, 0};
    for (unsigned char i : out) {
      for (int ch = 0; ch < 3; ++ch) mean[ch] += cube[i][ch] * 255.0 / (n * n);
    }
    for (int ch = 0; ch < 3; ++ch) {
      const std::uint32_t v = (rgb >> (16 - 8 * ch)) & 0xff;
      const double scaled = std::min(255.0, std::floor(v * 255.5 / 254));
      EXPECT_NEAR(mean[ch], scaled, 3.0) << "colour " << std::hex << rgb << " channel " << ch;
    }
  }
  // Mid grey on black and white splits about evenly.
  Table bw(create_ColortablePtr());
  set_ColortablePtr_colormap_data(bw.get(), planar({{0, 0, 0}, {1, 1, 1}}));
  const std::vector<unsigned char> out =
      dither(win, bw.get(), n, n, std::vector<std::uint32_t>(n * n, 0x7f7f7f));
  int whites = 0;
  for (unsigned char i : out) whites += i;
  EXPECT_NEAR(whites, n * n / 2, n * n / 20);
}

// ---- DitherPixMap -------------------------------------------------------------------------

TEST(Dither, PixMapMatchesTheReferenceAndUsesOnlyFixedColours) {
  std::mt19937 rng(77);
  for (int run = 0; run < 100; ++run) {
    SCOPED_TRACE("run " + std::to_string(run));
    Table t(create_ColortablePtr());
    std::vector<Color_tag*> fixed;
    const int k = static_cast<int>(rng() % 10);
    for (int i = 0; i < k; ++i) {
      fixed.push_back(
          create_ColorPtrFromRGB((rng() % 256) / 255.0, (rng() % 256) / 255.0, (rng() % 256) / 255.0));
      add_ColorPtr_to_fixed_data(fixed.back(), t.get());
    }
    const int w = 1 + static_cast<int>(rng() % 8), h = 1 + static_cast<int>(rng() % 8);
    std::vector<unsigned char> pixmap(static_cast<std::size_t>(4 * w * h));
    for (auto& b : pixmap) b = static_cast<unsigned char>(rng());
    const std::vector<unsigned char> original = pixmap;
    DitherPixMap(pixmap.data(), w, h, t.get());

    const int n = t->fixed_length;
    std::vector<Rgb> table;
    for (int i = 0; i < n; ++i) {
      table.push_back({static_cast<int>(t->fixed_data[i] * 255 + 0.5),
                       static_cast<int>(t->fixed_data[n + i] * 255 + 0.5),
                       static_cast<int>(t->fixed_data[2 * n + i] * 255 + 0.5)});
    }
    std::vector<Rgb> work;
    for (int p = 0; p < w * h; ++p)
      work.push_back({original[4 * p], original[4 * p + 1], original[4 * p + 2]});
    const std::vector<int> indices = referenceDiffuse(h, w, work, table);
    for (int p = 0; p < w * h; ++p) {
      EXPECT_EQ(pixmap[4 * p + 3], original[4 * p + 3]) << "the fourth byte is left alone";
      if (n == 0) {
        EXPECT_EQ(pixmap, original);
        break;
      }
      const Rgb& want = table[indices[p]];
      ASSERT_EQ((Rgb{pixmap[4 * p], pixmap[4 * p + 1], pixmap[4 * p + 2]}), want) << "pixel " << p;
      Color_tag* c =
          create_ColorPtrFromRGB(pixmap[4 * p] / 255.0, pixmap[4 * p + 1] / 255.0, pixmap[4 * p + 2] / 255.0);
      EXPECT_LT(fixed_ColorPtr_to_index(c, t.get()), static_cast<unsigned>(n));
      destroy_ColorPtr(c);
    }
    for (Color_tag* c : fixed) {
      remove_ColorPtr_from_fixed_data(c, t.get());
      destroy_ColorPtr(c);
    }
  }
}

// ---- Bump records -------------------------------------------------------------------------

TEST(Bump, LayoutSpareBytesAndFailedAllocations) {
  Bump* b = CreateBump(10, 4, -3, 5);
  ASSERT_NE(b, nullptr);
  unsigned char* data = GetBumpData(b);
  for (int i = 0; i < 44; ++i) ASSERT_EQ(data[i], 0) << i;  // all 44 bytes are there and zero
  SetBumpBit(b, 1, 2, 7);
  EXPECT_EQ(data[12], 7);
  EXPECT_EQ(GetBumpBit(b, 1, 2), 7);
  for (int i = 40; i < 44; ++i) data[i] = 0xAA;
  SetBumpBit(b, 3, 9, 1);
  ClearBump(b);
  EXPECT_EQ(GetBumpBit(b, 3, 9), 0);
  EXPECT_EQ(GetBumpBit(b, 1, 2), 0);
  for (int i = 40; i < 44; ++i) EXPECT_EQ(data[i], 0xAA) << "the spare bytes are not cleared";
  std::int32_t x = 0, y = 0;
  SetBumpOffsets(b, 8, -9);
  GetBumpOffsets(b, &x, &y);
  EXPECT_EQ(x * 100 + y, 8 * 100 - 9);
  DestroyBump(b);
  DestroyBump(nullptr);
  ClearBump(nullptr);

  for (std::int64_t budget : {0, 1}) {
    HostAllocationFailureScope scope(budget);
    EXPECT_EQ(CreateBump(10, 4, 0, 0), nullptr) << "budget " << budget;
  }
}

}  // namespace
