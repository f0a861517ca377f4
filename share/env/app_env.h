// CKVEnvApp, the environment: the folders of the installation, the current language and technology database, the
// feature switches. One object, built at the first request.
//
// A main module starts in this order: InitShareDll; qfshare_init and QFShareRegisterDocCBK
// (share/core/document_callbacks.h); InitAppEnv. It ends with CloseAppEnv, and then may unload the library.
//
// The start (InitAppEnv) reads and completes the application settings that GetAppSettingsCB returns, writes missing
// folders and switches into the registry, and loads the language library GetKVResourceDllPath(). From then on
// CString::LoadString finds its texts, if InitShareDll was called before. The language library stays loaded until the
// process ends or another start replaces it. Without it LoadString finds no text; nothing else fails.
//
// No call throws. Only forms mode shows message boxes (SetKVTechDBPath). GetEnvAPPInitResult returns the last failure
// of the start. There is no lock: make the first request on the main thread before any job starts, and call setters
// only there; after that any thread may read.
//
// Folders end in a backslash. A text that the start could not determine is empty. Names and paths of libraries are the
// product's own, the same on every platform.
#pragma once

#include "framework/text.h"
#include "share/utilities/tech_db_config.h"

enum EnvAPP_Init_Result_e : int {
  ENVAPP_INIT_OK = 0,
  ENVAPP_INIT_TECHDB_FILE_MISSING = 1,  // the file of the active technology database is missing
  ENVAPP_INIT_TECHDB_FAILED = 2,        // no technology database is active, or opening it failed
};

// The languages of resources and of the technology database.
enum QFDatabaseLang_e : int {
  QF_DBLANG_ENGLISH = 0,
  QF_DBLANG_GERMAN = 1,
  QF_DBLANG_FRENCH = 2,
  QF_DBLANG_SPANISH = 3,
  QF_DBLANG_JAPANESE = 4,
  QF_DBLANG_CHINESE = 5,
  QF_DBLANG_CHINESE_TRADITIONAL = 6,
  QF_DBLANG_ITALIAN = 7,
  QF_DBLANG_KOREAN = 8,
  QF_DBLANG_RUSSIAN = 9,
  QF_DBLANG_POLISH = 10,
  QF_DBLANG_TURKISH = 11,
  QF_DBLANG_PORTUGUESE_BRAZILIAN = 12,
  QF_DBLANG_CZECH = 13,
  QF_DBLANG_GREEK = 14,
};

// How features are created from mill geometry. Modules define the values; this library only stores one.
enum QFFeatMillExtractionMethods : int {};

KVSHARE_API void InitShareDll();

class KVSHARE_API CKVEnvApp {
 public:
  // The one object, never null. The first call builds and initialises it. Calls during the initialisation return the
  // object in its present state.
  static CKVEnvApp* Instance();
  // Deletes the object, if it exists. The next request builds a new one.
  static void DestroyInstance();

  static int m_IsEnvObjectCreated;
  static CKVEnvApp* m_envAppInstance;

  CKVEnvApp(const CKVEnvApp&) = default;
  CKVEnvApp& operator=(const CKVEnvApp&) = default;
  ~CKVEnvApp() = default;

  // The last failure of the initialisation or of a later SetKVTechDBPath(int).
  EnvAPP_Init_Result_e GetEnvAPPInitResult() const { return m_InitResult; }

  // ---- location of the product: the file of this library

  const CString& GetKVModuleDllName() const { return m_ModuleDllName; }  // "KESTROVAu"
  // Also "KESTROVAu", even if the file of this library has another name. Kept for existing modules.
  const CString& GetKVModuleName() const { return m_ModuleName; }
  const CString& GetKVModuleExt() const { return m_ModuleExt; }  // with its dot
  const CString& GetKVDrive() const { return m_Drive; }          // such as "C:"; empty for a path without a drive
  const CString& GetKVPath() const { return m_InstallPath; }     // without the drive; begins and ends with a backslash
  // The language folder, relative to the install folder, such as "lang\English\".
  const CString& GetKVDefDataRelPath() const { return m_LanguageFolder; }
  const CString& GetKVHelpPath() const { return m_HelpPath; }
  void SetKVHelpPath(const CString& path) { m_HelpPath = path; }

