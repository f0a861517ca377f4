// Technology databases in memory.
#include "share/utilities/tech_db_config.h"

#include <algorithm>
#include <new>

namespace {

// The text from a word on, up to the next semicolon or the end; position moves after it. Empty with position unchanged
// if the word does not follow.
CString Part(const CString& text, LPCTSTR word, int& position) {
  const int begin = text.Find(word, position);
  if (begin < 0) return CString();
  const int end = text.Find(_T(';'), begin);
  position = end < 0 ? text.GetLength() : end;
  return text.Mid(begin, position - begin);
}

}  // namespace

QFTechDBConfigData* QFTechDBConfigData::Clone() const { return new (std::nothrow) QFTechDBConfigData(*this); }

CString QFTechDBConfigData::GetDisplayName() const {
  return m_nType == QF_TECHDB_SQLSERVER ? ServerPartsOfConnection(m_Connection) : m_FilePath;
}

CString ServerPartsOfConnection(const CString& connection) {
  int position = 0;
  const CString server = Part(connection, _T("SERVER"), position);
  CString database = Part(connection, _T("DATABASE"), position);  // not the word within the server's name
  if (database.IsEmpty()) database = Part(connection, _T("DATABASE"), position = 0);
  return server + _T(";") + database;
}

QFTechDBConfigInfo::QFTechDBConfigInfo(const QFTechDBConfigInfo& other) {
  for (const auto& entry : other.m_Entries) m_Entries.push_back(std::make_unique<QFTechDBConfigData>(*entry));
}

QFTechDBConfigInfo& QFTechDBConfigInfo::operator=(const QFTechDBConfigInfo& other) {
  QFTechDBConfigInfo copy(other);
  m_Entries.swap(copy.m_Entries);
  return *this;
}

QFTechDBConfigInfo::~QFTechDBConfigInfo() = default;

QFTechDBConfigData* QFTechDBConfigInfo::GetTechDBConfigData(int index) const {
  return index >= 0 && index < GetCount() ? m_Entries[std::size_t(index)].get() : nullptr;
}

QFTechDBConfigData* QFTechDBConfigInfo::GetActiveConfigData() const {
  for (const auto& entry : m_Entries) {
    if (entry->GetActiveFlag() == 1) return entry.get();
  }
  return m_Entries.empty() ? nullptr : m_Entries.back().get();
}

int QFTechDBConfigInfo::AddTechDBConfigData(QFTechDBConfigData* entry) {
  if (entry) m_Entries.emplace_back(entry);
  return entry != nullptr;
}

void QFTechDBConfigInfo::ClearTechDBInfo() { m_Entries.clear(); }

QFTechDBConfigInfo* QFTechDBConfigInfo::Clone() const { return new QFTechDBConfigInfo(*this); }

int QFTechDBConfigInfo::CopyFrom(const QFTechDBConfigInfo* other) {
  if (!other || other->GetCount() != GetCount()) return 0;
  for (std::size_t i = 0; i < m_Entries.size(); ++i) *m_Entries[i] = *other->m_Entries[i];
  return 1;
}

int QFTechDBConfigInfo::IsActiveTechDbChange(const QFTechDBConfigInfo* other) const {
  if (!other || other->GetCount() != GetCount()) return 0;
  return !std::equal(m_Entries.begin(), m_Entries.end(), other->m_Entries.begin(),
                     [](const auto& a, const auto& b) { return *a == *b; });
}
