// KVTimeLog: writes into a log file how long a scope takes, and single lines of data. Silent unless a developer
// switches it on (share/diagnostics/log_files.h).
//
//   KVTimeLog log(_T("Rebuild"), KV_LOG_COMMANDS, /*perDocument=*/0);
//
// appends "Bracket : Rebuild_Start" now, where Bracket is the active document, and at the end of the scope
// "Rebuild_End : 2 mins, 5 secs ; Total in MilliSecs: 125000". Without an active document that has a name, its name is
// "Unknown Part". The minutes have no limit of 60; minutes and seconds come from a clock of whole seconds, so a short
// scope can have 1 second and 10 milliseconds.
//
// No call throws or reports a failure: a file that can't be opened means no line. Lines of several threads and
// processes stay whole. Any thread may call. While a log is off, a call costs one test; a name that is a literal costs
// nothing.
#pragma once

#include <atomic>

#include "framework/text.h"
#include "share/diagnostics/log_files.h"

class KVSHARE_API KVTimeLog {
 public:
  // Reads the switches. Before the first call nothing is logged. The main module calls it at its start.
  static void CheckRegistry();

  // perDocument not 0: into a file of the active document's own.
  KVTimeLog(LPCTSTR name, LogType type, int perDocument) {
    if (g_bLogTimeFlag.load(std::memory_order_relaxed)) Start(name, type, perDocument);
  }
  KVTimeLog(const CString& name, LogType type, int perDocument) : KVTimeLog(name.GetString(), type, perDocument) {}
  KVTimeLog(const KVTimeLog&) = delete;
  KVTimeLog& operator=(const KVTimeLog&) = delete;
  virtual ~KVTimeLog() {
    if (m_pMeasurement) Finish();
  }

  // Appends "Bracket : " and so on: the document's name, " Data : " and the text.
  static void DumpStr(const CString& text, LogType type, int perDocument);
  // turretState: 0 none, 1 rear, 2 front, 3 both; no word for another number. line: a line of the caller's source.
  static void DumpTurretData(const CString& text, int turretState, long line);
  static void DumpASMTurnData(const CString& text, long line);
  static void DumpASMTurnData_CorePPM(const CString& text, int setups, int operationSetups, const CString& machineName,
                                      long line);
  // A coordinate system: its origin, and the directions of its X, Y and Z axes, three numbers each. Neither is null.
  static void DumpASMTurnData_Machine(const CString& text, const double* origin, const double axes[][3], long line);

  // The switches as CheckRegistry has read them.
  static std::atomic<int> g_bLogTimeFlag;
  static std::atomic<int> g_eRegLogType;
  static std::atomic<int> g_bLogTurretDataFlag;
  static std::atomic<int> g_bLogASMTurnDataFlag;

 protected:
  // Sets whether this object logs: the master switch is on, and the type is plain or the one that may log.
  void UpdateLogFlag(LogType type);
  static CString GetDocName();

 private:
  struct Measurement;

  void Start(LPCTSTR name, LogType type, int perDocument) noexcept;
  void Finish() noexcept;

  Measurement* m_pMeasurement = nullptr;  // owned; only if the master switch was on
};
