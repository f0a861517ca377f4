// CArchive: references and classes. framework/archive.cpp describes the byte layout.
#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "framework/archive.h"
#include "framework/internal/loaded_objects.h"
#include "framework/internal/stored_numbers.h"
#include "platform/threads.h"

namespace {

constexpr WORD kNullTag = 0;
constexpr WORD kNewClassTag = 0xFFFF;
constexpr WORD kClassBit = 0x8000;
constexpr WORD kBigTag = 0x7FFF;  // a DWORD follows
constexpr DWORD kBigClassBit = 0x80000000;
constexpr DWORD kLastNumber = 0x3FFFFFFE;
constexpr std::size_t kLongestTag = sizeof(WORD) + sizeof(DWORD);
constexpr std::size_t kLongestClassName = 63;
constexpr std::size_t kStackReserve = 128 * 1024;  // bytes of stack for one Serialize
// Bytes of stack that a level may take more when it loads than when it stores: the archive's own calls, and 2 KiB of
// the class.
#ifdef KV_BLOCKS_FROM_HEAP  // with the address sanitizer, whose frames are larger
constexpr std::size_t kLoadingReserve = 8192;
#else
constexpr std::size_t kLoadingReserve = 2048 + 512;
#endif
constexpr UINT kNoSchemaYet = UINT(-1);

// The part of a schema that is stored.
UINT StoredSchema(const CRuntimeClass* record) { return record->m_wSchema & 0xFFFF; }

bool StackIsLow() { return StackBytesLeft() < kStackReserve; }

bool StackIsLowForLoading(int depth) { return StackBytesLeft() < kStackReserve + std::size_t(depth) * kLoadingReserve; }

std::string NotSerial(const CRuntimeClass* record) { return fmt::format("{} is not serial", record->m_lpszClassName); }

std::string NestedTooDeep(int depth) {
  return fmt::format("no room on the stack for an object of level {}", depth + 1);
}

// A name from damaged bytes.
std::string Printable(std::string_view name) {
  std::string text(name);
  for (char& c : text)
    if (c < ' ' || c > '~') c = '?';
  return text;
}

}  // namespace

// The message names the byte where the record begins, bytesBack before the archive's position.
void CArchive::FailClass(int cause, const std::string& detail, ULONGLONG bytesBack) const {
  const ULONGLONG position =
      m_bLoading ? m_pFile->GetPosition() - ULONGLONG(m_pInEnd - m_pIn) : m_nFlushed + ULONGLONG(m_pOut - m_pBuffer);
  throw CArchiveException(cause, m_strFileName, fmt::format("{} (byte {})", detail, position - bytesBack));
}

void CArchive::FailWanted(const CRuntimeClass* record, const CRuntimeClass* wanted) const {
  FailClass(CArchiveException::badClass,
            fmt::format("{} instead of {}", record->m_lpszClassName, wanted->m_lpszClassName));
}

// One call of ReadObject or WriteObject. Restores the outer object's schema when it ends.
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

// ---- storing

// Returns the tag's bytes, the lowest first, and their number in `bytes`.
ULONGLONG CArchive::TagOf(DWORD number, bool isClass, std::size_t& bytes) {
  const bool big = number >= kBigTag;
  bytes = big ? kLongestTag : sizeof(WORD);
  return big ? kBigTag | ULONGLONG(isClass ? kBigClassBit | number : number) << 16
             : ULONGLONG(isClass ? kClassBit | number : number);
}

void CArchive::WriteTag(DWORD number, bool isClass) {
  std::size_t bytes = 0;
  const ULONGLONG tag = TagOf(number, isClass, bytes);
  if (std::size_t(m_pOutEnd - m_pOut) < sizeof tag) MakeRoom();
  std::memcpy(m_pOut, &tag, sizeof tag);  // the bytes after the tag are overwritten later
  m_pOut += bytes;
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
  if (record->m_wSchema == CRuntimeClass::kNoSchema) FailClass(CArchiveException::badClass, NotSerial(record));
  if (StackIsLowForLoading(m_nDepth)) FailClass(CArchiveException::genericException, NestedTooDeep(m_nDepth));
  if (stored.GetCount() >= kLastNumber - 1) Fail(CArchiveException::badIndex);
  WriteClass(record);
  stored.Enter(object);
  const Level level(*this);
  const_cast<CObject*>(object)->Serialize(*this);  // Serialize does not change an object when it stores
}

void CArchive::WriteObjectWhole(const CObject* object) {
  if (!object) return WriteObject(object);
  CheckStoring();
  if (const DWORD number = Stored().NumberOf(object)) return WriteTag(number, /*isClass=*/false);
  if (Stored().IsUnstorable(object))
    FailClass(CArchiveException::badClass, fmt::format("an object in {}", object->GetRuntimeClass()->m_lpszClassName));
  const ULONGLONG position = m_nFlushed + ULONGLONG(m_pOut - m_pBuffer);
  const DWORD count = Stored().GetCount();
  try {
    WriteObject(object);
  } catch (const CFileException&) {
    throw;
  } catch (const CArchiveException& failure) {
    RollBackStored(position, count);
    if (failure.m_cause == CArchiveException::badClass) Stored().NoteUnstorable(object);
    throw;
  } catch (...) {
    RollBackStored(position, count);
    throw;
  }
}

