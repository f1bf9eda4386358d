// MCallback: storing user code of callback properties, comparing it, and
// running it through the host interpreter without letting its errors escape.
#include <boost/numeric/conversion/cast.hpp>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "geometry/messages_p.h"
#include "qvgui/bridge.h"

namespace {

struct Hooks {
  MCallbackCreateHook create = nullptr;
  MCallbackEnterHook enter = nullptr;
  MCallbackLeaveHook leave = nullptr;
  MCallbackAttachHook attach = nullptr;
  MCallbackDetachHook detach = nullptr;
  MCallbackGetCallbackObjectFcn getObject = nullptr;
  MCallbackSetCallbackObjectFcn setObject = nullptr;
};

Hooks& hooks() noexcept {
  static Hooks instance;
  return instance;
}

char* duplicate(const char* text) {
  if (text == nullptr) return nullptr;
  const std::size_t length = std::strlen(text);
  char* copy = static_cast<char*>(utMallocWithCheck(length + 1));
  std::memcpy(copy, text, length + 1);
  return copy;
}

// The text of a char array, freed however the caller leaves.
std::unique_ptr<char, void (*)(void*)> ownedText(const zrArray_tag* value) {
  return {zrArrayToString(value), zrFree};
}

bool sameText(const char* a, const char* b) noexcept {
  return std::strcmp(a != nullptr ? a : "", b != nullptr ? b : "") == 0;
}

bool sameArray(const zrArray_tag* a, const zrArray_tag* b) {
  if (a == nullptr || b == nullptr) return a == b;
  return zrArrayEqual(a, b);
}

// A persistent copy of an argument; an absent cell becomes an empty matrix.
zrArray_tag* persistentCopy(const zrArray_tag* value) {
  return value != nullptr ? zrDuplicateArray(value) : zrCreateDoubleMatrix(0, 0);
}

}  // namespace

void gui_set_mcallback_hooks(MCallbackCreateHook create, MCallbackEnterHook enter, MCallbackLeaveHook leave,
                             MCallbackAttachHook attach, MCallbackDetachHook detach) {
  Hooks& h = hooks();
  h.create = create;
  h.enter = enter;
  h.leave = leave;
  h.attach = attach;
  h.detach = detach;
}

void MCallbackRegisterGetCallbackObjectFcn(MCallbackGetCallbackObjectFcn fn) { hooks().getObject = fn; }
void MCallbackRegisterSetCallbackObjectFcn(MCallbackSetCallbackObjectFcn fn) { hooks().setObject = fn; }

MCallbackValueException::MCallbackValueException()
    : std::runtime_error(
          "Value must be a string, a function handle, or a cell array containing string or function handle") {
}

// ---- Life cycle ----------------------------------------------------------------------

void* MCallback::operator new(std::size_t bytes) { return utCallocWithCheck(1, bytes); }
void MCallback::operator delete(void* p) noexcept { utFree(p); }

MCallback::MCallback(const char* text) {
  try {
    initialise(text, nullptr, nullptr);
  } catch (...) {
    freeFields();
    throw;
  }
  attachHooks();
}

MCallback::MCallback(const zrArray_tag* value) {
  try {
    if (value == nullptr || zrIsEmpty(value)) {
      initialise("", nullptr, nullptr);
    } else if (zrIsChar(value)) {
      initialise(ownedText(value).get(), nullptr, nullptr);
    } else if (zrIsFunctionHandle(value)) {
      initialise(nullptr, nullptr, value);
    } else if (zrIsCell(value)) {
      const auto count = boost::numeric_cast<std::int32_t>(zrGetNumberOfElements(value));
      const zrArray_tag* first = zrGetCell(value, 0);
      if (first == nullptr) {
        initialise("", nullptr, nullptr);
      } else if (zrIsChar(first)) {
        initialise(nullptr, ownedText(first).get(), nullptr);
      } else if (zrIsFunctionHandle(first)) {
        initialise(nullptr, nullptr, first);
      } else {
        throw MCallbackValueException();
      }
      if (count > 1) {
        args_ = static_cast<zrArray_tag**>(
            utCallocWithCheck(static_cast<std::size_t>(count - 1), sizeof(zrArray_tag*)));
        for (std::int32_t k = 1; k < count; ++k) {
          args_[k - 1] = persistentCopy(zrGetCell(value, static_cast<zrSize>(k)));
          argCount_ = k;
        }
      }
    } else {
      throw MCallbackValueException();
    }
  } catch (...) {
    freeFields();
    throw;
  }
  attachHooks();
}

