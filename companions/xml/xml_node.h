// The elements of a parsed XML document. KVXMLNode and KVXMLNodeList are what the product's readers walk; KVXMLElement
// and KVXMLAttribute are the fast lane for a reader that visits every attribute: plain handles that copy no text.
//
// Everything here belongs to its KVXMLDocument and dies with it, or with its next load. Names and values of the fast
// lane are UTF-8, with entities already replaced, and are parts of the document's text: no NUL ends them. Comments,
// text and processing instructions are left out. KVXMLDocument::PlaceOf gives the line and column of any of them. One
// thread at a time may use the KVXMLNodes of a document; the fast lane may be read from many.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "companions/xml/xml_tree.h"
#include "framework/text.h"

class KVXMLDocument;
class KVXMLNode;

// One attribute, or none. Attributes stand in file order; a name that is written twice is seen twice.
class KVXMLAttribute {
 public:
  KVXMLAttribute() = default;
  KVXMLAttribute(const KVXMLTree& tree, std::uint32_t index, std::uint32_t end) noexcept
      : tree_(index < end ? &tree : nullptr), index_(index), end_(end) {}
  explicit operator bool() const noexcept { return tree_ != nullptr; }

  // Of none: an empty text whose data is null, and none.
  std::string_view Name() const noexcept { return tree_ ? tree_->At(Row().name) : std::string_view(); }
  std::string_view Value() const noexcept { return tree_ ? tree_->At(Row().value) : std::string_view(); }
  KVXMLAttribute Next() const noexcept { return tree_ ? KVXMLAttribute(*tree_, index_ + 1, end_) : *this; }

 private:
  const KVXMLTree::Attribute& Row() const noexcept { return tree_->attributes[index_]; }

  const KVXMLTree* tree_ = nullptr;
  std::uint32_t index_ = 0;
  std::uint32_t end_ = 0;
};

// One element, or none. Copying it copies two words.
class KVXMLElement {
 public:
  KVXMLElement() = default;
  KVXMLElement(const KVXMLTree& tree, std::uint32_t index) noexcept : tree_(&tree), index_(index) {}
  explicit operator bool() const noexcept { return tree_ != nullptr; }

  // Of none: an empty text whose data is null, and none.
  std::string_view Name() const noexcept { return tree_ ? tree_->At(Row().name) : std::string_view(); }
  KVXMLElement FirstChild() const noexcept { return tree_ ? ChildOf(index_, index_ + 1) : KVXMLElement(); }
  KVXMLElement NextSibling() const noexcept { return tree_ ? ChildOf(Row().parent, Row().end) : KVXMLElement(); }
  KVXMLAttribute FirstAttribute() const noexcept {
    return tree_ ? KVXMLAttribute(*tree_, Row().attributes, Row().attributesEnd) : KVXMLAttribute();
  }

 private:
  const KVXMLTree::Element& Row() const noexcept { return tree_->elements[index_]; }
  // The element at that index if it is a child of the parent.
  KVXMLElement ChildOf(std::uint32_t parent, std::uint32_t index) const noexcept {
    const bool child = index < tree_->elements.size() && tree_->elements[index].parent == parent;
    return child ? KVXMLElement(*tree_, index) : KVXMLElement();
  }

  const KVXMLTree* tree_ = nullptr;
  std::uint32_t index_ = 0;
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
