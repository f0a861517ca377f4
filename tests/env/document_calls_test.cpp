// The main module's callbacks, each of which has a default for an empty slot, and the messages to its documents: the
// number that each function sends, and its result.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <functional>

#include "share/core/document_messages.h"
#include "share/env/setting_queries.h"
#include "share/objects/object.h"
#include "share/settings/settings_key.h"
#include "tests/registered.h"

namespace {

QFSettingsKey* g_settings = nullptr;
QFObject* g_document = nullptr;
int g_languageCalls = 0;

template <class T, int kNumber>
T* Fixed() {
  return reinterpret_cast<T*>(std::uintptr_t(kNumber));
}

void RegisterNumbers() {
  QFShareRegisterDocCBK(
      [] { return 101; }, [] { return 102ul; }, Fixed<QFObject, 103>, [](unsigned, char*&) { return 104; },
      [](LONGLONG step) { return int(step >> 32); }, [] { return 106; }, [] { return g_settings; },
      [] { return g_settings; }, Fixed<QFFeedColorsSettings, 109>, Fixed<ProductInfo, 110>,
      [](unsigned id) { return CString(TCHAR('a' + id)); }, [](short* flag) { *flag *= 12; }, [] { return 113; },
      [] { return CString(_T("stock")); }, [](QFObject* document) { return document; },
      [] {
        ++g_languageCalls;
        return CString(_T("german"));
      },
      [] { return 117; }, [] { return 118; });
}

std::uintptr_t Number(const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }

// The results of all functions without a setting, with the numbers of their slots. Pointers print as numbers.
std::string Results() {
  short alerts = 7;
  GetAppDisplayAlerts(&alerts);
  GetAppDisplayAlerts(nullptr);
  return fmt::format(
      "1:{} 2:{} 3:{} 5:{} 6:{} 9:{} 10:{} 11:{} 12:{} 13:{} 14:{} 15:{} 16:{} 17:{} 18:{}", IsMetricUnit(),
      GetNextObjectIdCB(), Number(GetActiveDocument()), QFProgressCallback(LONGLONG(105) << 32), IsUserJobCancelled(),
      Number(GetAppFeedColorSettingsCB()), Number(GetProductInfoCB()), ToUtf8(GetProductSpecificString(2)), alerts,
      IsCrashReportPermittedCB(), ToUtf8(GetStockGroupName()), Number(GetCorrespondingDoc(Fixed<QFObject, 115>())),
      ToUtf8(GetSolidWorksLangName()), gGetAppSilentModeFlag(), GetIsDocFullyLoaded());
}

class Callbacks : public testing::Test {
 protected:
  void SetUp() override {
    Callbacks::TearDown();
    g_settings = nullptr;
    g_languageCalls = 0;
  }
  void TearDown() override {
    qfshare_init(nullptr, nullptr, nullptr, nullptr);
    kvtest::Register({});
    SetSolidWorksLangName(_T(""));
  }
};

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
  Messages() {
    g_document = nullptr;
    kvtest::Register({.document = [] { return g_document; }});
  }
  ~Messages() override { kvtest::Register({}); }
};

}  // namespace

TEST_F(Callbacks, EmptySlotGivesItsDefault) {
  EXPECT_EQ(Results(), "1:1 2:0 3:0 5:0 6:0 9:0 10:0 11: 12:-1 13:0 14: 15:0 16:english 17:0 18:0");
  EXPECT_EQ(GetActiveDocSettingsCB(), nullptr);
  EXPECT_EQ(GetAppSettingsCB(), nullptr);
  EXPECT_EQ(GetLastopernDlgtab(), 0);
  EXPECT_EQ(GetSimulationSettingsFacetDeviation(), -1.0);
}

TEST_F(Callbacks, EveryFunctionCallsItsSlot) {
  RegisterNumbers();
  EXPECT_EQ(Results(),
            "1:101 2:102 3:103 5:105 6:106 9:109 10:110 11:c 12:-12 13:113 14:stock 15:115 16:german 17:117 18:118");
}

