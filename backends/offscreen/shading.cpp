// Colour-interpolated faces and edges and texture-mapped triangles. The image
// path runs the library's own rasteriser and lays its pixels over the
// surface through Cairo (so the clip applies); the vector path fills faces
// with Cairo mesh gradients.
#include <algorithm>
#include <cmath>
#include <vector>

#include "backends/offscreen/canvas_p.h"
#include "qvgui/raster.h"

namespace qvgui::offscreen::detail {
namespace {

// ---- Rasteriser buffers ------------------------------------------------------------

// The bounding box and the zero-filled pixmap and mask of one polygon, freed
// on every path out.
class PolygonPixmap {
 public:
  explicit PolygonPixmap(const Polygon2* poly) { AllocatePolygonPixmap(poly, &bounds_, &pixmap_, &mask_); }
  ~PolygonPixmap() {
    if (pixmap_) zrFree(pixmap_);
    if (mask_) zrFree(mask_);
  }
  PolygonPixmap(const PolygonPixmap&) = delete;
  PolygonPixmap& operator=(const PolygonPixmap&) = delete;

  [[nodiscard]] bool empty() const { return !pixmap_ || !mask_; }
  [[nodiscard]] const qvrect& bounds() const { return bounds_; }
  [[nodiscard]] int width() const { return bounds_.right - bounds_.left + 1; }
  [[nodiscard]] int height() const { return bounds_.bottom - bounds_.top + 1; }
  [[nodiscard]] int pixmapStride() const { return (width() + 3) & ~3; }
  [[nodiscard]] unsigned char* pixmap() const { return pixmap_; }
  [[nodiscard]] unsigned char* mask() const { return mask_; }

 private:
  qvrect bounds_{};
  unsigned char* pixmap_ = nullptr;
  unsigned char* mask_ = nullptr;
};

// Lays opaque 0xFFRRGGBB pixels where the mask is set over the surface at
// the box's corner; unmasked pixels stay transparent, so they leave the
// surface alone.
void composite(CanvasState& st, const qvrect& box, int w, int h, std::vector<std::uint32_t>& argb,
               const unsigned char* mask) {
  for (std::size_t i = 0; i < argb.size(); ++i)
    if (!mask[i]) argb[i] = 0;
  cairo_surface_t* img = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(argb.data()),
                                                             CAIRO_FORMAT_ARGB32, w, h, 4 * w);
  // Cairo leaks the pattern it makes for a surface in an error state (a size
  // it refuses): such an image is not painted at all.
  if (cairo_surface_status(img) != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(img);
    return;
  }
  cairo_save(st.cr);
  cairo_set_source_surface(st.cr, img, box.left, box.top);
  // One image pixel per device pixel: no smoothing across face borders.
  cairo_pattern_set_filter(cairo_get_source(st.cr), CAIRO_FILTER_NEAREST);
  cairo_paint(st.cr);
  cairo_restore(st.cr);
  cairo_surface_destroy(img);
}

std::uint32_t packed(const Rgb& c) {
  auto ch = [](double v) -> std::uint32_t {
    return !(v > 0.0) ? 0u : v >= 1.0 ? 255u : static_cast<std::uint32_t>(v * 255.0 + 0.5);
  };
  return 0xff000000u | (ch(c.r) << 16) | (ch(c.g) << 8) | ch(c.b);
}

// Colour-table mode: indices from the byte pixmap through the table.
std::vector<std::uint32_t> fromIndices(const PolygonPixmap& pm, const Colortable_tag* table) {
  const int w = pm.width(), h = pm.height(), s = pm.pixmapStride();
  std::vector<std::uint32_t> argb(std::size_t(w) * h, 0);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      Rgb c;
      if (pm.mask()[std::size_t(y) * w + x] && tableColour(table, pm.pixmap()[std::size_t(y) * s + x], &c))
        argb[std::size_t(y) * w + x] = packed(c);
    }
  return argb;
}

bool indexed(const CanvasState& st) { return st.visual == VISUAL_PSEUDOCOLOR; }

const Colortable_tag* tableFor(const CanvasState& st, const Colortable_tag* given) {
  return given ? given : st.table;
}

// The colour of vertex i: rgb triples in true colour, one table index each in
// colour-table mode; false when an index has no colour.
bool vertexColour(const CanvasState& st, const double* values, const Colortable_tag* table, int i, Rgb* out) {
  if (indexed(st)) return tableColour(table, values[i], out);
  *out = Rgb{values[3 * i], values[3 * i + 1], values[3 * i + 2]};
  return true;
}

