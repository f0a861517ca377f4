// COleStreamFile, a CFile on a stream of a compound file, so that an archive can be stored into it and loaded from it.
#pragma once

#include "framework/file.h"
#include "platform/storage.h"

// What the stream answers with a failure raises CFileException, the code's low half as m_lOsError.
class KVSHARE_API COleStreamFile : public CFile {
  DECLARE_DYNAMIC(COleStreamFile)

 public:
  // Takes over the caller's reference to the stream, which may be null: the file is then not open.
  explicit COleStreamFile(IStream* stream = nullptr) : m_lpStream(stream) {}
  ~COleStreamFile() override;

  // As the constructor; a stream that was there is released.
  void Attach(IStream* stream);
  // Gives the reference back and leaves a file that is not open.
  IStream* Detach();
  // The stream, which stays the file's.
  IStream* GetStream() const noexcept { return m_lpStream; }

  // FALSE: a stream is opened through its storage.
  BOOL Open(LPCTSTR path, UINT flags, CFileException* error = nullptr) override;

  UINT Read(void* target, UINT bytes) override;
  void Write(const void* source, UINT bytes) override;
  ULONGLONG Seek(LONGLONG offset, UINT from) override;
  ULONGLONG GetPosition() const override;
  ULONGLONG GetLength() const override;
  void SetLength(ULONGLONG length) override;
  // IStream::Commit. The bytes are on the disk only once the root storage is committed.
  void Flush() override;
  // Releases the stream.
  void Close() override;
  void Abort() override;

 private:
  // The stream, or CFileException invalidFile.
  IStream& Stream() const;
  void Check(HRESULT result) const;

  IStream* m_lpStream;
};
