// The save history: what a save records, which records it may change, and the versions from before there was one.
#include "share/objects/save_history.h"

#include <gtest/gtest.h>

#include <regex>
#include <vector>

#include "companions/geometry/constants.h"
#include "share/env/product_edition.h"
#include "share/env/product_identity.h"
#include "share/env/registry_access.h"
#include "share/env/registry_keys.h"
#include "tests/objects/history_bytes.h"
#include "tests/objects/loaded_object.h"
#include "tests/objects/test_document.h"

namespace {

using namespace kvtest;

class History : public testing::Test {
 protected:
  void SetUp() override {
    SetRunningModule(KV_MODULE_UNKNOWN);
    m_user = FreshEnvironment().GetUserNameW();
  }
  void TearDown() override { CloseAppEnv(); }

  // As the present build writes it; the tests change what is to differ.
  HistoryFields Present() const {
    HistoryFields fields;
    fields.user = m_user.View();
    return fields;
  }
  // A manager as loaded from a document with these records.
  static std::unique_ptr<QFDocSrHistoryMngr> LoadedWith(const std::vector<HistoryFields>& records) {
    return LoadedObject<QFDocSrHistoryMngr>(ManagerOf(records));
  }
  static std::vector<QFDocSrHistory*> Records(const QFDocSrHistoryMngr& manager) {
    CObList list;
    manager.GetAllHistoryObjects(list);
    std::vector<QFDocSrHistory*> records;
    for (POSITION at = list.GetHeadPosition(); at;) records.push_back(static_cast<QFDocSrHistory*>(list.GetNext(at)));
    return records;
  }
  static std::string Saves(const QFDocSrHistoryMngr& manager) {
    std::string text;
    for (const QFDocSrHistory* record : Records(manager)) text += ToUtf8(record->GetNumSaves()) + " ";
    return text;
  }

  TestDocument m_document;
  CString m_user;
};

}  // namespace

TEST_F(History, VersionsFromBeforeItAreKnownByTheirStorageVersion) {
  const struct {
    float storage;
    bool before;
    LPCTSTR major;
  } rows[] = {
      {5.9f, true, _T("")},          {6.0f, true, _T("99")},       {7.0f, true, _T("2000")},  {8.0f, true, _T("2001")},
      {8.2f, true, _T("2001Plus")},  {9.0f, true, _T("2001Plus")}, {10.1f, true, _T("2003")}, {11.2f, true, _T("2004")},
      {12.0f, true, _T("2004Plus")}, {13.0f, true, _T("2005")},    {13.1f, false, _T("")},    {38.0f, false, _T("")},
  };
  for (const auto& row : rows) {
    CString major(_T("?"));
    EXPECT_EQ(FindVersionBeforeHistory(row.storage, major), row.before) << row.storage;
    EXPECT_EQ(major, row.major) << row.storage;
  }
}