// ---- Keeping the rasteriser's buffers the size of the image -------------------------
//
// The rasteriser allocates a pixmap for the polygon's whole bounding box, so a
// face reaching far outside the image (a surface seen from close up) would
// cost memory in proportion to its size, not to what shows. Such a polygon is
// cut to a frame a margin outside the image first; the vertices the cut makes
// carry values interpolated along their edges, as the rasteriser's own edge
// walk would give them, and the edges it adds lie outside the image.

constexpr std::int32_t kRasterMargin = 64;

struct ClippedPolygon {
  std::vector<qvpoint32> points;
  std::vector<double> values;  // `channels` per point
  Polygon2 poly{};
};

bool fitsTheFrame(const Polygon2* poly, const qvrect& frame) {
  for (std::int32_t i = 0; i < poly->count; ++i) {
    const qvpoint32 p = poly->points[i];
    // The rasteriser would take a missing point for a vertex: the cut drops it.
    if (p.x == kMissingPoint || p.y == kMissingPoint) return false;
    if (p.x < frame.left || p.x > frame.right || p.y < frame.top || p.y > frame.bottom) return false;
  }
  return true;
}

// Sutherland-Hodgman against the four sides of the frame, in doubles.
ClippedPolygon cutToFrame(const Polygon2* poly, const double* values, int channels, const qvrect& frame) {
  struct V {
    double x, y;
    std::vector<double> c;
  };
  std::vector<V> ring;
  for (std::int32_t i = 0; i < poly->count; ++i) {
    const qvpoint32 p = poly->points[i];
    if (p.x == kMissingPoint || p.y == kMissingPoint) continue;
    ring.push_back(
        V{double(p.x), double(p.y), std::vector<double>(values + i * channels, values + (i + 1) * channels)});
  }
  // Each side: the coordinate (0 x, 1 y), the limit, and which side is inside.
  const struct {
    int axis;
    double limit;
    bool keepBelow;
  } sides[4] = {{0, double(frame.left), false},
                {0, double(frame.right), true},
                {1, double(frame.top), false},
                {1, double(frame.bottom), true}};
  for (const auto& side : sides) {
    if (ring.empty()) break;
    auto coord = [&](const V& v) { return side.axis == 0 ? v.x : v.y; };
    auto inside = [&](const V& v) {
      return side.keepBelow ? coord(v) <= side.limit : coord(v) >= side.limit;
    };
    std::vector<V> out;
    for (std::size_t i = 0; i < ring.size(); ++i) {
      const V& a = ring[i];
      const V& b = ring[(i + 1) % ring.size()];
      if (inside(a)) out.push_back(a);
      if (inside(a) != inside(b)) {
        const double t = (side.limit - coord(a)) / (coord(b) - coord(a));
        V cut{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y), a.c};
        for (int k = 0; k < channels; ++k) cut.c[k] = a.c[k] + t * (b.c[k] - a.c[k]);
        out.push_back(std::move(cut));
      }
    }
    ring = std::move(out);
  }
  ClippedPolygon clipped;
  for (const V& v : ring) {
    clipped.points.push_back(qvpoint32{std::int32_t(std::lround(v.x)), std::int32_t(std::lround(v.y))});
    clipped.values.insert(clipped.values.end(), v.c.begin(), v.c.end());
  }
  clipped.poly = Polygon2{clipped.points.data(), std::int32_t(clipped.points.size())};
  return clipped;
}

// The polygon and values to rasterise: the originals when they fit the
// frame, else the cut; null when nothing of it is left.
const Polygon2* rasterPolygon(const CanvasState& st, const Polygon2* poly, const double*& values,
                              int channels, ClippedPolygon& storage) {
  const qvrect frame{-kRasterMargin, -kRasterMargin, st.height + kRasterMargin, st.width + kRasterMargin};
  if (fitsTheFrame(poly, frame)) return poly;
  storage = cutToFrame(poly, values, channels, frame);
  values = storage.values.data();
  return storage.points.size() >= 2 ? &storage.poly : nullptr;
}

// ---- Vector faces ------------------------------------------------------------------

struct ColouredVertex {
  double x, y;
  Rgb c;
};

// Face vertices sit on pixel corners, as filled polygons do.
std::vector<ColouredVertex> presentVertices(const CanvasState& st, const Polygon2* poly, const double* values,
                                            const Colortable_tag* table) {
  std::vector<ColouredVertex> out;
  for (std::int32_t i = 0; i < poly->count; ++i) {
    const qvpoint32 p = poly->points[i];
    Rgb c;
    if (p.x == kMissingPoint || p.y == kMissingPoint || !vertexColour(st, values, table, i, &c)) continue;
    out.push_back(ColouredVertex{double(p.x), double(p.y), c});
  }
  return out;
}

