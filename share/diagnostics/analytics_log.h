// QFAnalyticsLogMgr: the library's front of the usage analytics (companions/analytics/analytics.h). It knows whether
// events are allowed, and makes the standard events of product, host and documents.
//
// Events are allowed if the switch "LogAnalyticsData" of this release's debug key is not 0 (1 if it is missing) and the
// receiver of events agrees. Each operation returns the receiver's answer, 1 for a written event; 0 before Initialize,
// after Exit, while events are not allowed, and without a receiver. Nothing is reported to the user.
//
// The main module calls Initialize and Exit on its main thread while no other thread adds events. In between any thread
// may add one.
#pragma once

#include "framework/text.h"

class KVSHARE_API QFAnalyticsLogMgr {
 public:
  // Reads the switch and starts the receiver, which gets the argument. Returns 1 if events are allowed; a second call
  // returns 1 and does nothing.
  static int Initialize(int option);
  static int Exit();
  static int Reinitialize(int option);

  // Name, language of the technology database, version and build date of the product.
  static int AddProductData();
  // Name and version of the host CAD.
  static int AddCADData();
  static int AddCommandEvent(const CString& category, const CString& name);
  static int AddNumericEvent(const CString& category, const CString& name, const double& value);
  static int AddTextEvent(const CString& category, const CString& name, const CString& value);
  static int AddExceptionData(const CString& type, const CString& text, const CString& module, const CString& place);
  // A document could not be restored. The versions of the document are in the members below.
  static int AddDataRestoreFailedData();
  // The first call that writes its event is the only one of the process; later calls return 1.
  static int AddPrimeTurnUsage();
  static int AddVoluTurnUsage();

  // The document that is being restored. The code that reads it sets them.
  static CString m_strMajorversion;
  static CString m_strServicePack;
  static double m_dStorageVersion;

 private:
  static int m_bEnabled;
  static int m_bInitialized;
  static int m_bProductDataSent;
  static int m_bCADDataSent;
  static int m_bPrimeTurnSent;
  static int m_bVoluTurnSent;
};
