// The folders of the sources and of the build. Their absolute paths are compiled into folders.cpp only, so that the
// compiler's cache serves all other test sources in a clone at another path.
#pragma once

#include <filesystem>

namespace kvtest {

// The root of the repository, and a file below it.
std::filesystem::path SourceFile(const std::filesystem::path& relative = {});

// A file below the folder of the build, which has bin/, lib/ and etc/ like an installation.
std::filesystem::path BuiltFile(const std::filesystem::path& relative);

// A file below its folder with the shared library, which is lib/ or bin/.
std::filesystem::path LibraryFile(const std::filesystem::path& relative);

}  // namespace kvtest
