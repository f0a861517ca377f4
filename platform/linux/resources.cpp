// Modules loaded as data, and their strings.
#include "platform/resources.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <unordered_map>

#include "platform/linux/dialog_template.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/file_system.h"
#include "platform/linux/resource_library.h"
#include "platform/linux/utf8.h"
#include "platform/paths.h"

namespace {

constexpr off_t kMaximumFile = off_t(1) << 30;

struct Modules {
  std::shared_mutex lock;
  std::unordered_map<HMODULE, std::unique_ptr<ResourceLibrary>> loaded;
};

// Never destroyed, because language libraries are used until the process ends.
Modules& TheModules() {
  static auto* modules = new Modules;
  return *modules;
}

// The handle's library, or null. The caller has locked the table.
const ResourceLibrary* Find(const Modules& modules, HMODULE module) {
  const auto found = modules.loaded.find(module);
  return found == modules.loaded.end() ? nullptr : found->second.get();
}

// 0 for a name that is a text; no resource has the number 0.
WORD NumberOf(LPCWSTR name) {
  const auto number = reinterpret_cast<std::uintptr_t>(name);
  return number <= 0xFFFF ? WORD(number) : 0;
}

// Reads a whole regular file. Returns 0 or the errno.
int ReadWhole(const std::string& path, std::vector<std::byte>& bytes) {
  // O_NONBLOCK, because a pipe of this name could block.
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return errno;
  struct stat facts;
  int code = fstat(descriptor, &facts) == 0 ? 0 : errno;
  if (code == 0 && !S_ISREG(facts.st_mode)) code = EACCES;
  if (code == 0 && facts.st_size > kMaximumFile) code = EFBIG;
  if (code == 0) bytes.resize(std::size_t(facts.st_size));
  std::size_t done = 0;
  while (code == 0 && done < bytes.size()) {
    const ssize_t got = read(descriptor, bytes.data() + done, bytes.size() - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) code = errno;
    if (got == 0) bytes.resize(done);  // the file became shorter while it was read
    if (got > 0) done += std::size_t(got);
  }
  close(descriptor);
  return code;
}

std::u16string WithExtension(LPCWSTR path) {
  std::u16string text = path;
  const std::size_t name = text.find_last_of(u"\\/") + 1;
  return text.find(u'.', name) == text.npos ? text + u".dll" : text;
}

}  // namespace

HMODULE LoadLibraryExW(LPCWSTR path, HANDLE file, DWORD flags) {
  const auto fail = [](LONG status) {
    FailWithStatus(status);
    return HMODULE(nullptr);
  };
  if (!path || !*path || file) return fail(ERROR_INVALID_PARAMETER);
  if ((flags & LOAD_LIBRARY_AS_DATAFILE) == 0) return fail(ERROR_NOT_SUPPORTED);
  const std::u16string named = WithExtension(path);
  const std::string system = SystemPathFromProduct(named.c_str());
  std::vector<std::byte> bytes;
  if (const int code = ReadWhole(system, bytes)) {
    FailForPath(code, system);
    return nullptr;
  }
  auto library = ResourceLibrary::Parse(std::move(bytes));
  if (!library) return fail(ERROR_BAD_EXE_FORMAT);
  auto module = std::make_unique<ResourceLibrary>(std::move(*library));
  const auto handle = reinterpret_cast<HMODULE>(reinterpret_cast<std::uintptr_t>(module.get()) | 1);
  Modules& modules = TheModules();
  const std::unique_lock guard(modules.lock);
  modules.loaded.emplace(handle, std::move(module));
  return handle;
}

BOOL FreeLibrary(HMODULE module) {
  Modules& modules = TheModules();
  const std::unique_lock guard(modules.lock);
  return modules.loaded.erase(module) != 0 || FailWithStatus(ERROR_MOD_NOT_FOUND);
}

HRSRC FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR kind) {
  Modules& modules = TheModules();
  const std::shared_lock guard(modules.lock);
  const ResourceLibrary* const found = kind == RT_DIALOG ? Find(modules, module) : nullptr;
  const auto bytes = found ? found->FindDialog(NumberOf(name)) : std::span<const std::byte>();
  if (bytes.empty()) FailWithStatus(ERROR_RESOURCE_NAME_NOT_FOUND);
  return reinterpret_cast<HRSRC>(const_cast<std::byte*>(bytes.data()));
}

std::optional<DialogState> ReadDialog(HMODULE module, LPCWSTR name) {
  Modules& modules = TheModules();
  const std::shared_lock guard(modules.lock);
  const ResourceLibrary* const found = Find(modules, module);
  const auto bytes = found ? found->FindDialog(NumberOf(name)) : std::span<const std::byte>();
  auto dialog = ParseDialogTemplate(bytes);
  if (!dialog) FailWithStatus(bytes.empty() ? ERROR_RESOURCE_NAME_NOT_FOUND : ERROR_INVALID_DATA);
  return dialog;
}

int LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int units) {
  if (!buffer || units < 0) return FailWithStatus(ERROR_INVALID_PARAMETER);
  Modules& modules = TheModules();
  const std::shared_lock guard(modules.lock);
  const ResourceLibrary* found = Find(modules, module);
  const std::u16string_view text = found ? found->FindString(WORD(id)) : std::u16string_view();
  if (text.empty())
    FailWithStatus(found && found->HasStrings() ? ERROR_RESOURCE_NAME_NOT_FOUND : ERROR_RESOURCE_DATA_NOT_FOUND);
  if (units == 0) {
    const char16_t* inside = text.empty() ? nullptr : text.data();
    std::memcpy(buffer, &inside, sizeof inside);
    return int(text.size());
  }
  const std::size_t length = std::min(text.size(), std::size_t(units) - 1);
  text.copy(buffer, length);
  buffer[length] = 0;
  return int(length);
}