void CArchive::RollBackStored(ULONGLONG position, DWORD count) {
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
  Stored().RollBack(count);
  std::fill(std::begin(m_known), std::end(m_known), KnownClass{});
}

void CArchive::WriteClass(const CRuntimeClass* record) {
  const KnownClass& known = m_known[PlaceOf(record)];
  if (known.record == record && std::size_t(m_pOutEnd - m_pOut) >= sizeof known.tag) {
    std::memcpy(m_pOut, &known.tag, sizeof known.tag);
    m_pOut += known.tagBytes;
    return;
  }
  CheckStoring();
  StoredNumbers& stored = Stored();
  DWORD number = stored.NumberOf(record);
  if (number != 0) {
    WriteTag(number, /*isClass=*/true);
  } else {
    const std::size_t length = std::strlen(record->m_lpszClassName);
    if (record->m_wSchema == CRuntimeClass::kNoSchema || length > kLongestClassName)
      FailClass(CArchiveException::badClass, NotSerial(record));
    if (stored.GetCount() >= kLastNumber) Fail(CArchiveException::badIndex);
    *this << kNewClassTag << WORD(StoredSchema(record)) << WORD(length);
    Write(record->m_lpszClassName, length);
    number = stored.Enter(record);
  }
  NoteKnown(const_cast<CRuntimeClass*>(record), number, StoredSchema(record));
}

// Remembers the class after its record or a tag with its number.
void CArchive::NoteKnown(CRuntimeClass* record, DWORD number, UINT schema) {
  std::size_t bytes = 0;
  const ULONGLONG tag = TagOf(number, /*isClass=*/true, bytes);
  m_known[PlaceOf(record)] = {record, tag, WORD(bytes), WORD(schema)};
}

// ---- loading

// Reads a tag. Returns true for a class record: tag is the class's number, or 0 for a new class, whose record follows.
// Returns false for an object: tag is its number, or 0 for null.
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
  constexpr ULONGLONG kHead = 3 * sizeof(WORD);
  if (length > kLongestClassName)
    FailClass(CArchiveException::badClass, fmt::format("a name of {} bytes", length), kHead);
  EnsureRead(name, length);
  CRuntimeClass* record = CRuntimeClass::FromName(name, length);
  if (!record) FailClass(CArchiveException::badClass, Printable({name, length}), kHead + length);
  const UINT own = StoredSchema(record);
  const bool versionable = (record->m_wSchema & VERSIONABLE_SCHEMA) != 0;
  if (versionable ? stored > own : stored != own)
    FailClass(CArchiveException::badSchema,
              fmt::format("{} has schema {}, {} {}", record->m_lpszClassName, stored, own,
                          versionable ? "at most" : "is expected"),
              kHead + length);
  schema = stored;
  return record;
}

