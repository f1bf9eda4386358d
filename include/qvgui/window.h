// Window-system layer: the per-window method table and its profiled callers,
// window proxies and their registries, the numeric handle table, UI events and
// the test doubles of this layer.
//
// Raises: HostError with "Tavrix::gui::handle::AllocationFailed",
// "Tavrix::gui::handle::BadArguments" and the host's out-of-memory identifier,
// and the warnings "Tavrix::gui::handle::OutOfUniqueHandles" and
// "Tavrix::gui::handle::IntegerHandleArrayFull". An unknown handle resolves
// to null, not an error.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qvgui/export.h"
#include "qvgui/geometry.h"
#include "qvgui/host.h"

// ---- Records that pass through this layer unopened -----------------------------
//
// Colour records, colour tables, polygons, fonts and render data belong to the
// raster and text code; the window layer only hands their pointers on.
struct Color_tag;
struct Colortable_tag;
struct Polygon2;
struct zrFont;
struct tagRenderCData;
struct _TrueColorPixelInfo_tag;
struct winSysColorData_tag;
struct Bump_tag;
struct QVObject_tag;
struct Set_tag;
struct tavrixRect_tag;
// Unit enumeration of the font records (2 normalised, 3 points, others by proxy).
enum UnitTypes : int;

struct WinRec_tag;
struct winMethods_tag;
struct HandleTable_tag;

// ---- Enumerations of the method slots ------------------------------------------

enum PositionMode : int {
  POSITION_MODE_NORMAL = 0,
  POSITION_MODE_DOCKED = 1,
  POSITION_MODE_MAXIMIZED = 2,
  POSITION_MODE_MINIMIZED = 3,
};

// How drawing combines with the window. In GO_ERASE_MODE everything is drawn in
// the window's draw-mode colour, so the foreground-colour calls only record the
// requested colour and hand the draw-mode colour to the back end instead.
enum GOEraseMode : int {
  GO_NORMAL_MODE = 0,
  GO_ERASE_MODE = 1,
  GO_XOR_MODE = 2,
  GO_NONE_MODE = 3,
};

enum TextHorzAlign : int { TEXT_HALIGN_LEFT = 0, TEXT_HALIGN_CENTER = 1, TEXT_HALIGN_RIGHT = 2 };
enum TextVertAlign : int {
  TEXT_VALIGN_TOP = 0,
  TEXT_VALIGN_CAP = 1,
  TEXT_VALIGN_MIDDLE = 2,
  TEXT_VALIGN_BASELINE = 3,
  TEXT_VALIGN_BOTTOM = 4,
};

// LINE_NONE and any value outside the enumeration draw nothing (wmi_IsRealLineType).
enum LineTypes : int { LINE_SOLID = 0, LINE_DASHED = 1, LINE_DOTTED = 2, LINE_DASHDOT = 3, LINE_NONE = 4 };
enum LineJoins : int { LINE_JOIN_MITER = 0, LINE_JOIN_ROUND = 1, LINE_JOIN_BEVEL = 2 };
enum LineCaps : int { LINE_CAP_BUTT = 0, LINE_CAP_ROUND = 1, LINE_CAP_SQUARE = 2 };

enum VisualType : int {
  VISUAL_UNKNOWN = 0,
  VISUAL_PSEUDOCOLOR = 1,
  VISUAL_TRUECOLOR = 2,
  VISUAL_GRAYSCALE = 3,
};

enum ImageDataType : int {
  IMAGE_DATA_DOUBLE = 0,
  IMAGE_DATA_SINGLE = 1,
  IMAGE_DATA_UINT8 = 2,
  IMAGE_DATA_UINT16 = 3,
  IMAGE_DATA_LOGICAL = 4,
};

// Texture coordinates of WarpTriangle: three (u, v) pairs.
using wmTexCoordArray = double (*)[2];

