// CFile, the bytes of a file on disk, and CMemFile, the same in memory. Both can stand below an archive.
//
// Positions and lengths are bytes. What fails raises CFileException, except Open, which gives FALSE. One file is used
// by one thread at a time.
#pragma once

#include "framework/exception.h"
#include "framework/object.h"

class KVSHARE_API CFileException : public CException {
 public:
  enum {
    none,              // 0 no failure
    genericException,  // 1 what no other cause tells
    fileNotFound,      // 2
    badPath,           // 3 a folder of the path is missing, or the path is malformed
    tooManyOpenFiles,  // 4
    accessDenied,      // 5
    invalidFile,       // 6 the file is not open
    removeCurrentDir,  // 7
    directoryFull,     // 8
    badSeek,           // 9 a position ahead of the start
    hardIO,            // 10
    sharingViolation,  // 11
    lockViolation,     // 12
    diskFull,          // 13 also: a CMemFile that may not grow
    endOfFile,         // 14
  };

  // osError is the platform's status, -1 for none.
  explicit CFileException(int cause = none, LONG osError = -1, LPCTSTR fileName = nullptr);
  // The cause that a platform's status stands for.
  static int OsErrorToException(LONG osError) noexcept;

  int m_cause;
  LONG m_lOsError;
  CString m_strFileName;
};

class KVSHARE_API CFile : public CObject {
  DECLARE_DYNAMIC(CFile)

 public:
  // One of modeRead, modeWrite and modeReadWrite, with what else is wanted. modeCreate makes the file or empties it;
  // with modeNoTruncate an existing one keeps its content. The share modes are the platform's; where it locks nothing
  // they change nothing. The type flags change nothing: bytes are bytes.
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

  // A file that is not open; one that is, or CFileException.
  CFile() = default;
  CFile(LPCTSTR path, UINT flags);
  // Closes; what fails then is not told.
  ~CFile() override;

  // FALSE on failure, with the reason in error if it is not null. A file that was open is closed first.
  virtual BOOL Open(LPCTSTR path, UINT flags, CFileException* error = nullptr);

  // Gives the number of bytes read, less than asked for only at the end.
  virtual UINT Read(void* target, UINT bytes);
  virtual void Write(const void* source, UINT bytes);
  // Gives the new position. Behind the end is allowed: a write there fills the gap with zeros.
  virtual ULONGLONG Seek(LONGLONG offset, UINT from);
  ULONGLONG SeekToEnd() { return Seek(0, end); }
  void SeekToBegin() { Seek(0, begin); }
  virtual ULONGLONG GetPosition() const;
  virtual ULONGLONG GetLength() const;
  // Cuts or extends with zeros. The position stays, unless it lay behind the new end.
  virtual void SetLength(ULONGLONG length);
  // Returns when the content is on the disk.
  virtual void Flush();
  // A second call does nothing.
  virtual void Close();
  // Closes without raising.
  virtual void Abort();

  // The path as it was given to Open; empty if the file has none, and after Close. GetFileName is its last component.
  virtual CString GetFilePath() const { return m_strFileName; }
  virtual CString GetFileName() const;
  virtual void SetFilePath(LPCTSTR path) { m_strFileName = path; }

  // The platform's handle; INVALID_HANDLE_VALUE while the file is not open.
  HANDLE m_hFile = INVALID_HANDLE_VALUE;

 protected:
  // Raises what the platform's last status stands for.
  [[noreturn]] void ThrowLastError() const;

  CString m_strFileName;
};

// A file in memory. It grows by itself, unless it stands on a caller's block.
class KVSHARE_API CMemFile : public CFile {
  DECLARE_DYNAMIC(CMemFile)

 public:
  // growBytes is the least by which the block grows.
  explicit CMemFile(UINT growBytes = 1024);
  // On a caller's block, as Attach.
  CMemFile(BYTE* block, ULONGLONG bytes, UINT growBytes = 0);
  ~CMemFile() override;

  // Stands on a block of the caller's, in place of what it held. With growBytes 0 the block is the file's content,
  // stays the caller's, and a write behind its end raises diskFull. Otherwise the file starts empty and owns the block,
  // which came from malloc.
  void Attach(BYTE* block, ULONGLONG bytes, UINT growBytes = 0);
  // Gives the block away and leaves an empty file: the caller frees it with free, unless it is his own from Attach.
  // Null if nothing was ever written.
  BYTE* Detach();
  // The content, GetLength() bytes; null if there is none. Valid until the next write.
  const BYTE* GetData() const noexcept { return m_pBlock; }

  UINT Read(void* target, UINT bytes) override;
  void Write(const void* source, UINT bytes) override;
  ULONGLONG Seek(LONGLONG offset, UINT from) override;
  ULONGLONG GetPosition() const override { return m_nPosition; }
  ULONGLONG GetLength() const override { return m_nLength; }
  void SetLength(ULONGLONG length) override;
  void Flush() override {}
  // Frees the content, unless it is a caller's block.
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
