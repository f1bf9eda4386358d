// Build-time generator of the built-in font metric tables: parses the AFM
// files of the 35 standard faces (given in face order on the command line)
// and writes the C++ tables that text/afm_p.h declares.
//
//   afm_tables_gen OUTPUT.cpp FILE.afm x 35
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr int kFaceCount = 35;

// The PostScript name each command-line position must carry.
const char* const kExpectedNames[kFaceCount] = {
    "AvantGarde-Book",
    "AvantGarde-Demi",
    "AvantGarde-BookOblique",
    "AvantGarde-DemiOblique",
    "Bookman-Light",
    "Bookman-Demi",
    "Bookman-LightItalic",
    "Bookman-DemiItalic",
    "Courier",
    "Courier-Bold",
    "Courier-Oblique",
    "Courier-BoldOblique",
    "Helvetica",
    "Helvetica-Bold",
    "Helvetica-Oblique",
    "Helvetica-BoldOblique",
    "Helvetica-Narrow",
    "Helvetica-Narrow-Bold",
    "Helvetica-Narrow-Oblique",
    "Helvetica-Narrow-BoldOblique",
    "NewCenturySchlbk-Roman",
    "NewCenturySchlbk-Bold",
    "NewCenturySchlbk-Italic",
    "NewCenturySchlbk-BoldItalic",
    "Palatino-Roman",
    "Palatino-Bold",
    "Palatino-Italic",
    "Palatino-BoldItalic",
    "Symbol",
    "Times-Roman",
    "Times-Bold",
    "Times-Italic",
    "Times-BoldItalic",
    "ZapfChancery-MediumItalic",
    "ZapfDingbats",
};

// ISO 8859-1 by glyph name: codes 32-126 and 160-255 (the rest show nothing). Codes 39
// and 96 are the straight quote and the grave, as the character set means
// them, not the curly quotes of the faces' own encoding.
const char* const kLatin1Low[95] = {
    "space",       "exclam",
    "quotedbl",    "numbersign",
    "dollar",      "percent",
    "ampersand",   "quotesingle",
    "parenleft",   "parenright",
    "asterisk",    "plus",
    "comma",       "hyphen",
    "period",      "slash",
    "zero",        "one",
    "two",         "three",
    "four",        "five",
    "six",         "seven",
    "eight",       "nine",
    "colon",       "semicolon",
    "less",        "equal",
    "greater",     "question",
    "at",          "A",
    "B",           "C",
    "D",           "E",
    "F",           "G",
    "H",           "I",
    "J",           "K",
    "L",           "M",
    "N",           "O",
    "P",           "Q",
    "R",           "S",
    "T",           "U",
    "V",           "W",
    "X",           "Y",
    "Z",           "bracketleft",
    "backslash",   "bracketright",
    "asciicircum", "underscore",
    "grave",       "a",
    "b",           "c",
    "d",           "e",
    "f",           "g",
    "h",           "i",
    "j",           "k",
    "l",           "m",
    "n",           "o",
    "p",           "q",
    "r",           "s",
    "t",           "u",
    "v",           "w",
    "x",           "y",
    "z",           "braceleft",
    "bar",         "braceright",
    "asciitilde",
};
const char* const kLatin1High[96] = {
    "space",
    "exclamdown",
    "cent",
    "sterling",
    "currency",
    "yen",
    "brokenbar",
    "section",
    "dieresis",
    "copyright",
    "ordfeminine",
    "guillemotleft",
    "logicalnot",
    "hyphen",
    "registered",
    "macron",
    "degree",
    "plusminus",
    "twosuperior",
    "threesuperior",
    "acute",
    "mu",
    "paragraph",
    "periodcentered",
    "cedilla",
    "onesuperior",
    "ordmasculine",
    "guillemotright",
    "onequarter",
    "onehalf",
    "threequarters",
    "questiondown",
    "Agrave",
    "Aacute",
    "Acircumflex",
    "Atilde",
    "Adieresis",
    "Aring",
    "AE",
    "Ccedilla",
    "Egrave",
    "Eacute",
    "Ecircumflex",
    "Edieresis",
    "Igrave",
    "Iacute",
    "Icircumflex",
    "Idieresis",
    "Eth",
    "Ntilde",
    "Ograve",
    "Oacute",
    "Ocircumflex",
    "Otilde",
    "Odieresis",
    "multiply",
    "Oslash",
    "Ugrave",
    "Uacute",
    "Ucircumflex",
    "Udieresis",
    "Yacute",
    "Thorn",
    "germandbls",
    "agrave",
    "aacute",
    "acircumflex",
    "atilde",
    "adieresis",
    "aring",
    "ae",
    "ccedilla",
    "egrave",
    "eacute",
    "ecircumflex",
    "edieresis",
    "igrave",
    "iacute",
    "icircumflex",
    "idieresis",
    "eth",
    "ntilde",
    "ograve",
    "oacute",
    "ocircumflex",
    "otilde",
    "odieresis",
    "divide",
    "oslash",
    "ugrave",
    "uacute",
    "ucircumflex",
    "udieresis",
    "yacute",
    "thorn",
    "ydieresis",
};