// ---- The slot table ------------------------------------------------------------
//
// Every method slot, once, in storage order:
//   X(Name, result, default kind, caller, parameter types...)
// Default kinds: NOTHING (a do-nothing default), ZERO (a default returning 0,
// null, false or 0.0), CHECK (null is stored as given and the wm_ caller skips
// an empty slot, answering 0 / null), EVENT (as CHECK, but the slot decodes a
// platform event and takes only the event; its wm_ caller still takes the
// window first). Caller GEN: the plain profiled wm_ caller; OWN: the wm_ caller
// also keeps window state or has a fallback, and is written by hand.
//
// From the table come: the slot types wm<Name>Fcn, the fields of
// winMethods_tag, the setters swm_<Name>, the callers wm_<Name>, the profile
// entry names and the call recorder.
// clang-format off
#define QVGUI_WM_SLOTS(X) \
  X(SetWindowTitle, void, NOTHING, GEN, WinRec_tag*, const char*) \
  X(SetWindowName, void, NOTHING, GEN, WinRec_tag*, const char*) \
  X(SetWindowDockable, void, NOTHING, GEN, WinRec_tag*, bool) \
  X(SetFigureCloseRequestEnabled, void, NOTHING, GEN, WinRec_tag*, bool) \
  X(GetDriverType, int, CHECK, GEN, WinRec_tag*) \
  X(CloseWindow, bool, ZERO, GEN, WinRec_tag*) \
  X(GetWindowRect, void, NOTHING, GEN, WinRec_tag*, qvrect*) \
  X(GetWindowOuterRect, void, NOTHING, GEN, WinRec_tag*, qvrect*) \
  X(GetDrawableRect, void, NOTHING, GEN, WinRec_tag*, qvrect*) \
  X(GetVisibleRect, void, NOTHING, GEN, WinRec_tag*, qvrect*) \
  X(SetWindowRect, void, NOTHING, GEN, WinRec_tag*, const qvrect*) \
  X(SetWindowOuterRect, void, NOTHING, GEN, WinRec_tag*, const qvrect*) \
  X(GetPositionMode, PositionMode, ZERO, GEN, WinRec_tag*) \
  X(HideWindow, void, NOTHING, GEN, WinRec_tag*) \
  X(ShowWindow, void, NOTHING, GEN, WinRec_tag*) \
  X(ShowWindowNoActivate, void, NOTHING, GEN, WinRec_tag*) \
  X(InvalRect, void, NOTHING, GEN, WinRec_tag*, const qvrect*) \
  X(SetFigureBackgroundColor, void, NOTHING, GEN, WinRec_tag*, Color_tag*) \
  X(SetVisual, void, NOTHING, GEN, WinRec_tag*, int) \
  X(CauseExpose, void, NOTHING, GEN, WinRec_tag*) \
  X(CommitUpdates, void, NOTHING, GEN, WinRec_tag*) \
  X(GetChildWindow, void*, CHECK, GEN, WinRec_tag*) \
  X(RecreateChildWindow, void, CHECK, GEN, WinRec_tag*, const void*) \
  X(PrepareRenderEngine, void, CHECK, GEN, WinRec_tag*) \
  X(Flush, void, NOTHING, GEN, WinRec_tag*) \
  X(FrameRect, void, NOTHING, GEN, WinRec_tag*, const qvrect*) \
  X(FrameRoundRect, void, NOTHING, GEN, WinRec_tag*, const qvrect*, int, int) \
  X(PaintRoundRect, void, NOTHING, GEN, WinRec_tag*, const qvrect*, int, int) \
  X(LineTo, void, NOTHING, OWN, WinRec_tag*, short, short) \
  X(MoveTo, void, NOTHING, OWN, WinRec_tag*, short, short) \
  X(InstallColortable, void, NOTHING, GEN, WinRec_tag*, Colortable_tag*) \
  X(InstallWindowColormap, void, NOTHING, GEN, WinRec_tag*, Colortable_tag*) \
  X(AllocateFixedColors, void, NOTHING, GEN, WinRec_tag*, Color_tag**, int, Colortable_tag*) \
  X(DeallocateFixedColors, void, NOTHING, GEN, WinRec_tag*, Color_tag**, int, Colortable_tag*) \
  X(SetFGColor, void, NOTHING, GEN, WinRec_tag*, long) \
  X(SetBGColor, void, NOTHING, GEN, WinRec_tag*, long) \
  X(SetFGColorPtr, void, NOTHING, OWN, WinRec_tag*, Color_tag*) \
  X(SetFGColormapIndex, void, NOTHING, OWN, WinRec_tag*, int) \
  X(ColormapIndex2ColorPtr, void, NOTHING, GEN, WinRec_tag*, int, Color_tag*) \
  X(SetBGColorPtr, void, NOTHING, GEN, WinRec_tag*, Color_tag*) \
  X(SetDrawMode, void, NOTHING, OWN, WinRec_tag*, GOEraseMode) \
  X(ChangeCursor, void, NOTHING, GEN, WinRec_tag*, int) \
  X(CreateCustomCursor, void, NOTHING, GEN, WinRec_tag*, double*, int, int, int, int) \
  X(SetWindowFont, void, NOTHING, GEN, WinRec_tag*, zrFont*) \
  X(SetUnadjWindowFont, void, NOTHING, GEN, WinRec_tag*, zrFont*) \
  X(SetTextAlignment, void, NOTHING, OWN, WinRec_tag*, TextHorzAlign, TextVertAlign) \
  X(SetTextRotation, void, NOTHING, OWN, WinRec_tag*, int) \
  X(DrawPoly, void, NOTHING, GEN, WinRec_tag*, const Polygon2*, int*, Colortable_tag*) \
  X(PaintArc, void, NOTHING, GEN, WinRec_tag*, const qvrect*, int, int) \
  X(FrameArc, void, NOTHING, GEN, WinRec_tag*, const qvrect*, int, int) \
  X(PaintRect, void, NOTHING, GEN, WinRec_tag*, const qvrect*) \
  X(PaintPoly, void, NOTHING, GEN, WinRec_tag*, const Polygon2*, int*, Colortable_tag*) \
  X(RenderPoly, void, NOTHING, GEN, WinRec_tag*, const Polygon2*, tagRenderCData*) \
  X(EraseRect, void, NOTHING, GEN, WinRec_tag*, qvrect*) \
  X(FrameOval, void, NOTHING, GEN, WinRec_tag*, const qvrect*) \
  X(PaintOval, void, NOTHING, GEN, WinRec_tag*, const qvrect*) \
  X(PaintDot, void, NOTHING, GEN, WinRec_tag*, const qvrect*) \
  X(SetWindowStyle, void, NOTHING, GEN, WinRec_tag*, int) \
  X(WindowStyleFcn, void, NOTHING, GEN, WinRec_tag*, int) \
  X(PixelWidthPerIn, double, ZERO, GEN, WinRec_tag*) \
  X(PixelHeightPerIn, double, ZERO, GEN, WinRec_tag*) \
  X(PixelsPerPoint, double, ZERO, GEN, WinRec_tag*) \
  X(SetLineType, void, NOTHING, OWN, WinRec_tag*, LineTypes) \
  X(SetLineWidth, void, NOTHING, GEN, WinRec_tag*, double) \
  X(SetLineJoin, void, NOTHING, GEN, WinRec_tag*, LineJoins) \
  X(SetLineCap, void, NOTHING, GEN, WinRec_tag*, LineCaps) \
  X(PolyLine, void, NOTHING, OWN, WinRec_tag*, int*, int*, int) \
  X(PolyLineRP3, void, NOTHING, OWN, WinRec_tag*, Real_point3*, int) \
  X(WarpTriangle, void, NOTHING, GEN, WinRec_tag*, Polygon2*, Colortable_tag*, unsigned long, unsigned long, wmTexCoordArray, int*) \
  X(WarpImage, void, NOTHING, GEN, WinRec_tag*, Spoint2*, int, int, void*, ImageDataType, int, int, Colortable_tag*, Real_rect*) \
  X(WarpImageTrueColor, void, NOTHING, GEN, WinRec_tag*, Spoint2*, Real_rect*, Colortable_tag*, void*, ImageDataType, int, int, int, int) \
  X(FillInterpPoly, void, NOTHING, GEN, WinRec_tag*, const Polygon2*, double*, Colortable_tag*) \
  X(DrawInterpPoly, void, NOTHING, GEN, WinRec_tag*, const Polygon2*, double*, Colortable_tag*) \
  X(TilbTib, void, NOTHING, GEN, WinRec_tag*, qvrect*, unsigned char*, Colortable_tag*) \
  X(BlitTrue32, void, NOTHING, GEN, WinRec_tag*, qvrect*, unsigned int*) \
  X(GetTrueColorPixelInfo, void, NOTHING, GEN, WinRec_tag*, _TrueColorPixelInfo_tag*) \
  X(WinSysBitBlit, void, NOTHING, GEN, WinRec_tag*, qvrect*, void*) \
  X(CreateWinSysBitData32, void*, ZERO, GEN, WinRec_tag*, qvrect*, unsigned int*, bool) \
  X(CreateWinSysBitData, void*, ZERO, GEN, WinRec_tag*, unsigned char*, int, int, Colortable_tag*) \
  X(FreeWinSysBitData, void, NOTHING, GEN, WinRec_tag*, void*) \
  X(Point, void, NOTHING, GEN, WinRec_tag*, int, int) \
  X(KeydownFcn, void, NOTHING, GEN, WinRec_tag*, void*) \
  X(KeyupFcn, void, NOTHING, GEN, WinRec_tag*, void*) \
  X(ButtondownFcn, void, NOTHING, GEN, WinRec_tag*, void*) \
  X(ButtonmotionFcn, void, NOTHING, GEN, WinRec_tag*, void*) \
  X(ButtonupFcn, void, NOTHING, GEN, WinRec_tag*, void*) \
  X(ScrollwheelFcn, void, NOTHING, GEN, WinRec_tag*, void*) \
  X(AcceleratorFcn, void, NOTHING, GEN, WinRec_tag*, int) \
  X(PreExposeFcn, bool, CHECK, OWN, WinRec_tag*) \
  X(ExposeFcn, void, NOTHING, GEN, WinRec_tag*) \
  X(ResizeFcn, void, NOTHING, OWN, WinRec_tag*) \
  X(FigureMoved, void, NOTHING, GEN, WinRec_tag*, qvrect, qvrect, qvrect) \
  X(Resize_With_Rects_Fcn, void, NOTHING, GEN, WinRec_tag*, qvrect, qvrect, qvrect, bool) \
  X(SetWindowResize, void, NOTHING, GEN, WinRec_tag*, int) \
  X(SetWindowBackingStore, void, NOTHING, GEN, WinRec_tag*, int) \
  X(IsWindowVisible, bool, ZERO, GEN, WinRec_tag*) \
  X(IsWindowValid, bool, ZERO, OWN, WinRec_tag*) \
  X(GetZPolyMin, int, ZERO, GEN, WinRec_tag*) \
  X(GetScreenDepth, int, ZERO, GEN, WinRec_tag*) \
  X(GetVisualType, VisualType, ZERO, GEN, WinRec_tag*) \
  X(GetTextExtent, void, NOTHING, GEN, WinRec_tag*, const char*, qvrect*) \
  X(StringHeight, int, ZERO, GEN, WinRec_tag*) \
  X(StringCapHeight, int, ZERO, GEN, WinRec_tag*) \
  X(StringDescent, int, ZERO, GEN, WinRec_tag*) \
  X(LineSpacing, int, CHECK, OWN, WinRec_tag*) \
  X(StringWidth, int, ZERO, GEN, WinRec_tag*, const char*) \
  X(DrawString, void, NOTHING, GEN, WinRec_tag*, const char*) \
  X(GetDeviceFontExtent, void, NOTHING, GEN, WinRec_tag*, zrFont*, const char*, double, qvrect*) \
  X(SetControlTemplateRegion, void, NOTHING, GEN, WinRec_tag*, void*) \
  X(SetOffscreenDrawing, void, CHECK, GEN, WinRec_tag*, bool) \
  X(EnableOffscreenDrawing, void, CHECK, GEN, WinRec_tag*, bool) \
  X(BlitOffscreenBuffer, void, CHECK, GEN, WinRec_tag*) \
  X(ImageCaptureOffscreenBuffer, void, CHECK, GEN, WinRec_tag*) \
  X(GetClipRegion, void*, ZERO, GEN, WinRec_tag*) \
  X(SetClipRegion, void, NOTHING, OWN, WinRec_tag*, void*) \
  X(CreateClipRegion, void*, ZERO, GEN, WinRec_tag*) \
  X(DestroyClipRegion, void, NOTHING, GEN, WinRec_tag*, void*) \
  X(RectEnclosingRegion, void, NOTHING, GEN, WinRec_tag*, qvrect*, void*) \
  X(RectInRegion, bool, ZERO, GEN, WinRec_tag*, const qvrect*, void*) \
  X(IntersectRegions, void, NOTHING, GEN, WinRec_tag*, void*, void*) \
  X(UnionRectRegion, void, NOTHING, GEN, WinRec_tag*, const qvrect*, void*) \
  X(UnionRegions, void, NOTHING, GEN, WinRec_tag*, void*, void*) \
  X(GetImageTrueColor, void, CHECK, GEN, WinRec_tag*, qvrect*, unsigned char*) \
  X(IsWindowTrueColor, bool, CHECK, GEN, WinRec_tag*) \
  X(DrawStringIntoBitmap, Bump_tag*, ZERO, GEN, WinRec_tag*, const char*, int) \
  X(DestroyPeerWindow, bool, ZERO, GEN, WinRec_tag*) \
  X(DestroyWindow, void, NOTHING, OWN, WinRec_tag*) \
  X(CreateToolbar, void*, ZERO, GEN, WinRec_tag*) \
  X(CreateWSCData, void*, ZERO, GEN, WinRec_tag*, Colortable_tag*, zrArray_tag*, bool*) \
  X(DestroyWSCData, void, NOTHING, GEN, WinRec_tag*, void*) \
  X(get_event_point, qvpoint*, EVENT, GEN, void*) \
  X(get_event_select_type, int, EVENT, GEN, void*) \
  X(copy_event, void*, EVENT, GEN, void*) \
  X(PostMessage, void, CHECK, GEN, WinRec_tag*, int, void*) \
  X(StartDrawing, void, NOTHING, GEN, WinRec_tag*, qvrect*) \
  X(FinishDrawing, void, NOTHING, GEN, WinRec_tag*) \
  X(GetPeerWindow, void*, ZERO, GEN, WinRec_tag*) \
  X(GetNumberOfMonitors, int, CHECK, GEN, WinRec_tag*) \
  X(GetMonitorScreenRect, void, CHECK, OWN, WinRec_tag*, int, qvrect*) \
  X(BlitOffScreenBufferNoClip, void, CHECK, GEN, WinRec_tag*) \
  X(DestroyPixMap, void, CHECK, GEN, WinRec_tag*, void*) \
  X(CreateCopyOfOffScreenPixMap, void, CHECK, GEN, WinRec_tag*, void**) \
  X(MakeOffScreenBufferCurrent, void, CHECK, GEN, WinRec_tag*, bool) \
  X(CopyPixMapToOffScreenPixMap, void, CHECK, GEN, WinRec_tag*, void*) \
  X(ActivateClientFcn, void, NOTHING, GEN, WinRec_tag*) \
  X(DeactivateClientFcn, void, NOTHING, GEN, WinRec_tag*) \
  X(SetWindowOuterRectWithClientRectFlag, void, NOTHING, GEN, WinRec_tag*, const qvrect*, bool) \
  X(UnlockWindowOuterRect, void, NOTHING, GEN, WinRec_tag*)
