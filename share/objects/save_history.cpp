// The records of a document's saves, their manager, and the table of releases before the history existed.
#include "share/objects/save_history.h"

#include <cmath>
#include <limits>
#include <memory>
#include <span>

#include "companions/geometry/constants.h"
#include "framework/archive.h"
#include "share/core/dump.h"
#include "share/core/version_info.h"
#include "share/env/app_env.h"
#include "share/env/product_edition.h"
#include "share/objects/audit_trail.h"
#include "share/utilities/object_lists.h"

IMPLEMENT_SERIAL(QFDocSrHistory, QFBaseObject, VERSIONABLE_SCHEMA | 3)
IMPLEMENT_SERIAL(QFDocSrHistoryMngr, QFBaseObject, VERSIONABLE_SCHEMA | 1)

// ---- releases before the history existed

namespace {

struct OldBuild {
  LPCTSTR buildCode;
  LPCTSTR servicePack;
};

struct OldVersion {
  LPCTSTR majorVersion;
  double storageVersion;
  std::span<const OldBuild> builds;
  LPCTSTR otherBuilds;  // the service pack of all builds that the list lacks
};

constexpr OldBuild kBuilds2004[] = {
    {_T("2004/0811"), _T("SP3")},   {_T("2004/0517"), _T("SP2.1")}, {_T("2004/0316"), _T("SP2")},
    {_T("2004/0225"), _T("SP1.1")}, {_T("2004/0206"), _T("SP1")},
};

// SP2 had two builds.
constexpr OldBuild kBuilds2003[] = {
    {_T("2003/1013"), _T("SP4")},   {_T("2003/0904"), _T("SP3.1")}, {_T("2003/0808"), _T("SP3")},
    {_T("2003/0807"), _T("SP2.1")}, {_T("2003/0715"), _T("SP2")},   {_T("2003/0721"), _T("SP2")},
    {_T("2003/0529"), _T("SP1")},
};

constexpr OldBuild kBuilds2001Plus[] = {
    {_T("2003/0211"), _T("SP6")}, {_T("2002/1219"), _T("SP5")}, {_T("2002/0830"), _T("SP4")},
    {_T("2002/0624"), _T("SP3")}, {_T("2002/0521"), _T("SP2")}, {_T("2002/0403"), _T("SP1")},
};

// Latest first. Three storage versions are floats widened to double, as those releases stored them.
constexpr OldVersion kOldVersions[] = {
    {_T("2005"), 13.0, {}, _T("Pre-release2")},
    {_T("2004Plus"), 12.0, {}, _T("Beta1")},
    {_T("2004"), 11.2f, kBuilds2004, _T("SP0")},
    {_T("2003"), 10.1f, kBuilds2003, _T("SP0")},
    {_T("2001Plus"), 8.2f, kBuilds2001Plus, _T("SP0")},
    {_T("2001"), 8.0, {}, _T("-")},
    {_T("2000"), 7.0, {}, _T("-")},
    {_T("99"), 6.0, {}, _T("-")},
    {_T("1999"), 6.0, {}, _T("-")},
};

const OldVersion* FindOldVersion(const CString& majorVersion) {
  for (const OldVersion& version : kOldVersions)
    if (majorVersion == version.majorVersion) return &version;
  return nullptr;
}

LPCTSTR ServicePackOf(const OldVersion& version, const CString& buildCode) {
  for (const OldBuild& build : version.builds)
    if (buildCode == build.buildCode) return build.servicePack;
  return version.otherBuilds;
}

}  // namespace

bool FindVersionBeforeHistory(double storageVersion, CString& majorVersion) {
  majorVersion.Empty();
  if (!(storageVersion <= kOldVersions[0].storageVersion + RESABS)) return false;
  for (const OldVersion& version : kOldVersions) {
    if (storageVersion < version.storageVersion - RESABS) continue;
    majorVersion = version.majorVersion;
    break;
  }
  return true;
}

