// Colour tables: the combined table and the fixed colours against a plain
// model under random updates, refusals and failed allocations that leave the
// table byte for byte as it was, the fast quantiser and the small helpers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"
#include "raster_color_test_support.h"

namespace {

using raster_test::ColorWindow;
using raster_test::slots;
using raster_test::Table;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<unsigned char> bytesOf(const void* p, std::size_t n) {
  const auto* b = static_cast<const unsigned char*>(p);
  return p == nullptr ? std::vector<unsigned char>{} : std::vector<unsigned char>(b, b + n);
}

// Every field and every array of a table, as raw bytes (NaN compares equal to itself).
std::vector<std::vector<unsigned char>> snapshot(const Colortable_tag* t) {
  auto n = [](std::int32_t k) { return k > 0 ? static_cast<std::size_t>(k) : 0; };
  return {bytesOf(t, sizeof *t),
          bytesOf(t->colormap_data, 3 * n(t->colormap_length) * sizeof(double)),
          bytesOf(t->dithermap_data, 3 * n(t->dithermap_length) * sizeof(double)),
          bytesOf(t->combined_data, 3 * n(t->combined_length) * sizeof(double)),
          bytesOf(t->fixed_data, 3 * n(t->fixed_length) * sizeof(double)),
          bytesOf(t->fixed_usage, n(t->fixed_length) * sizeof(std::int32_t))};
}

// ---- The model ---------------------------------------------------------------------

struct Rgb {
  double r, g, b;
};
int q8(double x) { return static_cast<int>(x * 255.0 + 0.5); }
std::tuple<int, int, int> key(const Rgb& c) { return {q8(c.r), q8(c.g), q8(c.b)}; }

struct Model {
  std::vector<Rgb> colormap, dithermap;
  bool use = false;
  std::vector<std::pair<Rgb, int>> fixed;  // exact components of the first adder, count
};

void expectMatches(const Colortable_tag* t, const Model& m) {
  std::vector<Rgb> combined = m.colormap;
  if (m.use) combined.insert(combined.end(), m.dithermap.begin(), m.dithermap.end());
  ASSERT_EQ(t->combined_length, static_cast<std::int32_t>(combined.size()));
  ASSERT_EQ(t->colormap_length, static_cast<std::int32_t>(m.colormap.size()));
  const std::size_t n = combined.size();
  for (std::size_t i = 0; i < n; ++i) {
    const Rgb& c = combined[i];
    ASSERT_EQ(std::memcmp(&t->combined_data[i], &c.r, sizeof(double)), 0) << "red " << i;
    ASSERT_EQ(std::memcmp(&t->combined_data[n + i], &c.g, sizeof(double)), 0) << "green " << i;
    ASSERT_EQ(std::memcmp(&t->combined_data[2 * n + i], &c.b, sizeof(double)), 0) << "blue " << i;
  }
  const std::size_t f = m.fixed.size();
  ASSERT_EQ(t->fixed_length, static_cast<std::int32_t>(f));
  for (std::size_t i = 0; i < f; ++i) {
    EXPECT_EQ(t->fixed_data[i], m.fixed[i].first.r);
    EXPECT_EQ(t->fixed_data[f + i], m.fixed[i].first.g);
    EXPECT_EQ(t->fixed_data[2 * f + i], m.fixed[i].first.b);
    EXPECT_EQ(fixed_index_to_usage(static_cast<unsigned>(i), t), m.fixed[i].second);
  }
}

NReals planar(const std::vector<Rgb>& colours, std::vector<double> extra = {}) {
  std::vector<double> v;
  for (const Rgb& c : colours) v.push_back(c.r);
  for (const Rgb& c : colours) v.push_back(c.g);
  for (const Rgb& c : colours) v.push_back(c.b);
  v.insert(v.end(), extra.begin(), extra.end());
  return NReals(v.data(), static_cast<int>(v.size()));
}

// Random updates of every kind, checked against the model after each step.
// The colour pool is small and on a coarse grid plus tiny offsets, so fixed
// colours keep colliding at 8-bit precision.
TEST(Colortable, RandomUpdatesKeepCombinedTableAndFixedCounts) {
  ColorWindow win;
  std::mt19937 rng(11);
  std::uniform_int_distribution<int> op(0, 5), grid(0, 4), small(0, 6);
  auto colour = [&] {
    auto c = [&] { return grid(rng) / 4.0 + (grid(rng) - 2) * 1e-4 * (grid(rng) > 0 ? 1 : 0); };
    auto clamp = [](double x) { return x < 0 ? 0.0 : (x > 1 ? 1.0 : x); };
    return Rgb{clamp(c()), clamp(c()), clamp(c())};
  };
  for (int run = 0; run < 20; ++run) {
    Table t(create_ColortablePtr());
    Model m;
    std::vector<Color_tag*> held;  // colours currently counted in the fixed list
    for (int step = 0; step < 200; ++step) {
      SCOPED_TRACE("run " + std::to_string(run) + " step " + std::to_string(step));
      switch (op(rng)) {
        case 0:
        case 1: {
          std::vector<Rgb> cs(static_cast<std::size_t>(small(rng)));
          for (Rgb& c : cs) c = colour();
          const int extra = small(rng) % 3;  // an incomplete colour is dropped unchecked
          std::vector<double> tail(static_cast<std::size_t>(extra), 7.0);
          if (step % 2 == 0) {
            set_ColortablePtr_colormap_data(t.get(), planar(cs, tail));
            m.colormap = cs;
            EXPECT_FALSE(t->colormap_installed);
          } else {
            set_ColortablePtr_dithermap_data(t.get(), planar(cs, tail));
            m.dithermap = cs;
            EXPECT_FALSE(t->dithermap_installed);
          }
          break;
        }
        case 2: {
          const bool flag = small(rng) % 2 == 0;
          const int before = slots().installs;
          set_ColortablePtr_UseDithermap(win.get(), t.get(), flag);
          EXPECT_EQ(slots().installs - before, flag != m.use ? 1 : 0);
          m.use = flag;
          break;
        }
        case 3:
        case 4: {
          const Rgb c = colour();
          Color_tag* rec = create_ColorPtrFromRGB(c.r, c.g, c.b);
          add_ColorPtr_to_fixed_data(rec, t.get());
          EXPECT_TRUE(gotten(rec));
          held.push_back(rec);
          auto it = m.fixed.begin();
          while (it != m.fixed.end() && key(it->first) != key(c)) ++it;
          if (it == m.fixed.end()) {
            m.fixed.push_back({c, 1});
          } else {
            ++it->second;
          }
          break;
        }
        default: {
          if (held.empty()) break;
          const std::size_t k = rng() % held.size();
          Color_tag* rec = held[k];
          held.erase(held.begin() + static_cast<std::ptrdiff_t>(k));
          remove_ColorPtr_from_fixed_data(rec, t.get());
          EXPECT_FALSE(gotten(rec));
          auto it = m.fixed.begin();
          while (key(it->first) != key({rec->red, rec->green, rec->blue})) ++it;
          if (--it->second == 0) m.fixed.erase(it);
          destroy_ColorPtr(rec);
          break;
        }
      }
      ASSERT_NO_FATAL_FAILURE(expectMatches(t.get(), m));
    }
    for (Color_tag* rec : held) {
      rec->gotten = false;
      destroy_ColorPtr(rec);
    }
  }
}

// ---- Refusals and failures --------------------------------------------------------------

TEST(Colortable, OutOfRangeValuesLeaveTheTableAsItWas) {
  struct Case {
    const char* label;
    bool dithermap;
    std::vector<double> values;
    bool accepted;
  };
  const double above = std::nextafter(1.0, 2.0);
  const double below = -std::numeric_limits<double>::denorm_min();
  const std::vector<Case> cases = {
      {"exact ends", false, {0, 1, 0, 1, 0, 1}, true},
      {"negative zero", false, {-0.0, 0.5, 0.5}, true},
      {"NaN passes", false, {kNaN, 0.5, kNaN}, true},
      {"seventh value unchecked", false, {0, 0, 0, 0, 0, 0, 5.0}, true},
      {"1.0000001", false, {0.5, 0.5, 1.0000001}, false},
      {"just above 1", false, {0.5, above, 0.5}, false},
      {"just below 0 first", false, {below, 0.5, 0.5}, false},
      {"last of many", false, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2}, false},
      {"dithermap above", true, {0.5, 0.5, 0.5, 0.5, 0.5, 1.5}, false},
      {"dithermap infinity", true, {-std::numeric_limits<double>::infinity(), 0, 0}, false},
      {"dithermap fine", true, {0.25, 0.5, 0.75}, true},
  };
  ColorWindow win;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Table t(create_ColortablePtr());
    set_ColortablePtr_colormap_data(t.get(), NReals{0.1, 0.2, 0.3, 0.4, 0.5, 0.6});
    set_ColortablePtr_dithermap_data(t.get(), NReals{0.9, 0.8, 0.7});
    set_ColortablePtr_UseDithermap(win.get(), t.get(), true);
    const auto before = snapshot(t.get());
    const NReals values(c.values.data(), static_cast<int>(c.values.size()));
    try {
      if (c.dithermap) {
        set_ColortablePtr_dithermap_data(t.get(), values);
      } else {
        set_ColortablePtr_colormap_data(t.get(), values);
      }
      EXPECT_TRUE(c.accepted);
      EXPECT_EQ(c.dithermap ? t->dithermap_length : t->colormap_length,
                static_cast<int>(c.values.size() / 3));
    } catch (const HostError& e) {
      EXPECT_FALSE(c.accepted);
      EXPECT_EQ(e.identifier(), c.dithermap ? "Tavrix::gui::colorptr::DithermapElementOutOfRange"
                                            : "Tavrix::gui::colorptr::ColormapElementOutOfRange");
      EXPECT_TRUE(snapshot(t.get()) == before);
    }
  }
}

