// `kestrova env`, which starts the whole module.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/run_command.h"

TEST(EnvironmentCommand, StartsTheModuleAndWritesSwitchesBack) {
  const std::string debugKey = "HKCU\\Software\\Zemlor\\Kestrova\\Kestrova 2024x64\\Debug";
  kvtest::RunCommand({"reg", "delete", "HKCU\\Software", "/f"});
  EXPECT_EQ(kvtest::RunCommand({"reg", "query", debugKey}).exit_code, 1) << "other commands start nothing";
  const kvtest::RunResult result = kvtest::RunCommand({"env"});
  EXPECT_EQ(result.exit_code, 0) << result;
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(result.out, testing::ContainsRegex("install folder    [^\n]*\\\\lib\\\\\n"));
  EXPECT_THAT(result.out, testing::ContainsRegex("language folder   lang\\\\English\\\\\n"));
  EXPECT_THAT(result.out, testing::ContainsRegex("init result       0\n"));
  EXPECT_THAT(kvtest::RunCommand({"reg", "query", debugKey}).out, testing::HasSubstr("PostingPerformanceImprovements"));
}
