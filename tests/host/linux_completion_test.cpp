// The completion of words in the shells.
#include "tests/host/user_shell.h"

namespace {

TEST(Completion, EachShellAsksForTheCandidates) {
  const kvtest::UserShell shell;
  const std::string typed =
      "COMP_WORDS=(kestrova machine show --type Mill) COMP_CWORD=4\n_kestrova\necho ${COMPREPLY[*]}";
  EXPECT_EQ(shell.Run("kestrova completion bash >script; echo '" + typed + "' >>script; bash script"),
            kvtest::Prints("Mill MillTurn\n"));
  // Without zsh and fish only the lines that register the function.
  EXPECT_NE(shell.Run("kestrova completion zsh").out.find("\n  compdef _kestrova kestrova\n"), std::string::npos);
  EXPECT_NE(shell.Run("kestrova completion fish").out.find("\ncomplete -c kestrova -f -a "), std::string::npos);
}

}  // namespace
