// KVXMLDocument reads one XML file and owns its nodes. Attributes can be changed and added; saving keeps every other
// byte of the file.
//
// A file may be UTF-8 or UTF-16 with or without a byte order mark, or declare "iso-8859-1" or "windows-1252"; anything
// else is read as UTF-8. The document fetches nothing from outside the file and expands no entities of a document type.
// Wide documents do not exhaust the stack, and too deep ones are refused before they are parsed. One thread at a time
// may load.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "companions/xml/xml_node.h"

// A place in the document's text. Lines and columns count from 1; a column counts bytes of UTF-8. 0 means unknown.
struct KVXMLPlace {
  int line = 0;
  int column = 0;
};

// Why the last load returned null.
struct KVXMLFailure {
  enum class Kind {
    kNone,        // the last load succeeded, or nothing was loaded yet
    kMissing,     // the file does not exist
    kUnreadable,  // the file exists but cannot be read: no permission, a folder, a disk error
    kTooLarge,    // the file or text is larger than the limit
    kMalformed,   // the XML is not well-formed, too deep or has too many elements; place and byte say where
  };

  Kind kind = Kind::kNone;
  KVXMLPlace place;
  std::size_t byte = 0;  // offset in the text converted to UTF-8, a byte order mark included
  std::string reason;    // for the user, in lower case and without a stop: "start and end tags do not match"
};

// Something that XML forbids in a document that was loaded nevertheless.
struct KVXMLFault {
  KVXMLPlace place;
  std::string reason;  // for the user, like that of a failure
};

// The largest file or text that is loaded, 256 MiB. The size is checked before memory is allocated.
inline constexpr std::size_t kXMLMostBytes = std::size_t{256} << 20;
// The most elements inside each other, the root element included.
inline constexpr std::size_t kXMLMostDepth = 10000;
// The most elements. The parser uses 64 bytes for an element or text and 40 for an attribute, so a document of empty
// elements ("<a/>") uses 17 times its size. With this limit elements and texts use at most 1 GB; attributes use at most
// 8 times the document's size.
inline constexpr std::size_t kXMLMostElements = 8000000;
// The most faults that are listed.
inline constexpr std::size_t kXMLMostFaults = 1000;

class KVSHARE_API KVXMLDocument {
 public:
  KVXMLDocument();
  ~KVXMLDocument();
  KVXMLDocument(const KVXMLDocument&) = delete;
  KVXMLDocument& operator=(const KVXMLDocument&) = delete;

  // Reads a file; the path is in the product's form. Returns the root element, which the document owns. Returns null if
  // the file cannot be read or parsed; LastFailure says why. Either way all nodes of an earlier load become invalid.
  KVXMLNode* LoadFromFile(CString fileName);
  // The same for text in memory, which is copied.
  KVXMLNode* LoadFromMemory(std::string_view bytes);

  const KVXMLFailure& LastFailure() const noexcept { return failure_; }

  // Whether later loads keep the line starts that PlaceOf needs, at the cost of one pass over the text. The default is
  // true. If false, PlaceOf returns unknown places; a failure still has its place.
  void KeepPlaces(bool keep) noexcept { keep_places_ = keep; }

  // Whether later loads keep the whole document, so that it can be changed and saved: comments and texts become nodes,
  // and a copy of the text is kept. The default is false, which is faster for a reader.
  void KeepWhole(bool keep) noexcept { keep_whole_ = keep; }
  // Whether later loads list the faults of the document; the default is false. It needs places (KeepPlaces).
  void KeepFaults(bool keep) noexcept { keep_faults_ = keep; }
  // The faults that the last load found, in file order, at most kXMLMostFaults. Empty if the load failed.
  const std::vector<KVXMLFault>& Faults() const noexcept { return faults_; }
  // The size limit of later loads in bytes, at most kXMLMostBytes.
  void SetMostBytes(std::size_t bytes) noexcept { most_bytes_ = bytes < kXMLMostBytes ? bytes : kXMLMostBytes; }

  // Writes the loaded document with its changes, in the file's encoding; all other bytes are as loaded. Writes a
  // temporary file first and renames it. Returns false, with the old file unchanged, if that fails or if SavedBytes
  // returns no bytes.
  bool Save(CString fileName) const;
  // The bytes that Save writes. Empty if no document was loaded whole, or if its original bytes cannot be reproduced
  // (for example invalid UTF-16).
  std::optional<std::string> SavedBytes() const;

  // The start of an element's name, of an attribute's name and of an attribute's value. An empty handle, and an
  // attribute added or changed after the load, may give an unknown place.
  KVXMLPlace PlaceOf(KVXMLElement element) const;
  KVXMLPlace PlaceOf(KVXMLAttribute attribute) const;
  KVXMLPlace PlaceOfValue(KVXMLAttribute attribute) const;

 private:
  friend class KVXMLNode;
  struct Parsed;
  // Replaces a number of bytes of source_ by before + value + after.
  struct Change {
    const void* attribute;  // the changed attribute, as the parser's pointer
    std::size_t at;         // offset in source_
    std::size_t bytes;
    std::string before;  // name, "=" and quote of an added attribute, else empty
    std::string value;
    std::string after;
  };
  // Fills text_ from a file or from memory. Returns false and sets the failure if that fails.
  using Source = std::function<bool()>;

  void MakeRoom(std::size_t size);
  bool ReadText(const Source& source);
  // Whether the current document was loaded whole.
  bool IsWhole() const noexcept { return whole_ && parsed_; }
  bool IsInText(const char* piece) const noexcept;
  std::size_t OffsetOf(const char* inText) const noexcept { return std::size_t(inText - text_.get()); }
  std::size_t ValueAt(std::size_t name) const noexcept;
  std::size_t ValueEnd(std::size_t value) const noexcept;
  void NoteChange(Change change);
  KVXMLNode* Load(const Source& source);
  void ListFaults();
  KVXMLNode* FailMalformed(const Source& source, std::size_t byte, std::string reason);
  void Fail(KVXMLFailure::Kind kind, std::string reason);
  KVXMLNode* NewNodes(std::size_t count);
  std::string_view Text() const noexcept { return {text_.get(), size_}; }
  KVXMLPlace PlaceOfByte(std::size_t byte) const;
  KVXMLPlace PlaceInText(std::string_view piece) const;
  void Clear();

  std::unique_ptr<char[]> text_;  // the text as UTF-8, NUL-terminated; the parser changes it in place
  std::size_t size_ = 0;
  std::unique_ptr<Parsed> parsed_;
  bool keep_places_ = true;
  bool keep_whole_ = false;
  bool keep_faults_ = false;
  bool whole_ = false;  // keep_whole_ at the time of the last load
  std::size_t most_bytes_ = kXMLMostBytes;
  std::string source_;                               // whole documents only: the text before parsing
  int encoding_ = 0;                                 // of the file
  bool reproducible_ = true;                         // whether the bytes of the file can be written again
  std::vector<Change> changes_;                      // sorted by offset
  std::vector<std::uint32_t> line_starts_;           // offsets before parsing; empty if not kept
  std::vector<std::unique_ptr<KVXMLNode[]>> nodes_;  // blocks; used_ and room_ belong to the last one
  std::size_t used_ = 0;
  std::size_t room_ = 0;
  KVXMLFailure failure_;
  std::vector<KVXMLFault> faults_;
};
