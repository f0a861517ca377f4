// Where each id of a row stands first. Kept beside the row by QFObjectIndexer, which has the row itself. Not public.
#pragma once

#include <set>
#include <utility>
#include <vector>

#include "platform/types.h"

// An open-addressed table from an id to its first position; positions count from 0. The ids may come from a damaged or
// hostile document: their places in the table depend on a number drawn by the process, so that nobody can choose ids
// that crowd together.
class IdPositions {
 public:
  static constexpr DWORD kNone = 0xFFFFFFFF;

  IdPositions();

  // Takes in what was appended to the row since the last call.
  void CatchUp(const std::vector<DWORD>& ids);
  // kNone if the id is not there.
  DWORD Find(DWORD id) const;
  // The row's element at the position, the first of oldId, has become newId.
  void Replace(DWORD oldId, DWORD newId, DWORD position);

 private:
  struct Slot {
    DWORD id = 0;
    DWORD position = kNone;  // kNone: a free slot
  };

  std::size_t HomeOf(DWORD id) const;
  // The id's slot, or the free one for it.
  std::size_t PlaceOf(DWORD id) const;
  void Enter(DWORD id, DWORD position);
  void Erase(DWORD id);
  void Reserve(std::size_t ids);

  std::vector<Slot> m_slots;
  int m_shift = 0;
  std::size_t m_used = 0;
  ULONGLONG m_seed;
  DWORD m_known = 0;                          // how much of the row is in
  std::set<std::pair<DWORD, DWORD>> m_later;  // id and position of every occurrence but the first
};
