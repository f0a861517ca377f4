// CFileFind: lists the entries of a folder that match a pattern.
//
//   CFileFind find;
//   BOOL more = find.FindFile(_T("C:\\Data\\*.*"));
//   while (more) {
//     more = find.FindNextFile();
//     if (!find.IsDots()) Use(find.GetFilePath());
//   }
//
// platform/folders.h describes patterns, order and links. Nothing throws; GetLastError has the reason of a failure. One
// thread at a time may use an object.
#pragma once

#include "framework/object.h"
#include "framework/text.h"
#include "platform/folders.h"

class KVSHARE_API CFileFind : public CObject {
  DECLARE_DYNAMIC(CFileFind)

 public:
  CFileFind() = default;
  ~CFileFind() override { CFileFind::Close(); }

  // Starts a listing and ends an earlier one; a null pattern means all entries of the current folder. Returns FALSE if
  // nothing matches. There is no current entry yet: FindNextFile moves to the first one.
  virtual BOOL FindFile(LPCTSTR pattern = nullptr, DWORD unused = 0);
  // Moves to the next entry. Returns TRUE if at least one more follows, so the last entry comes with FALSE.
  virtual BOOL FindNextFile();
  virtual void Close();

  // The current entry; empty, 0 or FALSE before the first FindNextFile.
  virtual CString GetFileName() const { return m_found.cFileName; }
  // The folder as in the pattern, followed by the name.
  virtual CString GetFilePath() const;
  CString GetRoot() const { return m_strRoot; }
  // Bytes; 0 for a folder.
  ULONGLONG GetLength() const { return ULONGLONG(m_found.nFileSizeHigh) << 32 | m_found.nFileSizeLow; }
  // TRUE if the entry has any of these attributes.
  virtual BOOL MatchesMask(DWORD attributes) const { return (m_found.dwFileAttributes & attributes) != 0; }
  BOOL IsDirectory() const { return MatchesMask(FILE_ATTRIBUTE_DIRECTORY); }
  BOOL IsReadOnly() const { return MatchesMask(FILE_ATTRIBUTE_READONLY); }
  // A symbolic link, to a file or a folder.
  BOOL IsLink() const { return MatchesMask(FILE_ATTRIBUTE_REPARSE_POINT); }
  // "." or "..".
  virtual BOOL IsDots() const;

 private:
  HANDLE m_hContext = INVALID_HANDLE_VALUE;
  WIN32_FIND_DATAW m_found = {};
  WIN32_FIND_DATAW m_next = {};
  CString m_strRoot;
};
