// Parses a profile file in its own encoding without copying, so that a change leaves all other bytes unchanged.
#include "platform/linux/profile_text.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "platform/linux/letter_case.h"
#include "platform/linux/utf8.h"
#include "platform/probe_table.h"
#include "platform/text.h"

namespace kvprofile {

namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
// The first bytes of UTF-32 and of UTF-16 in big-endian order with a mark, and of UTF-16 without a mark.
constexpr std::string_view kUtf32Mark("\xFF\xFE\0\0", 4);
constexpr std::string_view kOtherUtf16Mark = "\xFE\xFF";
constexpr UINT kWestern = 1252;

static_assert(std::endian::native == std::endian::little, "UTF-16LE is read in place");

// ---- units, characters and their hash

bool IsAscii(std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

std::string Encode(std::u16string_view text, char) {
  if (IsAscii(text)) return {text.begin(), text.end()};
  return Utf8FromWide(text);
}
std::u16string Encode(std::u16string_view text, char16_t) { return std::u16string(text); }

void AppendWide(std::u16string& out, std::string_view text) {
  if (std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<signed char>(byte) >= 0; }))
    out.append(text.begin(), text.end());
  else
    out += WideFromUtf8(text);
}
void AppendWide(std::u16string& out, std::u16string_view text) { out += text; }

inline UChar32 NextUpper(std::string_view text, std::size_t& at) {
  UChar32 character = static_cast<unsigned char>(text[at]);
  if (character < 0x80)
    ++at;
  else
    U8_NEXT_OR_FFFD(reinterpret_cast<const std::uint8_t*>(text.data()), at, text.size(), character);
  return character <= 0xFFFF ? UpperUnit(char16_t(character)) : character;
}
inline UChar32 NextUpper(std::u16string_view text, std::size_t& at) { return UpperUnit(text[at++]); }

template <class Unit>
bool EqualWithoutCase(std::basic_string_view<Unit> a, std::basic_string_view<Unit> b) {
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size()) {
    if (NextUpper(a, i) != NextUpper(b, j)) return false;
  }
  return i == a.size() && j == b.size();
}

// The seed differs in each process, so that no file can be prepared whose names all collide.
template <class Unit>
std::uint32_t HashOf(std::basic_string_view<Unit> name, std::uint32_t parent) {
  static const std::uint64_t seed = std::uint64_t(std::random_device()()) << 32 | std::random_device()();
  std::uint64_t hash = seed ^ parent;
  for (std::size_t at = 0; at < name.size();) {
    const auto product =
        static_cast<unsigned __int128>(hash ^ std::uint64_t(NextUpper(name, at))) * 0x9E3779B97F4A7C15u;
    hash = std::uint64_t(product) ^ std::uint64_t(product >> 64);
  }
  return std::uint32_t(hash ^ hash >> 32);
}

template <class Unit>
bool IsBlank(Unit unit) {
  return unit == ' ' || unit == '\t' || unit == '\v';
}

// ---- encodings

bool HasHalfPair(std::u16string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    UChar32 character = 0;
    U16_NEXT(text.data(), at, text.size(), character);
    if (U_IS_SURROGATE(character)) return true;
  }
  return false;
}

struct Utf8Count {
  bool invalid = false;     // bytes that are not UTF-8
  bool characters = false;  // characters of several bytes
};

Utf8Count CountUtf8(std::string_view bytes) {
  Utf8Count count;
  for (std::size_t at = 0; at < bytes.size();) {
    UChar32 character = static_cast<unsigned char>(bytes[at]);
    if (character < 0x80) {
      ++at;
      continue;
    }
    U8_NEXT(reinterpret_cast<const std::uint8_t*>(bytes.data()), at, bytes.size(), character);
    (character < 0 ? count.invalid : count.characters) = true;
  }
  return count;
}

std::u16string WideFromWestern(std::string_view bytes) {
  std::u16string text(bytes.size(), u'\0');
  MultiByteToWideChar(kWestern, 0, bytes.data(), int(bytes.size()), text.data(), int(text.size()));
  return text;
}

// The text in windows-1252; no value if that lacks a character.
std::optional<std::string> WesternFromWide(std::u16string_view text) {
  BOOL lacks = FALSE;
  std::string bytes(text.size(), '\0');
  WideCharToMultiByte(kWestern, 0, text.data(), int(text.size()), bytes.data(), int(bytes.size()), nullptr, &lacks);
  return lacks ? std::nullopt : std::optional(std::move(bytes));
}

