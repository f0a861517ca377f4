// The build's constants, the running product, its edition and its host.
#include "share/env/product_identity.h"

#include <gtest/gtest.h>

#include "share/env/app_env.h"
#include "share/env/registry_access.h"
#include "share/env/registry_keys.h"
#include "share/env/version_info.h"
#include "tests/registered.h"

namespace {

ProductInfo* g_info = nullptr;

class Product : public testing::Test {
 protected:
  Product() {
    g_info = &info_;
    kvtest::Register({.productInfo = [] { return g_info; }});
    RegSettingDeleteValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("EnableKVTarnel"));
  }
  ~Product() override {
    kvtest::Register({});
    SetSldWorksDateCode(-1, _T(""));
    RegSettingDeleteValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("EnableKVTarnel"));
  }

  ProductInfo info_ = {_T("X"), _T("2024.1 SP4"), _T("Y"), _T("Cad"), _T("2023"), _T("5")};
};

}  // namespace

TEST_F(Product, LaterDatesAndVersionsAreGreater) {
  const struct {
    LPCTSTR date;
    int wanted;
  } rows[] = {
      {_T("2024/0716"), 1}, {_T("2024/0715"), 0},    {_T("2024/0714"), 0}, {_T("2023/1231"), 0},
      {_T("2025/0101"), 1}, {_T("2024-07-0800"), 1}, {_T("2025"), 1},      {_T("2024"), 1},
      {_T("abcd/9999"), 0}, {_T("2024/abcd"), 0},    {_T("9"), 0},         {_T(""), 0},
  };
  for (const auto& row : rows) EXPECT_EQ(CKVVersionInfo::IsGreater(row.date), row.wanted) << ToUtf8(CString(row.date));
  EXPECT_EQ(CKVVersionInfo::IsGreater(38.0f), 0);
  EXPECT_EQ(CKVVersionInfo::IsGreater(38.5f), 1);
  EXPECT_EQ(CKVVersionInfo::IsGreater(37.9f), 0);
}

TEST_F(Product, FieldsComeFromTheMainModule) {
  EXPECT_EQ(GetProductInfo(), &info_);
  EXPECT_EQ(GetProductName(), _T("X"));
  EXPECT_EQ(GetProductVersion(), _T("2024.1 SP4"));
  EXPECT_EQ(GetCADName(), _T("Cad"));
  EXPECT_EQ(GetCADVersion(), _T("2023"));
  EXPECT_EQ(GetCADMinorVersion(), _T("5"));
  EXPECT_EQ(GetProductAndVersionString(), _T("X 2024.1 SP4"));
  EXPECT_EQ(GetKVVersionLong(), 2024);
  info_.m_ProductVersion = _T("SP4");
  EXPECT_EQ(GetKVVersionLong(), 0);
  g_info = nullptr;
  EXPECT_EQ(GetProductName(), _T(""));
  EXPECT_EQ(GetProductAndVersionString(), _T(" "));
  EXPECT_EQ(GetKVVersionLong(), 0);
  kvtest::Register({});
  EXPECT_EQ(GetProductInfo(), nullptr);
  EXPECT_EQ(GetCADMinorVersion(), _T(""));
}

TEST_F(Product, TextsNameTheProductAndItsHost) {
  EXPECT_EQ(GetProductSpecificString2(_T("Kestrova for SolidWorks")), _T("X for Y"));
  EXPECT_EQ(GetProductSpecificString2(_T("SOLIDWORKS, Solidworks, kestrova, Kestrovas")),
            _T("Y, Solidworks, kestrova, Xs"));
  info_.m_ProductName = _T("SolidWorks CAM");
  EXPECT_EQ(GetProductSpecificString2(_T("Kestrova")), _T("Y CAM")) << "the product goes in first";
  g_info = nullptr;
  EXPECT_EQ(GetProductSpecificString2(_T("Kestrova for SolidWorks")), _T("Kestrova for SolidWorks"));
}

