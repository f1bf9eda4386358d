// An independent reading of the installed AFM files for the layout tests, so
// that expected widths never come from the library's tables.
#pragma once

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace text_test {

struct AfmGlyph {
  int code = -1;
  double wx = 0, llx = 0, lly = 0, urx = 0, ury = 0;
};

struct AfmFile {
  std::map<std::string, AfmGlyph> glyphs;
  std::map<int, std::string> names;  // by the file's own code
  std::map<std::pair<std::string, std::string>, double> kern;
  double ascender = 0, descender = 0, capHeight = 0, bboxLly = 0, bboxUry = 0;
  bool loaded = false;
};

inline AfmFile readAfm(int index) {
  static const char* const kStems[11] = {"pagk8a pagd8a pagko8a pagdo8a",
                                         "pbkl8a pbkd8a pbkli8a pbkdi8a",
                                         "pcrr8a pcrb8a pcrro8a pcrbo8a",
                                         "phvr8a phvb8a phvro8a phvbo8a",
                                         "phvr8an phvb8an phvro8an phvbo8an",
                                         "pncr8a pncb8a pncri8a pncbi8a",
                                         "pplr8a pplb8a pplri8a pplbi8a",
                                         "psyr psyr psyr psyr",
                                         "ptmr8a ptmb8a ptmri8a ptmbi8a",
                                         "pzcmi8a pzcmi8a pzcmi8a pzcmi8a",
                                         "pzdr pzdr pzdr pzdr"};
  std::istringstream stems(kStems[index / 4]);
  std::string stem;
  for (int k = 0; k <= index % 4; ++k) stems >> stem;
  const char* env = std::getenv("QVGUI_AFM_DIR");
  std::ifstream in(std::string(env != nullptr ? env : "/usr/share/matplotlib/mpl-data/fonts/afm") + "/" +
                   stem + ".afm");
  AfmFile f;
  f.loaded = static_cast<bool>(in);
  double ignored;
  for (std::string line; std::getline(in, line);) {
    std::istringstream ls(line);
    std::string key, a, b;
    ls >> key;
    if (key == "Ascender") ls >> f.ascender;
    if (key == "Descender") ls >> f.descender;
    if (key == "CapHeight") ls >> f.capHeight;
    if (key == "FontBBox") ls >> ignored >> f.bboxLly >> ignored >> f.bboxUry;
    if (key == "KPX" && ls >> a >> b >> ignored) f.kern[{a, b}] = ignored;
    if (key != "C") continue;
    AfmGlyph g;  // C code ; WX w ; N name ; B llx lly urx ury ; ...
    ls >> g.code;
    for (std::string item; ls >> item;) {
      if (item == "WX") ls >> g.wx;
      if (item == "N") ls >> a;
      if (item == "B") ls >> g.llx >> g.lly >> g.urx >> g.ury;
    }
    f.glyphs[a] = g;
    if (g.code >= 0) f.names[g.code] = a;
  }
  return f;
}

inline const AfmFile& afm(int index) {
  static std::map<int, AfmFile> cache;
  auto it = cache.find(index);
  if (it == cache.end()) it = cache.emplace(index, readAfm(index)).first;
  return it->second;
}

// Printable ASCII in ISO Latin-1 is the text faces' own encoding but for the
// two quotes.
inline std::string latin1Name(int index, char c) {
  return c == '\'' ? "quotesingle" : c == '`' ? "grave" : afm(index).names.at(static_cast<unsigned char>(c));
}

// Advances plus the KPX of each consecutive pair, in thousandths.
inline double referenceWidth(int index, const std::string& ascii) {
  const AfmFile& f = afm(index);
  double w = 0;
  for (std::size_t k = 0; k < ascii.size(); ++k) {
    const std::string name = latin1Name(index, ascii[k]);
    w += f.glyphs.at(name).wx;
    if (k > 0) {
      auto it = f.kern.find({latin1Name(index, ascii[k - 1]), name});
      if (it != f.kern.end()) w += it->second;
    }
  }
  return w;
}

}  // namespace text_test
