// CKVEnvApp, the environment: where the product lies, which language and technology database are in force, what the
// installation's switches are. One object, gathered once, at the first request.
//
// Order of start for a main module: InitShareDll, qfshare_init, QFShareRegisterDocCBK
// (share/core/document_callbacks.h), InitAppEnv; of its end: CloseAppEnv, then unload. Nothing here shows a message or
// throws: trouble is in GetEnvAPPInitResult. There is no lock: the first request has to come from the main thread ahead
// of any job, and so do the setters; after that any thread may read.
//
// Texts are wide, folders end in a backslash. A text that no step could fill is empty. Names and paths of libraries are
// the product's own, the same on every platform.
#pragma once

#include "framework/text.h"
#include "share/utilities/tech_db_config.h"

enum EnvAPP_Init_Result_e {
  ENVAPP_INIT_OK = 0,
  ENVAPP_INIT_TECHDB_FILE_MISSING = 1,  // the active technology database is a file, and there is none at its path
  ENVAPP_INIT_TECHDB_FAILED = 2,        // no active technology database, or opening it failed
};

// The languages of resources and of the technology database.
enum QFDatabaseLang_e {
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

// How features are made from mill geometry. The numbers belong to the modules; this library only keeps one.
enum QFFeatMillExtractionMethods : int {};

class KVSHARE_API CKVEnvApp {
 public:
  // The object; built and initialised by the first call. Code that asks while it is being initialised gets the object
  // as far as it is.
  static CKVEnvApp* Instance();
  // Deletes the object, if there is one. The next request builds a fresh one.
  static void DestroyInstance();

  static int m_IsEnvObjectCreated;
  static CKVEnvApp* m_envAppInstance;

  CKVEnvApp(const CKVEnvApp&) = default;
  CKVEnvApp& operator=(const CKVEnvApp&) = default;
  ~CKVEnvApp() = default;

  // The last failure of the initialisation.
  EnvAPP_Init_Result_e GetEnvAPPInitResult() const { return m_InitResult; }

  // ---- where the product lies: this library's own file

  const CString& GetKVModuleDllName() const { return m_ModuleDllName; }  // "KESTROVAu"
  // "KESTROVAu" too, whatever this library's file is named.
  const CString& GetKVModuleName() const { return m_ModuleName; }
  const CString& GetKVModuleExt() const { return m_ModuleExt; }  // with its point
  const CString& GetKVDrive() const { return m_Drive; }          // such as "C:"; empty where there are none
  const CString& GetKVPath() const { return m_InstallPath; }     // without the drive, a backslash at both ends
  // The language folder below it, such as "lang\English\".
  const CString& GetKVDefDataRelPath() const { return m_LanguageFolder; }
  const CString& GetKVHelpPath() const { return m_HelpPath; }
  void SetKVHelpPath(const CString& path) { m_HelpPath = path; }

  // Manuals, what's new, the help of additive manufacturing: in the English folder, whatever the language.
  CString GetManualPDFFilePath() const;
  CString GetWhatsNewPDFFilePath() const;
  CString GetKVAMHelpPath() const;
  // The folder of tutorials, without a backslash behind: of the language if they are translated and there, else the
  // English one.
  CString GetTutorialsPath() const;
  CString GetTechDBAppPath() const;
  // The NC editor's program, in the install folder or beside it, whether or not it exists; and its arguments, such as
  // "/lang=de-DE".
  const CString& GetCIMCOEditorPath() const { return m_NCEditorPath; }
  const CString& GetCIMCOEditorCmdArg() const { return m_NCEditorArguments; }

  // ---- the folder of data, and what lies there; each a registry read

  // "KVDataPath" of the user's, then of the machine's key of this release; without either the install folder, which is
  // then written into the machine's key.
  CString GetKVDataPath() const;
  // "KVCommonDataPath" of the user's key; "\" without one: that is required.
  CString GetKVCommonDataPath() const;
  CString GetKVTaskPaneINIFilePath() const;
  CString GetTechDBConfigFilePath() const;  // a folder
  CString GetDefaultSQLiteDBPath() const;
  // Makes the folder if it is missing; whether that worked doesn't show.
  CString GetSimulationRecordingFolderPath() const;
  // The language's folder below the folder of data; the getter sets the field first.
  CString GetKVDefaultToolInsertPath();
  void SetKVDefaultToolInsertPath();

  // ---- folders that a user may move; each ends in a backslash, the empty one is "\"

