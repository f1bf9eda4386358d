// Offscreen back end: byte strings read as a sequence of drawing calls with
// arbitrary arguments on a small canvas. Nothing may crash, leak or leave the
// canvas unable to draw.
#include <cstdint>
#include <cstring>
#include <vector>

#include "qvgui/dataspace.h"
#include "qvgui/offscreen.h"
#include "qvgui/raster.h"
#include "qvgui/text.h"

namespace {

class Reader {
 public:
  Reader(const std::uint8_t* data, std::size_t size) : p_(data), end_(data + size) {}
  [[nodiscard]] bool more() const { return p_ < end_; }
  template <typename T>
  T take() {
    T v{};
    const std::size_t n = std::min<std::size_t>(sizeof v, static_cast<std::size_t>(end_ - p_));
    std::memcpy(&v, p_, n);
    p_ += n;
    return v;
  }

 private:
  const std::uint8_t* p_;
  const std::uint8_t* end_;
};

// Small coordinates mostly, with the occasional extreme or missing point.
std::int32_t coordinate(Reader& in) {
  const auto b = in.take<std::uint8_t>();
  if (b == 255) return in.take<std::int32_t>();
  if (b == 254) return -32768;
  return static_cast<std::int32_t>(b) - 96;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Reader in(data, size);
  const auto head = in.take<std::uint8_t>();
  const qvgui::offscreen::Format format = head % 3 == 0   ? qvgui::offscreen::Format::Png
                                          : head % 3 == 1 ? qvgui::offscreen::Format::Pdf
                                                          : qvgui::offscreen::Format::Svg;
  qvgui::offscreen::Canvas canvas(format, 64, 48, 36.0 + head);
  WinRec_tag* win = canvas.window();
  Colortable_tag* table = create_ColortablePtr();
  set_ColortablePtr_colormap_data(table, NReals{0, 1, 0.5, 0, 1, 0.5, 0, 1, 0.25});
  zrFont* font = create_font();
  std::vector<qvpoint32> points;
  std::vector<double> values;
  void* region = nullptr;
  for (int op = 0; op < 64 && in.more(); ++op) {
    switch (in.take<std::uint8_t>() % 16) {
      case 0: {
        Color_tag c{in.take<double>(), in.take<double>(), in.take<double>(), -1, false};
        wm_SetFGColorPtr(win, &c);
        break;
      }
      case 1:
        wm_SetLineWidth(win, in.take<double>());
        break;
      case 2:
        wm_SetLineType(win, static_cast<LineTypes>(in.take<std::uint8_t>() % 6));
        break;
      case 3: {
        const qvrect r{coordinate(in), coordinate(in), coordinate(in), coordinate(in)};
        wm_PaintRect(win, &r);
        wm_FrameOval(win, &r);
        break;
      }
      case 4:
      case 5: {
        const int n = in.take<std::uint8_t>() % 9;
        points.resize(n);
        values.resize(3 * static_cast<std::size_t>(n));
        for (auto& p : points) p = qvpoint32{coordinate(in), coordinate(in)};
        for (auto& v : values) v = in.take<std::uint8_t>() / 64.0;
        Polygon2 poly{points.data(), n};
        if (in.take<std::uint8_t>() % 2)
          wm_FillInterpPoly(win, &poly, values.data(), table);
        else
          wm_DrawInterpPoly(win, &poly, values.data(), table);
        wm_PaintPoly(win, &poly, nullptr, nullptr);
        break;
      }
      case 6: {
        const int n = in.take<std::uint8_t>() % 6;
        std::vector<Real_point3> line(n);
        for (auto& p : line) p = Real_point3{in.take<double>(), in.take<double>(), 0.0};
        wm_PolyLineRP3(win, line.data(), n);
        break;
      }
      case 7: {
        font_set_size(font, in.take<double>());
        font_set_weight(font, static_cast<FontWeightType>(in.take<std::uint8_t>() % 4));
        wm_SetWindowFont(win, font);
        break;
      }
      case 8: {
        char text[8];
        for (char& c : text) c = static_cast<char>(in.take<std::uint8_t>());
        text[7] = '\0';
        wm_SetTextRotation(win, in.take<std::int32_t>());
        wm_SetTextAlignment(win, static_cast<TextHorzAlign>(in.take<std::uint8_t>() % 3),
                            static_cast<TextVertAlign>(in.take<std::uint8_t>() % 5));
        wm_MoveTo(win, static_cast<short>(coordinate(in)), static_cast<short>(coordinate(in)));
        wm_DrawString(win, text);
        (void)wm_StringWidth(win, text);
        break;
      }
      case 9: {
        if (!region) region = wm_CreateClipRegion(win);
        const qvrect r{coordinate(in), coordinate(in), coordinate(in), coordinate(in)};
        wm_UnionRectRegion(win, &r, region);
        wm_SetClipRegion(win, region);
        break;
      }
      case 10:
        wm_SetClipRegion(win, nullptr);
        break;
      case 11:
        wm_SetVisual(win, in.take<std::uint8_t>() % 2 ? VISUAL_PSEUDOCOLOR : VISUAL_TRUECOLOR);
        break;
      case 12:
        wm_InstallColortable(win, in.take<std::uint8_t>() % 2 ? table : nullptr);
        break;
      case 13:
        wm_SetFGColormapIndex(win, in.take<std::int32_t>());
        break;
      case 14: {
        qvpoint32 tri[3];
        for (auto& p : tri) p = qvpoint32{coordinate(in), coordinate(in)};
        double uv[3][2];
        for (auto& c : uv) c[0] = in.take<std::uint8_t>() / 16.0, c[1] = in.take<std::uint8_t>() / 16.0;
        int texture[4] = {0, 1, 2, 1};
        Polygon2 poly{tri, 3};
        wm_WarpTriangle(win, &poly, table, 2, 2, uv, texture);
        break;
      }
      case 15: {
        const auto flags = in.take<std::uint8_t>();
        canvas.setFillAntialias(flags & 1);
        canvas.setJoinFills(flags & 2);
        break;
      }
    }
  }
  if (format == qvgui::offscreen::Format::Png) (void)canvas.image();
  if (region) wm_DestroyClipRegion(win, region);
  wm_InstallColortable(win, nullptr);
  destroy_font(font);
  destroy_ColortablePtr(table);
  return 0;
}
