// Compound files, under the platform's names: one file with a tree of storages (folders) and streams (files).
//
// StgCreateDocfile and StgOpenStorage return the root storage; elements are opened through their parent. Results are
// HRESULTs: S_OK or one of the STG_E_ codes below; after a failure an output pointer is null. The caller owns every
// returned reference and ends it with Release. One thread at a time may use the objects of one file; different files
// may be used on different threads.
//
// Modes. Direct: changes are written when the root is committed or released. Transacted (root only): changes are
// written only when the root is committed; a release without Commit drops them. In both modes the complete file is
// written to a temporary file and renamed, so a killed process leaves the old or the new file. Before that nothing is
// on the disk. After the root's last Release every object below it returns STG_E_REVERTED. Files are not locked: if two
// programs write, the last one's complete file remains.
//
// Reading is lazy: a stream's bytes are read from the file on demand, and only written bytes are kept in memory. Names
// have 1 to 31 UTF-16 units without \ / : and !; they keep their case and are compared without it.
//
// Limits: STG_E_MEDIUMFULL for a stream or file of 2 GiB or more, for more than 2^20 elements, and for more than 256
// nested storages. An existing file beyond these limits, or with contradicting tables, is STG_E_DOCFILECORRUPT.
#pragma once

#include "platform/files.h"
#include "platform/interfaces.h"
#include "platform/types.h"

#ifdef _WIN32

#include <objbase.h>

#else

using LPOLESTR = WCHAR*;
using SNB = LPOLESTR*;

union ULARGE_INTEGER {
  struct {
    DWORD LowPart;
    DWORD HighPart;
  } u;
  ULONGLONG QuadPart;
};

inline constexpr HRESULT STG_E_INVALIDFUNCTION = HRESULT(0x80030001);
inline constexpr HRESULT STG_E_FILENOTFOUND = HRESULT(0x80030002);
inline constexpr HRESULT STG_E_PATHNOTFOUND = HRESULT(0x80030003);
inline constexpr HRESULT STG_E_ACCESSDENIED = HRESULT(0x80030005);
inline constexpr HRESULT STG_E_INSUFFICIENTMEMORY = HRESULT(0x80030008);
inline constexpr HRESULT STG_E_INVALIDPOINTER = HRESULT(0x80030009);
inline constexpr HRESULT STG_E_WRITEFAULT = HRESULT(0x8003001D);
inline constexpr HRESULT STG_E_READFAULT = HRESULT(0x8003001E);
inline constexpr HRESULT STG_E_FILEALREADYEXISTS = HRESULT(0x80030050);
inline constexpr HRESULT STG_E_INVALIDPARAMETER = HRESULT(0x80030057);
inline constexpr HRESULT STG_E_MEDIUMFULL = HRESULT(0x80030070);
inline constexpr HRESULT STG_E_INVALIDNAME = HRESULT(0x800300FC);
inline constexpr HRESULT STG_E_UNKNOWN = HRESULT(0x800300FD);
inline constexpr HRESULT STG_E_INVALIDFLAG = HRESULT(0x800300FF);
inline constexpr HRESULT STG_E_REVERTED = HRESULT(0x80030102);
inline constexpr HRESULT STG_E_DOCFILECORRUPT = HRESULT(0x80030109);

// ---- modes: one access, one way of sharing, and what else is wanted

inline constexpr DWORD STGM_READ = 0x0;
inline constexpr DWORD STGM_READWRITE = 0x2;
// An element accepts only STGM_SHARE_EXCLUSIVE. A direct root accepts that or, for reading, STGM_SHARE_DENY_WRITE; a
// transacted root accepts both, and none.
inline constexpr DWORD STGM_SHARE_EXCLUSIVE = 0x10;
inline constexpr DWORD STGM_SHARE_DENY_WRITE = 0x20;
inline constexpr DWORD STGM_TRANSACTED = 0x10000;
// On creating: an existing file or element is replaced. Without it the call fails if one exists.
inline constexpr DWORD STGM_CREATE = 0x1000;

// ---- facts about an element

inline constexpr DWORD STGTY_STORAGE = 1;
inline constexpr DWORD STGTY_STREAM = 2;
inline constexpr DWORD STATFLAG_DEFAULT = 0;
inline constexpr DWORD STATFLAG_NONAME = 1;

