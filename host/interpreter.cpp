// The interpreter's evaluator and services: registered functions, the base
// workspace, calls by name or handle, and the unhandled-error processing.

#include <cmath>
#include <cstring>
#include <map>
#include <new>

#include "interpreter_p.h"

using namespace qvhost;
using namespace qvhost::script;

namespace {

std::map<std::string, HostFunction, std::less<>>& functions() {
  static std::map<std::string, HostFunction, std::less<>> registry;
  return registry;
}

std::map<std::string, ArrayPtr, std::less<>>& workspace() {
  static std::map<std::string, ArrayPtr, std::less<>> variables;
  return variables;
}

bool g_terminating = false;
bool g_interruptsEnabled = false;
std::vector<ScriptException> g_unhandled;
std::size_t g_unhandledInterrupts = 0;
std::size_t g_workspacePublications = 0;

const char* orEmpty(const char* s) { return s != nullptr ? s : ""; }

ArrayPtr duplicate(const zrArray_tag* a) { return ArrayPtr(zrDuplicateArray(a)); }

// Evaluation recurses through nested expressions and, when a function runs
// code of its own, through the host's callers too; a count over both, and one
// over the calls alone, bound the stack whatever the texts and functions do.
int g_evaluationDepth = 0;
int g_callDepth = 0;

class EvaluationLevel {
 public:
  explicit EvaluationLevel(bool call = false) : call_(call) {
    if (g_evaluationDepth >= kMaxEvaluationDepth) {
      throwScriptError("Tavrix::host::RecursionLimit", kMaxEvaluationDepth);
    }
    if (call_ && g_callDepth >= kMaxCallDepth)
      throwScriptError("Tavrix::host::RecursionLimit", kMaxCallDepth);
    ++g_evaluationDepth;
    if (call_) ++g_callDepth;
  }
  ~EvaluationLevel() {
    --g_evaluationDepth;
    if (call_) --g_callDepth;
  }
  EvaluationLevel(const EvaluationLevel&) = delete;
  EvaluationLevel& operator=(const EvaluationLevel&) = delete;

