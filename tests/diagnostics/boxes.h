// What the tests of messages share: a main module, answers from a file, and the cases that every presentation passes.
#pragma once

#include <gtest/gtest.h>

#include "framework/resources.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "platform/resources.h"
#include "share/core/document_callbacks.h"
#include "share/diagnostics/outcome.h"
#include "share/diagnostics/warning_dialogs.h"
#include "share/env/product_identity.h"
#include "share/settings/settings_key.h"
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
  std::string keys;      // on an X server; "click 7" clicks that button
  std::string question;  // on the terminal: the caption, and the last line
  unsigned result;
};

inline std::vector<BoxCase> BoxCases() {
  constexpr unsigned long none = Outcome::kNoHelp;
  const CString keep = _T("&Keep"), drop = _T("&Drop"), later = _T("&Later");
  return {
      {0, {}, 0, none, "OK", "\n", "Return", "Error|[O]K  Enter = OK", IDOK},
      {1, {}, 0, none, "Yes", "\n", "Return", "Warning|[Y]es  [N]o  Enter = Yes", IDYES},
      {1, {}, 0, none, "no", "n\n", "Escape alt+n", "Warning|[Y]es  [N]o  Enter = Yes", IDNO},
      {2, {}, 0, none, "Cancel", "x\nCancel\n", "Escape", "Warning|[Y]es  [N]o  [C]ancel  Enter = Yes", IDCANCEL},
      {3, {}, 0, none, "close", "o\n", "Escape", "Information|[O]K  Enter = OK", IDOK},
      {4, {}, 0, none, "#7", "N\n", "click 7", "Information|[Y]es  [N]o  Enter = Yes", IDNO},
      {5, {}, 0, none, "close", "c\n", "Tab Tab Return", "Information|[Y]es  [N]o  [C]ancel  Enter = Yes", IDCANCEL},
      {1, {keep, drop}, 0, none, "Drop", "d\n", "alt+d", "Warning|[K]eep  [D]rop  Enter = Keep", IDNO},
      {1, {keep, drop}, IDNO, none, "No", "\n", "Return", "Warning|[K]eep  [D]rop  Enter = Drop", IDNO},
      {1, {keep, drop}, 0, none, "Yes", "\n", "Return", "Warning|[K]eep  [D]rop  Enter = Keep", IDYES},
      {2,
       {keep, drop, later},
       0,
       none,
       "Later",
       "l\n",
       "click 2",
       "Warning|[K]eep  [D]rop  [L]ater  Enter = Keep",
       IDCANCEL},
      {4, {}, IDNO, none, "Yes", "\n", "space", "Information|[Y]es  [N]o  Enter = Yes", IDYES},
      {1, {keep, drop}, 0, none, "Drop", "d\n", "space", "Warning|[K]eep  [D]rop  Enter = Drop", IDNO},
      {1, {}, 0, 42, "Help, Yes", "h\ny\n", "click 9 alt+y", "Warning|[Y]es  [N]o  [H]elp  Enter = Yes", IDYES},
      {2,
       {keep, drop, later},
       0,
       42,
       "Help, Cancel",
       "h\nc\n",
       "F1 click 2",
       "Warning|[K]eep  [D]rop  [C]ancel  [H]elp  Enter = Keep",
       IDCANCEL},
      {6, {}, 0, none, "", "", "", "", Outcome::kNoBox},
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

// A dialog that can be stopped: 1601 with its own text, or 1602 with the second check box.
struct DialogCase {
  bool message;
  std::string language;
  int shown, updates, help;
  std::string press, typed, keys;
  std::string question;  // on the terminal, after the title: its first or last lines
  int result, shown_after, updates_after;
};

inline std::vector<DialogCase> DialogCases() {
  const std::string german = "Werkzeugauswahl dieser Operationen aktualisieren";
  return {
      {true, "English", 1, 0, -1, "OK", "\n", "Return",
       "Delete\nit?\n( ) [D]o not show this message again\n[O]K  Enter = OK: ", IDOK, 1, 0},
      {true, "English", 1, 0, 42, "Do not show this message again, Help, OK", "d\nh\no\n", "alt+d alt+h click 1",
       "(x) [D]o not show this message again\n[O]K  [H]elp  Enter = Help: ", IDOK, 0, 0},
      {true, "English", 1, 0, 42, "#1491, #1491, close", "d\nd\n#", "click 1491 space Escape",
       "( ) [D]o not show this message again\n[O]K  [H]elp  Enter = OK: ", IDCANCEL, 1, 0},
      {true, "English", 0, 0, -1, "", "", "", "", IDOK, 0, 0},
      {false, "German", 1, 1, 42, german + ", Abbrechen", "w\na\n", "alt+w Escape",
       "(x) [W]erkzeugauswahl dieser Operationen aktualisieren\n( ) Diese Warnung [n]icht mehr anzeigen\n"
       "[O]K  [A]bbrechen  [H]ilfe  Enter = OK: ",
       IDCANCEL, 1, 0},
      {false, "German", 1, 0, 42, german + ", #1491, OK", "w\nn\nok\n", "click 1631 alt+n Return",
       "(x) Diese Warnung [n]icht mehr anzeigen\n", IDOK, 0, 1},
  };
}

struct DialogResult {
  int result, shown, updates;
  bool operator==(const DialogResult&) const = default;
};

// Shows the case's dialog with settings of its own.
inline DialogResult Show(const DialogCase& row) {
  UseLanguage(row.language);
  QFSettingsKey settings(_T("Test"), CString());
  settings.AddValue(_T("Warn"), row.shown);
  settings.AddValue(_T("Update"), row.updates);
  DialogResult result = {};
  if (row.message) {
    QFMessageDontShowDlg dialog(CString(_T("Delete\nit?")), _T("Warn"), &settings, row.help);
    result.result = int(dialog.DoModal());
  } else {
    QFWarnDontShowDlg dialog(1602, _T("Warn"), _T("Update"), &settings, row.help);
    result.result = int(dialog.DoModal());
  }
  settings.GetValue(_T("Warn"), result.shown);
  settings.GetValue(_T("Update"), result.updates);
  return result;
}

}  // namespace kvtest
