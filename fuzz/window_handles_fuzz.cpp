// Fuzzes the handle table with random operation sequences checked against a
// model: every issued ordinary handle is new, live handles resolve to their
// objects, destroyed and malformed ones to null; explicit bindings in a
// private table and figure handles follow the same rules.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "fuzz/fuzz_reader.h"
#include "qvgui/host.h"
#include "qvgui/window.h"
#include "qvhost/runtime.h"
#include "qvhost/testing.h"

namespace {

void* object(std::uintptr_t n) { return reinterpret_cast<void*>(n * 16); }

void check(bool ok) {
  if (!ok) __builtin_trap();
}

bool warnedOutOfUniqueHandles() {
  for (const HostWarning& w : hostRecordedWarnings())
    if (w.identifier == "Tavrix::gui::handle::OutOfUniqueHandles") return true;
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz_input::Reader in(data, size);
  gui_objects::test::reset_handle_table();
  gui_objects::test::set_handle_directory_limit(static_cast<int>(in.in(0, 8)));
  HostConsoleCapture quiet;
  hostClearRecordedWarnings();
  std::map<double, void*> live;
  std::vector<double> liveKeys, gone;
  std::set<double> issued;
  std::map<double, void*> figures;
  // The private table's ordinary bindings by slot: the handle bound last, and its object.
  std::map<double, std::pair<double, void*>> bound;
  HandleTable_tag* table = newHandleTable();
  std::uintptr_t next = 1;
  const auto pick = [&](const std::vector<double>& from) {
    return from[in.in(0, static_cast<std::int64_t>(from.size()) - 1)];
  };

  while (!in.empty()) {
    switch (in.byte() % 10) {
      case 0:
      case 1: {
        void* p = object(next++);
        double h = 0;
        try {
          h = new_handle(p);
        } catch (const HostError&) {  // the directory ran out
          break;
        }
        check(!is_handle_integer(h) && live.count(h) == 0);
        // Uniqueness is given up only once the directory is exhausted.
        if (!issued.insert(h).second) check(warnedOutOfUniqueHandles());
        live[h] = p;
        liveKeys.push_back(h);
        break;
      }
      case 2:
        if (!liveKeys.empty()) {
          const std::size_t k =
              static_cast<std::size_t>(in.in(0, static_cast<std::int64_t>(liveKeys.size()) - 1));
          const double h = liveKeys[k];
          liveKeys[k] = liveKeys.back();
          liveKeys.pop_back();
          live.erase(h);
          destroy_handle(h);
          check(handle2pointer(h) == nullptr);
          gone.push_back(h);
        }
        break;
      case 3:
        if (!gone.empty()) {
          const double h = pick(gone);
          if (live.count(h) == 0) {
            check(handle2pointer(h) == nullptr);
            check(!rebind_handle(h, object(next++)));
          }
        }
        break;
      case 4:
        if (!liveKeys.empty()) {
          const double h = pick(liveKeys);
          void* p = object(next++);
          check(rebind_handle(h, p));
          live[h] = p;
        }
        break;
      case 5: {
        // Any double at all: it names a live handle or resolves to null.
        const double h = in.anyDouble();
        if (std::isnan(h)) {  // no key of the model; std::map cannot look it up
          check(handle2pointer(h) == nullptr && handle2pointer_in_table(table, h) == nullptr);
          break;
        }
        const auto it = live.find(h);
        const auto fig = figures.find(h);
        void* got = handle2pointer(h);
        if (it != live.end()) {
          check(got == it->second);
        } else if (fig != figures.end()) {
          check(got == fig->second);
        } else {
          check(got == nullptr);
        }
        destroy_handle_in_table(table, h);
        const auto b = bound.find(std::floor(h));
        if (b != bound.end() && b->second.first == h) bound.erase(b);
        check(handle2pointer_in_table(table, h) == nullptr);
        break;
      }
      case 6: {
        void* p = object(next++);
        const double h = new_figure_handle(p);
        if (h >= 0) {
          check(is_handle_integer(h) && figures.count(h) == 0);
          figures[h] = p;
        }
        break;
      }
      case 7: {
        const int n = static_cast<int>(in.in(-2, 64));
        void* p = object(next++);
        try {
          if (assign_figure_handle(p, n)) figures[n] = p;
        } catch (const HostError&) {
          check(n < 0);
        }
        break;
      }
      case 8: {
        const double h = in.byte() % 2 == 0 ? in.anyDouble() : in.in(0, 3000) + in.in(1, 8191) / 8192.0;
        void* p = object(next++);
        if (std::isnan(h)) {
          check(!bind_handle_in_table(table, h, p));
          break;
        }
        if (bind_handle_in_table(table, h, p)) bound[std::floor(h)] = {h, p};
        break;
      }
      default:
        for (const auto& [slot, binding] : bound)
          check(handle2pointer_in_table(table, binding.first) == binding.second);
        for (const auto& [h, p] : live) check(handle2pointer(h) == p);
        break;
    }
  }
  for (const auto& [h, p] : live) check(handle2pointer(h) == p);
  destroyHandleTable(table);
  gui_objects::test::set_handle_directory_limit(0);
  gui_objects::test::reset_handle_table();
  return 0;
}