// ---- the text

template <class Unit>
class Text final : public Profile {
  using String = std::basic_string<Unit>;
  using View = std::basic_string_view<Unit>;

 public:
  // What a file can be written in besides ASCII: any text, characters only, or nothing because the file mixes
  // encodings.
  enum class Room { kUnits, kCharacters, kAscii };

  // The first `mark` units are the byte order mark; `half` is an incomplete last unit, if any.
  Text(String text, std::size_t mark, std::string half, Room room)
      : text_(std::move(text)), start_(std::uint32_t(mark)), half_(std::move(half)), room_(room) {
    Index();
  }

  bool CanHold(std::u16string_view text) const override {
    return room_ == Room::kUnits || (room_ == Room::kCharacters ? !HasHalfPair(text) : IsAscii(text));
  }

  bool HasBytes(std::string_view bytes) const override {
    const std::string_view own = OwnBytes(text_);
    return bytes.size() == own.size() + half_.size() && bytes.starts_with(own) && bytes.ends_with(half_);
  }
  std::size_t Size() const override { return text_.size() * sizeof(Unit); }

  bool FindValue(std::u16string_view section, std::u16string_view key, std::u16string& value) const override {
    const Section* const found = FindSection(Encode(section, Unit()));
    const Slot* const slot = found ? FindKey(*found, Encode(key, Unit())) : nullptr;
    if (!slot) return false;
    View text = ViewOf(LineAt(LineBegin(slot->at)).value);
    const bool quoted = text.size() > 1 && text.front() == text.back() && (text.front() == '"' || text.front() == '\'');
    if (quoted) text = text.substr(1, text.size() - 2);
    AppendWide(value, text);
    return true;
  }

  std::u16string SectionNames() const override {
    std::size_t units = 0;
    ForSections([&](View name) { units += name.size() + 1; });
    std::u16string list;
    list.reserve(units);  // growing would take several times the memory of a long list
    ForSections([&](View name) { AppendName(list, name); });
    return list;
  }

  bool ListKeys(std::u16string_view section, std::u16string& list) const override {
    return ForLines(section, [&](const Line& line) {
      if (line.kind == Kind::kKey) AppendName(list, ViewOf(line.name));
    });
  }

  bool ListLines(std::u16string_view section, std::u16string& list) const override {
    return ForLines(section, [&](const Line& line) {
      if (line.kind != Kind::kKey && line.kind != Kind::kOther) return;
      AppendWide(list, ViewOf(line.name));
      if (line.kind == Kind::kKey) list += u'=';
      AppendWide(list, ViewOf(line.value));
      list += u'\0';
    });
  }

  std::string WithValue(std::u16string_view section, std::u16string_view key,
                        std::u16string_view value) const override {
    const String name = Encode(key, Unit());
    const Section* const found = FindSection(Encode(section, Unit()));
    const Slot* const slot = found ? FindKey(*found, name) : nullptr;
    String line(slot ? ViewOf(NameAt(slot->at)) : View(name));
    line += Unit('=');
    line += Encode(value, Unit());
    AppendLineEnd(line);
    if (slot) return Replaced({LineBegin(slot->at), LineAt(LineBegin(slot->at)).next}, line);
    if (!found) return Replaced(AtEnd(), HeaderOf(section) + line);
    const std::uint32_t at = LastLineEnd(*found);
    return Replaced({at, at}, line);
  }

  std::optional<std::string> WithoutKey(std::u16string_view section, std::u16string_view key) const override {
    const Section* const found = FindSection(Encode(section, Unit()));
    const Slot* const slot = found ? FindKey(*found, Encode(key, Unit())) : nullptr;
    if (!slot) return std::nullopt;
    return Replaced({LineBegin(slot->at), LineAt(LineBegin(slot->at)).next}, {});
  }

  std::optional<std::string> WithoutSection(std::u16string_view section) const override {
    const Section* const found = FindSection(Encode(section, Unit()));
    if (!found) return std::nullopt;
    return Replaced({found->header, found->end}, {});
  }

