// The characters markup reaches in the Symbol face, by command name and by
// Unicode code point, the colour names, and UTF-8 reading.
#include <array>
#include <cstring>

#include "qvgui/text.h"
#include "text/tex_p.h"

namespace gui_objects::font::detail {

namespace {

// One row per Symbol glyph: the commands that name it and its code point.
struct SymbolEntry {
  const char* command;
  const char* alias;  // a second command name, or null
  std::uint32_t codePoint;
  const char* glyph;
};

// clang-format off
constexpr SymbolEntry kSymbols[] = {
  {"alpha", nullptr, 0x3B1, "alpha"},       {"beta", nullptr, 0x3B2, "beta"},
  {"gamma", nullptr, 0x3B3, "gamma"},       {"delta", nullptr, 0x3B4, "delta"},
  {"epsilon", "varepsilon", 0x3B5, "epsilon"}, {"zeta", nullptr, 0x3B6, "zeta"},
  {"eta", nullptr, 0x3B7, "eta"},           {"theta", nullptr, 0x3B8, "theta"},
  {"vartheta", nullptr, 0x3D1, "theta1"},   {"iota", nullptr, 0x3B9, "iota"},
  {"kappa", nullptr, 0x3BA, "kappa"},       {"lambda", nullptr, 0x3BB, "lambda"},
  {"mu", nullptr, 0x3BC, "mu"},             {"nu", nullptr, 0x3BD, "nu"},
  {"xi", nullptr, 0x3BE, "xi"},             {"omicron", nullptr, 0x3BF, "omicron"},
  {"pi", nullptr, 0x3C0, "pi"},             {"varpi", nullptr, 0x3D6, "omega1"},
  {"rho", nullptr, 0x3C1, "rho"},           {"sigma", nullptr, 0x3C3, "sigma"},
  {"varsigma", nullptr, 0x3C2, "sigma1"},   {"tau", nullptr, 0x3C4, "tau"},
  {"upsilon", nullptr, 0x3C5, "upsilon"},   {"phi", nullptr, 0x3C6, "phi"},
  {"varphi", nullptr, 0x3D5, "phi1"},       {"chi", nullptr, 0x3C7, "chi"},
  {"psi", nullptr, 0x3C8, "psi"},           {"omega", nullptr, 0x3C9, "omega"},
  {"Alpha", nullptr, 0x391, "Alpha"},       {"Beta", nullptr, 0x392, "Beta"},
  {"Gamma", nullptr, 0x393, "Gamma"},       {"Delta", nullptr, 0x394, "Delta"},
  {"Epsilon", nullptr, 0x395, "Epsilon"},   {"Zeta", nullptr, 0x396, "Zeta"},
  {"Eta", nullptr, 0x397, "Eta"},           {"Theta", nullptr, 0x398, "Theta"},
  {"Iota", nullptr, 0x399, "Iota"},         {"Kappa", nullptr, 0x39A, "Kappa"},
  {"Lambda", nullptr, 0x39B, "Lambda"},     {"Mu", nullptr, 0x39C, "Mu"},
  {"Nu", nullptr, 0x39D, "Nu"},             {"Xi", nullptr, 0x39E, "Xi"},
  {"Omicron", nullptr, 0x39F, "Omicron"},   {"Pi", nullptr, 0x3A0, "Pi"},
  {"Rho", nullptr, 0x3A1, "Rho"},           {"Sigma", nullptr, 0x3A3, "Sigma"},
  {"Tau", nullptr, 0x3A4, "Tau"},           {"Upsilon", nullptr, 0x3D2, "Upsilon1"},
  {"Phi", nullptr, 0x3A6, "Phi"},           {"Chi", nullptr, 0x3A7, "Chi"},
  {"Psi", nullptr, 0x3A8, "Psi"},           {"Omega", nullptr, 0x3A9, "Omega"},
  {"infty", nullptr, 0x221E, "infinity"},   {"pm", nullptr, 0xB1, "plusminus"},
  {"times", nullptr, 0xD7, "multiply"},     {"div", nullptr, 0xF7, "divide"},
  {"leq", "le", 0x2264, "lessequal"},       {"geq", "ge", 0x2265, "greaterequal"},
  {"neq", "ne", 0x2260, "notequal"},        {"approx", nullptr, 0x2248, "approxequal"},
  {"equiv", nullptr, 0x2261, "equivalence"}, {"cong", nullptr, 0x2245, "congruent"},
  {"sim", nullptr, 0x223C, "similar"},      {"propto", nullptr, 0x221D, "proportional"},
  {"circ", nullptr, 0x2218, "degree"},      {"degree", nullptr, 0xB0, "degree"},
  {"cdot", nullptr, 0x22C5, "dotmath"},
  {"bullet", nullptr, 0x2022, "bullet"},    {"ldots", "dots", 0x2026, "ellipsis"},
  {"partial", nullptr, 0x2202, "partialdiff"}, {"nabla", nullptr, 0x2207, "gradient"},
  {"int", nullptr, 0x222B, "integral"},     {"sum", nullptr, 0x2211, "summation"},
  {"prod", nullptr, 0x220F, "product"},     {"surd", "sqrt", 0x221A, "radical"},
  {"in", nullptr, 0x2208, "element"},       {"notin", nullptr, 0x2209, "notelement"},
  {"subset", nullptr, 0x2282, "propersubset"}, {"supset", nullptr, 0x2283, "propersuperset"},
  {"subseteq", nullptr, 0x2286, "reflexsubset"}, {"supseteq", nullptr, 0x2287, "reflexsuperset"},
  {"cup", nullptr, 0x222A, "union"},        {"cap", nullptr, 0x2229, "intersection"},
  {"forall", nullptr, 0x2200, "universal"}, {"exists", nullptr, 0x2203, "existential"},
  {"emptyset", "varnothing", 0x2205, "emptyset"}, {"neg", "lnot", 0xAC, "logicalnot"},
  {"wedge", "land", 0x2227, "logicaland"},  {"vee", "lor", 0x2228, "logicalor"},
  {"perp", nullptr, 0x22A5, "perpendicular"}, {"angle", nullptr, 0x2220, "angle"},
  {"prime", nullptr, 0x2032, "minute"},     {"aleph", nullptr, 0x2135, "aleph"},
  {"Re", nullptr, 0x211C, "Rfraktur"},      {"Im", nullptr, 0x2111, "Ifraktur"},
  {"wp", nullptr, 0x2118, "weierstrass"},   {"oplus", nullptr, 0x2295, "circleplus"},
  {"otimes", nullptr, 0x2297, "circlemultiply"}, {"langle", nullptr, 0x2329, "angleleft"},
  {"rangle", nullptr, 0x232A, "angleright"}, {"therefore", nullptr, 0x2234, "therefore"},
  {"mid", nullptr, 0x2223, "bar"},          {"minus", nullptr, 0x2212, "minus"},
  {"clubsuit", nullptr, 0x2663, "club"},    {"diamondsuit", nullptr, 0x2666, "diamond"},
  {"heartsuit", nullptr, 0x2665, "heart"},  {"spadesuit", nullptr, 0x2660, "spade"},
  {"leftarrow", "gets", 0x2190, "arrowleft"}, {"rightarrow", "to", 0x2192, "arrowright"},
  {"uparrow", nullptr, 0x2191, "arrowup"},  {"downarrow", nullptr, 0x2193, "arrowdown"},
  {"leftrightarrow", nullptr, 0x2194, "arrowboth"}, {"Leftarrow", nullptr, 0x21D0, "arrowdblleft"},
  {"Rightarrow", nullptr, 0x21D2, "arrowdblright"}, {"Uparrow", nullptr, 0x21D1, "arrowdblup"},
  {"Downarrow", nullptr, 0x21D3, "arrowdbldown"}, {"Leftrightarrow", "iff", 0x21D4, "arrowdblboth"},
};
// clang-format on
constexpr std::size_t kSymbolCount = sizeof(kSymbols) / sizeof(kSymbols[0]);

// Codes are looked up by glyph name once; the tables are immutable after.
const std::array<int, kSymbolCount>& symbolCodes() {
  static const std::array<int, kSymbolCount> codes = [] {
    std::array<int, kSymbolCount> c{};
    for (std::size_t k = 0; k < kSymbolCount; ++k)
      c[k] = afmCodeForGlyphName(kSymbolAfmIndex, 0, kSymbols[k].glyph);
    return c;
  }();
  return codes;
}

struct NamedColor {
  const char* name;
  double r, g, b;
};

constexpr NamedColor kColors[] = {
    {"black", 0, 0, 0},      {"white", 1, 1, 1},       {"red", 1, 0, 0},      {"green", 0, 1, 0},
    {"blue", 0, 0, 1},       {"cyan", 0, 1, 1},        {"magenta", 1, 0, 1},  {"yellow", 1, 1, 0},
    {"gray", 0.5, 0.5, 0.5}, {"darkGreen", 0, 0.5, 0}, {"orange", 1, 0.5, 0}, {"lightBlue", 0.68, 0.85, 0.9},
};

bool continuation(unsigned char c) noexcept { return (c & 0xC0) == 0x80; }

}  // namespace

std::uint32_t decodeUtf8(std::string_view text, std::size_t& i) noexcept {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char lead = byte(i);
  std::size_t length = 0;
  std::uint32_t cp = 0, minimum = 0;
  if (lead < 0x80) {
    ++i;
    return lead;
  } else if ((lead & 0xE0) == 0xC0) {
    length = 2, cp = lead & 0x1F, minimum = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, cp = lead & 0x0F, minimum = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, cp = lead & 0x07, minimum = 0x10000;
  }
  if (length == 0 || i + length > text.size()) {
    ++i;
    return lead;
  }
  for (std::size_t k = 1; k < length; ++k) {
    if (!continuation(byte(i + k))) {
      ++i;
      return lead;
    }
    cp = (cp << 6) | (byte(i + k) & 0x3F);
  }
  if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
    ++i;
    return lead;
  }
  i += length;
  return cp;
}

