// CArchive: references and classes. The byte layout stands in framework/archive.cpp.
#include <algorithm>
#include <iterator>
#include <utility>

#include "framework/archive.h"
#include "framework/loaded_objects.h"
#include "framework/stored_numbers.h"
#include "platform/threads.h"

namespace {

constexpr WORD kNullTag = 0;
constexpr WORD kNewClassTag = 0xFFFF;
constexpr WORD kClassBit = 0x8000;
constexpr WORD kBigTag = 0x7FFF;  // a DWORD follows
constexpr DWORD kBigClassBit = 0x80000000;
constexpr DWORD kLastNumber = 0x3FFFFFFE;
constexpr std::size_t kLongestClassName = 63;
constexpr std::size_t kStackReserve = 128 * 1024;  // for what a Serialize itself needs
constexpr UINT kNoSchemaYet = UINT(-1);

// The part of a schema that is stored.
UINT StoredSchema(const CRuntimeClass* record) { return record->m_wSchema & 0xFFFF; }

bool StackIsLow() { return StackBytesLeft() < kStackReserve; }

}  // namespace

// One call of ReadObject or WriteObject inside another: the schema of the outer object is there again behind it.
struct CArchive::Level {
  explicit Level(CArchive& archive) : ar(archive), schema(archive.m_nSchema) { ++ar.m_nDepth; }
  ~Level() {
    --ar.m_nDepth;
    ar.m_nSchema = schema;
  }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

  CArchive& ar;
  UINT schema;
};

LoadedObjects& CArchive::Loaded() {
  if (!m_pLoaded) m_pLoaded = LoadedObjects::Open();
  return *m_pLoaded;
}

StoredNumbers& CArchive::Stored() {
  if (!m_stored) m_stored = std::make_unique<StoredNumbers>();
  return *m_stored;
}

UINT CArchive::GetObjectSchema() noexcept { return std::exchange(m_nSchema, kNoSchemaYet); }

// ---- storing

void CArchive::WriteTag(DWORD number, bool isClass) {
  if (number < kBigTag) {
    *this << WORD(isClass ? kClassBit | number : number);
  } else {
    *this << kBigTag << DWORD(isClass ? kBigClassBit | number : number);
  }
}

void CArchive::WriteObject(const CObject* object) {
  if (!object) {
    *this << kNullTag;
    return;
  }
  CheckStoring();
  StoredNumbers& stored = Stored();
  if (const DWORD number = stored.NumberOf(object)) return WriteTag(number, /*isClass=*/false);
  const CRuntimeClass* record = object->GetRuntimeClass();
  if (record->m_wSchema == CRuntimeClass::kNoSchema) Fail(CArchiveException::badClass);
  if (StackIsLow()) Fail(CArchiveException::genericException);
  if (stored.GetCount() >= kLastNumber - 1) Fail(CArchiveException::badIndex);
  WriteClass(record);
  stored.Enter(object);
  const Level level(*this);
  const_cast<CObject*>(object)->Serialize(*this);  // a storing Serialize changes nothing
}

void CArchive::WriteObjectWhole(const CObject* object) {
  if (!object) return WriteObject(object);
  CheckStoring();
  if (Stored().IsUnstorable(object)) Fail(CArchiveException::badClass);
  const ULONGLONG position = m_nFlushed + ULONGLONG(m_pOut - m_pBuffer);
  const DWORD count = Stored().GetCount();
  try {
    WriteObject(object);
  } catch (const CFileException&) {
    throw;
  } catch (const CArchiveException& failure) {
    TakeBackStored(position, count);
    if (failure.m_cause == CArchiveException::badClass) Stored().NoteUnstorable(object);
    throw;
  } catch (...) {
    TakeBackStored(position, count);
    throw;
  }
}

