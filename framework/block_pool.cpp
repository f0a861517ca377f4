// BlockPool: memory regions from the system are divided into pages with one block size each. Free blocks form a linked
// list inside their own memory.
#include "framework/block_pool.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <mutex>
#include <new>

#include "platform/lock.h"
#include "platform/memory.h"
#include "platform/thread_pointer.h"

namespace {

#ifdef KV_BLOCKS_FROM_HEAP
constexpr bool kPooled = false;
#else
constexpr bool kPooled = true;
#endif

constexpr std::size_t kPageBytes = BlockPool::kPageBytes;  // and alignment: a block's address gives its page
constexpr std::size_t kFirstRegionPages = 16;              // keeps small programs small
constexpr std::size_t kRegionPages = 32;                   // the size of a huge page on common systems
constexpr std::size_t kSpareRegions = 16;                  // kept for the next document
constexpr std::size_t kLentRegions = 512;                  // also kept; the system may take their memory
constexpr std::size_t kStep = 8;  // multiples of 16 are steps too, and their blocks are aligned to 16
constexpr std::size_t kSteps = BlockPool::kLargestShared / kStep + 1;

struct Heap;
struct Region;

// A free block.
struct Free {
  Free* next;
};

// The header of each page; the blocks follow it.
struct alignas(64) Page {
  bool HasRoom() const { return free || fresh != end; }
  BYTE* Base() { return reinterpret_cast<BYTE*>(this); }

  Heap* heap;   // the heap whose thread allocates from this page
  Free* free;   // freed blocks
  BYTE* fresh;  // start of the blocks that were never used, up to end
  BYTE* end;
  Page* next;  // in the heap's list, if listed
  Page* previous;
  Region* region;
  std::uint32_t step;  // block size in steps
  std::uint16_t used;  // blocks in use
  bool listed;
};

static_assert(sizeof(Page) == kPageBytes - BlockPool::kPageBlock);

struct Region {
  BYTE* pages;
  std::uint32_t free;  // one bit per page
  std::uint32_t all;
  Region* next;  // list of the regions with free pages
  Region* previous;

  std::size_t Bytes() const { return std::size_t(std::popcount(all)) * kPageBytes; }
};

template <class T>
void PushFront(T*& first, T* item) {
  item->previous = nullptr;
  item->next = first;
  if (first) first->previous = item;
  first = item;
}

template <class T>
void Unlink(T*& first, T* item) {
  (item->previous ? item->previous->next : first) = item->next;
  if (item->next) item->next->previous = item->previous;
}

// The pages of one thread.
struct Heap {
  std::array<Page*, kSteps> pages = {};   // per step: the pages with room; the first one may be full
  std::atomic<Free*> returned = nullptr;  // blocks that other threads freed
  std::size_t taken = 0;
  Heap* next = nullptr;  // next heap without a thread
};

// The regions, and the heaps of ended threads. Needs no destructor, because statics that are destroyed late still free
// blocks.
struct Store {
  PlatformLock lock;
  Region* regions = nullptr;  // regions with free pages
  std::size_t empty = 0;      // number of regions without used pages
  bool first = true;
  Heap* idle = nullptr;

