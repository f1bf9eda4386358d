// The flat rectangle functions on qvrect and Real_rect records.
#include <cmath>
#include <ostream>

#include "geometry/integer_p.h"
#include "qvgui/geometry.h"

using gui_objects::wrap::add;
using gui_objects::wrap::sub;

void guiSetRect(qvrect* r, std::int32_t left, std::int32_t top, std::int32_t right,
                std::int32_t bottom) noexcept {
  if (r == nullptr) return;
  r->top = top;
  r->left = left;
  r->bottom = bottom;
  r->right = right;
}

void guiCopyRect(qvrect* dst, const qvrect* src) noexcept {
  if (dst != nullptr && src != nullptr) *dst = *src;
}

int guiPtInRect(qvpoint p, const qvrect* r) noexcept {
  if (r == nullptr) return 0;
  return (r->left <= p.h && p.h < r->right && r->top <= p.v && p.v < r->bottom) ? 1 : 0;
}

int guiPointInRect(const qvpoint* p, const qvrect* r) noexcept {
  if (p == nullptr || r == nullptr) return 0;
  return (r->left <= p->h && p->h <= r->right && r->top <= p->v && p->v <= r->bottom) ? 1 : 0;
}

void guiOffsetRect(qvrect* r, std::int32_t dx, std::int32_t dy) noexcept {
  if (r == nullptr) return;
  r->left = add(r->left, dx);
  r->right = add(r->right, dx);
  r->top = add(r->top, dy);
  r->bottom = add(r->bottom, dy);
}

void guiInsetRect(qvrect* r, std::int32_t dx, std::int32_t dy) noexcept {
  if (r == nullptr) return;
  r->left = add(r->left, dx);
  r->right = sub(r->right, dx);
  r->top = add(r->top, dy);
  r->bottom = sub(r->bottom, dy);
}

bool guiEqualRect(const qvrect* a, const qvrect* b) noexcept {
  if (a == nullptr || b == nullptr) return false;
  return a->top == b->top && a->left == b->left && a->bottom == b->bottom && a->right == b->right;
}

bool guiSectRect(const qvrect* a, const qvrect* b, qvrect* out) noexcept {
  if (a == nullptr || b == nullptr) {
    if (out != nullptr) *out = qvrect{0, 0, 0, 0};
    return false;
  }
  // Closed in x, open in y: window code relies on vertical edges touching.
  const bool meets = a->right >= b->left && a->left <= b->right && a->top < b->bottom && a->bottom > b->top;
  if (out != nullptr) {
    if (meets) {
      const qvrect sect{a->top > b->top ? a->top : b->top, a->left > b->left ? a->left : b->left,
                        a->bottom < b->bottom ? a->bottom : b->bottom,
                        a->right < b->right ? a->right : b->right};
      *out = sect;  // out may alias a or b
    } else {
      *out = qvrect{0, 0, 0, 0};
    }
  }
  return meets;
}

void guiUnionRect(const qvrect* a, const qvrect* b, qvrect* out) noexcept {
  if (a == nullptr || b == nullptr || out == nullptr) return;
  const qvrect u{a->top < b->top ? a->top : b->top, a->left < b->left ? a->left : b->left,
                 a->bottom > b->bottom ? a->bottom : b->bottom, a->right > b->right ? a->right : b->right};
  *out = u;
}

std::int32_t guiRectX(const qvrect* r) noexcept { return r == nullptr ? 0 : r->left; }
std::int32_t guiRectY(const qvrect* r) noexcept { return r == nullptr ? 0 : r->top; }
std::int32_t guiRectWidth(const qvrect* r) noexcept { return r == nullptr ? 0 : sub(r->right, r->left); }
std::int32_t guiRectHeight(const qvrect* r) noexcept { return r == nullptr ? 0 : sub(r->bottom, r->top); }

bool guiIsEmptyRect(const qvrect* r) noexcept {
  if (r == nullptr) return false;
  return r->top == r->bottom || r->left == r->right;
}

bool guiAreRectsSameSize(const qvrect* a, const qvrect* b) noexcept {
  if (a == nullptr || b == nullptr) return false;
  return guiRectWidth(a) == guiRectWidth(b) && guiRectHeight(a) == guiRectHeight(b);
}

namespace {

constexpr double kPi = 3.14159265358979323846;

// The corner travels as a qvpoint, so it is narrowed to 16 bits on the way
// in and out, like every device point of the flat interface.
qvpoint rotateCorner(std::int32_t x, std::int32_t y, double radians) noexcept {
  const qvpoint p{static_cast<std::int16_t>(y), static_cast<std::int16_t>(x)};
  if (p.h == 0 && p.v == 0) return p;
  const double px = p.h, py = p.v;
  const double rho = std::sqrt(px * px + py * py);
  // y is negated because it grows downwards: positive degrees turn
  // counter-clockwise on screen.
  const double theta = std::atan2(-py, px) + radians;
  const double nx = std::floor(rho * std::cos(theta) + 0.5);
  const double ny = -std::floor(rho * std::sin(theta) + 0.5);
  return qvpoint{static_cast<std::int16_t>(static_cast<std::int32_t>(ny)),
                 static_cast<std::int16_t>(static_cast<std::int32_t>(nx))};
}

}  // namespace

void guiRotateRect(qvrect* r, int degrees) noexcept {
  if (r == nullptr) return;
  const double radians = kPi * static_cast<double>(degrees) / 180.0;
  const qvpoint a = rotateCorner(r->right, r->top, radians);
  const qvpoint b = rotateCorner(r->left, r->top, radians);
  const qvpoint c = rotateCorner(r->left, r->bottom, radians);
  const qvpoint d = rotateCorner(r->right, r->bottom, radians);
  r->top = a.v;
  r->left = b.h;
  r->bottom = c.v;
  r->right = d.h;
}

void guiSetRealRect(Real_rect* r, double a, double b, double c, double d) noexcept {
  if (r == nullptr) return;
  r->top = a;
  r->left = b;
  r->bottom = c;
  r->right = d;
}

std::ostream& operator<<(std::ostream& os, const qvrect& r) {
  return os << "qvrect(top " << r.top << ", left " << r.left << ", bottom " << r.bottom << ", right "
            << r.right << ")";
}

std::ostream& operator<<(std::ostream& os, const Real_rect& r) {
  return os << "Real_rect(" << r.top << ", " << r.left << ", " << r.bottom << ", " << r.right << ")";
}
