// The table of a loading archive.
#include "framework/internal/loaded_objects.h"

#include "framework/internal/clean_up.h"

namespace {

thread_local constinit LoadedObjects* t_first = nullptr;

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
  classes_.push_back({record, schema});  // first: without memory for the entry, the class has no number
  AddEntry((classes_.size() - 1) << 2 | kClass);
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
      at->Note(object);
    }
    at = next;
  }
}

void LoadedObjects::Note(const CObject* object) noexcept {
  if (clean_up_ && clean_up_->NoteDestroyed(object)) return;
  const auto address = reinterpret_cast<std::uintptr_t>(object);
  try {
    destroyed_[object] = GetCount();
  } catch (const std::bad_alloc&) {
    return MarkLastOf(object);
  }
  lowest_destroyed_ = std::min(lowest_destroyed_, address);
  highest_destroyed_ = std::max(highest_destroyed_, address);
}

// Of several objects at one address, only the last one can have existed until now.
void LoadedObjects::MarkLastOf(const CObject* object) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(object);
  for (DWORD number = GetCount(); number > 0; --number) {
    const std::uintptr_t entry = EntryAt(number);
    if ((entry & kMask) == kClass || (entry & ~std::uintptr_t(kMask)) != address) continue;
    return MarkGone(number);
  }
}

void LoadedObjects::MarkGone(DWORD after, const GoneObjects& gone) noexcept {
  for (DWORD number = after + 1; number <= GetCount(); ++number) {
    const std::uintptr_t entry = EntryAt(number);
    if ((entry & kMask) != kClass && gone.Contains(reinterpret_cast<CObject*>(entry & ~std::uintptr_t(kMask))))
      MarkGone(number);
  }
}

bool LoadedObjects::KeepBlock(void* block, std::size_t bytes, std::align_val_t alignment) noexcept {
  if (!block) return false;
  for (LoadedObjects* at = t_first; at; at = at->next_)
    if (at->clean_up_ && at->clean_up_->KeepBlock(block, bytes, alignment)) return true;
  return false;
}

bool LoadedObjects::IsInCleanUp(const CObject* object) noexcept {
  for (LoadedObjects* at = t_first; at; at = at->next_)
    if (at->clean_up_ && at->clean_up_->Has(object)) return true;
  return false;
}

bool IsInCleanUp(const CObject* object) noexcept {
  return LoadedObjects::AnyOpen() && LoadedObjects::IsInCleanUp(object);
}

void LoadedObjects::ForEachOfThread(const std::function<void(CObject*)>& visit) {
  for (LoadedObjects* at = t_first; at; at = at->next_)
    at->ForEachExisting(/*after=*/0, [&](CObject* object, DWORD) { visit(object); });
}

void LoadedObjects::RollBack(DWORD count) noexcept {
  CleanUp clean_up(*this, count);
  if (!clean_up.IsReady()) return;
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
  if (numbers.empty()) return 0;
  CleanUp clean_up(*this, /*after=*/0);
  if (!clean_up.IsReady()) throw std::bad_alloc();
  for (const DWORD number : numbers) delete ObjectAt(number);
  return DWORD(numbers.size());
}
