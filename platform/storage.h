// Compound files: a file that holds a tree of storages (folders) and streams (files), under the platform's names.
//
// StgCreateDocfile and StgOpenStorage give the root storage; elements are reached through their parent. Results are
// HRESULTs: S_OK or one of the STG_E_ codes below, and an out pointer is null after every failure. A reference that
// comes out of a call belongs to the caller, who ends it with Release. All objects of one file are used by one thread
// at a time; different files by any threads.
//
// Modes. Direct: what is written stands when the root is committed or its last reference goes. Transacted (root only):
// it stands when the root is committed; Revert, or a release without Commit, drops it. Either way the file is written
// whole beside the old one and renamed, so that a killed process leaves the old or the new file; nothing is on the disk
// before that, and after the root's last Release every object below it answers STG_E_REVERTED. As for other files,
// nothing is locked against other openings: of two writers the last one wins, whole.
//
// Reading is lazy: a stream's bytes come from the file when they are asked for, and only what was written is held in
// memory. Names have 1 to 31 UTF-16 units, none of them \ / : or !, keep their case and are compared without it.
//
// Limits: STG_E_MEDIUMFULL for a stream or file of 2 GiB and more, for more than 2^20 elements and for storages nested
// more than 256 deep. A file from outside that goes beyond, or whose tables contradict each other, is
// STG_E_DOCFILECORRUPT.
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
inline constexpr HRESULT STG_E_TOOMANYOPENFILES = HRESULT(0x80030004);
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
inline constexpr HRESULT STG_E_UNIMPLEMENTEDFUNCTION = HRESULT(0x800300FE);
inline constexpr HRESULT STG_E_INVALIDFLAG = HRESULT(0x800300FF);
inline constexpr HRESULT STG_E_REVERTED = HRESULT(0x80030102);
inline constexpr HRESULT STG_E_DOCFILECORRUPT = HRESULT(0x80030109);

// ---- modes: one access, one way of sharing, and what else is wanted

inline constexpr DWORD STGM_READ = 0x0;
inline constexpr DWORD STGM_WRITE = 0x1;
inline constexpr DWORD STGM_READWRITE = 0x2;
// An element takes STGM_SHARE_EXCLUSIVE only. A direct root takes that or, for reading, STGM_SHARE_DENY_WRITE; a
// transacted one any of them.
inline constexpr DWORD STGM_SHARE_EXCLUSIVE = 0x10;
inline constexpr DWORD STGM_SHARE_DENY_WRITE = 0x20;
inline constexpr DWORD STGM_SHARE_DENY_READ = 0x30;
inline constexpr DWORD STGM_SHARE_DENY_NONE = 0x40;
inline constexpr DWORD STGM_DIRECT = 0x0;
inline constexpr DWORD STGM_TRANSACTED = 0x10000;
// On creating: what stands there fails the call, or is replaced.
inline constexpr DWORD STGM_FAILIFTHERE = 0x0;
inline constexpr DWORD STGM_CREATE = 0x1000;
// Taken with STGM_TRANSACTED, and change nothing.
inline constexpr DWORD STGM_NOSCRATCH = 0x100000;
inline constexpr DWORD STGM_NOSNAPSHOT = 0x200000;
// STG_E_UNIMPLEMENTEDFUNCTION on a root and on storages; STG_E_INVALIDFUNCTION on streams, which have none of them.
inline constexpr DWORD STGM_CONVERT = 0x20000;
inline constexpr DWORD STGM_PRIORITY = 0x40000;
inline constexpr DWORD STGM_DIRECT_SWMR = 0x400000;
inline constexpr DWORD STGM_DELETEONRELEASE = 0x4000000;
inline constexpr DWORD STGM_SIMPLE = 0x8000000;

// ---- what is told of an element

inline constexpr DWORD STGTY_STORAGE = 1;
inline constexpr DWORD STGTY_STREAM = 2;
inline constexpr DWORD STATFLAG_DEFAULT = 0;
inline constexpr DWORD STATFLAG_NONAME = 1;

struct STATSTG {
  // The element's name; of a root the path as it was given. The caller frees it with CoTaskMemFree; null with
  // STATFLAG_NONAME.
  LPOLESTR pwcsName;
  DWORD type;
  ULARGE_INTEGER cbSize;  // bytes of a stream, 0 for a storage
  FILETIME mtime;         // of a storage; 0 for a stream
  FILETIME ctime;         // the same, and 0 for the root of a file that was there before
  FILETIME atime;         // 0
  DWORD grfMode;          // the mode that the object was opened in; 0 from an enumeration
  DWORD grfLocksSupported;
  CLSID clsid;
  DWORD grfStateBits;
  DWORD reserved;
};

