// A first look at libqvgui from outside: the version texts, and data points
// mapped to view coordinates through a Transformer.
#include <qvgui/geometry.h>

#include <iostream>

namespace {

const char* modeName(gui_objects::Transformer::TransformMode mode) {
  switch (mode) {
    case gui_objects::Transformer::Identity:
      return "Identity";
    case gui_objects::Transformer::ScaleOffset:
      return "ScaleOffset";
    case gui_objects::Transformer::Affine:
      return "Affine";
    case gui_objects::Transformer::General:
      return "General";
  }
  return "?";
}

void show(const char* label, const gui_objects::Matrix4x4d& matrix, const gui_objects::Point3d& p) {
  const gui_objects::Transformer transformer(matrix);
  std::cout << label << ": mode " << modeName(transformer.getMode()) << ", " << p << " -> "
            << transformer.transform(p) << '\n';
}

}  // namespace

int main() {
  using namespace gui_objects;
  std::cout << "libqvgui " << libqvgui_version << " (built " << libqvgui_build_date << ")\n";

  // Data limits x in [0, 50], y in [-1, 1] mapped onto a 640 x 480 viewport.
  const Matrix4x4d dataToView = Matrix4x4d::createTranslation(Vector3d(0, 240, 0)) *
                                Matrix4x4d::createScale(Vector3d(640.0 / 50, 240, 1));
  show("scale and offset", dataToView, Point3d(25, 0.5, 0));

  // The same point seen through a perspective frustum after a quarter turn.
  const Matrix4x4d view = Matrix4x4d::createFrustum(-1, 1, -1, 1, 1, 100) *
                          Matrix4x4d::createTranslation(Vector3d(0, 0, -10)) *
                          Matrix4x4d::createZRotation(1.5707963267948966);
  show("perspective", view, Point3d(1, 0, 0));
  return 0;
}
