// What can be seen of a process at a fault: its modules, its memory and figures, and its dump file. Of this process or,
// in the helper (platform/crash_helper.h), of another one, whose threads stand still while the object lives.
//
// On Linux nothing here allocates from the heap, locks or uses the C library's formats, so that a translator may use
// it.
#pragma once

#include <cstddef>
#include <memory_resource>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/exceptions.h"
#include "platform/types.h"

// File names are UTF-8 and the system's.
struct CrashModule {
  std::string_view file;
  ULONGLONG base;         // where it is loaded
  ULONGLONG desiredBase;  // where its header wants it
  DWORD imageSize;
  DWORD checksum;   // on Linux the first four bytes of the build id
  DWORD timeStamp;  // on Linux 0
};

// Bytes. Figures that the system does not have are 0.
struct CrashFigures {
  DWORD processors;
  DWORD processorType;  // 8664 for 64-bit x86
  DWORD architecture;   // 9 for 64-bit x86
  DWORD memoryInUse;    // per cent
  ULONGLONG physical, physicalFree;
  ULONGLONG pagingFile, pagingFileFree;  // with the physical memory
  ULONGLONG addressSpace, addressSpaceFree;
};

struct CrashFault {
  DWORD process;
  DWORD thread;
  EXCEPTION_RECORD record;
  CONTEXT context;
};

class KVSHARE_API CrashSnapshot {
 public:
  // The fault must live longer. The arena is the memory for everything (CrashArena).
  CrashSnapshot(const CrashFault& fault, std::pmr::memory_resource* arena);
  ~CrashSnapshot();
  CrashSnapshot(const CrashSnapshot&) = delete;
  CrashSnapshot& operator=(const CrashSnapshot&) = delete;

  // Whether memory and threads can be seen. False if the system does not allow it.
  bool IsReadable() const;
  // In the order of their addresses.
  std::span<const CrashModule> Modules() const;
  // The module that contains the address, or null.
  const CrashModule* ModuleAt(ULONGLONG address) const;
  // The program's file; empty if unknown.
  std::string_view Program() const;
  // Copies memory as far as it can be read, and returns the number of bytes.
  std::size_t Read(ULONGLONG address, void* target, std::size_t bytes) const;
  CrashFigures Figures() const;

  // Writes a dump as a new file in one step: afterwards there is the whole file, or the former one. `comment` is stored
  // in it; empty: none. False if the file can't be written.
  bool WriteDump(const char* file, MINIDUMP_TYPE type, std::string_view comment) const;

 private:
  struct State;
  State* m_state;
};

// Memory for a snapshot, from the system and not from the heap.
class KVSHARE_API CrashArena {
 public:
  CrashArena();
  ~CrashArena();
  CrashArena(const CrashArena&) = delete;
  CrashArena& operator=(const CrashArena&) = delete;
  // Null if the system gives no memory.
  std::pmr::memory_resource* Resource();

 private:
  void* m_memory;
  alignas(std::pmr::monotonic_buffer_resource) std::byte m_resource[sizeof(std::pmr::monotonic_buffer_resource)];
};

// Appends text to a file, which is created if it is missing. If not everything can be written, the file stays as it
// was, and the result is false. Safe in a translator.
KVSHARE_API bool AppendToCrashReport(const char* file, std::string_view text);

// The size of a file and the time of its last change, in seconds since 1970. False if the file can't be opened. Safe in
// a translator.
KVSHARE_API bool CrashFileFacts(std::string_view file, ULONGLONG& size, LONGLONG& changed);
