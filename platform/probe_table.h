// The hash table of the library's own sources: one array of slots, searched by linear probing. Not public.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

// A table of slots. A slot is free or holds one entry; a default-constructed slot is free. The user chooses the key:
// the table asks a slot IsFree(), gets a slot's hash from the hasher, and compares through the predicate given to
// Locate.
//
// Hasher: std::uint64_t operator()(const Slot&) const. The high bits choose the first slot that is searched, so they
// must depend on the whole key.
//
// The user keeps the table from filling up: before an entry is added, at least one slot must be free, and searches stay
// short while no more than two thirds are used. Slots move when the table is resized or an entry is erased.
template <class Slot, class Hasher>
class ProbeTable {
 public:
  // Without slots: call Resize before Locate.
  explicit ProbeTable(Hasher hasher = {}) : hasher_(hasher) {}
  explicit ProbeTable(std::size_t slots, Hasher hasher = {}) : hasher_(hasher) { Resize(slots); }

  std::size_t Slots() const { return slots_.size(); }
  // Every slot, free ones too, in no order.
  const std::vector<Slot>& All() const { return slots_; }

  // Moves the entries to an array of that many slots: a power of 2, at least 2, and more than the entries.
  void Resize(std::size_t slots) {
    std::vector<Slot> old(slots);
    old.swap(slots_);
    mask_ = slots - 1;
    shift_ = 64 - std::countr_zero(slots);
    for (const Slot& slot : old)
      if (!slot.IsFree()) Locate(hasher_(slot), [](const Slot&) { return false; }) = slot;
  }

  // The slot of the entry for which is_wanted(const Slot&) returns true; without such an entry the free slot for it.
  // is_wanted is called for used slots only.
  template <class Predicate>
  const Slot& Locate(std::uint64_t hash, Predicate is_wanted) const {
    std::size_t at = std::size_t(hash >> shift_);
    while (!slots_[at].IsFree() && !is_wanted(slots_[at])) at = (at + 1) & mask_;
    return slots_[at];
  }
  template <class Predicate>
  Slot& Locate(std::uint64_t hash, Predicate is_wanted) {
    return const_cast<Slot&>(const_cast<const ProbeTable*>(this)->Locate(hash, is_wanted));
  }

  // Frees a used slot of this table. Entries after it move back, so that every entry is still found.
  void Erase(Slot& slot) {
    auto hole = std::size_t(&slot - slots_.data());
    for (std::size_t at = (hole + 1) & mask_; !slots_[at].IsFree(); at = (at + 1) & mask_) {
      const auto first = std::size_t(hasher_(slots_[at]) >> shift_);
      if (((at - first) & mask_) < ((at - hole) & mask_)) continue;  // its search begins after the hole
      slots_[hole] = slots_[at];
      hole = at;
    }
    slots_[hole] = Slot();
  }

 private:
  std::vector<Slot> slots_;
  std::size_t mask_ = 0;
  int shift_ = 0;
  [[no_unique_address]] Hasher hasher_;
};
