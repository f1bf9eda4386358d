// Stream output of the kernel's value types, for logs and test failures.
#include <ostream>

#include "qvgui/geometry.h"

namespace gui_objects {

std::ostream& operator<<(std::ostream& os, const Point2i& p) {
  return os << '(' << p.getX() << ", " << p.getY() << ')';
}
std::ostream& operator<<(std::ostream& os, const Point2f& p) {
  return os << '(' << p.getX() << ", " << p.getY() << ')';
}
std::ostream& operator<<(std::ostream& os, const Point2d& p) {
  return os << '(' << p.getX() << ", " << p.getY() << ')';
}
std::ostream& operator<<(std::ostream& os, const Point3f& p) {
  return os << '(' << p.getX() << ", " << p.getY() << ", " << p.getZ() << ')';
}
std::ostream& operator<<(std::ostream& os, const Point3d& p) {
  return os << '(' << p.getX() << ", " << p.getY() << ", " << p.getZ() << ')';
}
std::ostream& operator<<(std::ostream& os, const Point4d& p) {
  return os << '(' << p.getX() << ", " << p.getY() << ", " << p.getZ() << ", w " << p.getW() << ')';
}
std::ostream& operator<<(std::ostream& os, const Vector2i& v) {
  return os << '<' << v.getX() << ", " << v.getY() << '>';
}
std::ostream& operator<<(std::ostream& os, const Vector2d& v) {
  return os << '<' << v.getX() << ", " << v.getY() << '>';
}
std::ostream& operator<<(std::ostream& os, const Vector3d& v) {
  return os << '<' << v.getX() << ", " << v.getY() << ", " << v.getZ() << '>';
}
std::ostream& operator<<(std::ostream& os, const Color3d& c) {
  return os << "rgb(" << c.getRed() << ", " << c.getGreen() << ", " << c.getBlue() << ')';
}
std::ostream& operator<<(std::ostream& os, const Color4d& c) {
  return os << "rgba(" << c.getRed() << ", " << c.getGreen() << ", " << c.getBlue() << ", " << c.getAlpha()
            << ')';
}
std::ostream& operator<<(std::ostream& os, const Color4b& c) {
  return os << "rgba8(" << int{c.getRed()} << ", " << int{c.getGreen()} << ", " << int{c.getBlue()} << ", "
            << int{c.getAlpha()} << ')';
}

// Printed row by row, as the matrix is read on paper.
std::ostream& operator<<(std::ostream& os, const Matrix4x4d& m) {
  os << '[';
  for (int row = 1; row <= 4; ++row) {
    for (int column = 1; column <= 4; ++column) os << m.get(row, column) << (column < 4 ? " " : "");
    if (row < 4) os << "; ";
  }
  return os << ']';
}

std::ostream& operator<<(std::ostream& os, Transformer::TransformMode mode) {
  switch (mode) {
    case Transformer::Identity:
      return os << "Identity";
    case Transformer::ScaleOffset:
      return os << "ScaleOffset";
    case Transformer::Affine:
      return os << "Affine";
    case Transformer::General:
      return os << "General";
  }
  return os << "TransformMode(" << static_cast<int>(mode) << ')';
}

}  // namespace gui_objects

std::ostream& operator<<(std::ostream& os, const qvpoint& p) {
  return os << "{v " << p.v << ", h " << p.h << '}';
}
std::ostream& operator<<(std::ostream& os, const Spoint2& p) {
  return os << '{' << p.x << ", " << p.y << '}';
}
std::ostream& operator<<(std::ostream& os, const Real_point& p) {
  return os << '{' << p.x << ", " << p.y << '}';
}
std::ostream& operator<<(std::ostream& os, const Real_point3& p) {
  return os << '{' << p.x << ", " << p.y << ", " << p.z << '}';
}
