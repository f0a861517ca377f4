// Profile files compared with SimpleIni. Each platform call reads the current file and each write saves it. So the peer
// is measured twice: as a program normally uses it, and with the same guarantees as the platform calls.
#define SI_CONVERT_ICU
#include <SimpleIni.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "platform/paths.h"
#include "platform/profile.h"

namespace {

namespace fs = std::filesystem;
using Text = std::basic_string<TCHAR>;

constexpr int kSectionKeys = 100;

struct Key {
  std::string section, key, value;
  Text wide_section, wide_key;
};

Text Wide(const std::string& text) { return {text.begin(), text.end()}; }

std::vector<Key> Keys(int count) {
  std::vector<Key> keys;
  for (int i = 0; i < count; ++i) {
    Key key = {"Section" + std::to_string(i / kSectionKeys),
               "KeyNumber" + std::to_string(i),
               "some value of key " + std::to_string(i),
               {},
               {}};
    key.wide_section = Wide(key.section);
    key.wide_key = Wide(key.key);
    keys.push_back(std::move(key));
  }
  return keys;
}

// Saves as the platform call does: writes a temporary file, flushes it to the disk and renames it.
void SaveSafely(const CSimpleIniA& ini, const std::string& file) {
  const std::string beside = file + ".tmp";
  ini.SaveFile(beside.c_str());
  const int descriptor = open(beside.c_str(), O_RDONLY);
  fsync(descriptor);
  close(descriptor);
  fs::rename(beside, file);
  const int folder = open(fs::path(file).parent_path().c_str(), O_RDONLY);
  fsync(folder);
  close(folder);
}

struct Bench {
  Bench(kvbench::Table& into, const std::string& folder, int count)
      : table(into),
        keys(Keys(count)),
        file(folder + "/" + std::to_string(count) + ".ini"),
        peer_file(folder + "/" + std::to_string(count) + ".peer.ini"),
        path(ProductPathFromSystem(file)) {
    CSimpleIniA ini;
    for (const Key& key : keys) ini.SetValue(key.section.c_str(), key.key.c_str(), key.value.c_str());
    ini.SaveFile(file.c_str());
    ini.SaveFile(peer_file.c_str());
  }

  kvbench::Case Row(const char* name, const char* peer, std::size_t operations = 1) const {
    return {.name = name, .size = keys.size(), .peer = peer, .operations = operations};
  }

  void Read(bool cold) const {
    if (cold) WritePrivateProfileStringW(nullptr, nullptr, nullptr, path.c_str());  // drops the cached file
    TCHAR value[64];
    for (const Key& key : keys)
      kvbench::Keep(
          GetPrivateProfileStringW(key.wide_section.c_str(), key.wide_key.c_str(), _T(""), value, 64, path.c_str()));
  }
  void PeerRead(bool looks) const {
    CSimpleIniA ini;
    ini.LoadFile(peer_file.c_str());
    struct stat facts;
    for (const Key& key : keys) {
      if (looks) kvbench::Keep(stat(peer_file.c_str(), &facts));
      kvbench::Keep(ini.GetValue(key.section.c_str(), key.key.c_str(), ""));
    }
  }

  void Reading() {
    const std::size_t n = keys.size();
    table.Pair(
        Row("read all keys", "SimpleIni, loaded once", n), [&] { Read(true); }, [&] { PeerRead(false); });
    table.Pair(
        Row("read all keys", "SimpleIni, loaded once, looks at the file each time", n), [&] { Read(true); },
        [&] { PeerRead(true); });
    table.Pair(
        Row("read all keys of a known file", "SimpleIni, loaded once", n), [&] { Read(false); },
        [&] { PeerRead(false); });
    table.Pair(
        Row("read one key of a new file", "SimpleIni"),
        [&] {
          WritePrivateProfileStringW(nullptr, nullptr, nullptr, path.c_str());
          TCHAR value[64];
          kvbench::Keep(GetPrivateProfileStringW(_T("Section0"), _T("KeyNumber7"), _T(""), value, 64, path.c_str()));
        },
        [&] {
          CSimpleIniA ini;
          ini.LoadFile(peer_file.c_str());
          kvbench::Keep(ini.GetValue("Section0", "KeyNumber7", ""));
        });
  }

