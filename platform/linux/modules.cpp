// Loaded modules from the dynamic linker's list. A module's handle is the address of its first page.
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>

#include "platform/linux/errno_status.h"
#include "platform/linux/utf8.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "platform/text.h"

namespace {

HMODULE HandleOf(const dl_phdr_info& info) {
  ElfW(Addr) low = ~ElfW(Addr)(0);
  for (int i = 0; i < info.dlpi_phnum; ++i)
    if (info.dlpi_phdr[i].p_type == PT_LOAD) low = std::min(low, info.dlpi_phdr[i].p_vaddr);
  return reinterpret_cast<HMODULE>(info.dlpi_addr + low);
}

// Calls visit for each module, the program first, until visit returns true.
template <class Visit>
void ForEachModule(Visit visit) {
  dl_iterate_phdr([](dl_phdr_info* info, std::size_t, void* data) { return int((*static_cast<Visit*>(data))(*info)); },
                  &visit);
}

const std::string& ProgramFile() {
  static const std::string file = [] {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return std::string(path, std::size_t(std::max<ssize_t>(length, 0)));
  }();
  return file;
}

std::string FileOf(const dl_phdr_info& info) {
  std::string name = info.dlpi_name;
  if (name.empty()) return ProgramFile();
  const std::size_t slash = name.rfind('/');
  if (slash == std::string::npos) return name;  // the vDSO has no file
  if (name.front() == '/' && name.find("/../") == std::string::npos) return name;
  char folder[PATH_MAX];  // a relative path, or a RUNPATH such as bin/../lib
  return realpath(name.substr(0, slash).c_str(), folder) ? folder + name.substr(slash) : name;
}

// The file's name without the version after ".so", if the folder has that name for the same file: programs load a
// library by the name with the version.
std::string WithoutVersion(const std::string& file) {
  const std::size_t version = file.rfind(".so.");
  if (version == std::string::npos || file.find('/', version) != std::string::npos) return file;
  const std::string plain = file.substr(0, version + 3);
  struct stat its, plains;
  const bool same = stat(file.c_str(), &its) == 0 && stat(plain.c_str(), &plains) == 0 && its.st_dev == plains.st_dev &&
                    its.st_ino == plains.st_ino;
  return same ? plain : file;
}

bool SameWithoutCase(const std::string& a, const std::string& b) {
  return CompareStringOrdinal(WideFromSystem(a).c_str(), -1, WideFromSystem(b).c_str(), -1, TRUE) == CSTR_EQUAL;
}

// The base name of a library: without "lib", and up to the first ".so", ".dll" or ".exe".
std::string Stem(std::string name) {
  if (name.size() > 3 && SameWithoutCase(name.substr(0, 3), "lib")) name.erase(0, 3);
  for (const char* extension : {".so", ".dll", ".exe"}) {
    const std::size_t point = name.rfind('.');
    if (point != std::string::npos && SameWithoutCase(name.substr(point), extension)) return name.substr(0, point);
  }
  const std::size_t version = name.find(".so.");
  return version == std::string::npos ? name : name.substr(0, version);
}

std::string NameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

HMODULE GetModuleHandleW(LPCWSTR name) {
  const bool hasFolder = name && std::u16string_view(name).find_first_of(u"\\/:") != std::u16string_view::npos;
  const std::string wanted = hasFolder ? SystemPathFromProduct(name) : SystemFromWide(name);
  HMODULE found = nullptr;
  ForEachModule([&](const dl_phdr_info& info) {
    if (name) {
      const std::string file = FileOf(info);
      const bool folderFits =
          !hasFolder || SameWithoutCase(file.substr(0, file.rfind('/')), wanted.substr(0, wanted.rfind('/')));
      if (!folderFits || !SameWithoutCase(Stem(NameOf(file)), Stem(NameOf(wanted)))) return false;
    }
    found = HandleOf(info);
    return true;
  });
  if (!found) SetLastError(ERROR_MOD_NOT_FOUND);
  return found;
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD units) {
  std::u16string path;
  ForEachModule([&](const dl_phdr_info& info) {
    if (module && HandleOf(info) != module) return false;
    path = ProductPathFromSystem(WithoutVersion(FileOf(info)));
    return true;
  });
  if (path.empty()) return DWORD(FailWithStatus(ERROR_MOD_NOT_FOUND));
  if (path.size() < units) return CopyToBuffer(path, buffer, units);
  SetLastError(ERROR_INSUFFICIENT_BUFFER);
  if (units > 0) CopyToBuffer(std::u16string_view(path).substr(0, units - 1), buffer, units);
  return units;
}
