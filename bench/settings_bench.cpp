// Settings: reading one value of a tree by name against a hash map and against QSettings, and restoring and saving a
// tree of 700 values.
#include <QSettings>
#include <filesystem>
#include <unordered_map>

#include "bench/ratio.h"
#include "platform/process.h"
#include "share/settings/settings_key.h"

namespace {

constexpr int kKeySize = 50;  // values in each sub-key

CString NameOf(int i) {
  CString name;
  name.Format(_T("SettingsValueNumber%d"), i);
  return name;
}

// A tree of that many integers in sub-keys, named in the order of their numbers.
void Fill(QFSettingsKey& root, int count) {
  for (int i = 0; i < count;) {
    CString name;
    name.Format(_T("Key%d"), i);
    auto* key = new QFSettingsKey(name, _T("Software\\SettingsBench\\") + name);
    for (const int end = std::min(count, i + kKeySize); i < end; ++i) key->AddValue(NameOf(i), i);
    root.AddKey(key);
  }
}

void BenchGetValue(kvbench::Table& table, int count) {
  QFSettingsKey root(_T("Root"), _T("Software\\SettingsBench"));
  Fill(root, count);
  std::vector<CString> names;
  std::vector<std::u16string> texts;
  std::vector<QString> qtNames;
  std::unordered_map<std::u16string, int> map;
  QSettings settings("bench.ini", QSettings::IniFormat);
  for (int i = 0; i < count; ++i) {
    names.push_back(NameOf(i));
    texts.emplace_back(names.back().View());
    qtNames.push_back(QString::fromStdU16String(texts.back()));
    map.emplace(texts.back(), i);
    settings.setValue(qtNames.back(), i);
  }
  const auto step = [count](int& at) { return at = int((unsigned(at) * 7919u + 1u) % unsigned(count)); };
  int a = 0, b = 0, c = 0, value = 0;
  const auto ours = [&] {
    root.GetValue(names[std::size_t(step(a))], value);
    kvbench::Keep(value);
  };
  for (int i = 0; i < 2; ++i) ours();  // the index is made at the second search, outside the clock
  table.Pair({.name = "GetValue", .size = std::size_t(count), .peer = "std::unordered_map", .goal = 3.0}, ours,
             [&] { kvbench::Keep(map.find(texts[std::size_t(step(b))])->second); });
  table.Pair({.name = "GetValue", .size = std::size_t(count), .peer = "QSettings::value", .goal = 1.0}, ours,
             [&] { kvbench::Keep(settings.value(qtNames[std::size_t(step(c))]).toInt()); });
}

void BenchRegistry(kvbench::Table& table, const std::string& folder) {
  constexpr int kCount = 700;
  QFSettingsKey root(_T("Root"), _T("Software\\SettingsBench"));
  Fill(root, kCount);
  const QString file = QString::fromStdString(folder + "/peer.ini");
  const auto save = [&] {
    QSettings settings(file, QSettings::IniFormat);
    for (int i = 0; i < kCount; ++i) settings.setValue(QString("Key%1/Value%2").arg(i / kKeySize).arg(i), i);
    settings.sync();
  };
  const auto restore = [&] {
    QSettings settings(file, QSettings::IniFormat);
    for (int i = 0; i < kCount; ++i)
      kvbench::Keep(settings.value(QString("Key%1/Value%2").arg(i / kKeySize).arg(i)).toInt());
  };
  table.Pair(
      {.name = "save a tree to the registry", .size = kCount, .peer = "QSettings, INI file"},
      [&] { kvbench::Keep(root.SaveValuesToRegistry()); }, save);
  table.Pair(
      {.name = "restore a tree from the registry", .size = kCount, .peer = "QSettings, INI file"},
      [&] { kvbench::Keep(root.RestoreValuesFromRegistry()); }, restore);
}

}  // namespace

int main() {
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "kv-settings-bench";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  std::filesystem::current_path(folder);
  SetEnvironmentVariableW(_T("KV_REGISTRY"), folder.u16string().c_str());
  kvbench::Table table("Settings");
  for (const int count : {100, 700, 1000, 10000, 100000}) BenchGetValue(table, count);
  BenchRegistry(table, folder.string());
  std::filesystem::current_path(folder.parent_path());
  std::filesystem::remove_all(folder);
}
