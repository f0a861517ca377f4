// The developer logs: the exact bytes of their files, and no file while they are off.
#include <climits>

#include "platform/clock.h"
#include "platform/process.h"
#include "share/core/registry_keys.h"
#include "share/diagnostics/function_log.h"
#include "share/diagnostics/memory_leak_log.h"
#include "share/diagnostics/time_log.h"
#include "share/objects/object.h"
#include "tests/env/clean_environment.h"

namespace {

namespace fs = std::filesystem;

LPCTSTR g_title = nullptr;
LONGLONG g_seconds = 0;
DWORD g_ticks = 0;

class TitledDocument : public QFObject {
 public:
  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG) override {
    if (message != QF_CORE_GET_DOC_TITLE || !g_title) return 0;
    *reinterpret_cast<CString*>(std::uintptr_t(argument)) = g_title;
    return 1;
  }
};

TitledDocument* g_document = nullptr;

class Logs : public kvtest::CleanEnvironment {
 protected:
  void SetUp() override {
    CleanEnvironment::SetUp();
    static constexpr Clock kClock = {nullptr, nullptr, [] { return g_seconds; }, [] { return g_ticks; }};
    SetCurrentClock(&kClock);
    SetEnvironmentVariableW(_T("KV_DRIVE_C"), drive_.Path().string<TCHAR>().c_str());
    fs::create_directories(Folder());
    g_document = &document_;
    g_title = _T("Bracket");
    kvtest::Register({.document = []() -> QFObject* { return g_document; }});
    Switch({});
  }
  void TearDown() override {
    Switch({});
    SetCurrentClock(nullptr);
    SetEnvironmentVariableW(_T("KV_DRIVE_C"), nullptr);
    CleanEnvironment::TearDown();
  }

  fs::path Folder() const { return drive_.Path() / "KestrovaData/LOG"; }
  // Switches on exactly these values of the product's debug key.
  static void Switch(const std::vector<std::pair<LPCTSTR, int>>& values) {
    RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software"));
    for (const auto& [name, value] : values) SetRegSettingDwordValue(HKEY_CURRENT_USER, kProductDebugKey, name, value);
    KVTimeLog::CheckRegistry();
  }
  // All files with their bytes, "name: bytes"; removes them.
  std::string Taken() const {
    std::map<std::string, std::string> files;
    for (const auto& file : fs::directory_iterator(Folder()))
      files[file.path().filename().string()] = kvtest::ReadFile(file.path());
    std::string all;
    for (const auto& [name, bytes] : files) {
      all += name + ": " + bytes;
      fs::remove(Folder() / name);
    }
    return all;
  }

  TitledDocument document_;
  kvtest::ScratchFolder drive_;
};

constexpr double kAxes[][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

void LogAll() {
  { const KVTimeLog log(_T("Scope"), KV_LOG_PLAIN, 0); }
  KVTimeLog::DumpStr(_T("text"), KV_LOG_EVENTS, 1);
  KVTimeLog::DumpTurretData(_T("t"), 7, 12);
  KVTimeLog::DumpASMTurnData(_T("a%d"), LONG_MAX);
  KVTimeLog::DumpASMTurnData_CorePPM(_T("c"), 2, 3, _T("Mill"), -1);
  KVTimeLog::DumpASMTurnData_Machine(_T("m"), kAxes[1], kAxes, 4);
  { const KVFunctionLog log(_T("F")); }
  KVMemoryLeakLog::GetInstance()->StartLogging();
  KVMemoryLeakLog::GetInstance()->Dump(_T("x"));
  KVMemoryLeakLog::DestroyInstance();
}

}  // namespace

TEST_F(Logs, WriteNothingUnlessSwitchedOnAndWithoutTheFolder) {
  LogAll();
  EXPECT_EQ(Taken(), "");
  Switch({{_T("LOG_KV"), 1}, {_T("KV_TURRET_LOG"), 1}, {_T("KV_ASMTURN_LOG"), 1}, {_T("LOG_KV_MEMORY_LEAK"), 1}});
  fs::remove(Folder());
  LogAll();
  EXPECT_FALSE(fs::exists(Folder()));
}

