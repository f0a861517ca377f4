#include "share/diagnostics/outcome.h"

#include <utility>

#include "platform/threads.h"
#include "share/core/document_callbacks.h"
#include "share/core/registry_keys.h"
#include "share/diagnostics/application_access.h"
#include "share/env/product_identity.h"
#include "share/settings/settings_key.h"

CString Outcome::m_strIDYES, Outcome::m_strIDNO, Outcome::m_strIDCancel;
int Outcome::m_buttonID = IDYES;
HHOOK Outcome::m_hMsgBoxHook = nullptr;
Outcome::ShowHelpFn Outcome::m_pShowHelp = nullptr;

namespace {

struct Severity {
  unsigned flags;
  unsigned caption;  // string number
};

constexpr unsigned kInformation = 2553, kWarning = 2554, kError = 2555;

// By SeverityIndex.
constexpr Severity kSeverities[] = {
    {MB_SETFOREGROUND | MB_ICONSTOP | MB_OK, kError},
    {MB_SETFOREGROUND | MB_ICONEXCLAMATION | MB_YESNO, kWarning},
    {MB_SETFOREGROUND | MB_ICONEXCLAMATION | MB_YESNOCANCEL, kWarning},
    {MB_SETFOREGROUND | MB_ICONINFORMATION | MB_OK, kInformation},
    {MB_SETFOREGROUND | MB_ICONINFORMATION | MB_YESNO, kInformation},
    {MB_SETFOREGROUND | MB_ICONINFORMATION | MB_YESNOCANCEL, kInformation},
};
static_assert(kSeverities[0].flags == 0x10010 && kSeverities[1].flags == 0x10034 && kSeverities[2].flags == 0x10033);
static_assert(kSeverities[3].flags == 0x10040 && kSeverities[4].flags == 0x10044 && kSeverities[5].flags == 0x10043);

Severity SeverityOf(SeverityIndex index) {
  const auto place = std::size_t(index);
  return place < std::size(kSeverities) ? kSeverities[place] : Severity{0, 0};
}

// Asks an external message server, of which this library has none.
bool IsAnsweredByServer(unsigned, unsigned, const CString&, int&) { return false; }

void CALLBACK OnBoxHelp(HELPINFO* request) { Outcome::ShowHelp(static_cast<unsigned long>(request->dwContextId)); }

HWND WindowOf(const CWnd* window) { return window ? window->GetSafeHwnd() : nullptr; }

// Removes the hook at the end of the box.
class HookScope {
 public:
  HookScope(HHOOK& hook, HOOKPROC procedure) : hook_(hook) {
    hook_ = SetWindowsHookExW(WH_CBT, procedure, nullptr, GetCurrentThreadId());
  }
  ~HookScope() {
    if (hook_) UnhookWindowsHookEx(std::exchange(hook_, nullptr));
  }
  HookScope(const HookScope&) = delete;
  HookScope& operator=(const HookScope&) = delete;

 private:
  HHOOK& hook_;
};

}  // namespace

Outcome::Outcome(int code, SeverityIndex severity, unsigned captionId, unsigned long helpId, CWnd* parent,
                 int productSpecific)
    : m_eSeverity(severity),
      m_nCode(code),
      m_nCaptionId(captionId),
      m_nHelpId(helpId),
      m_pParent(parent),
      m_bProductSpecific(productSpecific) {}

void Outcome::SetMessageBoxButtonNewLabels(const CString& yes, const CString& no) {
  m_bYesNoRelabelled = 1;
  m_bYesNoCancelRelabelled = 0;
  m_strIDYES = yes;
  m_strIDNO = no;
}

void Outcome::SetMessageBoxButtonNewLabels(const CString& yes, const CString& no, const CString& cancel) {
  m_bYesNoRelabelled = 0;
  m_bYesNoCancelRelabelled = 1;
  m_strIDYES = yes;
  m_strIDNO = no;
  m_strIDCancel = cancel;
}

// ---- showing

int Outcome::IsShown() const {
  constexpr int kKernelWithoutMessages = 1;
  if (int(GetKernelType()) == kKernelWithoutMessages) return 0;
  if (m_bAlwaysShow) return 1;
  short alerts = 0;
  GetAppDisplayAlerts(&alerts);
  return alerts != 0;
}

// Nothing calls it yet.
int Outcome::IsDisplayDialog() {
  int shown = 1;
  QFSettingsKey key(_T("Application"), CString(kVersionKey) + _T("\\Application"));
  key.AddValue(_T("CGMDisplayDialogs"), shown);
  key.RestoreValuesFromRegistry();
  key.GetValue(_T("CGMDisplayDialogs"), shown);
  return shown;
}

