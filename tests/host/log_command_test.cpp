// `kestrova log` and `kestrova analytics`, run as a user would.
#include "companions/analytics/event_file.h"
#include "platform/process.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/diagnostics/log_files.h"
#include "share/diagnostics/time_log.h"
#include "tests/host/run_command.h"

namespace {

using namespace kvtest;
namespace fs = std::filesystem;

class LogCommand : public CommandTest {
 protected:
  LogCommand() : CommandTest("log") {
    SetEnvironmentVariableW(_T("KV_DRIVE_C"), folder_.Path().string<TCHAR>().c_str());
  }
  ~LogCommand() override { SetEnvironmentVariableW(_T("KV_DRIVE_C"), nullptr); }

  std::string SwitchedOn() {
    const nlohmann::json shown = Json({"show"});
    std::string names;
    for (const auto& type : shown.at("types"))
      if (type.at("on")) names += type.at("type").get<std::string>() + ' ';
    return names;
  }
  static int Stored(LPCTSTR name) { return GetRegSettingDwordValue(HKEY_CURRENT_USER, kProductDebugKey, name); }
};

TEST_F(LogCommand, SwitchesEachLogAndCreatesTheFolder) {
  const std::tuple<std::vector<std::string>, const char*> rows[] = {
      {{"on"}, "plain "},
      {{"on", "--type", "events"}, "plain events "},
      {{"on", "--type", "commands"}, "plain commands "},
      {{"on", "--type", "function"}, "plain commands function "},
      {{"off", "--type", "events"}, "plain commands function "},
      {{"off", "--type", "commands"}, "plain function "},
      {{"off"}, ""},
      {{"on", "--type", "asmturn"}, "asmturn "},
  };
  EXPECT_FALSE(fs::exists(File("KestrovaData")));
  for (const auto& [words, on] : rows) {
    Out(words);
    EXPECT_EQ(SwitchedOn(), on) << words.back();
  }
  EXPECT_TRUE(fs::is_directory(File("KestrovaData/LOG")));
  fs::remove_all(File("KestrovaData"));
  EXPECT_NE(RunCommand({"env", "doctor"}).out.find("\nwarning: logs: "), std::string::npos);
  EXPECT_EQ(Stored(kTimeLogSwitch), 0);
  EXPECT_EQ(Stored(kAsmTurnLogSwitch), 1);
}

TEST_F(LogCommand, ShowsTheSlowestScopesAndClearsTheFilesOfAType) {
  Out({"on", "--type", "events"});
  KVTimeLog::CheckRegistry();
  { const KVTimeLog log(_T("Real"), KV_LOG_EVENTS, 1); }
  const std::string log = "KestrovaData/LOG/";
  folder_.Write(log + "TIMELOG_2024_SW.txt",
                "B_End : 0 mins, 2 secs ; Total in MilliSecs: 1999\nD : A_Start\n"
                "A_End : 0 mins, 0 secs ; Total in MilliSecs: 1000\nA_End : 0 mins, 4 secs ; Total in MilliSecs: 4001\n"
                "A_End : 0 mins, 4 secs ; Total in MilliSecs: 4294967296\nA_End : 0 mins, x\n\x1b" +
                    std::string(5000, 'x'));
  folder_.Write(log + "other.txt", "");
  const nlohmann::json all = Json({"show", "--lines", "1"});
  const auto row = [](const char* name, int count, int total, double mean, int most) {
    return nlohmann::json({{"name", name}, {"count", count}, {"totalMs", total}, {"meanMs", mean}, {"maxMs", most}});
  };
  EXPECT_EQ(all["scopes"][0], row("A", 2, 5001, 2500.5, 4001));
  EXPECT_EQ(all["scopes"][1], row("B", 1, 1999, 1999, 1999));
  EXPECT_EQ(all["scopes"][2]["name"], "Real");
  EXPECT_EQ(all["files"].size(), 2U);
  EXPECT_EQ(all["files"][0]["lastLines"], nlohmann::json({"\x1b" + std::string(4095, 'x')}));
  EXPECT_EQ(all["files"][1]["file"], File(log + "TIMELOG_2024_SW_Events.txt_Unknown Part.txt"));
  EXPECT_NE(Out({"show"}).find("\nscope  count  total ms  mean ms  max ms\nA          2      5001   2500.5    4001\n"),
            std::string::npos);
  EXPECT_EQ(Out({"clear", "--type", "events"}), "1 file deleted\n");
  EXPECT_EQ(Out({"clear"}), "1 file deleted\n");
  EXPECT_TRUE(fs::exists(File(log + "other.txt")));
}

TEST_F(LogCommand, AnalyticsShowsWhatTheProductWroteUntilItIsSwitchedOff) {
  const fs::path before = UseState(folder_.Path() / "state");
  EXPECT_EQ(RunCommand({"analytics", "off"}), Prints(""));
  EXPECT_EQ(RunCommand({"env"}).exit_code, 0);
  EXPECT_FALSE(fs::exists(File("state")));
  EXPECT_EQ(RunCommand({"analytics", "on"}), Prints(""));
  EXPECT_EQ(RunCommand({"env"}).exit_code, 0);
  EXPECT_EQ(AppendTextEvent("Usage", "Volu\nTurn", "1", 7), 1);
  for (const char* odd : {"[[[", "{}", "{\"kind\":{\"a\":1},\"name\":[]}"}) EventFile().Append(odd);
  nlohmann::json all = nlohmann::json::parse(RunCommand({"analytics", "show", "--json"}).out);
  EXPECT_EQ(all["count"], 5);
  EXPECT_EQ(all["damagedLines"], 3);
  EXPECT_EQ(all["events"][0]["name"], "env");
  EXPECT_EQ(all["events"][1]["process"], 7);
  const std::string shown = RunCommand({"analytics", "show", "--lines", "4"}).out;
  EXPECT_NE(shown.find("  text  Usage     Volu Turn  1"), std::string::npos) << shown;
  EXPECT_EQ(shown.find("command"), std::string::npos) << shown;
  EXPECT_EQ(RunCommand({"analytics", "clear"}), Prints(""));
  EXPECT_EQ(nlohmann::json::parse(RunCommand({"analytics", "show", "--json"}).out)["count"], 0);
  UseState(before);
}

}  // namespace
