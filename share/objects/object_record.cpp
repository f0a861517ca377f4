// The node's record in an archive.
//
// The fields in order, with the schema that added each one. Storing writes all fields. Loading an older record sets the
// missing fields to the value in the last column.
//
//    1  class record of QFObject
//    2  record of QFBaseObject
//    3  m_UserObjects         count, references                          2  empty
//    4  m_Label               text                                       1
//    5  m_CreatedBy           text                                       1
//    6  m_DateCreated         text                                       1
//    7  m_LastModified        text                                       1
//    8  m_ObjectId            DWORD                                      1
//    9  m_iState              LONG                                       1
//   10  m_pOwner              reference to a QFObject                    1
//   11  m_LastModifiedBy      text                                       3  m_CreatedBy
//   12  m_NodeStatus          WORD                                       4  0
//   13  m_pOriginalOwner      reference to a QFObject                    5  null
//   14  m_DisplayColor        DWORD                                      6  no colour
//   15  m_pPatternMngr        reference to a QFObjectPatternMgr          7  null
//   16  m_RegName             text                                       8  name of GetRuntimeClassForAutoIndexing()
#include <new>
#include <string>

#include "framework/archive.h"
#include "share/objects/internal/recent_texts.h"
#include "share/objects/object.h"
#include "share/objects/object_patterns.h"
#include "share/objects/storage_status.h"

IMPLEMENT_SERIAL(QFObject, QFBaseObject, VERSIONABLE_SCHEMA | 8)

void QFObject::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(QFObject));
  const UINT version = ar.GetObjectSchema();
  QFBaseObject::Serialize(ar);
  if (ar.IsStoring()) {
    StoreRecord(ar);
  } else {
    LoadRecord(ar, version);
  }
}

// ---- storing

void QFObject::StoreRecord(CArchive& ar) {
  const ObjectPatterns* patterns = GetObjectPatterns();
  const AuditTrail::Texts& stamps = m_Trail.Get();
  m_UserObjects.Store(ar);
  ar << m_Label << stamps.createdBy << stamps.dateCreated << stamps.lastModified << m_ObjectId << LONG(m_iState);
  StoreReferenceOrNull(ar, m_pOwner);
  ar << stamps.lastModifiedBy << m_NodeStatus;
  StoreReferenceOrNull(ar, m_pOriginalOwner);
  ar << m_DisplayColor;
  StoreReferenceOrNull(ar, m_pPatternMngr ? patterns->NodeOf(m_pPatternMngr) : nullptr);
  ar << m_RegName;
}

// ---- loading

namespace {

constexpr BYTE kNothing[sizeof(WORD)] = {};  // a null reference, or an empty list

// The failure of a list of users has one cause and no file name. Its text says what happened inside; nested lists add
// nothing to it.
void LoadUsers(UserObjects& users, CArchive& ar) {
  std::string reason;
  try {
    return users.Load(ar);
  } catch (const CArchiveException& failure) {
    if (failure.m_cause == CArchiveException::genericException && failure.m_strFileName.IsEmpty()) throw;
    reason = failure.what();
  } catch (const CException& failure) {
    reason = failure.what();
  } catch (...) {
    // Without memory there is no text.
  }
  throw CArchiveException(CArchiveException::genericException, nullptr, reason);
}

}  // namespace

void QFObject::LoadRecord(CArchive& ar, unsigned version) {
  if (version > 1 && !ar.ReadIfNext(kNothing, sizeof kNothing)) LoadUsers(m_UserObjects, ar);
  RecentTexts& recent = RecentTexts::OfThread();
  LONG state = 0;
  ar >> m_Label;
  recent.LoadFirstStamps(ar, m_Trail);
  ar >> m_ObjectId >> state >> m_pOwner;
  m_iState = QFObjState(state);
  if (version > 2) {
    recent.LoadLastStamp(ar, m_Trail);
  } else {
    recent.SetLastStampToCreator(m_Trail);
  }
  if (version > 3) ar >> m_NodeStatus;
  if (version > 4) LoadOriginalOwner(ar);
  if (version > 5) ar >> m_DisplayColor;
  if (version > 6 && (m_pPatternMngr || !ar.ReadIfNext(kNothing, sizeof kNothing))) LoadPattern(ar);
  if (version > 7) {
    recent.LoadName(ar, GetRuntimeClass(), m_RegName);
  } else {
    const CRuntimeClass* indexed = GetRuntimeClassForAutoIndexing();
    m_RegName = indexed ? indexed->m_lpszClassName : "";
  }
}

void QFObject::LoadOriginalOwner(CArchive& ar) {
  if (ar.ReadIfNext(kNothing, sizeof kNothing)) {
    m_pOriginalOwner = nullptr;
    return;
  }
  QFObject* owner = nullptr;
  try {
    ar >> owner;
  } catch (const CException&) {
    // A load continues without a damaged original owner.
  }
  const bool entered = !owner || owner->m_UserObjects.Contains(this) || owner->AddToUserObjectsList(this, /*held=*/0);
  if (!entered) throw std::bad_alloc();
  m_pOriginalOwner = owner;
  // An object is not recycled below its present owner.
  if (m_pOwner && m_pOwner == m_pOriginalOwner) SetOriginalOwner(nullptr);
}

void QFObject::LoadPattern(CArchive& ar) {
  // Without ObjectPatterns no class is allowed here: every reference except null raises.
  static constinit CRuntimeClass nobody = {"QFObjectPatternMgr", 0, CRuntimeClass::kNoSchema, nullptr, nullptr};
  const ObjectPatterns* patterns = GetObjectPatterns();
  auto* manager = static_cast<QFObject*>(ar.ReadObject(patterns ? patterns->RuntimeClass() : &nobody));
  if (m_pPatternMngr && manager != patterns->NodeOf(m_pPatternMngr)) DestroyPattern();
  if (!manager || m_pPatternMngr) return;
  // A manager has one owner, and a pattern manager has no pattern: otherwise damaged bytes could cause a double delete.
  if (manager->m_bIsPatternOfLoaded || GetIsPatternObject())
    AfxThrowArchiveException(CArchiveException::badIndex, ar.m_strFileName);
  manager->m_bIsPatternOfLoaded = true;
  m_pPatternMngr = patterns->ManagerOf(manager);
  patterns->NoteLoadedFor(m_pPatternMngr, this);
}
