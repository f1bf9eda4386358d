// PNG files through libpng: writing with the compression level the canvas
// asks for (Cairo's own writer always compresses hard, which costs more than
// drawing a figure does), and reading back, for comparing with references.
#include <png.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "backends/offscreen/canvas_p.h"

namespace qvgui::offscreen::detail {

namespace {

// Everything with a destructor lives in the caller, so libpng's longjmp on
// error skips nothing.
bool writeRows(std::FILE* file, const std::uint32_t* image, int w, int h, bool alpha, int level,
               unsigned char* row) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (!png) return false;
  png_infop info = png_create_info_struct(png);
  if (!info) {
    png_destroy_write_struct(&png, nullptr);
    return false;
  }
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, file);
  png_set_IHDR(png, info, static_cast<png_uint_32>(w), static_cast<png_uint_32>(h), 8,
               alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_compression_level(png, level);
  // At the fast levels one fixed filter and run-length matching do nearly as
  // well on figures (flat areas, gradients along rows and columns) as the
  // adaptive filter choice, at a fraction of its cost: on the sample figures,
  // files a seventh to a fifth larger than level 6 for a third to a sixth of
  // the time. An image that is shaded all over compresses worse this way (up
  // to twice the size); level 6 and above are for files that travel.
  if (level <= 3) {
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
    png_set_compression_strategy(png, Z_RLE);
  } else {
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_ALL_FILTERS);
  }
  png_write_info(png, info);
  const int channels = alpha ? 4 : 3;
  for (int y = 0; y < h; ++y) {
    const std::uint32_t* src = image + static_cast<std::size_t>(y) * w;
    unsigned char* out = row;
    for (int x = 0; x < w; ++x) {
      const std::uint32_t p = src[x];
      out[0] = static_cast<unsigned char>(p >> 16);
      out[1] = static_cast<unsigned char>(p >> 8);
      out[2] = static_cast<unsigned char>(p);
      if (alpha) out[3] = static_cast<unsigned char>(p >> 24);
      out += channels;
    }
    png_write_row(png, row);
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

bool writePng(const std::string& path, const std::vector<std::uint32_t>& image, int w, int h, int level) {
  bool alpha = false;
  for (std::uint32_t p : image)
    if ((p >> 24) != 0xff) {
      alpha = true;
      break;
    }
  std::vector<unsigned char> row(static_cast<std::size_t>(w) * 4);
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return false;
  const bool written = writeRows(file, image.data(), w, h, alpha, level, row.data());
  const bool closed = std::fclose(file) == 0;
  if (!written || !closed) std::remove(path.c_str());
  return written && closed;
}

}  // namespace qvgui::offscreen::detail

namespace qvgui::offscreen {

Image readPng(const std::string& path) {
  png_image png;
  std::memset(&png, 0, sizeof png);
  png.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&png, path.c_str()))
    throw std::runtime_error("cannot read \"" + path + "\": " + png.message);
  // 0xAARRGGBB words in memory order are B, G, R, A on little-endian hosts.
  static const std::uint32_t probe = 1;
  const bool little = *reinterpret_cast<const unsigned char*>(&probe) == 1;
  png.format = little ? PNG_FORMAT_BGRA : PNG_FORMAT_ARGB;
  Image out;
  out.width = static_cast<int>(png.width);
  out.height = static_cast<int>(png.height);
  out.pixels.resize(static_cast<std::size_t>(png.width) * png.height);
  if (!png_image_finish_read(&png, nullptr, out.pixels.data(), 0, nullptr)) {
    const std::string message = png.message;
    png_image_free(&png);
    throw std::runtime_error("cannot read \"" + path + "\": " + message);
  }
  return out;
}

}  // namespace qvgui::offscreen
