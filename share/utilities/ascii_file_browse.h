// QFAsciFileBrowse reads a plain text file line by line.
//
// The text is UTF-8, with or without a mark; CR LF and LF end a line. One call reads at most 254 bytes: a longer line
// comes in pieces. In each piece, the text after a NUL is lost. Nothing throws. One thread at a time uses an object.
#pragma once

#include <cstdio>

#include "framework/text.h"

class KVSHARE_API QFAsciFileBrowse {
 public:
  QFAsciFileBrowse() = default;
  virtual ~QFAsciFileBrowse();
  QFAsciFileBrowse(const QFAsciFileBrowse&) = delete;
  QFAsciFileBrowse& operator=(const QFAsciFileBrowse&) = delete;

  // Closes the file and opens another by its product path (platform/paths.h): 1, also if that fails. 0 for the same
  // path as before; then it does nothing, and does not rewind.
  int SetFilePath(const CString& path);
  const CString& GetFilePath() const { return m_Path; }

  // Opens the file, or rewinds an open file: 1. 0 if it cannot be opened.
  int InitialiseFile();

  // The file's size in bytes, read once and kept until SetFilePath sets another path. 0xFFFFFFFFFFFFFFFF for a folder
  // or a missing file; the next call then reads it again.
  ULONGLONG GetFileSize();

  // Read the first or the next line and set line to its text before the first tab: 1. 0 at the end of the file or
  // without an open file; line does not change.
  int GetFirstLine(CString& line);
  int GetNextLine(CString& line);

  // 1 if a read reached the end of the file, or if no file is open. 0 after a read that ended exactly there.
  int IsEndOfFile() const;

 private:
  static constexpr ULONGLONG kUnknown = ~ULONGLONG(0);

  void Close();
  // Moves to the first byte after a UTF-8 mark, or to the file's start.
  void Rewind();

  FILE* m_pFile = nullptr;
  CString m_Path;
  ULONGLONG m_nSize = kUnknown;
};