TEST_F(History, OldVersionsAreLookedUpByVersionAndBuild) {
  const struct {
    LPCTSTR major;
    LPCTSTR build;
    double storage;
    LPCTSTR servicePack;
  } rows[] = {
      {_T("2005"), _T("2005/0101"), 13.0, _T("Pre-release2")},
      {_T("2004Plus"), _T(""), 12.0, _T("Beta1")},
      {_T("2004"), _T("2004/0811"), 11.199999809265137, _T("SP3")},
      {_T("2004"), _T("2004/0517"), 11.199999809265137, _T("SP2.1")},
      {_T("2004"), _T("2004/0316"), 11.199999809265137, _T("SP2")},
      {_T("2004"), _T("2004/0225"), 11.199999809265137, _T("SP1.1")},
      {_T("2004"), _T("2004/0206"), 11.199999809265137, _T("SP1")},
      {_T("2004"), _T("2004/0515"), 11.199999809265137, _T("SP0")},
      {_T("2004"), _T("2003/1013"), 11.199999809265137, _T("SP0")},
      {_T("2003"), _T("2003/1013"), 10.100000381469727, _T("SP4")},
      {_T("2003"), _T("2003/0904"), 10.100000381469727, _T("SP3.1")},
      {_T("2003"), _T("2003/0808"), 10.100000381469727, _T("SP3")},
      {_T("2003"), _T("2003/0807"), 10.100000381469727, _T("SP2.1")},
      {_T("2003"), _T("2003/0715"), 10.100000381469727, _T("SP2")},
      {_T("2003"), _T("2003/0721"), 10.100000381469727, _T("SP2")},
      {_T("2003"), _T("2003/0529"), 10.100000381469727, _T("SP1")},
      {_T("2003"), _T(""), 10.100000381469727, _T("SP0")},
      {_T("2001Plus"), _T("2003/0211"), 8.199999809265137, _T("SP6")},
      {_T("2001Plus"), _T("2002/1219"), 8.199999809265137, _T("SP5")},
      {_T("2001Plus"), _T("2002/0830"), 8.199999809265137, _T("SP4")},
      {_T("2001Plus"), _T("2002/0624"), 8.199999809265137, _T("SP3")},
      {_T("2001Plus"), _T("2002/0521"), 8.199999809265137, _T("SP2")},
      {_T("2001Plus"), _T("2002/0403"), 8.199999809265137, _T("SP1")},
      {_T("2001Plus"), _T("2002/0404"), 8.199999809265137, _T("SP0")},
      {_T("2001"), _T("2003/0211"), 8.0, _T("-")},
      {_T("2000"), _T(""), 7.0, _T("-")},
      {_T("99"), _T(""), 6.0, _T("-")},
      {_T("1999"), _T(""), 6.0, _T("-")},
      {_T("2001plus"), _T("2003/0211"), -1.0, _T("-")},
      {_T("2024"), _T("2024/0826"), -1.0, _T("-")},
  };
  for (const auto& row : rows) {
    QFDocSrHistory record(row.major, row.build, _T("eve"), _T("then"));
    SCOPED_TRACE(ToUtf8(CString(row.major) + _T(" ") + row.build));
    EXPECT_EQ(record.GetStorageVersionNumber(), row.storage);
    EXPECT_EQ(ToUtf8(record.GetServicePack()), ToUtf8(CString(row.servicePack)));
    EXPECT_EQ(record.GetMajorVersion(), row.major);
    EXPECT_EQ(record.InitForCurrentInfo(), 0) << "it is locked";
  }
  EXPECT_EQ(QFDocSrHistory(_T(""), _T("b"), _T("u"), _T("d")).GetMajorVersion(), _T("98 or before"));
  EXPECT_EQ(QFDocSrHistory(_T("2004"), _T("b"), _T("u"), _T("d")).GetStorageVersion(), _T(" 11.20"));
}

TEST_F(History, OldDocumentGetsOneRecordUnlessItHasAny) {
  QFDocSrHistoryMngr manager;
  EXPECT_EQ(manager.GetLastHistoryObject(), nullptr);
  EXPECT_EQ(manager.AddHistoryForOldVersion(_T("2003"), _T("2003/0721"), _T("eve"), _T("then")), 1);
  EXPECT_EQ(manager.AddHistoryForOldVersion(_T("2005"), _T("x"), _T("adam"), _T("later")), 1);
  ASSERT_EQ(Records(manager).size(), 1u);
  const QFDocSrHistory& record = *manager.GetLastHistoryObject();
  EXPECT_EQ(record.GetMajorVersion(), _T("2003"));
  EXPECT_EQ(record.GetBuildCode(), _T("2003/0721"));
  EXPECT_EQ(record.GetUser(), _T("eve"));
  EXPECT_EQ(record.GetDateAndTime(), _T("then"));
  EXPECT_EQ(record.GetNumSaves(), _T("1"));
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
  const std::string stamp = ToUtf8(record.GetDateAndTime());
  EXPECT_TRUE(std::regex_match(stamp, std::regex(R"(\d\d/\d\d/\d{4}::\d\d:\d\d)"))) << stamp;
  HistoryFields expected = Present();
  expected.dateAndTime = record.GetDateAndTime().View();
  expected.saves = 2;  // required, though it is the first
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
  // The others are stored as they came.
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
      {with([](HistoryFields& f) { f.storage = 38.0 + 0.9 * RESABS; }), 1},
      {with([](HistoryFields& f) { f.storage = 38.0 - 0.9 * RESABS; }), 1},
      {with([](HistoryFields& f) { f.storage = 38.0 + 1.1 * RESABS; }), 0},
      {with([](HistoryFields& f) { f.storage = 37.0; }), 0},
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
  const char* const names[] = {"Unknown", "Mill", "Turn", "Mill-Turn", "WireEDM", "Unknown"};
  for (int module = 0; module < 6; ++module) {
    SetRunningModule(module);
    EXPECT_EQ(ToUtf8(GetRunningModuleName()), names[module]);
    EXPECT_EQ(GetRunningModule(), module);
  }
  SetRunningModule(-1);
  EXPECT_EQ(GetRunningModuleName(), _T("Unknown"));
}
