// One table of queries per group.
#include "host/environment/environment_queries.h"

#include "companions/database/connection_strings.h"
#include "share/core/document_callbacks.h"
#include "share/core/version_info.h"
#include "share/env/app_env.h"
#include "share/env/language_choice.h"
#include "share/env/product_edition.h"
#include "share/env/product_identity.h"

namespace kestrova {

namespace {

QueryAnswer Answer(const CString& text) { return text; }
QueryAnswer Answer(long long number) { return number; }

// In forms mode the path may be a connection string; ShownTarget hides its password.
QueryAnswer ShownDatabasePath(CKVEnvApp& env) { return ShownTarget(env.GetKVTechDBPath()); }

// A row of a table: an operation of the environment, or a free function, and its name.
#define KV_OPERATION(name)                                    \
  {                                                           \
#name, [](CKVEnvApp & env) { return Answer(env.name()); } \
  }
#define KV_FLAG(name)                                                   \
  {                                                                     \
#name, [](CKVEnvApp & env) { return QueryAnswer(env.name() != 0); } \
  }
#define KV_FUNCTION(name)                            \
  {                                                  \
#name, [](CKVEnvApp&) { return Answer(name()); } \
  }

constexpr EnvironmentQuery kStart[] = {
    KV_OPERATION(GetEnvAPPInitResult),
    KV_OPERATION(GetUserNameW),
    KV_OPERATION(GetCurrentDate),
    KV_OPERATION(GetTickCount),
    KV_FLAG(IsKVDebugEnabled),
    KV_FLAG(IsKVRunningInTestMode),
    KV_OPERATION(GetMultiSurfaceByID),
    KV_FLAG(IsXMLReportwithRelativePathsNeeded),
    KV_OPERATION(GetFeatureCreationStyle),
    KV_FLAG(GetIsXMLSetUpSheet),
    KV_OPERATION(GetXMLSetUpSheetPath),
    KV_OPERATION(GetTreeTabProgID),
    KV_OPERATION(GetTaskPaneTabStringID),
};

constexpr EnvironmentQuery kInstallation[] = {
    KV_OPERATION(GetKVDrive),
    KV_OPERATION(GetKVPath),
    KV_OPERATION(GetKVModuleDllName),
    KV_OPERATION(GetKVModuleName),
    KV_OPERATION(GetKVModuleExt),
    KV_OPERATION(GetKVResourceDllName),
    KV_OPERATION(GetKVResourceDllPath),
    KV_OPERATION(GetKVDebugResourceDllName),
    KV_OPERATION(GetKVDebugResourceDllPath),
    KV_OPERATION(GetKVImagesResourceDllName),
    KV_OPERATION(GetKVImagesResourceDllPath),
    KV_OPERATION(GetKVAPIDllName),
    KV_OPERATION(GetKVAPIDllPath),
    KV_OPERATION(GetKV5AxisDllName),
    KV_OPERATION(GetKV5AxisDllPath),
    KV_OPERATION(GetVisiDllName),
    KV_OPERATION(GetVisiDllPath),
    KV_OPERATION(GetEDConnectorDllName),
    KV_OPERATION(GetEDConnectorDllPath),
    KV_OPERATION(GetEDConnectorPngDllName),
    KV_OPERATION(GetEDConnectorPngDllPath),
    KV_OPERATION(GetKVEDConnectorDllName),
    KV_OPERATION(GetKVEDConnectorDllPath),
    KV_OPERATION(GetUtilitiesDllName),
    KV_OPERATION(GetUtilitiesDllPath),
    KV_OPERATION(GetEDMResourceDllPath),
    KV_OPERATION(GetTechDBAppPath),
    KV_OPERATION(GetKVHelpPath),
    KV_OPERATION(GetKVAMHelpPath),
    KV_OPERATION(GetManualPDFFilePath),
    KV_OPERATION(GetWhatsNewPDFFilePath),
    KV_OPERATION(GetTutorialsPath),
    KV_OPERATION(GetCIMCOEditorPath),
    KV_OPERATION(GetCIMCOEditorCmdArg),
};

constexpr EnvironmentQuery kLanguage[] = {
    KV_OPERATION(GetKVDefDataRelPath),
    KV_OPERATION(GetTechDBLang),
    KV_OPERATION(GetLanguageForSIMCO),
    KV_FUNCTION(GetSolidWorksLangName),
    {"GetLangAlignedToSWLang",
     [](CKVEnvApp&) {
       CString language;
       GetLangAlignedToSWLang(language);
       return Answer(language);
     }},
};

constexpr EnvironmentQuery kFolders[] = {
    KV_OPERATION(GetKVDataPath),
    KV_OPERATION(GetKVCommonDataPath),
    KV_OPERATION(GetKVTaskPaneINIFilePath),
    KV_OPERATION(GetKVDefaultToolInsertPath),
    KV_OPERATION(GetSetupSheetImagePath),
    KV_OPERATION(GetSetupSheetTemplatePath),
    KV_OPERATION(GetVersionIndependentSetupSheetTemplatePath),
    KV_OPERATION(GetXMLReportRelativePathInfo),
    KV_OPERATION(GetSubSpindleOperFolderPath),
    KV_OPERATION(GetDefaultSimulationMachineFolderPath),
    KV_OPERATION(GetDefaultSimulationControllerFolderPath),
    KV_OPERATION(GetDefaultSimulationJobFolderPath),
    KV_OPERATION(GetSimulationRecordingFolderPath),
    KV_OPERATION(GetVirtualMachinePath),
    KV_OPERATION(GetIMSExePath),
    KV_OPERATION(ExtractEDMCuttingConditionPath),
    KV_OPERATION(ExtractEDMPostFilePath),
    KV_OPERATION(GetEDMCuttingConditionPath),
    KV_OPERATION(GetEDMPostFilePath),
};

constexpr EnvironmentQuery kDatabase[] = {
    KV_FLAG(GetConfigDataUseStatus),
    KV_OPERATION(GetTechDBConfigFilePath),
    KV_OPERATION(GetDefaultSQLiteDBPath),
    KV_OPERATION(GetKVTechDBName),
    {"GetKVTechDBPath", ShownDatabasePath},
    KV_OPERATION(GetKVTechDBFormsName),
    KV_FLAG(Is64BitDatabaseInUse),
    KV_FLAG(IsSQLiteDatabaseInUse),
    KV_FLAG(Is64BitAccessInstalled),
    KV_OPERATION(GetKVNameOnlyOfTechDB),
    KV_OPERATION(GetKVExtOfTechDB),
    KV_OPERATION(GetKVNameOnlyOfTechDBForms),
    KV_OPERATION(GetKVDataFileExtOfTechDBForms),
    KV_OPERATION(GetKVTechDBFormsPath),
    KV_FLAG(IsConnectedToTechDBSQL),
    KV_FLAG(IsConnectedToTechDBSQLServerDirectly),
    KV_OPERATION(GetTechDBSQLInfo),
    KV_OPERATION(GetActiveDBname),
    KV_OPERATION(GetTechDBProcessID),
};

constexpr EnvironmentQuery kProduct[] = {
    KV_FUNCTION(GetKVVersion),
    KV_FUNCTION(GetKVVersionLong),
    KV_FUNCTION(GetKVBuildDate),
    KV_FUNCTION(GetKVServicePack),
    KV_FUNCTION(GetRequiredSWVersion),
    KV_FUNCTION(GetProductName),
    KV_FUNCTION(GetProductVersion),
    KV_FUNCTION(GetProductAndVersionString),
    KV_FUNCTION(GetProductType),
    KV_FUNCTION(GetProductEditionText),
    KV_FUNCTION(GetKernelType),
    KV_FUNCTION(GetCADName),
    KV_FUNCTION(GetCADVersion),
    KV_FUNCTION(GetCADMinorVersion),
    KV_FUNCTION(GetSldWorksDateCode),
    KV_FUNCTION(GetSldWorksRevisionNumber),
    {"IsValidSWVersion", [](CKVEnvApp&) { return QueryAnswer(IsValidSWVersion() != 0); }},
};

constexpr EnvironmentQueryGroup kGroups[] = {
    {"Start", "start", kStart},
    {"Installation", "installation", kInstallation},
    {"Language", "language", kLanguage},
    {"Folders", "folders", kFolders},
    {"Technology database", "technologyDatabase", kDatabase},
    {"Product", "product", kProduct},
};

}  // namespace

std::span<const EnvironmentQueryGroup> EnvironmentQueryGroups() { return kGroups; }

const char* InitResultInWords(const CKVEnvApp& env) {
  switch (env.GetEnvAPPInitResult()) {
    case ENVAPP_INIT_OK: return "started without a fault";
    case ENVAPP_INIT_TECHDB_FILE_MISSING:
      return "the active technology database is a file, and there is none at its path";
    case ENVAPP_INIT_TECHDB_FAILED: return "there is no active technology database, or it could not be opened";
  }
  return "unknown";
}

}  // namespace kestrova
