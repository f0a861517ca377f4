// The steps before parsing and saving: detecting the encoding, conversion to UTF-8 and back, and the line starts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace kvxml {

// The encoding of a file. kWestern is "windows-1252"; "iso-8859-1" is read as it too.
enum class Encoding { kUtf8, kUtf16LittleEndian, kUtf16BigEndian, kWestern };

// Detects the encoding by the byte order mark, the first bytes or the XML declaration; otherwise UTF-8.
Encoding EncodingOf(std::string_view bytes);

// The name of an encoding in the XML declaration.
struct DeclaredEncoding {
  std::string name;    // empty without one
  std::size_t at = 0;  // its offset in the text
};
DeclaredEncoding DeclaredEncodingOf(std::string_view text);
// The name of an encoding for the user.
const char* NameOf(Encoding encoding);
// Whether a file with that declaration has that encoding.
bool IsNameOf(std::string_view declared, Encoding encoding);

// Convert bytes to UTF-8 and back; for kUtf8 both return a copy. Decode replaces invalid input by U+FFFD, and Encode
// writes a question mark for a character that the encoding lacks, so a round trip need not give the same bytes.
std::string Decode(std::string_view bytes, Encoding encoding);
std::string Encode(std::string_view text, Encoding encoding);

// The value escaped for an attribute in quotes. The result is ASCII, so it is valid in every encoding.
std::string EscapeAttribute(TextView value);

// The offset of each line's first byte; the first one is 0. A line ends with LF. The text is shorter than 4 GiB.
std::vector<std::uint32_t> LineStarts(std::string_view text);

}  // namespace kvxml