  // Manuals, release notes, help for additive manufacturing: always in the English folder.
  CString GetManualPDFFilePath() const;
  CString GetWhatsNewPDFFilePath() const;
  CString GetKVAMHelpPath() const;
  // The folder of tutorials, without a backslash at the end: that of the language if its tutorials are translated and
  // installed, else the English one.
  CString GetTutorialsPath() const;
  CString GetTechDBAppPath() const;
  // The NC editor's program in the install folder if it exists there, else in the folder above, where it may be
  // missing; and its arguments, such as "/lang=de-DE".
  const CString& GetCIMCOEditorPath() const { return m_NCEditorPath; }
  const CString& GetCIMCOEditorCmdArg() const { return m_NCEditorArguments; }

  // ---- the folder of data and its contents; each call reads the registry

  // The first non-empty "KVDataPath" of this release's key in the user's and in the machine's hive; else the install
  // folder, which is then written to the machine's hive.
  CString GetKVDataPath() const;
  // "KVCommonDataPath" from the user's hive. "\" if it is missing, kept for existing modules.
  CString GetKVCommonDataPath() const;
  CString GetKVTaskPaneINIFilePath() const;
  CString GetTechDBConfigFilePath() const;  // a folder
  CString GetDefaultSQLiteDBPath() const;
  // Creates the folder if it is missing. Returns the path even if that fails.
  CString GetSimulationRecordingFolderPath() const;
  // The language folder below the folder of data. The getter also computes it anew.
  CString GetKVDefaultToolInsertPath();
  void SetKVDefaultToolInsertPath();

  // ---- folders that a user may move; each ends in a backslash, an empty path is "\"

  // From the application settings. Only if GetAppSettingsCB returns null, from the registry: the user's hive, and for
  // the folders of the simulation then the machine's hive. An empty text in the settings is not replaced by the
  // registry's, kept for existing modules.
  CString GetSetupSheetImagePath() const;
  CString GetSetupSheetTemplatePath() const;
  CString GetSubSpindleOperFolderPath() const;
  CString GetDefaultSimulationMachineFolderPath() const;
  CString GetDefaultSimulationControllerFolderPath() const;
  CString GetDefaultSimulationJobFolderPath() const;
  // "SaveStyleSheetTo" of the settings; if that is empty, of the machine's hive. No backslash is added; may be empty.
  CString GetVersionIndependentSetupSheetTemplatePath() const;
  // The simulator from the machine's hive, unchanged; and from the user's settings or registry, always with a backslash
  // at the end, even after the name of a program (kept for existing modules). Both may be empty.
  CString GetVirtualMachinePath() const;
  CString GetIMSExePath() const;
  // From the EDM application's settings; if a path there is empty, a folder below the folder of data. Empty without
  // these settings.
  CString ExtractEDMCuttingConditionPath() const;
  CString ExtractEDMPostFilePath() const;
  // The paths in use, empty until set. A setter also copies the path to the EDM application's settings, if they exist.
  const CString& GetEDMCuttingConditionPath() const { return m_EDMCuttingConditionPath; }
  void SetEDMCuttingConditionPath(const CString& path);
  const CString& GetEDMPostFilePath() const { return m_EDMPostFilePath; }
  void SetEDMPostFilePath(const CString& path);

  // ---- language

  // The current language of resources and of the technology database (share/env/language_choice.h).
  QFDatabaseLang_e GetTechDBLang() const { return m_TechDBLang; }
  // The language of that name, compared exactly; English for any other name, and for "Greek".
  QFDatabaseLang_e GetCorrespondingDBLangName(const CString& name) const;
  // The NC editor's code of the current language, such as "de-DE".
  CString GetLanguageForSIMCO() const;

  // ---- libraries in the install folder: name and full path

