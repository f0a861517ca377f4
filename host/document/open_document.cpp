#include "host/document/open_document.h"

#include <fmt/format.h>

#include <cstdio>

namespace kestrova {

OpenDocument::OpenDocument(const std::string& path)
    : OpenDocument(DocumentLoader(path, DocumentLoader::Mode::kStrict)) {
  const std::size_t mended = report.findingCount;
  if (mended > 0)
    fmt::print(stderr, "kestrova: {}: {} fault{} put right while reading; see kestrova document verify\n", path, mended,
               mended == 1 ? " was" : "s were");
}

OpenDocument::OpenDocument(DocumentLoader loader)
    : document(loader.Load()), report(loader.Report()), active(document.get()) {}

}  // namespace kestrova
