// The bytes of a compound file, laid out here by hand, what becomes of files whose tables lie, and of streams that are
// changed at random.
#include <cstring>
#include <random>

#include "tests/platform/storage_support.h"

namespace kvtest {
namespace {

constexpr DWORD kEnd = 0xFFFFFFFE, kFree = 0xFFFFFFFF, kNone = 0xFFFFFFFF;
constexpr std::size_t kDirectory = 11 * 512, kFat = 12 * 512, kMiniFat = 10 * 512;

std::size_t EntryAt(int entry, int field) { return kDirectory + std::size_t(entry) * 128 + std::size_t(field); }
std::size_t FatAt(int sector) { return kFat + std::size_t(sector) * 4; }

void Put16(std::string& file, std::size_t at, WORD value) { std::memcpy(&file[at], &value, 2); }
void Put32(std::string& file, std::size_t at, DWORD value) { std::memcpy(&file[at], &value, 4); }

void PutEntry(std::string& file, int entry, const Text& name, char type, char colour, DWORD left, DWORD child,
              DWORD start, DWORD size) {
  for (std::size_t i = 0; i < name.size(); ++i) Put16(file, EntryAt(entry, int(2 * i)), name[i]);
  Put16(file, EntryAt(entry, 64), WORD(2 * name.size() + 2));
  file[EntryAt(entry, 66)] = type;
  file[EntryAt(entry, 67)] = colour;
  Put32(file, EntryAt(entry, 68), left);
  Put32(file, EntryAt(entry, 72), kNone);
  Put32(file, EntryAt(entry, 76), child);
  Put32(file, EntryAt(entry, 116), start);
  Put32(file, EntryAt(entry, 120), size);
}

// Sectors: 0 to 7 the stream "Big", 8 the small streams, 9 the mini FAT, 10 the directory, 11 the FAT. The storage
// "Inner" holds "small" with "hello".
std::string WholeFile() {
  std::string file(13 * 512, '\0');
  std::memcpy(file.data(), "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
  Put16(file, 24, 0x3E);
  Put16(file, 26, 3);
  Put16(file, 28, 0xFFFE);
  Put16(file, 30, 9);
  Put16(file, 32, 6);
  Put32(file, 44, 1);  // FAT sectors
  Put32(file, 48, 10);
  Put32(file, 56, 4096);
  Put32(file, 60, 9);
  Put32(file, 64, 1);
  Put32(file, 68, kEnd);
  for (std::size_t i = 0; i < 109; ++i) Put32(file, 76 + 4 * i, i == 0 ? 11 : kFree);
  file.replace(512, 4096, 4096, 'B');
  file.replace(9 * 512, 5, "hello");
  for (std::size_t i = 0; i < 128; ++i) Put32(file, kMiniFat + 4 * i, i == 0 ? kEnd : kFree);
  PutEntry(file, 0, _T("Root Entry"), 5, 1, kNone, 2, 8, 64);
  PutEntry(file, 1, _T("Big"), 2, 0, kNone, kNone, 0, 4096);  // shorter, so it stands left; the lowest level is red
  PutEntry(file, 2, _T("Inner"), 1, 1, 1, 3, 0, 0);
  PutEntry(file, 3, _T("small"), 2, 1, kNone, kNone, 0, 5);
  for (int i = 0; i < 7; ++i) Put32(file, FatAt(i), DWORD(i + 1));
  for (int i = 7; i < 11; ++i) Put32(file, FatAt(i), kEnd);
  Put32(file, FatAt(11), 0xFFFFFFFD);
  for (int i = 12; i < 128; ++i) Put32(file, FatAt(i), kFree);
  return file;
}

// The same with sectors of 4,096 bytes and 64-bit sizes: 0 FAT, 1 directory, 2 mini FAT, 3 small streams, 4 "Big".
std::string WholeFileOfVersion4() {
  const std::string old = WholeFile();
  std::string file(6 * 4096, '\0');
  file.replace(0, 512, old, 0, 512);
  Put16(file, 26, 4);
  Put16(file, 30, 12);
  Put32(file, 40, 1);  // directory sectors
  Put32(file, 48, 1);
  Put32(file, 60, 2);
  Put32(file, 76, 0);
  for (std::size_t i = 0; i < 1024; ++i) Put32(file, 4096 + 4 * i, i == 0 ? 0xFFFFFFFD : i < 5 ? kEnd : kFree);
  file.replace(2 * 4096, 512, old, kDirectory, 512);
  Put32(file, 2 * 4096 + 116, 3);
  Put32(file, 2 * 4096 + 128 + 116, 4);
  file.replace(3 * 4096, 512, old, kMiniFat, 512);
  file.replace(4 * 4096, 64, old, 9 * 512, 64);
  file.replace(5 * 4096, 4096, 4096, 'B');
  return file;
}

class CompoundBytes : public CompoundFiles {
 protected:
  // "opens, BIG-RESULT SMALL-RESULT" or the reason why it doesn't open.
  std::string WhatOf(const std::string& bytes) {
    folder_.Write("a.bin", bytes);
    const Storage root = Open();
    if (!root) return Name(result_);
    std::string what = "opens";
    const Stream big = OpenStream(root, _T("Big"));
    what += big && ContentOf(big) == std::string(4096, 'B') ? ", whole" : ", " + Name(result_);
    const Storage inner = OpenStorage(root, _T("Inner"));
    if (!inner) return what + ", " + Name(result_);
    const Stream small = OpenStream(inner, _T("small"));
    return what + (small && ContentOf(small) == "hello" ? ", whole" : ", " + Name(result_));
  }
  static std::string Name(HRESULT result) {
    return result == STG_E_DOCFILECORRUPT      ? "corrupt"
           : result == STG_E_FILENOTFOUND      ? "not found"
           : result == STG_E_FILEALREADYEXISTS ? "no compound file"
                                               : std::to_string(result);
  }
};

TEST_F(CompoundBytes, AreReadInBothVersions) {
  EXPECT_EQ(WhatOf(WholeFile()), "opens, whole, whole");
  EXPECT_EQ(WhatOf(WholeFileOfVersion4()), "opens, whole, whole");
}

TEST_F(CompoundBytes, AreWrittenExactly) {
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
TEST_F(CompoundBytes, SiblingsAreOrderedByLengthThenByLetter) {
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

TEST_F(CompoundBytes, WrongTablesAreFoundBeforeTheyHurt) {
  const struct {
    const char* what;
    std::size_t at;
    DWORD value;
    const char* result;
  } kCases[] = {
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
  for (const auto& c : kCases) {
    std::string file = WholeFile();
    Put32(file, c.at, c.value);
    EXPECT_EQ(WhatOf(file), c.result) << c.what;
  }
  std::string twice = WholeFile();
  PutEntry(twice, 1, _T("INNER"), 2, 0, kNone, kNone, 0, 4096);
  EXPECT_EQ(WhatOf(twice), "corrupt") << "two elements of one name";
  std::string shared = WholeFile();
  PutEntry(shared, 3, _T("small"), 2, 1, kNone, kNone, 0, 4096);
  EXPECT_EQ(WhatOf(shared), "corrupt") << "two streams on the same sectors, larger than the file together";
}

TEST_F(CompoundBytes, EveryTruncatedPrefixIsRefused) {
  const std::string whole = WholeFile();
  for (std::size_t bytes = 0; bytes < whole.size(); bytes += 100) {
    EXPECT_EQ(WhatOf(whole.substr(0, bytes)), bytes < 512 ? "no compound file" : "corrupt") << bytes;
  }
}

// A chain of storages within one another: as deep as is taken, and one deeper.
TEST_F(CompoundBytes, DepthIsBounded) {
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

// Cuts, extensions and writes anywhere, in a stream that is partly the file's, against the same on a plain text.
TEST_F(CompoundFiles, RandomChangesOfAStreamMatchATextsOwn) {
  std::mt19937 random(kvtest::PrintedSeed());
  std::string model;
  for (int round = 0; round < 12; ++round) {
    const Storage root = round == 0 ? Create() : Open("a.bin", kWrite);
    const Stream stream = round == 0 ? CreateStream(root, _T("s")) : OpenStream(root, _T("s"), kWrite);
    ASSERT_EQ(ContentOf(stream), model) << "round " << round;
    for (int i = 0; i < 20; ++i) {
      const std::size_t at = random() % (random() % 4 == 0 ? 5000 : 500000);
      if (random() % 3 == 0) {
        ASSERT_EQ(stream->SetSize(Size(at)), S_OK);
        model.resize(at);
        continue;
      }
      const std::string bytes(random() % (random() % 2 ? 300 : 200000), char('a' + random() % 26));
      ASSERT_EQ(stream->Seek(Distance(LONGLONG(at)), STREAM_SEEK_SET, nullptr), S_OK);
      ASSERT_EQ(stream->Write(bytes.data(), ULONG(bytes.size()), nullptr), S_OK);
      if (!bytes.empty() && model.size() < at + bytes.size()) model.resize(at + bytes.size());
      model.replace(std::min(at, model.size()), bytes.size(), bytes);
    }
    ASSERT_EQ(ContentOf(stream), model) << "round " << round;
  }
}

}  // namespace
}  // namespace kvtest
