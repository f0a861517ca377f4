// Runs lines in a shell as a user types them: kestrova is in the path, with a copy of an install and an empty registry.
// The desktop's programs that open documents and mails are replaced by scripts that append their arguments, line by
// line, to the file Calls().
#pragma once

#include <algorithm>
#include <fstream>
#include <set>

#include "tests/host/scratch_installation.h"

namespace kvtest {

class UserShell {
 public:
  UserShell() {
    std::filesystem::create_directory(Work());
    std::filesystem::create_directory(installation_.Path() / "bin");
    std::filesystem::create_symlink(BuiltFile("bin/kestrova"), installation_.Path() / "bin/kestrova");
    for (const char* program : {"xdg-open", "xdg-email"})
      AddProgram(program, "printf '%s\\n' \"$@\" >>'" + Calls().string() + "'");
    AddProgram("xdg-mime", "echo mail.desktop");
  }

  // A script in the path.
  void AddProgram(const std::string& name, const std::string& line) const {
    const std::filesystem::path program = installation_.Path() / "bin" / name;
    std::ofstream(program) << "#!/bin/sh\n" << line << '\n';
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  }
  std::filesystem::path Calls() const { return installation_.Path() / "calls"; }

  // The current folder of the lines.
  std::filesystem::path Work() const { return installation_.Path() / "work"; }
  const ScratchInstallation& Installation() const { return installation_; }

  RunResult Run(const std::string& line) const {
    const ScratchFolder streams;
    const auto file = [&](const char* name) { return '"' + (streams.Path() / name).string() + '"'; };
    const std::string bin = (installation_.Path() / "bin").string();
    streams.Write("line", "cd \"" + Work().string() + "\"\nPATH=\"" + bin + ":$PATH\"\n" + Drive() + line + '\n');
    const int status =
        std::system(("sh " + file("line") + " </dev/null >" + file("out") + " 2>" + file("err")).c_str());
    return {WEXITSTATUS(status), ReadFile(streams.Path() / "out"), ReadFile(streams.Path() / "err")};
  }

  // Makes C: a folder of the installation, so that no command writes into the user's own.
  std::string Drive() const { return "export KV_DRIVE_C=\"" + (installation_.Path() / "drive").string() + "\"\n"; }

  // What the completion offers after the words.
  std::set<std::string> Offered(const std::string& words, const std::string& last) const {
    const std::vector<std::string> offered = WordsOf(Run("kestrova complete-words " + words + " '" + last + "'").out);
    return {offered.begin(), offered.end()};
  }

  // The commands without subcommands: "env", "env doctor", "reg add", ...
  std::vector<std::string> Commands() const {
    std::vector<std::string> commands = {"env", "picture"};
    for (const std::string& group : Offered("", ""))
      for (const std::string& command : Offered(group, "")) commands.push_back(group + ' ' + command);
    return commands;
  }

 private:
  const ScratchInstallation installation_;
};

}  // namespace kvtest
