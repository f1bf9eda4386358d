// Controls of the reference runtime that exist for tests: failing
// allocations on purpose, interrupting after a count of queries, and
// inspecting what was allocated, warned and reported.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "qvhost/runtime.h"

// ---- Allocation and array accounting ----------------------------------------

// Host arrays alive right now (created and not yet destroyed), so tests can
// check that a conversion leaks nothing.
QVHOST_API std::int64_t hostLiveArrayCount();

// Test hook: let this many further allocations succeed, then make every later
// one fail with the out-of-memory error until the hook is turned off with -1.
// Covers the checked allocators, zrMalloc/zrCalloc/zrRealloc and the creation
// of host arrays (each array record counts as one allocation, its element
// storage as another).
QVHOST_API void hostFailAllocationsAfter(std::int64_t successfulAllocations);  // -1 turns it off
QVHOST_API std::int64_t hostAllocationFailureBudget();                         // what is left; -1 when off

// Sets the hook for its lifetime and restores the previous setting afterwards.
class QVHOST_API HostAllocationFailureScope {
 public:
  explicit HostAllocationFailureScope(std::int64_t successfulAllocations);
  ~HostAllocationFailureScope();
  HostAllocationFailureScope(const HostAllocationFailureScope&) = delete;
  HostAllocationFailureScope& operator=(const HostAllocationFailureScope&) = delete;

 private:
  std::int64_t previous_;
};

// ---- Recorded warnings ------------------------------------------------------

// Warnings raised so far, oldest first, for callers and tests that must see
// which identifiers were raised.
struct HostWarning {
  std::string identifier;
  std::string message;
};
QVHOST_API std::vector<HostWarning> hostRecordedWarnings();
QVHOST_API void hostClearRecordedWarnings();

// ---- Interrupts -------------------------------------------------------------

// The host (or a test) raises or clears the user's interrupt.
QVHOST_API void utSetInterruptPending(bool pending);
// Counts down the queries of utIsInterruptPending: the query that brings the
// count to zero makes an interrupt pending by itself (so 1 interrupts the very
// next query); 0 turns the countdown off. Queries made under a deferral count
// too. Lets tests interrupt a long computation at a chosen point.
QVHOST_API void utSetInterruptAfterQueries(std::uint64_t queries);

// ---- Interpreter ------------------------------------------------------------

QVHOST_API std::size_t hostWorkspaceEventsPublished();

// ---- Unhandled errors -------------------------------------------------------

QVHOST_API std::vector<ScriptException> hostUnhandledExceptions();
// Interrupts reported through hostReportUnhandledInterrupt.
QVHOST_API std::size_t hostUnhandledInterruptCount();
// Clears both the exceptions and the interrupt count.
QVHOST_API void hostClearUnhandledExceptions();
