#include "host/document/checksum.h"

#include <array>
#include <cstring>

namespace kestrova {
namespace {

constexpr DWORD kPolynomial = 0xEDB88320;
constexpr std::size_t kSlices = 8;  // bytes taken at a time

using Tables = std::array<std::array<DWORD, 256>, kSlices>;

// Table n tells what a byte does to the checksum n bytes further on.
constexpr Tables MakeTables() {
  Tables tables = {};
  for (DWORD byte = 0; byte < 256; ++byte) {
    DWORD value = byte;
    for (int bit = 0; bit < 8; ++bit) value = (value >> 1) ^ (value & 1 ? kPolynomial : 0);
    tables[0][byte] = value;
  }
  for (std::size_t n = 1; n < kSlices; ++n)
    for (std::size_t byte = 0; byte < 256; ++byte)
      tables[n][byte] = (tables[n - 1][byte] >> 8) ^ tables[0][tables[n - 1][byte] & 0xFF];
  return tables;
}

constexpr Tables kTables = MakeTables();

}  // namespace

void Checksum::Add(const void* bytes, std::size_t count) {
  const auto* at = static_cast<const BYTE*>(bytes);
  DWORD state = state_;
  for (; count >= kSlices; count -= kSlices, at += kSlices) {
    DWORD halves[2];
    std::memcpy(halves, at, sizeof halves);
    halves[0] ^= state;
    state = 0;
    for (std::size_t i = 0; i < kSlices; ++i) state ^= kTables[kSlices - 1 - i][halves[i / 4] >> (8 * (i % 4)) & 0xFF];
  }
  for (; count > 0; --count, ++at) state = (state >> 8) ^ kTables[0][(state ^ *at) & 0xFF];
  state_ = state;
}

}  // namespace kestrova