  const CString& GetKVResourceDllName() const { return m_ResourceDllName; }
  const CString& GetKVResourceDllPath() const { return m_ResourceDllPath; }
  const CString& GetKVDebugResourceDllName() const { return m_DebugResourceDllName; }
  const CString& GetKVDebugResourceDllPath() const { return m_DebugResourceDllPath; }
  const CString& GetKVImagesResourceDllName() const { return m_ImagesDllName; }
  const CString& GetKVImagesResourceDllPath() const { return m_ImagesDllPath; }
  const CString& GetKVAPIDllName() const { return m_InterfaceDllName; }
  const CString& GetKVAPIDllPath() const { return m_InterfaceDllPath; }
  const CString& GetKV5AxisDllName() const { return m_FiveAxisDllName; }
  CString GetKV5AxisDllPath() const;
  CString GetEDMResourceDllPath() const;  // only the folder, kept for existing modules
  CString GetUtilitiesDllName() const;
  CString GetUtilitiesDllPath() const;  // only the folder
  const CString& GetVisiDllName() const { return m_VisiDllName; }
  const CString& GetVisiDllPath() const { return m_VisiDllPath; }  // only the folder, kept for existing modules
  const CString& GetEDConnectorDllName() const { return m_EDConnectorDllName; }
  const CString& GetEDConnectorDllPath() const { return m_EDConnectorDllPath; }
  const CString& GetEDConnectorPngDllName() const { return m_EDConnectorPngDllName; }
  const CString& GetEDConnectorPngDllPath() const { return m_EDConnectorPngDllPath; }
  const CString& GetKVEDConnectorDllName() const { return m_KVEDConnectorDllName; }
  const CString& GetKVEDConnectorDllPath() const { return m_KVEDConnectorDllPath; }

  // ---- technology database

  const CString& GetKVTechDBName() const { return m_TechDBName; }
  const CString& GetKVTechDBPath() const { return m_TechDBPath; }
  void SetKVTechDBPath(const CString& path) { m_TechDBPath = path; }
  // Sets the path to the database's name in the language folder below the folder of data. Returns the new path.
  CString SetKVDefaultTechDBPath();
  // Configuration mode: sets the path to the file of the active entry. Forms mode: opens the forms file and reads the
  // path from it, or, with write not 0, writes the path to it. While the forms file is missing, message boxes ask the
  // user for it; if the user cancels, the init result is ENVAPP_INIT_TECHDB_FAILED. Errors of the forms file go to a
  // message box.
  void SetKVTechDBPath(int write);
  const CString& GetKVTechDBFormsName() const { return m_TechDBFormsName; }
  // The program or forms file for the database: full path; name before its first dot; extension.
  CString GetKVTechDBFormsPath() const;
  CString GetKVNameOnlyOfTechDBForms() const;
  CString GetKVDataFileExtOfTechDBForms() const;
  void SetKVTechDBFormsName();
  CString GetKVNameOnlyOfTechDB() const;  // "TechDB"
  CString GetKVExtOfTechDB() const;       // empty for a server
  void SetKVTechDBName();
  // 1 in configuration mode: the registry value "TechDBForms" is "TechDB App", a stand-alone application serves the
  // database, and "database.config" lists the databases. 0 in forms mode: a forms database has the path.
  int GetConfigDataUseStatus() const { return m_bConfigData; }
  int Is64BitDatabaseInUse() const { return m_b64BitDatabase; }
  int IsSQLiteDatabaseInUse() const { return m_bSQLiteDatabase; }
  int Is64BitAccessInstalled() const { return m_b64BitAccess; }
  // Compute these three anew. Call them after a change of the active entry.
  void Set64BitDatabaseInUseStatus();
  void SetSQLiteDatabaseInUseStatus();
  void Set64BitAccessDatabaseInstallStatus();
  // If the active entry is an Access database: detects the installed Access editions and writes them to the registry.
  void SetDatabaseInstallationData();
  // 1 if the database is on a server. The second is always 0 in forms mode.
  int IsConnectedToTechDBSQL() const;
  int IsConnectedToTechDBSQLServerDirectly() const;
  // Server and database as SERVER=x;DATABASE=y, without user and password; empty if the database is not on a server.
  CString GetTechDBSQLInfo() const;
  // The same, or the file path of the active entry. Empty without an active entry, so always in forms mode.
  CString GetActiveDBname() const;
  // The list of databases in "database.config" (share/utilities/tech_db_config_file.h), owned by the environment.
  // ReadDBConfigData appends the file's entries to it; UpdateTechDBConfigInfo clears it first; both return the result
  // of ReadTechDBConfig. UpdateDBConfigData is the list's CopyFrom. WriteDBConfigData writes the active flags to the
  // file: 1 if it was saved. GetActiveTechDBConfigData returns null without an active entry.
  QFTechDBConfigInfo* GetTechDBConfigInfo() { return &m_TechDBConfig; }
  const QFTechDBConfigInfo* GetTechDBConfigInfo() const { return &m_TechDBConfig; }
  QFTechDBConfigData* GetActiveTechDBConfigData() const { return m_TechDBConfig.GetActiveConfigData(); }
  int ReadDBConfigData();
  void ClearDBConfigData() { m_TechDBConfig.ClearTechDBInfo(); }
  int UpdateTechDBConfigInfo();
  int UpdateDBConfigData(const QFTechDBConfigInfo* info) { return m_TechDBConfig.CopyFrom(info); }
  int WriteDBConfigData() const;
  // The process id of the running database application, stored for other modules; 0xFFFFFFFF: no process.
  DWORD GetTechDBProcessID() const { return m_TechDBProcessID; }
  void SetTechDBProcessID(DWORD id) { m_TechDBProcessID = id; }
  // Ends that process with exit code 999. Nonzero if it was ended, and also if there is no process.
  int KillTechDBProcess() const;