int symbolCodeForCommand(std::string_view name, std::uint32_t* codePoint) noexcept {
  for (std::size_t k = 0; k < kSymbolCount; ++k) {
    const SymbolEntry& e = kSymbols[k];
    if (name == e.command || (e.alias != nullptr && name == e.alias)) {
      if (codePoint != nullptr) *codePoint = e.codePoint;
      return symbolCodes()[k];
    }
  }
  return -1;
}

int symbolCodeForCodePoint(std::uint32_t codePoint) noexcept {
  if (codePoint <= 0xFF) return -1;  // Latin-1 stays in the text face
  for (std::size_t k = 0; k < kSymbolCount; ++k)
    if (kSymbols[k].codePoint == codePoint) return symbolCodes()[k];
  return -1;
}

// clang-format off
MathClass mathClassOf(std::uint32_t codePoint) noexcept {
  switch (codePoint) {
    case '=': case '<': case '>': case 0x2264: case 0x2265: case 0x2260: case 0x2248: case 0x2261:
    case 0x2245: case 0x223C: case 0x221D: case 0x2208: case 0x2209: case 0x2282: case 0x2283:
    case 0x2286: case 0x2287: case 0x2190: case 0x2191: case 0x2192: case 0x2193: case 0x2194:
    case 0x21D0: case 0x21D1: case 0x21D2: case 0x21D3: case 0x21D4: case 0x22A5: case 0x2223:
      return MathClass::Relation;
    case '+': case 0x2212: case 0xB1: case 0xD7: case 0xF7: case 0x22C5: case 0x2022: case 0x2218:
    case 0x222A: case 0x2229: case 0x2295: case 0x2297: case 0x2227: case 0x2228:
      return MathClass::Binary;
    case '(': case '[':
      return MathClass::Opening;
    default:
      return MathClass::Ordinary;
  }
}
// clang-format on

bool colorByName(std::string_view name, Color3d* out) noexcept {
  for (const NamedColor& c : kColors)
    if (name == c.name) {
      *out = Color3d(c.r, c.g, c.b);
      return true;
    }
  return false;
}

}  // namespace gui_objects::font::detail
