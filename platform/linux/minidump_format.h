// The records of a minidump file, as the format is published. All numbers are little-endian; a place is a byte of the
// file. Internal to platform/linux.
#pragma once

#include "platform/types.h"

namespace minidump {

inline constexpr DWORD kSignature = 0x504D444D;  // "MDMP"
inline constexpr DWORD kVersion = 0xA793;

enum Stream : DWORD {
  kThreadList = 3,
  kModuleList = 4,
  kMemoryList = 5,
  kException = 6,
  kSystemInfo = 7,
  kMemory64List = 9,
  kCommentA = 10,
  kMiscInfo = 15,
  kMemoryInfoList = 16,
  // Files of the system, as they are.
  kLinuxCpuInfo = 0x47670003,
  kLinuxProcStatus = 0x47670004,
  kLinuxRelease = 0x47670005,
  kLinuxCommandLine = 0x47670006,
  kLinuxAuxv = 0x47670008,
  kLinuxMaps = 0x47670009,
};

#pragma pack(push, 4)

struct Header {
  DWORD signature, version, streams, directory, checksum, time;
  ULONGLONG type;
};
static_assert(sizeof(Header) == 32);

struct Location {
  DWORD bytes, place;
};

struct Entry {
  DWORD stream;
  Location location;
};

struct Memory {
  ULONGLONG address;
  Location location;
};

struct Thread {
  DWORD id, suspendCount, priorityClass, priority;
  ULONGLONG environmentBlock;
  Memory stack;
  Location context;
};
static_assert(sizeof(Thread) == 48);

struct Module {
  ULONGLONG base;
  DWORD imageSize, checksum, timeStamp, name;
  DWORD version[13];
  Location codeView, misc;
  ULONGLONG reserved[2];
};
static_assert(sizeof(Module) == 108);

inline constexpr DWORD kBuildIdSignature = 0x4270454C;  // the build id follows

struct ExceptionStream {
  DWORD thread, padding;
  DWORD code, flags;
  ULONGLONG record, address;
  DWORD parameters, padding2;
  ULONGLONG information[15];
  Location context;
};
static_assert(sizeof(ExceptionStream) == 168);

struct SystemInfo {
  WORD architecture, level, revision;
  BYTE processors, productType;
  DWORD major, minor, build, platform, versionText;
  WORD suite, reserved;
  BYTE processor[24];
};
static_assert(sizeof(SystemInfo) == 56);
inline constexpr WORD kArchitecture = 9;
inline constexpr DWORD kPlatformLinux = 0x8201;

struct MiscInfo {
  DWORD bytes, flags, process, created, userTime, kernelTime;
};
inline constexpr DWORD kHasProcess = 1;

struct MemoryInfoHeader {
  DWORD headerBytes, entryBytes;
  ULONGLONG entries;
};
struct MemoryInfo {
  ULONGLONG base, allocationBase;
  DWORD allocationProtection, padding;
  ULONGLONG bytes;
  DWORD state, protection, kind, padding2;
};
static_assert(sizeof(MemoryInfo) == 48);

struct Memory64 {
  ULONGLONG address, bytes;
};

#pragma pack(pop)

}  // namespace minidump
