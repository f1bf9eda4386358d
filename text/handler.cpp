// The text handlers and the face-at-a-size value they measure with.
#include <cmath>

#include "text/layout_p.h"

namespace gui_objects::font {

namespace {

constexpr int kCourier = 8;

}  // namespace

// ---- Font ---------------------------------------------------------------------

Font::Font(int afmIndex, double size) noexcept
    : afmIndex_(afmIndex >= 0 && afmIndex < kAfmFontCount ? afmIndex : kCourier),
      size_(detail::layoutSize(size)) {}

bool Font::isPictorial() const noexcept { return detail::isPictorialFace(afmIndex_); }

double Font::width(std::string_view bytes) const noexcept {
  return afmStringWidth(afmIndex_, 1, bytes.data(), bytes.size()) * size_ / 1000.0;
}

double Font::ascent() const noexcept { return afmFaceMetrics(afmIndex_).ascender * size_ / 1000.0; }

double Font::descent() const noexcept { return -afmFaceMetrics(afmIndex_).descender * size_ / 1000.0; }

double Font::capHeight() const noexcept { return afmFaceMetrics(afmIndex_).capHeight * size_ / 1000.0; }

double Font::boxHeight() const noexcept {
  const FaceMetrics m = afmFaceMetrics(afmIndex_);
  return (m.ury - m.lly) * size_ / 1000.0;
}

// ---- FontFactory -------------------------------------------------------------

Font FontFactory::make(const char* faceName, int weight, int angle, double size) {
  return Font(afmIndexFor(faceName != nullptr ? faceName : "", weight, angle), size);
}

Font FontFactory::make(const StringProps& props) {
  return make(props.faceName.c_str(), props.weight, props.angle, props.size);
}

Font FontFactory::symbol(double size) noexcept { return Font(28, size); }

StringProps FontFactory::propsFor(zrFont* font) {
  StringProps p;
  if (font == nullptr) return p;
  const char* name = font->getSystemName();
  p.faceName = name != nullptr ? name : "";
  p.weight = font->getWeight();
  p.angle = font->getAngle();
  p.size = detail::layoutSize(font->getPointSize());
  return p;
}

// ---- TextHandler ---------------------------------------------------------------

TextError TextHandler::validate(std::string_view text) const {
  return Interpreter(kind_).interpret(text, StringProps{}, nullptr);
}

TextLayout TextHandler::layout(std::string_view text, const StringProps& props) const {
  std::vector<TextAtom> atoms;
  atoms.reserve(8);  // a few runs and line breaks cover most labels
  TextError error = Interpreter(kind_).interpret(text, props, &atoms);
  TextLayout out = detail::layoutAtoms(atoms, props);
  out.error = std::move(error);
  return out;
}

}  // namespace gui_objects::font
