// String lists: splitting with escapes, joining, merging, and the conversions
// to and from host values, including failures part-way through.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bridge_test_support.h"

namespace {

std::vector<std::string> entries(const NStrings& list) {
  std::vector<std::string> out;
  for (std::int32_t i = 0; i < list.getNumStrings(); ++i) out.emplace_back(list[i]);
  return out;
}

std::vector<std::string> splitOf(const char* text, char delimiter, char escape) {
  return entries(NStrings(text, delimiter, escape));
}

using bridge_test::cellOf;
using bridge_test::doubles;
using bridge_test::ZrArrayPtr;
using Strings = std::vector<std::string>;

TEST(BridgeNStringsSplit, DelimiterNeverMatchesInsideACharacter) {
  EXPECT_EQ(splitOf("\xC3\xA9|\xE2\x82\xAC", '|', 0), Strings({"\xC3\xA9", "\xE2\x82\xAC"}));
  // 0xA9 is the second byte of U+00A9; as a delimiter it only splits where it
  // stands alone (a malformed single byte).
  EXPECT_EQ(splitOf("a\xC2\xA9z", '\xA9', 0), Strings({"a\xC2\xA9z"}));
  EXPECT_EQ(splitOf("a\xA9z", '\xA9', 0), Strings({"a", "z"}));
  // A truncated sequence at the end is read byte by byte.
  EXPECT_EQ(splitOf("a\xE2\x82", '\x82', 0), Strings({"a\xE2", ""}));
}

// The rules as written: a delimiter splits unless preceded by an odd run of
// escapes; then, within each piece, escape + (delimiter or escape) keeps the
// second character.
Strings referenceSplit(const std::string& text, char delimiter, char escape) {
  std::vector<std::size_t> cuts;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != delimiter) continue;
    std::size_t run = 0;
    while (escape != 0 && run < i && text[i - 1 - run] == escape) ++run;
    if (run % 2 == 0) cuts.push_back(i);
  }
  cuts.push_back(text.size());
  Strings pieces;
  std::size_t start = 0;
  for (const std::size_t cut : cuts) {
    const std::string raw = text.substr(start, cut - start);
    std::string piece;
    for (std::size_t k = 0; k < raw.size(); ++k) {
      if (escape != 0 && raw[k] == escape && k + 1 < raw.size() &&
          (raw[k + 1] == delimiter || raw[k + 1] == escape)) {
        piece += raw[++k];
      } else {
        piece += raw[k];
      }
    }
    pieces.push_back(piece);
    start = cut + 1;
  }
  return pieces;
}

TEST(BridgeNStringsSplit, RandomTextMatchesReference) {
  std::mt19937 rng(4417);
  const char alphabet[] = {'a', 'b', '|', '\\', ' ', ','};
  std::uniform_int_distribution<int> length(0, 24);
  std::uniform_int_distribution<int> pick(0, sizeof alphabet - 1);
  for (int trial = 0; trial < 2000; ++trial) {
    std::string text;
    for (int n = length(rng); n > 0; --n) text += alphabet[pick(rng)];
    const char escape = trial % 3 == 0 ? '\0' : '\\';
    const char delimiter = trial % 5 == 0 ? ',' : '|';
    SCOPED_TRACE(text);
    EXPECT_EQ(splitOf(text.c_str(), delimiter, escape), referenceSplit(text, delimiter, escape));
  }
}

TEST(BridgeNStrings, JoinCopyCompareAndSet) {
  const char* xy[] = {"x", "y"};
  NStrings list(2, xy);
  char* joined = list.toString(',');
  EXPECT_STREQ(joined, "x,y");
  utFree(joined);
  char* none = NStrings().toString(',');
  EXPECT_STREQ(none, "");
  utFree(none);

  NStrings copy(&list);
  EXPECT_TRUE(copy == list);
  EXPECT_NE(copy[0], list[0]);  // deep copy
  copy.setStringAt(1, "yy");
  EXPECT_FALSE(copy == list);
  EXPECT_TRUE(NStrings(static_cast<const NStrings*>(nullptr)) == NStrings());

  NStrings one("hello", '|');
  one.setStringAt(0, "hi");
  one.setStringAt(0, "a much longer text");
  EXPECT_STREQ(one[0], "a much longer text");
  one.setStringAt(0, nullptr);
  EXPECT_STREQ(one[0], "");
  one.setStringAt(5, "ignored");
  EXPECT_EQ(one.getNumStrings(), 1);
}