  std::string WithLines(std::u16string_view section, std::u16string_view lines) const override {
    String put;
    for (std::u16string_view rest = lines; !rest.empty();) {
      const std::size_t end = std::min(rest.find(u'\0'), rest.size());
      put += Encode(rest.substr(0, end), Unit());
      AppendLineEnd(put);
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    const Section* const found = FindSection(Encode(section, Unit()));
    if (!found) return Replaced(AtEnd(), HeaderOf(section) + put);
    String comments;
    String blanks;  // blanks after the last comment; new lines go before them
    for (std::uint32_t at = found->content; at < found->end;) {
      const Line line = LineAt(at);
      const View whole = ViewOf({at, line.next});
      if (line.kind == Kind::kBlank) blanks += whole;
      if (line.kind == Kind::kComment) {
        comments += blanks;
        comments += whole;
        blanks.clear();
      }
      at = line.next;
    }
    if (!comments.empty() && !EndsLine(comments.back())) AppendLineEnd(comments);
    return Replaced({found->content, found->end}, comments + put + blanks);
  }

 private:
  enum class Kind { kBlank, kComment, kSection, kKey, kOther };
  struct Range {
    std::uint32_t begin;
    std::uint32_t end;
  };
  struct Line {
    Kind kind = Kind::kBlank;
    std::uint32_t next = 0;  // start of the next line
    Range name = {};
    Range value = {};
  };
  // A section that is the first one of its name.
  struct Section {
    std::uint32_t header;
    std::uint32_t content;
    std::uint32_t end;  // position of the next header or of the text's end
  };
  // A name in the index: a section, or the first key of its name in a section. Everything else is read from the text,
  // because a file may have a million names.
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t at = kFree;  // the name's first unit
    bool IsFree() const { return at == kFree; }
  };
  struct SlotHash {
    std::uint64_t operator()(const Slot& slot) const { return WideHash(slot.hash); }
  };
  static std::uint64_t WideHash(std::uint32_t hash) { return std::uint64_t(hash) << 32; }
  static constexpr std::uint32_t kFree = 0xFFFFFFFF;
  static constexpr std::uint32_t kTop = 0xFFFFFFFF;

