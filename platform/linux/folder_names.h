// The search for a name in a folder without case. Internal to platform/linux.
//
// A folder has to be read whole for it. Of a large one that is searched again its names are remembered, so that making
// or copying ten thousand files there takes ten thousand times as long as one: the system tells of every name that
// comes or goes, whoever makes it, and what it has told is taken ahead of every answer. Where it can't tell, as of a
// folder on another machine, nothing is remembered.
#pragma once

#include <string>
#include <string_view>

// The name of the folder's entry that equals the wanted one without case, of several the first in the order of bytes;
// empty if there is none, or if the folder can't be read. The empty folder is the current one. Any thread.
std::string FindNameWithoutCase(const std::string& folder, std::string_view wanted);
