// Records of the pattern classes: hand-made bytes at every schema, damaged bytes, and loads that fail inside a pattern.
#include <gtest/gtest.h>

#include "share/objects/storage_status.h"
#include "tests/objects/record_bytes.h"
#include "tests/objects/test_document.h"
#include "tests/patterns/row_pattern.h"

using namespace kvtest;

namespace {

constexpr unsigned kLost = 0x9001;

// The fields of QFObject after its class records.
RecordBytes& Node(RecordBytes& bytes, std::initializer_list<int> users, const TCHAR* label, unsigned id,
                  const RecordBytes& pattern = RecordBytes().Null()) {
  bytes.Word(int(users.size()));
  for (const int user : users) bytes.Object(user);
  bytes.Text(label).Text(_T("")).Text(_T("")).Text(_T("")).Dword(id).Dword(0).Null().Text(_T(""));
  return bytes.Word(0).Null().Dword(0xFFFFFFFF).Bytes(pattern.Get()).Text(_T(""));
}

// A manager (object 2) of a base object (5), with a description (7), a skipped instance (9) and the orders (11) with
// one order (13) of the base object.
std::string ManagerRecord(int manager, int info) {
  RecordBytes bytes;
  bytes.NewClass("QFObjectPatternMgr", manager).Class(1).NewClass("QFObject", 8).NewClass("QFBaseObject", 2);
  Node(bytes, {}, _T("M"), 3).Dword(0).Class(3).Class(3).Class(4);
  Node(bytes, {2}, _T("B"), 4).NewClass("QFPatternInfo", info).Class(6).Class(4);
  bytes.Word(1).NewClass("QFPattInstToSkip", 1).Class(8).Class(4).Double(1).Double(2).Double(3);
  if (info > 1) {
    bytes.NewClass("QFPattOptimizMgr", 1).Class(10).Class(4).Word(1);
    bytes.NewClass("QFPattOptimizedList", 1).Class(12).Class(4).Word(2).Dword(1).Dword(0xFFFFFFFF).Object(5);
  }
  if (manager > 1) bytes.Text(_T("desc"));
  return bytes.Get();
}

// Loads what `read` reads, then deletes everything that was loaded. The status word stays. True if nothing raised.
template <class Read>
bool LoadAll(std::string_view bytes, Read read) {
  InitialiseSerializationStatus(0);
  Reader reader(bytes);
  bool loaded = false;
  try {
    read(reader.ar);
    loaded = true;
  } catch (const CArchiveException&) {
  }
  reader.ar.DeleteLoaded([](const CObject*) { return true; });
  EXPECT_EQ(Patterned::live + RowPattern::live + RowSkip::live, 0);
  return loaded;
}

class PatternRecord : public testing::Test {
 protected:
  const TestDocument document_{38.0f};
};

}  // namespace

TEST_F(PatternRecord, LoadsEverySchemaAndStoresTheLatest) {
  for (const int schema : {11, 12, 21, 22}) {
    const int manager_schema = schema / 10, info_schema = schema % 10;
    const std::string bytes = ManagerRecord(manager_schema, info_schema) + "next";
    EXPECT_TRUE(LoadAll(bytes, [&](CArchive& ar) {
      QFObjectPatternMgr* manager = nullptr;
      ar >> manager;
      EXPECT_EQ(ar.GetBytesLeft(), 4u) << schema;
      EXPECT_EQ(manager->QFObject::Name() + _T("|") + manager->GetNodeDesc(),
                manager_schema > 1 ? _T("M|desc") : _T("M|"));
      EXPECT_EQ(manager->GetPatternActive(), 0);
      QFObject* const base = manager->GetBaseObjectToPattern();
      EXPECT_EQ(base->Name(), _T("B"));
      QFPatternInfo* const info = manager->GetPatternInfo();
      EXPECT_EQ(info->GetNumInstancesToSkip(), 1);
      EXPECT_TRUE(info->GetRefPosOfObject() == FRPosition(1, 2, 3));
      EXPECT_EQ(info->GetIndexForInstOptimised(1, base), info_schema > 1 ? -1 : 1) << schema;
      EXPECT_EQ(info->IsOptimListsEmpty(), info_schema == 1);
      EXPECT_EQ(GetSerializationStatus(), 0u);
      if (schema == 22) {
        EXPECT_EQ(Hex(StoredObject(*manager)), Hex(bytes.substr(0, bytes.size() - 4)));
      }
    }));
    for (std::size_t length = 0; length < bytes.size() - 4; ++length)
      EXPECT_FALSE(LoadAll(bytes.substr(0, length), LoadAndDelete<QFObjectPatternMgr>)) << schema << " " << length;
  }
}

