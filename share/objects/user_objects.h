// UserObjects, the list of the objects that use a node, in order of addition. It owns no object.
//
// Designed for a million nodes, most with no or few users and some with many: a list has the size of one pointer, an
// empty list allocates nothing, and a long list finds and removes an object in constant time. One thread at a time uses
// a list. Append and RemoveDuplicates raise std::bad_alloc without memory.
#pragma once

#include <span>

#include "framework/object.h"

class KVSHARE_API UserObjects {
 public:
  UserObjects() = default;
  ~UserObjects() { RemoveAll(); }
  UserObjects(const UserObjects&) = delete;
  UserObjects& operator=(const UserObjects&) = delete;

  // Counts null elements, too: a damaged document can have them.
  int GetCount() const { return m_pBody ? int(m_pBody->end - m_pBody->first - m_pBody->gaps) : 0; }
  bool IsEmpty() const { return GetCount() == 0; }
  bool Contains(const CObject* object) const { return m_pBody && Find(object) != kNone; }

  // The elements without a copy, valid until the list changes. Empty for a list with gaps after removals.
  std::span<CObject* const> Elements() const {
    if (!m_pBody || m_pBody->gaps != 0) return {};
    return {Slots() + m_pBody->first, Slots() + m_pBody->end};
  }

  void Append(CObject* object);
  // Removes every occurrence. True if there was one.
  bool Remove(const CObject* object);
  // Removes and returns the first element; null for an empty list.
  CObject* RemoveHead();
  // Keeps the first occurrence of each object.
  void RemoveDuplicates();
  void RemoveAll() noexcept;

  // Calls visit(CObject*) for each element in order. visit may remove elements, which are then skipped; if it appends,
  // other elements may be skipped, too.
  template <class Visit>
  void ForEach(Visit visit) const {
    for (DWORD at = m_pBody ? m_pBody->first : 0; m_pBody && at < m_pBody->end; ++at) {
      CObject* object = Slots()[at];
      if (object != Gap()) visit(object);
    }
  }

  // The record, the same as a CObList's: a count, then a reference per element. Loading appends; if it raises, the list
  // keeps the elements that were read. Both pass the archive's exceptions on.
  void Store(CArchive& ar) const;
  void Load(CArchive& ar);

 private:
  static constexpr DWORD kNone = 0xFFFFFFFF;

  // The header before the slots. Elements are between first and end; a removed element leaves a gap.
  struct Body {
    DWORD capacity;
    DWORD first;
    DWORD end;
    DWORD gaps;
    // A hash table of places plus 1, by pointer; 0 is free. Null for a list that is short, was not searched yet, or has
    // duplicates.
    DWORD* index;
    DWORD indexMask;
    bool duplicates;  // one was found: searches go through the list
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
