// The manager of a pattern. The fields of its record in order, with the schema that added each one:
//
//   1  class record of QFObjectPatternMgr
//   2  record of QFObject
//   3  m_bPatternActive    LONG                             1
//   4  m_pBaseObject       reference to a QFObject          1  null is logged
//   5  m_pPattInfo         reference to a QFPatternInfo     1  null is logged
//   6  m_PatternNodeDesc   text                             2  an older record leaves it as it is
#include "share/patterns/pattern_manager.h"

#include <algorithm>
#include <utility>

#include "framework/archive.h"
#include "share/core/dump.h"
#include "share/objects/object_patterns.h"
#include "share/objects/storage_status.h"
#include "share/patterns/internal/active_instances.h"

IMPLEMENT_SERIAL(QFObjectPatternMgr, QFObject, VERSIONABLE_SCHEMA | 2)

QFCallbackHelper QFObjectPatternMgr::m_sCbkHelper;

// ---- the manager as its node uses it

class PatternManagers final : public ObjectPatterns {
 public:
  constexpr PatternManagers() = default;

  const CRuntimeClass* RuntimeClass() const override { return RUNTIME_CLASS(QFObjectPatternMgr); }
  QFObject* NodeOf(QFObjectPatternMgr* manager) const override { return manager; }
  QFObjectPatternMgr* ManagerOf(QFObject* node) const override { return static_cast<QFObjectPatternMgr*>(node); }
  QFObjectPatternMgr* Create(QFObject* base) const override { return new QFObjectPatternMgr(base); }
  void NoteLoadedFor(QFObjectPatternMgr* manager, QFObject* node) const override { manager->NoteLoadedFor(node); }
  int Rebuild(QFObjectPatternMgr* manager) const override { return manager->Rebuild(); }
  int CopyParameters(QFObjectPatternMgr* manager, QFObjectPatternMgr* source) const override {
    return manager->CopyParameters(source);
  }
  QFObject* GetBaseObjectToPattern(QFObjectPatternMgr* manager) const override {
    return manager->GetBaseObjectToPattern();
  }
  int GetPatternActive(QFObjectPatternMgr* manager) const override { return manager->GetPatternActive(); }
  int GetNumActiveInstances(QFObjectPatternMgr* manager) const override { return manager->GetNumActiveInstances(); }
};

namespace {

constinit const PatternManagers g_managers;
[[maybe_unused]] const bool g_set = (SetObjectPatterns(&g_managers), true);

// Depth guard for calls of the base object: in a damaged file two managers can be each other's base.
class BaseDepthGuard {
 public:
  BaseDepthGuard() { ++t_levels; }
  ~BaseDepthGuard() { --t_levels; }
  BaseDepthGuard(const BaseDepthGuard&) = delete;
  BaseDepthGuard& operator=(const BaseDepthGuard&) = delete;

  // The object to ask; null at the limit.
  QFObject* operator()(QFObject* base) const { return t_levels <= kMostLevels ? base : nullptr; }

 private:
  static constexpr int kMostLevels = 64;
  inline static thread_local constinit int t_levels = 0;
};

}  // namespace

QFObjectPatternMgr::QFObjectPatternMgr(QFObject* base) : m_pBaseObject(base) {
  if (base) base->AddToUserObjectsList(this, /*held=*/0);
}

// After a failed load, the base object may be gone already: the run-time class of what is in its place shows that.
QFObjectPatternMgr::~QFObjectPatternMgr() {
  CObject* const base = std::exchange(m_pBaseObject, nullptr);
  if (auto* node = DYNAMIC_DOWNCAST(QFObject, base)) node->RemoveFromUserObjectsList(this);
  delete std::exchange(m_pPattInfo, nullptr);
}

// ---- record

void QFObjectPatternMgr::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(QFObjectPatternMgr));
  const UINT version = ar.GetObjectSchema();
  QFObject::Serialize(ar);
  if (ar.IsLoading()) return LoadRecord(ar, version);
  ar << LONG(m_bPatternActive);
  StoreReferenceOrNull(ar, m_pBaseObject);
  StoreReferenceOrNull(ar, m_pPattInfo);
  ar << m_PatternNodeDesc;
}

