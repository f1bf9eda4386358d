// Handle table: handle arithmetic, reuse and retirement, figure handles,
// exhaustion, the dump, and a random stress run against a model.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

#include "qvgui/window.h"
#include "qvhost/testing.h"

namespace {

using gui_objects::test::get_all_handles;
using gui_objects::test::get_number_of_handles;

constexpr double kStep = 1.0 / 8192;

void* obj(std::uintptr_t n) { return reinterpret_cast<void*>(n * 16); }

bool warned(const char* id) {
  for (const HostWarning& w : hostRecordedWarnings())
    if (w.identifier == id) return true;
  return false;
}

std::string raisedId(const std::function<void()>& f) {
  try {
    f();
  } catch (const HostError& e) {
    return e.identifier();
  }
  return "";
}

class window_handles : public ::testing::Test {
 protected:
  void SetUp() override {
    gui_objects::test::reset_handle_table();
    hostClearRecordedWarnings();
  }
  void TearDown() override { gui_objects::test::reset_handle_table(); }
};

TEST_F(window_handles, FirstHandlesAndReuseAfterDestroy) {
  EXPECT_EQ(new_handle(obj(1)), 0.0001220703125);
  const double second = new_handle(obj(2));
  EXPECT_EQ(second, 1.0001220703125);
  EXPECT_EQ(handle2pointer(second), obj(2));

  destroy_handle(0.0001220703125);
  EXPECT_EQ(handle2pointer(0.0001220703125), nullptr);
  // The lowest freed slot comes back first, one reuse count higher.
  EXPECT_EQ(new_handle(obj(3)), 0 + 2 * kStep);
  EXPECT_EQ(new_handle(obj(4)), 2 + kStep);
  // Destroying a stale handle must not release the slot's new object.
  destroy_handle(0.0001220703125);
  EXPECT_EQ(handle2pointer(2 * kStep), obj(3));
  EXPECT_EQ(get_number_of_handles(), 3);
}

TEST_F(window_handles, MalformedHandlesResolveToNull) {
  const double h = new_handle(obj(1));
  new_handle(obj(2));
  ASSERT_TRUE(assign_figure_handle(obj(3), 0));
  struct Case {
    const char* label;
    double h;
  };
  constexpr double kInf = std::numeric_limits<double>::infinity();
  // clang-format off
  const Case cases[] = {
      {"NaN", std::nan("")}, {"+inf", kInf}, {"-inf", -kInf}, {"negative", -1.0}, {"negative fraction", -h},
      {"2^31 - 1 + fraction", 2147483647.5}, {"2^31 - 1", 2147483647.0}, {"huge", 1e300},
      {"half a reuse step", h + kStep / 2}, {"wrong reuse count", h + kStep}, {"fraction not a multiple", 0.3},
      {"unallocated block", 5000 + kStep}, {"unbound integer", 7.0},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(handle2pointer(c.h), nullptr);
    EXPECT_FALSE(rebind_handle(c.h, obj(9)));
    destroy_handle(c.h);  // must leave everything alone
  }
  EXPECT_EQ(handle2pointer(h), obj(1));
  EXPECT_EQ(handle2pointer(0.0), obj(3));
  EXPECT_EQ(get_number_of_handles(), 2);
}

TEST_F(window_handles, IntegerTest) {
  struct Case {
    double h;
    bool integer;
  };
  const Case cases[] = {{3.0, true},  {3.0001220703125, false}, {0.0, true},      {-2.0, true},
                        {2.5, false}, {std::nan(""), false},    {INFINITY, false}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.h);
    EXPECT_EQ(is_handle_integer(c.h), c.integer);
  }
}

TEST_F(window_handles, AllOnesPointerReadsAsNull) {
  void* allOnes = reinterpret_cast<void*>(~std::uintptr_t(0));
  const double h = new_handle(allOnes);
  EXPECT_EQ(handle2pointer(h), nullptr);
  EXPECT_EQ(handle2pointer_in_table(nullptr, h), nullptr);
  EXPECT_EQ(handle2pointerIgnoreReuseCount(0), allOnes);
  EXPECT_EQ(handle2pointerIgnoreReuseCount(-1), nullptr);
  EXPECT_EQ(handle2pointerIgnoreReuseCount(100000), nullptr);
}

TEST_F(window_handles, RebindKeepsHandleAndRefusesStale) {
  const double h = new_handle(obj(1));
  EXPECT_TRUE(rebind_handle(h, obj(2)));
  EXPECT_EQ(handle2pointer(h), obj(2));
  EXPECT_FALSE(rebind_handle(h, nullptr));
  destroy_handle(h);
  EXPECT_FALSE(rebind_handle(h, obj(3)));
  EXPECT_EQ(handle2pointer(h), nullptr);
}

