// Nested storages and the adapter for raw bytes in an archive; the status word, the notification after a load, and the
// tolerance guard.
#include <functional>

#include "framework/stream_file.h"
#include "framework/text.h"
#include "share/objects/archive_store.h"
#include "share/objects/serialize_notify.h"
#include "share/objects/storage_status.h"
#include "share/objects/structured_storage.h"
#include "share/objects/tolerance_guard.h"
#include "tests/platform/storage_support.h"

namespace {

using kvtest::kRead, kvtest::kWrite;

class StructuredStorages : public kvtest::CompoundFiles {
 protected:
  // Creates a new file.
  void SetUp() override { ASSERT_TRUE(storage_.CreateFileW(PathOf("a.bin").c_str(), kvtest::kReplace)); }

  StructuredStorage storage_;
};

std::string g_told;

class Listener : public QFBaseObject {
 public:
  explicit Listener(char name) : name_(name) {}
  void OnPostLoadFromStorageNotify() override {
    g_told += name_;
    if (then) then();
  }
  std::function<void()> then;

 private:
  char name_;
};

class Notify : public testing::Test {
 protected:
  void SetUp() override { g_told.clear(); }
  void TearDown() override { QFSerializeNotify::Clear(); }
  Listener a{'a'}, b{'b'}, c{'c'};
};

std::string Told() {
  g_told.clear();
  QFSerializeNotify::PostLoadFromStorageNotify();
  return g_told;
}

}  // namespace

TEST_F(StructuredStorages, EntersAndLeavesStorages) {
  EXPECT_EQ(storage_.GetFullPath(), PathOf("a.bin"));
  EXPECT_TRUE(storage_.CreateStorage(_T("a"), /*enter=*/false, kWrite));
  EXPECT_EQ(storage_.GetCurrentStorage(), storage_.GetRootStorage()) << "not entered";
  EXPECT_TRUE(storage_.OpenStorage(_T("A"), kWrite));
  EXPECT_TRUE(storage_.CreateStorage(_T("b"), /*enter=*/true, kWrite));
  EXPECT_EQ(storage_.GetCurrentPath(), PathOf("a.bin") + _T("|a|b|"));
  EXPECT_EQ(storage_.GetCurrentStorage(), storage_.GetStorage(2));
  EXPECT_EQ(storage_.GetStorage(3), nullptr);
  EXPECT_TRUE(storage_.CloseStorage() && storage_.CloseStorage());
  EXPECT_FALSE(storage_.CloseStorage()) << "the root stays open";
  EXPECT_NE(storage_.GetRootStorage(), nullptr);
  EXPECT_EQ(storage_.GetCurrentPath(), PathOf("a.bin") + _T("|"));
}

