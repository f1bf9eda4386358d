// Small helpers the host tests share: an owning array pointer and the host
// error an action raises.
#pragma once

#include <memory>
#include <string>

#include "qvhost/testing.h"

namespace host_test {

using Array = HostArrayPtr;

// The host error f raises, or one with identifier "(no error)".
template <typename F>
HostError raised(F&& f) {
  try {
    f();
  } catch (const HostError& e) {
    return e;
  }
  return HostError("(no error)", "");
}

template <typename F>
std::string errorId(F&& f) {
  return raised(f).identifier();
}

}  // namespace host_test
