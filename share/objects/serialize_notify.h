// QFSerializeNotify, the list of objects that finish their work once a whole document is in.
//
// A class registers itself in its Serialize and overrides QFBaseObject::OnPostLoadFromStorageNotify; the host calls
// PostLoadFromStorageNotify after the last object, then Clear. An object that dies in between has to be removed, or
// the list cleared: the list owns none and can't know. Used by the thread that loads; no lock.
#pragma once

#include "framework/ob_list.h"
#include "share/core/base_object.h"

class KVSHARE_API QFSerializeNotify {
 public:
  // The one list; built on the first request.
  static QFSerializeNotify* Instance();
  // Appends; an object that registers twice is told twice. 0 for null, else 1.
  static int RegisterForNotification(QFBaseObject* object);
  // Removes the object's last registration. 0 for null, else 1, also if there was none.
  static int RemoveFromNotification(QFBaseObject* object);
  // Calls OnPostLoadFromStorageNotify on each object in order of registration; they stay in the list. An object may
  // remove any other meanwhile. Does nothing without a list.
  static void PostLoadFromStorageNotify();
  // Deletes the list and touches no object. The next request builds a new one.
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
  CObList m_Objects{10};
  POSITION m_pNext = nullptr;  // whose turn is next while the objects are told
};
