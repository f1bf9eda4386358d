// The feature registry: named switches of the library that the host calls with
// an integer argument.

#include <map>

#include "host_p.h"

namespace {
std::map<std::string, HostFeatureFunction, std::less<>>& features() {
  static std::map<std::string, HostFeatureFunction, std::less<>> registry;
  return registry;
}
std::string_view nameOf(const char* name) { return name != nullptr ? name : ""; }
}  // namespace

void hostRegisterFeature(const char* name, HostFeatureFunction function) {
  if (!function) {
    hostUnregisterFeature(name);
    return;
  }
  features()[std::string(nameOf(name))] = std::move(function);
}

bool hostHasFeature(const char* name) { return features().count(nameOf(name)) != 0; }

int hostCallFeature(const char* name, int argument) {
  const auto it = features().find(nameOf(name));
  if (it == features().end())
    qvhost::throwHostError("Tavrix::host::UnknownFeature", name != nullptr ? name : "(null)");
  // A copy, so a feature may unregister itself while it runs.
  const HostFeatureFunction function = it->second;
  return function(argument);
}

void hostUnregisterFeature(const char* name) {
  const auto it = features().find(nameOf(name));
  if (it != features().end()) features().erase(it);
}
