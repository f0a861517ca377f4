// A hash table by name for the index of a settings tree: the first item of each name. Not public.
#pragma once

#include <string_view>
#include <vector>

// An open-addressed hash table. The items own the names, which must outlive the table.
template <class Item>
class NameTable {
 public:
  // Reserves space for that many names. Call it once, before Enter.
  void Reserve(std::size_t count) {
    std::size_t size = 8;
    while (size < 2 * count) size *= 2;
    slots_.assign(size, {});
  }
  // Keeps the first item of a name.
  void Enter(TextView name, Item* item) {
    Slot& slot = SlotOf(name);
    if (!slot.item) slot = {Hash(name), name, item};
  }
  Item* Find(TextView name) const { return const_cast<NameTable*>(this)->SlotOf(name).item; }

 private:
  struct Slot {
    std::size_t hash = 0;
    TextView name;
    Item* item = nullptr;
  };

  static std::size_t Hash(TextView name) { return std::hash<TextView>()(name); }
  Slot& SlotOf(TextView name) {
    const std::size_t hash = Hash(name);
    std::size_t at = hash & (slots_.size() - 1);
    while (slots_[at].item && (slots_[at].hash != hash || slots_[at].name != name)) at = (at + 1) & (slots_.size() - 1);
    return slots_[at];
  }

  std::vector<Slot> slots_;
};
