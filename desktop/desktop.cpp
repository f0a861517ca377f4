// The entry of the module.
#include <QApplication>
#include <QThread>
#include <QWidget>

#include "desktop/canvas.h"
#include "desktop/dialog_view.h"
#include "desktop/window_canvas.h"

namespace {

class QtDesktop : public Desktop {
 public:
  std::unique_ptr<Canvas> CanvasOnMemory(const PixelMemory& memory) override {
    if (!memory.first) return nullptr;
    return std::make_unique<MemoryCanvas>(memory);
  }

  std::unique_ptr<Canvas> CanvasOnWindow(HWND window) override {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return nullptr;
    if (QThread::currentThread() != QCoreApplication::instance()->thread()) return nullptr;
    QWidget* const widget = QWidget::find(reinterpret_cast<WId>(window));
    return widget ? std::make_unique<WindowCanvas>(*widget) : nullptr;
  }

  std::unique_ptr<DialogView> OpenDialog() override { return OpenDialogWindow(); }
  bool EnableHostWindow(HWND window, bool enable) override { return ::EnableHostWindow(window, enable); }
  void ShowWaitCursor(bool wait) override { ::ShowWaitCursor(wait); }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) Desktop* KVDesktop0() {
  static auto* const desktop = new QtDesktop;
  return desktop;
}