inline constexpr DWORD STREAM_SEEK_SET = 0;
inline constexpr DWORD STREAM_SEEK_CUR = 1;
inline constexpr DWORD STREAM_SEEK_END = 2;

inline constexpr DWORD STGC_DEFAULT = 0;
inline constexpr DWORD STGC_OVERWRITE = 1;
inline constexpr DWORD STGC_ONLYIFCURRENT = 2;
inline constexpr DWORD STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE = 4;

// ---- interfaces

struct IStream : IUnknown {
  // S_OK also if fewer bytes came because the stream ends. The counts may be null.
  virtual HRESULT Read(void* target, ULONG bytes, ULONG* read) = 0;
  // Writes at the position, which may lie behind the end: the gap is zeros.
  virtual HRESULT Write(const void* source, ULONG bytes, ULONG* written) = 0;
  // Ahead of the start, or with another origin, STG_E_INVALIDFUNCTION. position may be null.
  virtual HRESULT Seek(LARGE_INTEGER distance, DWORD origin, ULARGE_INTEGER* position) = 0;
  // Cuts, or extends with zeros; the position stays.
  virtual HRESULT SetSize(ULARGE_INTEGER bytes) = 0;
  // Streams are direct: both do nothing and give S_OK.
  virtual HRESULT Commit(DWORD flags) = 0;
  virtual HRESULT Revert() = 0;
  virtual HRESULT Stat(STATSTG* facts, DWORD flags) = 0;

 protected:
  ~IStream() = default;
};

struct IEnumSTATSTG : IUnknown {
  // Up to count elements, S_FALSE if there were fewer. fetched may be null if count is 1.
  virtual HRESULT Next(ULONG count, STATSTG* facts, ULONG* fetched) = 0;
  virtual HRESULT Reset() = 0;

 protected:
  ~IEnumSTATSTG() = default;
};

// Reserved arguments are 0 and null, else STG_E_INVALIDPARAMETER. An element that is open is not opened again:
// STG_E_ACCESSDENIED, as is more access than the storage itself was opened for. With STGM_CREATE an element of that
// name, stream or storage, is destroyed first; without, it is STG_E_FILEALREADYEXISTS. An element of the other kind is
// STG_E_FILENOTFOUND on opening.
struct IStorage : IUnknown {
  virtual HRESULT CreateStream(LPCWSTR name, DWORD mode, DWORD reserved1, DWORD reserved2, IStream** stream) = 0;
  virtual HRESULT OpenStream(LPCWSTR name, void* reserved1, DWORD mode, DWORD reserved2, IStream** stream) = 0;
  virtual HRESULT CreateStorage(LPCWSTR name, DWORD mode, DWORD reserved1, DWORD reserved2, IStorage** storage) = 0;
  virtual HRESULT OpenStorage(LPCWSTR name, IStorage* priority, DWORD mode, SNB exclude, DWORD reserved,
                              IStorage** storage) = 0;
  // On the root: writes the file. Where that fails, the old file stays and so does everything in memory, for another
  // try. On any other storage nothing, and S_OK.
  virtual HRESULT Commit(DWORD flags) = 0;
  // On a transacted root: back to what the file holds; every object below answers STG_E_REVERTED. Else nothing, S_OK.
  virtual HRESULT Revert() = 0;
  // The elements as they are now, in the order in which the file keeps them.
  virtual HRESULT EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3, IEnumSTATSTG** elements) = 0;
  // With everything below it; objects that are open on it answer STG_E_REVERTED.
  virtual HRESULT DestroyElement(LPCWSTR name) = 0;
  virtual HRESULT Stat(STATSTG* facts, DWORD flags) = 0;

 protected:
  ~IStorage() = default;
};

// ---- files

// A new, empty compound file by its product path (platform/paths.h). A file that stands there is
// STG_E_FILEALREADYEXISTS without STGM_CREATE; with it, it stays whole until the new one is written. A missing folder
// and a read-only file are told now. A null name, which asks for a temporary file, is STG_E_INVALIDNAME.
KVSHARE_API HRESULT StgCreateDocfile(LPCWSTR path, DWORD mode, DWORD reserved, IStorage** storage);

// The priority storage and the exclusions must be null. STG_E_FILENOTFOUND if there is no such file,
// STG_E_FILEALREADYEXISTS if it is no compound file, STG_E_DOCFILECORRUPT if it is a damaged one.
KVSHARE_API HRESULT StgOpenStorage(LPCWSTR path, IStorage* priority, DWORD mode, SNB exclude, DWORD reserved,
                                   IStorage** storage);

// Frees what a call gave for freeing; null does nothing.
KVSHARE_API void CoTaskMemFree(void* block);

#endif
