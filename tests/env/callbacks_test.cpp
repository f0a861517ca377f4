// The callback table: each function calls its slot, or returns its default for an empty slot.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "share/core/document_callbacks.h"
#include "share/env/setting_queries.h"
#include "share/settings/settings_key.h"
#include "tests/registered.h"

namespace {

QFSettingsKey* g_settings = nullptr;
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

// The results of all functions without a setting, with the numbers of their slots. Pointers print as numbers.
std::string Results() {
  const auto number = [](const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); };
  short alerts = 7;
  GetAppDisplayAlerts(&alerts);
  GetAppDisplayAlerts(nullptr);
  return fmt::format(
      "1:{} 2:{} 3:{} 5:{} 6:{} 9:{} 10:{} 11:{} 12:{} 13:{} 14:{} 15:{} 16:{} 17:{} 18:{}", IsMetricUnit(),
      GetNextObjectIdCB(), number(GetActiveDocument()), QFProgressCallback(LONGLONG(105) << 32), IsUserJobCancelled(),
      number(GetAppFeedColorSettingsCB()), number(GetProductInfoCB()), ToUtf8(GetProductSpecificString(2)), alerts,
      IsCrashReportPermittedCB(), ToUtf8(GetStockGroupName()), number(GetCorrespondingDoc(Fixed<QFObject, 115>())),
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
  EXPECT_EQ(qfshare_init(Fixed<QFObjectIndexerHelper, 1>, Fixed<QFObject, 2>, Fixed<QFObject, 3>, Fixed<QFObject, 4>),
            1);
  EXPECT_EQ(qf_getActiveAutoIdHelper(), (Fixed<QFObjectIndexerHelper, 1>()));
  EXPECT_EQ(qf_getActivePPMHelper(), (Fixed<QFObject, 2>()));
  EXPECT_EQ(qf_getActiveBasePPMHelper(), (Fixed<QFObject, 3>()));
  EXPECT_EQ(qf_getActiveCorePPMHelper(), (Fixed<QFObject, 4>()));
  EXPECT_EQ(qfshare_init(nullptr, Fixed<QFObject, 5>, nullptr, nullptr), 1);
  EXPECT_EQ(qf_getActiveAutoIdHelper(), nullptr);
  EXPECT_EQ(qf_getActivePPMHelper(), (Fixed<QFObject, 5>()));
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
