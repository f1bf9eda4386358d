// The handle table: resolving, binding and destroying handles, and handing
// out new ones at the next-free hint.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "common/compiler_p.h"
#include "window/handles_p.h"

namespace qvgui_handles {

std::int32_t g_nextFree = 0;
std::int32_t g_lowestFreeInteger = 0;
std::int32_t g_directoryLimit = kHandleDirectoryLimit;

namespace {

HandleTable_tag g_global{};

// ---- Failures ---------------------------------------------------------------------

[[noreturn]] void raiseAllocationFailed() { qvgui_messages::raise::handleAllocationFailed(g_directoryLimit); }

void warnOutOfUniqueHandles() { qvgui_messages::warn::handleOutOfUniqueHandles(g_directoryLimit); }

// ---- Blocks and the directory --------------------------------------------------------

inline void markUsed(HandleBlock* b, int s) noexcept {
  b->freeBits[s >> 6] &= ~(std::uint64_t(1) << (s & 63));
}
inline void markFree(HandleBlock* b, int s) noexcept { b->freeBits[s >> 6] |= std::uint64_t(1) << (s & 63); }

// The first slot at or after s that may be handed out, or -1.
inline int firstFree(const HandleBlock* b, int s) noexcept {
  int w = s >> 6;
  std::uint64_t bits = b->freeBits[w] & (~std::uint64_t(0) << (s & 63));
  for (;;) {
    if (bits) return w * 64 + qvgui_bits::countTrailingZeros(bits);
    if (++w == kHandleBlockSize / 64) return -1;
    bits = b->freeBits[w];
  }
}

inline HandleSlot* findSlot(HandleTable_tag* table, std::int32_t index, HandleDirEntry** entry) noexcept {
  const std::int32_t b = index >> 9;
  if (b >= table->directoryLength) return nullptr;
  HandleDirEntry& e = table->directory[b];
  if (!e.block) return nullptr;
  if (entry) *entry = &e;
  return &e.block->slots[index & (kHandleBlockSize - 1)];
}

void growDirectory(HandleTable_tag* table, std::int32_t length) {
  auto* grown = static_cast<HandleDirEntry*>(utMallocWithCheck(sizeof(HandleDirEntry) * std::size_t(length)));
  const std::int32_t old = table->directoryLength;
  if (old > 0) std::memcpy(grown, table->directory, sizeof(HandleDirEntry) * std::size_t(old));
  for (std::int32_t i = old; i < length; ++i) grown[i] = HandleDirEntry{nullptr, 0, 1};
  utFree(table->directory);
  table->directory = grown;
  table->directoryLength = length;
}

HandleBlock* allocateBlock(HandleTable_tag* table, std::int32_t number) {
  auto* block = static_cast<HandleBlock*>(utMallocWithCheck(sizeof(HandleBlock)));
  HandleDirEntry& entry = table->directory[number];
  for (HandleSlot& s : block->slots) s = HandleSlot{nullptr, entry.reuseBase};
  const bool usable = entry.reuseBase != std::uint32_t(kHandleReuseLimit);
  for (std::uint64_t& w : block->freeBits) w = usable ? ~std::uint64_t(0) : 0;
  block->number = number;
  HandleBlock* prev = nullptr;
  for (HandleBlock* p = table->head; p && p->number < number; p = p->next) prev = p;
  HandleBlock*& link = prev ? prev->next : table->head;
  block->next = link;
  link = block;
  entry.block = block;
  return block;
}

void freeBlock(HandleTable_tag* table, HandleDirEntry& entry) noexcept {
  HandleBlock* block = entry.block;
  HandleBlock** link = &table->head;
  while (*link != block) link = &(*link)->next;
  *link = block->next;
  utFree(block);
  entry.block = nullptr;
}

// The directory entry for a new block of the global table.
std::int32_t chooseDirectoryEntry(HandleTable_tag* table) {
  const auto retired = static_cast<std::uint32_t>(kHandleReuseLimit);
  if (table->directoryLength >= g_directoryLimit) {
    // Uniqueness is given up rather than failing: retired block numbers come back.
    warnOutOfUniqueHandles();
    for (std::int32_t i = 0; i < table->directoryLength; ++i) {
      HandleDirEntry& e = table->directory[i];
      if (!e.block && e.reuseBase == retired) e.reuseBase = 1;
    }
  }
  for (std::int32_t i = 0; i < table->directoryLength; ++i) {
    const HandleDirEntry& e = table->directory[i];
    if (!e.block && e.reuseBase != retired) return i;
  }
  if (table->directoryLength >= g_directoryLimit) raiseAllocationFailed();
  const std::int32_t first = table->directoryLength;
  growDirectory(table, first + 32);
  return first;
}

// Moves the hint to a free slot of an allocated block, at or after the hint.
void searchHint() {
  HandleTable_tag* table = &g_global;
  std::int32_t b = g_nextFree >> 9;
  std::int32_t s = g_nextFree & (kHandleBlockSize - 1);
  HandleBlock* block = b < table->directoryLength ? table->directory[b].block : nullptr;
  if (!block) {
    b = chooseDirectoryEntry(table);
    block = allocateBlock(table, b);
    s = 0;
  }
  for (;;) {
    const int found = firstFree(block, s);
    if (found >= 0) {
      g_nextFree = b * kHandleBlockSize + found;
      return;
    }
    // The block list runs in increasing block number, so the next allocated
    // block with room is also the next such directory entry. Scanning the
    // contiguous directory beats chasing the list through every full block,
    // which is what a steady churn of many live handles would otherwise do.
    std::int32_t nb = b + 1;
    while (nb < table->directoryLength &&
           (!table->directory[nb].block || table->directory[nb].live >= std::uint32_t(kHandleBlockSize))) {
      ++nb;
    }
    if (nb < table->directoryLength) {
      block = table->directory[nb].block;
      b = nb;
    } else {
      b = chooseDirectoryEntry(table);
      block = allocateBlock(table, b);
    }
    s = 0;
  }
}

}  // namespace

SplitHandle splitHandle(double h) noexcept {
  SplitHandle r{false, false, 0, 0.0};
  if (!(h >= 0.0 && h < kHandleEnd)) return r;  // also rejects NaN
  // Truncation is the floor here: h is known to be in [0, 2^31 - 1).
  r.ok = true;
  r.index = static_cast<std::int32_t>(h);
  r.scaledFraction = (h - r.index) * kHandleReuseLimit;
  r.whole = r.scaledFraction == 0.0;
  return r;
}

HandleTable_tag& globalTable() noexcept { return g_global; }
bool isGlobal(const HandleTable_tag* table) noexcept { return table == &g_global; }

void bindInteger(HandleTable_tag* table, std::int32_t n, void* object) {
  if (!table->integers) table->integers = newHandleTable();
  bind_handle_in_table(table->integers, n + kReuseStep, object);
}

void clearTable(HandleTable_tag* table) noexcept {
  if (table->integers) destroyHandleTable(table->integers);
  for (HandleBlock* b = table->head; b;) {
    HandleBlock* next = b->next;
    utFree(b);
    b = next;
  }
  utFree(table->directory);
  *table = HandleTable_tag{};
}

}  // namespace qvgui_handles

