// HostDocument: its record in the object archive, whose root it is.
//
// The layout of the record, in order:
//
//   1  class record of HostDocument, schema 1
//   2  record of QFObject
//   3  units              LONG     document_units.h
//   4  next id            DWORD
//   5  service pack       text
//   6  the indexer        reference to a QFObjectIndexerHelper, whose record is here
//   7  number of nodes    count
//   8  a class record per node, in the tree's order; it also gives the node its number
//   9  the records of the nodes, in the same order
//
// All nodes have their numbers before the first of their records. So every reference to a node or to the document is a
// number, the depth of nesting does not grow with the document, and damage costs only the records from the damaged one
// on.
#include <algorithm>
#include <exception>

#include "framework/archive.h"
#include "host/document/document_reading.h"
#include "host/document/document_status.h"
#include "host/document/host_document.h"
#include "host/shell/progress_bar.h"
#include "share/core/document_callbacks.h"
#include "share/core/document_messages.h"

namespace kestrova {

IMPLEMENT_SERIAL(HostDocument, QFObject, VERSIONABLE_SCHEMA | 1)

namespace {

// The smallest record of a node in any schema: class record, class records of the levels, five texts, id, state, owner.
constexpr ULONGLONG kLeastNodeBytes = 20;
constexpr ULONGLONG kClassRecordBytes = 2;
// Memory per row in the archive's table, and per node in the document's list, which doubles as it grows.
constexpr ULONGLONG kRowBytes = 8;
constexpr ULONGLONG kNodeOverhead = 16;
// Nodes are created before their records are read. Their memory is limited to a multiple of the bytes left in the
// archive; only a damaged document needs more.
constexpr ULONGLONG kMemoryFactor = 3;
constexpr ULONGLONG kMemorySlack = 1024;
constexpr DWORD kProgressEvery = 4096;

ULONGLONG NodeBytes(const CRuntimeClass* record) { return ULONGLONG(record->m_nObjectSize) + kNodeOverhead; }

void ReportProgress(DWORD done) {
  if (done % kProgressEvery == 0) QFProgressCallback(done);
}

}  // namespace

void DocumentReading::NoteFault(const CArchive& ar, const std::exception& failure) {
  if (dynamic_cast<const std::bad_alloc*>(&failure)) throw;
  if (fault) return;
  const auto* archive = dynamic_cast<const CArchiveException*>(&failure);
  fault = {failure.what(), 0, archive && archive->m_cause == CArchiveException::badSchema};
  try {
    fault->offset = ar.GetFile()->GetLength() - ar.GetBytesLeft();
  } catch (const CException&) {
    // The file cannot be read any more; the offset stays 0.
  }
}

void HostDocument::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    StoreRecord(ar);
  } else {
    LoadRecord(ar);
  }
}

// ---- storing

void HostDocument::StoreRecord(CArchive& ar) {
  // The archive would store a user of the document before the table that gives the nodes their numbers.
  if (GetCountOfUserObjects() > 0) AfxThrowArchiveException(CArchiveException::genericException, ar.m_strFileName);
  ar.SerializeClass(RUNTIME_CLASS(HostDocument));
  QFObject::Serialize(ar);
  ar << m_params.GetDocParamUnits() << m_nextId << m_servicePack;
  ar.WriteObject(m_indexer.get());
  std::vector<HostNode*> nodes;
  nodes.reserve(NodeCount());
  Walk([&](HostNode& node, int) { nodes.push_back(&node); });
  ar.WriteCount(nodes.size());
  for (const HostNode* node : nodes) {
    ar.WriteClass(node->GetRuntimeClass());
    ar.MapObject(node);
  }
  const ProgressBar bar("writing nodes", nodes.size());
  for (DWORD done = 0; done < nodes.size(); ++done) {
    nodes[done]->Serialize(ar);
    ReportProgress(done);
  }
}

// ---- loading

void HostDocument::LoadRecord(CArchive& ar) {
  DocumentReading* const reading = DocumentReading::Current();
  // A document inside another one is damage, and `reading` belongs to the outer one.
  if (reading && reading->part != DocumentReading::Part::kRoot)
    AfxThrowArchiveException(CArchiveException::badClass, ar.m_strFileName);
  const auto enter = [&](DocumentReading::Part part) {
    if (reading) reading->part = part;
  };
  m_loading = m_idsFrozen = true;
  try {
    enter(DocumentReading::Part::kFields);
    LoadOwnFields(ar);
    enter(DocumentReading::Part::kIndexer);
    LoadIndexer(ar);
    for (DWORD number = 0; reading && number < reading->numbersToSkip; ++number) ar.MapObject(this);
    enter(DocumentReading::Part::kClasses);
    MakeNodes(ar, reading);
    enter(DocumentReading::Part::kNodes);
    LoadNodes(ar, reading);
    enter(DocumentReading::Part::kEnd);
  } catch (const std::exception& failure) {
    if (reading) reading->NoteFault(ar, failure);
    if (!reading || !reading->salvage) throw;
    m_lost.assign(m_nodes.begin() + reading->whole, m_nodes.end());
    m_nodes.resize(reading->whole);
    for (const HostNode* node : m_lost) ++m_lostByClass[node->GetRuntimeClass()->m_lpszClassName];
  }
}