// Each update is retried with every allocation budget up to the one that
// succeeds: a failure leaves the table unchanged (leaks show in the sanitizer
// build), and a pending interrupt is honoured before anything changes.
TEST(Colortable, FailedAllocationsAndInterruptsChangeNothing) {
  ColorWindow win;
  Table t(create_ColortablePtr());
  set_ColortablePtr_colormap_data(t.get(), NReals{0.1, 0.2, 0.3, 0.4, 0.5, 0.6});
  set_ColortablePtr_dithermap_data(t.get(), NReals{0.9, 0.8, 0.7});
  set_ColortablePtr_UseDithermap(win.get(), t.get(), true);
  Color_tag* kept = create_ColorPtrFromRGB(0.5, 0.5, 0.5);
  add_ColorPtr_to_fixed_data(kept, t.get());
  Color_tag* extra = create_ColorPtrFromRGB(0.25, 0.5, 0.75);

  const std::vector<std::pair<const char*, std::function<void()>>> updates = {
      {"colormap",
       [&] {
         set_ColortablePtr_colormap_data(t.get(), NReals{0.0, 0.5, 1.0, 1.0, 0.5, 0.0});
       }},
      {"dithermap",
       [&] {
         set_ColortablePtr_dithermap_data(t.get(), NReals{0.3, 0.3, 0.3, 0.6, 0.6, 0.6});
       }},
      {"flag off", [&] { set_ColortablePtr_UseDithermap(win.get(), t.get(), false); }},
      {"add", [&] { add_ColorPtr_to_fixed_data(extra, t.get()); }},
      {"remove", [&] { remove_ColorPtr_from_fixed_data(extra, t.get()); }},
  };
  for (const auto& [label, update] : updates) {
    SCOPED_TRACE(label);
    bool done = false;
    for (std::int64_t budget = 0; !done && budget < 10; ++budget) {
      const auto before = snapshot(t.get());
      try {
        HostAllocationFailureScope scope(budget);
        update();
        done = true;
      } catch (const HostError& e) {
        EXPECT_EQ(e.identifier(), kHostOutOfMemoryId);
        EXPECT_TRUE(snapshot(t.get()) == before);
      }
    }
    EXPECT_TRUE(done);
  }

  const auto before = snapshot(t.get());
  utSetInterruptPending(true);
  try {
    set_ColortablePtr_colormap_data(t.get(), NReals{0.0, 0.0, 0.0});
    ADD_FAILURE() << "the pending interrupt was not honoured";
  } catch (const HostError& e) {
    EXPECT_EQ(e.identifier(), kHostInterruptId);
  }
  EXPECT_TRUE(snapshot(t.get()) == before);
  utSetInterruptPending(false);

  remove_ColorPtr_from_fixed_data(kept, t.get());
  destroy_ColorPtr(kept);
  destroy_ColorPtr(extra);
}

