// Patterns: walks over all active instances of one, and a document with 10,000 patterns of 1,000 instances saved,
// loaded and checked, against the same document without patterns.
#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "framework/archive.h"
#include "host/document/active_document.h"
#include "host/document/document_check.h"
#include "host/document/feature_node.h"
#include "host/document/host_document.h"
#include "host/document/pattern_kinds.h"
#include "host/module/main_module.h"
#include "share/objects/serialize_notify.h"
#include "share/patterns/pattern_manager.h"

namespace {

using namespace kestrova;

// ---- active instances

struct Pattern {
  // Every tenth instance is skipped.
  explicit Pattern(DWORD count) : info(new HostLinearPattern({FRXAxis, 0.001, count}, {FRYAxis, 0, 1})) {
    manager.SetPatternInfo(info, /*deleteOld=*/1);
    for (DWORD instance = 0; instance < count; instance += 10)
      info->SetInstanceStatus(int(instance), ePatternInstanceNotActive);
  }
  QFObjectPatternMgr manager;
  HostLinearPattern* info;
};

// One loop over the instances, as by a caller that knows their statuses.
double OneLoop(HostPattern& info) {
  double sum = 0;
  for (LONGLONG instance = 0; instance < info.GetNumPatternInstances(); ++instance) {
    FRTransf transform;
    if (info.GetInstanceStatus(instance) != ePatternInstanceActive) continue;
    info.GetTransfForInst(instance, transform);
    sum += transform.translation().x();
  }
  return sum;
}

double WalkInOrder(QFObjectPatternMgr& manager, const std::vector<int>& numbers) {
  double sum = 0;
  for (const int n : numbers) {
    FRTransf transform;
    int index = 0;
    manager.GetTransfForActiveInstance(n, transform, index);
    sum += transform.translation().x();
  }
  return sum;
}

void MeasureWalks() {
  kvbench::Table table("Active instances of a pattern");
  for (DWORD count = 1000; count <= 1'000'000; count *= 10) {
    Pattern pattern(count);
    std::vector<int> numbers(std::size_t(pattern.manager.GetNumActiveInstances()));
    for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = int(i);
    const auto peer = [&] { kvbench::Keep(OneLoop(*pattern.info)); };
    const auto ours = [&] { kvbench::Keep(WalkInOrder(pattern.manager, numbers)); };
    table.Pair({"GetTransfForActiveInstance for each, in order", count, "one loop over the instances"}, ours, peer);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    table.Pair({"GetTransfForActiveInstance for each, shuffled", count, "one loop over the instances"}, ours, peer);
  }
}

// ---- documents

constexpr DWORD kInstances = 1000;

std::unique_ptr<HostDocument> MakeDocument(DWORD features, bool patterned) {
  auto document = std::make_unique<HostDocument>();
  const ActiveDocument active(document.get());
  for (DWORD i = 0; i < features; ++i) {
    auto feature = std::make_unique<HostFeature>();
    const HostFeature::Point centre[] = {{0.001 * i, 0}};
    feature->SetProfile(centre);
    auto& node = document->Adopt(std::move(feature), nullptr);
    if (!patterned) continue;
    node.CreatePattern();
    auto* row = new HostLinearPattern({FRXAxis, 0.01, kInstances}, {FRYAxis, 0, 1});
    node.GetPatternMgr()->SetPatternInfo(row, /*deleteOld=*/1);
    for (const int skipped : {3, 500, 999}) row->SetInstanceStatus(skipped, ePatternInstanceNotActive);
  }
  return document;
}

std::string Saved(const HostDocument& document) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  ar.WriteObject(&document);
  ar.Close();
  return {reinterpret_cast<const char*>(file.GetData()), std::size_t(file.GetLength())};
}

std::unique_ptr<HostDocument> LoadAndCheck(std::string& bytes) {
  CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
  CArchive ar(&file, CArchive::load);
  std::unique_ptr<HostDocument> document(static_cast<HostDocument*>(ar.ReadObject(RUNTIME_CLASS(HostDocument))));
  const ActiveDocument active(document.get());
  LoadReport report;
  if (!document->RepairLinks().empty()) std::abort();
  CheckDocument(*document, CheckMode::kReport, report);
  if (report.findingCount != 0) std::abort();
  document->SetFullyLoaded();
  QFSerializeNotify::Clear();
  return document;
}

void MeasureDocuments() {
  kvbench::Table table("Documents with patterns of 1,000 instances");
  for (DWORD features = 100; features <= 10'000; features *= 10) {
    const auto patterned = MakeDocument(features, true), plain = MakeDocument(features, false);
    std::string bytes = Saved(*patterned), plainBytes = Saved(*plain);
    table.Pair(
        {"save", features, "without patterns"}, [&] { return Saved(*patterned); }, [&] { return Saved(*plain); });
    table.Pair(
        {"load and verify", features, "without patterns"}, [&] { return LoadAndCheck(bytes); },
        [&] { return LoadAndCheck(plainBytes); });
    kvbench::Table::Row({"size", features, "without patterns"}, std::to_string(bytes.size() / features) + " B each",
                        std::to_string(plainBytes.size() / features) + " B each",
                        double(bytes.size()) / double(plainBytes.size()));
  }
}

}  // namespace

int main() {
  UseLibrary();
  MeasureWalks();
  MeasureDocuments();
}
