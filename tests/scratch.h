// Shared by all tests: temporary folders and a private registry.
#pragma once

#include <filesystem>
#include <string>

namespace kvtest {

// A folder for thousands of files: a file system in memory, or the system's temporary folder.
std::filesystem::path FastFolder();

// An empty folder in the system's temporary folder, or in another one. The destructor removes it with its content.
class ScratchFolder {
 public:
  explicit ScratchFolder(const std::filesystem::path& where = std::filesystem::temp_directory_path());
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  // Writes bytes to a file below the folder, creates missing folders and returns the file's path.
  std::filesystem::path Write(const std::string& relative, const std::string& bytes) const;

 private:
  std::filesystem::path path_;
};

// Returns the whole content of a file; the running test fails if the file cannot be read.
std::string ReadFile(const std::filesystem::path& path);

// The printed seed of a random test. It is derived from the test's name and stays the same, so that a failure comes
// from a change and not from the seed. KV_TEST_SEED=random draws a new seed, KV_TEST_SEED=number repeats a printed one.
unsigned PrintedSeed();

// Sets KV_REGISTRY to the folder for this process and its children. Returns the former folder.
std::filesystem::path UseRegistry(const std::filesystem::path& folder);

// Sets KV_STATE to the folder for this process and its children, and allows usage events. Returns the former folder.
std::filesystem::path UseState(const std::filesystem::path& folder);

}  // namespace kvtest
