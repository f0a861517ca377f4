// Callbacks into the main module. The library is linked below the main module and can't call it; the functions of this
// header call the functions that the main module registers.
//
// Call qfshare_init and QFShareRegisterDocCBK once, before InitAppEnv and before any job starts. Each call replaces all
// its slots; there is no way to unregister. After that any thread may call the functions below, so the callbacks must
// be safe on any thread: progress and isUserJobCancelled are called from background jobs. The main module owns all
// returned pointers.
//
// Every slot may be null: then nothing is called, and the function has the result in the last column. "Needed for" says
// what this library lacks without the callback; "modules" means that only other modules call the function.
//
//      callback                 called by                   needed for                           if null
//   qfshare_init
//    1 autoIdHelper             qf_getActiveAutoIdHelper    registering new nodes                null
//    2 ppmHelper                qf_getActivePPMHelper       modules                              null
//    3 basePpmHelper            qf_getActiveBasePPMHelper   modules                              null
//    4 corePpmHelper            qf_getActiveCorePPMHelper   modules                              null
//   QFShareRegisterDocCBK
//    1 isMetricUnit             IsMetricUnit                modules                              1
//    2 nextObjectId             GetNextObjectIdCB           ids of new nodes                     0: nodes have no id
//    3 activeDocument           GetActiveDocument           any work with documents, all core    null: no document,
//                                                           messages, loading old documents      storage version 38.0
//    4 message                  QFMessageCallback           modules                              0
//    5 progress                 QFProgressCallback          progress of modules' computations    0
//    6 isUserJobCancelled       IsUserJobCancelled          cancelling modules' computations     0: never cancelled
//    7 docSettings              GetActiveDocSettingsCB      document settings                    null: defaults
//    8 appSettings              GetAppSettingsCB            application settings, loading        null: defaults or the
//                                                           machines                             registry
//    9 appFeedColorSettings     GetAppFeedColorSettingsCB   modules                              null
//   10 productInfo              GetProductInfoCB            the product's name in texts          null
//   11 productSpecificString    GetProductSpecificStringCB  modules                              empty text
//   12 displayAlerts            GetAppDisplayAlerts         modules                              the flag is -1
//   13 isCrashReportPermitted   IsCrashReportPermittedCB    modules                              0: not permitted
//   14 stockGroupName           GetStockGroupName           modules                              empty text
//   15 correspondingDoc         GetCorrespondingDoc         modules                              null
//   16 solidWorksLangName       GetSolidWorksLangName       the language folder for the host     "english"
//   17 appSilentModeFlag        gGetAppSilentModeFlag       modules                              0: with user interface
//   18 isDocFullyLoaded         GetIsDocFullyLoaded         modules                              0
#pragma once

#include "framework/text.h"

class QFFeedColorsSettings;
class QFObject;
class QFObjectIndexerHelper;
class QFSettingsKey;
struct ProductInfo;

// ---- registration

using QFAutoIdHelperFn = QFObjectIndexerHelper* (*)();
using QFPPMHelperFn = QFObject* (*)();

// Registers the active document's object indexer and its post-processor objects at three levels. Always 1.
KVSHARE_API int qfshare_init(QFAutoIdHelperFn autoIdHelper, QFPPMHelperFn ppmHelper, QFPPMHelperFn basePpmHelper,
                             QFPPMHelperFn corePpmHelper);

KVSHARE_API void QFShareRegisterDocCBK(int (*isMetricUnit)(),                                // 1
                                       unsigned long (*nextObjectId)(),                      // 2
                                       QFObject* (*activeDocument)(),                        // 3
                                       int (*message)(unsigned stringId, char*& arguments),  // 4
                                       int (*progress)(LONGLONG step),                       // 5
                                       int (*isUserJobCancelled)(),                          // 6
                                       QFSettingsKey* (*docSettings)(),                      // 7
                                       QFSettingsKey* (*appSettings)(),                      // 8
                                       QFFeedColorsSettings* (*appFeedColorSettings)(),      // 9
                                       ProductInfo* (*productInfo)(),                        // 10
                                       CString (*productSpecificString)(unsigned id),        // 11
                                       void (*displayAlerts)(short* flag),                   // 12
                                       int (*isCrashReportPermitted)(),                      // 13
                                       CString (*stockGroupName)(),                          // 14
                                       QFObject* (*correspondingDoc)(QFObject* document),    // 15
                                       CString (*solidWorksLangName)(),                      // 16
                                       int (*appSilentModeFlag)(),                           // 17
                                       int (*isDocFullyLoaded)());                           // 18

// ---- the helpers of qfshare_init

KVSHARE_API QFObjectIndexerHelper* qf_getActiveAutoIdHelper();
KVSHARE_API QFObject* qf_getActivePPMHelper();
KVSHARE_API QFObject* qf_getActiveBasePPMHelper();
KVSHARE_API QFObject* qf_getActiveCorePPMHelper();

// ---- document

// The active document. Null if no document is active.
KVSHARE_API QFObject* GetActiveDocument();
// The document that the main module has paired with the given one, or null.
KVSHARE_API QFObject* GetCorrespondingDoc(QFObject* document);
// 1 if the active document is completely loaded.
KVSHARE_API int GetIsDocFullyLoaded();
// 1 if lengths are metric.
KVSHARE_API int IsMetricUnit();
// The id for the next new object of the active document; 0: no id.
KVSHARE_API unsigned long GetNextObjectIdCB();
KVSHARE_API CString GetStockGroupName();

// ---- settings; the main module owns the trees, which may be null

KVSHARE_API QFSettingsKey* GetActiveDocSettingsCB();
KVSHARE_API QFSettingsKey* GetAppSettingsCB();
KVSHARE_API QFFeedColorsSettings* GetAppFeedColorSettingsCB();

// ---- jobs and messages

// Long computations call these from time to time: to report a step, and to learn whether to stop (1). In the thread of
// a suspended job both block until the job is resumed.
KVSHARE_API int QFProgressCallback(LONGLONG step);
KVSHARE_API int IsUserJobCancelled();
// Passes a numbered message and its arguments to the main module and returns its answer. QFMessageCallback
// (share/diagnostics/message_callback.h) packs the arguments.
KVSHARE_API int SendMessageCB(unsigned stringId, char*& arguments);
// 1 if the application runs without a user interface.
KVSHARE_API int gGetAppSilentModeFlag();
// Whether message boxes may be shown: sets *flag to -1 (yes), then the callback may set it to 0. Does nothing for null.
KVSHARE_API void GetAppDisplayAlerts(short* flag);
// 1 if crash reports and memory dumps may be written.
KVSHARE_API int IsCrashReportPermittedCB();

// ---- product

KVSHARE_API ProductInfo* GetProductInfoCB();
// The main module's text of that id. Two names for one function.
KVSHARE_API CString GetProductSpecificStringCB(unsigned id);
KVSHARE_API CString GetProductSpecificString(unsigned id);

// The host's language, its English name in small letters. The first call asks the callback; the answer is kept until
// the process ends, unless it is empty. After a Set with a text the callback is not asked. One thread at a time.
KVSHARE_API CString GetSolidWorksLangName();
KVSHARE_API void SetSolidWorksLangName(const CString& name);
