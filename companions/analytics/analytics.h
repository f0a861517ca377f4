// The usage analytics: QFAnalyticsManager gives the one receiver of events, an IQFAnalytics.
//
// This implementation appends each event as a line of JSON to a file of the user (companions/analytics/event_file.h)
// and has no network code. docs/analytics.md describes each field. Modules use QFAnalyticsLogMgr
// (share/diagnostics/analytics_log.h), which asks the switch "LogAnalyticsData" and calls this.
//
// Any thread may call. Each operation returns 1 if it is done, for an event: if its whole line is in the file, where it
// stays if the process ends now. Else 0, and nothing is written. Nothing is kept to be written later. No call throws.
#pragma once

#include "framework/text.h"

// The order of the operations is part of the interface.
class KVSHARE_API IQFAnalytics {
 public:
  virtual ~IQFAnalytics() = default;

  // Until Initialize and after Exit every event gives 0. Initialize is refused while the environment variable
  // DO_NOT_TRACK has a text other than "0". The argument has no meaning here.
  virtual int Initialize(int option) = 0;
  virtual int Exit() = 0;

  virtual int AddCommandEvent(const CString& category, const CString& name) = 0;
  virtual int AddNumericEvent(const CString& category, const CString& name, const double& value) = 0;
  virtual int AddTextEvent(const CString& category, const CString& name, const CString& value) = 0;
  virtual int AddProductData(const CString& name, const CString& language, const CString& version,
                             const CString& buildCode) = 0;
  // 1 between Initialize and Exit.
  virtual int IsInitialized() = 0;
  // Deletes all events.
  virtual int ClearEvents() = 0;
  virtual int AddExceptionData(const CString& type, const CString& text, const CString& module,
                               const CString& place) = 0;
};

class KVSHARE_API QFAnalyticsManager {
 public:
  static QFAnalyticsManager& GetInstance();

  // The receiver, which lives as long as the process. Never null here; other implementations may have none.
  IQFAnalytics* GetMWAnalytics();

  QFAnalyticsManager(const QFAnalyticsManager&) = delete;
  QFAnalyticsManager& operator=(const QFAnalyticsManager&) = delete;

 private:
  QFAnalyticsManager() = default;
};
