// Fuzzes the host's text handling: UTF-8/UTF-16 conversion laws, char arrays
// built from arbitrary bytes, and the interpreter on arbitrary program text.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "qvhost/testing.h"

namespace {

void check(bool ok) {
  if (!ok) std::abort();
}

bool hasLoneSurrogate(const std::u16string& s) {
  for (std::size_t i = 0; i < s.size(); ++i) {
    const char16_t u = s[i];
    if (u >= 0xD800 && u <= 0xDBFF && i + 1 < s.size() && s[i + 1] >= 0xDC00 && s[i + 1] <= 0xDFFF) {
      ++i;
    } else if (u >= 0xD800 && u <= 0xDFFF) {
      return true;
    }
  }
  return false;
}

// Sizes in the program text become array sizes; long digit runs and the
// size-taking built-ins would only measure the machine's memory.
bool programIsSmall(const std::string& text) {
  std::size_t run = 0;
  for (char c : text) {
    run = (c >= '0' && c <= '9') ? run + 1 : 0;
    if (run > 3) return false;
  }
  for (const char* name : {"zeros", "ones", "Inf", "inf", "NaN", "nan"}) {
    if (text.find(name) != std::string::npos) return false;
  }
  return text.size() < 512;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);

  // UTF-8 -> UTF-16 never makes lone surrogates, and its UTF-8 form is a fixed point.
  const std::u16string utf16 = utUTF8ToUTF16(bytes);
  check(!hasLoneSurrogate(utf16));
  const std::string utf8 = utUTF16ToUTF8(utf16);
  check(utUTF8ToUTF16(utf8) == utf16);

  // The same bytes read as UTF-16 code units.
  const std::u16string units(reinterpret_cast<const char16_t*>(data), size / 2);
  check(utUTF8ToUTF16(utUTF16ToUTF8(units)).size() <= units.size());

  const std::int64_t live = hostLiveArrayCount();
  if (programIsSmall(bytes) && bytes.find('\0') == std::string::npos) {
    HostConsoleCapture quiet;
    try {
      hostEvalString(bytes.c_str());
    } catch (const ScriptException&) {
    } catch (const HostError&) {
    }
    hostClearWorkspace();
    hostClearRecordedWarnings();
    check(hostLiveArrayCount() == live);
  }
  return 0;
}
