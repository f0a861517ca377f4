// Descriptions of patterns, and their records in an archive.
//
// QFPatternInfo, with the schema that added each field; an older record leaves the field as it is:
//
//   1  class record of QFPatternInfo
//   2  record of QFBaseObject
//   3  m_InstToSkipList     count, references to QFPattInstToSkip        1
//   4  m_RefPosOfObject     three doubles                                1
//   5  m_pOptimMgr          reference to a QFPattOptimizMgr, or null     2
//
// QFPattInstToSkip, schema 1: its class record and the record of QFBaseObject.
#include "share/patterns/pattern_info.h"

#include <memory>
#include <utility>

#include "framework/archive.h"
#include "share/display/display_info.h"
#include "share/objects/geometry_archive.h"
#include "share/objects/storage_status.h"
#include "share/patterns/pattern_orders.h"

IMPLEMENT_SERIAL(QFPattInstToSkip, QFBaseObject, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFPatternInfo, QFBaseObject, VERSIONABLE_SCHEMA | 2)

// ---- one skipped instance

void QFPattInstToSkip::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(QFPattInstToSkip));
  ar.GetObjectSchema();  // not used; reading it ends the record
  QFBaseObject::Serialize(ar);
}

CString QFPattInstToSkip::GetName() { return {}; }
QFPattInstToSkip* QFPattInstToSkip::Clone() { return nullptr; }
int QFPattInstToSkip::CopyParameters(QFPattInstToSkip*) { return 0; }

// ---- record

QFPatternInfo::QFPatternInfo() = default;

QFPatternInfo::~QFPatternInfo() { delete std::exchange(m_pOptimMgr, nullptr); }

void QFPatternInfo::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(QFPatternInfo));
  const UINT version = ar.GetObjectSchema();
  QFBaseObject::Serialize(ar);
  m_InstToSkipList.SerializeOwned(ar, RUNTIME_CLASS(QFPattInstToSkip));
  if (ar.IsStoring()) {
    ar << m_RefPosOfObject;
    StoreReferenceOrNull(ar, m_pOptimMgr);
    return;
  }
  NoteIfCounted();
  ar >> m_RefPosOfObject;
  if (version < 2) return;
  QFPattOptimizMgr* orders = nullptr;
  ar >> orders;
  if (orders == m_pOptimMgr) return;
  // Users of the orders may have been read before, so the reference can be to a known object; two owners are damage.
  if (orders && !orders->TakeFromArchive()) AfxThrowArchiveException(CArchiveException::badIndex, ar.m_strFileName);
  delete std::exchange(m_pOptimMgr, orders);
}

// ---- defaults of the kinds

int QFPatternInfo::Rebuild() { return 0; }
QFPatternInfo* QFPatternInfo::Clone() { return nullptr; }
LONGLONG QFPatternInfo::GetNumPatternInstances() { return 1; }
QFeObjectPatternInstanceStatus QFPatternInfo::GetTransfForInst(LONGLONG, FRTransf&) { return ePatternInstanceNone; }
QFeObjectPatternInstanceStatus QFPatternInfo::GetInstanceStatus(LONGLONG) { return ePatternInstanceActive; }
int QFPatternInfo::SetInstanceStatus(int, QFeObjectPatternInstanceStatus) { return 0; }
unsigned QFPatternInfo::GetIsPatterNotFullyDefined() { return 0; }
QFeObjectPatternType QFPatternInfo::GetPatternType() { return eObjectPatternNone; }
void QFPatternInfo::SetPatternDirRestriction(QFDirectionRestriction*) {}
int QFPatternInfo::CompareParametersPatternInfo(QFPatternInfo*) { return 0; }

// ---- skipped instances

int QFPatternInfo::CopyParameters(QFPatternInfo* source) {
  if (!source) return 0;
  m_RefPosOfObject = source->m_RefPosOfObject;
  CObList copies;  // complete before the old ones go: the source may be this object
  for (POSITION at = source->m_InstToSkipList.GetHeadPosition(); at;) {
    auto* entry = static_cast<QFPattInstToSkip*>(source->m_InstToSkipList.GetNext(at));
    std::unique_ptr<QFPattInstToSkip> copy(entry ? entry->Clone() : nullptr);
    copies.AddTail(copy.get());
    static_cast<void>(copy.release());
  }
  DeleteAllInstancesToSkip();
  m_InstToSkipList.MoveTail(copies);
  return 1;
}

void QFPatternInfo::DeleteAllInstancesToSkip() {
  NoteIfCounted();
  while (!m_InstToSkipList.IsEmpty()) delete m_InstToSkipList.RemoveHead();
}

