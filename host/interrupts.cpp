// The user's interrupt: the pending flag the host raises, the query the
// library polls, scoped deferral and the countdown that lets tests interrupt
// at a chosen query.

#include "host_p.h"

namespace {
bool g_pending = false;
int g_deferralDepth = 0;
std::uint64_t g_countdown = 0;
}  // namespace

bool utIsInterruptPending() {
  if (g_countdown > 0 && --g_countdown == 0) g_pending = true;
  return g_pending && g_deferralDepth == 0;
}

void utThrowIfInterruptPending() {
  if (!utIsInterruptPending()) return;
  g_pending = false;
  qvhost::throwHostError(kHostInterruptId);
}

void utSetInterruptPending(bool pending) { g_pending = pending; }

void utSetInterruptAfterQueries(std::uint64_t queries) { g_countdown = queries; }

utInterruptDeferral::utInterruptDeferral() { ++g_deferralDepth; }
utInterruptDeferral::~utInterruptDeferral() { --g_deferralDepth; }
