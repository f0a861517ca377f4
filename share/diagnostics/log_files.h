// The developer logs: their folder, files, and the registry values that switch them on. Support instructions name them:
// don't change them.
//
// All files are UTF-8 with "\n" as line end. The library doesn't create the folder: without it nothing is logged.
#pragma once

#include "framework/text.h"
#include "share/core/version_info.h"

inline constexpr LPCTSTR kLogFolder = _T("C:\\KestrovaData\\LOG\\");

// What a time log is about; selects its file.
enum LogType : int {
  KV_LOG_PLAIN = 0,
  KV_LOG_DESERIALIZE = 1,
  KV_LOG_EVENTS = 2,
  KV_LOG_COMMANDS = 3,
};

// Time logs by their type. A log of one document has "_" and its name before ".txt" of the plain log's name, and after
// the whole name for the other types: "TIMELOG_2024_SW_Events.txt_Bracket.txt". Kept for existing tools.
inline constexpr LPCTSTR kTimeLogStem = _T("TIMELOG_2024_SW");
inline constexpr LPCTSTR kTimeLogFiles[] = {_T("TIMELOG_2024_SW.txt"), _T("TIMELOG_2024_SW_DESerialize.txt"),
                                            _T("TIMELOG_2024_SW_Events.txt"), _T("TIMELOG_2024_SW_CMDS.txt")};
inline constexpr LPCTSTR kTurretLogFile = _T("KV_TURRET_LOG.txt");
inline constexpr LPCTSTR kAsmTurnLogFile = _T("KV_ASMTURN_LOG.txt");
inline constexpr LPCTSTR kFunctionLogFile = _T("KV_FUNCTION_LOG.txt");
inline constexpr LPCTSTR kMemoryLeakLogFile = _T("MEMORYLEAK_2024_SW.txt");
static_assert(TextView(CKVVersionInfo::QF_VERSION_MAJOR_FOR_SERVICE_PACK) == _T("2024"), "the names have the year");

// Values of kProductDebugKey (share/core/registry_keys.h), 0 if missing. The first is the master switch of the time
// logs; the second is the one LogType besides KV_LOG_PLAIN that may log.
inline constexpr LPCTSTR kTimeLogSwitch = _T("LOG_KV");
inline constexpr LPCTSTR kTimeLogTypeSwitch = _T("LOG_KV_TYPE");
inline constexpr LPCTSTR kTurretLogSwitch = _T("KV_TURRET_LOG");
inline constexpr LPCTSTR kAsmTurnLogSwitch = _T("KV_ASMTURN_LOG");
inline constexpr LPCTSTR kMemoryLeakLogSwitch = _T("LOG_KV_MEMORY_LEAK");
// A value of kVersionDebugKey.
inline constexpr LPCTSTR kFunctionLogSwitch = _T("LOG_KV_FUNCTION");
