// Three-dimensional axes: nice limits on x, y and z, the camera fitted to the
// plot box, patch normals and lighting of the surface, faces painted far to
// near, then the box walls, ticks and labels.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "plot/render_p.h"
#include "qvgui/bridge.h"
#include "qvgui/clipping.h"
#include "qvgui/geometry.h"
#include "qvgui/host.h"
#include "qvgui/lighting.h"
#include "qvgui/surface.h"

namespace qvgui::plot::detail {

using namespace gui_objects;
using tickpicker::kXAxis;
using tickpicker::kYAxis;
using tickpicker::kZAxis;

namespace {

// Half sizes of the plot box in normalised units (x, y, z).
constexpr double kBoxHalf[3] = {0.5, 0.5, 0.4};

class Viewport final : public camera_utils::ViewPortTransformProxy {
 public:
  Viewport(const Rectangle2d& r, const Matrix4x4d& view) : rect_(r), view_(view) {}
  Rectangle2d getPosition() const override { return rect_; }
  Matrix4x4d getProjectionTransform() const override { return Matrix4x4d(); }
  Matrix4x4d getViewTransform() const override { return view_; }
  bool isWarpToFillOff() const override { return true; }
  bool isCameraViewAngleModeAuto() const override { return true; }
  bool isXConstraint() const override { return false; }

 private:
  Rectangle2d rect_;
  Matrix4x4d view_;
};

// The surface as the patch-normal code sees it: face-vertex arrays made from
// the grid, normals stored as copies.
class GridPatch final : public PatchProxy {
 public:
  explicit GridPatch(const FaceVertexDescriptor& d) : d_(d) {}
  const zrArray_tag* getFaces() override { return d_.faces; }
  const zrArray_tag* getVertices() override { return d_.vertices; }
  void setVertexNormals(zrArray_tag* n) override { vertexNormals_.reset(zrDuplicateArray(n)); }
  zrArray_tag* getVertexNormals() override { return vertexNormals_.get(); }
  void setFaceNormals(zrArray_tag* n) override { faceNormals_.reset(zrDuplicateArray(n)); }
  zrArray_tag* getFaceNormals() override { return faceNormals_.get(); }
  std::int32_t getNormalsMode() override { return mode_; }
  void setNormalsMode(std::int32_t mode) override { mode_ = mode; }

 private:
  const FaceVertexDescriptor& d_;
  ZrArrayPtr vertexNormals_;
  ZrArrayPtr faceNormals_;
  std::int32_t mode_ = 0;
};

struct Scene {
  double lo[3], hi[3];
  bool log[3];
  Matrix4x4d toBox;   // axis units (log10 on log axes) to the plot box
  Matrix4x4d view;    // plot box to eye
  Matrix4x4d clip;    // plot box to clip space
  Matrix4x4d pixels;  // normalised device coordinates to pixels
  Vector3d eyeDir;    // from the scene towards the viewer, in box units

