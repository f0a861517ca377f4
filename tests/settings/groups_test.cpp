// The behaviour of the product's groups beyond their tables: the toolbar's repair, duplicate names, hardware rendering,
// archives of older releases.
#include "framework/archive.h"
#include "share/settings/application_settings.h"
#include "share/settings/document_settings.h"
#include "tests/objects/record_bytes.h"
#include "tests/registry_calls.h"

namespace {

using kvtest::LoadedObject, kvtest::StoredObject;

constexpr LPCTSTR kToolbar = _T("Software\\Zemlor\\Kestrova\\Toolbar");
constexpr LPCTSTR kDisplay = _T("Software\\Zemlor\\Kestrova\\Display");

int IntOf(const QFSettingsKey& key, LPCTSTR name) {
  int value = -1;
  key.GetValue(name, value);
  return value;
}

// The bytes of a name in a value's record.
std::string Recorded(const std::string& name) {
  return kvtest::Bytes("FF FE FF") + char(name.size()) + kvtest::Wide(Text(name.begin(), name.end()));
}
// Replaces a name by an unknown one of the same length: "Feature" becomes "#eature".
std::string WithForeign(std::string bytes, const std::string& name) {
  const std::size_t at = bytes.find(Recorded(name));
  EXPECT_NE(at, std::string::npos) << name;
  bytes[at + 4] = '#';
  return bytes;
}

class SettingsGroups : public testing::Test {
 protected:
  void SetUp() override { RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software")); }
};

}  // namespace

// ---- application

TEST_F(SettingsGroups, ConstructionWritesOnlyTheToolbar) {
  const QFAppSettings settings;
  const kvtest::Key product(HKEY_CURRENT_USER, _T("Software\\Zemlor\\Kestrova"));
  EXPECT_EQ(kvtest::SubKeys(product), std::vector<kvtest::Text>{_T("Toolbar")});
  std::string expected;
  for (const int number : {0, 1, 1, 1, 2, 1, 3, 1, 4, 1, 5, 1, 6, 1, 7, 1, 8, 1, 9, 1, 11, 1})
    expected += kvtest::Raw(number);
  EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kToolbar, _T("ToolbarButtons")), (kvtest::Stored{REG_BINARY, expected}));
}

TEST_F(SettingsGroups, StoredToolbarGrowsByButtonsThatAreOn) {
  const std::pair<int, std::vector<int>> rows[] = {
      // stored numbers, each 7; numbers added to them
      {0, {0, 1, 1, 1, 2, 1, 3, 1, 4, 1, 5, 1, 6, 1, 7, 1, 8, 1, 9, 1, 10, 1}},
      {20, {10, 1}},
      {21, {10, 1}},
      {22, {}},
      {30, {}}};
  for (const auto& [stored, added] : rows) {
    std::string before, after;
    for (int i = 0; i < stored; ++i) before += kvtest::Raw(7);
    after = before;
    for (const int number : added) after += kvtest::Raw(number);
    kvtest::Put(HKEY_CURRENT_USER, kToolbar, _T("ToolbarButtons"), {REG_BINARY, before});
    const QFToolbarSettings settings;
    EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kToolbar, _T("ToolbarButtons")), (kvtest::Stored{REG_BINARY, after}))
        << stored << " numbers";
    CArray<int, int> inMemory;
    settings.GetValue(_T("ToolbarButtons"), inMemory);
    EXPECT_EQ(inMemory.GetSize() * 4, LONGLONG(after.size())) << stored << " numbers";
  }
}

TEST_F(SettingsGroups, RegistryKeepsTheFirstDeclaredOfADuplicateName) {
  QFAppSettings settings;
  EXPECT_EQ(IntOf(settings, _T("StockDispType")), 3);
  settings.SetValue(_T("StockDispType"), 9);
  EXPECT_EQ(settings.SaveValuesToRegistry(), 1);
  EXPECT_EQ(settings.RestoreValuesFromRegistry(), 0) << "the feed colours' result";
  EXPECT_EQ(IntOf(settings, _T("StockDispType")), 1) << "the change is lost";
  kvtest::Put(HKEY_CURRENT_USER, kDisplay, _T("StockDispType"), {REG_DWORD, kvtest::Raw(5)});
  settings.RestoreValuesFromRegistry();
  settings.SaveValuesToRegistry();
  EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kDisplay, _T("StockDispType")), (kvtest::Stored{REG_DWORD, kvtest::Raw(5)}))
      << "both values have the stored number";
}