// clang-format on

// Slot types: wm<Name>Fcn.
#define QVGUI_WM_FCN_TYPE_(Name, Ret, Kind, Caller, ...) using wm##Name##Fcn = Ret (*)(__VA_ARGS__);
QVGUI_WM_SLOTS(QVGUI_WM_FCN_TYPE_)
#undef QVGUI_WM_FCN_TYPE_

// The slots that can be read back (gwm_<Name>), so a back end can wrap them.
#define QVGUI_WM_GETTERS(X)      \
  X(SetLineWidth)                \
  X(PaintRect)                   \
  X(EraseRect)                   \
  X(SetFGColor)                  \
  X(SetWindowFont)               \
  X(BlitOffscreenBuffer)         \
  X(ImageCaptureOffscreenBuffer) \
  X(GetPeerWindow)               \
  X(GetNumberOfMonitors)         \
  X(GetMonitorScreenRect)

// ---- The per-window method table -----------------------------------------------
//
// One zero-filled block per window: every slot of QVGUI_WM_SLOTS in table
// order, then the drawing state that the wm_ layer keeps for the back end.
// Fields are public so a back end may inspect them; write them through the
// swm_ setters and wm_ accessors.
struct winMethods_tag {
#define QVGUI_WM_FIELD_(Name, Ret, Kind, Caller, ...) wm##Name##Fcn Name;
  QVGUI_WM_SLOTS(QVGUI_WM_FIELD_)
#undef QVGUI_WM_FIELD_

