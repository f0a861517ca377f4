// IdPositions, the first position of each id in a row of ids. QFObjectIndexer owns the row and this index of it.
// Not public.
#pragma once

#include <set>
#include <utility>
#include <vector>

#include "platform/probe_table.h"
#include "platform/types.h"

// A table from an id to its first position; positions count from 0. Ids may come from a hostile document, so the hash
// uses a random seed of the process: a document cannot choose ids that collide.
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
    DWORD position = kNone;
    bool IsFree() const { return position == kNone; }
  };
  struct SlotHash {
    ULONGLONG seed;
    ULONGLONG operator()(const Slot& slot) const { return HashOf(slot.id); }
    ULONGLONG HashOf(DWORD id) const {
      ULONGLONG mixed = (id ^ seed) * 0xFF51AFD7ED558CCDu;
      return (mixed ^ (mixed >> 32)) * 0xC4CEB9FE1A85EC53u;
    }
  };
  static auto IsOf(DWORD id) {
    return [id](const Slot& slot) { return slot.id == id; };
  }

  // The slot that holds the id, or the free slot where it belongs.
  Slot& SlotOf(DWORD id) { return m_table.Locate(m_hash.HashOf(id), IsOf(id)); }
  void Enter(DWORD id, DWORD position);
  void Reserve(std::size_t ids);

  SlotHash m_hash;
  ProbeTable<Slot, SlotHash> m_table;
  std::size_t m_used = 0;
  DWORD m_indexed = 0;                        // number of row elements in the table
  std::set<std::pair<DWORD, DWORD>> m_later;  // (id, position) of each further occurrence
};
