// CFile, implemented with the platform's file handles.
#include "framework/file.h"

#include "platform/errors.h"
#include "platform/files.h"
#include "platform/handles.h"

IMPLEMENT_DYNAMIC(CFile, CObject)

namespace {

// In the order of the flags shareCompat to shareDenyNone.
constexpr DWORD kShareModes[] = {FILE_SHARE_READ | FILE_SHARE_WRITE, 0, FILE_SHARE_READ, FILE_SHARE_WRITE,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE};

DWORD AccessOf(UINT flags) {
  switch (flags & (CFile::modeWrite | CFile::modeReadWrite)) {
    case CFile::modeRead: return GENERIC_READ;
    case CFile::modeWrite: return GENERIC_WRITE;
    default: return GENERIC_READ | GENERIC_WRITE;
  }
}

DWORD DispositionOf(UINT flags) {
  if ((flags & CFile::modeCreate) == 0) return OPEN_EXISTING;
  return (flags & CFile::modeNoTruncate) != 0 ? OPEN_ALWAYS : CREATE_ALWAYS;
}

LARGE_INTEGER Large(LONGLONG number) {
  LARGE_INTEGER large;
  large.QuadPart = number;
  return large;
}

}  // namespace

CFile::CFile(LPCTSTR path, UINT flags) {
  CFileException failure;
  if (!CFile::Open(path, flags, &failure)) throw failure;
}

CFile::~CFile() { CFile::Abort(); }

BOOL CFile::Open(LPCTSTR path, UINT flags, CFileException* error) {
  CFile::Abort();
  const UINT share = (flags & 0x70) >> 4;
  const DWORD shareMode = share < std::size(kShareModes) ? kShareModes[share] : kShareModes[0];
  const DWORD fileFlags =
      FILE_ATTRIBUTE_NORMAL | DWORD((flags & osWriteThrough) != 0 ? FILE_FLAG_WRITE_THROUGH : DWORD(0));
  m_hFile = CreateFileW(path, AccessOf(flags), shareMode, nullptr, DispositionOf(flags), fileFlags, nullptr);
  if (m_hFile == INVALID_HANDLE_VALUE) {
    const LONG status = LONG(GetLastError());
    if (error) *error = CFileException(CFileException::OsErrorToException(status), status, path);
    return FALSE;
  }
  m_strFileName = path;
  return TRUE;
}

void CFile::ThrowLastError() const {
  const LONG status = LONG(GetLastError());
  throw CFileException(CFileException::OsErrorToException(status), status, m_strFileName);
}

CString CFile::GetFileName() const {
  const CString path = GetFilePath();
  return path.Mid(std::max(path.ReverseFind(_T('\\')), path.ReverseFind(_T('/'))) + 1);
}

UINT CFile::Read(void* target, UINT bytes) {
  DWORD done = 0;
  if (!ReadFile(m_hFile, target, bytes, &done, nullptr)) ThrowLastError();
  return done;
}

void CFile::Write(const void* source, UINT bytes) {
  DWORD done = 0;
  if (!WriteFile(m_hFile, source, bytes, &done, nullptr)) ThrowLastError();
  if (done != bytes) throw CFileException(CFileException::diskFull, -1, m_strFileName);
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from) {
  LARGE_INTEGER position = {};
  if (!SetFilePointerEx(m_hFile, Large(offset), &position, from)) {
    const LONG status = LONG(GetLastError());
    throw CFileException(status == ERROR_INVALID_HANDLE ? CFileException::invalidFile : CFileException::badSeek, status,
                         m_strFileName);
  }
  return ULONGLONG(position.QuadPart);
}

ULONGLONG CFile::GetPosition() const {
  LARGE_INTEGER position = {};
  if (!SetFilePointerEx(m_hFile, Large(0), &position, FILE_CURRENT)) ThrowLastError();
  return ULONGLONG(position.QuadPart);
}

ULONGLONG CFile::GetLength() const {
  LARGE_INTEGER size = {};
  if (!GetFileSizeEx(m_hFile, &size)) ThrowLastError();
  return ULONGLONG(size.QuadPart);
}

void CFile::SetLength(ULONGLONG length) {
  const ULONGLONG position = GetPosition();
  Seek(LONGLONG(length), begin);
  if (!SetEndOfFile(m_hFile)) ThrowLastError();
  Seek(LONGLONG(std::min(position, length)), begin);
}

void CFile::Flush() {
  if (!FlushFileBuffers(m_hFile)) ThrowLastError();
}

void CFile::Close() {
  if (m_hFile == INVALID_HANDLE_VALUE) return;
  const BOOL closed = CloseHandle(m_hFile);
  m_hFile = INVALID_HANDLE_VALUE;
  if (!closed) ThrowLastError();
  m_strFileName.Empty();
}

void CFile::Abort() {
  if (m_hFile != INVALID_HANDLE_VALUE) CloseHandle(m_hFile);
  m_hFile = INVALID_HANDLE_VALUE;
  m_strFileName.Empty();
}