  bool exposePending;
  std::uint32_t exposeCount;
  std::int16_t penV;  // pen position: last point given to wm_MoveTo / wm_LineTo
  std::int16_t penH;
  GOEraseMode drawMode;
  Color_tag* drawModeColor;  // owned: a copy made by wm_SetDrawModeColor
  TextHorzAlign textHorzAlign;
  TextVertAlign textVertAlign;
  std::int32_t textRotation;
  LineTypes lineType;
  double markerSize;
  std::int32_t lineMarker;
  // Foreground colour state: kind 0 none, 1 colormap index, 2 colour record;
  // the value is the index or the record's address.
  std::int32_t fgColorKind;
  std::intptr_t fgColorValue;
  // Marker fill and frame colours, kinds as for the foreground.
  std::int32_t markerFillKind;
  std::int32_t markerFrameKind;
  std::intptr_t markerFillValue;
  std::intptr_t markerFrameValue;
  bool skipResize;
  bool windowsShowing;
  bool windowValid;
  void* lastClipRegion;
  bool beingDestroyed;
  QVObject_tag** currentEdit;
  bool printing;
  Set_tag* fontCache;  // not owned
};

// Colour kinds of the foreground and marker colour state.
enum : int { WM_COLOR_NONE = 0, WM_COLOR_INDEX = 1, WM_COLOR_PTR = 2 };

// ---- Window records --------------------------------------------------------------
//
// The per-window record is opaque outside the window-record code; these
// functions make, destroy and read it.
QVGUI_API WinRec_tag* wr_Create(int objectClass, void* object);
// Does not destroy the record's method table (its back end owns that). Null is fine.
QVGUI_API void wr_Destroy(WinRec_tag* win);
QVGUI_API winMethods_tag* gwr_winMethods(const WinRec_tag* win);
QVGUI_API void swr_winMethods(WinRec_tag* win, winMethods_tag* methods);
QVGUI_API int gwr_ObjectClass(const WinRec_tag* win);
QVGUI_API void* gwr_Object(const WinRec_tag* win);

// ---- Creating and filling a table --------------------------------------------------

// A new zero-filled table with the do-nothing default in WindowStyleFcn,
// ExposeFcn, ResizeFcn, the six key/button/scroll slots and
// SetControlTemplateRegion; every other slot null. Marker size 1.0, line
// marker 13, windows showing and window valid. The first call ever registers
// the profiler features "WMProfileClear", "WMProfileReport", "WMProfileEnable".
QVGUI_API winMethods_tag* wm_Create();
// wm_Create plus a copy of src's window-system-independent slots (no state).
QVGUI_API winMethods_tag* wm_CreateWithWSIfcns(const winMethods_tag* src);
// Destroys the draw-mode colour and frees the table. Null is fine.
QVGUI_API void wm_Destroy(winMethods_tag* methods);
// Calls every setter with null: each slot gets its default (caller-checks slots
// become empty). For back ends that implement a handful of slots.
QVGUI_API void wm_InstallDefaults(winMethods_tag* methods);

// Setters: store fn, or the slot's default when fn is null; caller-checks
// slots store fn as given.
#define QVGUI_WM_DECLARE_SETTER_(Name, Ret, Kind, Caller, ...) \
  QVGUI_API void swm_##Name(winMethods_tag* methods, wm##Name##Fcn fn);
