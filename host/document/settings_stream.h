// The stream of a document's settings: an archive whose root is a QFDocSettings, then the CRC-32 of the archive's
// bytes.
#pragma once

#include <memory>

#include "framework/file.h"
#include "share/settings/document_settings.h"

namespace kestrova {

// Throws the exceptions of the archive and the file.
void WriteSettings(QFDocSettings& settings, CFile& stream);

// Reads the settings at the stream's position. Values that the archive does not have get their defaults. If
// `endIsKnown` is false the checksum is not compared and bytes after the archive are ignored. Throws an std::exception
// whose text is the fault, and then keeps nothing. The active document answers the storage version.
std::unique_ptr<QFDocSettings> ReadSettings(CFile& stream, bool endIsKnown);

}  // namespace kestrova
