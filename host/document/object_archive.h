// Reads a document's object archive (layout: document_record.cpp), and puts right what it holds.
#pragma once

#include <memory>

#include "framework/file.h"
#include "host/document/document_report.h"

namespace kestrova {

class HostDocument;

// Reads the document that begins at the file's position. The active document is another one, which answers the storage
// version; the serialization status has been cleared.
//
// With keepWhatIsWhole a fault ends the reading and not the document: it has the nodes ahead of the fault. Otherwise,
// and where nothing came at all, the result is null. What was found stands in the report in either case.
//
// The document's links are right: no node refers to one that it doesn't hold, and what the archive made beside it is
// deleted. Its ids are frozen. Objects that asked for it wait for QFSerializeNotify::PostLoadFromStorageNotify.
std::unique_ptr<HostDocument> ReadObjectArchive(CFile& file, bool keepWhatIsWhole, LoadReport& report);

}  // namespace kestrova
