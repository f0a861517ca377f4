// Core messages: the number that each function sends to the document, and its result.
#include <gtest/gtest.h>

#include <fmt/format.h>

#include <functional>

#include "share/core/document_messages.h"
#include "share/objects/object.h"
#include "tests/registered.h"

namespace {

QFObject* g_document = nullptr;

// Records the messages. Answers 7, and fills the value by its type.
class Listener : public QFObject {
 public:
  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG extra) override {
    EXPECT_EQ(extra, 0);
    sent += fmt::format("{} ", int(message));
    address = argument;
    auto* value = reinterpret_cast<void*>(std::uintptr_t(argument));
    switch (int(message)) {
      case 201: *static_cast<float*>(value) = units; break;
      case 202: units = *static_cast<float*>(value); break;
      case 203:
      case 276: number = *static_cast<int*>(value); break;
      case 227:
      case 290: *static_cast<CString*>(value) = text; break;
      case 284: break;
      default: *static_cast<int*>(value) = number; break;
    }
    return 7;
  }

  std::string sent;
  float units = 0;
  int number = 0;
  CString text;
  ULONGLONG address = 0;
};

class Messages : public testing::Test {
 protected:
  void SetUp() override {
    kvtest::Register({.document = [] { return g_document; }});
  }
  void TearDown() override {
    g_document = nullptr;
    kvtest::Register({});
  }
};

}  // namespace

TEST_F(Messages, NumbersAndTextsComeFromTheDocument) {
  Listener document;
  document.number = 42;
  document.text = _T("42");
  const struct {
    const char* sent;
    std::function<int()> get;
  } rows[] = {
      {"204 ", IsDocumentModified},
      {"205 ", IsDocumentUnitsMm},
      {"206 ", GetDocumentUnits},
      {"269 ", IsFEATTreeActive},
      {"270 ", IsOPERTreeActive},
      {"271 ", IsToolTreeActive},
      {"227 ", [] { return std::atoi(ToUtf8(GetDocTitle()).c_str()); }},
      {"290 ", [] { return std::atoi(ToUtf8(GetDocServicePack()).c_str()); }},
  };
  for (const auto& row : rows) {
    g_document = nullptr;
    EXPECT_EQ(row.get(), 0) << row.sent << "without a document";
    g_document = &document;
    document.sent.clear();
    EXPECT_EQ(row.get(), 42);
    EXPECT_EQ(document.sent, row.sent);
  }
}

TEST_F(Messages, StorageVersionZeroCountsAsCurrent) {
  EXPECT_EQ(GetActiveDocReadStorageUnits(), 38.0f) << "no document";
  SetActiveDocReadStorageUnits(6.0f);
  Listener document;
  g_document = &document;
  for (const auto& [answer, expected] :
       {std::pair{0.0f, 38.0f}, {0.9e-6f, 38.0f}, {-0.9e-6f, 38.0f}, {1.1e-6f, 1.1e-6f}, {-1.0f, -1.0f}}) {
    SetActiveDocReadStorageUnits(answer);
    EXPECT_EQ(GetActiveDocReadStorageUnits(), expected);
  }
  EXPECT_TRUE(document.sent.starts_with("202 201 202 201 ")) << document.sent;
}

TEST_F(Messages, StorageVersionIsReadOnceWithinAScope) {
  Listener document;
  g_document = &document;
  SetActiveDocReadStorageUnits(31.6f);
  {
    const ReadStorageUnitsScope scope;
    document.sent.clear();
    EXPECT_EQ(GetActiveDocReadStorageUnits(), 31.6f);
    EXPECT_EQ(document.sent, "");
    SetActiveDocReadStorageUnits(6.0f);
    const ReadStorageUnitsScope inner;
    EXPECT_EQ(GetActiveDocReadStorageUnits(), 6.0f);
    EXPECT_EQ(document.sent, "202 201 ");
  }
  EXPECT_EQ(GetActiveDocReadStorageUnits(), 6.0f);
  EXPECT_EQ(document.sent, "202 201 201 ");
}

TEST_F(Messages, ModifiedFlagGoesToTheDocumentGivenOrToTheActiveOne) {
  SetDocumentModifiedFlag(1, nullptr);
  Listener active, other;
  SetDocumentModifiedFlag(5, &other);
  EXPECT_EQ(other.number, 5) << "with no active document";
  g_document = &active;
  SetDocumentModifiedFlag(1, nullptr);
  SetDocumentModifiedFlag(2, &other);
  EXPECT_EQ(active.number, 1);
  EXPECT_EQ(other.number, 2);
  EXPECT_EQ(active.sent + other.sent, "203 203 203 ");
}

TEST_F(Messages, ExceptionFlagAndSelectionGiveTheDocumentsAnswer) {
  ui_QFObject node(nullptr);
  int flag = 3;
  EXPECT_EQ(RemoveNodeFromSelection(&node), 0);
  Listener document;
  g_document = &document;
  EXPECT_EQ(SetShowExceptionMsgFlag(flag), 7);
  EXPECT_EQ(document.number, 3);
  document.number = 4;
  EXPECT_EQ(GetShowExceptionMsgFlag(flag), 7);
  EXPECT_EQ(flag, 4);
  EXPECT_EQ(RemoveNodeFromSelection(&node), 7);
  EXPECT_EQ(document.address, reinterpret_cast<std::uintptr_t>(&node)) << "the pointer itself";
  EXPECT_EQ(RemoveNodeFromSelection(nullptr), 0);
  EXPECT_EQ(document.sent, "276 275 284 ");
}

TEST_F(Messages, UnitsAreMetricByTheirCode) {
  EXPECT_EQ(IsDocumentUnitsMetric(), 1) << "code 0";
  Listener document;
  g_document = &document;
  for (int& code = document.number = -1; code < 12; ++code) {
    const bool metric = code == 0 || code == 1 || code == 2 || code == 6 || code == 7 || code == 8;
    EXPECT_EQ(IsDocumentUnitsMetric(), metric) << code;
  }
}

TEST_F(Messages, UnknownMessageLeavesTheValueAndGivesZero) {
  QFObject silent;
  g_document = &silent;
  int value = 9;
  EXPECT_EQ(SendToActiveDocument(QF_CORE_GET_DOCUMENT_UNITS, &value), 0);
  EXPECT_EQ(value, 9);
}
