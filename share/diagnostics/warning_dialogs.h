// QFWarnDontShowDlg: a dialog with a check box that stops it from appearing again. QFMessageDontShowDlg: the same for a
// message.
//
// The check box is a setting: 1 shows the dialog, 0 does not. The module that declares it gives it the default 1. A
// change is in the settings tree at once; the tree's owner saves it.
#pragma once

#include <memory>

#include "framework/dialog.h"

class QFExceptionHandler;
class QFSettingsKey;

// DoModal returns IDOK at once if the warning key is 0.
class KVSHARE_API QFWarnDontShowDlg : public CDialog {
  DECLARE_DYNAMIC(QFWarnDontShowDlg)

 public:
  static constexpr int kDontShowCheckBox = 1491;
  static constexpr int kUpdateCheckBox = 1631;

  // updateKey: the setting of the second check box, which an empty name hides. settings: the tree with both settings;
  // null for the application settings. helpId: the topic of the Help button; -1 disables it.
  QFWarnDontShowDlg(int dialogId, const CString& warnKey, const CString& updateKey, QFSettingsKey* settings, int helpId,
                    CWnd* parent = nullptr);
  ~QFWarnDontShowDlg() override;

 protected:
  BOOL OnInitDialog() override;
  void OnCheckWarning();
  void OnCheckUpdateToolSelection();
  void OnHelp();
  BOOL OnHelpInfo(HELPINFO* request) override;
  DECLARE_MESSAGE_MAP()

 private:
  // Stores whether the box is checked; checkedValue is the number for that.
  void StoreCheckBox(int box, const CString& key, int checkedValue);

  std::unique_ptr<QFExceptionHandler> m_pGuard;  // writes both files of a crash
  [[maybe_unused]] int m_nDialogId;              // kept for existing modules
  CString m_WarnKey, m_UpdateKey;
  QFSettingsKey* m_pSettings;
  int m_nHelpId;
};

// Dialog 1601 without a second check box.
class KVSHARE_API QFMessageDontShowDlg : public QFWarnDontShowDlg {
  DECLARE_DYNAMIC(QFMessageDontShowDlg)

 public:
  static constexpr int kDialog = 1601;
  static constexpr int kText = 58437;

  // The text, or string number `stringId` of the language library; an empty text leaves that of the template.
  QFMessageDontShowDlg(int stringId, const CString& key, QFSettingsKey* settings, int helpId, CWnd* parent = nullptr);
  QFMessageDontShowDlg(const CString& text, const CString& key, QFSettingsKey* settings, int helpId,
                       CWnd* parent = nullptr);

 protected:
  BOOL OnInitDialog() override;

 private:
  CString m_Text;
};
