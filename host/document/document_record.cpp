// The document's object archive, the root of which is the document.
//
// The layout of its record, in order:
//
//   1  class record of HostDocument, schema 1
//   2  record of QFObject
//   3  units              LONG     document_units.h
//   4  next id            DWORD
//   5  service pack       text
//   6  the indexer        reference to a QFObjectIndexerHelper, which is here
//   7  number of nodes    count
//   8  of each node, in the tree's order, a class record; with it the node takes its number
//   9  the nodes' records, in the same order, one behind the other
//
// So every node is known before the first of their records: whatever stands in them about another node, or about the
// document, is a number, nothing is nested with the size of the document, and damage costs the records from the damaged
// one on and no other.
#include <exception>

#include "framework/archive.h"
#include "host/document/document_reading.h"
#include "host/document/document_status.h"
#include "host/document/host_document.h"
#include "host/progress_bar.h"
#include "share/env/document_callbacks.h"

namespace kestrova {

IMPLEMENT_SERIAL(HostDocument, QFObject, VERSIONABLE_SCHEMA | 1)

namespace {

// A class record, and the least of a node's record in any schema: class records, five texts, id, state, owner.
constexpr ULONGLONG kLeastNodeBytes = 20;
// What a node costs beside itself: its places in the document's list and in the archive's table, and the heap's share.
constexpr ULONGLONG kNodeOverhead = 24;
// Nodes are made ahead of their records. Together they are not larger than so many times the bytes that are left, of
// which any document has more than enough: only a damaged one promises more.
constexpr ULONGLONG kMemoryFactor = 3;
constexpr ULONGLONG kMemorySlack = 64 * 1024;
constexpr DWORD kProgressEvery = 4096;

void TellProgress(DWORD done) {
  if (done % kProgressEvery == 0) QFProgressCallback(done);
}

}  // namespace

void DocumentReading::NoteFault(const CArchive& ar, const std::exception& failure) {
  if (fault) return;
  fault = {failure.what(), 0};
  try {
    fault->offset = ar.GetFile()->GetLength() - ar.GetBytesLeft();
  } catch (const CException&) {
    // A file that can't be asked any more: the offset stays 0.
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
  // A user of the document would be stored ahead of the table that gives the nodes their numbers.
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
    TellProgress(done);
  }
}

// ---- loading

void HostDocument::LoadRecord(CArchive& ar) {
  DocumentReading* const reading = DocumentReading::Current();
  // A document inside another is damage, and this reading is not of it.
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
  }
}

void HostDocument::LoadOwnFields(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(HostDocument));
  if (ar.GetObjectSchema() > 1) AfxThrowArchiveException(CArchiveException::badSchema, ar.m_strFileName);
  QFObject::Serialize(ar);
  int units = 0;
  ar >> units >> m_nextId >> m_servicePack;
  if (!SetUnits(units)) LogSerializationError(kFaultInFields);  // millimetres, then
}

void HostDocument::LoadIndexer(CArchive& ar) {
  auto* indexer = static_cast<QFObjectIndexerHelper*>(ar.ReadOwnedObject(RUNTIME_CLASS(QFObjectIndexerHelper)));
  if (indexer) m_indexer.reset(indexer);
}

void HostDocument::MakeNodes(CArchive& ar, DocumentReading* reading) {
  const ULONGLONG room = ar.GetBytesLeft() * kMemoryFactor + kMemorySlack;
  const ULONGLONG count = ar.ReadCount(kLeastNodeBytes);
  if (count >= HostNode::kNoPlace) AfxThrowArchiveException(CArchiveException::badIndex, ar.m_strFileName);
  if (reading) reading->promised = DWORD(count);
  m_nodes.reserve(count);
  ULONGLONG memory = 0;
  while (m_nodes.size() < count) {
    const CRuntimeClass* record = ar.ReadClass(RUNTIME_CLASS(HostNode));
    memory += ULONGLONG(record->m_nObjectSize) + kNodeOverhead;
    if (memory > room) AfxThrowArchiveException(CArchiveException::endOfFile, ar.m_strFileName);
    auto* node = static_cast<HostNode*>(record->CreateObject());
    if (!node) AfxThrowArchiveException(CArchiveException::badClass, ar.m_strFileName);
    node->m_place = NodeCount();
    m_nodes.push_back(node);
    ar.MapObject(node);
  }
}

void HostDocument::LoadNodes(CArchive& ar, DocumentReading* reading) {
  const ProgressBar bar("reading nodes", m_nodes.size());
  DWORD done = 0;
  try {
    for (; done < NodeCount(); ++done) {
      m_nodes[done]->Serialize(ar);
      if (reading) reading->whole = done + 1;
      TellProgress(done);
    }
  } catch (const std::exception&) {
    if (reading) reading->partialClass = m_nodes[done]->GetRuntimeClass()->m_lpszClassName;
    throw;
  }
}

}  // namespace kestrova