TEST_F(window_handles, RetiredSlotIsSkippedAndBlockNumberRetired) {
  const double keep = [] {
    new_handle(obj(1));         // index 0
    return new_handle(obj(2));  // index 1 keeps block 0 alive
  }();
  double h = 0 + kStep;
  for (int reuse = 1; reuse < 8191; ++reuse) {
    destroy_handle(h);
    h = new_handle(obj(3));
    ASSERT_EQ(h, 0 + (reuse + 1) * kStep);
  }
  destroy_handle(h);  // reuse 8191 -> retired
  EXPECT_EQ(new_handle(obj(4)), 2 + kStep) << "the retired slot 0 is skipped";
  destroy_handle(keep);
  EXPECT_EQ(new_handle(obj(5)), 1 + 2 * kStep);

  // Freeing the block now retires block number 0 as a whole.
  destroy_handle(1 + 2 * kStep);
  destroy_handle(2 + kStep);
  EXPECT_EQ(get_number_of_handles(), 0);
  EXPECT_EQ(new_handle(obj(6)), 512 + kStep);
  EXPECT_EQ(handle2pointer(h), nullptr);
}

TEST_F(window_handles, RecreatedBlockStartsAboveEveryReuseCount) {
  const double a = new_handle(obj(1));  // 0 + 1/8192
  const double b = new_handle(obj(2));  // 1 + 1/8192
  destroy_handle(a);
  const double a2 = new_handle(obj(3));  // 0 + 2/8192
  destroy_handle(a2);
  destroy_handle(b);  // block 0 freed; reuse base 3
  EXPECT_EQ(new_handle(obj(4)), 0 + 3 * kStep);
  EXPECT_EQ(new_handle(obj(5)), 1 + 3 * kStep);
  EXPECT_EQ(handle2pointer(b), nullptr);
}

TEST_F(window_handles, ExplicitBindingsInOwnTable) {
  HandleTable_tag* t = newHandleTable();
  EXPECT_TRUE(bind_handle_in_table(t, 1000 + 5 * kStep, obj(1)));
  EXPECT_TRUE(bind_handle_in_table(t, 3 + kStep, obj(2)));
  // Whole numbers go to the integer table and answer false all the same.
  EXPECT_FALSE(bind_handle_in_table(t, 42.0, obj(3)));
  EXPECT_FALSE(bind_handle_in_table(t, std::nan(""), obj(4)));
  EXPECT_FALSE(bind_handle_in_table(t, -3 - kStep, obj(4)));
  EXPECT_EQ(handle2pointer_in_table(t, 42.0), obj(3));
  EXPECT_EQ(handle2pointer_in_table(t, 1000 + 5 * kStep), obj(1));
  EXPECT_EQ(handle2pointer_in_table(t, 1000 + 4 * kStep), nullptr);
  // Blocks are listed in block order whatever the order of binding.
  EXPECT_EQ(get_all_handles(t), (std::vector<double>{3 + kStep, 1000 + 5 * kStep}));
  destroy_handle_in_table(t, 42.0);
  EXPECT_EQ(handle2pointer_in_table(t, 42.0), nullptr);
  destroy_handle_in_table(t, 3 + kStep);
  EXPECT_EQ(get_all_handles(t), (std::vector<double>{1000 + 5 * kStep}));
  destroyHandleTable(t);  // the leak checker sees whether the blocks went too
}

TEST_F(window_handles, FigureHandles) {
  EXPECT_EQ(new_figure_handle(obj(1)), 0.0);
  EXPECT_EQ(new_figure_handle(obj(2)), 1.0);
  EXPECT_TRUE(assign_figure_handle(obj(3), 3));
  EXPECT_EQ(new_figure_handle(obj(4)), 2.0);
  EXPECT_EQ(new_figure_handle(obj(5)), 4.0) << "3 is taken";
  destroy_handle(0.0);
  EXPECT_EQ(handle2pointer(0.0), nullptr);
  EXPECT_EQ(new_figure_handle(obj(6)), 0.0);
  EXPECT_EQ(handle2pointer(3.0), obj(3));
  // Figures are not ordinary handles.
  EXPECT_EQ(get_number_of_handles(), 0);
  EXPECT_EQ(get_max_integer_handle(), 2147483646);
  EXPECT_EQ(raisedId([] { assign_figure_handle(obj(1), -1); }), "Tavrix::gui::handle::BadArguments");
  EXPECT_EQ(raisedId([] { assign_figure_handle(obj(1), 2147483647); }), "Tavrix::gui::handle::BadArguments");
  EXPECT_EQ(new_figure_handle(obj(7)), 5.0);
}

TEST_F(window_handles, IntegerHandlesRunOut) {
  gui_objects::test::set_lowest_free_integer_handle(2147483645);
  EXPECT_EQ(new_figure_handle(obj(1)), 2147483645.0);
  EXPECT_TRUE(warned("Tavrix::gui::handle::IntegerHandleArrayFull"));
  EXPECT_EQ(gui_objects::test::get_lowest_free_integer_handle(), 2147483647);
  EXPECT_EQ(new_figure_handle(obj(2)), -1.0);
  EXPECT_EQ(handle2pointer(2147483645.0), obj(1));
}

