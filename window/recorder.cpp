// Test doubles of the window layer: a back end that records every slot call,
// and a do-nothing drawing target.
#include <algorithm>
#include <cstdio>
#include <map>
#include <type_traits>

#include "window/methods_p.h"

namespace gui_objects {
namespace test {

struct WindowMethodRecorder::Results {
  std::map<std::string, double> numbers;
  std::map<std::string, void*> pointers;
};

namespace {

std::map<const winMethods_tag*, WindowMethodRecorder*>& recorderOfTable() {
  static auto* map = new std::map<const winMethods_tag*, WindowMethodRecorder*>();
  return *map;
}

std::vector<WindowMethodRecorder*>& liveRecorders() {
  static auto* recorders = new std::vector<WindowMethodRecorder*>();
  return *recorders;
}

// ---- Formatting the arguments -------------------------------------------------------

std::string formatRect(const qvrect& r) {
  return "[" + std::to_string(r.top) + " " + std::to_string(r.left) + " " + std::to_string(r.bottom) + " " +
         std::to_string(r.right) + "]";
}

template <class T>
std::string formatArg(T value) {
  if constexpr (std::is_same_v<T, const char*>) {
    return value ? "\"" + std::string(value) + "\"" : "null";
  } else if constexpr (std::is_same_v<T, const qvrect*>) {
    return value ? formatRect(*value) : "null";
  } else if constexpr (std::is_pointer_v<T>) {
    return WindowMethodRecorder::formatPointer(reinterpret_cast<const void*>(value));
  } else if constexpr (std::is_same_v<T, qvrect>) {
    return formatRect(value);
  } else if constexpr (std::is_same_v<T, bool>) {
    return value ? "true" : "false";
  } else if constexpr (std::is_enum_v<T>) {
    return std::to_string(static_cast<long long>(value));
  } else if constexpr (std::is_floating_point_v<T>) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", double(value));
    return text;
  } else {
    return std::to_string(value);
  }
}

template <class Ret>
Ret resultOf(const WindowMethodRecorder& r, const char* slot) {
  if constexpr (std::is_void_v<Ret>) {
    return;
  } else if constexpr (std::is_pointer_v<Ret>) {
    return static_cast<Ret>(r.pointerResult(slot));
  } else if constexpr (std::is_same_v<Ret, bool>) {
    return r.numericResult(slot) != 0.0;
  } else if constexpr (std::is_enum_v<Ret>) {
    return static_cast<Ret>(static_cast<int>(r.numericResult(slot)));
  } else {
    return static_cast<Ret>(r.numericResult(slot));
  }
}

// The window argument picks the recorder; event-decoding slots, which get no
// window, go to the newest recorder.
template <class Ret, class First, class... Rest>
Ret recordCall(const char* slot, First first, Rest... rest) {
  WindowMethodRecorder* recorder = nullptr;
  RecordedCall call{slot, {}};
  if constexpr (std::is_same_v<First, WinRec_tag*>) {
    recorder = WindowMethodRecorder::forTable(gwr_winMethods(first));
    (call.args.push_back(formatArg(rest)), ...);
  } else {
    recorder = WindowMethodRecorder::latest();
    call.args.push_back(formatArg(first));
    (call.args.push_back(formatArg(rest)), ...);
  }
  if (!recorder) return Ret();
  recorder->record(std::move(call));
  return resultOf<Ret>(*recorder, slot);
}

#define QVGUI_WM_RECORDING_SLOT_(Name, Ret, Kind, Caller, ...) \
  Ret record_##Name(QVGUI_WM_PARAMS(__VA_ARGS__)) {            \
    return recordCall<Ret>(#Name, QVGUI_WM_ARGS(__VA_ARGS__)); \
  }
QVGUI_WM_SLOTS(QVGUI_WM_RECORDING_SLOT_)
#undef QVGUI_WM_RECORDING_SLOT_

}  // namespace

// ---- Recorder ---------------------------------------------------------------------------

std::string RecordedCall::toString() const {
  std::string text = slot + "(";
  for (std::size_t i = 0; i < args.size(); ++i) text += (i ? ", " : "") + args[i];
  return text + ")";
}

WindowMethodRecorder::WindowMethodRecorder()
    : window_(wr_Create(0, nullptr)), methods_(wm_Create()), results_(new Results) {
  swr_winMethods(window_, methods_);
  liveRecorders().push_back(this);
  install(methods_);
}

WindowMethodRecorder::~WindowMethodRecorder() {
  for (winMethods_tag* m : installed_) {
    auto it = recorderOfTable().find(m);
    if (it != recorderOfTable().end() && it->second == this) recorderOfTable().erase(it);
  }
  auto& live = liveRecorders();
  live.erase(std::remove(live.begin(), live.end(), this), live.end());
  wm_Destroy(methods_);
  wr_Destroy(window_);
}

void WindowMethodRecorder::install(winMethods_tag* methods) {
  if (!methods) return;
#define QVGUI_WM_INSTALL_RECORDING_SLOT_(Name, Ret, Kind, Caller, ...) swm_##Name(methods, &record_##Name);
  QVGUI_WM_SLOTS(QVGUI_WM_INSTALL_RECORDING_SLOT_)
#undef QVGUI_WM_INSTALL_RECORDING_SLOT_
  recorderOfTable()[methods] = this;
  installed_.push_back(methods);
}

std::vector<RecordedCall> WindowMethodRecorder::callsTo(const std::string& slot) const {
  std::vector<RecordedCall> selected;
  for (const RecordedCall& c : calls_)
    if (c.slot == slot) selected.push_back(c);
  return selected;
}

std::size_t WindowMethodRecorder::count(const std::string& slot) const {
  return static_cast<std::size_t>(
      std::count_if(calls_.begin(), calls_.end(), [&](const RecordedCall& c) { return c.slot == slot; }));
}

void WindowMethodRecorder::setResult(const std::string& slot, double value) {
  results_->numbers[slot] = value;
}

void WindowMethodRecorder::setPointerResult(const std::string& slot, void* value) {
  results_->pointers[slot] = value;
}

std::string WindowMethodRecorder::formatPointer(const void* p) {
  if (!p) return "null";
  char text[32];
  std::snprintf(text, sizeof text, "%p", p);
  return text;
}

void WindowMethodRecorder::record(RecordedCall call) { calls_.push_back(std::move(call)); }

double WindowMethodRecorder::numericResult(const char* slot) const {
  const auto it = results_->numbers.find(slot);
  return it != results_->numbers.end() ? it->second : 0.0;
}

void* WindowMethodRecorder::pointerResult(const char* slot) const {
  const auto it = results_->pointers.find(slot);
  return it != results_->pointers.end() ? it->second : nullptr;
}

WindowMethodRecorder* WindowMethodRecorder::forTable(const winMethods_tag* methods) {
  const auto it = recorderOfTable().find(methods);
  return it != recorderOfTable().end() ? it->second : nullptr;
}

WindowMethodRecorder* WindowMethodRecorder::latest() {
  return liveRecorders().empty() ? nullptr : liveRecorders().back();
}

// ---- Do-nothing drawing target ---------------------------------------------------------

NullDraw2D::NullDraw2D(int objectClass, void* object)
    : window_(wr_Create(objectClass, object)), methods_(nullptr) {
  try {
    methods_ = wm_Create();
  } catch (...) {
    wr_Destroy(window_);
    throw;
  }
  wm_InstallDefaults(methods_);
  swr_winMethods(window_, methods_);
}

NullDraw2D::~NullDraw2D() {
  wm_Destroy(methods_);
  wr_Destroy(window_);
}

}  // namespace test
}  // namespace gui_objects
