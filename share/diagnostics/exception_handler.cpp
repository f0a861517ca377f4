#include "share/diagnostics/exception_handler.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>

#include "platform/crash_helper.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "platform/threads.h"
#include "platform/time.h"
#include "share/core/document_callbacks.h"
#include "share/core/document_messages.h"
#include "share/core/registry_keys.h"
#include "share/diagnostics/internal/crash_answers.h"
#include "share/diagnostics/internal/crash_files.h"
#include "share/settings/settings_key.h"

// As the product shows it and as the system has it; both end in a separator.
struct CrashFolder {
  char shown[kCrashPathBytes];
  char system[kCrashPathBytes];
};

namespace {

constexpr DWORD kHelperLimit_ms = 30'000;
constexpr DWORD kMostPathUnits = 4096;

constinit std::atomic<QFExceptionHandler*> g_current = nullptr;
constinit std::atomic<int> g_counter = 0;
constinit std::atomic<_MINIDUMP_TYPE> g_dumpType = MiniDumpNormal;
constinit std::atomic<DWORD> g_documentThread = 0;  // of the first guard

// Filled while the process is healthy as far as possible; a fault fills the rest. One fault at a time.
constinit CrashRequest g_request = {};

CString& DumpMessage() {
  static CString message;
  return message;
}
CString& SaveAsMessage() {
  static CString message;
  return message;
}

LONGLONG LocalOffset() {
  const __time64_t now = std::time(nullptr);
  std::tm local = {};
  if (_localtime64_s(&local, &now) != 0) return 0;
  std::tm fields = {};
  _gmtime64_s(&fields, &now);
  fields.tm_isdst = local.tm_isdst;
  return now - _mktime64(&fields);
}

// "NAME-NUMBER.extension" after the folder.
template <std::size_t kBytes>
void ComposeFile(char (&field)[kBytes], const char* folder, const char* name, int number, const char* extension) {
  char digits[16] = {};
  std::to_chars(digits, digits + sizeof digits - 1, number);
  std::size_t length = 0;
  for (const char* const part : {folder, name, "-", static_cast<const char*>(digits), ".", extension}) {
    const std::size_t count = std::min(std::strlen(part), kBytes - 1 - length);
    std::memcpy(field + length, part, count);
    length += count;
  }
  field[length] = '\0';
}

void FillFault(EXCEPTION_POINTERS* pointers) {
  CrashFault& fault = g_request.fault;
  fault.process = GetCurrentProcessId();
  fault.thread = GetCurrentThreadId();
  fault.record = *pointers->ExceptionRecord;
  fault.context = *pointers->ContextRecord;
  SetField(g_request.comment, fault.record.ExceptionCode == EXCEPTION_OF_CPP ? UncaughtExceptionText() : "");
}

// The helper writes; without one the process itself, on Linux without what needs a healthy process.
void HandOver() {
  if (AskCrashHelper(&g_request, sizeof g_request, kHelperLimit_ms)) return;
  char module[1024] = {};
  if (kHasCrashHelper) {
    const bool is_wanted = g_request.reportFile[0] != '\0' || g_request.dumpFile[0] != '\0';
    if (is_wanted) WriteCrashFiles(g_request, nullptr, module);
    return;
  }
  const SystemTexts system = GatherSystemTexts();
  WriteCrashFiles(g_request, &system, module);
  ReportCrash(g_request, module);
}

}  // namespace

// ---- construction and settings

QFExceptionHandler::QFExceptionHandler(int writeReport, int dumpMiniFile)
    : m_nDumpMiniFile(dumpMiniFile), m_nWriteReport(writeReport), m_pFolder(std::make_unique<CrashFolder>()) {
  g_dumpType = MiniDumpNormal;
  DWORD nobody = 0;
  g_documentThread.compare_exchange_strong(nobody, GetCurrentThreadId());
  RstoreSettingsFromRegistry();
  m_pPrevious = g_current.exchange(this);
  m_pPreviousTranslator = SetExceptionTranslator(Translate);
}

QFExceptionHandler::~QFExceptionHandler() {
  g_current = m_pPrevious;
  SetExceptionTranslator(m_pPreviousTranslator);
}

int QFExceptionHandler::RstoreSettingsFromRegistry() {
  QFSettingsKey key(_T("Debug"), kProductDebugKey);
  const HKEY handle = key.GetHandleToKey(/*create=*/0, /*readOnly=*/1);
  CString path = m_FilePath;
  if (handle) {
    RegCloseKey(handle);
    key.AddValue(_T("ExcpRpt"), 0);
    key.AddValue(_T("ExcpDmp"), 0);
    key.AddValue(_T("ExcpPath"), CString());
    key.AddValue(_T("ExcpMiniDumpType"), 0);
    key.RestoreValuesFromRegistry();
    int type = 0;
    key.GetValue(_T("ExcpRpt"), m_nWriteReport);
    key.GetValue(_T("ExcpDmp"), m_nDumpMiniFile);
    key.GetValue(_T("ExcpPath"), path);
    key.GetValue(_T("ExcpMiniDumpType"), type);
    g_dumpType = _MINIDUMP_TYPE(type);
  }
  SetFilePath(path);
  Prepare();
  return handle ? 1 : 0;
}

