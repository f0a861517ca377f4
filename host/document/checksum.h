// CRC-32, the checksum of archives and network frames (polynomial 0xEDB88320): it tells bytes that were changed by
// accident.
#pragma once

#include <cstddef>

#include "platform/types.h"

namespace kestrova {

class Checksum {
 public:
  void Add(const void* bytes, std::size_t count);
  // Of everything added so far; 0 for nothing.
  DWORD Get() const { return state_; }

 private:
  DWORD state_ = 0;
};

}  // namespace kestrova
