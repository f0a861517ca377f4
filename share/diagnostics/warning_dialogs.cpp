#include "share/diagnostics/warning_dialogs.h"

#include "share/core/document_callbacks.h"
#include "share/diagnostics/exception_handler.h"
#include "share/diagnostics/outcome.h"
#include "share/env/product_identity.h"
#include "share/settings/settings_key.h"

IMPLEMENT_DYNAMIC(QFWarnDontShowDlg, CDialog)
IMPLEMENT_DYNAMIC(QFMessageDontShowDlg, QFWarnDontShowDlg)

namespace {

constexpr unsigned kHighestHelpId = 0xFFFFFFFE;

CString LoadedText(int stringId) {
  CString text;
  text.LoadString(UINT(stringId));
  return text;
}

}  // namespace

// ---- QFWarnDontShowDlg

BEGIN_MESSAGE_MAP(QFWarnDontShowDlg, CDialog)
ON_BN_CLICKED(kDontShowCheckBox, OnCheckWarning)
ON_BN_CLICKED(kUpdateCheckBox, OnCheckUpdateToolSelection)
ON_BN_CLICKED(IDHELP, OnHelp)
END_MESSAGE_MAP()

QFWarnDontShowDlg::QFWarnDontShowDlg(int dialogId, const CString& warnKey, const CString& updateKey,
                                     QFSettingsKey* settings, int helpId, CWnd* parent)
    : CDialog(UINT(dialogId), parent),
      m_pGuard(std::make_unique<QFExceptionHandler>(/*writeReport=*/1, /*dumpMiniFile=*/1)),
      m_nDialogId(dialogId),
      m_WarnKey(warnKey),
      m_UpdateKey(updateKey),
      m_pSettings(settings),
      m_nHelpId(helpId) {}

QFWarnDontShowDlg::~QFWarnDontShowDlg() = default;

BOOL QFWarnDontShowDlg::OnInitDialog() {
  CDialog::OnInitDialog();
  if (!m_pSettings) m_pSettings = GetAppSettingsCB();
  int shown = 1, updates = 0;
  if (m_pSettings) m_pSettings->GetValue(m_WarnKey, shown);
  if (shown == 0) {
    EndDialog(IDOK);
    return TRUE;
  }
  if (!m_UpdateKey.IsEmpty() && m_pSettings) {
    m_pSettings->GetValue(m_UpdateKey, updates);
    CheckDlgButton(kUpdateCheckBox, updates != 0 ? BST_CHECKED : BST_UNCHECKED);
  } else if (CWnd* const box = GetDlgItem(kUpdateCheckBox)) {
    box->ShowWindow(SW_HIDE);
  }
  SetWindowText(GetProductName());
  CWnd* const help = GetDlgItem(IDHELP);
  if (help && unsigned(m_nHelpId) > kHighestHelpId) help->EnableWindow(FALSE);
  return TRUE;
}

void QFWarnDontShowDlg::StoreCheckBox(int box, const CString& key, int checkedValue) {
  const bool checked = IsDlgButtonChecked(box) == BST_CHECKED;
  if (m_pSettings) m_pSettings->SetValue(key, checked ? checkedValue : 1 - checkedValue);
}

void QFWarnDontShowDlg::OnCheckWarning() { StoreCheckBox(kDontShowCheckBox, m_WarnKey, /*checkedValue=*/0); }

void QFWarnDontShowDlg::OnCheckUpdateToolSelection() {
  StoreCheckBox(kUpdateCheckBox, m_UpdateKey, /*checkedValue=*/1);
}

void QFWarnDontShowDlg::OnHelp() { Outcome::ShowHelp(static_cast<unsigned long>(unsigned(m_nHelpId))); }

BOOL QFWarnDontShowDlg::OnHelpInfo(HELPINFO*) {
  OnHelp();
  return TRUE;
}

// ---- QFMessageDontShowDlg

QFMessageDontShowDlg::QFMessageDontShowDlg(int stringId, const CString& key, QFSettingsKey* settings, int helpId,
                                           CWnd* parent)
    : QFMessageDontShowDlg(LoadedText(stringId), key, settings, helpId, parent) {}

QFMessageDontShowDlg::QFMessageDontShowDlg(const CString& text, const CString& key, QFSettingsKey* settings, int helpId,
                                           CWnd* parent)
    : QFWarnDontShowDlg(kDialog, key, CString(), settings, helpId, parent), m_Text(text) {}

BOOL QFMessageDontShowDlg::OnInitDialog() {
  const BOOL focus = QFWarnDontShowDlg::OnInitDialog();
  if (!m_Text.IsEmpty()) SetDlgItemText(kText, m_Text);
  SetWindowText(GetProductName());
  return focus;
}
