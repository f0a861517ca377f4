#include "host/document/checksum.h"

#include <libdeflate.h>

namespace kestrova {

void Checksum::Add(const void* bytes, std::size_t count) { state_ = libdeflate_crc32(state_, bytes, count); }

}  // namespace kestrova
