// The start of a main module: registers all callbacks, starts the environment and asks it for the installation.
#include <kvshare/kvshare.h>

#include <cstdio>
#include <memory>

namespace {

std::unique_ptr<QFAppSettings> g_settings;

// begin callbacks
void RegisterCallbacks() {
  qfshare_init(/*autoIdHelper=*/nullptr, /*ppmHelper=*/nullptr, /*basePpmHelper=*/nullptr, /*corePpmHelper=*/nullptr);
  QFShareRegisterDocCBK(
      /*isMetricUnit=*/[] { return 1; },
      /*nextObjectId=*/nullptr,
      /*activeDocument=*/nullptr,
      /*message=*/nullptr,
      /*progress=*/nullptr,
      /*isUserJobCancelled=*/nullptr,
      /*docSettings=*/nullptr,
      /*appSettings=*/[]() -> QFSettingsKey* { return g_settings.get(); },
      /*appFeedColorSettings=*/nullptr,
      /*productInfo=*/nullptr,
      /*productSpecificString=*/nullptr,
      /*displayAlerts=*/[](short* flag) { *flag = 0; },  // a program without a user shows no boxes
      /*isCrashReportPermitted=*/nullptr,
      /*stockGroupName=*/nullptr,
      /*correspondingDoc=*/nullptr,
      /*solidWorksLangName=*/[] { return CString(_T("english")); },
      /*appSilentModeFlag=*/[] { return 1; },
      /*isDocFullyLoaded=*/nullptr);
}
// end callbacks

}  // namespace

// begin main
int main() {
  InitShareDll();
  RegisterCallbacks();
  g_settings = std::make_unique<QFAppSettings>();  // before InitAppEnv, which reads and completes them
  g_settings->RestoreValuesFromRegistry();
  CKVEnvApp* environment = InitAppEnv();
  if (!environment) return 1;

  int lines = 0;
  g_settings->GetValue(_T("LineWidth"), lines);
  std::printf("module %s\n", ToUtf8(environment->GetKVModuleName()).c_str());
  std::printf("release %s %s\n", ToUtf8(GetKVVersion()).c_str(), ToUtf8(GetKVServicePack()).c_str());
  std::printf("lines are %d wide\n", lines);

  CloseAppEnv();  // the environment before the settings that it uses
  g_settings.reset();
}
// end main
