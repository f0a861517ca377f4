// Names, order, types and defaults of both trees, value by value.
#include <cstdlib>

#include "framework/resources.h"
#include "platform/files.h"
#include "platform/resources.h"
#include "share/settings/application_settings.h"
#include "share/settings/document_settings.h"
#include "tests/folders.h"
#include "tests/golden_settings.h"
#include "tests/registry_calls.h"

namespace {

using Json = nlohmann::json;

Json ToJson(auto number) { return Json(number); }
Json ToJson(const CString& text) { return ToUtf8(text); }
Json ToJson(const CTime& time) { return time.GetTime(); }
Json ToJson(const CPoint& point) { return {point.x, point.y}; }
Json ToJson(const CRect& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }
Json ToJson(const CArray<int, int>& numbers) { return std::vector<int>(numbers.begin(), numbers.end()); }

template <class Value>
void AddRow(CObject* item, const char* type, Json& row) {
  const auto* value = dynamic_cast<Value*>(item);
  if (!value) return;
  row["name"] = ToUtf8(value->GetName());
  row["type"] = type;
  row["value"] = row["default"] = ToJson(value->GetValue());
}

// Adds a row for each value of the key and of its sub-keys, in the order of declaration.
void Collect(const QFSettingsKey& key, Json& rows) {
  const auto* group = dynamic_cast<const SettingsGroup*>(&key);
  if (!group) return;  // feed colours have no defaults
  for (POSITION at = key.GetList().GetTailPosition(); at;) {
    CObject* item = key.GetList().GetPrev(at);
    if (const auto* below = DYNAMIC_DOWNCAST(QFSettingsKey, item)) {
      Collect(*below, rows);
      continue;
    }
    Json row = {{"group", ToUtf8(group->GetGroupClassName())}, {"path", ToUtf8(key.GetPath())}};
    AddRow<QFIntValue>(item, "int", row);
    AddRow<QFDoubleValue>(item, "double", row);
    AddRow<QFColorValue>(item, "colour", row);
    AddRow<QFStringValue>(item, "string", row);
    AddRow<QFTimeValue>(item, "time", row);
    AddRow<QFPointValue>(item, "point", row);
    AddRow<QFRectValue>(item, "rect", row);
    AddRow<QFIntArrayValue>(item, "int array", row);
    rows.push_back(row);
  }
}

void ExpectGolden(const QFSettingsKey& tree, const std::string& name, std::size_t count) {
  const Json golden = kvtest::GoldenSettings<Json>(name);
  EXPECT_EQ(golden["tree"], name);
  const Json& wanted = golden["values"];
  Json found;
  Collect(tree, found);
  ASSERT_EQ(wanted.size(), count);
  ASSERT_EQ(found.size(), count);
  for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(found[i], wanted[i]) << "value " << i;
}

}  // namespace

TEST(SettingsGolden, ApplicationTreeHasItsNamesTypesAndDefaults) {
  RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software"));
  SetEnvironmentVariableW(_T("TMPDIR"), _T("/tmp"));
  SetEnvironmentVariableW(_T("TZ"), _T("UTC"));
  const Text path = ProductPathFromSystem(kvtest::LibraryFile("lang/English/KVRESu.DLL").string());
  const HMODULE english = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  ASSERT_NE(english, nullptr);
  {
    const CDynLinkLibrary texts(nullptr, english);
    ExpectGolden(QFAppSettings(), "application", 678);
  }
  FreeLibrary(english);
}

TEST(SettingsGolden, DocumentTreeHasItsNamesTypesAndDefaults) { ExpectGolden(QFDocSettings(), "document", 192); }
