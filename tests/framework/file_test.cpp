// CFile on disk, in memory and on a stream of a compound file: the same calls give the same results.
#include "framework/file.h"

#include <cstdlib>

#include "framework/stream_file.h"
#include "tests/framework/archive_fixture.h"
#include "tests/scratch.h"

namespace {

CString PathOf(const kvtest::ScratchFolder& folder, const char* name) {
  return FromUtf8((folder.Path() / name).string());
}

int CauseOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const CFileException& failure) {
    return failure.m_cause;
  }
  return CFileException::none;
}

void ExpectReadsWritesAndSeeks(CFile& file) {
  file.Write("hello world", 11);
  EXPECT_EQ(std::pair(file.GetLength(), file.GetPosition()), std::pair(ULONGLONG(11), ULONGLONG(11)));
  EXPECT_EQ(file.Seek(6, CFile::begin), 6u);
  char text[16] = {};
  EXPECT_EQ(file.Read(text, 16), 5u);
  EXPECT_STREQ(text, "world");
  EXPECT_EQ(file.Read(text, 16), 0u);
  EXPECT_EQ(file.Seek(-5, CFile::end), 6u);
  EXPECT_EQ(file.Seek(-1, CFile::current), 5u);
  EXPECT_EQ(CauseOf([&] { file.Seek(-1, CFile::begin); }), CFileException::badSeek);
  EXPECT_EQ(file.GetPosition(), 5u);
  file.Seek(13, CFile::begin);
  file.Write("!", 1);
  file.Seek(10, CFile::begin);
  EXPECT_EQ(file.Read(text, 16), 4u);
  EXPECT_EQ(std::string(text, 4), std::string("d\0\0!", 4)) << "the gap is zeros";
  file.SetLength(3);
  EXPECT_EQ(std::pair(file.GetLength(), file.GetPosition()), std::pair(ULONGLONG(3), ULONGLONG(3)));
  file.SeekToBegin();
  EXPECT_EQ(file.Read(text, 16), 3u);
}

TEST(DiskFile, ReadsWritesAndSeeks) {
  const kvtest::ScratchFolder folder;
  const CString path = PathOf(folder, "a.bin");
  CFile file(path, CFile::modeReadWrite | CFile::modeCreate);
  EXPECT_EQ(file.GetFilePath(), path);
  ExpectReadsWritesAndSeeks(file);
  file.Close();
  file.Close();
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "a.bin"), "hel");
}

TEST(StreamFile, ReadsWritesAndSeeks) {
  const kvtest::ScratchFolder folder;
  IStorage* root = nullptr;
  IStream* stream = nullptr;
  constexpr DWORD kMode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
  ASSERT_EQ(StgCreateDocfile(PathOf(folder, "a.bin"), kMode, 0, &root), S_OK);
  ASSERT_EQ(root->CreateStream(_T("s"), kMode, 0, 0, &stream), S_OK);
  COleStreamFile file(stream);
  ExpectReadsWritesAndSeeks(file);
  file.Flush();
  EXPECT_EQ(file.Detach(), stream);
  char byte = 0;
  EXPECT_EQ(CauseOf([&] { file.Read(&byte, 1); }), CFileException::invalidFile);
  file.Attach(stream);
  EXPECT_EQ(CauseOf([&] { file.SetLength(ULONGLONG(1) << 31); }), CFileException::diskFull);
  root->Release();
  EXPECT_EQ(CauseOf([&] { file.Write(&byte, 1); }), CFileException::genericException) << "the root is gone";
}

TEST(DiskFile, CreatesTruncatesOrKeepsAsTold) {
  const kvtest::ScratchFolder folder;
  const auto path = folder.Write("a.bin", "old");
  const CString name = PathOf(folder, "a.bin");
  CFile(name, CFile::modeWrite | CFile::modeCreate | CFile::modeNoTruncate).Write("x", 1);
  EXPECT_EQ(kvtest::ReadFile(path), "xld");
  CFile(name, CFile::modeWrite | CFile::modeCreate).Write("y", 1);
  EXPECT_EQ(kvtest::ReadFile(path), "y");
}

TEST(DiskFile, TellsWhyItDoesNotOpen) {
  const kvtest::ScratchFolder folder;
  CFile file;
  CFileException failure;
  EXPECT_FALSE(file.Open(PathOf(folder, "none.bin"), CFile::modeRead, &failure));
  EXPECT_EQ(failure.m_cause, CFileException::fileNotFound);
  EXPECT_EQ(failure.m_lOsError, ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(file.Open(PathOf(folder, "no/none.bin"), CFile::modeRead, &failure));
  EXPECT_EQ(failure.m_cause, CFileException::badPath);
  EXPECT_EQ(CauseOf([&] { CFile(PathOf(folder, "none.bin"), CFile::modeRead); }), CFileException::fileNotFound);
  char byte = 0;
  EXPECT_EQ(CauseOf([&] { file.Read(&byte, 1); }), CFileException::invalidFile);
}

TEST(MemFile, ReadsWritesAndSeeksAndDetachGivesTheContentAway) {
  CMemFile file(1);
  ExpectReadsWritesAndSeeks(file);
  const std::unique_ptr<BYTE, void (*)(void*)> block(file.Detach(), std::free);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(block.get()), 3), "hel");
  EXPECT_EQ(file.GetLength(), 0u);
}

// An archive leaves the file at its own position, so that the caller can continue there.
TEST(DiskFile, ArchiveLeavesTheFileAtItsOwnPosition) {
  const kvtest::ScratchFolder folder;
  CFile file(PathOf(folder, "a.kv"), CFile::modeReadWrite | CFile::modeCreate);
  {
    CArchive ar(&file, CArchive::store);
    ar << DWORD(7);
  }
  file.Write("tail", 4);
  file.SeekToBegin();
  CArchive ar(&file, CArchive::load);
  EXPECT_EQ(ar.m_strFileName, file.GetFilePath());
  DWORD number = 0;
  ar >> number;
  ar.Close();
  EXPECT_EQ(number, 7u);
  char tail[4];
  EXPECT_EQ(file.Read(tail, 4), 4u);
  EXPECT_EQ(std::string(tail, 4), "tail");
}

}  // namespace
