#include "companions/xml/xml_document.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <optional>
#include <pugixml.hpp>

#include "companions/xml/xml_text.h"
#include "platform/files.h"

namespace {

constexpr std::size_t kNodesPerBlock = 256;

pugi::xml_node FirstElement(pugi::xml_node node) {
  while (node && node.type() != pugi::node_element) node = node.next_sibling();
  return node;
}

// Copies what the parser found into the flat tables. Its names and values are parts of the text, which it has
// changed in place.
class TreeFiller {
 public:
  explicit TreeFiller(KVXMLTree& tree) : tree_(tree) {}

  // Without recursion, so that depth is no matter.
  void Fill(pugi::xml_node root) {
    pugi::xml_node node = root;
    std::uint32_t parent = KVXMLTree::kNone;
    for (;;) {
      const std::uint32_t index = Append(node, parent);
      pugi::xml_node next = FirstElement(node.first_child());
      if (next) parent = index;
      while (!next && node != root) {
        next = FirstElement(node.next_sibling());
        if (next) break;
        node = node.parent();
        tree_.elements[parent].end = std::uint32_t(tree_.elements.size());
        parent = tree_.elements[parent].parent;
      }
      if (!next) return;
      node = next;
    }
  }

 private:
  std::uint32_t Append(pugi::xml_node node, std::uint32_t parent) {
    const auto index = std::uint32_t(tree_.elements.size());
    const auto attributes = std::uint32_t(tree_.attributes.size());
    for (const pugi::xml_attribute at : node.attributes()) {
      tree_.attributes.push_back({PieceOf(at.name()), PieceOf(at.value())});
    }
    const auto attributesEnd = std::uint32_t(tree_.attributes.size());
    tree_.elements.push_back({PieceOf(node.name()), parent, index + 1, attributes, attributesEnd});
    return index;
  }

  KVXMLTree::Piece PieceOf(const char* text) const {
    return {std::uint32_t(text - tree_.text), std::uint32_t(std::strlen(text))};
  }

  KVXMLTree& tree_;
};

// The parser's own words are short and plain; only the one that a reader can't act on is replaced.
std::string ReasonOf(const pugi::xml_parse_result& result) {
  if (result.status == pugi::status_no_document_element) return "there is no root element";
  std::string reason = result.description();
  if (!reason.empty() && reason[0] >= 'A' && reason[0] <= 'Z') reason[0] = char(reason[0] - 'A' + 'a');
  return reason;
}

// A file open for reading, or not.
struct FileHandle {
  explicit FileHandle(LPCTSTR path)
      : handle(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr)) {}
  ~FileHandle() {
    if (*this) CloseHandle(handle);
  }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;
  explicit operator bool() const { return handle != INVALID_HANDLE_VALUE; }

  HANDLE handle;
};

}  // namespace

struct KVXMLDocument::Lines {
  std::once_flag once;
  std::vector<std::size_t> starts;
};

// Nodes ---------------------------------------------------------------------------------------------------------------

KVXMLNode* KVXMLNodeList::operator[](long index) const noexcept {
  return index >= 0 && index < size_ ? first_ + index : nullptr;
}

KVXMLNodeList* KVXMLNode::GetChildNodes() {
  if (!element_) return nullptr;
  if (listed_) return &children_;
  std::size_t count = 0;
  for (KVXMLElement child = element_.FirstChild(); child; child = child.NextSibling()) ++count;
  KVXMLNode* node = document_->NewNodes(count);
  children_.first_ = node;
  children_.size_ = long(count);
  for (KVXMLElement child = element_.FirstChild(); child; child = child.NextSibling()) {
    node->document_ = document_;
    (node++)->element_ = child;
  }
  listed_ = true;
  return &children_;
}

CString KVXMLNode::GetNodeName() const { return FromUtf8(element_.Name()); }

bool KVXMLNode::GetAttributeValue(CString name, CString& value) const {
  const std::string wanted = ToUtf8(name);
  for (KVXMLAttribute at = element_.FirstAttribute(); at; at = at.Next()) {
    if (wanted != at.Name()) continue;
    value = FromUtf8(at.Value());
    return true;
  }
  return false;
}

// Document ------------------------------------------------------------------------------------------------------------

KVXMLDocument::KVXMLDocument() : lines_(std::make_unique<Lines>()) {}
KVXMLDocument::~KVXMLDocument() = default;

