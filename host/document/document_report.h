// LoadReport, the faults that a loader found in a document, and its forms for users and programs.
#pragma once

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "framework/text.h"
#include "host/document/document_reading.h"

namespace kestrova {

struct LoadReport {
  // One fault.
  struct Finding {
    std::string stream;  // "Header", "Objects", "History", "Settings", or empty for the file
    std::string text;
  };
  // The number of nodes of a class: as stored in the indexer and as in the document.
  struct IndexerCount {
    CString name;
    int stored = 0;
    int alive = 0;
  };

  // Appends a finding, with blanks for control characters, and logs its location bit. After kMostFindings it only
  // counts.
  void Add(unsigned location, std::string stream, std::string text);

  static constexpr std::size_t kMostFindings = 1000;

  float storageVersion = 0;
  std::vector<Finding> findings;
  std::size_t findingCount = 0;
  // The result of reading the objects, as in DocumentReading.
  DWORD promised = 0;
  DWORD whole = 0;
  DocumentReading::Part part = DocumentReading::Part::kRoot;
  std::string partialClass;
  std::map<std::string, DWORD> lost;  // number of lost nodes by class, as far as the table was read
  std::optional<DocumentFault> fault;
  bool fieldsLost = false;  // the document has only its nodes
  int dangling = 0;         // references to objects outside the document
  int oneSided = 0;         // uses that only one of the two nodes had
  int strays = 0;           // objects that no list of the document owned
  std::vector<IndexerCount> indexer;
  // The status word and the location bits at the end of the load.
  unsigned status = 0;
  unsigned errorLocation = 0;
};

// "byte 512: the data ends too early".
std::string TextOf(const DocumentFault& fault);
// ", 17 lost: 12 HostOperation, 5 HostFeature"; empty if no node is lost.
std::string LostText(const LoadReport& report);
// The first findings, one per line; empty if there are none.
std::string FindingsText(const LoadReport& report);
// The whole report in lines; the first one names the file.
std::string ReportText(const std::string& file, const LoadReport& report);
nlohmann::ordered_json ReportJson(const std::string& file, const LoadReport& report);

}  // namespace kestrova
