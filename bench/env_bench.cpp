// The environment's start compared with only its registry calls, and the whole process of `kestrova env` compared with
// the shortest process of an interpreter. The calls are recorded from a real start by functions of the same names in
// this program, which override those of the library.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench/ratio.h"
#include "platform/handles.h"
#include "platform/process.h"
#include "platform/registry.h"
#include "share/env/app_env.h"

namespace {

namespace fs = std::filesystem;

// ---- the registry calls of a start

struct Call {
  enum Kind { kOpen, kCreate, kClose, kQuery, kSet } kind;
  static constexpr std::size_t kNone = std::size_t(-1);
  HKEY key = nullptr;  // a predefined or invalid key; else `slot` is the index of the call that opened it
  std::size_t slot = kNone;
  std::u16string name = {};  // a path or a value's name
  REGSAM rights = 0;
  DWORD type = 0;
  bool has_data = false;  // a query has a buffer (data gives its size), or a value is set
  bool has_size = false;
  std::string data = {};
};

class Notes {
 public:
  bool on = false;
  std::vector<Call> calls;

  void Add(Call call, HKEY key, HKEY* opened = nullptr) {
    if (!on) return;
    const auto found = slots_.find(key);
    call.key = found == slots_.end() ? key : nullptr;
    call.slot = found == slots_.end() ? Call::kNone : found->second;
    if (opened && *opened) slots_[*opened] = calls.size();
    if (call.kind == Call::kClose) slots_.erase(key);
    calls.push_back(std::move(call));
  }

 private:
  std::unordered_map<HKEY, std::size_t> slots_;
};
Notes notes;

std::u16string NameOf(LPCWSTR text) { return text ? text : u""; }

// The library's function that the function of this name overrides.
template <class Function>
Function* Real(Function* ours) {
  Dl_info about = {};
  void* const found =
      dladdr(reinterpret_cast<void*>(ours), &about) && about.dli_sname ? dlsym(RTLD_NEXT, about.dli_sname) : nullptr;
  if (found && found != reinterpret_cast<void*>(ours)) return reinterpret_cast<Function*>(found);
  std::fprintf(stderr, "env_bench: the library's registry calls can't be noted\n");
  std::exit(1);
}

}  // namespace

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM rights, PHKEY opened) {
  static auto* const real = Real(RegOpenKeyExW);
  const LSTATUS status = real(key, path, options, rights, opened);
  notes.Add({.kind = Call::kOpen, .name = NameOf(path), .rights = rights}, key, status == 0 ? opened : nullptr);
  return status;
}

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR className, DWORD options, REGSAM rights,
                        SECURITY_ATTRIBUTES* security, PHKEY opened, DWORD* disposition) {
  static auto* const real = Real(RegCreateKeyExW);
  const LSTATUS status = real(key, path, reserved, className, options, rights, security, opened, disposition);
  notes.Add({.kind = Call::kCreate, .name = NameOf(path), .rights = rights}, key, status == 0 ? opened : nullptr);
  return status;
}

LSTATUS RegCloseKey(HKEY key) {
  static auto* const real = Real(RegCloseKey);
  notes.Add({.kind = Call::kClose}, key);
  return real(key);
}

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* bytes) {
  static auto* const real = Real(RegQueryValueExW);
  if (notes.on) {
    notes.Add({.kind = Call::kQuery,
               .name = NameOf(name),
               .has_data = data != nullptr,
               .has_size = bytes != nullptr,
               .data = std::string(bytes ? *bytes : 0, '\0')},
              key);
  }
  return real(key, name, reserved, type, data, bytes);
}

LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD bytes) {
  static auto* const real = Real(RegSetValueExW);
  if (notes.on) {
    notes.Add({.kind = Call::kSet,
               .name = NameOf(name),
               .type = type,
               .data = std::string(reinterpret_cast<const char*>(data), bytes)},
              key);
  }
  return real(key, name, reserved, type, data, bytes);
}

