// Helpers shared by the host runtime's sources: the one place each kind of
// failure is raised, and the allocation budget of the failure hook.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>

#include "qvhost/testing.h"

namespace qvhost {

// Raises HostError with the catalogue text of the identifier, formatted.
[[noreturn]] void throwHostError(const char* identifier, ...);
// Raises HostError with an explicit text.
[[noreturn]] void throwHostErrorText(const char* identifier, std::string message);
[[noreturn]] void throwOutOfMemory(std::size_t bytes);
// The element count or byte size of a request does not fit in size_t.
[[noreturn]] void throwSizeOverflow();

// printf into a std::string.
std::string formatV(const char* format, std::va_list args);
std::string format(const char* format, ...) QV_PRINTF_FORMAT(1, 2);

// Takes one allocation from the failure hook's budget, or raises out-of-memory
// for a request of `bytes` when the budget is spent.
void consumeAllocation(std::size_t bytes);

// a * b, raising the out-of-memory error when it overflows.
std::size_t checkedMultiply(std::size_t a, std::size_t b);

}  // namespace qvhost

namespace qvhost {
// Prints a warning with an explicit text and records it (zrWarningMsgId takes
// its text from the catalogue; the interpreter's warning() brings its own).
void raiseWarning(const char* identifier, const std::string& message);
}  // namespace qvhost
