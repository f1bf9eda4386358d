// Turns interpreted text into glyph runs on baselines, aligned on the anchor
// and rotated about it, with the logical and ink boxes.
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "text/layout_p.h"

namespace gui_objects::font::detail {

namespace {

constexpr int kTableSet = 1;

struct Line {
  double width = 0.0;
  double ascent = 0.0;   // pixels above the baseline
  double descent = 0.0;  // pixels below it
  // Ink in line coordinates: x from the line start, y upwards from the baseline.
  double inkLeft = std::numeric_limits<double>::infinity();
  double inkRight = -std::numeric_limits<double>::infinity();
  double inkBottom = std::numeric_limits<double>::infinity();
  double inkTop = -std::numeric_limits<double>::infinity();
  double baseline = 0.0;  // pixels below the first baseline
  double shift = 0.0;     // x of the line start within the block
};

struct Rotation {
  double c = 1.0, s = 0.0;
  explicit Rotation(double degrees) {
    // Quarter turns exactly, so upright and vertical labels keep exact boxes.
    const double quarters = degrees / 90.0;
    if (quarters == std::floor(quarters) && std::abs(quarters) < 1e9) {
      const long q = static_cast<long>(quarters) % 4;
      const int k = static_cast<int>(q < 0 ? q + 4 : q);
      constexpr double kCos[4] = {1, 0, -1, 0}, kSin[4] = {0, 1, 0, -1};
      c = kCos[k];
      s = kSin[k];
      return;
    }
    const double radians = degrees * (M_PI / 180.0);
    c = std::cos(radians);
    s = std::sin(radians);
  }
  // Counterclockwise on the screen, whose y grows downwards.
  [[nodiscard]] Real_point apply(double x, double y) const noexcept {
    return {x * c + y * s, -x * s + y * c};
  }
};

Real_rect boundsOf(const Real_point* p, int n) {
  Real_rect r{p[0].y, p[0].x, p[0].y, p[0].x};
  for (int k = 1; k < n; ++k) {
    r.top = std::min(r.top, p[k].y);
    r.bottom = std::max(r.bottom, p[k].y);
    r.left = std::min(r.left, p[k].x);
    r.right = std::max(r.right, p[k].x);
  }
  return r;
}

Real_rect rotatedBounds(const Real_rect& box, const Rotation& rot, Real_point* corners) {
  Real_point local[4];
  Real_point* p = corners != nullptr ? corners : local;
  p[0] = rot.apply(box.left, box.top);
  p[1] = rot.apply(box.right, box.top);
  p[2] = rot.apply(box.right, box.bottom);
  p[3] = rot.apply(box.left, box.bottom);
  return boundsOf(p, 4);
}

class Placer {
 public:
  explicit Placer(const StringProps& props)
      : scale_(layoutDpi(props.dpi) / 72.0),
        base_(FontFactory::make(props)),
        baseFace_(afmFaceMetrics(base_.afmIndex())) {
    newLine();
  }

  void place(const std::vector<TextAtom>& atoms, TextLayout& out) {
    for (const TextAtom& a : atoms) {
      switch (a.op) {
        case AtomOp::Glyphs:
          glyphs(a, out);
          break;
        case AtomOp::Space:
          pen_ += a.space * scale_;
          reach();
          break;
        case AtomOp::LineBreak:
          newLine();
          break;
        case AtomOp::ScriptMark:
          scripts_.emplace_back(pen_, pen_);
          break;
        case AtomOp::ScriptSwap:
          if (!scripts_.empty()) {
            scripts_.back().second = pen_;
            pen_ = scripts_.back().first;
          }
          break;
        case AtomOp::ScriptJoin:
          if (!scripts_.empty()) {
            pen_ = std::max(pen_, scripts_.back().second);
            scripts_.pop_back();
          }
          break;
      }
    }
  }

  std::vector<Line>& lines() { return lines_; }
  [[nodiscard]] double basePitch(double lineSpacing) const {
    return (baseFace_.ury - baseFace_.lly) * base_.size() / 1000.0 * scale_ * lineSpacing;
  }
  [[nodiscard]] double baseCapHeight() const { return baseFace_.capHeight * base_.size() / 1000.0 * scale_; }

 private:
  void newLine() {
    Line& line = lines_.emplace_back();
    line.ascent = baseFace_.ascender * base_.size() / 1000.0 * scale_;
    line.descent = -baseFace_.descender * base_.size() / 1000.0 * scale_;
    pen_ = 0.0;
    scripts_.clear();
  }

  void reach() { lines_.back().width = std::max(lines_.back().width, pen_); }

