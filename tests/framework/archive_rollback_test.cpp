// Failed loads and stores: a failed load deletes each of its objects once and keeps the objects of others; a failed
// store removes its bytes and numbers from the archive, whose table is compared with a plain map.
#include <memory>
#include <random>
#include <vector>

#include "framework/internal/stored_numbers.h"
#include "tests/framework/archive_fixture.h"
#include "tests/scratch.h"

namespace kvtest {

static std::vector<std::string> events;

// Reads a list of commands: 'n' and a letter set the name, 'o' reads an owned reference, 'p' a plain one, 'd' deletes
// the last owned object, 'c' reads a reference and catches a failure, '.' ends, and others raise. The destructor
// deletes the owned objects and asks the plain one for its class.
//
// Not in a nameless namespace: a compiler that knows all derived classes calls the destructor directly, not the one of
// the CObject that replaces a deleted object.
class TScript : public CObject {
  DECLARE_SERIAL(TScript)

 public:
  TScript() { ++live_nodes; }
  // Objects may be destroyed already here: that is what the test is for, and what a sanitizer would report.
  __attribute__((no_sanitize("vptr"))) ~TScript() override {
    --live_nodes;
    events.push_back(m_Name);
    if (m_pPlain && m_pPlain->IsKindOf(RUNTIME_CLASS(TScript))) events.push_back(m_Name + " sees one");
    for (TScript* owned : m_Owned) delete owned;
  }

  void Serialize(CArchive& ar) override {
    BYTE command = 0;
    for (ar >> command; command != '.'; ar >> command) {
      switch (command) {
        case 'n':
          ar >> command;
          m_Name = char(command);
          break;
        case 'o': ar >> m_Owned.emplace_back(); break;
        case 'p': ar >> m_pPlain; break;
        case 'd':
          delete m_Owned.back();
          m_Owned.pop_back();
          break;
        case 'c':
          if (CauseOf([&] { ar >> m_pPlain; }) != CArchiveException::none) m_pPlain = nullptr;
          break;
        default: AfxThrowArchiveException(CArchiveException::badSchema, ar.m_strFileName);
      }
    }
  }

  std::string m_Name;
  std::vector<TScript*> m_Owned;
  TScript* m_pPlain = nullptr;
};
IMPLEMENT_SERIAL(TScript, CObject, 1)

}  // namespace kvtest

namespace {

using namespace kvtest;

class ArchiveRollback : public testing::Test {
 protected:
  void SetUp() override { events.clear(); }
  void TearDown() override { EXPECT_EQ(live_nodes, before_); }

  // Converts a text to bytes: [ starts a new object, a digit is a reference to the object with that number.
  static std::string Script(std::string_view text) {
    std::string bytes;
    bool met = false;
    for (const char c : text) {
      if (c == '[') {
        bytes += met ? Bytes("01 80") : Bytes("FF FF 01 00 07 00") + "TScript";
        met = true;
      } else if (c >= '0' && c <= '9') {
        bytes += {char(c - '0'), '\0'};
      } else {
        bytes += c;
      }
    }
    return bytes;
  }