void QFPatternInfo::DeleteInstanceToSkip(QFPattInstToSkip* entry) {
  const POSITION at = m_InstToSkipList.Find(entry);
  if (!at) return;
  NoteIfCounted();
  m_InstToSkipList.RemoveAt(at);
  delete entry;
}

// ---- markers

namespace {

constexpr double kMarkerRadius = 6.0;
constexpr double kPickDistance = 3.0;

FRPosition LocationOf(QFPatternInfo& pattern, LONGLONG instance) {
  FRTransf transform;
  pattern.GetTransfForInst(instance, transform);
  return pattern.GetRefPosOfObject() * transform;
}

}  // namespace

int QFPatternInfo::Display(QFDisplayInfo* info) {
  if (!info) return 0;
  const LONGLONG count = GetNumPatternInstances();
  QFeObjectPatternInstanceStatus last = ePatternInstanceNone;
  for (LONGLONG instance = 0; instance < count; ++instance) {
    const FRPosition location = LocationOf(*this, instance);
    const QFeObjectPatternInstanceStatus status = GetInstanceStatus(instance);
    if (status != last) info->SetColor(status == ePatternInstanceActive ? kActiveColor : kOtherColor);
    last = status;
    info->DrawEllipse(location, kMarkerRadius, kMarkerRadius);
  }
  return 1;
}

int QFPatternInfo::HighLight(int instance, QFDisplayInfo* info) {
  if (instance == -1 || !info) return 0;
  info->DrawEllipse(LocationOf(*this, instance), kMarkerRadius, kMarkerRadius);
  return 1;
}

QFeObjectPatternInstanceStatus QFPatternInfo::CheckInstanceAvailableAtScreenPos(const FRTransf& view,
                                                                                FRPosition screenPos, int& index) {
  index = -1;
  const LONGLONG count = GetNumPatternInstances();
  for (LONGLONG instance = 0; instance < count; ++instance) {
    FRPosition onScreen = LocationOf(*this, instance) * view;
    onScreen.set_z(0);
    if (!(onScreen.distance(screenPos) < kPickDistance)) continue;
    index = int(instance);
    return GetInstanceStatus(instance);
  }
  return ePatternInstanceActive;
}

int QFPatternInfo::ToggleSelectInstanceAtScreenPos(const FRTransf& view, FRPosition screenPos) {
  int instance = -1;
  const QFeObjectPatternInstanceStatus status = CheckInstanceAvailableAtScreenPos(view, screenPos, instance);
  if (instance < 0 || (status != ePatternInstanceActive && status != ePatternInstanceNotActive)) return 0;
  SetInstanceStatus(instance, status == ePatternInstanceActive ? ePatternInstanceNotActive : ePatternInstanceActive);
  return 1;
}

// ---- orders

int QFPatternInfo::SetOptimizedList(QFObject* object, CArray<int, int&>& order) {
  if (!m_pOptimMgr) m_pOptimMgr = new QFPattOptimizMgr;
  return m_pOptimMgr->SetOptimizedList(object, order);
}

QFeObjectPatternInstanceStatus QFPatternInfo::GetTransfForInstOptimised(int position, FRTransf& transform,
                                                                        QFObject* object) {
  transform = GetScaleTransf(1.0);
  const int instance = object && m_pOptimMgr ? m_pOptimMgr->GetIndex(object, position) : -1;
  return GetTransfForInst(instance == -1 ? position : instance, transform);
}

int QFPatternInfo::GetIndexForInstOptimised(int position, QFObject* object) {
  return object && m_pOptimMgr ? m_pOptimMgr->GetIndex(object, position) : position;
}

int QFPatternInfo::IsOptimListsEmpty() const { return !m_pOptimMgr || m_pOptimMgr->IsOptimListsEmpty(); }

void QFPatternInfo::ClearOptimList() {
  if (!m_pOptimMgr) return;
  m_pOptimMgr->ClearOptimList();
  delete std::exchange(m_pOptimMgr, nullptr);
}

void QFPatternInfo::CorrectOptimList(CObList& valid) {
  if (m_pOptimMgr) m_pOptimMgr->CorrectOptimList(valid);
}

void QFPatternInfo::SetPatternOptimMgr(const QFPatternInfo* other) {
  QFPattOptimizMgr* copy = other && other->m_pOptimMgr ? other->m_pOptimMgr->Clone() : nullptr;
  delete std::exchange(m_pOptimMgr, copy);
}

int QFPatternInfo::RemoveFromUserObjectsList(QFObject* object) {
  return m_pOptimMgr && object ? m_pOptimMgr->RemoveOptimizedList(object) : 0;
}
