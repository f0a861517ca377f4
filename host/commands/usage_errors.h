// Explains a command line that the option parser refuses.
#pragma once

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace kestrova {

// Throws WrongUsage with one line: what is wrong, and the nearest commands or options or the help to read.
[[noreturn]] void RefuseCommandLine(const CLI::App& app, const CLI::ParseError& error);

}  // namespace kestrova
