// The file of a document: a compound file with the streams of document_header.h.
#pragma once

#include <memory>
#include <string>

#include "framework/file.h"
#include "host/document/document_header.h"
#include "platform/storage.h"

namespace kestrova {

class HostDocument;

// Saves the document under the system's path, adds an entry to its history, sets its title to the file's name and
// clears the modified flag. Throws Failure on an error; an old file then stays as it was. The document must be the
// active one and the environment started. Removes links to objects outside the document, and users of the document
// itself, which cannot be stored.
void SaveDocument(HostDocument& document, const std::string& path);

// The streams of a file to read. In a file that is damaged as a compound file, or truncated, it searches for the starts
// of the archives.
class DocumentSource {
 public:
  // Throws Failure if the file cannot be read, or is neither a compound file nor the start of one.
  explicit DocumentSource(const std::string& path);
  ~DocumentSource();
  DocumentSource(const DocumentSource&) = delete;
  DocumentSource& operator=(const DocumentSource&) = delete;

  // The fault of the compound file; empty if it has none.
  const std::string& Damage() const { return m_damage; }
  // Searches for all archives from now on, if the file's bytes can be read. False if it does so already, or cannot.
  // Close the archives first. For a system that opens a damaged compound file and fails in its streams.
  bool SearchInstead();
  // The header's bytes; null if the stream is missing or cannot be read.
  std::unique_ptr<std::string> Header() const;

  struct Archive {
    std::unique_ptr<CFile> file;  // positioned at the start of the archive; null if there is no archive
    bool found = false;           // found by its first bytes in a damaged file: its end is unknown
  };
  // Keep at most one Archive of each stream open.
  Archive Objects() const { return Open(kObjectsStream, "HostDocument"); }
  Archive History() const { return Open(kHistoryStream, "QFDocSrHistoryMngr"); }
  Archive Settings() const { return Open(kSettingsStream, "QFDocSettings"); }

 private:
  Archive Open(LPCTSTR stream, std::string_view rootClass) const;
  Archive Find(std::string_view rootClass) const;

  std::basic_string<TCHAR> m_path;  // product path
  IStorage* m_root = nullptr;       // null for a damaged file
  std::string m_damage;
};

// The file's name without its folder.
CString TitleOf(const std::string& path);

// Buffer size for reading a stream: a small part of it, so that refusing a damaged file takes little memory.
int BufferBytesFor(const CFile& stream);

// Reads the whole stream and returns its length and checksum; the position is then the start. Throws CFileException.
StreamFacts FactsOf(CFile& stream);

}  // namespace kestrova
