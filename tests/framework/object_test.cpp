// Run-time classes: derivation, casts, creation by name, and schema numbers in archives.
#include "framework/object.h"

#include <memory>
#include <optional>

#include "framework/file.h"
#include "tests/framework/archive_fixture.h"

namespace {

using namespace kvtest;

TEST(RuntimeClass, IsFoundByItsExactNameKnowsItsBasesAndMakesObjects) {
  const CRuntimeClass* record = CRuntimeClass::FromName("TDerived");
  EXPECT_EQ(record, RUNTIME_CLASS(TDerived));
  EXPECT_EQ(record->m_nObjectSize, int(sizeof(TDerived)));
  EXPECT_TRUE(record->IsDerivedFrom(RUNTIME_CLASS(CObject)) && record->IsDerivedFrom(record));
  EXPECT_FALSE(RUNTIME_CLASS(TBase)->IsDerivedFrom(record) || record->IsDerivedFrom(nullptr));
  for (const char* name : {"tderived", "TDerive", "TDerived ", "", "CMemFile"})
    EXPECT_EQ(CRuntimeClass::FromName(name), nullptr) << name;
  EXPECT_EQ(CRuntimeClass::FromName(nullptr), nullptr);
  const std::unique_ptr<CObject> node(CRuntimeClass::CreateObject("TNode"));  // its constructor is protected
  EXPECT_TRUE(node->IsKindOf(RUNTIME_CLASS(TNode)));
  EXPECT_EQ(RUNTIME_CLASS(CMemFile)->CreateObject(), nullptr);
}

TEST(RuntimeClass, FirstOfANameAnswersUntilItGoes) {
  CRuntimeClass first = {"TTwice", 1, 1, nullptr, nullptr}, second = first;
  std::optional<CRuntimeClassEntry> one(std::in_place, &first), two(std::in_place, &second);
  EXPECT_EQ(CRuntimeClass::FromName("TTwice"), &first);
  one.reset();
  EXPECT_EQ(CRuntimeClass::FromName("TTwice"), &second);
  two.reset();
  EXPECT_EQ(CRuntimeClass::FromName("TTwice"), nullptr);
}

TEST(Object, CastsOnlyToWhatItIs) {
  TDerived derived;
  TLink link;
  CObject* object = &derived;
  EXPECT_EQ(DYNAMIC_DOWNCAST(TBase, object), &derived);
  EXPECT_EQ(STATIC_DOWNCAST(TDerived, object), &derived);
  EXPECT_EQ(DYNAMIC_DOWNCAST(TBase, &link), nullptr);
  EXPECT_EQ(DYNAMIC_DOWNCAST(TBase, static_cast<CObject*>(nullptr)), nullptr);
  EXPECT_TRUE(link.IsSerializable());
  EXPECT_FALSE(CMemFile().IsSerializable());
  CDumpContext context;
  link.Dump(context);
  EXPECT_EQ(context.m_Text, _T("TLink"));
}

// ---- schemas

const std::string kDerived = Bytes("FF FF 02 00 08 00") + "TDerived";  // class 1
const std::string kBase = Bytes("FF FF 03 00 05 00") + "TBase";        // class 3

TEST(Schema, OlderLevelIsReadAsOldAndStaysSoInItsArchive) {
  const std::string oldBase = Bytes("FF FF 02 00 05 00") + "TBase";
  const std::string bytes = kDerived + Bytes("01 80") + oldBase + Bytes("01 00 03 00") +  // no m_New
                            Bytes("01 80 01 80 03 80 07 00 09 00");  // by numbers: the old schema again
  Load(bytes, [](CArchive& ar) {
    for (const WORD own : {WORD(3), WORD(9)}) {
      const std::unique_ptr<CObject> loaded(ar.ReadObject(RUNTIME_CLASS(TDerived)));
      const auto& derived = static_cast<TDerived&>(*loaded);
      EXPECT_EQ(derived.m_SeenBase, 2u);
      EXPECT_EQ(derived.m_New, 0);
      EXPECT_EQ(derived.m_Own, own);
    }
  });
}

TEST(Schema, AnswersOnceAndIsBackBehindANestedReference) {
  Store([](CArchive& ar) {
    ar.SerializeClass(RUNTIME_CLASS(TBase));
    EXPECT_EQ(ar.GetObjectSchema(), UINT(-1)) << "storing has no schema to answer";
  });
  const std::string link = Bytes("FF FF 01 00 05 00") + "TLink" + Bytes("00 00");
  Load(kBase + link, [](CArchive& ar) {
    ar.SerializeClass(RUNTIME_CLASS(TBase));
    delete ar.ReadObject(RUNTIME_CLASS(TLink));
    EXPECT_EQ(ar.GetObjectSchema(), 3u);
    EXPECT_EQ(ar.GetObjectSchema(), UINT(-1));
    ar.SetObjectSchema(8);
    EXPECT_EQ(ar.GetObjectSchema(), 8u);
  });
}

TEST(Schema, RecordOfAnotherLevelRaises) {
  EXPECT_EQ(CauseOf(kDerived, [](CArchive& ar) { ar.SerializeClass(RUNTIME_CLASS(TBase)); }),
            CArchiveException::badClass);
  EXPECT_EQ(CauseOf(Bytes("00 00"), [](CArchive& ar) { ar.SerializeClass(RUNTIME_CLASS(TBase)); }),
            CArchiveException::badIndex);
}

}  // namespace
