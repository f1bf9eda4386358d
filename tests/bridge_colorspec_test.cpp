// Plot-format strings split into colour, line style and marker.
#include <gtest/gtest.h>

#include <string>

#include "qvgui/bridge.h"

namespace {

using gui_objects::convert_from_string_utils::stringToColorMarkerLineStyle;

TEST(BridgePlotFormat, Table) {
  struct Case {
    const char* label;
    const char* text;
    bool ok;
    const char* colour;
    const char* lineStyle;
    const char* marker;
  };
  const Case cases[] = {
      {"colour, dashes, marker", "r--o", true, "r", "--", "o"},
      {"full name then dotted", "red:", true, "r", ":", ""},
      {"blue with circle", "bo", true, "b", "", "o"},
      {"bla is black", "bla", true, "k", "", ""},
      {"bl is blue", "bl", true, "b", "", ""},
      {"blue spelled out", "blue", true, "b", "", ""},
      {"black spelled out", "black", true, "k", "", ""},
      {"black shortcut looks only at the third letter", "bxa", false, "k", "", "x"},
      {"two colours", "rg", false, "r", "", ""},
      {"two line styles", "--:", false, "", "--", ""},
      {"two markers", "ox", false, "", "", "o"},
      {"square", "square", true, "", "", "s"},
      {"half a name ends at the text", "squ", true, "", "", "s"},
      {"empty", "", true, "", "", ""},
      {"upper case", "R-.D", true, "r", "-.", "d"},
      {"dash-dot is never a point marker", "-.", true, "", "-.", ""},
      {"lone dash then point", "- .", true, "", "-", "."},
      {"unknown letter", "z", false, "", "", ""},
      {"blanks are skipped", " g : + ", true, "g", ":", "+"},
      {"name broken off continues as the next item", "maga", false, "m", "", ""},
      {"every marker letter", "hexagram", true, "", "", "h"},
      {"pentagram after a colour", "ypentagram-", true, "y", "-", "p"},
      {"k consumes nothing", "kk", false, "k", "", ""},
      {"magenta then diamond", "magentadiamond", true, "m", "", "d"},
      {"white cyan clash", "wc", false, "w", "", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::string colour = "stale", lineStyle = "stale", marker = "stale";
    EXPECT_EQ(stringToColorMarkerLineStyle(c.text, colour, lineStyle, marker), c.ok);
    EXPECT_EQ(colour, c.colour);
    EXPECT_EQ(lineStyle, c.lineStyle);
    EXPECT_EQ(marker, c.marker);
  }
}

TEST(BridgePlotFormat, EveryMarkerAndColourAlone) {
  std::string c, l, mk;
  for (const char* m : {"*", "+", ".", "<", ">", "^", "o", "v", "x", "d", "h", "p", "s"}) {
    EXPECT_TRUE(stringToColorMarkerLineStyle(m, c, l, mk)) << m;
    EXPECT_EQ(mk, m);
  }
  for (const char* k : {"b", "c", "g", "k", "m", "r", "w", "y"}) {
    EXPECT_TRUE(stringToColorMarkerLineStyle(k, c, l, mk)) << k;
    EXPECT_EQ(c, k);
  }
  EXPECT_TRUE(stringToColorMarkerLineStyle(nullptr, c, l, mk));
}

}  // namespace
