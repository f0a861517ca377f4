#include "framework/dialog.h"

#include <utility>

#include "framework/application.h"
#include "framework/resources.h"

IMPLEMENT_DYNAMIC(CDialog, CWnd)

namespace {

// The dialogs of the thread that are open now, by their windows.
thread_local std::map<HWND, CDialog*> t_dialogs;

}  // namespace

CDialog::CDialog(UINT templateId, CWnd* parent) : m_nTemplateId(templateId), m_pParent(parent) {}

INT_PTR CDialog::DoModal() {
  const LPCTSTR name = MAKEINTRESOURCEW(WORD(m_nTemplateId));
  const HINSTANCE module = AfxFindResourceHandle(name, RT_DIALOG);
  if (!module) return -1;
  const CWnd* const owner = m_pParent ? m_pParent : AfxGetMainWnd();
  const INT_PTR result =
      DialogBoxParamW(module, name, owner ? owner->GetSafeHwnd() : nullptr, DialogProc, reinterpret_cast<LPARAM>(this));
  t_dialogs.erase(m_hWnd);
  m_hWnd = nullptr;
  ForgetControls();
  if (m_pException) std::rethrow_exception(std::exchange(m_pException, nullptr));
  return result;
}

void CDialog::EndDialog(int result) { ::EndDialog(m_hWnd, result); }

INT_PTR CALLBACK CDialog::DialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_INITDIALOG) {
    auto* const dialog = reinterpret_cast<CDialog*>(lParam);
    dialog->m_hWnd = window;
    t_dialogs[window] = dialog;
  }
  const auto found = t_dialogs.find(window);
  return found != t_dialogs.end() ? found->second->OnMessage(message, wParam, lParam) : FALSE;
}

// No exception may pass through the platform's frames.
INT_PTR CDialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) try {
  if (message == WM_INITDIALOG) return OnInitDialog();
  if (message == WM_HELP) return OnHelpInfo(reinterpret_cast<HELPINFO*>(lParam));
  if (message != WM_COMMAND || (wParam >> 16) != BN_CLICKED) return FALSE;
  OnCommand(int(wParam & 0xFFFF));
  return TRUE;
} catch (...) {
  m_pException = std::current_exception();
  EndDialog(-1);
  return TRUE;
}

void CDialog::OnCommand(int id) {
  if (OnButtonClicked(id)) return;
  if (id == IDOK) OnOK();
  if (id == IDCANCEL) OnCancel();
}