 private:
  bool call_;
};

void checkInterrupt() {
  if (g_interruptsEnabled) utThrowIfInterruptPending();
}

// Runs `body`, turning every failure except the user's interrupt into the
// ScriptException callers of the interpreter expect.
template <typename Body>
void asScriptErrors(const std::string& functionName, Body&& body) {
  try {
    body();
  } catch (const ScriptException&) {
    throw;
  } catch (const HostError& e) {
    if (e.identifier() == kHostInterruptId) throw;
    throw ScriptException(e.identifier(), e.message(), functionName);
  } catch (const std::bad_alloc&) {
    throw ScriptException(kHostOutOfMemoryId, hostFormatMessage(kHostOutOfMemoryId, std::size_t{0}),
                          functionName);
  } catch (const std::exception& e) {
    throw ScriptException("Tavrix::host::FunctionFailed", e.what(), functionName);
  }
}

// ---- Evaluation ----------------------------------------------------------------------------

double* doubleData(zrArray_tag* a) { return zrGetPr(a); }

// A double copy of an arithmetic value.
ArrayPtr toDouble(const zrArray_tag* a, const char* op) {
  if (!isArithmetic(a)) throwScriptError("Tavrix::host::UndefinedOperator", op, zrGetClassName(a));
  ArrayPtr out(zrCreateNumericArray(a->dims.size(), a->dims.data(), zrDOUBLE_CLASS));
  const zrSize n = elementCount(a);
  double* d = doubleData(out.get());
  for (zrSize i = 0; i < n; ++i) d[i] = elementAsDouble(a, i);
  return out;
}

double applyOp(char op, double x, double y) {
  switch (op) {
    case '+':
      return x + y;
    case '-':
      return x - y;
    case '*':
      return x * y;
    default:
      return x / y;
  }
}

ArrayPtr arithmetic(const std::string& op, const zrArray_tag* a, const zrArray_tag* b) {
  ArrayPtr x = toDouble(a, op.c_str()), y = toDouble(b, op.c_str());
  const zrSize nx = elementCount(x.get()), ny = elementCount(y.get());
  // Scalars expand; otherwise the shapes must agree.
  if (nx != 1 && ny != 1 && x->dims != y->dims) throwScriptError("Tavrix::host::SizeMismatch", op.c_str());
  ArrayPtr out = duplicate(nx == 1 && ny != 1 ? y.get() : x.get());
  const zrSize n = elementCount(out.get());
  const double* px = doubleData(x.get());
  const double* py = doubleData(y.get());
  double* po = doubleData(out.get());
  const char c = op.back();
  for (zrSize i = 0; i < n; ++i) po[i] = applyOp(c, px[nx == 1 ? 0 : i], py[ny == 1 ? 0 : i]);
  return out;
}

ArrayPtr negate(const zrArray_tag* a, bool minus) {
  ArrayPtr x = toDouble(a, minus ? "-" : "+");
  if (minus) {
    double* d = doubleData(x.get());
    for (zrSize i = 0, n = elementCount(x.get()); i < n; ++i) d[i] = -d[i];
  }
  return x;
}

// [a b; c d]: rows join side by side, then stack. Empty 0 x 0 parts vanish;
// the result is char when every part is char, double otherwise.
ArrayPtr concatenate(std::vector<ArrayPtr> parts, const std::vector<std::size_t>& rowLengths) {
  bool allChar = !parts.empty();
  for (const ArrayPtr& p : parts) {
    if (!isArithmetic(p.get()) || p->dims.size() != 2) {
      throwScriptError("Tavrix::host::UndefinedOperator", "[]", zrGetClassName(p.get()));
    }
    allChar = allChar && p->classID == zrCHAR_CLASS;
  }
  const zrClassID cls = allChar ? zrCHAR_CLASS : zrDOUBLE_CLASS;
  struct Block {
    zrSize rows = 0, cols = 0;
    std::vector<const zrArray_tag*> items;
  };
  std::vector<Block> blocks;
  std::size_t k = 0;
  for (std::size_t len : rowLengths) {
    Block b;
    for (std::size_t e = 0; e < len; ++e, ++k) {
      const zrArray_tag* p = parts[k].get();
      if (p->dims[0] == 0 && p->dims[1] == 0) continue;
      if (!b.items.empty() && p->dims[0] != b.rows) throwScriptError("Tavrix::host::SizeMismatch", "[ ]");
      b.rows = p->dims[0];
      b.cols += p->dims[1];
      b.items.push_back(p);
    }
    if (!b.items.empty()) blocks.push_back(std::move(b));
  }
  zrSize rows = 0, cols = blocks.empty() ? 0 : blocks[0].cols;
  for (const Block& b : blocks) {
    if (b.cols != cols) throwScriptError("Tavrix::host::SizeMismatch", "[ ; ]");
    rows += b.rows;
  }
  ArrayPtr out(zrCreateNumericMatrix(rows, cols, cls));
  zrSize row0 = 0;
  for (const Block& b : blocks) {
    zrSize col0 = 0;
    for (const zrArray_tag* p : b.items) {
      for (zrSize c = 0; c < p->dims[1]; ++c) {
        for (zrSize r = 0; r < p->dims[0]; ++r) {
          const zrSize from = r + p->dims[0] * c, to = (row0 + r) + rows * (col0 + c);
          if (cls == zrCHAR_CLASS) {
            zrGetChars(out.get())[to] = zrGetChars(p)[from];
          } else {
            zrGetPr(out.get())[to] = elementAsDouble(p, from);
          }
        }
      }
      col0 += p->dims[1];
    }
    row0 += b.rows;
  }
  return out;
}

// One subscript as zero-based positions, each checked against `bound`.
std::vector<zrSize> subscripts(const zrArray_tag* s, zrSize bound) {
  if (!isArithmetic(s)) throwScriptError("Tavrix::host::BadSubscript");
  const zrSize n = elementCount(s);
  std::vector<zrSize> out(n);
  for (zrSize i = 0; i < n; ++i) {
    const double v = elementAsDouble(s, i);
    if (!(v >= 1 && v <= static_cast<double>(bound)) || v != std::floor(v)) {
      throwScriptError("Tavrix::host::BadSubscript");
    }
    out[i] = static_cast<zrSize>(v) - 1;
  }
  return out;
}

// x(i) and x(i, j) on numeric, logical and char values.
ArrayPtr index(const zrArray_tag* x, const std::vector<ArrayPtr>& args) {
  if (!hasElementStorage(x->classID) || args.empty() || args.size() > 2) {
    throwScriptError("Tavrix::host::BadSubscript");
  }
  const zrSize size = classElementSize(x->classID);
  const auto* from = static_cast<const unsigned char*>(x->data);
  std::vector<zrSize> positions;
  std::vector<zrSize> dims;
  if (args.size() == 1) {
    positions = subscripts(args[0].get(), elementCount(x));
    const zrArray_tag* s = args[0].get();
    // A vector indexed by a vector keeps its own orientation.
    const bool vectors = zrIsVector(x) && zrIsVector(s) && x->dims.size() == 2;
    dims = vectors ? (x->dims[0] == 1 ? std::vector<zrSize>{1, positions.size()}
                                      : std::vector<zrSize>{positions.size(), 1})
                   : s->dims;
  } else {
    const std::vector<zrSize> r = subscripts(args[0].get(), zrGetM(x));
    const std::vector<zrSize> c = subscripts(args[1].get(), zrGetN(x));
    for (zrSize j : c) {
      for (zrSize i : r) positions.push_back(i + zrGetM(x) * j);
    }
    dims = {r.size(), c.size()};
  }
  ArrayPtr out(zrCreateNumericArray(dims.size(), dims.data(), x->classID));
  auto* to = static_cast<unsigned char*>(out->data);
  for (std::size_t k = 0; k < positions.size(); ++k)
    std::memcpy(to + k * size, from + positions[k] * size, size);
  return out;
}

ArrayPtr firstOutput(std::vector<ArrayPtr> outputs, const std::string& name) {
  if (!outputs[0]) throwScriptError("Tavrix::host::TooManyOutputs", name.c_str());
  return std::move(outputs[0]);
}

std::vector<ArrayPtr> evaluateAll(const std::vector<std::unique_ptr<Node>>& nodes);

// A call written name(args): index a variable, call the function a handle
// variable names, or call the function of that name.
std::vector<ArrayPtr> call(const Node& n, int nlhs) {
  // The arguments first: a function they call may change the workspace.
  std::vector<ArrayPtr> args = evaluateAll(n.children);
  const auto var = workspace().find(n.text);
  if (var != workspace().end() && var->second->classID != zrFUNCTION_CLASS) {
    std::vector<ArrayPtr> out;
    out.push_back(index(var->second.get(), args));
    return out;
  }
  const std::string name = var != workspace().end() ? var->second->functionName : n.text;
  std::vector<const zrArray_tag*> borrowed;
  for (const ArrayPtr& a : args) borrowed.push_back(a.get());
  return callFunction(name, nlhs, borrowed);
}

ArrayPtr evaluate(const Node& n) {
  const EvaluationLevel level;
  switch (n.kind) {
    case NodeKind::Number:
      return ArrayPtr(zrCreateDoubleScalar(n.number));
    case NodeKind::String: {
      if (n.text.empty()) {
        const zrSize dims[2] = {0, 0};
        return ArrayPtr(zrCreateCharArray(2, dims));
      }
      return ArrayPtr(zrCreateString(n.text.c_str()));
    }
    case NodeKind::Matrix:
      return concatenate(evaluateAll(n.children), n.rowLengths);
    case NodeKind::Handle:
      return ArrayPtr(zrCreateFunctionHandle(n.text.c_str()));
    case NodeKind::Negate:
    case NodeKind::Plus:
      return negate(evaluate(*n.children[0]).get(), n.kind == NodeKind::Negate);
    case NodeKind::Binary: {
      ArrayPtr value = evaluate(*n.children[0]);
      for (std::size_t k = 1; k < n.children.size(); ++k) {
        ArrayPtr b = evaluate(*n.children[k]);
        value = arithmetic(n.operators[k - 1], value.get(), b.get());
      }
      return value;
    }
    case NodeKind::Name: {
      const auto var = workspace().find(n.text);
      if (var != workspace().end()) return duplicate(var->second.get());
      return firstOutput(callFunction(n.text, 1, {}), n.text);
    }
    case NodeKind::Call:
      return firstOutput(call(n, 1), n.text);
  }
  return nullptr;
}

std::vector<ArrayPtr> evaluateAll(const std::vector<std::unique_ptr<Node>>& nodes) {
  std::vector<ArrayPtr> values;
  values.reserve(nodes.size());
  for (const auto& node : nodes) values.push_back(evaluate(*node));
  return values;
}

void assign(const std::string& name, ArrayPtr value) {
  auto& ws = workspace();
  const auto it = ws.find(name);
  if (it != ws.end()) {
    it->second = std::move(value);
  } else {
    ws.emplace(name, std::move(value));
  }
}

void execute(const Statement& s) {
  checkInterrupt();
  const Node& e = *s.expression;
  if (!s.target.empty()) {
    assign(s.target, evaluate(e));
    return;
  }
  // A call as a statement asks for no output; what it gives anyway is "ans".
  const auto var = workspace().find(e.text);
  const bool isVariable = var != workspace().end();
  const bool isCall = (e.kind == NodeKind::Name && !isVariable) ||
                      (e.kind == NodeKind::Call && (!isVariable || var->second->classID == zrFUNCTION_CLASS));
  ArrayPtr result;
  if (isCall) {
    std::vector<ArrayPtr> out = e.kind == NodeKind::Call ? call(e, 0) : callFunction(e.text, 0, {});
    result = std::move(out[0]);
  } else {
    result = evaluate(e);
  }
  if (result) assign("ans", std::move(result));
}

}  // namespace

