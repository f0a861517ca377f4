// CleanUp, the state while the objects of a failed load are deleted. Not public.
//
// The memory of a deleted object is kept until the end and holds a neutral object (framework/neutral_objects.h), so
// that destructors of other objects may call it or delete it again. At the end, objects outside the load drop their
// pointers to deleted objects, and the memory is freed. The clean-up allocates only in its constructor.
#pragma once

#include <new>

#include "framework/internal/loaded_objects.h"
#include "framework/neutral_objects.h"

class CleanUp final : public GoneObjects {
 public:
  // For the objects of the table with numbers above `after`.
  CleanUp(LoadedObjects& table, DWORD after) noexcept;
  ~CleanUp();
  CleanUp(const CleanUp&) = delete;
  CleanUp& operator=(const CleanUp&) = delete;

  // False without memory: do not delete anything then.
  bool IsReady() const { return slots_ || objects_ == 0; }

  // Whether the object is one of the load, or of that of an outer clean-up.
  bool Has(const CObject* object) const noexcept;
  // Called for every object that is destroyed. False if the object is not one of this clean-up.
  bool NoteDestroyed(const CObject* object) noexcept;
  // Keeps the memory of an object of this clean-up: true. False for another block.
  bool KeepBlock(void* block, std::size_t bytes, std::align_val_t alignment) noexcept;

  bool Contains(const CObject* object) const noexcept override;

 private:
  // An object of the load.
  struct Slot {
    CObject* object;  // null: a free slot
    DWORD number;     // in the table
    BYTE kind;        // of its replacement
    bool gone;        // the replacement is in its place
  };
  struct Block {
    void* block;
    std::size_t bytes;
    std::align_val_t alignment;
    CObject* neutral;
  };
  // Memory for small clean-ups when the heap has none; one clean-up at a time uses it.
  static constexpr std::size_t kReserveBytes = 32 * 1024;

  static std::size_t BytesFor(std::size_t slots, std::size_t blocks) {
    return slots * sizeof(Slot) + blocks * sizeof(Block);
  }
  void* Acquire(std::size_t bytes) noexcept;
  void Release() noexcept;
  void Enter(CObject* object, DWORD number) noexcept;
  Slot& SlotOf(const CObject* object) const noexcept;
  void Bury(const Slot& slot) noexcept;

  LoadedObjects& table_;
  const DWORD after_;
  const NeutralObjects* const neutral_;
  std::size_t objects_ = 0;
  Slot* slots_ = nullptr;  // a hash table by address, at most half full
  std::size_t mask_ = 0;
  Block* blocks_ = nullptr;
  std::size_t kept_ = 0;
  void* memory_ = nullptr;
  Slot* last_ = nullptr;  // of the object that was destroyed last
  CleanUp* outer_;        // another clean-up of the same table: a destructor may start one
};