TEST(BridgeNStrings, MergeAndApplyDelimiter) {
  NStrings a("1|2", '|');
  NStrings b("3|4|5", '|');
  a.mergeOntoEnd(b);
  EXPECT_EQ(entries(a), Strings({"1", "2", "3", "4", "5"}));
  EXPECT_EQ(b.getNumStrings(), 0);
  a.mergeOntoEnd(a);  // merging a list onto itself changes nothing
  EXPECT_EQ(a.getNumStrings(), 5);
  NStrings empty;
  empty.mergeOntoEnd(a);
  EXPECT_EQ(empty.getNumStrings(), 5);
  EXPECT_EQ(a.getNumStrings(), 0);

  NStrings lines("a,b|c||d,", '|');
  lines.applyDelimiter(',');
  EXPECT_EQ(entries(lines), Strings({"a", "b", "c", "", "d", ""}));
}

TEST(BridgeNStrings, FlatSplitting) {
  struct Case {
    const char* label;
    const char* text;
    const char* delimiter;
    const char* escape;
    Strings want;
  };
  const Case cases[] = {
      {"empty delimiter splits lines", "a|b\nc", "", nullptr, {"a|b", "c"}},
      {"null delimiter splits lines", "a\nb", nullptr, "\\", {"a", "b"}},
      {"empty text gives no entries", "", "|", nullptr, {}},
      {"null text gives no entries", nullptr, "|", nullptr, {}},
      {"first characters used", "a;b\\;c", ";,", "\\x", {"a", "b;c"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    NStrings* list = delimited_string_to_NStrings(c.text, c.delimiter, c.escape);
    EXPECT_EQ(entries(*list), c.want);
    NStrings* copy = copy_NStrings(list);
    EXPECT_TRUE(*copy == *list);
    char* joined = NStrings_to_string(list);
    std::string expected;
    for (std::size_t k = 0; k < c.want.size(); ++k) expected += (k ? "\n" : "") + c.want[k];
    EXPECT_EQ(joined, expected);
    utFree(joined);
    free_NStrings(copy);
    free_NStrings(list);
  }
  EXPECT_EQ(copy_NStrings(nullptr), nullptr);
  EXPECT_EQ(NStrings_to_string(nullptr), nullptr);
  free_NStrings(nullptr);
}

TEST(BridgeNStringsHost, FromHostValues) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(entries(NStrings(doubles(1, 4, {1, -inf, std::nan(""), 0.5}).get())),
            Strings({"1", "-Inf", "NaN", "0.5"}));
  EXPECT_EQ(entries(NStrings(doubles(2, 1, {inf, 1e20}).get())), Strings({"Inf", "1e+20"}));

  // A double matrix that is not a vector leaves the list as it was.
  NStrings kept("keep|me", '|');
  kept.setUsingMatrix(doubles(2, 2, {}).get());
  EXPECT_EQ(entries(kept), Strings({"keep", "me"}));
  kept.setUsingMatrix(nullptr);
  EXPECT_EQ(kept.getNumStrings(), 2);

  const char* rows[] = {"ab", "c", "  d  "};
  EXPECT_EQ(entries(NStrings(ZrArrayPtr(zrCreateCharMatrixFromStrings(3, rows)).get())),
            Strings({"ab", "c", "  d"}));
  EXPECT_EQ(entries(NStrings(ZrArrayPtr(zrCreateString(" padded ")).get())), Strings({" padded "}));
  // An empty cell element reads as an empty entry.
  ZrArrayPtr cell = cellOf({zrCreateString("text"), nullptr, zrCreateDoubleScalar(2.5), zrCreateString("")});
  EXPECT_EQ(entries(NStrings(cell.get())), Strings({"text", "", "2.5", ""}));
}

TEST(BridgeNStringsHost, BadValuesRaiseAndLeaveTheListAlone) {
  const char* field = "f";
  ZrArrayPtr structure(zrCreateStructMatrix(1, 1, 1, &field));
  ZrArrayPtr logical(zrCreateLogicalMatrix(1, 2));
  ZrArrayPtr single(zrCreateNumericMatrix(1, 2, zrSINGLE_CLASS));
  ZrArrayPtr badCell = cellOf({zrCreateString("fine"), zrCreateDoubleMatrix(1, 3)});  // not a scalar
  const zrArray_tag* bad[] = {structure.get(), logical.get(), single.get(), badCell.get()};
  for (const zrArray_tag* value : bad) {
    SCOPED_TRACE(zrGetClassName(value));
    NStrings list("old", '|');
    EXPECT_EQ(bridge_test::errorId([&] { list.setUsingMatrix(value); }),
              "Tavrix::gui::nstrings::setUsingMatrix::BadArguments");
    EXPECT_EQ(entries(list), Strings({"old"}));
    EXPECT_THROW(free_NStrings(Matrix_to_NStrings(value)), HostError);
  }
}

TEST(BridgeNStringsHost, ToHostValues) {
  const char* rows[] = {"one", "", "three"};
  NStrings list(3, rows);

  ZrArrayPtr cell(list.toCellArray());
  ASSERT_TRUE(zrIsCell(cell.get()));
  EXPECT_EQ(zrGetM(cell.get()), 3u);
  EXPECT_EQ(bridge_test::charText(zrGetCell(cell.get(), 2)), "three");

  ZrArrayPtr matrix(list.toMatrix());
  ASSERT_TRUE(zrIsChar(matrix.get()));
  ASSERT_EQ(zrGetM(matrix.get()), 3u);
  ASSERT_EQ(zrGetN(matrix.get()), 5u);
  const zrChar* chars = zrGetChars(matrix.get());
  for (zrSize k = 0; k < 15; ++k) EXPECT_NE(chars[k], 0) << k;
  EXPECT_EQ(chars[1 + 3 * 4], u' ');  // row 2 is all blanks

  list.setFormat(NStrings::CellArray);
  EXPECT_TRUE(zrIsCell(ZrArrayPtr(list.toMatrix()).get()));
  list.setFormat(static_cast<NStrings::OutputFormat>(7));
  EXPECT_EQ(list.toMatrix(), nullptr);

  ZrArrayPtr noRows(NStrings().toMatrix());
  EXPECT_TRUE(zrIsChar(noRows.get()));
  EXPECT_EQ(zrGetNumberOfElements(noRows.get()), 0u);
  ZrArrayPtr none(NStrings_to_CellArray(nullptr));
  EXPECT_EQ(zrGetNumberOfElements(none.get()), 0u);

  EXPECT_TRUE(NStrings(cell.get()) == list);
}

TEST(BridgeNStringsHost, AllocationFailuresLeakNothing) {
  const char* rows[] = {"alpha", "beta", "gamma", "delta"};
  const NStrings list(4, rows);
  const std::int64_t live = hostLiveArrayCount();
  bool succeeded = false;
  for (std::int64_t budget = 0; !succeeded && budget < 64; ++budget) {
    SCOPED_TRACE(budget);
    NStrings target("old|list", '|');
    try {
      HostAllocationFailureScope scope(budget);
      target.setUsingDelimitedString("a|b|c|d|e|f", '|');
      zrArray_tag* cell = list.toCellArray();
      zrDestroyArray(cell);
      zrArray_tag* matrix = list.toMatrix();
      zrDestroyArray(matrix);
      succeeded = true;
    } catch (const HostError& e) {
      EXPECT_EQ(e.identifier(), kHostOutOfMemoryId);
      // Either the split finished before the failure or the list is untouched.
      const Strings now = entries(target);
      EXPECT_TRUE(now == Strings({"old", "list"}) || now.size() == 6u);
    }
    EXPECT_EQ(hostLiveArrayCount(), live);
  }
  EXPECT_TRUE(succeeded);
}

}  // namespace
