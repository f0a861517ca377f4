// Which number a storing archive gave to a class or object. Not public.
//
// A table from address to number that keeps neighbours together: objects that were made one after the other mostly lie,
// and are stored, side by side, and a table that scatters its keys would leave the processor's caches at each of them.
// It takes some 6 to 10 bytes for an object among others, and 120 for one that lies alone in its 4 KiB.
#pragma once

#include <array>
#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <unordered_set>
#include <vector>

#include "framework/block_pool.h"
#include "platform/types.h"

class StoredNumbers {
 public:
  StoredNumbers() = default;
  ~StoredNumbers() {
    for (const Place& place : places_)
      if (place.group) BlockPool::Free(place.group, Group::Bytes(place.group->room));
  }
  StoredNumbers(const StoredNumbers&) = delete;
  StoredNumbers& operator=(const StoredNumbers&) = delete;

  // The numbers handed out so far: 1 to GetCount().
  DWORD GetCount() const { return count_; }

  // 0 for a key that is not known. A key is a multiple of 8, as every object's address is.
  DWORD NumberOf(const void* key) const {
    const Address at(key);
    const Group* group = PlaceOf(at.group).group;
    return group ? group->NumberAt(at) : 0;
  }

  // Gives a key that is not known the next number. 0, with nothing changed, for one that is known.
  DWORD Enter(const void* key) {
    const Address at(key);
    Place* place = &PlaceOf(at.group);
    if (!place->group) place = &Open(at.group);
    if (place->group->Has(at)) return 0;
    if (place->group->count == place->group->room) place->group = Widened(place->group);
    place->group->Insert(at, ++count_);
    return count_;
  }

  // Forgets the numbers above count: they are handed out again.
  void TakeBack(DWORD count) {
    if (count == count_) return;
    count_ = count;
    for (const Place& place : places_)
      if (place.group) place.group->Keep(count);
  }

  // Objects that can't be stored, however often it is tried.
  bool IsUnstorable(const void* key) const { return !unstorable_.empty() && unstorable_.contains(key); }
  void NoteUnstorable(const void* key) { unstorable_.insert(key); }

 private:
  static constexpr int kWords = 8;  // of 64 bits; a bit stands for 8 bytes

  // A key as group of 4 KiB, word of the group and bit of the word.
  struct Address {
    explicit Address(const void* key) {
      const auto address = reinterpret_cast<std::uintptr_t>(key);
      assert(address % 8 == 0);
      group = address >> 12;
      word = unsigned(address >> 9 & 7);
      bit = std::uint64_t{1} << (address >> 3 & 63);
    }

    std::uintptr_t group;
    unsigned word;
    std::uint64_t bit;
  };

  // The numbers of the keys in one group stand in the order of their addresses; the set bits tell which keys there are.
  // They follow the group in its block.
  struct Group {
    std::uint64_t known[kWords];
    WORD ahead[kWords];  // keys in the words ahead of each
    WORD count;
    WORD room;

    static std::size_t Bytes(std::size_t room) { return sizeof(Group) + room * sizeof(DWORD); }
    DWORD* Numbers() { return reinterpret_cast<DWORD*>(this + 1); }
    const DWORD* Numbers() const { return reinterpret_cast<const DWORD*>(this + 1); }
    std::size_t RankOf(const Address& at) const {
      return ahead[at.word] + std::size_t(std::popcount(known[at.word] & (at.bit - 1)));
    }
    bool Has(const Address& at) const { return (known[at.word] & at.bit) != 0; }
    DWORD NumberAt(const Address& at) const { return Has(at) ? Numbers()[RankOf(at)] : 0; }
    void Insert(const Address& at, DWORD number) {
      DWORD* place = Numbers() + RankOf(at);
      std::memmove(place + 1, place, std::size_t(Numbers() + count - place) * sizeof(DWORD));
      *place = number;
      known[at.word] |= at.bit;
      for (unsigned word = at.word + 1; word < kWords; ++word) ++ahead[word];
      ++count;
    }
    // Drops the numbers above highest.
    void Keep(DWORD highest) {
      const DWORD* number = Numbers();
      DWORD* kept = Numbers();
      for (unsigned word = 0; word < kWords; ++word) {
        ahead[word] = WORD(kept - Numbers());
        for (std::uint64_t left = known[word]; left != 0; left &= left - 1, ++number) {
          if (*number <= highest) {
            *kept++ = *number;
          } else {
            known[word] &= ~(left & -left);
          }
        }
      }
      count = WORD(kept - Numbers());
    }
  };
  static constexpr WORD kFirstRoom = 4;

  // Open addressing.
  struct Place {
    std::uintptr_t key = 0;
    Group* group = nullptr;
  };

  Place& PlaceOf(std::uintptr_t key) const {
    std::size_t at = (key * 0x9E3779B97F4A7C15u) >> shift_;
    while (places_[at].group && places_[at].key != key) at = (at + 1) & (places_.size() - 1);
    return places_[at];
  }

  Place& Open(std::uintptr_t key) {
    if ((groups_ + 1) * 2 > places_.size()) Grow();
    auto* group = new (BlockPool::Allocate(Group::Bytes(kFirstRoom))) Group{};
    group->room = kFirstRoom;
    ++groups_;
    return PlaceOf(key) = {key, group};
  }

  // The same group with more room, in a block of its own.
  static Group* Widened(Group* group) {
    const auto room = WORD(group->room * 2);
    auto* wider = static_cast<Group*>(BlockPool::Allocate(Group::Bytes(room)));
    std::memcpy(static_cast<void*>(wider), group, Group::Bytes(group->room));
    BlockPool::Free(group, Group::Bytes(group->room));
    wider->room = room;
    return wider;
  }

  void Grow() {
    std::vector<Place> old(places_.size() * 2);
    old.swap(places_);
    --shift_;
    for (const Place& place : old)
      if (place.group) PlaceOf(place.key) = place;
  }

  mutable std::vector<Place> places_ = std::vector<Place>(64);
  int shift_ = 64 - 6;
  std::size_t groups_ = 0;
  DWORD count_ = 0;
  std::unordered_set<const void*> unstorable_;
};
