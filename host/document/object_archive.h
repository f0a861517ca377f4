// Reads a document's object archive (layout: document_record.cpp) and repairs its links.
#pragma once

#include <memory>

#include "framework/file.h"
#include "host/document/document_report.h"

namespace kestrova {

class HostDocument;

// Reads the document at the file's position. Clear the serialization status first and make another document active,
// which answers the storage version.
//
// With `salvage` the result has the nodes before the first fault. A fault before the table of nodes then costs only the
// document's own fields, such as units and next id, if the table is intact. Without `salvage` a fault makes the result
// null; so does a fault before the document itself. The report has the faults in each case.
//
// The result's links are correct and its ids frozen; objects that no list of the document owns are deleted. Objects
// that wait for the end of the load still wait for QFSerializeNotify::PostLoadFromStorageNotify.
std::unique_ptr<HostDocument> ReadObjectArchive(CFile& file, bool salvage, LoadReport& report);

}  // namespace kestrova
