// The bytes of a dump, which can be larger than the memory: they are read where they are needed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/handles.h"
#include "platform/types.h"

namespace kestrova {

class DumpBytes {
 public:
  virtual ~DumpBytes() = default;
  virtual std::uint64_t Size() const = 0;
  // Replaces the target by that many bytes from `at` on. Returns false if the file does not have them, or if they
  // cannot be read; the target is then empty. No memory is taken for bytes that the file does not have.
  bool Read(std::uint64_t at, std::uint64_t size, std::string& target) const;

 private:
  virtual bool Copy(std::uint64_t at, char* target, std::size_t size) const = 0;
};

// Bytes in memory, which must live as long.
class DumpInMemory : public DumpBytes {
 public:
  explicit DumpInMemory(std::string_view bytes) : bytes_(bytes) {}
  std::uint64_t Size() const override { return bytes_.size(); }

 private:
  bool Copy(std::uint64_t at, char* target, std::size_t size) const override;

  std::string_view bytes_;
};

// A file, with one window of it in memory. The path is the system's. One thread at a time.
class DumpFile : public DumpBytes {
 public:
  // Throws Failure if the file cannot be opened.
  explicit DumpFile(const std::string& path);
  ~DumpFile() override;
  DumpFile(const DumpFile&) = delete;
  DumpFile& operator=(const DumpFile&) = delete;
  std::uint64_t Size() const override { return size_; }

 private:
  bool Copy(std::uint64_t at, char* target, std::size_t size) const override;
  bool ReadAt(std::uint64_t at, char* target, std::size_t size) const;

  HANDLE file_;
  std::uint64_t size_ = 0;
  mutable std::string window_;
  mutable std::uint64_t window_at_ = 0;
};

// An unsigned little-endian number of the bytes, which must have it.
template <class Number>
Number NumberAt(std::string_view bytes, std::size_t at) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < sizeof(Number); ++i)
    value |= std::uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
  return static_cast<Number>(value);
}

}  // namespace kestrova
