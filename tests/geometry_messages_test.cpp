// The message catalogue: every declared message has its text in the host's
// catalogue once the library is loaded, each text's printf conversions read
// exactly the declared arguments, and the compile-time checker that holds the
// declarations to this catches the slips it is there for.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "geometry/messages_p.h"
#include "host_test_support.h"
#include "qvgui/geometry.h"

namespace {

using namespace qvgui_messages;

// The argument codes a text asks for, read with string searches rather than
// the checker's own scanner; "?" marks a conversion nothing may pass.
std::string conversionCodes(const std::string& text) {
  std::string codes;
  for (std::size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at)) {
    at = text.find_first_not_of("-+ #0123456789.", at + 1);
    if (at == std::string::npos) return codes + '?';
    std::string length;
    for (const char* l : {"hh", "ll", "h", "l", "z", "j", "t", "L"}) {
      if (text.compare(at, std::strlen(l), l) == 0) {
        length = l;
        break;
      }
    }
    at += length.size();
    const char type = at < text.size() ? text[at++] : '\0';
    if (type == '%' && length.empty() && text[at - 2] == '%') continue;
    if (std::strchr("di", type) != nullptr) {
      codes += length.empty() ? 'i' : length == "l" ? 'l' : length == "ll" ? 'x' : '?';
    } else if (std::strchr("uxXo", type) != nullptr) {
      codes += length.empty()   ? 'u'
               : length == "l"  ? 'm'
               : length == "ll" ? 'y'
               : length == "z"  ? ArgCode<std::size_t>::value
                                : '?';
    } else if (std::strchr("fFeEgGaA", type) != nullptr) {
      codes += length.empty() ? 'd' : '?';
    } else if (type == 's') {
      codes += length.empty() ? 's' : '?';
    } else {
      codes += '?';
    }
  }
  return codes;
}

TEST(Messages, EveryDeclaredTextReachesTheHostAndReadsItsArguments) {
  ASSERT_GT(std::size(kDeclared), 0u);
  // User exceptions read their text from the catalogue, so this also keeps
  // the library loaded: its texts arrive only with it.
  EXPECT_STREQ(gui_objects::NullArrayException().message().c_str(), nullArrayMessage::text);
  for (const Declared& m : kDeclared) {
    SCOPED_TRACE(m.name);
    EXPECT_EQ(conversionCodes(m.text), m.argCodes);
    ASSERT_TRUE(hostCatalogHas(m.identifier));
    // Inline texts go with the raise; the catalogue entry under the same
    // identifier is another message.
    if (m.owner != Owner::Inline) {
      EXPECT_EQ(hostCatalogText(m.identifier), m.text);
    }
  }
}

TEST(Messages, IdentifiersAreDeclaredOncePerOwnText) {
  for (std::size_t i = 0; i < std::size(kDeclared); ++i) {
    for (std::size_t j = i + 1; j < std::size(kDeclared); ++j) {
      if (kDeclared[i].owner == Owner::Inline || kDeclared[j].owner == Owner::Inline) continue;
      EXPECT_STRNE(kDeclared[i].identifier, kDeclared[j].identifier) << kDeclared[i].name;
    }
  }
}

TEST(Messages, TypedRaisesCarryIdentifierAndFormattedText) {
  struct Case {
    const char* label;
    HostError error;
    const char* identifier;
    const char* message;
  };
  const Case cases[] = {
      {"host text, size argument", host_test::raised([] { raise::outOfMemory(std::size_t{4096}); }),
       "Tavrix::host::OutOfMemory", "Out of memory: a request for 4096 bytes could not be satisfied."},
      {"library text, two ints", host_test::raised([] { raise::handleBadArguments(-3, 9); }),
       "Tavrix::gui::handle::BadArguments",
       "Invalid handle value -3: integer handles must lie between 0 and 9."},
      {"inline text", host_test::raised([] { raise::handleValueExceedsMaximum(7, 6); }),
       "Tavrix::gui::handle::BadArguments", "Handle value 7 exceeds maximum allowable value of 6"},
      {"string argument", host_test::raised([] { raise::createCallback("no good"); }),
       "Tavrix:GUI:CreateCallback", "no good"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(c.error.identifier(), c.identifier);
    EXPECT_EQ(c.error.message(), c.message);
  }
}

TEST(Messages, WarningsAreRecordedWithTheirText) {
  hostClearRecordedWarnings();
  warn::patchFacesElementExceedsVerticesLength(2.5, 3ull, 4ull, 5ull);
  const auto warnings = hostRecordedWarnings();
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0].identifier, id::patchFacesElementExceedsVerticesLength);
  EXPECT_EQ(
      warnings[0].message,
      "Faces entry 2.5 at position 3 of face 4 is not a vertex number between 1 and 5; the face is skipped.");
  hostClearRecordedWarnings();
}

// The checker runs at compile time; these rows pin what it accepts.
static_assert(formatMatches<>("no arguments, 100%% sure"));
static_assert(formatMatches<std::size_t>("%zu bytes"));
static_assert(formatMatches<int, int>("%d of %3d"));
static_assert(formatMatches<double, unsigned long long>("%.2g at %llu"));
static_assert(formatMatches<const char*>("'%-8s'"));
static_assert(!formatMatches<int>("%zu"), "an int read as size_t");
static_assert(!formatMatches<unsigned long long>("%lu"), "unsigned long long read as unsigned long");
static_assert(!formatMatches<int>("%d %d"), "too few arguments");
static_assert(!formatMatches<int, int>("%d"), "too many arguments");
static_assert(!formatMatches<double>("%d"), "a double read as int");
static_assert(!formatMatches<int>("%*d"), "a '*' width takes an argument of its own");
static_assert(!formatMatches<int>("%q"), "an unknown conversion");
static_assert(!formatMatches<>("trailing %"), "a lone '%' at the end");
static_assert(!formatMatches<const char*>("%ls"), "a wide string");

}  // namespace
