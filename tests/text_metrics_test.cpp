// Built-in metrics against the AFM files themselves, read here by a parser of
// their own (not the generated tables), and the face-recognition rules.
#include <dirent.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "qvgui/text.h"

namespace {

namespace gf = gui_objects::font;

// ---- A reference reading of the AFM files ---------------------------------------------

struct RefGlyph {
  int code = -1, width = 0, box[4] = {0, 0, 0, 0};
};

struct RefFace {
  std::string fontName;
  std::map<std::string, RefGlyph> glyphs;
  std::map<int, std::string> byCode;
  std::map<std::pair<std::string, std::string>, int> kern;
  std::vector<std::pair<std::string, std::string>> kernOrder;
  int ascender = 1 << 20, descender = 0, bbox[4] = {0, 0, 0, 0};
};

RefFace readAfm(const std::string& path) {
  RefFace f;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    std::istringstream w(line);
    std::string key, a, b, tok;
    w >> key;
    if (key == "FontName") w >> f.fontName;
    if (key == "Ascender") w >> f.ascender;
    if (key == "Descender") w >> f.descender;
    if (key == "FontBBox") w >> f.bbox[0] >> f.bbox[1] >> f.bbox[2] >> f.bbox[3];
    if (key == "KPX" && w >> a >> b) {
      w >> f.kern[{a, b}];
      f.kernOrder.push_back({a, b});
    }
    if (key != "C") continue;
    RefGlyph g;
    w >> g.code;
    while (w >> tok) {
      if (tok == "WX") w >> g.width;
      if (tok == "N") w >> a;
      if (tok == "B") w >> g.box[0] >> g.box[1] >> g.box[2] >> g.box[3];
    }
    f.glyphs[a] = g;
    if (g.code >= 0) f.byCode[g.code] = a;
  }
  if (f.ascender == 1 << 20) {  // Symbol and ZapfDingbats: the FontBBox stands in
    f.ascender = f.bbox[3];
    f.descender = f.bbox[1];
  }
  return f;
}

// AFM index to PostScript name, four indices a line.
const std::vector<std::string> kIndexNames = [] {
  std::istringstream in(
      "AvantGarde-Book AvantGarde-Demi AvantGarde-BookOblique AvantGarde-DemiOblique "
      "Bookman-Light Bookman-Demi Bookman-LightItalic Bookman-DemiItalic "
      "Courier Courier-Bold Courier-Oblique Courier-BoldOblique "
      "Helvetica Helvetica-Bold Helvetica-Oblique Helvetica-BoldOblique "
      "Helvetica-Narrow Helvetica-Narrow-Bold Helvetica-Narrow-Oblique Helvetica-Narrow-BoldOblique "
      "NewCenturySchlbk-Roman NewCenturySchlbk-Bold NewCenturySchlbk-Italic NewCenturySchlbk-BoldItalic "
      "Palatino-Roman Palatino-Bold Palatino-Italic Palatino-BoldItalic Symbol Symbol Symbol Symbol "
      "Times-Roman Times-Bold Times-Italic Times-BoldItalic "
      "ZapfChancery-MediumItalic ZapfChancery-MediumItalic ZapfChancery-MediumItalic "
      "ZapfChancery-MediumItalic "
      "ZapfDingbats ZapfDingbats ZapfDingbats ZapfDingbats");
  std::vector<std::string> names;
  for (std::string n; in >> n;) names.push_back(n);
  return names;
}();

// The face of an AFM index, read from whichever file carries its name.
const RefFace& referenceFor(int index) {
  static const std::map<std::string, RefFace> faces = [] {
    std::map<std::string, RefFace> out;
    DIR* dir = opendir(QVGUI_AFM_DIR);
    while (dirent* e = dir ? readdir(dir) : nullptr) {
      const std::string name = e->d_name;
      if (name.size() > 4 && name.substr(name.size() - 4) == ".afm") {
        RefFace f = readAfm(std::string(QVGUI_AFM_DIR) + "/" + name);
        out[f.fontName] = f;
      }
    }
    if (dir) closedir(dir);
    return out;
  }();
  const auto it = faces.find(kIndexNames.at(index));
  if (it == faces.end())
    throw std::runtime_error("no AFM file in " QVGUI_AFM_DIR " for " + kIndexNames[index]);
  return it->second;
}