// ---- Fixed colours ------------------------------------------------------------------------

TEST(Colortable, FixedIndicesFollowTheCombinedTableAndProtectTheirRecords) {
  ColorWindow win;
  Table t(create_ColortablePtr());
  EXPECT_TRUE(t->colormap_installed);
  EXPECT_EQ(t->min_colormap_length, 64);
  set_ColortablePtr_colormap_data(t.get(), NReals{0.1, 0.2, 0.3, 0.4, 0.5, 0.6});
  set_ColortablePtr_dithermap_data(t.get(), NReals{0.9, 0.8, 0.7, 0.1, 0.1, 0.1, 0.2, 0.2, 0.2});
  Color_tag* a = create_ColorPtrFromRGB(0.5001, 0.25, 0.75);
  Color_tag* b = create_ColorPtrFromRGB(0.5001 + 1.0 / 255, 0.25, 0.75);  // one step up
  add_ColorPtr_to_fixed_data(a, t.get());
  add_ColorPtr_to_fixed_data(b, t.get());
  EXPECT_EQ(fixed_ColorPtr_to_TavrixColorspaceIndex(a, t.get()), 2u);
  set_ColortablePtr_UseDithermap(win.get(), t.get(), true);
  EXPECT_EQ(fixed_ColorPtr_to_TavrixColorspaceIndex(b, t.get()), 6u);
  Color_tag* absent = create_ColorPtrFromRGB(0, 0, 0);
  EXPECT_EQ(fixed_ColorPtr_to_index(absent, t.get()), 2u);
  destroy_ColorPtr(absent);

  destroy_ColorPtr(a);  // gotten: still alive (the sanitizer build would catch a free)
  remove_ColorPtr_from_fixed_data(a, t.get());
  EXPECT_EQ(t->fixed_data[0], b->red) << "the survivor moves down";
  remove_ColorPtr_from_fixed_data(b, t.get());
  destroy_ColorPtr(a);
  destroy_ColorPtr(b);
}

