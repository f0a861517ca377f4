// Starting a program with exactly these arguments. Each system has its source in tests/linux/ or tests/windows/.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kvtest {

// Runs a program that the build made, with its standard streams from and to the files, and waits for its end. Returns
// its exit code; 128 or more if a signal ended it.
int RunProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& in, const std::filesystem::path& out, const std::filesystem::path& err);

}  // namespace kvtest
