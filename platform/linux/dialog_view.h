// What a box or dialog shows, and the interface of its presentations: a window, a terminal, a file of answers.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/windows.h"

enum class ControlKind { kText, kButton, kCheckBox, kGroup, kOther };
enum class BoxIcon { kNone, kStop, kQuestion, kExclamation, kInformation };

struct ControlState {
  int id = 0;
  ControlKind kind = ControlKind::kOther;
  std::u16string text;  // "&" marks the letter of a shortcut
  RECT place = {};      // in dialog units; empty in a box
  bool visible = true;
  bool enabled = true;
  bool checked = false;
  bool automatic = false;  // a check box that a click changes by itself
  bool tab_stop = false;

  bool IsPressable() const {
    return visible && enabled && (kind == ControlKind::kButton || kind == ControlKind::kCheckBox);
  }
  bool LooksLike(const ControlState& other) const {
    return text == other.text && visible == other.visible && enabled == other.enabled && checked == other.checked;
  }
};

struct DialogState {
  std::u16string title;
  std::u16string text;  // of a box
  std::vector<ControlState> controls;
  std::size_t focus = 0;           // index of a control
  std::size_t default_button = 0;  // the one that Enter presses when no button has the focus
  BoxIcon icon = BoxIcon::kNone;
  bool is_box = false;  // the view arranges the controls itself
  bool foreground = false;
  LONG width = 0;  // in dialog units
  LONG height = 0;
  HWND window = nullptr;  // its own handle
  HWND owner = nullptr;
};

struct DialogEvent {
  enum class Kind {
    kPressed,  // a button or a check box
    kClosed,   // Escape, or the window's close button
    kHelp,     // F1
    kFailed,   // there is nobody to answer
  };
  Kind kind = Kind::kFailed;
  std::size_t control = 0;
};

// One box or dialog on the screen, from the first Show to the destructor. The thread of the dialog calls it.
class DialogView {
 public:
  virtual ~DialogView() = default;
  // Shows the state, at first or after a change.
  virtual void Show(const DialogState& state) = 0;
  // Waits for the user.
  virtual DialogEvent Wait() = 0;
};

// The label without its shortcut's mark.
inline std::u16string PlainLabel(std::u16string_view label) {
  std::u16string plain;
  for (std::size_t i = 0; i < label.size(); ++i) {
    if (label[i] == u'&' && i + 1 < label.size()) ++i;  // "&&" is one "&"
    plain += label[i];
  }
  return plain;
}
// "Title: text" with each run of blanks and line ends as one blank, for a line of a log.
std::string OneLineOf(const DialogState& state);