Outcome::Owners Outcome::FindOwners() const {
  CWinApp* const app = QFAfx::GetWinApp();
  const CWnd* const window = m_pParent ? m_pParent : app ? app->GetMainWnd() : nullptr;
  const HWND owner = window ? WindowOf(window) : QFAfx::GetMainHWnd();
  const CWnd* const second = m_pParent ? m_pParent : AfxGetMainWnd();
  return {owner, second ? WindowOf(second) : owner};
}

CString Outcome::Caption() const {
  if (m_nCaptionId != 0) return GetProductSpecificString(m_nCaptionId);
  CString caption;
  caption.LoadString(SeverityOf(m_eSeverity).caption);
  return caption;
}

unsigned Outcome::Display(CString text) {
  if (!IsShown()) return IDYES;
  if (m_bProductSpecific) text = GetProductSpecificString2(text);
  const Owners owners = FindOwners();
  const CString caption = Caption();
  const unsigned flags = SeverityOf(m_eSeverity).flags;
  int pressed = int(kNoBox);
  const bool answered = IsAnsweredByServer(flags, m_nMessageId, text, pressed);
  const bool own = QFAfx::GetUseOwnState() && owners.second != owners.owner;
  if (own && owners.owner) EnableWindow(owners.owner, FALSE);
  if (flags != 0 && !answered) pressed = ShowBox(own ? owners.second : owners.owner, text, caption, flags);
  if (owners.owner) EnableWindow(owners.owner, TRUE);
  return unsigned(pressed);
}

int Outcome::ShowBox(HWND owner, const CString& text, const CString& caption, unsigned flags) const {
  const bool relabelled = m_bYesNoRelabelled || m_bYesNoCancelRelabelled;
  if (m_nHelpId == kNoHelp) {
    if (m_bYesNoRelabelled) return MsgBoxButtonCaptionsChanged(owner, text, caption, flags);
    if (m_bYesNoCancelRelabelled) return MsgBoxYesNoCancelButtonCaptionsChanged(owner, text, caption, flags);
    return MessageBoxW(owner, text, caption, flags);
  }
  MSGBOXPARAMSW request = {};
  request.cbSize = sizeof request;
  request.hwndOwner = owner;
  request.lpszText = text;
  request.lpszCaption = caption;
  request.dwStyle = flags | MB_HELP;
  request.dwContextHelpId = m_nHelpId;
  request.lpfnMsgBoxCallback = OnBoxHelp;
  return relabelled ? MsgBoxIndirectButtonCaptionsChanged(request) : MessageBoxIndirectW(&request);
}

// ---- new labels

int Outcome::MsgBoxButtonCaptionsChanged(HWND owner, const CString& text, const CString& caption, unsigned flags) {
  const HookScope hook(m_hMsgBoxHook, CBTProc);
  return MessageBoxW(owner, text, caption, flags);
}

int Outcome::MsgBoxYesNoCancelButtonCaptionsChanged(HWND owner, const CString& text, const CString& caption,
                                                    unsigned flags) {
  const HookScope hook(m_hMsgBoxHook, CBTProcForYesNoCancel);
  return MessageBoxW(owner, text, caption, flags);
}

// Always CBTProc, so Cancel keeps its label on a box with a Help button; kept for existing modules.
int Outcome::MsgBoxIndirectButtonCaptionsChanged(const MSGBOXPARAMSW& request) {
  const HookScope hook(m_hMsgBoxHook, CBTProc);
  return MessageBoxIndirectW(&request);
}

LRESULT CALLBACK Outcome::CBTProc(int code, WPARAM wParam, LPARAM lParam) {
  return OnBoxEvent(code, wParam, lParam, /*withCancel=*/false);
}

LRESULT CALLBACK Outcome::CBTProcForYesNoCancel(int code, WPARAM wParam, LPARAM lParam) {
  return OnBoxEvent(code, wParam, lParam, /*withCancel=*/true);
}

LRESULT Outcome::OnBoxEvent(int code, WPARAM wParam, LPARAM lParam, bool withCancel) {
  if (code != HCBT_ACTIVATE) return CallNextHookEx(m_hMsgBoxHook, code, wParam, lParam);
  const auto box = reinterpret_cast<HWND>(wParam);
  const auto relabel = [box](int button, const CString& label) {
    if (GetDlgItem(box, button)) SetDlgItemTextW(box, button, label);
  };
  relabel(IDYES, m_strIDYES);
  relabel(IDNO, m_strIDNO);
  if (withCancel) relabel(IDCANCEL, m_strIDCancel);
  if (m_buttonID == IDNO) {
    PostMessageW(box, WM_NEXTDLGCTL, 0, 0);
    m_buttonID = IDYES;
  }
  return 0;
}
