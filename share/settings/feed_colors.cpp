// The tables of feed colours: their rows in memory and in the registry, and the search for a feed's colour.
#include "share/settings/feed_colors.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "companions/geometry/constants.h"
#include "platform/numbers.h"
#include "share/core/document_callbacks.h"
#include "share/core/dump.h"
#include "share/core/registry_key_handle.h"
#include "share/core/registry_keys.h"

IMPLEMENT_SERIAL(QFFeedColorsSettings, QFSettingsKey, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFTurnFeedColorsSettings, QFFeedColorsSettings, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFMillFeedColorsSettings, QFFeedColorsSettings, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFEdmFeedColorsSettings, QFFeedColorsSettings, VERSIONABLE_SCHEMA | 1)

namespace {

constexpr double kFirstFeed = 100000;
constexpr DWORD kNameUnits = 256;

double FeedOf(const QFColorValue& row) { return _wtof(row.GetName()); }

// For CObList_Sort: ascending, feeds within RESABS of one another are equal.
int CompareFeeds(const void* left, const void* right) {
  const double a = FeedOf(*STATIC_DOWNCAST(QFColorValue, *static_cast<CObject* const*>(left)));
  const double b = FeedOf(*STATIC_DOWNCAST(QFColorValue, *static_cast<CObject* const*>(right)));
  if (b - RESABS > a) return -1;
  return a > b + RESABS ? 1 : 0;
}

// rand(), whose range differs from runtime to runtime, brought to 0 to 32767.
int Draw() { return std::rand() / (RAND_MAX / 32768 + 1); }

unsigned long RandomColor() {
  unsigned long color = 0;
  for (const int shift : {0, 8, 16}) color |= static_cast<unsigned long>(BYTE(Draw() / 255)) << shift;
  return color;
}

// Calls visit(name, color) with each value up to the first that doesn't fit.
template <class Visit>
void ForEachColor(HKEY key, Visit visit) {
  for (DWORD index = 0;; ++index) {
    TCHAR name[kNameUnits];
    DWORD units = kNameUnits, color = 0, bytes = sizeof color;
    if (RegEnumValueW(key, index, name, &units, nullptr, nullptr, reinterpret_cast<BYTE*>(&color), &bytes) !=
        ERROR_SUCCESS) {
      return;
    }
    visit(CString(name, int(units)), color);
  }
}

bool IsUsedByDocument() {
  static const CString colors(_T("Colors")), useFeedColors(_T("UseFeedColors"));
  const QFSettingsKey* settings = GetActiveDocSettingsCB();
  const QFSettingsKey* group = settings ? settings->GetKey(colors) : nullptr;
  if (!group) return true;
  int use = 0;
  group->GetValue(useFeedColors, use);
  return use != 0;
}

// A class's own banners enclose nothing: that is required.
void DumpTable(QFSettingsKey& table, FILE* file, LPCTSTR className) {
  if (!file) return;
  DumpBanner(file, className, _T("Start"));
  DumpBanner(file, className, _T("End"));
  table.QFSettingsKey::DumpData(file);
}

}  // namespace

// ---- rows

QFFeedColorsSettings::QFFeedColorsSettings() = default;

QFFeedColorsSettings::QFFeedColorsSettings(const CString& name, const CString& path) : QFSettingsKey(name, path) {}

void QFFeedColorsSettings::AddValue(double feed, unsigned long color) {
  CString name;
  name.Format(_T("%.2f"), feed);
  QFSettingsKey::AddValue(name, color);
}

// The next row at the position or behind it, which moves on; null behind the last.
QFColorValue* QFFeedColorsSettings::TakeRow(POSITION& position) const {
  while (position) {
    if (auto* row = DYNAMIC_DOWNCAST(QFColorValue, GetList().GetNext(position))) return row;
  }
  return nullptr;
}

