// Compound files beside other programs that read and write them, and saves that fail. tests/host/document_kill_test.cpp
// kills writers.
#include <cstdlib>

#include "tests/platform/storage_support.h"

namespace kvtest {
namespace {

class LinuxCompoundFiles : public CompoundFiles {
 protected:
  // What a program prints, with its exit code in front where that isn't 0.
  std::string OutputOf(const std::string& command) const {
    const auto out = folder_.Path() / "out";
    const int status = std::system(("cd " + folder_.Path().string() + " && " + command + " >out 2>&1").c_str());
    return (status == 0 ? "" : "status " + std::to_string(status) + ": ") + ReadFile(out);
  }
};

TEST_F(LinuxCompoundFiles, OtherProgramsReadThem) {
  {
    const Storage root = Create();
    Put(root, u"Large", std::string(100000, 'L'));
    Put(root, u"Empty", "");
    const Storage inner = CreateStorage(root, u"Inner");
    for (int i = 10; i < 100; ++i) {
      const std::string digits = std::to_string(i);
      Put(inner, u"stream " + std::u16string(digits.begin(), digits.end()), "content " + digits);
    }
  }
  const std::string listed = OutputOf("gsf list a.bin");
  EXPECT_NE(listed.find(" 100000 Large\n"), std::string::npos) << listed;
  EXPECT_NE(listed.find(" 10 Inner/stream 99\n"), std::string::npos) << listed;
  EXPECT_EQ(OutputOf("gsf cat a.bin 'Inner/stream 42'"), "content 42");
  EXPECT_NE(OutputOf("7z t a.bin").find("Everything is Ok"), std::string::npos);
}

TEST_F(LinuxCompoundFiles, ReadThoseOfOtherPrograms) {
  folder_.Write("in/Folder/small", "hello");
  folder_.Write("in/Large", std::string(200000, 'L'));
  folder_.Write("Third", "");
  ASSERT_EQ(OutputOf("gsf createole a.bin in Third").find("status"), std::string::npos);
  const Storage root = Open();
  ASSERT_TRUE(root) << std::hex << result_;
  const Storage in = OpenStorage(root, u"in");
  EXPECT_EQ(Get(in, u"Large"), std::string(200000, 'L'));
  EXPECT_EQ(Get(OpenStorage(in, u"Folder"), u"small"), "hello");
  EXPECT_EQ(Get(root, u"Third"), "");
}

TEST_F(LinuxCompoundFiles, AFailedSaveKeepsTheOldFileAndCanBeRepeated) {
  {
    const Storage root = Create();
    Put(root, u"s", "old");
  }
  const auto before = ReadFile(folder_.Path() / "a.bin");
  const Storage root = Open("a.bin", kWrite | STGM_TRANSACTED);
  Put(root, u"t", "new");  // "s" was never opened: the save takes it from the file
  std::filesystem::rename(folder_.Path(), folder_.Path().string() + "-away");
  EXPECT_EQ(root->Commit(STGC_DEFAULT), STG_E_PATHNOTFOUND);
  std::filesystem::rename(folder_.Path().string() + "-away", folder_.Path());
  EXPECT_EQ(ReadFile(folder_.Path() / "a.bin"), before);
  EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
  const Storage again = Open();
  EXPECT_EQ(Get(again, u"s") + Get(again, u"t"), "oldnew");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}), 1) << "nothing is left beside it";
}

}  // namespace
}  // namespace kvtest
