// CFile, on the platform's file handles.
#include "framework/file.h"

IMPLEMENT_DYNAMIC(CFile, CObject)

CFile::~CFile() { CFile::Abort(); }

CString CFile::GetFileName() const {
  const CString path = GetFilePath();
  return path.Mid(std::max(path.ReverseFind(_T('\\')), path.ReverseFind(_T('/'))) + 1);
}

UINT CFile::Read(void*, UINT) { throw CFileException(CFileException::invalidFile, -1, m_strFileName); }
void CFile::Write(const void*, UINT) { throw CFileException(CFileException::invalidFile, -1, m_strFileName); }
ULONGLONG CFile::Seek(LONGLONG, UINT) { throw CFileException(CFileException::invalidFile, -1, m_strFileName); }
ULONGLONG CFile::GetPosition() const { throw CFileException(CFileException::invalidFile, -1, m_strFileName); }
ULONGLONG CFile::GetLength() const { throw CFileException(CFileException::invalidFile, -1, m_strFileName); }
void CFile::SetLength(ULONGLONG) { throw CFileException(CFileException::invalidFile, -1, m_strFileName); }
void CFile::Flush() {}
void CFile::Close() {}
void CFile::Abort() {}
