// How the environment's start loads the help system's context table; the help system is in a room above this one.
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

// Set before the environment starts; without one no table is loaded. The object stays the caller's and lives to the end
// of the process. Null removes it.
KVSHARE_API void SetHelpContexts(HelpContexts* contexts);
