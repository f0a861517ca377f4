// Handles of drawing objects and device contexts, and what they stand for.
#pragma once

#include <memory>
#include <optional>

#include "platform/linux/desktop_module.h"
#include "platform/linux/region_spans.h"

struct DrawingObject {
  enum class Kind { kPen, kBrush, kFont, kRegion, kBitmap, kContext };

  explicit DrawingObject(Kind its) : kind(its) {}
  virtual ~DrawingObject() = default;
  DrawingObject(const DrawingObject&) = delete;
  DrawingObject& operator=(const DrawingObject&) = delete;

  const Kind kind;
  bool permanent = false;  // DeleteObject has no effect
};

struct PenObject : DrawingObject {
  static constexpr Kind kKind = Kind::kPen;
  explicit PenObject(const PenSettings& pen) : DrawingObject(kKind), settings(pen) {}
  const PenSettings settings;
};

struct BrushObject : DrawingObject {
  static constexpr Kind kKind = Kind::kBrush;
  explicit BrushObject(DWORD color) : DrawingObject(kKind), pixel(color) {}
  const DWORD pixel;
};

// Without a description it is the default font.
struct FontObject : DrawingObject {
  static constexpr Kind kKind = Kind::kFont;
  explicit FontObject(std::optional<LOGFONTW> font) : DrawingObject(kKind), description(font) {}
  const LOGFONTW* Description() const { return description ? &*description : nullptr; }
  const std::optional<LOGFONTW> description;
};

struct RegionObject : DrawingObject {
  static constexpr Kind kKind = Kind::kRegion;
  explicit RegionObject(RegionShape its) : DrawingObject(kKind), shape(std::move(its)) {}
  const RegionShape shape;
};

struct BitmapObject : DrawingObject {
  static constexpr Kind kKind = Kind::kBitmap;
  explicit BitmapObject(const PixelMemory& memory) : DrawingObject(kKind), pixels(memory) {}
  ~BitmapObject() override;
  const PixelMemory pixels;  // owned, from calloc
  bool selected = false;
};

// A selected object: the handle that SelectObject returns later, and the object, which outlives its handle.
template <class Object>
struct Selected {
  HGDIOBJ handle = nullptr;
  std::shared_ptr<Object> object;
};

struct DeviceContext : DrawingObject {
  static constexpr Kind kKind = Kind::kContext;
  DeviceContext() : DrawingObject(kKind) {}
  ~DeviceContext() override;

  Selected<PenObject> pen;
  Selected<BrushObject> brush;
  Selected<FontObject> font;
  Selected<BitmapObject> bitmap;  // none on a window
  HWND window = nullptr;
  std::unique_ptr<Canvas> canvas;  // goes before the bitmap
  std::optional<std::vector<RECT>> clip;
  POINT position = {};
  unsigned dashStep = 0;  // pixels of the dotted line since the last MoveToEx
  bool opaque = true;
  COLORREF textColor = 0;
};

// Null if there are too many objects, with the last status set.
void* AddDrawingObject(std::shared_ptr<DrawingObject> object);
// The object, which is no longer found; null for an invalid handle.
std::shared_ptr<DrawingObject> RemoveDrawingObject(void* handle);
std::shared_ptr<DrawingObject> FindDrawingObject(void* handle);
// The context, for the thread that uses it; null, with the last status set, for another handle. It takes no lock.
DeviceContext* FindContext(HDC dc);

// The object if it has this kind.
template <class Object>
std::shared_ptr<Object> FindDrawing(void* handle) {
  auto object = FindDrawingObject(handle);
  return object && object->kind == Object::kKind ? std::static_pointer_cast<Object>(object) : nullptr;
}
