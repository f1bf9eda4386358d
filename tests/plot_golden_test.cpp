// The sample figures against their golden images, pixel by pixel with a
// tolerance for anti-aliasing differences. QVGUI_UPDATE_GOLDEN=1 rewrites the
// golden images from the current rendering instead of comparing.
#include <cairo.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "qvgui/plot.h"

namespace {

using namespace qvgui::plot;

struct Image {
  int width = 0, height = 0;
  std::vector<std::uint32_t> argb;
};

Image load(const std::string& path) {
  Image img;
  cairo_surface_t* s = cairo_image_surface_create_from_png(path.c_str());
  if (cairo_surface_status(s) == CAIRO_STATUS_SUCCESS) {
    cairo_surface_flush(s);
    img.width = cairo_image_surface_get_width(s);
    img.height = cairo_image_surface_get_height(s);
    const int stride = cairo_image_surface_get_stride(s);
    const unsigned char* data = cairo_image_surface_get_data(s);
    img.argb.resize(static_cast<std::size_t>(img.width) * img.height);
    for (int y = 0; y < img.height; ++y)
      for (int x = 0; x < img.width; ++x)
        img.argb[static_cast<std::size_t>(y) * img.width + x] =
            *reinterpret_cast<const std::uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride + 4 * x);
  }
  cairo_surface_destroy(s);
  return img;
}

int channelDiff(std::uint32_t a, std::uint32_t b) {
  int worst = 0;
  for (int shift = 0; shift < 32; shift += 8) {
    const int d = std::abs(static_cast<int>((a >> shift) & 0xFF) - static_cast<int>((b >> shift) & 0xFF));
    worst = std::max(worst, d);
  }
  return worst;
}

TEST(PlotGolden, SampleFiguresMatchTheirGoldenImages) {
  const bool update = std::getenv("QVGUI_UPDATE_GOLDEN") != nullptr;
  const std::filesystem::path dir = QVGUI_GOLDEN_DIR;
  const std::filesystem::path tmp = std::filesystem::temp_directory_path();
  for (const std::string& name : sampleNames()) {
    SCOPED_TRACE(name);
    const std::string fresh = (tmp / ("qvgui_golden_" + name + ".png")).string();
    sampleFigure(name, 800, 600, 100).save(fresh);
    const std::string golden = (dir / (name + ".png")).string();
    if (update) {
      std::filesystem::copy_file(fresh, golden, std::filesystem::copy_options::overwrite_existing);
      continue;
    }
    const Image a = load(fresh);
    const Image b = load(golden);
    ASSERT_EQ(a.width, 800);
    ASSERT_EQ(b.width, a.width) << "missing or unreadable golden image " << golden;
    ASSERT_EQ(b.height, a.height);
    // A pixel differs when a channel moves by more than an anti-aliasing step;
    // a few may (edges land differently across Cairo and FreeType releases).
    std::size_t differing = 0;
    double total = 0;
    for (std::size_t k = 0; k < a.argb.size(); ++k) {
      const int d = channelDiff(a.argb[k], b.argb[k]);
      total += d;
      differing += d > 24;
    }
    EXPECT_LE(differing, a.argb.size() / 500) << "pixels differing: " << differing;
    EXPECT_LT(total / static_cast<double>(a.argb.size()), 1.0);
    std::filesystem::remove(fresh);
  }
}

}  // namespace
