// Starts programs of the user's desktop.
#pragma once

#include <string>
#include <vector>

// The full path of a program in a folder of PATH; empty if there is none.
std::string FindProgram(const std::string& name);

// Starts a program, by its full path, in a session of its own; arguments follow its name. Its input and output are
// closed, its errors stay visible. Waits up to half a second for its end. Returns 0 if it still runs or has ended well,
// else its exit code, 126 if it was ended by a signal, or 127 if it could not be started.
int StartProgram(const std::string& program, const std::vector<std::string>& arguments);

// The output of a program, at most 64 KiB, without the line ends after it; empty if it could not be started. Waits for
// its end, at most half a second.
std::string OutputOf(const std::string& program, const std::vector<std::string>& arguments);