QFDocSrHistory::QFDocSrHistory() = default;

QFDocSrHistory::QFDocSrHistory(const CString& majorVersion, const CString& buildCode, const CString& user,
                               const CString& dateAndTime)
    : m_bLockedForWriting(1),
      m_MajorVersion(majorVersion),
      m_ServicePack(_T("-")),
      m_BuildCode(buildCode),
      m_DateAndTime(dateAndTime),
      m_User(user) {
  if (const OldVersion* version = FindOldVersion(majorVersion)) {
    m_StorageVersionNumber = version->storageVersion;
    m_ServicePack = ServicePackOf(*version, buildCode);
  }
  if (m_MajorVersion.IsEmpty()) m_MajorVersion = _T("98 or before");
}

// ---- record

namespace {

CString PresentUser() {
  const CKVEnvApp* env = AppEnv();
  return env ? env->GetUserNameW() : CString();
}

}  // namespace

int QFDocSrHistory::InitForCurrentInfo() {
  if (m_bLockedForWriting) return 0;
  m_BuildCode = CKVVersionInfo::QF_BUILD_DATE_FOR_HELP_ABOUT;
  m_StorageVersionNumber = CKVVersionInfo::QF_STORAGE_VERSION;
  m_MajorVersion = CKVVersionInfo::QF_VERSION_MAJOR_FOR_SERVICE_PACK;
  m_ServicePack = CKVVersionInfo::QF_SERVICE_PACK;
  m_DateAndTime = AuditTrail::Now();
  m_User = PresentUser();
  m_ProductEdition = GetProductEditionText();
  m_ActiveModule = GetRunningModuleName();
  if (m_EditionInfo.IsEmpty()) m_EditionInfo = GetProductEditionInfo();
  if (m_NumSaves < std::numeric_limits<int>::max()) ++m_NumSaves;  // a file can hold any number
  return 1;
}

bool QFDocSrHistory::IsOfPresentCombination() const {
  return m_BuildCode == CKVVersionInfo::QF_BUILD_DATE_FOR_HELP_ABOUT &&
         std::abs(m_StorageVersionNumber - CKVVersionInfo::QF_STORAGE_VERSION) <= RESABS &&
         m_MajorVersion == CKVVersionInfo::QF_VERSION_MAJOR_FOR_SERVICE_PACK &&
         m_ServicePack == CKVVersionInfo::QF_SERVICE_PACK && m_User == PresentUser();
}

int QFDocSrHistory::UnlockForWriting(int init) {
  if (!IsOfPresentCombination()) return 0;
  m_bLockedForWriting = 0;
  return init ? InitForCurrentInfo() : 1;
}

CString QFDocSrHistory::GetStorageVersion() const {
  CString text;
  text.Format(_T("%6.2f"), m_StorageVersionNumber);
  return text;
}

CString QFDocSrHistory::GetNumSaves() const {
  CString text;
  text.Format(_T("%d"), m_NumSaves);
  return text;
}

void QFDocSrHistory::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(QFDocSrHistory));
  const UINT schema = ar.GetObjectSchema();
  QFBaseObject::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_MajorVersion << m_ServicePack << m_BuildCode << m_StorageVersionNumber << m_DateAndTime << m_User
       << m_NumSaves << m_ProductEdition << m_EditionInfo;
    return;
  }
  ar >> m_MajorVersion >> m_ServicePack >> m_BuildCode >> m_StorageVersionNumber >> m_DateAndTime >> m_User >>
      m_NumSaves;
  m_ProductEdition.LoadString(kFullEditionTextId);
  if (schema > 1) ar >> m_ProductEdition;
  if (schema > 2) ar >> m_EditionInfo;
  m_bLockedForWriting = 1;
}

