// The objects that use a node: the stored list, the list of held users, and the original owner, which has a recycled
// node in its stored list.
//
// Jobs remove their records on their own threads. Records are in the list of held users, so code that uses that list
// takes the job lock. Only the node's thread uses the stored list.
#include <new>

#include "framework/ob_list.h"
#include "share/objects/job_lock.h"
#include "share/objects/object.h"

int QFObject::AddToUserObjectsList(QFObject* object, int held) {
  if (!object) return 0;
  const UsersLock lock;
  UserObjects& list = held ? m_HeldUserObjects : m_UserObjects;
  UserObjects& other = held ? m_UserObjects : m_HeldUserObjects;
  other.Remove(object);
  if (list.Contains(object)) return 1;
  try {
    list.Append(object);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 1;
}

int QFObject::RemoveFromUserObjectsList(QFObject* object) {
  const UsersLock lock;
  if (m_pOriginalOwner == object) m_pOriginalOwner = nullptr;
  const bool stored = m_UserObjects.Remove(object);
  const bool held = m_HeldUserObjects.Remove(object);
  return stored || held;
}

int QFObject::GetIsUsingThisObject(QFObject* object) {
  const UsersLock lock;
  return object && (object == m_pOriginalOwner || m_UserObjects.Contains(object) || m_HeldUserObjects.Contains(object));
}

void QFObject::GetAllUserObjects(CObList* objects) const {
  if (objects) m_UserObjects.ForEach([&](CObject* object) { objects->AddTail(object); });
}

void QFObject::DetachFromAllUserObjects() {
  for (UserObjects* list : {&m_UserObjects, &m_HeldUserObjects}) {
    for (;;) {
      bool held = false;
      QFObject* user = RemoveFirstUser(*list, held);
      if (!user) break;
      user->RemoveFromUserObjectsList(this);
      if (held) GetJobRecordHolder()->Release(user);
    }
  }
}

// Removes the elements up to the first node and returns that node; null for a list without nodes. Sets held for a job
// record, which then stays alive until it is released.
QFObject* QFObject::RemoveFirstUser(UserObjects& list, bool& held) {
  const UsersLock lock;
  while (!list.IsEmpty()) {
    auto* user = DYNAMIC_DOWNCAST(QFObject, list.RemoveHead());
    if (!user) continue;
    held = AreThereJobRecords() && GetJobRecordHolder()->IsRecord(user);
    if (held) GetJobRecordHolder()->Hold(user);
    return user;
  }
  return nullptr;
}

void QFObject::ForgetJobRecord(const QFObject* record) {
  if (!m_HeldUserObjects.Remove(record)) m_UserObjects.Remove(record);
}

void QFObject::RemoveDuplicatesFromUserObjects() {
  try {
    m_UserObjects.RemoveDuplicates();
  } catch (const std::bad_alloc&) {
    // The remaining duplicates do no harm.
  }
}

void QFObject::SetOriginalOwner(QFObject* owner) {
  if (m_pOriginalOwner) m_pOriginalOwner->RemoveFromUserObjectsList(this);
  m_pOriginalOwner = owner;
  if (owner) owner->AddToUserObjectsList(this, /*held=*/0);
}
