// The bytes of a compound file, laid out here by hand, and what a reader makes of changed ones.
#pragma once

#include <cstring>
#include <random>

#include "tests/platform/storage_support.h"

namespace kvtest {

inline constexpr DWORD kEnd = 0xFFFFFFFE, kFree = 0xFFFFFFFF, kNone = 0xFFFFFFFF;
inline constexpr std::size_t kDirectory = 11 * 512, kFat = 12 * 512, kMiniFat = 10 * 512;

inline std::size_t EntryAt(int entry, int field) { return kDirectory + std::size_t(entry) * 128 + std::size_t(field); }
inline std::size_t FatAt(int sector) { return kFat + std::size_t(sector) * 4; }

inline void Put16(std::string& file, std::size_t at, WORD value) { std::memcpy(&file[at], &value, 2); }
inline void Put32(std::string& file, std::size_t at, DWORD value) { std::memcpy(&file[at], &value, 4); }
inline void Put32(std::string& file, std::size_t start, std::initializer_list<std::pair<std::size_t, DWORD>> numbers) {
  for (const auto& [at, value] : numbers) Put32(file, start + at, value);
}

inline void PutEntry(std::string& file, int entry, const Text& name, char type, char colour, DWORD left, DWORD child,
                     DWORD start, DWORD size) {
  for (std::size_t i = 0; i < name.size(); ++i) Put16(file, EntryAt(entry, int(2 * i)), name[i]);
  Put16(file, EntryAt(entry, 64), WORD(2 * name.size() + 2));
  file[EntryAt(entry, 66)] = type;
  file[EntryAt(entry, 67)] = colour;
  Put32(file, EntryAt(entry, 0), {{68, left}, {72, kNone}, {76, child}, {116, start}, {120, size}});
}

// Sectors: 0 to 7 the stream "Big", 8 the small streams, 9 the mini FAT, 10 the directory, 11 the FAT. The storage
// "Inner" holds "small" with "hello".
inline std::string WholeFile() {
  std::string file(13 * 512, '\0');
  std::memcpy(file.data(), "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
  for (const auto& [at, value] : {std::pair{24, 0x3E}, {26, 3}, {28, 0xFFFE}, {30, 9}, {32, 6}})
    Put16(file, std::size_t(at), WORD(value));
  Put32(file, 0, {{44, 1 /* FAT sector */}, {48, 10}, {56, 4096}, {60, 9}, {64, 1}, {68, kEnd}});
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
inline std::string WholeFileOfVersion4() {
  const std::string old = WholeFile();
  std::string file(6 * 4096, '\0');
  file.replace(0, 512, old, 0, 512);
  Put16(file, 26, 4);
  Put16(file, 30, 12);
  Put32(file, 0, {{40, 1 /* directory sector */}, {48, 1}, {60, 2}, {76, 0}});
  for (std::size_t i = 0; i < 1024; ++i) Put32(file, 4096 + 4 * i, i == 0 ? 0xFFFFFFFD : i < 5 ? kEnd : kFree);
  file.replace(2 * 4096, 512, old, kDirectory, 512);
  Put32(file, 2 * 4096 + 116, {{0, 3}, {128, 4}});
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
           : result == STG_E_FILEALREADYEXISTS ? "no compound file"
                                               : std::to_string(result);
  }

  // Cuts and writes anywhere, in a stream that is partly the file's, against the same on a plain text.
  void ChangeAtRandom(bool with_gaps) {
    std::mt19937 random(kvtest::PrintedSeed());
    std::string model;
    for (int round = 0; round < 12; ++round) {
      const Storage root = round == 0 ? Create() : Open("a.bin", kWrite);
      const Stream stream = round == 0 ? CreateStream(root, _T("s")) : OpenStream(root, _T("s"), kWrite);
      ASSERT_EQ(ContentOf(stream), model) << "round " << round;
      for (int i = 0; i < 20; ++i) {
        const std::size_t anywhere = random() % (random() % 4 == 0 ? 5000 : 500000);
        const std::size_t at = with_gaps ? anywhere : std::min(anywhere, model.size());
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
};

}  // namespace kvtest
