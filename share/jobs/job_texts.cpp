// The properties of a job's record as values and texts: status, progress, step, times.
#include "platform/threads.h"
#include "share/core/dump.h"
#include "share/jobs/job_record.h"
#include "share/objects/job_lock.h"

namespace {

CString ClockText(unsigned hours, unsigned minutes, unsigned seconds) {
  CString text;
  text.Format(_T("%02d:%02d:%02d"), hours, minutes, seconds);
  return text;
}

CString TimeOfDay(__time64_t time) {
  std::tm local = {};
  if (_localtime64_s(&local, &time) != 0) return {};
  const int hour = local.tm_hour % 12 == 0 ? 12 : local.tm_hour % 12;
  return ClockText(unsigned(hour), unsigned(local.tm_min), unsigned(local.tm_sec));
}

// The time in units of 100 ns; 0 if it does not exist.
LONGLONG Units(const SYSTEMTIME& time) {
  FILETIME file = {};
  SystemTimeToFileTime(&time, &file);
  return LONGLONG(ULONGLONG(file.dwHighDateTime) << 32 | file.dwLowDateTime);
}

LPCTSTR TextOf(QFeThreadStatus status) {
  switch (status) {
    case eThreadNotStarted: return _T("eThreadNotStarted");
    case eThreadDone: return _T("eThreadDone");
    case eThreadRunning: return _T("eThreadRunning");
    case eThreadSuspended: return _T("eThreadSuspended");
    case eThreadTerminated: return _T("eThreadTerminated");
    case eThreadNotHandled: return _T("eThreadNotHandled");
    case eThreadDoneKeepData: return _T("eThreadDoneKeepData");
    case eThreadWaitingToRun: return _T("eThreadWaitingToRun");
    case eThreadWaitingForChild: return _T("eThreadWaitingForChild");
  }
  return _T("Nothing");
}

void DumpTime(FILE* file, LPCTSTR field, const SYSTEMTIME& time) {
  DumpPrint(file, _T("\n %s: %04d-%02d-%02d %02d:%02d:%02d"), field, time.wYear, time.wMonth, time.wDay, time.wHour,
            time.wMinute, time.wSecond);
}

}  // namespace

QFeThreadStatus QFThreadData::GetThreadStatus() const {
  SuspensionPoint();
  return m_eThreadStatus;
}

void QFThreadData::SetCommandParameter(void* param) {
  const JobLock lock;
  m_pCommandParameter = param;
}

CString QFThreadData::GetActionString() const {
  const JobLock lock;
  return m_ActionString;
}

void QFThreadData::SetActionString(const CString& text) {
  SuspensionPoint();
  const JobLock lock;
  m_ActionString = text;
}

CString QFThreadData::GetFailureText() const {
  const JobLock lock;
  return m_FailureText;
}

void QFThreadData::SetActionProgress(LONGLONG percent) {
  SuspensionPoint();
  m_nActionProgress = percent;
}

CString QFThreadData::GetActionProgressString() const {
  CString text;
  text.Format(_T("%d %s"), GetActionProgress(), _T("%"));
  return text;
}

CString QFThreadData::GetProcessName() const {
  QFObject* caller = m_pCallingObject;
  return caller ? caller->Name() : CString();
}

CString QFThreadData::GetCurrentAction() const {
  CString text;
  text.LoadString(m_nCommandContextID);
  return text;
}

CString QFThreadData::GetStartTimeStr() const {
  if (m_eThreadStatus == eThreadNotStarted) return {};
  const JobLock lock;
  return TimeOfDay(m_tStartTime);
}

CString QFThreadData::GetEndTimeStr() const {
  if (!HasResult()) return {};
  const JobLock lock;
  return TimeOfDay(m_tEndTime);
}

CString QFThreadData::GetTimeTaken() const {
  if (!HasResult()) return {};
  const JobLock lock;
  const unsigned seconds = DeltaTime(m_StartTime, m_EndTime);
  return ClockText(seconds / 3600, seconds / 60 % 60, seconds % 60);
}

unsigned QFThreadData::DeltaTime(SYSTEMTIME a, SYSTEMTIME b) { return unsigned((Units(b) - Units(a)) / 10'000'000); }

void QFThreadData::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFThreadData"), _T("Start"));
  DumpPrint(file, _T("\n Address of m_pDocument: %x"), static_cast<const void*>(m_pDocument));
  DumpPrint(file, _T("\n m_dwThreadID: %d"), GetThreadID());
  DumpPrint(file, _T("\n m_hThread: %x"), GetThreadHandle());
  DumpPrint(file, _T("\n m_eThreadStatus : %s"), TextOf(m_eThreadStatus));
  {
    const JobLock lock;
    DumpTime(file, _T("m_StartTime"), m_StartTime);
    DumpPrint(file, _T("\n m_tStartTime: %d"), m_tStartTime);
    DumpTime(file, _T("m_EndTime"), m_EndTime);
    DumpPrint(file, _T("\n m_tEndTime: %d"), m_tEndTime);
  }
  DumpPrint(file, _T("\n Address of m_pCallingObject: %x"), static_cast<const void*>(GetCallingObject()));
  DumpPrint(file, _T("\n Address of m_pCommandParameter: %x"), static_cast<const void*>(GetCommandParameter()));
  DumpPrint(file, _T("\n m_nCommandContextID: %d"), GetCommandContextID());
  DumpPrint(file, _T("\n m_ActionString: %s"), GetActionString());
  DumpPrint(file, _T("\n m_nActionProgress: %d"), GetActionProgress());
  DumpPrint(file, _T("\n m_eThreadType: %d"), int(GetThreadType()));
  DumpPrint(file, _T("\n m_eThreadEndType: %d"), int(GetThreadEndType()));
  DumpBanner(file, _T("QFThreadData"), _T("End"));
}