  int before_ = live_nodes;
};

TEST_F(ArchiveRollback, DeletesEachObjectOnceAndOwnersFirst) {
  const std::pair<const char*, std::vector<std::string>> rows[] = {
      {"[nAo[nBo[nC.o[nD!", {"A", "B", "C", "D"}},
      {"[nAo[nB.do[nC.!", {"B", "A", "C"}},  // A deletes B itself before the failure
      // A refers to B by its plain pointer; C, created later, owns B and deletes it again.
      {"[nAp[nB.p[nCo3p3.!", {"A", "A sees one", "B", "C"}},
  };
  for (const auto& [text, expected] : rows) {
    events.clear();
    EXPECT_EQ(CauseOf(Script(text), [](CArchive& ar) { ar.ReadObject(nullptr); }), CArchiveException::badSchema);
    EXPECT_EQ(events, expected) << text;
  }
}

TEST_F(ArchiveRollback, KeepsObjectsOfEarlierCallsAndOfOtherArchives) {
  std::unique_ptr<CObject> first;
  Load(Script("[nA.") + Bytes("02 00"), [&](CArchive& ar) {
    first.reset(ar.ReadObject(nullptr));
    std::unique_ptr<CObject> second;
    const auto read = [&](CArchive& other) {
      second.reset(other.ReadObject(nullptr));
      other.ReadObject(nullptr);
    };
    EXPECT_EQ(CauseOf(Script("[nB.[nCp2!"), read), CArchiveException::badSchema);
    EXPECT_EQ(events, (std::vector<std::string>{"C", "C sees one"}));
    EXPECT_EQ(live_nodes, before_ + 2);
    EXPECT_EQ(ar.ReadObject(nullptr), first.get()) << "the other archive goes on";
  });
  first.reset();
}

TEST_F(ArchiveRollback, ReferenceToAnObjectThatIsGoneRaises) {
  // In one call, and to an object of an earlier call that its owner has deleted.
  EXPECT_EQ(CauseOf(Script("[nAo[nB.dp3."), [](CArchive& ar) { ar.ReadObject(nullptr); }), CArchiveException::badIndex);
  const auto read = [](CArchive& ar) {
    delete ar.ReadObject(nullptr);
    ar.ReadObject(nullptr);
  };
  EXPECT_EQ(CauseOf(Script("[nA.2"), read), CArchiveException::badIndex);
}

TEST_F(ArchiveRollback, AddressUsedAgainIsAnotherObject) {
  // Each later object probably gets the address of the deleted one.
  const auto read = [](CArchive& ar) {
    std::unique_ptr<CObject> owner(ar.ReadObject(nullptr));
    EXPECT_NE(static_cast<TScript&>(*owner).m_pPlain, nullptr);
  };
  EXPECT_EQ(CauseOf(Script("[nAo[nB.do[nC.do[nD.p5."), read), CArchiveException::none);
}

TEST_F(ArchiveRollback, CaughtFailureInsideLetsTheRestLoad) {
  const auto read = [](CArchive& ar) {
    const std::unique_ptr<CObject> owner(ar.ReadObject(nullptr));
    auto& script = static_cast<TScript&>(*owner);
    EXPECT_EQ(script.m_pPlain, nullptr);
    ASSERT_EQ(script.m_Owned.size(), 1u);
    EXPECT_EQ(script.m_Owned[0]->m_Name, "C");
  };
  EXPECT_EQ(CauseOf(Script("[nAc9o[nC.."), read), CArchiveException::none);
}

// A owns B and points to C, which contains D: nobody owns C.
TEST_F(ArchiveRollback, UnwantedObjectsOfAWholeLoadGoAloneAndOnce) {
  Load(Script("[nAo[nB.p[nCo[nD..."), [&](CArchive& ar) {
    const std::unique_ptr<CObject> root(ar.ReadObject(nullptr));
    auto& script = static_cast<TScript&>(*root);
    script.m_pPlain = nullptr;
    std::string asked;
    const auto unwanted = [&](const CObject* object) {
      asked += static_cast<const TScript*>(object)->m_Name;
      return asked.back() > 'B';
    };
    EXPECT_EQ(ar.DeleteLoaded(unwanted), 2u);
    EXPECT_EQ(asked, "ABCD");
    EXPECT_EQ(events, (std::vector<std::string>{"C", "D"})) << "D through its owner, and not once more";
    EXPECT_EQ(ar.DeleteLoaded(unwanted), 0u) << "they are gone";
    EXPECT_EQ(live_nodes, before_ + 2);
  });
}

// ---- references that are stored completely or not at all

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
      const auto write = [&](const CObject* object) {
        return Store(
            [&](CArchive& ar) {
              ar << &before;
              StoreOrNull(ar, object);
              ar << &after << inner << &before;
            },
            buffer);
      };
      EXPECT_EQ(Hex(write(&broken)), Hex(write(nullptr))) << buffer << ", " << textLength;
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

// ---- the numbers of stored objects, for adjacent and scattered addresses

const void* Key(std::uintptr_t address) { return reinterpret_cast<const void*>(address); }

TEST(StoredNumbers, AgreesWithAMap) {
  std::mt19937_64 random(kvtest::PrintedSeed());
  const auto address = [&random] {
    const std::uintptr_t group = random() % 3 == 0 ? random() % (std::uintptr_t(1) << 44) : 1000 + random() % 20;
    return group << 12 | (random() % 512) << 3;
  };
  StoredNumbers numbers;
  std::unordered_map<std::uintptr_t, DWORD> expected;
  for (int i = 0; i < 20000; ++i) {
    const std::uintptr_t at = address();
    const auto known = expected.find(at);
    ASSERT_EQ(numbers.NumberOf(Key(at)), known == expected.end() ? 0 : known->second);
    if (known != expected.end()) continue;
    const auto next = DWORD(expected.size() + 1);
    ASSERT_EQ(numbers.Enter(Key(at)), next);
    expected[at] = next;
    if (random() % 2000 != 0) continue;
    const auto kept = DWORD(random() % (next + 1));
    numbers.RollBack(kept);
    std::erase_if(expected, [kept](const auto& item) { return item.second > kept; });
  }
  EXPECT_EQ(numbers.GetCount(), expected.size());
  for (const auto& [at, number] : expected) EXPECT_EQ(numbers.NumberOf(Key(at)), number);
}

}  // namespace
