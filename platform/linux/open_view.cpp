#include "platform/linux/open_view.h"

#include <cstdio>

#include "platform/linux/utf8.h"

namespace {

bool IsBlank(char16_t unit) { return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n'; }

// Appends the words of a text, each after one blank.
void AppendWords(std::u16string& line, std::u16string_view text) {
  for (const char16_t unit : text) {
    if (!IsBlank(unit)) line += unit < u' ' || (unit >= 0x7F && unit < 0xA0) ? u'?' : unit;
    if (IsBlank(unit) && !line.empty() && line.back() != u' ') line += u' ';
  }
  while (!line.empty() && line.back() == u' ') line.pop_back();
}

}  // namespace

std::u16string PlainLabel(std::u16string_view label) {
  std::u16string plain;
  for (std::size_t i = 0; i < label.size(); ++i) {
    if (label[i] == u'&' && i + 1 < label.size()) ++i;  // "&&" is one "&"
    plain += label[i];
  }
  return plain;
}

std::string OneLineOf(const DialogState& state) {
  std::u16string line;
  AppendWords(line, state.title);
  line += u": ";
  AppendWords(line, state.text);
  for (const ControlState& control : state.controls) {
    if (control.kind != ControlKind::kText || !control.visible || control.text.empty()) continue;
    line += u' ';
    AppendWords(line, PlainLabel(control.text));
  }
  return Utf8FromWide(line);
}

std::unique_ptr<DialogView> OpenView(const DialogState& state) {
  if (auto view = OpenAnswers(state)) return view;
  if (auto view = OpenTerminal()) return view;
  std::fputs((OneLineOf(state) + '\n').c_str(), stderr);
  return nullptr;
}
