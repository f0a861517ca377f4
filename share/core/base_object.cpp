// The class record of QFBaseObject, which old documents lack.
#include "share/core/base_object.h"

#include <cmath>

#include "companions/geometry/constants.h"
#include "framework/archive.h"
#include "share/core/document_messages.h"

IMPLEMENT_SERIAL(QFBaseObject, CObject, VERSIONABLE_SCHEMA | 2)

bool HasBaseObjectRecord(float readStorageUnits) { return std::abs(double(readStorageUnits)) > 6.1 - RESABS; }

void QFBaseObject::Serialize(CArchive& ar) {
  if (ar.IsStoring() || HasBaseObjectRecord(GetActiveDocReadStorageUnits())) {
    ar.SerializeClass(RUNTIME_CLASS(QFBaseObject));
    ar.GetObjectSchema();  // not used; reading it ends the record
  }
  CObject::Serialize(ar);
}

CString QFBaseObject::GetClassNameW() { return _T("QFBaseObject"); }

void QFBaseObject::DumpData(FILE*) {}

void QFBaseObject::OnPostLoadFromStorageNotify() {}

CRuntimeClass* QFBaseObject::GetRuntimeClassForAutoIndexing() { return GetRuntimeClass(); }
