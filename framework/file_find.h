// CFileFind, a walk over the entries of a folder that match a pattern.
//
//   CFileFind find;
//   BOOL more = find.FindFile(_T("C:\\Data\\*.*"));
//   while (more) {
//     more = find.FindNextFile();
//     if (!find.IsDots()) Use(find.GetFilePath());
//   }
//
// Patterns, order and links are those of platform/folders.h. Nothing throws; the reason of a failure is in
// GetLastError. One object is used by one thread at a time.
#pragma once

#include "framework/object.h"
#include "framework/text.h"
#include "platform/folders.h"

class KVSHARE_API CFileFind : public CObject {
  DECLARE_DYNAMIC(CFileFind)

 public:
  CFileFind() = default;
  ~CFileFind() override { CFileFind::Close(); }

  // Starts a walk, ending one that was on its way; null is every entry of the current folder. FALSE if nothing matches.
  // The first entry is not there yet: FindNextFile moves to it.
  virtual BOOL FindFile(LPCTSTR pattern = nullptr, DWORD unused = 0);
  // Moves to the next entry. TRUE if there is one more behind it.
  virtual BOOL FindNextFile();
  virtual void Close();

  // Of the entry moved to; before any, empty, 0 and FALSE.
  virtual CString GetFileName() const { return m_found.cFileName; }
  // The folder as the pattern had it, and the name.
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
