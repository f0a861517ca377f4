// CObArray: the parts that are not in the header.
#include "framework/ob_array.h"

#include "framework/archive.h"

IMPLEMENT_SERIAL(CObArray, CObject, 0)

void CObArray::SetSize(LONGLONG size, LONGLONG growBy) {
  static_cast<void>(growBy);
  if (size < 0) throw std::out_of_range("CObArray: negative size");
  m_objects.resize(std::size_t(size));
}

void CObArray::SetAtGrow(LONGLONG index, CObject* object) {
  if (index >= GetSize()) SetSize(index + 1);
  SetAt(index, object);
}

LONGLONG CObArray::Add(CObject* object) {
  m_objects.push_back(object);
  return GetUpperBound();
}

LONGLONG CObArray::Append(const CObArray& other) {
  const LONGLONG first = GetSize();
  const std::size_t count = other.m_objects.size();  // `other` may be this array
  m_objects.reserve(m_objects.size() + count);
  for (std::size_t i = 0; i < count; ++i) m_objects.push_back(other.m_objects[i]);
  return first;
}

void CObArray::InsertAt(LONGLONG index, CObject* object, LONGLONG count) {
  if (index < 0 || count < 0) throw std::out_of_range("CObArray: negative index or count");
  if (index > GetSize()) SetSize(index);
  m_objects.insert(m_objects.begin() + index, std::size_t(count), object);
}

void CObArray::RemoveAt(LONGLONG index, LONGLONG count) {
  if (index < 0 || count < 0 || index > GetSize() || count > GetSize() - index)
    throw std::out_of_range("CObArray: nothing there to remove");
  m_objects.erase(m_objects.begin() + index, m_objects.begin() + index + count);
}

void CObArray::Serialize(CArchive& ar) {
  CObject::Serialize(ar);
  if (ar.IsStoring()) {
    ar.WriteCount(m_objects.size());
    for (const CObject* object : m_objects) ar.WriteObject(object);
    return;
  }
  m_objects.clear();
  for (ULONGLONG left = ar.ReadCount(/*elementBytes=*/2); left > 0; --left) m_objects.push_back(ar.ReadObject(nullptr));
}
