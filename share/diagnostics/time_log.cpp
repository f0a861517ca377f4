#include "share/diagnostics/time_log.h"

#include <memory>
#include <string>

#include "framework/time.h"
#include "platform/append_file.h"
#include "platform/clock.h"
#include "share/core/document_messages.h"
#include "share/core/registry_keys.h"
#include "share/diagnostics/internal/quietly.h"
#include "share/settings/settings_key.h"

std::atomic<int> KVTimeLog::g_bLogTimeFlag = 0;
std::atomic<int> KVTimeLog::g_eRegLogType = 0;
std::atomic<int> KVTimeLog::g_bLogTurretDataFlag = 0;
std::atomic<int> KVTimeLog::g_bLogASMTurnDataFlag = 0;

struct KVTimeLog::Measurement {
  CString m_sName;
  CTime m_startTime;
  DWORD m_nStartTicks = 0;
  CTime m_endTime;
  DWORD m_nEndTicks = 0;
  AppendFile m_file;
  int m_bEnabled = 0;
};

namespace {

bool IsLogged(LogType type) {
  if (!KVTimeLog::g_bLogTimeFlag) return false;
  const bool filtered = type >= KV_LOG_DESERIALIZE && type <= KV_LOG_COMMANDS;
  return !filtered || KVTimeLog::g_eRegLogType == type;
}

CTime Now() { return CurrentClock().time(); }

// The path of a time log; empty if the document's name can't be part of a file's name.
CString TimeLogPath(LogType type, int perDocument, const CString& document) {
  const bool known = type > KV_LOG_PLAIN && type <= KV_LOG_COMMANDS;
  const LPCTSTR name = kTimeLogFiles[known ? type : KV_LOG_PLAIN];
  if (!perDocument) return CString(kLogFolder) + name;
  if (document.FindOneOf(_T("\\/:")) >= 0) return {};
  return CString(kLogFolder) + (known ? name : kTimeLogStem) + _T("_") + document + _T(".txt");
}

void AppendTo(const CString& path, const CString& text) {
  AppendFile file;
  if (file.Open(path)) file.Write(ToUtf8(text));
}

LPCTSTR TurretText(int state) {
  constexpr LPCTSTR kTexts[] = {_T("NONE"), _T("REAR1"), _T("FRONT1"), _T("BOTH")};
  return state >= 0 && state <= 3 ? kTexts[state] : _T("");
}

void AppendAsmTurn(const CString& text) { AppendTo(CString(kLogFolder) + kAsmTurnLogFile, text); }

}  // namespace

void KVTimeLog::CheckRegistry() {
  Quietly([] {
    const std::pair<LPCTSTR, std::atomic<int>*> switches[] = {{kTimeLogSwitch, &g_bLogTimeFlag},
                                                              {kTimeLogTypeSwitch, &g_eRegLogType},
                                                              {kTurretLogSwitch, &g_bLogTurretDataFlag},
                                                              {kAsmTurnLogSwitch, &g_bLogASMTurnDataFlag}};
    QFSettingsKey key(_T("Debug"), kProductDebugKey);
    for (const auto& [name, flag] : switches) key.AddValue(name, 0);
    key.RestoreValuesFromRegistry();
    for (const auto& [name, flag] : switches) {
      int value = 0;
      key.GetValue(name, value);
      *flag = value;
    }
  });
}

void KVTimeLog::UpdateLogFlag(LogType type) {
  if (m_pMeasurement) m_pMeasurement->m_bEnabled = IsLogged(type);
}

CString KVTimeLog::GetDocName() {
  CString name;
  return SendToActiveDocument(QF_CORE_GET_DOC_TITLE, &name) ? name : CString(_T("Unknown Part"));
}

void KVTimeLog::Start(LPCTSTR name, LogType type, int perDocument) noexcept {
  Quietly([&] {
    m_pMeasurement = std::make_unique<Measurement>().release();
    UpdateLogFlag(type);
    Measurement& measurement = *m_pMeasurement;
    if (!measurement.m_bEnabled) return;
    measurement.m_sName = name;
    const CString document = GetDocName();
    if (measurement.m_file.Open(TimeLogPath(type, perDocument, document)))
      measurement.m_file.Write(ToUtf8(document + _T(" : ") + measurement.m_sName + _T("_Start\n")));
    measurement.m_startTime = Now();
    measurement.m_nStartTicks = CurrentClock().ticks();
  });
}

void KVTimeLog::Finish() noexcept {
  const std::unique_ptr<Measurement> measurement(std::exchange(m_pMeasurement, nullptr));
  if (!g_bLogTimeFlag || !measurement->m_bEnabled) return;
  measurement->m_endTime = Now();
  measurement->m_nEndTicks = CurrentClock().ticks();
  if (!measurement->m_file.IsOpen()) return;
  Quietly([&] {
    const CTimeSpan span = measurement->m_endTime - measurement->m_startTime;
    CString line = measurement->m_sName + _T("_End");
    line.AppendFormat(_T(" : %ld mins, %ld secs ; Total in MilliSecs: %ld\n"), span.GetTotalMinutes(),
                      span.GetSeconds(), LONGLONG(measurement->m_nEndTicks - measurement->m_nStartTicks));
    measurement->m_file.Write(ToUtf8(line));
  });
}

void KVTimeLog::DumpStr(const CString& text, LogType type, int perDocument) {
  if (!IsLogged(type)) return;
  Quietly([&] {
    const CString document = GetDocName();
    AppendTo(TimeLogPath(type, perDocument, document), document + _T(" Data : ") + text + _T("\n"));
  });
}

void KVTimeLog::DumpTurretData(const CString& text, int turretState, long line) {
  if (!g_bLogTurretDataFlag) return;
  Quietly([&] {
    CString row = text + _T("\t") + TurretText(turretState) + _T("\t");
    row.AppendFormat(_T("Line = %ld \n"), line);
    AppendTo(CString(kLogFolder) + kTurretLogFile, row);
  });
}

void KVTimeLog::DumpASMTurnData(const CString& text, long line) {
  if (!g_bLogASMTurnDataFlag) return;
  Quietly([&] {
    CString row = text;
    row.AppendFormat(_T("\tLine = %ld \n"), line);
    AppendAsmTurn(row);
  });
}

void KVTimeLog::DumpASMTurnData_CorePPM(const CString& text, int setups, int operationSetups,
                                        const CString& machineName, long line) {
  if (!g_bLogASMTurnDataFlag) return;
  Quietly([&] {
    CString rows = _T("CORE PPM Data:\n") + text;
    rows.AppendFormat(
        _T("\tNumber of Setups = %d \tNumber of Operation Setups = %d \tMachine Name = %s\tLine = %ld \n"), setups,
        operationSetups, machineName, line);
    AppendAsmTurn(rows);
  });
}

void KVTimeLog::DumpASMTurnData_Machine(const CString& text, const double* origin, const double axes[][3], long line) {
  if (!g_bLogASMTurnDataFlag) return;
  Quietly([&] {
    CString rows = _T("Machine Data:\n") + text;
    rows.AppendFormat(_T("\tLine = %ld \n"), line);
    const std::pair<LPCTSTR, const double*> vectors[] = {
        {_T("Origin"), origin}, {_T("X-Axis"), axes[0]}, {_T("Y-Axis"), axes[1]}, {_T("Z-Axis"), axes[2]}};
    for (const auto& [name, vector] : vectors)
      rows.AppendFormat(_T("Coordinate System : %s = %f\t%f\t%f\n"), name, vector[0], vector[1], vector[2]);
    AppendAsmTurn(rows);
  });
}