KVXMLNode* KVXMLDocument::LoadFromFile(CString fileName) {
  using Kind = KVXMLFailure::Kind;
  Clear();
  const FileHandle file(fileName);
  const auto failed = [&](DWORD status) -> KVXMLNode* {
    const bool missing = status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
    Fail(missing ? Kind::kMissing : Kind::kUnreadable, 0, ErrorText(status));
    return nullptr;
  };
  LARGE_INTEGER size;
  if (!file || !GetFileSizeEx(file.handle, &size)) return failed(GetLastError());
  if (size.QuadPart > LONGLONG(kXMLMostBytes)) {
    Fail(Kind::kTooLarge, 0, "the file is too large");
    return nullptr;
  }
  MakeRoom(std::size_t(size.QuadPart));
  DWORD read = 0;
  if (!ReadFile(file.handle, text_.get(), DWORD(size_), &read, nullptr)) return failed(GetLastError());
  size_ = read;
  return Parse();
}

KVXMLNode* KVXMLDocument::LoadFromMemory(std::string_view bytes) {
  Clear();
  if (bytes.size() > kXMLMostBytes) {
    Fail(KVXMLFailure::Kind::kTooLarge, 0, "the text is too large");
    return nullptr;
  }
  MakeRoom(bytes.size());
  std::copy(bytes.begin(), bytes.end(), text_.get());
  return Parse();
}

void KVXMLDocument::MakeRoom(std::size_t size) {
  text_ = std::make_unique_for_overwrite<char[]>(size + 1);
  size_ = size;
}

KVXMLNode* KVXMLDocument::Parse() {
  if (const std::optional<std::string> converted = kvxml::ConvertToUtf8(Text())) {
    MakeRoom(converted->size());
    std::copy(converted->begin(), converted->end(), text_.get());
  }
  text_[size_] = '\0';
  if (!ParseIntoTree()) return nullptr;
  KVXMLNode* node = NewNodes(1);
  node->document_ = this;
  node->element_ = KVXMLElement(tree_, 0);
  return node;
}

bool KVXMLDocument::ParseIntoTree() {
  LineStarts();  // ahead of the parser, which changes the text
  pugi::xml_document parsed;
  const pugi::xml_parse_result result =
      parsed.load_buffer_inplace(text_.get(), size_, pugi::parse_default, pugi::encoding_utf8);
  if (!result) {
    Fail(KVXMLFailure::Kind::kMalformed, std::size_t(result.offset), ReasonOf(result));
    return false;
  }
  const pugi::xml_node root = parsed.document_element();
  if (const pugi::xml_node second = FirstElement(root.next_sibling())) {
    Fail(KVXMLFailure::Kind::kMalformed, std::size_t(second.name() - text_.get()),
         "a second root element follows the first");
    return false;
  }
  tree_.text = text_.get();
  TreeFiller(tree_).Fill(root);
  return true;
}

void KVXMLDocument::Fail(KVXMLFailure::Kind kind, std::size_t byte, std::string reason) {
  failure_ = {kind, {}, byte, std::move(reason)};
  if (kind == KVXMLFailure::Kind::kMalformed) failure_.place = PlaceOfByte(byte);
}

// Hands out neighbours from the open block, or opens a block that has room for all of them.
KVXMLNode* KVXMLDocument::NewNodes(std::size_t count) {
  if (count > room_ - used_) {
    room_ = std::max(count, kNodesPerBlock);
    used_ = 0;
    nodes_.push_back(std::make_unique<KVXMLNode[]>(room_));
  }
  if (count == 0) return nullptr;
  used_ += count;
  return nodes_.back().get() + used_ - count;
}

const std::vector<std::size_t>& KVXMLDocument::LineStarts() const {
  std::call_once(lines_->once, [this] { lines_->starts = kvxml::LineStarts(Text()); });
  return lines_->starts;
}

KVXMLPlace KVXMLDocument::PlaceOfByte(std::size_t byte) const {
  const std::vector<std::size_t>& starts = LineStarts();
  const auto next = std::upper_bound(starts.begin(), starts.end(), byte);
  return {int(next - starts.begin()), int(byte - *(next - 1)) + 1};
}

KVXMLPlace KVXMLDocument::PlaceInText(std::string_view piece) const {
  return piece.data() ? PlaceOfByte(std::size_t(piece.data() - text_.get())) : KVXMLPlace{};
}

KVXMLPlace KVXMLDocument::PlaceOf(KVXMLElement element) const { return PlaceInText(element.Name()); }
KVXMLPlace KVXMLDocument::PlaceOf(KVXMLAttribute attribute) const { return PlaceInText(attribute.Name()); }
KVXMLPlace KVXMLDocument::PlaceOfValue(KVXMLAttribute attribute) const { return PlaceInText(attribute.Value()); }

void KVXMLDocument::Clear() {
  tree_.Clear();
  text_.reset();
  size_ = 0;
  lines_ = std::make_unique<Lines>();
  nodes_.clear();
  used_ = room_ = 0;
  failure_ = {};
}
