#include "platform/linux/open_view.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "platform/linux/desktop_module.h"
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

bool IsQtLoaded() {
  void* const library = dlopen("libQt6Core.so.6", RTLD_LAZY | RTLD_NOLOAD);
  if (library) dlclose(library);
  return library != nullptr;
}

std::unique_ptr<DialogView> OpenView(const DialogState& state) {
  if (auto view = OpenAnswers(state)) return view;
  // Without an X server and a host that uses Qt the module is not even loaded.
  const char* const display = std::getenv("DISPLAY");
  Desktop* const desktop = (display && *display) || IsQtLoaded() ? LoadedDesktop() : nullptr;
  if (auto view = desktop ? desktop->OpenDialog() : nullptr) return view;
  if (auto view = OpenTerminal()) return view;
  std::fputs((OneLineOf(state) + '\n').c_str(), stderr);
  return nullptr;
}
