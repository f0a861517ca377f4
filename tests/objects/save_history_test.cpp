// The save history: what a save records, which records it may change, and releases before the history existed.
#include "companions/geometry/constants.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/env/product_edition.h"
#include "share/env/product_identity.h"
#include "tests/objects/history_bytes.h"

using namespace kvtest;

TEST_F(History, ReleasesFromBeforeItAreKnownByStorageVersionAndBuild) {
  const struct {
    float storage;
    LPCTSTR major;
    LPCTSTR build;
    LPCTSTR servicePack;
  } rows[] = {
      {13.0f, _T("2005"), _T("2005/0101"), _T("Pre-release2")}, {11.2f, _T("2004"), _T("2004/0811"), _T("SP3")},
      {11.2f, _T("2004"), _T("2003/1013"), _T("SP0")},          {10.1f, _T("2003"), _T("2003/0721"), _T("SP2")},
      {8.2f, _T("2001Plus"), _T("2002/0403"), _T("SP1")},       {6.0f, _T("99"), _T(""), _T("-")},
  };
  CString major;
  for (const auto& row : rows) {
    QFDocSrHistory record(row.major, row.build, _T("eve"), _T("then"));
    EXPECT_EQ(record.GetStorageVersionNumber(), double(row.storage));
    EXPECT_EQ(ToUtf8(record.GetServicePack()), ToUtf8(CString(row.servicePack)));
    EXPECT_EQ(record.GetMajorVersion(), row.major);
    EXPECT_EQ(record.InitForCurrentInfo(), 0) << "it is locked";
    EXPECT_TRUE(FindVersionBeforeHistory(row.storage, major));
    EXPECT_EQ(major, row.major);
  }
  EXPECT_TRUE(FindVersionBeforeHistory(5.9, major));
  EXPECT_EQ(major, _T("")) << "older than all that are known";
  EXPECT_FALSE(FindVersionBeforeHistory(13.1, major));
  const QFDocSrHistory unknown(_T("2001plus"), _T("2003/0211"), _T("u"), _T("d"));
  EXPECT_EQ(unknown.GetStorageVersion() + unknown.GetServicePack(), _T(" -1.00-"));
  EXPECT_EQ(QFDocSrHistory(_T(""), _T("b"), _T("u"), _T("d")).GetMajorVersion(), _T("98 or before"));
}

TEST_F(History, OldDocumentGetsOneRecordUnlessItHasAny) {
  QFDocSrHistoryMngr manager;
  EXPECT_EQ(manager.GetLastHistoryObject(), nullptr);
  EXPECT_EQ(manager.AddHistoryForOldVersion(_T("2003"), _T("2003/0721"), _T("eve"), _T("then")), 1);
  EXPECT_EQ(manager.AddHistoryForOldVersion(_T("2005"), _T("x"), _T("adam"), _T("later")), 1);
  ASSERT_EQ(Records(manager).size(), 1u);
  const QFDocSrHistory& record = *manager.GetLastHistoryObject();
  EXPECT_EQ(record.GetMajorVersion() + record.GetBuildCode(), _T("20032003/0721"));
  EXPECT_EQ(record.GetUser() + record.GetDateAndTime() + record.GetNumSaves(), _T("evethen1"));
  StoredObject(manager);
  EXPECT_EQ(Saves(manager), "1 2 ");
  manager.DestroyHistory();
  EXPECT_EQ(manager.GetLastHistoryObject(), nullptr);
  StoredObject(manager);
  EXPECT_EQ(Saves(manager), "2 ") << "and no pointer to the record that is gone";
}

TEST_F(History, SaveRecordsThePresentBuildAndUser) {
  QFDocSrHistoryMngr manager;
  SetRunningModule(KV_MODULE_MILL_TURN);
  const std::string bytes = StoredObject(manager);
  ASSERT_EQ(Records(manager).size(), 1u);
  const QFDocSrHistory& record = *manager.GetLastHistoryObject();
  EXPECT_FALSE(record.GetDateAndTime().IsEmpty());
  HistoryFields expected = Present();
  expected.dateAndTime = record.GetDateAndTime().View();
  expected.saves = 2;  // 2 already for the first save
  EXPECT_EQ(bytes, ManagerOf({expected}));
  EXPECT_EQ(record.GetStorageVersion(), _T(" 38.00"));
  EXPECT_EQ(record.GetActiveModule(), _T("Mill-Turn"));
  SetRunningModule(KV_MODULE_TURN);
  StoredObject(manager);
  EXPECT_EQ(Saves(manager), "3 ") << "a second save in one run";
  EXPECT_EQ(record.GetActiveModule(), _T("Turn"));
}

