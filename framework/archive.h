// CArchive, a stream of values and objects in a fixed byte layout, over a CFile. The layout stands in
// framework/archive.cpp.
//
// An archive either stores or loads, for its whole life. It works on the file from the file's position on; the file
// stays the caller's and has to outlive the archive. One thread uses an archive from its first object to its end.
//
// Whatever fails raises CArchiveException or, from the file, CFileException. Loading takes no byte on trust: a length,
// count or number is compared with what is left or known before anything is allocated.
#pragma once

#include <concepts>
#include <cstring>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "framework/exception.h"
#include "framework/file.h"
#include "framework/object.h"

class KVSHARE_API CArchiveException : public CException {
 public:
  enum {
    none,              // 0 no cause told
    genericException,  // 1 what no other cause tells: a graph too deep for the stack, use after Close
    readOnly,          // 2 a write to an archive that loads
    endOfFile,         // 3 fewer bytes than the data promises
    writeOnly,         // 4 a read from an archive that stores
    badIndex,          // 5 a number that stands for nothing, or more numbers than an archive holds
    badClass,          // 6 an object of an unknown class, of another class than asked for, or of one that is not serial
    badSchema,         // 7 a layout that the class doesn't read
  };

  // A null file name counts as empty.
  explicit CArchiveException(int cause = none, LPCTSTR fileName = nullptr);

  int m_cause;
  CString m_strFileName;
};

[[noreturn]] KVSHARE_API void AfxThrowArchiveException(int cause, LPCTSTR fileName = nullptr);

// The numbers that an archive takes as they lie in memory. On some systems `long` is a 64-bit number and goes as one:
// hand a 32-bit field such as a COLORREF over as DWORD. wchar_t and long double have no width of their own here.
template <class T>
concept ArchiveNumber = (std::integral<T> || std::same_as<T, float> || std::same_as<T, double>)&&sizeof(T) <= 8 &&
                        (!std::same_as<T, wchar_t> || sizeof(wchar_t) == 2);

class StoredNumbers;
class LoadedObjects;

class KVSHARE_API CArchive {
 public:
  enum Mode : UINT { store = 0, load = 1, bNoFlushOnDelete = 2, bNoByteSwap = 4 };
  static constexpr int kBufferBytes = (1 << 16) - 64;  // what a page of framework/block_pool.h holds

  // The file is open for the mode and is not null. bNoFlushOnDelete makes the destructor drop what Close would have
  // written; bNoByteSwap changes nothing. A buffer handed in stays the caller's and has at least 128 bytes; with null
  // the archive makes its own of bufferBytes, 128 at least.
  CArchive(CFile* file, UINT mode, int bufferBytes = kBufferBytes, void* buffer = nullptr);
  // Closes. What fails then is not told: to learn of it, call Close.
  ~CArchive();
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  bool IsLoading() const noexcept { return m_bLoading; }
  bool IsStoring() const noexcept { return !m_bLoading; }
  bool IsBufferEmpty() const noexcept { return m_pIn == m_pInEnd; }
  // Null after Close and Abort.
  CFile* GetFile() const noexcept { return m_pFile; }

  // The path of the file, taken when the archive was made; exceptions carry it.
  CString m_strFileName;

  // Writes out what is buffered; when loading, sets the file's position to where the archive has got.
  void Flush();
  // Flushes and lets go of the file, which stays open. A second call does nothing.
  void Close();
  // Lets go of the file and drops what is buffered. Never raises.
  void Abort() noexcept;

  // ---- bytes

  // Gives the number of bytes read, less than asked for only at the end of the file.
  std::size_t Read(void* target, std::size_t bytes);
  // Raises endOfFile if there are fewer; what there was has been read.
  void EnsureRead(void* target, std::size_t bytes);
  void Write(const void* source, std::size_t bytes);
  // Makes sure that at least that many bytes, at most the buffer's size, stand in the buffer; else raises endOfFile.
  void FillBuffer(std::size_t bytesNeeded);
  // The bytes between the archive's position and the file's end.
  ULONGLONG GetBytesLeft() const;
  // Raises endOfFile unless count elements of that many bytes each are left.
  void EnsureLeft(ULONGLONG count, ULONGLONG elementBytes = 1);

  // ---- values

