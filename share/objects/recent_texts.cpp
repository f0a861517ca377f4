// The texts of the last records, compared with the archive's bytes in stored form.
#include "share/objects/internal/recent_texts.h"

#include "framework/archive.h"

void RecentTexts::Delete(RecentTexts* texts) { delete texts; }

RecentTexts& RecentTexts::Create() {
  auto* const texts = new RecentTexts;
  Pointer::Set(texts);
  return *texts;
}

// ---- stamps

void RecentTexts::LoadFirstStamps(CArchive& ar, AuditTrail& trail) {
  for (const std::size_t place : {m_newest, 1 - m_newest}) {
    KnownTrail& known = m_trails[place];
    if (known.bytes == 0 || !ar.ReadIfNext(known.stored.data(), known.firstBytes)) continue;
    m_newest = place;
    trail = known.trail.Take();
    return;
  }
  const AuditTrail newest = m_trails[m_newest].trail.Get();
  AuditTrail::Texts& texts = trail.Change();
  for (CString AuditTrail::Texts::*stamp :
       {&AuditTrail::Texts::createdBy, &AuditTrail::Texts::dateCreated, &AuditTrail::Texts::lastModified}) {
    if (ar.ReadIfEqual(newest.Get().*stamp)) {
      texts.*stamp = newest.Get().*stamp;
    } else {
      ar >> texts.*stamp;
    }
  }
}

void RecentTexts::LoadLastStamp(CArchive& ar, AuditTrail& trail) {
  const KnownTrail& newest = m_trails[m_newest];
  if (newest.bytes != 0 && trail.SharesWith(newest.trail.Get()) &&
      ar.ReadIfNext(newest.stored.data() + newest.firstBytes, newest.bytes - newest.firstBytes))
    return;
  if (!ar.ReadIfEqual(trail.Get().lastModifiedBy)) ar >> trail.Change().lastModifiedBy;
  Remember(trail);
}

void RecentTexts::SetLastStampToCreator(AuditTrail& trail) {
  const CString creator = trail.Get().createdBy;
  if (trail.Get().lastModifiedBy != creator) trail.Change().lastModifiedBy = creator;
  Remember(trail);
}

// Replaces the older of the two trails.
void RecentTexts::Remember(const AuditTrail& trail) {
  if (m_trails[m_newest].bytes != 0 && trail.SharesWith(m_trails[m_newest].trail.Get())) return;
  KnownTrail& known = m_trails[m_newest = 1 - m_newest];
  known.bytes = 0;
  known.trail.Set(trail);
  const AuditTrail::Texts& texts = trail.Get();
  std::size_t bytes = 0;
  const auto append = [&](const CString& text) {
    const std::size_t stored = CArchive::StoredBytes(text, known.stored.data() + bytes, known.stored.size() - bytes);
    bytes += stored;
    return stored != 0;
  };
  if (!append(texts.createdBy) || !append(texts.dateCreated) || !append(texts.lastModified)) return;
  known.firstBytes = bytes;
  if (append(texts.lastModifiedBy)) known.bytes = bytes;
}

// ---- names

void RecentTexts::LoadName(CArchive& ar, const CRuntimeClass* record, CString& name) {
  KnownName& known = m_names[record->m_nNumber % m_names.size()];
  if (known.bytes != 0 && ar.ReadIfNext(known.stored.data(), known.bytes)) {
    name = known.name.Take();
    return;
  }
  ar >> name;
  known.name.Set(name);
  known.bytes = CArchive::StoredBytes(name, known.stored.data(), known.stored.size());
}
