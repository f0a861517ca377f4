// The callbacks of the command line, and its start and stop.
#include "host/main_module.h"

#include <memory>
#include <utility>

#include "host/document/host_document.h"
#include "host/progress_bar.h"
#include "share/env/app_env.h"
#include "share/env/document_callbacks.h"
#include "share/env/document_messages.h"
#include "share/env/registry_keys.h"
#include "share/settings/settings_key.h"

namespace {

using kestrova::HostDocument;

std::unique_ptr<QFSettingsKey> g_settings;
HostDocument* g_document = nullptr;  // the active one
bool g_registered = false;

// The application settings that exist so far, as they stand in the registry.
std::unique_ptr<QFSettingsKey> ReadSettings() {
  auto settings = std::make_unique<QFSettingsKey>(_T("Kestrova"), kVersionKey);
  settings->AddValue(_T("SimulationMachinePath"), CString());
  settings->RestoreValuesFromRegistry();  // what isn't there stays empty
  return settings;
}

unsigned long NextObjectId() { return g_document ? g_document->DrawId() : 0; }

CString ProductText(unsigned id) {
  CString text;
  text.LoadString(id);
  return text;
}

void RegisterCallbacks() {
  // No post processors.
  qfshare_init([] { return g_document ? &g_document->Indexer() : nullptr; }, []() -> QFObject* { return nullptr; },
               []() -> QFObject* { return nullptr; }, []() -> QFObject* { return nullptr; });
  QFShareRegisterDocCBK(/*isMetricUnit=*/[] { return g_document ? IsUnitsMetric(g_document->Units().code) : 1; },
                        /*nextObjectId=*/NextObjectId,
                        /*activeDocument=*/[]() -> QFObject* { return g_document; },
                        /*message=*/[](unsigned, char*&) { return 0; },
                        /*progress=*/kestrova::ProgressBar::Step,
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
                        /*isDocFullyLoaded=*/[] { return g_document ? g_document->IsFullyLoaded() : 0; });
}

}  // namespace

namespace kestrova {

void UseLibrary() {
  if (std::exchange(g_registered, true)) return;
  InitShareDll();
  RegisterCallbacks();
}

void StartMainModule() {
  if (g_settings) return;
  UseLibrary();
  g_settings = ReadSettings();  // ahead of the environment, whose start may look into it
  InitAppEnv();
}

MainModuleScope::~MainModuleScope() {
  if (g_settings) CloseAppEnv();
  g_settings.reset();
}

ActiveDocument::ActiveDocument(HostDocument* document) : before_(std::exchange(g_document, document)) {}

ActiveDocument::~ActiveDocument() { g_document = before_; }

}  // namespace kestrova
