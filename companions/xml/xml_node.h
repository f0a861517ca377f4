// The elements of a parsed XML document, with two interfaces. KVXMLNode and KVXMLNodeList return wide texts and can
// change attributes. KVXMLElement and KVXMLAttribute are handles that copy no text, for a reader of every attribute.
//
// The document owns everything here; nodes, handles and texts are valid until its next load or its destruction. Names
// and values of the handles are UTF-8 views of the document's text, with entities replaced. Comments and texts are
// KVXMLNodes only if the document was loaded whole (KVXMLDocument::KeepWhole), and are never handles; processing
// instructions are skipped. KVXMLDocument::PlaceOf gives line and column. One thread at a time may use the KVXMLNodes
// of a document. Many threads may read through handles while no thread changes the document.
#pragma once

#include <string_view>

#include "framework/text.h"

class KVXMLDocument;
class KVXMLNode;

// A handle of one attribute, or empty. Attributes are in file order; a name that occurs twice is listed twice.
class KVSHARE_API KVXMLAttribute {
 public:
  KVXMLAttribute() = default;
  explicit operator bool() const noexcept { return parsed_ != nullptr; }

  // An empty handle gives a view whose data is null, and an empty handle.
  std::string_view Name() const noexcept;
  std::string_view Value() const noexcept;
  KVXMLAttribute Next() const noexcept;

 private:
  friend class KVXMLAttributeReader;
  friend class KVXMLElement;
  friend class KVXMLNode;
  explicit KVXMLAttribute(void* parsed) noexcept : parsed_(parsed) {}

  void* parsed_ = nullptr;  // the parser's attribute
};

// A handle of one element, or empty.
class KVSHARE_API KVXMLElement {
 public:
  KVXMLElement() = default;
  explicit operator bool() const noexcept { return parsed_ != nullptr; }

  // An empty handle gives a view whose data is null, and empty handles.
  std::string_view Name() const noexcept;
  KVXMLElement FirstChild() const noexcept;
  KVXMLElement NextSibling() const noexcept;
  KVXMLAttribute FirstAttribute() const noexcept;

 private:
  friend class KVXMLAttributeReader;
  friend class KVXMLDocument;
  friend class KVXMLElementReader;
  friend class KVXMLNode;
  explicit KVXMLElement(void* parsed) noexcept : parsed_(parsed) {}

  void* parsed_ = nullptr;  // the parser's node
};

// Iterates over an element's attributes, faster than KVXMLAttribute::Next.
class KVSHARE_API KVXMLAttributeReader {
 public:
  explicit KVXMLAttributeReader(KVXMLElement element) noexcept;
  // Sets both texts from the next attribute, the first one at the first call. Returns false, with both texts unchanged,
  // after the last one.
  bool Next(std::string_view& name, std::string_view& value) noexcept;

 private:
  void* parsed_;      // the attribute that the next call of Next returns
  const char* name_;  // the name of that attribute
};

// Iterates over the elements that are children of an element, faster than KVXMLElement::NextSibling.
class KVSHARE_API KVXMLElementReader {
 public:
  explicit KVXMLElementReader(KVXMLElement parent) noexcept;
  // Sets both from the next child, the first one at the first call. Returns false, with both unchanged, after the last
  // one.
  bool Next(KVXMLElement& child, std::string_view& name) noexcept;

 private:
  void* parsed_;  // the parser's node at which the next call of Next begins
};

// The children of a node in file order: elements, and also comments and texts if the document was loaded whole. Text
// that consists of blanks only is not a node.
class KVSHARE_API KVXMLNodeList {
 public:
  long GetSize() const noexcept { return size_; }
  // The child at the index; null if the index is outside the list. The document owns the node.
  KVXMLNode* operator[](long index) const noexcept;

 private:
  friend class KVXMLNode;
  KVXMLNode* first_ = nullptr;
  long size_ = 0;
};

class KVSHARE_API KVXMLNode {
 public:
  KVXMLNode() = default;
  KVXMLNode(const KVXMLNode&) = delete;
  KVXMLNode& operator=(const KVXMLNode&) = delete;

  // The children of an element, possibly an empty list; null for a comment or text. The first call builds the list. The
  // document owns it.
  KVXMLNodeList* GetChildNodes();
  // An element's name, or "#comment" or "#text".
  CString GetNodeName() const;
  // The text of a comment or text; for an element its own text pieces joined, without those of its child elements.
  CString GetNodeValue() const;
  // Returns true and sets value if the attribute exists, else false with value unchanged. Names compare with case. If a
  // name occurs twice, the first one is used.
  bool GetAttributeValue(CString name, CString& value) const;

  // Set changes an existing attribute, the first of that name; Add appends a new one. Set returns false if the
  // attribute does not exist. Add returns false if it exists, or if the name is not a plain XML name of ASCII
  // characters (no colon). Both return false, with nothing changed, if the document was not loaded whole.
  // KVXMLDocument::Save writes the changes.
  bool SetAttributeValue(CString name, CString value);
  bool AddAttribute(CString name, CString value);

  // The handle of this element; empty for a comment or text.
  KVXMLElement Element() const noexcept { return element_; }

 private:
  friend class KVXMLDocument;
  friend class KVXMLNodeList;

  // The first attribute of that name, or an empty handle.
  KVXMLAttribute Find(std::string_view name) const;

  KVXMLDocument* document_ = nullptr;
  KVXMLElement element_;
  void* other_ = nullptr;  // the parser's node if this is a comment or text, else null
  KVXMLNodeList children_;
  bool listed_ = false;
};