TEST_F(PatternRecord, OrdersSkipTheRecordOfTheNode) {
  QFPattOptimizMgr orders;
  orders.ChangeName(_T("label"));
  orders.GetObjectId();
  orders.SetState(LOCKED);
  const std::string expected =
      RecordBytes().NewClass("QFPattOptimizMgr", 1).Class(1).NewClass("QFBaseObject", 2).Word(0).Get();
  EXPECT_EQ(Hex(StoredObject(orders)), Hex(expected));
  const auto loaded = LoadedObject<QFPattOptimizMgr>(expected);
  EXPECT_EQ(loaded->Name(), _T(""));
  EXPECT_EQ(loaded->GetState(), ACTIVE);
  EXPECT_EQ(loaded->GetObjectId(), 2u) << "a new id";
}

TEST_F(PatternRecord, LostReferencesAreLoggedAndNull) {
  // A node (object 2) and its manager (5), whose base object is null, another node (6) or the node.
  const auto node = [](const RecordBytes& base) {
    RecordBytes manager, bytes;
    manager.NewClass("QFObjectPatternMgr", 2).Class(4).Class(1).Class(3);
    Node(manager, {}, _T(""), 0).Dword(1).Bytes(base.Get()).NewClass("QFPatternInfo", 1).Class(7);
    manager.Class(3).Word(0).Double(0).Double(0).Double(0).Text(_T(""));
    bytes.NewClass("QFObject", 8).Class(1).NewClass("QFBaseObject", 2);
    return Node(bytes, {}, _T(""), 0, manager).Get();
  };
  RecordBytes other;
  Node(other.Class(1).Class(1).Class(3), {}, _T(""), 0);
  const struct {
    std::string bytes;
    unsigned status;
    bool hasBase;
  } rows[] = {{node(RecordBytes().Null()), kLost, false},
              {node(other), kLost, false},
              {node(RecordBytes().Object(2)), 0, true}};
  for (const auto& row : rows) {
    std::string bytes = row.bytes;
    if (&row != &rows[1]) bytes.replace(bytes.find("\x07\x80"), 1, "\x06");  // one object fewer before the description
    EXPECT_TRUE(LoadAll(bytes, [&](CArchive& ar) {
      QFObject* loaded = nullptr;
      ar >> loaded;
      QFObjectPatternMgr& manager = *loaded->GetPatternMgr();
      EXPECT_EQ(manager.GetBaseObjectToPattern(), row.hasBase ? loaded : nullptr);
      EXPECT_EQ(manager.Rebuild() + manager.GetState(), 0);
      EXPECT_EQ(GetSerializationStatus(), row.status);
    }));
  }
}

TEST_F(PatternRecord, DescriptionsAndOrdersHaveOneOwner) {
  RecordBytes second, orders;
  Node(second.Class(1).Class(1).Class(3).Class(4), {}, _T(""), 0).Dword(1).Null();
  orders.Class(6).Class(6).Class(4).Word(0).Double(0).Double(0).Double(0);
  const std::string managers = ManagerRecord(2, 2) + second.Get(), text = RecordBytes().Text(_T("")).Get();
  const auto loads = [&](const std::string& description) {
    return LoadAll(managers + description + text, [](CArchive& ar) {
      QFObjectPatternMgr *one = nullptr, *two = nullptr;
      ar >> one >> two;
    });
  };
  EXPECT_FALSE(loads(RecordBytes().Object(7).Get())) << "the description of the first manager";
  EXPECT_FALSE(loads(orders.Get() + RecordBytes().Object(11).Get())) << "the orders of the first description";
  EXPECT_TRUE(loads(orders.Get() + RecordBytes().Null().Get()));
}

// An operation that is loaded before, and a base object whose pattern has an order for it: each damage raises or loads,
// and leaves nothing dangling.
TEST_F(PatternRecord, DamageInsideAPatternLeavesNothingBehind) {
  auto first = std::make_unique<Patterned>(), base = std::make_unique<Patterned>();
  const std::string bytes = Store([&](CArchive& ar) {
    ar << first.get();
    RowPattern& row = base->Repeat("");
    row.Skip(new RowSkip);
    Order order({0});
    for (QFObject* object : {first.get(), base.get()}) row.SetOptimizedList(object, order);
    ar << base.get();
  });
  base.reset();
  first.reset();
  const auto attempt = [](const std::string& damaged) {
    return LoadAll(damaged, [](CArchive& ar) {
      Patterned *one = nullptr, *two = nullptr;
      ar >> one;
      try {
        ar >> two;
      } catch (const CArchiveException&) {
        EXPECT_EQ(one ? one->GetCountOfUserObjects() : 0, 0);
        throw;
      }
    });
  };
  EXPECT_TRUE(attempt(bytes));
  for (std::size_t length = 0; length < bytes.size() && !HasFailure(); ++length)
    EXPECT_FALSE(attempt(bytes.substr(0, length))) << length << " of " << bytes.size() << " bytes";
  for (std::size_t at = 0; at < bytes.size() && !HasFailure(); ++at) {
    SCOPED_TRACE(at);
    for (const int change : {1, 2, 4, 8, 128, 255}) {
      std::string damaged = bytes;
      damaged[at] = char(damaged[at] ^ change);
      attempt(damaged);
    }
  }
}
