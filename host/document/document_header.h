// The header of a document file: a small stream that identifies the file and has the checksums of other streams.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace kestrova {

// The streams of a document's compound file.
inline constexpr LPCTSTR kHeaderStream = _T("Header");
inline constexpr LPCTSTR kObjectsStream = _T("Objects");  // an archive whose root is the document
// An archive whose root is a QFDocSrHistoryMngr. Documents of the first storage versions have no such stream.
inline constexpr LPCTSTR kHistoryStream = _T("History");
inline constexpr LPCTSTR kSettingsStream = _T("Settings");  // settings_stream.h; old documents have no such stream

// History: 1 is the first format.
inline constexpr DWORD kDocumentFormat = 1;

struct StreamFacts {
  ULONGLONG bytes = 0;
  DWORD checksum = 0;  // checksum.h

  bool operator==(const StreamFacts&) const = default;
};

// 48 bytes on disk, little-endian: "KVDOC" 0D 0A 1A, the fields in this order, the checksum of the 44 bytes before it.
struct DocumentHeader {
  DWORD format = kDocumentFormat;
  float storageVersion = 0;
  int units = 0;
  StreamFacts objects;
  StreamFacts history;

  std::string ToBytes() const;
  // Reads the bytes of the whole stream. Returns an empty text, or the fault in a few words; the fields then have the
  // values of the bytes that there are.
  std::string FromBytes(std::string_view bytes);
};

}  // namespace kestrova