void CArchive::TakeBackStored(ULONGLONG position, DWORD count) {
  CheckStoring();
  if (position >= m_nFlushed) {
    m_pOut = m_pBuffer + (position - m_nFlushed);
  } else {
    const ULONGLONG end = m_pFile->GetPosition();
    const ULONGLONG start = m_pFile->Seek(-LONGLONG(m_nFlushed - position), CFile::current);
    if (m_pFile->GetLength() == end) m_pFile->SetLength(start);
    m_nFlushed = position;
    m_pOut = m_pBuffer;
  }
  Stored().TakeBack(count);
  std::fill(std::begin(m_known), std::end(m_known), KnownClass{});
}

void CArchive::WriteClass(const CRuntimeClass* record) {
  const KnownClass& known = m_known[PlaceOf(record)];
  if (known.record == record) {
    *this << known.tag;
    return;
  }
  CheckStoring();
  StoredNumbers& stored = Stored();
  DWORD number = stored.NumberOf(record);
  if (number != 0) {
    WriteTag(number, /*isClass=*/true);
  } else {
    const std::size_t length = std::strlen(record->m_lpszClassName);
    if (record->m_wSchema == CRuntimeClass::kNoSchema || length > kLongestClassName) Fail(CArchiveException::badClass);
    if (stored.GetCount() >= kLastNumber) Fail(CArchiveException::badIndex);
    *this << kNewClassTag << WORD(StoredSchema(record)) << WORD(length);
    Write(record->m_lpszClassName, length);
    number = stored.Enter(record);
  }
  NoteKnown(const_cast<CRuntimeClass*>(record), number, StoredSchema(record));
}

// Behind a tag of that number, or the record to which it was given. Only small numbers fit a tag alone.
void CArchive::NoteKnown(CRuntimeClass* record, DWORD number, UINT schema) {
  if (number < kBigTag) m_known[PlaceOf(record)] = {record, WORD(kClassBit | number), WORD(schema)};
}

// ---- loading

// Reads a tag. True: a class record, with the class's number in tag, or 0 for a new class, whose record follows. False:
// an object's number, or 0 for null.
bool CArchive::ReadTag(DWORD& tag) {
  WORD word = 0;
  *this >> word;
  if (word == kNewClassTag) {
    tag = 0;
    return true;
  }
  DWORD number = word & ~kClassBit;
  bool isClass = (word & kClassBit) != 0;
  if (word == kBigTag) {
    *this >> number;
    isClass = (number & kBigClassBit) != 0;
    number &= ~kBigClassBit;
  }
  if (number == 0 && word != kNullTag) Fail(CArchiveException::badIndex);
  tag = number;
  return isClass;
}

CRuntimeClass* CArchive::ReadNewClass(UINT& schema) {
  WORD stored = 0;
  WORD length = 0;
  char name[kLongestClassName];
  *this >> stored >> length;
  if (length > kLongestClassName) Fail(CArchiveException::badClass);
  EnsureRead(name, length);
  CRuntimeClass* record = CRuntimeClass::FromName(name, length);
  if (!record) Fail(CArchiveException::badClass);
  const bool versionable = (record->m_wSchema & VERSIONABLE_SCHEMA) != 0;
  if (stored != StoredSchema(record) && !versionable) Fail(CArchiveException::badSchema);
  schema = stored;
  return record;
}

// The class of a record whose tag has been read. A new one is entered.
CRuntimeClass* CArchive::ReadClassBehind(DWORD tag, UINT& schema) {
  if (tag == 0) {
    CRuntimeClass* record = ReadNewClass(schema);
    EnterNumber();
    Loaded().AddClass(record, schema);
    NoteKnown(record, Loaded().GetCount(), schema);
    return record;
  }
  const LoadedObjects::Class* met = Loaded().ClassAt(tag);
  if (!met) Fail(CArchiveException::badIndex);
  schema = met->schema;
  NoteKnown(met->record, tag, schema);
  return met->record;
}

