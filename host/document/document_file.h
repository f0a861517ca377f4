// The file of a document: a compound file with the streams of document_header.h.
#pragma once

#include <memory>
#include <string>

#include "framework/file.h"
#include "host/document/document_header.h"
#include "platform/storage.h"

namespace kestrova {

class HostDocument;

// Saves the document under the system's path: a whole new file is put in the place of an old one, or the old one stays
// and Failure is thrown. The history gets its entry; the document then has the file's title and is not modified.
// It is the active document, and the environment has been started. Links that lead out of the document are dropped, and
// so is what uses the document itself: they could not be stored.
void SaveDocument(HostDocument& document, const std::string& path);

// The streams of a file that is read. A file that is damaged as a compound file, or was cut off, is looked through for
// the beginnings of its archives.
class DocumentSource {
 public:
  // Throws Failure if the file can't be read, or is neither a compound file nor the beginning of one.
  explicit DocumentSource(const std::string& path);
  ~DocumentSource();
  DocumentSource(const DocumentSource&) = delete;
  DocumentSource& operator=(const DocumentSource&) = delete;

  // What is wrong with the compound file; empty if it is whole.
  const std::string& Damage() const { return m_damage; }
  // The header's bytes; null without such a stream, or if it can't be read.
  std::unique_ptr<std::string> Header() const;

  struct Archive {
    std::unique_ptr<CFile> file;  // positioned at the archive's beginning; null if there is none
    bool found = false;           // by its first bytes in a damaged file: where it ends, nobody knows
  };
  // One of each at a time.
  Archive Objects() const { return Open(kObjectsStream, "HostDocument"); }
  Archive History() const { return Open(kHistoryStream, "QFDocSrHistoryMngr"); }
  Archive Settings() const { return Open(kSettingsStream, "QFDocSettings"); }

 private:
  Archive Open(LPCTSTR stream, std::string_view rootClass) const;
  Archive Find(std::string_view rootClass) const;

  std::basic_string<TCHAR> m_path;  // the product's
  IStorage* m_root = nullptr;       // null for a damaged file
  std::string m_damage;
};

// How much of a stream is read at once: a small part of it, so that a file that turns out damaged has cost little.
int BufferBytesFor(const CFile& stream);

// The length and checksum of a stream, read from its beginning to its end; the position is the beginning again. Raises
// CFileException.
StreamFacts FactsOf(CFile& stream);

}  // namespace kestrova
