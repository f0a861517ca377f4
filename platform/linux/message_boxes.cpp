// Message boxes: the controls of a box by its style, and what its buttons do.
#include <array>
#include <string_view>

#include "platform/linux/box_labels.h"
#include "platform/linux/dialog_windows.h"
#include "platform/linux/errno_status.h"
#include "platform/windows.h"

namespace {

constexpr DWORD kButtonsMask = 0xF, kIconMask = 0xF0, kDefaultMask = 0xF00;

// By the style's buttons; 0 ends a row.
constexpr std::array<std::array<int, 4>, 6> kButtons = {{{IDOK},
                                                         {IDOK, IDCANCEL},
                                                         {IDABORT, IDRETRY, IDIGNORE},
                                                         {IDYES, IDNO, IDCANCEL},
                                                         {IDYES, IDNO},
                                                         {IDRETRY, IDCANCEL}}};

BoxIcon IconOf(DWORD style) {
  switch (style & kIconMask) {
    case MB_ICONSTOP: return BoxIcon::kStop;
    case MB_ICONQUESTION: return BoxIcon::kQuestion;
    case MB_ICONEXCLAMATION: return BoxIcon::kExclamation;
    case MB_ICONINFORMATION: return BoxIcon::kInformation;
    default: return BoxIcon::kNone;
  }
}

void AddButton(DialogState& state, int id) {
  ControlState button;
  button.id = id;
  button.kind = ControlKind::kButton;
  button.text = LabelOfButton(id);
  button.tab_stop = true;
  state.controls.push_back(std::move(button));
}

DialogState StateOf(const MSGBOXPARAMSW& request) {
  DialogState state;
  state.title = request.lpszCaption ? request.lpszCaption : u"Error";  // the platform's caption for none
  state.text = request.lpszText ? request.lpszText : u"";
  state.is_box = true;
  state.icon = IconOf(request.dwStyle);
  state.foreground = (request.dwStyle & MB_SETFOREGROUND) != 0;
  state.owner = request.hwndOwner;
  for (const int id : kButtons[request.dwStyle & kButtonsMask])
    if (id != 0) AddButton(state, id);
  if (request.dwStyle & MB_HELP) AddButton(state, IDHELP);
  const std::size_t chosen = (request.dwStyle & kDefaultMask) / MB_DEFBUTTON2;
  state.focus = state.default_button = chosen < state.controls.size() ? chosen : 0;
  return state;
}

void CallHelp(const MSGBOXPARAMSW& request) {
  if (!request.lpfnMsgBoxCallback) return;
  HELPINFO help = {};
  help.cbSize = sizeof help;
  help.iContextType = HELPINFO_WINDOW;
  help.hItemHandle = request.hwndOwner;
  help.dwContextId = request.dwContextHelpId;
  request.lpfnMsgBoxCallback(&help);
}

// Escape and the close button: Cancel, or OK if nothing else can be answered.
void Close(DialogWindow& box) {
  if (box.Find(IDCANCEL)) {
    box.End(IDCANCEL);
  } else if (box.state.controls[0].id == IDOK) {
    box.End(IDOK);
  }
}

}  // namespace

int MessageBoxIndirectW(const MSGBOXPARAMSW* request) {
  if (!request || request->cbSize != sizeof *request) return FailWithStatus(ERROR_INVALID_PARAMETER);
  if ((request->dwStyle & kButtonsMask) >= kButtons.size()) return FailWithStatus(ERROR_INVALID_MSGBOX_STYLE);
  DialogWindow box(StateOf(*request));
  const bool answered = box.Run([&](const DialogEvent& event) {
    const int id = event.kind == DialogEvent::Kind::kPressed ? box.state.controls[event.control].id : 0;
    if (event.kind == DialogEvent::Kind::kClosed) {
      Close(box);
    } else if (id == IDHELP || event.kind == DialogEvent::Kind::kHelp) {
      if (request->dwStyle & MB_HELP) CallHelp(*request);
    } else {
      box.End(id);
    }
  });
  return answered ? int(box.Result()) : FailWithStatus(ERROR_NOT_READY);
}

int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style) {
  MSGBOXPARAMSW request = {};
  request.cbSize = sizeof request;
  request.hwndOwner = owner;
  request.lpszText = text;
  request.lpszCaption = caption;
  request.dwStyle = style;
  return MessageBoxIndirectW(&request);
}
