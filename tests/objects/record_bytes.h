// Records built by hand, value after value, and an archive that reads them; single objects stored and loaded.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/archive_bytes.h"

namespace kvtest {

// Appends values in the archive's layout, without using the archive's code.
class RecordBytes {
 public:
  template <class Number>
  RecordBytes& Raw(Number number) {
    bytes_.append(reinterpret_cast<const char*>(&number), sizeof number);
    return *this;
  }
  RecordBytes& Word(int value) { return Raw(std::uint16_t(value)); }
  RecordBytes& Dword(unsigned value) { return Raw(std::uint32_t(value)); }
  // The number of values, then the values.
  RecordBytes& Dwords(const std::vector<DWORD>& values) {
    Dword(unsigned(values.size()));
    for (const DWORD value : values) Dword(value);
    return *this;
  }
  RecordBytes& Double(double value) { return Raw(value); }
  RecordBytes& Text(TextView text) {  // of fewer than 255 units
    bytes_ += std::string("\xFF\xFE\xFF", 3) + char(text.size());
    bytes_.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    return *this;
  }
  RecordBytes& Bytes(std::string_view bytes) {
    bytes_ += bytes;
    return *this;
  }
  RecordBytes& Null() { return Word(0); }
  // A known object or class by its number.
  RecordBytes& Object(int number) { return Word(number); }
  RecordBytes& Class(int number) { return Word(0x8000 | number); }
  RecordBytes& NewClass(std::string_view name, int schema) {
    Word(0xFFFF).Word(schema).Word(int(name.size()));
    bytes_ += name;
    return *this;
  }

  const std::string& Get() const { return bytes_; }

 private:
  std::string bytes_;
};

// An archive that reads its own copy of the bytes, so that a sanitizer finds a read after their end.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes.begin(), bytes.end()) {}

 private:
  std::vector<BYTE> bytes_;
  CMemFile file_{bytes_.data(), bytes_.size()};

 public:
  CArchive ar{&file_, CArchive::load};
};

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
