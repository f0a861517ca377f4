// Runs the built command line as a user would.
#pragma once

#include <cstdlib>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include "tests/scratch.h"

namespace kvtest {

struct RunResult {
  // 128 or more: a signal ended the command.
  int exit_code = 0;
  std::string out;
  std::string err;

  bool operator==(const RunResult&) const = default;
  friend std::ostream& operator<<(std::ostream& stream, const RunResult& result) {
    return stream << "exit " << result.exit_code << "\n-- out\n" << result.out << "-- err\n" << result.err;
  }
};

// Runs kestrova with exactly these arguments in this process's registry. `input` is its standard input, which is not a
// terminal.
inline RunResult RunCommand(const std::vector<std::string>& arguments, const std::string& input = "") {
  const ScratchFolder folder;
  const auto quoted = [](const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
      if (c == '\\' || c == '"' || c == '$' || c == '`') result += '\\';
      result += c;
    }
    return result + '"';
  };
  std::string line = quoted(KV_BIN_DIR "/kestrova");
  for (const std::string& argument : arguments) line += ' ' + quoted(argument);
  line += " <" + quoted(folder.Write("in", input).string());
  line += " >" + quoted((folder.Path() / "out").string()) + " 2>" + quoted((folder.Path() / "err").string());
  const int status = std::system(line.c_str());
  // std::system returns the exit code, or on systems with signals the exit code above eight bits of the signal.
  const int code = status >= 256 ? status >> 8 : status == 0 ? 0 : 128 + (status & 127);
  return {code, ReadFile(folder.Path() / "out"), ReadFile(folder.Path() / "err")};
}

}  // namespace kvtest
