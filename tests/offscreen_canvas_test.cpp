// Offscreen back end: formats by file name, canvas construction and the
// files each format writes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "offscreen_test_support.h"

namespace {

using offscreen_test::rgb;
using qvgui::offscreen::Canvas;
using qvgui::offscreen::Format;
using qvgui::offscreen::formatForPath;

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string tempPath(const std::string& name) {
  return ::testing::TempDir() + "offscreen_" + std::to_string(::getpid()) + "_" + name;
}

TEST(OffscreenCanvas, FormatForPath) {
  struct Case {
    const char* path;
    Format format;
  };
  const Case good[] = {{"a.png", Format::Png}, {"dir.x/A.PDF", Format::Pdf}, {"b.c.Svg", Format::Svg}};
  for (const Case& c : good) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(formatForPath(c.path), c.format);
  }
  // The message names the extension that was refused.
  const std::pair<const char*, const char*> bad[] = {{"figure.jpg", "\".jpg\""},
                                                     {"figure", "\"\""},
                                                     {"dir.png/figure", "\"\""},
                                                     {"figure.png.bak", "\".bak\""}};
  for (const auto& [path, named] : bad) {
    SCOPED_TRACE(path);
    try {
      (void)formatForPath(path);
      ADD_FAILURE() << "no exception";
    } catch (const std::invalid_argument& e) {
      EXPECT_NE(std::string(e.what()).find(named), std::string::npos) << e.what();
    }
  }
}

TEST(OffscreenCanvas, RejectsBadSizes) {
  struct Case {
    int w, h;
    double dpi;
  };
  const Case bad[] = {{0, 10, 72},  {10, -1, 72},  {32768, 10, 72},   {10, 10, 0},
                      {10, 10, -5}, {10, 10, NAN}, {10, 10, INFINITY}};
  for (const Case& c : bad) {
    SCOPED_TRACE(std::to_string(c.w) + "x" + std::to_string(c.h) + "@" + std::to_string(c.dpi));
    EXPECT_THROW(Canvas(Format::Png, c.w, c.h, c.dpi), std::invalid_argument);
  }
  EXPECT_NO_THROW(Canvas(Format::Svg, 1, 1, 1e-3));
}

std::uint32_t bigEndian32(const std::string& s, std::size_t at) {
  return (std::uint32_t(std::uint8_t(s[at])) << 24) | (std::uint32_t(std::uint8_t(s[at + 1])) << 16) |
         (std::uint32_t(std::uint8_t(s[at + 2])) << 8) | std::uint32_t(std::uint8_t(s[at + 3]));
}

// Each format writes a complete file of its kind; vector pages have the
// canvas's size in points.
TEST(OffscreenCanvas, SavesEachFormat) {
  for (Format f : {Format::Png, Format::Pdf, Format::Svg}) {
    SCOPED_TRACE(static_cast<int>(f));
    Canvas canvas(f, 300, 150, 144.0);
    WinRec_tag* win = canvas.window();
    Color_tag red = rgb(1, 0, 0);
    wm_SetFGColorPtr(win, &red);
    const qvrect r{10, 10, 100, 200};
    wm_PaintRect(win, &r);
    const std::string path = tempPath(f == Format::Png ? "a.png" : f == Format::Pdf ? "a.pdf" : "a.svg");
    canvas.save(path);
    const std::string bytes = readFile(path);
    std::remove(path.c_str());
    switch (f) {
      case Format::Png:
        ASSERT_GT(bytes.size(), 24u);
        EXPECT_EQ(bytes.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
        EXPECT_EQ(bigEndian32(bytes, 16), 300u);
        EXPECT_EQ(bigEndian32(bytes, 20), 150u);
        break;
      case Format::Pdf:
        EXPECT_EQ(bytes.substr(0, 5), "%PDF-");
        EXPECT_NE(bytes.find("%%EOF"), std::string::npos);
        EXPECT_NE(bytes.find("/MediaBox [ 0 0 150 75 ]"), std::string::npos);
        break;
      case Format::Svg:
        EXPECT_NE(bytes.find("<svg"), std::string::npos);
        EXPECT_NE(bytes.find("width=\"150"), std::string::npos);
        EXPECT_NE(bytes.find("</svg>"), std::string::npos);
        break;
    }
  }
}

// What save writes is what image() shows at every compression level, and
// higher levels give smaller files.
TEST(OffscreenCanvas, PngRoundTrip) {
  Canvas canvas(Format::Png, 120, 90, 72.0);
  WinRec_tag* win = canvas.window();
  Color_tag blue = rgb(0.1, 0.2, 0.9);
  wm_SetFGColorPtr(win, &blue);
  wm_SetLineWidth(win, 2.5);
  Real_point3 pts[3] = {{3.3, 80.1, 0}, {60.7, 4.2, 0}, {117.9, 77.7, 0}};
  wm_PolyLineRP3(win, pts, 3);
  std::size_t lastSize = 0;
  for (int level : {0, 3, 9}) {
    SCOPED_TRACE(level);
    canvas.setPngCompression(level);
    const std::string path = tempPath("round.png");
    canvas.save(path);
    const qvgui::offscreen::Image back = qvgui::offscreen::readPng(path);
    const std::size_t size = readFile(path).size();
    std::remove(path.c_str());
    EXPECT_EQ(back.width, 120);
    EXPECT_EQ(back.height, 90);
    EXPECT_EQ(back.pixels, canvas.image());
    if (lastSize) {
      EXPECT_LT(size, lastSize);
    }
    lastSize = size;
  }
  EXPECT_THROW(canvas.setPngCompression(10), std::invalid_argument);
  EXPECT_THROW(canvas.setPngCompression(-1), std::invalid_argument);
  EXPECT_THROW((void)qvgui::offscreen::readPng(tempPath("missing.png")), std::runtime_error);
}

TEST(OffscreenCanvas, ErrorsNameWhatWentWrong) {
  Canvas pdf(Format::Pdf, 10, 10, 72.0);
  try {
    pdf.save("/nonexistent-dir/x.pdf");
    ADD_FAILURE() << "no exception";
  } catch (const std::runtime_error& e) {
    EXPECT_NE(std::string(e.what()).find("/nonexistent-dir/x.pdf"), std::string::npos);
  }
  Canvas png(Format::Png, 10, 10, 72.0);
  EXPECT_THROW(png.save("/nonexistent-dir/x.png"), std::runtime_error);
  EXPECT_THROW((void)png.pixel(10, 0), std::out_of_range);
  EXPECT_THROW((void)pdf.pixel(0, 0), std::logic_error);
}

}  // namespace
