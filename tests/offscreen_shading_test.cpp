// Offscreen back end: shaded faces land exactly where the rasteriser puts
// them, inside the clip; colour-table mode writes only the table's colours.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>
#include <set>

#include "offscreen_test_support.h"
#include "qvgui/dataspace.h"

namespace {

using offscreen_test::Poly;
using offscreen_test::rgb;
using qvgui::offscreen::Canvas;
using qvgui::offscreen::Format;

constexpr std::uint32_t kWhite = 0xffffffffu;

// Reference: the rasteriser run directly, its written pixels placed on a
// white page by hand.
std::vector<std::uint32_t> referenceFill(Polygon2* poly, const std::vector<double>& rgbs, int w, int h,
                                         const qvrect* clip) {
  std::vector<std::uint32_t> page(std::size_t(w) * h, kWhite);
  qvrect b{};
  unsigned char* pixmap = nullptr;
  unsigned char* mask = nullptr;
  AllocatePolygonPixmap(poly, &b, &pixmap, &mask);
  if (!pixmap) return page;
  const int bw = b.right - b.left + 1, bh = b.bottom - b.top + 1;
  std::vector<std::uint32_t> px(std::size_t(bw) * bh);
  FillInterpPolyRGB(poly, rgbs.data(), &b, px.data(), mask);
  for (int y = 0; y < bh; ++y)
    for (int x = 0; x < bw; ++x) {
      const int dx = b.left + x, dy = b.top + y;
      const bool onPage = dx >= 0 && dx < w && dy >= 0 && dy < h;
      const bool inClip =
          onPage && (!clip || (dx >= clip->left && dx < clip->right && dy >= clip->top && dy < clip->bottom));
      if (mask[std::size_t(y) * bw + x] && inClip)
        page[std::size_t(dy) * w + dx] = px[std::size_t(y) * bw + x];
    }
  zrFree(pixmap);
  zrFree(mask);
  return page;
}

// Property: on random triangles and quadrilaterals, with and without a clip,
// the image holds exactly the rasteriser's pixels and white elsewhere.
TEST(OffscreenShading, InterpolatedFacesMatchTheRasteriser) {
  std::mt19937 rng(5);
  std::uniform_int_distribution<int> pos(0, 63);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int trial = 0; trial < 30; ++trial) {
    const int n = 3 + trial % 2;
    std::vector<std::int32_t> xy;
    std::vector<double> rgbs;
    for (int i = 0; i < n; ++i) {
      xy.insert(xy.end(), {pos(rng), pos(rng)});
      rgbs.insert(rgbs.end(), {unit(rng), unit(rng), unit(rng)});
    }
    Poly poly(xy);
    const bool clipped = trial % 3 == 0;
    const qvrect clip{10, 20, 50, 45};
    Canvas canvas(Format::Png, 64, 64, 72.0);
    WinRec_tag* win = canvas.window();
    void* region = nullptr;
    if (clipped) {
      region = wm_CreateClipRegion(win);
      wm_UnionRectRegion(win, &clip, region);
      wm_SetClipRegion(win, region);
    }
    wm_FillInterpPoly(win, poly.get(), rgbs.data(), nullptr);
    SCOPED_TRACE(trial);
    EXPECT_EQ(canvas.image(), referenceFill(poly.get(), rgbs, 64, 64, clipped ? &clip : nullptr));
    if (region) wm_DestroyClipRegion(win, region);
  }
}

// Property: faces reaching far outside the image are cut before they reach
// the rasteriser (whose buffers follow the face's size), and what shows is
// what the uncut face gives: the same pixels up to a few along edges that
// the cut's rounding moves, and colours within a few levels.
TEST(OffscreenShading, FacesFarOutsideTheImageShowTheSame) {
  std::mt19937 rng(9);
  std::uniform_int_distribution<int> pos(-500, 560);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  int compared = 0;
  for (int trial = 0; trial < 20; ++trial) {
    std::vector<std::int32_t> xy;
    std::vector<double> rgbs;
    for (int i = 0; i < 3; ++i) {
      xy.insert(xy.end(), {pos(rng), pos(rng)});
      rgbs.insert(rgbs.end(), {unit(rng), unit(rng), unit(rng)});
    }
    Poly poly(xy);
    Canvas canvas(Format::Png, 64, 64, 72.0);
    wm_FillInterpPoly(canvas.window(), poly.get(), rgbs.data(), nullptr);
    const std::vector<std::uint32_t> got = canvas.image();
    const std::vector<std::uint32_t> want = referenceFill(poly.get(), rgbs, 64, 64, nullptr);
    int differentCoverage = 0;
    for (std::size_t i = 0; i < got.size(); ++i) {
      if ((got[i] == kWhite) != (want[i] == kWhite)) {
        ++differentCoverage;
        continue;
      }
      for (int shift : {0, 8, 16})
        ASSERT_NEAR(int((got[i] >> shift) & 0xff), int((want[i] >> shift) & 0xff), 3) << trial << " " << i;
      ++compared;
    }
    SCOPED_TRACE(trial);
    EXPECT_LE(differentCoverage, 64);  // at most a pixel per row of the image
  }
  EXPECT_GT(compared, 0);
}

