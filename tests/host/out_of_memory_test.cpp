// Each allocation of an operation fails once: the operation then raises, reports a failure or does without. What was
// there before stays whole, the operation works again, and no memory is lost.
#include <fmt/format.h>

#include <new>
#include <optional>

#include "host/document/document_file.h"
#include "host/document/sample_document.h"
#include "share/core/document_callbacks.h"
#include "share/machine/machine.h"
#include "share/settings/application_settings.h"
#include "share/settings/registry_text.h"
#include "tests/archive_bytes.h"
#include "tests/host/document_fixture.h"
#include "tests/host/heap_of_thread.h"
#include "tests/host/patterned_features.h"

using namespace kestrova;
using namespace kvtest;

namespace {

// `run` raises or returns false if it did not do its work, `check` looks at what is there after it.
template <class Run>
void FailEachAllocation(const Run& run, const std::function<void(bool done)>& check) {
  const auto attempt = [&](long number) {
    bool done = false;
    std::string what;
    heap.failed = false;
    heap.until_failure = number;
    try {
      if constexpr (std::is_void_v<decltype(run())>) {
        run();
        done = true;
      } else {
        done = run();
      }
    } catch (const std::exception& failure) {
      heap.until_failure = 0;
      what = failure.what();
    }
    heap.until_failure = 0;
    const bool failed = heap.failed;
    EXPECT_TRUE(done || failed) << what;
    check(done);
    return failed;
  };
  for (int warm = 0; warm < 2; ++warm) attempt(0);
  long number = 1;
  // Caches grow in some attempts, lost memory grows in all.
  const auto loses = [&] {
    for (int repeat = 0; repeat < 200; ++repeat) {
      const std::ptrdiff_t before = heap.live;
      attempt(number);
      if (heap.live <= before) return false;
    }
    return true;
  };
  for (; attempt(number) && !testing::Test::HasFailure(); ++number) EXPECT_FALSE(loses()) << "allocation " << number;
  std::printf("%ld allocations\n", number - 1);
}

std::string Stored(const CObject& object) {
  return Store([&](CArchive& ar) { ar << &object; });
}

class OutOfMemory : public DocumentTest {
 protected:
  const std::string path_ = File("part.kvdoc");
};

}  // namespace

TEST_F(OutOfMemory, LoadOfADocumentRaises) {
  FillWithSample(document_, 60, /*seed=*/3);
  RepeatFeatures(document_);
  document_.NodeAt(document_.NodeCount() - 1).Recycle();
  SaveDocument(document_, path_);
  std::unique_ptr<HostDocument> loaded;
  const auto load = [&] { loaded = DocumentLoader(path_, DocumentLoader::Mode::kStrict).Load(); };
  load();
  const std::string expected = Stored(*std::exchange(loaded, nullptr));
  FailEachAllocation(load, [&](bool done) {
    if (done) {
      const ActiveDocument active(loaded.get());
      EXPECT_TRUE(Stored(*loaded) == expected);
    }
    loaded.reset();
    EXPECT_EQ(GetActiveDocument(), &document_);
  });
}

TEST_F(OutOfMemory, SaveOfADocumentKeepsTheOldFile) {
  FillWithSample(document_, 30, /*seed=*/3);
  RepeatFeatures(document_);
  SaveDocument(document_, path_);
  const std::string expected = Stored(document_);
  FailEachAllocation([&] { SaveDocument(document_, path_); },
                     [&](bool) {
                       EXPECT_TRUE(Stored(document_) == expected);
                       const auto loaded = DocumentLoader(path_, DocumentLoader::Mode::kStrict).Load();
                       const ActiveDocument active(loaded.get());
                       EXPECT_TRUE(Stored(*loaded) == expected);
                     });
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}), 1);
}

