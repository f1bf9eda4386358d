// The utility library: checked allocation and its failure hook, tolerance
// equality, interrupts, console capture, UTF conversion and char matrices.

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "host_test_support.h"

namespace {

using host_test::errorId;

// ---- Allocation ---------------------------------------------------------------------

TEST(HostUtil, ZeroByteRequestsGiveDistinctBlocks) {
  void* a = utMallocWithCheck(0);
  void* b = zrMalloc(0);
  void* c = utCallocWithCheck(0, 8);
  EXPECT_NE(a, nullptr);
  EXPECT_NE(a, b);
  EXPECT_NE(c, nullptr);
  utFree(a);
  zrFree(b);
  utFree(c);
}

TEST(HostUtil, FailureHookCountsSuccessesThenFailsEverything) {
  HostAllocationFailureScope scope(2);
  void* a = utMallocWithCheck(8);
  void* b = zrCalloc(2, 4);
  EXPECT_EQ(hostAllocationFailureBudget(), 0);
  EXPECT_EQ(errorId([] { utMallocWithCheck(1); }), kHostOutOfMemoryId);
  EXPECT_EQ(errorId([] { zrMalloc(1); }), kHostOutOfMemoryId);
  EXPECT_EQ(errorId([] { zrCreateDoubleScalar(1); }), kHostOutOfMemoryId);
  // A failed reallocation leaves the old block valid.
  std::memset(a, 7, 8);
  EXPECT_EQ(errorId([&] { a = utReallocWithCheck(a, 64); }), kHostOutOfMemoryId);
  EXPECT_EQ(static_cast<unsigned char*>(a)[7], 7);
  {
    HostAllocationFailureScope off(-1);
    void* c = zrRealloc(b, 64);
    zrFree(c);
  }
  EXPECT_EQ(hostAllocationFailureBudget(), 0) << "the inner scope must restore the outer setting";
  utFree(a);
}

TEST(HostUtil, OverflowingAndImpossibleRequestsRaiseOutOfMemory) {
  const std::size_t max = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(errorId([&] { utCallocWithCheck(max / 2, 4); }), kHostOutOfMemoryId);
  EXPECT_EQ(errorId([&] { zrCalloc(max / 2, 4); }), kHostOutOfMemoryId);
  EXPECT_EQ(errorId([&] { utMallocWithCheck(max - 16); }), kHostOutOfMemoryId);
}

// ---- Tolerance ------------------------------------------------------------------------

// The boundary itself is inside; non-finite values equal only themselves.
TEST(HostUtil, EqualWithinEpsBoundaryAndNonFinite) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  struct Row {
    const char* label;
    double a, b;
    bool equal;
  };
  const Row rows[] = {
      {"identical", 3.5, 3.5, true},
      {"absolute near zero", 0.0, 4 * DBL_EPSILON, true},
      {"just beyond absolute", 0.0, 4.5 * DBL_EPSILON, false},
      {"opposite signs", 1e-300, -1e-300, true},
      {"infinity equals itself", inf, inf, true},
      {"opposite infinities", inf, -inf, false},
      {"infinity and max", inf, DBL_MAX, false},
      {"NaN", nan, nan, false},
      {"NaN and number", nan, 1.0, false},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.label);
    EXPECT_EQ(utEqualWithinEps(r.a, r.b), r.equal);
    EXPECT_EQ(utEqualWithinEps(r.b, r.a), r.equal) << "must be symmetric";
  }
}

// Against the documented rule evaluated in long double on random pairs near
// the boundary.
TEST(HostUtil, EqualWithinEpsMatchesReference) {
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> exponent(-5, 12), unit(-1, 1);
  for (int i = 0; i < 20000; ++i) {
    const double a = std::pow(10.0, exponent(rng)) * (rng() % 2 ? 1 : -1);
    const double b = a + a * unit(rng) * 8 * DBL_EPSILON + unit(rng) * 8 * DBL_EPSILON * (rng() % 2);
    const long double scale = std::fmax(std::fmax(std::fabs(a), std::fabs(b)), 1.0);
    const bool expected =
        std::fabs(static_cast<long double>(a) - b) <= 4 * static_cast<long double>(DBL_EPSILON) * scale;
    ASSERT_EQ(utEqualWithinEps(a, b), expected) << a << " vs " << b;
  }
}

