// IdPositions, the first position of each id in a row of ids. QFObjectIndexer owns the row and this index of it.
// Not public.
#pragma once

#include <set>
#include <utility>
#include <vector>

#include "platform/types.h"

// A hash table with open addressing; positions count from 0. Ids may come from a hostile document, so the hash uses a
// random seed of the process: a document cannot choose ids that collide.
class IdPositions {
 public:
  static constexpr DWORD kNone = 0xFFFFFFFF;

  IdPositions();

  // Adds the ids that were appended to the row since the last call.
  void AddNewIds(const std::vector<DWORD>& ids);
  // Returns the first position of the id; kNone if the row does not have it.
  DWORD Find(DWORD id) const;
  // Records that the row's element at position, the first occurrence of oldId, is newId now.
  void Replace(DWORD oldId, DWORD newId, DWORD position);

 private:
  struct Slot {
    DWORD id = 0;
    DWORD position = kNone;  // kNone: a free slot
  };

  std::size_t HomeOf(DWORD id) const;
  // The slot that holds the id, or the free slot where it belongs.
  std::size_t PlaceOf(DWORD id) const;
  void Enter(DWORD id, DWORD position);
  void Erase(DWORD id);
  void Reserve(std::size_t ids);

  std::vector<Slot> m_slots;
  int m_shift = 0;
  std::size_t m_used = 0;
  ULONGLONG m_seed;
  DWORD m_indexed = 0;                        // number of row elements in the table
  std::set<std::pair<DWORD, DWORD>> m_later;  // (id, position) of each further occurrence
};
