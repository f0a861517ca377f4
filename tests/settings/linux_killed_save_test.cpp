// Kills processes that save the application settings: the registry has all old values or all new values.
#include <csignal>
#include <random>
#include <thread>

#include "share/settings/application_settings.h"
#include "share/settings/feed_colors.h"
#include "tests/child_process.h"
#include "tests/registry_calls.h"

namespace {

constexpr int kKills = 60;

// Calls visit(key, value) with every value of the tree.
template <class Visit>
void ForEachValue(const QFSettingsKey& key, Visit visit) {
  for (POSITION at = key.GetList().GetHeadPosition(); at;) {
    CObject* item = key.GetList().GetNext(at);
    if (const auto* below = DYNAMIC_DOWNCAST(QFSettingsKey, item)) ForEachValue(*below, visit);
    if (auto* value = DYNAMIC_DOWNCAST(QFSettingsValue, item)) visit(key, *value);
  }
}

// Calls visit(value, datum) with the value cast to its class and the datum for the round.
template <class Visit>
void WithDatum(QFSettingsValue& value, int round, Visit visit) {
  CString text;
  text.Format(_T("%d"), round);
  CArray<int, int> numbers;
  for (int i = 0; i < 22; ++i) numbers.Add(round);
  if (auto* v = DYNAMIC_DOWNCAST(QFIntValue, &value)) visit(*v, round);
  if (auto* v = DYNAMIC_DOWNCAST(QFColorValue, &value)) visit(*v, static_cast<unsigned long>(round));
  if (auto* v = DYNAMIC_DOWNCAST(QFDoubleValue, &value)) visit(*v, double(round));
  if (auto* v = DYNAMIC_DOWNCAST(QFStringValue, &value)) visit(*v, text);
  if (auto* v = DYNAMIC_DOWNCAST(QFTimeValue, &value)) visit(*v, CTime(LONGLONG(round)));
  if (auto* v = DYNAMIC_DOWNCAST(QFPointValue, &value)) visit(*v, CPoint(round, round));
  if (auto* v = DYNAMIC_DOWNCAST(QFRectValue, &value)) visit(*v, CRect(round, round, round, round));
  if (auto* v = DYNAMIC_DOWNCAST(QFIntArrayValue, &value)) visit(*v, numbers);
}

void SetAll(const QFSettingsKey& tree, int round) {
  ForEachValue(tree, [&](const QFSettingsKey&, QFSettingsValue& value) {
    WithDatum(value, round, [](auto& typed, const auto& datum) { typed.SetValue(datum); });
  });
}

bool IsOf(QFSettingsValue& value, int round) {
  bool same = false;
  WithDatum(value, round, [&](auto& typed, const auto& datum) {
    if constexpr (requires { datum.GetSize(); }) {
      same = std::equal(datum.begin(), datum.end(), typed.GetValue().begin(), typed.GetValue().end());
    } else {
      same = typed.GetValue() == datum;
    }
  });
  return same;
}

// Fills the table for a round: the number of rows, the feeds and the colours depend on it.
void FillTable(QFFeedColorsSettings& table, int round) {
  table.RemoveAll();
  for (int row = 0; row < 10 + round % 7; ++row)
    table.AddValue(round + row * 1000.0, static_cast<unsigned long>(round));
}

bool TableIsOf(QFFeedColorsSettings& table, int round) {
  double feed = 0;
  unsigned long color = 0;
  int rows = 0;
  for (int more = table.GetFirstValue(feed, color); more; more = table.GetNextValue(feed, color), ++rows) {
    if (feed != round + rows * 1000.0 || color != static_cast<unsigned long>(round)) return false;
  }
  return rows == 10 + round % 7;
}

}  // namespace

TEST(KilledSettingsSave, LeavesAllValuesOldOrAllNew) {
  std::mt19937 random(kvtest::PrintedSeed());
  const kvtest::ScratchFolder folder;
  const kvtest::RegistryIn registry(folder.Path());
  const kvtest::SharedNumber saved;
  QFAppSettings settings;
  QFFeedColorsSettings table(_T("Table"), _T("Software\\Table"));
  const auto save = [&](int round) {
    SetAll(settings, round);
    FillTable(table, round);
    const bool all = settings.SaveValuesToRegistry() && table.SaveValuesToRegistry();
    if (all) *saved = round;
    return all;
  };
  ASSERT_TRUE(save(1));
  int between = 0;  // kills between the commit and the return of the save
  for (int kill = 0; kill < kKills && !HasFailure(); ++kill) {
    const int start = *saved;
    const pid_t child = kvtest::InChild([&] {
      for (int round = start + 1; save(round);) ++round;
      return false;
    });
    while (*saved == start) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
    ::kill(child, SIGKILL);
    ASSERT_EQ(kvtest::ExitCode(child), 128 + SIGKILL);

    const int old = *saved;
    QFAppSettings found;
    found.RestoreValuesFromRegistry();
    int values = 0, changed = 0;
    ForEachValue(found, [&](const QFSettingsKey& key, QFSettingsValue& value) {
      if (DYNAMIC_DOWNCAST(QFFeedColorsSettings, const_cast<QFSettingsKey*>(&key))) return;
      const bool isNew = IsOf(value, old + 1);
      EXPECT_TRUE(isNew || IsOf(value, old)) << "round " << old << ": " << ToUtf8(value.GetName());
      changed += isNew;
      ++values;
    });
    EXPECT_EQ(values, 678);
    EXPECT_TRUE(changed == 0 || changed == values) << changed << " values are new";
    between += changed > 0;
    table.RestoreValuesFromRegistry();
    EXPECT_TRUE(TableIsOf(table, old) || TableIsOf(table, old + 1)) << "round " << old;
    ASSERT_TRUE(save(old + 2)) << "a leftover of the kill prevents the next save";
  }
  std::printf("%d kills, %d of them after a commit and before its return, %d saves\n", kKills, between, int(*saved));
}
