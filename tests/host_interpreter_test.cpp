// The interpreter: grammar and precedence, strings, error(), registered
// functions and handles, undefined names, interrupts and the host services
// around it.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "host_test_support.h"

namespace {

using host_test::Array;

class HostInterpreter : public ::testing::Test {
 protected:
  void SetUp() override {
    hostClearWorkspace();
    utSetInterruptPending(false);
    baseline_ = hostLiveArrayCount();
  }
  void TearDown() override {
    hostClearWorkspace();
    hostSetInterruptsEnabled(false);
    utSetInterruptPending(false);
    EXPECT_EQ(hostLiveArrayCount(), baseline_) << "host arrays leaked";
  }

  static Array variable(const char* name) { return Array(hostGetVariable(name)); }

  static std::vector<double> doubles(const zrArray_tag* a) {
    EXPECT_TRUE(zrIsDouble(a)) << zrGetClassName(a);
    if (!zrIsDouble(a)) return {};
    return {zrGetPr(a), zrGetPr(a) + zrGetNumberOfElements(a)};
  }

  static std::string text(const zrArray_tag* a) {
    char* s = zrArrayToString(a);
    std::string out = s != nullptr ? s : "(not char)";
    zrFree(s);
    return out;
  }

  static ScriptException scriptError(const char* code) {
    try {
      hostEvalString(code);
    } catch (const ScriptException& e) {
      return e;
    }
    ADD_FAILURE() << "no ScriptException from: " << code;
    return {};
  }

  std::int64_t baseline_ = 0;
};

TEST_F(HostInterpreter, ExpressionsFollowPrecedenceAndLayout) {
  struct Row {
    const char* code;
    std::vector<zrSize> dims;
    std::vector<double> values;  // column-major
  };
  const Row rows[] = {
      {"1 + 2 * 3", {1, 1}, {7}},
      {"(1 + 2) * 3", {1, 1}, {9}},
      {"1 - 2 - 3", {1, 1}, {-4}},
      {"8 / 2 / 2", {1, 1}, {2}},
      {"2 - -3", {1, 1}, {5}},
      {"-2 * 3 + 1", {1, 1}, {-5}},
      {"1e-3 * 1000 + .5", {1, 1}, {1.5}},
      {"2.5e+1", {1, 1}, {25}},
      {"[1 -2]", {1, 2}, {1, -2}},
      {"[1 - 2]", {1, 1}, {-1}},
      {"[1 -2 + 3]", {1, 2}, {1, 1}},
      {"[1, 2; 3 4]", {2, 2}, {1, 3, 2, 4}},
      {"[1 2\n3 4]", {2, 2}, {1, 3, 2, 4}},
      {"[[1; 2] [3; 4]]", {2, 2}, {1, 2, 3, 4}},
      {"[1 2] .* [3 4] - [1 1] ./ 2", {1, 2}, {2.5, 7.5}},
      {"[2 4; 6 8] / 2", {2, 2}, {1, 3, 2, 4}},
      {"[]", {0, 0}, {}},
      {"[[] 1 []]", {1, 1}, {1}},
      {"zeros(2, 3) + 1", {2, 3}, {1, 1, 1, 1, 1, 1}},
      {"numel(ones(3))", {1, 1}, {9}},
      {"size(zeros(2, 3, 4))", {1, 3}, {2, 3, 4}},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.code);
    hostEvalString((std::string("r = ") + r.code).c_str());
    Array v = variable("r");
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(std::vector<zrSize>(zrGetDimensions(v.get()),
                                  zrGetDimensions(v.get()) + zrGetNumberOfDimensions(v.get())),
              r.dims);
    EXPECT_EQ(doubles(v.get()), r.values);
  }
}

TEST_F(HostInterpreter, SpecialNumbersAndIndexing) {
  hostEvalString(
      "a = Inf; b = -Inf; c = NaN; m = [10 20 30; 40 50 60]; x = m(2, 3); y = m(4); z = m([1 2], 1)");
  EXPECT_EQ(doubles(variable("a").get())[0], INFINITY);
  EXPECT_EQ(doubles(variable("b").get())[0], -INFINITY);
  EXPECT_TRUE(std::isnan(doubles(variable("c").get())[0]));
  EXPECT_EQ(doubles(variable("x").get()), std::vector<double>{60});
  EXPECT_EQ(doubles(variable("y").get()), std::vector<double>{50});
  EXPECT_EQ(doubles(variable("z").get()), (std::vector<double>{10, 40}));
  struct Row {
    const char* code;
    const char* id;
  };
  const Row bad[] = {
      {"m(0)", "Tavrix::host::BadSubscript"},
      {"m(7)", "Tavrix::host::BadSubscript"},
      {"m(1.5)", "Tavrix::host::BadSubscript"},
      {"m(3, 1)", "Tavrix::host::BadSubscript"},
      {"[1 2] + [1 2 3]", "Tavrix::host::SizeMismatch"},
      {"[1 2; 3]", "Tavrix::host::SizeMismatch"},
      {"@disp + 1", "Tavrix::host::UndefinedOperator"},
  };
  for (const Row& r : bad) {
    SCOPED_TRACE(r.code);
    EXPECT_EQ(scriptError(r.code).identifier(), r.id);
  }
}

