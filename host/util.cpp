// Checked allocation with the failure hook for tests, the host's tolerance
// equality and processor time.

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>

#include "common/compiler_p.h"
#include "host_p.h"

namespace qvhost {

namespace {
// Allocations still allowed before the hook fails them; -1 when the hook is off.
// The runtime serves one thread (the graphics thread), like the library.
std::int64_t g_budget = -1;
}  // namespace

// No object may be larger than PTRDIFF_MAX; such requests fail here instead of
// reaching malloc (which some checking allocators treat as fatal).
void consumeAllocation(std::size_t bytes) {
  if (bytes > static_cast<std::size_t>(PTRDIFF_MAX)) throwOutOfMemory(bytes);
  if (g_budget < 0) return;
  if (g_budget == 0) throwOutOfMemory(bytes);
  --g_budget;
}

std::size_t checkedMultiply(std::size_t a, std::size_t b) {
  std::size_t product = 0;
  if (qvgui_bits::multiplyOverflows(a, b, &product)) throwSizeOverflow();
  return product;
}

namespace {
// malloc(0) may answer null; every request gets a real, unique block.
void* allocate(std::size_t bytes) {
  consumeAllocation(bytes);
  void* p = std::malloc(bytes == 0 ? 1 : bytes);
  if (p == nullptr) throwOutOfMemory(bytes);
  return p;
}

void* allocateZeroed(std::size_t count, std::size_t size) {
  const std::size_t bytes = checkedMultiply(count, size);
  consumeAllocation(bytes);
  void* p = std::calloc(bytes == 0 ? 1 : bytes, 1);
  if (p == nullptr) throwOutOfMemory(bytes);
  return p;
}

// The old block stays valid when the request fails.
void* reallocate(void* ptr, std::size_t bytes) {
  consumeAllocation(bytes);
  void* p = std::realloc(ptr, bytes == 0 ? 1 : bytes);
  if (p == nullptr) throwOutOfMemory(bytes);
  return p;
}
}  // namespace

}  // namespace qvhost

using namespace qvhost;

void* utMallocWithCheck(std::size_t bytes) { return allocate(bytes); }
void* utCallocWithCheck(std::size_t count, std::size_t size) { return allocateZeroed(count, size); }
void* utReallocWithCheck(void* ptr, std::size_t bytes) { return reallocate(ptr, bytes); }
void utFree(void* ptr) { std::free(ptr); }

void* zrMalloc(std::size_t bytes) { return allocate(bytes); }
void* zrCalloc(std::size_t count, std::size_t size) { return allocateZeroed(count, size); }
void* zrRealloc(void* ptr, std::size_t bytes) { return reallocate(ptr, bytes); }
void zrFree(void* ptr) { std::free(ptr); }

void hostFailAllocationsAfter(std::int64_t successfulAllocations) {
  g_budget = successfulAllocations < 0 ? -1 : successfulAllocations;
}

std::int64_t hostAllocationFailureBudget() { return g_budget; }

HostAllocationFailureScope::HostAllocationFailureScope(std::int64_t successfulAllocations)
    : previous_(g_budget) {
  hostFailAllocationsAfter(successfulAllocations);
}

HostAllocationFailureScope::~HostAllocationFailureScope() { g_budget = previous_; }

// Infinities are equal only to themselves (the a == b shortcut); the relative
// test is floored at 1 so values near zero compare absolutely.
bool utEqualWithinEps(double a, double b) {
  if (a == b) return true;
  if (!std::isfinite(a) || !std::isfinite(b)) return false;
  const double scale = std::fmax(std::fmax(std::fabs(a), std::fabs(b)), 1.0);
  return std::fabs(a - b) <= 4.0 * DBL_EPSILON * scale;
}

double utCPUtime() {
  timespec ts{};
  if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts) == 0) {
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
  }
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}