TEST_F(History, SaveChangesOnlyTheLatestRecordOfThePresentCombination) {
  HistoryFields other = Present(), same = Present();
  other.user = u"somebody else";
  other.saves = 10;
  same.saves = 20;
  const struct {
    std::vector<HistoryFields> records;
    const char* saves;
  } rows[] = {
      {{other}, "10 2 "}, {{same}, "21 "}, {{same, other}, "21 10 "}, {{same, same, other}, "20 21 10 "}, {{}, "2 "},
  };
  for (const auto& row : rows) {
    const auto manager = LoadedWith(row.records);
    StoredObject(*manager);
    EXPECT_EQ(Saves(*manager), row.saves);
  }
  // The other records do not change.
  RecordBytes bytes;
  EXPECT_NE(StoredObject(*LoadedWith({other, same})).find(AddFields(bytes, other).Get()), std::string::npos);
}

TEST_F(History, RecordUnlocksOnlyForTheCombinationThatWroteIt) {
  const auto with = [&](auto change) {
    HistoryFields fields = Present();
    change(fields);
    return fields;
  };
  const struct {
    HistoryFields fields;
    int expected;
  } rows[] = {
      {Present(), 1},
      {with([](HistoryFields& f) { f.storage = 38.0 - 0.9 * RESABS; }), 1},
      {with([](HistoryFields& f) { f.storage = 38.0 + 1.1 * RESABS; }), 0},
      {with([](HistoryFields& f) { f.storage = std::numeric_limits<double>::quiet_NaN(); }), 0},
      {with([](HistoryFields& f) { f.major = u"2023"; }), 0},
      {with([](HistoryFields& f) { f.servicePack = u"SP3"; }), 0},
      {with([](HistoryFields& f) { f.build = u"2024/0827"; }), 0},
      {with([](HistoryFields& f) { f.user += u'\''; }), 0},
      {with([](HistoryFields& f) { f.user = std::u16string_view(CString(f.user.c_str()).MakeUpper()); }),
       m_user == CString(m_user).MakeUpper() ? 1 : 0},
  };
  for (const auto& row : rows) {
    for (const int init : {0, 1}) {
      const auto record = LoadedObject<QFDocSrHistory>(RecordOf(row.fields));
      EXPECT_EQ(record->InitForCurrentInfo(), 0) << "loaded ones are locked";
      EXPECT_EQ(StoredObject(*record), RecordOf(row.fields));
      EXPECT_EQ(record->UnlockForWriting(init), row.expected);
      EXPECT_EQ(record->GetNumSaves(), row.expected && init ? _T("8") : _T("7"));
      EXPECT_EQ(record->InitForCurrentInfo(), row.expected);
    }
  }
}

TEST_F(History, EditionComesFromTheRunningProduct) {
  static ProductInfo info;
  info = {_T("Mill Pro"), _T("2024 SP4"), {}, {}, {}, {}};
  QFDocSrHistory record;
  EXPECT_EQ(record.InitForCurrentInfo(), 1);
  EXPECT_EQ(record.GetProductEdition(), _T("Standard"));
  EXPECT_EQ(record.GetActiveModule(), _T("Unknown"));
  Register({.productInfo = [] { return &info; }});
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("EnableKVTarnel"), 1);
  record.InitForCurrentInfo();
  EXPECT_EQ(record.GetProductEdition(), _T("Tarnel"));
  EXPECT_NE(StoredObject(record).find(RecordBytes().Text(u"Tarnel").Text(u"Mill Pro 2024 SP4").Get()),
            std::string::npos);
  info.m_ProductName = _T("Other");
  record.InitForCurrentInfo();
  EXPECT_NE(StoredObject(record).find(RecordBytes().Text(u"Mill Pro 2024 SP4").Get()), std::string::npos)
      << "filled in once";
  RegSettingDeleteValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("EnableKVTarnel"));
  SetRunningModule(KV_MODULE_MILL);
  EXPECT_EQ(GetRunningModule(), KV_MODULE_MILL);
  EXPECT_EQ(GetRunningModuleName(), _T("Mill"));
  SetRunningModule(5);
  EXPECT_EQ(GetRunningModuleName(), _T("Unknown"));
  SetRunningModule(-1);
  EXPECT_EQ(GetRunningModuleName(), _T("Unknown"));
}