  // ---- user, time, switches

  // The log-on name, read at start.
  const CString& GetUserNameW() const { return m_UserName; }
  // The local date, "MM/dd/yyyy"; and, despite its name, the local time of day, "HH:mm".
  CString GetCurrentDate() const;
  CString GetTickCount() const;
  // 1 if the environment variable "_KVDEBUG" was "YES", in any case, at start.
  int IsKVDebugEnabled() const { return m_bDebug; }
  // 1 if ConfigureForTesting has set the flag and the environment variable "KV_TESTING" is "YES", in any case, now.
  int IsKVRunningInTestMode() const;
  void ConfigureForTesting(int flag) { m_bTesting = flag; }
  int GetMultiSurfaceByID() const { return m_nMultiSurfaceByID; }

  // ---- stored for other modules

  void SetPartFileNameforRelativePathCreation(const CString& name) { m_PartFileName = name; }
  void SetIs3dSetUpSheet(int flag) { m_bIs3dSetUpSheet = flag; }
  int IsXMLReportwithRelativePathsNeeded() const { return !m_bIs3dSetUpSheet; }
  QFFeatMillExtractionMethods GetFeatureCreationStyle() const { return m_FeatureCreationStyle; }
  void SetFeatureCreationStyle(QFFeatMillExtractionMethods style) { m_FeatureCreationStyle = style; }
  int GetIsXMLSetUpSheet() const { return m_bXMLSetUpSheet; }
  void SetIsXMLSetUpSheet(int flag) { m_bXMLSetUpSheet = flag; }
  const CString& GetXMLSetUpSheetPath() const { return m_XMLSetUpSheetPath; }
  void SetXMLSetUpSheetPath(const CString& path) { m_XMLSetUpSheetPath = path; }
  // For reports in the folder of their part: the relative image folder and the part name that was set.
  CString GetXMLReportRelativePathInfo() const;

  // The program ids of the two window controls in the host's panes.
  CString GetTreeTabProgID() const;
  CString GetTaskPaneTabStringID() const;

 protected:
  CKVEnvApp();

  // The whole initialisation. Its order is fixed: later steps use the results of earlier ones.
  void Init();

  // Steps of Init. Those of a switch write its default to the registry if it is missing (share/env/feature_switches.h).
  void SetDefaultTechDBForms();
  void SetConfigDataUseStatus();
  void SetKVModuleDllName();
  void SetKVResourceDllName();
  void SetKVDebugResourceDllName();
  void SetKVDefLangAndDataRelPath();
  void SetErrorIfTechDBFileNotFound();
  int SetDefaultKVDataPath();
  int SetDefaultSetupSheetImagePath();
  int SetDefaultSetupSheetTemplatePath();
  int SetDefaultSubSpndleOperFolderPath();
  int SetDefaultMachineSimulationApplicationPath();
  int SetDefaultSimulationMachineFolderPath();
  int SetDefaultSimulationControllerFolderPath();
  int SetDefaultSimulationJobFolderPath();
  void SetShowCustomChuckOptionsDisplayRegistry();
  void SetDefaultCalMaxFitCirInThread();
  void SetDefaultTurnVariableBAxisSupport();
  void SetTurnBAxisConTlpKeepArcMove();
  void SetTurnBAxisConLLForArcFacet();
  void SetBAxisFaceFinishOperSupport();
  void SetSpindleDirForTurnMillTurnSupport();
  void SetCIMCOEditorPath();
  void SetDefaultControllerPath();
  void SetToolpathShowHideSupportKeyValue();
  void SetTlpColorSupportKeyValue();
  void SetTlpHiddenMoveColorSupportKeyValue();
  void SetCRF1478StepThruSupportKeyValue();
  void SetCRF1478TurnSupportKeyValue();
  void SetCRF1478For2axSupportKeyValue();
  void SetWIPArcRegistrySupportKeyValue();
  void SetUserName();
  void SetVisiDllName();
  void SetEDConnectorDllName();
  void SetKVEDConnectorDllName();
  void SetPostPerformanceImprovements();

