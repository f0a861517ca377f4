// OpenDocument loads a document from its file for a command and makes it the active one.
#pragma once

#include <memory>
#include <string>

#include "host/document/active_document.h"
#include "host/document/document_loader.h"

namespace kestrova {

struct OpenDocument {
  // Throws Failure if the document is damaged. Prints a line on stderr if the loader repaired faults.
  explicit OpenDocument(const std::string& path);

  std::unique_ptr<HostDocument> document;
  LoadReport report;
  ActiveDocument active;

 private:
  explicit OpenDocument(DocumentLoader loader);
};

}  // namespace kestrova
