// The callback table: what is called, and what stands in when nothing is registered.
#include <gtest/gtest.h>

#include "share/env/document_callbacks.h"
#include "share/env/document_messages.h"
#include "share/settings/settings_key.h"
#include "tests/registered.h"

namespace {

QFSettingsKey* g_settings = nullptr;
int g_asked = 0;

void RegisterNothing() {
  qfshare_init(nullptr, nullptr, nullptr, nullptr);
  kvtest::Register({});
}

template <class T, int kNumber>
T* Fixed() {
  return reinterpret_cast<T*>(std::uintptr_t(kNumber));
}

void RegisterNumbers() {
  QFShareRegisterDocCBK(
      [] { return 101; }, [] { return 102ul; }, Fixed<QFObject, 103>, [](unsigned, char*&) { return 104; },
      [](LONGLONG step) { return int(step >> 32); }, [] { return 106; }, [] { return g_settings; },
      [] { return g_settings; }, Fixed<QFFeedColorsSettings, 109>, Fixed<ProductInfo, 110>,
      [](unsigned id) { return CString(TCHAR('a' + id)); }, [](short* flag) { *flag /= -1; }, [] { return 113; },
      [] { return CString(_T("stock")); }, [](QFObject* document) { return document; },
      [] {
        ++g_asked;
        return CString(_T("german"));
      },
      [] { return 117; }, [] { return 118; });
}

class Callbacks : public testing::Test {
 protected:
  void SetUp() override {
    RegisterNothing();
    SetSolidWorksLangName(_T(""));
    g_settings = nullptr;
    g_asked = 0;
  }
  void TearDown() override { RegisterNothing(); }
};

}  // namespace

TEST_F(Callbacks, NothingRegisteredHasItsResults) {
  EXPECT_EQ(qf_getActiveAutoIdHelper(), nullptr);
  EXPECT_EQ(qf_getActivePPMHelper(), nullptr);
  EXPECT_EQ(IsMetricUnit(), 1);
  EXPECT_EQ(GetNextObjectIdCB(), 0u);
  EXPECT_EQ(GetActiveDocument(), nullptr);
  EXPECT_EQ(QFProgressCallback(5), 0);
  EXPECT_EQ(IsUserJobCancelled(), 0);
  EXPECT_EQ(GetActiveDocSettingsCB(), nullptr);
  EXPECT_EQ(GetAppSettingsCB(), nullptr);
  EXPECT_EQ(GetAppFeedColorSettingsCB(), nullptr);
  EXPECT_EQ(GetProductInfoCB(), nullptr);
  EXPECT_EQ(GetProductSpecificString(5), _T(""));
  short flag = 7;
  GetAppDisplayAlerts(&flag);
  GetAppDisplayAlerts(nullptr);
  EXPECT_EQ(flag, -1);
  EXPECT_EQ(IsCrashReportPermittedCB(), 0);
  EXPECT_EQ(GetStockGroupName(), _T(""));
  EXPECT_EQ(GetSolidWorksLangName(), _T("english"));
  EXPECT_EQ(gGetAppSilentModeFlag(), 0);
  EXPECT_EQ(GetIsDocFullyLoaded(), 0);
  EXPECT_EQ(GetActiveDocReadStorageUnits(), 38.0f);
  EXPECT_EQ(GetLastopernDlgtab(), 0);
  EXPECT_EQ(GetSimulationSettingsFacetDeviation(), -1.0);
}

TEST_F(Callbacks, EverySlotIsReadThroughItsFunction) {
  RegisterNumbers();
  QFObject* const document = Fixed<QFObject, 103>();
  EXPECT_EQ(IsMetricUnit(), 101);
  EXPECT_EQ(GetNextObjectIdCB(), 102u);
  EXPECT_EQ(GetActiveDocument(), document);
  EXPECT_EQ(QFProgressCallback(LONGLONG(105) << 32), 105);
  EXPECT_EQ(IsUserJobCancelled(), 106);
  EXPECT_EQ(GetAppFeedColorSettingsCB(), (Fixed<QFFeedColorsSettings, 109>()));
  EXPECT_EQ(GetProductInfoCB(), (Fixed<ProductInfo, 110>()));
  EXPECT_EQ(GetProductSpecificString(2), _T("c"));
  short flag = 0;
  GetAppDisplayAlerts(&flag);
  EXPECT_EQ(flag, 1) << "the slot sees -1";
  EXPECT_EQ(IsCrashReportPermittedCB(), 113);
  EXPECT_EQ(GetStockGroupName(), _T("stock"));
  EXPECT_EQ(GetCorrespondingDoc(document), document);
  EXPECT_EQ(gGetAppSilentModeFlag(), 117);
  EXPECT_EQ(GetIsDocFullyLoaded(), 118);
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

TEST_F(Callbacks, HostLanguageIsAskedForOnce) {
  RegisterNumbers();
  EXPECT_EQ(GetSolidWorksLangName(), _T("german"));
  EXPECT_EQ(GetSolidWorksLangName(), _T("german"));
  EXPECT_EQ(g_asked, 1);
  SetSolidWorksLangName(_T("french"));
  EXPECT_EQ(GetSolidWorksLangName(), _T("french"));
  EXPECT_EQ(g_asked, 1);
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
  for (const auto& [stored, expected] : {std::pair{0.00005, 0.00005},
                                         {0.0001, -1.0},
                                         {0.5, -1.0},
                                         {0.0, 0.0},
                                         {-0.5, -0.5},
                                         {-1.0, -1.0},
                                         {-2.0, -2.0}}) {
    root.SetValue(_T("MaxFacetDeviation"), stored);
    EXPECT_EQ(GetSimulationSettingsFacetDeviation(), expected) << stored;
  }
}
