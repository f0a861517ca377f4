// COleStreamFile: a CFile on a stream of a compound file, so that an archive can use the stream.
#pragma once

#include "framework/file.h"
#include "platform/storage.h"

// A failing stream call raises CFileException with the low half of the result code as m_lOsError.
class KVSHARE_API COleStreamFile : public CFile {
  DECLARE_DYNAMIC(COleStreamFile)

 public:
  // Takes over the caller's reference to the stream. For a null stream the file is not open.
  explicit COleStreamFile(IStream* stream = nullptr) : m_lpStream(stream) {}
  ~COleStreamFile() override;

  // As the constructor; releases the earlier stream first.
  void Attach(IStream* stream);
  // Returns the stream with its reference and leaves a file that is not open. Null if it was not open.
  IStream* Detach();
  // The stream, which stays the file's; null if the file is not open.
  IStream* GetStream() const noexcept { return m_lpStream; }

  // Always FALSE with badPath: a stream is opened through its storage.
  BOOL Open(LPCTSTR path, UINT flags, CFileException* error = nullptr) override;

  UINT Read(void* target, UINT bytes) override;
  void Write(const void* source, UINT bytes) override;
  ULONGLONG Seek(LONGLONG offset, UINT from) override;
  ULONGLONG GetPosition() const override;
  ULONGLONG GetLength() const override;
  void SetLength(ULONGLONG length) override;
  // Calls IStream::Commit. The bytes are on the disk only after the root storage is committed.
  void Flush() override;
  // Releases the stream.
  void Close() override;
  void Abort() override;

 private:
  // The stream; raises invalidFile if the file is not open.
  IStream& Stream() const;
  void Check(HRESULT result) const;

  IStream* m_lpStream;
};