// A Gouraud face as a fan of triangular mesh patches, painted inside the
// polygon's outline (which keeps a concave fan from spilling over).
void meshFace(CanvasState& st, const std::vector<ColouredVertex>& v) {
  if (v.size() < 3) return;
  cairo_pattern_t* mesh = cairo_pattern_create_mesh();
  for (std::size_t i = 1; i + 1 < v.size(); ++i) {
    const ColouredVertex* tri[3] = {&v[0], &v[i], &v[i + 1]};
    cairo_mesh_pattern_begin_patch(mesh);
    cairo_mesh_pattern_move_to(mesh, tri[0]->x, tri[0]->y);
    cairo_mesh_pattern_line_to(mesh, tri[1]->x, tri[1]->y);
    cairo_mesh_pattern_line_to(mesh, tri[2]->x, tri[2]->y);
    for (unsigned k = 0; k < 3; ++k)
      cairo_mesh_pattern_set_corner_color_rgb(mesh, k, tri[k]->c.r, tri[k]->c.g, tri[k]->c.b);
    cairo_mesh_pattern_end_patch(mesh);
  }
  cairo_save(st.cr);
  cairo_move_to(st.cr, v[0].x, v[0].y);
  for (std::size_t i = 1; i < v.size(); ++i) cairo_line_to(st.cr, v[i].x, v[i].y);
  cairo_close_path(st.cr);
  cairo_set_fill_rule(st.cr, CAIRO_FILL_RULE_EVEN_ODD);
  cairo_set_source(st.cr, mesh);
  cairo_fill(st.cr);
  cairo_restore(st.cr);
  cairo_pattern_destroy(mesh);
}

// SVG has no mesh gradient (Cairo would embed an image per face), so a face
// there is filled flat in the mean of its vertices' colours.
void flatFace(CanvasState& st, const std::vector<ColouredVertex>& v) {
  if (v.size() < 3) return;
  Rgb mean;
  for (const ColouredVertex& p : v) {
    mean.r += p.c.r / v.size();
    mean.g += p.c.g / v.size();
    mean.b += p.c.b / v.size();
  }
  cairo_move_to(st.cr, v[0].x, v[0].y);
  for (std::size_t i = 1; i < v.size(); ++i) cairo_line_to(st.cr, v[i].x, v[i].y);
  cairo_close_path(st.cr);
  cairo_set_fill_rule(st.cr, CAIRO_FILL_RULE_EVEN_ODD);
  setSourceRgb(st, mean);
  cairo_fill(st.cr);
}

// Each edge a one-pixel stroke with a gradient from one end's colour to the other's.
void gradientEdges(CanvasState& st, const std::vector<ColouredVertex>& v) {
  if (v.size() < 2) return;
  cairo_save(st.cr);
  cairo_set_line_width(st.cr, 1.0);
  cairo_set_dash(st.cr, nullptr, 0, 0.0);
  for (std::size_t i = 0; i < v.size(); ++i) {
    const ColouredVertex& a = v[i];
    const ColouredVertex& b = v[(i + 1) % v.size()];
    if (v.size() == 2 && i == 1) break;
    cairo_pattern_t* g = cairo_pattern_create_linear(a.x, a.y, b.x, b.y);
    cairo_pattern_add_color_stop_rgb(g, 0.0, a.c.r, a.c.g, a.c.b);
    cairo_pattern_add_color_stop_rgb(g, 1.0, b.c.r, b.c.g, b.c.b);
    cairo_move_to(st.cr, a.x, a.y);
    cairo_line_to(st.cr, b.x, b.y);
    cairo_set_source(st.cr, g);
    cairo_stroke(st.cr);
    cairo_pattern_destroy(g);
  }
  cairo_restore(st.cr);
}

// ---- Slots ------------------------------------------------------------------------

using IndexedInterp = void (*)(const Polygon2*, const double*, const qvrect*, unsigned char*, unsigned char*);
using RgbInterp = void (*)(const Polygon2*, const double*, const qvrect*, std::uint32_t*, unsigned char*);

