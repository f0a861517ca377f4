// The library's way up: the functions that the main module registers at start, and the free functions through which
// everything here reaches the active document, the settings and the user.
//
// The main module calls qfshare_init and QFShareRegisterDocCBK once, ahead of the environment's first use and of every
// background job; each call replaces all its slots, and there is no way to unregister. After that any thread may call
// the functions below; what stands behind them is the main module's affair. A null slot gives the result told at each
// function, and nothing is called. Registering GetActiveDocument's slot is required all the same: without it the
// library has no document. Pointers that come back stay the main module's.
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

// The active document's object indexer and its post-processor objects at three levels. Always 1.
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

// ---- the helpers of qfshare_init; null if not registered

KVSHARE_API QFObjectIndexerHelper* qf_getActiveAutoIdHelper();
KVSHARE_API QFObject* qf_getActivePPMHelper();
KVSHARE_API QFObject* qf_getActiveBasePPMHelper();
KVSHARE_API QFObject* qf_getActiveCorePPMHelper();

// ---- document

// The active document; null if there is none.
KVSHARE_API QFObject* GetActiveDocument();
// The document that belongs to another one; null if not registered.
KVSHARE_API QFObject* GetCorrespondingDoc(QFObject* document);
// 1 while the active document is loaded completely; 0 if not registered.
KVSHARE_API int GetIsDocFullyLoaded();
// 1 if lengths are metric, also if not registered.
KVSHARE_API int IsMetricUnit();
// The id for the document's next new object; 0 if not registered.
KVSHARE_API unsigned long GetNextObjectIdCB();
KVSHARE_API CString GetStockGroupName();

// ---- settings; the trees stay the main module's, null if not registered

KVSHARE_API QFSettingsKey* GetActiveDocSettingsCB();
KVSHARE_API QFSettingsKey* GetAppSettingsCB();
KVSHARE_API QFFeedColorsSettings* GetAppFeedColorSettingsCB();

// ---- jobs and messages

// Long computations report their steps and ask, at their own pace, whether to stop. 0 if not registered. A job that was
// suspended stands here until it is resumed.
KVSHARE_API int QFProgressCallback(LONGLONG step);
KVSHARE_API int IsUserJobCancelled();
// 1 if the application runs without a user interface; 0 if not registered.
KVSHARE_API int gGetAppSilentModeFlag();
// Sets *flag to -1, yes, and lets the application clear it. A null flag does nothing.
KVSHARE_API void GetAppDisplayAlerts(short* flag);
// 1 if reports and memory dumps of a crash may be written; 0 if not registered.
KVSHARE_API int IsCrashReportPermittedCB();

// ---- product

KVSHARE_API ProductInfo* GetProductInfoCB();
// The main module's text of that number; empty if not registered.
KVSHARE_API CString GetProductSpecificStringCB(unsigned id);
KVSHARE_API CString GetProductSpecificString(unsigned id);

// The host's language by its name in small letters. Asked for once and kept to the end of the process; "english" if not
// registered. Setting it first means that it is never asked for. To be called by one thread at a time.
KVSHARE_API CString GetSolidWorksLangName();
KVSHARE_API void SetSolidWorksLangName(const CString& name);
