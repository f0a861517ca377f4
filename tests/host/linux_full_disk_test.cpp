// Output that a full disk does not take.
#include <sys/wait.h>

#include <cstdlib>

#include "tests/host/run_command.h"

namespace {

using namespace kvtest;

class FullDisk : public CommandTest {
 protected:
  FullDisk() : CommandTest("document") {}
};

TEST_F(FullDisk, OfTheOutputIsAFailure) {
  const std::string file = NewDocument("a.kvdoc", {"--nodes", "3"});
  for (const char* command : {"show", "dump", "verify"}) {
    const std::string line = kvtest::BuiltFile("bin/kestrova").string() + " document " + command + " \"" + file +
                             "\" >/dev/full 2>\"" + File("err") + "\"";
    EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 3) << command;
    EXPECT_EQ(ReadFile(File("err")), "kestrova: the output is incomplete; check whether the disk is full\n");
  }
}

}  // namespace
