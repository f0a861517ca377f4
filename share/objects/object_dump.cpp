// The dumps of a node for support staff. They print the nodes' addresses, so that dumps of several nodes can be
// compared.
#include "share/core/dump.h"
#include "share/objects/object.h"
#include "share/objects/object_patterns.h"

namespace {

LPCTSTR TextOf(QFObjState state) {
  switch (state) {
    case ACTIVE: return _T("ACTIVE");
    case SUPPRESSED: return _T("SUPPRESSED");
    case DELETED: return _T("DELETED");
    case LOCKED: return _T("LOCKED");
  }
  return _T("Nothing");
}

LPCTSTR TextOf(COMPARE_RESULT result) {
  switch (result) {
    case NO_MATCH: return _T("NO_MATCH");
    case COMPLETE_MATCH: return _T("COMPLETE_MATCH");
    case PROFILE_NODEPTH_MATCH: return _T("PROFILE_NODEPTH_MATCH");
    case PARTIAL_PROFILE_MATCH: return _T("PARTIAL_PROFILE_MATCH");
    case PARTIAL_MATCH_SUBSET: return _T("PARTIAL_MATCH_SUBSET");
  }
  return _T("Nothing");
}

const void* Address(const QFObject* object) { return object; }

}  // namespace

void QFObject::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFObject"), _T("Start"));
  DumpPrint(file, _T("\n m_Label: %s"), m_Label);
  DumpPrint(file, _T("\n m_CreatedBy: %s"), GetCreatedBy());
  DumpPrint(file, _T("\n m_DateCreated: %s"), GetDateCreated());
  DumpPrint(file, _T("\n m_LastModified: %s"), GetLastModified());
  DumpPrint(file, _T("\n m_LastModifiedBy: %s"), GetLastModifiedBy());
  DumpPrint(file, _T("\n m_ObjectId: %d"), m_ObjectId);
  DumpPrint(file, _T("\n m_iState : %s"), TextOf(m_iState));
  DumpPrint(file, _T("\n Address of this: %x"), Address(this));
  m_UserObjects.ForEach([&](CObject* object) {
    auto* user = DYNAMIC_DOWNCAST(QFObject, object);
    if (!user) return;
    DumpPrint(file, _T("\n Address of pObj: %x"), Address(user));
    DumpPrint(file, _T("\n strObjName: %s"), user->GetClassNameW());
  });
  DumpPrint(file, _T("\n m_CompareRes : %s"), TextOf(m_CompareRes));
  DumpPrint(file, _T("\n <---- m_pPatternMngr Start ---->"));
  if (m_pPatternMngr) GetObjectPatterns()->NodeOf(m_pPatternMngr)->DumpData(file);
  DumpPrint(file, _T("\n <---- m_pPatternMngr End ---->"));
  DumpFlag(file, _T("m_bIsMerged"), m_bMerged);
  DumpFlag(file, _T("m_bMergeInProgress"), m_bMergeInProgress);
  DumpBanner(file, _T("QFObject"), _T("End"));
}

void QFObject::DumpUserObjs(FILE* file) {
  if (!file) return;
  DumpPrint(file, _T("\nDumping for ======User Objects====== Start\n"));
  DumpPrint(file, _T("\n TotalUserObjects: %d"), m_UserObjects.GetCount());
  int number = 0;
  m_UserObjects.ForEach([&](CObject* object) {
    DumpPrint(file, _T("\n ----"));
    DumpPrint(file, _T("\n UserObjNo: %d"), number++);
    auto* user = DYNAMIC_DOWNCAST(QFObject, object);
    if (!user) return;
    DumpPrint(file, _T("\n ObjName: %s"), user->Name());
    DumpPrint(file, _T("\n ObjectClassName : %s,  Address of pObj: %x"), user->GetClassNameW(), Address(user));
    if (QFObject* owner = user->GetOwner()) {
      DumpPrint(file, _T("\n ObjectsOwnerClassName : %s,  Address of ObjectsOwner: %x"), owner->GetClassNameW(),
                Address(owner));
    }
  });
  DumpPrint(file, _T("\nDumping for ======User Objects====== End\n"));
}

void QFObject::DumpKestrovaObjects(FILE*) {}