void QFExceptionHandler::SetFilePath(const CString& path) {
  m_FilePath = path;
  TCHAR temporary[kMostPathUnits] = {};
  if (m_FilePath.IsEmpty()) {
    const DWORD length = GetEnvironmentVariableW(_T("TEMP"), temporary, kMostPathUnits);
    if (length == 0 || length >= kMostPathUnits) GetTempPathW(kMostPathUnits, temporary);
    const Text product = ProductPathFromSystem(ToUtf8(temporary));
    m_FilePath = product.c_str();
  }
  if (!m_FilePath.IsEmpty() && m_FilePath[m_FilePath.GetLength() - 1] != _T('\\')) m_FilePath += _T("\\");
  TCHAR full[kMostPathUnits] = {};  // the current folder may change until the crash
  const DWORD length = GetFullPathNameW(m_FilePath, kMostPathUnits, full, nullptr);
  std::string system = SystemPathFromProduct(length > 0 && length < kMostPathUnits ? full : m_FilePath.GetString());
  if (!system.empty() && system.back() != '/' && system.back() != '\\') system += '/';
  const std::string shown = ToUtf8(m_FilePath);
  SetField(m_pFolder->shown, shown);
  SetField(m_pFolder->system, system);
}

void QFExceptionHandler::SetDumpMiniFile(int dumpMiniFile) {
  m_nDumpMiniFile = dumpMiniFile;
  Prepare();
}

void QFExceptionHandler::SetWriteExceptionReport(int writeReport) {
  m_nWriteReport = writeReport;
  Prepare();
}

// A guard that may write prepares everything that a crash could not get any more.
void QFExceptionHandler::Prepare() {
  if (m_nDumpMiniFile == 0 && m_nWriteReport == 0) return;
  if (g_documentThread == GetCurrentThreadId()) KeepCrashAnswers();
  const std::string versions = VersionSection();
  SetField(g_request.versions, versions);
  g_request.localOffset = LocalOffset();
  if (IsCrashReportPermittedCB() != 0) StartCrashHelper();
}

_MINIDUMP_TYPE QFExceptionHandler::GetMiniDumpType() { return g_dumpType; }

void QFExceptionHandler::SetMiniDumpType(_MINIDUMP_TYPE type) { g_dumpType = type; }

CString QFExceptionHandler::GetDumpErrorMessage() { return DumpMessage(); }

void QFExceptionHandler::SetDumpErrorMessage(const CString& message) {
  DumpMessage() = message;
  SetField(g_request.dumpMessage, ToUtf8(message));
}

CString QFExceptionHandler::GetSaveAsErrorMessage() { return SaveAsMessage(); }

void QFExceptionHandler::SetSaveAsErrorMessage(const CString& message) {
  SaveAsMessage() = message;
  SetField(g_request.saveAsMessage, ToUtf8(message));
}

// ---- a crash

// Runs in the faulting thread, on Linux in a handler of signals.
void QFExceptionHandler::Translate(unsigned, EXCEPTION_POINTERS* pointers) {
  const CrashAnswers answers = AskInCrash();
  const QFExceptionHandler* const handler = g_current;
  if (!handler) return;
  const bool writes_dump = answers.isPermitted != 0 && handler->m_nDumpMiniFile != 0;
  const bool writes_report = answers.isPermitted != 0 && handler->m_nWriteReport != 0;
  const int number = g_counter++;
  FillFault(pointers);
  char name[256];
  CrashBaseName(answers.title, name);
  const CrashFolder& folder = *handler->m_pFolder;
  for (char* const field : {g_request.reportFile, g_request.reportName, g_request.dumpFile, g_request.dumpName})
    *field = '\0';
  if (writes_report) {
    ComposeFile(g_request.reportFile, folder.system, name, number, "txt");
    ComposeFile(g_request.reportName, folder.shown, name, number, "txt");
  }
  if (writes_dump) {
    ComposeFile(g_request.dumpFile, folder.system, name, number, "dmp");
    ComposeFile(g_request.dumpName, folder.shown, name, number, "dmp");
  }
  g_request.dumpType = g_dumpType;
  g_request.showMessage = (writes_dump || writes_report) && answers.areAlertsShown ? answers.showMessage : 0;
  g_request.isEventWanted = answers.areEventsOn;
  HandOver();
  ClearMessageFlag();
}

// ---- a dump on demand

int QFExceptionHandler::DumpMiniFile() {
  char name[256];
  CrashBaseName(ToUtf8(GetDocTitle()).c_str(), name);
  const int number = g_counter++;
  char relative[512];
  ComposeFile(relative, "", name, number, "dmp");
  TCHAR full[kMostPathUnits] = {};
  if (GetFullPathNameW(FromUtf8(relative), kMostPathUnits, full, nullptr) == 0) return 1;
  g_request.reportFile[0] = g_request.reportName[0] = '\0';
  SetField(g_request.dumpFile, SystemPathFromProduct(full));
  SetField(g_request.dumpName, relative);
  g_request.dumpType = g_dumpType;
  g_request.showMessage = 0;
  g_request.isEventWanted = 0;
  StartCrashHelper();
  RaiseBreakpoint(
      [](EXCEPTION_POINTERS* pointers, void*) {
        FillFault(pointers);
        HandOver();
      },
      nullptr);
  return 1;
}
