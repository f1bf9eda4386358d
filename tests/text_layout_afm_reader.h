// An independent reading of the installed AFM files for the layout tests:
// glyph metrics and kerning by glyph name, and the printable ASCII names of
// ISO Latin-1, so that expected widths never come from the library's tables.
#pragma once

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>

namespace text_test {

struct AfmGlyph {
  int code = -1;
  double wx = 0, llx = 0, lly = 0, urx = 0, ury = 0;
};

struct AfmFile {
  std::map<std::string, AfmGlyph> glyphs;
  std::map<std::pair<std::string, std::string>, double> kern;
  double ascender = 0, descender = 0, capHeight = 0, bboxLly = 0, bboxUry = 0;
  bool loaded = false;
};

// File stems by AFM font index (0..43).
inline const char* afmStem(int index) {
  static const char* const kStems[11][4] = {{"pagk8a", "pagd8a", "pagko8a", "pagdo8a"},
                                            {"pbkl8a", "pbkd8a", "pbkli8a", "pbkdi8a"},
                                            {"pcrr8a", "pcrb8a", "pcrro8a", "pcrbo8a"},
                                            {"phvr8a", "phvb8a", "phvro8a", "phvbo8a"},
                                            {"phvr8an", "phvb8an", "phvro8an", "phvbo8an"},
                                            {"pncr8a", "pncb8a", "pncri8a", "pncbi8a"},
                                            {"pplr8a", "pplb8a", "pplri8a", "pplbi8a"},
                                            {"psyr", "psyr", "psyr", "psyr"},
                                            {"ptmr8a", "ptmb8a", "ptmri8a", "ptmbi8a"},
                                            {"pzcmi8a", "pzcmi8a", "pzcmi8a", "pzcmi8a"},
                                            {"pzdr", "pzdr", "pzdr", "pzdr"}};
  return kStems[index / 4][index % 4];
}

inline AfmFile readAfm(const std::string& stem) {
  const char* env = std::getenv("QVGUI_AFM_DIR");
  const std::string dir = env != nullptr ? env : "/usr/share/matplotlib/mpl-data/fonts/afm";
  std::ifstream in(dir + "/" + stem + ".afm");
  AfmFile f;
  f.loaded = static_cast<bool>(in);
  std::string line;
  while (std::getline(in, line)) {
    std::istringstream ls(line);
    std::string key;
    ls >> key;
    if (key == "Ascender") ls >> f.ascender;
    if (key == "Descender") ls >> f.descender;
    if (key == "CapHeight") ls >> f.capHeight;
    if (key == "FontBBox") {
      double llx, urx;
      ls >> llx >> f.bboxLly >> urx >> f.bboxUry;
    }
    if (key == "KPX") {
      std::string a, b;
      double v;
      ls >> a >> b >> v;
      f.kern[{a, b}] = v;
    }
    if (key != "C") continue;
    // C code ; WX w ; N name ; B llx lly urx ury ; ...
    AfmGlyph g;
    std::string name, item;
    ls >> g.code;
    while (ls >> item) {
      if (item == "WX") ls >> g.wx;
      if (item == "N") ls >> name;
      if (item == "B") ls >> g.llx >> g.lly >> g.urx >> g.ury;
    }
    f.glyphs[name] = g;
  }
  return f;
}

inline const AfmFile& afm(int index) {
  static std::map<std::string, AfmFile> cache;
  const std::string stem = afmStem(index);
  auto it = cache.find(stem);
  if (it == cache.end()) it = cache.emplace(stem, readAfm(stem)).first;
  return it->second;
}

// Glyph names of ISO Latin-1 codes 32..126.
inline const char* latin1Name(unsigned char code) {
  static const char* const kNames[95] = {"space",       "exclam",
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
                                         "asciitilde"};
  return code >= 32 && code <= 126 ? kNames[code - 32] : "";
}

// Width in thousandths of ASCII text in a text face: advances plus the KPX
// of each consecutive pair, looked up by glyph name.
inline double referenceWidth(int index, const std::string& ascii) {
  const AfmFile& f = afm(index);
  double w = 0;
  for (std::size_t k = 0; k < ascii.size(); ++k) {
    const std::string name = latin1Name(static_cast<unsigned char>(ascii[k]));
    w += f.glyphs.at(name).wx;
    if (k > 0) {
      auto it = f.kern.find({latin1Name(static_cast<unsigned char>(ascii[k - 1])), name});
      if (it != f.kern.end()) w += it->second;
    }
  }
  return w;
}

}  // namespace text_test