void HostDocument::LoadOwnFields(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(HostDocument));
  ar.GetObjectSchema();  // not used; reading it ends the record
  QFObject::Serialize(ar);
  int units = 0;
  ar >> units >> m_nextId >> m_servicePack;
  if (!SetUnits(units)) LogSerializationError(kFaultInFields);  // the document stays in millimetres
}

void HostDocument::LoadIndexer(CArchive& ar) {
  auto* indexer = static_cast<QFObjectIndexerHelper*>(ar.ReadOwnedObject(RUNTIME_CLASS(QFObjectIndexerHelper)));
  if (indexer) m_indexer.reset(indexer);
}

// Creates the nodes of the table. A salvaging reader also needs the numbers of nodes that have no memory or record
// left, since the first nodes refer to them: one placeholder per class has all these numbers.
void HostDocument::MakeNodes(CArchive& ar, DocumentReading* reading) {
  const bool salvage = reading && reading->salvage;
  const ULONGLONG room = ar.GetBytesLeft() * kMemoryFactor + kMemorySlack;
  const ULONGLONG count = ar.ReadCount(salvage ? kClassRecordBytes : kLeastNodeBytes);
  if (count >= HostNode::kNoPlace) AfxThrowArchiveException(CArchiveException::badIndex, ar.m_strFileName);
  if (reading) reading->promised = DWORD(count);
  ULONGLONG memory = count * kRowBytes;
  if (memory > room) AfxThrowArchiveException(CArchiveException::endOfFile, ar.m_strFileName);
  m_nodes.reserve(std::size_t(std::min(count, (room - memory) / (sizeof(HostNode) + kNodeOverhead))));
  for (ULONGLONG row = 0; row < count; ++row) {
    const CRuntimeClass* record = ar.ReadClass(RUNTIME_CLASS(HostNode));
    if (NodeCount() == row && memory + NodeBytes(record) <= room) {
      memory += NodeBytes(record);
      ar.MapObject(MakeNode(ar, record));
    } else if (salvage) {
      ar.MapObject(Placeholder(ar, record));
    } else {
      AfxThrowArchiveException(CArchiveException::endOfFile, ar.m_strFileName);
    }
  }
}

HostNode* HostDocument::MakeNode(CArchive& ar, const CRuntimeClass* record) {
  std::unique_ptr<CObject> fresh(record->CreateObject());
  if (!fresh) AfxThrowArchiveException(CArchiveException::badClass, ar.m_strFileName);
  auto* node = static_cast<HostNode*>(fresh.get());
  m_nodes.push_back(node);
  node->m_place = NodeCount() - 1;
  return static_cast<HostNode*>(fresh.release());
}

HostNode* HostDocument::Placeholder(CArchive& ar, const CRuntimeClass* record) {
  ++m_lostByClass[record->m_lpszClassName];
  for (HostNode* node : m_placeholders)
    if (node->GetRuntimeClass() == record) return node;
  std::unique_ptr<CObject> fresh(record->CreateObject());
  if (!fresh) AfxThrowArchiveException(CArchiveException::badClass, ar.m_strFileName);
  m_placeholders.push_back(static_cast<HostNode*>(fresh.get()));
  return static_cast<HostNode*>(fresh.release());
}

void HostDocument::LoadNodes(CArchive& ar, DocumentReading* reading) {
  const ProgressBar bar("reading nodes", m_nodes.size());
  const ReadStorageUnitsScope units;
  DWORD done = 0;
  try {
    for (; done < NodeCount(); ++done) {
      Prefetch(done);
      m_nodes[done]->Serialize(ar);
      if (reading) reading->whole = done + 1;
      ReportProgress(done);
    }
  } catch (const std::exception&) {
    if (reading) reading->partialClass = m_nodes[done]->GetRuntimeClass()->m_lpszClassName;
    throw;
  }
  // The placeholders' nodes have no objects to read their records into.
  if (!m_placeholders.empty()) AfxThrowArchiveException(CArchiveException::endOfFile, ar.m_strFileName);
}

}  // namespace kestrova