TEST_F(HostInterpreter, StringsWithQuotesAndConcatenation) {
  hostEvalString("s = 'it''s'; d = \"say \"\"hi\"\"\"; e = ''; j = ['ab' 'cd']; k = ['ab'; 'cd']; p = 'a%b'");
  EXPECT_EQ(text(variable("s").get()), "it's");
  EXPECT_EQ(text(variable("d").get()), "say \"hi\"");
  EXPECT_EQ(zrGetNumberOfElements(variable("e").get()), 0u);
  EXPECT_EQ(text(variable("j").get()), "abcd");
  Array k = variable("k");
  EXPECT_EQ(zrGetM(k.get()), 2u);
  EXPECT_EQ(text(k.get()), "acbd");  // column-major
  EXPECT_EQ(text(variable("p").get()), "a%b") << "'%' inside a string is not a comment";
  hostEvalString("n = ['a' 1]");  // mixed: read as numbers
  EXPECT_EQ(doubles(variable("n").get()), (std::vector<double>{97, 1}));
}

TEST_F(HostInterpreter, SyntaxErrorsRunNothing) {
  const char* bad[] = {"x = 1; y = (2",  "x = 1; y = [1 2", "x = 1; y = 'open",
                       "x = 1; y = 1 +", "x = 1; y = 3x",   "x = 1; y = 1e",
                       "x = 1; y = #",   "x = 1; f(1,)",    "x = 1; 1 2"};
  for (const char* code : bad) {
    SCOPED_TRACE(code);
    hostClearWorkspace();
    EXPECT_EQ(scriptError(code).identifier(), "Tavrix::host::SyntaxError");
    EXPECT_EQ(variable("x"), nullptr) << "the first statement must not have run";
  }
  const ScriptException e = scriptError("a = 1\nb = [1 2");
  EXPECT_NE(e.message().find("line 2"), std::string::npos) << e.message();
}

TEST_F(HostInterpreter, CommentsContinuationsAndSeparators) {
  hostEvalString("a = 1, b = 2 % a comment; c = 3\n c = a + ...\n b;;\n\n");
  EXPECT_EQ(doubles(variable("c").get()), std::vector<double>{3});
  hostEvalString("7");
  EXPECT_EQ(doubles(variable("ans").get()), std::vector<double>{7});
}

TEST_F(HostInterpreter, ErrorWithAndWithoutIdentifier) {
  struct Row {
    const char* code;
    const char* id;
    const char* message;
  };
  const Row rows[] = {
      {"error('plain message')", "", "plain message"},
      {"error('lone: colon')", "", "lone: colon"},
      {"error('100%')", "", "100%"},
      {"error('my:id', 'value %d of %s', 3, 'four')", "my:id", "value 3 of four"},
      {"error('my:id:deep', 'no arguments')", "my:id:deep", "no arguments"},
      {"error('ratio: %g', 0.5)", "", "ratio: 0.5"},
      {"error('list %d,', [1 2 3])", "", "list 1,list 2,list 3,"},
      {"error('a:b', 'tab\\there')", "a:b", "tab\there"},
      {"error('x %d y %d', 1)", "", "x 1 y "},
      {"error('%d', 1.5)", "", "1.500000e+00"},
      {"error('%5.1f|%-4d|%s', 2.25, 7, 'z')", "", "  2.2|7   |z"},
      // %c of a value that is no code unit (once undefined behaviour).
      {"error('%c|%c|%c', 65, -65533, 70000)", "", "A|-6.553300e+04|7.000000e+04"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.code);
    const ScriptException e = scriptError(r.code);
    EXPECT_EQ(e.identifier(), r.id);
    EXPECT_EQ(e.message(), r.message);
    EXPECT_STREQ(e.what(), r.message);
  }
  hostEvalString("error('')");  // an empty message raises nothing
}

TEST_F(HostInterpreter, UndefinedNamesRaiseUndefinedFunction) {
  struct Row {
    const char* code;
    const char* name;
  };
  const Row rows[] = {{"nosuchthing", "nosuchthing"},
                      {"x = nosuchthing + 1", "nosuchthing"},
                      {"nosuchfunction(1, 2)", "nosuchfunction"},
                      {"feval('nope')", "nope"},
                      {"h = @nope; h(1)", "nope"}};
  for (const Row& r : rows) {
    SCOPED_TRACE(r.code);
    const ScriptException e = scriptError(r.code);
    EXPECT_EQ(e.identifier(), "Tavrix::host::UndefinedFunction");
    EXPECT_EQ(e.message(), std::string("Undefined function or variable '") + r.name + "'.");
  }
}

