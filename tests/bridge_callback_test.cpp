// Callback objects run for real through the reference interpreter: kinds,
// comparison, conversion back, hooks, errors, interrupts and re-entrant
// destruction.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "bridge_test_support.h"

namespace {

using namespace bridge_test;

struct HookLog {
  int created = 0;
  int entered = 0;
  int left = 0;
  int attached = 0;
  int detached = 0;
  std::vector<MCallback*> detachedCallbacks;
};
HookLog g_hooks;
int g_hookToken = 0;

ZrArrayPtr g_currentObject;
zrArray_tag* getObject() { return g_currentObject ? zrDuplicateArray(g_currentObject.get()) : nullptr; }
void setObject(const zrArray_tag* object) {
  g_currentObject.reset(object ? zrDuplicateArray(object) : nullptr);
}

zrArray_tag* str(const char* text) { return zrCreateString(text); }
zrArray_tag* fn(const char* name) { return zrCreateFunctionHandle(name); }
zrArray_tag* num(double value) { return zrCreateDoubleScalar(value); }

// What the registered function "record" saw on each call.
std::vector<std::vector<std::string>> g_calls;

std::string describe(const zrArray_tag* a) {
  if (a == nullptr) return "<null>";
  if (zrIsChar(a)) return "'" + charText(a) + "'";
  if (zrIsDouble(a) && zrGetNumberOfElements(a) == 1) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", zrGetPr(a)[0]);
    return buffer;
  }
  return zrGetClassName(a);
}

class BridgeCallback : public ::testing::Test {
 protected:
  void SetUp() override {
    g_hooks = HookLog{};
    g_calls.clear();
    hostClearUnhandledExceptions();
    hostRegisterFunction("record", [](int, zrArray_tag**, int nrhs, const zrArray_tag* const* prhs) {
      std::vector<std::string> args;
      for (int k = 0; k < nrhs; ++k) args.push_back(describe(prhs[k]));
      args.push_back(std::string("current=") + describe(g_currentObject.get()));
      g_calls.push_back(args);
    });
    live_ = hostLiveArrayCount();
  }
  void TearDown() override {
    gui_set_mcallback_hooks(nullptr, nullptr, nullptr, nullptr, nullptr);
    MCallbackRegisterGetCallbackObjectFcn(nullptr);
    MCallbackRegisterSetCallbackObjectFcn(nullptr);
    g_currentObject.reset();
    hostUnregisterFunction("record");
    hostClearWorkspace();
    hostSetTerminating(false);
    utSetInterruptPending(false);
    EXPECT_EQ(hostLiveArrayCount(), live_) << "host arrays leaked";
  }
  static void installHooks() {
    gui_set_mcallback_hooks(
        []() -> void* {
          ++g_hooks.created;
          return &g_hookToken;
        },
        [](void*) { ++g_hooks.entered; }, [](void*) { ++g_hooks.left; },
        [](void* data, MCallback*) {
          EXPECT_EQ(data, &g_hookToken);
          ++g_hooks.attached;
        },
        [](void*, MCallback* cb) {
          ++g_hooks.detached;
          g_hooks.detachedCallbacks.push_back(cb);
        });
  }

  std::int64_t live_ = 0;
};

// ---- Kinds and conversion back ---------------------------------------------------

