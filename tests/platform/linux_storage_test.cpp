// Compound files beside other programs that read and write them, and saves that fail (tests/host/document_kill_test.cpp
// kills writers); the bytes as this system writes them, and what becomes of files whose tables lie.
#include <cstdlib>

#include "tests/platform/storage_bytes.h"

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

using LinuxCompoundBytes = CompoundBytes;

TEST_F(LinuxCompoundBytes, AreWrittenExactly) {
  {
    const Storage root = Create();
    Put(CreateStorage(root, _T("Inner")), _T("small"), "hello");
    Put(root, _T("Big"), std::string(4096, 'B'));
  }
  std::string bytes = ReadFile(folder_.Path() / "a.bin");
  ASSERT_EQ(bytes.size(), WholeFile().size());
  bytes.replace(EntryAt(0, 108), 8, 8, '\0');  // times: when the root was changed
  bytes.replace(EntryAt(2, 100), 16, 16, '\0');
  EXPECT_EQ(bytes, WholeFile());
}

// Other programs search the siblings by this order.
TEST_F(LinuxCompoundBytes, SiblingsAreOrderedByLengthThenByLetter) {
  {
    const Storage root = Create();
    for (const TCHAR* name : {_T("b"), _T("A"), _T("aa"), _T("c")}) Put(root, name, "");
  }
  const std::string bytes = ReadFile(folder_.Path() / "a.bin");
  DWORD sector = 0;
  std::memcpy(&sector, &bytes[48], 4);
  std::string names;
  for (std::size_t entry = 1; entry <= 4; ++entry) names += bytes.substr((sector + 1) * 512 + entry * 128, 4) + ' ';
  EXPECT_EQ(names, std::string("A\0\0\0 b\0\0\0 c\0\0\0 a\0a\0 ", 20));
}

TEST_F(LinuxCompoundBytes, WrongTablesAreFoundBeforeTheyHurt) {
  const std::tuple<const char*, std::size_t, DWORD, const char*> kCases[] = {
      {"signature", 0, 0, "no compound file"},
      {"sector size", 30, 0x0006001F, "corrupt"},
      {"byte order", 28, 0x0009FEFF, "corrupt"},
      {"large limit", 56, 0xFFFFFFFF, "corrupt"},
      {"no FAT", 44, 0, "corrupt"},
      {"directory in a circle", FatAt(10), 10, "corrupt"},
      {"directory is a FAT", 48, 11, "corrupt"},
      {"a billion FAT sectors", 44, 0x40000000, "opens, whole, whole"},
      {"mini FAT beyond the file", 60, 4000, "corrupt"},
      {"sibling is itself", EntryAt(1, 68), 1, "corrupt"},
      {"sibling is the parent", EntryAt(1, 72), 2, "corrupt"},
      {"child is the root", EntryAt(2, 76), 0, "corrupt"},
      {"child beyond the directory", EntryAt(2, 76), 4, "corrupt"},
      {"an element of no type", EntryAt(1, 66), 0x100, "corrupt"},
      {"no name", EntryAt(1, 64), 0x00020002, "corrupt"},
      {"a name beyond its place", EntryAt(1, 64), 0x00020042, "corrupt"},
      {"a stream larger than the file", EntryAt(1, 120), 0x7FFFFFFF, "corrupt"},
      {"a stream behind the sectors", EntryAt(1, 116), 4000, "opens, corrupt, whole"},
      {"a chain that ends early", FatAt(3), kEnd, "opens, corrupt, whole"},
      {"a chain in a circle, which the size ends", FatAt(3), 3, "opens, whole, whole"},
      {"a small stream behind its table", EntryAt(3, 116), 4000, "opens, whole, corrupt"},
      {"no room for small streams", EntryAt(0, 120), 0, "corrupt"},
  };
  for (const auto& [what, at, value, result] : kCases) {
    std::string file = WholeFile();
    Put32(file, at, value);
    EXPECT_EQ(WhatOf(file), result) << what;
  }
  std::string twice = WholeFile();
  PutEntry(twice, 1, _T("INNER"), 2, 0, kNone, kNone, 0, 4096);
  EXPECT_EQ(WhatOf(twice), "corrupt") << "two elements of one name";
  std::string shared = WholeFile();
  PutEntry(shared, 3, _T("small"), 2, 1, kNone, kNone, 0, 4096);
  EXPECT_EQ(WhatOf(shared), "corrupt") << "two streams on the same sectors, larger than the file together";
}

TEST_F(LinuxCompoundBytes, EveryTruncatedPrefixIsDamage) {
  const std::string whole = WholeFile();
  for (std::size_t bytes = 0; bytes < whole.size(); bytes += 100)
    EXPECT_EQ(WhatOf(whole.substr(0, bytes)), bytes < 512 ? "no compound file" : "corrupt") << bytes;
}

// A chain of storages within one another: as deep as is taken, and one deeper.
TEST_F(LinuxCompoundBytes, DepthIsBounded) {
  for (const int depth : {256, 257}) {
    const int entries = (depth / 4 + 1) * 4;
    std::string file = WholeFile();
    file.resize(13 * 512);
    file.resize(13 * 512 + std::size_t(entries) * 128);
    std::string directory(std::size_t(entries) * 128, '\0');
    directory.replace(0, 128, file, kDirectory, 128);
    Put32(directory, 76, 1);
    for (int i = 1; i <= depth; ++i) {
      std::string entry = file.substr(EntryAt(2, 0), 128);
      Put32(entry, 68, kNone);
      Put32(entry, 76, i == depth ? kNone : DWORD(i + 1));
      directory.replace(std::size_t(i) * 128, 128, entry);
    }
    file.replace(13 * 512, directory.size(), directory);
    const int sectors = entries / 4;
    for (int i = 0; i < sectors; ++i) Put32(file, FatAt(12 + i), i + 1 == sectors ? kEnd : DWORD(13 + i));
    Put32(file, 48, 12);
    folder_.Write("a.bin", file);
    Open();
    EXPECT_EQ(result_, depth == 256 ? S_OK : STG_E_DOCFILECORRUPT) << depth;
  }
}

// Gaps and extensions are zeros.
TEST_F(LinuxCompoundBytes, RandomChangesWithGapsMatchATextsOwn) { ChangeAtRandom(/*with_gaps=*/true); }

TEST_F(LinuxCompoundBytes, RootsForReadingRefuseChanges) {
  Put(Create(), _T("s"), "12");
  const Storage root = Open();
  EXPECT_EQ(ResultOf(OpenStream(root, _T("s"), kWrite)), STG_E_ACCESSDENIED);
  EXPECT_EQ(root->Commit(0), STG_E_ACCESSDENIED);
}

}  // namespace
}  // namespace kvtest
