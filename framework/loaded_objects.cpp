// The table of a loading archive, and the two functions that CObject calls during the clean-up of a failed load.
#include "framework/internal/loaded_objects.h"

#include <unordered_set>

namespace {

// Replaces an object that was destroyed during a clean-up: GetRuntimeClass returns CObject's record, and it may be
// destroyed again.
class Tombstone final : public CObject {};

// The memory blocks that are kept during a clean-up.
struct Graveyard {
  struct Block {
    void* block;
    std::size_t bytes;
    std::align_val_t alignment;
  };

  ~Graveyard() {
    for (const Block& held : blocks) {
      if (held.alignment == std::align_val_t{1}) {
        BlockPool::Free(held.block, held.bytes);
      } else {
        ::operator delete(held.block, held.alignment);
      }
    }
  }

  void Bury(const CObject* object) {
    new (const_cast<CObject*>(object)) Tombstone;
    tombstones.insert(object);
  }

  std::vector<const CObject*> dead;  // destroyed objects whose block is not freed yet
  std::vector<Block> blocks;
  std::unordered_set<const void*> tombstones;
};

thread_local constinit LoadedObjects* t_first = nullptr;
thread_local constinit Graveyard* t_graveyard = nullptr;

// While it exists, destroyed objects are replaced by tombstones. The outermost one frees the blocks at its end.
class Burial {
 public:
  Burial() {
    if (!m_outer) t_graveyard = &m_graveyard;
  }
  ~Burial() { t_graveyard = m_outer; }
  Burial(const Burial&) = delete;
  Burial& operator=(const Burial&) = delete;

 private:
  Graveyard m_graveyard;
  Graveyard* m_outer = t_graveyard;
};

}  // namespace

std::atomic<int> LoadedObjects::open_ = 0;

LoadedObjects* LoadedObjects::Open() {
  auto* objects = new LoadedObjects;
  objects->home_ = &t_first;
  objects->next_ = t_first;
  t_first = objects;
  open_.fetch_add(1, std::memory_order_relaxed);
  return objects;
}

void LoadedObjects::Unlink() noexcept {
  LoadedObjects** at = &t_first;
  while (*at != this) at = &(*at)->next_;
  *at = next_;
}

void LoadedObjects::Close() noexcept {
  open_.fetch_sub(1, std::memory_order_relaxed);
  if (home_ == &t_first) {
    Unlink();
    delete this;
  } else {
    abandoned_.store(true, std::memory_order_release);
  }
}

void LoadedObjects::AddChunk() {
  const DWORD room =
      count_ < kChunkEntries ? std::clamp(count_ * kGrowth, kFirstEntries, kChunkEntries) : kChunkEntries;
  Chunk chunk(static_cast<std::uintptr_t*>(BlockPool::Allocate(room * sizeof(std::uintptr_t))), {room});
  std::uintptr_t* const entries = chunk.get();
  const DWORD filled = count_ % kChunkEntries;
  if (filled == 0) {
    chunks_.push_back(std::move(chunk));
  } else {
    std::copy_n(chunks_.front().get(), filled, entries);
    chunks_.front() = std::move(chunk);
  }
  next_entry_ = entries + filled;
  entries_end_ = entries + room;
}

void LoadedObjects::AddClass(CRuntimeClass* record, UINT schema) {
  AddEntry(classes_.size() << 2 | kClass);
  classes_.push_back({record, schema});
}

// A later object may have the same address. If there were fewer numbers at the destruction, an earlier object was
// destroyed.
bool LoadedObjects::IsDestroyed(const CObject* object, DWORD number) const {
  const auto found = destroyed_.find(object);
  return found != destroyed_.end() && found->second >= number;
}

void LoadedObjects::NoteDestroyed(const CObject* object) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(object);
  for (LoadedObjects* at = t_first; at;) {
    LoadedObjects* next = at->next_;
    if (at->abandoned_.load(std::memory_order_acquire)) {
      at->Unlink();
      delete at;
    } else if (address >= at->lowest_ && address <= at->highest_) {
      at->destroyed_[object] = at->GetCount();
      at->lowest_destroyed_ = std::min(at->lowest_destroyed_, address);
      at->highest_destroyed_ = std::max(at->highest_destroyed_, address);
    }
    at = next;
  }
  if (t_graveyard) t_graveyard->dead.push_back(object);
}

bool LoadedObjects::KeepBlock(void* block, std::size_t bytes, std::align_val_t alignment) noexcept {
  Graveyard* graveyard = t_graveyard;
  if (!graveyard || !block) return false;
  if (graveyard->tombstones.contains(block)) {  // deleted again
    std::erase(graveyard->dead, block);
    graveyard->Bury(static_cast<CObject*>(block));
    return true;
  }
  const auto first = reinterpret_cast<std::uintptr_t>(block);
  std::erase_if(graveyard->dead, [&](const CObject* object) {
    const auto address = reinterpret_cast<std::uintptr_t>(object);
    const bool inside = address >= first && address - first < bytes;
    if (inside) graveyard->Bury(object);
    return inside;
  });
  graveyard->blocks.push_back({block, bytes, alignment});
  return true;
}

void LoadedObjects::RollBack(DWORD count) noexcept {
  const Burial burial;
  for (DWORD number = count + 1; number <= GetCount(); ++number) {
    if ((EntryAt(number) & kMask) == kMade) delete ObjectAt(number);
  }
}

DWORD LoadedObjects::DeleteIf(const std::function<bool(const CObject*)>& unwanted) {
  std::vector<DWORD> numbers;
  for (DWORD number = 1; number <= GetCount(); ++number) {
    if ((EntryAt(number) & kMask) != kMade) continue;
    const CObject* object = ObjectAt(number);
    if (object && unwanted(object)) numbers.push_back(number);
  }
  const Burial burial;
  for (const DWORD number : numbers) delete ObjectAt(number);
  return DWORD(numbers.size());
}
