// Private layout of the handle table: blocks of 512 slots chained in block
// order, a directory indexed by block number, and the process-wide state.
#pragma once

#include <cstdint>

#include "geometry/messages_p.h"
#include "qvgui/window.h"

struct HandleSlot {
  void* object;         // null when free
  std::uint32_t reuse;  // 1..8191 while usable; kHandleReuseLimit retires the slot
};

struct HandleBlock {
  HandleSlot slots[kHandleBlockSize];
  std::int32_t number;
  HandleBlock* next;  // the next allocated block, in increasing block number
  // Bit s is set while slot s may be handed out (unbound and not retired), so
  // that the next-free search skips occupied runs a word at a time.
  std::uint64_t freeBits[kHandleBlockSize / 64];
};

struct HandleDirEntry {
  HandleBlock* block;       // null when not allocated
  std::uint32_t live;       // bound slots in the block
  std::uint32_t reuseBase;  // reuse count of every slot when the block is (re)allocated
};

struct HandleTable_tag {
  HandleBlock* head;
  HandleDirEntry* directory;
  std::int32_t directoryLength;
  HandleTable_tag* integers;  // whole-number handles; null until first needed
};

namespace qvgui_handles {

inline constexpr double kReuseStep = 1.0 / kHandleReuseLimit;
inline constexpr double kHandleEnd = 2147483647.0;  // handles lie in [0, kHandleEnd)
inline constexpr int kMaxIntegerHandle = 2147483646;

// A handle taken apart. ok is false for NaN, infinities, negatives and values
// at or beyond kHandleEnd; scaledFraction is the fraction times 8192 (exact,
// as 8192 is a power of two).
struct SplitHandle {
  bool ok;
  bool whole;
  std::int32_t index;
  double scaledFraction;
};
SplitHandle splitHandle(double h) noexcept;

HandleTable_tag& globalTable() noexcept;
bool isGlobal(const HandleTable_tag* table) noexcept;

// Binds whole-number handle n in table's integer-handle table (made on need).
void bindInteger(HandleTable_tag* table, std::int32_t n, void* object);
// Frees the table's blocks, directory and integer table, leaving it empty.
void clearTable(HandleTable_tag* table) noexcept;

// Process-wide state of the global table.
extern std::int32_t g_nextFree;
extern std::int32_t g_lowestFreeInteger;
extern std::int32_t g_directoryLimit;

}  // namespace qvgui_handles
