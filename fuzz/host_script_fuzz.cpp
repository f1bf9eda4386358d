// Fuzzes the interpreter on program texts of any length, deep nesting and
// long operator chains included, with a registered function that runs the
// program again from inside itself. Every failure must arrive as an
// exception, never as a crash, and nothing may leak.
#include <cstddef>
#include <cstdint>
#include <string>

#include "qvgui/host.h"
#include "qvhost/runtime.h"
#include "qvhost/testing.h"

namespace {

std::string g_program;
int g_reruns = 0;

// Numbers in the text become array sizes; long digit runs and the
// size-taking built-ins would only measure the machine's memory.
bool sizesAreSmall(const std::string& text) {
  std::size_t run = 0;
  for (char c : text) {
    run = (c >= '0' && c <= '9') ? run + 1 : 0;
    if (run > 3) return false;
  }
  for (const char* name : {"zeros", "ones", "Inf", "inf", "NaN", "nan"}) {
    if (text.find(name) != std::string::npos) return false;
  }
  return true;
}

// again() runs the whole program once more; a budget per input keeps a
// program that calls it twice per level from taking exponential time.
void again(int, zrArray_tag** plhs, int, const zrArray_tag* const*) {
  if (g_reruns-- > 0) hostEvalString(g_program.c_str());
  plhs[0] = zrCreateDoubleScalar(1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  g_program.assign(reinterpret_cast<const char*>(data), size);
  if (g_program.find('\0') != std::string::npos || !sizesAreSmall(g_program)) return 0;
  if (!hostHasFunction("again")) hostRegisterFunction("again", again);
  g_reruns = 300;
  const std::int64_t live = hostLiveArrayCount();
  {
    HostConsoleCapture quiet;
    try {
      hostEvalString(g_program.c_str());
    } catch (const ScriptException&) {
    } catch (const HostError&) {
    }
  }
  hostClearWorkspace();
  hostClearRecordedWarnings();
  if (hostLiveArrayCount() != live) __builtin_trap();
  return 0;
}
