// The wm_ callers that keep window state or fall back on other methods, the
// state accessors, and the process-wide current window and screen scale.
#include "qvgui/raster.h"
#include "window/methods_p.h"

using namespace qvgui_window;

namespace {

WinRec_tag* g_currentWindow = nullptr;
winMethods_tag* g_currentMethods = nullptr;
double g_screenPixelsPerPoint = 1.0;

}  // namespace

// ---- Callers with fallbacks and flags -----------------------------------------------

int wm_LineSpacing(WinRec_tag* win) {
  return profiled<kProfile_LineSpacing>([&] {
    if (wmLineSpacingFcn fn = methodsOf(win)->LineSpacing) return fn(win);
    return wm_StringHeight(win) + wm_StringDescent(win);
  });
}

void wm_GetMonitorScreenRect(WinRec_tag* win, int monitor, qvrect* out) {
  profiled<kProfile_GetMonitorScreenRect>([&] {
    if (wmGetMonitorScreenRectFcn fn = methodsOf(win)->GetMonitorScreenRect)
      fn(win, monitor, out);
    else
      gui_objects::WindowProxyRegistry::FindSystemMethodsProxy()->getScreenRect(out);
  });
}

void wm_ResizeFcn(WinRec_tag* win) {
  profiled<kProfile_ResizeFcn>([&] {
    winMethods_tag* m = methodsOf(win);
    if (!m->skipResize) m->ResizeFcn(win);
  });
}

bool wm_PreExposeFcn(WinRec_tag* win) {
  return profiled<kProfile_PreExposeFcn>([&] {
    winMethods_tag* m = methodsOf(win);
    if (m->beingDestroyed || !m->PreExposeFcn) return false;
    return m->PreExposeFcn(win);
  });
}

void wm_ExposeFcn_Pre_Optional(WinRec_tag* win) {
  profiled<kProfile_ExposeFcn_Pre_Optional>([&] {
    winMethods_tag* m = methodsOf(win);
    if (m->beingDestroyed) return;
    m->ExposeFcn(win);
    ++m->exposeCount;
  });
}

void CallExposeFromMethodRec(WinRec_tag* win, winMethods_tag* methods) { methods->ExposeFcn(win); }

void wm_DestroyWindow(WinRec_tag* win) {
  profiled<kProfile_DestroyWindow>([&] {
    winMethods_tag* m = methodsOf(win);
    m->beingDestroyed = true;
    m->DestroyWindow(win);
  });
}

bool wm_IsWindowValid(WinRec_tag* win) {
  return profiled<kProfile_IsWindowValid>([&] {
    winMethods_tag* m = methodsOf(win);
    return m->windowValid && m->IsWindowValid(win);
  });
}

// ---- Callers that record what they pass on -----------------------------------------

void wm_MoveTo(WinRec_tag* win, short h, short v) {
  profiled<kProfile_MoveTo>([&] {
    winMethods_tag* m = methodsOf(win);
    m->penH = h;
    m->penV = v;
    m->MoveTo(win, h, v);
  });
}

void wm_LineTo(WinRec_tag* win, short h, short v) {
  profiled<kProfile_LineTo>([&] {
    winMethods_tag* m = methodsOf(win);
    m->penH = h;
    m->penV = v;
    if (wmi_IsRealLineType(m->lineType)) m->LineTo(win, h, v);
  });
}

void wm_PolyLine(WinRec_tag* win, int* x, int* y, int count) {
  profiled<kProfile_PolyLine>([&] {
    winMethods_tag* m = methodsOf(win);
    if (wmi_IsRealLineType(m->lineType)) m->PolyLine(win, x, y, count);
  });
}

void wm_PolyLineRP3(WinRec_tag* win, Real_point3* points, int count) {
  profiled<kProfile_PolyLineRP3>([&] {
    winMethods_tag* m = methodsOf(win);
    if (wmi_IsRealLineType(m->lineType)) m->PolyLineRP3(win, points, count);
  });
}

void wm_SetDrawMode(WinRec_tag* win, GOEraseMode mode) {
  profiled<kProfile_SetDrawMode>([&] {
    winMethods_tag* m = methodsOf(win);
    m->drawMode = mode;
    m->SetDrawMode(win, mode);
  });
}

void wm_SetTextAlignment(WinRec_tag* win, TextHorzAlign horz, TextVertAlign vert) {
  profiled<kProfile_SetTextAlignment>([&] {
    winMethods_tag* m = methodsOf(win);
    m->textHorzAlign = horz;
    m->textVertAlign = vert;
    m->SetTextAlignment(win, horz, vert);
  });
}

void wm_SetTextRotation(WinRec_tag* win, int rotation) {
  profiled<kProfile_SetTextRotation>([&] {
    winMethods_tag* m = methodsOf(win);
    m->textRotation = rotation;
    m->SetTextRotation(win, rotation);
  });
}

