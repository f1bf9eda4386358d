// Figure drawing through a window's method table.
#include <cmath>
#include <cstdint>

#include "plot/painter_p.h"
#include "qvgui/raster.h"
#include "qvgui/text.h"

namespace qvgui::plot::detail {

namespace {

LineTypes toLineType(LineStyle s) noexcept {
  switch (s) {
    case LineStyle::Solid:
      return LINE_SOLID;
    case LineStyle::Dashed:
      return LINE_DASHED;
    case LineStyle::Dotted:
      return LINE_DOTTED;
    case LineStyle::DashDot:
      return LINE_DASHDOT;
    case LineStyle::None:
      break;
  }
  return LINE_NONE;
}

// Pixel coordinates far outside any canvas are clamped so that rounding to the
// back end's integer types cannot wrap.
std::int32_t toPixel(double v) noexcept {
  if (!(v > -1e6)) return -1000000;
  if (v > 1e6) return 1000000;
  return static_cast<std::int32_t>(std::lround(v));
}

short toShort(double v) noexcept {
  if (!(v > -32000)) return -32000;
  if (v > 32000) return 32000;
  return static_cast<short>(std::lround(v));
}

qvrect toRect(double left, double top, double right, double bottom) noexcept {
  return qvrect{toPixel(top), toPixel(left), toPixel(bottom), toPixel(right)};
}

}  // namespace

Painter::Painter(WinRec_tag* win) : win_(win), color_(create_ColorPtr()) {
  ppp_ = wm_PixelsPerPoint(win);
  if (!(ppp_ > 0)) ppp_ = 1.0;
  wm_SetLineJoin(win_, LINE_JOIN_ROUND);
  wm_SetLineCap(win_, LINE_CAP_BUTT);
}

Painter::~Painter() {
  unclip();
  destroy_ColorPtr(color_);
  for (CachedFont& f : fonts_) destroy_font(f.font);
}

void Painter::setColor(const Rgb& c) {
  set_ColorPtr_red(color_, c.r);
  set_ColorPtr_green(color_, c.g);
  set_ColorPtr_blue(color_, c.b);
  wm_SetFGColorPtr(win_, color_);
}

void Painter::setLine(double widthPt, LineStyle style) {
  wm_SetLineWidth(win_, widthPt);
  wm_SetLineType(win_, toLineType(style));
}

void Painter::polyline(const std::vector<Pt>& pts) {
  if (pts.size() < 2) return;
  lineBuffer_.resize(pts.size());
  for (std::size_t k = 0; k < pts.size(); ++k) lineBuffer_[k] = Real_point3{pts[k].x, pts[k].y, 0.0};
  wm_PolyLineRP3(win_, lineBuffer_.data(), static_cast<int>(lineBuffer_.size()));
}

void Painter::fillPolygon(const std::vector<Pt>& pts) {
  if (pts.size() < 3) return;
  const Polygon2 poly = toPolygon(pts);
  wm_PaintPoly(win_, &poly, nullptr, nullptr);
}

void Painter::fillShaded(const std::vector<Pt>& pts, std::vector<double>& rgb) {
  if (pts.size() < 3 || rgb.size() != 3 * pts.size()) return;
  const Polygon2 poly = toPolygon(pts);
  wm_FillInterpPoly(win_, &poly, rgb.data(), nullptr);
}

Polygon2 Painter::toPolygon(const std::vector<Pt>& pts) {
  polyBuffer_.resize(pts.size());
  for (std::size_t k = 0; k < pts.size(); ++k)
    polyBuffer_[k] = qvpoint32{toPixel(pts[k].x), toPixel(pts[k].y)};
  return Polygon2{polyBuffer_.data(), static_cast<std::int32_t>(pts.size())};
}

void Painter::strokePolygon(const std::vector<Pt>& pts) {
  if (pts.size() < 2) return;
  std::vector<Pt> closed = pts;
  closed.push_back(pts.front());
  polyline(closed);
}

void Painter::fillRect(double left, double top, double right, double bottom) {
  const qvrect r = toRect(left, top, right, bottom);
  wm_PaintRect(win_, &r);
}

void Painter::fillOval(Pt c, double radius) {
  const qvrect r = toRect(c.x - radius, c.y - radius, c.x + radius, c.y + radius);
  wm_PaintOval(win_, &r);
}

void Painter::strokeOval(Pt c, double radius) {
  const qvrect r = toRect(c.x - radius, c.y - radius, c.x + radius, c.y + radius);
  wm_FrameOval(win_, &r);
}

void Painter::setFont(const FontChoice& choice) {
  const CachedFont* found = nullptr;
  for (const CachedFont& f : fonts_) {
    if (f.choice.face == choice.face && f.choice.sizePt == choice.sizePt && f.choice.bold == choice.bold &&
        f.choice.italic == choice.italic) {
      found = &f;
      break;
    }
  }
  if (found == nullptr) {
    zrFont* font = create_font();
    font_set_name(font, choice.face.c_str());
    font_set_size(font, choice.sizePt);
    font_set_weight(font, choice.bold ? FONT_WEIGHT_BOLD : FONT_WEIGHT_NORMAL);
    font_set_angle(font, choice.italic ? FONT_ANGLE_ITALIC : FONT_ANGLE_NORMAL);
    int index = 0;
    guiDetermineAFMindex(font, &index);
    fonts_.push_back(CachedFont{choice, font, index});
    found = &fonts_.back();
  }
  if (found == current_) return;
  current_ = found;
  wm_SetWindowFont(win_, found->font);
}

// Measured with the library's own metrics in full precision, so layout does
// not depend on what a back end answers (the recording back end answers 0).
double Painter::textWidth(const std::string& s) {
  if (current_ == nullptr) setFont(FontChoice{});
  return gui_objects::font::afmStringWidth(current_->afmIndex, 1, s.c_str(), s.size()) *
         current_->choice.sizePt * ppp_ / 1000.0;
}

double Painter::textAscent() {
  if (current_ == nullptr) setFont(FontChoice{});
  return gui_objects::font::afmFaceMetrics(current_->afmIndex).ascender * current_->choice.sizePt * ppp_ /
         1000.0;
}

double Painter::textDescent() {
  if (current_ == nullptr) setFont(FontChoice{});
  return -gui_objects::font::afmFaceMetrics(current_->afmIndex).descender * current_->choice.sizePt * ppp_ /
         1000.0;
}

void Painter::text(Pt anchor, const std::string& s, TextHorzAlign h, TextVertAlign v, int rotationDeg) {
  wm_SetTextAlignment(win_, h, v);
  wm_SetTextRotation(win_, rotationDeg);
  wm_MoveTo(win_, toShort(anchor.x), toShort(anchor.y));
  wm_DrawString(win_, s.c_str());
}

void Painter::clip(double left, double top, double right, double bottom) {
  unclip();
  clipRegion_ = wm_CreateClipRegion(win_);
  if (clipRegion_ == nullptr) return;
  const qvrect r = toRect(left, top, right, bottom);
  wm_UnionRectRegion(win_, &r, clipRegion_);
  wm_SetClipRegion(win_, clipRegion_);
}

void Painter::unclip() {
  if (clipRegion_ == nullptr) return;
  wm_SetClipRegion(win_, nullptr);
  wm_DestroyClipRegion(win_, clipRegion_);
  clipRegion_ = nullptr;
}

}  // namespace qvgui::plot::detail