struct Glyph {
  std::string name;
  int code = -1;
  long advance = 0;
  long box[4] = {0, 0, 0, 0};
};

struct Kern {
  std::string first, second;
  long value;
};

struct Afm {
  std::string path;
  std::string fontName;
  bool hasAscender = false, hasDescender = false, hasCap = false, hasX = false, hasBox = false;
  long ascender = 0, descender = 0, capHeight = 0, xHeight = 0;
  long bbox[4] = {0, 0, 0, 0};
  std::vector<Glyph> glyphs;
  std::vector<Kern> kerns;
};

[[noreturn]] void fail(const std::string& path, int line, const std::string& what) {
  std::fprintf(stderr, "%s:%d: %s\n", path.c_str(), line, what.c_str());
  std::exit(1);
}

// AFM numbers may carry a fraction; the tables hold whole thousandths.
long toUnits(const std::string& path, int line, const std::string& text) {
  char* end = nullptr;
  const double v = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(v) || std::fabs(v) > 30000.0) {
    fail(path, line, "bad number '" + text + "'");
  }
  return std::lround(v);
}

std::string trim(const std::string& s) {
  const auto b = s.find_first_not_of(" \t\r");
  if (b == std::string::npos) return "";
  const auto e = s.find_last_not_of(" \t\r");
  return s.substr(b, e - b + 1);
}

std::vector<std::string> words(const std::string& s) {
  std::istringstream in(s);
  std::vector<std::string> out;
  for (std::string w; in >> w;) out.push_back(w);
  return out;
}

// One character-metrics line: "C 65 ; WX 722 ; N A ; B 15 0 706 674 ;".
Glyph parseCharMetrics(const std::string& path, int line, const std::string& text) {
  Glyph g;
  bool sawCode = false, sawWidth = false;
  std::istringstream fields(text);
  for (std::string field; std::getline(fields, field, ';');) {
    const auto w = words(field);
    if (w.empty()) continue;
    if (w[0] == "C" && w.size() == 2) {
      g.code = static_cast<int>(toUnits(path, line, w[1]));
      sawCode = true;
    } else if (w[0] == "CH" && w.size() == 2) {
      g.code = static_cast<int>(std::strtol(w[1].c_str() + 1, nullptr, 16));
      sawCode = true;
    } else if ((w[0] == "WX" || w[0] == "W0X") && w.size() == 2) {
      g.advance = toUnits(path, line, w[1]);
      sawWidth = true;
    } else if (w[0] == "N" && w.size() == 2) {
      g.name = w[1];
    } else if (w[0] == "B" && w.size() == 5) {
      for (int k = 0; k < 4; ++k) g.box[k] = toUnits(path, line, w[k + 1]);
    }
  }
  if (!sawCode || !sawWidth || g.name.empty()) fail(path, line, "character metrics need C, WX and N");
  if (g.code < -1 || g.code > 255) fail(path, line, "character code out of range");
  return g;
}

Afm parseAfm(const std::string& path) {
  std::ifstream in(path);
  if (!in) fail(path, 0, "cannot open");
  Afm afm;
  afm.path = path;
  bool inChars = false, sawEnd = false;
  int line = 0;
  for (std::string text; std::getline(in, text);) {
    ++line;
    text = trim(text);
    if (text.empty()) continue;
    if (inChars) {
      if (text.rfind("EndCharMetrics", 0) == 0) {
        inChars = false;
      } else {
        afm.glyphs.push_back(parseCharMetrics(path, line, text));
      }
      continue;
    }
    const auto w = words(text);
    const std::string& key = w[0];
    auto one = [&](long* dst, bool* seen) {
      if (w.size() != 2) fail(path, line, key + " needs one value");
      *dst = toUnits(path, line, w[1]);
      *seen = true;
    };
    if (key == "FontName" && w.size() == 2) {
      afm.fontName = w[1];
    } else if (key == "Ascender") {
      one(&afm.ascender, &afm.hasAscender);
    } else if (key == "Descender") {
      one(&afm.descender, &afm.hasDescender);
    } else if (key == "CapHeight") {
      one(&afm.capHeight, &afm.hasCap);
    } else if (key == "XHeight") {
      one(&afm.xHeight, &afm.hasX);
    } else if (key == "FontBBox") {
      if (w.size() != 5) fail(path, line, "FontBBox needs four values");
      for (int k = 0; k < 4; ++k) afm.bbox[k] = toUnits(path, line, w[k + 1]);
      afm.hasBox = true;
    } else if (key == "StartCharMetrics") {
      inChars = true;
    } else if (key == "KPX") {
      if (w.size() != 4) fail(path, line, "KPX needs two names and a value");
      afm.kerns.push_back({w[1], w[2], toUnits(path, line, w[3])});
    } else if (key == "EndFontMetrics") {
      sawEnd = true;
    }
  }
  if (afm.fontName.empty()) fail(path, line, "no FontName");
  if (!afm.hasBox) fail(path, line, "no FontBBox");
  if (afm.glyphs.empty()) fail(path, line, "no character metrics");
  if (!sawEnd) fail(path, line, "no EndFontMetrics (truncated file?)");
  return afm;
}

