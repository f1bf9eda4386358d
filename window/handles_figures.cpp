// Integer (figure) handles, the diagnostic dump of the handle table and the
// test access to it.
#include <climits>

#include "window/handles_p.h"

using namespace qvgui_handles;

namespace {

[[noreturn]] void raiseBadHandleValue(int n) {
  if (n == INT_MAX) qvgui_messages::raise::handleValueExceedsMaximum(n, kMaxIntegerHandle);
  qvgui_messages::raise::handleBadArguments(n, kMaxIntegerHandle);
}

void warnIntegerHandlesFull() { qvgui_messages::warn::handleIntegerHandleArrayFull(kMaxIntegerHandle); }

}  // namespace

bool assign_figure_handle(void* object, int n) {
  if (n < 0 || n == INT_MAX) raiseBadHandleValue(n);
  HandleTable_tag& global = globalTable();
  bindInteger(&global, n, object);
  if (n == g_lowestFreeInteger) {
    // Stops at INT_MAX at the latest: that handle never resolves.
    do {
      ++g_lowestFreeInteger;
      if (g_lowestFreeInteger == kMaxIntegerHandle) {
        warnIntegerHandlesFull();
        ++g_lowestFreeInteger;
      }
    } while (handle2pointer_in_table(global.integers, g_lowestFreeInteger + kReuseStep) != nullptr);
  }
  return true;
}

double new_figure_handle(void* object) {
  const int n = g_lowestFreeInteger;
  if (n < 0 || n == INT_MAX) return -1.0;  // every integer handle is taken
  return assign_figure_handle(object, n) ? double(n) : -1.0;
}

int get_max_integer_handle() { return kMaxIntegerHandle; }

void print_handle_table() {
  const HandleTable_tag& table = globalTable();
  int blocks = 0;
  for (const HandleBlock* b = table.head; b; b = b->next) ++blocks;
  utPrintf("handle_array size = %d\n", kHandleBlockSize);
  utPrintf("number of linked handle arrays = %d\n", blocks);
  utPrintf("[index:(segment)(offset)][number]\n");
  for (const HandleBlock* b = table.head; b; b = b->next) {
    for (int s = 0; s < kHandleBlockSize; ++s) {
      const HandleSlot& slot = b->slots[s];
      if (!slot.object) continue;
      utPrintf("[%3d:(%2d)(%3d)][%2d] --> %s\n", b->number * kHandleBlockSize + s, b->number, s,
               int(slot.reuse), hostObjectTypeName(slot.object));
    }
    utPrintf(" |  NEXT\n");
    utPrintf(" V  SEGMENT:\n");
  }
  utPrintf("NULL\n");
}

namespace gui_objects {
namespace test {

std::vector<double> get_all_handles(HandleTable_tag* table) {
  if (!table) table = &globalTable();
  std::vector<double> handles;
  for (const HandleBlock* b = table->head; b; b = b->next)
    for (int s = 0; s < kHandleBlockSize; ++s)
      if (b->slots[s].object)
        handles.push_back(b->number * kHandleBlockSize + s + b->slots[s].reuse * kReuseStep);
  return handles;
}

int get_number_of_handles() { return static_cast<int>(get_all_handles(nullptr).size()); }

void reset_handle_table() {
  clearTable(&globalTable());
  g_nextFree = 0;
  g_lowestFreeInteger = 0;
  g_directoryLimit = kHandleDirectoryLimit;
}

void set_handle_directory_limit(int entries) {
  g_directoryLimit = entries > 0 ? entries : kHandleDirectoryLimit;
}

void set_lowest_free_integer_handle(int n) { g_lowestFreeInteger = n; }
int get_lowest_free_integer_handle() { return g_lowestFreeInteger; }

}  // namespace test
}  // namespace gui_objects
