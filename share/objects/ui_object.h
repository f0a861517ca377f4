// ui_QFObject, the user-interface companion of a node, which a module's tree shows and edits. The node builds it on
// demand (QFObject::GetUiObject), owns it, and uses it on its own thread. It is never stored.
#pragma once

#include "framework/object.h"

class QFObject;

class KVSHARE_API ui_QFObject : public CObject {
  DECLARE_DYNAMIC(ui_QFObject)

 public:
  // The companion does not own the node, which must outlive it.
  explicit ui_QFObject(QFObject* object) : m_pObject(object) {}

  QFObject* GetObject() const { return m_pObject; }

  // Stores and loads nothing.
  void Serialize(CArchive& ar) override;

  // The virtual operations of every companion, in this order (kept for existing modules).

  // Sets the name from which a new label starts. The default leaves it unchanged.
  virtual void BaseName(CString& name) const;
  // Called when the node's mark for a change of stock is cleared. The default does nothing.
  virtual void ResetFlagForStockChange();

 protected:
  QFObject* m_pObject;
};