TEST_F(HostInterpreter, RegisteredFunctionsHandlesAndFeval) {
  hostRegisterFunction("twice", [](int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
    if (nrhs != 1) zrErrMsgIdAndTxt("test:twice:args", "twice needs one argument, got %d", nrhs);
    plhs[0] = zrCreateDoubleScalar(2 * zrGetPr(prhs[0])[0]);
  });
  hostEvalString(
      "a = twice(4); h = @twice; b = h(5); c = feval(h, 6); d = feval('twice', 7); e = twice(twice(1))");
  for (const auto& [name, want] : {std::pair{"a", 8.0}, {"b", 10.0}, {"c", 12.0}, {"d", 14.0}, {"e", 4.0}}) {
    EXPECT_EQ(doubles(variable(name).get()), std::vector<double>{want}) << name;
  }
  Array h = variable("h");
  EXPECT_TRUE(zrIsFunctionHandle(h.get()));
  EXPECT_STREQ(zrGetFunctionName(h.get()), "twice");

  // From C++: by handle, by name as char array, by name.
  Array arg(zrCreateDoubleScalar(21));
  const zrArray_tag* args[] = {arg.get()};
  zrArray_tag* out = nullptr;
  Array name(zrCreateString("twice"));
  for (const zrArray_tag* f : {h.get(), name.get()}) {
    hostCallFunction(f, 1, &out, 1, args);
    EXPECT_EQ(zrGetPr(out)[0], 42);
    zrDestroyArray(out);
  }

  // A HostError inside becomes a ScriptException naming the function.
  const ScriptException e = scriptError("twice(1, 2)");
  EXPECT_EQ(e.identifier(), "test:twice:args");
  EXPECT_EQ(e.message(), "twice needs one argument, got 2");
  EXPECT_EQ(e.functionName(), "twice");
  try {
    hostCallFunctionByName("twice", 1, &out, 0, nullptr);
    FAIL() << "no error";
  } catch (const ScriptException& x) {
    EXPECT_EQ(x.functionName(), "twice");
    EXPECT_EQ(out, nullptr);
  }
  hostUnregisterFunction("twice");
  EXPECT_FALSE(hostHasFunction("twice"));
  EXPECT_EQ(scriptError("twice(1)").identifier(), "Tavrix::host::UndefinedFunction");
}

TEST_F(HostInterpreter, FailingFunctionsLeakNoOutputs) {
  hostRegisterFunction("halfway", [](int, zrArray_tag** plhs, int, const zrArray_tag* const*) {
    plhs[0] = zrCreateDoubleMatrix(3, 3);
    throw std::runtime_error("gave up");
  });
  const ScriptException e = scriptError("x = halfway()");
  EXPECT_EQ(e.identifier(), "Tavrix::host::FunctionFailed");
  EXPECT_EQ(e.message(), "gave up");
  EXPECT_EQ(e.functionName(), "halfway");
  hostUnregisterFunction("halfway");

  // Out of memory in the middle of a statement: the workspace keeps its old value.
  hostEvalString("v = [1 2 3]");
  for (std::int64_t budget = 0; budget < 6; ++budget) {
    HostAllocationFailureScope scope(budget);
    try {
      hostEvalString("v = [4 5] + 1");
    } catch (const ScriptException& x) {
      EXPECT_EQ(x.identifier(), kHostOutOfMemoryId);
    }
  }
  const std::vector<double> v = doubles(variable("v").get());
  EXPECT_TRUE(v == (std::vector<double>{1, 2, 3}) || v == (std::vector<double>{5, 6}));
}

TEST_F(HostInterpreter, ConsoleBuiltins) {
  HostConsoleCapture capture;
  hostEvalString(
      "disp('hello'); disp([1 2.5; -3 4]); disp(@sin); fprintf('%s=%d\\n', 'n', 5); "
      "fprintf(1, 'plain\\n'); n = fprintf('abc'); s = sprintf('%03d', 7); disp(s); disp(NaN)");
  EXPECT_EQ(capture.text(), "hello\n  1  2.5\n -3    4\n@sin\nn=5\nplain\nabc007\nNaN\n");
  EXPECT_EQ(doubles(variable("n").get())[0], 3);
}

