#include "companions/xml/xml_document.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <pugixml.hpp>

#include "companions/xml/internal/xml_markup.h"
#include "companions/xml/internal/xml_text.h"
#include "platform/files.h"
#include "platform/safe_file.h"

namespace {

constexpr std::size_t kNodesPerBlock = 256;
constexpr std::size_t kMostEncodingName = 40;  // in a reason

// A handle of the parser consists of one pointer, and so does a handle of this library. Converting by std::bit_cast
// avoids a call into the parser's library.
static_assert(sizeof(pugi::xml_node) == sizeof(void*) && sizeof(pugi::xml_attribute) == sizeof(void*));

pugi::xml_node NodeOf(void* parsed) { return std::bit_cast<pugi::xml_node>(parsed); }
pugi::xml_attribute AttributeOf(void* parsed) { return std::bit_cast<pugi::xml_attribute>(parsed); }
// The same without a copy of the pointer.
const pugi::xml_node& NodeIn(void* const& parsed) { return reinterpret_cast<const pugi::xml_node&>(parsed); }
const pugi::xml_attribute& AttributeIn(void* const& parsed) {
  return reinterpret_cast<const pugi::xml_attribute&>(parsed);
}
template <class Handle>
void* BitsOf(Handle handle) {
  return std::bit_cast<void*>(handle);
}

// The first element among the node and its next siblings. Of the nodes that the parser keeps, only elements have names.
void* FirstElement(pugi::xml_node node) {
  while (BitsOf(node) && *node.name() == '\0') node = node.next_sibling();
  return BitsOf(node);
}

// The NUL-terminated text at begin; next is the start of the following text. Usually two characters separate them (="
// or a quote and a blank) and the parser has written the NUL to the first. Then the length follows without a search.
// If the parser has shortened the text, because of entities, the NUL is searched.
std::string_view TextBefore(const char* begin, const char* next) {
  return next - begin >= 2 && next[-2] == '\0' ? std::string_view(begin, std::size_t(next - begin - 2)) : begin;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool IsPlainName(std::string_view name) {
  const auto letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
  const auto further = [&](char c) { return letter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.'; };
  return !name.empty() && letter(name[0]) && std::all_of(name.begin(), name.end(), further);
}

// The parser's description, starting in lower case; one that is hard to understand is replaced.
std::string ReasonOf(const pugi::xml_parse_result& result) {
  if (result.status == pugi::status_no_document_element) return "there is no root element";
  std::string reason = result.description();
  if (!reason.empty() && reason[0] >= 'A' && reason[0] <= 'Z') reason[0] = char(reason[0] - 'A' + 'a');
  return reason;
}

// "256 MiB", "1000 bytes".
std::string SizeText(std::size_t bytes) {
  constexpr std::size_t kMiB = std::size_t{1} << 20;
  return bytes % kMiB ? std::to_string(bytes) + " bytes" : std::to_string(bytes / kMiB) + " MiB";
}

// A file opened for reading; false if that failed.
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

struct KVXMLDocument::Parsed {
  pugi::xml_document document;
};

// Fast lane -----------------------------------------------------------------------------------------------------------

std::string_view KVXMLAttribute::Name() const noexcept {
  return parsed_ ? AttributeOf(parsed_).name() : std::string_view();
}
std::string_view KVXMLAttribute::Value() const noexcept {
  return parsed_ ? AttributeOf(parsed_).value() : std::string_view();
}
KVXMLAttribute KVXMLAttribute::Next() const noexcept {
  return KVXMLAttribute(parsed_ ? BitsOf(AttributeOf(parsed_).next_attribute()) : nullptr);
}

std::string_view KVXMLElement::Name() const noexcept { return parsed_ ? NodeOf(parsed_).name() : std::string_view(); }
KVXMLElement KVXMLElement::FirstChild() const noexcept {
  return KVXMLElement(parsed_ ? FirstElement(NodeOf(parsed_).first_child()) : nullptr);
}
KVXMLElement KVXMLElement::NextSibling() const noexcept {
  return KVXMLElement(parsed_ ? FirstElement(NodeOf(parsed_).next_sibling()) : nullptr);
}
KVXMLAttribute KVXMLElement::FirstAttribute() const noexcept {
  return KVXMLAttribute(parsed_ ? BitsOf(NodeOf(parsed_).first_attribute()) : nullptr);
}

KVXMLAttributeReader::KVXMLAttributeReader(KVXMLElement element) noexcept
    : parsed_(element.FirstAttribute().parsed_), name_(parsed_ ? AttributeOf(parsed_).name() : nullptr) {}

bool KVXMLAttributeReader::Next(std::string_view& name, std::string_view& value) noexcept {
  if (!parsed_) return false;
  const char* const begin = AttributeIn(parsed_).value();
  name = TextBefore(name_, begin);
  parsed_ = BitsOf(AttributeIn(parsed_).next_attribute());
  if (parsed_) {
    name_ = AttributeIn(parsed_).name();
    value = TextBefore(begin, name_);
  } else {
    value = begin;
  }
  return true;
}

KVXMLElementReader::KVXMLElementReader(KVXMLElement parent) noexcept
    : parsed_(parent.parsed_ ? BitsOf(NodeIn(parent.parsed_).first_child()) : nullptr) {}

bool KVXMLElementReader::Next(KVXMLElement& child, std::string_view& name) noexcept {
  while (parsed_) {
    const char* const text = NodeIn(parsed_).name();
    void* const node = parsed_;
    parsed_ = BitsOf(NodeIn(parsed_).next_sibling());
    if (*text == '\0') continue;  // no element
    child = KVXMLElement(node);
    name = text;
    return true;
  }
  return false;
}

// Nodes ---------------------------------------------------------------------------------------------------------------

KVXMLNode* KVXMLNodeList::operator[](long index) const noexcept {
  return index >= 0 && index < size_ ? first_ + index : nullptr;
}

KVXMLNodeList* KVXMLNode::GetChildNodes() {
  if (!element_) return nullptr;
  if (listed_) return &children_;
  const bool all = document_->IsWhole();
  const auto next = [all](pugi::xml_node node) { return all ? node : NodeOf(FirstElement(node)); };
  const pugi::xml_node first = next(NodeOf(element_.parsed_).first_child());
  std::size_t count = 0;
  for (pugi::xml_node child = first; BitsOf(child); child = next(child.next_sibling())) ++count;
  KVXMLNode* node = document_->NewNodes(count);
  children_.first_ = node;
  children_.size_ = long(count);
  for (pugi::xml_node child = first; BitsOf(child); child = next(child.next_sibling()), ++node) {
    node->document_ = document_;
    if (*child.name() != '\0') {
      node->element_ = KVXMLElement(BitsOf(child));
    } else {
      node->other_ = BitsOf(child);
    }
  }
  listed_ = true;
  return &children_;
}

CString KVXMLNode::GetNodeName() const {
  if (other_) return NodeOf(other_).type() == pugi::node_comment ? _T("#comment") : _T("#text");
  return FromUtf8(element_.Name());
}

CString KVXMLNode::GetNodeValue() const {
  if (other_) return FromUtf8(NodeOf(other_).value());
  std::string text;
  if (!element_) return CString();
  for (const pugi::xml_node piece : NodeOf(element_.parsed_).children()) {
    if (piece.type() == pugi::node_pcdata || piece.type() == pugi::node_cdata) text += piece.value();
  }
  return FromUtf8(text);
}

KVXMLAttribute KVXMLNode::Find(std::string_view name) const {
  KVXMLAttribute at = element_.FirstAttribute();
  while (at && at.Name() != name) at = at.Next();
  return at;
}

bool KVXMLNode::GetAttributeValue(CString name, CString& value) const {
  const KVXMLAttribute at = Find(ToUtf8(name));
  if (at) value = FromUtf8(at.Value());
  return bool(at);
}

bool KVXMLNode::SetAttributeValue(CString name, CString value) {
  const KVXMLAttribute at = Find(ToUtf8(name));
  if (!at || !document_->IsWhole()) return false;
  KVXMLDocument::Change change{at.parsed_, 0, 0, {}, kvxml::EscapeAttribute(value.View()), {}};
  if (document_->IsInText(at.Name().data())) {  // else it was added, and changes_ holds it already
    change.at = document_->ValueAt(document_->OffsetOf(at.Name().data()));
    change.bytes = document_->ValueEnd(change.at) - change.at;
  }
  document_->NoteChange(std::move(change));
  return AttributeOf(at.parsed_).set_value(ToUtf8(value).c_str());
}

bool KVXMLNode::AddAttribute(CString name, CString value) {
  const std::string narrow = ToUtf8(name);
  if (!element_ || !document_->IsWhole() || !IsPlainName(narrow) || Find(narrow)) return false;
  std::size_t at = document_->OffsetOf(element_.Name().data()) + element_.Name().size();
  for (KVXMLAttribute other = element_.FirstAttribute(); other; other = other.Next()) {
    if (!document_->IsInText(other.Name().data())) continue;
    at = document_->ValueEnd(document_->ValueAt(document_->OffsetOf(other.Name().data()))) + 1;
  }
  pugi::xml_attribute added = NodeOf(element_.parsed_).append_attribute(narrow.c_str());
  if (!added || !added.set_value(ToUtf8(value).c_str())) return false;
  document_->NoteChange({BitsOf(added), at, 0, ' ' + narrow + "=\"", kvxml::EscapeAttribute(value.View()), "\""});
  return true;
}

// Document ------------------------------------------------------------------------------------------------------------

KVXMLDocument::KVXMLDocument() = default;
KVXMLDocument::~KVXMLDocument() = default;

KVXMLNode* KVXMLDocument::LoadFromFile(CString fileName) {
  Clear();
  const FileHandle file(fileName);
  return Load([&] {
    using Kind = KVXMLFailure::Kind;
    LARGE_INTEGER size;
    LARGE_INTEGER start = {};
    DWORD read = 0;
    bool done = file && GetFileSizeEx(file.handle, &size) && SetFilePointerEx(file.handle, start, nullptr, FILE_BEGIN);
    if (done && size.QuadPart > LONGLONG(most_bytes_)) {
      Fail(Kind::kTooLarge, "the file is larger than " + SizeText(most_bytes_));
      return false;
    }
    if (done) {
      MakeRoom(std::size_t(size.QuadPart));
      done = ReadFile(file.handle, text_.get(), DWORD(size_), &read, nullptr);
    }
    const DWORD status = done ? DWORD(ERROR_SUCCESS) : GetLastError();
    const bool missing = status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
    if (!done) Fail(missing ? Kind::kMissing : Kind::kUnreadable, ErrorText(status));
    size_ = read;
    return done;
  });
}

KVXMLNode* KVXMLDocument::LoadFromMemory(std::string_view bytes) {
  Clear();
  return Load([&] {
    if (bytes.size() > most_bytes_) {
      Fail(KVXMLFailure::Kind::kTooLarge, "the text is larger than " + SizeText(most_bytes_));
      return false;
    }
    MakeRoom(bytes.size());
    std::copy(bytes.begin(), bytes.end(), text_.get());
    return true;
  });
}

void KVXMLDocument::MakeRoom(std::size_t size) {
  text_ = std::make_unique_for_overwrite<char[]>(size + 1);
  size_ = size;
}

// Reads the source into text_ and converts it to UTF-8 with a NUL at the end.
bool KVXMLDocument::ReadText(const Source& source) {
  if (!source()) return false;
  const kvxml::Encoding encoding = kvxml::EncodingOf(Text());
  const bool utf8 = encoding == kvxml::Encoding::kUtf8;
  encoding_ = int(encoding);
  if (!utf8) {
    const std::string converted = kvxml::Decode(Text(), encoding);
    reproducible_ = !(whole_ || keep_faults_) || kvxml::Encode(converted, encoding) == Text();
    MakeRoom(converted.size());
    std::copy(converted.begin(), converted.end(), text_.get());
  }
  if (whole_) source_.assign(Text());
  text_[size_] = '\0';
  return true;
}

KVXMLNode* KVXMLDocument::Load(const Source& source) {
  if (!ReadText(source)) return nullptr;
  if (keep_places_) line_starts_ = kvxml::LineStarts(Text());
  if (std::optional<kvxml::Fault> excess = kvxml::FindExcess(Text(), kXMLMostDepth, kXMLMostElements))
    return FailMalformed(source, excess->byte, std::move(excess->reason));
  if (keep_faults_) ListFaults();
  parsed_ = std::make_unique<Parsed>();
  const unsigned options = pugi::parse_default | (whole_ ? pugi::parse_comments : 0);
  const pugi::xml_parse_result result =
      parsed_->document.load_buffer_inplace(text_.get(), size_, options, pugi::encoding_utf8);
  if (!result) return FailMalformed(source, std::size_t(result.offset), ReasonOf(result));
  const pugi::xml_node root = parsed_->document.document_element();
  const KVXMLElement second(FirstElement(root.next_sibling()));
  if (second) {
    return FailMalformed(source, std::size_t(second.Name().data() - text_.get()),
                         "a second root element follows the first");
  }
  KVXMLNode* node = NewNodes(1);
  node->document_ = this;
  node->element_ = KVXMLElement(BitsOf(root));
  return node;
}

// Lists what is wrong in text_ before the parser changes it.
void KVXMLDocument::ListFaults() {
  const auto encoding = kvxml::Encoding(encoding_);
  const kvxml::DeclaredEncoding declared = kvxml::DeclaredEncodingOf(Text());
  const auto add = [this](std::size_t at, std::string reason) {
    faults_.push_back({PlaceOfByte(at), std::move(reason)});
  };
  if (!declared.name.empty() && !kvxml::IsNameOf(declared.name, encoding)) {
    add(declared.at, "the file declares the encoding " + declared.name.substr(0, kMostEncodingName) +
                         " and is read as " + kvxml::NameOf(encoding));
  }
  if (!reproducible_) {
    add(std::min(Text().find("\xEF\xBF\xBD"), size_),
        std::string("bytes that are not ") + kvxml::NameOf(encoding) + " are read as U+FFFD");
  }
  for (kvxml::Fault& fault : kvxml::FindFaults(Text(), kXMLMostFaults - faults_.size()))
    add(fault.byte, std::move(fault.reason));
}

// The parser has changed text_, so the text is read again to find the place, unless the line starts are known.
KVXMLNode* KVXMLDocument::FailMalformed(const Source& source, std::size_t at, std::string reason) {
  parsed_.reset();
  faults_.clear();
  if (line_starts_.empty() && ReadText(source)) line_starts_ = kvxml::LineStarts(Text());
  Fail(KVXMLFailure::Kind::kMalformed, std::move(reason));
  failure_.byte = at;
  failure_.place = PlaceOfByte(at);
  return nullptr;
}

void KVXMLDocument::Fail(KVXMLFailure::Kind kind, std::string reason) { failure_ = {kind, {}, 0, std::move(reason)}; }

// Returns that many consecutive nodes, from the last block or from a new one that is large enough.
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

// Changing ------------------------------------------------------------------------------------------------------------

// Whether the piece is part of the loaded text. The parser works in place, so all names and values are, except those
// that were set or added after the load.
bool KVXMLDocument::IsInText(const char* piece) const noexcept {
  return piece && std::less_equal<>()(text_.get(), piece) && std::less<>()(piece, text_.get() + size_);
}

// The value begins after the name, "=", optional blanks and a quote; it ends at the same quote.
std::size_t KVXMLDocument::ValueAt(std::size_t name) const noexcept {
  std::size_t at = source_.find('=', name) + 1;
  while (IsBlank(source_[at])) ++at;
  return at + 1;
}
std::size_t KVXMLDocument::ValueEnd(std::size_t value) const noexcept {
  return source_.find(source_[value - 1], value);
}

void KVXMLDocument::NoteChange(Change change) {
  for (Change& former : changes_) {
    if (former.attribute != change.attribute) continue;
    former.value = std::move(change.value);
    return;
  }
  const auto later = [](std::size_t at, const Change& other) { return at < other.at; };
  changes_.insert(std::upper_bound(changes_.begin(), changes_.end(), change.at, later), std::move(change));
}

std::optional<std::string> KVXMLDocument::SavedBytes() const {
  if (!IsWhole() || !reproducible_) return std::nullopt;
  std::string text;
  std::size_t done = 0;
  for (const Change& change : changes_) {
    text.append(source_, done, change.at - done).append(change.before).append(change.value).append(change.after);
    done = change.at + change.bytes;
  }
  text.append(source_, done);
  return kvxml::Encode(text, kvxml::Encoding(encoding_));
}

bool KVXMLDocument::Save(CString fileName) const {
  const std::optional<std::string> bytes = SavedBytes();
  return bytes && WriteFileSafely(fileName, *bytes) == ERROR_SUCCESS;
}

KVXMLPlace KVXMLDocument::PlaceOfByte(std::size_t at) const {
  const auto next = std::upper_bound(line_starts_.begin(), line_starts_.end(), at);
  if (next == line_starts_.begin()) return {};  // the line starts are not kept
  return {int(next - line_starts_.begin()), int(at - *(next - 1)) + 1};
}

KVXMLPlace KVXMLDocument::PlaceInText(std::string_view piece) const {
  return IsInText(piece.data()) ? PlaceOfByte(OffsetOf(piece.data())) : KVXMLPlace{};
}

KVXMLPlace KVXMLDocument::PlaceOf(KVXMLElement element) const { return PlaceInText(element.Name()); }
KVXMLPlace KVXMLDocument::PlaceOf(KVXMLAttribute attribute) const { return PlaceInText(attribute.Name()); }
KVXMLPlace KVXMLDocument::PlaceOfValue(KVXMLAttribute attribute) const { return PlaceInText(attribute.Value()); }

void KVXMLDocument::Clear() {
  whole_ = keep_whole_;
  source_.clear();
  encoding_ = 0;
  reproducible_ = true;
  changes_.clear();
  parsed_.reset();
  text_.reset();
  size_ = 0;
  line_starts_.clear();
  nodes_.clear();
  used_ = room_ = 0;
  failure_ = {};
  faults_.clear();
}
