// The process-wide profiler of the wm_ callers and its three host features.
#include <cstring>

#include "window/methods_p.h"

namespace qvgui_window {

bool g_profileEnabled = false;

namespace {

constexpr const char* kProfileNames[kProfileUsed] = {
#define QVGUI_WM_PROFILE_NAME_(Name, Ret, Kind, Caller, ...) "wm_" #Name,
    QVGUI_WM_SLOTS(QVGUI_WM_PROFILE_NAME_)
#undef QVGUI_WM_PROFILE_NAME_
        "wm_ExposeFcn_Pre_Optional",
};

ProfileRecord makeRecord() {
  ProfileRecord record{};
  for (ProfileEntry& e : record.entries) e.start = -1.0;
  return record;
}

int profileIndexOf(const char* functionName) {
  if (!functionName) return -1;
  for (int i = 0; i < kProfileUsed; ++i)
    if (std::strcmp(kProfileNames[i], functionName) == 0) return i;
  return -1;
}

}  // namespace

ProfileRecord& profileRecord() {
  static ProfileRecord record = makeRecord();
  return record;
}

const char* profileName(int index) { return index >= 0 && index < kProfileUsed ? kProfileNames[index] : ""; }

ProfileScope::ProfileScope(int index) {
  ProfileEntry& e = profileRecord().entries[index];
  if (e.start != -1.0) return;  // a nested call of the same method
  ++e.count;
  e.start = utCPUtime();
  timing_ = &e;
}

ProfileScope::~ProfileScope() {
  if (!timing_) return;
  timing_->total += utCPUtime() - timing_->start;
  timing_->start = -1.0;
}

void registerProfileFeatures() {
  hostRegisterFeature("WMProfileClear", [](int) {
    wm_ProfileClear();
    return 0;
  });
  hostRegisterFeature("WMProfileReport", [](int) {
    wm_ProfileReport();
    return 0;
  });
  hostRegisterFeature("WMProfileEnable", [](int on) { return wm_ProfileEnable(on != 0) ? 1 : 0; });
}

}  // namespace qvgui_window

using namespace qvgui_window;

void wm_ProfileClear() {
  for (ProfileEntry& e : profileRecord().entries) {
    e.start = -1.0;
    e.total = 0.0;
    e.count = 0;
  }
}

bool wm_ProfileEnable(bool enable) {
  profileRecord().enabled = enable;
  g_profileEnabled = enable;
  return enable;
}

void wm_ProfileReport() {
  static bool namesFilled = false;
  ProfileRecord& record = profileRecord();
  bool headerPrinted = false;
  for (int i = 0; i < kWmProfileEntries; ++i) {
    ProfileEntry& e = record.entries[i];
    if (e.count <= 0) continue;
    if (!headerPrinted) {
      if (!namesFilled) {
        for (int k = 0; k < kWmProfileEntries; ++k) record.entries[k].name = profileName(k);
        namesFilled = true;
      }
      utPrintf("       count     time  name\n");
      utPrintf("===================================\n");
      headerPrinted = true;
    }
    utPrintf(" %10d %8.4g %s\n", e.count, e.total, e.name);
  }
}

int wm_ProfileCount(const char* functionName) {
  const int i = profileIndexOf(functionName);
  return i < 0 ? -1 : profileRecord().entries[i].count;
}

double wm_ProfileTime(const char* functionName) {
  const int i = profileIndexOf(functionName);
  return i < 0 ? 0.0 : profileRecord().entries[i].total;
}