// Returns the class of a record whose tag was read. A new class gets the next number.
CRuntimeClass* CArchive::ReadClassAfterTag(DWORD tag, UINT& schema) {
  if (tag == 0) {
    CRuntimeClass* record = ReadNewClass(schema);
    CheckNumbersLeft();
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

// Raises badIndex if the archive has no more numbers.
void CArchive::CheckNumbersLeft() {
  if (Loaded().GetCount() >= kLastNumber) Fail(CArchiveException::badIndex);
}

CRuntimeClass* CArchive::ReadClass(const CRuntimeClass* wanted, UINT* schema) {
  UINT read = 0;
  CRuntimeClass* record = ReadKnownClass(wanted, read);
  if (record) {
    if (schema) *schema = read;
    return record;
  }
  CheckLoading();
  DWORD tag = 0;
  if (!ReadTag(tag)) Fail(CArchiveException::badIndex);
  record = ReadClassAfterTag(tag, read);
  CheckClass(record, wanted);
  if (schema) *schema = read;
  return record;
}

CObject* CArchive::ReadObject(const CRuntimeClass* wanted) { return ReadReference(wanted, /*onlyNew=*/false); }

CObject* CArchive::ReadOwnedObject(const CRuntimeClass* wanted) { return ReadReference(wanted, /*onlyNew=*/true); }

// Returns the object of the next reference and the length of its tag in bytes; kLongestTag bytes must be in the buffer.
// Null if the reference is null, new or invalid.
inline CObject* CArchive::NextKnownObject(std::size_t& bytes) const {
  WORD word = 0;
  std::memcpy(&word, m_pIn, sizeof word);
  DWORD number = word;
  if (word == kBigTag) std::memcpy(&number, m_pIn + sizeof word, sizeof number);
  bytes = word == kBigTag ? kLongestTag : sizeof word;
  return word <= kBigTag ? m_pLoaded->ObjectAt(number) : nullptr;
}

// Reads a reference to an object that was read before, if the reference is in the buffer and valid. Otherwise reads
// nothing and returns null.
CObject* CArchive::ReadKnownObject(const CRuntimeClass* wanted) {
  if (std::size_t(m_pInEnd - m_pIn) < kLongestTag || !m_pLoaded) return nullptr;
  std::size_t bytes = 0;
  CObject* object = NextKnownObject(bytes);
  if (!object || (wanted && !object->IsKindOf(wanted))) return nullptr;
  m_pIn += bytes;
  return object;
}

std::size_t CArchive::ReadKnownObjects(CObject** objects, std::size_t count) {
  if (!m_pLoaded) return 0;
  std::size_t done = 0;
  for (; done < count && std::size_t(m_pInEnd - m_pIn) >= kLongestTag; ++done) {
    std::size_t bytes = 0;
    CObject* object = NextKnownObject(bytes);
    if (!object) break;
    objects[done] = object;
    m_pIn += bytes;
  }
  return done;
}

// Reads a class record of a known class in the same way.
CRuntimeClass* CArchive::ReadKnownClass(const CRuntimeClass* wanted, UINT& schema) {
  WORD word = 0;
  if (std::size_t(m_pInEnd - m_pIn) < sizeof word || !m_pLoaded) return nullptr;
  std::memcpy(&word, m_pIn, sizeof word);
  if (word < kClassBit || word == kNewClassTag) return nullptr;
  const LoadedObjects::Class* met = m_pLoaded->ClassAt(word & ~DWORD(kClassBit));
  if (!met || (wanted && !met->IsBelow(wanted))) return nullptr;
  m_pIn += sizeof word;
  schema = met->schema;
  if (m_known[PlaceOf(met->record)].record != met->record) NoteKnown(met->record, word & ~DWORD(kClassBit), schema);
  return met->record;
}

CObject* CArchive::ReadReference(const CRuntimeClass* wanted, bool onlyNew) {
  if (ReadIfNext(&kNullTag, sizeof kNullTag)) return nullptr;
  if (!onlyNew)
    if (CObject* object = ReadKnownObject(wanted)) return object;
  CheckLoading();
  DWORD tag = 0;
  if (ReadTag(tag)) {
    if (m_nDepth != 0) return ReadNewObject(tag, wanted);
    const DWORD count = Loaded().GetCount();
    try {
      return ReadNewObject(tag, wanted);
    } catch (...) {
      Loaded().RollBack(count);
      throw;
    }
  }
  if (tag == 0) return nullptr;
  CObject* object = Loaded().ObjectAt(tag);
  if (!object || onlyNew) Fail(CArchiveException::badIndex);
  CheckClass(object->GetRuntimeClass(), wanted);
  return object;
}

CObject* CArchive::ReadNewObject(DWORD tag, const CRuntimeClass* wanted) {
  if (StackIsLow()) FailClass(CArchiveException::genericException, NestedTooDeep(m_nDepth));
  UINT schema = 0;
  const CRuntimeClass* record = ReadClassAfterTag(tag, schema);
  CheckClass(record, wanted);
  CheckNumbersLeft();
  std::unique_ptr<CObject> fresh(record->CreateObject());
  if (!fresh) FailClass(CArchiveException::badClass, record->m_lpszClassName);
  Loaded().AddObject(fresh.get(), /*made=*/true);
  CObject* object = fresh.release();  // the table now deletes it if the load fails
  const Level level(*this);
  m_nSchema = schema;
  object->Serialize(*this);
  return object;
}

ULONGLONG CArchive::DeleteLoaded(const std::function<bool(const CObject*)>& unwanted) {
  CheckLoading();
  return m_pLoaded ? m_pLoaded->DeleteIf(unwanted) : 0;
}

// ---- both ways

void CArchive::MapObject(const CObject* object) {
  if (!object) return;
  if (m_bLoading) {
    if (!m_pLoaded) CheckLoading();
    CheckNumbersLeft();
    Loaded().AddObject(object, /*made=*/false);
    return;
  }
  CheckStoring();
  StoredNumbers& stored = Stored();
  if (stored.GetCount() >= kLastNumber && stored.NumberOf(object) == 0) Fail(CArchiveException::badIndex);
  stored.Enter(object);
}

void CArchive::SerializeClassSlowly(const CRuntimeClass* record) {
  if (!m_bLoading) {
    WriteClass(record);
    m_nSchema = kNoSchemaYet;
    return;
  }
  UINT schema = 0;
  if (const CRuntimeClass* read = ReadClass(record, &schema); read != record) FailWanted(read, record);
  m_nSchema = schema;
}

CObject* ReadObjectOfClass(CArchive& ar, const CRuntimeClass* wanted) { return ar.ReadObject(wanted); }
