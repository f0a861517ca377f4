// CAFRArchiveStore, the adapter through which the geometry kernel's persistence writes raw bytes into an archive and
// reads them from it.
#pragma once

#include "framework/archive.h"

// A body of the geometry kernel; never defined here.
class MOD_BODY;

// The store that the kernel's persistence writes to and reads from.
class KVSHARE_API CPersistStoreBase {
 public:
  virtual ~CPersistStoreBase() = default;
  virtual void write(MOD_BODY* body) = 0;
  // Returns the number of bytes written. unit is the size of one element; a store may ignore it.
  virtual ULONGLONG write(const void* data, ULONGLONG unit, ULONGLONG bytes) = 0;
  virtual void read(MOD_BODY* body) = 0;
  // Returns the number of bytes read.
  virtual ULONGLONG read(void* data, ULONGLONG unit, ULONGLONG bytes) = 0;
};

// Writes into one archive or reads from it, on that archive's thread. The archive belongs to the caller, must not be
// null when bytes are written or read, and must outlive the store and its copies. Its exceptions pass through: after a
// CFileException the archive is of no more use.
class KVSHARE_API CAFRArchiveStore : public CPersistStoreBase {
 public:
  explicit CAFRArchiveStore(CArchive* archive) : m_pArchive(archive) {}
  CAFRArchiveStore(const CAFRArchiveStore&) = default;
  CAFRArchiveStore& operator=(const CAFRArchiveStore&) = default;

  // Does nothing: bodies are stored by the kernel.
  void write(MOD_BODY* body) override;
  // Writes as many bytes as the low 32 bits of the count say, but returns the whole count. A caller must split a block
  // of 4 GiB or more. unit is ignored.
  ULONGLONG write(const void* data, ULONGLONG unit, ULONGLONG bytes) override;
  // Does nothing.
  void read(MOD_BODY* body) override;
  // Reads as many bytes as the low 32 bits of the count say. Returns the number read, which is smaller only at the end
  // of the file. unit is ignored.
  ULONGLONG read(void* data, ULONGLONG unit, ULONGLONG bytes) override;

 private:
  CArchive* m_pArchive;
};
