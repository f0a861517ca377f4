// What a loader noticed while it read a document, for people and for programs.
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
  // One thing that is not as it should be.
  struct Finding {
    std::string stream;  // "Header", "Objects", "History", "Settings", or empty for the file
    std::string text;
  };
  // Of one class, as the document had it and as it is.
  struct IndexerCount {
    CString name;
    int stored = 0;
    int alive = 0;
  };

  // Notes a finding, control characters in it as blanks, and logs its location bit. Beyond kMostFindings they are only
  // counted.
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
  std::map<std::string, DWORD> lost;  // nodes that did not come whole, by class, as far as their classes came
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

// "byte 512: the data ends too early".
std::string TextOf(const DocumentFault& fault);
// ", 17 lost: 12 HostOperation, 5 HostFeature"; empty if none are.
std::string LostText(const LoadReport& report);
// The first of the findings, one a line; empty if there are none.
std::string FindingsText(const LoadReport& report);
// Everything in lines; the file is named first.
std::string ReportText(const std::string& file, const LoadReport& report);
nlohmann::ordered_json ReportJson(const std::string& file, const LoadReport& report);

}  // namespace kestrova