// ---- Shared with the built-ins ---------------------------------------------------------------

namespace qvhost::script {

void throwScriptError(const char* identifier, ...) {
  std::va_list args;
  va_start(args, identifier);
  std::string message = hostFormatMessageV(identifier, args);
  va_end(args);
  throw ScriptException(identifier, std::move(message));
}

std::vector<ArrayPtr> callFunction(const std::string& name, int nlhs,
                                   const std::vector<const zrArray_tag*>& args) {
  checkInterrupt();
  const EvaluationLevel level(true);
  const auto registered = functions().find(name);
  const bool builtin = registered == functions().end() && findBuiltin(name);
  if (registered == functions().end() && !builtin) {
    throwScriptError("Tavrix::host::UndefinedFunction", name.c_str());
  }
  // A copy: the function may unregister itself while it runs.
  const HostFunction function = builtin ? HostFunction() : registered->second;
  const std::size_t slots = static_cast<std::size_t>(nlhs > 1 ? nlhs : 1);
  std::vector<zrArray_tag*> raw(slots, nullptr);
  std::vector<ArrayPtr> outputs;
  try {
    asScriptErrors(name, [&] {
      if (builtin) {
        callBuiltin(name, nlhs, raw.data(), static_cast<int>(args.size()), args.data());
      } else {
        function(nlhs, raw.data(), static_cast<int>(args.size()), args.data());
      }
    });
  } catch (...) {
    for (zrArray_tag* a : raw) zrDestroyArray(a);
    throw;
  }
  for (zrArray_tag* a : raw) outputs.emplace_back(a);
  return outputs;
}

}  // namespace qvhost::script

