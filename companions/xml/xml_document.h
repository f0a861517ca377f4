// KVXMLDocument reads one XML file and owns its nodes: the XML library that the product's readers are written against.
// Attributes can be changed and added; saving leaves everything else of the file as its author wrote it.
//
// A file may be UTF-8, UTF-16 (marked, or without mark), or declare "iso-8859-1" or "windows-1252"; anything else is
// taken as UTF-8. Nothing outside the file is ever fetched, entities of a document type are not expanded, and neither
// depth nor number of elements can exhaust the stack. One thread at a time may load.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "companions/xml/xml_node.h"

// A place in the document's text, as UTF-8. Lines and columns count from 1, columns in bytes; 0 means unknown.
struct KVXMLPlace {
  int line = 0;
  int column = 0;
};

// Why the last load gave no root.
struct KVXMLFailure {
  enum class Kind {
    kNone,        // it did give one, or nothing was loaded yet
    kMissing,     // there is no such file
    kUnreadable,  // it is there and cannot be read: rights, a folder, a fault of the disk
    kTooLarge,    // more than may be read
    kMalformed,   // it is no well-formed XML; place and byte say where
  };

  Kind kind = Kind::kNone;
  KVXMLPlace place;
  std::size_t byte = 0;  // offset from the start of the text as UTF-8, the mark counted
  std::string reason;    // for a human reader, a half sentence such as "start and end tags do not match"
};

// Larger files are refused before anything is allocated for them, unless a smaller limit is set.
inline constexpr std::size_t kXMLMostBytes = std::size_t{256} << 20;

class KVSHARE_API KVXMLDocument {
 public:
  KVXMLDocument();
  ~KVXMLDocument();
  KVXMLDocument(const KVXMLDocument&) = delete;
  KVXMLDocument& operator=(const KVXMLDocument&) = delete;

  // Reads a file, named by a path in the product's form. Gives the root element, which the document owns, or null when
  // the file cannot be read or parsed; LastFailure then says why. Nodes of an earlier load are gone in either case.
  KVXMLNode* LoadFromFile(CString fileName);
  // The same for text in memory, which is copied.
  KVXMLNode* LoadFromMemory(std::string_view bytes);

  const KVXMLFailure& LastFailure() const noexcept { return failure_; }

  // Whether later loads keep what the PlaceOf calls need, which costs a walk through the text: true until told
  // otherwise. Without it every place is unknown, but for that of a failure.
  void KeepPlaces(bool keep) noexcept { keep_places_ = keep; }

  // Whether later loads keep the document whole, so that it can be changed and saved: comments and texts count as
  // nodes, and a copy of the text stays. False until told otherwise; who only reads pays for none of it.
  void KeepWhole(bool keep) noexcept { keep_whole_ = keep; }
  // The size above which later loads refuse a file, at most kXMLMostBytes.
  void SetMostBytes(std::size_t bytes) noexcept { most_bytes_ = bytes < kXMLMostBytes ? bytes : kXMLMostBytes; }

  // Writes what was loaded with the changes since: every other byte stays, in the encoding that the file has. The file
  // is written beside and renamed. False, with the file as it was, if that fails, or if SavedBytes has none.
  bool Save(CString fileName) const;
  // What Save writes. None if no document was loaded whole, or if its bytes can't be given back, as those of broken
  // UTF-16.
  std::optional<std::string> SavedBytes() const;

  // Where an element's name, an attribute's name or an attribute's value begins. Of none: unknown.
  KVXMLPlace PlaceOf(KVXMLElement element) const;
  KVXMLPlace PlaceOf(KVXMLAttribute attribute) const;
  KVXMLPlace PlaceOfValue(KVXMLAttribute attribute) const;

 private:
  friend class KVXMLNode;
  struct Parsed;
  // A change of the text: so many bytes at that offset give way to others.
  struct Change {
    const void* attribute;  // the parser's, which the change is of
    std::size_t at;
    std::size_t bytes;
    std::string ahead;  // of the value: name and quote of an added attribute
    std::string value;
    std::string behind;
  };
  // Fills text_ from where the text comes from; false, with the failure set, if that can't be.
  using Source = std::function<bool()>;

  void MakeRoom(std::size_t size);
  bool ReadText(const Source& source);
  // Loaded whole, and not gone since.
  bool IsWhole() const noexcept { return whole_ && parsed_; }
  bool IsInText(const char* piece) const noexcept;
  std::size_t OffsetOf(const char* inText) const noexcept { return std::size_t(inText - text_.get()); }
  std::size_t ValueAt(std::size_t name) const noexcept;
  std::size_t ValueEnd(std::size_t value) const noexcept;
  void NoteChange(Change change);
  KVXMLNode* Load(const Source& source);
  KVXMLNode* FailMalformed(const Source& source, std::size_t byte, std::string reason);
  void Fail(KVXMLFailure::Kind kind, std::string reason);
  KVXMLNode* NewNodes(std::size_t count);
  std::string_view Text() const noexcept { return {text_.get(), size_}; }
  KVXMLPlace PlaceOfByte(std::size_t byte) const;
  KVXMLPlace PlaceInText(std::string_view piece) const;
  void Clear();

  std::unique_ptr<char[]> text_;  // the file, and a NUL; the parser writes into it
  std::size_t size_ = 0;
  std::unique_ptr<Parsed> parsed_;
  bool keep_places_ = true;
  bool keep_whole_ = false;
  bool whole_ = false;  // what is loaded now
  std::size_t most_bytes_ = kXMLMostBytes;
  std::string source_;                               // of a whole document: the text ahead of the parser
  std::optional<int> encoding_;                      // and that of the file, if its bytes can be given back
  std::vector<Change> changes_;                      // in the order of their places
  std::vector<std::size_t> line_starts_;             // of the text ahead of the parser; empty if not kept
  std::vector<std::unique_ptr<KVXMLNode[]>> nodes_;  // blocks; the last one is filled up to used_
  std::size_t used_ = 0;
  std::size_t room_ = 0;
  KVXMLFailure failure_;
};
