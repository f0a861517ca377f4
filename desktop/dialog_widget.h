// The window of one box or dialog. Lives on the thread of the QApplication.
#pragma once

#include <QDialog>
#include <functional>
#include <vector>

#include "platform/linux/dialog_view.h"

class QHBoxLayout;

class DialogWidget : public QDialog {
 public:
  // `post` receives what the user does.
  DialogWidget(const DialogState& state, QWidget* owner, std::function<void(DialogEvent)> post);
  ~DialogWidget() override;

  // Shows the state; the window appears at the first call.
  void Apply(const DialogState& state);

  // The window of that handle: a dialog of this module, or a widget of the host. Null if there is none.
  static QWidget* Find(HWND window);

  void reject() override { post_({DialogEvent::Kind::kClosed, 0}); }  // Escape

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QWidget* NewControl(const ControlState& control, std::size_t index);
  void ArrangeBox(const DialogState& state);
  QWidget* NewText(const QString& text);
  void ArrangeTemplate(const DialogState& state);
  void ApplyControl(std::size_t index, const ControlState& control);

  std::function<void(DialogEvent)> post_;
  std::vector<QWidget*> widgets_;  // by control; null for one that has no widget
  std::vector<ControlState> shown_;
  std::size_t focus_ = 0;
  const HWND handle_;
};
