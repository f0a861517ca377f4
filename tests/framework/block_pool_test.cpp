// The block pool: blocks are aligned and do not overlap, and any thread may free them.
#include "framework/block_pool.h"
#include "tests/scratch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <mutex>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace {

// A block with a known byte in all its places.
struct Marked {
  unsigned char* at;
  std::size_t bytes;
  unsigned char mark;

  static Marked Take(std::size_t bytes, unsigned char mark) {
    auto* at = static_cast<unsigned char*>(BlockPool::Allocate(bytes));
    std::memset(at, mark, bytes);
    return {at, bytes, mark};
  }
  // Frees the block. Returns false if its bytes have changed.
  bool Give() const {
    bool kept = true;
    for (std::size_t i = 0; i < bytes; ++i) kept = kept && at[i] == mark;
    BlockPool::Free(at, bytes);
    return kept;
  }
};

TEST(BlockPool, BlocksOfEverySizeAreAlignedAndApart) {
  std::vector<std::size_t> sizes = {1000,   4096, 32768, 32769, BlockPool::kPageBlock, BlockPool::kPageBlock + 1,
                                    1 << 20};
  for (std::size_t bytes = 0; bytes <= BlockPool::kLargestShared + 1; ++bytes) sizes.push_back(bytes);
  std::vector<Marked> blocks;
  for (int round = 0; round < 3; ++round) {
    for (const std::size_t bytes : sizes) {
      blocks.push_back(Marked::Take(bytes, static_cast<unsigned char>(blocks.size())));
      const std::size_t alignment = bytes % 16 == 0 && bytes != 0 ? 16 : 8;
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks.back().at) % alignment, 0u) << bytes;
    }
  }
  for (const Marked& block : blocks) EXPECT_TRUE(block.Give()) << block.bytes;
  BlockPool::Free(nullptr, 8);
}

// Each thread allocates blocks into a common store and frees blocks from it, its own and others.
TEST(BlockPool, BlocksComeBackOnAnyThread) {
  const unsigned seed = kvtest::PrintedSeed();
  std::mutex lock;
  std::vector<Marked> common;
  int spoilt = 0;
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      std::mt19937 random(seed + t);
      for (int i = 0; i < 20000; ++i) {
        const Marked block = Marked::Take(random() % 700, static_cast<unsigned char>(random()));
        const std::lock_guard guard(lock);
        common.push_back(block);
        if (random() % 1000 < 480) continue;
        for (int given = 0; given < 2 && !common.empty(); ++given) {
          std::swap(common[random() % common.size()], common.back());
          spoilt += !common.back().Give();
          common.pop_back();
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const Marked& block : common) spoilt += !block.Give();
  EXPECT_EQ(spoilt, 0);
}

// Short-lived threads whose blocks another thread frees: all rounds use the pages of the first.
TEST(BlockPool, PagesOfThreadsThatEndedServeTheNext) {
#ifdef KV_BLOCKS_FROM_HEAP
  GTEST_SKIP() << "there are no pages";
#endif
  constexpr int kBlocks = 10000;
  constexpr std::size_t kBytes = 200;
  std::set<std::uintptr_t> pages;
  std::size_t of_one_round = 0;
  for (int round = 0; round < 20; ++round) {
    std::vector<void*> blocks;
    std::thread([&] {
      for (int i = 0; i < kBlocks; ++i) blocks.push_back(BlockPool::Allocate(kBytes));
    }).join();
    for (void* block : blocks) {
      pages.insert(reinterpret_cast<std::uintptr_t>(block) / BlockPool::kPageBytes);
      BlockPool::Free(block, kBytes);
    }
    if (round == 0) of_one_round = pages.size();
  }
  EXPECT_LE(pages.size(), 3 * of_one_round);
}

}  // namespace
