// CFile: a file on disk, and CMemFile: a file in memory. Both can be used under an archive.
//
// Positions and lengths are in bytes. All failures raise CFileException, except in Open, which returns FALSE, and in
// Abort and the destructors, which ignore them. After a failure the file stays open and its position may have moved.
// One thread at a time may use a file.
#pragma once

#include "framework/exception.h"
#include "framework/object.h"

class KVSHARE_API CFileException : public CException {
 public:
  enum {
    none,              // 0 no failure
    genericException,  // 1 any other cause
    fileNotFound,      // 2
    badPath,           // 3 a folder of the path is missing, or the path is malformed
    tooManyOpenFiles,  // 4
    accessDenied,      // 5
    invalidFile,       // 6 the file is not open
    removeCurrentDir,  // 7
    directoryFull,     // 8
    badSeek,           // 9 a position before the start
    hardIO,            // 10
    sharingViolation,  // 11
    lockViolation,     // 12
    diskFull,          // 13 also: a CMemFile that cannot grow
    endOfFile,         // 14
  };

  // osError is the platform's status code, or -1. A null file name counts as empty.
  explicit CFileException(int cause = none, LONG osError = -1, LPCTSTR fileName = nullptr);
  // The cause for a platform status code; genericException for an unknown one.
  static int OsErrorToException(LONG osError) noexcept;

  int m_cause;
  LONG m_lOsError;
  CString m_strFileName;
};

class KVSHARE_API CFile : public CObject {
  DECLARE_DYNAMIC(CFile)

 public:
  // One of modeRead, modeWrite and modeReadWrite, combined with other flags. modeCreate creates the file or empties an
  // existing one; with modeNoTruncate an existing file keeps its content. The share flags are passed to the platform
  // and have no effect where it locks no files. The type flags have no effect: bytes are never translated.
  enum OpenFlags : UINT {
    modeRead = 0x0,
    modeWrite = 0x1,
    modeReadWrite = 0x2,
    shareCompat = 0x0,
    shareExclusive = 0x10,
    shareDenyWrite = 0x20,
    shareDenyRead = 0x30,
    shareDenyNone = 0x40,
    modeNoInherit = 0x80,
    modeCreate = 0x1000,
    modeNoTruncate = 0x2000,
    typeText = 0x4000,
    typeBinary = 0x8000,
    osWriteThrough = 0x20000,
  };
  enum SeekPosition : UINT { begin = 0, current = 1, end = 2 };

  // A file that is not open. With a path: opens it or raises CFileException.
  CFile() = default;
  CFile(LPCTSTR path, UINT flags);
  // Closes, and ignores failures.
  ~CFile() override;

  // Returns FALSE on failure, with the reason in `error`. Optional: error. An open file is closed first.
  virtual BOOL Open(LPCTSTR path, UINT flags, CFileException* error = nullptr);

  // Returns the number of bytes read; it is smaller than `bytes` only at the end of the file. Read and Write raise
  // invalidFile if the file is not open.
  virtual UINT Read(void* target, UINT bytes);
  virtual void Write(const void* source, UINT bytes);
  // Returns the new position. A position after the end is allowed: a write there fills the gap with zeros. A position
  // before the start raises badSeek.
  virtual ULONGLONG Seek(LONGLONG offset, UINT from);
  ULONGLONG SeekToEnd() { return Seek(0, end); }
  void SeekToBegin() { Seek(0, begin); }
  virtual ULONGLONG GetPosition() const;
  virtual ULONGLONG GetLength() const;
  // Shortens the file or extends it with zeros. The position stays, but not after the new end.
  virtual void SetLength(ULONGLONG length);
  // Writes the content to the disk before it returns.
  virtual void Flush();
  // Closes the file; raises if that fails. A second call does nothing.
  virtual void Close();
  // Closes, and ignores failures.
  virtual void Abort();

  // The path that was given to Open; empty without a path and after Close. GetFileName is its last component.
  virtual CString GetFilePath() const { return m_strFileName; }
  virtual CString GetFileName() const;
  virtual void SetFilePath(LPCTSTR path) { m_strFileName = path; }

  // The platform's handle; INVALID_HANDLE_VALUE if the file is not open.
  HANDLE m_hFile = INVALID_HANDLE_VALUE;

 protected:
  // Raises the exception for the platform's last status.
  [[noreturn]] void ThrowLastError() const;

  CString m_strFileName;
};

// A file in memory. It grows on demand, unless it uses a caller's block.
class KVSHARE_API CMemFile : public CFile {
  DECLARE_DYNAMIC(CMemFile)

 public:
  // growBytes is the smallest step by which the block grows.
  explicit CMemFile(UINT growBytes = 1024);
  // On a caller's block; see Attach.
  CMemFile(BYTE* block, ULONGLONG bytes, UINT growBytes = 0);
  ~CMemFile() override;

  // Frees the old content and uses the caller's block instead. With growBytes 0 the block is the file's content and
  // stays the caller's; a write after its end raises diskFull. Otherwise the file starts empty and owns the block,
  // which must come from malloc.
  void Attach(BYTE* block, ULONGLONG bytes, UINT growBytes = 0);
  // Returns the block and leaves an empty file. The caller frees it with free, unless it is the caller's block from
  // Attach. Null if nothing was written.
  BYTE* Detach();
  // The content, GetLength() bytes; null if there is no content. Valid until the next write.
  const BYTE* GetData() const noexcept { return m_pBlock; }

  UINT Read(void* target, UINT bytes) override;
  void Write(const void* source, UINT bytes) override;
  ULONGLONG Seek(LONGLONG offset, UINT from) override;
  ULONGLONG GetPosition() const override { return m_nPosition; }
  ULONGLONG GetLength() const override { return m_nLength; }
  void SetLength(ULONGLONG length) override;
  void Flush() override {}
  // Frees the content, unless it is the caller's block.
  void Close() override;
  void Abort() override { CMemFile::Close(); }

 private:
  void Grow(ULONGLONG bytes);

  BYTE* m_pBlock = nullptr;
  ULONGLONG m_nCapacity = 0;
  ULONGLONG m_nLength = 0;
  ULONGLONG m_nPosition = 0;
  UINT m_nGrowBytes;
  bool m_bOwner = true;
};