// ---- The fast quantiser ----------------------------------------------------------------

// Random images of a given number of distinct values in a random pixel format:
// below the limit every pixel becomes its colour's device pixel and the
// colours decode the channels; above it the image comes back untouched.
TEST(Colortable, FastQuantizeMatchesAFirstSeenOrderReference) {
  ColorWindow win;
  Table t(create_ColortablePtr());
  std::mt19937 rng(5);
  const std::vector<_TrueColorPixelInfo_tag> formats = {
      {255, 255, 255, 16, 8, 0}, {31, 63, 31, 11, 5, 0}, {1023, 1023, 1023, 0, 10, 20}};
  for (int distinct : {1, 2, 63, 64, 65, 200}) {
    for (const auto& info : formats) {
      SCOPED_TRACE("distinct " + std::to_string(distinct) + " red shift " + std::to_string(info.red_shift));
      std::vector<std::uint32_t> values;
      while (static_cast<int>(values.size()) < distinct) {
        const std::uint32_t v = static_cast<std::uint32_t>(rng());
        if (std::find(values.begin(), values.end(), v) == values.end()) values.push_back(v);
      }
      const int w = 37, h = 23;
      std::vector<std::uint32_t> image(w * h);
      for (std::size_t p = 0; p < image.size(); ++p) {
        // Every value appears; the last new one arrives late, then runs.
        image[p] = p < values.size() ? values[p] : values[rng() % values.size()];
      }
      std::rotate(image.begin(), image.begin() + 5, image.end());
      const std::vector<std::uint32_t> original = image;

      Color_tag* sentinel[1] = {nullptr};
      Color_tag** colours = sentinel;  // must be overwritten
      int count = -1;
      const bool gaveUp = fast_quantize(w, h, image.data(), &colours, &count, win.get(), t.get(), &info);
      if (distinct > 64) {
        EXPECT_TRUE(gaveUp);
        EXPECT_EQ(colours, nullptr);
        EXPECT_EQ(count, 0);
        EXPECT_EQ(image, original);
        continue;
      }
      ASSERT_FALSE(gaveUp);
      ASSERT_EQ(count, distinct);
      std::map<std::uint32_t, int> order;
      for (std::uint32_t v : original) order.emplace(v, static_cast<int>(order.size()));
      for (std::size_t p = 0; p < image.size(); ++p) {
        ASSERT_EQ(image[p], static_cast<std::uint32_t>(1000 + order[original[p]])) << p;
      }
      for (const auto& [v, i] : order) {
        const auto decode = [&](double max, int shift) {
          return static_cast<double>((v >> shift) & static_cast<std::uint32_t>(max)) / max;
        };
        EXPECT_EQ(colours[i]->red, decode(info.red_max, info.red_shift));
        EXPECT_EQ(colours[i]->green, decode(info.green_max, info.green_shift));
        EXPECT_EQ(colours[i]->blue, decode(info.blue_max, info.blue_shift));
        EXPECT_FALSE(colours[i]->gotten);
        destroy_ColorPtr(colours[i]);
      }
      utFree(colours);
    }
  }
}

