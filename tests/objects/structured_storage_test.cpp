// Nested storages, and the adapter for raw bytes in an archive.
#include "share/objects/structured_storage.h"

#include <gtest/gtest.h>

#include "framework/stream_file.h"
#include "framework/text.h"
#include "share/objects/archive_store.h"
#include "tests/scratch.h"

namespace {

constexpr unsigned long kWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr unsigned long kCreate = kWrite | STGM_CREATE;
constexpr unsigned long kRead = STGM_READ | STGM_SHARE_EXCLUSIVE;

class StructuredStorages : public testing::Test {
 protected:
  std::u16string PathOf(const char* name) const { return (folder_.Path() / name).u16string(); }
  // Creates a new file.
  void SetUp() override { ASSERT_TRUE(storage_.CreateFileW(PathOf("a.bin").c_str(), kCreate)); }

  const kvtest::ScratchFolder folder_;
  StructuredStorage storage_;
};

TEST_F(StructuredStorages, EntersAndLeavesStorages) {
  EXPECT_EQ(storage_.GetFullPath(), PathOf("a.bin"));
  EXPECT_TRUE(storage_.CreateStorage(_T("a"), /*enter=*/false, kWrite));
  EXPECT_EQ(storage_.GetCurrentStorage(), storage_.GetRootStorage()) << "not entered";
  EXPECT_TRUE(storage_.OpenStorage(_T("A"), kWrite));
  EXPECT_TRUE(storage_.CreateStorage(_T("b"), /*enter=*/true, kWrite));
  EXPECT_EQ(storage_.GetCurrentPath(), PathOf("a.bin") + u"|a|b|");
  EXPECT_EQ(storage_.GetCurrentStorage(), storage_.GetStorage(2));
  EXPECT_EQ(storage_.GetStorage(3), nullptr);
  EXPECT_TRUE(storage_.CloseStorage());
  EXPECT_TRUE(storage_.CloseStorage());
  EXPECT_FALSE(storage_.CloseStorage()) << "the root stays open";
  EXPECT_NE(storage_.GetRootStorage(), nullptr);
  EXPECT_EQ(storage_.GetCurrentPath(), PathOf("a.bin") + u"|");
}

TEST_F(StructuredStorages, NothingOpenIsAnInvalidPointer) {
  storage_.CloseAll();
  EXPECT_EQ(storage_.GetCurrentPath() + storage_.GetFullPath(), u"");
  EXPECT_EQ(storage_.GetCurrentStorage(), nullptr);
  EXPECT_FALSE(storage_.CloseStorage());
  IStream* stream = nullptr;
  const auto refused = [&](bool done) {
    const bool right = !done && storage_.GetLastResult() == HRESULT(0x80004003) && !stream;
    storage_.CloseAll();  // sets the last result to 0
    stream = reinterpret_cast<IStream*>(&storage_);
    return right && storage_.GetLastResult() == 0;
  };
  EXPECT_TRUE(refused(storage_.CreateStorage(_T("s"), true, kWrite)));
  EXPECT_TRUE(refused(storage_.CreateStream(&stream, _T("s"), kWrite)));
  EXPECT_TRUE(refused(storage_.OpenStream(&stream, _T("s"), kRead)));
  stream = nullptr;
  EXPECT_TRUE(refused(storage_.OpenStorage(_T("s"), kWrite)));
  stream = nullptr;
  EXPECT_TRUE(refused(storage_.Destroy(_T("s"))));
}

TEST_F(StructuredStorages, FailuresLeaveTheirResult) {
  EXPECT_FALSE(storage_.OpenStorage(_T("none"), kRead));
  EXPECT_EQ(storage_.GetLastResult(), STG_E_FILENOTFOUND);
  EXPECT_FALSE(storage_.Destroy(_T("none")));
  IStream* stream = reinterpret_cast<IStream*>(&storage_);
  EXPECT_FALSE(storage_.CreateStream(&stream, _T("a/b"), kWrite));
  EXPECT_EQ(storage_.GetLastResult(), STG_E_INVALIDNAME);
  EXPECT_EQ(stream, nullptr);
  EXPECT_TRUE(storage_.CreateStorage(_T("a"), false, kWrite));
  EXPECT_EQ(storage_.GetLastResult(), 0);
  EXPECT_FALSE(storage_.OpenFile(PathOf("none.bin").c_str(), kRead)) << "closes what was open all the same";
  EXPECT_EQ(storage_.GetLastResult(), STG_E_FILENOTFOUND);
  EXPECT_EQ(storage_.GetRootStorage(), nullptr);
  EXPECT_TRUE(storage_.OpenFile(PathOf("a.bin").c_str(), kRead));
  EXPECT_TRUE(storage_.OpenStorage(_T("a"), kRead)) << "the direct file was written when it was closed";
}

TEST_F(StructuredStorages, RootsGoInAndOut) {
  IStorage* const root = storage_.Detach();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(storage_.GetRootStorage(), nullptr);
  EXPECT_EQ(storage_.Detach(), nullptr);
  storage_.Attach(root);
  EXPECT_EQ(storage_.GetRootStorage(), root);
  EXPECT_EQ(storage_.GetFullPath(), u"");
  EXPECT_EQ(storage_.GetCurrentPath(), PathOf("a.bin") + u"|");
  EXPECT_EQ(root->Release(), 1u) << "the walk has a reference of its own";
}

TEST_F(StructuredStorages, ArchivesGoThroughStreams) {
  const std::string bytes(100, 'b');
  IStream* stream = nullptr;
  ASSERT_TRUE(storage_.CreateStream(&stream, _T("Objects"), kWrite));
  {
    COleStreamFile file(stream);
    CArchive ar(&file, CArchive::store);
    ar << CString(_T("label")) << DWORD(7);
    CAFRArchiveStore store(&ar);
    CAFRArchiveStore copy(nullptr);
    copy = store;
    EXPECT_EQ(copy.write(bytes.data(), 8, 100), 100u) << "the unit isn't used";
    copy.write(static_cast<MOD_BODY*>(nullptr));
    ar.Close();
    EXPECT_EQ(file.GetLength(), 3u + 1 + 10 + 4 + 100);
  }
  ASSERT_TRUE(storage_.OpenStream(&stream, _T("OBJECTS"), kRead));
  COleStreamFile file(stream);
  CArchive ar(&file, CArchive::load);
  CString label;
  DWORD number = 0;
  ar >> label >> number;
  EXPECT_EQ(label, CString(_T("label")));
  EXPECT_EQ(number, 7u);
  CAFRArchiveStore store(&ar);
  char read[200] = {};
  EXPECT_EQ(store.read(read, 1, 200), 100u) << "only what came";
  EXPECT_EQ(std::string(read), bytes);
  EXPECT_THROW(ar >> number, CArchiveException);
}

}  // namespace
