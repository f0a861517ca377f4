// What happens to a file's bytes before they are parsed: conversion to UTF-8 and the table of line starts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace kvxml {

// How a file's text lies in its bytes. Western is "windows-1252", which "iso-8859-1" is read as.
enum class Encoding { kUtf8, kUtf16LittleEndian, kUtf16BigEndian, kWestern };

// By its mark, its first bytes or its declaration; text that tells nothing known is taken as UTF-8.
Encoding EncodingOf(std::string_view bytes);

// The text as UTF-8 and back. What can't be told becomes U+FFFD, or a question mark, so the way there and back need not
// give the same bytes. Of UTF-8 both give a copy.
std::string Decode(std::string_view bytes, Encoding encoding);
std::string Encode(std::string_view text, Encoding encoding);

// A value as it stands between the quotes of an attribute, in ASCII alone, so that it fits every encoding.
std::string EscapeAttribute(TextView value);

// The offset of the first byte of each line, the first line's 0 included. A line ends with LF.
std::vector<std::size_t> LineStarts(std::string_view text);

}  // namespace kvxml