TEST_F(SettingsGroups, HardwareRenderingIsOneOrTwo) {
  QFAppSettings settings;
  for (const auto& [before, after] : {std::pair{0, 1}, {1, 1}, {2, 2}, {3, 1}}) {
    settings.GetKey(_T("Display"))->SetValue(_T("UseHardwareRendering"), before);
    settings.GetKey(_T("Simulation"))->SetValue(_T("UseHardwareRendering"), 7);
    settings.ResetTheOpenGLOptionsValue();
    EXPECT_EQ(IntOf(*settings.GetKey(_T("Display")), _T("UseHardwareRendering")), after) << before;
    EXPECT_EQ(IntOf(*settings.GetKey(_T("Simulation")), _T("UseHardwareRendering")), 7) << before;
  }
}

TEST_F(SettingsGroups, GroupsWithoutARunTimeClassDontComeBackFromAnArchive) {
  EXPECT_EQ(QFToolingSettings().GetRuntimeClass(), RUNTIME_CLASS(QFSettingsKey));
  EXPECT_EQ(QFKVUtilitiesSettings().GetRuntimeClass(), RUNTIME_CLASS(QFSettingsKey));
  QFAppSettings settings;
  settings.SetValue(_T("SquareNeckType"), 7);
  settings.SetValue(_T("MESLibVer"), 12);
  const auto loaded = LoadedObject<QFAppSettings>(StoredObject(settings));
  EXPECT_EQ(IntOf(*loaded, _T("MESLibVer")), 12);
  EXPECT_EQ(IntOf(*loaded, _T("SquareNeckType")), 1);
  EXPECT_EQ(loaded->GetKey(_T("Oper_Filter22"))->GetPath(),
            _T("Software\\Zemlor\\Kestrova\\Operations\\Oper_Filter22"));
}

// ---- document

TEST_F(SettingsGroups, DocumentTreeComesBackFromItsArchive) {
  QFDocSettings settings;
  settings.SetValue(_T("TurnFeatureCreationStyle"), 5);
  settings.SetValue(_T("MaxFacetDeviation"), 0.001);
  const std::string bytes = StoredObject(settings);
  const auto loaded = LoadedObject<QFDocSettings>(bytes);
  EXPECT_EQ(IntOf(*loaded, _T("TurnFeatureCreationStyle")), 5);
  double target = 0;
  loaded->GetValue(_T("MaxFacetDevTarget"), target);
  EXPECT_EQ(target, 1e-05) << "schema 2 stores the target's own value";
  EXPECT_EQ(StoredObject(*loaded), bytes);
  ASSERT_NE(loaded->GetKey(_T("Colors")), nullptr);
  EXPECT_EQ(loaded->GetKey(_T("Colors"))->GetRuntimeClass(), RUNTIME_CLASS(QFColorSettings));
  EXPECT_EQ(loaded->GetKey(_T("Colors"))->GetPath(), _T("Software\\Zemlor\\Kestrova\\Colors"));
}

TEST_F(SettingsGroups, FirstSchemaOfSimulationGivesTheTargetItsValues) {
  QFSimulationSettings settings;
  settings.SetValue(_T("MaxFacetDeviation"), 0.001);
  settings.SetValue(_T("TessellationQuality"), 50);
  std::string bytes = StoredObject(settings);
  bytes[2] = 1;  // the schema, after the tag of a new class
  for (const bool known : {true, false}) {
    if (!known) bytes = WithForeign(WithForeign(bytes, "MaxFacetDeviation"), "TessellationQuality");
    const auto loaded = LoadedObject<QFSimulationSettings>(bytes);
    double deviation = 0;
    loaded->GetValue(_T("MaxFacetDevTarget"), deviation);
    EXPECT_EQ(deviation, known ? 0.001 : 1e-05);
    EXPECT_EQ(IntOf(*loaded, _T("TessQualityTarget")), known ? 50 : 100);
  }
}

TEST_F(SettingsGroups, NodeDisplayRemembersThatItWasSerialized) {
  QFNodeDisplaySettings settings;
  EXPECT_EQ(settings.m_bSerialized, 0);
  const std::string bytes = StoredObject(settings);
  EXPECT_EQ(settings.m_bSerialized, 1);
  EXPECT_EQ(LoadedObject<QFNodeDisplaySettings>(bytes)->m_bSerialized, 1);
}
