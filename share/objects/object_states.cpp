// The node's state, status word and colour, and the common state of the nodes of a list.
#include "framework/ob_list.h"
#include "share/objects/internal/owner_depth_guard.h"
#include "share/objects/object.h"

// ---- state

QFObjState QFObject::GetState() { return m_iState; }

void QFObject::SetState(QFObjState state) {
  if (state >= ACTIVE && state <= LOCKED) m_iState = state;
}

int QFObject::IsEditable() const { return 1; }

int QFObject::IsSuppressed1() const {
  if (m_iState == SUPPRESSED || !IsEditable()) return 1;
  const OwnerDepthGuard step;
  return m_pOwner && step && m_pOwner->IsSuppressed1() != 0;
}

int QFObject::CanSuppress() const { return !m_pOwner || !m_pOwner->IsSuppressed1(); }

int QFObject::IsLocked() const { return m_iState == LOCKED; }

int QFObject::IsLockedCheckOnly() const { return m_iState == LOCKED; }

int QFObject::CanLock() const { return !m_pOwner || !m_pOwner->IsLocked(); }

int QFObject::LockThis() {
  SetState(LOCKED);
  return 1;
}

int QFObject::UnLockThis() {
  SetState(ACTIVE);
  return 1;
}

int QFObject::CanEditLabel() const { return IsEditable() && !IsLocked(); }

int QFObject::CanHide() const { return 1; }

int QFObject::CanHideDisplay() { return 0; }

int QFObject::Recycle() {
  SetOriginalOwner(m_pOwner);
  SetState(DELETED);
  return 1;
}

int QFObject::Restore() {
  SetOriginalOwner(nullptr);
  SetState(ACTIVE);
  return 1;
}

int QFObject::IsRecycled() { return GetState() == DELETED; }

// ---- status word and colour

int QFObject::GetNodeStatus(unsigned short bits) const { return m_NodeStatus & bits; }

void QFObject::SetNodeStatus(unsigned short bits, int on) {
  m_NodeStatus = WORD(on ? m_NodeStatus | bits : m_NodeStatus & WORD(!bits));  // logical not: kept for existing modules
}

int QFObject::SetDisplayColor(unsigned long color) {
  m_DisplayColor = DWORD(color);
  return 1;
}

unsigned long QFObject::GetDisplayColor() const { return m_DisplayColor; }

// ---- children

namespace {

constexpr unsigned short kDisplayBit = 2;

// The values of all three enumerations.
enum { kMixed, kAll, kNoneOfThem, kNoChildren };

template <class Value>
int StateOf(CObList* children, Value value) {
  if (!children || children->IsEmpty()) return kNoChildren;
  auto* head = DYNAMIC_DOWNCAST(QFObject, children->GetHead());
  const int reference = head ? value(*head) : 0;
  for (POSITION at = children->GetHeadPosition(); at;) {
    auto* child = DYNAMIC_DOWNCAST(QFObject, children->GetNext(at));
    if (!child) break;
    if (value(*child) != reference) return kMixed;
  }
  return reference ? kAll : kNoneOfThem;
}

}  // namespace

e_QFSelSetDisplayState QFObject::GetChildrenDisplayState(CObList* children) {
  return e_QFSelSetDisplayState(
      StateOf(children, [](const QFObject& child) { return child.GetNodeStatus(kDisplayBit); }));
}

e_QFSelSetSuppressState QFObject::GetChildrenSuppressedState(CObList* children) {
  return e_QFSelSetSuppressState(StateOf(children, [](const QFObject& child) { return child.IsSuppressed1(); }));
}

e_QFSelSetLockState QFObject::GetChildrenLockedState(CObList* children) {
  return e_QFSelSetLockState(StateOf(children, [](const QFObject& child) { return child.IsLocked(); }));
}