// No start begins a transaction. If one does, the recording must be extended.
HANDLE CreateTransaction(SECURITY_ATTRIBUTES* security, void* unit, DWORD options, DWORD level, DWORD flags,
                         DWORD timeout_ms, LPWSTR description) {
  static auto* const real = Real(CreateTransaction);
  if (notes.on) {
    std::fprintf(stderr, "env_bench: the start begins a transaction, which is not counted\n");
    std::exit(1);
  }
  return real(security, unit, options, level, flags, timeout_ms, description);
}

namespace {

// Repeats the recorded calls through the library's functions.
class Calls {
 public:
  explicit Calls(std::vector<Call> calls) : calls_(std::move(calls)), opened_(calls_.size()) {}

  std::size_t Count() const { return calls_.size(); }

  void Make() {
    for (std::size_t i = 0; i < calls_.size(); ++i) {
      Call& call = calls_[i];
      const HKEY key = call.slot == Call::kNone ? call.key : opened_[call.slot];
      DWORD bytes = DWORD(call.data.size()), type = 0;
      BYTE* const data = reinterpret_cast<BYTE*>(call.data.data());
      switch (call.kind) {
        case Call::kOpen: opened_[i] = nullptr, open_(key, call.name.c_str(), 0, call.rights, &opened_[i]); break;
        case Call::kCreate:
          opened_[i] = nullptr;
          create_(key, call.name.c_str(), 0, nullptr, 0, call.rights, nullptr, &opened_[i], &type);
          break;
        case Call::kClose: close_(key); break;
        case Call::kQuery:
          query_(key, call.name.c_str(), nullptr, &type, call.has_data ? data : nullptr,
                 call.has_size ? &bytes : nullptr);
          kvbench::Keep(data);
          break;
        case Call::kSet: set_(key, call.name.c_str(), 0, call.type, data, bytes); break;
      }
    }
  }

 private:
  std::vector<Call> calls_;
  std::vector<HKEY> opened_;
  decltype(RegOpenKeyExW)* const open_ = Real(RegOpenKeyExW);
  decltype(RegCreateKeyExW)* const create_ = Real(RegCreateKeyExW);
  decltype(RegCloseKey)* const close_ = Real(RegCloseKey);
  decltype(RegQueryValueExW)* const query_ = Real(RegQueryValueExW);
  decltype(RegSetValueExW)* const set_ = Real(RegSetValueExW);
};

// ---- registries

void UseRegistry(const fs::path& folder) { SetEnvironmentVariableW(_T("KV_REGISTRY"), folder.u16string().c_str()); }

// Copies of a registry, each used once, so that no process has it open.
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
    if (next_ == kCount) std::abort();  // kCount is more than one sample needs
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

Calls CallsOfAStart() {
  notes = {};
  notes.on = true;
  Start();
  notes.on = false;
  return Calls(notes.calls);
}

void BenchStart(kvbench::Table& table, const fs::path& folder) {
  const std::string peer = "its registry calls alone";
  UseRegistry(folder / "noted");
  Calls empty = CallsOfAStart();
  int ours = 0, theirs = 0;
  table.Pair(
      {.name = "start on an empty registry", .size = empty.Count(), .peer = peer, .goal = 2.0},
      [&] {
        UseRegistry(folder / ("ours" + std::to_string(ours++)));
        Start();
      },
      [&] {
        UseRegistry(folder / ("theirs" + std::to_string(theirs++)));
        empty.Make();
      });
  // The first start of a process with a registry that earlier starts have filled.
  UseRegistry(folder / "noted");
  Calls full = CallsOfAStart();
  const Copies first(folder / "ours0", folder / "first"), second(folder / "ours0", folder / "second");
  table.Pair(
      {.name = "first start of a process", .size = full.Count(), .peer = peer, .goal = 2.0},
      [&] {
        first.UseNext();
        Start();
      },
      [&] {
        second.UseNext();
        full.Make();
      });
  UseRegistry(folder / "ours0");
  table.Pair({.name = "another start of the same process", .size = full.Count(), .peer = peer, .goal = 2.0}, Start,
             [&] { full.Make(); });
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
