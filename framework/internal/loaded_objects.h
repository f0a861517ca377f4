// What a loading archive remembers of the numbers it has met: which class or object each one stands for, which of the
// objects have been destroyed since, and how to take back what a failed load had made. Not public.
//
// While one stands open on a thread, CObject's destructor reports to it. So a reference to an object that is gone
// raises instead of being followed, and taking back never deletes an object twice.
#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <new>
#include <unordered_map>
#include <vector>

#include "framework/block_pool.h"
#include "framework/object.h"

class LoadedObjects {
 public:
  struct Class {
    CRuntimeClass* record;
    UINT schema;                                  // as it stood in the archive
    mutable const CRuntimeClass* base = nullptr;  // one that it is known to be below

    bool IsBelow(const CRuntimeClass* wanted) const {
      if (wanted == base) return true;
      if (!record->IsDerivedFrom(wanted)) return false;
      base = wanted;
      return true;
    }
  };

  // Opened for this thread; Close it there. Closing it on another thread is allowed too: it then ends its reports and
  // is freed when its own thread next looks.
  static LoadedObjects* Open();
  void Close() noexcept;

  // The numbers handed out so far: 1 to GetCount().
  DWORD GetCount() const { return count_; }
  void AddClass(CRuntimeClass* record, UINT schema);
  // made: the archive made the object, and takes it back if the load fails.
  void AddObject(const CObject* object, bool made) {
    const auto address = reinterpret_cast<std::uintptr_t>(object);
    AddEntry(address | (made ? kMade : kForeign));
    lowest_ = std::min(lowest_, address);
    highest_ = std::max(highest_, address);
  }

  // Null for a number that is none, is of the other sort, or whose object is gone.
  const Class* ClassAt(DWORD number) const {
    if (number == 0 || number > count_) return nullptr;
    const std::uintptr_t entry = EntryAt(number);
    return (entry & kMask) == kClass ? &classes_[entry >> 2] : nullptr;
  }
  CObject* ObjectAt(DWORD number) const {
    if (number == 0 || number > count_) return nullptr;
    const std::uintptr_t entry = EntryAt(number);
    if ((entry & kMask) == kClass) return nullptr;
    const std::uintptr_t address = entry & ~std::uintptr_t(kMask);
    auto* object = reinterpret_cast<CObject*>(address);
    return address >= lowest_destroyed_ && address <= highest_destroyed_ && IsDestroyed(object, number) ? nullptr
                                                                                                        : object;
  }

  // Deletes the objects with numbers above count that the archive made and that still live, in ascending order. Memory
  // of what dies meanwhile is held until the end and answers as a bare CObject, so that a destructor may ask or delete
  // an object that has gone ahead of it.
  void TakeBack(DWORD count) noexcept;
  // The same for those of all objects that are unwanted. Gives their number.
  DWORD TakeBackIf(const std::function<bool(const CObject*)>& unwanted);

  // For CObject.
  static bool AnyOpen() noexcept { return open_.load(std::memory_order_relaxed) != 0; }
  static void NoteDestroyed(const CObject* object) noexcept;
  static bool KeepBlock(void* block, std::size_t bytes, std::align_val_t alignment) noexcept;

 private:
  enum Tag : std::uintptr_t { kMade = 0, kClass = 1, kForeign = 2, kMask = 3 };

  LoadedObjects() = default;
  ~LoadedObjects() = default;
  void Unlink() noexcept;
  bool IsDestroyed(const CObject* object, DWORD number) const;

  static std::atomic<int> open_;

  // Pointers to objects, or places in classes_ times 4; the tag in the low bits. In chunks of a page, so that growing
  // copies nothing, never holds the old and the new at once, and leaves the heap alone. Only the first one begins small
  // and grows to a page: most archives are small, and a damaged one is to cost little.
  static constexpr DWORD kChunkEntries = BlockPool::kPageBlock / sizeof(std::uintptr_t);
  static constexpr DWORD kFirstEntries = BlockPool::kLargestShared / sizeof(std::uintptr_t);
  static constexpr DWORD kGrowth = 4;

  std::uintptr_t EntryAt(DWORD number) const {
    return chunks_[(number - 1) / kChunkEntries][(number - 1) % kChunkEntries];
  }
  void AddEntry(std::uintptr_t entry) {
    if (next_entry_ == entries_end_) AddChunk();
    *next_entry_++ = entry;
    ++count_;
  }
  void AddChunk();

  struct FreeChunk {
    void operator()(std::uintptr_t* chunk) const noexcept { BlockPool::Free(chunk, entries * sizeof *chunk); }
    std::size_t entries;
  };
  using Chunk = std::unique_ptr<std::uintptr_t[], FreeChunk>;
  std::vector<Chunk> chunks_;
  std::uintptr_t* next_entry_ = nullptr;  // in the last chunk
  std::uintptr_t* entries_end_ = nullptr;
  DWORD count_ = 0;
  std::vector<Class> classes_;
  std::unordered_map<const CObject*, DWORD> destroyed_;  // count of numbers at the last destruction at that address
  std::uintptr_t lowest_ = UINTPTR_MAX;                  // of the addresses of objects: others need no note
  std::uintptr_t highest_ = 0;
  std::uintptr_t lowest_destroyed_ = UINTPTR_MAX;  // of those in destroyed_: all others live
  std::uintptr_t highest_destroyed_ = 0;
  LoadedObjects** home_ = nullptr;  // the list of the thread
  LoadedObjects* next_ = nullptr;
  std::atomic<bool> abandoned_ = false;
};
