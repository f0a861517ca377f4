#include "host/crash/dump_bytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "host/shell/failure.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "platform/paths.h"

namespace kestrova {
namespace {

constexpr std::size_t kWindow = 1 << 16;

}  // namespace

bool DumpBytes::Read(std::uint64_t at, std::uint64_t size, std::string& target) const {
  target.clear();
  if (at > Size() || size > Size() - at) return false;
  target.resize(std::size_t(size));
  if (size == 0 || Copy(at, target.data(), target.size())) return true;
  target.clear();
  return false;
}

bool DumpInMemory::Copy(std::uint64_t at, char* target, std::size_t size) const {
  std::memcpy(target, bytes_.data() + at, size);
  return true;
}

DumpFile::DumpFile(const std::string& path)
    : file_(CreateFileW(ProductPathFromSystem(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                        OPEN_EXISTING, 0, nullptr)) {
  LARGE_INTEGER size = {};
  if (file_ == INVALID_HANDLE_VALUE)
    throw Failure(fmt::format("cannot read {}: {}", path, ErrorText(GetLastError())), {.file = path});
  if (!GetFileSizeEx(file_, &size)) {
    const DWORD status = GetLastError();
    CloseHandle(file_);
    throw Failure(fmt::format("cannot read {}: {}", path, ErrorText(status)), {.file = path});
  }
  size_ = std::uint64_t(size.QuadPart);
}

DumpFile::~DumpFile() { CloseHandle(file_); }

bool DumpFile::ReadAt(std::uint64_t at, char* target, std::size_t size) const {
  LARGE_INTEGER place = {};
  place.QuadPart = LONGLONG(at);
  if (!SetFilePointerEx(file_, place, nullptr, FILE_BEGIN)) return false;
  while (size > 0) {
    const DWORD part = DWORD(std::min(size, std::size_t{1} << 30));
    DWORD read = 0;
    if (!::ReadFile(file_, target, part, &read, nullptr) || read == 0) return false;
    target += read;
    size -= read;
  }
  return true;
}

bool DumpFile::Copy(std::uint64_t at, char* target, std::size_t size) const {
  if (size > kWindow / 2) return ReadAt(at, target, size);
  if (at < window_at_ || at - window_at_ > window_.size() || size > window_.size() - std::size_t(at - window_at_)) {
    window_at_ = at;
    window_.resize(std::size_t(std::min<std::uint64_t>(kWindow, size_ - at)));
    if (!ReadAt(at, window_.data(), window_.size())) return window_.clear(), false;
  }
  std::memcpy(target, window_.data() + (at - window_at_), size);
  return true;
}

}  // namespace kestrova
