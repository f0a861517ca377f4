// What the records had that this thread has loaded last: their audit trails, and the registered name of each class.
// Most nodes of a document have the same texts as one just ahead of them: they are then read at one stroke, and share
// the memory. Not public.
#pragma once

#include <array>

#include "share/objects/audit_trail.h"
#include "share/objects/internal/counted_batch.h"

class CArchive;
struct CRuntimeClass;

class RecentTexts {
 public:
  // Those of the calling thread.
  static RecentTexts& OfThread() { return t_texts ? *t_texts : Make(); }

  // A record has the stamps in two places. The first call reads createdBy, dateCreated and lastModified, the second one
  // lastModifiedBy; in between other records may have been read.
  void LoadFirstStamps(CArchive& ar, AuditTrail& trail);
  void LoadLastStamp(CArchive& ar, AuditTrail& trail);
  // In place of the second call, for records that have no lastModifiedBy: that is createdBy.
  void MakeLastStamp(AuditTrail& trail);

  // The registered name of a node of that class.
  void LoadName(CArchive& ar, const CRuntimeClass* record, CString& name);

 private:
  // Texts as they stand in a record, one behind the other. Of those that are too long nothing is known: 0 bytes.
  struct KnownTrail {
    CountedBatch<AuditTrail> trail;
    std::array<BYTE, 256> stored;
    std::size_t firstBytes = 0;  // of the first three
    std::size_t bytes = 0;
  };
  struct KnownName {
    CountedBatch<CString> name;
    std::array<BYTE, 96> stored;
    std::size_t bytes = 0;
  };

  static RecentTexts& Make();
  void Keep(const AuditTrail& trail);

  KV_FAST_THREAD_LOCAL inline static constinit RecentTexts* t_texts = nullptr;

  // Two: a node that somebody has changed stands between others that have one trail.
  std::array<KnownTrail, 2> m_trails;
  std::size_t m_newest = 0;
  std::array<KnownName, 16> m_names;  // by the class's number
};