struct STATSTG {
  // The element's name; for a root the path that was given. The caller frees it with CoTaskMemFree. Null with
  // STATFLAG_NONAME.
  LPOLESTR pwcsName;
  DWORD type;
  ULARGE_INTEGER cbSize;  // bytes of a stream, 0 for a storage
  FILETIME mtime;         // of a storage; 0 for a stream
  FILETIME ctime;         // of a storage; 0 for a stream and for the root of an opened file
  FILETIME atime;         // 0
  DWORD grfMode;          // the mode in which the object was opened
  DWORD grfLocksSupported;
  CLSID clsid;
  DWORD grfStateBits;
  DWORD reserved;
};

inline constexpr DWORD STREAM_SEEK_SET = 0;
inline constexpr DWORD STREAM_SEEK_CUR = 1;
inline constexpr DWORD STREAM_SEEK_END = 2;

inline constexpr DWORD STGC_DEFAULT = 0;

// ---- interfaces

struct IStream : IUnknown {
  // S_OK also if the stream ends before `bytes`. Optional: read and written.
  virtual HRESULT Read(void* target, ULONG bytes, ULONG* read) = 0;
  // Writes at the position; if that is after the end, the gap is filled with zeros.
  virtual HRESULT Write(const void* source, ULONG bytes, ULONG* written) = 0;
  // A position before the start, or another origin, is STG_E_INVALIDFUNCTION. Optional: position.
  virtual HRESULT Seek(LARGE_INTEGER distance, DWORD origin, ULARGE_INTEGER* position) = 0;
  // Shortens the stream or extends it with zeros; the position stays.
  virtual HRESULT SetSize(ULARGE_INTEGER bytes) = 0;
  // Streams are direct: does nothing and returns S_OK.
  virtual HRESULT Commit(DWORD flags) = 0;
  virtual HRESULT Stat(STATSTG* facts, DWORD flags) = 0;

 protected:
  ~IStream() = default;
};

// Reserved arguments must be 0 or null, otherwise STG_E_INVALIDPARAMETER. STG_E_ACCESSDENIED for an element that is
// open already, and for more access than the storage was opened with. With STGM_CREATE an existing stream or storage of
// the name is destroyed first; without it the call fails with STG_E_FILEALREADYEXISTS. Opening an element of the other
// kind fails with STG_E_FILENOTFOUND.
struct IStorage : IUnknown {
  virtual HRESULT CreateStream(LPCWSTR name, DWORD mode, DWORD reserved1, DWORD reserved2, IStream** stream) = 0;
  virtual HRESULT OpenStream(LPCWSTR name, void* reserved1, DWORD mode, DWORD reserved2, IStream** stream) = 0;
  virtual HRESULT CreateStorage(LPCWSTR name, DWORD mode, DWORD reserved1, DWORD reserved2, IStorage** storage) = 0;
  virtual HRESULT OpenStorage(LPCWSTR name, IStorage* priority, DWORD mode, SNB exclude, DWORD reserved,
                              IStorage** storage) = 0;
  // On the root: writes the file. If that fails, the old file stays, and so do all changes in memory, so the caller may
  // try again. On other storages does nothing and returns S_OK.
  virtual HRESULT Commit(DWORD flags) = 0;
  // Destroys the element and everything below it; open objects of it return STG_E_REVERTED.
  virtual HRESULT DestroyElement(LPCWSTR name) = 0;
  virtual HRESULT Stat(STATSTG* facts, DWORD flags) = 0;

 protected:
  ~IStorage() = default;
};

// ---- files

// Creates an empty compound file at a product path (platform/paths.h). Without STGM_CREATE an existing file is
// STG_E_FILEALREADYEXISTS; with it the old file stays until the new one is written. A missing folder or a read-only
// file is reported immediately. A null path, which would mean a temporary file, is STG_E_INVALIDNAME.
KVSHARE_API HRESULT StgCreateDocfile(LPCWSTR path, DWORD mode, DWORD reserved, IStorage** storage);

// Opens a compound file. `priority` and `exclude` must be null. STG_E_FILENOTFOUND for a missing file,
// STG_E_FILEALREADYEXISTS if it is not a compound file, STG_E_DOCFILECORRUPT if it is damaged.
KVSHARE_API HRESULT StgOpenStorage(LPCWSTR path, IStorage* priority, DWORD mode, SNB exclude, DWORD reserved,
                                   IStorage** storage);

// Frees memory that a call returned for freeing; null does nothing.
KVSHARE_API void CoTaskMemFree(void* block);

#endif