TEST_F(Product, EditionIsARegistryValue) {
  EXPECT_EQ(GetProductType(), KV_PRODUCT_FULL);
  for (const auto& [value, wanted] : {std::pair(0, 0), {1, 2}, {-1, 2}, {2, 2}}) {
    SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("EnableKVTarnel"), value);
    EXPECT_EQ(GetProductType(), wanted) << value;
    EXPECT_EQ(GetKernelType(), 0) << value;
  }
}

TEST_F(Product, MakersWordFollowsTheEdition) {
  const struct {
    LPCTSTR text, full, oem;
  } rows[] = {
      {_T("Kestrova"), _T("Kestrova"), _T("Brenmark")},
      {_T("Brenmark, Brenmark"), _T("Kestrova, Kestrova"), _T("Brenmark, Brenmark")},
      {_T("Kestrova by Brenmark"), _T("Kestrova by Kestrova"), _T("Kestrova by Brenmark")},
      {_T("kestrova, brenmark"), _T("kestrova, brenmark"), _T("kestrova, brenmark")},
      {_T(""), _T(""), _T("")},
  };
  for (const int oem : {0, 1}) {
    SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("EnableKVTarnel"), oem);
    for (const auto& row : rows) {
      CString text = row.text;
      UpdateStringForTarnel(text);
      EXPECT_EQ(text, oem ? row.oem : row.full) << ToUtf8(CString(row.text));
    }
  }
}

TEST_F(Product, HostRevisionIsTakenApart) {
  const struct {
    LPCTSTR revision;
    int hasPoint;
    long major;
    LPCTSTR minor;
    int isValid;
  } rows[] = {
      {_T("32.1.0"), 1, 32, _T("1.0"), 1},  {_T("33.0.0"), 1, 33, _T("0.0"), 0},
      {_T("31.12.0"), 1, 31, _T("2.0"), 1}, {_T("9.12"), 1, 9, _T("12"), 1},
      {_T("100.1"), 1, 100, _T("00.1"), 0}, {_T(".5"), 1, 0, _T("5"), 1},
      {_T("x.5"), 1, 0, _T(".5"), 1},       {_T("33"), 0, 0, _T("kept"), 1},
      {_T(""), 0, 0, _T("kept"), 1},        {_T("99999999999.0"), 1, 2147483647, _T("9999999999.0"), 0},
  };
  EXPECT_EQ(GetSldWorksDateCode(), -1);
  for (const auto& row : rows) {
    SCOPED_TRACE(ToUtf8(CString(row.revision)));
    SetSldWorksDateCode(20240101, row.revision);
    EXPECT_EQ(GetSldWorksDateCode(), 20240101);
    EXPECT_EQ(GetSldWorksRevisionNumber(), row.revision);
    long major = 7;
    EXPECT_EQ(GetSldWorksRevisionNumber(major), row.hasPoint);
    EXPECT_EQ(major, row.major);
    CString minor = _T("kept");
    EXPECT_EQ(GetSldWorksMinorRevisionNumber(minor), row.hasPoint);
    EXPECT_EQ(minor, row.minor);
    EXPECT_EQ(IsValidSWVersion(), row.isValid);
  }
}

TEST_F(Product, PathsComeFromTheEnvironment) {
  CloseAppEnv();
  RegDeleteTreeW(HKEY_CURRENT_USER, kVersionKey);
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, kVersionKey);
  const CString install = AppEnv()->GetKVDrive() + AppEnv()->GetKVPath();
  EXPECT_EQ(CKVVersionInfo::OnKestrovaAllPDFFilePath(), install + _T("lang\\English\\Manuals\\"));
  EXPECT_EQ(CKVVersionInfo::OnKestrovaTaskPaneINIFFilePath(), install + _T("KVTaskPaneWebCtrl.ini"));
  EXPECT_EQ(CKVVersionInfo::GetTaskPaneTabStringName(), _T("KVTASKPANE.KVTaskPaneWebCtrlVS2019.6"));
  RegDeleteTreeW(HKEY_CURRENT_USER, kVersionKey);
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, kVersionKey);
  CloseAppEnv();
}
