// PointerSet, a hash table of pointers with open addressing, for walks over object lists. Up to 42 pointers need no
// heap memory. One thread at a time uses a set.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include "framework/ob_list.h"
#include "platform/types.h"

class PointerSet {
 public:
  // most: the largest number of different pointers that will be inserted.
  explicit PointerSet(LONGLONG most) {
    if (std::size_t(most) <= kSmall * 2 / 3) return;
    large_.resize(std::bit_ceil(std::size_t(most) * 3 / 2));
    slots_ = large_.data();
    shift_ = 64 - std::countr_zero(large_.size());
  }
  PointerSet(const PointerSet&) = delete;
  PointerSet& operator=(const PointerSet&) = delete;

  bool Contains(const void* pointer) const { return slots_[PlaceOf(KeyOf(pointer))] != 0; }
  // False if the set has the pointer already. Null is a pointer like any other.
  bool Insert(const void* pointer) {
    const std::uintptr_t key = KeyOf(pointer);
    std::uintptr_t& slot = slots_[PlaceOf(key)];
    if (slot != 0) return false;
    slot = key;
    return true;
  }

 private:
  static constexpr std::size_t kSmall = 64;
  static constexpr std::uintptr_t kNullKey = 1;  // no object has an odd address

  static std::uintptr_t KeyOf(const void* pointer) {
    return pointer ? reinterpret_cast<std::uintptr_t>(pointer) : kNullKey;
  }
  std::size_t Slots() const { return std::size_t(1) << (64 - shift_); }
  // The slot that holds the key, or the free slot where it belongs.
  std::size_t PlaceOf(std::uintptr_t key) const {
    std::size_t at = (key * 0x9E3779B97F4A7C15u) >> shift_;
    while (slots_[at] != 0 && slots_[at] != key) at = (at + 1) & (Slots() - 1);
    return at;
  }

  std::array<std::uintptr_t, kSmall> small_ = {};
  std::vector<std::uintptr_t> large_;
  std::uintptr_t* slots_ = small_.data();
  int shift_ = 64 - 6;
};

// Inserts every element of the list, null too.
inline void InsertAll(const CObList& list, PointerSet& set) {
  for (POSITION at = list.GetHeadPosition(); at;) set.Insert(list.GetNext(at));
}
