// Regions on mmap. A large one is aligned for the system's huge pages and asks for them: one fault then brings what
// would have taken hundreds.
#include "platform/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <mutex>
#include <unordered_map>

#include "platform/errors.h"

namespace {

constexpr SIZE_T kGranularity = 64 * 1024;
constexpr SIZE_T kHugePage = 2 * 1024 * 1024;

// The regions that stand, by address, with their size in bytes.
struct Regions {
  std::mutex lock;
  std::unordered_map<void*, SIZE_T> sizes;
};

// Never destroyed: statics that go late may still give memory back.
Regions& TheRegions() {
  static auto* regions = new Regions;
  return *regions;
}

void* Failed(LONG status) {
  SetLastError(DWORD(status));
  return nullptr;
}

// Maps with room to spare and gives back what lies ahead of the first multiple of the alignment, and behind the region.
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

void* Reset(void* address, SIZE_T bytes) {
  Regions& regions = TheRegions();
  const std::lock_guard guard(regions.lock);
  const auto found = regions.sizes.find(address);
  if (found == regions.sizes.end() || bytes != found->second) return Failed(ERROR_INVALID_PARAMETER);
  madvise(address, bytes, MADV_FREE);  // a system that can't goes on with what there is
  return address;
}

}  // namespace

void* VirtualAlloc(void* address, SIZE_T bytes, DWORD allocation, DWORD protection) {
  if (allocation == MEM_RESET && protection == PAGE_READWRITE) return Reset(address, bytes);
  if (address || bytes == 0 || allocation != (MEM_RESERVE | MEM_COMMIT) || protection != PAGE_READWRITE)
    return Failed(ERROR_INVALID_PARAMETER);
  const SIZE_T page = SIZE_T(sysconf(_SC_PAGESIZE));
  if (bytes > SIZE_T(-1) - page) return Failed(ERROR_NOT_ENOUGH_MEMORY);
  const SIZE_T size = (bytes + page - 1) / page * page;
  const bool huge = size >= kHugePage;
  void* region = MapAligned(size, huge ? kHugePage : kGranularity);
  if (!region) return Failed(ERROR_NOT_ENOUGH_MEMORY);
  if (huge) madvise(region, size, MADV_HUGEPAGE);  // a system without them goes on with small ones
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
