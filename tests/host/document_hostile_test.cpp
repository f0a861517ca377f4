// Damaged documents: a file truncated at any byte, and a file or its streams with any byte changed. The loader refuses
// each, or returns a document that can be used and deleted, in limited time and memory.
#include <fmt/format.h>
#include <chrono>
#include <cstdio>
#include <random>
#include <utility>

#include "host/document/active_document.h"
#include "host/document/document_loader.h"
#include "host/document/document_tree.h"
#include "host/document/sample_document.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "share/core/version_info.h"
#include "tests/host/document_records.h"
#include "tests/host/heap_of_thread.h"
#include "tests/host/patterned_features.h"
#include "tests/scratch.h"

namespace {

using namespace kestrova;
using Mode = DocumentLoader::Mode;

#if defined(KV_BLOCKS_FROM_HEAP) || defined(__SANITIZE_THREAD__)
constexpr int kFlips = 10'000;
constexpr std::size_t kPrefixStep = 7;
constexpr std::ptrdiff_t kMemoryBase = 160 * 1024;  // the blocks of all objects count, of a salvage those of two loads
#elif defined(_WIN32)                               // each file is opened by a call of another process
constexpr int kFlips = 1'000;
constexpr std::size_t kPrefixStep = 97;
constexpr std::ptrdiff_t kMemoryBase = 0;  // not counted
constexpr std::size_t kUnusedEnd = 512;    // it reads the last sector in part
#else
constexpr int kFlips = 50'000;
constexpr std::size_t kPrefixStep = 1;
constexpr std::ptrdiff_t kMemoryBase = 48 * 1024;
#endif
#ifndef _WIN32
constexpr std::size_t kUnusedEnd = 0;
#endif
constexpr DWORD kNodes = 50;
constexpr std::size_t kUseEvery = 16;  // dumps take longer than loads
// The most memory of a load, with its findings: a multiple of the file's size, and kMemoryBase for an empty file.
constexpr std::ptrdiff_t kMemoryFactor = 3;
constexpr std::chrono::seconds kLongest{5};

StreamFacts FactsOfBytes(std::string bytes) {
  CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
  return FactsOf(file);
}

// Writes a compound file with a correct header, so that the checksums accept the damage.
void WriteParts(const std::string& path, const std::string& objects, const std::string& history) {
  DocumentHeader header;
  header.storageVersion = CKVVersionInfo::QF_STORAGE_VERSION;
  header.objects = FactsOfBytes(objects);
  header.history = FactsOfBytes(history);
  const std::string bytes = header.ToBytes();
  kvtest::WriteDocumentFile(path, &bytes, &objects, &history);
}

class HostileDocuments : public testing::Test {
 protected:
  void SetUp() override {
    StartMainModule();
    HostDocument document;
    const ActiveDocument active(&document);
    FillWithSample(document, kNodes, /*seed=*/7);
    kvtest::RepeatFeatures(document);
    SaveDocument(document, path_);
    file_ = kvtest::ReadFile(path_);
    objects_ = kvtest::StreamOf(path_, kObjectsStream);
    history_ = kvtest::StreamOf(path_, kHistoryStream);
    WriteParts(path_, objects_, history_);
    ASSERT_EQ(Load("whole", Mode::kStrict), 1);
    ASSERT_EQ(Load("whole", Mode::kSalvage), 1);
  }
  void TearDown() override {
    std::fclose(nowhere_);
    std::printf("%zu refused, %zu loaded\n", refused_, loaded_);
  }

  // Loads the file at path_. 1: a document, which it uses and deletes; 0: refused.
  int Load(const std::string& damage, Mode mode) {
    kvtest::heap.peak = kvtest::heap.live;
    const std::ptrdiff_t before = kvtest::heap.live;
    const auto start = std::chrono::steady_clock::now();
    std::unique_ptr<HostDocument> document;
    try {
      document = DocumentLoader(path_, mode).Load();
    } catch (const Failure&) {
    }
    const auto time = std::chrono::steady_clock::now() - start;
    const std::ptrdiff_t peak = kvtest::heap.peak - before;
    EXPECT_LT(time, kLongest) << damage;
    EXPECT_LE(peak, std::ptrdiff_t(std::filesystem::file_size(path_)) * kMemoryFactor + kMemoryBase) << damage;
    ++(document ? loaded_ : refused_);
    if (!document) return 0;
    Use(*document);
    return 1;
  }

  void Use(HostDocument& document) {
    const ActiveDocument active(&document);
    DWORD walked = 0;
    document.Walk([&](HostNode&, int) { ++walked; });
    EXPECT_EQ(walked, document.NodeCount());
    if (++used_ % kUseEvery != 0) return;
    document.DumpData(nowhere_);
    document.Walk([&](HostNode& node, int) { node.DumpData(nowhere_); });
    WriteTree(document, nowhere_);
    WriteTreeJson(document, nowhere_);
  }

  void LoadBothWays(const std::string& damage) {
    Load(damage, Mode::kStrict);
    Load(damage, Mode::kSalvage);
  }

  // Changes a random byte while attempt() runs.
  template <class Try>
  static void WithChange(std::string& bytes, std::mt19937_64& random, const char* what, Try attempt) {
    const std::size_t place = std::size_t(random() % bytes.size());
    const char was = bytes[place];
    bytes[place] = char(was ^ (1 + random() % 255));
    attempt(fmt::format("{}: byte {} is {:02X}, was {:02X}", what, place, BYTE(bytes[place]), BYTE(was)));
    bytes[place] = was;
  }

  void WriteFile(std::string_view bytes) const {
    std::FILE* file = std::fopen(path_.c_str(), "wb");
    ASSERT_TRUE(file);
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
  }

  const kvtest::ScratchFolder folder_{kvtest::FastFolder()};
  const std::string path_ = (folder_.Path() / "part.kvdoc").string();
  std::string file_, objects_, history_;
  std::FILE* nowhere_ = std::fopen((folder_.Path() / "nowhere").string().c_str(), "wb");
  std::size_t refused_ = 0, loaded_ = 0, used_ = 0;
};

}  // namespace

TEST_F(HostileDocuments, EveryPrefixOfTheFileIsRefusedOrSalvaged) {
  for (std::size_t bytes = 0; bytes < file_.size() && !HasFailure(); bytes += kPrefixStep) {
    WriteFile(std::string_view(file_).substr(0, bytes));
    const std::string damage = fmt::format("{} of {} bytes", bytes, file_.size());
    Load(damage, Mode::kSalvage);
    EXPECT_TRUE(Load(damage, Mode::kStrict) == 0 || bytes + kUnusedEnd > file_.size()) << damage;
  }
}

// In parts, which run side by side.
class ChangedDocuments : public HostileDocuments, public testing::WithParamInterface<int> {};
constexpr int kParts = 4;
INSTANTIATE_TEST_SUITE_P(Parts, ChangedDocuments, testing::Range(0, kParts));

TEST_P(ChangedDocuments, AreRefusedOrSalvaged) {
  std::mt19937_64 random(kvtest::PrintedSeed());
  for (int i = 0; i < kFlips / kParts && !HasFailure(); ++i) {
    if (i % 2 == 0) {
      WithChange(file_, random, "file", [&](const std::string& damage) {
        WriteFile(file_);
        LoadBothWays(damage);
      });
    } else {
      WithChange(i % 16 == 1 ? history_ : objects_, random, i % 16 == 1 ? "history" : "objects",
                 [&](const std::string& damage) {
                   WriteParts(path_, objects_, history_);
                   LoadBothWays(damage);
                 });
    }
  }
}