void wm_SetLineType(WinRec_tag* win, LineTypes type) {
  profiled<kProfile_SetLineType>([&] {
    winMethods_tag* m = methodsOf(win);
    m->lineType = type;
    m->SetLineType(win, type);
  });
}

void wm_SetClipRegion(WinRec_tag* win, void* region) {
  profiled<kProfile_SetClipRegion>([&] {
    winMethods_tag* m = methodsOf(win);
    m->lastClipRegion = region;
    m->SetClipRegion(win, region);
  });
}

// In erase mode the pen keeps the draw-mode colour whatever is asked for.
void wm_SetFGColorPtr(WinRec_tag* win, Color_tag* color) {
  profiled<kProfile_SetFGColorPtr>([&] {
    winMethods_tag* m = methodsOf(win);
    m->fgColorKind = color ? WM_COLOR_PTR : WM_COLOR_NONE;
    m->fgColorValue = reinterpret_cast<std::intptr_t>(color);
    if (m->drawMode == GO_ERASE_MODE && m->drawModeColor)
      m->SetFGColorPtr(win, m->drawModeColor);
    else
      m->SetFGColorPtr(win, color);
  });
}

void wm_SetFGColormapIndex(WinRec_tag* win, int index) {
  profiled<kProfile_SetFGColormapIndex>([&] {
    winMethods_tag* m = methodsOf(win);
    m->fgColorKind = WM_COLOR_INDEX;
    m->fgColorValue = index;
    if (m->drawMode == GO_ERASE_MODE && m->drawModeColor)
      m->SetFGColorPtr(win, m->drawModeColor);
    else
      m->SetFGColormapIndex(win, index);
  });
}

// ---- State accessors -----------------------------------------------------------------

void wm_SetExposePending(WinRec_tag* win, bool pending) { methodsOf(win)->exposePending = pending; }
bool wm_IsExposePending(WinRec_tag* win) { return methodsOf(win)->exposePending; }
std::uint32_t wm_GetExposeCount(WinRec_tag* win) { return methodsOf(win)->exposeCount; }

qvpoint wm_GetPenPosition(WinRec_tag* win) {
  const winMethods_tag* m = methodsOf(win);
  qvpoint p{};
  p.v = m->penV;
  p.h = m->penH;
  return p;
}

GOEraseMode wm_GetDrawMode(WinRec_tag* win) { return methodsOf(win)->drawMode; }

void wm_SetDrawModeColor(WinRec_tag* win, Color_tag* color) {
  winMethods_tag* m = methodsOf(win);
  if (color == m->drawModeColor) return;
  // Copy first: if the copy fails the old colour is still in place.
  Color_tag* copy = color ? copy_ColorPtr(color) : nullptr;
  destroy_ColorPtr(m->drawModeColor);
  m->drawModeColor = copy;
}

Color_tag* wm_GetDrawModeColor(WinRec_tag* win) { return methodsOf(win)->drawModeColor; }
TextHorzAlign wm_GetTextHorizontalAlignment(WinRec_tag* win) { return methodsOf(win)->textHorzAlign; }
TextVertAlign wm_GetTextVerticalAlignment(WinRec_tag* win) { return methodsOf(win)->textVertAlign; }
int wm_GetTextRotation(WinRec_tag* win) { return methodsOf(win)->textRotation; }
LineTypes wm_GetLineType(WinRec_tag* win) { return methodsOf(win)->lineType; }
void wm_SetMarkerSize(WinRec_tag* win, double size) { methodsOf(win)->markerSize = size; }
double wm_GetMarkerSize(WinRec_tag* win) { return methodsOf(win)->markerSize; }
void wm_SetLineMarker(WinRec_tag* win, int marker) { methodsOf(win)->lineMarker = marker; }
int wm_GetLineMarker(WinRec_tag* win) { return methodsOf(win)->lineMarker; }

namespace {

Color_tag* colorOf(std::int32_t kind, std::intptr_t value) {
  return kind == WM_COLOR_PTR ? reinterpret_cast<Color_tag*>(value) : nullptr;
}
int indexOf(std::int32_t kind, std::intptr_t value) {
  return kind == WM_COLOR_INDEX ? static_cast<int>(value) : -1;
}
void setColor(std::int32_t& kind, std::intptr_t& value, Color_tag* color) {
  kind = color ? WM_COLOR_PTR : WM_COLOR_NONE;
  value = reinterpret_cast<std::intptr_t>(color);
}
void setIndex(std::int32_t& kind, std::intptr_t& value, int index) {
  kind = WM_COLOR_INDEX;
  value = index;
}

}  // namespace

