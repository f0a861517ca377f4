// Memory for the many small blocks of a document: objects, texts, nodes of lists; and for tables in pieces of a page.
// Not public.
//
// Each thread takes from pages of its own, each of which holds blocks of one size, so that taking and giving back cost
// a few instructions, no lock, and nothing that depends on what else the process has allocated. A block may be given
// back on any thread: it then waits until its own thread runs out of blocks. The pages of a thread that has ended go to
// the next one that begins. A page without blocks in use serves any thread and size, unless it is its thread's last one
// of that size. With all its neighbours it goes back to the system; but some 32 MiB are kept for what comes next, and
// up to 1 GiB more for as long as the system doesn't need the memory, so that the next large document doesn't have to
// ask for each page anew.
//
// Built with KV_BLOCKS_FROM_HEAP, as for the address sanitizer, every block comes from the heap, so that a tool sees
// each.
#pragma once

#include <cstddef>

#include "platform/types.h"

class KVSHARE_API BlockPool {
 public:
  static constexpr std::size_t kPageBytes = 64 * 1024;
  // Blocks up to this size share pages. Larger ones come from the heap, but for those between half a page and
  // kPageBlock, which have a page of their own.
  static constexpr std::size_t kLargestShared = 512;
  static constexpr std::size_t kPageBlock = kPageBytes - 64;

  // Gives a block of that many bytes, aligned for any object of that size that is content with what operator new gives.
  // Raises std::bad_alloc.
  static void* Allocate(std::size_t bytes);
  // Takes a block back; bytes is what Allocate was called with. A null block is ignored.
  static void Free(void* block, std::size_t bytes) noexcept;

  // The number of blocks that this thread has taken so far, for tests and logs.
  static std::size_t TakenByThisThread() noexcept;
};
