#include "companions/xml/xml_document.h"

#include <algorithm>
#include <pugixml.hpp>

#include "companions/xml/xml_text.h"
#include "platform/files.h"

namespace {

constexpr std::size_t kNodesPerBlock = 256;

pugi::xml_node NodeOf(void* handle) { return pugi::xml_node(static_cast<pugi::xml_node_struct*>(handle)); }
pugi::xml_attribute AttributeOf(void* handle) {
  return pugi::xml_attribute(static_cast<pugi::xml_attribute_struct*>(handle));
}

pugi::xml_node FirstElement(pugi::xml_node node) {
  while (node && node.type() != pugi::node_element) node = node.next_sibling();
  return node;
}

KVXMLElement ElementFrom(pugi::xml_node node) { return KVXMLElement(FirstElement(node).internal_object()); }

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

struct KVXMLDocument::Tree {
  pugi::xml_document parsed;
};

// Fast lane -----------------------------------------------------------------------------------------------------------

const char* KVXMLAttribute::Name() const noexcept { return AttributeOf(handle_).name(); }
const char* KVXMLAttribute::Value() const noexcept { return AttributeOf(handle_).value(); }
KVXMLAttribute KVXMLAttribute::Next() const noexcept {
  return KVXMLAttribute(AttributeOf(handle_).next_attribute().internal_object());
}

const char* KVXMLElement::Name() const noexcept { return NodeOf(handle_).name(); }
KVXMLElement KVXMLElement::FirstChild() const noexcept { return ElementFrom(NodeOf(handle_).first_child()); }
KVXMLElement KVXMLElement::NextSibling() const noexcept { return ElementFrom(NodeOf(handle_).next_sibling()); }
KVXMLAttribute KVXMLElement::FirstAttribute() const noexcept {
  return KVXMLAttribute(NodeOf(handle_).first_attribute().internal_object());
}

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

KVXMLDocument::KVXMLDocument() : tree_(std::make_unique<Tree>()) {}
KVXMLDocument::~KVXMLDocument() = default;

KVXMLNode* KVXMLDocument::LoadFromFile(CString fileName) {
  using Kind = KVXMLFailure::Kind;
  Clear();
  const FileHandle file(fileName);
  const auto failed = [&](DWORD status) {
    const bool missing = status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
    return Fail(missing ? Kind::kMissing : Kind::kUnreadable, 0, ErrorText(status));
  };
  LARGE_INTEGER size;
  if (!file || !GetFileSizeEx(file.handle, &size)) return failed(GetLastError());
  if (size.QuadPart > LONGLONG(kXMLMostBytes)) return Fail(Kind::kTooLarge, 0, "the file is too large");
  text_.resize(std::size_t(size.QuadPart));
  DWORD read = 0;
  if (!ReadFile(file.handle, text_.data(), DWORD(text_.size()), &read, nullptr)) return failed(GetLastError());
  text_.resize(read);
  return Parse();
}

KVXMLNode* KVXMLDocument::LoadFromMemory(std::string_view bytes) {
  Clear();
  if (bytes.size() > kXMLMostBytes) return Fail(KVXMLFailure::Kind::kTooLarge, 0, "the text is too large");
  text_ = bytes;
  return Parse();
}

KVXMLNode* KVXMLDocument::Parse() {
  kvxml::ConvertToUtf8(text_);
  lines_ = kvxml::LineStarts(text_);
  const pugi::xml_parse_result result =
      tree_->parsed.load_buffer_inplace(text_.data(), text_.size(), pugi::parse_default, pugi::encoding_utf8);
  if (!result) return Fail(KVXMLFailure::Kind::kMalformed, std::size_t(result.offset), ReasonOf(result));
  const KVXMLElement root(tree_->parsed.document_element().internal_object());
  if (const KVXMLElement second = root.NextSibling()) {
    return Fail(KVXMLFailure::Kind::kMalformed, std::size_t(second.Name() - text_.data()),
                "a second root element follows the first");
  }
  KVXMLNode* node = NewNodes(1);
  node->document_ = this;
  node->element_ = root;
  return node;
}

KVXMLNode* KVXMLDocument::Fail(KVXMLFailure::Kind kind, std::size_t byte, std::string reason) {
  failure_ = {kind, {}, byte, std::move(reason)};
  if (kind == KVXMLFailure::Kind::kMalformed) failure_.place = PlaceOfByte(byte);
  return nullptr;
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

KVXMLPlace KVXMLDocument::PlaceOfByte(std::size_t byte) const noexcept {
  const auto next = std::upper_bound(lines_.begin(), lines_.end(), byte);
  return {int(next - lines_.begin()), int(byte - *(next - 1)) + 1};
}

KVXMLPlace KVXMLDocument::PlaceInText(const char* at) const noexcept {
  const bool inside = at >= text_.data() && at < text_.data() + text_.size();
  return inside ? PlaceOfByte(std::size_t(at - text_.data())) : KVXMLPlace{};
}

KVXMLPlace KVXMLDocument::PlaceOf(KVXMLElement element) const noexcept { return PlaceInText(element.Name()); }
KVXMLPlace KVXMLDocument::PlaceOf(KVXMLAttribute attribute) const noexcept { return PlaceInText(attribute.Name()); }
KVXMLPlace KVXMLDocument::PlaceOfValue(KVXMLAttribute attribute) const noexcept {
  return PlaceInText(attribute.Value());
}

void KVXMLDocument::Clear() {
  tree_->parsed.reset();
  nodes_.clear();
  used_ = room_ = 0;
  lines_.clear();
  failure_ = {};
}
