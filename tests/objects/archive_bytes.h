// Bytes of an archive in hexadecimal, and objects and values stored to and loaded from them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>

#include "framework/archive.h"

namespace kvtest {

inline std::string HexOf(const void* bytes, std::size_t count) {
  std::string hex;
  for (std::size_t i = 0; i < count; ++i) {
    char two[3];
    std::snprintf(two, sizeof two, "%02X", static_cast<const std::uint8_t*>(bytes)[i]);
    hex += two;
  }
  return hex;
}

// Blanks are ignored.
inline std::string BytesOf(const std::string& hex) {
  std::string bytes, digits;
  for (const char digit : hex)
    if (digit != ' ') digits += digit;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) bytes += char(std::stoi(digits.substr(i, 2), nullptr, 16));
  return bytes;
}

inline std::string HexOf(const std::string& bytes) { return HexOf(bytes.data(), bytes.size()); }

inline std::string StoredHex(const std::function<void(CArchive&)>& write) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  write(ar);
  ar.Close();
  return HexOf(file.GetData(), std::size_t(file.GetLength()));
}

inline void LoadHex(const std::string& hex, const std::function<void(CArchive&)>& read) {
  std::string bytes = BytesOf(hex);
  CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
  CArchive ar(&file, CArchive::load);
  read(ar);
  EXPECT_EQ(ar.GetBytesLeft(), 0u) << "bytes that nobody read";
}

// Every shorter beginning raises endOfFile.
inline void ExpectPrefixesRaise(const std::string& hex, const std::function<void(CArchive&)>& read) {
  const std::string bytes = BytesOf(hex);
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    std::string prefix = bytes.substr(0, length);
    CMemFile file(reinterpret_cast<BYTE*>(prefix.data()), prefix.size());
    CArchive ar(&file, CArchive::load);
    int cause = CArchiveException::none;
    try {
      read(ar);
    } catch (const CArchiveException& exception) {
      cause = exception.m_cause;
    }
    EXPECT_EQ(cause, CArchiveException::endOfFile) << length << " bytes of " << bytes.size();
  }
}

}  // namespace kvtest
