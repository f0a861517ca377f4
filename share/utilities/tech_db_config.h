// The technology databases that a user may connect to, as they stand in memory: QFTechDBConfigData is one of them,
// QFTechDBConfigInfo their list. share/utilities/tech_db_config_file.h reads and writes the file behind them.
//
// Nothing here throws or shows anything. One list is used by one thread at a time. A connection string may hold a
// password: it is for the database alone and must not reach a log or a terminal, which GetDisplayName is for.
#pragma once

#include <memory>
#include <vector>

#include "framework/text.h"

// What serves a technology database.
enum QFTechDBType : int {
  QF_TECHDB_SQLITE = 0,
  QF_TECHDB_ACCESS = 1,
  QF_TECHDB_SQLSERVER = 2,
};

class KVSHARE_API QFTechDBConfigData {
 public:
  // A SQLite entry with empty texts that is not active.
  QFTechDBConfigData() = default;

  // A new object with the same fields, the caller's. Null if there is no memory.
  QFTechDBConfigData* Clone() const;
  bool operator==(const QFTechDBConfigData&) const = default;

  // One of QFTechDBType.
  int GetDatabaseType() const { return m_nType; }
  void SetDatabaseType(int type) { m_nType = type; }
  // One of those of companions/database/connection_strings.h.
  const CString& GetConnectionString() const { return m_Connection; }
  void SetConnectionString(const CString& text) { m_Connection = text; }
  // The whole path in the product's form; empty for a server.
  const CString& GetFilePath() const { return m_FilePath; }
  void SetFilePath(const CString& path) { m_FilePath = path; }
  // 1 for the database in use. More than one may be marked; the first counts.
  int GetActiveFlag() const { return m_bActive; }
  void SetActiveFlag(int flag) { m_bActive = flag; }
  const CString& GetDescription() const { return m_Description; }
  void SetDescription(const CString& text) { m_Description = text; }

  // The file path; of a server its and the database's name as SERVER=x;DATABASE=y, without user and password.
  CString GetDisplayName() const;

 private:
  int m_nType = QF_TECHDB_SQLITE;
  CString m_Connection;
  CString m_FilePath;
  int m_nReserved = 0;  // copied and compared, without a use
  int m_bActive = 0;
  CString m_Description;
};

// The parts of a connection string that begin with "SERVER" and "DATABASE", each up to its ";", with one between them.
// Their case counts. A part that is not there is left out.
KVSHARE_API CString ServerPartsOfConnection(const CString& connection);

// Owns its entries. Copies are deep.
class KVSHARE_API QFTechDBConfigInfo {
 public:
  QFTechDBConfigInfo() = default;
  QFTechDBConfigInfo(const QFTechDBConfigInfo& other);
  QFTechDBConfigInfo& operator=(const QFTechDBConfigInfo& other);
  ~QFTechDBConfigInfo();

  int GetCount() const { return int(m_Entries.size()); }
  // The entry, which stays the list's; null outside of 0 to GetCount() - 1.
  QFTechDBConfigData* GetTechDBConfigData(int index) const;
  // The first entry that is marked as active; if none is, the last entry: that is required. Null only of an empty list.
  QFTechDBConfigData* GetActiveConfigData() const;
  // Appends an object from the heap, and owns it from then on: 1. Null: 0.
  int AddTechDBConfigData(QFTechDBConfigData* entry);
  void ClearTechDBInfo();

  // A new list with clones of all entries, the caller's.
  QFTechDBConfigInfo* Clone() const;
  // Takes over the other's fields, entry by entry: 1. For null and a list of another length: 0, with nothing changed.
  int CopyFrom(const QFTechDBConfigInfo* other);
  // 1 if an entry differs in any field. 0 for null, for a list of another length (that is required), and if all agree.
  int IsActiveTechDbChange(const QFTechDBConfigInfo* other) const;

 private:
  std::vector<std::unique_ptr<QFTechDBConfigData>> m_Entries;
};
