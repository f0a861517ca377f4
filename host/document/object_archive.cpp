#include "host/document/object_archive.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <unordered_set>

#include "framework/archive.h"
#include "framework/ob_list.h"
#include "host/document/document_file.h"
#include "host/document/document_reading.h"
#include "host/document/document_status.h"
#include "host/document/host_document.h"
#include "host/document/node_table.h"
#include "share/core/base_object.h"
#include "share/core/document_messages.h"
#include "share/core/version_info.h"

namespace kestrova {
namespace {

constexpr char kObjects[] = "Objects";

unsigned LocationOf(DocumentReading::Part part) {
  switch (part) {
    case DocumentReading::Part::kRoot:
    case DocumentReading::Part::kFields: return kFaultInFields;
    case DocumentReading::Part::kIndexer: return kFaultInIndexer;
    case DocumentReading::Part::kClasses: return kFaultInClasses;
    case DocumentReading::Part::kNodes:
    case DocumentReading::Part::kEnd: return kFaultInNodes;
  }
  return kFaultInNodes;
}

// The node for a finding. A damaged label may be very long; a finding has only its start.
std::string NameOf(const HostDocument& document, DWORD place) {
  constexpr std::size_t kQuoted = 80;  // characters of UTF-16
  if (place == HostNode::kNoPlace) return "the document";
  HostNode& node = document.NodeAt(place);
  const TextView name(node.Name());
  return fmt::format("{} {} \"{}{}\"", ToUtf8(node.GetClassNameW()), node.GetObjectId(),
                     ToUtf8(name.substr(0, kQuoted)), name.size() > kQuoted ? "..." : "");
}

void CopyResult(const DocumentReading& reading, LoadReport& report) {
  report.promised = reading.promised;
  report.whole = reading.whole;
  report.part = reading.part;
  report.partialClass = reading.partialClass;
  report.fault = reading.fault;
  if (!reading.fault) return;
  std::string text = TextOf(*reading.fault);
  if (reading.part == DocumentReading::Part::kNodes)
    text += fmt::format(", in node {} of {} ({})", reading.whole + 1, reading.promised, reading.partialClass);
  report.Add(LocationOf(reading.part), kObjects, text);
}

// Documents of earlier versions stored only one side of a use: completing the other is no fault.
void RepairLinks(HostDocument& document, LoadReport& report) {
  const bool current = !(GetActiveDocReadStorageUnits() < CKVVersionInfo::QF_STORAGE_VERSION);
  for (auto [place, faults] : document.RepairLinks()) {
    if (!current) faults.oneSided = 0;
    if (faults.Count() == 0) continue;
    report.dangling += faults.dangling;
    report.oneSided += faults.oneSided;
    if (faults.ownerLost) AnalyseOwner(document.NodeAt(place).GetOwner(), kFaultInLinks);
    std::string text;
    const auto add = [&](int count, const char* one, const char* many) {
      if (count > 0) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, count == 1 ? one : many);
    };
    add(faults.dangling, "reference to an object outside the document", "references to objects outside the document");
    add(faults.oneSided, "use that only one side has", "uses that only one side has");
    report.Add(kFaultInLinks, kObjects, fmt::format("{} has {}", NameOf(document, place), text));
  }
}

// Deletes the objects of the archive that neither the document, its indexer nor a node's pattern owns.
void DeleteStrays(CArchive& ar, HostDocument& document, LoadReport& report) {
  CObList entries;
  document.Indexer().GetAllIndexers(entries);
  std::unordered_set<const CObject*> held = {&document, &document.Indexer()};
  for (POSITION at = entries.GetHeadPosition(); at;) held.insert(entries.GetNext(at));
  document.ListPatternParts(held);
  std::map<std::string, int> strays;
  ar.DeleteLoaded([&](const CObject* object) {
    const bool stray = !held.contains(object);
    if (stray) ++strays[object->GetRuntimeClass()->m_lpszClassName];
    return stray;
  });
  for (const auto& [name, count] : strays) {
    report.strays += count;
    report.Add(kFaultInLinks, kObjects, fmt::format("objects in no list of the document: {} {}", count, name));
  }
}

std::unique_ptr<HostDocument> Read(CFile& file, DocumentReading& reading, LoadReport& report) {
  CArchive ar(&file, CArchive::load, BufferBytesFor(file));
  std::unique_ptr<HostDocument> document;
  try {
    document.reset(static_cast<HostDocument*>(ar.ReadObject(RUNTIME_CLASS(HostDocument))));
  } catch (const std::exception& failure) {
    reading.NoteFault(ar, failure);
  }
  CopyResult(reading, report);
  if (!document) {
    if (!reading.fault) report.Add(kFaultInFields, kObjects, "the root is null");
    return nullptr;
  }
  report.lost = document->LostByClass();
  RepairLinks(*document, report);
  document->UnlinkLostNodes();
  DeleteStrays(ar, *document, report);  // before the lost nodes, which strays may use
  document->DeleteLostNodes();
  return document;
}

// Enters the nodes in the indexer and sets the next id, which were lost with the document's fields.
void RestoreIds(HostDocument& document) {
  DWORD last = 0;
  for (DWORD place = 0; place < document.NodeCount(); ++place) {
    HostNode& node = document.NodeAt(place);
    if (const DWORD id = node.GetObjectId(); id != 0) {
      document.Indexer().AddObj(&node);
      last = std::max(last, id);
    }
  }
  document.SetNextId(last + 1);
}

// Reads the nodes of an archive whose start is damaged. Null, and no change of the report, if none can be read.
std::unique_ptr<HostDocument> ReadFromTable(CFile& file, const DocumentFault& fault, LoadReport& report) {
  // An undamaged file with a later schema has nodes of another layout.
  if (fault.isSchema && report.findingCount == 0) return nullptr;
  if (!HasBaseObjectRecord(GetActiveDocReadStorageUnits())) return nullptr;
  const auto table = FindNodeTable(file);
  if (!table) return nullptr;
  LoadReport result = report;
  result.Add(kFaultInFields, kObjects, TextOf(fault) + "; the document's own fields are lost");
  SplicedFile spliced(file, table->start);
  DocumentReading reading(/*salvaging=*/true);
  reading.numbersToSkip = table->firstNumber - kNumbersBeforeTable - 1;
  auto document = Read(spliced, reading, result);
  if (!document || document->NodeCount() == 0) return nullptr;
  if (result.fault) result.fault->offset = spliced.OriginOf(result.fault->offset);
  result.fieldsLost = true;
  RestoreIds(*document);
  report = std::move(result);
  return document;
}

}  // namespace

std::unique_ptr<HostDocument> ReadObjectArchive(CFile& file, bool salvage, LoadReport& report) {
  const ULONGLONG start = file.GetPosition();
  LoadReport result = report;
  std::unique_ptr<HostDocument> document;
  {
    DocumentReading reading(salvage);
    document = Read(file, reading, result);
  }
  // A fault before the nodes loses the document's own fields, not the nodes.
  if (salvage && result.fault && result.whole == 0) {
    file.Seek(LONGLONG(start), CFile::begin);
    if (auto rest = ReadFromTable(file, *result.fault, report)) return rest;
  }
  report = std::move(result);
  return document;
}

}  // namespace kestrova
