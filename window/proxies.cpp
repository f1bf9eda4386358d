// Window, font and system-methods proxies with their do-nothing defaults, and
// the process-wide registries that find them.
#include <map>

#include "qvgui/raster.h"
#include "window/methods_p.h"

namespace gui_objects {

// ---- Base defaults -------------------------------------------------------------------

WindowProxy::~WindowProxy() = default;
void* WindowProxy::WinRecToObjectPtr(WinRec_tag*) const { return nullptr; }
WinRec_tag* WindowProxy::HandleToWinRec(double) const { return nullptr; }
double WindowProxy::WinRecToHandle(WinRec_tag*) const { return -1.0; }
WinRec_tag* WindowProxy::recreateWindow(WinRec_tag*) const { return nullptr; }
void WindowProxy::createPeerWindow(WinRec_tag*) const {}
void WindowProxy::restoreWindow(WinRec_tag*) const {}
void WindowProxy::invalWindow(WinRec_tag*) const {}
WinRec_tag* WindowProxy::getRootWindow() const { return nullptr; }
void WindowProxy::completeAllWindowUiUpdates(WinRec_tag*) const {}
void WindowProxy::completeAllUiUpdates() const {}
bool WindowProxy::isObjectValid(double) const { return false; }
bool WindowProxy::isObjectValid(WinRec_tag*) const { return false; }
bool WindowProxy::isVisible(WinRec_tag*) const { return false; }
bool WindowProxy::isResizable(WinRec_tag*) const { return false; }
bool WindowProxy::isBackingStore(WinRec_tag*) const { return false; }
void WindowProxy::setWindowStyle(WinRec_tag*, int) const {}
void WindowProxy::setCursor(WinRec_tag*, int) const {}
void WindowProxy::setVisible(WinRec_tag*, bool) const {}
void WindowProxy::setBackingStore(WinRec_tag*, bool) const {}
void WindowProxy::setLanguage(const char*) const {}
Colortable_tag* WindowProxy::getColorTablePtr(WinRec_tag*) const { return nullptr; }
int WindowProxy::getWindowStyle(WinRec_tag*) const { return 0; }
Color_tag* WindowProxy::getDefaultMenuForegroundColor(WinRec_tag*) const {
  return create_ColorPtrFromRGB(0.0, 0.0, 0.0);
}
Color_tag* WindowProxy::getDefaultMenuBackgroundColor(WinRec_tag*) const {
  return create_ColorPtrFromRGB(1.0, 1.0, 1.0);
}

namespace {
// Shared by every base proxy; callers must not write to it.
qvrect g_zeroRect{};
}  // namespace

qvrect* WindowProxy::getPixelPositionFast(WinRec_tag*) const { return &g_zeroRect; }
qvrect* WindowProxy::getPixelOuterPositionFast(WinRec_tag*) const { return &g_zeroRect; }
int WindowProxy::getCursor(WinRec_tag*) const { return 0; }
double WindowProxy::getScreenPixelsPerInch(WinRec_tag*) const {
  return WindowProxyRegistry::FindSystemMethodsProxy()->getDefaultScreenPixelsPerInch();
}
bool WindowProxy::hasToolbar(WinRec_tag*) const { return false; }
void WindowProxy::commitAllDatabaseUpdates() const {}
void WindowProxy::finishTextEdit(WinRec_tag*) const {}
bool WindowProxy::okToWaitForKeyOrButtonPress(WinRec_tag*) const { return false; }
bool WindowProxy::okToKeepWaitingForKeyOrButtonPress(WinRec_tag*) const { return false; }
void WindowProxy::abortWaitForKeyOrButtonPress(WinRec_tag*) const {}
WinRec_tag* WindowProxy::topWinRecFromVector(std::vector<WinRec_tag*>&) const { return nullptr; }

FontProxy::~FontProxy() = default;
const char* FontProxy::getFixedWidthFontName() const { return ""; }
const char* FontProxy::getFixedWidthSystemFontName() const { return ""; }
void FontProxy::convertTavrixRect(WinRec_tag*, tavrixRect_tag*, UnitTypes, UnitTypes, qvrect*) const {}

SystemMethodsProxy::~SystemMethodsProxy() = default;
void* SystemMethodsProxy::createClipRegion() const { return nullptr; }
void SystemMethodsProxy::destroyClipRegion(void*) const {}
void SystemMethodsProxy::rectEnclosingRegion(qvrect* out, void*) const {
  if (out) guiSetRect(out, 0, 0, 0, 0);
}
bool SystemMethodsProxy::rectInRegion(WinRec_tag*, const qvrect*, void*) const { return false; }
void SystemMethodsProxy::intersectRegions(void*, void*) const {}
void SystemMethodsProxy::unionRectRegion(const qvrect*, void*) const {}
void SystemMethodsProxy::unionRegions(void*, void*) const {}
void SystemMethodsProxy::freeSystemFont(zrFont*) const {}
void SystemMethodsProxy::getScreenRect(qvrect* out) const {
  if (out) guiSetRect(out, 0, 0, 0, 0);
}
double SystemMethodsProxy::getDefaultScreenPixelsPerInch() const { return 72.0; }
winSysColorData_tag* SystemMethodsProxy::createColortablePtrWsd() const { return nullptr; }
void SystemMethodsProxy::destroyColortablePtrWsd(Colortable_tag*) const {}
void SystemMethodsProxy::setCurrentWindow(WinRec_tag*) const {}

// ---- Window proxy registry ---------------------------------------------------------------

namespace {

// The base classes have protected constructors; the fallbacks are plain
// instances of them.
struct BaseWindowProxy final : WindowProxy {};
struct BaseFontProxy final : FontProxy {};
struct BaseSystemMethodsProxy final : SystemMethodsProxy {};

// Created on first use and never freed: proxies may be looked up while other
// static objects are destroyed.
std::map<int, WindowProxy*>& proxies() {
  static auto* map = new std::map<int, WindowProxy*>();
  return *map;
}

template <class T>
T* fallback() {
  static T* instance = new T();
  return instance;
}

}  // namespace

void WindowProxyRegistry::RegisterProxy(WindowProxy* proxy) {
  if (proxy) proxies()[proxy->getWindowClass()] = proxy;
}

WindowProxy* WindowProxyRegistry::FindProxy(int windowClass) {
  const auto& map = proxies();
  const auto it = map.find(windowClass);
  return it != map.end() ? it->second : fallback<BaseWindowProxy>();
}

WindowProxy* WindowProxyRegistry::FindProxy(WinRec_tag* win) { return FindProxy(gwr_ObjectClass(win)); }

FontProxy* WindowProxyRegistry::FindFontProxy() {
  for (const auto& entry : proxies())
    if (FontProxy* p = entry.second->getFontProxy()) return p;
  return fallback<BaseFontProxy>();
}

SystemMethodsProxy* WindowProxyRegistry::FindSystemMethodsProxy() {
  for (const auto& entry : proxies())
    if (SystemMethodsProxy* p = entry.second->getSystemMethodsProxy()) return p;
  return fallback<BaseSystemMethodsProxy>();
}

WinRec_tag* WindowProxyRegistry::getRootWindow() {
  for (const auto& entry : proxies())
    if (WinRec_tag* root = entry.second->getRootWindow()) return root;
  return nullptr;
}

void WindowProxyRegistry::setLanguage(const char* language) {
  for (const auto& entry : proxies()) entry.second->setLanguage(language);
}

void WindowProxyRegistry::completeAllUiUpdates() {
  for (const auto& entry : proxies()) entry.second->completeAllUiUpdates();
}

void WindowProxyRegistry::commitAllDatabaseUpdates() {
  for (const auto& entry : proxies()) entry.second->commitAllDatabaseUpdates();
}

// ---- Window record registry -------------------------------------------------------------

struct WinRecRegistry::Impl {
  std::map<void*, WinRec_tag*> records;
};

WinRecRegistry::WinRecRegistry() : impl_(new Impl) {}
WinRecRegistry::~WinRecRegistry() = default;

WinRecRegistry& WinRecRegistry::getInstance() {
  static auto* instance = new WinRecRegistry();
  return *instance;
}

void WinRecRegistry::add(void* object, WinRec_tag* win) { impl_->records[object] = win; }

void WinRecRegistry::remove(void* object) { impl_->records.erase(object); }

void WinRecRegistry::clear() { impl_->records.clear(); }

WinRec_tag* WinRecRegistry::find(void* object) const {
  const auto it = impl_->records.find(object);
  return it != impl_->records.end() ? it->second : nullptr;
}

namespace test {

void reset_window_registries() {
  proxies().clear();
  WinRecRegistry::getInstance().clear();
}

}  // namespace test
}  // namespace gui_objects
