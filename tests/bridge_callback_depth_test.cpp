// A callback whose code runs the same callback again through a host
// function: the recursion ends at the interpreter's call limit, the error
// stays inside the innermost run, and every level returns normally.
#include <gtest/gtest.h>

#include "qvgui/bridge.h"
#include "qvhost/runtime.h"
#include "qvhost/testing.h"

namespace {

MCallback* g_self = nullptr;
int g_runs = 0;
int g_failedRuns = 0;
int g_hookToken = 0;

TEST(CallbackDepth, SelfRerunningCallbackEndsAtTheCallLimit) {
  hostClearUnhandledExceptions();
  // Callbacks run only under the graphics layer's hooks.
  gui_set_mcallback_hooks([]() -> void* { return &g_hookToken; }, nullptr, nullptr, nullptr, nullptr);
  hostRegisterFunction("rerun", [](int, zrArray_tag**, int, const zrArray_tag* const*) {
    ++g_runs;
    if (!g_self->execute(nullptr, nullptr)) ++g_failedRuns;
  });
  g_self = StringToMCallback("rerun()");
  ASSERT_NE(g_self, nullptr);
  {
    HostConsoleCapture quiet;
    EXPECT_TRUE(g_self->execute(nullptr, nullptr)) << "the outermost run's code completed";
  }
  EXPECT_EQ(g_runs, 128) << "the limit of 128 active calls";
  EXPECT_EQ(g_failedRuns, 1) << "only the innermost run failed";
  const std::vector<ScriptException> errors = hostUnhandledExceptions();
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0].identifier(), "Tavrix::host::RecursionLimit");
  DestroyMCallback(g_self);
  hostUnregisterFunction("rerun");
  hostClearUnhandledExceptions();
  gui_set_mcallback_hooks(nullptr, nullptr, nullptr, nullptr, nullptr);
}

}  // namespace
