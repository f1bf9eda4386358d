// The flat interface of callback objects.
#include <boost/numeric/conversion/converter_policies.hpp>

#include "geometry/messages_p.h"
#include "qvgui/bridge.h"

namespace {

[[noreturn]] void raiseCreateCallback(const char* message) { qvgui_messages::raise::createCallback(message); }

}  // namespace

MCallback* StringToMCallback(const char* text) {
  try {
    return new MCallback(text);
  } catch (const HostError& e) {
    if (e.identifier() == qvgui_messages::id::outOfMemory) return nullptr;
    throw;
  }
}

MCallback* MatrixToMCallback(const zrArray_tag* value) {
  try {
    return new MCallback(value);
  } catch (const MCallbackValueException& e) {
    raiseCreateCallback(e.what());
  } catch (const boost::numeric::bad_numeric_cast& e) {
    raiseCreateCallback(e.what());
  }
}

zrArray_tag* MCallbackToMatrix(const MCallback* callback) {
  zrArray_tag* value = callback != nullptr ? callback->convertToTavrixArray(false) : nullptr;
  return value != nullptr ? value : zrCreateString("");
}

MCallback* CopyMCallback(const MCallback* callback) {
  return callback != nullptr ? callback->clone() : nullptr;
}

void DestroyMCallback(MCallback* callback) {
  if (callback != nullptr) callback->release();
}

MCallback* GetMCallbackReference(MCallback* callback) {
  return callback != nullptr ? callback->getReference() : nullptr;
}

bool CompareMCallback(const MCallback* a, const MCallback* b) {
  if (a != nullptr && b != nullptr) return a->isEqual(b);
  if (a == nullptr && b == nullptr) return true;
  const MCallback* present = a != nullptr ? a : b;
  // During shutdown nothing is inspected: every pair counts as equal.
  return present->isEmpty() || hostIsTerminating();
}

bool ExecuteMCallback(MCallback* callback, const zrArray_tag* source, const zrArray_tag* event) {
  return callback != nullptr && callback->execute(source, event);
}

bool IsMCallbackExecutable(const MCallback* callback) {
  return callback != nullptr && callback->isExecutable();
}