// Before a number is handed out.
void CArchive::EnterNumber() {
  if (Loaded().GetCount() >= kLastNumber) Fail(CArchiveException::badIndex);
}

CRuntimeClass* CArchive::ReadClass(const CRuntimeClass* wanted, UINT* schema) {
  CheckLoading();
  DWORD tag = 0;
  UINT read = 0;
  if (!ReadTag(tag)) Fail(CArchiveException::badIndex);
  CRuntimeClass* record = ReadClassBehind(tag, read);
  if (wanted && !record->IsDerivedFrom(wanted)) Fail(CArchiveException::badClass);
  if (schema) *schema = read;
  return record;
}

CObject* CArchive::ReadObject(const CRuntimeClass* wanted) { return ReadReference(wanted, /*onlyNew=*/false); }

CObject* CArchive::ReadOwnedObject(const CRuntimeClass* wanted) { return ReadReference(wanted, /*onlyNew=*/true); }

CObject* CArchive::ReadReference(const CRuntimeClass* wanted, bool onlyNew) {
  if (std::size_t(m_pInEnd - m_pIn) >= sizeof kNullTag && std::memcmp(m_pIn, &kNullTag, sizeof kNullTag) == 0) {
    m_pIn += sizeof kNullTag;  // most references of a document
    return nullptr;
  }
  CheckLoading();
  DWORD tag = 0;
  if (ReadTag(tag)) {
    if (m_nDepth != 0) return ReadNewObject(tag, wanted);
    const DWORD count = Loaded().GetCount();
    try {
      return ReadNewObject(tag, wanted);
    } catch (...) {
      Loaded().TakeBack(count);
      throw;
    }
  }
  if (tag == 0) return nullptr;
  CObject* object = Loaded().ObjectAt(tag);
  if (!object || onlyNew) Fail(CArchiveException::badIndex);
  if (wanted && !object->IsKindOf(wanted)) Fail(CArchiveException::badClass);
  return object;
}

CObject* CArchive::ReadNewObject(DWORD tag, const CRuntimeClass* wanted) {
  if (StackIsLow()) Fail(CArchiveException::genericException);
  UINT schema = 0;
  const CRuntimeClass* record = ReadClassBehind(tag, schema);
  if (wanted && !record->IsDerivedFrom(wanted)) Fail(CArchiveException::badClass);
  EnterNumber();
  std::unique_ptr<CObject> fresh(record->CreateObject());
  if (!fresh) Fail(CArchiveException::badClass);
  Loaded().AddObject(fresh.get(), /*made=*/true);
  CObject* object = fresh.release();  // from here on the table's to take back
  const Level level(*this);
  m_nSchema = schema;
  object->Serialize(*this);
  return object;
}

ULONGLONG CArchive::DeleteLoaded(const std::function<bool(const CObject*)>& unwanted) {
  CheckLoading();
  return m_pLoaded ? m_pLoaded->TakeBackIf(unwanted) : 0;
}

// ---- both ways

void CArchive::MapObject(const CObject* object) {
  if (!object) return;
  if (m_bLoading) {
    CheckLoading();
    EnterNumber();
    Loaded().AddObject(object, /*made=*/false);
    return;
  }
  CheckStoring();
  StoredNumbers& stored = Stored();
  if (stored.NumberOf(object) != 0) return;
  if (stored.GetCount() >= kLastNumber) Fail(CArchiveException::badIndex);
  stored.Enter(object);
}

void CArchive::SerializeClassWhole(const CRuntimeClass* record) {
  if (!m_bLoading) {
    WriteClass(record);
    m_nSchema = kNoSchemaYet;
    return;
  }
  UINT schema = 0;
  if (ReadClass(record, &schema) != record) Fail(CArchiveException::badClass);
  m_nSchema = schema;
}

CObject* ReadObjectOfClass(CArchive& ar, const CRuntimeClass* wanted) { return ar.ReadObject(wanted); }
