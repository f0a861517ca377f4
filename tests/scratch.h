// What tests share: a folder of their own that is gone afterwards, and a registry of their own.
#pragma once

#include <filesystem>
#include <string>

namespace kvtest {

// Where thousands of files are written in no time: a file system in memory, or the system's temporary folder.
std::filesystem::path FastFolder();

// An empty folder in the system's temporary folder, or in another; removed with its content by the destructor.
class ScratchFolder {
 public:
  explicit ScratchFolder(const std::filesystem::path& where = std::filesystem::temp_directory_path());
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  // Writes bytes into a file below the folder, making folders on the way; gives the file's path.
  std::filesystem::path Write(const std::string& relative, const std::string& bytes) const;

 private:
  std::filesystem::path path_;
};

// The whole content of a file; fails the running test if it cannot be read.
std::string ReadFile(const std::filesystem::path& path);

// A random test has a seed, which is printed: one of its own that stays the same from run to run, so that a change is
// judged by what it changed. KV_TEST_SEED=random draws a new one, KV_TEST_SEED=number repeats a printed one.
unsigned PrintedSeed();

// Points KV_REGISTRY at the folder for this process and the processes that it starts.
void UseRegistry(const std::filesystem::path& folder);

}  // namespace kvtest
