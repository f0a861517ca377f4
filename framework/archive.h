// CArchive: a stream of values and objects in a fixed byte layout, on top of a CFile. The layout is described in
// framework/archive.cpp.
//
// An archive either stores or loads, for its whole life. It starts at the file's current position. The file stays the
// caller's and must outlive the archive. Only one thread may use an archive.
//
// Every failure raises CArchiveException or, from the file, CFileException, or what a class's own Serialize raises;
// both directions can also run out of memory (std::bad_alloc). Loading checks every length, count and number of the
// data before it allocates, so damaged bytes raise and never crash.
//
// A save can lose data without raising: the library then stores null for an object that it cannot store. So look at
// GetSerializationStatus (share/objects/storage_status.h) after saving as well as after loading.
#pragma once

#include <concepts>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "framework/exception.h"
#include "framework/file.h"
#include "framework/object.h"

class KVSHARE_API CArchiveException : public CException {
 public:
  enum {
    none,              // 0 no cause given
    genericException,  // 1 any other cause: objects nested too deep for the stack, use after Close
    readOnly,          // 2 a write to an archive that loads
    endOfFile,         // 3 the data needs more bytes than the file has
    writeOnly,         // 4 a read from an archive that stores
    badIndex,          // 5 a class or object number that is not valid here, or too many numbers for one archive
    badClass,          // 6 a class that is unknown, not the wanted one, or not serial
    badSchema,         // 7 a layout version that the class cannot read, for example of a later release
  };

  // cause is one of the values above. A null file name counts as empty. detail, in UTF-8, is added to the message: the
  // archive's own badClass and badSchema name the class and the byte.
  explicit CArchiveException(int cause = none, LPCTSTR fileName = nullptr, std::string_view detail = {});

  int m_cause;
  CString m_strFileName;
};

[[noreturn]] KVSHARE_API void AfxThrowArchiveException(int cause, LPCTSTR fileName = nullptr);

// The number types that an archive copies byte for byte. `long` has 64 bits on some systems and is then stored in 8
// bytes: convert a 32-bit field such as a COLORREF to DWORD. wchar_t and long double differ between systems and are not
// accepted.
template <class T>
concept ArchiveNumber = (std::integral<T> || std::same_as<T, float> || std::same_as<T, double>)&&sizeof(T) <= 8 &&
                        (!std::same_as<T, wchar_t> || sizeof(wchar_t) == 2);

class StoredNumbers;
class LoadedObjects;

class KVSHARE_API CArchive {
 public:
  enum Mode : UINT { store = 0, load = 1, bNoFlushOnDelete = 2, bNoByteSwap = 4 };
  static constexpr int kBufferBytes = (1 << 16) - 64;  // one whole page of the block pool

  // file is not null and is open for this mode. bNoFlushOnDelete makes the destructor drop buffered bytes instead of
  // writing them; bNoByteSwap has no effect. A buffer that is passed in stays the caller's and has at least 128 bytes.
  // For a null buffer the archive allocates bufferBytes, at least 128.
  CArchive(CFile* file, UINT mode, int bufferBytes = kBufferBytes, void* buffer = nullptr);
  // Closes, and ignores failures. Call Close yourself to see them.
  ~CArchive();
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  bool IsLoading() const noexcept { return m_bLoading; }
  bool IsStoring() const noexcept { return !m_bLoading; }
  bool IsBufferEmpty() const noexcept { return m_pIn == m_pInEnd; }
  // Null after Close and Abort.
  CFile* GetFile() const noexcept { return m_pFile; }

  // The path of the file when the archive was created; exceptions carry it.
  CString m_strFileName;

  // Storing: writes the buffered bytes to the file. Loading: sets the file's position to the archive's own position.
  void Flush();
  // Flushes and releases the file, which stays open. A second call does nothing.
  void Close();
  // Releases the file and drops the buffered bytes. Never raises.
  void Abort() noexcept;

  // ---- bytes

