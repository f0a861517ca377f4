// What the command line prints passes host/shell/output.h, which makes names and values harmless for a terminal.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>

#include "tests/folders.h"

namespace {

namespace fs = std::filesystem;

TEST(Output, IsPrintedByOnePlaceOnly) {
  const std::regex direct("std::(cout|cerr)|\\b(puts|putchar|printf|vprintf|fputs)\\(|fmt::print\\(");
  // Progress and the lines of running jobs draw on stderr.
  const std::regex border("host/shell/(output|progress_bar)|host/jobs/job_screen");
  int sources = 0;
  for (const auto& entry : fs::recursive_directory_iterator(kvtest::SourceFile("host"))) {
    const std::string path = entry.path().generic_string();
    if (entry.path().extension() != ".cpp" || std::regex_search(path, border)) continue;
    ++sources;
    std::ifstream in(path);
    std::string line;
    for (int number = 1; std::getline(in, line); ++number)
      EXPECT_FALSE(std::regex_search(line, direct)) << path << ':' << number << ": " << line;
  }
  EXPECT_GT(sources, 30);
}

}  // namespace
