// The callbacks of the command line, and its start and stop.
#include "host/main_module.h"

#include <memory>

#include "share/env/app_env.h"
#include "share/env/document_callbacks.h"
#include "share/env/registry_keys.h"
#include "share/settings/settings_key.h"

namespace {

std::unique_ptr<QFSettingsKey> g_settings;

// The application settings that exist so far, as they stand in the registry.
std::unique_ptr<QFSettingsKey> ReadSettings() {
  auto settings = std::make_unique<QFSettingsKey>(_T("Kestrova"), kVersionKey);
  settings->AddValue(_T("SimulationMachinePath"), CString());
  settings->RestoreValuesFromRegistry();  // what isn't there stays empty
  return settings;
}

unsigned long NextObjectId() {
  static unsigned long last = 0;
  return ++last;
}

CString ProductText(unsigned id) {
  CString text;
  text.LoadString(id);
  return text;
}

void RegisterCallbacks() {
  // No document, no post processors.
  qfshare_init([]() -> QFObjectIndexerHelper* { return nullptr; }, []() -> QFObject* { return nullptr; },
               []() -> QFObject* { return nullptr; }, []() -> QFObject* { return nullptr; });
  QFShareRegisterDocCBK(/*isMetricUnit=*/[] { return 1; },
                        /*nextObjectId=*/NextObjectId,
                        /*activeDocument=*/[]() -> QFObject* { return nullptr; },
                        /*message=*/[](unsigned, char*&) { return 0; },
                        /*progress=*/[](LONGLONG) { return 0; },
                        /*isUserJobCancelled=*/[] { return 0; },
                        /*docSettings=*/[]() -> QFSettingsKey* { return nullptr; },
                        /*appSettings=*/[] { return g_settings.get(); },
                        /*appFeedColorSettings=*/[]() -> QFFeedColorsSettings* { return nullptr; },
                        /*productInfo=*/[]() -> ProductInfo* { return nullptr; },
                        /*productSpecificString=*/ProductText,
                        /*displayAlerts=*/[](short* flag) { *flag = 0; },
                        /*isCrashReportPermitted=*/[] { return 0; },
                        /*stockGroupName=*/[] { return CString(); },
                        /*correspondingDoc=*/[](QFObject*) -> QFObject* { return nullptr; },
                        /*solidWorksLangName=*/[] { return CString(_T("english")); },
                        /*appSilentModeFlag=*/[] { return 1; },
                        /*isDocFullyLoaded=*/[] { return 0; });
}

}  // namespace

namespace kestrova {

void StartMainModule() {
  if (g_settings) return;
  InitShareDll();
  RegisterCallbacks();
  g_settings = ReadSettings();  // ahead of the environment, whose start may look into it
  InitAppEnv();
}

MainModuleScope::~MainModuleScope() {
  if (g_settings) CloseAppEnv();
  g_settings.reset();
}

}  // namespace kestrova
