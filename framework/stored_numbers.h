// Which number a storing archive gave to a class or object: an open-addressing table from pointer to number. Not
// public.
#pragma once

#include <cstdint>
#include <unordered_set>
#include <vector>

#include "platform/types.h"

class StoredNumbers {
 public:
  struct Slot {
    const void* key = nullptr;
    DWORD number = 0;  // 0: not known
  };

  DWORD GetCount() const { return count_; }

  // The key's slot. One with number 0 is free for it: give it to Enter before any other key is looked up.
  Slot& Find(const void* key) {
    std::size_t at = (reinterpret_cast<std::uintptr_t>(key) * 0x9E3779B97F4A7C15u) >> shift_;
    while (slots_[at].number != 0 && slots_[at].key != key) at = (at + 1) & (slots_.size() - 1);
    return slots_[at];
  }

  // Gives the key the next number.
  DWORD Enter(Slot& slot, const void* key) {
    slot = {key, ++count_};
    const DWORD number = count_;
    if (std::size_t(count_) * 8 > slots_.size() * 5) Grow();
    return number;
  }

  // Forgets the numbers above count: they are handed out again.
  void TakeBack(DWORD count) {
    if (count == count_) return;
    count_ = count;
    Rehash(slots_.size());
  }

  // Objects that can't be stored, however often it is tried.
  bool IsUnstorable(const void* key) const { return !unstorable_.empty() && unstorable_.contains(key); }
  void NoteUnstorable(const void* key) { unstorable_.insert(key); }

 private:
  void Grow() {
    --shift_;
    Rehash(slots_.size() * 2);
  }

  void Rehash(std::size_t size) {
    std::vector<Slot> old(size);
    old.swap(slots_);
    for (const Slot& slot : old)
      if (slot.number != 0 && slot.number <= count_) Find(slot.key) = slot;
  }

  std::unordered_set<const void*> unstorable_;
  std::vector<Slot> slots_ = std::vector<Slot>(1024);
  int shift_ = 64 - 10;
  DWORD count_ = 0;
};
