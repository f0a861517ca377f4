// Reads a DLGTEMPLATEEX and its DLGITEMTEMPLATEEX records:
//
//   WORD 1, WORD 0xFFFF, DWORD help, DWORD extended style, DWORD style, WORD count, short x, y, width, height,
//   menu, class, title; with the style DS_SETFONT: WORD points, WORD weight, BYTE italic, BYTE character set, face
//   a control, at a multiple of four: DWORD help, DWORD extended style, DWORD style, short x, y, width, height, DWORD
//   id, class, title, WORD n, n bytes
//
// A name is a number (0xFFFF and a WORD) or a text with a terminator; 0 alone is the empty text.
#include "platform/linux/dialog_template.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr WORD kNumberMark = 0xFFFF;
constexpr DWORD kHasFont = 0x40, kVisible = 0x10000000, kDisabled = 0x08000000, kTabStop = 0x00010000;
constexpr WORD kButtonClass = 0x80, kStaticClass = 0x82;
constexpr DWORD kMostControls = 255;
constexpr int kLongestSide = 4000;  // dialog units

// A class or title.
struct Name {
  WORD number = 0;  // 0: a text
  std::u16string text;
};

class Reader {
 public:
  explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

  // 0 after the end, and from then on Failed.
  template <class Number>
  Number Read() {
    Number number = 0;
    if (bytes_.size() - at_ < sizeof number) {
      Fail();
    } else {
      std::memcpy(&number, bytes_.data() + at_, sizeof number);
      at_ += sizeof number;
    }
    return number;
  }
  std::u16string ReadText() {
    std::u16string text;
    for (WORD unit = Read<WORD>(); unit != 0; unit = Read<WORD>()) text += char16_t(unit);
    return text;
  }
  Name ReadName() {
    const WORD first = Read<WORD>();
    if (first == kNumberMark) return {Read<WORD>(), {}};
    if (first == 0) return {};
    return {0, char16_t(first) + ReadText()};
  }
  void Skip(std::size_t count) {
    if (bytes_.size() - at_ < count) return Fail();
    at_ += count;
  }
  void Align() { Skip((4 - at_ % 4) % 4); }
  bool Failed() const { return failed_; }

 private:
  void Fail() {
    failed_ = true;
    at_ = bytes_.size();
  }

  std::span<const std::byte> bytes_;
  std::size_t at_ = 0;
  bool failed_ = false;
};

RECT ReadPlace(Reader& reader) {
  const LONG left = reader.Read<short>(), top = reader.Read<short>();
  const LONG width = reader.Read<short>(), height = reader.Read<short>();
  return {left, top, left + std::max<LONG>(width, 0), top + std::max<LONG>(height, 0)};
}

ControlKind KindOfButton(DWORD style) {
  switch (style & 0xF) {
    case 0:
    case 1: return ControlKind::kButton;
    case 2:
    case 3: return ControlKind::kCheckBox;
    case 7: return ControlKind::kGroup;
    default: return ControlKind::kOther;
  }
}

ControlKind KindOfStatic(DWORD style) {
  const DWORD kind = style & 0x1F;  // 0 to 2: a text, left, centred or right
  return kind <= 2 ? ControlKind::kText : ControlKind::kOther;
}

ControlState ReadControl(Reader& reader, bool& is_default) {
  ControlState control;
  reader.Align();
  reader.Skip(8);
  const auto style = reader.Read<DWORD>();
  control.place = ReadPlace(reader);
  control.id = int(reader.Read<DWORD>());
  const Name kind = reader.ReadName();
  control.text = reader.ReadName().text;
  reader.Skip(reader.Read<WORD>());
  control.visible = (style & kVisible) != 0;
  control.enabled = (style & kDisabled) == 0;
  control.tab_stop = (style & kTabStop) != 0;
  if (kind.number == kButtonClass) control.kind = KindOfButton(style);
  if (kind.number == kStaticClass) control.kind = KindOfStatic(style);
  is_default = kind.number == kButtonClass && (style & 0xF) == 1;
  control.automatic = control.kind == ControlKind::kCheckBox && (style & 0xF) == 3;
  return control;
}

}  // namespace

std::optional<DialogState> ParseDialogTemplate(std::span<const std::byte> bytes) {
  Reader reader(bytes);
  if (reader.Read<WORD>() != 1 || reader.Read<WORD>() != kNumberMark) return {};
  reader.Skip(8);
  const auto style = reader.Read<DWORD>();
  const DWORD count = reader.Read<WORD>();
  const RECT place = ReadPlace(reader);
  DialogState state;
  state.width = place.right - place.left;
  state.height = place.bottom - place.top;
  reader.ReadName();
  reader.ReadName();
  state.title = reader.ReadName().text;
  if (style & kHasFont) {
    reader.Skip(6);
    reader.ReadText();
  }
  if (count > kMostControls || state.width > kLongestSide || state.height > kLongestSide) return {};
  for (DWORD i = 0; i < count && !reader.Failed(); ++i) {
    bool is_default = false;
    state.controls.push_back(ReadControl(reader, is_default));
    if (is_default) state.default_button = i;
  }
  if (reader.Failed() || state.controls.empty()) return {};
  const auto first = std::find_if(state.controls.begin(), state.controls.end(), [](const ControlState& control) {
    return control.tab_stop && control.IsPressable();
  });
  state.focus = first == state.controls.end() ? state.default_button : std::size_t(first - state.controls.begin());
  return state;
}
