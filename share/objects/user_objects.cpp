// The list of a node's users: an array with gaps, and a hash index for long lists.
#include "share/objects/user_objects.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>

#include "framework/archive.h"
#include "framework/block_pool.h"

namespace {

constexpr DWORD kFirstCapacity = 3;  // with the body, one small heap block
constexpr DWORD kIndexedFrom = 48;   // elements; a shorter list is searched as fast without it
constexpr DWORD kLargestReserve = 4096;
constexpr ULONGLONG kShortestReference = 2;  // bytes

std::size_t HashOf(const CObject* object) {
  return std::size_t((reinterpret_cast<std::uintptr_t>(object) * 0x9E3779B97F4A7C15u) >> 32);
}

}  // namespace

// ---- the array

std::size_t UserObjects::BytesFor(DWORD capacity) { return sizeof(Body) + std::size_t(capacity) * sizeof(void*); }

void UserObjects::Reserve(DWORD capacity) {
  if (m_pBody) {
    DropIndex();  // its size depends on the array's
    m_pBody->duplicates = false;
    if (capacity <= m_pBody->capacity) return;
  }
  auto* grown = new (BlockPool::Allocate(BytesFor(capacity))) Body{};
  if (m_pBody) {
    std::memcpy(static_cast<void*>(grown), m_pBody, BytesFor(m_pBody->end));
    BlockPool::Free(m_pBody, BytesFor(m_pBody->capacity));
  }
  m_pBody = grown;
  m_pBody->capacity = capacity;
}

void UserObjects::MakeRoom() {
  if (!m_pBody) return Reserve(kFirstCapacity);
  if (m_pBody->end < m_pBody->capacity) return;
  if (DWORD(GetCount()) <= m_pBody->capacity / 2) return Compact();
  if (m_pBody->capacity > kNone / 4) throw std::bad_alloc();
  Reserve(m_pBody->capacity * 2);
}

// Removes the gaps.
void UserObjects::Compact() {
  DropIndex();
  m_pBody->duplicates = false;
  CObject** slots = Slots();
  CObject** last = std::remove_copy(slots + m_pBody->first, slots + m_pBody->end, slots, Gap());
  m_pBody->first = m_pBody->gaps = 0;
  m_pBody->end = DWORD(last - slots);
}

void UserObjects::RemoveAll() noexcept {
  if (!m_pBody) return;
  DropIndex();
  BlockPool::Free(m_pBody, BytesFor(m_pBody->capacity));
  m_pBody = nullptr;
}

void UserObjects::LeaveGap(DWORD place) {
  Slots()[place] = Gap();
  ++m_pBody->gaps;
}

// Called after a removal: moves `first` to an element, and frees an empty list.
void UserObjects::Tidy() {
  if (GetCount() == 0) return RemoveAll();
  while (Slots()[m_pBody->first] == Gap()) {
    ++m_pBody->first;
    --m_pBody->gaps;
  }
}

// ---- elements

void UserObjects::Append(CObject* object) {
  MakeRoom();
  const DWORD place = m_pBody->end++;
  Slots()[place] = object;
  if (m_pBody->index && EnterInIndex(place) != place) {
    DropIndex();
    m_pBody->duplicates = true;
  }
}

bool UserObjects::Remove(const CObject* object) {
  const DWORD place = m_pBody ? Find(object) : kNone;
  if (place == kNone) return false;
  LeaveGap(place);
  if (!m_pBody->index) {  // without an index there can be further occurrences
    for (DWORD at = place + 1; at < m_pBody->end; ++at) {
      if (Slots()[at] != object) continue;
      LeaveGap(at);
      m_pBody->duplicates = false;  // perhaps the last duplicate: the next search checks
    }
  }
  Tidy();
  return true;
}

CObject* UserObjects::RemoveHead() {
  if (IsEmpty()) return nullptr;
  CObject* object = Slots()[m_pBody->first];
  LeaveGap(m_pBody->first);
  Tidy();
  return object;
}

void UserObjects::RemoveDuplicates() {
  if (GetCount() < 2) return;
  DropIndex();
  if (!BuildIndex(/*dropDuplicates=*/true)) throw std::bad_alloc();
}

// ---- searching

DWORD UserObjects::Find(const CObject* object) const {
  const bool indexed = m_pBody->index || (!m_pBody->duplicates && DWORD(GetCount()) >= kIndexedFrom &&
                                          const_cast<UserObjects*>(this)->BuildIndex(/*dropDuplicates=*/false));
  if (!indexed) {
    CObject** slots = Slots();
    CObject** found = std::find(slots + m_pBody->first, slots + m_pBody->end, object);
    return found == slots + m_pBody->end ? kNone : DWORD(found - slots);
  }
  for (std::size_t at = HashOf(object);; ++at) {
    const DWORD entry = m_pBody->index[at & m_pBody->indexMask];
    if (entry == 0) return kNone;
    if (Slots()[entry - 1] == object) return entry - 1;
  }
}

// Adds the element at place to the index. Returns place, or the place of an equal element that is already in it.
DWORD UserObjects::EnterInIndex(DWORD place) {
  const CObject* object = Slots()[place];
  std::size_t at = HashOf(object);
  while (const DWORD entry = m_pBody->index[at & m_pBody->indexMask]) {
    if (Slots()[entry - 1] == object) return entry - 1;
    ++at;
  }
  m_pBody->index[at & m_pBody->indexMask] = place + 1;
  return place;
}

// False without an index: no memory, or a duplicate that must stay.
bool UserObjects::BuildIndex(bool dropDuplicates) {
  const std::size_t size = std::bit_ceil(std::size_t(m_pBody->capacity) * 2);  // half full for a full array
  m_pBody->duplicates = false;
  m_pBody->index = static_cast<DWORD*>(std::calloc(size, sizeof(DWORD)));
  m_pBody->indexMask = DWORD(size - 1);
  for (DWORD place = m_pBody->first; m_pBody->index && place < m_pBody->end; ++place) {
    if (Slots()[place] == Gap() || EnterInIndex(place) == place) continue;
    if (dropDuplicates) {
      LeaveGap(place);
    } else {
      DropIndex();
      m_pBody->duplicates = true;
    }
  }
  return m_pBody->index != nullptr;
}

void UserObjects::DropIndex() noexcept {
  std::free(m_pBody->index);
  m_pBody->index = nullptr;
}

// ---- archive

void UserObjects::Store(CArchive& ar) const {
  ar.WriteCount(ULONGLONG(GetCount()));
  ForEach([&](CObject* object) { ar.WriteObject(object); });
}

// Reads up to count references to objects that the archive has read before, if there is room. Returns their number.
DWORD UserObjects::LoadKnown(CArchive& ar, ULONGLONG count) {
  if (!m_pBody || m_pBody->index) return 0;
  const DWORD room = m_pBody->capacity - m_pBody->end;
  const auto known = DWORD(ar.ReadKnownObjects(Slots() + m_pBody->end, std::size_t(std::min<ULONGLONG>(count, room))));
  m_pBody->end += known;
  return known;
}

void UserObjects::Load(CArchive& ar) {
  const ULONGLONG count = ar.ReadCount(kShortestReference);
  if (count == 0) return;
  Reserve(DWORD(std::min<ULONGLONG>(count, kLargestReserve)) + DWORD(GetCount()));
  // Reading an object may append that object to this list; then the list has it twice.
  for (ULONGLONG left = count; left > 0;) {
    const DWORD known = LoadKnown(ar, left);
    left -= known;
    if (known != 0) continue;
    Append(ar.ReadObject(nullptr));
    --left;
  }
}