TEST_F(OutOfMemory, MachineIsReadAndExportedOrNot) {
  const std::string definition =
      "<ROOT><CHANNELS NUM='1'><CHANNEL ID='1' NAME='Main'><TARGET TYPE='Turret' STATIONS='1'><TOOL NAME='T'/></TARGET>"
      "</CHANNEL></CHANNELS><SHAPES NUM='1'><SHAPE ID='1' NAME='Base'/></SHAPES>"
      "<SHAPELISTS><TOOLSHAPELIST NUM='3' LIST='1,2'/></SHAPELISTS></ROOT>";
  const CString machines(ProductPathFromSystem(folder_.Path().string()).c_str());
  const auto load = [&](KVVMMachine& machine) {
    return machine.LoadFromMemory(VM_MACHINE_MILL, _T("VMC"), machines, definition) == 1;
  };
  const auto read = [&] {
    KVVMMachine machine;
    return load(machine);
  };
  FailEachAllocation(read, [](bool) {});
  KVVMMachine machine;
  ASSERT_TRUE(load(machine));
  const auto file = folder_.Write("Mill/VMC/KestrovaAPT.txt", "older");
  std::string expected;
  ASSERT_EQ(machine.ExportText(expected), 1);
  const auto save = [&] {
    machine.ExportData();
    return machine.GetExportFailure().kind == MachineExportFailure::Kind::kNone;
  };
  FailEachAllocation(save, [&](bool done) {
    EXPECT_EQ(ReadFile(file), done ? expected : "older");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()), {}), 1);
    folder_.Write("Mill/VMC/KestrovaAPT.txt", "older");
  });
}

TEST_F(OutOfMemory, SettingsTreeIsStoredLoadedAndRestored) {
  QFDocSettings settings;
  const std::string expected = Stored(settings);
  const auto copy = [&] {
    std::unique_ptr<CObject> loaded;
    Load(Stored(settings), [&](CArchive& ar) { loaded.reset(ar.ReadObject(nullptr)); });
  };
  FailEachAllocation(copy, [&](bool) { EXPECT_TRUE(Stored(settings) == expected); });
  QFAppSettings application;
  FailEachAllocation([&] { application.SaveValuesToRegistry(); }, [](bool) {});
  std::optional<QFAppSettings> restored(std::in_place);  // a tree keeps replaced values until its end
  FailEachAllocation([&] { restored->RestoreValuesFromRegistry(); }, [&](bool) { restored.emplace(); });
}

TEST_F(OutOfMemory, ImportOfRegistryTextIsWholeOrNothing) {
  const auto text = [](const char* number) {
    return fmt::format(
        "Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\Software\\OutOfMemory]\r\n"
        "\"a\"=dword:{0}\r\n\"b\"=\"{0}\"\r\n[HKEY_CURRENT_USER\\Software\\OutOfMemory\\Sub{0}]\r\n",
        number);
  };
  registry_text::KeyName key;
  ASSERT_TRUE(registry_text::ParseKeyName(_T("HKCU\\Software\\OutOfMemory"), key));
  const auto import = [&](const std::string& bytes) {
    std::vector<registry_text::Step> steps;
    registry_text::Error error;
    return registry_text::Parse(bytes, steps, error) && registry_text::Apply(steps, error);
  };
  const auto content = [&] {
    std::string bytes;
    registry_text::Error error;
    registry_text::Write(key, bytes, error);
    return bytes;
  };
  const std::string reset = text("00000001") + "[-HKEY_CURRENT_USER\\Software\\OutOfMemory\\Sub00000002]\r\n";
  ASSERT_TRUE(import(text("00000002")));
  ASSERT_TRUE(import(text("00000002")));
  ASSERT_TRUE(import(reset));
  const std::string old = content();
  ASSERT_TRUE(import(text("00000002")));
  const std::string changed = content();
  ASSERT_NE(old, changed);
  FailEachAllocation([&] { return import(text("00000002")); },
                     [&](bool done) {
                       EXPECT_EQ(content(), done ? changed : old);
                       EXPECT_TRUE(import(reset));
                     });
}
