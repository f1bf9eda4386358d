// Errors, warnings and the message catalogue.

#include <gtest/gtest.h>

#include <string>

#include "host_test_support.h"

namespace {

using host_test::raised;

TEST(HostMessages, CatalogueTextsAreFormattedWithTheirArguments) {
  struct Row {
    const char* label;
    std::string actual;
    std::string expected;
  };
  const Row rows[] = {
      {"string argument", hostFormatMessage("Tavrix::host::UnknownFeature", "WMProfileClear"),
       "There is no feature named 'WMProfileClear'."},
      {"size arguments", hostFormatMessage("Tavrix::host::IndexOutOfRange", std::size_t{7}, std::size_t{4}),
       "Index 7 is out of range for an array of 4 elements."},
      {"int arguments", hostFormatMessage("Tavrix::host::SyntaxError", 3, 14, "expected ']'"),
       "Syntax error at line 3, column 14: expected ']'"},
      {"no arguments", hostFormatMessage(kHostInterruptId), "Operation terminated by user."},
      {"unformatted text", hostCatalogText("Tavrix::host::UnknownFeature"),
       "There is no feature named '%s'."},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.label);
    EXPECT_EQ(r.actual, r.expected);
  }
}

TEST(HostMessages, UnknownIdentifiersStillReadAsSentences) {
  EXPECT_FALSE(hostCatalogHas("Tavrix::gui::nowhere::Nothing"));
  EXPECT_FALSE(hostCatalogHas(""));
  EXPECT_FALSE(hostCatalogHas(nullptr));
  EXPECT_TRUE(hostCatalogHas(kHostOutOfMemoryId));
  // Arguments of an unknown message are ignored, not read with a guessed type.
  const std::string text = hostFormatMessage("Tavrix::gui::nowhere::Nothing", 42);
  EXPECT_NE(text.find("Tavrix::gui::nowhere::Nothing"), std::string::npos) << text;
  EXPECT_EQ(text, hostCatalogText("Tavrix::gui::nowhere::Nothing"));
  // Every locale reads the English text.
  EXPECT_EQ(hostCatalogText(kHostInterruptId, std::locale::classic()), "Operation terminated by user.");
}

TEST(HostMessages, ErrorsCarryIdentifierAndText) {
  const HostError e =
      raised([] { zrErrMsgIdAndTxt("Tavrix::gui::test::Explicit", "value %d of %s", 5, "ten"); });
  EXPECT_EQ(e.identifier(), "Tavrix::gui::test::Explicit");
  EXPECT_EQ(e.message(), "value 5 of ten");
  EXPECT_STREQ(e.what(), "value 5 of ten");
  const HostError f = raised([] { zrErrMsgId("Tavrix::host::UnknownField", "width"); });
  EXPECT_EQ(f.identifier(), "Tavrix::host::UnknownField");
  EXPECT_EQ(f.message(), "The struct has no field named 'width'.");
  // A long text is not cut at any internal buffer size.
  const std::string longText(1000, 'x');
  EXPECT_EQ(raised([&] { zrErrMsgIdAndTxt("a:b", "%s|", longText.c_str()); }).message(), longText + "|");
}

TEST(HostMessages, WarningsPrintAndAreRecordedInOrder) {
  hostClearRecordedWarnings();
  std::string printed;
  {
    HostConsoleCapture capture;
    zrWarningMsgId("Tavrix::host::UnknownFeature", "first");
    zrWarningMsgId("Tavrix::gui::nowhere::Unlisted");
    printed = capture.text();
  }
  EXPECT_EQ(printed.substr(0, 44), "Warning: There is no feature named 'first'.\n");
  const std::vector<HostWarning> warnings = hostRecordedWarnings();
  ASSERT_EQ(warnings.size(), 2u);
  EXPECT_EQ(warnings[0].identifier, "Tavrix::host::UnknownFeature");
  EXPECT_EQ(warnings[0].message, "There is no feature named 'first'.");
  EXPECT_EQ(warnings[1].identifier, "Tavrix::gui::nowhere::Unlisted");
  hostClearRecordedWarnings();
  EXPECT_TRUE(hostRecordedWarnings().empty());
}

TEST(HostMessages, FeaturesAreCalledByName) {
  int calls = 0;
  hostRegisterFeature("TestDouble", [&](int x) {
    ++calls;
    return 2 * x;
  });
  EXPECT_TRUE(hostHasFeature("TestDouble"));
  EXPECT_EQ(hostCallFeature("TestDouble", 21), 42);
  hostRegisterFeature("TestDouble", [](int x) { return x + 1; });  // replaces
  EXPECT_EQ(hostCallFeature("TestDouble", 1), 2);
  EXPECT_EQ(calls, 1);
  hostUnregisterFeature("TestDouble");
  EXPECT_FALSE(hostHasFeature("TestDouble"));
  const HostError e = raised([] { hostCallFeature("TestDouble", 0); });
  EXPECT_EQ(e.identifier(), "Tavrix::host::UnknownFeature");
  EXPECT_EQ(e.message(), "There is no feature named 'TestDouble'.");
}

// A library's registered texts are copied, never override the host's own, and
// the first registration of an identifier wins; malformed entries are skipped.
TEST(HostMessages, RegisteredTextsAreCopiedAndNeverOverride) {
  std::string id = "Tavrix::test::registered::Copied";
  std::string text = "Value %d was copied.";
  const HostMessageText first[] = {
      {id.c_str(), text.c_str()}, {"Tavrix::host::Interrupted", "An impostor."}, {nullptr, "No identifier."},
      {"", "Empty identifier."},  {"Tavrix::test::registered::NoText", nullptr},
  };
  hostRegisterMessages(first, std::size(first));
  const HostMessageText second[] = {{"Tavrix::test::registered::Copied", "A later text."}};
  hostRegisterMessages(second, std::size(second));
  hostRegisterMessages(nullptr, 3);
  id.assign(id.size(), 'x');
  text.assign(text.size(), 'x');

  EXPECT_EQ(hostFormatMessage("Tavrix::test::registered::Copied", 7), "Value 7 was copied.");
  EXPECT_EQ(hostCatalogText("Tavrix::host::Interrupted"), "Operation terminated by user.");
  EXPECT_FALSE(hostCatalogHas("Tavrix::test::registered::NoText"));
  EXPECT_FALSE(hostCatalogHas(""));
}

}  // namespace
