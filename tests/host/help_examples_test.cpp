// Runs every example of every --help and of the README, as a user pastes it into a shell in a copy of an install.
#include <map>

#include "tests/folders.h"
#include "tests/host/user_shell.h"

namespace {

using namespace kvtest;
namespace fs = std::filesystem;

// The lines of a help that begin with the program's name, without the lines that show the syntax.
std::vector<std::string> ExamplesIn(const std::string& help) {
  std::vector<std::string> examples;
  std::istringstream in(help);
  for (std::string line; std::getline(in, line);) {
    const std::size_t start = line.find_first_not_of(' ');
    const bool syntax = line.find(" KEY") != line.npos || line.find(" FILE") != line.npos;
    if (start != line.npos && start >= 2 && line.compare(start, 9, "kestrova ") == 0 && !syntax)
      examples.push_back(line.substr(start, line.find("  #") - start));
  }
  return examples;
}

class HelpExamples : public testing::Test {
 protected:
  HelpExamples() {
    for (const char* line :
         {"kestrova document new part.kvdoc --nodes 12", "cp part.kvdoc old.kvdoc",
          "kestrova pattern add part.kvdoc 7 --kind linear --direction 1,0,0 --spacing 20 --count 5",
          "kestrova pattern order part.kvdoc 7 --operation 9 --by reverse",
          "kestrova picture part.kvdoc --out moves.kvrec", "kestrova settings export mine.json",
          "kestrova reg export HKCU settings.reg", "echo '*: Delete* -> Yes' > answers.txt",
          "kestrova ini set shopfloor.ini Tool Diameter 12", "kestrova feedcolors add --process mill 1200 '#FF8000'",
          "printf 'Tool\\tDiameter\\tComment\\nend mill\\t12\\t\\ndrill\\t8\\t\\n' >tools.tsv"})
      EXPECT_EQ(shell_.Run(line).exit_code, 0) << line;
    fs::copy(SourceFile("fuzz/seeds/minidump/whole"), shell_.Work() / "part-0.dmp");
    fs::copy(SourceFile("fuzz/seeds/crash_report/whole"), shell_.Work() / "part-0.txt");
    Replace(samples_.Path() / "work", shell_.Work());
    Replace(samples_.Path() / "registry", shell_.Installation().Path() / "registry");
  }
  static void Replace(const fs::path& folder, const fs::path& by) {
    fs::remove_all(folder);
    fs::copy(by, folder, fs::copy_options::recursive);
  }
  // Runs an example beside the files that it reads, but not those that it writes. A new user has an empty registry.
  RunResult RunAlone(const std::string& example, bool newUser) {
    Replace(shell_.Work(), samples_.Path() / "work");
    Replace(shell_.Installation().Path() / "registry", samples_.Path() / "registry");
    if (newUser) fs::remove(shell_.Installation().Path() / "registry/user.hive");
    const std::vector<std::string> words = WordsOf(example);
    const std::string command = words.at(1) + ' ' + (words.size() > 2 ? words[2] : "");
    if (command == "document new" || command == "settings export") fs::remove(shell_.Work() / words.at(3));
    const bool crashes = command == "crash test";  // not by the sanitizer, which would take the signal
    return shell_.Run((crashes ? "ASAN_OPTIONS=handle_segv=0 " : "") + example);
  }

  const UserShell shell_;
  const ScratchFolder samples_;
};

TEST_F(HelpExamples, AllRun) {
  std::map<std::string, int> expected = {{"kestrova job run part.kvdoc --command crash --json", 1},
                                         {"kestrova crash test read --folder .", 128 + 11}};
  std::set<std::string> examples;
  const auto add = [&](const std::string& text) {
    const std::vector<std::string> found = ExamplesIn(text);
    examples.insert(found.begin(), found.end());
    return found.size();
  };
  EXPECT_GE(add(shell_.Run("kestrova --help").out), 10U);
  const std::set<std::string> first = examples;
  for (const std::string& group : shell_.Offered("", "")) add(shell_.Run("kestrova " + group + " --help").out);
  for (const std::string& command : shell_.Commands()) {
    const std::string help = shell_.Run("kestrova " + command + " --help").out;
    EXPECT_GE(add(help), 1U) << "no example of " << command << "\n" << help;
  }
  const std::string readme = ReadFile(SourceFile("README.md"));
  EXPECT_GE(add(readme), 20U);
  for (const std::string& example : examples) {
    const RunResult result = RunAlone(example, /*newUser=*/first.contains(example));
    EXPECT_EQ(result.exit_code, expected[example]) << example << '\n' << result;
  }
}

}  // namespace