  [[nodiscard]] double axisUnit(int a, double v) const noexcept {
    return log[a] ? (v > 0 ? std::log10(v) : NAN) : v;
  }
  [[nodiscard]] Point3d box(double x, double y, double z) const noexcept {
    const Point4d p = toBox.transform(Point4d(axisUnit(0, x), axisUnit(1, y), axisUnit(2, z), 1));
    return Point3d(p.getX(), p.getY(), p.getZ());
  }
  [[nodiscard]] Pt pixel(const Point3d& b) const noexcept {
    const Point4d c = clip.transform(Point4d(b));
    const Point4d p = pixels.transform(Point4d(c.getX() / c.getW(), c.getY() / c.getW(), 0, 1));
    return Pt{p.getX(), p.getY()};
  }
  [[nodiscard]] double depth(const Point3d& b) const noexcept { return view.transform(Point4d(b)).getZ(); }
};

zrArray_tag* matrixOf(const std::vector<double>& columnMajor, std::size_t rows, std::size_t cols) {
  zrArray_tag* a = zrCreateDoubleMatrix(rows, cols);
  std::memcpy(zrGetPr(a), columnMajor.data(), columnMajor.size() * sizeof(double));
  return a;
}

Rgb scaled(const Rgb& c, double k) { return Rgb{c.r * k, c.g * k, c.b * k}; }

void drawSurface(Renderer& r, const Child& c, const Scene& s, ColorMap map) {
  const GridData& g = c.grid;
  const std::size_t rows = g.rows;
  const std::size_t cols = g.columns;
  const std::size_t nv = rows * cols;
  // Box coordinates of every grid point, column-major as the descriptor wants.
  std::vector<double> bx(nv), by(nv), bz(nv);
  std::vector<Point3d> vb(nv);
  for (std::size_t j = 0; j < cols; ++j) {
    for (std::size_t i = 0; i < rows; ++i) {
      const Point3d p = s.box(g.x[j], g.y[i], g.at(i, j));
      vb[i + j * rows] = p;
      bx[i + j * rows] = p.getX();
      by[i + j * rows] = p.getY();
      bz[i + j * rows] = p.getZ();
    }
  }
  FaceVertexDescriptor fv = createFaceVertexDescriptor(rows, cols);
  std::vector<double> normals;
  {
    ZrArrayPtr ax(matrixOf(bx, rows, cols));
    ZrArrayPtr ay(matrixOf(by, rows, cols));
    ZrArrayPtr az(matrixOf(bz, rows, cols));
    const bool ok = convert_XYZ_to_FaceVertex(fv, ax.get(), 0) &&
                    convert_XYZ_to_FaceVertex(fv, ay.get(), 1) && convert_XYZ_to_FaceVertex(fv, az.get(), 2);
    if (ok) {
      GridPatch patch(fv);
      computePatchNormals(patch);
      if (patch.getVertexNormals() != nullptr) {
        const double* n = zrGetPr(patch.getVertexNormals());
        normals.assign(n, n + 3 * nv);
      }
    }
  }
  destroyFaceVertexDescriptor(fv);
  if (normals.size() != 3 * nv) return;

  // Lit vertex colours: a headlight above and left of the viewer.
  const Material material(Radiance(0, 0, 0), RadianceFilter(0.35, 0.35, 0.35),
                          RadianceFilter(0.65, 0.65, 0.65), RadianceFilter(0.35, 0.35, 0.35), 12);
  const Vector3d e = s.eyeDir;
  const Vector3d side = e.cross(Vector3d(0, 0, 1));
  const Vector3d lightDir(e.getX() - 0.4 * side.getX(), e.getY() - 0.4 * side.getY(), e.getZ() + 0.6);
  const DirectionalLight light(Radiance(1, 1, 1), Radiance(1, 1, 1), lightDir);
  const double zspan = s.hi[2] > s.lo[2] ? s.axisUnit(2, s.hi[2]) - s.axisUnit(2, s.lo[2]) : 1;
  std::vector<Rgb> lit(nv);
  for (std::size_t v = 0; v < nv; ++v) {
    const std::size_t i = v % rows;
    const std::size_t j = v / rows;
    const Rgb base = colorAt(map, (s.axisUnit(2, g.at(i, j)) - s.axisUnit(2, s.lo[2])) / zspan);
    Vector3d n(normals[v], normals[v + nv], normals[v + 2 * nv]);
    const double len = n.length();
    if (!(len > 0) || !std::isfinite(len)) {
      lit[v] = base;
      continue;
    }
    n = Vector3d(n.getX() / len, n.getY() / len, n.getZ() / len);
    if (n.dot(e) < 0) n = Vector3d(-n.getX(), -n.getY(), -n.getZ());  // both sides are lit
    LightIntegrator integ(material);
    integ.addLightContribution(vb[v], n, e, light);
    const Radiance& d = integ.getDiffuseContribution();
    const Radiance& sp = integ.getSpecularContribution();
    lit[v] = Rgb{std::min(1.0, base.r * (0.35 + d.getRed()) + sp.getRed()),
                 std::min(1.0, base.g * (0.35 + d.getGreen()) + sp.getGreen()),
                 std::min(1.0, base.b * (0.35 + d.getBlue()) + sp.getBlue())};
  }

  struct Face {
    double depth;
    std::size_t i, j;
  };
  std::vector<Face> faces;
  faces.reserve((rows - 1) * (cols - 1));
  for (std::size_t j = 0; j + 1 < cols; ++j) {
    for (std::size_t i = 0; i + 1 < rows; ++i) {
      const std::size_t idx[4] = {i + j * rows, i + 1 + j * rows, i + 1 + (j + 1) * rows, i + (j + 1) * rows};
      double zsum = 0;
      bool finite = true;
      for (std::size_t k : idx) {
        finite = finite && std::isfinite(vb[k].getZ());
        zsum += s.depth(vb[k]);
      }
      if (finite) faces.push_back(Face{zsum, i, j});
    }
  }
  std::sort(faces.begin(), faces.end(), [](const Face& a, const Face& b) { return a.depth < b.depth; });
  std::vector<Pt> poly(4);
  std::vector<double> rgb(12);
  std::vector<Pt> edge;
  // Mitred hairlines cost the stroker far less than round joins, and at this
  // width they look the same.
  wm_SetLineJoin(r.painter.window(), LINE_JOIN_MITER);
  r.painter.setLine(0.35);
  for (const Face& f : faces) {
    const std::size_t idx[4] = {f.i + f.j * rows, f.i + 1 + f.j * rows, f.i + 1 + (f.j + 1) * rows,
                                f.i + (f.j + 1) * rows};
    Rgb mean{0, 0, 0};
    for (int k = 0; k < 4; ++k) {
      poly[k] = s.pixel(vb[idx[k]]);
      const Rgb& c = lit[idx[k]];
      rgb[3 * k] = c.r;
      rgb[3 * k + 1] = c.g;
      rgb[3 * k + 2] = c.b;
      mean.r += c.r / 4;
      mean.g += c.g / 4;
      mean.b += c.b / 4;
    }
    r.painter.fillShaded(poly, rgb);
    // A hairline a shade darker shows the mesh and smooths the rasteriser's
    // whole-pixel face edges. Each face strokes the two edges it does not
    // share with the faces before it in its row and column, so every edge is
    // stroked once; the first row and column add their outer edges.
    r.painter.setColor(scaled(mean, 0.8));
    edge.assign({poly[3], poly[2], poly[1]});
    if (f.i == 0) edge.insert(edge.begin(), poly[0]);
    if (f.j == 0) edge.insert(edge.end(), poly[0]);
    r.painter.polyline(edge);
  }
  wm_SetLineJoin(r.painter.window(), LINE_JOIN_ROUND);
}

struct Edge {
  Point3d a, b;
};

// Where a label goes beside an edge: away from the box centre on the screen.
void alignAway(const Pt& dir, TextHorzAlign* h, TextVertAlign* v) {
  *h = dir.x < -0.35 ? TEXT_HALIGN_RIGHT : dir.x > 0.35 ? TEXT_HALIGN_LEFT : TEXT_HALIGN_CENTER;
  *v = dir.y > 0.35 ? TEXT_VALIGN_TOP : dir.y < -0.35 ? TEXT_VALIGN_BOTTOM : TEXT_VALIGN_MIDDLE;
}

}  // namespace

void drawAxes3D(Renderer& r, Axes::Impl& axes, const Box& cell) {
  AxesDescriptor& d = axes.desc;
  const TextStyle tickStyle{9, false, {0, 0, 0}};
  const TextStyle labelStyle{11, false, {0, 0, 0}};
  const TextStyle titleStyle{12, true, {0, 0, 0}};
  const double pad = r.pt(4);
  const double tickLen = r.pt(3);

  DataExtents ext[3];
  for (const Child& c : axes.children) {
    if (c.kind != Kind::Surface) continue;
    ext[0] += extentsOf(c.grid.x);
    ext[1] += extentsOf(c.grid.y);
    ext[2] += extentsOf(c.grid.z);
  }
  ColorScale cs;
  const bool bar = axes.colorbar && colorScaleOf(axes, &cs);
  const Renderer::Extent tt = r.measure("Xg", titleStyle);
  const Renderer::Extent th = r.measure("0", tickStyle);
  Box vp{cell.left + r.pt(40),
         cell.top + (axes.title.empty() ? r.pt(20) : tt.ascent + tt.descent + 2 * pad + r.pt(20)),
         cell.right - r.pt(40) - (bar ? r.pt(70) : 0), cell.bottom - r.pt(40)};
  for (AxisType a : {kXAxis, kYAxis, kZAxis}) {
    settleAxis(d, a, ext[a], std::min(vp.width(), vp.height()) * 0.55, (th.ascent + th.descent) * 3);
  }

  Scene s;
  double u0[3];
  double u1[3];
  for (int a = 0; a < 3; ++a) {
    s.lo[a] = d.axis[a].render[0];
    s.hi[a] = d.axis[a].render[1];
    s.log[a] = d.axis[a].scale == Scale::Log;
    u0[a] = s.axisUnit(a, s.lo[a]);
    u1[a] = s.axisUnit(a, s.hi[a]);
  }
  // Axis units to the plot box: [u0, u1] onto [-half, half] on each axis.
  s.toBox =
      Matrix4x4d::createTranslation(Vector3d(-kBoxHalf[0], -kBoxHalf[1], -kBoxHalf[2])) *
      Matrix4x4d::createScale(Vector3d(2 * kBoxHalf[0] / (u1[0] - u0[0]), 2 * kBoxHalf[1] / (u1[1] - u0[1]),
                                       2 * kBoxHalf[2] / (u1[2] - u0[2]))) *
      Matrix4x4d::createTranslation(Vector3d(-u0[0], -u0[1], -u0[2]));
  s.eyeDir = camera_utils::convertAnglesToDirection(axes.azimuth, axes.elevation);
  const Vector3d up = camera_utils::chooseUpVector3D(s.eyeDir, axes.azimuth);
  const Point3d target(0, 0, 0);
  const Point3d eye(10 * s.eyeDir.getX(), 10 * s.eyeDir.getY(), 10 * s.eyeDir.getZ());
  s.view = camera_utils::makeViewTransform(eye, target, up);
  const Rectangle2d rect(vp.left, vp.top, vp.right, vp.bottom);
  const Viewport viewport(rect, s.view);
  const BoundingVolume volume(Point3d(-kBoxHalf[0], -kBoxHalf[1], -kBoxHalf[2]),
                              Point3d(kBoxHalf[0], kBoxHalf[1], kBoxHalf[2]));
  s.clip = camera_utils::fitOrthographicCamera(viewport, volume) * s.view;
  s.pixels = camera_utils::makeViewPortTransform(rect);

  // Back walls: the faces of the box whose outward normal looks away.
  const Rgb wallEdge{0.55, 0.55, 0.55};
  const Rgb gridColor{0.88, 0.88, 0.88};
  auto B = [&](double x, double y, double z) { return Point3d(x, y, z); };
  const double hx = kBoxHalf[0], hy = kBoxHalf[1], hz = kBoxHalf[2];
  const double backX = s.eyeDir.getX() > 0 ? -hx : hx;  // the wall at this x is behind
  const double backY = s.eyeDir.getY() > 0 ? -hy : hy;
  const double floorZ = s.eyeDir.getZ() >= 0 ? -hz : hz;
  auto boxOfTick = [&](int a, double t) {
    return (s.axisUnit(a, t) - u0[a]) / (u1[a] - u0[a]) * 2 * kBoxHalf[a] - kBoxHalf[a];
  };
  r.painter.setLine(0.5);
  r.painter.setColor(gridColor);
  for (double t : d.axis[0].ticks) {
    const double x = boxOfTick(0, t);
    r.painter.polyline({s.pixel(B(x, -hy, floorZ)), s.pixel(B(x, hy, floorZ))});
    r.painter.polyline({s.pixel(B(x, backY, -hz)), s.pixel(B(x, backY, hz))});
  }
  for (double t : d.axis[1].ticks) {
    const double y = boxOfTick(1, t);
    r.painter.polyline({s.pixel(B(-hx, y, floorZ)), s.pixel(B(hx, y, floorZ))});
    r.painter.polyline({s.pixel(B(backX, y, -hz)), s.pixel(B(backX, y, hz))});
  }
  for (double t : d.axis[2].ticks) {
    const double z = boxOfTick(2, t);
    r.painter.polyline({s.pixel(B(backX, -hy, z)), s.pixel(B(backX, hy, z))});
    r.painter.polyline({s.pixel(B(-hx, backY, z)), s.pixel(B(hx, backY, z))});
  }
  r.painter.setColor(wallEdge);
  r.painter.setLine(0.6);
  r.painter.strokePolygon({s.pixel(B(-hx, -hy, floorZ)), s.pixel(B(hx, -hy, floorZ)),
                           s.pixel(B(hx, hy, floorZ)), s.pixel(B(-hx, hy, floorZ))});
  r.painter.polyline({s.pixel(B(backX, backY, -hz)), s.pixel(B(backX, backY, hz))});
  r.painter.polyline({s.pixel(B(backX, -hy, hz)), s.pixel(B(backX, hy, hz))});
  r.painter.polyline({s.pixel(B(-hx, backY, hz)), s.pixel(B(hx, backY, hz))});

  for (const Child& c : axes.children) {
    if (c.kind == Kind::Surface) drawSurface(r, c, s, axes.map);
  }

  // Axes on the front edges of the floor, and z on the leftmost vertical edge.
  const Pt centre = s.pixel(B(0, 0, floorZ));
  const double frontX = -backX;
  const double frontY = -backY;
  Edge edges[3] = {
      {B(-hx, frontY, floorZ), B(hx, frontY, floorZ)}, {B(frontX, -hy, floorZ), B(frontX, hy, floorZ)}, {}};
  double bestX = INFINITY;
  for (double cx : {-hx, hx}) {
    for (double cy : {-hy, hy}) {
      if (cx == backX && cy == backY) continue;
      const Pt p = s.pixel(B(cx, cy, -hz));
      if (p.x < bestX) {
        bestX = p.x;
        edges[2] = Edge{B(cx, cy, -hz), B(cx, cy, hz)};
      }
    }
  }
  for (int a = 0; a < 3; ++a) {
    const Edge& e = edges[a];
    const Pt pa = s.pixel(e.a);
    const Pt pb = s.pixel(e.b);
    Pt mid{(pa.x + pb.x) / 2, (pa.y + pb.y) / 2};
    Pt out{mid.x - centre.x, mid.y - centre.y};
    if (a == 2) out = Pt{-1, 0};
    const double len = std::hypot(out.x, out.y);
    out = len > 0 ? Pt{out.x / len, out.y / len} : Pt{0, 1};
    r.painter.setColor(Rgb{0, 0, 0});
    r.painter.setLine(0.8);
    r.painter.polyline({pa, pb});
    TextHorzAlign h;
    TextVertAlign v;
    alignAway(out, &h, &v);
    const std::vector<std::string> labels = tickLabels(d.axis[a].ticks, d.axis[a].scale);
    double reach = 0;
    for (std::size_t k = 0; k < labels.size(); ++k) {
      const double t = boxOfTick(a, d.axis[a].ticks[k]);
      const Point3d p3 = a == 0   ? B(t, e.a.getY(), e.a.getZ())
                         : a == 1 ? B(e.a.getX(), t, e.a.getZ())
                                  : B(e.a.getX(), e.a.getY(), t);
      const Pt p = s.pixel(p3);
      r.painter.setColor(Rgb{0, 0, 0});
      r.painter.segment(p, {p.x + out.x * tickLen, p.y + out.y * tickLen});
      // Axes meet at the corners of the box, where their end labels would collide.
      if (!r.label(labels[k], {p.x + out.x * (tickLen + pad), p.y + out.y * (tickLen + pad)}, h, v, tickStyle,
                   0, kTickLabel, true))
        continue;
      const TextBox& b = r.boxes.back();
      reach = std::max(reach, std::fabs(out.x) > 0.35 ? b.right - b.left : b.bottom - b.top);
    }
    if (!d.axis[a].label.empty()) {
      const double dist = tickLen + 2 * pad + reach;
      // The z label reads upwards with its foot towards the axis.
      r.label(d.axis[a].label, {mid.x + out.x * dist, mid.y + out.y * dist}, a == 2 ? TEXT_HALIGN_CENTER : h,
              a == 2 ? TEXT_VALIGN_BOTTOM : v, labelStyle, a == 2 ? 90 : 0, kAxisLabel);
    }
  }
  if (!axes.title.empty()) {
    r.label(axes.title, {(cell.left + cell.right) / 2, cell.top + pad}, TEXT_HALIGN_CENTER, TEXT_VALIGN_TOP,
            titleStyle, 0, kTitle);
  }
  if (bar) {
    const double h = vp.height() * 0.7;
    const double top = vp.top + (vp.height() - h) / 2;
    drawColorbar(r, axes, cs, Box{cell.right - r.pt(95), top, cell.right - r.pt(83), top + h});
  }
}

}  // namespace qvgui::plot::detail
