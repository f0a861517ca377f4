// The slots of the callbacks and the functions that call them.
#include "share/core/document_callbacks.h"

#include "platform/threads.h"

namespace {

struct Helpers {
  QFAutoIdHelperFn autoId;
  QFPPMHelperFn ppm;
  QFPPMHelperFn basePpm;
  QFPPMHelperFn corePpm;
};

struct DocumentSlots {
  int (*isMetricUnit)();
  unsigned long (*nextObjectId)();
  QFObject* (*activeDocument)();
  int (*message)(unsigned, char*&);
  int (*progress)(LONGLONG);
  int (*isUserJobCancelled)();
  QFSettingsKey* (*docSettings)();
  QFSettingsKey* (*appSettings)();
  QFFeedColorsSettings* (*appFeedColorSettings)();
  ProductInfo* (*productInfo)();
  CString (*productSpecificString)(unsigned);
  void (*displayAlerts)(short*);
  int (*isCrashReportPermitted)();
  CString (*stockGroupName)();
  QFObject* (*correspondingDoc)(QFObject*);
  CString (*solidWorksLangName)();
  int (*appSilentModeFlag)();
  int (*isDocFullyLoaded)();
};

// Written at start, before other threads exist; only read after that.
Helpers g_helpers = {};
DocumentSlots g_slots = {};

// Calls the slot; the fallback for an empty one.
template <class Result, class... Parameters>
Result Call(Result (*slot)(Parameters...), std::type_identity_t<Result> fallback,
            std::type_identity_t<Parameters>... arguments) {
  return slot ? slot(arguments...) : fallback;
}

CString& SolidWorksLangName() {
  static CString name;
  return name;
}

}  // namespace

// ---- registration

int qfshare_init(QFAutoIdHelperFn autoIdHelper, QFPPMHelperFn ppmHelper, QFPPMHelperFn basePpmHelper,
                 QFPPMHelperFn corePpmHelper) {
  g_helpers = {autoIdHelper, ppmHelper, basePpmHelper, corePpmHelper};
  return 1;
}

void QFShareRegisterDocCBK(int (*isMetricUnit)(), unsigned long (*nextObjectId)(), QFObject* (*activeDocument)(),
                           int (*message)(unsigned, char*&), int (*progress)(LONGLONG), int (*isUserJobCancelled)(),
                           QFSettingsKey* (*docSettings)(), QFSettingsKey* (*appSettings)(),
                           QFFeedColorsSettings* (*appFeedColorSettings)(), ProductInfo* (*productInfo)(),
                           CString (*productSpecificString)(unsigned), void (*displayAlerts)(short*),
                           int (*isCrashReportPermitted)(), CString (*stockGroupName)(),
                           QFObject* (*correspondingDoc)(QFObject*), CString (*solidWorksLangName)(),
                           int (*appSilentModeFlag)(), int (*isDocFullyLoaded)()) {
  g_slots = {isMetricUnit,
             nextObjectId,
             activeDocument,
             message,
             progress,
             isUserJobCancelled,
             docSettings,
             appSettings,
             appFeedColorSettings,
             productInfo,
             productSpecificString,
             displayAlerts,
             isCrashReportPermitted,
             stockGroupName,
             correspondingDoc,
             solidWorksLangName,
             appSilentModeFlag,
             isDocFullyLoaded};
}

// ---- helpers

QFObjectIndexerHelper* qf_getActiveAutoIdHelper() { return Call(g_helpers.autoId, nullptr); }
QFObject* qf_getActivePPMHelper() { return Call(g_helpers.ppm, nullptr); }
QFObject* qf_getActiveBasePPMHelper() { return Call(g_helpers.basePpm, nullptr); }
QFObject* qf_getActiveCorePPMHelper() { return Call(g_helpers.corePpm, nullptr); }

// ---- document

QFObject* GetActiveDocument() { return Call(g_slots.activeDocument, nullptr); }
QFObject* GetCorrespondingDoc(QFObject* document) { return Call(g_slots.correspondingDoc, nullptr, document); }
int GetIsDocFullyLoaded() { return Call(g_slots.isDocFullyLoaded, 0); }
int IsMetricUnit() { return Call(g_slots.isMetricUnit, 1); }
unsigned long GetNextObjectIdCB() { return Call(g_slots.nextObjectId, 0); }
CString GetStockGroupName() { return Call(g_slots.stockGroupName, CString()); }

// ---- settings

QFSettingsKey* GetActiveDocSettingsCB() { return Call(g_slots.docSettings, nullptr); }
QFSettingsKey* GetAppSettingsCB() { return Call(g_slots.appSettings, nullptr); }
QFFeedColorsSettings* GetAppFeedColorSettingsCB() { return Call(g_slots.appFeedColorSettings, nullptr); }

// ---- jobs and messages

int QFProgressCallback(LONGLONG step) {
  SuspensionPoint();
  return Call(g_slots.progress, 0, step);
}

int IsUserJobCancelled() {
  SuspensionPoint();
  return Call(g_slots.isUserJobCancelled, 0);
}

int SendMessageCB(unsigned stringId, char*& arguments) {
  return g_slots.message ? g_slots.message(stringId, arguments) : 0;
}

int gGetAppSilentModeFlag() { return Call(g_slots.appSilentModeFlag, 0); }

void GetAppDisplayAlerts(short* flag) {
  if (!flag) return;
  *flag = -1;
  if (g_slots.displayAlerts) g_slots.displayAlerts(flag);
}

int IsCrashReportPermittedCB() { return Call(g_slots.isCrashReportPermitted, 0); }

// ---- product

ProductInfo* GetProductInfoCB() { return Call(g_slots.productInfo, nullptr); }
CString GetProductSpecificStringCB(unsigned id) { return Call(g_slots.productSpecificString, CString(), id); }
CString GetProductSpecificString(unsigned id) { return GetProductSpecificStringCB(id); }

CString GetSolidWorksLangName() {
  CString& name = SolidWorksLangName();
  if (name.IsEmpty()) name = Call(g_slots.solidWorksLangName, CString(_T("english")));
  return name;
}

void SetSolidWorksLangName(const CString& name) { SolidWorksLangName() = name; }
