// Memory for the many small blocks of a document: objects, texts, list nodes; and for page-sized pieces of tables. Not
// public.
//
// Each thread allocates from its own pages, and a page holds blocks of one size. Allocating and freeing take a few
// instructions and no lock, and do not depend on what else the process has allocated. Any thread may free a block; it
// then waits in a queue until the owning thread runs out of blocks. The next new thread takes over the pages of a
// thread that has ended. A page without used blocks can serve any thread and any size, except for the last page of a
// size in its thread. When all its neighbours are unused too, their memory goes back to the system; about 32 MiB are
// kept for later, and up to 1 GiB more as long as the system does not need the memory, so that the next large document
// need not request each page again.
//
// With KV_BLOCKS_FROM_HEAP, used for the address sanitizer, every block comes from the heap, so that the tool sees each
// block.
#pragma once

#include <cstddef>

#include "platform/types.h"

class KVSHARE_API BlockPool {
 public:
  static constexpr std::size_t kPageBytes = 64 * 1024;
  // Blocks up to this size (bytes) share pages. Larger blocks come from the heap, except for those from half a page to
  // kPageBlock, which get their own page.
  static constexpr std::size_t kLargestShared = 512;
  static constexpr std::size_t kPageBlock = kPageBytes - 64;

  // Returns a block of that many bytes with the alignment that operator new would give. Raises std::bad_alloc.
  static void* Allocate(std::size_t bytes);
  // Frees a block; `bytes` is the size given to Allocate. Null does nothing.
  static void Free(void* block, std::size_t bytes) noexcept;

  // The number of blocks that this thread has allocated so far, for tests and logs.
  static std::size_t TakenByThisThread() noexcept;
};
