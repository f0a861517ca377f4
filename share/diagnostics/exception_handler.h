// QFExceptionHandler: a guard that writes a text report and a memory dump when the program crashes.
//
//   QFExceptionHandler guard(/*writeReport=*/1, /*dumpMiniFile=*/0);
//
// A crash is not swallowed: after the files are written it goes its way, to the host's own handlers or to the end of
// the process. The files are NAME-NUMBER.txt and NAME-NUMBER.dmp in the guard's folder; NAME is the active document's
// title without its extension, NUMBER counts in the process. Nothing is written unless the main module's callback
// permits it (IsCrashReportPermittedCB). docs/crashes.md describes both files and every kind of crash.
//
// Guards nest, the innermost is in charge. Destroy a guard on the thread that made it, in reverse order. On Linux the
// first guard that may write starts a helper process, which writes the files and ends with this process.
#pragma once

#include <memory>

#include "framework/text.h"
#include "platform/exceptions.h"

struct CrashFolder;

class KVSHARE_API QFExceptionHandler {
 public:
  // 1 or 0 for each of the two files; the settings below overrule them.
  QFExceptionHandler(int writeReport, int dumpMiniFile);
  ~QFExceptionHandler();
  QFExceptionHandler(const QFExceptionHandler&) = delete;
  QFExceptionHandler& operator=(const QFExceptionHandler&) = delete;

  // Reads the values "ExcpRpt", "ExcpDmp" (0 or 1), "ExcpPath" and "ExcpMiniDumpType" of the key
  // "Software\Zemlor\Kestrova\Debug"; a missing value is 0 or empty. 1 if there is such a key, otherwise 0 with
  // unchanged flags. Then an empty folder becomes that of the variable TEMP or, without it, the system's folder for
  // temporary files; a folder without a backslash at its end gets one.
  int RstoreSettingsFromRegistry();

  // Writes a dump into the current folder and goes on. Always 1.
  int DumpMiniFile();

  int GetDumpMiniFile() const { return m_nDumpMiniFile; }
  void SetDumpMiniFile(int dumpMiniFile);
  int GetWriteExceptionReport() const { return m_nWriteReport; }
  void SetWriteExceptionReport(int writeReport);
  // The folder of the files, with a backslash at its end.
  const CString& GetFilePath() const { return m_FilePath; }
  void SetFilePath(const CString& path);

  // For the whole process: what a dump has beside threads and stacks, as bits of MINIDUMP_TYPE. Each new guard sets it
  // to 0 and then to the setting.
  static _MINIDUMP_TYPE GetMiniDumpType();
  static void SetMiniDumpType(_MINIDUMP_TYPE type);
  // For the whole process: the texts that the user sees after a crash, if the document asks for a message. The names of
  // the files follow the first one.
  static CString GetDumpErrorMessage();
  static void SetDumpErrorMessage(const CString& message);
  static CString GetSaveAsErrorMessage();
  static void SetSaveAsErrorMessage(const CString& message);

 private:
  static void Translate(unsigned code, EXCEPTION_POINTERS* pointers);
  void Prepare();

  _se_translator_function m_pPreviousTranslator;
  int m_nDumpMiniFile;
  int m_nWriteReport;
  CString m_FilePath;
  QFExceptionHandler* m_pPrevious;
  std::unique_ptr<CrashFolder> m_pFolder;  // the folder in the forms that a crash needs
};
