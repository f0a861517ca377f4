// The header of a document file, the small stream by which it is known and its other streams are checked.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace kestrova {

// The streams of a document's compound file.
inline constexpr LPCTSTR kHeaderStream = _T("Header");
inline constexpr LPCTSTR kObjectsStream = _T("Objects");  // an archive, the document its root
// An archive, a QFDocSrHistoryMngr its root. Documents of the first storage versions have none.
inline constexpr LPCTSTR kHistoryStream = _T("History");
inline constexpr LPCTSTR kSettingsStream = _T("Settings");  // settings_stream.h; documents from before it have none

// Format 1 is the first.
inline constexpr DWORD kDocumentFormat = 1;

struct StreamFacts {
  ULONGLONG bytes = 0;
  DWORD checksum = 0;  // checksum.h

  bool operator==(const StreamFacts&) const = default;
};

// On disk 48 bytes, little-endian: "KVDOC" 0D 0A 1A, then the fields in this order, then the checksum of the 44 bytes
// ahead of it.
struct DocumentHeader {
  DWORD format = kDocumentFormat;
  float storageVersion = 0;
  int units = 0;
  StreamFacts objects;
  StreamFacts history;

  std::string ToBytes() const;
  // Reads it from the whole stream. An empty text, or what is wrong in a few words; the fields then are what the bytes
  // say as far as there are any.
  std::string FromBytes(std::string_view bytes);
};

}  // namespace kestrova
