// Registry calls for tests: open keys, values byte by byte, and a temporary registry.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

#include "platform/registry.h"
#include "tests/scratch.h"

namespace kvtest {

using Text = std::basic_string<TCHAR>;

// An open key. The destructor closes it.
class Key {
 public:
  Key() = default;
  // Fails the running test if the key cannot be opened.
  Key(HKEY under, LPCTSTR path, REGSAM rights = KEY_READ) {
    EXPECT_EQ(RegOpenKeyExW(under, path, 0, rights, &key_), ERROR_SUCCESS);
  }
  ~Key() { Close(); }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  operator HKEY() const { return key_; }
  PHKEY operator&() { return &key_; }
  void Close() {
    if (key_) RegCloseKey(key_);
    key_ = nullptr;
  }

 private:
  HKEY key_ = nullptr;
};

inline LSTATUS Open(HKEY under, LPCTSTR path, REGSAM rights = KEY_READ) {
  Key key;
  return RegOpenKeyExW(under, path, 0, rights, &key);
}
inline LSTATUS Create(HKEY under, LPCTSTR path) {
  Key key;
  return RegCreateKeyExW(under, path, 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr);
}

// A value's type and bytes.
struct Stored {
  DWORD type = 0;
  std::string bytes;
  bool operator==(const Stored&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Stored& stored) {
    out << "type " << stored.type << ":";
    for (const char byte : stored.bytes) out << ' ' << int(BYTE(byte));
    return out;
  }
};
template <class Number>
std::string Raw(Number number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}
inline std::string Wide(TextView text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(TCHAR)};
}

inline LSTATUS Set(HKEY key, LPCTSTR name, const Stored& value) {
  return RegSetValueExW(key, name, 0, value.type, reinterpret_cast<const BYTE*>(value.bytes.data()),
                        DWORD(value.bytes.size()));
}
inline LSTATUS SetNumber(HKEY key, LPCTSTR name, DWORD number) { return Set(key, name, {REG_DWORD, Raw(number)}); }
// Returns the number, or the negative status.
inline LONGLONG Number(HKEY key, LPCTSTR name) {
  DWORD number = 0, size = sizeof number;
  const LSTATUS status = RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size);
  return status == ERROR_SUCCESS ? LONGLONG(number) : -LONGLONG(status);
}

// The same by the key's path. Put creates the key.
inline void Put(HKEY under, LPCTSTR path, LPCTSTR name, const Stored& value) {
  Key key;
  ASSERT_EQ(RegCreateKeyExW(under, path, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(Set(key, name, value), ERROR_SUCCESS);
}
// A text with its terminator.
inline void PutText(HKEY under, LPCTSTR path, LPCTSTR name, LPCTSTR text) {
  Put(under, path, name, {REG_SZ, Wide({text, std::char_traits<TCHAR>::length(text) + 1})});
}
inline Stored Get(HKEY under, LPCTSTR path, LPCTSTR name) {
  Key key;
  Stored value{0, std::string(4096, '\0')};
  DWORD size = DWORD(value.bytes.size());
  EXPECT_EQ(RegOpenKeyExW(under, path, 0, KEY_READ, &key), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExW(key, name, nullptr, &value.type, reinterpret_cast<BYTE*>(value.bytes.data()), &size),
            ERROR_SUCCESS);
  value.bytes.resize(size);
  return value;
}

// The names that an enumerating call returns, from index 0 on.
template <class Enumerate>
std::vector<Text> NamesBy(Enumerate enumerate) {
  std::vector<Text> names;
  TCHAR name[256];
  for (DWORD units = 256; enumerate(DWORD(names.size()), name, &units) == ERROR_SUCCESS; units = 256)
    names.emplace_back(name, units);
  return names;
}
inline std::vector<Text> SubKeys(HKEY key) {
  return NamesBy([key](DWORD i, LPWSTR name, DWORD* units) {
    return RegEnumKeyExW(key, i, name, units, nullptr, nullptr, nullptr, nullptr);
  });
}
inline std::vector<Text> ValueNames(HKEY key) {
  return NamesBy([key](DWORD i, LPWSTR name, DWORD* units) {
    return RegEnumValueW(key, i, name, units, nullptr, nullptr, nullptr, nullptr);
  });
}

// While it exists, the registry is in that folder.
class RegistryIn {
 public:
  explicit RegistryIn(const std::filesystem::path& folder) : before_(UseRegistry(folder)) {}
  ~RegistryIn() { UseRegistry(before_); }
  RegistryIn(const RegistryIn&) = delete;
  RegistryIn& operator=(const RegistryIn&) = delete;

 private:
  const std::filesystem::path before_;
};

}  // namespace kvtest
