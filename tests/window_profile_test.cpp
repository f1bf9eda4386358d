// The window-method profiler: outermost-call counting, the host features and
// the report format.
#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#include "qvgui/window.h"
#include "qvhost/testing.h"

namespace {

using gui_objects::test::NullDraw2D;

int g_depth = 0;

// Calls itself once through the profiled caller.
void recursiveFrameRect(WinRec_tag* w, const qvrect* r) {
  if (g_depth++ == 0) wm_FrameRect(w, r);
  --g_depth;
}

void throwingPaintRect(WinRec_tag*, const qvrect*) { throw std::runtime_error("back end failed"); }

class window_profile : public ::testing::Test {
 protected:
  void SetUp() override {
    methods_ = wm_Create();  // registers the features on first use
    wm_InstallDefaults(methods_);
    win_ = wr_Create(0, nullptr);
    swr_winMethods(win_, methods_);
    hostCallFeature("WMProfileClear", 0);
  }
  void TearDown() override {
    hostCallFeature("WMProfileEnable", 0);
    hostCallFeature("WMProfileClear", 0);
    wr_Destroy(win_);
    wm_Destroy(methods_);
  }
  winMethods_tag* methods_ = nullptr;
  WinRec_tag* win_ = nullptr;
};

TEST_F(window_profile, CountsOutermostCallsOnlyWhileEnabled) {
  swm_FrameRect(methods_, &recursiveFrameRect);
  const qvrect r{};
  wm_FrameRect(win_, &r);
  EXPECT_EQ(wm_ProfileCount("wm_FrameRect"), 0) << "profiling starts disabled";
  EXPECT_EQ(hostCallFeature("WMProfileEnable", 7), 1);
  wm_FrameRect(win_, &r);
  EXPECT_EQ(wm_ProfileCount("wm_FrameRect"), 1) << "the nested call is not counted";
  wm_FrameRect(win_, &r);
  EXPECT_EQ(wm_ProfileCount("wm_FrameRect"), 2);
  EXPECT_GE(wm_ProfileTime("wm_FrameRect"), 0.0);
  // A caller-checks slot left empty still counts as a call of its caller.
  wm_GetDriverType(win_);
  EXPECT_EQ(wm_ProfileCount("wm_GetDriverType"), 1);
  wm_ExposeFcn_Pre_Optional(win_);
  EXPECT_EQ(wm_ProfileCount("wm_ExposeFcn_Pre_Optional"), 1);
  EXPECT_EQ(wm_ProfileCount("wm_NoSuchMethod"), -1);

  EXPECT_EQ(hostCallFeature("WMProfileClear", 0), 0);
  EXPECT_EQ(wm_ProfileCount("wm_FrameRect"), 0);
  wm_FrameRect(win_, &r);
  EXPECT_EQ(wm_ProfileCount("wm_FrameRect"), 1) << "clearing leaves profiling enabled";
  EXPECT_EQ(hostCallFeature("WMProfileEnable", 0), 0);
  wm_FrameRect(win_, &r);
  EXPECT_EQ(wm_ProfileCount("wm_FrameRect"), 1);
}

TEST_F(window_profile, ThrowingSlotDoesNotLeaveTheEntryMidCall) {
  swm_PaintRect(methods_, &throwingPaintRect);
  wm_ProfileEnable(true);
  const qvrect r{};
  EXPECT_THROW(wm_PaintRect(win_, &r), std::runtime_error);
  EXPECT_THROW(wm_PaintRect(win_, &r), std::runtime_error);
  EXPECT_EQ(wm_ProfileCount("wm_PaintRect"), 2);
}

TEST_F(window_profile, ReportListsCalledMethodsInEntryOrder) {
  {
    HostConsoleCapture quiet;
    hostCallFeature("WMProfileReport", 0);
    EXPECT_EQ(quiet.text(), "") << "nothing is printed without counts";
  }
  wm_ProfileEnable(true);
  wm_SetWindowName(win_, "b");
  wm_SetWindowTitle(win_, "a");
  wm_SetWindowTitle(win_, "a");
  wm_ProfileEnable(false);
  HostConsoleCapture capture;
  hostCallFeature("WMProfileReport", 0);
  char line1[128], line2[128];
  std::snprintf(line1, sizeof line1, " %10d %8.4g %s\n", 2, wm_ProfileTime("wm_SetWindowTitle"),
                "wm_SetWindowTitle");
  std::snprintf(line2, sizeof line2, " %10d %8.4g %s\n", 1, wm_ProfileTime("wm_SetWindowName"),
                "wm_SetWindowName");
  EXPECT_EQ(capture.text(), std::string("       count     time  name\n"
                                        "===================================\n") +
                                line1 + line2);
  EXPECT_EQ(std::string(line1).substr(0, 12), "          2 ");
}

}  // namespace
