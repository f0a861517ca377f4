// The node's pattern, and drag and paste of pattern managers, through ObjectPatterns.
#include <utility>

#include "share/objects/internal/owner_depth_guard.h"
#include "share/objects/object.h"
#include "share/objects/object_patterns.h"

namespace {

constinit const ObjectPatterns* g_patterns = nullptr;

// The base object of a pattern manager; null for any other object.
QFObject* BaseOfPattern(QFObject* object) {
  const ObjectPatterns* patterns = GetObjectPatterns();
  if (!patterns || !object || !object->IsKindOf(patterns->RuntimeClass())) return nullptr;
  return patterns->GetBaseObjectToPattern(patterns->ManagerOf(object));
}

}  // namespace

void SetObjectPatterns(const ObjectPatterns* patterns) { g_patterns = patterns; }
const ObjectPatterns* GetObjectPatterns() { return g_patterns; }

// ---- pattern

int QFObject::CreatePattern() {
  if (!GetIsPatternSupported()) return 0;
  if (m_pPatternMngr) return 1;
  const ObjectPatterns* patterns = GetObjectPatterns();
  if (!patterns) return 0;
  m_pPatternMngr = patterns->Create(this);
  if (!m_pPatternMngr) return 0;
  patterns->NodeOf(m_pPatternMngr)->SetOwner(this);
  return 1;
}

int QFObject::DestroyPattern() {
  if (m_pPatternMngr) delete GetObjectPatterns()->NodeOf(std::exchange(m_pPatternMngr, nullptr));
  return 1;
}

int QFObject::SetPatternMgr(QFObjectPatternMgr* source) {
  if (!source) return DestroyPattern();
  CreatePattern();
  if (!m_pPatternMngr) return 0;
  if (m_pPatternMngr != source) GetObjectPatterns()->CopyParameters(m_pPatternMngr, source);
  return 1;
}

int QFObject::CopyParameters(QFObject* source) {
  if (!source) return 0;
  m_iState = source->m_iState;
  m_NodeStatus = source->m_NodeStatus;
  m_DisplayColor = source->m_DisplayColor;
  m_CompareRes = source->m_CompareRes;
  m_RegName = source->m_RegName;
  if (source->m_pPatternMngr && CreatePattern() && source != this)
    GetObjectPatterns()->CopyParameters(m_pPatternMngr, source->m_pPatternMngr);
  return 1;
}

QFObjectPatternMgr* QFObject::GetPatternMgr() { return m_pPatternMngr; }

int QFObject::RebuildPattern() { return m_pPatternMngr ? GetObjectPatterns()->Rebuild(m_pPatternMngr) : 1; }

int QFObject::GetNumPattInstances(int activeOnly) {
  if (!m_pPatternMngr) return 1;
  const ObjectPatterns& patterns = *GetObjectPatterns();
  if (!activeOnly) return patterns.NodeOf(m_pPatternMngr)->GetNumPattInstances(1);
  return patterns.GetPatternActive(m_pPatternMngr) ? patterns.GetNumActiveInstances(m_pPatternMngr) : 1;
}

int QFObject::GetIsPatternSupported() { return 0; }

int QFObject::GetRefPointForPattern(FRPosition&) { return 0; }

int QFObject::GetIsPatternObject() { return 0; }

QFDirectionRestriction* QFObject::GetPatternDirectionRestriction() {
  const OwnerDepthGuard step;
  return m_pOwner && step ? m_pOwner->GetPatternDirectionRestriction() : nullptr;
}

QFDirectionRestriction* QFObject::GetLinearPatternDirectionRestriction() {
  const OwnerDepthGuard step;
  return m_pOwner && step ? m_pOwner->GetLinearPatternDirectionRestriction() : nullptr;
}

int QFObject::GetPatternRestriction(int, QFeObjectPatternType& type) {
  type = eObjectPatternNone;
  return 0;
}

// ---- drag and paste

int QFObject::IsDragOverValid(QFObject* object, unsigned long flags) {
  QFObject* base = BaseOfPattern(object);
  const OwnerDepthGuard step;  // two managers can be each other's base
  return base && base != this && step ? IsDragOverValid(base, flags) : 0;
}

int QFObject::DoPaste(QFObject* object, QFObject* target, unsigned long flags) {
  QFObject* base = BaseOfPattern(object);
  const OwnerDepthGuard step;
  return base && base != this && step ? DoPaste(base, target, flags) : 0;
}