MCallback::MCallback(const MCallback& other) {
  try {
    initialise(other.text_, other.functionName_, other.function_);
    if (other.argCount_ > 0) {
      args_ = static_cast<zrArray_tag**>(
          utCallocWithCheck(static_cast<std::size_t>(other.argCount_), sizeof(zrArray_tag*)));
      for (std::int32_t k = 0; k < other.argCount_; ++k) {
        args_[k] = persistentCopy(other.args_[k]);
        argCount_ = k + 1;
      }
    }
  } catch (...) {
    freeFields();
    throw;
  }
  attachHooks();
}

MCallback::~MCallback() {
  freeFields();
  if (hookData_ != nullptr && hooks().detach != nullptr) hooks().detach(hookData_, this);
}

void MCallback::initialise(const char* text, const char* functionName, const zrArray_tag* function) {
  text_ = duplicate(text);
  functionName_ = duplicate(functionName);
  if (function != nullptr) function_ = zrDuplicateArray(function);
  saved_ = new (utMallocWithCheck(sizeof(SavedException))) SavedException();
}

void MCallback::attachHooks() noexcept {
  const Hooks& h = hooks();
  if (h.create == nullptr) return;
  hookData_ = h.create();
  if (h.attach != nullptr) h.attach(hookData_, this);
}

void MCallback::freeFields() noexcept {
  utFree(text_);
  text_ = nullptr;
  utFree(functionName_);
  functionName_ = nullptr;
  zrDestroyArray(function_);
  function_ = nullptr;
  if (saved_ != nullptr) {
    saved_->~SavedException();
    utFree(saved_);
    saved_ = nullptr;
  }
  for (std::int32_t k = 0; k < argCount_; ++k) zrDestroyArray(args_[k]);
  utFree(args_);
  args_ = nullptr;
  argCount_ = 0;
}

MCallback* MCallback::clone() const { return new MCallback(*this); }

MCallback* MCallback::createFromString(const char* text) {
  if (text == nullptr) return nullptr;
  // "@name" is a function handle only under the graphics layer's hooks.
  if (hooks().create != nullptr && text[0] == '@' && text[1] != '\0') {
    gui_objects::ZrArrayPtr handle(zrCreateFunctionHandle(text + 1));
    return new MCallback(static_cast<const zrArray_tag*>(handle.get()));
  }
  return new MCallback(text);
}

MCallback* MCallback::getReference() noexcept {
  ++refCount_;
  return this;
}

void MCallback::release() noexcept {
  if (--refCount_ == 0) delete this;
}

// ---- Queries ------------------------------------------------------------------------

bool MCallback::isEmpty() const noexcept {
  return (text_ == nullptr || *text_ == '\0') && functionName_ == nullptr && function_ == nullptr;
}

bool MCallback::isExecutable() const { return !isEmpty() && !hostIsTerminating(); }

bool MCallback::isEqual(const MCallback* other) const {
  if (other == nullptr) return false;
  if (!sameText(text_, other->text_) || !sameText(functionName_, other->functionName_)) return false;
  if (argCount_ != other->argCount_ || !sameArray(function_, other->function_)) return false;
  for (std::int32_t k = 0; k < argCount_; ++k) {
    if (!sameArray(args_[k], other->args_[k])) return false;
  }
  return true;
}

zrArray_tag* MCallback::convertToTavrixArray(bool /*sharedArgs*/) const {
  if (functionName_ == nullptr && function_ == nullptr) {
    return text_ != nullptr ? zrCreateString(text_) : nullptr;
  }
  if (functionName_ == nullptr && argCount_ == 0) return zrDuplicateArray(function_);
  gui_objects::ZrArrayPtr cell(zrCreateCellMatrix(static_cast<zrSize>(argCount_) + 1, 1));
  zrSetCell(cell.get(), 0,
            functionName_ != nullptr ? zrCreateString(functionName_) : zrDuplicateArray(function_));
  for (std::int32_t k = 0; k < argCount_; ++k) {
    zrSetCell(cell.get(), static_cast<zrSize>(k) + 1, zrDuplicateArray(args_[k]));
  }
  return cell.release();
}

void MCallback::setSaveException(bool save) noexcept { saved_->save = save; }
bool MCallback::wasExceptionCaughtAndSaved() const noexcept { return saved_->save && saved_->caughtAndSaved; }
const ScriptException& MCallback::getScriptException() const noexcept { return saved_->exception; }

zrArray_tag* MCallback::getCallbackObject() {
  return hooks().getObject != nullptr ? hooks().getObject() : nullptr;
}

