// Boxes and dialogs that exist now: their handles, hooks and modal loop.
#pragma once

#include <deque>
#include <functional>
#include <optional>

#include "platform/linux/dialog_view.h"
#include "platform/threads.h"

class DialogWindow {
 public:
  // Registers handles for the window and its controls.
  explicit DialogWindow(DialogState state);
  ~DialogWindow();
  DialogWindow(const DialogWindow&) = delete;
  DialogWindow& operator=(const DialogWindow&) = delete;

  HWND Handle() const { return handle_; }
  HWND HandleOf(std::size_t control) const { return handles_[control]; }
  // The index of the control with that number; the first of several.
  std::optional<std::size_t> Find(int id) const;

  // Shows the window until End. The event handler gets what the user does. False if no presentation is possible, or if
  // the user refused to answer.
  bool Run(const std::function<void(const DialogEvent&)>& handle);
  void End(INT_PTR result);
  bool HasEnded() const { return ended_; }
  INT_PTR Result() const { return result_; }
  void Post(UINT message, WPARAM wParam);

  DialogState state;

 private:
  void MoveFocus(bool backwards);

  HWND handle_ = nullptr;
  std::vector<HWND> handles_;
  std::deque<std::pair<UINT, WPARAM>> posted_;
  bool ended_ = false;
  INT_PTR result_ = 0;
};

// A handle's window; control is empty for the window itself. Null, with the last status set, if there is none of this
// thread.
struct FoundWindow {
  DialogWindow* window = nullptr;
  std::optional<std::size_t> control;
};
FoundWindow FindWindowOf(HWND handle);
