// QFSerializeNotify, the list of objects that finish their work after the whole document is loaded.
//
// A class registers its object in Serialize and overrides QFBaseObject::OnPostLoadFromStorageNotify. The host calls
// PostLoadFromStorageNotify after the last object, then Clear. An object that the archive deletes after a
// failed load (CArchive::ReadObject) leaves the list.
//
// The list owns no object. Remove an object from it before you delete the object, or call Clear. Only the loading
// thread may use the list; it has no lock.
#pragma once

#include "framework/ob_list.h"
#include "share/core/base_object.h"

class GoneObjects;

class KVSHARE_API QFSerializeNotify {
 public:
  // The process's list; created by the first call.
  static QFSerializeNotify* Instance();
  // Appends the object: 1. An object that is registered twice is called twice. 0 for null.
  static int RegisterForNotification(QFBaseObject* object);
  // Removes the object's last registration. 1, also if it was not registered; 0 for null.
  static int RemoveFromNotification(QFBaseObject* object);
  // Calls OnPostLoadFromStorageNotify of each object in order of registration; the objects stay in the list. A called
  // object may remove objects, itself included, and may call Clear. Does nothing without a list.
  static void PostLoadFromStorageNotify();
  // Removes all registrations of deleted objects; for the clean-up of a failed load.
  static void Forget(const GoneObjects& gone) noexcept;
  // Deletes the list, not the objects. The next call creates a new list.
  static void Clear();

  QFSerializeNotify(const QFSerializeNotify&) = delete;
  QFSerializeNotify& operator=(const QFSerializeNotify&) = delete;

 protected:
  QFSerializeNotify() = default;
  ~QFSerializeNotify() = default;

  int iRegisterForNotification(QFBaseObject* object);
  int iRemoveFromNotification(QFBaseObject* object);
  void iPostLoadFromStorageNotify();

  static QFSerializeNotify* m_pInstance;

 private:
  void Remove(POSITION position);

  CObList m_Objects{10};
  POSITION m_pNext = nullptr;  // the next object during PostLoadFromStorageNotify
};