// ---- Interrupts ------------------------------------------------------------------------------

TEST(HostUtil, DeferralHidesThePendingInterruptUntilTheOutermostEnds) {
  utSetInterruptPending(true);
  {
    utInterruptDeferral outer;
    EXPECT_FALSE(utIsInterruptPending());
    {
      utInterruptDeferral inner;
      EXPECT_FALSE(utIsInterruptPending());
    }
    EXPECT_FALSE(utIsInterruptPending()) << "still inside the outer deferral";
    utThrowIfInterruptPending();  // deferred: no error
  }
  EXPECT_TRUE(utIsInterruptPending());
  EXPECT_EQ(errorId([] { utThrowIfInterruptPending(); }), kHostInterruptId);
  EXPECT_FALSE(utIsInterruptPending()) << "raising the interrupt clears it";
}

TEST(HostUtil, CountdownInterruptsAtTheChosenQuery) {
  utSetInterruptPending(false);
  utSetInterruptAfterQueries(3);
  EXPECT_FALSE(utIsInterruptPending());
  {
    utInterruptDeferral deferral;
    EXPECT_FALSE(utIsInterruptPending());  // counts although deferred
  }
  EXPECT_TRUE(utIsInterruptPending());
  EXPECT_TRUE(utIsInterruptPending()) << "stays pending until cleared";
  utSetInterruptPending(false);
  utSetInterruptAfterQueries(2);
  utSetInterruptAfterQueries(0);  // off again
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(utIsInterruptPending());
}

// ---- Console ---------------------------------------------------------------------------------

TEST(HostUtil, ConsoleCapturesNestAndRestore) {
  std::string sunk;
  hostSetConsoleSink([&](std::string_view s) { sunk.append(s); });
  utPrintf("a%d", 1);
  {
    HostConsoleCapture outer;
    utPrintf("b");
    {
      HostConsoleCapture inner;
      EXPECT_EQ(utPrintf("c%s", "!"), 2);
      EXPECT_EQ(inner.text(), "c!");
    }
    utPrintf("d");
    EXPECT_EQ(outer.text(), "bd");
  }
  utPrintf("e");
  hostSetConsoleSink(nullptr);
  EXPECT_EQ(sunk, "a1e");
}

// ---- UTF ------------------------------------------------------------------------------------