using namespace qvgui_handles;

// ---- Tables --------------------------------------------------------------------------

HandleTable_tag* newHandleTable() {
  return static_cast<HandleTable_tag*>(utCallocWithCheck(1, sizeof(HandleTable_tag)));
}

void destroyHandleTable(HandleTable_tag* table) {
  if (!table) return;
  if (isGlobal(table)) {
    clearTable(table);  // the process-wide table is emptied, never freed
    return;
  }
  clearTable(table);
  utFree(table);
}

void* handle2pointer_in_table(HandleTable_tag* table, double h) {
  if (!table) return nullptr;
  const SplitHandle s = splitHandle(h);
  if (!s.ok) return nullptr;
  if (s.whole)
    return table->integers ? handle2pointer_in_table(table->integers, s.index + kReuseStep) : nullptr;
  const HandleSlot* slot = findSlot(table, s.index, nullptr);
  if (!slot || s.scaledFraction != double(slot->reuse)) return nullptr;
  return slot->object;
}

bool bind_handle_in_table(HandleTable_tag* table, double h, void* object) {
  if (!table) return false;
  const SplitHandle s = splitHandle(h);
  // A fraction that is no whole reuse count names no slot that any lookup
  // would find again.
  if (!s.ok || s.scaledFraction != std::floor(s.scaledFraction)) return false;
  if (s.whole) {
    // Whole numbers go to the integer table; the answer stays false by design.
    bindInteger(table, s.index, object);
    return false;
  }
  const std::int32_t b = s.index >> 9;
  if (b >= table->directoryLength) growDirectory(table, b + 32);
  HandleDirEntry& entry = table->directory[b];
  if (!entry.block) allocateBlock(table, b);
  // Callers bind only free handles, so an earlier binding is not looked for.
  ++entry.live;
  const int k = s.index & (kHandleBlockSize - 1);
  HandleSlot& slot = entry.block->slots[k];
  slot.reuse = static_cast<std::uint32_t>(s.scaledFraction);
  slot.object = object;
  markUsed(entry.block, k);
  return true;
}

