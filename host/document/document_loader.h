// DocumentLoader reads a document from its file in the order in which a host does it, and keeps what it noticed.
//
// The steps: the serialization status is cleared; the stand-in for the document that is coming becomes active and is
// told the storage version; the history, the settings and the objects are read; a document from before there was a
// history gets its one record; links are put right and objects that nobody owns deleted; objects that wait for it are
// told that all is in; the status word is taken; the indexer's counts are set to what is there.
#pragma once

#include <memory>
#include <string>

#include "host/document/document_file.h"
#include "host/document/document_report.h"
#include "host/document/host_document.h"

namespace kestrova {

class DocumentLoader {
 public:
  enum class Mode {
    kStrict,   // damage is refused
    kSalvage,  // whatever came whole is kept
  };

  DocumentLoader(const std::string& path, Mode mode);

  // The document; not null. Throws Failure if the file can't be read or is no document, and in strict mode if its bytes
  // are damaged: in the text stands what, where and what to do. Links and counts that were wrong are put right in
  // either mode, and stand in the report. With salvage the document has at least no nodes.
  // Its ids are frozen.
  std::unique_ptr<HostDocument> Load();

  const LoadReport& Report() const { return m_report; }

 private:
  void ReadHeader();
  bool CheckFacts(CFile& stream, const char* name, const StreamFacts& facts, unsigned location);
  std::unique_ptr<QFDocSrHistoryMngr> ReadHistory();
  bool IsFromBeforeHistory() const;
  void AddHistory(HostDocument& document) const;
  std::unique_ptr<QFDocSettings> ReadSettings();
  std::unique_ptr<HostDocument> ReadObjects();
  void RepairIndexer(HostDocument& document);
  [[noreturn]] void Refuse(const std::string& reason) const;
  void RefuseDamage(const std::string& stream, const std::string& reason) const;

  std::string m_path;
  bool m_salvage;
  DocumentSource m_source;
  DocumentHeader m_header;
  bool m_hasHeader = false;
  LoadReport m_report;
};

}  // namespace kestrova
