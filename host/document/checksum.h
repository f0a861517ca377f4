// CRC-32 (polynomial 0xEDB88320). It detects accidental changes of bytes.
#pragma once

#include <cstddef>

#include "platform/types.h"

namespace kestrova {

class Checksum {
 public:
  void Add(const void* bytes, std::size_t count);
  // The checksum of all bytes so far; 0 before the first.
  DWORD Get() const { return state_; }

 private:
  DWORD state_ = 0;
};

}  // namespace kestrova