  // Returns the number of bytes read; it is smaller than `bytes` only at the end of the file.
  std::size_t Read(void* target, std::size_t bytes);
  // Reads exactly that many bytes or raises endOfFile; the bytes before the file's end are then read already.
  void EnsureRead(void* target, std::size_t bytes);
  void Write(const void* source, std::size_t bytes);
  // Makes at least that many bytes available in the buffer; raises endOfFile if the file has fewer. More than the
  // buffer's size raises genericException.
  void FillBuffer(std::size_t bytesNeeded);
  // The number of bytes from the archive's position to the file's end.
  ULONGLONG GetBytesLeft() const;
  // Raises endOfFile if fewer than count elements of elementBytes each are left.
  void EnsureLeft(ULONGLONG count, ULONGLONG elementBytes = 1);

  // ---- values

  template <ArchiveNumber T>
  CArchive& operator<<(T value) {
    if (std::size_t(m_pOutEnd - m_pOut) < sizeof(T)) MakeRoom();
    std::memcpy(m_pOut, &value, sizeof(T));
    m_pOut += sizeof(T);
    return *this;
  }
  // A bool is one byte, 0 or 1; any other byte is read as true.
  template <ArchiveNumber T>
  CArchive& operator>>(T& value) {
    if (std::size_t(m_pInEnd - m_pIn) < sizeof(T)) FillBuffer(sizeof(T));
    if constexpr (std::same_as<T, bool>) {
      value = *m_pIn != 0;
    } else {
      std::memcpy(&value, m_pIn, sizeof(T));
    }
    m_pIn += sizeof(T);
    return *this;
  }
  // Text is stored as UTF-16. Narrow text of old files is read as code page 1252.
  CArchive& operator<<(const CString& text);
  CArchive& operator>>(CString& text);
  // Reads the next text if its bytes are exactly those that `text` would be stored as, and returns true. Otherwise
  // reads nothing and returns false; it may do so for an equal text too. Saves memory for texts that repeat: the caller
  // keeps the text that it already has.
  bool ReadIfEqual(const CString& text);
  // The same for a sequence of bytes, at least one, for example several texts in the form of StoredBytes.
  bool ReadIfNext(const void* bytes, std::size_t count) {
    if (std::size_t(m_pInEnd - m_pIn) < count || std::memcmp(m_pIn, bytes, count) != 0) return false;
    m_pIn += count;
    return true;
  }
  // Writes the stored form of a text to `bytes` and returns its length. Returns 0 and writes nothing if the text has
  // 255 units or more, or if `room` is too small.
  static std::size_t StoredBytes(const CString& text, BYTE* bytes, std::size_t room);

  void WriteCount(ULONGLONG count);
  // Raises endOfFile if fewer than that many elements of elementBytes each can be left. With elementBytes 0 there is no
  // check, and the caller must check the count.
  ULONGLONG ReadCount(ULONGLONG elementBytes = 0);

  // ---- objects

