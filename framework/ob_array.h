// CObArray: a growing array of object pointers, which may be null. The array owns none of the objects.
//
// As CArray (framework/array.h) otherwise: indices from 0, std::out_of_range for an index outside, one thread at a
// time. Serialize stores the count and a reference for each element. Loading replaces the content; if it raises, the
// array has the elements read so far.
#pragma once

#include <stdexcept>
#include <vector>

#include "framework/object.h"

class KVSHARE_API CObArray : public CObject {
  DECLARE_SERIAL(CObArray)

 public:
  CObArray() = default;

  LONGLONG GetSize() const { return LONGLONG(m_objects.size()); }
  LONGLONG GetCount() const { return LONGLONG(m_objects.size()); }
  bool IsEmpty() const { return m_objects.empty(); }
  LONGLONG GetUpperBound() const { return GetSize() - 1; }
  // New elements are null. A negative size raises std::out_of_range. growBy is ignored and kept for existing callers.
  void SetSize(LONGLONG size, LONGLONG growBy = -1);
  void RemoveAll() { m_objects = {}; }
  void FreeExtra() { m_objects.shrink_to_fit(); }

  CObject* GetAt(LONGLONG index) const { return m_objects.at(std::size_t(index)); }
  void SetAt(LONGLONG index, CObject* object) { m_objects.at(std::size_t(index)) = object; }
  CObject*& ElementAt(LONGLONG index) { return m_objects.at(std::size_t(index)); }
  CObject*& operator[](LONGLONG index) { return m_objects.at(std::size_t(index)); }
  CObject* operator[](LONGLONG index) const { return m_objects.at(std::size_t(index)); }
  // Null for an empty array. Valid until the size changes.
  CObject** GetData() { return m_objects.empty() ? nullptr : m_objects.data(); }
  CObject* const* GetData() const { return m_objects.empty() ? nullptr : m_objects.data(); }

  void SetAtGrow(LONGLONG index, CObject* object);
  // Both return the index of the first added element.
  LONGLONG Add(CObject* object);
  LONGLONG Append(const CObArray& other);
  void Copy(const CObArray& other) { m_objects = other.m_objects; }
  void InsertAt(LONGLONG index, CObject* object, LONGLONG count = 1);
  void RemoveAt(LONGLONG index, LONGLONG count = 1);

  void Serialize(CArchive& ar) override;

 private:
  std::vector<CObject*> m_objects;
};