int QFFeedColorsSettings::GetFirstValue(double& feed, unsigned long& color) {
  m_Pos = GetList().GetHeadPosition();
  return GetNextValue(feed, color);
}

int QFFeedColorsSettings::GetNextValue(double& feed, unsigned long& color) {
  const QFColorValue* row = TakeRow(m_Pos);
  if (!row) return 0;
  feed = FeedOf(*row);
  color = row->GetValue();
  return 1;
}

int QFFeedColorsSettings::RemoveAll() {
  m_Pos = nullptr;
  TakeOutAll();
  return 1;
}

// ---- the search

void QFFeedColorsSettings::CollectSteps() {
  if (m_nStepsVersion == GetListVersion()) return;
  m_Steps.clear();
  double reach = -std::numeric_limits<double>::infinity();
  for (POSITION at = GetList().GetHeadPosition(); const QFColorValue* row = TakeRow(at);) {
    const double feed = FeedOf(*row);
    if (feed > reach) reach = feed;  // false for what is no number
    m_Steps.push_back({reach, row, at});
  }
  m_nStepsVersion = GetListVersion();
}

// The first row that is above a feed is the first one that raises the highest threshold so far above it.
unsigned long QFFeedColorsSettings::GetColorForFeed(double feed) {
  if (!IsUsedByDocument()) return kNoFeedColor;
  CollectSteps();
  const auto found = std::upper_bound(m_Steps.begin(), m_Steps.end(), feed - RESABS,
                                      [](double above, const Step& step) { return step.reach > above; });
  m_Pos = found == m_Steps.end() ? nullptr : found->next;
  return found == m_Steps.end() ? kNoFeedColor : found->row->GetValue();
}

// ---- registry, archive, dump

int QFFeedColorsSettings::SaveValuesToRegistry() { return SaveInPlaceOfAll(); }

int QFFeedColorsSettings::RestoreValuesFromRegistry() {
  RemoveAll();
  const RegistryKeyHandle key(GetHandleToKey(/*create=*/1, /*readOnly=*/0));
  ForEachColor(key, [this](const CString& name, DWORD color) {
    QFSettingsKey::AddValue(name, static_cast<unsigned long>(color));
  });
  if (GetList().IsEmpty()) AddValue(kFirstFeed, RandomColor());
  SortList(CompareFeeds);
  return 0;
}

void QFFeedColorsSettings::Serialize(CArchive& ar) {
  if (ar.IsLoading()) m_Pos = nullptr;
  QFSettingsKey::Serialize(ar);
}

void QFFeedColorsSettings::DumpData(FILE* file) { DumpTable(*this, file, _T("QFFeedColorsSettings")); }

// ---- the three tables

QFTurnFeedColorsSettings::QFTurnFeedColorsSettings()
    : QFFeedColorsSettings(_T("Turn"), CString(kProductRoot) + _T("FeedColors\\Turn")) {
  SetOwnClass(typeid(QFTurnFeedColorsSettings));
}
QFMillFeedColorsSettings::QFMillFeedColorsSettings()
    : QFFeedColorsSettings(_T("Mill"), CString(kProductRoot) + _T("FeedColors\\Mill")) {
  SetOwnClass(typeid(QFMillFeedColorsSettings));
}
QFEdmFeedColorsSettings::QFEdmFeedColorsSettings()
    : QFFeedColorsSettings(_T("Edm"), CString(kProductRoot) + _T("FeedColors\\Edm")) {
  SetOwnClass(typeid(QFEdmFeedColorsSettings));
}

void QFTurnFeedColorsSettings::DumpData(FILE* file) { DumpTable(*this, file, _T("QFTurnFeedColorsSettings")); }
void QFMillFeedColorsSettings::DumpData(FILE* file) { DumpTable(*this, file, _T("QFMillFeedColorsSettings")); }
void QFEdmFeedColorsSettings::DumpData(FILE* file) { DumpTable(*this, file, _T("QFEdmFeedColorsSettings")); }