TEST_F(window_handles, ExhaustedDirectoryGivesUpUniquenessThenFails) {
  double h = new_handle(obj(1));
  for (int reuse = 1; reuse < 8191; ++reuse) {
    destroy_handle(h);
    h = new_handle(obj(1));
  }
  destroy_handle(h);                                  // block number 0 retired
  gui_objects::test::set_handle_directory_limit(32);  // reached: one directory growth so far
  EXPECT_FALSE(warned("Tavrix::gui::handle::OutOfUniqueHandles"));
  // At the limit, retired block numbers come back: the old handle value again.
  EXPECT_EQ(new_handle(obj(2)), kStep);
  EXPECT_TRUE(warned("Tavrix::gui::handle::OutOfUniqueHandles"));

  // Fill the 32 blocks; preparing a slot beyond them fails and hands out nothing.
  std::string failure;
  int made = 1;
  for (; made < 32 * 512; ++made) {
    failure = raisedId([] { new_handle(obj(3)); });
    if (!failure.empty()) break;
  }
  EXPECT_EQ(failure, "Tavrix::gui::handle::AllocationFailed");
  EXPECT_EQ(made, 32 * 512 - 1);
  EXPECT_EQ(get_number_of_handles(), made);
}

TEST_F(window_handles, DumpListsBoundSlotsPerBlock) {
  int figure = 0, axes = 0;
  hostRegisterObjectType(&figure, "figure");
  hostRegisterObjectType(&axes, "axes");
  new_handle(&figure);
  const double h = new_handle(&axes);
  for (int i = 2; i < 513; ++i) new_handle(obj(i));
  for (int i = 2; i < 512; ++i) destroy_handle(i + kStep);  // block 1 keeps index 512
  destroy_handle(h);
  new_handle(&axes);  // index 1, reuse 2
  HostConsoleCapture capture;
  print_handle_table();
  const std::string unknown = hostObjectTypeName(obj(512));
  const std::string segmentEnd = " |  NEXT\n V  SEGMENT:\n";
  EXPECT_EQ(capture.text(),
            "handle_array size = 512\nnumber of linked handle arrays = 2\n"
            "[index:(segment)(offset)][number]\n"
            "[  0:( 0)(  0)][ 1] --> figure\n[  1:( 0)(  1)][ 2] --> axes\n" +
                segmentEnd + "[512:( 1)(  0)][ 1] --> " + unknown + "\n" + segmentEnd + "NULL\n");
  hostUnregisterObjectType(&figure);
  hostUnregisterObjectType(&axes);
}

// Random interleavings of new and destroy against a model of the live
// handles; every handle value ever issued must be new, every live one must
// resolve to its object and every destroyed one to null.
TEST_F(window_handles, StressAgainstModel) {
  const char* env = std::getenv("QVGUI_STRESS_OPS");
#if defined(__SANITIZE_ADDRESS__)
  long ops = 200000;
#else
  long ops = 2000000;
#endif
  if (env) ops = std::atol(env);
  std::mt19937_64 rng(20261121);
  std::map<double, void*> live;
  std::vector<double> liveKeys;  // for picking a random live handle
  std::unordered_set<double> issued;
  std::vector<double> stale;
  issued.reserve(std::size_t(ops));
  std::size_t target = 0;
  std::uintptr_t nextObject = 1;
  for (long i = 0; i < ops; ++i) {
    if (i % 20000 == 0) target = std::uniform_int_distribution<std::size_t>(0, 4000)(rng);
    const bool create = liveKeys.empty() || (liveKeys.size() < target ? rng() % 8 != 0 : rng() % 8 == 0);
    if (create) {
      void* p = obj(nextObject++);
      const double h = new_handle(p);
      ASSERT_TRUE(issued.insert(h).second) << "handle " << h << " issued twice";
      ASSERT_FALSE(is_handle_integer(h));
      live[h] = p;
      liveKeys.push_back(h);
    } else {
      const std::size_t k = rng() % liveKeys.size();
      const double h = liveKeys[k];
      liveKeys[k] = liveKeys.back();
      liveKeys.pop_back();
      live.erase(h);
      destroy_handle(h);
      ASSERT_EQ(handle2pointer(h), nullptr);
      if (stale.size() < 5000)
        stale.push_back(h);
      else
        stale[rng() % stale.size()] = h;
    }
    if (i % 100000 == 99999 || i == ops - 1) {
      for (const auto& [h, p] : live) ASSERT_EQ(handle2pointer(h), p) << h;
      for (double h : stale) ASSERT_EQ(handle2pointer(h), nullptr) << h;
      std::vector<double> keys;
      for (const auto& entry : live) keys.push_back(entry.first);
      std::sort(keys.begin(), keys.end());
      ASSERT_EQ(get_all_handles(nullptr), keys);
    }
  }
  EXPECT_FALSE(warned("Tavrix::gui::handle::OutOfUniqueHandles"));
}

}  // namespace
