#include "share/diagnostics/memory_leak_log.h"

#include <utility>

#include "platform/files.h"
#include "share/diagnostics/internal/quietly.h"
#include "share/diagnostics/log_files.h"
#include "share/env/feature_switches.h"

KVMemoryLeakLog* KVMemoryLeakLog::m_pInstance = nullptr;

KVMemoryLeakLog* KVMemoryLeakLog::GetInstance() {
  if (!m_pInstance) m_pInstance = new KVMemoryLeakLog;
  return m_pInstance;
}

void KVMemoryLeakLog::DestroyInstance() { delete std::exchange(m_pInstance, nullptr); }

KVMemoryLeakLog::KVMemoryLeakLog() {
  Quietly([this] { m_bEnabled = GetVersionIndependentDebugRegistryVal(kMemoryLeakLogSwitch, 0); });
}

KVMemoryLeakLog::~KVMemoryLeakLog() { Close(); }

void KVMemoryLeakLog::StartLogging() {
  if (!m_bEnabled) return;
  Close();
  Quietly([this] { m_pFile = _wfopen(CString(kLogFolder) + kMemoryLeakLogFile, _T("wb")); });
}

void KVMemoryLeakLog::Dump(const CString& text) {
  if (!m_bEnabled || !m_pFile) return;
  Quietly([&] {
    CString formatted;
    formatted.Format(text);
    const std::string bytes = ToUtf8(formatted);
    std::fwrite(bytes.data(), 1, bytes.size(), m_pFile);
    std::fflush(m_pFile);
  });
}

void KVMemoryLeakLog::TerminateLogging() {
  m_bEnabled = 0;
  Close();
}

void KVMemoryLeakLog::Close() {
  if (m_pFile) std::fclose(std::exchange(m_pFile, nullptr));
}
