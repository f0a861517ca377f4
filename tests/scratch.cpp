#include "tests/scratch.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <random>
#include <sstream>
#include <string_view>
#include <utility>

#include "platform/process.h"
#include "platform/registry_files.h"

namespace kvtest {

std::filesystem::path FastFolder() {
  const std::filesystem::path memory = "/dev/shm";
  return std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
}

ScratchFolder::ScratchFolder(const std::filesystem::path& where) {
  std::random_device seed;
  do {
    path_ = where / ("kvtest-" + std::to_string(seed()));
  } while (!std::filesystem::create_directory(path_));
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;  // a test that removed its own permissions leaves the folder behind
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path ScratchFolder::Write(const std::string& relative, const std::string& bytes) const {
  const std::filesystem::path file = path_ / relative;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << bytes;
  return file;
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) ADD_FAILURE() << "cannot read " << path;
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

unsigned PrintedSeed() {
  const char* wanted = std::getenv("KV_TEST_SEED");
  const auto draw = [&]() -> unsigned {
    if (wanted && std::string_view(wanted) == "random") return std::random_device()();
    if (wanted) return unsigned(std::strtoul(wanted, nullptr, 10));
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    return unsigned(std::hash<std::string_view>()(test ? test->name() : ""));
  };
  const unsigned seed = draw();
  std::cout << "seed " << seed << std::endl;  // flushed in case the test crashes
  return seed;
}

std::filesystem::path UseRegistry(const std::filesystem::path& folder) {
  static std::filesystem::path current;
  SetEnvironmentVariableW(_T("KV_REGISTRY"), folder.string<TCHAR>().c_str());
  if (UseRegistryOfEnvironment() != ERROR_SUCCESS) std::abort();  // the tests would change the user's own registry
  return std::exchange(current, folder);
}

std::filesystem::path UseState(const std::filesystem::path& folder) {
  static std::filesystem::path current;
  SetEnvironmentVariableW(_T("KV_STATE"), folder.string<TCHAR>().c_str());
  SetEnvironmentVariableW(_T("DO_NOT_TRACK"), nullptr);
  return std::exchange(current, folder);
}

}  // namespace kvtest