  void PeerWrite(bool safely) {
    const Key& key = keys[std::size_t(++round) * 7919 % keys.size()];
    CSimpleIniA ini;
    ini.LoadFile(peer_file.c_str());
    ini.SetValue(key.section.c_str(), key.key.c_str(), std::to_string(round).c_str());
    if (safely)
      SaveSafely(ini, peer_file);
    else
      ini.SaveFile(peer_file.c_str());
  }
  void Write() {
    const Key& key = keys[std::size_t(++round) * 7919 % keys.size()];
    const Text value = Wide(std::to_string(round));
    WritePrivateProfileStringW(key.wide_section.c_str(), key.wide_key.c_str(), value.c_str(), path.c_str());
  }

  void PeerWriteAll(bool safely) {
    CSimpleIniA ini;
    ini.LoadFile(peer_file.c_str());
    for (const Key& key : keys) ini.SetValue("All", key.key.c_str(), key.value.c_str());
    if (safely)
      SaveSafely(ini, peer_file);
    else
      ini.SaveFile(peer_file.c_str());
  }

  void Writing() {
    const char* const safely = "SimpleIni: load, set, save beside, fsync, rename";
    const char* const plainly = "SimpleIni: load, set, save";
    table.Pair(
        Row("write one value and save", safely), [&] { Write(); }, [&] { PeerWrite(true); });
    table.Pair(
        Row("write one value and save", plainly), [&] { Write(); }, [&] { PeerWrite(false); });
    Text list;
    for (const Key& key : keys) list += key.wide_key + u'=' + Wide(key.value) + u'\0';
    const auto write_all = [&] { WritePrivateProfileSectionW(_T("All"), list.c_str(), path.c_str()); };
    table.Pair(Row("write a section of all keys and save", safely, keys.size()), write_all,
               [&] { PeerWriteAll(true); });
    table.Pair(Row("write a section of all keys and save", plainly, keys.size()), write_all,
               [&] { PeerWriteAll(false); });
  }

  kvbench::Table& table;
  const std::vector<Key> keys;
  const std::string file;
  const std::string peer_file;
  const Text path;
  int round = 0;
};

// Writes each key once by a separate call, as a program does that saves its values one by one.
void WriteOneByOne(const std::string& folder, int count) {
  const std::vector<Key> keys = Keys(count);
  const Text path = ProductPathFromSystem(folder + "/one_by_one.ini");
  const double start = kvbench::detail::Now();
  for (const Key& key : keys)
    WritePrivateProfileStringW(key.wide_section.c_str(), key.wide_key.c_str(), Wide(key.value).c_str(), path.c_str());
  const double seconds = kvbench::detail::Now() - start;
  const std::string peer_file = folder + "/one_by_one.peer.ini";
  const double peer_start = kvbench::detail::Now();
  for (const Key& key : keys) {
    CSimpleIniA ini;
    ini.LoadFile(peer_file.c_str());
    ini.SetValue(key.section.c_str(), key.key.c_str(), key.value.c_str());
    SaveSafely(ini, peer_file);
  }
  const double peer = kvbench::detail::Now() - peer_start;
  kvbench::Table::Row({.name = "write all keys one by one, each saved",
                       .size = keys.size(),
                       .peer = "SimpleIni: load, set, save beside, fsync, rename"},
                      kvbench::detail::Time(seconds), kvbench::detail::Time(peer), seconds / peer);
}

}  // namespace

int main() {
  const fs::path folder = fs::temp_directory_path() / "kv-ini-bench";
  fs::remove_all(folder);
  fs::create_directories(folder);
  kvbench::Table table("Profile files");
  for (const int count : {100, 1000, 10000}) {
    Bench bench(table, folder.string(), count);
    bench.Reading();
    bench.Writing();
  }
  WriteOneByOne(folder.string(), 1000);
  fs::remove_all(folder);
}