// The glyph a byte shows in a table set, or "" for none. ISO 8859-1 agrees
// with StandardEncoding on printable ASCII but for the two quotes.
std::string glyphFor(const RefFace& f, int index, int set, unsigned char c) {
  const bool ownEncoding = set == 0 || (index >= 28 && index < 32) || index >= 40;
  static const std::map<int, std::string> latin1 = {{39, "quotesingle"}, {96, "grave"},   {0xE9, "eacute"},
                                                    {0xB0, "degree"},    {0xB5, "mu"},    {0xB1, "plusminus"},
                                                    {0xD7, "multiply"},  {0xA0, "space"}, {0xAD, "hyphen"}};
  std::string name;
  if (!ownEncoding && latin1.count(c)) {
    name = latin1.at(c);
  } else if (ownEncoding || (c >= 32 && c < 127)) {
    name = f.byCode.count(c) ? f.byCode.at(c) : "";
  }
  return f.glyphs.count(name) ? name : "";
}

// Slow reference of the width in thousandths: widths and kerning by glyph name.
long referenceUnits(const RefFace& f, int index, int set, const std::string& s) {
  long sum = 0;
  std::string prev;
  for (unsigned char c : s) {
    const std::string g = glyphFor(f, index, set, c);
    if (g.empty()) {
      prev.clear();
      continue;
    }
    sum += f.glyphs.at(g).width;
    const auto k = f.kern.find({prev, g});
    if (k != f.kern.end()) sum += k->second;
    prev = g;
  }
  return sum;
}

int scaledRef(double units, double size, double dpi) {
  return static_cast<int>(units * size * (dpi / 72.0) / 1000.0);
}

// ---- Per-face checks ---------------------------------------------------------------------

TEST(text_metrics, EveryFaceMatchesItsAfmFile) {
  for (int index = 0; index < gf::kAfmFontCount; ++index) {
    SCOPED_TRACE(kIndexNames[index]);
    EXPECT_EQ(guiGetAfmFontName(index), kIndexNames[index]);
    const RefFace& f = referenceFor(index);
    for (int set = 0; set < 2; ++set) {
      for (int c = 32; c < 127; ++c) {
        const std::string g = glyphFor(f, index, set, static_cast<unsigned char>(c));
        const char text[2] = {static_cast<char>(c), 0};
        const int expected = g.empty() ? 0 : f.glyphs.at(g).width;
        ASSERT_EQ(guiStringWidthDPI(text, set, index, 1000.0, 72.0), expected)
            << "set " << set << " code " << c;
        gf::GlyphMetrics m{};
        ASSERT_EQ(gf::afmGlyph(index, set, static_cast<unsigned char>(c), &m), !g.empty());
        if (!g.empty()) {
          const int* b = f.glyphs.at(g).box;
          EXPECT_EQ(m.lly, b[1]);
          EXPECT_EQ(m.ury, b[3]);
          EXPECT_EQ(gf::afmGlyphName(index, set, static_cast<unsigned char>(c)), g);
        }
      }
    }
    // Every 7th kerning pair whose glyphs the face's own encoding reaches.
    int checked = 0;
    for (std::size_t k = 0; k < f.kernOrder.size(); k += 7) {
      const auto& [a, b] = f.kernOrder[k];
      const int ca = f.glyphs.at(a).code, cb = f.glyphs.at(b).code;
      if (ca < 1 || cb < 1) continue;
      const char text[3] = {static_cast<char>(ca), static_cast<char>(cb), 0};
      ASSERT_EQ(guiStringWidthDPI(text, 0, index, 1000.0, 72.0),
                f.glyphs.at(a).width + f.glyphs.at(b).width + f.kern.at({a, b}))
          << a << " " << b;
      ++checked;
    }
    EXPECT_EQ(checked > 0, !f.kern.empty() && !(index >= 8 && index < 12));
    const gf::FaceMetrics fm = gf::afmFaceMetrics(index);
    EXPECT_EQ(fm.ascender, f.ascender);
    EXPECT_EQ(fm.descender, f.descender);
    EXPECT_EQ(fm.llx, f.bbox[0]);
    EXPECT_EQ(fm.ury, f.bbox[3]);
    EXPECT_GT(fm.capHeight, fm.xHeight);
    EXPECT_EQ(guiStringHeightDPI(index, 1000.0, 72.0), f.ascender - f.descender);
    EXPECT_EQ(guiStringDescentDPI(index, 1000.0, 72.0), -f.descender);
  }
}