void MCallback::setCallbackObject(const zrArray_tag* object) {
  if (hooks().setObject != nullptr) hooks().setObject(object);
}

std::string MCallback::displayName() const {
  if (functionName_ != nullptr) return functionName_;
  if (function_ != nullptr) {
    const char* name = zrGetFunctionName(function_);
    return name != nullptr ? name : "";
  }
  return (text_ != nullptr && *text_ != '\0') ? text_ : "<empty callback>";
}

// ---- Execution ------------------------------------------------------------------------

void MCallback::processException(const ScriptException& error) noexcept {
  try {
    if (saved_->save) {
      saved_->exception = error;
      saved_->caughtAndSaved = true;
    } else {
      hostReportUnhandledException(error);
    }
  } catch (...) {
    // Reporting itself failed (out of memory); there is nobody left to tell.
  }
}

bool MCallback::runOne(const zrArray_tag* source, const zrArray_tag* const* args, int argCount) noexcept {
  const Hooks& h = hooks();
  zrArray_tag* previousObject = nullptr;
  bool switchedObject = false;
  bool ok = false;
  try {
    if (h.getObject != nullptr) {
      previousObject = h.getObject();
      if (h.setObject != nullptr) {
        h.setObject(source);
        switchedObject = true;
      }
    }
  } catch (...) {
    // The current object could not be read; run without switching it.
  }

  const bool interruptsWereEnabled = hostSetInterruptsEnabled(true);
  try {
    if (args == nullptr) {
      hostEvalString(text_ != nullptr ? text_ : "");
    } else {
      zrArray_tag* result = nullptr;
      hostCallFunction(args[0], 0, &result, argCount - 1, args + 1);
      zrDestroyArray(result);
    }
    ok = true;
  } catch (const ScriptException& e) {
    processException(e.withFunctionName(displayName()));
  } catch (const HostError& e) {
    if (e.identifier() == qvgui_messages::id::interrupted) {
      hostReportUnhandledInterrupt();
    } else {
      processException(ScriptException(e.identifier(), e.message(), displayName()));
    }
  } catch (const std::exception& e) {
    processException(ScriptException("", e.what(), displayName()));
  } catch (...) {
    processException(ScriptException("", "unknown error in callback", displayName()));
  }
  try {
    hostFlushConsole();
  } catch (...) {
  }
  hostSetInterruptsEnabled(interruptsWereEnabled);

  if (switchedObject) {
    try {
      h.setObject(previousObject);
    } catch (...) {
    }
  }
  zrDestroyArray(previousObject);
  return ok;
}

bool MCallback::execute(const zrArray_tag* source, const zrArray_tag* event) {
  if (isEmpty() || hostIsTerminating()) return false;
  if (hookData_ == nullptr) return false;  // callbacks run only under the graphics layer's hooks

  void* const hookData = hookData_;
  const MCallbackLeaveHook leave = hooks().leave;
  if (hooks().enter != nullptr) hooks().enter(hookData);
  // User code may destroy the owner of this callback; our reference keeps it alive.
  getReference();

  bool ok = false;
  if (functionName_ == nullptr && function_ == nullptr) {
    ok = runOne(source, nullptr, 0);
  } else {
    try {
      std::vector<gui_objects::ZrArrayPtr> owned;
      std::vector<const zrArray_tag*> list;
      if (functionName_ != nullptr) {
        owned.emplace_back(zrCreateString(functionName_));
        list.push_back(owned.back().get());
      } else {
        list.push_back(function_);
      }
      gui_objects::ZrArrayPtr emptySource;
      gui_objects::ZrArrayPtr emptyEvent;
      if (source == nullptr) emptySource.reset(zrCreateDoubleMatrix(0, 0));
      if (event == nullptr) emptyEvent.reset(zrCreateDoubleMatrix(0, 0));
      list.push_back(source != nullptr ? source : emptySource.get());
      list.push_back(event != nullptr ? event : emptyEvent.get());
      for (std::int32_t k = 0; k < argCount_; ++k) {
        owned.emplace_back(zrDuplicateArray(args_[k]));
        list.push_back(owned.back().get());
      }
      ok = runOne(source, list.data(), static_cast<int>(list.size()));
    } catch (const HostError& e) {
      // Building the argument list ran out of memory: report it like a failure of the code.
      processException(ScriptException(e.identifier(), e.message(), displayName()));
    }
  }

  try {
    hostPublishWorkspaceEvents();
  } catch (...) {
  }
  if (leave != nullptr) leave(hookData);
  release();
  return ok;
}
