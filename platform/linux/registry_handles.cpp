#include "platform/linux/registry_handles.h"

#include <pthread.h>

#include <deque>
#include <vector>

namespace kvregistry {

namespace {

// The parts of a handle's number: two zero bits, which no predefined one has, the slot + 1, the slot's use count.
constexpr int kSlotShift = 2;
constexpr int kUseShift = 26;
constexpr std::uintptr_t kSlotMask = (std::uintptr_t{1} << (kUseShift - kSlotShift)) - 1;

struct Slot {
  KeyRef key;
  std::string path;  // keeps its memory for the next key
  std::uint32_t uses = 0;
  bool open = false;
};

struct Table {
  std::mutex mutex;
  std::deque<Slot> slots;
  std::vector<std::uint32_t> free;
};

// Never destroyed: destructors of other static objects may use the registry.
Table& Handles() {
  static Table* const table = [] {
    pthread_atfork([] { Handles().mutex.lock(); }, [] { Handles().mutex.unlock(); }, [] { Handles().mutex.unlock(); });
    return new Table;
  }();
  return *table;
}

HKEY Number(std::uint32_t slot, std::uint32_t uses) {
  return reinterpret_cast<HKEY>((std::uintptr_t(uses) << kUseShift) | ((std::uintptr_t(slot) + 1) << kSlotShift));
}

Slot* Find(Table& table, HKEY key) {
  const auto number = reinterpret_cast<std::uintptr_t>(key);
  const std::uintptr_t slot = ((number >> kSlotShift) & kSlotMask) - 1;
  if (slot >= table.slots.size()) return nullptr;
  Slot& found = table.slots[slot];
  return found.open && Number(std::uint32_t(slot), found.uses) == key ? &found : nullptr;
}

}  // namespace

bool IsPredefined(HKEY key, Hive& hive) {
  // A handle that went through a signed 32-bit number has its upper half filled with the sign.
  const auto number = std::intptr_t(reinterpret_cast<std::uintptr_t>(key));
  if (number != std::int32_t(number) && std::uintptr_t(number) >> 32 != 0) return false;
  const auto low = std::uint32_t(number);
  hive = low == 0x80000001 ? Hive::kUser : Hive::kMachine;
  return low == 0x80000001 || low == 0x80000002;
}

LSTATUS FindHandle(HKEY key, KeyRef& found, std::string* path) {
  Hive hive;
  if (path) path->clear();
  if (IsPredefined(key, hive)) {
    found = {CurrentStore(hive), kRootId, KEY_ALL_ACCESS};
    return ERROR_SUCCESS;
  }
  found.store.reset();  // before the lock: the last reference may close a connection
  Table& table = Handles();
  const std::lock_guard lock(table.mutex);
  const Slot* slot = Find(table, key);
  if (!slot) return ERROR_INVALID_HANDLE;
  found = slot->key;
  if (path) *path = slot->path;
  return ERROR_SUCCESS;
}

HKEY NewHandle(const KeyRef& key, const std::string& path) {
  Table& table = Handles();
  const std::lock_guard lock(table.mutex);
  if (table.free.empty()) {
    // Room for every slot, so that closing a handle needs no memory.
    if (table.free.capacity() <= table.slots.size()) table.free.reserve(2 * table.slots.size() + 1);
    table.slots.emplace_back();
    table.free.push_back(std::uint32_t(table.slots.size() - 1));
  }
  const std::uint32_t number = table.free.back();
  Slot& slot = table.slots[number];
  slot.path = path;  // first: without memory the slot stays free
  slot.key = key;
  slot.open = true;
  table.free.pop_back();
  return Number(number, ++slot.uses);
}

LSTATUS CloseHandleOf(HKEY key) {
  Hive hive;
  if (IsPredefined(key, hive)) return ERROR_SUCCESS;
  std::shared_ptr<Store> last_use;  // released after the lock
  Table& table = Handles();
  const std::lock_guard lock(table.mutex);
  Slot* slot = Find(table, key);
  if (!slot) return ERROR_INVALID_HANDLE;
  slot->open = false;
  last_use.swap(slot->key.store);
  const auto number = (reinterpret_cast<std::uintptr_t>(key) >> kSlotShift) & kSlotMask;
  table.free.push_back(std::uint32_t(number - 1));
  return ERROR_SUCCESS;
}

}  // namespace kvregistry
