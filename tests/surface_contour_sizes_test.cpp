// The size-checked way into the contour engine: arrays shorter than the grid
// are refused before anything is read, and arrays that fit trace exactly as
// through the unchecked pointers.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "qvgui/surface.h"

using namespace gui_objects;

namespace {

constexpr int kRows = 4, kColumns = 5;

struct Grid {
  std::vector<double> x, y, z;
  Grid() : x(kColumns), y(kRows), z(kRows * kColumns) {
    for (int j = 0; j < kColumns; ++j) x[j] = j;
    for (int i = 0; i < kRows; ++i) y[i] = i;
    for (int j = 0; j < kColumns; ++j)
      for (int i = 0; i < kRows; ++i) z[j * kRows + i] = std::hypot(i - 1.5, j - 2.0);
  }
};

std::vector<double> traced(ContourEngine& engine) {
  const double levels[] = {0.5, 1.0, 1.5};
  ContourResult result;
  engine.plotContours(levels, 3, result);
  zrArray_tag* m = result.release();
  std::vector<double> v(zrGetPr(m), zrGetPr(m) + zrGetNumberOfElements(m));
  zrDestroyArray(m);
  return v;
}

TEST(ContourSizes, ShortOrNullArraysAreRefused) {
  Grid g;
  struct Case {
    const char* label;
    std::size_t xCount, yCount, zCount;
    bool nullY;
    const char* error;  // null: accepted
  };
  const Case cases[] = {
      {"exact sizes", kColumns, kRows, kRows * kColumns, false, nullptr},
      {"longer arrays", kColumns + 3, kRows + 1, kRows * kColumns + 7, false, nullptr},
      {"x one short", kColumns - 1, kRows, kRows * kColumns, false, "x"},
      {"y one short", kColumns, kRows - 1, kRows * kColumns, false, "y"},
      {"z one short", kColumns, kRows, kRows * kColumns - 1, false, "z"},
      {"z given as rows only", kColumns, kRows, kRows, false, "z"},
      {"null y with a count", kColumns, kRows, kRows * kColumns, true, "y"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    ContourEngine engine(kRows, kColumns);
    engine.allocWorkSpace(16);
    std::string error;
    try {
      engine.setXYZAndZMinMax(g.x.data(), c.xCount, c.nullY ? nullptr : g.y.data(), c.yCount, g.z.data(),
                              c.zCount, 0.0, 3.0);
    } catch (const HostError& e) {
      EXPECT_EQ(e.identifier(), "Tavrix::gui::surface::ContourArraySizeMismatch");
      error = e.message();
    }
    if (c.error == nullptr) {
      EXPECT_EQ(error, "");
      ContourEngine plain(kRows, kColumns);
      plain.allocWorkSpace(16);
      plain.setXYZPtrsAndZMinMax(g.x.data(), g.y.data(), g.z.data(), 0.0, 3.0);
      EXPECT_EQ(traced(engine), traced(plain));
    } else {
      EXPECT_NE(error.find(std::string(" in ") + c.error + ","), std::string::npos) << error;
      EXPECT_EQ(traced(engine).size(), 0u) << "a refused grid leaves nothing to trace";
    }
  }
}

TEST(ContourSizes, EmptyGridNeedsNoArrays) {
  ContourEngine engine(0, 3);
  EXPECT_NO_THROW(engine.setXYZAndZMinMax(nullptr, 3, nullptr, 0, nullptr, 0, 0.0, 1.0));
}

}  // namespace
