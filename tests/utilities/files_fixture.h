// Shared by the tests of files: a temporary folder by the product's paths and by the system's, and its content as text.
#pragma once

#include <gtest/gtest.h>

#include <numeric>
#include <set>

#include "platform/paths.h"
#include "share/utilities/files_and_folders.h"
#include "tests/scratch.h"

namespace kvtest {

class FilesTest : public testing::Test {
 protected:
  // The product's path of a name below the folder.
  CString At(const std::string& name) const {
    return CString(ProductPathFromSystem((folder.Path() / name).string()).c_str());
  }
  std::filesystem::path On(const std::string& name) const { return folder.Path() / name; }
  std::string Bytes(const std::string& name) const { return ReadFile(On(name)); }

  // The sorted content of a folder: "folder/ folder/file=content ".
  std::string Tree(const std::string& name) const {
    std::set<std::string> entries;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(On(name))) {
      const std::string path = std::filesystem::relative(entry.path(), On(name)).string();
      entries.insert(path + (entry.is_directory() ? "/ " : "=" + ReadFile(entry.path()) + " "));
    }
    return std::accumulate(entries.begin(), entries.end(), std::string());
  }
  // The names of a list, each with a blank.
  static std::string Joined(const CList<CString>& names) {
    std::string text;
    for (POSITION at = names.GetHeadPosition(); at;) text += ToUtf8(names.GetNext(at)) + " ";
    return text;
  }

  const ScratchFolder folder{FastFolder()};
  QFFileAndFolderUtilities files;
};

}  // namespace kvtest