  template <ArchiveNumber T>
  CArchive& operator<<(T value) {
    if (std::size_t(m_pOutEnd - m_pOut) < sizeof(T)) MakeRoom();
    std::memcpy(m_pOut, &value, sizeof(T));
    m_pOut += sizeof(T);
    return *this;
  }
  // A bool is a byte, 0 or 1; any other byte is read as true.
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
  // Stored wide; a narrow text is read as code page 1252.
  CArchive& operator<<(const CString& text);
  CArchive& operator>>(CString& text);
  // Reads the next text if it is stored just as this one would be; else reads nothing and gives false, as it may do for
  // a text that is equal, too. For texts that come again and again: what is known already needs no memory of its own.
  bool ReadIfEqual(const CString& text);
  // The same for bytes, one at least, such as several such texts in the form that StoredBytes gives them.
  bool ReadIfNext(const void* bytes, std::size_t count) {
    if (std::size_t(m_pInEnd - m_pIn) < count || std::memcmp(m_pIn, bytes, count) != 0) return false;
    m_pIn += count;
    return true;
  }
  // Writes a text into the room just as it is stored, and gives the number of bytes; 0, with nothing written, for one
  // of 255 units or more and for want of room.
  static std::size_t StoredBytes(const CString& text, BYTE* bytes, std::size_t room);

  void WriteCount(ULONGLONG count);
  // Raises endOfFile if that many elements of at least elementBytes each can't be left. With 0 the count is taken as it
  // stands, and the caller bounds it.
  ULONGLONG ReadCount(ULONGLONG elementBytes = 0);

  // ---- objects

  // Stores a reference: null, an object met before, or a new one with its class and its data. An object of a class that
  // is not serial, or one too deep for the stack, raises before a byte of it is written.
  void WriteObject(const CObject* object);
  // As WriteObject, but whole or not at all: if something inside the object raises, what had been written of it is
  // taken back, bytes and numbers, so that the caller can go on with something else in its place. An object that failed
  // for a class in it that is not serial is not tried again. What the file itself raises (CFileException) goes on with
  // nothing taken back: the archive is then of no more use.
  void WriteObjectWhole(const CObject* object);
  // Reads a reference. A new object belongs to the caller once the call has returned, and so does every object read on
  // the way: an archive gives each object out once for each reference to it and deletes none.
  //
  // If the outermost call raises, the archive takes back what that call had made: every object that no destructor has
  // deleted meanwhile is deleted, in order of creation, so that an owner goes ahead of what it owns. A destructor that
  // reaches an object which has already gone that way finds a bare CObject in its place and may delete it once more, if
  // its class is not final or nameless (the compiler then goes past what stands there).
  // Objects of earlier outermost calls are the caller's.
  //
  // Raises badClass, before an object is made, if the class is not the wanted one or below it; null wants any.
  CObject* ReadObject(const CRuntimeClass* wanted);
  // Reads references of any class to objects that were met before, for as long as the next is such a one and stands in
  // the buffer, at most count of them. Gives their number. For long lists of references.
  std::size_t ReadKnownObjects(CObject** objects, std::size_t count);
  // As ReadObject, for a reference that owns: raises badIndex if the object was met before, so that damaged bytes can't
  // give one object two owners.
  CObject* ReadOwnedObject(const CRuntimeClass* wanted);
  // Deletes those objects that ReadObject has made in this archive, that still live, and that the caller calls
  // unwanted, as a failed load does. Gives their number. For whoever has read a whole document and found in it
  // references to objects that nobody holds; nothing may point to them any more. unwanted must not delete anything
  // itself.
  ULONGLONG DeleteLoaded(const std::function<bool(const CObject*)>& unwanted);
  // Gives an object that does not itself go through the archive the next number, so that references to it can.
  // Both sides have to do so at the same place. A null does nothing. When loading, the object stays the caller's.
  void MapObject(const CObject* object);

