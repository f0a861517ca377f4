// QFAsciFileBrowse reads a plain text file line by line.
//
// The text is UTF-8; CR LF and LF end a line. Whatever the file holds, a call reads at most 254 bytes of it: a longer
// line comes in pieces. What follows a NUL in such a piece is not seen. Nothing throws; one object is used by one
// thread at a time.
#pragma once

#include <cstdio>

#include "framework/text.h"

class KVSHARE_API QFAsciFileBrowse {
 public:
  QFAsciFileBrowse() = default;
  virtual ~QFAsciFileBrowse();
  QFAsciFileBrowse(const QFAsciFileBrowse&) = delete;
  QFAsciFileBrowse& operator=(const QFAsciFileBrowse&) = delete;

  // Takes another file (platform/paths.h) and opens it: 1, also if it can't be opened. With the path that it has
  // already it does nothing, doesn't rewind either, and gives 0.
  int SetFilePath(const CString& path);
  const CString& GetFilePath() const { return m_Path; }

  // Opens the file, or rewinds it if it is open. 1 if it is open then.
  int InitialiseFile();

  // The file's bytes, asked once of the file system and kept until SetFilePath takes another path; 0xFFFFFFFFFFFFFFFF
  // if it can't tell, and then asked again the next time.
  ULONGLONG GetFileSize();

  // Read the next line, from the start for the first, and give what stands ahead of its first tab, which may be
  // nothing. 0, with line left alone, at the end of the file or without one.
  int GetFirstLine(CString& line);
  int GetNextLine(CString& line);

  // 1 if reading came to the end of the file, which shows only by trying to read beyond, or if no file is open.
  int IsEndOfFile() const;

 private:
  static constexpr ULONGLONG kUnknown = ~ULONGLONG(0);

  void Close();

  FILE* m_pFile = nullptr;
  CString m_Path;
  ULONGLONG m_nSize = kUnknown;
};
