// The error flag's record and dump. Schemas: 1 stores the flag; 2 adds the type.
#include "share/objects/flagged_error.h"

#include "companions/geometry/constants.h"
#include "framework/archive.h"
#include "share/core/document_messages.h"
#include "share/core/dump.h"

IMPLEMENT_SERIAL(CFlaggedError, CObject, VERSIONABLE_SCHEMA | 2)

namespace {

constexpr int kNoRecord = -1;

LPCTSTR TextOf(FlaggedErrorEnum type) {
  switch (type) {
    case FLAGGED_ERROR_NORMAL: return _T("NORMAL");
    case FLAGGED_ERROR_STOCK: return _T("STOCK");
  }
  return _T("Nothing");
}

}  // namespace

// The limit is the float nearest to 32.002, which is smaller than 32.002 by more than RESABS.
bool HasFlaggedErrorRecord(float readStorageUnits) { return double(readStorageUnits) > double(32.002f) - RESABS; }

CFlaggedError::CFlaggedError(const CFlaggedError& other)
    : CObject(),
      m_eFlaggedErrorType(other.m_eFlaggedErrorType),
      m_bFlag(other.m_bFlag),
      m_iErrorStringID(other.m_iErrorStringID),
      m_bCanClearError(other.m_bCanClearError),
      m_bAllowEditing(other.m_bAllowEditing) {}

CFlaggedError& CFlaggedError::operator=(const CFlaggedError& other) {
  m_eFlaggedErrorType = other.m_eFlaggedErrorType;
  m_bFlag = other.m_bFlag;
  m_iErrorStringID = other.m_iErrorStringID;
  m_bCanClearError = other.m_bCanClearError;
  m_bAllowEditing = other.m_bAllowEditing;
  return *this;
}

void CFlaggedError::Serialize(CArchive& ar) {
  int version = kNoRecord;
  if (ar.IsStoring() || HasFlaggedErrorRecord(GetActiveDocReadStorageUnits())) {
    ar.SerializeClass(RUNTIME_CLASS(CFlaggedError));
    version = int(ar.GetObjectSchema());
  }
  CObject::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_bFlag << int(m_eFlaggedErrorType);
    return;
  }
  ar >> m_bFlag;
  if (version > 1) {
    int type = 0;
    ar >> type;
    m_eFlaggedErrorType = FlaggedErrorEnum(type);
  }
}

void CFlaggedError::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("CFlaggedError"), _T("Start"));
  DumpPrint(file, _T("\n m_eFlaggedErrorType : %s"), TextOf(m_eFlaggedErrorType));
  DumpFlag(file, _T("m_bFlag"), m_bFlag != 0);
  DumpPrint(file, _T("\n m_iErrorStringID: %d"), m_iErrorStringID);
  DumpFlag(file, _T("m_bCanClearError"), m_bCanClearError != 0);
  DumpFlag(file, _T("m_bAllowEditing"), m_bAllowEditing != 0);
  DumpBanner(file, _T("CFlaggedError"), _T("End"));
}
