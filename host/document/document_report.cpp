#include "host/document/document_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/shell/output.h"
#include "share/objects/storage_status.h"

namespace kestrova {

void LoadReport::Add(unsigned location, std::string stream, std::string text) {
  LogSerializationError(location);
  MakeHarmless(text);
  ++findingCount;
  if (findings.size() < kMostFindings) findings.push_back({std::move(stream), std::move(text)});
}

std::string TextOf(const DocumentFault& fault) { return fmt::format("byte {}: {}", fault.offset, fault.what); }

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostLines = 50;  // in a text; JSON has kMostFindings

Json FaultJson(const LoadReport& report) {
  if (!report.fault) return {};
  const bool inNode = report.part == DocumentReading::Part::kNodes;
  return {{"byte", report.fault->offset},
          {"what", report.fault->what},
          {"node", inNode ? Json(report.whole + 1) : Json()},
          {"class", inNode ? Json(report.partialClass) : Json()}};
}

}  // namespace

nlohmann::ordered_json ReportJson(const std::string& file, const LoadReport& report) {
  Json lost = Json::array(), indexer = Json::array(), findings = Json::array();
  for (const auto& [name, count] : report.lost) lost.push_back({{"class", name}, {"count", count}});
  for (const LoadReport::IndexerCount& count : report.indexer)
    indexer.push_back({{"class", ToUtf8(count.name)}, {"stored", count.stored}, {"alive", count.alive}});
  for (const LoadReport::Finding& finding : report.findings)
    findings.push_back({{"stream", finding.stream}, {"text", finding.text}});
  return {{"file", file},
          {"storageVersion", std::stod(fmt::format("{}", report.storageVersion))},
          {"nodesPromised", report.promised},
          {"nodesWhole", report.whole},
          {"nodesLost", report.promised - report.whole},
          {"lost", lost},
          {"status", report.status},
          {"errorLocation", report.errorLocation},
          {"fault", FaultJson(report)},
          {"danglingReferences", report.dangling},
          {"oneSidedUses", report.oneSided},
          {"objectsInNoList", report.strays},
          {"indexer", indexer},
          {"findings", findings},
          {"findingCount", report.findingCount}};
}

std::string LostText(const LoadReport& report) {
  if (report.whole == report.promised) return {};
  std::string text = fmt::format(", {} lost", report.promised - report.whole);
  const char* between = ": ";
  for (const auto& [name, count] : report.lost) {
    text += fmt::format("{}{} {}", between, count, Harmless(name));
    between = ", ";
  }
  return text;
}

std::string FindingsText(const LoadReport& report) {
  const std::size_t shown = std::min(report.findings.size(), kMostLines);
  std::string text;
  for (std::size_t i = 0; i < shown; ++i) {
    const auto& [stream, finding] = report.findings[i];
    text += fmt::format("  {}{}{}\n", stream, stream.empty() ? "" : ": ", finding);
  }
  if (report.findingCount > shown) text += fmt::format("  and {} more\n", report.findingCount - shown);
  return text;
}

std::string ReportText(const std::string& file, const LoadReport& report) {
  std::string text = fmt::format(
      "{}: storage version {}, {} of {} nodes intact{}, status {:#06x}, error location {:#06x}\n", Harmless(file),
      report.storageVersion, report.whole, report.promised, LostText(report), report.status, report.errorLocation);
  for (const LoadReport::IndexerCount& count : report.indexer)
    text += fmt::format("  indexer {}: {} stored, {} alive\n", Harmless(ToUtf8(count.name)), count.stored, count.alive);
  if (report.findingCount == 0) return text + "no faults found\n";
  return text + FindingsText(report) +
         fmt::format("{} fault{} found\n", report.findingCount, report.findingCount == 1 ? "" : "s");
}

}  // namespace kestrova
