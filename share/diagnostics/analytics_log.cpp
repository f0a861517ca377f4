#include "share/diagnostics/analytics_log.h"

#include <iterator>

#include "companions/analytics/analytics.h"
#include "share/core/version_info.h"
#include "share/env/app_env.h"
#include "share/env/feature_switches.h"
#include "share/env/product_identity.h"

CString QFAnalyticsLogMgr::m_strMajorversion;
CString QFAnalyticsLogMgr::m_strServicePack;
double QFAnalyticsLogMgr::m_dStorageVersion = 0;
int QFAnalyticsLogMgr::m_bEnabled = 1;
int QFAnalyticsLogMgr::m_bInitialized = 0;
int QFAnalyticsLogMgr::m_bProductDataSent = 0;
int QFAnalyticsLogMgr::m_bCADDataSent = 0;
int QFAnalyticsLogMgr::m_bPrimeTurnSent = 0;
int QFAnalyticsLogMgr::m_bVoluTurnSent = 0;

namespace {

IQFAnalytics* Receiver() { return QFAnalyticsManager::GetInstance().GetMWAnalytics(); }

// The words of QFDatabaseLang_e.
constexpr LPCTSTR kLanguages[] = {_T("ENGLISH"),
                                  _T("GERMAN"),
                                  _T("FRENCH"),
                                  _T("SPANISH"),
                                  _T("JAPANESE"),
                                  _T("CHINESE"),
                                  _T("CHINESE_TRADITIONAL"),
                                  _T("ITALIAN"),
                                  _T("KOREAN"),
                                  _T("RUSSIAN"),
                                  _T("POLISH"),
                                  _T("TURKISH"),
                                  _T("PORTUGUESE-BRAZILIAN"),
                                  _T("CZECH"),
                                  _T("GREEK")};
static_assert(std::size(kLanguages) == QF_DBLANG_GREEK + 1);

LPCTSTR LanguageWord() {
  const CKVEnvApp* const env = CKVEnvApp::m_envAppInstance;  // AppEnv() would build one
  const std::size_t index = env ? std::size_t(env->GetTechDBLang()) : 0;
  return kLanguages[index < std::size(kLanguages) ? index : 0];
}

CString CadWithVersion() { return GetCADName() + GetCADVersion(); }
CString HostText() { return CadWithVersion() + _T(" ") + GetCADMinorVersion(); }

}  // namespace

int QFAnalyticsLogMgr::Initialize(int option) {
  m_bEnabled = GetDebugRegistryVal(_T("LogAnalyticsData"), 1);
  if (!m_bEnabled || m_bInitialized) return m_bInitialized;
  IQFAnalytics* const receiver = Receiver();
  return m_bInitialized = receiver ? receiver->Initialize(option) : 0;
}

int QFAnalyticsLogMgr::Exit() {
  if (!m_bInitialized) return 0;
  m_bInitialized = 0;
  IQFAnalytics* const receiver = Receiver();
  return receiver ? receiver->Exit() : 0;
}

int QFAnalyticsLogMgr::Reinitialize(int option) {
  Exit();
  return Initialize(option);
}

int QFAnalyticsLogMgr::AddProductData() {
  IQFAnalytics* const receiver = m_bInitialized ? Receiver() : nullptr;
  if (!receiver) return 0;
  return m_bProductDataSent = receiver->AddProductData(
             GetProductName(), LanguageWord(), GetProductVersion() + _T(" ") + GetKVServicePack(), GetKVBuildDate());
}

int QFAnalyticsLogMgr::AddCADData() {
  if (!m_bInitialized) return 0;
  return m_bCADDataSent = AddTextEvent(_T("CADInfo"), CadWithVersion(), HostText());
}

int QFAnalyticsLogMgr::AddCommandEvent(const CString& category, const CString& name) {
  IQFAnalytics* const receiver = m_bInitialized ? Receiver() : nullptr;
  return receiver ? receiver->AddCommandEvent(category, name) : 0;
}

int QFAnalyticsLogMgr::AddNumericEvent(const CString& category, const CString& name, const double& value) {
  IQFAnalytics* const receiver = m_bInitialized ? Receiver() : nullptr;
  return receiver ? receiver->AddNumericEvent(category, name, value) : 0;
}

int QFAnalyticsLogMgr::AddTextEvent(const CString& category, const CString& name, const CString& value) {
  IQFAnalytics* const receiver = m_bInitialized ? Receiver() : nullptr;
  return receiver ? receiver->AddTextEvent(category, name, value) : 0;
}

int QFAnalyticsLogMgr::AddExceptionData(const CString& type, const CString& text, const CString& module,
                                        const CString& place) {
  IQFAnalytics* const receiver = m_bInitialized ? Receiver() : nullptr;
  return receiver ? receiver->AddExceptionData(type, text, module, place) : 0;
}

int QFAnalyticsLogMgr::AddDataRestoreFailedData() {
  if (!m_bInitialized) return 0;
  const CString running = GetProductName() + GetProductVersion() + _T(" ") + GetKVServicePack();
  const CString document = GetProductName() + m_strMajorversion + _T(" ") + m_strServicePack;
  return AddTextEvent(_T("DataInfo"), _T("Restore Failed"), HostText() + _T("_") + document + _T("_") + running);
}

int QFAnalyticsLogMgr::AddPrimeTurnUsage() {
  if (!m_bInitialized || m_bPrimeTurnSent) return m_bInitialized && m_bPrimeTurnSent;
  return m_bPrimeTurnSent = AddTextEvent(_T("Usage"), _T("Prime Turn"), _T("Prime Turn"));
}

int QFAnalyticsLogMgr::AddVoluTurnUsage() {
  if (!m_bInitialized || m_bVoluTurnSent) return m_bInitialized && m_bVoluTurnSent;
  return m_bVoluTurnSent = AddTextEvent(_T("Usage"), _T("Volu Turn"), _T("Volu Turn"));
}
