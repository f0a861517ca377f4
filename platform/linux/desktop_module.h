// The border between the library and libKVSHAREdesktop.so, which draws and shows dialogs with Qt. The module implements
// these classes; the library loads it and calls them. Both are built and installed together.
#pragma once

#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "platform/drawing.h"

// 0xFFRRGGBB from 0x00BBGGRR.
constexpr DWORD PixelOf(COLORREF color) {
  return 0xFF000000U | DWORD(color & 0xFF) << 16 | DWORD(color & 0xFF00) | DWORD(color >> 16 & 0xFF);
}

struct PenSettings {
  int width = 1;
  bool dotted = false;
  DWORD pixel = PixelOf(0);
};

struct TextSettings {
  const LOGFONTW* font = nullptr;  // null: the default font
  DWORD pixel = PixelOf(0);
  const DWORD* background = nullptr;  // null: not filled
};

// Of an image, in pixels: Qt's limit.
inline constexpr LONG kLongestSide = 32'767;

// The memory of an image: `stride` pixels from one row to the next.
struct PixelMemory {
  DWORD* first = nullptr;
  int width = 0;
  int height = 0;
  std::ptrdiff_t stride = 0;
};

// One character in black and white. The rows are from the bottom upwards, each begins in a new byte, the highest bit is
// the left pixel; the origin is from the lower left corner.
struct CharacterBitmap {
  int width = 0;
  int height = 0;
  int originX = 0;
  int originY = 0;
  int advance = 0;
  std::vector<BYTE> bits;
};

// Something to draw on: the image of a bitmap or of a window. Coordinates may have any value.
class Canvas {
 public:
  virtual ~Canvas() = default;

  // May change when a window's size changes; valid until the next call.
  virtual PixelMemory Pixels() = 0;
  // Where drawing is allowed: within the image, without overlaps.
  virtual std::span<const RECT> ClipRects() = 0;
  // Without overlaps, in the order of their rows and then of their columns. Null: everywhere.
  virtual void SetClip(const std::vector<RECT>* rects) = 0;
  // The memory was changed directly.
  virtual void PixelsChanged() = 0;

  // The edges are in order and not equal. `gaps`: the colour of a dotted outline's gaps; null for none.
  virtual void DrawEllipse(const RECT& rect, const PenSettings& pen, DWORD fill, const DWORD* gaps) = 0;
  // False if there are no fonts.
  virtual bool DrawText(POINT at, std::u16string_view text, const TextSettings& settings) = 0;
  virtual bool MeasureText(std::u16string_view text, const LOGFONTW* font, SIZE& size) = 0;
  virtual bool RenderCharacter(char16_t character, const LOGFONTW* font, CharacterBitmap& bitmap) = 0;
};

class DialogView;  // platform/linux/dialog_view.h

class Desktop {
 public:
  virtual ~Desktop() = default;
  // The memory must live longer than the canvas. Null on failure.
  virtual std::unique_ptr<Canvas> CanvasOnMemory(const PixelMemory& memory) = 0;
  // Null if there is no such window.
  virtual std::unique_ptr<Canvas> CanvasOnWindow(HWND window) = 0;

  // A window for a box or dialog; null if windows cannot be shown. Any thread may call these three.
  virtual std::unique_ptr<DialogView> OpenDialog() = 0;
  // True if the host's window was disabled before; false also if there is no such window.
  virtual bool EnableHostWindow(HWND window, bool enable) = 0;
  // Begins or ends the wait cursor over all windows of the application.
  virtual void ShowWaitCursor(bool wait) = 0;
};

// The module's only function, under the name kDesktopEntry: one object for the whole process, never null.
using DesktopEntry = Desktop*();
inline constexpr char kDesktopFile[] = "libKVSHAREdesktop.so";
inline constexpr char kDesktopEntry[] = "KVDesktop0";

// The module, loaded at the first call; null if it is not beside this library or can't be loaded.
Desktop* LoadedDesktop();
