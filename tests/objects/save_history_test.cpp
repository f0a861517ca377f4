// The save history: what a save records, which records it may change, releases before the history existed; and its
// records: exact bytes of each schema, documents of old storage versions, damage.
#include "share/objects/save_history.h"
#include "companions/geometry/constants.h"
#include "framework/ob_list.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/env/app_env.h"
#include "share/env/product_edition.h"
#include "share/env/product_identity.h"
#include "tests/objects/dumped.h"
#include "tests/objects/history_bytes.h"
#include "tests/objects/test_document.h"
#include "tests/values.h"

using namespace kvtest;

namespace {

// A fresh environment with the language's texts, and a document.
class History : public testing::Test {
 protected:
  void SetUp() override {
    static const bool kLinked = (InitShareDll(), true);  // the language's texts
    ASSERT_TRUE(kLinked);
    CloseAppEnv();
    SetRunningModule(KV_MODULE_UNKNOWN);
    m_user = AppEnv()->GetUserNameW();
  }
  void TearDown() override { CloseAppEnv(); }

  // The values that the present build writes; tests change some of them.
  HistoryFields Present() const {
    HistoryFields fields;
    fields.user = m_user.View();
    return fields;
  }
  // The same with the texts of the last two fields.
  HistoryFields Full() const {
    HistoryFields fields = Present();
    fields.edition = _T("Professional");
    fields.info = _T("more");
    return fields;
  }
  // A manager loaded from a document with these records.
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

TEST_F(History, ReleasesFromBeforeItAreKnownByStorageVersionAndBuild) {
  const std::tuple<float, LPCTSTR, LPCTSTR, LPCTSTR> rows[] = {
      {13.0f, _T("2005"), _T("2005/0101"), _T("Pre-release2")}, {11.2f, _T("2004"), _T("2004/0811"), _T("SP3")},
      {11.2f, _T("2004"), _T("2003/1013"), _T("SP0")},          {10.1f, _T("2003"), _T("2003/0721"), _T("SP2")},
      {8.2f, _T("2001Plus"), _T("2002/0403"), _T("SP1")},       {6.0f, _T("99"), _T(""), _T("-")},
  };
  CString major;
  for (const auto& [storage, release, build, servicePack] : rows) {
    QFDocSrHistory record(release, build, _T("eve"), _T("then"));
    EXPECT_EQ(record.GetStorageVersionNumber(), double(storage));
    EXPECT_EQ(Values(record.GetServicePack(), record.GetMajorVersion()), Values(servicePack, release));
    EXPECT_EQ(record.InitForCurrentInfo(), 0) << "it is locked";
    EXPECT_TRUE(FindVersionBeforeHistory(storage, major));
    EXPECT_EQ(major, release);
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
  other.user = _T("somebody else");
  other.saves = 10;
  same.saves = 20;
  const std::pair<std::vector<HistoryFields>, const char*> rows[] = {
      {{other}, "10 2 "}, {{same}, "21 "}, {{same, other}, "21 10 "}, {{same, same, other}, "20 21 10 "}, {{}, "2 "},
  };
  for (const auto& [records, saves] : rows) {
    const auto manager = LoadedWith(records);
    StoredObject(*manager);
    EXPECT_EQ(Saves(*manager), saves);
  }
  // The other records do not change.
  RecordBytes bytes;
  EXPECT_NE(StoredObject(*LoadedWith({other, same})).find(AddFields(bytes, other).Get()), std::string::npos);
}

TEST_F(History, RecordUnlocksOnlyForTheCombinationThatWroteIt) {
  const std::pair<void (*)(HistoryFields&), int> rows[] = {
      {[](HistoryFields&) {}, 1},
      {[](HistoryFields& f) { f.storage = 38.0 - 0.9 * RESABS; }, 1},
      {[](HistoryFields& f) { f.storage = 38.0 + 1.1 * RESABS; }, 0},
      {[](HistoryFields& f) { f.storage = std::numeric_limits<double>::quiet_NaN(); }, 0},
      {[](HistoryFields& f) { f.major = _T("2023"); }, 0},
      {[](HistoryFields& f) { f.servicePack = _T("SP3"); }, 0},
      {[](HistoryFields& f) { f.build = _T("2024/0827"); }, 0},
      {[](HistoryFields& f) { f.user += _T('\''); }, 0},
      {[](HistoryFields& f) { f.user = TextView(CString(f.user.c_str()).MakeUpper()); },
       m_user == CString(m_user).MakeUpper() ? 1 : 0},
  };
  for (const auto& [change, expected] : rows) {
    HistoryFields fields = Present();
    change(fields);
    for (const int init : {0, 1}) {
      const auto record = LoadedObject<QFDocSrHistory>(RecordOf(fields));
      EXPECT_EQ(record->InitForCurrentInfo(), 0) << "loaded ones are locked";
      EXPECT_EQ(StoredObject(*record), RecordOf(fields));
      EXPECT_EQ(record->UnlockForWriting(init), expected);
      EXPECT_EQ(record->GetNumSaves(), expected && init ? _T("8") : _T("7"));
      EXPECT_EQ(record->InitForCurrentInfo(), expected);
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
  EXPECT_NE(StoredObject(record).find(RecordBytes().Text(_T("Tarnel")).Text(_T("Mill Pro 2024 SP4")).Get()),
            std::string::npos);
  info.m_ProductName = _T("Other");
  record.InitForCurrentInfo();
  EXPECT_NE(StoredObject(record).find(RecordBytes().Text(_T("Mill Pro 2024 SP4")).Get()), std::string::npos)
      << "filled in once";
  RegSettingDeleteValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("EnableKVTarnel"));
  for (const int module : {-1, 5, int(KV_MODULE_MILL)}) {
    SetRunningModule(module);
    EXPECT_EQ(GetRunningModuleName(), module == KV_MODULE_MILL ? _T("Mill") : _T("Unknown"));
  }
  EXPECT_EQ(GetRunningModule(), KV_MODULE_MILL);
}

TEST_F(History, EachSchemaIsStoredInThePresentLayout) {
  for (const int schema : {1, 2, 3}) {
    m_document.units = schema % 2 ? 6.0f : 38.0f;
    const std::string bytes = RecordOf(Full(), schema, /*base=*/schema % 2 == 0);
    HistoryFields expected = Full();
    if (schema < 2) expected.edition = _T("Standard");
    if (schema < 3) expected.info = _T("");
    EXPECT_EQ(StoredObject(*LoadedObject<QFDocSrHistory>(bytes)), RecordOf(expected)) << schema;
    ExpectEveryPrefixRaises<QFDocSrHistory>(bytes);
  }
}

TEST_F(History, BytesAreTheFieldsInTheirOrder) {
  static constexpr char kBytes[] =
      "\xFF\xFF\x03\x00\x0E\x00QFDocSrHistory\x01\x80\xFF\xFF\x02\x00\x0C\x00QFBaseObject"
      "\xFF\xFE\xFF\x01P\x00\xFF\xFE\xFF\x01Q\x00\xFF\xFE\xFF\x01R\x00\x00\x00\x00\x00\x00\x00\xF0\xBF"
      "\xFF\xFE\xFF\x01S\x00\xFF\xFE\xFF\x01T\x00\x01\x00\x00\x00\xFF\xFE\xFF\x01U\x00\xFF\xFE\xFF\x01V\x00";
  const std::string expected(kBytes, sizeof kBytes - 1);
  const auto record = LoadedObject<QFDocSrHistory>(expected);
  EXPECT_EQ(record->GetMajorVersion() + record->GetServicePack() + record->GetBuildCode(), _T("PQR"));
  EXPECT_EQ(record->GetDateAndTime() + record->GetUser() + record->GetProductEdition(), _T("STU"));
  EXPECT_EQ(record->GetStorageVersion() + record->GetNumSaves(), _T(" -1.001"));
  EXPECT_EQ(StoredObject(*record), expected);
}

TEST_F(History, DamageRaises) {
  ExpectEveryPrefixRaises<QFDocSrHistoryMngr>(ManagerOf({Full(), Full()}));
  RecordBytes twice = StartOfManager().Word(2).NewClass("QFDocSrHistory", 3).Class(4).Class(3);
  const std::tuple<const char*, std::string, int> rows[] = {
      {"more records than bytes", StartOfManager().Word(0xFFFE).Get(), CArchiveException::endOfFile},
      {"a record twice", AddFields(twice, Full()).Object(5).Get(), CArchiveException::badIndex},
      {"the manager inside itself", StartOfManager().Word(1).Object(2).Get(), CArchiveException::badIndex},
      {"another class", StartOfManager().Word(1).NewClass("QFObjectIndexer", 2).Get(), CArchiveException::badClass},
  };
  for (const auto& [what, bytes, cause] : rows) EXPECT_EQ(LoadCause<QFDocSrHistoryMngr>(bytes), cause) << what;
}

TEST_F(History, DamagedListLeavesAUsableManager) {
  HistoryFields wild = Full();
  wild.saves = INT32_MAX;
  // The manager is a member here. Archive numbers: its class 1, the base's class 2, the records' class 3.
  RecordBytes cut;
  cut.NewClass("QFDocSrHistoryMngr", 1).NewClass("QFBaseObject", 2).Word(3).Null();
  AddFields(cut.NewClass("QFDocSrHistory", 3).Class(3).Class(2), wild);
  for (const bool whole : {false, true}) {
    QFDocSrHistoryMngr manager;
    Reader reader(whole ? RecordBytes(cut).Null().Get() : cut.Get());
    if (whole) {
      manager.Serialize(reader.ar);
    } else {
      EXPECT_THROW(manager.Serialize(reader.ar), CArchiveException);
    }
    EXPECT_EQ(Records(manager).size(), 1u) << "no null record";
    StoredObject(manager);
    EXPECT_EQ(manager.GetLastHistoryObject()->GetNumSaves(), _T("2147483647"));
  }
}

TEST_F(History, DumpsItsFields) {
  const auto manager = LoadedObject<QFDocSrHistoryMngr>(ManagerOf({Full()}));
  manager->DumpData(nullptr);
  const std::string text = Dumped([&](FILE* file) { manager->DumpData(file); });
  EXPECT_NE(text.find("\n m_HistoryList Total Items : 1\n"), std::string::npos) << text;
  EXPECT_NE(text.find("\n m_MajorVersion: 2024\n m_ServicePack: SP4\n m_BuildCode: 2024/0826\n"), std::string::npos);
  EXPECT_NE(text.find("\n m_StorageVersionNumber:  38.00\n"), std::string::npos) << text;
}