// Random strings over printable ASCII and a few Latin-1 letters, at random
// sizes and resolutions, against the by-name reference.
TEST(text_metrics, RandomStringWidthsMatchReference) {
  std::mt19937 rng(12);
  const std::string alphabet =
      "AVWTYLPFkyvwo.,'`-:;\"fiflr"
      "\xe9\xb0\xb5\xb1\xd7\xa0\xad\x85"
      "0123456789 abcdefghijklmnopqrstuvwxyz";
  std::uniform_int_distribution<int> pick(0, static_cast<int>(alphabet.size()) - 1), length(0, 24),
      face(0, gf::kAfmFontCount - 1);
  std::uniform_real_distribution<double> size(1.0, 72.0), dpi(50.0, 300.0);
  for (int trial = 0; trial < 4000; ++trial) {
    std::string s;
    for (int n = length(rng); n > 0; --n) s += alphabet[pick(rng)];
    const int index = face(rng), set = trial % 2;
    const double sz = size(rng), d = dpi(rng);
    const long units = referenceUnits(referenceFor(index), index, set, s);
    ASSERT_EQ(guiStringWidthDPI(s.c_str(), set, index, sz, d), scaledRef(units, sz, d))
        << "face " << index << " set " << set << " '" << s << "'";
    ASSERT_EQ(gf::afmStringWidth(index, set, s.data(), s.size()), units);
  }
}

// ---- Scaling, extremes and bad input -------------------------------------------------------

TEST(text_metrics, ScalingTruncatesAndBadInputMeasuresNothing) {
  // Helvetica "a" is 556: 556 x 10 x (96 / 72) / 1000 = 7.41.
  EXPECT_EQ(guiStringWidthDPI("a", 0, 12, 10.0, 96.0), 7);
  EXPECT_EQ(guiStringWidthDPI("", 0, 12, 10.0, 96.0), 0);
  EXPECT_EQ(guiStringWidthDPI(nullptr, 0, 12, 10.0, 96.0), 0);
  EXPECT_EQ(guiStringWidthDPI("a", 0, -1, 10.0, 96.0), 0);
  EXPECT_EQ(guiStringWidthDPI("a", 0, gf::kAfmFontCount, 10.0, 96.0), 0);
  EXPECT_EQ(guiGetAfmFontName(gf::kAfmFontCount), nullptr);
  EXPECT_EQ(gf::afmKern(12, 2, 'A', 'V'), 0.0);
  EXPECT_EQ(gf::afmGlyphName(-3, 0, 'a'), nullptr);
  EXPECT_EQ(gf::afmCodeForGlyphName(12, 0, nullptr), -1);
  EXPECT_EQ(gf::afmFaceMetrics(99).ascender, 0.0);
  EXPECT_EQ(gf::afmKern(32, 0, 'A', 'V'), referenceFor(32).kern.at({"A", "V"}));
  EXPECT_EQ(gf::afmKern(8, 0, 'A', 'V'), 0.0);  // Courier has no kerning
  // The lowest code wins when two show one glyph; C1 controls show nothing.
  EXPECT_EQ(gf::afmCodeForGlyphName(32, 1, "hyphen"), 45);
  EXPECT_EQ(gf::afmCodeForGlyphName(32, 0, "quoteright"), 39);
  EXPECT_EQ(gf::afmCodeForGlyphName(32, 1, "quoteright"), -1);
  EXPECT_EQ(gf::afmCodeForGlyphName(28, 1, "alpha"), 'a');
  EXPECT_FALSE(gf::afmGlyph(32, 1, 0x85, nullptr));
}

