// The location bits of the serialization status in this host's documents (share/objects/storage_status.h).
#pragma once

#include "share/objects/storage_status.h"

namespace kestrova {

inline constexpr unsigned kFaultInHeader = 0x20;
inline constexpr unsigned kFaultInHistory = 0x40;
inline constexpr unsigned kFaultInFields = 0x80;  // of the document itself
inline constexpr unsigned kFaultInIndexer = 0x100;
inline constexpr unsigned kFaultInClasses = 0x200;  // the table of the nodes' classes
inline constexpr unsigned kFaultInNodes = 0x400;
inline constexpr unsigned kFaultInSettings = 0x2000;
inline constexpr unsigned kFaultInLinks = 0x800;  // between nodes

}  // namespace kestrova
