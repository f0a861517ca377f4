#include "host/document/document_loader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "framework/archive.h"
#include "framework/ob_list.h"
#include "host/document/active_document.h"
#include "host/document/document_status.h"
#include "host/document/object_archive.h"
#include "host/document/settings_stream.h"
#include "host/shell/failure.h"
#include "share/core/document_messages.h"
#include "share/core/version_info.h"
#include "share/objects/save_history.h"
#include "share/objects/serialize_notify.h"

namespace kestrova {
namespace {

constexpr char kHeader[] = "Header";
constexpr char kObjects[] = "Objects";
constexpr char kHistory[] = "History";
constexpr char kSettings[] = "Settings";

// Clears the list of objects that wait for the end of the load, also after an exception: they may be deleted by then.
struct Notification {
  ~Notification() { QFSerializeNotify::Clear(); }
};

}  // namespace

DocumentLoader::DocumentLoader(const std::string& path, Mode mode)
    : m_path(path), m_salvage(mode == Mode::kSalvage), m_source(path) {}

void DocumentLoader::Refuse(const std::string& reason) const {
  throw Failure(fmt::format("cannot read {}: {}", m_path, reason), {.file = m_path});
}

void DocumentLoader::RefuseDamage(const std::string& stream, const std::string& reason) const {
  if (m_salvage) return;
  Refuse(fmt::format("{}{}; kestrova document repair saves the intact nodes",
                     stream.empty() ? "" : "stream " + stream + ", ", reason));
}

std::unique_ptr<HostDocument> DocumentLoader::Load() {
  try {
    return LoadStreams();
  } catch (const CFileException& failure) {  // outside a stream's records, such as its length
    if (!m_source.SearchInstead())
      throw Failure(fmt::format("cannot read {}: {}", m_path, failure.what()), {.file = m_path});
  }
  m_report = {};
  m_hasHeader = false;
  return Load();
}

std::unique_ptr<HostDocument> DocumentLoader::LoadStreams() {
  InitialiseSerializationStatus(0);
  const Notification notification;
  HostDocument empty;  // active while the document is read
  const ActiveDocument reading(&empty);
  ReadHeader();
  SetActiveDocReadStorageUnits(m_report.storageVersion);
  auto history = ReadHistory();
  auto settings = ReadSettings();
  auto document = ReadObjects();
  const ActiveDocument active(document.get());
  SetActiveDocReadStorageUnits(m_report.storageVersion);
  if (history) document->SetHistory(std::move(history));
  if (IsFromBeforeHistory()) AddHistory(*document);
  if (settings) document->SetSettings(std::move(settings));
  QFSerializeNotify::PostLoadFromStorageNotify();
  m_report.status = GetSerializationStatus();
  m_report.errorLocation = GetErrorLocation();
  RepairIndexer(*document);
  document->SetTitle(TitleOf(m_path));
  document->SetFullyLoaded();
  return document;
}

// ---- header and history

void DocumentLoader::ReadHeader() {
  m_report.storageVersion = CKVVersionInfo::QF_STORAGE_VERSION;
  if (!m_source.Damage().empty()) {
    m_report.Add(kFaultInHeader, "", m_source.Damage());
    RefuseDamage("", m_source.Damage());
    return;
  }
  const auto bytes = m_source.Header();
  std::string reason = bytes ? m_header.FromBytes(*bytes) : "it is missing: the file is not a document";
  const float version = m_header.storageVersion;
  const bool later = m_header.format > kDocumentFormat || CKVVersionInfo::IsGreater(version);
  if (reason.empty() && !(version > 0 && std::isfinite(version))) reason = "its storage version is invalid";
  if (later && reason.empty()) reason = fmt::format("it has storage version {}", version);
  if (reason.empty()) {
    m_hasHeader = true;
    m_report.storageVersion = version;
    return;
  }
  m_report.Add(kFaultInHeader, kHeader, reason);
  if (later) Refuse(fmt::format("stream {}, {}; a later release saved it: open it there", kHeader, reason));
  RefuseDamage(kHeader, reason);
}

// True if the stream has the length and the checksum of the header.
bool DocumentLoader::CheckFacts(CFile& stream, const char* name, const StreamFacts& facts, unsigned location) {
  const StreamFacts found = FactsOf(stream);
  if (found == facts) return true;
  const std::string reason = found.bytes != facts.bytes
                                 ? fmt::format("it has {} bytes, not {} as the header says", found.bytes, facts.bytes)
                                 : std::string("its checksum is wrong: bytes have changed");
  m_report.Add(location, name, reason);
  return false;
}

std::unique_ptr<QFDocSrHistoryMngr> DocumentLoader::ReadHistory() {
  const auto source = m_source.History();
  if (!source.file && IsFromBeforeHistory()) return nullptr;
  if (!source.file) {
    m_report.Add(kFaultInHistory, kHistory, "it is missing");
    RefuseDamage(kHistory, "it is missing");
    return nullptr;
  }
  try {
    if (m_hasHeader && !CheckFacts(*source.file, kHistory, m_header.history, kFaultInHistory))
      RefuseDamage(kHistory, m_report.findings.back().text);
  } catch (const CException& failure) {
    m_report.Add(kFaultInHistory, kHistory, failure.what());
    RefuseDamage(kHistory, failure.what());
    return nullptr;
  }
  CArchive ar(source.file.get(), CArchive::load, BufferBytesFor(*source.file));
  DocumentReading reading(/*salvaging=*/false);
  std::string reason = "the root is null";
  try {
    if (CObject* root = ar.ReadObject(RUNTIME_CLASS(QFDocSrHistoryMngr)))
      return std::unique_ptr<QFDocSrHistoryMngr>(static_cast<QFDocSrHistoryMngr*>(root));
  } catch (const std::exception& failure) {
    reading.NoteFault(ar, failure);
    reason = TextOf(*reading.fault);
  }
  m_report.Add(kFaultInHistory, kHistory, reason);
  RefuseDamage(kHistory, reason);
  return nullptr;
}

// False if the header has a length and checksum of a history: the history is lost then.
bool DocumentLoader::IsFromBeforeHistory() const {
  CString version;
  return m_hasHeader && m_header.history == StreamFacts{} && FindVersionBeforeHistory(m_report.storageVersion, version);
}

// Uses the stamp of the document's last change. Such a document does not store the build.
void DocumentLoader::AddHistory(HostDocument& document) const {
  CString version;
  FindVersionBeforeHistory(m_report.storageVersion, version);
  document.History().AddHistoryForOldVersion(version, /*buildCode=*/CString(), document.GetLastModifiedBy(),
                                             document.GetLastModified());
}

// ---- settings

// Null if the file has no settings, as old documents; the document then has those of a new one.
std::unique_ptr<QFDocSettings> DocumentLoader::ReadSettings() {
  const auto source = m_source.Settings();
  if (!source.file) return nullptr;
  try {
    return kestrova::ReadSettings(*source.file, /*endIsKnown=*/!source.found);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    m_report.Add(kFaultInSettings, kSettings, failure.what());
  }
  RefuseDamage(kSettings, m_report.findings.back().text);
  return nullptr;
}

// ---- objects

std::unique_ptr<HostDocument> DocumentLoader::ReadObjects() {
  const auto source = m_source.Objects();
  if (!source.file) {
    m_report.Add(kFaultInFields, kObjects, "it is missing");
    RefuseDamage(kObjects, "it is missing");
    return std::make_unique<HostDocument>();
  }
  if (m_hasHeader) {
    try {
      CheckFacts(*source.file, kObjects, m_header.objects, kFaultInNodes);
    } catch (const CException& failure) {
      m_report.Add(kFaultInNodes, kObjects, failure.what());
    }
  }
  const bool damaged = m_report.findingCount > 0;
  auto document = ReadObjectArchive(*source.file, m_salvage, m_report);
  const ULONGLONG length = source.file->GetLength();
  const ULONGLONG end = std::min(source.file->GetPosition(), length);
  if (m_report.fault || !document) {
    RefuseDamage(kObjects, m_report.findings.back().text);
  } else if (!source.found && end < length) {
    m_report.Add(kFaultInNodes, kObjects, fmt::format("{} bytes follow the last record", length - end));
  }
  if (document && m_report.fieldsLost && m_hasHeader) document->SetUnits(m_header.units);
  if (damaged) RefuseDamage(m_report.findings.front().stream, m_report.findings.front().text);
  return document ? std::move(document) : std::make_unique<HostDocument>();
}

// ---- indexer

void DocumentLoader::RepairIndexer(HostDocument& document) {
  CObList entries;
  document.Indexer().GetAllIndexers(entries);
  const auto each = [&](auto visit) {
    std::size_t number = 0;
    for (POSITION at = entries.GetHeadPosition(); at; ++number)
      visit(number, *static_cast<const QFObjectIndexer*>(entries.GetNext(at)));
  };
  each([&](std::size_t, const QFObjectIndexer& entry) {
    m_report.indexer.push_back({entry.GetIndexedClassName(), entry.GetReferences(), 0});
  });
  document.CorrectIndexer();
  each([&](std::size_t number, const QFObjectIndexer& entry) {
    m_report.indexer[number].alive = entry.GetReferences();
  });
}

}  // namespace kestrova
