#include "framework/window.h"

IMPLEMENT_DYNAMIC(CCmdTarget, CObject)
IMPLEMENT_DYNAMIC(CWnd, CCmdTarget)

void CWnd::GetWindowText(CString& text) const {
  const int length = m_hWnd ? ::GetWindowTextLengthW(m_hWnd) : 0;
  const int copied = m_hWnd ? ::GetWindowTextW(m_hWnd, text.GetBuffer(length), length + 1) : 0;
  text.ReleaseBuffer(copied);
}

CWnd* CWnd::GetDlgItem(int id) const {
  const HWND control = ::GetDlgItem(m_hWnd, id);
  if (!control) return nullptr;
  auto& kept = m_Controls[id];
  if (!kept || kept->m_hWnd != control) kept = std::make_unique<CWnd>(control);
  return kept.get();
}

int CWnd::GetDlgItemText(int id, CString& text) const {
  const CWnd* const control = GetDlgItem(id);
  text.Empty();
  if (control) control->GetWindowText(text);
  return text.GetLength();
}

bool CWnd::OnButtonClicked(int id) {
  for (const AFX_MSGMAP* map = GetMessageMap(); map; map = map->base)
    for (const AFX_MSGMAP_ENTRY* entry = map->entries; entry->function; ++entry)
      if (entry->id == id) {
        (this->*entry->function)();
        return true;
      }
  return false;
}
