// The adapter by which the geometry kernel's persistence writes raw bytes into an archive.
#pragma once

#include "framework/archive.h"

// A body of the geometry kernel. Only its name is needed here.
class MOD_BODY;

// What the kernel's persistence reads from and writes to.
class KVSHARE_API CPersistStoreBase {
 public:
  virtual ~CPersistStoreBase() = default;
  virtual void write(MOD_BODY* body) = 0;
  // Gives the number of bytes written; unit is the caller's own.
  virtual ULONGLONG write(const void* data, ULONGLONG unit, ULONGLONG bytes) = 0;
  virtual void read(MOD_BODY* body) = 0;
  // Gives the number of bytes that came.
  virtual ULONGLONG read(void* data, ULONGLONG unit, ULONGLONG bytes) = 0;
};

// Bodies are not its affair: those two calls do nothing. The archive stays the caller's and has to outlive the store
// and its copies; what it raises passes through.
class KVSHARE_API CAFRArchiveStore : public CPersistStoreBase {
 public:
  explicit CAFRArchiveStore(CArchive* archive) : m_pArchive(archive) {}
  CAFRArchiveStore(const CAFRArchiveStore&) = default;
  CAFRArchiveStore& operator=(const CAFRArchiveStore&) = default;

  void write(MOD_BODY* body) override;
  // Only the low 32 bits of the count are written and all of it is returned: a data block above 4 GiB is cut without a
  // word, as it always was. The unit isn't used.
  ULONGLONG write(const void* data, ULONGLONG unit, ULONGLONG bytes) override;
  void read(MOD_BODY* body) override;
  // As write, but the result tells how many bytes there were.
  ULONGLONG read(void* data, ULONGLONG unit, ULONGLONG bytes) override;

 private:
  CArchive* m_pArchive;
};