QVGUI_WM_SLOTS(QVGUI_WM_DECLARE_SETTER_)
#undef QVGUI_WM_DECLARE_SETTER_

#define QVGUI_WM_DECLARE_GETTER_(Name) \
  QVGUI_API void gwm_##Name(const winMethods_tag* methods, wm##Name##Fcn* fn);
QVGUI_WM_GETTERS(QVGUI_WM_DECLARE_GETTER_)
#undef QVGUI_WM_DECLARE_GETTER_

// ---- Callers -----------------------------------------------------------------------
//
// wm_<Name>(window, arguments...) finds the window's table and calls the slot,
// timing the outermost call when profiling is on. The window must have a table,
// and a slot that is not of the caller-checks kind must have been installed
// (through its setter, null giving the default) before it is called.
#define QVGUI_WM_DECLARE_CALLER_NOTHING(Name, Ret, ...) QVGUI_API Ret wm_##Name(__VA_ARGS__);
#define QVGUI_WM_DECLARE_CALLER_ZERO(Name, Ret, ...) QVGUI_API Ret wm_##Name(__VA_ARGS__);
#define QVGUI_WM_DECLARE_CALLER_CHECK(Name, Ret, ...) QVGUI_API Ret wm_##Name(__VA_ARGS__);
#define QVGUI_WM_DECLARE_CALLER_EVENT(Name, Ret, ...) QVGUI_API Ret wm_##Name(WinRec_tag*, __VA_ARGS__);
#define QVGUI_WM_DECLARE_CALLER_(Name, Ret, Kind, Caller, ...) \
  QVGUI_WM_DECLARE_CALLER_##Kind(Name, Ret, __VA_ARGS__)
QVGUI_WM_SLOTS(QVGUI_WM_DECLARE_CALLER_)
#undef QVGUI_WM_DECLARE_CALLER_

// Callers with more to them than the slot:
//   wm_LineSpacing         the slot, else wm_StringHeight + wm_StringDescent
//   wm_GetMonitorScreenRect the slot, else the system-methods proxy's screen rectangle
//   wm_ResizeFcn           skipped while the skip-resize flag is set
//   wm_PreExposeFcn        nothing (false) while the window is being destroyed
//   wm_DestroyWindow       sets the being-destroyed flag first
//   wm_MoveTo, wm_LineTo   keep the pen position; LineTo draws only a real line type
//   wm_PolyLine, wm_PolyLineRP3  draw only with a real line type
//   wm_SetDrawMode, wm_SetTextAlignment, wm_SetTextRotation, wm_SetLineType,
//   wm_SetClipRegion       record the value, then call the slot
//   wm_SetFGColorPtr, wm_SetFGColormapIndex  record the colour; in GO_ERASE_MODE
//                          hand the draw-mode colour (if any) to SetFGColorPtr instead
//   wm_IsWindowValid       false while the window-valid flag is clear

// Does nothing while the window is being destroyed; otherwise calls ExposeFcn
// and counts the expose.
QVGUI_API void wm_ExposeFcn_Pre_Optional(WinRec_tag* win);
// Calls the table's ExposeFcn directly: no profiling and no flag checks.
QVGUI_API void CallExposeFromMethodRec(WinRec_tag* win, winMethods_tag* methods);

// ---- Window state ----------------------------------------------------------------
QVGUI_API void wm_SetExposePending(WinRec_tag* win, bool pending);
QVGUI_API bool wm_IsExposePending(WinRec_tag* win);
QVGUI_API std::uint32_t wm_GetExposeCount(WinRec_tag* win);
QVGUI_API qvpoint wm_GetPenPosition(WinRec_tag* win);
QVGUI_API GOEraseMode wm_GetDrawMode(WinRec_tag* win);
// Keeps a copy of color (the old copy destroyed) unless it is the record
// already held; null clears it.
QVGUI_API void wm_SetDrawModeColor(WinRec_tag* win, Color_tag* color);
QVGUI_API Color_tag* wm_GetDrawModeColor(WinRec_tag* win);
QVGUI_API TextHorzAlign wm_GetTextHorizontalAlignment(WinRec_tag* win);
QVGUI_API TextVertAlign wm_GetTextVerticalAlignment(WinRec_tag* win);
QVGUI_API int wm_GetTextRotation(WinRec_tag* win);
QVGUI_API LineTypes wm_GetLineType(WinRec_tag* win);
QVGUI_API void wm_SetMarkerSize(WinRec_tag* win, double size);
QVGUI_API double wm_GetMarkerSize(WinRec_tag* win);
QVGUI_API void wm_SetLineMarker(WinRec_tag* win, int marker);
QVGUI_API int wm_GetLineMarker(WinRec_tag* win);
// Foreground colour last requested: kind WM_COLOR_*, and the record or index.
QVGUI_API int wm_GetFGColorKind(WinRec_tag* win);
QVGUI_API Color_tag* wm_GetFGColorPtr(WinRec_tag* win);  // null unless kind WM_COLOR_PTR
QVGUI_API int wm_GetFGColormapIndex(WinRec_tag* win);    // -1 unless kind WM_COLOR_INDEX
QVGUI_API void wm_SetLineMarkerFillColor(WinRec_tag* win, Color_tag* color);
QVGUI_API void wm_SetLineMarkerFillColorIndex(WinRec_tag* win, int index);
QVGUI_API void wm_SetLineMarkerFrameColor(WinRec_tag* win, Color_tag* color);
QVGUI_API void wm_SetLineMarkerFrameColorIndex(WinRec_tag* win, int index);
QVGUI_API int wm_GetLineMarkerFillColorKind(WinRec_tag* win);
QVGUI_API Color_tag* wm_GetLineMarkerFillColor(WinRec_tag* win);
QVGUI_API int wm_GetLineMarkerFillColorIndex(WinRec_tag* win);
QVGUI_API int wm_GetLineMarkerFrameColorKind(WinRec_tag* win);
QVGUI_API Color_tag* wm_GetLineMarkerFrameColor(WinRec_tag* win);
QVGUI_API int wm_GetLineMarkerFrameColorIndex(WinRec_tag* win);
// Sets the skip-resize flag; returns its previous value.
QVGUI_API bool wm_SkipResize(WinRec_tag* win, bool skip);
QVGUI_API void wm_SetWindowsShowing(WinRec_tag* win, bool showing);
QVGUI_API bool wm_GetWindowsShowing(WinRec_tag* win);
QVGUI_API void wm_SetWindowValid(WinRec_tag* win, bool valid);
QVGUI_API bool wm_GetWindowValid(WinRec_tag* win);
QVGUI_API void* wm_GetLastClipRegion(WinRec_tag* win);
QVGUI_API bool wm_IsWindowBeingDestroyed(WinRec_tag* win);
QVGUI_API void wm_SetCurrentEdit(WinRec_tag* win, QVObject_tag** edit);
QVGUI_API QVObject_tag** wm_GetCurrentEdit(WinRec_tag* win);
QVGUI_API void wm_SetPrintingFlag(WinRec_tag* win, bool printing);
QVGUI_API bool wm_GetPrintingFlag(WinRec_tag* win);
QVGUI_API void wm_SetFontCache(WinRec_tag* win, Set_tag* cache);
QVGUI_API Set_tag* wm_GetFontCache(WinRec_tag* win);