  // A class record with nothing behind it. ReadClass gives the class and raises badClass if it is not the wanted one or
  // below it; schema may be null.
  void WriteClass(const CRuntimeClass* record);
  CRuntimeClass* ReadClass(const CRuntimeClass* wanted = nullptr, UINT* schema = nullptr);
  // One level's class record, at the beginning of its Serialize: writes it, or reads it, raising badClass if it is
  // another's, and keeps its schema for GetObjectSchema.
  void SerializeClass(const CRuntimeClass* record) {
    const KnownClass& known = m_known[PlaceOf(record)];
    if (known.record != record) return SerializeClassWhole(record);
    if (std::size_t(m_pInEnd - m_pIn) >= sizeof known.tag) {
      ULONGLONG next = 0;
      std::memcpy(&next, m_pIn, sizeof next);
      if (((next ^ known.tag) & known.TagMask()) != 0) return SerializeClassWhole(record);
      m_pIn += known.tagBytes;
      m_nSchema = known.schema;
    } else if (std::size_t(m_pOutEnd - m_pOut) >= sizeof known.tag) {
      std::memcpy(m_pOut, &known.tag, sizeof known.tag);  // what is behind the tag is written over
      m_pOut += known.tagBytes;
      m_nSchema = UINT(-1);
    } else {
      SerializeClassWhole(record);
    }
  }

  // The schema of the object or class record read last, without VERSIONABLE_SCHEMA; it answers once and then
  // gives UINT(-1), as it does when storing, until the next one. After a nested reference it is again what it was
  // ahead.
  UINT GetObjectSchema() noexcept { return std::exchange(m_nSchema, UINT(-1)); }
  void SetObjectSchema(UINT schema) noexcept { m_nSchema = schema; }

 private:
  struct Level;

  // A class that this archive has met, with the tag by which it is met again. One for each place of a small table: of
  // classes that share a place the last one is known.
  struct KnownClass {
    ULONGLONG TagMask() const { return (ULONGLONG{1} << tagBytes * 8) - 1; }

    CRuntimeClass* record = nullptr;
    ULONGLONG tag = 0;  // its bytes, of which there are 2 or 6
    WORD tagBytes = 0;
    WORD schema = 0;
  };
  static constexpr std::size_t kKnownClasses = 32;
  static std::size_t PlaceOf(const CRuntimeClass* record) { return record->m_nNumber % kKnownClasses; }
  void SerializeClassWhole(const CRuntimeClass* record);
  static ULONGLONG TagOf(DWORD number, bool isClass, std::size_t& bytes);
  void NoteKnown(CRuntimeClass* record, DWORD number, UINT schema);

  void MakeRoom();
  void CheckStoring() const;
  void CheckLoading() const {
    if (!m_bLoading || !m_pFile) FailLoading();
  }
  [[noreturn]] void FailLoading() const;
  [[noreturn]] void Fail(int cause) const;
  bool ReadTag(DWORD& tag);
  void WriteTag(DWORD number, bool isClass);
  void TakeBackStored(ULONGLONG position, DWORD count);
  void EnterNumber();
  CRuntimeClass* ReadNewClass(UINT& schema);
  CRuntimeClass* ReadClassBehind(DWORD tag, UINT& schema);
  CObject* NextKnownObject(std::size_t& bytes) const;
  CObject* ReadKnownObject(const CRuntimeClass* wanted);
  CRuntimeClass* ReadKnownClass(const CRuntimeClass* wanted, UINT& schema);
  CObject* ReadReference(const CRuntimeClass* wanted, bool onlyNew);
  CObject* ReadNewObject(DWORD tag, const CRuntimeClass* wanted);
  LoadedObjects& Loaded();
  StoredNumbers& Stored();

  // What lies between m_pIn and m_pInEnd is still to be read, between m_pBuffer and m_pOut to be written. The pair of
  // the other direction is null, which sends every value of the wrong direction to the slow path.
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
  int m_nDepth = 0;  // of ReadObject or WriteObject calls within one another
  LoadedObjects* m_pLoaded = nullptr;
  std::unique_ptr<StoredNumbers> m_stored;
  ULONGLONG m_nFlushed = 0;  // bytes handed to the file so far
  KnownClass m_known[kKnownClasses];
};

// References. operator>> for a class of its own comes from DECLARE_SERIAL.
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

// The length record of a text, by itself. Reading gives the number of characters and sets charBytes to 1 or 2, and
// raises endOfFile if that many are not left. On writing, wide tells which of the two forms.
KVSHARE_API std::size_t AfxReadStringLength(CArchive& ar, int& charBytes);
KVSHARE_API void AfxWriteStringLength(CArchive& ar, std::size_t length, BOOL wide);
