// The table of a storing archive: the number of each class and object. Not public.
//
// A hash table that keeps neighbouring addresses together: objects that were created one after the other are mostly
// adjacent in memory and are stored one after the other, and a scattered table would miss the processor's caches for
// each of them. It needs about 6 to 10 bytes per object, and 120 for an object that is alone in its 4 KiB.
#pragma once

#include <array>
#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "framework/block_pool.h"
#include "platform/probe_table.h"
#include "platform/types.h"

class StoredNumbers {
 public:
  StoredNumbers() = default;
  ~StoredNumbers() {
    for (const Place& place : places_.All())
      if (place.group) BlockPool::Free(place.group, Group::Bytes(place.group->room));
  }
  StoredNumbers(const StoredNumbers&) = delete;
  StoredNumbers& operator=(const StoredNumbers&) = delete;

  // The number of entries; their numbers are 1 to GetCount().
  DWORD GetCount() const { return count_; }

  // Returns the key's number, or 0 for an unknown key. A key is a multiple of 8, like every object's address.
  DWORD NumberOf(const void* key) const {
    const Address at(key);
    const Group* group = PlaceOf(at.group).group;
    return group ? group->NumberAt(at) : 0;
  }

  // Gives an unknown key the next number and returns it. For a known key changes nothing and returns 0.
  DWORD Enter(const void* key) {
    const Address at(key);
    Place* place = &PlaceOf(at.group);
    if (!place->group) place = &Open(at.group);
    if (place->group->Has(at)) return 0;
    if (place->group->count == place->group->room) place->group = Enlarged(place->group);
    place->group->Insert(at, ++count_);
    return count_;
  }

  // Removes the numbers above count; they are used again.
  void RollBack(DWORD count) {
    if (count == count_) return;
    count_ = count;
    for (const Place& place : places_.All())
      if (place.group) place.group->Keep(count);
  }

  // Objects that could not be stored because of a class in them; another attempt would fail too.
  bool IsUnstorable(const void* key) const { return !unstorable_.empty() && unstorable_.contains(key); }
  void NoteUnstorable(const void* key) { unstorable_.insert(key); }

 private:
  static constexpr int kWords = 8;  // of 64 bits; one bit per 8 bytes of address

  // A key: its group of 4 KiB, the word of the group and the bit of the word.
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

  // The numbers of the keys of one group, in the order of their addresses; a set bit marks a known key. The numbers
  // follow the group in its memory block.
  struct Group {
    std::uint64_t known[kWords];
    WORD ahead[kWords];  // number of keys in the earlier words
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
    // Removes the numbers above `highest`.
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

  // A slot of the hash table.
  struct Place {
    std::uintptr_t key = 0;
    Group* group = nullptr;
    bool IsFree() const { return !group; }
  };
  static std::uint64_t HashOf(std::uintptr_t key) { return key * 0x9E3779B97F4A7C15u; }
  struct PlaceHash {
    std::uint64_t operator()(const Place& place) const { return HashOf(place.key); }
  };

  const Place& PlaceOf(std::uintptr_t key) const {
    return places_.Locate(HashOf(key), [key](const Place& place) { return place.key == key; });
  }
  Place& PlaceOf(std::uintptr_t key) { return const_cast<Place&>(std::as_const(*this).PlaceOf(key)); }

  Place& Open(std::uintptr_t key) {
    if ((groups_ + 1) * 2 > places_.Slots()) places_.Resize(places_.Slots() * 2);
    auto* group = new (BlockPool::Allocate(Group::Bytes(kFirstRoom))) Group{};
    group->room = kFirstRoom;
    ++groups_;
    return PlaceOf(key) = {key, group};
  }

  // Moves the group to a larger block.
  static Group* Enlarged(Group* group) {
    const auto room = WORD(group->room * 2);
    auto* wider = static_cast<Group*>(BlockPool::Allocate(Group::Bytes(room)));
    std::memcpy(static_cast<void*>(wider), group, Group::Bytes(group->room));
    BlockPool::Free(group, Group::Bytes(group->room));
    wider->room = room;
    return wider;
  }

  ProbeTable<Place, PlaceHash> places_{64};
  std::size_t groups_ = 0;
  DWORD count_ = 0;
  std::unordered_set<const void*> unstorable_;
};