// Shades a polygon on the pixmap with the rasteriser that suits the canvas:
// colormap indices mapped through the table when the canvas is indexed,
// interpolated RGB otherwise (one value per vertex, or three).
void interpolateOnPixmap(CanvasState& st, const Polygon2* poly, const double* values,
                         const Colortable_tag* table, IndexedInterp indexedInterp, RgbInterp rgbInterp) {
  ClippedPolygon storage;
  poly = rasterPolygon(st, poly, values, indexed(st) ? 1 : 3, storage);
  if (!poly) return;
  PolygonPixmap pm(poly);
  if (pm.empty()) return;
  std::vector<std::uint32_t> argb;
  if (indexed(st)) {
    indexedInterp(poly, values, &pm.bounds(), pm.pixmap(), pm.mask());
    argb = fromIndices(pm, table);
  } else {
    argb.assign(std::size_t(pm.width()) * pm.height(), 0);
    rgbInterp(poly, values, &pm.bounds(), argb.data(), pm.mask());
  }
  composite(st, pm.bounds(), pm.width(), pm.height(), argb, pm.mask());
}

void FillInterpPoly(WinRec_tag* win, const Polygon2* poly, double* values, Colortable_tag* given) {
  if (!poly || !poly->points || poly->count < 3 || !values) return;
  CanvasState& st = stateOf(win);
  const Colortable_tag* table = tableFor(st, given);
  if (st.format == Format::Pdf) {
    meshFace(st, presentVertices(st, poly, values, table));
    return;
  }
  if (st.format == Format::Svg) {
    flatFace(st, presentVertices(st, poly, values, table));
    return;
  }
  interpolateOnPixmap(st, poly, values, table, ::FillInterpPoly, ::FillInterpPolyRGB);
}

void DrawInterpPoly(WinRec_tag* win, const Polygon2* poly, double* values, Colortable_tag* given) {
  if (!poly || !poly->points || poly->count < 2 || !values) return;
  CanvasState& st = stateOf(win);
  const Colortable_tag* table = tableFor(st, given);
  if (st.format != Format::Png) {
    gradientEdges(st, presentVertices(st, poly, values, table));
    return;
  }
  interpolateOnPixmap(st, poly, values, table, ::DrawInterpPoly, ::DrawInterpPolyRGB);
}

void warpOne(CanvasState& st, Polygon2* tri, const Colortable_tag* table, unsigned long rows,
             unsigned long columns, const double (*texcoords)[2], const int* texture) {
  PolygonPixmap pm(tri);
  if (pm.empty()) return;
  const int ncolours = std::min<std::int32_t>(table->combined_length, 256);
  ::WarpTriangle(tri, &pm.bounds(), const_cast<Colortable_tag*>(table), rows, columns, texcoords, texture,
                 ncolours, pm.pixmap(), pm.mask());
  std::vector<std::uint32_t> argb = fromIndices(pm, table);
  composite(st, pm.bounds(), pm.width(), pm.height(), argb, pm.mask());
}

// Texels are indices of the table given (or the installed one); the result
// is laid over the surface as an image in every format. A triangle cut to
// the frame becomes a fan of triangles with interpolated texture coordinates.
void WarpTriangle(WinRec_tag* win, Polygon2* tri, Colortable_tag* given, unsigned long rows,
                  unsigned long columns, wmTexCoordArray texcoords, int* texture) {
  if (!tri || !tri->points || tri->count < 3 || !texcoords || !texture || rows == 0 || columns == 0) return;
  CanvasState& st = stateOf(win);
  const Colortable_tag* table = tableFor(st, given);
  if (!table || table->combined_length < 1) return;
  Polygon2 three{tri->points, 3};
  ClippedPolygon storage;
  const double* uv = &texcoords[0][0];
  const Polygon2* cut = rasterPolygon(st, &three, uv, 2, storage);
  if (cut == &three) {
    warpOne(st, &three, table, rows, columns, texcoords, texture);
    return;
  }
  if (!cut) return;
  for (std::size_t i = 1; i + 1 < storage.points.size(); ++i) {
    qvpoint32 pts[3] = {storage.points[0], storage.points[i], storage.points[i + 1]};
    const double tc[3][2] = {{uv[0], uv[1]}, {uv[2 * i], uv[2 * i + 1]}, {uv[2 * i + 2], uv[2 * i + 3]}};
    Polygon2 piece{pts, 3};
    warpOne(st, &piece, table, rows, columns, tc, texture);
  }
}

}  // namespace

void installShading(winMethods_tag* m) {
  swm_FillInterpPoly(m, FillInterpPoly);
  swm_DrawInterpPoly(m, DrawInterpPoly);
  swm_WarpTriangle(m, WarpTriangle);
}

}  // namespace qvgui::offscreen::detail