// ---- ScriptException --------------------------------------------------------------------------

ScriptException::ScriptException(std::string identifier, std::string message, std::string functionName)
    : identifier_(std::move(identifier)),
      message_(std::move(message)),
      functionName_(std::move(functionName)) {}
const char* ScriptException::what() const noexcept { return message_.c_str(); }
const std::string& ScriptException::identifier() const noexcept { return identifier_; }
const std::string& ScriptException::message() const noexcept { return message_; }
const std::string& ScriptException::functionName() const noexcept { return functionName_; }
ScriptException ScriptException::withFunctionName(std::string functionName) const {
  return ScriptException(identifier_, message_, std::move(functionName));
}

// ---- Registered functions and calls -------------------------------------------------------------

void hostRegisterFunction(const char* name, HostFunction function) {
  if (!function) {
    hostUnregisterFunction(name);
    return;
  }
  functions()[orEmpty(name)] = std::move(function);
}

bool hostHasFunction(const char* name) { return functions().count(std::string_view(orEmpty(name))) != 0; }

void hostUnregisterFunction(const char* name) {
  const auto it = functions().find(std::string_view(orEmpty(name)));
  if (it != functions().end()) functions().erase(it);
}

void hostEvalString(const char* text) {
  asScriptErrors({}, [&] {
    const std::vector<Statement> program = parse(orEmpty(text));
    for (const Statement& s : program) execute(s);
  });
}

