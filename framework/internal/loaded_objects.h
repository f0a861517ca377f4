// The table of a loading archive: the class or object of each number, which objects have been destroyed since, and how
// to delete what a failed load created. Not public.
//
// While a table is open on a thread, CObject's destructor reports to it. So a reference to a destroyed object raises
// instead of following a dangling pointer, and the clean-up never deletes an object twice. clean_up.h has the clean-up.
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

class CleanUp;
class GoneObjects;

class LoadedObjects {
 public:
  struct Class {
    CRuntimeClass* record;
    UINT schema;                                  // as stored in the archive
    mutable const CRuntimeClass* base = nullptr;  // a known base class of the record

    bool IsBelow(const CRuntimeClass* wanted) const {
      if (wanted == base) return true;
      if (!record->IsDerivedFrom(wanted)) return false;
      base = wanted;
      return true;
    }
  };

  // Opens a table for this thread; call Close on the same thread. Close on another thread is allowed: the table then
  // gets no more reports and is freed when its own thread next destroys an object.
  static LoadedObjects* Open();
  void Close() noexcept;

  // The number of entries; their numbers are 1 to GetCount().
  DWORD GetCount() const { return count_; }
  void AddClass(CRuntimeClass* record, UINT schema);
  // made: the archive created the object and deletes it if the load fails.
  void AddObject(const CObject* object, bool made) {
    const auto address = reinterpret_cast<std::uintptr_t>(object);
    AddEntry(address | (made ? kMade : kForeign));
    lowest_ = std::min(lowest_, address);
    highest_ = std::max(highest_, address);
  }

  // Both return null for an invalid number, for a number of the other kind, and for a destroyed object.
  const Class* ClassAt(DWORD number) const {
    if (number == 0 || number > count_) return nullptr;
    const std::uintptr_t entry = EntryAt(number);
    return (entry & kMask) == kClass ? &classes_[entry >> 2] : nullptr;
  }
  CObject* ObjectAt(DWORD number) const {
    if (number == 0 || number > count_) return nullptr;
    const std::uintptr_t entry = EntryAt(number);
    if ((entry & kNoObject) != 0) return nullptr;
    const std::uintptr_t address = entry & ~std::uintptr_t(kMask);
    auto* object = reinterpret_cast<CObject*>(address);
    return address >= lowest_destroyed_ && address <= highest_destroyed_ && IsDestroyed(object, number) ? nullptr
                                                                                                        : object;
  }

  // Deletes the objects with numbers above count that the archive created and that still exist, in ascending order. If
  // even the memory for the clean-up is missing, they stay, and nobody owns them.
  void RollBack(DWORD count) noexcept;
  // The same for all objects for which `unwanted` returns true. Returns their number. Raises std::bad_alloc before it
  // deletes anything.
  DWORD DeleteIf(const std::function<bool(const CObject*)>& unwanted);

  // Called by CObject.
  static bool AnyOpen() noexcept { return open_.load(std::memory_order_relaxed) != 0; }
  static void NoteDestroyed(const CObject* object) noexcept;
  static bool KeepBlock(void* block, std::size_t bytes, std::align_val_t alignment) noexcept;
  static bool IsInCleanUp(const CObject* object) noexcept;

 private:
  friend class CleanUp;

  // kNoObject is the bit that kClass and kGone have.
  enum Tag : std::uintptr_t { kMade = 0, kClass = 1, kForeign = 2, kGone = 3, kMask = 3, kNoObject = 1 };

  LoadedObjects() = default;
  ~LoadedObjects() = default;
  void Unlink() noexcept;
  // Calls visit(CObject*, DWORD number) for each existing object with a number above `after`.
  template <class Visit>
  void ForEachExisting(DWORD after, Visit visit) const {
    for (DWORD number = after + 1; number <= GetCount(); ++number)
      if (CObject* object = ObjectAt(number)) visit(object, number);
  }
  // Calls visit(CObject*) for each existing object of all tables of this thread.
  static void ForEachOfThread(const std::function<void(CObject*)>& visit);
  void Note(const CObject* object) noexcept;
  void MarkGone(DWORD number) { EntryRef(number) |= kGone; }
  void MarkGone(DWORD after, const GoneObjects& gone) noexcept;
  void MarkLastOf(const CObject* object) noexcept;
  bool IsDestroyed(const CObject* object, DWORD number) const;

  static std::atomic<int> open_;

  // An entry is a pointer to an object, or an index into classes_ times 4; the low bits are the tag. Entries are stored
  // in page-sized chunks, so that growing copies nothing and needs no heap memory. Only the first chunk starts small
  // and grows to a page: most archives are small, and a damaged one must not cost much memory.
  static constexpr DWORD kChunkEntries = BlockPool::kPageBlock / sizeof(std::uintptr_t);
  static constexpr DWORD kFirstEntries = BlockPool::kLargestShared / sizeof(std::uintptr_t);
  static constexpr DWORD kGrowth = 4;

  std::uintptr_t EntryAt(DWORD number) const {
    return chunks_[(number - 1) / kChunkEntries][(number - 1) % kChunkEntries];
  }
  std::uintptr_t& EntryRef(DWORD number) { return chunks_[(number - 1) / kChunkEntries][(number - 1) % kChunkEntries]; }
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
  std::uintptr_t* next_entry_ = nullptr;  // next free entry of the last chunk
  std::uintptr_t* entries_end_ = nullptr;
  DWORD count_ = 0;
  std::vector<Class> classes_;
  // GetCount() at the last destruction at this address. An object for which it had no memory has the tag kGone.
  std::unordered_map<const CObject*, DWORD> destroyed_;
  std::uintptr_t lowest_ = UINTPTR_MAX;  // lowest object address: other addresses are not noted
  std::uintptr_t highest_ = 0;
  std::uintptr_t lowest_destroyed_ = UINTPTR_MAX;  // lowest address in destroyed_: objects outside the range exist
  std::uintptr_t highest_destroyed_ = 0;
  LoadedObjects** home_ = nullptr;  // the thread's list
  LoadedObjects* next_ = nullptr;
  CleanUp* clean_up_ = nullptr;  // the innermost one in progress
  std::atomic<bool> abandoned_ = false;
};
