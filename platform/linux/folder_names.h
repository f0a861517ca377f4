// Finds a name in a folder without case. Internal to platform/linux.
//
// This needs the names of the whole folder. The names of a large folder that is searched repeatedly are cached, so that
// creating ten thousand files there takes ten thousand times as long as one: the system reports every created and
// deleted name, and these reports are applied before every search. Where it cannot report changes, such as in a folder
// on another machine, nothing is cached.
#pragma once

#include <string>
#include <string_view>

// Returns the entry of the folder that equals the wanted name without case; the first one in byte order if there are
// several; empty if there is none or the folder cannot be read. An empty folder path means the current one. Any thread
// may call.
std::string FindNameWithoutCase(const std::string& folder, std::string_view wanted);
