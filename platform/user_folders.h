// Folders of the user.
#pragma once

#include "platform/types.h"

// The folder for files that programs keep between their runs, which are neither settings nor documents: the one in the
// environment variable KV_STATE; else kestrova in XDG_STATE_HOME or ~/.local/state, on Windows Kestrova in
// LOCALAPPDATA. A product path with a backslash at its end; the folder may be missing. Empty if the user has no such
// place.
KVSHARE_API Text UserStateFolder();
