#include "framework/stream_file.h"

#include <algorithm>

IMPLEMENT_DYNAMIC(COleStreamFile, CFile)

namespace {

LARGE_INTEGER Large(LONGLONG number) {
  LARGE_INTEGER large;
  large.QuadPart = number;
  return large;
}

}  // namespace

COleStreamFile::~COleStreamFile() { COleStreamFile::Abort(); }

void COleStreamFile::Attach(IStream* stream) {
  COleStreamFile::Abort();
  m_lpStream = stream;
}

IStream* COleStreamFile::Detach() {
  IStream* const stream = m_lpStream;
  m_lpStream = nullptr;
  return stream;
}

IStream& COleStreamFile::Stream() const {
  if (!m_lpStream) throw CFileException(CFileException::invalidFile, -1, m_strFileName);
  return *m_lpStream;
}

// The low half of a storage result code is the platform's status code.
void COleStreamFile::Check(HRESULT result) const {
  if (SUCCEEDED(result)) return;
  const LONG status = LONG(DWORD(result) & 0xFFFF);
  throw CFileException(CFileException::OsErrorToException(status), status, m_strFileName);
}

BOOL COleStreamFile::Open(LPCTSTR path, UINT, CFileException* error) {
  if (error) *error = CFileException(CFileException::badPath, -1, path);
  return FALSE;
}

UINT COleStreamFile::Read(void* target, UINT bytes) {
  ULONG done = 0;
  if (bytes > 0) Check(Stream().Read(target, bytes, &done));
  return done;
}

void COleStreamFile::Write(const void* source, UINT bytes) {
  if (bytes > 0) Check(Stream().Write(source, bytes, nullptr));
}

ULONGLONG COleStreamFile::Seek(LONGLONG offset, UINT from) {
  ULARGE_INTEGER position = {};
  const HRESULT result = Stream().Seek(Large(offset), from, &position);
  if (result == STG_E_INVALIDFUNCTION) throw CFileException(CFileException::badSeek, -1, m_strFileName);
  Check(result);
  return position.QuadPart;
}

ULONGLONG COleStreamFile::GetPosition() const {
  ULARGE_INTEGER position = {};
  Check(Stream().Seek(Large(0), STREAM_SEEK_CUR, &position));
  return position.QuadPart;
}

ULONGLONG COleStreamFile::GetLength() const {
  STATSTG facts;
  Check(Stream().Stat(&facts, STATFLAG_NONAME));
  return facts.cbSize.QuadPart;
}

void COleStreamFile::SetLength(ULONGLONG length) {
  const ULONGLONG position = GetPosition();
  ULARGE_INTEGER bytes;
  bytes.QuadPart = length;
  Check(Stream().SetSize(bytes));
  Seek(LONGLONG(std::min(position, length)), begin);
}

void COleStreamFile::Flush() { Check(Stream().Commit(STGC_DEFAULT)); }

void COleStreamFile::Close() { COleStreamFile::Abort(); }

void COleStreamFile::Abort() {
  if (m_lpStream) m_lpStream->Release();
  m_lpStream = nullptr;
  m_strFileName.Empty();
}
