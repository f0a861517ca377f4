// What the tests of files and folders share: a scratch folder by the product's paths, files opened in it, and walks.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/handles.h"
#include "tests/platform/status.h"
#include "tests/scratch.h"

namespace kvtest {

class FilesTest : public testing::Test {
 protected:
  // The product path of a name in the scratch folder.
  Text At(const std::string& name) const { return ProductPathFromSystem((folder.Path() / name).string()); }

  HANDLE Open(const std::string& name, DWORD access, DWORD disposition) const {
    return CreateFileW(At(name).c_str(), access, 0, nullptr, disposition, 0, nullptr);
  }

  // Opens a file of these bytes as a stream, writes the text and closes it.
  void ExpectStream(const TCHAR* mode, const std::string& before, const char* text, const std::string& wanted) const {
    SCOPED_TRACE(testing::PrintToString(Text(mode)));
    folder.Write("f", before);
    FILE* file = _wfopen(At("f").c_str(), mode);
    ASSERT_NE(file, nullptr);
    std::fputs(text, file);
    EXPECT_EQ(std::fclose(file), 0);
    EXPECT_EQ(ReadFile(folder.Path() / "f"), wanted);
  }

  // The names that a search returns, each followed by a blank; "error N" if it finds nothing.
  std::string Found(const std::string& pattern, bool sorted = true) const {
    WIN32_FIND_DATAW facts;
    const HANDLE search = FindFirstFileW(At(pattern).c_str(), &facts);
    if (search == INVALID_HANDLE_VALUE) return "error " + std::to_string(GetLastError());
    std::vector<std::string> found;
    do {
      found.push_back(
          std::filesystem::path(SystemPathFromProduct((At("") + facts.cFileName).c_str())).filename().string());
    } while (FindNextFileW(search, &facts));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_NO_MORE_FILES));
    EXPECT_TRUE(FindClose(search));
    if (sorted) std::sort(found.begin(), found.end());
    std::string names;
    for (const std::string& name : found) names += name + " ";
    return names;
  }

  ScratchFolder folder;
};

}  // namespace kvtest
