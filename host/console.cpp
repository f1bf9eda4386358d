// Console output of the library and of user code, with a replaceable sink so a
// host window or a test can take it.

#include <cstdio>

#include "host_p.h"

namespace {
HostConsoleSink g_sink;

void emit(std::string_view text) {
  if (g_sink) {
    g_sink(text);
  } else {
    std::fwrite(text.data(), 1, text.size(), stdout);
  }
}
}  // namespace

int utPrintf(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  const std::string text = qvhost::formatV(format, args);
  va_end(args);
  emit(text);
  return static_cast<int>(text.size());
}

void hostSetConsoleSink(HostConsoleSink sink) { g_sink = std::move(sink); }

HostConsoleCapture::HostConsoleCapture() : previous_(g_sink) {
  g_sink = [this](std::string_view text) { text_.append(text); };
}

HostConsoleCapture::~HostConsoleCapture() { g_sink = std::move(previous_); }

const std::string& HostConsoleCapture::text() const noexcept { return text_; }

void hostFlushConsole() {
  if (!g_sink) std::fflush(stdout);
}
