// The environment's start against the registry's reads and writes that it makes, made alone; and the whole process of
// `kestrova env` against the shortest process of an interpreter.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "platform/process.h"
#include "platform/registry.h"
#include "share/env/app_env.h"
#include "share/env/feature_switches.h"
#include "share/env/registry_keys.h"

namespace {

namespace fs = std::filesystem;

// ---- the registry calls alone

enum Kind { kNumber, kText };

// A value that a start reads so many times: when the registry is empty, and when it has everything. What is missing is
// written if there is something to write.
struct Access {
  HKEY hive;
  LPCTSTR path;
  LPCTSTR name;
  Kind kind;
  int reads_empty;
  int reads_full;
  const char16_t* written = nullptr;
};

bool Read(const Access& access) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(access.hive, access.path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  BYTE buffer[512];
  DWORD bytes = access.kind == kNumber ? sizeof(DWORD) : 0;
  // A text is asked for its size first.
  LSTATUS status =
      RegQueryValueExW(key, access.name, nullptr, nullptr, access.kind == kNumber ? buffer : nullptr, &bytes);
  if (status == ERROR_SUCCESS && access.kind == kText)
    status = RegQueryValueExW(key, access.name, nullptr, nullptr, buffer, &bytes);
  kvbench::Keep(buffer);
  RegCloseKey(key);
  return status == ERROR_SUCCESS;
}

void Write(const Access& access, int number) {
  HKEY key = nullptr;
  DWORD disposition = 0;
  if (RegCreateKeyExW(access.hive, access.path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, &disposition) != 0)
    return;
  if (access.kind == kNumber) {
    RegSetValueExW(key, access.name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
  } else {
    const std::u16string_view text = access.written;
    RegSetValueExW(key, access.name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
                   DWORD((text.size() + 1) * sizeof(TCHAR)));
  }
  RegCloseKey(key);
}

constexpr const char16_t* kPath = u"\\opt\\kestrova\\lib\\MachSim\\Machines";

std::vector<Access> StartAccesses() {
  const HKEY user = HKEY_CURRENT_USER, machine = HKEY_LOCAL_MACHINE;
  std::vector<Access> all = {
      {user, kVersionKey, _T("TechDBForms"), kText, 1, 1},
      {user, kVersionKey, _T("Language"), kText, 1, 1},
      {user, kHostGeneralKey, _T("Use English language"), kNumber, 1, 1},
      {machine, kVersionKey, _T("KVDataPath"), kText, 1, 0, kPath},
      {user, kVersionKey, _T("KVDataPath"), kText, 6, 1, kPath},  // four defaults lie below it
      {machine, kVersionKey, _T("EurekaExePath"), kText, 1, 0},
  };
  for (LPCTSTR name : {_T("SSImgPath"), _T("SSTemplatePath"), _T("SSOperationPath"), _T("SimulationMachinePath"),
                       _T("SimulationControllerPath"), _T("SimulationJobPath")})
    all.push_back({user, kVersionKey, name, kText, 1, 1, kPath});
  // Empty without a simulator, and so computed at each start.
  all.push_back({user, kVersionKey, _T("MachineSimulationApplicationPath"), kText, 1, 1, u""});
  all.push_back({machine, kVersionKey, _T("EurekaExePath"), kText, 0, 1});
  all.push_back({user, kPostDataKey, _T("LinearLengthForArcFacet"), kNumber, 1, 1});
  all.push_back({user, kPostDataKey, _T("ControllerPath"), kText, 1, 1});
  all.push_back({machine, kPostDataKey, _T("ControllerPath"), kText, 1, 1});
  for (const FeatureSwitch& feature : kStartSwitches)
    all.push_back({user, kVersionDebugKey, feature.name, kNumber, 1, 1, u""});
  all.push_back({user, kVersionKey, _T("MultiSurfaceByID"), kNumber, 1, 1});
  return all;
}

void MakeAccesses(const std::vector<Access>& all, int Access::*reads) {
  for (const Access& access : all) {
    bool found = access.*reads == 0;
    for (int i = 0; i < access.*reads; ++i) found = Read(access);
    if (!found && access.written) Write(access, 1);
  }
}

// ---- registries

void UseRegistry(const fs::path& folder) { SetEnvironmentVariableW(_T("KV_REGISTRY"), folder.u16string().c_str()); }

// Copies of a registry that nobody has open, one after the other.
class Copies {
 public:
  Copies(const fs::path& registry, const fs::path& where) : where_(where) {
    for (int i = 0; i < kCount; ++i) {
      fs::create_directories(Folder(i));
      for (const char* hive : {"user.hive", "machine.hive", "user.hive-wal", "machine.hive-wal"})
        if (fs::exists(registry / hive)) fs::copy_file(registry / hive, Folder(i) / hive);
    }
  }
  void UseNext() const {
    if (next_ == kCount) std::abort();  // more than one sample needs
    UseRegistry(Folder(next_++));
  }

 private:
  static constexpr int kCount = 2000;
  fs::path Folder(int number) const { return where_ / std::to_string(number); }

  fs::path where_;
  mutable int next_ = 0;
};

void Start() {
  kvbench::Keep(AppEnv());
  CloseAppEnv();
}

void BenchStart(kvbench::Table& table, const fs::path& folder) {
  const std::vector<Access> all = StartAccesses();
  const std::string peer = "its registry calls alone";
  int ours = 0, theirs = 0;
  table.Pair(
      {.name = "start on an empty registry", .size = all.size(), .peer = peer, .goal = 2.0},
      [&] {
        UseRegistry(folder / ("ours" + std::to_string(ours++)));
        Start();
      },
      [&] {
        UseRegistry(folder / ("theirs" + std::to_string(theirs++)));
        MakeAccesses(all, &Access::reads_empty);
      });
  // A process's first start on a registry that earlier ones have filled.
  const Copies first(folder / "ours0", folder / "first"), second(folder / "ours0", folder / "second");
  table.Pair(
      {.name = "first start of a process", .size = all.size(), .peer = peer, .goal = 2.0},
      [&] {
        first.UseNext();
        Start();
      },
      [&] {
        second.UseNext();
        MakeAccesses(all, &Access::reads_full);
      });
  UseRegistry(folder / "ours0");
  table.Pair({.name = "another start of the same process", .size = all.size(), .peer = peer, .goal = 2.0}, Start,
             [&] { MakeAccesses(all, &Access::reads_full); });
}

int Run(const std::string& command) {
  const int status = std::system((command + " >/dev/null").c_str());
  return status;
}

}  // namespace

int main(int, char** argv) {
  const fs::path folder = fs::temp_directory_path() / "kv-env-bench";
  fs::remove_all(folder);
  kvbench::Table table("Environment");
  BenchStart(table, folder);

  const std::string program = (fs::path(argv[0]).parent_path() / "kestrova").string();
  if (Run("exec '" + program + "' --version") != 0 || Run("exec python3 -c pass") != 0) {
    std::fprintf(stderr, "env_bench: kestrova (beside the benchmark) and python3 are needed\n");
    return 1;
  }
  table.Pair(
      {.name = "kestrova env, the whole process", .size = 1, .peer = "python3 -c pass", .goal = 1.0},
      [&] { Run("exec '" + program + "' env"); }, [] { Run("exec python3 -c pass"); }, 15);
  fs::remove_all(folder);
}
