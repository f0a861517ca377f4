// Single objects stored to memory and loaded from bytes.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/objects/record_bytes.h"

namespace kvtest {

inline std::string StoredObject(CObject& object) {
  return Store([&](CArchive& ar) { ar.WriteObject(&object); });
}

// Raises what the archive raises.
template <class T>
std::unique_ptr<T> LoadedObject(std::string_view bytes) {
  Reader reader(bytes);
  T* object = nullptr;
  reader.ar >> object;
  std::unique_ptr<T> owned(object);
  EXPECT_EQ(reader.ar.GetBytesLeft(), 0u);
  return owned;
}

// The cause with which loading the bytes as a T raises; none if it doesn't.
template <class T>
int LoadCause(std::string_view bytes) {
  return CauseOf(bytes, [](CArchive& ar) {
    T* object = nullptr;
    ar >> object;
    delete object;
  });
}

template <class T>
void ExpectEveryPrefixRaises(const std::string& bytes) {
  for (std::size_t length = 0; length < bytes.size(); ++length)
    ASSERT_EQ(LoadCause<T>(bytes.substr(0, length)), CArchiveException::endOfFile) << "length " << length;
}

}  // namespace kvtest