  void glyphs(const TextAtom& a, TextLayout& out) {
    Line& line = lines_.back();
    GlyphRun& run = out.runs.emplace_back();
    run.afmIndex = a.afmIndex;
    run.size = a.size;
    run.color = a.color;
    run.bytes = a.bytes;
    run.line = static_cast<int>(lines_.size()) - 1;
    run.x = pen_;
    run.y = -a.rise * scale_;  // line coordinates until the block is placed
    run.glyphX.reserve(a.bytes.size());

    const double k = a.size * scale_ / 1000.0;
    const double rise = a.rise * scale_;
    int previous = -1;
    for (char& byte : run.bytes) {
      auto code = static_cast<unsigned char>(byte);
      GlyphMetrics g{};
      if (!afmGlyph(a.afmIndex, kTableSet, code, &g)) {
        code = '?';
        byte = '?';
        if (!afmGlyph(a.afmIndex, kTableSet, code, &g)) g = GlyphMetrics{};
      }
      if (previous >= 0)
        pen_ += afmKern(a.afmIndex, kTableSet, static_cast<unsigned char>(previous), code) * k;
      run.glyphX.push_back(pen_ - run.x);
      if (g.urx > g.llx && g.ury > g.lly) {
        line.inkLeft = std::min(line.inkLeft, pen_ + g.llx * k);
        line.inkRight = std::max(line.inkRight, pen_ + g.urx * k);
        line.inkBottom = std::min(line.inkBottom, rise + g.lly * k);
        line.inkTop = std::max(line.inkTop, rise + g.ury * k);
      }
      pen_ += g.advance * k;
      previous = code;
    }
    run.advance = pen_ - run.x;
    reach();

    // Symbol glyphs sit in the line of the text face around them.
    const FaceMetrics face = isPictorialFace(a.afmIndex) && !isPictorialFace(base_.afmIndex())
                                 ? baseFace_
                                 : afmFaceMetrics(a.afmIndex);
    line.ascent = std::max(line.ascent, rise + face.ascender * k);
    line.descent = std::max(line.descent, -face.descender * k - rise);
  }

  const double scale_;
  const Font base_;
  const FaceMetrics baseFace_;
  std::vector<Line> lines_;
  std::vector<std::pair<double, double>> scripts_;  // (mark, end of the first script)
  double pen_ = 0.0;
};

}  // namespace

TextLayout layoutAtoms(const std::vector<TextAtom>& atoms, const StringProps& props) {
  TextLayout out;
  out.runs.reserve(atoms.size());
  Placer placer(props);
  placer.place(atoms, out);
  std::vector<Line>& lines = placer.lines();
  out.lineCount = static_cast<int>(lines.size());

  const double pitch = placer.basePitch(layoutLineSpacing(props.lineSpacing));
  for (std::size_t k = 1; k < lines.size(); ++k)
    lines[k].baseline = lines[k - 1].baseline + std::max(pitch, lines[k - 1].descent + lines[k].ascent);
  for (const Line& line : lines) out.width = std::max(out.width, line.width);
  out.ascent = lines.front().ascent;
  out.descent = lines.back().baseline + lines.back().descent;

  const double align =
      props.horzAlign == TEXT_HALIGN_CENTER ? 0.5 : (props.horzAlign == TEXT_HALIGN_RIGHT ? 1.0 : 0.0);
  for (Line& line : lines) line.shift = (out.width - line.width) * align;
  const double dx = -out.width * align;
  double dy = 0.0;
  switch (props.vertAlign) {
    case TEXT_VALIGN_TOP:
      dy = out.ascent;
      break;
    case TEXT_VALIGN_CAP:
      dy = placer.baseCapHeight();
      break;
    case TEXT_VALIGN_MIDDLE:
      dy = (out.ascent - out.descent) / 2.0;
      break;
    case TEXT_VALIGN_BOTTOM:
      dy = -out.descent;
      break;
    default:
      break;
  }

  out.rotation = std::isfinite(props.rotation) ? props.rotation : 0.0;
  const Rotation rot(out.rotation);
  for (GlyphRun& run : out.runs) {
    const Line& line = lines[static_cast<std::size_t>(run.line)];
    const Real_point p = rot.apply(dx + line.shift + run.x, dy + line.baseline + run.y);
    run.x = p.x;
    run.y = p.y;
  }

  out.logical = Real_rect{dy - out.ascent, dx, dy + out.descent, dx + out.width};
  out.bounds = rotatedBounds(out.logical, rot, out.corners);

  Real_rect ink{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
                -std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
  for (const Line& line : lines) {
    if (line.inkLeft > line.inkRight) continue;
    out.hasInk = true;
    ink.left = std::min(ink.left, dx + line.shift + line.inkLeft);
    ink.right = std::max(ink.right, dx + line.shift + line.inkRight);
    ink.top = std::min(ink.top, dy + line.baseline - line.inkTop);
    ink.bottom = std::max(ink.bottom, dy + line.baseline - line.inkBottom);
  }
  if (out.hasInk) {
    out.ink = ink;
    out.inkBounds = rotatedBounds(ink, rot, nullptr);
  }
  return out;
}

}  // namespace gui_objects::font::detail
