// Dialogs from templates: their procedure gets what the user does as messages.
#include "platform/linux/dialog_template.h"
#include "platform/linux/dialog_windows.h"
#include "platform/linux/errno_status.h"
#include "platform/windows.h"

namespace {

WPARAM ClickOf(int id) { return WPARAM(WORD(id)) | WPARAM(BN_CLICKED) << 16; }

void AskForHelp(DialogWindow& dialog, DLGPROC procedure) {
  HELPINFO help = {};
  help.cbSize = sizeof help;
  help.iContextType = HELPINFO_WINDOW;
  help.iCtrlId = dialog.state.controls[dialog.state.focus].id;
  help.hItemHandle = dialog.HandleOf(dialog.state.focus);
  procedure(dialog.Handle(), WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
}

void OnPressed(DialogWindow& dialog, DLGPROC procedure, std::size_t control) {
  ControlState& pressed = dialog.state.controls[control];
  if (pressed.automatic) pressed.checked = !pressed.checked;
  procedure(dialog.Handle(), WM_COMMAND, ClickOf(pressed.id), reinterpret_cast<LPARAM>(dialog.HandleOf(control)));
}

}  // namespace

INT_PTR DialogBoxParamW(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure, LPARAM parameter) {
  auto state = ReadDialog(module, name);
  if (!state || !procedure) {
    if (!procedure) SetLastError(DWORD(ERROR_INVALID_PARAMETER));
    return -1;
  }
  state->owner = owner;
  state->foreground = true;
  DialogWindow dialog(std::move(*state));
  procedure(dialog.Handle(), WM_INITDIALOG, reinterpret_cast<WPARAM>(dialog.HandleOf(dialog.state.focus)), parameter);
  const bool answered = dialog.Run([&](const DialogEvent& event) {
    switch (event.kind) {
      case DialogEvent::Kind::kPressed: OnPressed(dialog, procedure, event.control); break;
      case DialogEvent::Kind::kClosed: procedure(dialog.Handle(), WM_COMMAND, ClickOf(IDCANCEL), 0); break;
      case DialogEvent::Kind::kHelp: AskForHelp(dialog, procedure); break;
      case DialogEvent::Kind::kFailed: break;
    }
  });
  if (answered) return dialog.Result();
  SetLastError(DWORD(ERROR_NOT_READY));
  return -1;
}

BOOL EndDialog(HWND dialog, INT_PTR result) {
  const FoundWindow found = FindWindowOf(dialog);
  if (!found.window || found.control) return FALSE;
  found.window->End(result);
  return TRUE;
}