int wm_GetFGColorKind(WinRec_tag* win) { return methodsOf(win)->fgColorKind; }
Color_tag* wm_GetFGColorPtr(WinRec_tag* win) {
  return colorOf(methodsOf(win)->fgColorKind, methodsOf(win)->fgColorValue);
}
int wm_GetFGColormapIndex(WinRec_tag* win) {
  return indexOf(methodsOf(win)->fgColorKind, methodsOf(win)->fgColorValue);
}

void wm_SetLineMarkerFillColor(WinRec_tag* win, Color_tag* color) {
  winMethods_tag* m = methodsOf(win);
  setColor(m->markerFillKind, m->markerFillValue, color);
}
void wm_SetLineMarkerFillColorIndex(WinRec_tag* win, int index) {
  winMethods_tag* m = methodsOf(win);
  setIndex(m->markerFillKind, m->markerFillValue, index);
}
void wm_SetLineMarkerFrameColor(WinRec_tag* win, Color_tag* color) {
  winMethods_tag* m = methodsOf(win);
  setColor(m->markerFrameKind, m->markerFrameValue, color);
}
void wm_SetLineMarkerFrameColorIndex(WinRec_tag* win, int index) {
  winMethods_tag* m = methodsOf(win);
  setIndex(m->markerFrameKind, m->markerFrameValue, index);
}
int wm_GetLineMarkerFillColorKind(WinRec_tag* win) { return methodsOf(win)->markerFillKind; }
Color_tag* wm_GetLineMarkerFillColor(WinRec_tag* win) {
  return colorOf(methodsOf(win)->markerFillKind, methodsOf(win)->markerFillValue);
}
int wm_GetLineMarkerFillColorIndex(WinRec_tag* win) {
  return indexOf(methodsOf(win)->markerFillKind, methodsOf(win)->markerFillValue);
}
int wm_GetLineMarkerFrameColorKind(WinRec_tag* win) { return methodsOf(win)->markerFrameKind; }
Color_tag* wm_GetLineMarkerFrameColor(WinRec_tag* win) {
  return colorOf(methodsOf(win)->markerFrameKind, methodsOf(win)->markerFrameValue);
}
int wm_GetLineMarkerFrameColorIndex(WinRec_tag* win) {
  return indexOf(methodsOf(win)->markerFrameKind, methodsOf(win)->markerFrameValue);
}

bool wm_SkipResize(WinRec_tag* win, bool skip) {
  winMethods_tag* m = methodsOf(win);
  const bool previous = m->skipResize;
  m->skipResize = skip;
  return previous;
}

void wm_SetWindowsShowing(WinRec_tag* win, bool showing) { methodsOf(win)->windowsShowing = showing; }
bool wm_GetWindowsShowing(WinRec_tag* win) { return methodsOf(win)->windowsShowing; }
void wm_SetWindowValid(WinRec_tag* win, bool valid) { methodsOf(win)->windowValid = valid; }
bool wm_GetWindowValid(WinRec_tag* win) { return methodsOf(win)->windowValid; }
void* wm_GetLastClipRegion(WinRec_tag* win) { return methodsOf(win)->lastClipRegion; }
bool wm_IsWindowBeingDestroyed(WinRec_tag* win) { return methodsOf(win)->beingDestroyed; }
void wm_SetCurrentEdit(WinRec_tag* win, QVObject_tag** edit) { methodsOf(win)->currentEdit = edit; }
QVObject_tag** wm_GetCurrentEdit(WinRec_tag* win) { return methodsOf(win)->currentEdit; }
void wm_SetPrintingFlag(WinRec_tag* win, bool printing) { methodsOf(win)->printing = printing; }
bool wm_GetPrintingFlag(WinRec_tag* win) { return methodsOf(win)->printing; }
void wm_SetFontCache(WinRec_tag* win, Set_tag* cache) { methodsOf(win)->fontCache = cache; }
Set_tag* wm_GetFontCache(WinRec_tag* win) { return methodsOf(win)->fontCache; }

// ---- Process-wide window state ---------------------------------------------------------

void set_current_Window(WinRec_tag* win) {
  g_currentWindow = win;
  g_currentMethods = win ? methodsOf(win) : nullptr;
  gui_objects::WindowProxyRegistry::FindSystemMethodsProxy()->setCurrentWindow(win);
}

WinRec_tag* get_current_Window() { return g_currentWindow; }
winMethods_tag* get_current_winMethods() { return g_currentMethods; }

void ws_SetScreenPixelsPerPoint(double pixelsPerPoint) { g_screenPixelsPerPoint = pixelsPerPoint; }
double ws_GetScreenPixelsPerPoint() { return g_screenPixelsPerPoint; }

bool wmi_IsRealLineType(LineTypes type) { return type >= LINE_SOLID && type <= LINE_DASHDOT; }
