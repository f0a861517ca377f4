// The elements of a parsed XML document. KVXMLNode and KVXMLNodeList are what the product's readers walk; KVXMLElement
// and KVXMLAttribute are the fast lane for a reader that visits every attribute: plain handles that copy no text.
//
// Everything here belongs to its KVXMLDocument and dies with it, or with its next load. Names and values of the fast
// lane are UTF-8, terminated, with entities already replaced. Comments, text and processing instructions are left out.
// Positions are byte offsets into the document's text; KVXMLDocument::PlaceOf turns them into line and column. One
// thread at a time may use the KVXMLNodes of a document; the fast lane may be read from many.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "framework/text.h"

class KVXMLDocument;
class KVXMLNode;

// One attribute, or none. Attributes stand in file order; a name that is written twice is seen twice.
class KVSHARE_API KVXMLAttribute {
 public:
  KVXMLAttribute() = default;
  explicit KVXMLAttribute(void* handle) noexcept : handle_(handle) {}
  explicit operator bool() const noexcept { return handle_ != nullptr; }

  // Of none: an empty text, and none.
  const char* Name() const noexcept;
  const char* Value() const noexcept;
  KVXMLAttribute Next() const noexcept;

 private:
  void* handle_ = nullptr;
};

// One element, or none. Copying it copies one pointer.
class KVSHARE_API KVXMLElement {
 public:
  KVXMLElement() = default;
  explicit KVXMLElement(void* handle) noexcept : handle_(handle) {}
  explicit operator bool() const noexcept { return handle_ != nullptr; }

  // Of none: an empty text, and none.
  const char* Name() const noexcept;
  KVXMLElement FirstChild() const noexcept;
  KVXMLElement NextSibling() const noexcept;
  KVXMLAttribute FirstAttribute() const noexcept;

 private:
  void* handle_ = nullptr;
};

// The element children of a node, in file order.
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

  // The element children; an element without children has an empty list. Never null for a node of a loaded document;
  // null for a node that stands for no element. Built by the first call, so only what is walked is paid for.
  KVXMLNodeList* GetChildNodes();
  CString GetNodeName() const;
  // True, and the value, if the attribute exists; false, and value untouched, if not. Names compare with case; of a
  // name that is written twice the first counts.
  bool GetAttributeValue(CString name, CString& value) const;

  // The same element on the fast lane.
  KVXMLElement Element() const noexcept { return element_; }

 private:
  friend class KVXMLDocument;
  friend class KVXMLNodeList;

  KVXMLDocument* document_ = nullptr;
  KVXMLElement element_;
  KVXMLNodeList children_;
  bool listed_ = false;
};
