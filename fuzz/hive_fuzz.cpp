// Changes bytes in the pages of an intact hive and uses it: every call returns, walks end, the names that it lists are
// valid, and an export says whether it is complete.
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/process.h"
#include "share/settings/registry_text.h"

namespace {

namespace fs = std::filesystem;
using registry_text::KeyName;

constexpr int kMostSteps = 100'000;  // the intact hive has 57 keys
const fs::path kFolders[] = {"/dev/shm/kv-hive-fuzz-a", "/dev/shm/kv-hive-fuzz-b"};

void UseFolder(const fs::path& folder) { SetEnvironmentVariableW(_T("KV_REGISTRY"), folder.u16string().c_str()); }

// Long classes and values give the tables several pages.
void Fill(const std::u16string& path, int levels) {
  HKEY key = nullptr;
  std::u16string filler(200, u'x');
  if (RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, filler.data(), 0, KEY_WRITE, nullptr, &key, nullptr) != 0)
    std::abort();
  for (char16_t i = u'a'; i < u'd'; ++i) {
    const std::u16string name = u"Value " + std::u16string(1, i);
    RegSetValueExW(key, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(filler.c_str()), 402);
  }
  RegCloseKey(key);
  for (char16_t i = u'a'; i < u'h' && levels > 0; ++i) Fill(path + u"\\Key " + i, levels - 1);
}

// The bytes of a hive with a key and two levels below it.
std::string IntactHive() {
  for (const fs::path& folder : kFolders) {
    fs::remove_all(folder);
    fs::create_directories(folder);
  }
  UseFolder(kFolders[0]);
  Fill(u"Software", 2);
  sqlite3* connection = nullptr;
  sqlite3_open((kFolders[0] / "user.hive").c_str(), &connection);
  if (sqlite3_exec(connection, "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr) != SQLITE_OK) std::abort();
  sqlite3_close(connection);
  std::ifstream in(kFolders[0] / "user.hive", std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// Walks through a key's sub-keys and everything below them.
void Walk(HKEY under, const std::u16string& path, int& steps) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(under, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
  std::u16string last;
  TCHAR name[256];
  DWORD units = 256;
  for (DWORD i = 0; RegEnumKeyExW(key, i, name, &units, nullptr, nullptr, nullptr, nullptr) == 0; ++i, units = 256) {
    const std::u16string found(name, units);
    if (++steps > kMostSteps || found.empty() || found == last) std::abort();
    if (found.find_first_of(std::u16string_view(u"\\\0", 2)) != found.npos) std::abort();
    Walk(key, last = found, steps);
  }
  for (DWORD i = 0; units = 256, RegEnumValueW(key, i, name, &units, nullptr, nullptr, nullptr, nullptr) == 0; ++i)
    if (++steps > kMostSteps) std::abort();
  RegCloseKey(key);
}

void Use() {
  int steps = 0;
  Walk(HKEY_CURRENT_USER, u"", steps);
  std::string bytes;
  registry_text::Error error;
  std::vector<registry_text::Step> exported;
  if (registry_text::Write({HKEY_CURRENT_USER, u"Software"}, bytes, error) &&
      !registry_text::Parse(bytes, exported, error))
    std::abort();
}

}  // namespace

// Each four bytes of the input change one byte of the hive: three bytes for the place, one for the new value.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string intact = IntactHive();
  static int round = 0;
  std::string hive = intact;
  for (std::size_t i = 0; i + 4 <= size; i += 4)
    hive[std::size_t(data[i] | data[i + 1] << 8 | data[i + 2] << 16) % hive.size()] = char(data[i + 3]);
  const fs::path& folder = kFolders[++round % 2];  // the registry closes the hive of the other folder
  for (const char* name : {"user.hive-wal", "user.hive-shm"}) fs::remove(folder / name);
  std::ofstream(folder / "user.hive", std::ios::binary | std::ios::trunc) << hive;
  UseFolder(folder);
  Use();
  using registry_text::Step;
  const KeyName tree{HKEY_CURRENT_USER, u"Software\\Key a"}, other{HKEY_CURRENT_USER, u"Software\\Key b\\New"};
  registry_text::Error error;
  registry_text::Apply({{Step::Kind::kDeleteKey, 1, tree, {}, REG_NONE, {}},
                        {Step::Kind::kCreateKey, 2, other, {}, REG_NONE, {}},
                        {Step::Kind::kSetValue, 3, other, u"v", REG_DWORD, {1, 2, 3, 4}}},
                       error);
  RegDeleteTreeW(HKEY_CURRENT_USER, u"Software\\Key c");
  Use();
  return 0;
}