TEST_F(BridgeCallback, ValuesConvertBackToTheirForms) {
  enum class Back { EmptyString, SameString, Handle, Cell };
  struct Case {
    const char* label;
    ZrArrayPtr value;
    bool empty;
    Back back;
    std::size_t cells;
  };
  std::vector<Case> cases;
  cases.push_back({"null", ZrArrayPtr(), true, Back::EmptyString, 0});
  cases.push_back({"empty double", ZrArrayPtr(zrCreateDoubleMatrix(0, 0)), true, Back::EmptyString, 0});
  cases.push_back({"text", ZrArrayPtr(str("record(1)")), false, Back::SameString, 0});
  cases.push_back({"handle", ZrArrayPtr(fn("record")), false, Back::Handle, 0});
  cases.push_back({"cell of a handle", cellOf({fn("record")}), false, Back::Handle, 0});
  cases.push_back({"cell of a name", cellOf({str("record")}), false, Back::Cell, 1});
  cases.push_back({"name and arguments", cellOf({str("record"), num(1), str("x")}), false, Back::Cell, 3});
  cases.push_back({"handle and argument", cellOf({fn("record"), num(2)}), false, Back::Cell, 2});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    MCallback* cb = MatrixToMCallback(c.value.get());
    ASSERT_NE(cb, nullptr);
    EXPECT_EQ(cb->isEmpty(), c.empty);
    EXPECT_EQ(IsMCallbackExecutable(cb), !c.empty);
    ZrArrayPtr back(MCallbackToMatrix(cb));
    switch (c.back) {
      case Back::EmptyString:
        EXPECT_TRUE(zrIsChar(back.get()));
        EXPECT_TRUE(zrIsEmpty(back.get()));
        break;
      case Back::SameString:
        EXPECT_TRUE(zrArrayEqual(back.get(), c.value.get()));
        break;
      case Back::Handle:
        ASSERT_TRUE(zrIsFunctionHandle(back.get()));
        EXPECT_STREQ(zrGetFunctionName(back.get()), "record");
        break;
      case Back::Cell:
        ASSERT_TRUE(zrIsCell(back.get()));
        EXPECT_EQ(zrGetM(back.get()), c.cells);
        EXPECT_EQ(zrGetN(back.get()), 1u);
        for (std::size_t k = 0; k < c.cells; ++k) {
          EXPECT_TRUE(zrArrayEqual(zrGetCell(back.get(), k), zrGetCell(c.value.get(), k))) << k;
        }
        break;
    }
    DestroyMCallback(cb);
  }
  ZrArrayPtr none(MCallbackToMatrix(nullptr));
  EXPECT_TRUE(zrIsChar(none.get()));
  EXPECT_TRUE(zrIsEmpty(none.get()));
}

TEST_F(BridgeCallback, ValuesThatAreNotCallbacks) {
  const std::string kMessage =
      "Value must be a string, a function handle, or a cell array containing string or function handle";
  const char* field = "f";
  std::vector<ZrArrayPtr> bad;
  bad.emplace_back(num(3));
  bad.emplace_back(zrCreateStructMatrix(1, 1, 1, &field));
  bad.push_back(cellOf({num(1), str("x")}));
  bad.push_back(cellOf({zrCreateCellMatrix(1, 1), num(2)}));
  for (const ZrArrayPtr& value : bad) {
    SCOPED_TRACE(zrGetClassName(value.get()));
    EXPECT_THROW((void)new MCallback(value.get()), MCallbackValueException);
    const HostError e = raised([&] { (void)MatrixToMCallback(value.get()); });
    EXPECT_EQ(e.identifier(), "Tavrix:GUI:CreateCallback");
    EXPECT_EQ(e.message(), kMessage);
  }
}