TEST_F(StructuredStorages, NothingOpenIsAnInvalidPointer) {
  storage_.CloseAll();
  EXPECT_EQ(storage_.GetCurrentPath() + storage_.GetFullPath(), _T(""));
  EXPECT_EQ(storage_.GetCurrentStorage(), nullptr);
  EXPECT_FALSE(storage_.CloseStorage());
  IStream* stream = nullptr;
  const auto expectRefused = [&](bool done) {
    EXPECT_FALSE(done);
    EXPECT_EQ(storage_.GetLastResult(), HRESULT(0x80004003));
    EXPECT_EQ(stream, nullptr);
    storage_.CloseAll();
    EXPECT_EQ(storage_.GetLastResult(), 0);
  };
  expectRefused(storage_.CreateStorage(_T("s"), true, kWrite));
  expectRefused(storage_.OpenStorage(_T("s"), kWrite));
  expectRefused(storage_.Destroy(_T("s")));
  stream = reinterpret_cast<IStream*>(&storage_);
  expectRefused(storage_.CreateStream(&stream, _T("s"), kWrite));
  stream = reinterpret_cast<IStream*>(&storage_);
  expectRefused(storage_.OpenStream(&stream, _T("s"), kRead));
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
  EXPECT_EQ(storage_.GetFullPath(), _T(""));
  EXPECT_EQ(storage_.GetCurrentPath(), PathOf("a.bin") + _T("|"));
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

TEST(StorageStatus, CollectsBitsAndNamesTheLowestLocation) {
  const std::tuple<int, std::vector<unsigned>, unsigned, int, unsigned> rows[] = {
      {0, {}, 0, 0, 0},
      {1, {}, 2, 0, 0},
      {0, {0x1040}, 0x1041, 1, 0x40},
      {1, {0x4000, 0x20}, 0x4023, 1, 0x20},
      {0, {0x8000}, 0x8001, 1, 0},
      {0, {0x1F}, 0x1F, 1, 0},
      {0, {0}, 1, 1, 0},
  };
  for (const auto& [flag, codes, status, error, location] : rows) {
    InitialiseSerializationStatus(flag);
    for (const unsigned code : codes) LogSerializationError(code);
    EXPECT_EQ(GetSerializationStatus(), status);
    EXPECT_EQ(IsErrorDetected(), error) << status;
    EXPECT_EQ(GetErrorLocation(), location) << status;
  }
}

TEST(StorageStatus, MissingOwnerIsLogged) {
  QFObject* const someOwner = reinterpret_cast<QFObject*>(std::uintptr_t(8));
  InitialiseSerializationStatus(0);
  EXPECT_EQ(AnalyseOwner(someOwner, 0x40), 1);
  EXPECT_EQ(GetSerializationStatus(), 0u);
  EXPECT_EQ(AnalyseOwner(nullptr, 0x40), 1);
  EXPECT_EQ(GetSerializationStatus(), 0x9041u);
  InitialiseSerializationStatus(0);
}

TEST_F(Notify, TellsInOrderOfRegistrationAndKeepsTheList) {
  EXPECT_EQ(Told(), "") << "no list yet";
  EXPECT_EQ(QFSerializeNotify::RegisterForNotification(nullptr), 0);
  for (Listener* each : {&b, &a, &b, &c}) EXPECT_EQ(QFSerializeNotify::RegisterForNotification(each), 1);
  EXPECT_EQ(Told(), "babc");
  EXPECT_EQ(QFSerializeNotify::RemoveFromNotification(&b), 1);
  EXPECT_EQ(Told(), "bac") << "the later registration goes";
  EXPECT_EQ(QFSerializeNotify::RemoveFromNotification(nullptr), 0);
  Listener stranger('x');
  EXPECT_EQ(QFSerializeNotify::RemoveFromNotification(&stranger), 1);
  EXPECT_EQ(Told(), "bac");
  QFSerializeNotify::Clear();
  EXPECT_EQ(Told(), "");
}

TEST_F(Notify, ListMayChangeWhileItIsTold) {
  for (Listener* each : {&a, &b, &c}) QFSerializeNotify::RegisterForNotification(each);
  a.then = [&] {
    QFSerializeNotify::RemoveFromNotification(&a);
    QFSerializeNotify::RemoveFromNotification(&b);
  };
  EXPECT_EQ(Told(), "ac");
  a.then = nullptr;
  c.then = [] { QFSerializeNotify::Clear(); };
  QFSerializeNotify::RegisterForNotification(&a);
  EXPECT_EQ(Told(), "c");
  EXPECT_EQ(Told(), "");
}

TEST(ToleranceGuard, RestoresUnlessToldOtherwise) {
  const double old = RESNOR;
  {
    const QFCorrectionForRESNOR outer(1e-3);
    EXPECT_EQ(RESNOR, 1e-3);
    { const QFCorrectionForRESNOR lasting(5.0, /*restore=*/0); }
    { const QFCorrectionForRESNOR inner(1e-2, /*restore=*/1); }
    EXPECT_EQ(RESNOR, 5.0);
    { const QFCorrectionForRESNOR copy(outer); }
    EXPECT_EQ(RESNOR, old) << "a copy restores what its source would";
    RESNOR = 1;
  }
  EXPECT_EQ(RESNOR, old);
}
