// Window-method table: creation defaults, setters and their defaults, the
// copy of window-system-independent slots, and the callers with state.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "qvgui/raster.h"
#include "qvgui/window.h"

namespace {

using gui_objects::test::NullDraw2D;
using gui_objects::test::WindowMethodRecorder;

// Caller-checks slots (null stored as given), listed independently of the
// library's own table.
// clang-format off
const std::set<std::string> kCallerChecks = {
    "GetDriverType", "GetChildWindow", "RecreateChildWindow", "PrepareRenderEngine", "PreExposeFcn",
    "LineSpacing", "SetOffscreenDrawing", "EnableOffscreenDrawing", "BlitOffscreenBuffer",
    "ImageCaptureOffscreenBuffer", "GetImageTrueColor", "IsWindowTrueColor", "get_event_point",
    "get_event_select_type", "copy_event", "PostMessage", "GetNumberOfMonitors", "GetMonitorScreenRect",
    "BlitOffScreenBufferNoClip", "DestroyPixMap", "CreateCopyOfOffScreenPixMap", "MakeOffScreenBufferCurrent",
    "CopyPixMapToOffScreenPixMap"};

const std::set<std::string> kFilledByCreate = {
    "WindowStyleFcn", "ExposeFcn", "ResizeFcn", "KeydownFcn", "KeyupFcn", "ButtondownFcn", "ButtonmotionFcn",
    "ButtonupFcn", "ScrollwheelFcn", "SetControlTemplateRegion"};

const std::set<std::string> kWindowSystemIndependent = {
    "CloseWindow", "SetVisual", "AllocateFixedColors", "DeallocateFixedColors", "KeydownFcn", "KeyupFcn",
    "ButtondownFcn", "ButtonmotionFcn", "ButtonupFcn", "ScrollwheelFcn", "PreExposeFcn", "ExposeFcn",
    "ResizeFcn", "FigureMoved", "Resize_With_Rects_Fcn", "CreateClipRegion", "DestroyClipRegion",
    "RectEnclosingRegion", "RectInRegion", "IntersectRegions", "UnionRectRegion", "UnionRegions",
    "DrawStringIntoBitmap", "CreateToolbar", "CreateWSCData", "DestroyWSCData"};
// clang-format on

struct Slot {
  std::string name;
  const void* fn;
};

std::vector<Slot> slotsOf(const winMethods_tag* t) {
  std::vector<Slot> slots;
#define QV_TEST_SLOT(Name, Ret, Kind, Caller, ...) \
  slots.push_back({#Name, reinterpret_cast<const void*>(t->Name)});
  QVGUI_WM_SLOTS(QV_TEST_SLOT)
#undef QV_TEST_SLOT
  return slots;
}

template <class R, class... A>
bool callReturnsZero(R (*fn)(WinRec_tag*, A...), WinRec_tag* w) {
  if constexpr (std::is_void_v<R>) {
    fn(w, A{}...);
    return true;
  } else {
    return fn(w, A{}...) == R();
  }
}

TEST(window_methods, CreateFillsOnlyTheSharedSlotsAndStateDefaults) {
  winMethods_tag* t = wm_Create();
  for (const Slot& s : slotsOf(t)) {
    SCOPED_TRACE(s.name);
    EXPECT_EQ(s.fn != nullptr, kFilledByCreate.count(s.name) == 1);
  }
  WinRec_tag* win = wr_Create(0, nullptr);
  swr_winMethods(win, t);
  EXPECT_TRUE(wm_GetWindowsShowing(win));
  EXPECT_TRUE(wm_GetWindowValid(win));
  EXPECT_EQ(wm_GetMarkerSize(win), 1.0);
  EXPECT_EQ(wm_GetLineMarker(win), 13);
  EXPECT_EQ(wm_GetDrawMode(win), GO_NORMAL_MODE);
  EXPECT_EQ(wm_GetExposeCount(win), 0u);
  EXPECT_FALSE(wm_IsWindowBeingDestroyed(win));
  EXPECT_EQ(wm_GetFGColormapIndex(win), -1);
  wr_Destroy(win);
  wm_Destroy(t);
}

TEST(window_methods, NullSetterInstallsDefaultExceptForCallerChecks) {
  NullDraw2D target;  // every setter called with null
  ASSERT_EQ(slotsOf(target.methods()).size(), 148u);
  for (const Slot& s : slotsOf(target.methods())) {
    SCOPED_TRACE(s.name);
    EXPECT_EQ(s.fn == nullptr, kCallerChecks.count(s.name) == 1);
  }
  // Every caller is safe on such a table and answers 0 / null / false / 0.0.
  WinRec_tag* w = target.window();
  std::vector<std::string> nonZero;
#define QV_TEST_CALL(Name, Ret, Kind, Caller, ...) \
  if (!callReturnsZero(&wm_##Name, w)) nonZero.push_back(#Name);
  QVGUI_WM_SLOTS(QV_TEST_CALL)
#undef QV_TEST_CALL
  EXPECT_TRUE(nonZero.empty()) << nonZero.front();
  EXPECT_FALSE(wm_CloseWindow(w));
  EXPECT_EQ(wm_PixelsPerPoint(w), 0.0);
}

TEST(window_methods, EveryCallerReachesItsOwnSlot) {
  WindowMethodRecorder rec;
  std::vector<std::string> expected;
#define QV_TEST_CALL(Name, Ret, Kind, Caller, ...) \
  expected.push_back(#Name);                       \
  callReturnsZero(&wm_##Name, rec.window());
  QVGUI_WM_SLOTS(QV_TEST_CALL)
#undef QV_TEST_CALL
  ASSERT_EQ(rec.calls().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(rec.calls()[i].slot, expected[i]);
}

TEST(window_methods, RecorderKeepsArgumentsAndResults) {
  WindowMethodRecorder rec;
  WinRec_tag* w = rec.window();
  const qvrect r{1, 2, 3, 4};
  wm_FrameRect(w, &r);
  wm_SetWindowTitle(w, "Figure 1");
  wm_FrameArc(w, &r, 90, -45);
  wm_SetLineWidth(w, 0.5);
  wm_SetTextAlignment(w, TEXT_HALIGN_RIGHT, TEXT_VALIGN_BASELINE);
  wm_FigureMoved(w, r, qvrect{}, r);
  rec.setResult("StringWidth", 42);
  rec.setResult("IsWindowVisible", 1);
  rec.setResult("GetVisualType", VISUAL_TRUECOLOR);
  rec.setPointerResult("GetPeerWindow", &rec);
  EXPECT_EQ(wm_StringWidth(w, "abc"), 42);
  EXPECT_TRUE(wm_IsWindowVisible(w));
  EXPECT_EQ(wm_GetVisualType(w), VISUAL_TRUECOLOR);
  EXPECT_EQ(wm_GetPeerWindow(w), &rec);
  std::vector<std::string> texts;
  for (const auto& c : rec.calls()) texts.push_back(c.toString());
  EXPECT_EQ(texts,
            (std::vector<std::string>{
                "FrameRect([1 2 3 4])", "SetWindowTitle(\"Figure 1\")", "FrameArc([1 2 3 4], 90, -45)",
                "SetLineWidth(0.5)", "SetTextAlignment(2, 3)", "FigureMoved([1 2 3 4], [0 0 0 0], [1 2 3 4])",
                "StringWidth(\"abc\")", "IsWindowVisible()", "GetVisualType()", "GetPeerWindow()"}));
  EXPECT_EQ(rec.count("FrameRect"), 1u);
}

TEST(window_methods, CreateWithWSIfcnsCopiesExactlyTheIndependentSlots) {
  WindowMethodRecorder src;  // every slot non-null
  src.methods()->markerSize = 7.0;
  winMethods_tag* fresh = wm_Create();
  winMethods_tag* copy = wm_CreateWithWSIfcns(src.methods());
  const auto s = slotsOf(src.methods()), f = slotsOf(fresh), c = slotsOf(copy);
  for (std::size_t i = 0; i < c.size(); ++i) {
    SCOPED_TRACE(c[i].name);
    EXPECT_EQ(c[i].fn, kWindowSystemIndependent.count(c[i].name) ? s[i].fn : f[i].fn);
  }
  EXPECT_EQ(copy->markerSize, 1.0);
  wm_Destroy(copy);
  wm_Destroy(fresh);
}

TEST(window_methods, CallersWithFallbacksAndFlags) {
  WindowMethodRecorder rec;
  WinRec_tag* w = rec.window();
  rec.setResult("StringHeight", 12);
  rec.setResult("StringDescent", 3);
  rec.setResult("LineSpacing", 20);
  EXPECT_EQ(wm_LineSpacing(w), 20);
  swm_LineSpacing(rec.methods(), nullptr);
  EXPECT_EQ(wm_LineSpacing(w), 15);

  EXPECT_FALSE(wm_SkipResize(w, true));
  wm_ResizeFcn(w);
  EXPECT_EQ(rec.count("ResizeFcn"), 0u);
  EXPECT_TRUE(wm_SkipResize(w, false));
  wm_ResizeFcn(w);
  EXPECT_EQ(rec.count("ResizeFcn"), 1u);

  rec.setResult("IsWindowValid", 1);
  EXPECT_TRUE(wm_IsWindowValid(w));
  wm_SetWindowValid(w, false);
  EXPECT_FALSE(wm_IsWindowValid(w));

  rec.setResult("PreExposeFcn", 1);
  EXPECT_TRUE(wm_PreExposeFcn(w));
  wm_ExposeFcn_Pre_Optional(w);
  wm_ExposeFcn_Pre_Optional(w);
  EXPECT_EQ(wm_GetExposeCount(w), 2u);
  wm_DestroyWindow(w);
  EXPECT_TRUE(wm_IsWindowBeingDestroyed(w));
  rec.clear();
  EXPECT_FALSE(wm_PreExposeFcn(w));
  wm_ExposeFcn_Pre_Optional(w);
  EXPECT_EQ(wm_GetExposeCount(w), 2u);
  EXPECT_TRUE(rec.calls().empty());
  CallExposeFromMethodRec(w, rec.methods());  // no flag checks
  EXPECT_EQ(rec.count("ExposeFcn"), 1u);
}

TEST(window_methods, LineTypeGatesDrawingButNotThePen) {
  WindowMethodRecorder rec;
  WinRec_tag* w = rec.window();
  int xs[2] = {0, 5}, ys[2] = {0, 5};
  wm_SetLineType(w, LINE_NONE);
  wm_MoveTo(w, 1, 2);
  wm_LineTo(w, 30, 40);
  wm_PolyLine(w, xs, ys, 2);
  wm_PolyLineRP3(w, nullptr, 0);
  EXPECT_EQ(wm_GetPenPosition(w).h, 30);
  EXPECT_EQ(wm_GetPenPosition(w).v, 40);
  EXPECT_EQ(rec.count("LineTo") + rec.count("PolyLine") + rec.count("PolyLineRP3"), 0u);
  wm_SetLineType(w, LINE_DOTTED);
  wm_LineTo(w, 3, 4);
  wm_PolyLine(w, xs, ys, 2);
  EXPECT_EQ(rec.count("LineTo") + rec.count("PolyLine"), 2u);

  const std::pair<int, bool> cases[] = {
      {LINE_SOLID, true}, {LINE_DASHDOT, true}, {LINE_NONE, false}, {-1, false}, {99, false}};
  for (const auto& [type, real] : cases) {
    SCOPED_TRACE(type);
    EXPECT_EQ(wmi_IsRealLineType(static_cast<LineTypes>(type)), real);
  }
}

TEST(window_methods, EraseModeKeepsTheDrawModeColour) {
  WindowMethodRecorder rec;
  WinRec_tag* w = rec.window();
  Color_tag* white = create_ColorPtrFromRGB(1, 1, 1);
  Color_tag* red = create_ColorPtrFromRGB(1, 0, 0);
  wm_SetDrawModeColor(w, white);
  Color_tag* held = wm_GetDrawModeColor(w);
  ASSERT_NE(held, nullptr);
  EXPECT_NE(held, white) << "a copy is kept";
  EXPECT_TRUE(Is_ColorPtrRGB_Equal(held, 1, 1, 1));
  wm_SetDrawModeColor(w, held);  // the same record: kept as it is
  EXPECT_EQ(wm_GetDrawModeColor(w), held);

  wm_SetDrawMode(w, GO_ERASE_MODE);
  wm_SetFGColorPtr(w, red);
  wm_SetFGColormapIndex(w, 4);
  EXPECT_EQ(wm_GetFGColormapIndex(w), 4);
  wm_SetDrawMode(w, GO_NORMAL_MODE);
  wm_SetFGColorPtr(w, red);
  EXPECT_EQ(wm_GetFGColorPtr(w), red);
  const std::string heldText = WindowMethodRecorder::formatPointer(held);
  const std::string redText = WindowMethodRecorder::formatPointer(red);
  std::vector<std::string> fg;
  for (const auto& c : rec.calls())
    if (c.slot.rfind("SetFG", 0) == 0) fg.push_back(c.toString());
  EXPECT_EQ(fg,
            (std::vector<std::string>{"SetFGColorPtr(" + heldText + ")", "SetFGColorPtr(" + heldText + ")",
                                      "SetFGColorPtr(" + redText + ")"}));
  wm_SetDrawModeColor(w, red);  // replaces (and frees) the white copy
  EXPECT_TRUE(Is_ColorPtrRGB_Equal(wm_GetDrawModeColor(w), 1, 0, 0));
  destroy_ColorPtr(white);
  destroy_ColorPtr(red);
}

TEST(window_methods, MarkerColourState) {
  NullDraw2D target;
  WinRec_tag* w = target.window();
  Color_tag* c = create_ColorPtrFromRGB(0, 0, 1);
  wm_SetLineMarkerFillColor(w, c);
  wm_SetLineMarkerFrameColorIndex(w, 7);
  EXPECT_EQ(wm_GetLineMarkerFillColorKind(w), WM_COLOR_PTR);
  EXPECT_EQ(wm_GetLineMarkerFillColor(w), c);
  EXPECT_EQ(wm_GetLineMarkerFillColorIndex(w), -1);
  EXPECT_EQ(wm_GetLineMarkerFrameColorKind(w), WM_COLOR_INDEX);
  EXPECT_EQ(wm_GetLineMarkerFrameColorIndex(w), 7);
  EXPECT_EQ(wm_GetLineMarkerFrameColor(w), nullptr);
  wm_SetLineMarkerFillColorIndex(w, 0);
  EXPECT_EQ(wm_GetLineMarkerFillColor(w), nullptr);
  EXPECT_EQ(wm_GetLineMarkerFillColorIndex(w), 0);
  destroy_ColorPtr(c);
}

}  // namespace
