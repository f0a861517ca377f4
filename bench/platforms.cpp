// Times of a few operations on this platform, to compare the builds of two platforms on one machine:
// scripts/two_platforms.sh --speed. Prints lines "name<TAB>nanoseconds".
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

#include "bench/ratio.h"
#include "framework/archive.h"
#include "framework/file.h"
#include "framework/ob_list.h"
#include "platform/process.h"
#include "platform/registry.h"
#include "platform/registry_files.h"
#include "share/settings/settings_key.h"

class PlatformsNode : public CObject {
  DECLARE_SERIAL(PlatformsNode)

 public:
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar << m_label << m_number << m_weight;
    } else {
      ar >> m_label >> m_number >> m_weight;
    }
  }

  CString m_label;
  int m_number = 0;
  double m_weight = 0;
};
IMPLEMENT_SERIAL(PlatformsNode, CObject, 1)

namespace {

constexpr int kSamples = 7;
constexpr int kNodes = 100'000;
constexpr int kValues = 700;
constexpr int kKeySize = 50;
constexpr LPCTSTR kPath = _T("Software\\Zemlor\\Kestrova\\Platforms");

// Prints the median time of a call, divided by its operations.
void Measure(const char* name, double operations, const std::function<void()>& run) {
  run();
  std::vector<double> times;
  for (int i = 0; i < kSamples; ++i) {
    const auto start = std::chrono::steady_clock::now();
    run();
    times.push_back(std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count());
  }
  std::sort(times.begin(), times.end());
  std::printf("%s\t%.0f\n", name, times[kSamples / 2] / operations);
}

class Nodes {
 public:
  ~Nodes() {
    for (POSITION at = list_.GetHeadPosition(); at;) delete list_.GetNext(at);
  }
  CObList& List() { return list_; }

 private:
  CObList list_;
};

void MeasureArchive() {
  Nodes nodes;
  for (int i = 0; i < kNodes; ++i) {
    auto* node = new PlatformsNode;
    node->m_label.Format(_T("node %d"), i);
    node->m_number = i;
    nodes.List().AddTail(node);
  }
  CMemFile file;
  Measure("archive save, a node", kNodes, [&] {
    file.SetLength(0);
    file.SeekToBegin();
    CArchive archive(&file, CArchive::store);
    nodes.List().Serialize(archive);
    archive.Close();
  });
  Measure("archive load, a node", kNodes, [&] {
    Nodes loaded;
    file.SeekToBegin();
    CArchive archive(&file, CArchive::load);
    loaded.List().Serialize(archive);
  });
}

CString NameOf(int i) {
  CString name;
  name.Format(_T("Value%d"), i);
  return name;
}

void MeasureSettings() {
  QFSettingsKey root(_T("Root"), kPath);
  for (int i = 0; i < kValues;) {
    CString name;
    name.Format(_T("Key%d"), i);
    auto* key = new QFSettingsKey(name, CString(kPath) + _T("\\") + name);
    for (const int end = i + kKeySize; i < end; ++i) key->AddValue(NameOf(i), i);
    root.AddKey(key);
  }
  Measure("settings save, a value", kValues, [&] { kvbench::Keep(root.SaveValuesToRegistry()); });
  Measure("settings restore, a value", kValues, [&] { kvbench::Keep(root.RestoreValuesFromRegistry()); });
  int value = 0;
  const CString name = NameOf(kValues / 2);
  Measure("settings GetValue", 1000, [&] {
    for (int i = 0; i < 1000; ++i) root.GetValue(name, value);
    kvbench::Keep(value);
  });
}

void MeasureRegistry() {
  const CString path = CString(kPath) + _T("\\Key0");
  Measure("registry open, query, close", 1000, [&] {
    for (int i = 0; i < 1000; ++i) {
      HKEY key = nullptr;
      DWORD number = 0, size = sizeof number;
      RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key);
      RegQueryValueExW(key, _T("Value7"), nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size);
      RegCloseKey(key);
      kvbench::Keep(number);
    }
  });
}

}  // namespace

int main() {
  if (UseRegistryOfEnvironment() != ERROR_SUCCESS) return 3;
  MeasureArchive();
  MeasureSettings();
  MeasureRegistry();
  RegDeleteTreeW(HKEY_CURRENT_USER, kPath);
}
