// Stores single objects to memory and loads them from bytes.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/objects/record_bytes.h"

namespace kvtest {

inline std::string StoredObject(CObject& object) {
  return Store([&](CArchive& ar) { ar.WriteObject(&object); });
}

// Passes the archive's exceptions on.
template <class T>
std::unique_ptr<T> LoadedObject(std::string_view bytes) {
  Reader reader(bytes);
  T* object = nullptr;
  reader.ar >> object;
  std::unique_ptr<T> owned(object);
  EXPECT_EQ(reader.ar.GetBytesLeft(), 0u);
  return owned;
}

template <class T>
void LoadAndDelete(CArchive& ar) {
  T* object = nullptr;
  ar >> object;
  delete object;
}

// The cause of the archive exception that loading the bytes as a T raises; none without an exception.
template <class T>
int LoadCause(std::string_view bytes) {
  return CauseOf(bytes, LoadAndDelete<T>);
}

template <class T>
void ExpectEveryPrefixRaises(const std::string& bytes) {
  ExpectPrefixesRaise(bytes, LoadAndDelete<T>);
}

}  // namespace kvtest