// Textured faces whose corners are missing-point markers or far off the
// image give the image nothing to show, and leave nothing behind (the
// sanitizer build checks for leaks).
TEST(OffscreenShading, MissingAndFarCornersPaintNothingExtra) {
  Canvas canvas(Format::Png, 64, 48, 36.0);
  const std::vector<std::vector<std::int32_t>> faces = {{-53, -32768, -32768, -32769, -1, -1},
                                                        {-32768, -1, -1644822529, 16777215, -96, -96},
                                                        {-32768, -32768, 157, -10354679, -86, -95}};
  double uv[3][2] = {{0, 0}, {1, 0}, {0, 1}};
  int texture[4] = {0, 1, 2, 1};
  Colortable_tag* table = create_ColortablePtr();
  set_ColortablePtr_colormap_data(table, NReals{0, 1, 0.5, 0, 1, 0.5, 0, 1, 0.25});
  for (const auto& xy : faces) {
    Poly face(xy);
    wm_WarpTriangle(canvas.window(), face.get(), table, 2, 2, uv, texture);
  }
  destroy_ColortablePtr(table);
  for (std::uint32_t p : canvas.image()) ASSERT_EQ(p, kWhite);

  // A corner with one coordinate missing is dropped, not rasterised: the
  // other coordinate, cut to 16 bits, once made a box of 2.7 GB.
  Poly face({7563635, -32768, -32768, 7365119, 94, 97});
  double grey[9] = {0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5};
  wm_FillInterpPoly(canvas.window(), face.get(), grey, nullptr);
  for (std::uint32_t p : canvas.image()) ASSERT_EQ(p, kWhite);
}

// Vector faces stay vector: a PDF gets a shading, an SVG a flat fill; neither
// embeds an image.
TEST(OffscreenShading, VectorFacesStayVector) {
  for (Format f : {Format::Pdf, Format::Svg}) {
    SCOPED_TRACE(static_cast<int>(f));
    Canvas canvas(f, 64, 64, 72.0);
    Poly tri({2, 2, 60, 5, 30, 60});
    std::vector<double> rgbs{1, 0, 0, 0, 1, 0, 0, 0, 1};
    wm_FillInterpPoly(canvas.window(), tri.get(), rgbs.data(), nullptr);
    const std::string path =
        ::testing::TempDir() + (f == Format::Pdf ? "offscreen_mesh.pdf" : "offscreen_mesh.svg");
    canvas.save(path);
    std::ifstream in(path, std::ios::binary);
    const std::string doc((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::remove(path.c_str());
    if (f == Format::Pdf) {
      EXPECT_NE(doc.find("/ShadingType"), std::string::npos);
      EXPECT_EQ(doc.find("/Subtype /Image"), std::string::npos);
    } else {
      EXPECT_NE(doc.find("<path"), std::string::npos);
      EXPECT_EQ(doc.find("<image"), std::string::npos);
    }
  }
}

// A table of black, white, red and blue.
struct Table {
  Colortable_tag* t = create_ColortablePtr();
  Table() { set_ColortablePtr_colormap_data(t, NReals{0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 0, 1}); }
  ~Table() { destroy_ColortablePtr(t); }
};

// Colour-table mode: the written image holds only table colours, areas in a
// table colour keep it exactly, the rows stay the right way up (the
// ditherer's output is bottom-up), and a mid grey dithers to a black and
// white mix of the same mean.
TEST(OffscreenShading, ColourTableModeDithersToTheTable) {
  Table table;
  Canvas canvas(Format::Png, 64, 64, 72.0);
  WinRec_tag* win = canvas.window();
  wm_SetVisual(win, VISUAL_PSEUDOCOLOR);
  wm_InstallColortable(win, table.t);
  wm_SetFGColormapIndex(win, 2);  // red, through the table
  const qvrect top{0, 0, 16, 64};
  wm_PaintRect(win, &top);
  Color_tag grey = rgb(0.5, 0.5, 0.5);
  wm_SetFGColorPtr(win, &grey);
  const qvrect band{32, 0, 64, 64};
  wm_PaintRect(win, &band);
  const std::vector<std::uint32_t> img = canvas.image();
  const std::set<std::uint32_t> allowed{0xff000000u, 0xffffffffu, 0xffff0000u, 0xff0000ffu};
  for (std::uint32_t p : img) ASSERT_TRUE(allowed.count(p)) << std::hex << p;
  for (int y : {0, 15}) EXPECT_EQ(img[std::size_t(y) * 64 + 10], 0xffff0000u) << y;
  for (int y : {16, 31}) EXPECT_EQ(img[std::size_t(y) * 64 + 10], kWhite) << y;
  double sum = 0.0;
  for (int y = 32; y < 64; ++y)
    for (int x = 0; x < 64; ++x) sum += (img[std::size_t(y) * 64 + x] & 0xff) / 255.0;
  EXPECT_NEAR(sum / (32 * 64), 0.5, 0.02);

  // Index colours outside the table leave the pen alone.
  wm_SetFGColormapIndex(win, 3);
  wm_SetFGColormapIndex(win, 4);
  Color_tag out = rgb(0, 0, 0);
  wm_ColormapIndex2ColorPtr(win, 3, &out);
  EXPECT_TRUE(out.red == 0 && out.green == 0 && out.blue == 1);
  const qvrect dot{20, 20, 22, 22};
  wm_PaintRect(win, &dot);
  EXPECT_EQ(canvas.image()[20 * 64 + 20], 0xff0000ffu);
}

}  // namespace