TEST(HostUtil, UTF8ToUTF16Table) {
  struct Row {
    const char* label;
    std::string utf8;
    std::u16string utf16;
  };
  const Row rows[] = {
      {"ascii", "Ab", u"Ab"},
      {"two bytes", "\xC3\xA9", u"\u00E9"},
      {"three bytes", "\xE2\x82\xAC", u"\u20AC"},
      {"four bytes become a surrogate pair", "\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
      {"last code point", "\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
      {"lone continuation", "a\x80z", u"a\uFFFDz"},
      {"truncated at the end", "a\xE2\x82", u"a\uFFFD"},
      {"truncated before ascii", "\xE2\x82z", u"\uFFFDz"},
      {"overlong two-byte", "\xC0\xAF", u"\uFFFD\uFFFD"},
      {"overlong three-byte", "\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},
      {"encoded surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
      {"beyond U+10FFFF", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"invalid byte", "\xFF", u"\uFFFD"},
      {"embedded zero", std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.label);
    EXPECT_EQ(utUTF8ToUTF16(r.utf8), r.utf16);
  }
}

TEST(HostUtil, UTF16ToUTF8ReplacesLoneSurrogates) {
  EXPECT_EQ(utUTF16ToUTF8(u"\xD83D\xDE00"), "\xF0\x9F\x98\x80");
  EXPECT_EQ(utUTF16ToUTF8(std::u16string(1, char16_t(0xD83D))), "\xEF\xBF\xBD");
  EXPECT_EQ(utUTF16ToUTF8(u"\xDE00\xD83D"), "\xEF\xBF\xBD\xEF\xBF\xBD") << "reversed pair";
  EXPECT_EQ(utUTF16ToUTF8(u"x\xD800y"), "x\xEF\xBF\xBDy");
}

// Random code points through a plain reference encoder: UTF-8 -> UTF-16 ->
// UTF-8 is the identity and the UTF-16 length counts pairs for non-BMP.
TEST(HostUtil, UTFRoundTripsOnRandomText) {
  std::mt19937 rng(99);
  for (int trial = 0; trial < 500; ++trial) {
    std::string utf8;
    std::size_t units = 0;
    for (int k = 0; k < 20; ++k) {
      char32_t cp = rng() % 0x110000;
      if (cp >= 0xD800 && cp <= 0xDFFF) cp = 0x41;
      units += cp >= 0x10000 ? 2 : 1;
      // A lead byte carrying the high bits, then six bits per continuation byte.
      const int tail = cp < 0x80 ? 0 : cp < 0x800 ? 1 : cp < 0x10000 ? 2 : 3;
      const unsigned lead[] = {0x00, 0xC0, 0xE0, 0xF0};
      utf8 += static_cast<char>(lead[tail] | (cp >> (6 * tail)));
      for (int k = tail - 1; k >= 0; --k) utf8 += static_cast<char>(0x80 | ((cp >> (6 * k)) & 0x3F));
    }
    const std::u16string utf16 = utUTF8ToUTF16(utf8);
    ASSERT_EQ(utf16.size(), units);
    ASSERT_EQ(utUTF16ToUTF8(utf16), utf8);
  }
}

// ---- Text arrays ---------------------------------------------------------------------------

TEST(HostUtil, CharMatricesArePaddedWithBlanksInCodeUnits) {
  const char* rows[] = {"ab", "\xF0\x9F\x98\x80xyz", nullptr};
  zrArray_tag* m = zrCreateCharMatrixFromStrings(3, rows);
  EXPECT_EQ(zrGetM(m), 3u);
  EXPECT_EQ(zrGetN(m), 5u);  // the emoji takes two code units
  const std::vector<std::u16string> back = zrCharMatrixToStrings_UTF16(m);
  ASSERT_EQ(back.size(), 3u);
  EXPECT_EQ(back[0], u"ab   ");
  EXPECT_EQ(back[1], u"\xD83D\xDE00xyz");
  EXPECT_EQ(back[2], u"     ");
  // Column-major: the first column reads down the rows.
  char* text = zrArrayToString(m);
  // The column splits the surrogate pair, so its high half stands alone.
  EXPECT_EQ(std::string(text).substr(0, 5), "a\xEF\xBF\xBD ");
  zrFree(text);
  zrDestroyArray(m);

  zrArray_tag* empty = zrCreateCharMatrixFromStrings(0, nullptr);
  EXPECT_EQ(zrGetNumberOfElements(empty), 0u);
  EXPECT_TRUE(zrCharMatrixToStrings_UTF16(empty).empty());
  zrDestroyArray(empty);
}

TEST(HostUtil, StringsRoundTripThroughCharRows) {
  zrArray_tag* s = zrCreateString("caf\xC3\xA9 \xF0\x9F\x98\x80");
  EXPECT_EQ(zrGetM(s), 1u);
  EXPECT_EQ(zrGetN(s), 7u);
  char* text = zrArrayToString(s);
  EXPECT_STREQ(text, "caf\xC3\xA9 \xF0\x9F\x98\x80");
  zrFree(text);
  zrArray_tag* same = zrCreateString_UTF16(u"caf\u00E9 \xD83D\xDE00");
  EXPECT_TRUE(zrArrayEqual(s, same));
  zrArray_tag* none = zrCreateString(nullptr);
  zrArray_tag* blank = zrCreateString("");
  EXPECT_EQ(zrGetM(none), 0u);
  EXPECT_EQ(zrGetM(blank), 1u);
  EXPECT_EQ(zrGetN(blank), 0u);
  zrArray_tag* number = zrCreateDoubleScalar(1);
  EXPECT_EQ(zrArrayToString(number), nullptr);
  for (zrArray_tag* a : {s, same, none, blank, number}) zrDestroyArray(a);
}

}  // namespace
