// DocumentLoader reads a document from its file in the order in which a host does it, and keeps what it noticed.
//
// The steps: the serialization status is cleared; the stand-in for the document that is coming becomes active and is
// told the storage version; the history and the objects are read; links are put right and objects that nobody owns
// deleted; objects that wait for it are told that all is in; the status word is taken; the indexer's counts are set to
// what is there.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/document/document_file.h"
#include "host/document/document_reading.h"
#include "host/document/host_document.h"

namespace kestrova {

struct LoadReport {
  // One thing that is not as it should be.
  struct Finding {
    std::string stream;  // "Header", "Objects", "History", or empty for the file
    std::string text;
  };
  // Of one class, as the document had it and as it is.
  struct IndexerCount {
    CString name;
    int stored = 0;
    int alive = 0;
  };

  // Notes a finding and logs its location bit. Beyond kMostFindings they are only counted.
  void Add(unsigned location, std::string stream, std::string text);

  static constexpr std::size_t kMostFindings = 1000;

  float storageVersion = 0;
  std::vector<Finding> findings;
  std::size_t findingCount = 0;
  // The reading of the objects: how many nodes were promised, how many came whole, what ended it.
  DWORD promised = 0;
  DWORD whole = 0;
  DocumentReading::Part part = DocumentReading::Part::kRoot;
  std::string partialClass;
  std::optional<DocumentFault> fault;
  // References to what no list of the document owns, uses that one side alone knew, and objects that no list owned.
  int dangling = 0;
  int oneSided = 0;
  int strays = 0;
  std::vector<IndexerCount> indexer;
  // At the end of the load.
  unsigned status = 0;
  unsigned errorLocation = 0;
};

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
  std::unique_ptr<HostDocument> ReadObjects();
  void MendLinks(HostDocument& document);
  void DeleteStrays(CArchive& ar, HostDocument& document);
  void TakeOver(const DocumentReading& reading);
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

// "byte 512: the data ends too early".
std::string TextOf(const DocumentFault& fault);

}  // namespace kestrova
