// What happens to a file's bytes before they are parsed: conversion to UTF-8 and the table of line starts.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kvxml {

// The text as UTF-8 if its mark, its first bytes or its declaration say that it is something else that is known: UTF-16
// of either byte order, "iso-8859-1" or "windows-1252". None for other text, which is taken as it is.
std::optional<std::string> ConvertToUtf8(std::string_view text);

// The offset of the first byte of each line, the first line's 0 included. A line ends with LF.
std::vector<std::size_t> LineStarts(std::string_view text);

}  // namespace kvxml