  static std::string_view OwnBytes(View text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(Unit)};
  }
  static bool EndsLine(Unit unit) { return unit == '\r' || unit == '\n'; }
  // The first comparison already excludes letters, which are most units.
  static bool EndsContent(Unit unit) { return unit <= '\r' && (EndsLine(unit) || unit == 0); }
  static void AppendLineEnd(String& text) {
    text += Unit('\r');
    text += Unit('\n');
  }
  static void AppendName(std::u16string& list, View name) {
    if (name.empty()) return;
    AppendWide(list, name);
    list += u'\0';
  }

  View ViewOf(Range range) const { return View(text_).substr(range.begin, range.end - range.begin); }
  std::uint32_t Length() const { return std::uint32_t(text_.size()); }

  // ---- reading lines

  Range Trimmed(Range range) const {
    while (range.begin < range.end && IsBlank(text_[range.begin])) ++range.begin;
    while (range.begin < range.end && IsBlank(text_[range.end - 1])) --range.end;
    return range;
  }

  std::uint32_t Find(Unit unit, Range range) const {
    return std::min(range.end, range.begin + std::uint32_t(std::min<std::size_t>(ViewOf(range).find(unit), kFree / 2)));
  }

  Line LineAt(std::uint32_t begin) const {
    std::uint32_t at = begin;
    while (at < Length() && !EndsContent(text_[at])) ++at;
    const Range content = Trimmed({begin, at});
    while (at < Length() && !EndsLine(text_[at])) ++at;  // text after a NUL
    if (at < Length()) at += text_[at] == '\r' && at + 1 < Length() && text_[at + 1] == '\n' ? 2 : 1;
    Line line;
    line.next = at;
    if (content.begin == content.end) return line;
    const Unit first = text_[content.begin];
    if (first == ';') {
      line.kind = Kind::kComment;
    } else if (first == '[') {
      line.kind = Kind::kSection;
      line.name = Trimmed({content.begin + 1, Find(Unit(']'), content)});
    } else if (const std::uint32_t equals = Find(Unit('='), content); equals < content.end) {
      line.kind = Kind::kKey;
      line.name = Trimmed({content.begin, equals});
      line.value = Trimmed({equals + 1, content.end});
    } else {
      line.kind = Kind::kOther;
      line.name = content;
    }
    return line;
  }

  // The start of the line whose first non-blank character is at this position.
  std::uint32_t LineBegin(std::uint32_t at) const {
    while (at > start_ && IsBlank(text_[at - 1])) --at;
    return at;
  }

  // The name of a section or key that begins at this position.
  Range NameAt(std::uint32_t at) const {
    const bool section = IsSectionAt(at);
    std::uint32_t end = at;
    while (end < Length() && !EndsContent(text_[end]) && text_[end] != Unit(section ? ']' : '=')) ++end;
    return Trimmed({at, end});
  }

  // True if the name at this position is a section's, false if it is a key's.
  bool IsSectionAt(std::uint32_t at) const {
    const std::uint32_t begin = LineBegin(at);
    return begin > start_ && text_[begin - 1] == '[';
  }

  // ---- the index

  void Index() {
    bool counts = false;  // true inside the first section of a name
    for (std::uint32_t at = start_; at < Length();) {
      const Line line = LineAt(at);
      if (line.kind == Kind::kSection) {
        if (counts) sections_.back().end = at;
        counts = Enter(line.name, kTop);
        if (counts) sections_.push_back({at, line.next, Length()});
      } else if (line.kind == Kind::kKey && counts) {
        Enter(line.name, sections_.back().content);
      }
      at = line.next;
    }
  }

  // Returns false if the name exists already.
  bool Enter(Range name, std::uint32_t parent) {
    const View text = ViewOf(name);
    const std::uint32_t hash = HashOf(text, parent);
    Slot& slot = slots_.Locate(WideHash(hash), IsOf(text, hash, parent));
    if (!slot.IsFree()) return false;
    slot = {hash, name.begin};
    if (++used_ * 3 > slots_.Slots() * 2) slots_.Resize(slots_.Slots() * 2);
    return true;
  }

  auto IsOf(View name, std::uint32_t hash, std::uint32_t parent) const {
    return [this, name, hash, parent](const Slot& slot) {
      return slot.hash == hash && ParentOf(slot) == parent && EqualWithoutCase(ViewOf(NameAt(slot.at)), name);
    };
  }

  // The content of the section that has the key; kTop for a section.
  std::uint32_t ParentOf(const Slot& slot) const { return IsSectionAt(slot.at) ? kTop : SectionOf(slot.at).content; }

  const Slot* FindSlot(View name, std::uint32_t parent) const {
    const std::uint32_t hash = HashOf(name, parent);
    const Slot& slot = slots_.Locate(WideHash(hash), IsOf(name, hash, parent));
    return slot.IsFree() ? nullptr : &slot;
  }

  const Section* FindSection(View name) const {
    const Slot* const slot = FindSlot(name, kTop);
    return slot ? &SectionOf(slot->at) : nullptr;
  }

  // The section whose header or key is at this position.
  const Section& SectionOf(std::uint32_t at) const {
    const auto next =
        std::upper_bound(sections_.begin(), sections_.end(), at,
                         [](std::uint32_t position, const Section& section) { return position < section.header; });
    return *std::prev(next);
  }

  const Slot* FindKey(const Section& section, View name) const { return FindSlot(name, section.content); }

  template <class Do>
  void ForSections(Do act) const {
    for (std::uint32_t at = start_; at < text_.size();) {
      const Line line = LineAt(at);
      if (line.kind == Kind::kSection) act(ViewOf(line.name));
      at = line.next;
    }
  }

  template <class Do>
  bool ForLines(std::u16string_view name, Do act) const {
    const Section* const section = FindSection(Encode(name, Unit()));
    if (!section) return false;
    for (std::uint32_t at = section->content; at < section->end;) {
      const Line line = LineAt(at);
      act(line);
      at = line.next;
    }
    return true;
  }

  // ---- changing

  Range AtEnd() const { return {Length(), Length()}; }

  String HeaderOf(std::u16string_view section) const {
    String header(1, Unit('['));
    header += Encode(section, Unit());
    header += Unit(']');
    AppendLineEnd(header);
    return header;
  }

  // The end of the section's last non-blank line.
  std::uint32_t LastLineEnd(const Section& section) const {
    std::uint32_t last = section.content;
    for (std::uint32_t at = section.content; at < section.end;) {
      const Line line = LineAt(at);
      if (line.kind != Kind::kBlank) last = line.next;
      at = line.next;
    }
    return last;
  }

  // Returns the file's bytes with other text in the range. If the line before has no line end, it gets one.
  std::string Replaced(Range range, const String& put) const {
    String whole;
    whole.reserve(text_.size() + put.size() + 2);
    whole.append(text_, 0, range.begin);
    if (!put.empty() && range.begin > start_ && !EndsLine(text_[range.begin - 1])) AppendLineEnd(whole);
    whole += put;
    whole.append(text_, range.end);
    if constexpr (std::is_same_v<Unit, char>)
      return whole;
    else
      return std::string(OwnBytes(whole)) + half_;
  }

  const String text_;
  const std::uint32_t start_;
  const std::string half_;
  const Room room_;
  ProbeTable<Slot, SlotHash> slots_{64};
  std::size_t used_ = 0;
  std::vector<Section> sections_;  // in file order
};

