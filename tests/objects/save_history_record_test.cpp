// The records of the save history: exact bytes of each schema, documents of old storage versions, damage.
#include "tests/objects/dumped.h"
#include "tests/objects/history_bytes.h"

namespace {

using namespace kvtest;

class HistoryRecord : public History {};

HistoryFields Fields() {
  HistoryFields fields;
  fields.edition = u"Professional";
  fields.info = u"more";
  return fields;
}

}  // namespace

TEST_F(HistoryRecord, EachSchemaIsStoredInThePresentLayout) {
  for (const int schema : {1, 2, 3, 4}) {
    m_document.units = schema % 2 ? 6.0f : 38.0f;
    const std::string bytes = RecordOf(Fields(), schema, /*base=*/schema % 2 == 0);
    HistoryFields expected = Fields();
    if (schema < 2) expected.edition = u"Standard";
    if (schema < 3) expected.info = u"";
    EXPECT_EQ(StoredObject(*LoadedObject<QFDocSrHistory>(bytes)), RecordOf(expected)) << schema;
    ExpectEveryPrefixRaises<QFDocSrHistory>(bytes);
  }
}

TEST_F(HistoryRecord, BytesAreTheFieldsInTheirOrder) {
  static constexpr char kBytes[] =
      "\xFF\xFF\x03\x00\x0E\x00QFDocSrHistory\x01\x80\xFF\xFF\x02\x00\x0C\x00QFBaseObject"
      "\xFF\xFE\xFF\x01"
      "A\x00\xFF\xFE\xFF\x01"
      "B\x00\xFF\xFE\xFF\x01"
      "C\x00\x00\x00\x00\x00\x00\x00\xF0\xBF\xFF\xFE\xFF\x01"
      "D\x00\xFF\xFE\xFF\x01"
      "E\x00\x01\x00\x00\x00\xFF\xFE\xFF\x01"
      "F\x00\xFF\xFE\xFF\x01"
      "G\x00";
  const std::string expected(kBytes, sizeof kBytes - 1);
  const auto record = LoadedObject<QFDocSrHistory>(expected);
  EXPECT_EQ(record->GetMajorVersion() + record->GetServicePack() + record->GetBuildCode(), _T("ABC"));
  EXPECT_EQ(record->GetDateAndTime() + record->GetUser() + record->GetProductEdition(), _T("DEF"));
  EXPECT_EQ(record->GetStorageVersion() + record->GetNumSaves(), _T(" -1.001"));
  EXPECT_EQ(StoredObject(*record), expected);
}

TEST_F(HistoryRecord, DamageRaises) {
  ExpectEveryPrefixRaises<QFDocSrHistoryMngr>(ManagerOf({Fields(), Fields()}));
  RecordBytes twice = StartOfManager().Word(2).NewClass("QFDocSrHistory", 3).Class(4).Class(3);
  const struct {
    const char* what;
    std::string bytes;
    int cause;
  } rows[] = {
      {"more records than bytes", StartOfManager().Word(0xFFFE).Get(), CArchiveException::endOfFile},
      {"a record twice", AddFields(twice, Fields()).Object(5).Get(), CArchiveException::badIndex},
      {"the manager inside itself", StartOfManager().Word(1).Object(2).Get(), CArchiveException::badIndex},
      {"another class", StartOfManager().Word(1).NewClass("QFObjectIndexer", 2).Get(), CArchiveException::badClass},
  };
  for (const auto& row : rows) EXPECT_EQ(LoadCause<QFDocSrHistoryMngr>(row.bytes), row.cause) << row.what;
}

TEST_F(HistoryRecord, DamagedListLeavesAUsableManager) {
  HistoryFields wild = Fields();
  wild.user = m_user.View();
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

TEST_F(HistoryRecord, DumpsItsFields) {
  const auto manager = LoadedObject<QFDocSrHistoryMngr>(ManagerOf({Fields()}));
  manager->DumpData(nullptr);
  const std::string text = Dumped([&](FILE* file) { manager->DumpData(file); });
  EXPECT_NE(text.find("\n m_HistoryList Total Items : 1\n"), std::string::npos) << text;
  EXPECT_NE(text.find("\n m_MajorVersion: 2024\n m_ServicePack: SP4\n m_BuildCode: 2024/0826\n"), std::string::npos);
  EXPECT_NE(text.find("\n m_StorageVersionNumber:  38.00\n"), std::string::npos) << text;
}
