// Taking back a failed load: what it had made goes, what others own stays, nothing goes twice.
#include <memory>
#include <string>
#include <vector>

#include "tests/framework/archive_fixture.h"

namespace kvtest {

static std::vector<std::string> events;

// Reads a list of commands: 'o' an owned reference, 'p' a plain one, 'd' deletes the object owned last, 'c' an owned
// one whose failure is caught, '.' the end, any other raises. Its destructor deletes what it owns and asks what it
// points to for its class.
//
// Not in a nameless namespace: a compiler that knows all classes below this one calls its destructor directly, past
// what stands in the place of an object that has gone.
class TScript : public CObject {
  DECLARE_SERIAL(TScript)

 public:
  TScript() { ++live_nodes; }
  // The two may have been destroyed ahead of this: that is what is tested, and what a sanitizer would call wrong.
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
        case 'c': try { ar >> m_pPlain;
          } catch (const CArchiveException&) {
            m_pPlain = nullptr;
          }
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

  // Reads one object from a text in which [ opens the record of a new object, and a digit stands for a reference.
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
      {"[nAo[nB.do[nC.!", {"B", "A", "C"}},  // A itself deletes B before the failure
      // B comes through A's plain pointer; C, which is younger, owns it and deletes it once more.
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
  // Within one call, and to an object of an earlier call that its owner has deleted.
  EXPECT_EQ(CauseOf(Script("[nAo[nB.dp3."), [](CArchive& ar) { ar.ReadObject(nullptr); }), CArchiveException::badIndex);
  const auto read = [](CArchive& ar) {
    delete ar.ReadObject(nullptr);
    ar.ReadObject(nullptr);
  };
  EXPECT_EQ(CauseOf(Script("[nA.2"), read), CArchiveException::badIndex);
}

TEST_F(ArchiveRollback, AddressUsedAgainIsAnotherObject) {
  // Each B has a good chance of the address of the one before.
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

// A holds B, which it owns, and points to C, of which D is a part: nobody owns C.
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

}  // namespace
