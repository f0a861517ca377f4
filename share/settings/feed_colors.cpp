// The tables of feed colours: their rows in memory and in the registry, and the search by feed.
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

double FeedOf(const QFColorValue& row) { return NumberFromUtf8(ToUtf8(row.GetName())); }

// For CObList_Sort: ascending; feeds that differ by no more than RESABS are equal.
int CompareFeeds(const void* left, const void* right) {
  const double a = FeedOf(*STATIC_DOWNCAST(QFColorValue, *static_cast<CObject* const*>(left)));
  const double b = FeedOf(*STATIC_DOWNCAST(QFColorValue, *static_cast<CObject* const*>(right)));
  if (b - RESABS > a) return -1;
  return a > b + RESABS ? 1 : 0;
}

// rand() scaled to 0..32767: its range differs between C runtimes.
int RandomNumber() { return std::rand() / (RAND_MAX / 32768 + 1); }

unsigned long RandomColor() {
  unsigned long color = 0;
  for (const int shift : {0, 8, 16}) color |= static_cast<unsigned long>(BYTE(RandomNumber() / 255)) << shift;
  return color;
}

// Calls visit(name, color) for each value up to the first that is longer than a colour.
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

// The banners of the class enclose nothing; the form is kept for existing readers of dumps.
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

// The first row from the position on; the position moves to the item after it. Null after the last row.
QFColorValue* QFFeedColorsSettings::NextRow(POSITION& position) const {
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
  const QFColorValue* row = NextRow(m_Pos);
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
  for (POSITION at = GetList().GetHeadPosition(); const QFColorValue* row = NextRow(at);) {
    const double feed = FeedOf(*row);
    if (feed > reach) reach = feed;  // false for NaN
    m_Steps.push_back({reach, row, at});
  }
  m_nStepsVersion = GetListVersion();
}

// The first row with a threshold above the feed is the first one whose running maximum is above it.
unsigned long QFFeedColorsSettings::GetColorForFeed(double feed) {
  if (!IsUsedByDocument()) return kNoFeedColor;
  CollectSteps();
  const auto found = std::upper_bound(m_Steps.begin(), m_Steps.end(), feed - RESABS,
                                      [](double above, const Step& step) { return step.reach > above; });
  m_Pos = found == m_Steps.end() ? nullptr : found->next;
  return found == m_Steps.end() ? kNoFeedColor : found->row->GetValue();
}

// ---- registry, archive, dump

int QFFeedColorsSettings::SaveValuesToRegistry() { return SaveReplacingAll(); }

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
  SetLibraryClass(typeid(QFTurnFeedColorsSettings));
}
QFMillFeedColorsSettings::QFMillFeedColorsSettings()
    : QFFeedColorsSettings(_T("Mill"), CString(kProductRoot) + _T("FeedColors\\Mill")) {
  SetLibraryClass(typeid(QFMillFeedColorsSettings));
}
QFEdmFeedColorsSettings::QFEdmFeedColorsSettings()
    : QFFeedColorsSettings(_T("Edm"), CString(kProductRoot) + _T("FeedColors\\Edm")) {
  SetLibraryClass(typeid(QFEdmFeedColorsSettings));
}

void QFTurnFeedColorsSettings::DumpData(FILE* file) { DumpTable(*this, file, _T("QFTurnFeedColorsSettings")); }
void QFMillFeedColorsSettings::DumpData(FILE* file) { DumpTable(*this, file, _T("QFMillFeedColorsSettings")); }
void QFEdmFeedColorsSettings::DumpData(FILE* file) { DumpTable(*this, file, _T("QFEdmFeedColorsSettings")); }
