// Why a machine definition was not read, as the failure of a command.
#pragma once

#include "companions/xml/xml_document.h"
#include "host/shell/failure.h"

namespace kestrova {

// "FILE:LINE:COLUMN (byte N): REASON" or "cannot read FILE: REASON". The file is the system's path.
Failure MachineFailure(const std::string& file, const KVXMLFailure& failure);

}  // namespace kestrova
