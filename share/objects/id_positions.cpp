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

IdPositions::IdPositions() : m_seed(ProcessSeed()) {}

std::size_t IdPositions::HomeOf(DWORD id) const {
  ULONGLONG mixed = (id ^ m_seed) * 0xFF51AFD7ED558CCDu;
  mixed = (mixed ^ (mixed >> 32)) * 0xC4CEB9FE1A85EC53u;
  return std::size_t(mixed >> m_shift);
}

std::size_t IdPositions::PlaceOf(DWORD id) const {
  std::size_t at = HomeOf(id);
  while (m_slots[at].position != kNone && m_slots[at].id != id) at = (at + 1) & (m_slots.size() - 1);
  return at;
}

// At most two thirds of the slots are used.
void IdPositions::Reserve(std::size_t ids) {
  if (ids * 3 <= m_slots.size() * 2) return;
  const std::size_t slots = std::bit_ceil(std::max(ids * 3 / 2 + 1, kFewestSlots));
  std::vector<Slot> old(slots);
  old.swap(m_slots);
  m_shift = 64 - std::countr_zero(slots);
  for (const Slot& slot : old)
    if (slot.position != kNone) m_slots[PlaceOf(slot.id)] = slot;
}

void IdPositions::AddNewIds(const std::vector<DWORD>& ids) {
  if (m_indexed == ids.size()) return;
  // Reserves for repeated ids, too: they are rare.
  Reserve(m_used + (ids.size() - m_indexed));
  for (; m_indexed < ids.size(); ++m_indexed) {
    Slot& slot = m_slots[PlaceOf(ids[m_indexed])];
    if (slot.position != kNone) {
      m_later.emplace_hint(m_later.end(), ids[m_indexed], m_indexed);
    } else {
      slot = {ids[m_indexed], m_indexed};
      ++m_used;
    }
  }
}

DWORD IdPositions::Find(DWORD id) const { return m_slots.empty() ? kNone : m_slots[PlaceOf(id)].position; }

void IdPositions::Replace(DWORD oldId, DWORD newId, DWORD position) {
  if (oldId == newId) return;
  const auto next = m_later.lower_bound({oldId, 0});
  if (next != m_later.end() && next->first == oldId) {
    m_slots[PlaceOf(oldId)].position = next->second;
    m_later.erase(next);
  } else {
    Erase(oldId);
  }
  Enter(newId, position);
}

void IdPositions::Enter(DWORD id, DWORD position) {
  Reserve(m_used + 1);
  Slot& slot = m_slots[PlaceOf(id)];
  if (slot.position == kNone) {
    slot = {id, position};
    ++m_used;
  } else {
    m_later.emplace(id, std::max(slot.position, position));
    slot.position = std::min(slot.position, position);
  }
}

// Frees the id's slot and moves displaced ids back into it, so that probing from each id's home slot still finds it.
void IdPositions::Erase(DWORD id) {
  const std::size_t mask = m_slots.size() - 1;
  std::size_t hole = PlaceOf(id);
  --m_used;
  for (std::size_t at = (hole + 1) & mask; m_slots[at].position != kNone; at = (at + 1) & mask) {
    if (((at - HomeOf(m_slots[at].id)) & mask) < ((at - hole) & mask)) continue;  // the hole is before its home slot
    m_slots[hole] = m_slots[at];
    hole = at;
  }
  m_slots[hole] = {};
}