TEST_F(BridgeCallback, Equality) {
  auto make = [](double extra) {
    ZrArrayPtr value = cellOf({str("record"), str("a"), num(extra)});
    return MatrixToMCallback(value.get());
  };
  MCallback* a = make(1);
  MCallback* b = make(1);
  MCallback* c = make(2);
  MCallback* text = StringToMCallback("record");
  MCallback* empty = StringToMCallback("");
  MCallback* none = StringToMCallback(nullptr);
  EXPECT_TRUE(CompareMCallback(a, b));
  EXPECT_FALSE(CompareMCallback(a, c));
  EXPECT_FALSE(CompareMCallback(a, text));     // same word, one a name, one text
  EXPECT_TRUE(CompareMCallback(empty, none));  // null text reads as ""
  EXPECT_FALSE(a->isEqual(nullptr));

  // NaN arguments never compare equal, even to themselves.
  ZrArrayPtr nanValue = cellOf({str("record"), num(std::nan(""))});
  MCallback* withNan = MatrixToMCallback(nanValue.get());
  EXPECT_FALSE(withNan->isEqual(withNan));

  EXPECT_TRUE(CompareMCallback(nullptr, nullptr));
  EXPECT_TRUE(CompareMCallback(nullptr, empty));
  EXPECT_TRUE(CompareMCallback(none, nullptr));
  EXPECT_FALSE(CompareMCallback(nullptr, a));
  EXPECT_FALSE(CompareMCallback(text, nullptr));
  hostSetTerminating(true);
  EXPECT_TRUE(CompareMCallback(nullptr, a));
  EXPECT_FALSE(IsMCallbackExecutable(a));
  hostSetTerminating(false);

  MCallback* copy = CopyMCallback(a);
  EXPECT_NE(copy, a);
  EXPECT_TRUE(CompareMCallback(copy, a));
  EXPECT_NE(copy->getOptionalArgs()[0], a->getOptionalArgs()[0]);  // a copy of its own
  EXPECT_EQ(copy->getReferenceCount(), 1);
  EXPECT_EQ(CopyMCallback(nullptr), nullptr);
  for (MCallback* cb : {a, b, c, text, empty, none, withNan, copy}) DestroyMCallback(cb);
  DestroyMCallback(nullptr);
}

// ---- Execution ----------------------------------------------------------------------

TEST_F(BridgeCallback, RunsTextNamesAndHandles) {
  installHooks();
  ZrArrayPtr source(str("src"));
  ZrArrayPtr event(num(9));
  struct Case {
    const char* label;
    ZrArrayPtr value;
    std::vector<std::string> args;
  };
  std::vector<Case> cases;
  cases.push_back({"text", ZrArrayPtr(str("record(1, 'two')")), {"1", "'two'"}});
  cases.push_back({"handle", ZrArrayPtr(fn("record")), {"'src'", "9"}});
  cases.push_back(
      {"name with arguments", cellOf({str("record"), num(7), str("x")}), {"'src'", "9", "7", "'x'"}});
  cases.push_back({"handle with argument", cellOf({fn("record"), num(5)}), {"'src'", "9", "5"}});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    g_calls.clear();
    MCallback* cb = MatrixToMCallback(c.value.get());
    const int entered = g_hooks.entered;
    const std::size_t published = hostWorkspaceEventsPublished();
    hostSetInterruptsEnabled(false);
    EXPECT_TRUE(ExecuteMCallback(cb, source.get(), event.get()));
    EXPECT_FALSE(hostInterruptsEnabled());
    EXPECT_EQ(hostWorkspaceEventsPublished(), published + 1);
    EXPECT_EQ(g_hooks.entered, entered + 1);
    EXPECT_EQ(g_hooks.left, g_hooks.entered);
    ASSERT_EQ(g_calls.size(), 1u);
    std::vector<std::string> want = c.args;
    want.push_back("current=<null>");
    EXPECT_EQ(g_calls[0], want);
    EXPECT_EQ(cb->getReferenceCount(), 1);
    DestroyMCallback(cb);
  }
  EXPECT_TRUE(hostUnhandledExceptions().empty());
  EXPECT_EQ(g_hooks.created, g_hooks.attached);
  EXPECT_EQ(g_hooks.detached, g_hooks.created);
}

