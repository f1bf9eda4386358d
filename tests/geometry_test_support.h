// Constants and a vertex-set fixture that the geometry and clipping tests share.
#pragma once

#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "qvgui/clipping.h"

namespace gui_objects {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kPi = 3.14159265358979323846;

// A vertex set over a plain list of points.
class PointList : public VertexSet {
 public:
  explicit PointList(std::vector<Point3d> points) : points_(std::move(points)) {}
  Point3d getVertex(std::size_t index) const override { return points_.at(index); }
  std::size_t getNumVertices() const override { return points_.size(); }

 private:
  std::vector<Point3d> points_;
};

}  // namespace gui_objects