TEST_F(Callbacks, SecondInitReplacesAllHelpers) {
  const auto helpers = [] {
    return fmt::format("{} {} {} {}", Number(qf_getActiveAutoIdHelper()), Number(qf_getActivePPMHelper()),
                       Number(qf_getActiveBasePPMHelper()), Number(qf_getActiveCorePPMHelper()));
  };
  EXPECT_EQ(qfshare_init(Fixed<QFObjectIndexerHelper, 1>, Fixed<QFObject, 2>, Fixed<QFObject, 3>, Fixed<QFObject, 4>),
            1);
  EXPECT_EQ(helpers(), "1 2 3 4");
  EXPECT_EQ(qfshare_init(nullptr, Fixed<QFObject, 5>, nullptr, nullptr), 1);
  EXPECT_EQ(helpers(), "0 5 0 0");
}

TEST_F(Callbacks, HostLanguageIsReadOnce) {
  RegisterNumbers();
  for (int call = 0; call < 2; ++call) EXPECT_EQ(GetSolidWorksLangName(), _T("german"));
  SetSolidWorksLangName(_T("french"));
  EXPECT_EQ(GetSolidWorksLangName(), _T("french"));
  EXPECT_EQ(g_languageCalls, 1);
}

TEST_F(Callbacks, SettingsAreReadFromTheirKeys) {
  QFSettingsKey root(_T("root"), _T(""));
  auto* display = new QFSettingsKey(_T("Display"), _T(""));
  auto* simulation = new QFSettingsKey(_T("Simulation"), _T(""));
  display->AddValue(_T("OpenOperationDialogToLastPage"), 3);
  display->AddValue(_T("CollapseOperationOnPreview"), 4);
  simulation->AddValue(_T("MaxFacetDeviation"), 0.0);
  root.AddKey(display);
  root.AddKey(simulation);
  g_settings = &root;
  RegisterNumbers();
  EXPECT_EQ(GetLastopernDlgtab(), 3);
  EXPECT_EQ(GetCollapseOnPreview(), 4);
  for (const auto& [stored, expected] :
       {std::pair{0.00005, 0.00005}, {0.0001, -1.0}, {0.5, -1.0}, {0.0, 0.0}, {-0.5, -0.5}, {-2.0, -2.0}}) {
    root.SetValue(_T("MaxFacetDeviation"), stored);
    EXPECT_EQ(GetSimulationSettingsFacetDeviation(), expected) << stored;
  }
}

TEST_F(Messages, NumbersAndTextsComeFromTheDocument) {
  Listener document;
  document.number = 42;
  document.text = _T("42");
  const std::pair<const char*, std::function<int()>> rows[] = {
      {"204 ", IsDocumentModified},
      {"205 ", IsDocumentUnitsMm},
      {"206 ", GetDocumentUnits},
      {"269 ", IsFEATTreeActive},
      {"270 ", IsOPERTreeActive},
      {"271 ", IsToolTreeActive},
      {"227 ", [] { return std::atoi(ToUtf8(GetDocTitle()).c_str()); }},
      {"290 ", [] { return std::atoi(ToUtf8(GetDocServicePack()).c_str()); }},
  };
  for (const auto& [sent, get] : rows) {
    g_document = nullptr;
    EXPECT_EQ(get(), 0) << sent << "without a document";
    g_document = &document;
    document.sent.clear();
    EXPECT_EQ(get(), 42);
    EXPECT_EQ(document.sent, sent);
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

TEST_F(Messages, UnitsAreMetricByTheirCodeAndWithoutAnAnswer) {
  EXPECT_EQ(IsDocumentUnitsMetric(), 1) << "code 0";
  Listener document;
  g_document = &document;
  std::string metric;
  for (int& code = document.number = -1; code < 12; ++code) metric += char('0' + IsDocumentUnitsMetric());
  EXPECT_EQ(metric, "0111000111000") << "codes -1 to 11";
  QFObject silent;
  g_document = &silent;
  int value = 9;
  EXPECT_EQ(SendToActiveDocument(QF_CORE_GET_DOCUMENT_UNITS, &value), 0);
  EXPECT_EQ(value, 9);
}