TEST_F(BridgeCallback, DoesNotRunWithoutHooksEmptyOrTerminating) {
  MCallback* cb = StringToMCallback("record(1)");
  EXPECT_FALSE(cb->execute(nullptr, nullptr));  // made before the hooks: no hook data
  DestroyMCallback(cb);
  installHooks();
  cb = StringToMCallback("record(1)");
  hostSetTerminating(true);
  EXPECT_FALSE(cb->execute(nullptr, nullptr));
  hostSetTerminating(false);
  MCallback* empty = StringToMCallback("");
  EXPECT_FALSE(ExecuteMCallback(empty, nullptr, nullptr));
  EXPECT_FALSE(ExecuteMCallback(nullptr, nullptr, nullptr));
  EXPECT_TRUE(g_calls.empty());
  EXPECT_EQ(g_hooks.entered, 0);
  cb->mcr_detach();
  EXPECT_FALSE(cb->execute(nullptr, nullptr));
  DestroyMCallback(empty);
  DestroyMCallback(cb);
  EXPECT_EQ(g_hooks.detached, 1);  // the detached one is no longer announced
}

TEST_F(BridgeCallback, ErrorsAreReportedOrSavedNeverThrown) {
  installHooks();
  MCallback* cb = StringToMCallback("error('my:id', 'boom %d', 3)");
  EXPECT_FALSE(cb->execute(nullptr, nullptr));
  std::vector<ScriptException> reported = hostUnhandledExceptions();
  ASSERT_EQ(reported.size(), 1u);
  EXPECT_EQ(reported[0].identifier(), "my:id");
  EXPECT_EQ(reported[0].message(), "boom 3");
  EXPECT_EQ(reported[0].functionName(), "error('my:id', 'boom %d', 3)");
  EXPECT_FALSE(cb->wasExceptionCaughtAndSaved());

  hostClearUnhandledExceptions();
  cb->setSaveException(true);
  EXPECT_FALSE(cb->execute(nullptr, nullptr));
  EXPECT_TRUE(hostUnhandledExceptions().empty());
  EXPECT_TRUE(cb->wasExceptionCaughtAndSaved());
  EXPECT_EQ(cb->getScriptException().identifier(), "my:id");
  cb->setSaveException(false);
  EXPECT_FALSE(cb->wasExceptionCaughtAndSaved());
  DestroyMCallback(cb);

  // A function that fails with a host error, called through a handle.
  hostRegisterFunction("failing", [](int, zrArray_tag**, int, const zrArray_tag* const*) {
    zrErrMsgIdAndTxt("test:failing", "no luck");
  });
  ZrArrayPtr handle(fn("failing"));
  cb = MatrixToMCallback(handle.get());
  EXPECT_FALSE(cb->execute(nullptr, nullptr));
  reported = hostUnhandledExceptions();
  ASSERT_EQ(reported.size(), 1u);
  EXPECT_EQ(reported[0].identifier(), "test:failing");
  EXPECT_EQ(reported[0].functionName(), "failing");
  DestroyMCallback(cb);
  hostUnregisterFunction("failing");

  // A syntax error and an undefined function take the same road.
  for (const char* text : {"record(", "nosuchfunction(1)"}) {
    hostClearUnhandledExceptions();
    cb = StringToMCallback(text);
    EXPECT_FALSE(cb->execute(nullptr, nullptr)) << text;
    EXPECT_EQ(hostUnhandledExceptions().size(), 1u) << text;
    DestroyMCallback(cb);
  }
  EXPECT_EQ(g_hooks.left, g_hooks.entered);
}

TEST_F(BridgeCallback, InterruptGoesToInterruptProcessing) {
  installHooks();
  hostClearUnhandledExceptions();
  MCallback* cb = StringToMCallback("record(1)");
  utSetInterruptPending(true);
  EXPECT_FALSE(cb->execute(nullptr, nullptr));
  EXPECT_EQ(hostUnhandledInterruptCount(), 1u);
  EXPECT_TRUE(hostUnhandledExceptions().empty());
  EXPECT_TRUE(g_calls.empty());
  EXPECT_FALSE(hostInterruptsEnabled());
  DestroyMCallback(cb);
}

MCallback* g_selfDestructing = nullptr;

