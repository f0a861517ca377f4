// Damaged and hostile archives: each raises the exception for its damage, allocates no more than its size justifies,
// and leaves no object behind.
#include <memory>

#include "framework/array.h"
#include "tests/framework/archive_fixture.h"

namespace kvtest {

// Takes 2 KiB of stack more per object to load than to store.
class TWideLink : public TLink {
  DECLARE_SERIAL(TWideLink)

 public:
  void Serialize(CArchive& ar) override {
    if (ar.IsLoading()) return LoadWide(ar);
    ++stored;
    TLink::Serialize(ar);
  }
  inline static int stored = 0;  // objects of which storing has begun

 private:
  [[gnu::noinline]] void LoadWide(CArchive& ar) {
    volatile char fields[2048];
    fields[0] = 0;
    TLink::Serialize(ar);
    fields[sizeof fields - 1] = fields[0];
  }
};
IMPLEMENT_SERIAL(TWideLink, TLink, 1)

}  // namespace kvtest

namespace {

using namespace kvtest;

void ReadAndDelete(CArchive& ar) { delete ar.ReadObject(nullptr); }

const std::string kNewLink = Bytes("FF FF 01 00 05 00") + "TLink";
const std::string kNewNode = Bytes("FF FF 01 00 05 00") + "TNode";
const std::string kNode = Bytes("07 00 00 00 FF FE FF 00");  // number and text

TEST(ArchiveHostile, EachDamageHasItsCause) {
  const std::tuple<const char*, std::string, int> rows[] = {
      {"unknown class", Bytes("FF FF 01 00 04 00") + "None", CArchiveException::badClass},
      {"class name with a terminator in it", Bytes("FF FF 01 00 06 00") + "TLink" + '\0', CArchiveException::badClass},
      {"class name of 64 bytes", Bytes("FF FF 01 00 40 00") + std::string(64, 'x'), CArchiveException::badClass},
      {"class name of 65,535 bytes that are not there", Bytes("FF FF 01 00 FF FF"), CArchiveException::badClass},
      {"empty class name", Bytes("FF FF 01 00 00 00"), CArchiveException::badClass},
      {"another schema of a class that is not versionable", Bytes("FF FF 02 00 05 00") + "TLink",
       CArchiveException::badSchema},
      {"later schema of a versionable class", Bytes("FF FF 04 00 05 00") + "TBase", CArchiveException::badSchema},
      {"object number never given", Bytes("05 00"), CArchiveException::badIndex},
      {"class number never given", Bytes("05 80"), CArchiveException::badIndex},
      {"class number 0", Bytes("00 80"), CArchiveException::badIndex},
      {"long class number 0", Bytes("FF 7F 00 00 00 80"), CArchiveException::badIndex},
      {"long object number 0", Bytes("FF 7F 00 00 00 00"), CArchiveException::badIndex},
      {"long object number never given", Bytes("FF 7F FE FF FF 3F"), CArchiveException::badIndex},
      {"class's number as an object", kNewLink + Bytes("01 00"), CArchiveException::badIndex},
      {"object's number as a class", kNewLink + Bytes("02 80"), CArchiveException::badIndex},
      {"object of another class than asked for",
       kNewNode + kNode + Bytes("00 00 01 80") + kNode + Bytes("00 00") + kNewLink, CArchiveException::badClass},
      {"number of an object of another class", kNewNode + kNode + Bytes("01 00") + kNewLink + Bytes("00 00 04 00"),
       CArchiveException::badClass},
      {"owned child met before", kNewNode + kNode + Bytes("01 00 02 00"), CArchiveException::badIndex},
      {"more children than bytes", kNewNode + kNode + Bytes("FF FF FE FF FF FF 00 00"), CArchiveException::endOfFile},
  };
  const int before = live_nodes;
  for (const auto& [name, bytes, cause] : rows) {
    EXPECT_EQ(CauseOf(bytes, ReadAndDelete), cause) << name;
    EXPECT_EQ(live_nodes, before) << name;
  }
}

TEST(ArchiveHostile, CountBeyondTheDataAllocatesNothing) {
  CArray<int, int> numbers;
  const auto read = [&](CArchive& ar) { numbers.Serialize(ar); };
  EXPECT_EQ(CauseOf(Bytes("FF FF FF FF FF 7F 01 00 00 00"), read), CArchiveException::endOfFile);
  EXPECT_EQ(CauseOf(Bytes("FF FF FF FF FF FF FF FF FF FF FF FF FF 7F"), read), CArchiveException::endOfFile);
  EXPECT_TRUE(numbers.IsEmpty());
}

// Reading while storing and storing while reading raise with the archive's file name.
TEST(ArchiveHostile, WrongDirectionRaisesWithTheFileName) {
  CMemFile file;
  file.SetFilePath(_T("C:\\part.kv"));
  CArchive out(&file, CArchive::store), in(&file, CArchive::load);
  DWORD value = 0;
  const auto expect = [](int cause, const std::string& reason, const auto& use) {
    try {
      use();
      ADD_FAILURE() << reason;
    } catch (const CArchiveException& failure) {
      EXPECT_EQ(failure.m_cause, cause);
      EXPECT_EQ(failure.m_strFileName, _T("C:\\part.kv"));
      EXPECT_EQ(failure.what(), "C:\\part.kv: " + reason);
    }
  };
  expect(CArchiveException::writeOnly, "read from an archive that is being written", [&] { out >> value; });
  expect(CArchiveException::readOnly, "write to an archive that is being read", [&] { in << value; });
  in.Close();
  EXPECT_THROW(in >> value, CArchiveException);
}

// The bytes of a chain of objects, each inside the one before.
std::string Chain(int links) {
  std::string bytes = kNewLink;
  for (int i = 1; i < links; ++i) bytes.append("\x01\x80", 2);
  return bytes.append(2, '\0');
}

// scripts/test.sh skips tests named OfAMillion under the thread sanitizer.
TEST(ArchiveHostile, LoadingAChainOfTenThousandWorksAndOfAMillionRaisesAndLeavesNothing) {
  const int before = live_nodes;
  Load(Chain(10'000), ReadAndDelete);
  EXPECT_EQ(CauseOf(Chain(1'000'000), ReadAndDelete), CArchiveException::genericException);
  EXPECT_EQ(live_nodes, before);
}

template <class Link>
std::unique_ptr<Link> ChainOf(int links) {
  auto first = std::make_unique<Link>();
  for (int i = 1; i < links; ++i) {
    auto* link = new Link;
    link->m_pNext = std::exchange(first->m_pNext, link);
  }
  return first;
}

TEST(ArchiveHostile, StoringAChainOfAMillionRaisesAndTheLongestThatIsStoredLoads) {
  const auto store = [](int links) {
    const auto first = ChainOf<TWideLink>(links);
    return Store([&](CArchive& ar) { ar << first.get(); });
  };
  EXPECT_EQ(CauseOf([&] { store(1'000'000); }), CArchiveException::genericException);
  Load(store(TWideLink::stored), ReadAndDelete);
}

TEST(ArchiveHostile, MessagesNameTheClassAndTheByteWhereItsRecordBegins) {
  const std::pair<std::string, std::string> rows[] = {
      {Bytes("FF FF 01 00 04 00") + "N\x1BNE", "object of an unknown or unexpected class: N?NE (byte 0)"},
      {Bytes("FF FF 01 00 40 00"), "object of an unknown or unexpected class: a name of 64 bytes (byte 0)"},
      {kNewNode + kNode + Bytes("01 00 FF FF 09 00 05 00") + "TBase",
       "object of a version that this one cannot read: TBase has schema 9, 3 at most (byte 21)"},
      {Bytes("FF FF 07 00 05 00") + "TNode",
       "object of a version that this one cannot read: TNode has schema 7, 1 is expected (byte 0)"},
      {kNewLink + kNewNode, "object of an unknown or unexpected class: TNode instead of TLink (byte 22)"},
  };
  for (const auto& [bytes, text] : rows) {
    try {
      Load(bytes, ReadAndDelete);
      ADD_FAILURE() << text;
    } catch (const CArchiveException& failure) {
      EXPECT_EQ(failure.what(), text);
    }
  }
}

}  // namespace
