// What the tests of messages share: a main module, answers from a file, and the cases that every presentation passes.
#pragma once

#include <gtest/gtest.h>

#include "framework/resources.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "platform/resources.h"
#include "share/core/document_callbacks.h"
#include "share/diagnostics/outcome.h"
#include "share/env/product_identity.h"
#include "tests/folders.h"
#include "tests/scratch.h"

namespace kvtest {

inline short g_alerts = -1;  // what the main module answers
inline ProductInfo* g_product = nullptr;
inline unsigned long g_helped = 0;  // the last help topic

// Registers a main module and the texts of a language for the rest of the process.
inline void UseLanguage(const std::string& language) {
  static CDynLinkLibrary* const texts = new CDynLinkLibrary(nullptr, nullptr);
  const Text path = ProductPathFromSystem(LibraryFile("lang/" + language + "/KVRESu.DLL").string());
  texts->m_hResource = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  QFShareRegisterDocCBK(
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, [] { return g_product; },
      [](unsigned id) { return id == 7 ? CString(_T("Own caption")) : CString(); },
      [](short* flag) { *flag = g_alerts; }, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  Outcome::SetShowHelp([](int command, unsigned long context, int flags) {
    g_helped = command == 1 && flags == 1 ? context : 0;
    return 1;
  });
}

// Boxes are answered from this text.
class Answers {
 public:
  explicit Answers(const std::string& text) {
    SetEnvironmentVariableW(_T("KV_ANSWERS"), FromUtf8(folder_.Write("answers", text).string()));
  }
  ~Answers() { SetEnvironmentVariableW(_T("KV_ANSWERS"), nullptr); }
  Answers(const Answers&) = delete;
  Answers& operator=(const Answers&) = delete;

 private:
  const ScratchFolder folder_;
};

struct BoxCase {
  int severity;
  std::vector<CString> labels;
  int focus;  // 0: not set
  unsigned long help;
  std::string press;     // in an answers file
  std::string typed;     // on a terminal; each line is an answer
  std::string question;  // on the terminal: the caption, and the last line
  unsigned result;
};

inline std::vector<BoxCase> BoxCases() {
  constexpr unsigned long none = Outcome::kNoHelp;
  const CString keep = _T("&Keep"), drop = _T("&Drop"), later = _T("&Later");
  return {
      {0, {}, 0, none, "OK", "\n", "Error|[O]K  Enter = OK", IDOK},
      {1, {}, 0, none, "Yes", "\n", "Warning|[Y]es  [N]o  Enter = Yes", IDYES},
      {1, {}, 0, none, "no", "n\n", "Warning|[Y]es  [N]o  Enter = Yes", IDNO},
      {2, {}, 0, none, "Cancel", "x\nCancel\n", "Warning|[Y]es  [N]o  [C]ancel  Enter = Yes", IDCANCEL},
      {3, {}, 0, none, "close", "o\n", "Information|[O]K  Enter = OK", IDOK},
      {4, {}, 0, none, "#7", "N\n", "Information|[Y]es  [N]o  Enter = Yes", IDNO},
      {5, {}, 0, none, "close", "c\n", "Information|[Y]es  [N]o  [C]ancel  Enter = Yes", IDCANCEL},
      {1, {keep, drop}, 0, none, "Drop", "d\n", "Warning|[K]eep  [D]rop  Enter = Keep", IDNO},
      {1, {keep, drop}, IDNO, none, "No", "\n", "Warning|[K]eep  [D]rop  Enter = Drop", IDNO},
      {1, {keep, drop}, 0, none, "Yes", "\n", "Warning|[K]eep  [D]rop  Enter = Keep", IDYES},
      {2, {keep, drop, later}, 0, none, "Later", "l\n", "Warning|[K]eep  [D]rop  [L]ater  Enter = Keep", IDCANCEL},
      {4, {}, IDNO, none, "Yes", "\n", "Information|[Y]es  [N]o  Enter = Yes", IDYES},
      {1, {keep, drop}, 0, none, "Drop", "d\n", "Warning|[K]eep  [D]rop  Enter = Drop", IDNO},
      {1, {}, 0, 42, "Help, Yes", "h\ny\n", "Warning|[Y]es  [N]o  [H]elp  Enter = Yes", IDYES},
      {2,
       {keep, drop, later},
       0,
       42,
       "Help, Cancel",
       "h\nc\n",
       "Warning|[K]eep  [D]rop  [C]ancel  [H]elp  Enter = Keep",
       IDCANCEL},
      {6, {}, 0, none, "", "", "", Outcome::kNoBox},
  };
}

// Shows the case's box.
inline unsigned Show(const BoxCase& row) {
  Outcome outcome(0, SeverityIndex(row.severity), 0, row.help);
  if (row.labels.size() == 2) outcome.SetMessageBoxButtonNewLabels(row.labels[0], row.labels[1]);
  if (row.labels.size() == 3) outcome.SetMessageBoxButtonNewLabels(row.labels[0], row.labels[1], row.labels[2]);
  if (row.focus) outcome.SetMessageBoxButtonFocus(row.focus);
  return outcome.Display(_T("Delete\nit?"));
}

}  // namespace kvtest