TEST(text_metrics, ExtremeAscentDescentKeepsItsSignedComparison) {
  const RefFace& h = referenceFor(12);
  auto top = [&](const char* g) { return h.glyphs.at(g).box[3]; };
  auto bottom = [&](const char* g) { return h.glyphs.at(g).box[1]; };
  struct Case {
    const char* label;
    const char* text;
    int ascent, descent;
  };
  const Case cases[] = {
      {"empty", "", 0, 0},
      {"one descender", "g", top("g"), -bottom("g")},
      // x sits on the baseline: its 0 is below the stored magnitude of g.
      {"descender then flat", "gx", top("g"), 0},
      {"flat then descender", "xg", top("g"), -bottom("g")},
      // p is not as deep as g, but its signed bottom is below g's magnitude.
      {"deep then shallower", "gp", top("g"), -bottom("p")},
      {"tall capital wins", "xH", top("H"), bottom("H") < 0 ? -bottom("H") : bottom("H")},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    int ascent = -7, descent = -7;
    guiStringExtremeAscentDescentDPI(c.text, &ascent, &descent, 0, 12, 1000.0, 72.0);
    EXPECT_EQ(ascent, c.ascent);
    EXPECT_EQ(descent, c.descent);
  }
}

// ---- Face recognition ------------------------------------------------------------------------

TEST(text_metrics, FaceRecognition) {
  struct Case {
    const char* name;
    int weight, angle;
    int index, recognised;
  };
  const Case cases[] = {
      {"Times New Roman", 2, 1, 35, 1},
      {"Arial", 1, 0, 12, 1},
      {"Comic", 1, 0, 8, 0},
      {"Comic", 3, 2, 11, 0},  // the style offsets apply to the fallback too
      {"CourierNew", 1, 0, 8, 1},
      {"courier new", 3, 0, 9, 1},
      {"Times", 1, 2, 34, 1},
      {"helvetica", 0, 0, 12, 1},
      // "Helvetica" comes first and is the shorter: the narrow face is never
      // reached by name.
      {"Helvetica-Narrow", 1, 0, 12, 1},
      {"New Century Schoolbook", 1, 1, 22, 1},
      {"NewCenturySchoolbookX", 1, 0, 8, 0},  // aliases match whole names only
      {"Palatino Linotype", 1, 0, 8, 0},
      {"Symbol", 3, 2, 31, 1},
      {"zapf", 1, 0, 36, 1},
      {"ZapfDingbats", 2, 0, 41, 1},
      {"ARIAL", 4, 3, 12, 1},  // other weights and angles add nothing
      {"", 1, 0, 0, 1},        // an empty compared length matches at once
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    zrFont* font = create_font();
    font_set_name(font, c.name);
    font_set_weight(font, static_cast<FontWeightType>(c.weight));
    font_set_angle(font, static_cast<FontAngleType>(c.angle));
    int index = -1;
    EXPECT_EQ(guiDetermineAFMindex(font, &index), c.recognised);
    EXPECT_EQ(index, c.index);
    EXPECT_EQ(gf::afmIndexFor(c.name, c.weight, c.angle), c.index);
    destroy_font(font);
  }
}

}  // namespace
