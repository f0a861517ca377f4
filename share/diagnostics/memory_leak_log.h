// KVMemoryLeakLog: the one text file for figures of memory, kMemoryLeakLogFile, if the switch kMemoryLeakLogSwitch is
// on when the object is built (share/diagnostics/log_files.h).
//
// Make the first request on one thread; one thread at a time may use the object. No call throws or reports a failure.
#pragma once

#include <cstdio>

#include "framework/text.h"

class KVSHARE_API KVMemoryLeakLog {
 public:
  // The one object, never null; the first call builds it. Destroying it closes the file.
  static KVMemoryLeakLog* GetInstance();
  static void DestroyInstance();

  // Begins an empty file in place of the former one.
  void StartLogging();
  // Writes the text as a format without arguments: "%%" becomes "%".
  void Dump(const CString& text);
  // Closes the file. After it StartLogging does nothing.
  void TerminateLogging();

  KVMemoryLeakLog(const KVMemoryLeakLog&) = delete;
  KVMemoryLeakLog& operator=(const KVMemoryLeakLog&) = delete;

 protected:
  KVMemoryLeakLog();
  virtual ~KVMemoryLeakLog();

  static KVMemoryLeakLog* m_pInstance;

 private:
  void Close();

  FILE* m_pFile = nullptr;
  int m_bEnabled = 0;
};
