// Scripts in place of the desktop's programs, found by PATH, which write their arguments to a file, line by line.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/scratch.h"

namespace kvtest {

class StandInPrograms {
 public:
  StandInPrograms() : path_(std::getenv("PATH")) { setenv("PATH", (folder_.Path().string() + ":/bin").c_str(), 1); }
  ~StandInPrograms() { setenv("PATH", path_.c_str(), 1); }
  StandInPrograms(const StandInPrograms&) = delete;
  StandInPrograms& operator=(const StandInPrograms&) = delete;

  // The program records its name and arguments and ends with this exit code.
  void Add(const std::string& name, int exitCode = 0, const std::string& output = "") {
    const std::filesystem::path file =
        folder_.Write(name, "#!/bin/sh\nprintf '%s\\n' " + name + " \"$@\" >>" + Calls() + "\necho '" + output +
                                "'\nexit " + std::to_string(exitCode) + "\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
  }
  void Remove(const std::string& name) { std::filesystem::remove(folder_.Path() / name); }
  // What was recorded since the last call.
  std::string TakeCalls() {
    const std::string calls = std::filesystem::exists(Calls()) ? ReadFile(Calls()) : "";
    std::filesystem::remove(Calls());
    return calls;
  }

 private:
  std::string Calls() const { return (folder_.Path() / "calls").string(); }

  const ScratchFolder folder_;
  const std::string path_;
};

}  // namespace kvtest
