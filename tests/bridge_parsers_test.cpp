// Property-string parsers: number lists, the fixed-shape forms, M-by-N
// matrices, string lists and the dimensions of matrix literals.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "bridge_test_support.h"

namespace {

using namespace gui_objects;
using namespace gui_objects::convert_from_string_utils;

constexpr double kInf = std::numeric_limits<double>::infinity();

// Runs a parser and gives its values, or nullopt when it threw ParseException.
template <class F>
auto tryParse(F&& parse) -> std::optional<decltype(parse())> {
  try {
    return parse();
  } catch (const ParseException&) {
    return std::nullopt;
  }
}

std::vector<double> asVector(const Point3d& p) { return {p.getX(), p.getY(), p.getZ()}; }

void expectSameValues(const std::vector<double>& got, const std::vector<double>& want) {
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t k = 0; k < want.size(); ++k) {
    if (std::isnan(want[k])) {
      EXPECT_TRUE(std::isnan(got[k])) << "value " << k;
    } else {
      EXPECT_EQ(got[k], want[k]) << "value " << k;
    }
  }
}

TEST(BridgeNumberList, ThreeValues) {
  struct Case {
    const char* label;
    const char* text;
    std::vector<double> want;  // empty: ParseException
  };
  const Case cases[] = {
      {"brackets", "[1 2 3]", {1, 2, 3}},
      {"round brackets and commas", "(1,2,3)", {1, 2, 3}},
      {"bare", "1 2 3", {1, 2, 3}},
      {"comma with blank before", "1,2 ,3", {1, 2, 3}},
      {"mixed brackets", "(1 2 3]", {1, 2, 3}},
      {"tabs and doubled separators", "\t1,,\t2  3 ,", {1, 2, 3}},
      {"two values", "[1 2]", {}},
      {"four values", "[1 2 3 4]", {}},
      {"infinities", "[1 inf -inf]", {1, kInf, -kInf}},
      {"capital Inf", "[1 Inf 2]", {}},
      {"infinity spelled out", "[1 infinity 2]", {}},
      {"plus inf", "[1 +inf 2]", {}},
      {"trailing letters ignored", "3abc 2px 1e", {3, 2, 1}},
      {"exponents", "1e3 -2.5E-2 .5", {1000, -0.025, 0.5}},
      {"leading plus", "+4 5. -0", {4, 5, 0}},
      {"hexadecimal reads as its leading zero", "0x10 1 2", {0, 1, 2}},
      {"word", "1 two 3", {}},
      {"lone sign", "1 - 3", {}},
      {"lone point", "1 . 3", {}},
      {"bracket inside", "1 [2 3", {}},
      {"semicolon glued to a value is trailing text", "1 2 3;", {1, 2, 3}},
      {"semicolon after the values", "1 2 3 ;", {}},
      {"only brackets", "[ ]", {}},
      {"empty", "", {}},
      {"overflow", "1e999 -1e999 1e-999", {kInf, -kInf, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const auto got = tryParse([&] { return asVector(parse_1x3_double(c.text)); });
    if (c.want.empty()) {
      EXPECT_FALSE(got.has_value());
    } else {
      ASSERT_TRUE(got.has_value());
      expectSameValues(*got, c.want);
    }
  }
}

TEST(BridgeNumberList, EachArity) {
  const double nan = parse_double_scalar("nan");
  EXPECT_TRUE(std::isnan(nan));
  EXPECT_TRUE(std::signbit(nan));
  EXPECT_THROW(parse_double_scalar("NaN"), ParseException);
  EXPECT_THROW(parse_double_scalar("-nan"), ParseException);
  EXPECT_EQ(parse_double_scalar(" (7) "), 7.0);
  EXPECT_EQ(parse_1x2_double("[1.5, -2]"), Point2d(1.5, -2));
  EXPECT_EQ(parse_1x4_double("1 2 3 4"), Point4d(1, 2, 3, 4));
  EXPECT_THROW(parse_1x4_double("1 2 3"), ParseException);
  EXPECT_THROW(parse_1x2_double("1 2 3"), ParseException);
  EXPECT_THROW(parse_double_scalar(nullptr), ParseException);
  EXPECT_THROW(parse_1x2_double(""), ParseException);
}

TEST(BridgeTwoRowForm, Boxes) {
  struct Case {
    const char* label;
    const char* text;
    bool ok;
  };
  const Case cases[] = {
      {"plain", "[0 0 0;1 1 1]", true},         {"blanks around ;", "[0 0 0 ; 1 1 1]", true},
      {"no second row", "[0 0 0;]", false},     {"no first row", "[;0 0 0]", false},
      {"no semicolon", "[0 0 0 1 1 1]", false}, {"third row", "[0 0 0;1 1 1;2 2 2]", false},
      {"short row", "[0 0;1 1 1]", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const auto got = tryParse([&] { return parse_2x3_double(c.text); });
    ASSERT_EQ(got.has_value(), c.ok);
    if (c.ok) {
      EXPECT_EQ(*got, BoundingVolume(Point3d(0, 0, 0), Point3d(1, 1, 1)));
    }
  }
  // Corners in either order make the same box.
  EXPECT_EQ(parse_2x3_double("4 5 6; 1 2 3"), BoundingVolume(Point3d(1, 2, 3), Point3d(4, 5, 6)));
}

TEST(BridgeFourRowForm, TextRowsAreMatrixRows) {
  const Matrix4x4d m = parse_4x4_double("[1 2 3 4; 5 6 7 8; 9 10 11 12; 13 14 15 16]");
  for (int r = 1; r <= 4; ++r) {
    for (int c = 1; c <= 4; ++c) EXPECT_EQ(m.get(r, c), 4 * (r - 1) + c) << r << "," << c;
  }
  const char* bad[] = {
      "1 2 3 4;5 6 7 8;9 10 11 12",               // three rows
      "1 2 3 4;5 6 7 8;9 10 11 12;13 14 15",      // short last row
      "1 2 3 4;5 6 7 8;9 10 11 12;13 14 15 16;",  // trailing semicolon
      "1 2 3 4;5 6 7 8;9 10 11 12;13 14;15 16",   // semicolon in the last row
      ";1 2 3 4;5 6 7 8;9 10 11 12",              // leading semicolon
      "1 2 3 4;;5 6 7 8;9 10 11 12",              // empty row
  };
  for (const char* text : bad) EXPECT_THROW(parse_4x4_double(text), ParseException) << text;
}

TEST(BridgeMatrixLiteral, Dimensions) {
  struct Case {
    const char* label;
    const char* text;
    std::optional<MxN> want;
  };
  const Case cases[] = {
      {"short second row", "[1 2;3]", std::nullopt},
      {"long second row", "[1 2;3 4 5]", std::nullopt},
      {"no brackets", "1 2", std::nullopt},
      {"no closing bracket", "[1 2", std::nullopt},
      {"commas count nothing", "[1,2,3]", MxN{1, 1}},
      {"semicolon before the bracket adds a row", "[1 2;]", MxN{2, 2}},
      {"line feed ends a row", "[1 2\n3 4]", MxN{2, 2}},
      {"line feed after semicolon", "[1 2;\n3 4]", MxN{2, 2}},
      {"row ending in a blank is not checked", "[1 2;3 ;4 5]", MxN{3, 2}},
      {"empty", "[]", MxN{1, 0}},
      {"null", nullptr, std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const auto got = tryParse([&] { return parse_array_dimensions(c.text); });
    ASSERT_EQ(got.has_value(), c.want.has_value());
    if (got) {
      EXPECT_EQ(got->m, c.want->m);
      EXPECT_EQ(got->n, c.want->n);
    }
  }
}

// ---- Random round trips against the printed values --------------------------------

std::string formatValue(double v) {
  if (std::isnan(v)) return "nan";
  if (std::isinf(v)) return v < 0 ? "-inf" : "inf";
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.17g", v);
  return buffer;
}

TEST(BridgeMatrixLiteral, RandomMatricesRoundTrip) {
  std::mt19937 rng(20261121);
  std::uniform_int_distribution<int> size(1, 5);
  std::uniform_int_distribution<int> pick(0, 9);
  std::uniform_real_distribution<double> value(-1e6, 1e6);
  const char* separators[] = {" ", ",", " , ", "\t", "  "};
  for (int trial = 0; trial < 300; ++trial) {
    const int rows = size(rng);
    const int columns = size(rng);
    std::vector<double> rowMajor;
    std::string text = pick(rng) < 5 ? "[" : "";
    std::string plain = "[";  // the form parse_array_dimensions counts
    for (int r = 0; r < rows; ++r) {
      if (r > 0) {
        text += pick(rng) < 5 ? ";" : " ; ";
        plain += ";";
      }
      for (int c = 0; c < columns; ++c) {
        const int kind = pick(rng);
        const double v = kind == 0 ? kInf : kind == 1 ? -kInf : kind == 2 ? std::nan("") : value(rng);
        rowMajor.push_back(v);
        if (c > 0) {
          text += separators[pick(rng) % 5];
          plain += " ";
        }
        text += formatValue(v);
        plain += formatValue(v);
      }
    }
    text += "]";
    plain += "]";
    SCOPED_TRACE(text);

    MxN dims;
    const std::vector<double> columnMajor = parse_mxn(text.c_str(), dims);
    ASSERT_EQ(dims.m, std::uint64_t(rows));
    ASSERT_EQ(dims.n, std::uint64_t(columns));
    std::vector<double> want(rowMajor.size());
    for (int r = 0; r < rows; ++r) {
      for (int c = 0; c < columns; ++c) want[c * rows + r] = rowMajor[r * columns + c];
    }
    expectSameValues(columnMajor, want);

    const MxN counted = parse_array_dimensions(plain.c_str());
    EXPECT_EQ(counted.m, std::uint64_t(rows));
    EXPECT_EQ(counted.n, std::uint64_t(columns));
  }
}

TEST(BridgeMatrixLiteral, HostArrays) {
  ZrArrayPtr d = parse_mxn_double("[1 2 3;4 5 6]");
  ASSERT_EQ(zrGetClassID(d.get()), zrDOUBLE_CLASS);
  ASSERT_EQ(zrGetM(d.get()), 2u);
  ASSERT_EQ(zrGetN(d.get()), 3u);
  const double* pd = zrGetPr(d.get());
  EXPECT_EQ(pd[1], 4.0);  // column-major: (2,1)
  EXPECT_EQ(pd[4], 3.0);  // (1,3)

  ZrArrayPtr f = parse_mxn_float("0.1 0.2");
  ASSERT_EQ(zrGetClassID(f.get()), zrSINGLE_CLASS);
  EXPECT_EQ(static_cast<const float*>(zrGetData(f.get()))[0], 0.1f);

  const char* bad[] = {"1 2;3", "1 2;", ";1", "1;;2", "", "[]", "1 x"};
  const std::int64_t live = hostLiveArrayCount();
  for (const char* text : bad) {
    EXPECT_THROW(parse_mxn_double(text), ParseException) << text;
    EXPECT_THROW(parse_mxn_float(text), ParseException) << text;
  }
  EXPECT_EQ(hostLiveArrayCount(), live);
}

// ---- String lists -------------------------------------------------------------------

std::vector<std::string> cellStrings(const zrArray_tag* cell) {
  std::vector<std::string> out;
  for (zrSize k = 0; k < zrGetNumberOfElements(cell); ++k)
    out.push_back(bridge_test::charText(zrGetCell(cell, k)));
  return out;
}

TEST(BridgeStringList, WordsAndQuotes) {
  struct Case {
    const char* label;
    const char* text;
    std::size_t rows;
    std::vector<std::string> columnMajor;  // empty with rows 0: ParseException
  };
  const Case cases[] = {
      {"bare words", "{a b c}", 1, {"a", "b", "c"}},
      {"quoted with blanks", "'x y', z", 1, {"x y", "z"}},
      {"doubled quote", "'it''s'", 1, {"it's"}},
      {"semicolon inside quotes", "['a;b' c]", 1, {"a;b", "c"}},
      {"two rows", "a b; c d", 2, {"a", "c", "b", "d"}},
      {"empty quoted string", "'' x", 1, {"", "x"}},
      {"ragged rows", "a b; c", 0, {}},
      {"unterminated quote", "'abc", 0, {}},
      {"text after closing quote", "'a'b", 0, {}},
      {"trailing semicolon", "a;", 0, {}},
      {"nothing", "{ }", 0, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const std::int64_t live = hostLiveArrayCount();
    const auto got = tryParse([&] { return parse_strings(c.text); });
    if (c.rows == 0) {
      EXPECT_FALSE(got.has_value());
      EXPECT_EQ(hostLiveArrayCount(), live);
      continue;
    }
    ASSERT_TRUE(got.has_value());
    EXPECT_EQ(zrGetM(got->get()), c.rows);
    EXPECT_EQ(cellStrings(got->get()), c.columnMajor);
  }
}

}  // namespace
