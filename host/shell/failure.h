// How a command fails: main prints the exception's text as one line on stderr and returns the exit code.
#pragma once

#include <stdexcept>

namespace kestrova {

// The command was refused or failed; exit code 1. The text names the thing, its path or key, and the next step.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
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
