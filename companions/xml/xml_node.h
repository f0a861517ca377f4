// The elements of a parsed XML document. KVXMLNode and KVXMLNodeList are what the product's readers walk; KVXMLElement
// and KVXMLAttribute are the fast lane for a reader that visits every attribute: plain handles that copy no text.
//
// Everything here belongs to its KVXMLDocument and dies with it, or with its next load. Names and values of the fast
// lane are UTF-8, with entities already replaced, and are parts of the document's text. Comments and text are nodes
// only of a document that was loaded whole (KVXMLDocument::KeepWhole), and never on the fast lane; processing
// instructions are left out. KVXMLDocument::PlaceOf gives the line and column of an element or attribute. One thread at
// a time may use the KVXMLNodes of a document; the fast lane may be read from many, while nothing is changed.
#pragma once

#include <string_view>

#include "framework/text.h"

class KVXMLDocument;
class KVXMLNode;

// One attribute, or none. Attributes stand in file order; a name that is written twice is seen twice. Copying it copies
// a pointer.
class KVSHARE_API KVXMLAttribute {
 public:
  KVXMLAttribute() = default;
  explicit operator bool() const noexcept { return parsed_ != nullptr; }

  // Of none: an empty text whose data is null, and none.
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

// One element, or none. Copying it copies a pointer.
class KVSHARE_API KVXMLElement {
 public:
  KVXMLElement() = default;
  explicit operator bool() const noexcept { return parsed_ != nullptr; }

  // Of none: an empty text whose data is null, and none.
  std::string_view Name() const noexcept;
  KVXMLElement FirstChild() const noexcept;
  KVXMLElement NextSibling() const noexcept;
  KVXMLAttribute FirstAttribute() const noexcept;

 private:
  friend class KVXMLAttributeReader;
  friend class KVXMLDocument;
  friend class KVXMLNode;
  explicit KVXMLElement(void* parsed) noexcept : parsed_(parsed) {}

  void* parsed_ = nullptr;  // the parser's node
};

// Goes through an element's attributes, the first being what the first Next gives: quicker than handle by handle.
class KVSHARE_API KVXMLAttributeReader {
 public:
  explicit KVXMLAttributeReader(KVXMLElement element) noexcept;
  // False, with both texts left alone, when there is none left.
  bool Next(std::string_view& name, std::string_view& value) noexcept;

 private:
  void* parsed_;      // the attribute that Next gives
  const char* name_;  // and its name
};

// The children of a node, in file order: its elements, and its comments and texts if the document was loaded whole.
// Text of blanks alone is no node.
class KVSHARE_API KVXMLNodeList {
 public:
  long GetSize() const noexcept { return size_; }
  // Null for an index outside the list. The document owns the node.
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

  // The children; an element without children has an empty list. Never null for an element of a loaded document; null
  // for a node that is none. Built by the first call, so only what is walked is paid for.
  KVXMLNodeList* GetChildNodes();
  // An element's name, or "#comment" or "#text".
  CString GetNodeName() const;
  // The text that stands in an element itself, not in those below it, with the pieces around comments and elements
  // joined; of a comment or text what it says.
  CString GetNodeValue() const;
  // True, and the value, if the attribute exists; false, and value untouched, if not. Names compare with case; of a
  // name that is written twice the first counts.
  bool GetAttributeValue(CString name, CString& value) const;

  // Change an attribute that exists, the first of that name, or add one behind the others. False, with nothing changed,
  // if there is none or one already, if the name is no plain XML name of ASCII letters, or if the document was not
  // loaded whole. KVXMLDocument::Save writes the change.
  bool SetAttributeValue(CString name, CString value);
  bool AddAttribute(CString name, CString value);

  // The same element on the fast lane; none for a comment or text.
  KVXMLElement Element() const noexcept { return element_; }

 private:
  friend class KVXMLDocument;
  friend class KVXMLNodeList;

  // The first attribute of that name, or none.
  KVXMLAttribute Find(std::string_view name) const;

  KVXMLDocument* document_ = nullptr;
  KVXMLElement element_;
  void* other_ = nullptr;  // the parser's node of a comment or text
  KVXMLNodeList children_;
  bool listed_ = false;
};
