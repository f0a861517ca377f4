// The interface through which the environment's start loads the context table of the help system, which is in a higher
// room.
#pragma once

#include "framework/text.h"

class HelpContexts {
 public:
  // Reads the context table in the help folder, which ends in a backslash. A file that can't be read leaves the table
  // empty.
  virtual void Load(const CString& helpFolder) = 0;

 protected:
  ~HelpContexts() = default;
};

// Registers the help system, before InitAppEnv; InitShareDll does it. Without one no table is loaded. The caller keeps
// the object, which must exist until the process ends. Null removes it.
KVSHARE_API void SetHelpContexts(HelpContexts* contexts);
