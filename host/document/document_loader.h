// DocumentLoader reads a document from its file, in the order that a host must follow, and reports the faults.
//
// The steps:
//   1. clear the serialization status
//   2. make an empty document active and set its storage version: reading objects asks the active document
//   3. read the history, the settings and the objects
//   4. repair links, delete objects without an owner
//   5. give a document of a version without history its one record
//   6. call the objects that wait for the end of the load
//   7. take the status word
//   8. set the indexer's counts to the nodes of the document
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
    kStrict,   // refuses damage
    kSalvage,  // keeps everything that is intact
  };

  DocumentLoader(const std::string& path, Mode mode);

  // Returns the document, never null, with frozen ids. Both modes repair wrong links and counts and report them. With
  // kSalvage the document may have no nodes. Throws Failure if the file cannot be read or is not a document, and with
  // kStrict if bytes are damaged; the text has the fault, its place and the next step.
  std::unique_ptr<HostDocument> Load();

  const LoadReport& Report() const { return m_report; }

 private:
  void ReadHeader();
  bool CheckFacts(CFile& stream, const char* name, const StreamFacts& facts, unsigned location);
  std::unique_ptr<QFDocSrHistoryMngr> ReadHistory();
  bool IsFromBeforeHistory() const;
  void AddHistory(HostDocument& document) const;
  std::unique_ptr<QFDocSettings> ReadSettings();
  std::unique_ptr<HostDocument> LoadStreams();
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
