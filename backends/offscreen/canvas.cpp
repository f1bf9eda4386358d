// Canvas: the Cairo surface, the window record and its method table, and
// writing the result to a file.
#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "backends/offscreen/canvas_p.h"

namespace qvgui::offscreen {

namespace detail {

CanvasState::~CanvasState() {
  if (cr) cairo_destroy(cr);
  if (surface) cairo_surface_destroy(surface);
  if (win) wr_Destroy(win);
  if (methods) wm_Destroy(methods);
}

CanvasState& fillingStateOf(WinRec_tag* win) noexcept {
  CanvasState& st = *static_cast<CanvasState*>(gwr_Object(win));
  if (!st.finished && cairo_status(st.cr) != CAIRO_STATUS_SUCCESS) {
    cairo_destroy(st.cr);
    st.cr = cairo_create(st.surface);
    st.fillPending = false;  // the path went with the context
    if (st.format != Format::Png) cairo_scale(st.cr, 72.0 / st.dpi, 72.0 / st.dpi);
    applyClip(st, wm_GetLastClipRegion(win));
  }
  return st;
}

CanvasState& stateOf(WinRec_tag* win) noexcept {
  CanvasState& st = fillingStateOf(win);
  paintPendingFills(st);
  return st;
}

namespace {

cairo_status_t appendToDocument(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<CanvasState*>(closure)->document.append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

void checkCairo(cairo_status_t status, const char* what) {
  if (status != CAIRO_STATUS_SUCCESS)
    throw std::runtime_error(std::string(what) + ": " + cairo_status_to_string(status));
}

}  // namespace
}  // namespace detail

using detail::CanvasState;

Format formatForPath(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  const std::size_t dot = path.find_last_of('.');
  std::string ext;
  if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) ext = path.substr(dot);
  std::string lower = ext;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (lower == ".png") return Format::Png;
  if (lower == ".pdf") return Format::Pdf;
  if (lower == ".svg") return Format::Svg;
  throw std::invalid_argument("unsupported output extension \"" + ext + "\" in \"" + path +
                              "\" (expected .png, .pdf or .svg)");
}

Canvas::Canvas(Format format, int widthPx, int heightPx, double dpi) : state_(new CanvasState) {
  if (widthPx < 1 || widthPx > 32767 || heightPx < 1 || heightPx > 32767)
    throw std::invalid_argument("canvas size " + std::to_string(widthPx) + "x" + std::to_string(heightPx) +
                                " is outside 1 .. 32767 pixels");
  if (!std::isfinite(dpi) || dpi <= 0.0)
    throw std::invalid_argument("canvas dpi " + std::to_string(dpi) + " is not a positive number");
  CanvasState& st = *state_;
  st.owner = this;
  st.format = format;
  st.width = widthPx;
  st.height = heightPx;
  st.dpi = dpi;
  st.joinFills = format != Format::Png;

  const double toPoints = 72.0 / dpi;
  switch (format) {
    case Format::Png:
      st.surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, widthPx, heightPx);
      break;
    case Format::Pdf:
      st.surface = cairo_pdf_surface_create_for_stream(detail::appendToDocument, &st, widthPx * toPoints,
                                                       heightPx * toPoints);
      break;
    case Format::Svg:
      st.surface = cairo_svg_surface_create_for_stream(detail::appendToDocument, &st, widthPx * toPoints,
                                                       heightPx * toPoints);
      break;
  }
  detail::checkCairo(cairo_surface_status(st.surface), "cannot create the drawing surface");
  st.cr = cairo_create(st.surface);
  detail::checkCairo(cairo_status(st.cr), "cannot create the drawing context");
  // Vector pages are in points; drawing stays in pixels.
  if (format != Format::Png) cairo_scale(st.cr, toPoints, toPoints);
  cairo_set_source_rgb(st.cr, 1.0, 1.0, 1.0);
  cairo_paint(st.cr);

  st.methods = wm_Create();
  wm_InstallDefaults(st.methods);
  detail::installDrawing(st.methods);
  detail::installClip(st.methods);
  detail::installText(st.methods);
  detail::installColour(st.methods);
  detail::installShading(st.methods);
  st.win = wr_Create(detail::kCanvasWindowClass, &st);
  swr_winMethods(st.win, st.methods);
}

Canvas::~Canvas() = default;

WinRec_tag* Canvas::window() const noexcept { return state_->win; }
Format Canvas::format() const noexcept { return state_->format; }
int Canvas::width() const noexcept { return state_->width; }
int Canvas::height() const noexcept { return state_->height; }
double Canvas::dpi() const noexcept { return state_->dpi; }

void Canvas::save(const std::string& path) {
  CanvasState& st = *state_;
  detail::paintPendingFills(st);
  if (st.format == Format::Png) {
    if (!detail::writePng(path, detail::finalImage(st), st.width, st.height, st.pngLevel))
      throw std::runtime_error("cannot write \"" + path + "\"");
    return;
  }
  if (!st.finished) {
    st.finished = true;
    cairo_surface_finish(st.surface);
    detail::checkCairo(cairo_surface_status(st.surface), "cannot finish the document");
  }
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(st.document.data(), static_cast<std::streamsize>(st.document.size()));
  out.close();
  if (!out) throw std::runtime_error("cannot write \"" + path + "\"");
}

Pixel Canvas::pixel(int x, int y) const {
  const CanvasState& st = *state_;
  if (st.format != Format::Png) throw std::logic_error("a vector canvas has no pixels");
  if (x < 0 || y < 0 || x >= st.width || y >= st.height)
    throw std::out_of_range("pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") is outside the " +
                            std::to_string(st.width) + "x" + std::to_string(st.height) + " image");
  detail::paintPendingFills(*state_);
  cairo_surface_flush(st.surface);
  const unsigned char* row = cairo_image_surface_get_data(st.surface) +
                             static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(st.surface);
  std::uint32_t argb;
  std::memcpy(&argb, row + 4 * x, 4);
  const unsigned a = argb >> 24;
  // Cairo keeps premultiplied alpha; undo it with rounding.
  auto channel = [a](unsigned premultiplied) -> std::uint8_t {
    return a == 0 ? 0 : static_cast<std::uint8_t>((premultiplied * 255 + a / 2) / a);
  };
  return Pixel{channel((argb >> 16) & 0xff), channel((argb >> 8) & 0xff), channel(argb & 0xff),
               static_cast<std::uint8_t>(a)};
}

void Canvas::setFillAntialias(bool on) noexcept {
  detail::paintPendingFills(*state_);
  state_->fillAntialias = on;
}

void Canvas::setJoinFills(bool on) noexcept {
  detail::paintPendingFills(*state_);
  state_->joinFills = on;
}

void Canvas::setPngCompression(int level) {
  if (level < 0 || level > 9)
    throw std::invalid_argument("PNG compression level " + std::to_string(level) + " is outside 0 .. 9");
  state_->pngLevel = level;
}

std::vector<std::uint32_t> Canvas::image() const {
  if (state_->format != Format::Png) throw std::logic_error("a vector canvas has no pixels");
  detail::paintPendingFills(*state_);
  return detail::finalImage(*state_);
}

Canvas* Canvas::fromWindow(WinRec_tag* win) noexcept {
  if (!win || gwr_ObjectClass(win) != detail::kCanvasWindowClass) return nullptr;
  auto* st = static_cast<CanvasState*>(gwr_Object(win));
  return st && st->win == win ? st->owner : nullptr;
}

}  // namespace qvgui::offscreen
