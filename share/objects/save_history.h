// The save history of a document: which builds of the product have written it, when, how often and for whom.
//
// The host's document owns one QFDocSrHistoryMngr and stores it with itself. Each store brings the record of the
// present combination of build, storage version, service pack and user up to date, or adds one. Records that came from
// a file are locked: none is changed unless it proves to be of the present combination. Nothing here shows a message,
// and no operation but Serialize raises. All run on the thread that saves or loads the document.
#pragma once

#include "framework/ob_list.h"
#include "share/core/base_object.h"

// The saves of one combination.
class KVSHARE_API QFDocSrHistory : public QFBaseObject {
  DECLARE_SERIAL(QFDocSrHistory)

 public:
  // Open for writing and empty: storage version -1, one save.
  QFDocSrHistory();
  // A locked record of a document from before there was a history. Storage version and service pack are looked up by
  // major version and build code; they are -1 and "-" for versions that aren't known. An empty major version becomes
  // "98 or before".
  QFDocSrHistory(const CString& majorVersion, const CString& buildCode, const CString& user,
                 const CString& dateAndTime);

  // Makes this the record of the present build, user and moment, and counts one more save. Gives 1; 0, and changes
  // nothing, for a locked record.
  int InitForCurrentInfo();
  // Unlocks a record of the present build, storage version (within RESABS), service pack and user. Gives 1, or with a
  // nonzero init what InitForCurrentInfo gives; 0, and changes nothing, for any other record.
  int UnlockForWriting(int init);

  CString GetMajorVersion() const { return m_MajorVersion; }  // such as "2024"
  CString GetServicePack() const { return m_ServicePack; }    // such as "SP4"
  CString GetBuildCode() const { return m_BuildCode; }        // such as "2024/0826"
  // As text, "%6.2f".
  CString GetStorageVersion() const;
  double GetStorageVersionNumber() const { return m_StorageVersionNumber; }
  // Of the last save: date, "::", time of day.
  CString GetDateAndTime() const { return m_DateAndTime; }
  CString GetUser() const { return m_User; }
  CString GetProductEdition() const { return m_ProductEdition; }
  // As text. A new record starts at 1 and so says 2 after its first save: that is required.
  CString GetNumSaves() const;
  // "Mill", "Turn", "Mill-Turn", "WireEDM" or "Unknown"; empty for a record that was not written in this run, since the
  // module is not stored.
  CString GetActiveModule() const { return m_ActiveModule; }

  // The record, schema 3: class record, that of QFBaseObject, major version, service pack, build code, storage version
  // (double), date and time, user, number of saves (32-bit), from schema 2 on product edition, from schema 3 on edition
  // info. A loaded record is locked; one of schema 1 gets the edition of string 2814. Raises what the archive raises.
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

// Whether documents of that storage version are from before there was a history; then majorVersion is the release that
// wrote them, empty for one that is older than all releases known by name.
KVSHARE_API bool FindVersionBeforeHistory(double storageVersion, CString& majorVersion);

// The records of one document, oldest first.
class KVSHARE_API QFDocSrHistoryMngr : public QFBaseObject {
  DECLARE_SERIAL(QFDocSrHistoryMngr)

 public:
  QFDocSrHistoryMngr();
  ~QFDocSrHistoryMngr() override;

  // Gives a document from before there was a history its one record. Does nothing if there is any. Always 1.
  int AddHistoryForOldVersion(const CString& majorVersion, const CString& buildCode, const CString& user,
                              const CString& dateAndTime);
  // Appends the records to the list; they stay the manager's.
  void GetAllHistoryObjects(CObList& list) const;
  // The record added last; null if there is none.
  QFDocSrHistory* GetLastHistoryObject() const;
  // Deletes all records. The next store begins a new one.
  void DestroyHistory();

  // The record, schema 1: class record, that of QFBaseObject, the list of records. Storing first brings the present
  // record up to date, so that what is stored ends by describing this save. Loading appends, and drops null records
  // that damage may bring. Raises what the archive raises, badIndex for a record that stands in it twice.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;

 private:
  int AddOrUpdateCurrentHistoryObj();

  CObList m_HistoryList;                        // of QFDocSrHistory, owned
  QFDocSrHistory* m_pCurrentHistory = nullptr;  // the one of the list that this run writes to
};
