// The save history of a document: which builds of the product saved it, when, how often, and for which user.
//
// The host's document owns one QFDocSrHistoryMngr and stores it. Storing updates the record of the present combination
// of build, storage version, service pack and user, or adds one. Loaded records are locked: only a record of the
// present combination can be unlocked and changed. No operation shows a message; only Serialize raises exceptions. All
// operations run on the thread that saves or loads the document.
#pragma once

#include "framework/ob_list.h"
#include "share/core/base_object.h"

// The record of one combination.
class KVSHARE_API QFDocSrHistory : public QFBaseObject {
  DECLARE_SERIAL(QFDocSrHistory)

 public:
  // An empty record that is not locked: storage version -1, number of saves 1.
  QFDocSrHistory();
  // A locked record for a document that is older than the history. Storage version and service pack follow from major
  // version and build code; they are -1 and "-" for an unknown version. An empty major version becomes "98 or before".
  QFDocSrHistory(const CString& majorVersion, const CString& buildCode, const CString& user,
                 const CString& dateAndTime);

  // Sets build, user and time to the present ones and adds 1 to the number of saves: 1. Returns 0 and changes nothing
  // for a locked record.
  int InitForCurrentInfo();
  // Unlocks a record of the present build, storage version (within RESABS), service pack and user: 1. With nonzero init
  // it also calls InitForCurrentInfo and returns its result. Returns 0 and changes nothing for any other record.
  int UnlockForWriting(int init);

  CString GetMajorVersion() const { return m_MajorVersion; }  // such as "2024"
  CString GetServicePack() const { return m_ServicePack; }    // such as "SP4"
  CString GetBuildCode() const { return m_BuildCode; }        // such as "2024/0826"
  // As text, "%6.2f".
  CString GetStorageVersion() const;
  double GetStorageVersionNumber() const { return m_StorageVersionNumber; }
  // The time of the last save, as AuditTrail::Now returns it.
  CString GetDateAndTime() const { return m_DateAndTime; }
  CString GetUser() const { return m_User; }
  CString GetProductEdition() const { return m_ProductEdition; }
  // As text. A new record starts at 1, so it is 2 after the first save: kept for existing files, which count so.
  CString GetNumSaves() const;
  // "Mill", "Turn", "Mill-Turn", "WireEDM" or "Unknown". The module is not stored: it is empty for a loaded record
  // until this process saves with it.
  CString GetActiveModule() const { return m_ActiveModule; }

  // The record, schema 3: class record, QFBaseObject's record, major version, service pack, build code, storage version
  // (double), date and time, user, number of saves (32 bits), product edition (since schema 2), edition info (since
  // schema 3). A loaded record is locked; schema 1 gets the edition of string 2814. Passes the archive's exceptions on.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;

 private:
  bool IsOfPresentCombination() const;

  int m_bLockedForWriting = 0;
  CString m_MajorVersion;
  CString m_ServicePack;
  CString m_BuildCode;
  double m_StorageVersionNumber = -1.0;
  CString m_DateAndTime;
  CString m_User;
  CString m_ProductEdition;
  int m_NumSaves = 1;
  CString m_ActiveModule;  // not stored
  CString m_EditionInfo;
};

// True if documents of that storage version are older than the history. majorVersion then becomes the release that
// wrote them, empty for releases before all known ones. Otherwise majorVersion becomes empty.
KVSHARE_API bool FindVersionBeforeHistory(double storageVersion, CString& majorVersion);

// The records of one document, oldest first.
class KVSHARE_API QFDocSrHistoryMngr : public QFBaseObject {
  DECLARE_SERIAL(QFDocSrHistoryMngr)

 public:
  QFDocSrHistoryMngr();
  ~QFDocSrHistoryMngr() override;

  // Adds the one record of a document that is older than the history; nothing if there is a record. Always 1.
  int AddHistoryForOldVersion(const CString& majorVersion, const CString& buildCode, const CString& user,
                              const CString& dateAndTime);
  // Appends the records (QFDocSrHistory) to the list; the manager still owns them.
  void GetAllHistoryObjects(CObList& list) const;
  // The last record, owned by the manager; null without records.
  QFDocSrHistory* GetLastHistoryObject() const;
  // Deletes all records. The next save adds a new one.
  void DestroyHistory();

  // The record, schema 1: class record, QFBaseObject's record, list of records. Storing first updates or adds the
  // record of this save. Loading appends, and removes the null records of a damaged document, also if it raises. Passes
  // the archive's exceptions on; raises badIndex for a record that is in the list twice.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;

 private:
  int AddOrUpdateCurrentHistoryObj();

  CObList m_HistoryList;                        // QFDocSrHistory, owned
  QFDocSrHistory* m_pCurrentHistory = nullptr;  // the record that this process updates
};