// ---- One table set ----------------------------------------------------------------------

struct Table {
  int glyph[256];  // index into Afm::glyphs, -1 where none
  int kernRow[256] = {}, kernCol[256] = {};
  int rows = 1, cols = 1;
  std::vector<long> kern;  // rows x cols
};

Table buildTable(const Afm& afm, bool latin1) {
  Table t;
  std::map<std::string, int> byName;
  for (size_t i = 0; i < afm.glyphs.size(); ++i) byName.emplace(afm.glyphs[i].name, static_cast<int>(i));
  for (int c = 0; c < 256; ++c) t.glyph[c] = -1;
  if (latin1) {
    for (int c = 0; c < 256; ++c) {
      const char* name = c >= 32 && c <= 126 ? kLatin1Low[c - 32] : c >= 160 ? kLatin1High[c - 160] : nullptr;
      if (!name) continue;
      const auto it = byName.find(name);
      if (it != byName.end()) t.glyph[c] = it->second;
    }
  } else {
    for (size_t i = 0; i < afm.glyphs.size(); ++i) {
      if (afm.glyphs[i].code >= 0) t.glyph[afm.glyphs[i].code] = static_cast<int>(i);
    }
  }
  // Kerning classes by glyph: codes that show the same glyph share a class.
  std::map<int, int> rowOf, colOf;
  std::vector<bool> encoded(afm.glyphs.size(), false);
  for (int c = 0; c < 256; ++c) {
    if (t.glyph[c] >= 0) encoded[t.glyph[c]] = true;
  }
  std::vector<std::pair<std::pair<int, int>, long>> pairs;
  for (const Kern& k : afm.kerns) {
    const auto a = byName.find(k.first), b = byName.find(k.second);
    if (a == byName.end() || b == byName.end()) fail(afm.path, 0, "KPX names an unknown glyph");
    if (!encoded[a->second] || !encoded[b->second] || k.value == 0) continue;
    if (!rowOf.count(a->second)) rowOf.emplace(a->second, static_cast<int>(rowOf.size()) + 1);
    if (!colOf.count(b->second)) colOf.emplace(b->second, static_cast<int>(colOf.size()) + 1);
    pairs.push_back({{a->second, b->second}, k.value});
  }
  if (rowOf.size() > 254 || colOf.size() > 254) fail(afm.path, 0, "too many kerning glyphs for the tables");
  t.rows = static_cast<int>(rowOf.size()) + 1;
  t.cols = static_cast<int>(colOf.size()) + 1;
  t.kern.assign(static_cast<size_t>(t.rows) * t.cols, 0);
  for (const auto& p : pairs) t.kern[rowOf[p.first.first] * t.cols + colOf[p.first.second]] = p.second;
  for (int c = 0; c < 256; ++c) {
    if (t.glyph[c] < 0) continue;
    const auto r = rowOf.find(t.glyph[c]);
    const auto k = colOf.find(t.glyph[c]);
    if (r != rowOf.end()) t.kernRow[c] = r->second;
    if (k != colOf.end()) t.kernCol[c] = k->second;
  }
  return t;
}

// ---- Output ---------------------------------------------------------------------------------

void emitInts(std::ostream& out, const long* v, size_t n) {
  for (size_t i = 0; i < n; ++i) out << v[i] << (i % 16 == 15 ? ",\n" : ",");
}