void destroy_handle_in_table(HandleTable_tag* table, double h) {
  if (!table) return;
  const SplitHandle s = splitHandle(h);
  if (!s.ok) return;
  if (s.whole) {
    if (table->integers) destroy_handle_in_table(table->integers, s.index + kReuseStep);
    if (isGlobal(table)) g_lowestFreeInteger = std::min(g_lowestFreeInteger, s.index);
    return;
  }
  HandleDirEntry* entry = nullptr;
  HandleSlot* slot = findSlot(table, s.index, &entry);
  // A stale or free handle must not release the slot's current object.
  if (!slot || !slot->object || s.scaledFraction != double(slot->reuse)) return;
  slot->object = nullptr;
  ++slot->reuse;
  const bool retired = slot->reuse >= std::uint32_t(kHandleReuseLimit);
  // A retired slot retires its block number too, once the block is freed.
  entry->reuseBase = retired ? std::uint32_t(kHandleReuseLimit) : std::max(entry->reuseBase, slot->reuse);
  if (!retired) markFree(entry->block, s.index & (kHandleBlockSize - 1));
  if (isGlobal(table) && s.index < g_nextFree && !retired) g_nextFree = s.index;
  if (--entry->live == 0) freeBlock(table, *entry);
}

// ---- The process-wide table ------------------------------------------------------------

double new_handle(void* object) {
  searchHint();
  const std::int32_t index = g_nextFree;
  HandleDirEntry* entry = nullptr;
  HandleSlot* slot = findSlot(&g_global, index, &entry);
  slot->object = object;
  markUsed(entry->block, index & (kHandleBlockSize - 1));
  ++entry->live;
  const double h = index + slot->reuse * kReuseStep;
  try {
    searchHint();
  } catch (...) {
    // No handle is handed out when the next one cannot be prepared.
    slot->object = nullptr;
    markFree(entry->block, index & (kHandleBlockSize - 1));
    --entry->live;
    throw;
  }
  return h;
}

void destroy_handle(double h) { destroy_handle_in_table(&g_global, h); }

void* handle2pointer(double h) {
  void* p = handle2pointer_in_table(&g_global, h);
  return p == reinterpret_cast<void*>(~std::uintptr_t(0)) ? nullptr : p;
}

void* handle2pointerIgnoreReuseCount(int index) {
  if (index < 0) return nullptr;
  const HandleSlot* slot = findSlot(&g_global, index, nullptr);
  return slot ? slot->object : nullptr;
}

bool rebind_handle(double h, void* object) {
  const SplitHandle s = splitHandle(h);
  if (!s.ok || s.whole) return false;
  HandleSlot* slot = findSlot(&g_global, s.index, nullptr);
  // Only a bound slot is rebound, and never to null: a free-looking slot
  // would be handed out again while still counted live.
  if (!object || !slot || !slot->object || s.scaledFraction != double(slot->reuse)) return false;
  slot->object = object;
  return true;
}

bool is_handle_integer(double h) { return h - std::floor(h) == 0.0; }
