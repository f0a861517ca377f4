// A document that a command has loaded from its file, as the active one.
#pragma once

#include <memory>
#include <string>

#include "host/document/active_document.h"
#include "host/document/document_loader.h"

namespace kestrova {

struct OpenDocument {
  // Throws Failure if it is damaged. Faults that were put right are told on stderr.
  explicit OpenDocument(const std::string& path);

  std::unique_ptr<HostDocument> document;
  LoadReport report;
  ActiveDocument active;

 private:
  explicit OpenDocument(DocumentLoader loader);
};

}  // namespace kestrova