TEST(Colortable, FastQuantizePutsTheImageBackWhenMemoryRunsOut) {
  ColorWindow win;
  Table t(create_ColortablePtr());
  const _TrueColorPixelInfo_tag info{255, 255, 255, 16, 8, 0};
  const std::vector<std::uint32_t> original = {1, 2, 3, 1, 2, 0xffffff, 3, 3};
  bool done = false;
  for (std::int64_t budget = 0; !done; ++budget) {
    std::vector<std::uint32_t> image = original;
    Color_tag** colours = nullptr;
    int count = 0;
    try {
      HostAllocationFailureScope scope(budget);
      EXPECT_FALSE(fast_quantize(4, 2, image.data(), &colours, &count, win.get(), t.get(), &info));
      done = true;
    } catch (const HostError& e) {
      EXPECT_EQ(e.identifier(), kHostOutOfMemoryId);
      EXPECT_EQ(image, original);
      continue;
    }
    ASSERT_EQ(count, 4);
    for (int i = 0; i < count; ++i) destroy_ColorPtr(colours[i]);
    utFree(colours);
  }
}

// ---- Small helpers ------------------------------------------------------------------------

TEST(Colortable, AveragesAndCityBlockNearness) {
  Table t(create_ColortablePtr());
  set_ColortablePtr_colormap_data(t.get(), NReals{0.0, 1.0, 0.5, 0.2, 0.4, 0.6, 1.0, 0.0, 0.25});
  Color_tag* out = create_ColorPtr();
  out->pixel = 9;
  const double indices[] = {0.0, 1.9, 2.2};  // truncated: 0, 1, 2
  avgRGBColor(indices, 3, t.get(), out);
  EXPECT_DOUBLE_EQ(out->red, 0.5);
  EXPECT_DOUBLE_EQ(out->green, 0.4);
  EXPECT_DOUBLE_EQ(out->blue, 1.25 / 3);
  EXPECT_EQ(out->pixel, 9);
  avgRGBColor(indices, 0, t.get(), out);
  EXPECT_TRUE(std::isnan(out->red));
  destroy_ColorPtr(out);

  struct Case {
    qvpoint a, b;
    bool near;
  };
  const Case cases[] = {
      {{0, 0}, {3, 3}, true},
      {{0, 0}, {4, 3}, false},
      {{0, 0}, {0, 6}, true},
      {{0, 0}, {0, -7}, false},
      {{-3, 2}, {0, 0}, true},
      {{32767, 0}, {-32768, 0}, false},
      {{-32768, -32768}, {-32765, -32765}, true},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(close_enough(&c.a, &c.b), c.near) << c.a.v << "," << c.a.h << " " << c.b.v << "," << c.b.h;
  }
  EXPECT_FALSE(close_enough(nullptr, &cases[0].b));
  EXPECT_FALSE(close_enough(&cases[0].a, nullptr));
}

}  // namespace
