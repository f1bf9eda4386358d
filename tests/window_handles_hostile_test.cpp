// Explicit bindings with handle values no table ever issued: a binding is
// made only where a lookup of the same value finds it again.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "qvgui/window.h"

namespace {

void* obj(std::uintptr_t n) { return reinterpret_cast<void*>(n * 16); }

TEST(HandleBindings, OnlyWholeReuseCountsBind) {
  struct Case {
    const char* label;
    double h;
    bool binds;     // the answer of bind_handle_in_table
    bool resolves;  // whether h then resolves to the object
  };
  const double step = 1.0 / 8192;
  const Case cases[] = {
      {"reuse 1", 7 + step, true, true},
      {"reuse 8191", 7 + 8191 * step, true, true},
      {"between reuse counts", 30326.462341308594, false, false},
      {"a third", 5 + 1.0 / 3, false, false},
      {"below the first reuse count", 5 + 1e-9, false, false},
      {"whole number", 42.0, false, true},
      {"negative", -3 - step, false, false},
      {"NaN", std::numeric_limits<double>::quiet_NaN(), false, false},
      {"infinite", std::numeric_limits<double>::infinity(), false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    HandleTable_tag* t = newHandleTable();
    EXPECT_EQ(bind_handle_in_table(t, c.h, obj(1)), c.binds);
    EXPECT_EQ(handle2pointer_in_table(t, c.h), c.resolves ? obj(1) : nullptr);
    EXPECT_TRUE(gui_objects::test::get_all_handles(t).size() == (c.binds ? 1u : 0u));
    destroy_handle_in_table(t, c.h);
    EXPECT_EQ(handle2pointer_in_table(t, c.h), nullptr);
    destroyHandleTable(t);
  }
}

}  // namespace
