// The handle table. A handle contains its slot and the slot's generation, so that a closed handle is not taken for the
// next object of its slot.
#include "platform/handles.h"

#include <mutex>
#include <vector>

#include "platform/linux/handle_table.h"

namespace {

constexpr std::uintptr_t kSlotBits = 24;
// Generations start at 1, so that no handle is null, and do not reach the bits of INVALID_HANDLE_VALUE.
constexpr std::uintptr_t kGenerations = (std::uintptr_t(1) << 37) - 1;
constexpr std::uintptr_t kSlotMask = (std::uintptr_t(1) << kSlotBits) - 1;

struct Slot {
  std::shared_ptr<HandleObject> object;
  std::uintptr_t generation = 1;
};

struct Table {
  std::mutex lock;
  std::vector<Slot> slots;
  std::vector<std::size_t> free;
};

// Never destroyed, because static destructors may still close handles.
Table& TheTable() {
  static auto* table = new Table;
  return *table;
}

// The handle's slot, or null. The caller has locked the table.
Slot* Find(Table& table, HANDLE handle) {
  const auto number = reinterpret_cast<std::uintptr_t>(handle);
  const std::uintptr_t slot = (number >> 2) & kSlotMask;
  if ((number & 3) != 0 || slot >= table.slots.size()) return nullptr;
  Slot& found = table.slots[slot];
  return found.object && found.generation == number >> (kSlotBits + 2) ? &found : nullptr;
}

}  // namespace

HANDLE AddHandle(std::shared_ptr<HandleObject> object) {
  Table& table = TheTable();
  const std::lock_guard guard(table.lock);
  if (table.free.empty()) {
    const std::size_t number = table.slots.size();
    if (table.free.capacity() <= number) table.free.reserve(2 * number + 16);  // room to close every handle
    table.slots.emplace_back();
    table.free.push_back(number);
  }
  const std::size_t slot = table.free.back();
  table.free.pop_back();
  table.slots[slot].object = std::move(object);
  return reinterpret_cast<HANDLE>((table.slots[slot].generation << kSlotBits | slot) << 2);
}

std::shared_ptr<HandleObject> FindHandleObject(HANDLE handle) {
  Table& table = TheTable();
  const std::lock_guard guard(table.lock);
  const Slot* slot = Find(table, handle);
  if (slot) return slot->object;
  SetLastError(ERROR_INVALID_HANDLE);
  return nullptr;
}

BOOL CloseHandle(HANDLE handle) {
  std::shared_ptr<HandleObject> last;  // destroyed after the lock is released: closing can take long
  Table& table = TheTable();
  const std::lock_guard guard(table.lock);
  Slot* slot = Find(table, handle);
  if (!slot) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  last = std::move(slot->object);
  slot->generation = slot->generation % kGenerations + 1;
  table.free.push_back(std::size_t(slot - table.slots.data()));
  return TRUE;
}
