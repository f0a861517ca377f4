// The build's constants, the running product, its edition and its host.
#include "share/env/product_identity.h"

#include <fmt/format.h>

#include "share/core/version_info.h"
#include "tests/env/clean_environment.h"

namespace {

ProductInfo* g_info = nullptr;

class Product : public kvtest::CleanEnvironment {
 protected:
  void SetUp() override {
    CleanEnvironment::SetUp();
    g_info = &info_;
    kvtest::Register({.productInfo = [] { return g_info; }});
    SetSldWorksDateCode(-1, _T(""));
  }

  ProductInfo info_ = {_T("X"), _T("2024.1 SP4"), _T("Y"), _T("Cad"), _T("2023"), _T("5")};
};

}  // namespace

TEST_F(Product, LaterDatesAndVersionsAreGreater) {
  const std::pair<LPCTSTR, int> rows[] = {{_T("2024/0716"), 1},    {_T("2024/0715"), 0}, {_T("2023/1231"), 0},
                                          {_T("2025/0101"), 1},    {_T("2024"), 1},      {_T("abcd/9999"), 0},
                                          {_T("2024-07-0800"), 1}, {_T(""), 0}};
  for (const auto& [date, isGreater] : rows)
    EXPECT_EQ(CKVVersionInfo::IsGreater(date), isGreater) << ToUtf8(CString(date));
  EXPECT_EQ(CKVVersionInfo::IsGreater(38.0f), 0);
  EXPECT_EQ(CKVVersionInfo::IsGreater(38.5f), 1);
}

TEST_F(Product, FieldsComeFromTheMainModule) {
  EXPECT_EQ(GetProductInfo(), &info_);
  EXPECT_EQ(GetProductAndVersionString(), _T("X 2024.1 SP4"));
  EXPECT_EQ(GetCADName() + _T(" ") + GetCADVersion() + _T(".") + GetCADMinorVersion(), _T("Cad 2023.5"));
  EXPECT_EQ(GetKVVersionLong(), 2024);
  info_.m_ProductVersion = _T("SP4");
  EXPECT_EQ(GetKVVersionLong(), 0);
  g_info = nullptr;
  EXPECT_EQ(GetProductAndVersionString(), _T(" "));
  EXPECT_EQ(GetKVVersionLong(), 0);
}

TEST_F(Product, TextsNameTheProductAndItsHost) {
  EXPECT_EQ(GetProductSpecificString2(_T("Kestrova for SolidWorks")), _T("X for Y"));
  EXPECT_EQ(GetProductSpecificString2(_T("SOLIDWORKS, Solidworks, kestrova, Kestrovas")),
            _T("Y, Solidworks, kestrova, Xs"));
  info_.m_ProductName = _T("SolidWorks CAM");
  EXPECT_EQ(GetProductSpecificString2(_T("Kestrova")), _T("Y CAM")) << "the product's name is replaced first";
  g_info = nullptr;
  EXPECT_EQ(GetProductSpecificString2(_T("Kestrova for SolidWorks")), _T("Kestrova for SolidWorks"));
}

TEST_F(Product, RegistrySelectsTheEditionAndItsMakersWord) {
  const std::tuple<LPCTSTR, LPCTSTR, LPCTSTR> rows[] = {
      {_T("Kestrova"), _T("Kestrova"), _T("Brenmark")},
      {_T("Kestrova by Brenmark"), _T("Kestrova by Kestrova"), _T("Kestrova by Brenmark")},
      {_T("kestrova, brenmark"), _T("kestrova, brenmark"), _T("kestrova, brenmark")},
  };
  EXPECT_EQ(GetProductType(), KV_PRODUCT_FULL);
  for (const int stored : {0, 1, -1, 2}) {
    SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("EnableKVTarnel"), stored);
    EXPECT_EQ(GetProductType(), stored ? KV_PRODUCT_TARNEL : KV_PRODUCT_FULL) << stored;
    for (const auto& [before, full, oem] : rows) {
      CString text = before;
      UpdateStringForTarnel(text);
      EXPECT_EQ(text, stored ? oem : full) << ToUtf8(CString(before));
    }
  }
}

TEST_F(Product, HostRevisionIsSplitAtItsFirstDot) {
  const std::pair<LPCTSTR, std::string> rows[] = {
      {_T("32.1.0"), "32.1.0: 1 32, 1 1.0, 1"},
      {_T("33.0.0"), "33.0.0: 1 33, 1 0.0, 0"},
      {_T("31.12.0"), "31.12.0: 1 31, 1 2.0, 1"},
      {_T(".5"), ".5: 1 0, 1 5, 1"},
      {_T("33"), "33: 0 0, 0 kept, 1"},
      {_T("99999999999.0"), "99999999999.0: 1 2147483647, 1 9999999999.0, 0"}};
  EXPECT_EQ(GetSldWorksDateCode(), -1);
  for (const auto& [revision, expected] : rows) {
    SetSldWorksDateCode(20240101, revision);
    EXPECT_EQ(GetSldWorksDateCode(), 20240101);
    long major = 7;
    CString minor = _T("kept");
    const int hasMajor = GetSldWorksRevisionNumber(major), hasMinor = GetSldWorksMinorRevisionNumber(minor);
    EXPECT_EQ(fmt::format("{}: {} {}, {} {}, {}", ToUtf8(GetSldWorksRevisionNumber()), hasMajor, major, hasMinor,
                          ToUtf8(minor), IsValidSWVersion()),
              expected);
  }
}
