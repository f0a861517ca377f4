// IndexerNames, a helper's entries by class name. Not public.
#pragma once

#include <array>
#include <map>
#include <string_view>
#include <vector>

#include "share/objects/object_indexer.h"

// The helper owns the entries and their names, which this table refers to.
class IndexerNames {
 public:
  // The entries of one name in list order: one, or more in a damaged document.
  using Entries = std::vector<QFObjectIndexer*>;

  // Call it in the order of the helper's list. record is the run-time class that gave the entry its name; may be null.
  void Append(QFObjectIndexer* entry, const CRuntimeClass* record) {
    Entries& entries = m_entries[entry->GetIndexedClassName().View()];
    entries.push_back(entry);
    if (record) RecentOf(record) = {record, &entries};
  }

  // Null for an unknown name. Valid as long as this table.
  const Entries* Find(TextView name) const {
    const auto found = m_entries.find(name);
    return found == m_entries.end() ? nullptr : &found->second;
  }
  // By a run-time class. Looks the address up in a cache and checks the name: it differs if another library was loaded
  // at the address of an unloaded one.
  const Entries* Find(const CRuntimeClass* record) {
    Recent& recent = RecentOf(record);
    if (recent.record != record || !IsNamed(*recent.entries->front(), record->m_lpszClassName)) {
      const Entries* entries = Find(CString(record->m_lpszClassName).View());
      if (!entries) return nullptr;
      recent = {record, entries};
    }
    return recent.entries;
  }

 private:
  static constexpr int kRecentBits = 8;

  struct Recent {
    const CRuntimeClass* record = nullptr;
    const Entries* entries = nullptr;
  };

  Recent& RecentOf(const CRuntimeClass* record) {
    return m_recent[(reinterpret_cast<std::uintptr_t>(record) * 0x9E3779B97F4A7C15u) >> (64 - kRecentBits)];
  }

  // The lengths alone decide most comparisons.
  struct ShorterFirst {
    bool operator()(TextView a, TextView b) const { return a.size() != b.size() ? a.size() < b.size() : a < b; }
  };

  // False, too, for a name that is not ASCII.
  static bool IsNamed(const QFObjectIndexer& entry, LPCSTR name) {
    for (const TCHAR unit : entry.GetIndexedClassName().View())
      if (BYTE(*name++) != unit || unit > 0x7F) return false;  // at the name's end the NUL differs
    return *name == 0;
  }

  std::map<TextView, Entries, ShorterFirst> m_entries;
  std::array<Recent, 1 << kRecentBits> m_recent;
};