TEST_F(HostInterpreter, IsequalAndSmallBuiltins) {
  hostEvalString(
      "a = isequal([1 2], [1 2]); b = isequal(NaN, NaN); c = isequal('a', 97); d = isequal(1, 1, 2); "
      "e = isempty([]); f = class('x'); g = func2str(str2func('@cos')); t = true; h = isequal(@f, @f)");
  struct Row {
    const char* name;
    bool value;
  };
  for (const Row& r : {Row{"a", true}, Row{"b", false}, Row{"c", true}, Row{"d", false}, Row{"e", true},
                       Row{"t", true}, Row{"h", true}}) {
    SCOPED_TRACE(r.name);
    Array v = variable(r.name);
    ASSERT_TRUE(zrIsLogical(v.get()));
    EXPECT_EQ(zrGetLogicals(v.get())[0], r.value);
  }
  EXPECT_EQ(text(variable("f").get()), "char");
  EXPECT_EQ(text(variable("g").get()), "cos");
}

TEST_F(HostInterpreter, PendingInterruptStopsEvaluationOnlyWhenEnabled) {
  utSetInterruptPending(true);
  hostEvalString("x = 1");  // disabled: runs, interrupt stays pending
  EXPECT_NE(variable("x"), nullptr);
  EXPECT_TRUE(utIsInterruptPending());
  hostSetInterruptsEnabled(true);
  hostClearWorkspace();
  EXPECT_EQ(host_test::errorId([] { hostEvalString("y = 1; z = 2"); }), kHostInterruptId);
  EXPECT_EQ(variable("y"), nullptr);
  EXPECT_FALSE(utIsInterruptPending());
  // The countdown lands inside a later statement: earlier ones have run.
  utSetInterruptAfterQueries(3);
  EXPECT_THROW(hostEvalString("p = 1; q = 2; r = 3; s = 4"), HostError);
  EXPECT_NE(variable("p"), nullptr);
  EXPECT_EQ(variable("s"), nullptr);
  utSetInterruptAfterQueries(0);
}

TEST_F(HostInterpreter, WorkspaceHoldsCopies) {
  Array v(zrCreateDoubleScalar(5));
  hostSetVariable("v", v.get());
  zrGetPr(v.get())[0] = 6;
  hostEvalString("w = v * 2");
  EXPECT_EQ(doubles(variable("w").get())[0], 10);
  Array got = variable("w");
  zrGetPr(got.get())[0] = 0;
  EXPECT_EQ(doubles(variable("w").get())[0], 10);
  hostSetVariable("w", nullptr);
  EXPECT_EQ(variable("w"), nullptr);
}

// Registered functions may run code themselves and change the workspace in
// the middle of a statement that uses it.
TEST_F(HostInterpreter, ReentrantEvaluation) {
  hostRegisterFunction("forget", [](int, zrArray_tag** plhs, int, const zrArray_tag* const*) {
    hostSetVariable("m", nullptr);
    plhs[0] = zrCreateDoubleScalar(1);
  });
  hostRegisterFunction("nested", [](int, zrArray_tag** plhs, int, const zrArray_tag* const*) {
    hostEvalString("inner = outer + 1");
    plhs[0] = hostGetVariable("inner");
  });
  hostEvalString("m = [1 2 3]");
  const ScriptException e = scriptError("y = m(forget())");
  EXPECT_EQ(e.identifier(), "Tavrix::host::UndefinedFunction") << "m is no longer a variable";
  hostEvalString("outer = 41; r = nested() * 2");
  EXPECT_EQ(doubles(variable("r").get())[0], 84);
  const ScriptException n = scriptError("outer = @sin; nested()");
  EXPECT_EQ(n.identifier(), "Tavrix::host::UndefinedOperator");
  hostUnregisterFunction("forget");
  hostUnregisterFunction("nested");
}

TEST_F(HostInterpreter, UnhandledReportsAndFlags) {
  hostClearUnhandledExceptions();
  HostConsoleCapture capture;
  hostReportUnhandledException(ScriptException("a:b", "went wrong").withFunctionName("myCallback"));
  hostReportUnhandledException(ScriptException("", "bare"));
  hostReportUnhandledInterrupt();
  EXPECT_EQ(capture.text(), "Error in myCallback: went wrong\nError: bare\nOperation terminated by user.\n");
  const std::vector<ScriptException> reported = hostUnhandledExceptions();
  ASSERT_EQ(reported.size(), 2u);
  EXPECT_EQ(reported[0].identifier(), "a:b");
  EXPECT_EQ(reported[0].functionName(), "myCallback");
  EXPECT_EQ(hostUnhandledInterruptCount(), 1u);
  hostClearUnhandledExceptions();
  EXPECT_TRUE(hostUnhandledExceptions().empty());
  EXPECT_EQ(hostUnhandledInterruptCount(), 0u);
  // Each call returns the previous setting.
  EXPECT_FALSE(hostSetInterruptsEnabled(true));
  EXPECT_TRUE(hostSetInterruptsEnabled(false));
}

}  // namespace
