// The exact text of a node's and an error flag's dump.
#include <gtest/gtest.h>

#include "share/objects/object.h"
#include "tests/objects/dumped.h"
#include "tests/objects/test_document.h"

using kvtest::Address;
using kvtest::Dumped;

namespace {

class StampedNode : public QFObject {
 public:
  CString GetClassNameW() override { return _T("StampedNode"); }
  StampedNode() {
    m_Label = _T("Bohrung %s ü");
    SetStamps({_T("maker"), _T("01/02/2003::04:05"), _T("06/07/2008::09:10"), _T("changer")});
  }
};

}  // namespace

TEST(NodeDump, FilledNodeIsExact) {
  kvtest::TestDocument document;
  document.nextId = 4294967295u;
  QFObject user, held;
  StampedNode named;
  StampedNode node;  // destroyed before its users
  node.AddToUserObjectsList(&named, 0);
  node.AddToUserObjectsList(&user, 0);
  node.AddToUserObjectsList(&held, 1);
  node.GetObjectId();
  node.SetState(LOCKED);
  node.SetCompareResult(PROFILE_NODEPTH_MATCH);
  node.SetMergeInProgress(1);
  node.DumpData(nullptr);
  node.DumpUserObjs(nullptr);
  EXPECT_EQ(Dumped([&](FILE* file) { node.DumpData(file); }),
            kvtest::DumpBanner("QFObject Start") + "\n m_Label: Bohrung %s ü" + "\n m_CreatedBy: maker" +
                "\n m_DateCreated: 01/02/2003::04:05" + "\n m_LastModified: 06/07/2008::09:10" +
                "\n m_LastModifiedBy: changer" + "\n m_ObjectId: -1" + "\n m_iState : LOCKED" +
                "\n Address of this: " + Address(&node) + "\n Address of pObj: " + Address(&named) +
                "\n strObjName: StampedNode" + "\n Address of pObj: " + Address(&user) + "\n strObjName: QFObject" +
                "\n m_CompareRes : PROFILE_NODEPTH_MATCH" + "\n <---- m_pPatternMngr Start ---->" +
                "\n <---- m_pPatternMngr End ---->" + "\n m_bIsMerged : NO" + "\n m_bMergeInProgress : YES" +
                kvtest::DumpBanner("QFObject End"));
}

TEST(NodeDump, StatesAndResultsHaveTheirTexts) {
  const auto contains = [](QFObject& node, const std::string& line) {
    return Dumped([&](FILE* file) { node.DumpData(file); }).find("\n" + line + "\n") != std::string::npos;
  };
  QFObject node;
  const char* const states[] = {"ACTIVE", "SUPPRESSED", "DELETED", "LOCKED"};
  for (int state = 0; state < 4; ++state) {
    node.SetState(QFObjState(state));
    EXPECT_TRUE(contains(node, std::string(" m_iState : ") + states[state])) << state;
  }
  const char* const results[] = {
      "NO_MATCH", "COMPLETE_MATCH", "PROFILE_NODEPTH_MATCH", "PARTIAL_PROFILE_MATCH", "PARTIAL_MATCH_SUBSET",
      "Nothing"};
  for (int result = 0; result < 6; ++result) {
    node.SetCompareResult(COMPARE_RESULT(result));
    EXPECT_TRUE(contains(node, std::string(" m_CompareRes : ") + results[result])) << result;
  }
}

TEST(NodeDump, UsersAreExact) {
  StampedNode user;
  QFObject owner, plain, node;
  user.SetOwner(&owner);
  node.AddToUserObjectsList(&user, 0);
  node.AddToUserObjectsList(&plain, 0);
  EXPECT_EQ(Dumped([&](FILE* file) { node.DumpUserObjs(file); }),
            "\nDumping for ======User Objects====== Start\n\n TotalUserObjects: 2\n ----\n UserObjNo: 0"
            "\n ObjName: Bohrung %s ü\n ObjectClassName : StampedNode,  Address of pObj: " +
                Address(&user) + "\n ObjectsOwnerClassName : QFObject,  Address of ObjectsOwner: " + Address(&owner) +
                "\n ----\n UserObjNo: 1\n ObjName: \n ObjectClassName : QFObject,  Address of pObj: " +
                Address(&plain) + "\nDumping for ======User Objects====== End\n");
}

TEST(FlaggedErrorDump, IsExact) {
  const auto text = [](const std::string& type, const std::string& id, const std::string& flags) {
    return kvtest::DumpBanner("CFlaggedError Start") + "\n m_eFlaggedErrorType : " + type + "\n m_bFlag : " + flags +
           "\n m_iErrorStringID: " + id + "\n m_bCanClearError : " + flags + "\n m_bAllowEditing : " + flags +
           kvtest::DumpBanner("CFlaggedError End");
  };
  CFlaggedError error(17, FLAGGED_ERROR_STOCK);
  EXPECT_EQ(Dumped([&](FILE* file) { error.DumpData(file); }), text("STOCK", "17", "NO"));
  error.SetFlag();
  error.SetCanClearError(1);
  error.SetAllowEditingFlag(1);
  error.SetErrorString(-1);
  error.SetFlagErrorType(FLAGGED_ERROR_NORMAL);
  EXPECT_EQ(Dumped([&](FILE* file) { error.DumpData(file); }), text("NORMAL", "-1", "YES"));
  error.SetFlagErrorType(FlaggedErrorEnum(2));
  EXPECT_EQ(Dumped([&](FILE* file) { error.DumpData(file); }), text("Nothing", "-1", "YES"));
  error.DumpData(nullptr);
}
