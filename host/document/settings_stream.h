// A document's settings in its file: an archive, a QFDocSettings its root, then the CRC-32 of the archive's bytes.
#pragma once

#include <memory>

#include "framework/file.h"
#include "share/settings/document_settings.h"

namespace kestrova {

// Raises what the archive and the file raise.
void WriteSettings(QFDocSettings& settings, CFile& stream);

// Reads from the stream's position on. What the archive lacks has its default. Without a known end there is no checksum
// to compare, and what stands behind the archive is left alone. Raises std::exception with what is wrong, for people;
// nothing of what was read is left then. The active document answers the storage version.
std::unique_ptr<QFDocSettings> ReadSettings(CFile& stream, bool endIsKnown);

}  // namespace kestrova
