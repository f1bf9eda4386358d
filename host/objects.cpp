// The object system's type names: which registered type an object pointer
// belongs to, for diagnostics such as the handle dump.

#include <map>

#include "host_p.h"

namespace {
std::map<const void*, std::string>& types() {
  static std::map<const void*, std::string> registry;
  return registry;
}
}  // namespace

const char* hostObjectTypeName(const void* object) {
  const auto it = types().find(object);
  return it != types().end() ? it->second.c_str() : "unknown";
}

void hostRegisterObjectType(const void* object, const char* typeName) {
  if (object == nullptr) return;
  if (typeName == nullptr) {
    hostUnregisterObjectType(object);
    return;
  }
  types()[object] = typeName;
}

void hostUnregisterObjectType(const void* object) { types().erase(object); }
