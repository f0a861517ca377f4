// A box or dialog as a question on the terminal, and its answer by a letter.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "platform/linux/open_view.h"
#include "platform/linux/utf8.h"
#include "platform/text.h"

namespace {

constexpr std::size_t kLongestAnswer = 200;  // bytes; the rest of the line is ignored

// ---- letters

bool SameLetter(char16_t a, char16_t b) { return CompareStringOrdinal(&a, 1, &b, 1, TRUE) == CSTR_EQUAL; }

bool IsLetter(char16_t unit) { return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z') || unit > 0xBF; }

// The label, and the place of its letter in it; npos for a letter that the label does not have.
struct Choice {
  std::size_t control = 0;
  std::u16string label;
  char16_t letter = 0;
  std::size_t place = std::u16string::npos;
};

bool IsTaken(const std::vector<Choice>& choices, char16_t letter) {
  return std::any_of(choices.begin(), choices.end(), [&](const Choice& row) { return SameLetter(row.letter, letter); });
}

// The place in the plain label of the letter after a "&", which "&&" does not mark; npos for none.
std::size_t MarkedPlace(std::u16string_view text) {
  std::size_t place = 0;
  for (std::size_t i = 0; i + 1 < text.size(); ++i, ++place)
    if (text[i] == u'&' && text[++i] != u'&') return place;
  return std::u16string::npos;
}

// The marked letter, else the first free one of the label, else a digit.
void GiveLetter(Choice& choice, std::size_t marked, const std::vector<Choice>& others) {
  const auto take = [&](char16_t letter, std::size_t place) {
    if (choice.letter != 0 || IsTaken(others, letter)) return;
    choice.letter = letter;
    choice.place = place;
  };
  if (marked < choice.label.size()) take(choice.label[marked], marked);
  for (std::size_t i = 0; i < choice.label.size(); ++i)
    if (IsLetter(choice.label[i])) take(choice.label[i], i);
  for (const char16_t digit : {u'1', u'2', u'3', u'4', u'5', u'6', u'7', u'8', u'9'}) take(digit, std::u16string::npos);
}

std::vector<Choice> ChoicesOf(const DialogState& state) {
  std::vector<Choice> choices;
  const auto add = [&](bool marked) {
    for (std::size_t i = 0; i < state.controls.size(); ++i) {
      const ControlState& control = state.controls[i];
      const std::size_t place = MarkedPlace(control.text);
      if (!control.IsPressable() || (place != std::u16string::npos) != marked) continue;
      Choice choice;
      choice.control = i;
      choice.label = PlainLabel(control.text);
      GiveLetter(choice, place, choices);
      choices.push_back(std::move(choice));
    }
  };
  add(true);  // marks have priority
  add(false);
  std::sort(choices.begin(), choices.end(), [](const Choice& a, const Choice& b) { return a.control < b.control; });
  return choices;
}

// ---- text

// Without the bytes that control a terminal; line ends stay.
std::string Printable(std::u16string_view text) {
  std::u16string printable(text);
  std::erase(printable, u'\r');
  for (char16_t& unit : printable)
    if ((unit < u' ' && unit != u'\n') || (unit >= 0x7F && unit < 0xA0)) unit = u' ';
  return Utf8FromWide(printable);
}

const char* ColorOf(BoxIcon icon) {
  switch (icon) {
    case BoxIcon::kStop: return "\x1b[1;31m";
    case BoxIcon::kExclamation: return "\x1b[1;33m";
    case BoxIcon::kInformation:
    case BoxIcon::kQuestion: return "\x1b[1;36m";
    case BoxIcon::kNone: break;
  }
  return "\x1b[1m";
}

bool UsesColor() {
  const char* const none = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return !(none && *none) && terminal && std::string_view(terminal) != "dumb";
}

std::string TextOf(const Choice& choice) {
  const std::u16string letter = {u'[', choice.letter, u']'};
  std::u16string text = choice.label;
  if (choice.letter == 0) return Printable(text);
  if (choice.place == text.npos) return Printable(letter + u' ' + text);
  return Printable(text.replace(choice.place, 1, letter));
}

// ---- answers

// A line from the terminal without its end; none at the end of the input.
std::optional<std::string> ReadLine() {
  std::string line;
  for (;;) {
    char byte = 0;
    const ssize_t got = read(STDIN_FILENO, &byte, 1);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return {};
    if (byte == '\n') return line;
    if (line.size() < kLongestAnswer) line += byte;
  }
}

std::u16string Trimmed(const std::string& line) {
  const std::size_t first = line.find_first_not_of(" \t\r");
  if (first == line.npos) return {};
  return WideFromUtf8(std::string_view(line).substr(first, line.find_last_not_of(" \t\r") + 1 - first));
}

class TerminalView : public DialogView {
 public:
  void Show(const DialogState& state) override {
    state_ = state;
    choices_ = ChoicesOf(state);
    Write(asked_ ? "" : Head());
    asked_ = true;
  }

  DialogEvent Wait() override {
    for (;;) {
      Write(Question());
      const auto line = ReadLine();
      if (!line) {
        Write("\n");
        return {DialogEvent::Kind::kFailed, 0};
      }
      const std::u16string answer = Trimmed(*line);
      if (answer.empty()) return IsPressable(Enter()) ? Pressed(Enter()) : DialogEvent{DialogEvent::Kind::kClosed, 0};
      for (const Choice& choice : choices_)
        if (CompareStringOrdinal(answer.data(), int(answer.size()), &choice.letter, 1, TRUE) == CSTR_EQUAL ||
            CompareStringOrdinal(answer.data(), int(answer.size()), choice.label.data(), int(choice.label.size()),
                                 TRUE) == CSTR_EQUAL)
          return Pressed(choice.control);
    }
  }

 private:
  static void Write(const std::string& text) {
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
  }

  std::string Head() const {
    const bool color = UsesColor();
    std::string head;
    if (!state_.title.empty())
      head = (color ? ColorOf(state_.icon) : "") + Printable(state_.title) + (color ? "\x1b[0m\n" : "\n");
    if (!state_.text.empty()) head += Printable(state_.text) + '\n';
    for (const ControlState& control : state_.controls)
      if (control.kind == ControlKind::kText && control.visible && !control.text.empty())
        head += Printable(PlainLabel(control.text)) + '\n';
    return head;
  }

  // The check boxes each on a line, then the buttons.
  std::string Question() const {
    std::string boxes, buttons;
    for (const Choice& choice : choices_) {
      const ControlState& control = state_.controls[choice.control];
      if (control.kind == ControlKind::kCheckBox) {
        boxes += (control.checked ? "(x) " : "( ) ") + TextOf(choice) + '\n';
      } else {
        buttons += TextOf(choice) + "  ";
      }
    }
    const std::string enter = IsPressable(Enter()) ? Printable(PlainLabel(state_.controls[Enter()].text)) : "close";
    return boxes + buttons + "Enter = " + enter + ": ";
  }

  bool IsPressable(std::size_t control) const {
    return control < state_.controls.size() && state_.controls[control].IsPressable();
  }
  // What Enter presses: the button with the focus, else the default one.
  std::size_t Enter() const {
    const bool button = IsPressable(state_.focus) && state_.controls[state_.focus].kind == ControlKind::kButton;
    return button ? state_.focus : state_.default_button;
  }
  static DialogEvent Pressed(std::size_t control) { return {DialogEvent::Kind::kPressed, control}; }

  DialogState state_;
  std::vector<Choice> choices_;
  bool asked_ = false;
};

}  // namespace

std::unique_ptr<DialogView> OpenTerminal() {
  if (!isatty(STDIN_FILENO) || !isatty(STDERR_FILENO)) return nullptr;
  return std::make_unique<TerminalView>();
}
