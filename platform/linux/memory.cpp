// Memory regions with mmap. Large regions are aligned to the system's huge pages and request them: one page fault then
// replaces hundreds.
#include "platform/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <map>
#include <mutex>

#include "platform/errors.h"

namespace {

constexpr SIZE_T kGranularity = 64 * 1024;
constexpr SIZE_T kHugePage = 2 * 1024 * 1024;
constexpr SIZE_T kAddressSpace = SIZE_T(1) << 47;

// The existing regions by address, with their size in bytes.
struct Regions {
  std::mutex lock;
  std::map<void*, SIZE_T> sizes;
};

// Never destroyed, because static destructors may still free memory.
Regions& TheRegions() {
  static auto* regions = new Regions;
  return *regions;
}

void* Failed(LONG status) {
  SetLastError(DWORD(status));
  return nullptr;
}

// Maps extra memory and unmaps the parts before the first multiple of the alignment and after the region.
void* MapAligned(SIZE_T bytes, SIZE_T alignment) {
  const SIZE_T mapped = bytes + alignment;
  if (mapped < bytes) return nullptr;
  void* map = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (map == MAP_FAILED) return nullptr;
  auto* const first = static_cast<BYTE*>(map);
  const SIZE_T ahead = (alignment - reinterpret_cast<std::uintptr_t>(first) % alignment) % alignment;
  if (ahead != 0) munmap(first, ahead);
  munmap(first + ahead + bytes, mapped - ahead - bytes);
  return first + ahead;
}

}  // namespace

namespace {

// Pages at the ends that are only partly inside the range stay as they are.
void* Reset(void* address, SIZE_T bytes, SIZE_T page) {
  Regions& regions = TheRegions();
  const std::lock_guard guard(regions.lock);
  const auto after = regions.sizes.upper_bound(address);
  if (bytes == 0 || after == regions.sizes.begin()) return Failed(ERROR_INVALID_PARAMETER);
  const auto& [region, size] = *std::prev(after);
  const SIZE_T offset = SIZE_T(static_cast<BYTE*>(address) - static_cast<BYTE*>(region));
  if (offset >= size || bytes > size - offset) return Failed(ERROR_INVALID_PARAMETER);
  const SIZE_T first = (offset + page - 1) / page * page;
  const SIZE_T end = (offset + bytes) / page * page;
  // Optional: fails on systems without it, with no effect.
  if (first < end) madvise(static_cast<BYTE*>(region) + first, end - first, MADV_FREE);
  return address;
}

}  // namespace

void* VirtualAlloc(void* address, SIZE_T bytes, DWORD allocation, DWORD protection) {
  const SIZE_T page = SIZE_T(sysconf(_SC_PAGESIZE));
  if (allocation == MEM_RESET && protection == PAGE_READWRITE) return Reset(address, bytes, page);
  if (address || bytes == 0 || allocation != (MEM_RESERVE | MEM_COMMIT) || protection != PAGE_READWRITE)
    return Failed(ERROR_INVALID_PARAMETER);
  if (bytes > kAddressSpace) return Failed(ERROR_INVALID_PARAMETER);
  const SIZE_T size = (bytes + page - 1) / page * page;
  const bool huge = size >= kHugePage;
  void* region = MapAligned(size, huge ? kHugePage : kGranularity);
  if (!region) return Failed(ERROR_NOT_ENOUGH_MEMORY);
  if (huge) madvise(region, size, MADV_HUGEPAGE);  // optional: without huge pages the region uses small ones
  try {
    Regions& regions = TheRegions();
    const std::lock_guard guard(regions.lock);
    regions.sizes.emplace(region, size);
  } catch (const std::bad_alloc&) {
    munmap(region, size);
    return Failed(ERROR_NOT_ENOUGH_MEMORY);
  }
  return region;
}

BOOL VirtualFree(void* address, SIZE_T bytes, DWORD how) {
  Regions& regions = TheRegions();
  const std::lock_guard guard(regions.lock);
  const auto found = regions.sizes.find(address);
  if (bytes != 0 || how != MEM_RELEASE || found == regions.sizes.end()) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  munmap(address, found->second);
  regions.sizes.erase(found);
  return TRUE;
}
