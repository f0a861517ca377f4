// The progress bar.
#include "host/shell/progress_bar.h"

#include <gtest/gtest.h>

#include "tests/host/run_command.h"

using kestrova::ProgressBar;

TEST(ProgressBar, ShowsThePartThatIsDone) {
  EXPECT_EQ(ProgressBar::Text("reading nodes", 0, 200), "[--------------------]   0% reading nodes");
  EXPECT_EQ(ProgressBar::Text("reading nodes", 99, 200), "[#########-----------]  49% reading nodes");
  EXPECT_EQ(ProgressBar::Text("reading nodes", 200, 200), "[####################] 100% reading nodes");
  EXPECT_EQ(ProgressBar::Text("reading nodes", 300, 200), "[####################] 100% reading nodes");
  EXPECT_EQ(ProgressBar::Text("reading nodes", 0, 0), "[####################] 100% reading nodes");
}

TEST(ProgressBar, StepWithoutABarDoesNothing) { EXPECT_EQ(ProgressBar::Step(1), 1); }

// The command takes long enough for a bar.
TEST(ProgressBar, IsNotWrittenWithoutATerminal) {
  const kvtest::ScratchFolder folder;
  const std::string file = (folder.Path() / "a.kvdoc").string();
  EXPECT_EQ(kvtest::RunCommand({"document", "new", file, "--nodes", "200000"}), (kvtest::RunResult{0, "", ""}));
}
