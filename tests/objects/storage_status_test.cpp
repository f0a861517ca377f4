// The status word, the notification after a load, and the tolerance guard.
#include <gtest/gtest.h>

#include <functional>

#include "share/objects/serialize_notify.h"
#include "share/objects/storage_status.h"
#include "share/objects/tolerance_guard.h"

namespace {

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

TEST(StorageStatus, CollectsBitsAndNamesTheLowestLocation) {
  const struct {
    int flag;
    std::vector<unsigned> codes;
    unsigned status;
    int error;
    unsigned location;
  } rows[] = {
      {0, {}, 0, 0, 0},
      {1, {}, 2, 0, 0},
      {0, {0x1040}, 0x1041, 1, 0x40},
      {1, {0x4000, 0x20}, 0x4023, 1, 0x20},
      {0, {0x8000}, 0x8001, 1, 0},
      {0, {0x1F}, 0x1F, 1, 0},
      {0, {0}, 1, 1, 0},
  };
  for (const auto& row : rows) {
    InitialiseSerializationStatus(row.flag);
    for (const unsigned code : row.codes) LogSerializationError(code);
    EXPECT_EQ(GetSerializationStatus(), row.status);
    EXPECT_EQ(IsErrorDetected(), row.error) << row.status;
    EXPECT_EQ(GetErrorLocation(), row.location) << row.status;
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
