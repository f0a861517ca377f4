// The technology databases to which a user may connect, in memory: QFTechDBConfigData is one entry, QFTechDBConfigInfo
// the list. share/utilities/tech_db_config_file.h reads and writes their file.
//
// Only missing memory throws; nothing is shown. One thread at a time uses a list. A connection string can have a
// password: do not write it to a log or a terminal; use GetDisplayName there.
#pragma once

#include <memory>
#include <vector>

#include "framework/text.h"

// The type of a technology database.
enum QFTechDBType : int {
  QF_TECHDB_SQLITE = 0,
  QF_TECHDB_ACCESS = 1,
  QF_TECHDB_SQLSERVER = 2,
};

class KVSHARE_API QFTechDBConfigData {
 public:
  // An inactive SQLite entry with empty texts.
  QFTechDBConfigData() = default;

  // Returns a copy, which the caller owns; null without memory for the object.
  QFTechDBConfigData* Clone() const;
  bool operator==(const QFTechDBConfigData&) const = default;

  // One of QFTechDBType.
  int GetDatabaseType() const { return m_nType; }
  void SetDatabaseType(int type) { m_nType = type; }
  // In one of the forms of companions/database/connection_strings.h.
  const CString& GetConnectionString() const { return m_Connection; }
  void SetConnectionString(const CString& text) { m_Connection = text; }
  // The whole product path; empty for a server.
  const CString& GetFilePath() const { return m_FilePath; }
  void SetFilePath(const CString& path) { m_FilePath = path; }
  // 1 for the database in use. If several entries are marked, the first one is in use.
  int GetActiveFlag() const { return m_bActive; }
  void SetActiveFlag(int flag) { m_bActive = flag; }
  const CString& GetDescription() const { return m_Description; }
  void SetDescription(const CString& text) { m_Description = text; }

  // The file path; for a server "SERVER=x;DATABASE=y", without user and password.
  CString GetDisplayName() const;

 private:
  int m_nType = QF_TECHDB_SQLITE;
  CString m_Connection;
  CString m_FilePath;
  int m_nReserved = 0;  // copied and compared, otherwise unused
  int m_bActive = 0;
  CString m_Description;
};

// The parts of a connection string that begin with "SERVER" and "DATABASE", each up to its ";", joined by ";". Upper
// and lower case differ. A missing part is empty.
KVSHARE_API CString ServerPartsOfConnection(const CString& connection);

// The list. It owns its entries; copies are deep.
class KVSHARE_API QFTechDBConfigInfo {
 public:
  QFTechDBConfigInfo() = default;
  QFTechDBConfigInfo(const QFTechDBConfigInfo& other);
  QFTechDBConfigInfo& operator=(const QFTechDBConfigInfo& other);
  ~QFTechDBConfigInfo();

  int GetCount() const { return int(m_Entries.size()); }
  // The entry, owned by the list; null for an index outside 0 to GetCount() - 1.
  QFTechDBConfigData* GetTechDBConfigData(int index) const;
  // The first active entry. Without one, the last entry: kept for existing files, whose only entry may have no mark.
  // Null for an empty list.
  QFTechDBConfigData* GetActiveConfigData() const;
  // Appends an entry that was created with new; the list then owns it: 1. 0 for null.
  int AddTechDBConfigData(QFTechDBConfigData* entry);
  void ClearTechDBInfo();

  // Returns a deep copy, which the caller owns.
  QFTechDBConfigInfo* Clone() const;
  // Copies the fields of the other list's entries: 1. 0 and no change for null or a list of another length.
  int CopyFrom(const QFTechDBConfigInfo* other);
  // 1 if an entry differs in any field. 0 if all are equal, for null, and for a list of another length (kept for
  // existing modules).
  int IsActiveTechDbChange(const QFTechDBConfigInfo* other) const;

 private:
  std::vector<std::unique_ptr<QFTechDBConfigData>> m_Entries;
};
