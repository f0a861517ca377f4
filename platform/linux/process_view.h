// A process as /proc and ptrace show it: mappings, modules, threads with their registers. Internal to platform/linux.
//
// Everything is in the caller's arena; nothing allocates from the heap or locks.
#pragma once

#include <sys/types.h>

#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

#include "platform/crash_snapshot.h"

struct Mapping {
  ULONGLONG low = 0, high = 0, offset = 0;
  bool isReadable = false, isWritable = false, isExecutable = false, isPrivate = false;
  std::string_view file;  // may be empty, or a name in brackets
};

struct BuildId {
  BYTE bytes[32];
  std::size_t count;
};

struct ThreadRegisters {
  pid_t id;
  bool isStopped;  // by this object
  bool isKnown;
  CONTEXT context;
};

class ProcessView {
 public:
  ProcessView(const CrashFault& fault, std::pmr::memory_resource* arena);
  // Lets the threads go on.
  ~ProcessView();
  ProcessView(const ProcessView&) = delete;
  ProcessView& operator=(const ProcessView&) = delete;

  bool IsReadable() const;
  std::size_t Read(ULONGLONG address, void* target, std::size_t bytes) const;
  // A file of the process's folder in /proc, such as "maps", or of another path; empty if it can't be read.
  std::pmr::string File(const char* path) const;
  std::pmr::string OwnFile(std::string_view name) const;
  // Null if no mapping contains the address.
  const Mapping* MappingAt(ULONGLONG address) const;
  BuildId BuildIdOf(ULONGLONG base) const;

  const CrashFault& fault;
  std::pmr::memory_resource* const arena;
  std::pmr::string maps;
  std::pmr::vector<Mapping> mappings;
  std::pmr::vector<CrashModule> modules;  // by address
  std::pmr::string program;
  std::pmr::vector<ThreadRegisters> threads;  // the faulting thread first

 private:
  void StopThreads();
  void ReadMappings();
  void FindModules();
};

// Writes a dump of the process to an open file; false if a write fails.
bool WriteMinidump(const ProcessView& process, const CrashFigures& figures, int file, MINIDUMP_TYPE type,
                   std::string_view comment);
