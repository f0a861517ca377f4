// How CArray and CList store one element: a plain value by its bytes, everything else by its own ar << and ar >>. An
// element with neither can be kept in memory; to serialize it raises CArchiveException badClass.
#pragma once

#include <type_traits>

#include "framework/archive.h"

template <class T>
inline constexpr bool kStoredRaw = std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>;

// The fewest bytes that an element takes in an archive.
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
