#include "share/objects/archive_store.h"

void CAFRArchiveStore::write(MOD_BODY*) {}

ULONGLONG CAFRArchiveStore::write(const void* data, ULONGLONG, ULONGLONG bytes) {
  m_pArchive->Write(data, UINT(bytes));
  return bytes;
}

void CAFRArchiveStore::read(MOD_BODY*) {}

ULONGLONG CAFRArchiveStore::read(void* data, ULONGLONG, ULONGLONG bytes) { return m_pArchive->Read(data, UINT(bytes)); }
