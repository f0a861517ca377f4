// Runs the built command line as a user would.
#pragma once

#include <cstdlib>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/folders.h"
#include "tests/registry_calls.h"
#include "tests/run_program.h"
#include "tests/scratch.h"

namespace kvtest {

struct RunResult {
  // 128 or more: a signal ended the command.
  int exit_code = 0;
  std::string out, err;

  bool operator==(const RunResult&) const = default;
  friend std::ostream& operator<<(std::ostream& stream, const RunResult& result) {
    return stream << "exit " << result.exit_code << "\n-- out\n" << result.out << "-- err\n" << result.err;
  }
};
inline RunResult Prints(const std::string& text) { return {0, text, ""}; }
// A failure, exit code 3 unless said.
inline RunResult Refused(const std::string& reason, int exit_code = 3) {
  return {exit_code, "", "kestrova: " + reason + "\n"};
}

// Runs kestrova with exactly these arguments in this process's registry. `input` is its standard input, which is not a
// terminal.
inline RunResult RunCommand(const std::vector<std::string>& arguments, const std::string& input = "") {
  const ScratchFolder folder;
  const std::filesystem::path out = folder.Path() / "out", err = folder.Path() / "err";
  const int code = RunProgram(BuiltFile("bin/kestrova"), arguments, folder.Write("in", input), out, err);
  return {code, ReadFile(out), ReadFile(err)};
}

// The JSON with these values changed: it equals the former one if that has them.
inline nlohmann::json With(nlohmann::json json, const nlohmann::json& values) {
  json.merge_patch(values);
  return json;
}

// The words of a line, separated by blanks.
inline std::vector<std::string> WordsOf(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), {}};
}

// The text in quotes, as JSON writes it.
inline std::string JsonOf(const std::string& text) { return nlohmann::json(text).dump(); }

// The fixture of a command's tests: a folder with an empty registry, and the calls of this command.
class CommandTest : public testing::Test {
 protected:
  explicit CommandTest(const std::string& command) : command_(command) {}

  std::string File(const std::string& name) const { return (folder_.Path() / name).make_preferred().string(); }
  RunResult Run(std::vector<std::string> words) const {
    words.insert(words.begin(), command_);
    return RunCommand(words);
  }
  // The output of a command that must succeed. Json adds --json to the words.
  std::string Out(const std::vector<std::string>& words) const {
    const RunResult result = Run(words);
    EXPECT_EQ(result.exit_code, 0) << result;
    EXPECT_EQ(result.err, "");
    return result.out;
  }
  nlohmann::json Json(std::vector<std::string> words) const {
    words.push_back("--json");
    return nlohmann::json::parse(Out(words), nullptr, /*allow_exceptions=*/false);
  }
  // Creates a document and returns its path.
  std::string NewDocument(const std::string& name, std::vector<std::string> options) const {
    options.insert(options.begin(), {"document", "new", File(name)});
    EXPECT_EQ(RunCommand(options), Prints(""));
    return File(name);
  }

  const ScratchFolder folder_;

 private:
  const std::string command_;
  const RegistryIn registry_{folder_.Path()};
};

}  // namespace kvtest
