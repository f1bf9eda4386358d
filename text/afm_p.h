// The built-in metric tables of the 35 standard PostScript faces, as the
// build generates them from the installed AFM files (text/afm/).
#pragma once

#include <cstdint>

namespace gui_objects::font::afm {

constexpr int kFaceCount = 35;
constexpr int kTableSets = 2;
constexpr std::uint16_t kNoGlyph = 0xFFFF;

// One face in one table set. Every array is indexed by the byte code.
//
// Kerning is a dense class matrix: a code's kernRow (the pair's first glyph)
// and kernCol (its second) select kern[row * kernCols + col]. Row 0 and
// column 0 are all zero and stand for "starts/ends no pair", so the width loop
// adds a kerning term for every pair without a branch; faces without kerning
// have a 1 x 1 matrix.
struct GlyphTable {
  std::int16_t advance[256];  // 0 where no glyph
  std::int16_t box[256][4];   // llx lly urx ury; zeros where no glyph
  std::uint16_t glyph[256];   // index into Face::glyphNames, kNoGlyph where none
  std::uint8_t kernRow[256];
  std::uint8_t kernCol[256];
  std::uint16_t kernRows;
  std::uint16_t kernCols;
  const std::int16_t* kern;
};

struct Face {
  const char* postScriptName;
  // Values the file lacks (Symbol and ZapfDingbats give no Ascender,
  // Descender, CapHeight or XHeight) are filled in by the generator: ascender
  // and descender from the FontBBox, cap height from the ascender, x height
  // from the top of the glyph at code 'x'.
  std::int16_t ascender, descender, capHeight, xHeight;
  std::int16_t bbox[4];  // FontBBox llx lly urx ury
  const char* const* glyphNames;
  std::uint16_t glyphCount;
  GlyphTable sets[kTableSets];
};

extern const Face kFaces[kFaceCount];

// AFM font index (0..43) to face: the four styles of Symbol, ZapfChancery and
// ZapfDingbats repeat one face.
constexpr int faceOfIndex(int afmIndex) noexcept {
  if (afmIndex < 28) return afmIndex;
  if (afmIndex < 32) return 28;
  if (afmIndex < 36) return afmIndex - 3;
  if (afmIndex < 40) return 33;
  return 34;
}

}  // namespace gui_objects::font::afm
