// A hash table by name for the index of a settings tree: the first item of each name. Not public.
#pragma once

#include <algorithm>
#include <bit>
#include <functional>

#include "platform/probe_table.h"
#include "platform/types.h"

// A table from a name to the first item entered under it. The items own the names, which must outlive the table.
template <class Item>
class NameTable {
 public:
  // Reserves space for that many names. Call it once, before Enter.
  void Reserve(std::size_t count) { table_.Resize(std::bit_ceil(std::max<std::size_t>(2 * count, 8))); }
  // Keeps the first item of a name.
  void Enter(TextView name, Item* item) {
    const std::size_t hash = Hash(name);
    Slot& slot = table_.Locate(hash, IsOf(hash, name));
    if (slot.IsFree()) slot = {hash, name, item};
  }
  // Null if no item has the name.
  Item* Find(TextView name) const {
    const std::size_t hash = Hash(name);
    return table_.Locate(hash, IsOf(hash, name)).item;
  }

 private:
  struct Slot {
    std::size_t hash = 0;
    TextView name;
    Item* item = nullptr;
    bool IsFree() const { return !item; }
  };
  struct SlotHash {
    std::size_t operator()(const Slot& slot) const { return slot.hash; }
  };

  static std::size_t Hash(TextView name) { return std::hash<TextView>()(name); }
  static auto IsOf(std::size_t hash, TextView name) {
    return [hash, name](const Slot& slot) { return slot.hash == hash && slot.name == name; };
  }

  ProbeTable<Slot, SlotHash> table_;
};
