// A settings tree whose process is killed while it saves: each value is the old one or the new one.
#include <atomic>
#include <csignal>
#include <random>

#include "share/settings/application_settings.h"
#include "tests/child_process.h"
#include "tests/registry_calls.h"

namespace {

// Calls visit(QFIntValue or QFDoubleValue) for each number of the tree.
template <class Visit>
void ForEachNumber(const QFSettingsKey& key, const Visit& visit) {
  for (POSITION at = key.GetList().GetHeadPosition(); at;) {
    CObject* item = key.GetList().GetNext(at);
    if (auto* value = dynamic_cast<QFIntValue*>(item)) visit(*value);
    if (auto* value = dynamic_cast<QFDoubleValue*>(item)) visit(*value);
    if (const auto* below = dynamic_cast<QFSettingsKey*>(item)) ForEachNumber(*below, visit);
  }
}

}  // namespace

TEST(SettingsKilled, SaveLeavesEachValueOldOrNew) {
  const kvtest::ScratchFolder folder(kvtest::FastFolder());
  const kvtest::RegistryIn registry(folder.Path());
  std::mt19937 random(kvtest::PrintedSeed());
  const kvtest::SharedNumber returned;
  int cutThrough = 0;
  for (int round = 0; round < 30; ++round) {
    const int first = *returned + 1;
    const pid_t child = kvtest::InChild([&] {
      QFAppSettings settings;
      for (int n = first;; ++n) {
        ForEachNumber(settings, [n](auto& value) { value.SetValue(n); });
        if (settings.SaveValuesToRegistry() != 1) return false;
        *returned = n;
      }
    });
    while (*returned < first && waitpid(child, nullptr, WNOHANG) == 0) continue;
    for (std::atomic<unsigned> spin = random() % 3'000'000; spin > 0; --spin) continue;
    kill(child, SIGKILL);
    EXPECT_EQ(kvtest::ExitCode(child), 128 + SIGKILL);
    QFAppSettings found;
    found.RestoreValuesFromRegistry();
    int numbers = 0, fresh = 0;
    ForEachNumber(found, [&](const auto& value) {
      ++numbers;
      fresh += value.GetValue() == *returned + 1;
      EXPECT_TRUE(value.GetValue() == *returned || value.GetValue() == *returned + 1)
          << ToUtf8(value.GetName()) << ' ' << value.GetValue() << ", saved " << *returned;
    });
    EXPECT_GT(numbers, 500);
    cutThrough += fresh > 0 && fresh < numbers;
    if (fresh > 0) ++*returned;  // the next round's saves are later than all of them
  }
  std::printf("%d of 30 saves were cut through\n", cutThrough);
}
