// Compound files among others: programs that read and write them on their own, many elements, and writers that are
// killed.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <random>

#include "tests/child_process.h"
#include "tests/platform/storage_support.h"

namespace kvtest {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kLargeMegabytes = 30;
#else
constexpr int kLargeMegabytes = 300;
#endif

class LinuxCompoundFiles : public CompoundFiles {
 protected:
  // What a program prints, with its exit code in front where that isn't 0.
  std::string OutputOf(const std::string& command) const {
    const auto out = folder_.Path() / "out";
    const int status = std::system(("cd " + folder_.Path().string() + " && " + command + " >out 2>&1").c_str());
    return (status == 0 ? "" : "status " + std::to_string(status) + ": ") + ReadFile(out);
  }
  static std::u16string NameOf(int number) {
    const std::string digits = std::to_string(number);
    return u"stream " + std::u16string(digits.begin(), digits.end());
  }
};

TEST_F(LinuxCompoundFiles, OtherProgramsReadThem) {
  {
    const Storage root = Create();
    Put(root, u"Large", std::string(100000, 'L'));
    Put(root, u"Empty", "");
    const Storage inner = CreateStorage(root, u"Inner");
    for (int i = 0; i < 100; ++i) Put(inner, NameOf(i), "content " + std::to_string(i));
  }
  const std::string listed = OutputOf("gsf list a.bin");
  EXPECT_NE(listed.find(" 100000 Large\n"), std::string::npos) << listed;
  EXPECT_NE(listed.find(" 10 Inner/stream 99\n"), std::string::npos) << listed;
  EXPECT_EQ(OutputOf("gsf cat a.bin 'Inner/stream 42'"), "content 42");
  EXPECT_EQ(OutputOf("gsf cat a.bin Large"), std::string(100000, 'L'));
  const std::string packed = OutputOf("7z l a.bin");
  EXPECT_NE(packed.find("Type = Compound"), std::string::npos) << packed;
  EXPECT_NE(packed.find("102 files, 1 folders"), std::string::npos) << packed;
  EXPECT_NE(OutputOf("7z t a.bin").find("Everything is Ok"), std::string::npos);
}

TEST_F(LinuxCompoundFiles, ReadThoseOfOtherPrograms) {
  folder_.Write("in/Folder/small", "hello");
  folder_.Write("in/Large", std::string(200000, 'L'));
  folder_.Write("Third", "");
  ASSERT_EQ(OutputOf("gsf createole a.bin in Third").find("status"), std::string::npos);
  const Storage root = Open();
  ASSERT_TRUE(root) << std::hex << result_;
  EXPECT_EQ(NamesIn(root), (std::vector<std::u16string>{u"in", u"Third"}));
  const Storage in = OpenStorage(root, u"in");
  EXPECT_EQ(Get(in, u"Large"), std::string(200000, 'L'));
  EXPECT_EQ(Get(OpenStorage(in, u"Folder"), u"small"), "hello");
  EXPECT_EQ(Get(root, u"Third"), "");
}

TEST_F(LinuxCompoundFiles, StoragesNestSixtyFourDeep) {
  {
    std::vector<Storage> path;
    path.push_back(Create());
    for (int i = 0; i < 64; ++i) path.push_back(CreateStorage(path.back(), u"level"));
    Put(path.back(), u"bottom", "here");
    while (!path.empty()) path.pop_back();
  }
  EXPECT_NE(OutputOf("7z l a.bin").find("1 files, 64 folders"), std::string::npos);
  std::vector<Storage> path;
  path.push_back(Open());
  for (int i = 0; i < 64; ++i) path.push_back(OpenStorage(path.back(), u"level"));
  EXPECT_EQ(Get(path.back(), u"bottom"), "here");
  while (!path.empty()) path.pop_back();
}

TEST_F(LinuxCompoundFiles, HoldFiveThousandStreams) {
  constexpr int kStreams = 5000;
  {
    const Storage root = Create();
    for (int i = 0; i < kStreams; ++i) Put(root, NameOf(i), std::string(std::size_t(i), char('a' + i % 26)));
    ASSERT_EQ(root->Commit(STGC_DEFAULT), S_OK);
  }
  EXPECT_NE(OutputOf("7z l a.bin").find("5000 files"), std::string::npos);
  EXPECT_EQ(OutputOf("gsf cat a.bin 'stream 4999'"), std::string(4999, char('a' + 4999 % 26)));
  const Storage root = Open();
  ASSERT_EQ(NamesIn(root).size(), std::size_t(kStreams));
  for (int i = 0; i < kStreams; i += 7) {
    ASSERT_EQ(Get(root, NameOf(i)), std::string(std::size_t(i), char('a' + i % 26)));
  }
}

TEST_F(LinuxCompoundFiles, HoldOneLargeStream) {
  const std::string megabyte(1 << 20, 'm');
  {
    const Storage root = Create();
    const Stream stream = CreateStream(root, u"large");
    for (int i = 0; i < kLargeMegabytes; ++i) ASSERT_EQ(stream->Write(megabyte.data(), 1 << 20, nullptr), S_OK);
    ASSERT_EQ(root->Commit(STGC_DEFAULT), S_OK);
  }
  const Storage root = Open("a.bin", kWrite | STGM_TRANSACTED);
  const Stream stream = OpenStream(root, u"large", kWrite);
  ASSERT_TRUE(stream);
  std::string read(1 << 20, '\0');
  ULONG count = 0;
  ASSERT_EQ(stream->Seek(Distance(LONGLONG(kLargeMegabytes - 1) << 20), STREAM_SEEK_SET, nullptr), S_OK);
  ASSERT_EQ(stream->Write("M", 1, nullptr), S_OK);
  ASSERT_EQ(stream->Read(read.data(), 1 << 20, &count), S_OK);
  EXPECT_EQ(count, (1u << 20) - 1);
  EXPECT_EQ(read.find_first_not_of('m'), count);
}

// What the two streams hold: one and the same number, over and over.
std::string Generation(int number) {
  std::string text;
  while (text.size() < 60000) text += std::to_string(number) + ' ';
  return text;
}

TEST_F(LinuxCompoundFiles, KilledWriterLeavesTheOldFileOrTheNew) {
  std::mt19937 random(kvtest::PrintedSeed());
  const SharedNumber committed;
  int last = 0;
  for (int round = 0; round < 100; ++round) {
    *committed = last;
    const pid_t child = InChild([&] {
      for (int number = last + 1;; ++number) {
        const Storage root = round % 2 && number > 1 ? Open("a.bin", kWrite) : Create();
        for (const char16_t* name : {u"first", u"second"}) {
          const Stream stream = CreateStream(root, name, kReplace);
          const std::string content = Generation(number);
          if (!stream || stream->Write(content.data(), ULONG(content.size()), nullptr) != S_OK) return false;
        }
        if (root->Commit(STGC_DEFAULT) != S_OK) return false;
        *committed = number;
      }
    });
    while (*committed < last + 1 && waitpid(child, nullptr, WNOHANG) == 0) continue;
    const auto moment = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 5000);
    while (std::chrono::steady_clock::now() < moment) continue;  // into the next save
    kill(child, SIGKILL);
    ASSERT_EQ(ExitCode(child), 128 + SIGKILL) << "round " << round;
    const Storage root = Open();
    ASSERT_TRUE(root) << std::hex << result_ << " in round " << std::dec << round;
    const std::string content = Get(root, u"first");
    last = std::atoi(content.c_str());
    ASSERT_TRUE(last == *committed || last == *committed + 1) << last;
    ASSERT_EQ(content, Generation(last));
    ASSERT_EQ(Get(root, u"second"), content);
  }
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