void QFDocSrHistory::DumpData(FILE* file) {
  DumpBanner(file, _T("QFDocSrHistory"), _T("Start"));
  DumpFlag(file, _T("m_bLockedForWriting"), m_bLockedForWriting != 0);
  DumpPrint(file, _T("\n m_MajorVersion: %s"), m_MajorVersion);
  DumpPrint(file, _T("\n m_ServicePack: %s"), m_ServicePack);
  DumpPrint(file, _T("\n m_BuildCode: %s"), m_BuildCode);
  DumpPrint(file, _T("\n m_StorageVersionNumber: %s"), GetStorageVersion());
  DumpPrint(file, _T("\n m_DateAndTime: %s"), m_DateAndTime);
  DumpPrint(file, _T("\n m_User: %s"), m_User);
  DumpPrint(file, _T("\n m_ProductEdition: %s"), m_ProductEdition);
  DumpPrint(file, _T("\n m_NumSaves: %d"), m_NumSaves);
  DumpPrint(file, _T("\n m_ActiveModule: %s"), m_ActiveModule);
  DumpPrint(file, _T("\n m_EditionInfo: %s"), m_EditionInfo);
  DumpBanner(file, _T("QFDocSrHistory"), _T("End"));
}

// ---- manager

QFDocSrHistoryMngr::QFDocSrHistoryMngr() = default;

QFDocSrHistoryMngr::~QFDocSrHistoryMngr() { DestroyHistory(); }

int QFDocSrHistoryMngr::AddHistoryForOldVersion(const CString& majorVersion, const CString& buildCode,
                                                const CString& user, const CString& dateAndTime) {
  if (!m_HistoryList.IsEmpty()) return 1;
  auto entry = std::make_unique<QFDocSrHistory>(majorVersion, buildCode, user, dateAndTime);
  m_HistoryList.AddTail(entry.get());
  static_cast<void>(entry.release());
  return 1;
}

void QFDocSrHistoryMngr::GetAllHistoryObjects(CObList& list) const { list.AddTail(&m_HistoryList); }

QFDocSrHistory* QFDocSrHistoryMngr::GetLastHistoryObject() const {
  return static_cast<QFDocSrHistory*>(m_HistoryList.GetTail());
}

void QFDocSrHistoryMngr::DestroyHistory() {
  m_pCurrentHistory = nullptr;
  DeleteAllElements_CObList(m_HistoryList);
}

int QFDocSrHistoryMngr::AddOrUpdateCurrentHistoryObj() {
  for (POSITION at = m_HistoryList.GetTailPosition(); at && !m_pCurrentHistory;) {
    auto* record = static_cast<QFDocSrHistory*>(m_HistoryList.GetPrev(at));
    if (record->UnlockForWriting(/*init=*/0)) m_pCurrentHistory = record;
  }
  if (!m_pCurrentHistory) {
    m_pCurrentHistory = new QFDocSrHistory;
    m_HistoryList.AddTail(m_pCurrentHistory);
  }
  return m_pCurrentHistory->InitForCurrentInfo();
}

void QFDocSrHistoryMngr::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(QFDocSrHistoryMngr));
  ar.GetObjectSchema();  // unused; completes the class record
  QFBaseObject::Serialize(ar);
  if (ar.IsStoring()) AddOrUpdateCurrentHistoryObj();
  try {
    m_HistoryList.SerializeOwned(ar, RUNTIME_CLASS(QFDocSrHistory));
  } catch (...) {
    PurgeNullNodesFromList(m_HistoryList);
    throw;
  }
  PurgeNullNodesFromList(m_HistoryList);
}

void QFDocSrHistoryMngr::DumpData(FILE* file) {
  DumpBanner(file, _T("QFDocSrHistoryMngr"), _T("Start"));
  DumpPrint(file, _T("\n m_HistoryList Total Items : %d\n"), m_HistoryList.GetCount());
  for (POSITION at = m_HistoryList.GetHeadPosition(); at;)
    static_cast<QFDocSrHistory*>(m_HistoryList.GetNext(at))->DumpData(file);
  DumpBanner(file, _T("QFDocSrHistoryMngr"), _T("End"));
}