void QFObjectPatternMgr::LoadRecord(CArchive& ar, unsigned version) {
  LONG active = 0;
  ar >> active >> m_pBaseObject;
  m_bPatternActive = int(active);
  if (!m_pBaseObject) LogSerializationError(kReferenceLost);
  if (m_pLoadedFor) NoteLoadedFor(m_pLoadedFor);
  QFPatternInfo* info = nullptr;
  ar >> info;
  if (!info) LogSerializationError(kReferenceLost);
  if (info != m_pPattInfo) {
    if (info && std::exchange(info->m_bLoadedByManager, true))
      AfxThrowArchiveException(CArchiveException::badIndex, ar.m_strFileName);  // two owners
    delete std::exchange(m_pPattInfo, info);
    m_ActiveInstances.reset();
  }
  if (version > 1) ar >> m_PatternNodeDesc;
}

// The base object of a node's manager is that node: a pointer to any other would not learn that the other goes. The
// node may have this manager before it has its base object.
void QFObjectPatternMgr::NoteLoadedFor(QFObject* node) {
  m_pLoadedFor = node;
  if (m_pBaseObject == node) return;
  if (std::exchange(m_pBaseObject, nullptr)) LogSerializationError(kReferenceLost);
}

// ---- as the base object

QFObjState QFObjectPatternMgr::GetState() {
  const BaseDepthGuard step;
  QFObject* const base = step(m_pBaseObject);
  return base ? base->GetState() : QFObject::GetState();
}

void QFObjectPatternMgr::SetState(QFObjState state) {
  const BaseDepthGuard step;
  QFObject::SetState(state);
  if (QFObject* const base = step(m_pBaseObject)) base->SetState(state);
}

int QFObjectPatternMgr::CanSuppress() const {
  const BaseDepthGuard step;
  const QFObject* const base = step(m_pBaseObject);
  return base ? base->CanSuppress() : QFObject::CanSuppress();
}

int QFObjectPatternMgr::IsLocked() const {
  const BaseDepthGuard step;
  const QFObject* const base = step(m_pBaseObject);
  return base ? base->IsLocked() : QFObject::IsLocked();
}

int QFObjectPatternMgr::IsDragOverValid(QFObject* object, unsigned long flags) {
  const BaseDepthGuard step;
  QFObject* const base = step(m_pBaseObject);
  return base && object != base ? base->IsDragOverValid(object, flags) : 0;
}

int QFObjectPatternMgr::DoPaste(QFObject* object, QFObject* target, unsigned long flags) {
  const BaseDepthGuard step;
  QFObject* const base = step(m_pBaseObject);
  return base && object != base ? base->DoPaste(object, target, flags) : 0;
}

int QFObjectPatternMgr::GetRefPointForPattern(FRPosition& position) {
  const BaseDepthGuard step;
  QFObject* const base = step(m_pBaseObject);
  return base ? base->GetRefPointForPattern(position) : 0;
}

// A base object that neither owns this manager nor has it among its users is going, or would go without a call.
int QFObjectPatternMgr::RemoveFromUserObjectsList(QFObject* object) {
  if (object && object == m_pBaseObject && object->GetPatternMgr() != this && !object->GetIsUsingThisObject(this))
    m_pBaseObject = nullptr;
  return QFObject::RemoveFromUserObjectsList(object);
}

// ---- the pattern

void QFObjectPatternMgr::TakeReferencePoint() {
  FRPosition position;
  m_pBaseObject->GetRefPointForPattern(position);
  m_pPattInfo->SetRefPosOfObject(position);
}

int QFObjectPatternMgr::Rebuild() {
  if (!m_pPattInfo || !m_pBaseObject) return 0;
  TakeReferencePoint();
  const int result = m_pPattInfo->Rebuild();
  m_ActiveInstances.reset();
  return result;
}

