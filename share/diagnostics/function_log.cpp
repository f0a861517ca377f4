#include "share/diagnostics/function_log.h"

#include "platform/append_file.h"
#include "platform/clock.h"
#include "share/diagnostics/internal/quietly.h"
#include "share/diagnostics/log_files.h"
#include "share/env/feature_switches.h"

namespace {

constexpr LPCTSTR kTimeFormat = _T("%X %x");

CString TextOf(const CList<long>& values) {
  CString text;
  for (POSITION at = values.GetHeadPosition(); at;) {
    if (!text.IsEmpty()) text += _T(" ,");
    text.AppendFormat(_T("%ld"), values.GetNext(at));
  }
  return text;
}

}  // namespace

KVFunctionLog::KVFunctionLog(const CString& functionName)
    : m_FunctionName(functionName), m_StartTime(CurrentClock().time()) {
  Quietly([this] { m_LogText = _T("\n_Start time:") + m_StartTime.Format(kTimeFormat); });
}

KVFunctionLog::~KVFunctionLog() {
  Quietly([this] {
    if (!GetDebugRegistryVal(kFunctionLogSwitch, 0)) return;
    const CTime end = CurrentClock().time();
    m_LogText += _T("\nFunction Name: ") + m_FunctionName;
    m_LogText += _T("\nInput Values: ") + TextOf(m_InputValues);
    m_LogText += _T("\nOutput Values: ") + TextOf(m_OutputValues);
    m_LogText += _T("\n_End time:") + end.Format(kTimeFormat);
    m_LogText.AppendFormat(_T("\n_Elapsed time:%d sec\n"), (end - m_StartTime).GetTotalSeconds());
    AppendFile file;
    if (file.Open(CString(kLogFolder) + kFunctionLogFile)) file.Write(ToUtf8(m_LogText));
  });
}

void KVFunctionLog::AddValues(CList<long>& list, int count, std::initializer_list<long> values) {
  Quietly([&] {
    for (const long value : values)
      if (count-- > 0) list.AddTail(value);
  });
}