  // From the application settings; without them from the registry, the user's key first, and for the simulation's
  // folders then the machine's. Settings that are there and hold an empty text don't fall through: that is required.
  CString GetSetupSheetImagePath() const;
  CString GetSetupSheetTemplatePath() const;
  CString GetSubSpindleOperFolderPath() const;
  CString GetDefaultSimulationMachineFolderPath() const;
  CString GetDefaultSimulationControllerFolderPath() const;
  CString GetDefaultSimulationJobFolderPath() const;
  // As it is kept, which may be empty: "SaveStyleSheetTo" of the settings, else of the machine's key.
  CString GetVersionIndependentSetupSheetTemplatePath() const;
  // The simulator as the machine's key has it, and as the user has it, with a backslash behind even if a program is
  // named; both may be empty.
  CString GetVirtualMachinePath() const;
  CString GetIMSExePath() const;
  // What the EDM application's settings say, else folders below the folder of data; empty without those settings.
  CString ExtractEDMCuttingConditionPath() const;
  CString ExtractEDMPostFilePath() const;
  // The paths in use, empty until set. Setting one copies it to the EDM application's settings, if there are any.
  const CString& GetEDMCuttingConditionPath() const { return m_EDMCuttingConditionPath; }
  void SetEDMCuttingConditionPath(const CString& path);
  const CString& GetEDMPostFilePath() const { return m_EDMPostFilePath; }
  void SetEDMPostFilePath(const CString& path);

  // ---- language

  // The language in force, for resources and for the technology database (share/env/language_choice.h).
  QFDatabaseLang_e GetTechDBLang() const { return m_TechDBLang; }
  // The number of the language of that name, compared exactly; English for a name that is none, and for "Greek".
  QFDatabaseLang_e GetCorrespondingDBLangName(const CString& name) const;
  // The code of the language in force as the NC editor takes it, such as "de-DE".
  CString GetLanguageForSIMCO() const;

  // ---- libraries beside it, by name and full path

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
  CString GetEDMResourceDllPath() const;  // the folder alone: that is required
  CString GetUtilitiesDllName() const;
  CString GetUtilitiesDllPath() const;  // the folder alone
  const CString& GetVisiDllName() const { return m_VisiDllName; }
  const CString& GetVisiDllPath() const { return m_VisiDllPath; }  // the folder alone: that is required
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
  // Sets it to the database's name in the language's folder below the folder of data, and gives it.
  CString SetKVDefaultTechDBPath();
  // From the active entry in configuration mode. In forms mode from the forms file, which is opened for it; with write
  // 1 the other way, into the forms file. Waits, by message boxes, until a missing forms file is there; if the user
  // gives up, the init result is ENVAPP_INIT_TECHDB_FAILED. What the forms file can't do is reported in a box.
  void SetKVTechDBPath(int write);
  const CString& GetKVTechDBFormsName() const { return m_TechDBFormsName; }
  // Of the program or forms file that serves the database the whole path, the name up to its point, and the extension.
  CString GetKVTechDBFormsPath() const;
  CString GetKVNameOnlyOfTechDBForms() const;
  CString GetKVDataFileExtOfTechDBForms() const;
  void SetKVTechDBFormsName();
  CString GetKVNameOnlyOfTechDB() const;  // "TechDB"
  CString GetKVExtOfTechDB() const;       // empty for a server
  void SetKVTechDBName();
  // 1 if the stand-alone application serves it: the registry value "TechDBForms" reads "TechDB App". This is
  // configuration mode; else it is forms mode, with everything in a forms database.
  int GetConfigDataUseStatus() const { return m_bConfigData; }
  int Is64BitDatabaseInUse() const { return m_b64BitDatabase; }
  int IsSQLiteDatabaseInUse() const { return m_bSQLiteDatabase; }
  int Is64BitAccessInstalled() const { return m_b64BitAccess; }
  // Set these three anew, after a change of the active entry.
  void Set64BitDatabaseInUseStatus();
  void SetSQLiteDatabaseInUseStatus();
  void Set64BitAccessDatabaseInstallStatus();
  // Detects the installed Access editions anew and keeps them in the registry, if the active entry is of Access.
  void SetDatabaseInstallationData();
  // 1 if a server holds the database; the second is always 0 in forms mode.
  int IsConnectedToTechDBSQL() const;
  int IsConnectedToTechDBSQLServerDirectly() const;
  // The server and database as SERVER=x;DATABASE=y, without user and password; empty unless a server holds it.
  CString GetTechDBSQLInfo() const;
  // The same, or the active entry's file path; empty without an active entry, so always in forms mode.
  CString GetActiveDBname() const;
  // The list of "database.config" (share/utilities/tech_db_config_file.h), the environment's own. Read appends to it,
  // Update clears it first; both give the reader's result. UpdateDBConfigData is the list's CopyFrom, WriteDBConfigData
  // writes the active flags into the file: 1 if it was saved.
  QFTechDBConfigInfo* GetTechDBConfigInfo() { return &m_TechDBConfig; }
  const QFTechDBConfigInfo* GetTechDBConfigInfo() const { return &m_TechDBConfig; }
  QFTechDBConfigData* GetActiveTechDBConfigData() const { return m_TechDBConfig.GetActiveConfigData(); }
  int ReadDBConfigData();
  void ClearDBConfigData() { m_TechDBConfig.ClearTechDBInfo(); }
  int UpdateTechDBConfigInfo();
  int UpdateDBConfigData(const QFTechDBConfigInfo* info) { return m_TechDBConfig.CopyFrom(info); }
  int WriteDBConfigData() const;
  // The running database application's process, kept for other modules; 0xFFFFFFFF for none.
  DWORD GetTechDBProcessID() const { return m_TechDBProcessID; }
  void SetTechDBProcessID(DWORD id) { m_TechDBProcessID = id; }
  // Ends that process with exit code 999: nonzero if it was ended, and also if there is none.
  int KillTechDBProcess() const;

