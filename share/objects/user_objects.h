// UserObjects, the list of the objects that use a node, in the order in which they came. It owns none of them. Made for
// a million nodes of which most have none or few, and a few have many: a list is one pointer, empty ones allocate
// nothing, and a long one finds and removes an object in constant time. In an archive it looks like a CObList.
#pragma once

#include <span>

#include "framework/object.h"

class KVSHARE_API UserObjects {
 public:
  UserObjects() = default;
  ~UserObjects() { RemoveAll(); }
  UserObjects(const UserObjects&) = delete;
  UserObjects& operator=(const UserObjects&) = delete;

  // Null elements count, too: a document may hold them.
  int GetCount() const { return m_pBody ? int(m_pBody->end - m_pBody->first - m_pBody->gaps) : 0; }
  bool IsEmpty() const { return GetCount() == 0; }
  bool Contains(const CObject* object) const { return m_pBody && Find(object) != kNone; }

  // The elements as they lie in memory, until the list changes; none for a list with gaps where elements were removed.
  std::span<CObject* const> Elements() const {
    if (!m_pBody || m_pBody->gaps != 0) return {};
    return {Slots() + m_pBody->first, Slots() + m_pBody->end};
  }

  void Append(CObject* object);
  // Every occurrence. True if there was one.
  bool Remove(const CObject* object);
  // Gives the first element, removed; null from an empty list.
  CObject* RemoveHead();
  // Keeps the first occurrence of each.
  void RemoveDuplicates();
  void RemoveAll() noexcept;

  // Calls visit(CObject*) for each element in order. Elements that come or go meanwhile are seen, or not, accordingly.
  template <class Visit>
  void ForEach(Visit visit) const {
    for (DWORD at = m_pBody ? m_pBody->first : 0; m_pBody && at < m_pBody->end; ++at) {
      CObject* object = Slots()[at];
      if (object != Gap()) visit(object);
    }
  }

  // A count, then a reference for each element. Loading appends; when it raises, the list holds what was read so far.
  void Store(CArchive& ar) const;
  void Load(CArchive& ar);

 private:
  static constexpr DWORD kNone = 0xFFFFFFFF;

  // Stands ahead of the slots. Elements lie between first and end; one that was removed leaves a gap.
  struct Body {
    DWORD capacity;
    DWORD first;
    DWORD end;
    DWORD gaps;
    // Places of elements plus 1, hashed by pointer; 0 is free. Null for a list that is short, or not searched yet, or
    // has duplicates.
    DWORD* index;
    DWORD indexMask;
    bool duplicates;  // one was met: searching goes through the list
  };

  static CObject* Gap() { return reinterpret_cast<CObject*>(std::uintptr_t(1)); }
  CObject** Slots() const { return reinterpret_cast<CObject**>(m_pBody + 1); }
  static std::size_t BytesFor(DWORD capacity);
  void Reserve(DWORD capacity);
  void MakeRoom();
  void Compact();
  void LeaveGap(DWORD place);
  void Tidy();
  DWORD Find(const CObject* object) const;
  DWORD EnterInIndex(DWORD place);
  bool BuildIndex(bool dropDuplicates);
  void DropIndex() noexcept;
  DWORD LoadKnown(CArchive& ar, ULONGLONG count);

  Body* m_pBody = nullptr;
};
