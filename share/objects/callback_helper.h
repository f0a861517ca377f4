// QFCallbackHelper, the place where a module leaves the function that builds the user-interface companions of one
// family of nodes. Each family has one, for the life of the process; the function is set at start and called by
// QFObject::GetUiObject.
#pragma once

#include "platform/types.h"

class QFObject;
class ui_QFObject;

class KVSHARE_API QFCallbackHelper {
 public:
  // Gives a new companion for the node, which will own it; null if the node has none.
  using UiObjCreateFn = ui_QFObject* (*)(QFObject* object);

  // Null until set: nodes of the family then have no companion.
  UiObjCreateFn GetCBUiObjCreate() const { return m_pfnUiObjCreate; }
  void SetCBUiObjCreate(UiObjCreateFn create) { m_pfnUiObjCreate = create; }

 private:
  UiObjCreateFn m_pfnUiObjCreate = nullptr;
};