// ---- Process-wide window state -------------------------------------------------------

// Records the window (and its table; null for a null window) as current, then
// hands it to the system-methods proxy's setCurrentWindow.
QVGUI_API void set_current_Window(WinRec_tag* win);
QVGUI_API WinRec_tag* get_current_Window();
QVGUI_API winMethods_tag* get_current_winMethods();
// The screen's pixels per point; 1.0 until set.
QVGUI_API void ws_SetScreenPixelsPerPoint(double pixelsPerPoint);
QVGUI_API double ws_GetScreenPixelsPerPoint();
// Whether a line type draws anything: LINE_SOLID to LINE_DASHDOT do.
QVGUI_API bool wmi_IsRealLineType(LineTypes type);

// ---- Profiler --------------------------------------------------------------------------
//
// One process-wide record of kWmProfileEntries entries, one per profiled wm_
// function: the slots in table order, then wm_ExposeFcn_Pre_Optional; the rest
// are spare. Only the outermost call of a method is counted and timed.
inline constexpr int kWmProfileEntries = 172;
// The features, also reachable through hostCallFeature by name.
QVGUI_API void wm_ProfileClear();
QVGUI_API bool wm_ProfileEnable(bool enable);
QVGUI_API void wm_ProfileReport();
// Inspection: the count and accumulated seconds of a profiled function
// ("wm_FrameRect"); -1 and 0.0 for a name that is not profiled.
QVGUI_API int wm_ProfileCount(const char* functionName);
QVGUI_API double wm_ProfileTime(const char* functionName);

// ---- Handle table --------------------------------------------------------------------
//
// A handle is a double: ordinary handles are index + reuse / 8192 (reuse 1 to
// 8191, 8192 retires a slot for good); integer (figure) handles are whole
// numbers, kept in a second table where figure n sits at index n with reuse 1.
// Anything malformed (NaN, infinite, negative, >= 2147483647, a fraction not
// equal to the slot's reuse count) resolves to null.
inline constexpr int kHandleBlockSize = 512;
inline constexpr int kHandleReuseLimit = 8192;
inline constexpr int kHandleDirectoryLimit = 4194303;

QVGUI_API HandleTable_tag* newHandleTable();
QVGUI_API void destroyHandleTable(HandleTable_tag* table);
QVGUI_API void* handle2pointer_in_table(HandleTable_tag* table, double h);
// Binds object at h; false for a malformed h, a fraction that is not a whole
// multiple of 1/8192 included. A whole-number h is bound in the integer table
// and still answers false (the binding is made).
QVGUI_API bool bind_handle_in_table(HandleTable_tag* table, double h, void* object);
// Frees the slot that h names; a stale or unknown h is ignored.
QVGUI_API void destroy_handle_in_table(HandleTable_tag* table, double h);

// The process-wide table.
QVGUI_API double new_handle(void* object);
QVGUI_API void destroy_handle(double h);
// As handle2pointer_in_table; a stored all-ones pointer also answers null.
QVGUI_API void* handle2pointer(double h);
QVGUI_API void* handle2pointerIgnoreReuseCount(int index);
QVGUI_API bool rebind_handle(double h, void* object);
QVGUI_API double new_figure_handle(void* object);
QVGUI_API bool assign_figure_handle(void* object, int n);
QVGUI_API bool is_handle_integer(double h);
QVGUI_API int get_max_integer_handle();
// Prints the process-wide table's blocks and bound slots through utPrintf.
QVGUI_API void print_handle_table();

// ---- Window proxies ------------------------------------------------------------------

