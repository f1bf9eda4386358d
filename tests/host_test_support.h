// Small helpers the host tests share: an owning array pointer and the
// identifier of the host error an action raises.
#pragma once

#include <memory>
#include <string>

#include "qvgui/host.h"

namespace host_test {

struct Destroy {
  void operator()(zrArray_tag* a) const { zrDestroyArray(a); }
};
using Array = std::unique_ptr<zrArray_tag, Destroy>;

template <typename F>
std::string errorId(F&& f) {
  try {
    f();
  } catch (const HostError& e) {
    return e.identifier();
  }
  return "(no error)";
}

}  // namespace host_test
