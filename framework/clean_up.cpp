// The clean-up of a failed load.
#include "framework/internal/clean_up.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <memory>

namespace {

// Replaces an object of which nothing more is known.
class NeutralObject final : public CObject {
 public:
  static void operator delete(void* place) noexcept { ::new (place) NeutralObject; }
};

constinit const NeutralObjects* g_neutral = nullptr;

alignas(std::max_align_t) constinit BYTE g_reserve[32 * 1024] = {};
constinit std::atomic_flag g_reserve_used = ATOMIC_FLAG_INIT;

}  // namespace

void SetNeutralObjects(const NeutralObjects* neutral) { g_neutral = neutral; }
const NeutralObjects* GetNeutralObjects() { return g_neutral; }

CleanUp::CleanUp(LoadedObjects& table, DWORD after) noexcept
    : table_(table), after_(after), neutral_(GetNeutralObjects()), outer_(table.clean_up_) {
  table_.ForEachExisting(after_, [&](CObject*, DWORD) { ++objects_; });
  if (objects_ == 0) return;
  const std::size_t slots = std::bit_ceil(objects_ * 2);
  memory_ = Acquire(BytesFor(slots, objects_));
  if (!memory_) return;
  slots_ = static_cast<Slot*>(memory_);
  mask_ = slots - 1;
  std::uninitialized_fill_n(slots_, slots, Slot{});
  blocks_ = reinterpret_cast<Block*>(slots_ + slots);
  table_.ForEachExisting(after_, [&](CObject* object, DWORD number) { Enter(object, number); });
  table_.clean_up_ = this;
}

CleanUp::~CleanUp() {
  if (!slots_) return;
  table_.MarkGone(after_, *this);
  if (neutral_) {
    LoadedObjects::ForEachOfThread([&](CObject* object) { neutral_->Forget(object, *this); });
    neutral_->ForgetInLists(*this);
  }
  for (std::size_t i = 0; i < kept_; ++i) blocks_[i].neutral->~CObject();
  table_.clean_up_ = outer_;
  for (std::size_t i = 0; i < kept_; ++i) {
    const Block& kept = blocks_[i];
    if (kept.alignment == std::align_val_t{1}) {
      BlockPool::Free(kept.block, kept.bytes);
    } else {
      ::operator delete(kept.block, kept.alignment);
    }
  }
  Release();
}

// ---- memory

void* CleanUp::Acquire(std::size_t bytes) noexcept {
  if (void* memory = ::operator new(bytes, std::nothrow)) return memory;
  static_assert(sizeof g_reserve == kReserveBytes);
  if (bytes > kReserveBytes || g_reserve_used.test_and_set(std::memory_order_acquire)) return nullptr;
  return g_reserve;
}

void CleanUp::Release() noexcept {
  if (memory_ == g_reserve) {
    g_reserve_used.clear(std::memory_order_release);
  } else {
    ::operator delete(memory_);
  }
}

// ---- objects

CleanUp::Slot& CleanUp::SlotOf(const CObject* object) const noexcept {
  const auto hash = reinterpret_cast<std::uintptr_t>(object) * 0x9E3779B97F4A7C15u;
  for (std::size_t at = hash >> 32;; ++at) {
    Slot& slot = slots_[at & mask_];
    if (!slot.object || slot.object == object) return slot;
  }
}

// An object can have several numbers.
void CleanUp::Enter(CObject* object, DWORD number) noexcept {
  Slot& slot = SlotOf(object);
  if (slot.object) return;
  slot = {object, number, BYTE(neutral_ ? neutral_->KindOf(object) : 0), false};
}

bool CleanUp::Has(const CObject* object) const noexcept {
  return SlotOf(object).object != nullptr || (outer_ && outer_->Has(object));
}

bool CleanUp::Contains(const CObject* object) const noexcept { return object && SlotOf(object).gone; }

bool CleanUp::NoteDestroyed(const CObject* object) noexcept {
  Slot& slot = SlotOf(object);
  if (!slot.object) return outer_ && outer_->NoteDestroyed(object);
  last_ = &slot;
  if (slot.gone) return true;  // a neutral object, which its operator delete builds anew
  table_.MarkGone(slot.number);
  slot.gone = true;
  Bury(slot);
  return true;
}

// Also called at the end of ~CObject, when the object's memory is free: an object inside another one has no operator
// delete call.
void CleanUp::Bury(const Slot& slot) noexcept {
  if (slot.kind != 0) {
    neutral_->Build(slot.kind, slot.object);
  } else {
    ::new (static_cast<void*>(slot.object)) NeutralObject;
  }
}

bool CleanUp::KeepBlock(void* block, std::size_t bytes, std::align_val_t alignment) noexcept {
  const auto first = reinterpret_cast<std::uintptr_t>(block);
  const Slot* slot = last_;
  if (!slot || reinterpret_cast<std::uintptr_t>(slot->object) - first >= bytes)
    slot = &SlotOf(static_cast<CObject*>(block));
  if (!slot->gone || kept_ == objects_) return outer_ && outer_->KeepBlock(block, bytes, alignment);
  Bury(*slot);
  blocks_[kept_++] = {block, bytes, alignment, slot->object};
  last_ = nullptr;
  return true;
}
