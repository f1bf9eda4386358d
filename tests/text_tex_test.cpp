// TeX-subset and LaTeX strings: symbols, fonts, scripts and their nesting,
// and where malformed markup is reported.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "qvgui/text.h"
#include "text_layout_afm_reader.h"

namespace {

using namespace gui_objects::font;
using text_test::afm;
using text_test::referenceWidth;

// 10 pt Helvetica at 72 dpi, left/baseline: layout pixels are points.
TextLayout tex(const std::string& s, TextKind kind = TextKind::Tex) {
  StringProps p;
  p.faceName = "Helvetica";
  return TextHandler(kind).layout(s, p);
}

TEST(TextTex, ScriptsShrinkShiftAndStack) {
  const double x = afm(12).glyphs.at("x").wx / 100;  // 10 pt, in points
  const double wa = afm(12).glyphs.at("a").wx * 0.007, wbc = referenceWidth(12, "bc") * 0.007;
  struct Glyph {
    std::string bytes;
    double x, y, size;
  };
  struct Case {
    const char* markup;
    std::vector<Glyph> runs;
  };
  const Case cases[] = {
      {"x^a", {{"x", 0, 0, 10}, {"a", x, -4, 7}}},
      {"x_a", {{"x", 0, 0, 10}, {"a", x, 2, 7}}},
      {"x^{a^{bc}}", {{"x", 0, 0, 10}, {"a", x, -4, 7}, {"bc", x + wa, -6.8, 4.9}}},
      {"x^{bc}_a x", {{"x", 0, 0, 10}, {"bc", x, -4, 7}, {"a", x, 2, 7}, {" x", x + wbc, 0, 10}}},
      {"x_a^{bc}x", {{"x", 0, 0, 10}, {"a", x, 2, 7}, {"bc", x, -4, 7}, {"x", x + wbc, 0, 10}}},
      {"\\fontsize{20}x^a", {{"x", 0, 0, 20}, {"a", 2 * x, -8, 14}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.markup);
    const TextLayout t = tex(c.markup);
    EXPECT_TRUE(t.error.ok()) << t.error.message;
    ASSERT_EQ(t.runs.size(), c.runs.size());
    for (std::size_t r = 0; r < c.runs.size(); ++r) {
      EXPECT_EQ(t.runs[r].bytes, c.runs[r].bytes);
      EXPECT_NEAR(t.runs[r].x, c.runs[r].x, 1e-9) << r;
      EXPECT_NEAR(t.runs[r].y, c.runs[r].y, 1e-9) << r;
      EXPECT_NEAR(t.runs[r].size, c.runs[r].size, 1e-12) << r;
    }
  }
  // A raised script lifts the line's ascent above the face's.
  EXPECT_NEAR(tex("x^a").ascent, 4 + afm(12).ascender * 0.007, 1e-9);
}

// The Symbol face's byte for a glyph name, from its AFM file.
std::string sym(const char* glyph) {
  return std::string(1, static_cast<char>(afm(28).glyphs.at(glyph).code));
}

TEST(TextTex, FontsSymbolsColoursAndEscapes) {
  struct Case {
    const char* markup;
    TextKind kind;
    std::vector<std::pair<std::string, int>> runs;  // bytes and AFM index
  };
  constexpr TextKind T = TextKind::Tex, L = TextKind::Latex;
  // clang-format off
  const Case cases[] = {
      {"\\bf a", T, {{"a", 13}}},                  {"{\\it a}b", T, {{"a", 14}, {"b", 12}}},
      {"\\bf\\it a\\rm b", T, {{"a", 15}, {"b", 12}}}, {"\\textbf{a}b", T, {{"a", 13}, {"b", 12}}},
      {"\\fontname{Times}a", T, {{"a", 32}}},      {"50% of $5", T, {{"50% of $5", 12}}},
      {"\\{\\}\\_\\^\\\\\\%\\$", T, {{"{}_^\\%$", 12}}},
      {"\\alpha\\Omega\\varphi\\Upsilon\\infty\\pm\\times\\leq\\neq\\approx\\degree", T,
       {{sym("alpha") + sym("Omega") + sym("phi1") + sym("Upsilon1") + sym("infinity") + sym("plusminus") +
         sym("multiply") + sym("lessequal") + sym("notequal") + sym("approxequal") + sym("degree"), 28}}},
      {"\\partial\\nabla\\int\\sum\\cdot\\to\\Leftarrow\u03BC\u2264", T,
       {{sym("partialdiff") + sym("gradient") + sym("integral") + sym("summation") + sym("dotmath") +
         sym("arrowright") + sym("arrowdblleft") + sym("mu") + sym("lessequal"), 28}}},
      {"1\\,\\mu m", T, {{"1", 12}, {sym("mu"), 28}, {"m", 12}}},
      // Math letters are italic unless a font command chose the shape.
      {"$x_1$ m", L, {{"x", 14}, {"1", 12}, {" m", 12}}}, {"$\\mathrm{d}x$", L, {{"d", 12}, {"x", 14}}},
      {"a-$-1$", L, {{"a-", 12}, {sym("minus"), 28}, {"1", 12}}},
      {"a~b % comment\nc", L, {{"a b c", 12}}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.markup);
    const TextLayout t = tex(c.markup, c.kind);
    EXPECT_TRUE(t.error.ok()) << t.error.message;
    ASSERT_EQ(t.runs.size(), c.runs.size());
    for (std::size_t r = 0; r < c.runs.size(); ++r) {
      EXPECT_EQ(t.runs[r].bytes, c.runs[r].first);
      EXPECT_EQ(t.runs[r].afmIndex, c.runs[r].second);
    }
  }
  // A symbol measures in the Symbol face and sits in the text face's line.
  EXPECT_NEAR(tex("\\int").width, afm(28).glyphs.at("integral").wx / 100, 1e-12);
  EXPECT_NEAR(tex("\\int").ascent, afm(12).ascender / 100, 1e-12);

  const TextLayout coloured = tex("a{\\color{red}b\\color[rgb]{0.2, 0.4,1}c}d");
  ASSERT_EQ(coloured.runs.size(), 4u);
  EXPECT_EQ(coloured.runs[1].color, gui_objects::Color3d(1, 0, 0));
  EXPECT_EQ(coloured.runs[2].color, gui_objects::Color3d(0.2, 0.4, 1));
  EXPECT_EQ(coloured.runs[3].color, gui_objects::Color3d(0, 0, 0));

  // \, is 3/18 em; \quad one em of the current size.
  EXPECT_NEAR(tex("a\\,b").width,
              (afm(12).glyphs.at("a").wx + afm(12).glyphs.at("b").wx) / 100 + 10.0 * 3 / 18, 1e-9);
  EXPECT_NEAR(tex("\\quad").width, 10, 1e-12);
  EXPECT_EQ(tex("a\\\\b", TextKind::Latex).lineCount, 2);
  EXPECT_EQ(tex("a\\\\b").lineCount, 1);
}

TEST(TextTex, FormulasSpaceBinaryOperatorsAndRelations) {
  auto w = [](int face, const char* glyph) { return afm(face).glyphs.at(glyph).wx / 100; };  // 10 pt
  const double a = w(14, "a"), b = w(14, "b"), one = w(12, "one"), medium = 10.0 * 4 / 18,
               thick = 10.0 * 5 / 18;
  struct Case {
    const char* markup;
    double width;
  };
  const Case cases[] = {
      {"$a+b$", a + medium + w(12, "plus") + medium + b},
      {"$a = b$", a + thick + w(12, "equal") + thick + b},
      {"$a\\leq-1$", a + thick + w(28, "lessequal") + thick + w(28, "minus") + one},
      {"$(-a)$", w(12, "parenleft") + w(28, "minus") + a + w(12, "parenright")},
      {"$a\\times\\alpha$", a + medium + w(28, "multiply") + medium + w(28, "alpha")},
      {"$a^{b+1}$", a + (b + w(12, "plus") + one) * 0.7},
  };
  for (const Case& c : cases) EXPECT_NEAR(tex(c.markup, TextKind::Latex).width, c.width, 1e-9) << c.markup;
}

TEST(TextTex, MalformedMarkupReportsTheFirstErrorPosition) {
  struct Case {
    TextKind kind;
    const char* markup;
    std::size_t offset;
    const char* message;  // a part of it
  };
  constexpr TextKind T = TextKind::Tex, L = TextKind::Latex;
  // clang-format off
  const Case cases[] = {
      {T, "a}b", 1, "unbalanced }"},                 {T, "ab{c{d}", 2, "missing }"},
      {T, "}{", 0, "unbalanced }"},                  {T, "a \\foo b", 2, "unknown command \\foo"},
      {T, "a\\?", 1, "unknown command \\?"},         {T, "x^", 1, "missing argument for ^"},
      {T, "x^a^b", 3, "double superscript"},         {T, "x_{a}^b_c", 7, "double subscript"},
      {T, "ab\\", 2, "end of the string"},           {T, "x\\fontsize{-2}", 1, "number of points"},
      {T, "x\\fontsize 9", 1, "argument in braces"}, {T, "\\color{purple}x", 0, "unknown colour name 'purple'"},
      {T, "\\color[rgb]{1,0}x", 0, "three numbers"}, {T, "\\color[cmyk]{1,0,0,0}x", 6, "rgb model"},
      {T, "a\\fontname{ }b", 1, "needs a face name"},
      {T, "\\fontsize{1e300}b", 0, "(0, 10000]"},
      {L, "$x", 0, "not closed"},                    {L, "a $x$ $y", 6, "not closed"},
      {L, "$$x$", 3, "closed with a single $"},      {L, "x^2", 1, "only in math mode"},
      {L, "$\\alpha$ \\beta", 9, "\\beta is allowed only in math mode"},
      {L, "a & b", 2, "& is not allowed"},           {L, "\\textbf{a", 7, "missing }"},
      {L, "\\mathbf{a}", 0, "only in math mode"},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.markup);
    const TextError e = TextHandler(c.kind).validate(c.markup);
    EXPECT_EQ(e.offset, c.offset);
    EXPECT_NE(e.message.find(c.message), std::string::npos) << e.message;
    // Layout reports the same error and still draws everything.
    const TextLayout t = TextHandler(c.kind).layout(c.markup, StringProps{});
    EXPECT_EQ(t.error.offset, c.offset);
    EXPECT_EQ(t.error.message, e.message);
  }
  EXPECT_TRUE(TextHandler(TextKind::Plain).validate("}{\\^").ok());

  // Recovery draws the offending characters literally.
  for (const char* literal : {"a}b", "a\\foo", "x^"}) {
    std::string drawn;
    for (const GlyphRun& r : tex(literal).runs) drawn += r.bytes;
    EXPECT_EQ(drawn, literal);
  }

  // Hostile nesting is an error, not a stack overflow.
  const std::string deep(100000, '{');
  EXPECT_NE(TextHandler(TextKind::Tex).validate(deep).message.find("nested too deeply"), std::string::npos);
}

TEST(TextTex, MarkupFreeTextLaysOutLikePlainText) {
  std::mt19937 rng(3);
  std::vector<std::string> pieces = {"\u00E9", "\u00B0", "\n"};
  for (char c : std::string("abcAVWTy.,:;'\"() 0123456789-+=*/!?@[]|<>")) pieces.emplace_back(1, c);
  std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1), len(0, 30);
  for (int trial = 0; trial < 300; ++trial) {
    std::string s;
    for (std::size_t n = len(rng); s.size() < n;) s += pieces[pick(rng)];
    SCOPED_TRACE(s);
    StringProps p;
    p.faceName = "Times";
    p.size = 13;
    p.dpi = 96;
    p.rotation = 30;
    p.horzAlign = TEXT_HALIGN_CENTER;
    const TextLayout plain = TextHandler(TextKind::Plain).layout(s, p);
    const TextLayout t = TextHandler(TextKind::Tex).layout(s, p);
    ASSERT_EQ(t.runs.size(), plain.runs.size());
    for (std::size_t r = 0; r < t.runs.size(); ++r) {
      EXPECT_EQ(t.runs[r].bytes, plain.runs[r].bytes);
      EXPECT_EQ(t.runs[r].x, plain.runs[r].x);
      EXPECT_EQ(t.runs[r].y, plain.runs[r].y);
    }
    EXPECT_EQ(t.bounds.left, plain.bounds.left);
    EXPECT_EQ(t.bounds.bottom, plain.bounds.bottom);
  }
}

}  // namespace
