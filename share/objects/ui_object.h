// ui_QFObject, the user-interface companion of a node: what a module's tree shows and edits. The node builds it on
// demand (QFObject::GetUiObject) and owns it. It is never stored.
#pragma once

#include "framework/object.h"

class QFObject;

class KVSHARE_API ui_QFObject : public CObject {
  DECLARE_DYNAMIC(ui_QFObject)

 public:
  // The node outlives its companion and is not owned.
  explicit ui_QFObject(QFObject* object) : m_pObject(object) {}

  QFObject* GetObject() const { return m_pObject; }

  // Writes and reads nothing.
  void Serialize(CArchive& ar) override;

  // The slots of every companion, in this order.

  // Gives the name that a new label starts from; leaves the text alone here.
  virtual void BaseName(CString& name) const;
  // Called when a change of stock no longer matters to the node; nothing here.
  virtual void ResetFlagForStockChange();

 protected:
  QFObject* m_pObject;
};
