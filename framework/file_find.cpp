// CFileFind reads one entry in advance, because FindNextFile returns whether another entry follows.
#include "framework/file_find.h"

IMPLEMENT_DYNAMIC(CFileFind, CObject)

BOOL CFileFind::FindFile(LPCTSTR pattern, DWORD) {
  Close();
  const CString path = pattern ? pattern : _T("*.*");
  m_hContext = FindFirstFileW(path, &m_next);
  if (m_hContext == INVALID_HANDLE_VALUE) return FALSE;
  m_strRoot = CString(path.View().substr(0, path.View().find_last_of(_T("\\/:")) + 1));
  return TRUE;
}

BOOL CFileFind::FindNextFile() {
  if (m_hContext == INVALID_HANDLE_VALUE) return FALSE;
  m_found = m_next;
  return ::FindNextFileW(m_hContext, &m_next);
}

void CFileFind::Close() {
  if (m_hContext != INVALID_HANDLE_VALUE) FindClose(m_hContext);
  m_hContext = INVALID_HANDLE_VALUE;
  m_found = {};
  m_next = {};
  m_strRoot.Empty();
}

CString CFileFind::GetFilePath() const { return m_strRoot + m_found.cFileName; }

BOOL CFileFind::IsDots() const {
  const TextView name = m_found.cFileName;
  return name == _T(".") || name == _T("..");
}
