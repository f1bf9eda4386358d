// Hostile depth: long and deeply nested texts, self-recursive code, and cells
// nested far deeper than any stack would allow to recurse.

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "host_test_support.h"
#include "qvhost/runtime.h"

namespace {

using host_test::Array;

// The documented limits: expressions nest 256 deep in one text; evaluation,
// calls included, goes 1024 deep, with at most 128 calls active.
constexpr int kNesting = 256;
constexpr int kCalls = 128;

class HostDepth : public ::testing::Test {
 protected:
  void SetUp() override {
    hostClearWorkspace();
    baseline_ = hostLiveArrayCount();
  }
  void TearDown() override {
    hostClearWorkspace();
    EXPECT_EQ(hostLiveArrayCount(), baseline_) << "host arrays leaked";
  }

  static std::string errorOf(const std::string& code) {
    try {
      hostEvalString(code.c_str());
    } catch (const ScriptException& e) {
      return e.identifier();
    }
    return "(no error)";
  }

  static double scalar(const char* name) {
    const Array a(hostGetVariable(name));
    return a != nullptr && zrIsDouble(a.get()) ? zrGetPr(a.get())[0] : -1;
  }

  std::int64_t baseline_ = 0;
};

std::string repeat(const std::string& s, int n) {
  std::string out;
  out.reserve(s.size() * static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) out += s;
  return out;
}

TEST_F(HostDepth, LongOperatorChainsRunWithoutNesting) {
  const int terms = 1000000;
  hostEvalString(("x = 1" + repeat("+1", terms)).c_str());
  EXPECT_EQ(scalar("x"), terms + 1.0);
  hostEvalString(("y = 3" + repeat("*1", terms) + repeat("-1", 10) + "/2").c_str());
  EXPECT_EQ(scalar("y"), 3 - 10 + 0.5) << "precedence survives the flat chains";
}

// Every kind of nesting is counted: the limit itself works, one more is an
// error naming the limit, and tens of thousands are the same error.
TEST_F(HostDepth, NestingStopsAtTheLimit) {
  struct Row {
    const char* label;
    const char* open;
    const char* close;
    int levelsPerOpen;
  };
  const Row rows[] = {
      {"parentheses", "(", ")", 1}, {"unary minus", "-", "", 1},          {"matrices", "[", "]", 1},
      {"calls", "numel(", ")", 1},  {"signed parentheses", "-(", ")", 2},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.label);
    const int limit = kNesting / r.levelsPerOpen;
    const auto nested = [&](int n) { return "v = " + repeat(r.open, n) + "1" + repeat(r.close, n); };
    EXPECT_EQ(errorOf(nested(limit)), "(no error)");
    EXPECT_EQ(errorOf(nested(limit + 1)), "Tavrix::host::NestingTooDeep");
    EXPECT_EQ(errorOf(nested(30000)), "Tavrix::host::NestingTooDeep");
  }
  EXPECT_EQ(errorOf(repeat("(", 30000)), "Tavrix::host::NestingTooDeep") << "unclosed";
}

// A function that runs the code that calls it again recurses until the
// evaluation limit; the error unwinds every level and leaves the counter
// where it was, so the next text runs normally.
TEST_F(HostDepth, SelfRecursionEndsWithRecursionLimit) {
  static int calls = 0;
  calls = 0;
  hostRegisterFunction("again", [](int, zrArray_tag** plhs, int, const zrArray_tag* const*) {
    ++calls;
    hostEvalString("r = again()");
    plhs[0] = zrCreateDoubleScalar(0);
  });
  EXPECT_EQ(errorOf("again()"), "Tavrix::host::RecursionLimit");
  EXPECT_EQ(calls, kCalls);
  zrArray_tag* out = nullptr;
  EXPECT_THROW(hostCallFunctionByName("again", 1, &out, 0, nullptr), ScriptException);
  EXPECT_EQ(out, nullptr);
  hostUnregisterFunction("again");
  hostEvalString(("z = " + repeat("(", kNesting) + "2" + repeat(")", kNesting)).c_str());
  EXPECT_EQ(scalar("z"), 2);
}

