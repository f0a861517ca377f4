// The list of objects that wait for the end of a load.
#include "share/objects/serialize_notify.h"

#include <utility>

#include "framework/neutral_objects.h"

QFSerializeNotify* QFSerializeNotify::m_pInstance = nullptr;

QFSerializeNotify* QFSerializeNotify::Instance() {
  if (!m_pInstance) m_pInstance = new QFSerializeNotify;
  return m_pInstance;
}

int QFSerializeNotify::RegisterForNotification(QFBaseObject* object) {
  return Instance()->iRegisterForNotification(object);
}

int QFSerializeNotify::RemoveFromNotification(QFBaseObject* object) {
  return Instance()->iRemoveFromNotification(object);
}

void QFSerializeNotify::PostLoadFromStorageNotify() {
  if (m_pInstance) m_pInstance->iPostLoadFromStorageNotify();
}

void QFSerializeNotify::Forget(const GoneObjects& gone) noexcept {
  if (!m_pInstance) return;
  CObList& objects = m_pInstance->m_Objects;
  for (POSITION at = objects.GetHeadPosition(); at;) {
    const POSITION found = at;
    if (gone.Contains(objects.GetNext(at))) m_pInstance->Remove(found);
  }
}

void QFSerializeNotify::Clear() { delete std::exchange(m_pInstance, nullptr); }

int QFSerializeNotify::iRegisterForNotification(QFBaseObject* object) {
  if (!object) return 0;
  m_Objects.AddTail(object);
  return 1;
}

int QFSerializeNotify::iRemoveFromNotification(QFBaseObject* object) {
  if (!object) return 0;
  for (POSITION at = m_Objects.GetTailPosition(); at;) {
    const POSITION found = at;
    if (m_Objects.GetPrev(at) != object) continue;
    Remove(found);
    break;
  }
  return 1;
}

void QFSerializeNotify::Remove(POSITION position) {
  if (position == m_pNext) m_Objects.GetNext(m_pNext);
  m_Objects.RemoveAt(position);
}

void QFSerializeNotify::iPostLoadFromStorageNotify() {
  m_pNext = m_Objects.GetHeadPosition();
  while (m_pNext) {
    static_cast<QFBaseObject*>(m_Objects.GetNext(m_pNext))->OnPostLoadFromStorageNotify();
    if (m_pInstance != this) return;  // the object called Clear
  }
}