  // Stores a reference: null, an object stored before, or a new object with its class and its data. Raises badClass for
  // a class that is not serial and genericException for an object that is nested too deep for the stack, both before
  // any byte of that object is written. What is stored also loads with a stack of the same size, if loading takes a
  // class at most 2 KiB of stack per object more than storing; 8 MiB allow about 3,000 levels.
  void WriteObject(const CObject* object);
  // As WriteObject, but stores the object completely or not at all: if something inside the object raises, its bytes
  // and numbers are removed again, and the caller can store something else in its place. An object that failed because
  // of a class that is not serial is not tried again. A CFileException removes nothing: the archive is then unusable.
  void WriteObjectWhole(const CObject* object);
  // Reads a reference; null for a null reference. The caller owns a new object after the call, with all objects that
  // its Serialize read. An archive returns an object once for each reference to it and deletes none.
  //
  // If the outermost call raises (objects nest: a Serialize reads other objects), everything that this call created is
  // deleted, in the order of creation, so an owner is deleted before the objects it owns. Objects that a destructor has
  // deleted already are skipped. Objects of earlier outermost calls stay the caller's. If a Serialize catches the
  // exception itself, nothing is deleted, and the objects read so far stay.
  //
  // So a destructor may run on an object whose Serialize never finished, and may find that objects it points to are
  // gone. The memory of a gone object is kept until the end of the clean-up and holds a neutral object: a plain
  // CObject, or for a node a new QFObject (share/objects/object.h). A destructor may ask it for its class (IsKindOf,
  // DYNAMIC_DOWNCAST), call the virtual functions of that class and delete it again; it must not use other fields. This
  // does not work for classes that have an operator delete of their own, are final or in a nameless namespace (the
  // compiler then calls the destructor directly), or have another polymorphic base first.
  //
  // At the end no node that an archive of this thread knows points to a gone one, and no gone object waits for the
  // post-load notice (share/objects/serialize_notify.h).
  //
  // Raises badClass, before an object is created, if the class is not `wanted` or derived from it; null accepts any
  // class.
  CObject* ReadObject(const CRuntimeClass* wanted);
  // Reads up to count references to objects that were read before, of any class, and returns their number. Stops at the
  // first reference of another kind and at the end of the buffered bytes. Fast path for long lists of references.
  std::size_t ReadKnownObjects(CObject** objects, std::size_t count);
  // As ReadObject, for a reference that owns its object: raises badIndex if the object was read before, so that damaged
  // bytes cannot give one object two owners.
  CObject* ReadOwnedObject(const CRuntimeClass* wanted);
  // Deletes those objects which ReadObject created in this archive, which still exist, and for which `unwanted` returns
  // true; returns their number. Destructors find gone neighbours as described at ReadObject. For a loader that has read
  // a whole document and found objects that nobody owns. Nothing may point to them any more, and `unwanted` must not
  // delete.
  ULONGLONG DeleteLoaded(const std::function<bool(const CObject*)>& unwanted);
  // Gives the next number to an object that is not itself stored, so that references to it can be stored. Storing and
  // loading must do so at the same place. Null does nothing. On loading, the object stays the caller's.
  void MapObject(const CObject* object);

  // A class record without an object. ReadClass returns the class; it raises badClass if the class is not `wanted` or
  // derived from it. Optional: wanted (null accepts any class) and schema (may be null).
  void WriteClass(const CRuntimeClass* record);
  CRuntimeClass* ReadClass(const CRuntimeClass* wanted = nullptr, UINT* schema = nullptr);
  // Stores or loads the class record of one level of a class hierarchy; raises badClass for the record of another
  // class. Call it first in Serialize and then the base's Serialize, so that a class's own record comes before its
  // base's. Afterwards GetObjectSchema returns the schema of this level.
  void SerializeClass(const CRuntimeClass* record) {
    const KnownClass& known = m_known[PlaceOf(record)];
    if (known.record != record) return SerializeClassSlowly(record);
    if (std::size_t(m_pInEnd - m_pIn) >= sizeof known.tag) {
      ULONGLONG next = 0;
      std::memcpy(&next, m_pIn, sizeof next);
      if (((next ^ known.tag) & known.TagMask()) != 0) return SerializeClassSlowly(record);
      m_pIn += known.tagBytes;
      m_nSchema = known.schema;
    } else if (std::size_t(m_pOutEnd - m_pOut) >= sizeof known.tag) {
      std::memcpy(m_pOut, &known.tag, sizeof known.tag);  // the bytes after the tag are overwritten later
      m_pOut += known.tagBytes;
      m_nSchema = UINT(-1);
    } else {
      SerializeClassSlowly(record);
    }
  }

  // The schema number of the object or class record that was read last, without VERSIONABLE_SCHEMA. Ask once, directly
  // after SerializeClass (or first in Serialize, for a class without its own record), and keep the value: a second call
  // returns UINT(-1), and the base's record replaces the number. Objects read in between change nothing: the number is
  // restored after them. UINT(-1) when storing.
  UINT GetObjectSchema() noexcept { return std::exchange(m_nSchema, UINT(-1)); }
  void SetObjectSchema(UINT schema) noexcept { m_nSchema = schema; }

 private:
  struct Level;

  // A class that this archive has stored or loaded, with the tag that refers to it. A small table has one entry per
  // slot; a later class replaces an earlier one of the same slot.
  struct KnownClass {
    ULONGLONG TagMask() const { return (ULONGLONG{1} << tagBytes * 8) - 1; }

