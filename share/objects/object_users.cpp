// The objects that use a node: the two lists, and the original owner, in whose list a recycled node stands.
#include <new>

#include "framework/ob_list.h"
#include "share/objects/object.h"

int QFObject::AddToUserObjectsList(QFObject* object, int held) {
  if (!object) return 0;
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
  if (m_pOriginalOwner == object) m_pOriginalOwner = nullptr;
  const bool stored = m_UserObjects.Remove(object);
  const bool held = m_HeldUserObjects.Remove(object);
  return stored || held;
}

int QFObject::GetIsUsingThisObject(QFObject* object) {
  return object && (object == m_pOriginalOwner || m_UserObjects.Contains(object) || m_HeldUserObjects.Contains(object));
}

void QFObject::GetAllUserObjects(CObList* objects) const {
  if (objects) m_UserObjects.ForEach([&](CObject* object) { objects->AddTail(object); });
}

void QFObject::DetachFromAllUserObjects() {
  for (UserObjects* list : {&m_UserObjects, &m_HeldUserObjects}) {
    while (!list->IsEmpty()) {
      if (auto* user = DYNAMIC_DOWNCAST(QFObject, list->RemoveHead())) user->RemoveFromUserObjectsList(this);
    }
  }
}

void QFObject::RemoveDuplicatesFromUserObjects() {
  try {
    m_UserObjects.RemoveDuplicates();
  } catch (const std::bad_alloc&) {
    // What was done so far stands; duplicates do no harm.
  }
}

void QFObject::SetOriginalOwner(QFObject* owner) {
  if (m_pOriginalOwner) m_pOriginalOwner->RemoveFromUserObjectsList(this);
  m_pOriginalOwner = owner;
  if (owner) owner->AddToUserObjectsList(this, /*held=*/0);
}
