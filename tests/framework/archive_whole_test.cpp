// References that are stored completely or not at all.
#include "tests/framework/archive_fixture.h"

using namespace kvtest;

namespace {

// Not serial, so storing an object raises.
class TForeign : public CObject {};

// Stores null instead of a reference that cannot be stored.
void StoreOrNull(CArchive& ar, const CObject* object) {
  try {
    ar.WriteObjectWhole(object);
  } catch (const CArchiveException& failure) {
    EXPECT_EQ(failure.m_cause, CArchiveException::badClass);
    ar.WriteObject(nullptr);
  }
}

}  // namespace

TEST(ArchiveWhole, FailureInsideTakesBackBytesAndNumbers) {
  // The small buffer is flushed in the middle of the object, the large one is not.
  for (const int buffer : {128, 1 << 16}) {
    for (const std::size_t textLength : {3u, 200u, 5000u}) {
      TForeign foreign;
      TNode before(1), broken(2), after(4);
      auto* inner = new TNode(3);
      broken.m_Text = CString(TCHAR('x'), int(textLength));
      broken.m_Children.AddTail(inner);
      broken.m_Children.AddTail(&foreign);
      const auto write = [&](bool withBroken) {
        return Store(
            [&](CArchive& ar) {
              ar << &before;
              if (withBroken) {
                StoreOrNull(ar, &broken);
              } else {
                ar.WriteObject(nullptr);
              }
              ar << &after << inner << &before;
            },
            buffer);
      };
      EXPECT_EQ(Hex(write(true)), Hex(write(false))) << buffer << ", " << textLength;
      broken.m_Children.RemoveAt(broken.m_Children.GetTailPosition());
    }
  }
}

TEST(ArchiveWhole, ObjectThatFailedForItsClassIsNotTriedAgain) {
  TForeign foreign;
  TNode broken(2);
  broken.m_Children.AddTail(&foreign);
  const std::string bytes = Store([&](CArchive& ar) {
    StoreOrNull(ar, &broken);
    broken.m_Children.RemoveAll();  // it could be stored now
    StoreOrNull(ar, &broken);
    ar << &broken;
  });
  EXPECT_EQ(bytes.substr(0, 4), std::string(4, '\0'));
  EXPECT_GT(bytes.size(), 4u);
}

TEST(ArchiveWhole, FailureOfTheFileIsNotTakenForOneOfTheObject) {
  BYTE block[16];
  CMemFile small(block, sizeof block);
  CArchive ar(&small, CArchive::store, 128);
  TNode node(1);
  node.m_Text = CString(TCHAR('x'), 1000);
  EXPECT_THROW(ar.WriteObjectWhole(&node), CFileException);
  ar.Abort();
}
