// How CArray and CList store one element: trivially copyable values as their bytes, all other types through their
// operators << and >>. A type without these operators can be kept in memory; serializing it raises CArchiveException
// badClass.
#pragma once

#include <type_traits>

#include "framework/archive.h"

template <class T>
inline constexpr bool kStoredRaw = std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>;

// The smallest number of bytes that an element has in an archive.
template <class T>
inline constexpr std::size_t kElementBytes = kStoredRaw<T> ? sizeof(T) : 1;

template <class T>
void StoreElement(CArchive& ar, const T& element) {
  if constexpr (kStoredRaw<T>) {
    ar.Write(&element, sizeof(T));
  } else if constexpr (requires { ar << element; }) {
    ar << element;
  } else {
    AfxThrowArchiveException(CArchiveException::badClass, ar.m_strFileName);
  }
}

template <class T>
void LoadElement(CArchive& ar, T& element) {
  if constexpr (kStoredRaw<T>) {
    ar.EnsureRead(&element, sizeof(T));
  } else if constexpr (requires { ar >> element; }) {
    ar >> element;
  } else {
    AfxThrowArchiveException(CArchiveException::badClass, ar.m_strFileName);
  }
}