int QFObjectPatternMgr::CopyParameters(QFObjectPatternMgr* source) {
  if (!source || !source->m_pPattInfo) return 0;
  SetPatternInfo(source->m_pPattInfo->Clone(), /*deleteOld=*/1);
  m_bPatternActive = source->m_bPatternActive;
  return 1;
}

QFObject* QFObjectPatternMgr::GetInnermostBaseObjectToPattern() const {
  const auto next = [](QFObject* object) {
    auto* manager = DYNAMIC_DOWNCAST(QFObjectPatternMgr, object);
    return manager ? manager->m_pBaseObject : object;
  };
  // The second walk takes two steps for one of the first, so in a cycle they meet.
  QFObject* slow = m_pBaseObject;
  for (QFObject* fast = next(slow); slow && slow->IsKindOf(RUNTIME_CLASS(QFObjectPatternMgr)); slow = next(slow)) {
    if (fast == slow) return nullptr;
    fast = next(next(fast));
  }
  return slow;
}

QFeObjectPatternType QFObjectPatternMgr::GetPatternType() const {
  return m_pPattInfo ? m_pPattInfo->GetPatternType() : eObjectPatternNone;
}

void QFObjectPatternMgr::SetPatternInfo(QFPatternInfo* info, int deleteOld) {
  if (info == m_pPattInfo) return;
  if (deleteOld) delete m_pPattInfo;
  m_pPattInfo = info;
  m_ActiveInstances.reset();
  if (m_pPattInfo && m_pBaseObject) TakeReferencePoint();
}

int QFObjectPatternMgr::GetNumActiveInstances() const {
  return m_pPattInfo ? int(m_pPattInfo->GetNumActivePatternInstances()) : 0;
}

int QFObjectPatternMgr::GetTransfForActiveInstance(int n, FRTransf& transform, int& index) {
  if (n < 0 || !m_pPattInfo) return 0;
  if (!m_ActiveInstances) m_ActiveInstances = std::make_unique<ActiveInstances>();
  const LONGLONG instance = m_ActiveInstances->Find(*m_pPattInfo, m_pPattInfo->GetNumPatternInstances(), n);
  m_pPattInfo->GetTransfForInst(instance, transform);
  index = int(instance);
  return 1;
}

int QFObjectPatternMgr::IsOptimListsEmpty() const { return !m_pPattInfo || m_pPattInfo->IsOptimListsEmpty(); }

void ActiveInstances::Restart(ULONGLONG changes, LONGLONG total) {
  m_before.assign(1, 0);
  m_lastActive = m_lastInstance = 0;
  m_changes = changes;
  m_total = total;
}

LONGLONG ActiveInstances::Find(QFPatternInfo& info, LONGLONG total, LONGLONG n) {
  const ULONGLONG changes = info.GetInstanceChanges();
  if (changes == 0 || changes != m_changes || total != m_total) Restart(changes, total);
  const auto block = std::upper_bound(m_before.begin(), m_before.end(), n) - m_before.begin() - 1;
  LONGLONG instance = block * kBlock;
  LONGLONG active = m_before[std::size_t(block)];
  if (m_lastActive <= n && m_lastInstance > instance) {
    instance = m_lastInstance;
    active = m_lastActive;
  }
  for (; instance < total; ++instance) {
    if (instance == kBlock * LONGLONG(m_before.size()) && changes != 0) m_before.push_back(active);
    if (info.GetInstanceStatus(instance) != ePatternInstanceActive) continue;
    if (active == n) break;
    ++active;
  }
  if (instance < total) {
    m_lastActive = n;
    m_lastInstance = instance;
  }
  return instance;
}

// ---- dump

void QFObjectPatternMgr::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFObjectPatternMgr"), _T("Start"));
  DumpFlag(file, _T("m_bPatternActive"), m_bPatternActive != 0);
  DumpPrint(file, _T("\n <---- m_pPattInfo Start ---->"));
  if (m_pPattInfo) m_pPattInfo->DumpData(file);
  DumpPrint(file, _T("\n <---- m_pPattInfo End ---->"));
  DumpBanner(file, _T("QFObjectPatternMgr"), _T("End"));
}
