// Private machinery of the window-method table: the window record, the
// profiler's fast path and the macros that turn the slot table into code.
#pragma once

#include <cstdint>

#include "common/compiler_p.h"
#include "qvgui/window.h"

// The per-window record. Its fourth field is the method table; the rest
// belongs to the window-record code.
struct WinRec_tag {
  void* object;
  int objectClass;
  void* backEndData;
  winMethods_tag* winMethods;
  void* userData;
};

namespace qvgui_window {

// ---- Parameter naming ----------------------------------------------------------
//
// The slot table lists parameter types only; callers need named parameters.
// QVGUI_WM_PARAMS(T1, T2) gives "T1 a1, T2 a2" and QVGUI_WM_ARGS(T1, T2) "a1, a2".
#define QVGUI_WM_NARGS(...) QVGUI_WM_NARGS_(__VA_ARGS__, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0)
#define QVGUI_WM_NARGS_(a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, N, ...) N
#define QVGUI_WM_CAT(a, b) QVGUI_WM_CAT_(a, b)
#define QVGUI_WM_CAT_(a, b) a##b
#define QVGUI_WM_PARAMS(...) QVGUI_WM_CAT(QVGUI_WM_PARAMS_, QVGUI_WM_NARGS(__VA_ARGS__))(__VA_ARGS__)
#define QVGUI_WM_ARGS(...) QVGUI_WM_CAT(QVGUI_WM_ARGS_, QVGUI_WM_NARGS(__VA_ARGS__))
#define QVGUI_WM_PARAMS_1(t1) t1 a1
#define QVGUI_WM_PARAMS_2(t1, t2) t1 a1, t2 a2
#define QVGUI_WM_PARAMS_3(t1, t2, t3) t1 a1, t2 a2, t3 a3
#define QVGUI_WM_PARAMS_4(t1, t2, t3, t4) t1 a1, t2 a2, t3 a3, t4 a4
#define QVGUI_WM_PARAMS_5(t1, t2, t3, t4, t5) t1 a1, t2 a2, t3 a3, t4 a4, t5 a5
#define QVGUI_WM_PARAMS_6(t1, t2, t3, t4, t5, t6) t1 a1, t2 a2, t3 a3, t4 a4, t5 a5, t6 a6
#define QVGUI_WM_PARAMS_7(t1, t2, t3, t4, t5, t6, t7) t1 a1, t2 a2, t3 a3, t4 a4, t5 a5, t6 a6, t7 a7
#define QVGUI_WM_PARAMS_8(t1, t2, t3, t4, t5, t6, t7, t8) \
  t1 a1, t2 a2, t3 a3, t4 a4, t5 a5, t6 a6, t7 a7, t8 a8
#define QVGUI_WM_PARAMS_9(t1, t2, t3, t4, t5, t6, t7, t8, t9) \
  t1 a1, t2 a2, t3 a3, t4 a4, t5 a5, t6 a6, t7 a7, t8 a8, t9 a9
#define QVGUI_WM_PARAMS_10(t1, t2, t3, t4, t5, t6, t7, t8, t9, t10) \
  t1 a1, t2 a2, t3 a3, t4 a4, t5 a5, t6 a6, t7 a7, t8 a8, t9 a9, t10 a10
#define QVGUI_WM_ARGS_1 a1
#define QVGUI_WM_ARGS_2 a1, a2
#define QVGUI_WM_ARGS_3 a1, a2, a3
#define QVGUI_WM_ARGS_4 a1, a2, a3, a4
#define QVGUI_WM_ARGS_5 a1, a2, a3, a4, a5
#define QVGUI_WM_ARGS_6 a1, a2, a3, a4, a5, a6
#define QVGUI_WM_ARGS_7 a1, a2, a3, a4, a5, a6, a7
#define QVGUI_WM_ARGS_8 a1, a2, a3, a4, a5, a6, a7, a8
#define QVGUI_WM_ARGS_9 a1, a2, a3, a4, a5, a6, a7, a8, a9
#define QVGUI_WM_ARGS_10 a1, a2, a3, a4, a5, a6, a7, a8, a9, a10

// ---- Profile entries -------------------------------------------------------------

enum ProfileIndex : int {
#define QVGUI_WM_PROFILE_INDEX_(Name, Ret, Kind, Caller, ...) kProfile_##Name,
  QVGUI_WM_SLOTS(QVGUI_WM_PROFILE_INDEX_)
#undef QVGUI_WM_PROFILE_INDEX_
      kProfile_ExposeFcn_Pre_Optional,
  kProfileUsed
};
static_assert(kProfileUsed <= kWmProfileEntries, "more profiled functions than profile entries");

struct ProfileEntry {
  double start;  // -1.0 while no timed call is under way
  double total;  // accumulated CPU seconds
  std::int32_t count;
  const char* name;  // filled in before the first report
};

struct ProfileRecord {
  ProfileEntry entries[kWmProfileEntries];
  bool enabled;
};

// The enable flag lives apart from the record so that the fast path of every
// caller is one load and one predictable branch.
extern bool g_profileEnabled;

ProfileRecord& profileRecord();
const char* profileName(int index);

// Times the outermost call of one profiled function (nested calls of the same
// function are neither counted nor timed).
class ProfileScope {
 public:
  explicit ProfileScope(int index);
  ~ProfileScope();
  ProfileScope(const ProfileScope&) = delete;
  ProfileScope& operator=(const ProfileScope&) = delete;

 private:
  ProfileEntry* timing_ = nullptr;
};

void registerProfileFeatures();

// ---- Calling a slot --------------------------------------------------------------

QVGUI_ALWAYS_INLINE winMethods_tag* methodsOf(const WinRec_tag* win) { return win->winMethods; }

// The profiled path stays out of line so that the fast path needs no stack
// frame: a load, a predictable branch and a tail call of the slot.
template <int Index, class Fn, class... A>
QVGUI_NOINLINE auto callSlotProfiled(Fn fn, A... args) -> decltype(fn(args...)) {
  ProfileScope scope(Index);
  return fn(args...);
}

template <int Index, class Fn, class... A>
QVGUI_ALWAYS_INLINE auto callSlot(Fn fn, A... args) -> decltype(fn(args...)) {
  if (QVGUI_LIKELY(!g_profileEnabled)) return fn(args...);
  return callSlotProfiled<Index>(fn, args...);
}

// Caller-checks slots: an empty slot is skipped and answers 0 / null.
template <class Fn, class... A>
QVGUI_ALWAYS_INLINE auto callIfSet(Fn fn, A... args) -> decltype(fn(args...)) {
  using R = decltype(fn(args...));
  return fn ? fn(args...) : R();
}

template <int Index, class Fn, class... A>
QVGUI_ALWAYS_INLINE auto callCheckedSlot(Fn fn, A... args) -> decltype(fn(args...)) {
  if (QVGUI_LIKELY(!g_profileEnabled)) return callIfSet(fn, args...);
  return callSlotProfiled<Index>(&callIfSet<Fn, A...>, fn, args...);
}

}  // namespace qvgui_window

namespace qvgui_window {

// Runs f as the profiled function Index (for the hand-written callers).
template <int Index, class F>
QVGUI_NOINLINE auto profiledSlow(F& f) -> decltype(f()) {
  ProfileScope scope(Index);
  return f();
}

template <int Index, class F>
QVGUI_ALWAYS_INLINE auto profiled(F&& f) -> decltype(f()) {
  if (QVGUI_LIKELY(!g_profileEnabled)) return f();
  return profiledSlow<Index>(f);
}

}  // namespace qvgui_window
