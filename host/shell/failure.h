// How a command fails: main prints the exception's text as one line on stderr and, with --json, an error object on
// stdout; then it returns the exit code.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace kestrova {

// Where the fault is. Only known parts are set.
struct FilePlace {
  std::string file;  // the system's path
  int line = 0;      // from 1
  int column = 0;    // from 1
};

// The command could not be done, because of a missing file, damage, missing rights or a full disk; exit code 3. The
// text names the thing, its path or key, and the next step.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& text, FilePlace place = {}) : Failure(text, std::move(place), 3) {}

  int ExitCode() const { return exit_code_; }
  const FilePlace& Place() const { return place_; }

 protected:
  Failure(const std::string& text, FilePlace place, int exitCode)
      : std::runtime_error(text), place_(std::move(place)), exit_code_(exitCode) {}

 private:
  FilePlace place_;
  int exit_code_;
};

// A readable file or registry does not have the key, value or node that was asked for; exit code 1.
class NotFound : public Failure {
 public:
  explicit NotFound(const std::string& text, FilePlace place = {}) : Failure(text, std::move(place), 1) {}
};

// The command line is wrong in a way that the option parser cannot see; exit code 2.
class WrongUsage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The command has printed its answer, and the answer is no, such as a check that found errors; exit code 1 without a
// line on stderr.
class FoundErrors {};

}  // namespace kestrova