void hostCallFunctionByName(const char* name, int nlhs, zrArray_tag** plhs, int nrhs,
                            const zrArray_tag* const* prhs) {
  for (int k = 0; k < nlhs; ++k) plhs[k] = nullptr;
  std::vector<ArrayPtr> outputs;
  asScriptErrors(orEmpty(name), [&] {
    const std::vector<const zrArray_tag*> args(prhs, prhs + (nrhs > 0 ? nrhs : 0));
    outputs = callFunction(orEmpty(name), nlhs, args);
    for (int k = 0; k < nlhs; ++k) {
      if (!outputs[static_cast<std::size_t>(k)])
        throwScriptError("Tavrix::host::TooManyOutputs", orEmpty(name));
    }
  });
  for (int k = 0; k < nlhs; ++k) plhs[k] = outputs[static_cast<std::size_t>(k)].release();
}

void hostCallFunction(const zrArray_tag* function, int nlhs, zrArray_tag** plhs, int nrhs,
                      const zrArray_tag* const* prhs) {
  std::string name;
  if (function != nullptr && function->classID == zrFUNCTION_CLASS) {
    name = function->functionName;
  } else if (function != nullptr && function->classID == zrCHAR_CLASS) {
    name = arrayText(function);
  } else {
    for (int k = 0; k < nlhs; ++k) plhs[k] = nullptr;
    throwScriptError("Tavrix::host::InvalidArgument", "hostCallFunction",
                     "the function must be a function handle or a name");
  }
  hostCallFunctionByName(name.c_str(), nlhs, plhs, nrhs, prhs);
}

// ---- Workspace and state ---------------------------------------------------------------------------

void hostSetVariable(const char* name, const zrArray_tag* value) {
  if (value == nullptr) {
    const auto it = workspace().find(std::string_view(orEmpty(name)));
    if (it != workspace().end()) workspace().erase(it);
    return;
  }
  assign(orEmpty(name), duplicate(value));
}

zrArray_tag* hostGetVariable(const char* name) {
  const auto it = workspace().find(std::string_view(orEmpty(name)));
  return it != workspace().end() ? zrDuplicateArray(it->second.get()) : nullptr;
}

void hostClearWorkspace() { workspace().clear(); }

void hostPublishWorkspaceEvents() { ++g_workspacePublications; }
std::size_t hostWorkspaceEventsPublished() { return g_workspacePublications; }

bool hostIsTerminating() { return g_terminating; }
void hostSetTerminating(bool terminating) { g_terminating = terminating; }

bool hostSetInterruptsEnabled(bool enabled) {
  const bool previous = g_interruptsEnabled;
  g_interruptsEnabled = enabled;
  return previous;
}
bool hostInterruptsEnabled() { return g_interruptsEnabled; }

// ---- Unhandled errors -----------------------------------------------------------------------------

void hostReportUnhandledException(const ScriptException& error) {
  if (error.functionName().empty()) {
    utPrintf("Error: %s\n", error.message().c_str());
  } else {
    utPrintf("Error in %s: %s\n", error.functionName().c_str(), error.message().c_str());
  }
  g_unhandled.push_back(error);
}

void hostReportUnhandledInterrupt() {
  utPrintf("%s\n", hostCatalogText(kHostInterruptId).c_str());
  ++g_unhandledInterrupts;
}

std::vector<ScriptException> hostUnhandledExceptions() { return g_unhandled; }
std::size_t hostUnhandledInterruptCount() { return g_unhandledInterrupts; }

void hostClearUnhandledExceptions() {
  g_unhandled.clear();
  g_unhandledInterrupts = 0;
}