  // ---- user, time, switches

  // The log-on name, as it was at start.
  const CString& GetUserNameW() const { return m_UserName; }
  // Today's local date, "MM/dd/yyyy", and, despite its name, the local time of day, "HH:mm".
  CString GetCurrentDate() const;
  CString GetTickCount() const;
  // 1 if the environment variable "_KVDEBUG" read "YES", in any case, at start.
  int IsKVDebugEnabled() const { return m_bDebug; }
  // 1 if the flag is set and the environment variable "KV_TESTING" reads "YES", in any case, now.
  int IsKVRunningInTestMode() const;
  void ConfigureForTesting(int flag) { m_bTesting = flag; }
  int GetMultiSurfaceByID() const { return m_nMultiSurfaceByID; }

  // ---- kept for others

  void SetPartFileNameforRelativePathCreation(const CString& name) { m_PartFileName = name; }
  void SetIs3dSetUpSheet(int flag) { m_bIs3dSetUpSheet = flag; }
  int IsXMLReportwithRelativePathsNeeded() const { return !m_bIs3dSetUpSheet; }
  QFFeatMillExtractionMethods GetFeatureCreationStyle() const { return m_FeatureCreationStyle; }
  void SetFeatureCreationStyle(QFFeatMillExtractionMethods style) { m_FeatureCreationStyle = style; }
  int GetIsXMLSetUpSheet() const { return m_bXMLSetUpSheet; }
  void SetIsXMLSetUpSheet(int flag) { m_bXMLSetUpSheet = flag; }
  const CString& GetXMLSetUpSheetPath() const { return m_XMLSetUpSheetPath; }
  void SetXMLSetUpSheetPath(const CString& path) { m_XMLSetUpSheetPath = path; }
  // For reports that lie beside their part: the image folder, relative, and the part's name that was set.
  CString GetXMLReportRelativePathInfo() const;

  // The two window controls in the host's panes.
  CString GetTreeTabProgID() const;
  CString GetTaskPaneTabStringID() const;

 protected:
  CKVEnvApp();

  // The whole initialisation, in its fixed order.
  void Init();

  // Its parts. Each Set... of a switch writes the switch back if it is missing (share/env/feature_switches.h).
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
  void StoreLocation();
  void SetTechDBNamesAndFlags();
  void ExchangeTechDBPathWithForms(int write);
  int FormsFileNamesWideEdition() const;
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
  EnvAPP_Init_Result_e m_InitResult = ENVAPP_INIT_OK;
  QFDatabaseLang_e m_TechDBLang = QF_DBLANG_ENGLISH;
  CString m_NCEditorPath;
  CString m_NCEditorArguments;
  QFTechDBConfigInfo m_TechDBConfig;
  int m_nMultiSurfaceByID = 0;
};

// Links this library into the application's chain of resource modules. To be called once: a second call makes a second
// link.
KVSHARE_API void InitShareDll();

// The environment's GetKVPath: the install folder without its drive.
KVSHARE_API void KVGetInstallPath(CString& path);

// All three are CKVEnvApp::Instance and CKVEnvApp::DestroyInstance under the names that modules use.
KVSHARE_API CKVEnvApp* InitAppEnv();
KVSHARE_API CKVEnvApp* AppEnv();
KVSHARE_API void CloseAppEnv();

// A tool's path as another installation stored it, rewritten for this one: the folder of data and what the path has
// from the word "Tooling" on. 0 if the word is not in the path or begins it.
KVSHARE_API int GetCorrectToolFilePath(const CString& path, CString& result);