  Page* AcquirePage();
  void ReleasePage(Page* page) noexcept;
  Region* NewRegion();
};

constinit Store store;

// Passes the heap of a thread that ends to the next new thread.
void EndLease(Heap* heap) {
  const std::lock_guard guard(store.lock);
  heap->next = store.idle;
  store.idle = heap;
}

// Every allocation reads it, so the access must be fast.
using ThreadHeap = ThreadPointer<Heap, EndLease>;

// ---- pages

Region* Store::NewRegion() {
  const std::size_t count = first ? kFirstRegionPages : kRegionPages;
  auto* region = new Region{nullptr, 0, ~std::uint32_t{0} >> (32 - count), nullptr, nullptr};
  region->pages =
      static_cast<BYTE*>(VirtualAlloc(nullptr, count * kPageBytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
  if (!region->pages) {
    delete region;
    throw std::bad_alloc();
  }
  first = false;
  region->free = region->all;
  ++empty;
  PushFront(regions, region);
  return region;
}

Page* Store::AcquirePage() {
  const std::lock_guard guard(lock);
  Region* region = regions ? regions : NewRegion();
  if (region->free == region->all) --empty;
  const int index = std::countr_zero(region->free);
  region->free &= region->free - 1;
  if (region->free == 0) Unlink(regions, region);
  auto* page = new (region->pages + std::size_t(index) * kPageBytes) Page{};
  page->region = region;
  return page;
}

void Store::ReleasePage(Page* page) noexcept {
  const std::lock_guard guard(lock);
  Region* region = page->region;
  if (region->free == 0) PushFront(regions, region);
  region->free |= std::uint32_t{1} << (std::size_t(page->Base() - region->pages) / kPageBytes);
  if (region->free != region->all) return;
  if (++empty <= kSpareRegions) return;
  if (empty <= kSpareRegions + kLentRegions && VirtualAlloc(region->pages, region->Bytes(), MEM_RESET, PAGE_READWRITE))
    return;
  --empty;
  Unlink(regions, region);
  VirtualFree(region->pages, 0, MEM_RELEASE);
  delete region;
}

// ---- heaps

[[gnu::noinline]] Heap* LeaseHeap() {
  Heap* heap = nullptr;
  {
    const std::lock_guard guard(store.lock);
    heap = store.idle;
    if (heap) store.idle = heap->next;
  }
  if (!heap) heap = new Heap;
  heap->taken = 0;
  ThreadHeap::Set(heap);
  return heap;
}

Page* PageOf(void* block) {
  return reinterpret_cast<Page*>(reinterpret_cast<std::uintptr_t>(block) & ~std::uintptr_t(kPageBytes - 1));
}

void* AllocateFrom(Page* page) {
  ++page->used;
  if (Free* block = page->free) {
    page->free = block->next;
    return block;
  }
  BYTE* block = page->fresh;
  page->fresh += page->step * kStep;
  return block;
}

// Frees a block of this thread's heap.
void FreeOwn(Heap* heap, Page* page, void* block) noexcept {
  page->free = new (block) Free{page->free};
  --page->used;
  Page*& first = heap->pages[page->step];
  if (!page->listed) {  // the page was full, so other blocks of it are still in use
    page->listed = true;
    PushFront(first, page);
  } else if (page->used == 0 && (page != first || page->next)) {  // the last page of a size is often needed again soon
    Unlink(first, page);
    store.ReleasePage(page);
  }
}

// Allocates when the first page of the step has no room or does not exist.
[[gnu::noinline]] void* AllocateSlowly(Heap* heap, std::size_t step) {
  for (Free* block = heap->returned.exchange(nullptr, std::memory_order_acquire); block;) {
    Free* next = block->next;
    FreeOwn(heap, PageOf(block), block);
    block = next;
  }
  Page*& first = heap->pages[step];
  while (first && !first->HasRoom()) {
    first->listed = false;
    Unlink(first, first);
  }
  if (!first) {
    Page* page = store.AcquirePage();
    page->heap = heap;
    page->step = std::uint32_t(step);
    page->fresh = page->Base() + sizeof(Page);
    page->end = page->fresh + BlockPool::kPageBlock / (step * kStep) * (step * kStep);
    page->listed = true;
    PushFront(first, page);
  }
  return AllocateFrom(first);
}

bool HasOwnPage(std::size_t bytes) { return bytes > kPageBytes / 2 && bytes <= BlockPool::kPageBlock; }

[[gnu::noinline]] void* AllocateLarge(std::size_t bytes) {
  return kPooled && HasOwnPage(bytes) ? static_cast<void*>(store.AcquirePage() + 1) : ::operator new(bytes);
}

[[gnu::noinline]] void FreeLarge(void* block, std::size_t bytes) noexcept {
  return kPooled && HasOwnPage(bytes) ? store.ReleasePage(PageOf(block)) : ::operator delete(block);
}

// Frees a block of another thread's heap.
[[gnu::noinline]] void FreeForeign(Heap* heap, void* block) noexcept {
  auto* returned = new (block) Free{heap->returned.load(std::memory_order_relaxed)};
  while (!heap->returned.compare_exchange_weak(returned->next, returned, std::memory_order_release,
                                               std::memory_order_relaxed)) {
  }
}

}  // namespace

void* BlockPool::Allocate(std::size_t bytes) {
  Heap* heap = ThreadHeap::Get();
  if (!heap) heap = LeaseHeap();
  ++heap->taken;
  if (!kPooled || bytes > kLargestShared) return AllocateLarge(bytes);
  const std::size_t step = (bytes + kStep - 1 + (bytes == 0)) / kStep;
  Page* page = heap->pages[step];
  return page && page->HasRoom() ? AllocateFrom(page) : AllocateSlowly(heap, step);
}

void BlockPool::Free(void* block, std::size_t bytes) noexcept {
  if (!block) return;
  if (!kPooled || bytes > kLargestShared) return FreeLarge(block, bytes);
  Page* page = PageOf(block);
  Heap* heap = page->heap;
  return heap == ThreadHeap::Get() ? FreeOwn(heap, page, block) : FreeForeign(heap, block);
}

std::size_t BlockPool::TakenByThisThread() noexcept {
  const Heap* heap = ThreadHeap::Get();
  return heap ? heap->taken : 0;
}
