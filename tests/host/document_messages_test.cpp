// The document's answers to the library's core messages, and the callbacks for the active document.
#include "share/core/document_messages.h"
#include "host/document/active_document.h"
#include "share/core/document_callbacks.h"
#include "tests/host/document_fixture.h"

using namespace kestrova;

namespace {

using DocumentMessages = kvtest::DocumentTest;

TEST_F(DocumentMessages, ReadAndSetTheDocumentsProperties) {
  EXPECT_EQ(GetActiveDocReadStorageUnits(), 38.0f) << "a new document is of the current version";
  SetActiveDocReadStorageUnits(31.6f);
  EXPECT_EQ(GetActiveDocReadStorageUnits(), 31.6f);
  EXPECT_EQ(IsDocumentModified(), 0);
  SetDocumentModifiedFlag(1, nullptr);
  EXPECT_EQ(IsDocumentModified(), 1);
  EXPECT_TRUE(document_.IsModified());
  SetDocumentModifiedFlag(0, &document_);
  EXPECT_EQ(IsDocumentModified(), 0);

  EXPECT_EQ(IsDocumentUnitsMm(), 1);
  document_.SetUnits(kInches);
  EXPECT_EQ(IsDocumentUnitsMm(), 0);
  EXPECT_EQ(GetDocumentUnits(), kInches);
  EXPECT_EQ(IsMetricUnit(), 0);

  EXPECT_EQ(GetDocTitle(), _T("Untitled"));
  document_.SetTitle(_T("part.kvdoc"));
  EXPECT_EQ(GetDocTitle(), _T("part.kvdoc"));
  document_.SetServicePack(_T("SP3"));
  EXPECT_EQ(GetDocServicePack(), _T("SP3"));

  int flag = 0;
  EXPECT_EQ(SetShowExceptionMsgFlag(flag), 1);
  EXPECT_EQ(GetShowExceptionMsgFlag(flag = 7), 1);
  EXPECT_EQ(flag, 0);
}

TEST_F(DocumentMessages, ReportTheShownTree) {
  using enum HostDocument::Tree;
  for (const auto tree : {kFeatures, kOperations, kTools}) {
    document_.SetShownTree(tree);
    EXPECT_EQ(IsFEATTreeActive(), tree == kFeatures);
    EXPECT_EQ(IsOPERTreeActive(), tree == kOperations);
    EXPECT_EQ(IsToolTreeActive(), tree == kTools);
  }
}

TEST_F(DocumentMessages, RemoveACompanionFromTheSelection) {
  ui_QFObject a(&document_), b(&document_);
  document_.Select(&a);
  EXPECT_EQ(RemoveNodeFromSelection(&b), 0) << "it was not selected";
  EXPECT_EQ(RemoveNodeFromSelection(&a), 1);
  EXPECT_TRUE(document_.Selection().empty());
}

TEST_F(DocumentMessages, ReturnZeroForUnknownMessagesAndNull) {
  int value = 7;
  for (const int message : {0, 207, 248, 291}) {
    EXPECT_EQ(SendToActiveDocument(QF_CORE_MESSAGE_ID(message), &value), 0) << message;
    EXPECT_EQ(value, 7) << message;
  }
  for (const int message : {201, 202, 203, 204, 205, 206, 227, 247, 269, 270, 271, 275, 276, 284, 290})
    EXPECT_EQ(SendToActiveDocument(QF_CORE_MESSAGE_ID(message), nullptr), 0) << message;
}

TEST_F(DocumentMessages, GoToTheActiveDocument) {
  EXPECT_EQ(GetActiveDocument(), &document_);
  EXPECT_EQ(qf_getActiveAutoIdHelper(), &document_.Indexer());
  EXPECT_EQ(GetIsDocFullyLoaded(), 1);
  {
    HostDocument other;
    const ActiveDocument active(&other);
    EXPECT_EQ(GetActiveDocument(), &other);
    EXPECT_EQ(GetNextObjectIdCB(), 1u);
    const ActiveDocument none(nullptr);
    EXPECT_EQ(GetNextObjectIdCB(), 0u);
    EXPECT_EQ(qf_getActiveAutoIdHelper(), nullptr);
    EXPECT_EQ(GetIsDocFullyLoaded(), 0);
  }
  EXPECT_EQ(GetActiveDocument(), &document_);
  EXPECT_EQ(GetNextObjectIdCB(), 1u);
  EXPECT_EQ(GetNextObjectIdCB(), 2u);
  document_.FreezeIds(true);
  EXPECT_EQ(GetNextObjectIdCB(), 0u);
}

}  // namespace