TEST_F(Logs, TypeAndDocumentSelectTheFile) {
  const std::tuple<int, LogType, int, LPCTSTR, const char*> rows[] = {
      {2, KV_LOG_DESERIALIZE, 0, _T("Bracket"), ""},
      {2, KV_LOG_EVENTS, 0, _T("Bracket"), "TIMELOG_2024_SW_Events.txt: Bracket Data : 100%s\n"},
      {2, KV_LOG_EVENTS, 1, _T("Bracket"), "TIMELOG_2024_SW_Events.txt_Bracket.txt: Bracket Data : 100%s\n"},
      {2, KV_LOG_PLAIN, 0, nullptr, "TIMELOG_2024_SW.txt: Unknown Part Data : 100%s\n"},
      {0, KV_LOG_PLAIN, 1, _T("\u00C4"), "TIMELOG_2024_SW_\xC3\x84.txt: \xC3\x84 Data : 100%s\n"},
      {1, KV_LOG_DESERIALIZE, 0, _T(""), "TIMELOG_2024_SW_DESerialize.txt:  Data : 100%s\n"},
      {3, KV_LOG_COMMANDS, 0, _T("a\\b"), "TIMELOG_2024_SW_CMDS.txt: a\\b Data : 100%s\n"},
      {3, KV_LOG_COMMANDS, 1, _T("..\\b"), ""},
      {0, LogType(9), 0, _T("b"), "TIMELOG_2024_SW.txt: b Data : 100%s\n"},
  };
  for (const auto& [registered, type, perDocument, title, expected] : rows) {
    Switch({{_T("LOG_KV"), 1}, {_T("LOG_KV_TYPE"), registered}});
    g_title = title;
    KVTimeLog::DumpStr(_T("100%s"), type, perDocument);
    EXPECT_EQ(Taken(), expected);
  }
  g_document = nullptr;
  KVTimeLog::DumpStr(_T(""), KV_LOG_PLAIN, 1);
  EXPECT_EQ(Taken(), "TIMELOG_2024_SW_Unknown Part.txt: Unknown Part Data : \n");
}

TEST_F(Logs, ScopeHasItsMinutesSecondsAndTicks) {
  Switch({{_T("LOG_KV"), 1}});
  g_ticks = 0xFFFFFFFF;
  {
    const KVTimeLog log(CString(_T("Rebuild")), KV_LOG_PLAIN, 0);
    EXPECT_EQ(kvtest::ReadFile(Folder() / "TIMELOG_2024_SW.txt"), "Bracket : Rebuild_Start\n");
    g_seconds += 7325;
    g_ticks += 125000;
  }
  EXPECT_EQ(Taken(),
            "TIMELOG_2024_SW.txt: Bracket : Rebuild_Start\n"
            "Rebuild_End : 122 mins, 5 secs ; Total in MilliSecs: 125000\n");
}

TEST_F(Logs, StreamsOfDataHaveTheirFiles) {
  Switch({{_T("KV_TURRET_LOG"), 2}, {_T("KV_ASMTURN_LOG"), 1}});
  LogAll();
  KVTimeLog::DumpTurretData(_T("u"), 2, 1);
  EXPECT_EQ(Taken(),
            "KV_ASMTURN_LOG.txt: a%d\tLine = " + std::to_string(LONG_MAX) +
                " \nCORE PPM Data:\nc\tNumber of Setups = 2 \tNumber of Operation Setups = 3 \tMachine Name = Mill\t"
                "Line = -1 \nMachine Data:\nm\tLine = 4 \n"
                "Coordinate System : Origin = 0.000000\t1.000000\t0.000000\n"
                "Coordinate System : X-Axis = 1.000000\t0.000000\t0.000000\n"
                "Coordinate System : Y-Axis = 0.000000\t1.000000\t0.000000\n"
                "Coordinate System : Z-Axis = 0.000000\t0.000000\t1.000000\n"
                "KV_TURRET_LOG.txt: t\t\tLine = 12 \nu\tFRONT1\tLine = 1 \n");
}

TEST_F(Logs, FunctionHasItsValues) {
  g_seconds = 0;
  {
    KVFunctionLog log(_T("Plan"));
    log.AddInputValue(2, 7, -8L, 9);
    log.AddOutputValue(3, 1);
    g_seconds = 61;
    SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("LOG_KV_FUNCTION"), 1);
  }
  const std::string start = ToUtf8(CTime(0).Format(_T("%X %x"))), end = ToUtf8(CTime(61).Format(_T("%X %x")));
  EXPECT_EQ(Taken(), "KV_FUNCTION_LOG.txt: \n_Start time:" + start +
                         "\nFunction Name: Plan\nInput Values: 7 ,-8\nOutput Values: 1\n_End time:" + end +
                         "\n_Elapsed time:61 sec\n");
}

TEST_F(Logs, MemoryLogBeginsAnewAndEndsForGood) {
  Switch({{_T("LOG_KV_MEMORY_LEAK"), 1}});
  KVMemoryLeakLog& log = *KVMemoryLeakLog::GetInstance();
  log.Dump(_T("before the start"));
  for (const LPCTSTR text : {_T("first"), _T("50%% %d")}) {
    log.StartLogging();
    log.Dump(text);
  }
  EXPECT_EQ(Taken(), "MEMORYLEAK_2024_SW.txt: 50% %d");
  log.TerminateLogging();
  log.StartLogging();
  log.Dump(_T("x"));
  EXPECT_EQ(Taken(), "");
  KVMemoryLeakLog::DestroyInstance();
}