// Random expressions against a tree evaluated by the test: flattening chains
// must keep left-to-right order and precedence, including parenthesised runs
// of the same operator.
TEST_F(HostDepth, FlatChainsMatchTreeEvaluation) {
  std::mt19937 rng(14);
  struct Gen {
    std::mt19937& rng;
    std::string text;
    double expression(int depth) {
      double v = term(depth);
      for (int k = static_cast<int>(rng() % 4); k > 0; --k) {
        const bool plus = rng() % 2 == 0;
        text += plus ? "+" : "-";
        const double t = term(depth);
        v = plus ? v + t : v - t;
      }
      return v;
    }
    double term(int depth) {
      double v = factor(depth);
      for (int k = static_cast<int>(rng() % 3); k > 0; --k) {
        const bool times = rng() % 2 == 0;
        text += times ? "*" : "/";
        const double f = factor(depth);
        v = times ? v * f : v / f;
      }
      return v;
    }
    double factor(int depth) {
      const unsigned pick = rng() % 5;
      if (depth > 0 && pick == 0) {
        text += "(";
        const double v = expression(depth - 1);
        text += ")";
        return v;
      }
      if (depth > 0 && pick == 1) {
        text += "-";
        return -factor(depth - 1);
      }
      const double v = 1 + static_cast<double>(rng() % 9);
      text += std::to_string(static_cast<int>(v));
      return v;
    }
  };
  for (int i = 0; i < 2000; ++i) {
    Gen g{rng, "w = "};
    const double expected = g.expression(4);
    SCOPED_TRACE(g.text);
    hostEvalString(g.text.c_str());
    EXPECT_EQ(scalar("w"), expected);
  }
}

// A chain of cells each holding the next; the innermost holds `leaf`.
zrArray_tag* nestedCells(int depth, double leaf) {
  zrArray_tag* inner = zrCreateDoubleScalar(leaf);
  for (int k = 0; k < depth; ++k) {
    zrArray_tag* cell = zrCreateCellMatrix(1, 1);
    zrSetCell(cell, 0, inner);
    inner = cell;
  }
  return inner;
}

TEST_F(HostDepth, DeeplyNestedCellsCompareCopyAndFree) {
  const Array a(nestedCells(100000, 1)), b(nestedCells(100000, 1)), c(nestedCells(100000, 2));
  EXPECT_TRUE(zrArrayEqual(a.get(), b.get()));
  EXPECT_FALSE(zrArrayEqual(a.get(), c.get())) << "the difference is at the bottom";
  const Array copy(zrDuplicateArray(c.get()));
  EXPECT_TRUE(zrArrayEqual(copy.get(), c.get()));
  EXPECT_FALSE(zrArrayEqual(copy.get(), a.get()));
  zrDestroyArray(nestedCells(1000000, 0));
}

// Wide and nested at once, with structs whose fields are in another order:
// the iterative walk must pair every slot with its partner.
TEST_F(HostDepth, NestedStructsAndCellsPairTheirSlots) {
  const auto make = [](bool swapFields, double leaf) {
    const char* ab[] = {"a", "b"};
    const char* ba[] = {"b", "a"};
    zrArray_tag* s = zrCreateStructMatrix(1, 2, 2, swapFields ? ba : ab);
    zrArray_tag* cell = zrCreateCellMatrix(1, 3);
    zrSetCell(cell, 2, nestedCells(50, leaf));
    zrSetField(s, 1, "a", cell);
    zrSetField(s, 0, "b", zrCreateString("text"));
    return s;
  };
  const Array x(make(false, 1)), y(make(true, 1)), z(make(true, 3));
  EXPECT_TRUE(zrArrayEqual(x.get(), y.get()));
  EXPECT_FALSE(zrArrayEqual(x.get(), z.get()));
  const Array copy(zrDuplicateArray(z.get()));
  EXPECT_TRUE(zrArrayEqual(copy.get(), z.get()));
}

}  // namespace
