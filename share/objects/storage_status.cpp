// The status word, and storing a reference or null.
#include "share/objects/storage_status.h"

#include "framework/archive.h"

namespace {

constexpr unsigned kErrorBit = 0x1;
constexpr unsigned kFlagBit = 0x2;
constexpr unsigned kFirstLocation = 0x20;
constexpr unsigned kLastLocation = 0x4000;

unsigned g_status = 0;  // used only by the thread that stores or loads

}  // namespace

void InitialiseSerializationStatus(int flag) { g_status = flag ? kFlagBit : 0; }

void LogSerializationError(unsigned code) { g_status |= kErrorBit | code; }

unsigned GetSerializationStatus() { return g_status; }

int IsErrorDetected() { return (g_status & kErrorBit) != 0; }

unsigned GetErrorLocation() {
  for (unsigned bit = kFirstLocation; bit <= kLastLocation; bit <<= 1)
    if (g_status & bit) return bit;
  return 0;
}

int AnalyseOwner(QFObject* owner, unsigned code) {
  if (!owner) LogSerializationError(code | kReferenceLost);
  return 1;
}

void StoreReferenceOrNull(CArchive& ar, const CObject* object) {
  try {
    ar.WriteObjectWhole(object);
  } catch (const CFileException&) {
    throw;
  } catch (...) {
    LogSerializationError(kReferenceLost);
    ar.WriteObject(nullptr);
  }
}
