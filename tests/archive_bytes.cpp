#include "tests/archive_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace kvtest {

std::string Bytes(std::string_view hex) {
  std::string digits;
  std::copy_if(hex.begin(), hex.end(), std::back_inserter(digits), [](char c) { return c != ' '; });
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) bytes += char(std::stoi(digits.substr(i, 2), nullptr, 16));
  return bytes;
}

std::string Hex(std::string_view bytes) {
  std::string hex;
  for (const char byte : bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    if (!hex.empty()) hex += ' ';
    hex += kDigits[BYTE(byte) >> 4];
    hex += kDigits[byte & 0xF];
  }
  return hex;
}

std::string Store(const std::function<void(CArchive&)>& write, int bufferBytes) {
  CMemFile file;
  CArchive ar(&file, CArchive::store, bufferBytes);
  write(ar);
  ar.Close();
  return {reinterpret_cast<const char*>(file.GetData()), std::size_t(file.GetLength())};
}

void Load(std::string_view bytes, const std::function<void(CArchive&)>& read, int bufferBytes) {
  std::vector<BYTE> copy(bytes.begin(), bytes.end());  // a heap copy, so that sanitizers see reads after its end
  CMemFile file(copy.data(), copy.size());
  CArchive ar(&file, CArchive::load, bufferBytes);
  read(ar);
}

int CauseOf(std::string_view bytes, const std::function<void(CArchive&)>& read) {
  return CauseOf([&] { Load(bytes, read); });
}

int CauseOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const CArchiveException& failure) {
    return failure.m_cause;
  }
  return CArchiveException::none;
}

void ExpectPrefixesRaise(std::string_view bytes, const std::function<void(CArchive&)>& read,
                         const std::function<void()>& behind) {
  for (std::size_t length = 0; length < bytes.size() && !testing::Test::HasFailure(); ++length) {
    EXPECT_EQ(CauseOf(bytes.substr(0, length), read), CArchiveException::endOfFile) << "length " << length;
    behind();
  }
}

}  // namespace kvtest