 private:
  friend class ShareStart;  // of InitShareDll

  static void LinkResources();
  void StoreLocation();
  void SetTechDBNamesAndFlags();
  void ExchangeTechDBPathWithForms(int write);
  int IsFormsFile64Bit() const;
  bool HasActiveTechDB(int type) const;
  void SetDefaultFolders();
  void SetFirstSwitches();
  void SetSecondSwitches();
  void SetResourcePaths();
  void LoadResources() const;
  void FindHelp();
  void SetDebugFlag();
  CString InInstall(const CString& rest) const { return m_Drive + m_InstallPath + rest; }
  CString InEnglish(LPCTSTR rest) const;

  CString m_ModuleDllName;
  CString m_ShareDllName;
  CString m_ModuleName;
  CString m_ModuleExt;
  CString m_Drive;
  CString m_InstallPath;
  CString m_LanguageFolder;
  CString m_TechDBName;
  CString m_TechDBPath;
  CString m_DefaultToolInsertPath;
  CString m_DebugResourceDllName;
  CString m_DebugResourceDllPath;
  CString m_ResourceDllName;
  CString m_ResourceDllPath;
  CString m_ImagesDllName;
  CString m_ImagesDllPath;
  CString m_InterfaceDllName;
  CString m_InterfaceDllPath;
  CString m_FiveAxisDllName;
  CString m_HelpPath;
  CString m_TechDBFormsName;
  CString m_UserName;
  int m_bDebug = 0;
  int m_bTesting = 0;
  DWORD m_TechDBProcessID = 0xFFFFFFFF;
  CString m_EDMCuttingConditionPath;
  CString m_EDMPostFilePath;
  CString m_VisiDllName;
  CString m_VisiDllPath;
  CString m_EDConnectorDllName;
  CString m_EDConnectorPngDllName;
  CString m_EDConnectorDllPath;
  CString m_EDConnectorPngDllPath;
  CString m_KVEDConnectorDllName;
  CString m_KVEDConnectorDllPath;
  CString m_PartFileName;
  int m_bIs3dSetUpSheet = 0;
  QFFeatMillExtractionMethods m_FeatureCreationStyle = {};
  int m_b64BitDatabase = 0;
  int m_bSQLiteDatabase = 0;
  int m_b64BitAccess = 0;
  int m_bXMLSetUpSheet = 0;
  CString m_XMLSetUpSheetPath;
  int m_bConfigData = 0;
  bool m_bStores = true;  // false: this start saves nothing to the registry
  EnvAPP_Init_Result_e m_InitResult = ENVAPP_INIT_OK;
  QFDatabaseLang_e m_TechDBLang = QF_DBLANG_ENGLISH;
  CString m_NCEditorPath;
  CString m_NCEditorArguments;
  QFTechDBConfigInfo m_TechDBConfig;
  int m_nMultiSurfaceByID = 0;
};

// Links this library into the application's chain of resource modules, which CString::LoadString searches, and makes
// the start load the help's context table (share/interface/help_system.h). Call it once, before InitAppEnv: a second
// call adds a second link.
KVSHARE_API void InitShareDll();

// Sets path to AppEnv()->GetKVPath(), the install folder without its drive.
KVSHARE_API void KVGetInstallPath(CString& path);

// The names that modules use: InitAppEnv and AppEnv are CKVEnvApp::Instance, CloseAppEnv is DestroyInstance.
KVSHARE_API CKVEnvApp* InitAppEnv();
KVSHARE_API CKVEnvApp* AppEnv();
KVSHARE_API void CloseAppEnv();

// Converts a tool's path of another installation to this one: sets result to the folder of data followed by the path
// from "Tooling" on. 1 if converted; 0, with result unchanged, if the path does not contain "Tooling" or begins with
// it.
KVSHARE_API int GetCorrectToolFilePath(const CString& path, CString& result);