    CRuntimeClass* record = nullptr;
    ULONGLONG tag = 0;  // 2 or 6 bytes
    WORD tagBytes = 0;
    WORD schema = 0;
  };
  static constexpr std::size_t kKnownClasses = 32;
  static std::size_t PlaceOf(const CRuntimeClass* record) { return record->m_nNumber % kKnownClasses; }
  void SerializeClassSlowly(const CRuntimeClass* record);
  static ULONGLONG TagOf(DWORD number, bool isClass, std::size_t& bytes);
  void NoteKnown(CRuntimeClass* record, DWORD number, UINT schema);

  void MakeRoom();
  void CheckStoring() const;
  void CheckLoading() const {
    if (!m_bLoading || !m_pFile) FailLoading();
  }
  [[noreturn]] void FailLoading() const;
  [[noreturn]] void Fail(int cause) const;
  [[noreturn]] void FailClass(int cause, const std::string& detail, ULONGLONG bytesBack = 0) const;
  void CheckClass(const CRuntimeClass* record, const CRuntimeClass* wanted) const {
    if (wanted && !record->IsDerivedFrom(wanted)) FailWanted(record, wanted);
  }
  [[noreturn]] void FailWanted(const CRuntimeClass* record, const CRuntimeClass* wanted) const;
  bool ReadTag(DWORD& tag);
  void WriteTag(DWORD number, bool isClass);
  void RollBackStored(ULONGLONG position, DWORD count);
  void CheckNumbersLeft();
  CRuntimeClass* ReadNewClass(UINT& schema);
  CRuntimeClass* ReadClassAfterTag(DWORD tag, UINT& schema);
  CObject* NextKnownObject(std::size_t& bytes) const;
  CObject* ReadKnownObject(const CRuntimeClass* wanted);
  CRuntimeClass* ReadKnownClass(const CRuntimeClass* wanted, UINT& schema);
  CObject* ReadReference(const CRuntimeClass* wanted, bool onlyNew);
  CObject* ReadNewObject(DWORD tag, const CRuntimeClass* wanted);
  LoadedObjects& Loaded();
  StoredNumbers& Stored();

  // m_pIn to m_pInEnd are the bytes still to read, m_pBuffer to m_pOut the bytes still to write. The pointers of the
  // other direction are null, so a value of the wrong direction takes the slow path, which raises.
  BYTE* m_pIn = nullptr;
  BYTE* m_pInEnd = nullptr;
  BYTE* m_pOut = nullptr;
  BYTE* m_pOutEnd = nullptr;
  BYTE* m_pBuffer = nullptr;
  std::size_t m_nBufferBytes;
  bool m_bOwnBuffer;
  CFile* m_pFile;
  bool m_bLoading;
  bool m_bFlushOnDelete;
  UINT m_nSchema = UINT(-1);
  int m_nDepth = 0;  // number of nested ReadObject or WriteObject calls
  LoadedObjects* m_pLoaded = nullptr;
  std::unique_ptr<StoredNumbers> m_stored;
  ULONGLONG m_nFlushed = 0;  // bytes written to the file so far
  KnownClass m_known[kKnownClasses];
};

// References. DECLARE_SERIAL declares operator>> for pointers to its class.
inline CArchive& operator<<(CArchive& ar, const CObject* object) {
  ar.WriteObject(object);
  return ar;
}
inline CArchive& operator>>(CArchive& ar, CObject*& object) {
  object = ar.ReadObject(nullptr);
  return ar;
}
inline CArchive& operator>>(CArchive& ar, const CObject*& object) {
  object = ar.ReadObject(nullptr);
  return ar;
}

// The length record of a text without the text. Reading returns the number of characters and sets charBytes, the bytes
// per character, to 1 or 2; it raises endOfFile if fewer characters are left. On writing, `wide` selects 2 bytes.
KVSHARE_API std::size_t AfxReadStringLength(CArchive& ar, int& charBytes);
KVSHARE_API void AfxWriteStringLength(CArchive& ar, std::size_t length, BOOL wide);
