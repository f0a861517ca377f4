// The hash table from an id to its first position.
#include "share/objects/internal/id_positions.h"

#include <algorithm>
#include <bit>
#include <random>

namespace {

constexpr std::size_t kFewestSlots = 16;

// Drawn once per process, by the first thread that needs it.
ULONGLONG ProcessSeed() {
  static const ULONGLONG seed = [] {
    std::random_device device;
    return (ULONGLONG(device()) << 32) | device();
  }();
  return seed;
}

}  // namespace

IdPositions::IdPositions() : m_hash{ProcessSeed()}, m_table(m_hash) {}

// At most two thirds of the slots are used.
void IdPositions::Reserve(std::size_t ids) {
  if (ids * 3 > m_table.Slots() * 2) m_table.Resize(std::bit_ceil(std::max(ids * 3 / 2 + 1, kFewestSlots)));
}

void IdPositions::AddNewIds(const std::vector<DWORD>& ids) {
  if (m_indexed == ids.size()) return;
  // Reserves for repeated ids, too: they are rare.
  Reserve(m_used + (ids.size() - m_indexed));
  for (; m_indexed < ids.size(); ++m_indexed) {
    Slot& slot = SlotOf(ids[m_indexed]);
    if (!slot.IsFree()) {
      m_later.emplace_hint(m_later.end(), ids[m_indexed], m_indexed);
    } else {
      slot = {ids[m_indexed], m_indexed};
      ++m_used;
    }
  }
}

DWORD IdPositions::Find(DWORD id) const {
  return m_table.Slots() == 0 ? kNone : m_table.Locate(m_hash.HashOf(id), IsOf(id)).position;
}

void IdPositions::Replace(DWORD oldId, DWORD newId, DWORD position) {
  if (oldId == newId) return;
  const auto next = m_later.lower_bound({oldId, 0});
  if (next != m_later.end() && next->first == oldId) {
    SlotOf(oldId).position = next->second;
    m_later.erase(next);
  } else {
    m_table.Erase(SlotOf(oldId));
    --m_used;
  }
  Enter(newId, position);
}

void IdPositions::Enter(DWORD id, DWORD position) {
  Reserve(m_used + 1);
  Slot& slot = SlotOf(id);
  if (slot.IsFree()) {
    slot = {id, position};
    ++m_used;
  } else {
    m_later.emplace(id, std::max(slot.position, position));
    slot.position = std::min(slot.position, position);
  }
}
