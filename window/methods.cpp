// The window-method table: creation, the swm_ setters with their defaults, the
// gwm_ getters and the generated profiled wm_ callers.
#include "qvgui/raster.h"
#include "window/methods_p.h"

namespace qvgui_window {
namespace {

// The default of a slot: a function of the slot's own type that does nothing
// and returns 0 / null / false / 0.0.
template <class Fn>
struct DefaultOf;
template <class R, class... A>
struct DefaultOf<R (*)(A...)> {
  static R fn(A...) { return R(); }
};

// Whether a setter stores a null pointer as given (caller-checks slots).
constexpr bool kStoresNull_NOTHING = false;
constexpr bool kStoresNull_ZERO = false;
constexpr bool kStoresNull_CHECK = true;
constexpr bool kStoresNull_EVENT = true;

}  // namespace
}  // namespace qvgui_window

using namespace qvgui_window;

// ---- Setters and getters ---------------------------------------------------------

#define QVGUI_WM_DEFINE_SETTER_(Name, Ret, Kind, Caller, ...)                        \
  void swm_##Name(winMethods_tag* methods, wm##Name##Fcn fn) {                       \
    if (!methods) return;                                                            \
    methods->Name = (fn || kStoresNull_##Kind) ? fn : &DefaultOf<wm##Name##Fcn>::fn; \
  }
QVGUI_WM_SLOTS(QVGUI_WM_DEFINE_SETTER_)
#undef QVGUI_WM_DEFINE_SETTER_

#define QVGUI_WM_DEFINE_GETTER_(Name)                                 \
  void gwm_##Name(const winMethods_tag* methods, wm##Name##Fcn* fn) { \
    if (fn) *fn = methods ? methods->Name : nullptr;                  \
  }
QVGUI_WM_GETTERS(QVGUI_WM_DEFINE_GETTER_)
#undef QVGUI_WM_DEFINE_GETTER_

void wm_InstallDefaults(winMethods_tag* methods) {
#define QVGUI_WM_INSTALL_DEFAULT_(Name, Ret, Kind, Caller, ...) swm_##Name(methods, nullptr);
  QVGUI_WM_SLOTS(QVGUI_WM_INSTALL_DEFAULT_)
#undef QVGUI_WM_INSTALL_DEFAULT_
}

// ---- Creation ----------------------------------------------------------------------

winMethods_tag* wm_Create() {
  static const bool featuresRegistered = (registerProfileFeatures(), true);
  (void)featuresRegistered;

  auto* methods = static_cast<winMethods_tag*>(utCallocWithCheck(1, sizeof(winMethods_tag)));
  // Slots every window system shares; the back end fills (or defaults) the rest.
  swm_WindowStyleFcn(methods, nullptr);
  swm_ExposeFcn(methods, nullptr);
  swm_ResizeFcn(methods, nullptr);
  swm_KeydownFcn(methods, nullptr);
  swm_KeyupFcn(methods, nullptr);
  swm_ButtondownFcn(methods, nullptr);
  swm_ButtonmotionFcn(methods, nullptr);
  swm_ButtonupFcn(methods, nullptr);
  swm_ScrollwheelFcn(methods, nullptr);
  swm_SetControlTemplateRegion(methods, nullptr);
  methods->markerSize = 1.0;
  methods->lineMarker = 13;
  methods->windowsShowing = true;
  methods->windowValid = true;
  return methods;
}

// The slots that do not depend on the window system, copied by wm_CreateWithWSIfcns.
#define QVGUI_WM_WS_INDEPENDENT(X) \
  X(CloseWindow)                   \
  X(SetVisual)                     \
  X(AllocateFixedColors)           \
  X(DeallocateFixedColors)         \
  X(KeydownFcn)                    \
  X(KeyupFcn)                      \
  X(ButtondownFcn)                 \
  X(ButtonmotionFcn)               \
  X(ButtonupFcn)                   \
  X(ScrollwheelFcn)                \
  X(PreExposeFcn)                  \
  X(ExposeFcn)                     \
  X(ResizeFcn)                     \
  X(FigureMoved)                   \
  X(Resize_With_Rects_Fcn)         \
  X(CreateClipRegion)              \
  X(DestroyClipRegion)             \
  X(RectEnclosingRegion)           \
  X(RectInRegion)                  \
  X(IntersectRegions)              \
  X(UnionRectRegion)               \
  X(UnionRegions)                  \
  X(DrawStringIntoBitmap)          \
  X(CreateToolbar)                 \
  X(CreateWSCData)                 \
  X(DestroyWSCData)

winMethods_tag* wm_CreateWithWSIfcns(const winMethods_tag* src) {
  winMethods_tag* methods = wm_Create();
  if (!src) return methods;
#define QVGUI_WM_COPY_SLOT_(Name) methods->Name = src->Name;
  QVGUI_WM_WS_INDEPENDENT(QVGUI_WM_COPY_SLOT_)
#undef QVGUI_WM_COPY_SLOT_
  return methods;
}

void wm_Destroy(winMethods_tag* methods) {
  if (!methods) return;
  destroy_ColorPtr(methods->drawModeColor);
  utFree(methods);
}

// ---- Generated callers ---------------------------------------------------------------

#define QVGUI_WM_CALLER_NOTHING(Name, Ret, ...)                                        \
  Ret wm_##Name(QVGUI_WM_PARAMS(__VA_ARGS__)) {                                        \
    return callSlot<kProfile_##Name>(methodsOf(a1)->Name, QVGUI_WM_ARGS(__VA_ARGS__)); \
  }
#define QVGUI_WM_CALLER_ZERO(Name, Ret, ...) QVGUI_WM_CALLER_NOTHING(Name, Ret, __VA_ARGS__)
#define QVGUI_WM_CALLER_CHECK(Name, Ret, ...)                                                 \
  Ret wm_##Name(QVGUI_WM_PARAMS(__VA_ARGS__)) {                                               \
    return callCheckedSlot<kProfile_##Name>(methodsOf(a1)->Name, QVGUI_WM_ARGS(__VA_ARGS__)); \
  }
#define QVGUI_WM_CALLER_EVENT(Name, Ret, ...)                             \
  Ret wm_##Name(WinRec_tag* win, void* event) {                           \
    return callCheckedSlot<kProfile_##Name>(methodsOf(win)->Name, event); \
  }
#define QVGUI_WM_CALLER_GEN(Name, Ret, Kind, ...) QVGUI_WM_CALLER_##Kind(Name, Ret, __VA_ARGS__)
#define QVGUI_WM_CALLER_OWN(Name, Ret, Kind, ...)
#define QVGUI_WM_DEFINE_CALLER_(Name, Ret, Kind, Caller, ...) \
  QVGUI_WM_CALLER_##Caller(Name, Ret, Kind, __VA_ARGS__)
QVGUI_WM_SLOTS(QVGUI_WM_DEFINE_CALLER_)
#undef QVGUI_WM_DEFINE_CALLER_
