#include "host/module/main_module.h"

#include <atomic>
#include <memory>
#include <optional>
#include <utility>

#include "host/document/active_document.h"
#include "host/document/host_document.h"
#include "host/shell/progress_bar.h"
#include "platform/registry_files.h"
#include "share/core/document_callbacks.h"
#include "share/core/document_messages.h"
#include "share/core/registry_keys.h"
#include "share/diagnostics/analytics_log.h"
#include "share/diagnostics/exception_handler.h"
#include "share/diagnostics/time_log.h"
#include "share/env/app_env.h"
#include "share/env/product_identity.h"
#include "share/settings/application_settings.h"
#include "share/settings/feed_colors.h"

namespace {

using kestrova::ActiveDocument;
using kestrova::HostDocument;

constexpr int kMostWait_ms = 2000;  // for other writers of the registry, in the whole start

std::unique_ptr<QFAppSettings> g_settings;
// From the start to the end of a command that writes nothing into the registry itself: what the environment saves
// later, when it is asked, waits no longer either.
std::optional<RegistryWaitLimit> g_waiting;
bool g_registered = false;
bool g_messages = true;
std::optional<QFExceptionHandler> g_guard;  // writes what the debug values want
constinit std::atomic<bool> g_cancelled = false;
constexpr auto kNever = std::chrono::steady_clock::time_point::max();
std::chrono::steady_clock::time_point g_cancelAt = kNever;

// Some defaults are texts of the language library, which the start of the environment loads.
void CompleteDefaults(QFAppSettings& settings) {
  constexpr LPCTSTR kNames[] = {_T("AutoSaveDirectory"), _T("ImportExportDirectory"), _T("Language")};
  const QFAppSettings complete;
  QFSettingsKey stored(_T("Application"), kVersionKey);
  CString text;
  for (LPCTSTR name : kNames) {
    complete.GetValue(name, text);
    stored.AddValue(name, text);
  }
  stored.RestoreValuesFromRegistry();
  for (LPCTSTR name : kNames) {
    stored.GetValue(name, text);
    settings.SetValue(name, text);
  }
}

// The library has one callback for three tables (mill, turn, EDM). Most documents are milled.
QFFeedColorsSettings* MillFeedColors() {
  return g_settings ? DYNAMIC_DOWNCAST(QFFeedColorsSettings, g_settings->GetKey(_T("Mill"))) : nullptr;
}

HostDocument* Active() { return ActiveDocument::Get(); }

CString ProductText(unsigned id) {
  CString text;
  text.LoadString(id);
  return text;
}

ProductInfo* Product() {
  static ProductInfo product = {_T("Kestrova"), GetKVVersion(), _T("SolidWorks"), {}, {}, {}};
  return &product;
}

void RegisterCallbacks() {
  // The three null callbacks: this host has no post processors.
  qfshare_init([] { return Active() ? &Active()->Indexer() : nullptr; }, []() -> QFObject* { return nullptr; },
               []() -> QFObject* { return nullptr; }, []() -> QFObject* { return nullptr; });
  QFShareRegisterDocCBK(
      /*isMetricUnit=*/[] { return Active() ? IsUnitsMetric(Active()->Units().code) : 1; },
      /*nextObjectId=*/[]() -> unsigned long { return Active() ? Active()->NewId() : 0; },
      /*activeDocument=*/[]() -> QFObject* { return Active(); },
      /*message=*/[](unsigned, char*&) { return 0; },
      /*progress=*/kestrova::ProgressBar::Step,
      /*isUserJobCancelled=*/
      [] { return int(g_cancelled || (g_cancelAt != kNever && std::chrono::steady_clock::now() >= g_cancelAt)); },
      /*docSettings=*/[]() -> QFSettingsKey* { return Active() ? &Active()->Settings() : nullptr; },
      /*appSettings=*/[]() -> QFSettingsKey* { return g_settings.get(); },
      /*appFeedColorSettings=*/MillFeedColors,
      /*productInfo=*/Product,
      /*productSpecificString=*/ProductText,
      /*displayAlerts=*/[](short* flag) { *flag = g_messages ? -1 : 0; },
      /*isCrashReportPermitted=*/[] { return 1; },  // the debug values decide, which support sets
      /*stockGroupName=*/[] { return CString(); },
      /*correspondingDoc=*/[](QFObject*) -> QFObject* { return nullptr; },
      /*solidWorksLangName=*/[] { return CString(_T("english")); },
      /*appSilentModeFlag=*/[] { return 1; },
      /*isDocFullyLoaded=*/[] { return Active() ? Active()->IsFullyLoaded() : 0; });
}

}  // namespace

namespace kestrova {

void UseLibrary() {
  if (std::exchange(g_registered, true)) return;
  InitShareDll();
  RegisterCallbacks();
}

void StartMainModule(Needs needs) {
  if (g_settings) return;
  UseLibrary();
  std::optional<RegistryWaitLimit> of_start;
  (needs == Needs::kAllStoredValues ? of_start : g_waiting).emplace(kMostWait_ms);
  if (needs != Needs::kNoReport) CheckWholeRegistry();
  g_settings = std::make_unique<QFAppSettings>();  // the start of the environment reads them
  g_settings->RestoreValuesFromRegistry();
  g_guard.emplace(/*writeReport=*/0, /*dumpMiniFile=*/0);
  InitAppEnv();
  CompleteDefaults(*g_settings);
  KVTimeLog::CheckRegistry();
  QFAnalyticsLogMgr::Initialize(/*option=*/0);
  ReportRegistry(needs);
}

MainModuleScope::~MainModuleScope() {
  QFAnalyticsLogMgr::Exit();
  if (g_settings) CloseAppEnv();
  g_guard.reset();
  g_settings.reset();
  g_waiting.reset();
}

void WantMessages(bool wanted) { g_messages = wanted; }

bool CancelUserJob() { return g_cancelled.exchange(true); }

UserJobScope::UserJobScope(std::optional<std::chrono::milliseconds> limit) {
  g_cancelled = false;
  g_cancelAt = limit ? std::chrono::steady_clock::now() + *limit : kNever;
}
UserJobScope::~UserJobScope() {
  g_cancelled = false;
  g_cancelAt = kNever;
}

}  // namespace kestrova