namespace gui_objects {

class FontProxy;
class SystemMethodsProxy;

// A kind of window (a window class), implemented by the host. Every operation
// has a do-nothing default.
class QVGUI_API WindowProxy {
 public:
  virtual ~WindowProxy();
  virtual void* WinRecToObjectPtr(WinRec_tag* win) const;
  virtual WinRec_tag* HandleToWinRec(double handle) const;
  virtual double WinRecToHandle(WinRec_tag* win) const;  // -1.0
  virtual WinRec_tag* recreateWindow(WinRec_tag* win) const;
  virtual void createPeerWindow(WinRec_tag* win) const;
  virtual void restoreWindow(WinRec_tag* win) const;
  virtual void invalWindow(WinRec_tag* win) const;
  virtual WinRec_tag* getRootWindow() const;
  virtual void completeAllWindowUiUpdates(WinRec_tag* win) const;
  virtual void completeAllUiUpdates() const;
  virtual bool isObjectValid(double handle) const;
  virtual bool isObjectValid(WinRec_tag* win) const;
  virtual bool isVisible(WinRec_tag* win) const;
  virtual bool isResizable(WinRec_tag* win) const;
  virtual bool isBackingStore(WinRec_tag* win) const;
  virtual void setWindowStyle(WinRec_tag* win, int style) const;
  virtual void setCursor(WinRec_tag* win, int cursor) const;
  virtual void setVisible(WinRec_tag* win, bool visible) const;
  virtual void setBackingStore(WinRec_tag* win, bool backingStore) const;
  virtual void setLanguage(const char* language) const;
  virtual Colortable_tag* getColorTablePtr(WinRec_tag* win) const;
  virtual int getWindowStyle(WinRec_tag* win) const;
  // New colours (0, 0, 0) and (1, 1, 1); the caller owns them.
  virtual Color_tag* getDefaultMenuForegroundColor(WinRec_tag* win) const;
  virtual Color_tag* getDefaultMenuBackgroundColor(WinRec_tag* win) const;
  // One shared all-zero rectangle.
  virtual qvrect* getPixelPositionFast(WinRec_tag* win) const;
  virtual qvrect* getPixelOuterPositionFast(WinRec_tag* win) const;
  virtual int getCursor(WinRec_tag* win) const;
  // The system-methods proxy's default screen resolution.
  virtual double getScreenPixelsPerInch(WinRec_tag* win) const;
  virtual bool hasToolbar(WinRec_tag* win) const;
  virtual void commitAllDatabaseUpdates() const;
  virtual void finishTextEdit(WinRec_tag* win) const;
  virtual bool okToWaitForKeyOrButtonPress(WinRec_tag* win) const;
  virtual bool okToKeepWaitingForKeyOrButtonPress(WinRec_tag* win) const;
  virtual void abortWaitForKeyOrButtonPress(WinRec_tag* win) const;
  virtual WinRec_tag* topWinRecFromVector(std::vector<WinRec_tag*>& windows) const;

  int getWindowClass() const noexcept { return windowClass_; }
  FontProxy* getFontProxy() const noexcept { return fontProxy_; }
  SystemMethodsProxy* getSystemMethodsProxy() const noexcept { return systemMethodsProxy_; }

 protected:
  WindowProxy() = default;
  WindowProxy(const WindowProxy&) = default;
  WindowProxy& operator=(const WindowProxy&) = default;

  // Filled by the derived proxy; the class is the registry key.
  int windowClass_ = 0;
  FontProxy* fontProxy_ = nullptr;
  SystemMethodsProxy* systemMethodsProxy_ = nullptr;
};

// Font names and unit conversion of text rectangles.
class QVGUI_API FontProxy {
 public:
  virtual ~FontProxy();
  virtual const char* getFixedWidthFontName() const;        // ""
  virtual const char* getFixedWidthSystemFontName() const;  // ""
  virtual void convertTavrixRect(WinRec_tag* win, tavrixRect_tag* rect, UnitTypes from, UnitTypes to,
                                 qvrect* out) const;

 protected:
  FontProxy() = default;
  FontProxy(const FontProxy&) = default;
  FontProxy& operator=(const FontProxy&) = default;
};

// Clip regions, screen metrics, colour-table device data and the current window.
class QVGUI_API SystemMethodsProxy {
 public:
  virtual ~SystemMethodsProxy();
  virtual void* createClipRegion() const;
  virtual void destroyClipRegion(void* region) const;
  virtual void rectEnclosingRegion(qvrect* out, void* region) const;  // (0, 0, 0, 0)
  virtual bool rectInRegion(WinRec_tag* win, const qvrect* rect, void* region) const;
  virtual void intersectRegions(void* a, void* b) const;
  virtual void unionRectRegion(const qvrect* rect, void* region) const;
  virtual void unionRegions(void* a, void* b) const;
  virtual void freeSystemFont(zrFont* font) const;
  virtual void getScreenRect(qvrect* out) const;         // (0, 0, 0, 0)
  virtual double getDefaultScreenPixelsPerInch() const;  // 72.0
  virtual winSysColorData_tag* createColortablePtrWsd() const;
  virtual void destroyColortablePtrWsd(Colortable_tag* table) const;
  virtual void setCurrentWindow(WinRec_tag* win) const;

 protected:
  SystemMethodsProxy() = default;
  SystemMethodsProxy(const SystemMethodsProxy&) = default;
  SystemMethodsProxy& operator=(const SystemMethodsProxy&) = default;
};

// The process-wide registry of window proxies, keyed by window class. It does
// not own the proxies. A second registration under a class replaces the first
// (the host re-registers a class when it rebuilds its proxy). Lookups never
// yield null: unknown classes get a do-nothing base proxy.
class QVGUI_API WindowProxyRegistry {
 public:
  static void RegisterProxy(WindowProxy* proxy);
  static WindowProxy* FindProxy(int windowClass);
  static WindowProxy* FindProxy(WinRec_tag* win);
  // First non-null font / system-methods proxy in ascending class, else a base one.
  static FontProxy* FindFontProxy();
  static SystemMethodsProxy* FindSystemMethodsProxy();
  // First non-null root window in ascending class; null when none.
  static WinRec_tag* getRootWindow();
  static void setLanguage(const char* language);
  static void completeAllUiUpdates();
  static void commitAllDatabaseUpdates();

 private:
  WindowProxyRegistry() = default;
};

// Host object pointer to window record. add for an object already present
// replaces its record.
class QVGUI_API WinRecRegistry {
 public:
  static WinRecRegistry& getInstance();
  void add(void* object, WinRec_tag* win);
  void remove(void* object);
  WinRec_tag* find(void* object) const;
  // Forgets every entry.
  void clear();
  WinRecRegistry(const WinRecRegistry&) = delete;
  WinRecRegistry& operator=(const WinRecRegistry&) = delete;

 private:
  WinRecRegistry();
  ~WinRecRegistry();
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// ---- UI events ---------------------------------------------------------------------------

// A button, key or motion event of a window, as the back ends report it.
struct QVGUI_API UI_EventRecord {
  enum Type : int {
    None = 0,
    ButtonDown = 1,
    ButtonUp = 2,
    KeyDown = 3,
    KeyUp = 4,
    Motion = 5,
    ScrollWheel = 6,
  };
  // Modifier bits.
  enum : unsigned { ShiftKey = 1u, ControlKey = 2u, AltKey = 4u, MetaKey = 8u };

