// The indexer's records: exact bytes of both schemas, documents of old storage versions, damage.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "share/objects/object_indexer.h"
#include "tests/objects/dumped.h"
#include "tests/objects/loaded_object.h"
#include "tests/objects/test_document.h"

namespace {

using namespace kvtest;

RecordBytes& AddIds(RecordBytes& bytes, std::initializer_list<DWORD> ids) {
  bytes.Dword(unsigned(ids.size()));
  for (const DWORD id : ids) bytes.Dword(id);
  return bytes;
}

// The start of a helper's record. Archive numbers: its class 1, the object 2, the base's class 3; then the entries'
// class is 4 and the first entry 5.
RecordBytes StartOfHelper(int entries) {
  return RecordBytes().NewClass("QFObjectIndexerHelper", 2).Class(1).NewClass("QFBaseObject", 2).Word(entries);
}

// Two entries in the present layout.
std::string Present(int references) {
  RecordBytes bytes = StartOfHelper(2);
  bytes.NewClass("QFObjectIndexer", 2).Class(4).Class(3).Text(u"Hole");
  AddIds(bytes, {7, 0x12345678, 7}).Raw(references);
  bytes.Class(4).Class(4).Class(3).Text(u"");
  return AddIds(bytes, {}).Raw(0).Get();
}

// The same in schema 1 without the base's records, as in documents before storage version 6.1. Archive numbers: the
// helper's class 1, the helper 2, the entries' class 3.
std::string Oldest() {
  RecordBytes bytes;
  bytes.NewClass("QFObjectIndexerHelper", 1).Class(1).Word(2);
  bytes.NewClass("QFObjectIndexer", 1).Class(3).Text(u"Hole");
  AddIds(bytes, {7, 0x12345678, 7}).Class(3).Class(3).Text(u"");
  return AddIds(bytes, {}).Get();
}

class Hole : public QFObject {
 public:
  CString GetRegisterNodeName() override { return _T("Hole"); }
};

// Kilobytes.
long PeakMemory() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

int PositionOf(QFObjectIndexerHelper& helper, TestDocument& document, DWORD id) {
  Hole hole;
  document.nextId = id;
  return helper.FindIndex(&hole);
}

}  // namespace

TEST(IndexerRecord, PresentAndOldestBytesLoadAndAreStoredInThePresentLayout) {
  EXPECT_EQ(Present(2).substr(0, 29), std::string("\xFF\xFF\x02\x00\x15\x00QFObjectIndexerHelper\x01\x80", 29));
  const struct {
    std::string bytes;
    float units;
    unsigned schema;
    int references;
  } rows[] = {{Present(2), 38.0f, 2, 2}, {Oldest(), 6.0f, 1, /*as many nodes alive as ids*/ 3}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.units);
    TestDocument document(row.units);
    const auto helper = LoadedObject<QFObjectIndexerHelper>(row.bytes);
    EXPECT_EQ(helper->GetObjectSchemaNumber(), row.schema);
    EXPECT_EQ(PositionOf(*helper, document, 7), 0);
    EXPECT_EQ(PositionOf(*helper, document, 0x12345678), 1);
    EXPECT_EQ(PositionOf(*helper, document, 8), -1);
    EXPECT_EQ(StoredObject(*helper), Present(row.references));
    ExpectEveryPrefixRaises<QFObjectIndexerHelper>(row.bytes);
  }
}

TEST(IndexerRecord, DamageRaises) {
  RecordBytes entry, twice;
  entry.NewClass("QFObjectIndexer", 2).Class(4).Class(3).Text(u"A");
  AddIds(twice.Bytes(entry.Get()), {1}).Raw(0).Object(5);
  const struct {
    const char* what;
    int entries;
    std::string bytes;
    int cause;
  } rows[] = {
      {"more entries than bytes", 0xFFFE, "", CArchiveException::endOfFile},
      {"more ids than bytes", 1, RecordBytes(entry).Dword(0xFFFFFFFF).Raw(0).Get(), CArchiveException::endOfFile},
      {"an entry twice", 2, twice.Get(), CArchiveException::badIndex},
      {"the helper inside itself", 1, RecordBytes().Object(2).Get(), CArchiveException::badIndex},
      {"another class", 1, RecordBytes().Class(3).Word(0).Get(), CArchiveException::badClass},
      {"a record of another class", 1, RecordBytes().NewClass("QFObjectIndexer", 2).Class(1).Get(),
       CArchiveException::badClass},
  };
  TestDocument document;
  const long before = PeakMemory();
  for (const auto& row : rows)
    EXPECT_EQ(LoadCause<QFObjectIndexerHelper>(StartOfHelper(row.entries).Bytes(row.bytes).Get()), row.cause)
        << row.what;
  EXPECT_LT(PeakMemory() - before, 64 * 1024) << "nothing may be allocated for a number that can't be true";
}

TEST(IndexerRecord, LoadingIntoAUsedHelperAppends) {
  TestDocument document;
  QFObjectIndexerHelper helper;
  Hole hole;
  document.nextId = 99;
  helper.AddObj(&hole);
  EXPECT_EQ(PositionOf(helper, document, 99), 0);
  RecordBytes bytes;  // the helper is a member here, not an object of the archive
  bytes.NewClass("QFObjectIndexerHelper", 2).NewClass("QFBaseObject", 2).Word(1);
  AddIds(bytes.NewClass("QFObjectIndexer", 2).Class(3).Class(2).Text(u"Hole"), {7, 8}).Raw(2);
  Reader reader(bytes.Get());
  helper.Serialize(reader.ar);
  EXPECT_EQ(PositionOf(helper, document, 99), 0);
  EXPECT_EQ(PositionOf(helper, document, 8), 1) << "in the second entry of the name";
}

TEST(IndexerRecord, NullEntriesAndWildCountsAreCarriedAlong) {
  TestDocument document;
  const auto bytes = [](int references) {
    RecordBytes helper = StartOfHelper(3).Null().NewClass("QFObjectIndexer", 2).Class(4).Class(3).Text(u"Hole");
    return AddIds(helper, {7}).Raw(references).Null().Get();
  };
  const auto helper = LoadedObject<QFObjectIndexerHelper>(bytes(INT32_MIN));
  Hole hole;
  document.nextId = 7;
  EXPECT_EQ(helper->FindIndex(&hole), 0);
  hole.SetRegNameForAutoIndexing(_T("Hole"));
  helper->ReleaseIndexer(&hole);
  EXPECT_EQ(StoredObject(*helper), bytes(INT32_MIN));
  std::map<CString, int> counts = {{_T("Hole"), INT32_MAX}};
  helper->CorrectIndexersReferences(counts);
  EXPECT_EQ(counts.size(), 1u);
  EXPECT_EQ(StoredObject(*helper), bytes(INT32_MAX));
  EXPECT_NE(Dumped([&](FILE* file) { helper->DumpData(file); }).find("2147483647"), std::string::npos);
  helper->ClearUnusedIndexers();
  EXPECT_EQ(StoredObject(*helper), bytes(INT32_MAX));
}
