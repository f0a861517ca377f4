// The start of the library, the first call of a main module: connects the rooms that don't know one another.
#include "share/env/app_env.h"
#include "share/interface/help_system.h"

void InitShareDll() {
  CKVEnvApp::LinkResources();
  RegisterHelpContexts();
}