TEST_F(BridgeCallback, DestroyedFromInsideItsOwnRun) {
  installHooks();
  hostRegisterFunction("destroyOwner", [](int, zrArray_tag**, int, const zrArray_tag* const*) {
    DestroyMCallback(g_selfDestructing);  // the owner lets go while the callback runs
    EXPECT_EQ(g_hooks.detached, 0);
    EXPECT_EQ(g_selfDestructing->getReferenceCount(), 1);
  });
  g_selfDestructing = StringToMCallback("destroyOwner()");
  EXPECT_TRUE(g_selfDestructing->execute(nullptr, nullptr));
  EXPECT_EQ(g_hooks.detached, 1);
  EXPECT_EQ(g_hooks.detachedCallbacks.back(), g_selfDestructing);
  EXPECT_EQ(g_hooks.left, 1);
  hostUnregisterFunction("destroyOwner");
}

TEST_F(BridgeCallback, SourceIsTheCurrentObjectWhileRunning) {
  installHooks();
  MCallbackRegisterGetCallbackObjectFcn(getObject);
  MCallbackRegisterSetCallbackObjectFcn(setObject);
  g_currentObject.reset(str("before"));
  ZrArrayPtr source(str("figure"));
  ZrArrayPtr value = cellOf({str("record")});
  MCallback* cb = MatrixToMCallback(value.get());
  EXPECT_TRUE(cb->execute(source.get(), nullptr));
  ASSERT_EQ(g_calls.size(), 1u);
  EXPECT_EQ(g_calls[0].back(), "current='figure'");
  ZrArrayPtr after(MCallback::getCallbackObject());
  EXPECT_EQ(describe(after.get()), "'before'");
  DestroyMCallback(cb);
}

TEST_F(BridgeCallback, AtSignMakesAHandleOnlyUnderHooks) {
  MCallback* plain = MCallback::createFromString("@record");
  EXPECT_STREQ(plain->getText(), "@record");
  EXPECT_EQ(plain->getFunctionPtr(), nullptr);
  installHooks();
  MCallback* handle = MCallback::createFromString("@record");
  EXPECT_EQ(handle->getText(), nullptr);
  ASSERT_NE(handle->getFunctionPtr(), nullptr);
  EXPECT_STREQ(zrGetFunctionName(handle->getFunctionPtr()), "record");
  EXPECT_TRUE(handle->execute(nullptr, nullptr));
  EXPECT_EQ(g_calls.size(), 1u);
  EXPECT_EQ(MCallback::createFromString(nullptr), nullptr);
  DestroyMCallback(plain);
  DestroyMCallback(handle);
}

TEST_F(BridgeCallback, AllocationFailuresLeakNothing) {
  ZrArrayPtr value = cellOf({str("record"), num(1), zrCreateDoubleMatrix(2, 2)});
  const std::int64_t live = hostLiveArrayCount();
  bool succeeded = false;
  for (std::int64_t budget = 0; !succeeded && budget < 64; ++budget) {
    SCOPED_TRACE(budget);
    try {
      HostAllocationFailureScope scope(budget);
      MCallback* cb = MatrixToMCallback(value.get());
      MCallback* copy = nullptr;
      zrArray_tag* back = nullptr;
      try {
        copy = CopyMCallback(cb);
        back = MCallbackToMatrix(copy);
      } catch (...) {
        DestroyMCallback(copy);
        DestroyMCallback(cb);
        throw;
      }
      zrDestroyArray(back);
      DestroyMCallback(copy);
      DestroyMCallback(cb);
      succeeded = true;
    } catch (const HostError& e) {
      EXPECT_EQ(e.identifier(), kHostOutOfMemoryId);
    }
    EXPECT_EQ(hostLiveArrayCount(), live);
  }
  EXPECT_TRUE(succeeded);
  HostAllocationFailureScope none(0);
  EXPECT_EQ(StringToMCallback("x"), nullptr);
}

}  // namespace
