// RecentTexts, the texts of the records that this thread loaded last: two audit trails, and the registered names by
// class. Most nodes of a document have the same texts as a node shortly before them. Such texts are read with one
// comparison and share memory. Not public.
#pragma once

#include <array>

#include "platform/thread_pointer.h"
#include "share/objects/audit_trail.h"
#include "share/objects/internal/counted_batch.h"

class CArchive;
struct CRuntimeClass;

class RecentTexts {
 public:
  // The calling thread's object.
  static RecentTexts& OfThread() {
    RecentTexts* const texts = Pointer::Get();
    return texts ? *texts : Create();
  }

  // A record has the stamps in two places. LoadFirstStamps reads createdBy, dateCreated and lastModified, LoadLastStamp
  // reads lastModifiedBy. Other records may be loaded between the two calls.
  void LoadFirstStamps(CArchive& ar, AuditTrail& trail);
  void LoadLastStamp(CArchive& ar, AuditTrail& trail);
  // Instead of LoadLastStamp for records without lastModifiedBy: sets it to createdBy.
  void SetLastStampToCreator(AuditTrail& trail);

  // Reads the registered name of a node of that class.
  void LoadName(CArchive& ar, const CRuntimeClass* record, CString& name);

 private:
  // stored holds the texts as in a record, one after the other; 0 bytes if they are too long for it.
  struct KnownTrail {
    CountedBatch<AuditTrail> trail;
    std::array<BYTE, 256> stored;
    std::size_t firstBytes = 0;  // of the first three texts
    std::size_t bytes = 0;
  };
  struct KnownName {
    CountedBatch<CString> name;
    std::array<BYTE, 96> stored;
    std::size_t bytes = 0;
  };

  static void Delete(RecentTexts* texts);
  using Pointer = ThreadPointer<RecentTexts, &RecentTexts::Delete>;
  static RecentTexts& Create();
  void Remember(const AuditTrail& trail);

  // Two, because single changed nodes are often between nodes with equal trails.
  std::array<KnownTrail, 2> m_trails;
  std::size_t m_newest = 0;
  std::array<KnownName, 16> m_names;  // index: class number modulo 16
};