void emitTable(std::ostream& out, const Afm& afm, const Table& t, const std::string& kernName) {
  long advance[256], glyph[256], row[256], col[256], box[256 * 4];
  for (int c = 0; c < 256; ++c) {
    const int g = t.glyph[c];
    advance[c] = g < 0 ? 0 : afm.glyphs[g].advance;
    glyph[c] = g < 0 ? 0xFFFF : g;
    row[c] = t.kernRow[c];
    col[c] = t.kernCol[c];
    for (int k = 0; k < 4; ++k) box[c * 4 + k] = g < 0 ? 0 : afm.glyphs[g].box[k];
  }
  out << "{{";
  emitInts(out, advance, 256);
  out << "}, {";
  emitInts(out, box, 1024);
  out << "}, {";
  emitInts(out, glyph, 256);
  out << "}, {";
  emitInts(out, row, 256);
  out << "}, {";
  emitInts(out, col, 256);
  out << "}, " << t.rows << ", " << t.cols << ", " << kernName << "}";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != kFaceCount + 2) {
    std::fprintf(stderr, "usage: %s OUTPUT.cpp FILE.afm x %d (in face order)\n", argv[0], kFaceCount);
    return 2;
  }
  std::vector<Afm> faces;
  for (int f = 0; f < kFaceCount; ++f) {
    faces.push_back(parseAfm(argv[f + 2]));
    if (faces.back().fontName != kExpectedNames[f]) {
      fail(argv[f + 2], 0, "FontName " + faces.back().fontName + " where " + kExpectedNames[f] + " belongs");
    }
  }

  std::ostringstream out;
  out << "// Generated by afm_tables_gen from the installed AFM files; do not edit.\n"
         "#include \"text/afm_p.h\"\n\n"
         "// The glyph tables rely on brace elision to stay readable.\n"
         "#if defined(__clang__)\n#pragma clang diagnostic ignored \"-Wmissing-braces\"\n#endif\n\nnamespace "
         "gui_objects::font::afm {\nnamespace {\n";
  std::vector<std::vector<Table>> tables(kFaceCount);
  for (int f = 0; f < kFaceCount; ++f) {
    const Afm& afm = faces[f];
    // Symbol and ZapfDingbats have no Latin-1 repertoire: both sets are their own encoding.
    const bool fontSpecific = afm.fontName == "Symbol" || afm.fontName == "ZapfDingbats";
    tables[f].push_back(buildTable(afm, false));
    tables[f].push_back(buildTable(afm, !fontSpecific));
    out << "const char* const kNames" << f << "[] = {";
    for (size_t i = 0; i < afm.glyphs.size(); ++i) {
      out << '"' << afm.glyphs[i].name << "\"," << (i % 8 == 7 ? "\n" : "");
    }
    out << "};\n";
    for (int s = 0; s < 2; ++s) {
      out << "const std::int16_t kKern" << f << "_" << s << "[] = {";
      emitInts(out, tables[f][s].kern.data(), tables[f][s].kern.size());
      out << "};\n";
    }
  }
  out << "}  // namespace\n\nconst Face kFaces[kFaceCount] = {\n";
  for (int f = 0; f < kFaceCount; ++f) {
    const Afm& afm = faces[f];
    const long ascender = afm.hasAscender ? afm.ascender : afm.bbox[3];
    const long descender = afm.hasDescender ? afm.descender : afm.bbox[1];
    const long capHeight = afm.hasCap ? afm.capHeight : ascender;
    long xHeight = capHeight;
    if (afm.hasX) {
      xHeight = afm.xHeight;
    } else if (tables[f][0].glyph[static_cast<unsigned char>('x')] >= 0) {
      xHeight = afm.glyphs[tables[f][0].glyph[static_cast<unsigned char>('x')]].box[3];
    }
    out << "{\"" << afm.fontName << "\", " << ascender << ", " << descender << ", " << capHeight << ", "
        << xHeight << ", {" << afm.bbox[0] << ", " << afm.bbox[1] << ", " << afm.bbox[2] << ", "
        << afm.bbox[3] << "}, kNames" << f << ", " << afm.glyphs.size() << ", {";
    for (int s = 0; s < 2; ++s) {
      emitTable(out, afm, tables[f][s], "kKern" + std::to_string(f) + "_" + std::to_string(s));
      out << (s == 0 ? ",\n" : "");
    }
    out << "}},\n";
  }
  out << "};\n\n}  // namespace gui_objects::font::afm\n";

  // Written whole or not at all, so an interrupted run never leaves a half table behind.
  const std::string target = argv[1];
  const std::string temp = target + ".tmp";
  {
    std::ofstream file(temp, std::ios::binary);
    file << out.str();
    if (!file) fail(temp, 0, "cannot write");
  }
  if (std::rename(temp.c_str(), target.c_str()) != 0) fail(target, 0, "cannot replace");
  return 0;
}
