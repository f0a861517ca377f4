#include "host/document/open_document.h"

#include <fmt/format.h>

#include "host/shell/output.h"

namespace kestrova {

OpenDocument::OpenDocument(const std::string& path)
    : OpenDocument(DocumentLoader(path, DocumentLoader::Mode::kStrict)) {
  const std::size_t repaired = report.findingCount;
  if (repaired > 0)
    PrintNote(fmt::format("{}: {} fault{} repaired while reading; kestrova document verify lists {}", path, repaired,
                          repaired == 1 ? " was" : "s were", repaired == 1 ? "it" : "them"));
}

OpenDocument::OpenDocument(DocumentLoader loader)
    : document(loader.Load()), report(loader.Report()), active(document.get()) {}

}  // namespace kestrova
