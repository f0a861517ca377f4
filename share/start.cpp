// The start of the library, the first call of a main module: connects the rooms that don't know one another.
#include "share/diagnostics/outcome.h"
#include "share/env/app_env.h"
#include "share/interface/help_system.h"

namespace {

int ShowHelp(int command, unsigned long context, int flags) {
  return QFHelpSystem::Instance()->ShowHelp(QFHelpFileType(command), context, UINT(flags));
}

}  // namespace

// The one user of the environment's link. A friend function would lose its import on Windows.
class ShareStart {
 public:
  static void LinkResources() { CKVEnvApp::LinkResources(); }
};

void InitShareDll() {
  ShareStart::LinkResources();
  RegisterHelpContexts();
  Outcome::SetShowHelp(ShowHelp);
}