  Type type = None;
  WinRec_tag* window = nullptr;
  qvpoint where{};         // device pixels, y downwards
  int button = 0;          // 1 left, 2 middle, 3 right (button events)
  int key = 0;             // key code (key events)
  unsigned modifiers = 0;  // ShiftKey | ControlKey | ...
  int clickCount = 0;      // 2 for a double click
  int scrollCount = 0;     // wheel steps, positive downwards

  static UI_EventRecord makeButton(Type type, WinRec_tag* win, qvpoint where, int button,
                                   unsigned modifiers = 0);
  static UI_EventRecord makeKey(Type type, WinRec_tag* win, int key, unsigned modifiers = 0);
  static UI_EventRecord makeMotion(WinRec_tag* win, qvpoint where, unsigned modifiers = 0);

  bool isButtonEvent() const noexcept { return type == ButtonDown || type == ButtonUp; }
  bool isKeyEvent() const noexcept { return type == KeyDown || type == KeyUp; }
  bool isMotionEvent() const noexcept { return type == Motion; }
  // "ButtonDown", "ButtonUp", "KeyDown", "KeyUp", "Motion", "ScrollWheel", "None".
  const char* name() const noexcept { return typeName(type); }
  static const char* typeName(Type type) noexcept;
};

// Someone waiting for a key or button press in a window.
class QVGUI_API WaitForObserver {
 public:
  virtual ~WaitForObserver();
  // A key or button press arrived; return true when the wait is over.
  virtual bool keyOrButtonPressed(const UI_EventRecord& event) = 0;
  // The wait was abandoned (window closed, abort requested).
  virtual void waitAborted(WinRec_tag* win) = 0;

 protected:
  WaitForObserver() = default;
};

// Hands key-down and button-down events to the observers waiting on their
// window. An observer that reports its wait over is detached; observers are
// not owned.
class QVGUI_API WaitForSubject {
 public:
  WaitForSubject();
  ~WaitForSubject();
  WaitForSubject(const WaitForSubject&) = delete;
  WaitForSubject& operator=(const WaitForSubject&) = delete;

  // Attaching an observer already attached (to any window) moves it.
  void attach(WinRec_tag* win, WaitForObserver* observer);
  void detach(WaitForObserver* observer);
  bool isWaiting(WinRec_tag* win) const;
  std::size_t observerCount() const;
  // Returns how many observers saw the event; motion and release events and
  // events of other windows reach nobody.
  std::size_t notify(const UI_EventRecord& event);
  // Detaches every observer of the window, telling each.
  void abort(WinRec_tag* win);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

namespace test {

// Handles of every bound slot of table (the process-wide table for null), in
// index order; integer handles are not included.
QVGUI_API std::vector<double> get_all_handles(HandleTable_tag* table);
QVGUI_API int get_number_of_handles();
// Empties the process-wide handle table, the next-free hint and the lowest
// free integer handle, as in a fresh process.
QVGUI_API void reset_handle_table();
// Lowers the directory limit (kHandleDirectoryLimit when <= 0), so that
// exhaustion can be reached in a test.
QVGUI_API void set_handle_directory_limit(int entries);
// Sets the lowest free integer handle.
QVGUI_API void set_lowest_free_integer_handle(int n);
QVGUI_API int get_lowest_free_integer_handle();
// Forgets every registered window proxy and the WinRecRegistry's entries.
QVGUI_API void reset_window_registries();

// A do-nothing 2-D drawing target: a window record with its own table in
// which every slot has its default.
class QVGUI_API NullDraw2D {
 public:
  explicit NullDraw2D(int objectClass = 0, void* object = nullptr);
  ~NullDraw2D();
  NullDraw2D(const NullDraw2D&) = delete;
  NullDraw2D& operator=(const NullDraw2D&) = delete;
  WinRec_tag* window() const noexcept { return window_; }
  winMethods_tag* methods() const noexcept { return methods_; }

 private:
  WinRec_tag* window_;
  winMethods_tag* methods_;
};

// One recorded slot call: the slot's name and its arguments after the window,
// formatted (pointers as hexadecimal addresses, strings quoted, rectangles as
// [top left bottom right], points as (v h)).
struct QVGUI_API RecordedCall {
  std::string slot;
  std::vector<std::string> args;
  std::string toString() const;  // "FrameRect([1 2 3 4])"
};

// A back end that installs every slot of a table and records each call with
// its arguments. Results are 0 / null / false unless set with setResult.
class QVGUI_API WindowMethodRecorder {
 public:
  WindowMethodRecorder();
  ~WindowMethodRecorder();
  WindowMethodRecorder(const WindowMethodRecorder&) = delete;
  WindowMethodRecorder& operator=(const WindowMethodRecorder&) = delete;

  // A window record with a table that this recorder fills.
  WinRec_tag* window() const noexcept { return window_; }
  winMethods_tag* methods() const noexcept { return methods_; }
  // Installs the recording slots into another table (recorded calls of its
  // windows arrive here too).
  void install(winMethods_tag* methods);

  const std::vector<RecordedCall>& calls() const noexcept { return calls_; }
  std::vector<RecordedCall> callsTo(const std::string& slot) const;
  std::size_t count(const std::string& slot) const;
  void clear() { calls_.clear(); }

  // What a slot returns: numbers (also bool and enumerations) or pointers.
  void setResult(const std::string& slot, double value);
  void setPointerResult(const std::string& slot, void* value);

  // Formatting used for the recorded arguments, for building expectations.
  static std::string formatPointer(const void* p);

  // Internal: the recording slots call these.
  void record(RecordedCall call);
  double numericResult(const char* slot) const;
  void* pointerResult(const char* slot) const;
  static WindowMethodRecorder* forTable(const winMethods_tag* methods);
  static WindowMethodRecorder* latest();

 private:
  WinRec_tag* window_;
  winMethods_tag* methods_;
  std::vector<RecordedCall> calls_;
  struct Results;
  std::unique_ptr<Results> results_;
  std::vector<winMethods_tag*> installed_;
};

}  // namespace test
}  // namespace gui_objects
