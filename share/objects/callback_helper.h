// QFCallbackHelper, the slot for a module's function that builds the user-interface companions of one family of nodes.
// Each family has one helper, which lives as long as the process. The module sets the function at start;
// QFObject::GetUiObject calls it on the node's thread.
#pragma once

#include "platform/types.h"

class QFObject;
class ui_QFObject;

class KVSHARE_API QFCallbackHelper {
 public:
  // Returns a new companion, which the node then owns; null for a node without one.
  using UiObjCreateFn = ui_QFObject* (*)(QFObject* object);

  // Null until it is set: nodes of the family have no companion.
  UiObjCreateFn GetCBUiObjCreate() const { return m_pfnUiObjCreate; }
  void SetCBUiObjCreate(UiObjCreateFn create) { m_pfnUiObjCreate = create; }

 private:
  UiObjCreateFn m_pfnUiObjCreate = nullptr;
};
