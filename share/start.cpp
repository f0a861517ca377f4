// The start of the library, the first call of a main module: connects the rooms that don't know one another.
#include "share/diagnostics/outcome.h"
#include "share/env/app_env.h"
#include "share/interface/help_system.h"

namespace {

int ShowHelp(int command, unsigned long context, int flags) {
  return QFHelpSystem::Instance()->ShowHelp(QFHelpFileType(command), context, UINT(flags));
}

}  // namespace

void InitShareDll() {
  CKVEnvApp::LinkResources();
  RegisterHelpContexts();
  Outcome::SetShowHelp(ShowHelp);
}
