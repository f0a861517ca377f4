// A parsed XML document as two flat tables in file order, its elements and their attributes: what the handles of
// xml_node.h point into. The tables hold places in the text and own none of it.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

struct KVXMLTree {
  static constexpr std::uint32_t kNone = UINT32_MAX;

  // A piece of the text.
  struct Piece {
    std::uint32_t begin;
    std::uint32_t size;
  };
  struct Attribute {
    Piece name;
    Piece value;
  };
  // The descendants of an element stand directly behind it.
  struct Element {
    Piece name;
    std::uint32_t parent;         // kNone for the root
    std::uint32_t end;            // the index behind the last descendant
    std::uint32_t attributes;     // index of the first
    std::uint32_t attributesEnd;  // and behind the last
  };

  std::string_view At(Piece piece) const noexcept { return {text + piece.begin, piece.size}; }
  void Clear() noexcept {
    text = nullptr;
    elements.clear();
    attributes.clear();
  }

  const char* text = nullptr;
  std::vector<Element> elements;
  std::vector<Attribute> attributes;
};
