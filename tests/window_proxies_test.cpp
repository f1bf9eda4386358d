// Window proxy registry fallbacks and walks, the window-record registry, and
// the layer's uses of the system-methods proxy; UI events and waiting.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qvgui/raster.h"
#include "qvgui/window.h"

namespace {

using gui_objects::FontProxy;
using gui_objects::SystemMethodsProxy;
using gui_objects::UI_EventRecord;
using gui_objects::WindowProxy;
using gui_objects::WindowProxyRegistry;
using gui_objects::WinRecRegistry;

struct TestFont : FontProxy {
  explicit TestFont(const char* n) : name(n) {}
  const char* getFixedWidthFontName() const override { return name; }
  const char* name;
};

struct TestSystem : SystemMethodsProxy {
  double getDefaultScreenPixelsPerInch() const override { return 96.0; }
  void getScreenRect(qvrect* out) const override { *out = qvrect{0, 0, 1080, 1920}; }
  void setCurrentWindow(WinRec_tag* win) const override { current.push_back(win); }
  mutable std::vector<WinRec_tag*> current;
};

struct TestWindow : WindowProxy {
  TestWindow(int cls, FontProxy* f, SystemMethodsProxy* s, WinRec_tag* root = nullptr,
             std::vector<std::string>* log = nullptr)
      : root_(root), log_(log) {
    windowClass_ = cls;
    fontProxy_ = f;
    systemMethodsProxy_ = s;
  }
  WinRec_tag* getRootWindow() const override { return root_; }
  void setLanguage(const char* l) const override { note(std::string("lang") + l); }
  void completeAllUiUpdates() const override { note("ui"); }
  void commitAllDatabaseUpdates() const override { note("db"); }
  void note(const std::string& what) const {
    if (log_) log_->push_back(std::to_string(getWindowClass()) + ":" + what);
  }
  WinRec_tag* root_;
  std::vector<std::string>* log_;
};

class window_proxies : public ::testing::Test {
 protected:
  void SetUp() override { gui_objects::test::reset_window_registries(); }
  void TearDown() override { gui_objects::test::reset_window_registries(); }
};

TEST_F(window_proxies, FallbacksAnswerWithDefaults) {
  WindowProxy* p = WindowProxyRegistry::FindProxy(5);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(p->WinRecToHandle(nullptr), -1.0);
  EXPECT_EQ(p->getScreenPixelsPerInch(nullptr), 72.0);
  EXPECT_EQ(WindowProxyRegistry::FindSystemMethodsProxy()->getDefaultScreenPixelsPerInch(), 72.0);
  EXPECT_STREQ(WindowProxyRegistry::FindFontProxy()->getFixedWidthFontName(), "");
  EXPECT_EQ(WindowProxyRegistry::getRootWindow(), nullptr);
  EXPECT_EQ(p->getPixelPositionFast(nullptr), p->getPixelOuterPositionFast(nullptr));
  EXPECT_EQ(p->getPixelPositionFast(nullptr)->bottom, 0);
  qvrect r{1, 2, 3, 4};
  WindowProxyRegistry::FindSystemMethodsProxy()->rectEnclosingRegion(&r, nullptr);
  EXPECT_EQ(r.right, 0);
  EXPECT_EQ(r.top, 0);

  Color_tag* fg = p->getDefaultMenuForegroundColor(nullptr);
  Color_tag* bg = p->getDefaultMenuBackgroundColor(nullptr);
  EXPECT_TRUE(Is_ColorPtrRGB_Equal(fg, 0, 0, 0));
  EXPECT_TRUE(Is_ColorPtrRGB_Equal(bg, 1, 1, 1));
  destroy_ColorPtr(fg);
  destroy_ColorPtr(bg);
}

TEST_F(window_proxies, WalksGoInAscendingClass) {
  TestFont font1("one"), font3("three");
  TestSystem system;
  int rootA = 0, rootB = 0;
  auto* a = reinterpret_cast<WinRec_tag*>(&rootA);
  auto* b = reinterpret_cast<WinRec_tag*>(&rootB);
  std::vector<std::string> log;
  TestWindow w3(3, &font3, &system, b, &log);
  TestWindow w1(1, nullptr, nullptr, nullptr, &log);
  WindowProxyRegistry::RegisterProxy(&w3);
  WindowProxyRegistry::RegisterProxy(&w1);
  EXPECT_EQ(WindowProxyRegistry::FindFontProxy(), &font3);
  EXPECT_EQ(WindowProxyRegistry::FindSystemMethodsProxy(), &system);
  EXPECT_EQ(WindowProxyRegistry::getRootWindow(), b);
  EXPECT_EQ(WindowProxyRegistry::FindProxy(1), &w1);
  EXPECT_EQ(w1.getScreenPixelsPerInch(nullptr), 96.0) << "asks the system-methods proxy";

  // A second registration for class 1 replaces the first.
  TestWindow w1b(1, &font1, nullptr, a, &log);
  WindowProxyRegistry::RegisterProxy(&w1b);
  EXPECT_EQ(WindowProxyRegistry::FindProxy(1), &w1b);
  EXPECT_EQ(WindowProxyRegistry::FindFontProxy(), &font1);
  EXPECT_EQ(WindowProxyRegistry::getRootWindow(), a);

  WindowProxyRegistry::setLanguage("en");
  WindowProxyRegistry::completeAllUiUpdates();
  WindowProxyRegistry::commitAllDatabaseUpdates();
  EXPECT_EQ(log, (std::vector<std::string>{"1:langen", "3:langen", "1:ui", "3:ui", "1:db", "3:db"}));

  WinRec_tag* win = wr_Create(3, nullptr);
  EXPECT_EQ(WindowProxyRegistry::FindProxy(win), &w3);
  wr_Destroy(win);
}

TEST_F(window_proxies, CurrentWindowAndMonitorRectGoThroughSystemProxy) {
  TestSystem system;
  TestWindow w(2, nullptr, &system);
  WindowProxyRegistry::RegisterProxy(&w);
  gui_objects::test::NullDraw2D target;
  set_current_Window(target.window());
  EXPECT_EQ(get_current_Window(), target.window());
  EXPECT_EQ(get_current_winMethods(), target.methods());
  set_current_Window(nullptr);
  EXPECT_EQ(get_current_winMethods(), nullptr);
  EXPECT_EQ(system.current, (std::vector<WinRec_tag*>{target.window(), nullptr}));
  qvrect r{};
  wm_GetMonitorScreenRect(target.window(), 0, &r);
  EXPECT_EQ(r.right, 1920);
  EXPECT_EQ(r.bottom, 1080);
}

TEST_F(window_proxies, WinRecRegistryFindsAddsReplacesRemoves) {
  WinRecRegistry& reg = WinRecRegistry::getInstance();
  EXPECT_EQ(&reg, &WinRecRegistry::getInstance());
  int o1 = 0, o2 = 0;
  WinRec_tag* r1 = wr_Create(1, &o1);
  WinRec_tag* r2 = wr_Create(1, &o2);
  EXPECT_EQ(reg.find(&o1), nullptr);
  reg.remove(&o1);  // unknown: nothing happens
  reg.add(&o1, r1);
  reg.add(&o2, r2);
  EXPECT_EQ(reg.find(&o1), r1);
  reg.add(&o1, r2);
  EXPECT_EQ(reg.find(&o1), r2) << "a second add replaces";
  reg.remove(&o1);
  EXPECT_EQ(reg.find(&o1), nullptr);
  EXPECT_EQ(reg.find(&o2), r2);
  wr_Destroy(r1);
  wr_Destroy(r2);
}

// ---- Events and waiting --------------------------------------------------------------

struct Waiter : gui_objects::WaitForObserver {
  explicit Waiter(int pressesNeeded) : needed(pressesNeeded) {}
  bool keyOrButtonPressed(const UI_EventRecord& e) override {
    seen.push_back(e.name());
    return static_cast<int>(seen.size()) >= needed;
  }
  void waitAborted(WinRec_tag*) override { aborted = true; }
  int needed;
  std::vector<std::string> seen;
  bool aborted = false;
};

TEST(window_events, PressesReachWaitersOfTheirWindowUntilSatisfied) {
  int a = 0, b = 0;
  auto* wa = reinterpret_cast<WinRec_tag*>(&a);
  auto* wb = reinterpret_cast<WinRec_tag*>(&b);
  gui_objects::WaitForSubject subject;
  Waiter once(1), twice(2), other(1);
  subject.attach(wa, &once);
  subject.attach(wa, &twice);
  subject.attach(wb, &other);
  EXPECT_EQ(subject.notify(UI_EventRecord::makeMotion(wa, qvpoint{1, 2})), 0u);
  EXPECT_EQ(subject.notify(UI_EventRecord::makeButton(UI_EventRecord::ButtonUp, wa, qvpoint{}, 1)), 0u);
  EXPECT_EQ(subject.notify(UI_EventRecord::makeKey(UI_EventRecord::KeyDown, wa, 'q')), 2u);
  EXPECT_EQ(subject.observerCount(), 2u) << "once is satisfied and detached";
  EXPECT_EQ(subject.notify(UI_EventRecord::makeButton(UI_EventRecord::ButtonDown, wa, qvpoint{}, 3)), 1u);
  EXPECT_EQ(twice.seen, (std::vector<std::string>{"KeyDown", "ButtonDown"}));
  EXPECT_FALSE(subject.isWaiting(wa));
  EXPECT_TRUE(subject.isWaiting(wb));
  subject.abort(wb);
  EXPECT_TRUE(other.aborted);
  EXPECT_TRUE(other.seen.empty());
  EXPECT_EQ(subject.observerCount(), 0u);
}

TEST(window_events, EventNames) {
  struct Case {
    UI_EventRecord::Type type;
    const char* name;
  };
  using E = UI_EventRecord;
  // clang-format off
  const Case cases[] = {{E::ButtonDown, "ButtonDown"}, {E::ButtonUp, "ButtonUp"}, {E::KeyDown, "KeyDown"},
                        {E::KeyUp, "KeyUp"}, {E::Motion, "Motion"}, {E::ScrollWheel, "ScrollWheel"},
                        {E::None, "None"}, {static_cast<E::Type>(42), "None"}};
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_STREQ(UI_EventRecord::typeName(c.type), c.name);
  }
}

}  // namespace