// A file in windows-1252, held as UTF-8. That code page has a character for every byte, so no byte is lost.
class WesternText final : public Profile {
 public:
  explicit WesternText(std::string bytes)
      : bytes_(std::move(bytes)),
        text_(Utf8FromWide(WideFromWestern(bytes_)), 0, std::string(), Text<char>::Room::kCharacters) {}

  bool HasBytes(std::string_view bytes) const override { return bytes == bytes_; }
  std::size_t Size() const override { return bytes_.size() + text_.Size(); }
  bool CanHold(std::u16string_view text) const override { return WesternFromWide(text).has_value(); }

  bool FindValue(std::u16string_view section, std::u16string_view key, std::u16string& value) const override {
    return text_.FindValue(section, key, value);
  }
  std::u16string SectionNames() const override { return text_.SectionNames(); }
  bool ListKeys(std::u16string_view section, std::u16string& list) const override {
    return text_.ListKeys(section, list);
  }
  bool ListLines(std::u16string_view section, std::u16string& list) const override {
    return text_.ListLines(section, list);
  }

  std::string WithValue(std::u16string_view section, std::u16string_view key,
                        std::u16string_view value) const override {
    return Encoded(text_.WithValue(section, key, value));
  }
  std::optional<std::string> WithoutKey(std::u16string_view section, std::u16string_view key) const override {
    return Encoded(text_.WithoutKey(section, key));
  }
  std::optional<std::string> WithoutSection(std::u16string_view section) const override {
    return Encoded(text_.WithoutSection(section));
  }
  std::string WithLines(std::u16string_view section, std::u16string_view lines) const override {
    return Encoded(text_.WithLines(section, lines));
  }

 private:
  static std::string Encoded(const std::string& utf8) { return WesternFromWide(WideFromUtf8(utf8)).value(); }
  static std::optional<std::string> Encoded(const std::optional<std::string>& utf8) {
    return utf8 ? std::optional(Encoded(*utf8)) : std::nullopt;
  }

  const std::string bytes_;
  const Text<char> text_;
};

// Text begins with an ASCII character, so a NUL in the first unit shows UTF-16. A file of one NUL would show it after a
// line is added.
bool IsUnmarkedUtf16(std::string_view bytes) {
  return !bytes.empty() && (bytes[0] == 0) != (bytes.size() > 1 && bytes[1] == 0);
}

}  // namespace

std::shared_ptr<const Profile> Profile::FromBytes(std::string bytes) {
  if (bytes.starts_with(kUtf32Mark) || bytes.starts_with(kOtherUtf16Mark) || IsUnmarkedUtf16(bytes)) return nullptr;
  if (bytes.starts_with(kUtf16Mark)) {
    std::u16string text(bytes.size() / 2, u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * 2);
    return std::make_shared<Text<char16_t>>(std::move(text), 1, bytes.substr(text.size() * 2),
                                            Text<char16_t>::Room::kUnits);
  }
  const std::size_t mark = bytes.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0;
  const Utf8Count count = mark == 0 ? CountUtf8(bytes) : Utf8Count();
  if (count.invalid && !count.characters) return std::make_shared<WesternText>(std::move(bytes));
  return std::make_shared<Text<char>>(std::move(bytes), mark, std::string(),
                                      count.invalid ? Text<char>::Room::kAscii : Text<char>::Room::kCharacters);
}

}  // namespace kvprofile
