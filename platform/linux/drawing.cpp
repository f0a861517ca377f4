// Device contexts. Their state is here, and lines and regions are drawn here; the desktop module draws the rest.
#include "platform/drawing.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "platform/errors.h"
#include "platform/linux/drawing_objects.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/thin_line.h"
#include "platform/linux/wide_line.h"

namespace {

constexpr DWORD kBackground = PixelOf(0xFFFFFF);
constexpr LONG ERROR_INVALID_WINDOW_HANDLE = 1400;

// ---- new contexts

// The objects of a new context; all contexts share them.
struct StockObjects {
  Selected<PenObject> pen;
  Selected<BrushObject> brush;
  Selected<FontObject> font;
};

template <class Object, class... Arguments>
Selected<Object> Permanent(Arguments... arguments) {
  auto object = std::make_shared<Object>(arguments...);
  object->permanent = true;
  void* const handle = AddDrawingObject(object);
  return {handle, std::move(object)};
}

const StockObjects& Stock() {
  static const auto* const objects = new StockObjects{
      Permanent<PenObject>(PenSettings{}), Permanent<BrushObject>(kBackground), Permanent<FontObject>(std::nullopt)};
  return *objects;
}

std::shared_ptr<DeviceContext> NewContext() {
  auto context = std::make_shared<DeviceContext>();
  context->pen = Stock().pen;
  context->brush = Stock().brush;
  context->font = Stock().font;
  return context;
}

// A bitmap of one pixel, which each image context has at first. Its handle outlives the context, because it may have
// been put back into another one.
Selected<BitmapObject> OnePixel() {
  static const auto* const handle = [] {
    auto* const pixel = static_cast<DWORD*>(std::calloc(1, sizeof(DWORD)));
    return new Selected<BitmapObject>(Permanent<BitmapObject>(PixelMemory{pixel, pixel ? 1 : 0, pixel ? 1 : 0, 1}));
  }();
  return *handle;
}

bool UseBitmap(DeviceContext& context, const Selected<BitmapObject>& bitmap) {
  Desktop* const desktop = LoadedDesktop();
  auto canvas = desktop ? desktop->CanvasOnMemory(bitmap.object->pixels) : nullptr;
  if (!canvas) return FailWithStatus(ERROR_NOT_SUPPORTED);
  if (context.bitmap.object) context.bitmap.object->selected = false;
  context.canvas = std::move(canvas);
  context.bitmap = bitmap;
  context.bitmap.object->selected = !context.bitmap.object->permanent;
  if (context.clip) context.canvas->SetClip(&*context.clip);
  return true;
}

template <class Object>
HGDIOBJ Replace(Selected<Object>& place, HGDIOBJ handle, std::shared_ptr<DrawingObject> object) {
  const HGDIOBJ former = place.handle;
  place = {handle, std::static_pointer_cast<Object>(std::move(object))};
  return former;
}

// ---- outlines

// The colour between the dots; null if the background stays.
const DWORD* GapsOf(const DeviceContext& context) { return context.opaque ? &kBackground : nullptr; }

void DrawOutline(DeviceContext& context, POINT from, POINT to) {
  const PenSettings& pen = context.pen.object->settings;
  Canvas& canvas = *context.canvas;
  const PixelMemory memory = canvas.Pixels();
  const std::span<const RECT> clip = canvas.ClipRects();
  if (pen.width > 1) {
    DrawWideLine(memory, clip, from, to, pen.width, pen.pixel);
  } else if (pen.dotted) {
    DrawDottedLine(memory, clip, from, to, pen.pixel, GapsOf(context), context.dashStep);
    context.dashStep = unsigned((context.dashStep + PixelsOfLine(from, to)) % 6);
  } else {
    DrawThinLine(memory, clip, from, to, pen.pixel);
  }
  canvas.PixelsChanged();
}

void Fill(DeviceContext& context, const RegionShape& region, DWORD pixel) {
  Canvas& canvas = *context.canvas;
  const PixelMemory memory = canvas.Pixels();
  for (const RECT& allowed : canvas.ClipRects())
    for (const RECT& rect : RectsOfRegion(region, allowed))
      for (LONG y = rect.top; y < rect.bottom; ++y)
        std::fill_n(memory.first + y * memory.stride + rect.left, rect.right - rect.left, pixel);
  canvas.PixelsChanged();
}

std::u16string_view ViewOf(LPCWSTR text, int length) { return {text, std::size_t(length)}; }

}  // namespace

// ---- device contexts

HDC GetDC(HWND window) {
  Desktop* const desktop = window ? LoadedDesktop() : nullptr;
  auto canvas = desktop ? desktop->CanvasOnWindow(window) : nullptr;
  if (!canvas) {
    SetLastError(DWORD(ERROR_INVALID_WINDOW_HANDLE));
    return nullptr;
  }
  auto context = NewContext();
  context->window = window;
  context->canvas = std::move(canvas);
  return static_cast<HDC>(AddDrawingObject(std::move(context)));
}

int ReleaseDC(HWND window, HDC dc) {
  const DeviceContext* const context = FindContext(dc);
  if (!context || !context->window || context->window != window) return 0;
  return RemoveDrawingObject(dc) != nullptr;
}

HDC CreateCompatibleDC(HDC dc) {
  if (dc && !FindContext(dc)) return nullptr;
  auto context = NewContext();
  if (!UseBitmap(*context, OnePixel())) return nullptr;
  return static_cast<HDC>(AddDrawingObject(std::move(context)));
}

BOOL DeleteDC(HDC dc) {
  const DeviceContext* const context = FindContext(dc);
  return context && !context->window && RemoveDrawingObject(dc) != nullptr;
}

BOOL GdiFlush() { return TRUE; }  // each call draws at once

HGDIOBJ SelectObject(HDC dc, HGDIOBJ handle) {
  DeviceContext* const context = FindContext(dc);
  auto object = context ? FindDrawingObject(handle) : nullptr;
  if (!object) return nullptr;
  switch (object->kind) {
    case DrawingObject::Kind::kPen: return Replace(context->pen, handle, std::move(object));
    case DrawingObject::Kind::kBrush: return Replace(context->brush, handle, std::move(object));
    case DrawingObject::Kind::kFont: return Replace(context->font, handle, std::move(object));
    case DrawingObject::Kind::kBitmap: break;
    case DrawingObject::Kind::kRegion:
    case DrawingObject::Kind::kContext: SetLastError(DWORD(ERROR_INVALID_HANDLE)); return nullptr;
  }
  const Selected<BitmapObject> bitmap = {handle, std::static_pointer_cast<BitmapObject>(std::move(object))};
  const HGDIOBJ former = context->bitmap.handle;
  if (former == handle) return former;
  if (!former || bitmap.object->selected) {
    SetLastError(DWORD(ERROR_INVALID_PARAMETER));
    return nullptr;
  }
  return UseBitmap(*context, bitmap) ? former : nullptr;
}

// ---- lines and shapes

BOOL MoveToEx(HDC dc, int x, int y, POINT* former) {
  DeviceContext* const context = FindContext(dc);
  if (!context) return FALSE;
  if (former) *former = context->position;
  context->position = {x, y};
  context->dashStep = 0;
  return TRUE;
}

BOOL LineTo(HDC dc, int x, int y) {
  DeviceContext* const context = FindContext(dc);
  if (!context) return FALSE;
  DrawOutline(*context, context->position, {x, y});
  context->position = {x, y};
  return TRUE;
}

BOOL Ellipse(HDC dc, int left, int top, int right, int bottom) {
  DeviceContext* const context = FindContext(dc);
  if (!context) return FALSE;
  const RECT rect = {std::min(left, right), std::min(top, bottom), std::max(left, right), std::max(top, bottom)};
  if (rect.left == rect.right || rect.top == rect.bottom) return TRUE;
  context->canvas->DrawEllipse(rect, context->pen.object->settings, context->brush.object->pixel, GapsOf(*context));
  return TRUE;
}

BOOL Polygon(HDC dc, const POINT* points, int count) {
  DeviceContext* const context = FindContext(dc);
  if (!context) return FALSE;
  if (!points || count < 2) return FailWithStatus(ERROR_INVALID_PARAMETER);
  RegionShape shape;
  shape.points.assign(points, points + count);
  Fill(*context, shape, context->brush.object->pixel);
  const unsigned dashStep = std::exchange(context->dashStep, 0);
  for (int i = 0; i < count; ++i) DrawOutline(*context, points[i], points[i + 1 < count ? i + 1 : 0]);
  context->dashStep = dashStep;
  return TRUE;
}

BOOL FillRgn(HDC dc, HRGN region, HBRUSH brush) {
  DeviceContext* const context = FindContext(dc);
  const auto area = context ? FindDrawing<RegionObject>(region) : nullptr;
  const auto fill = area ? FindDrawing<BrushObject>(brush) : nullptr;
  if (!fill) return FailWithStatus(ERROR_INVALID_HANDLE);
  Fill(*context, area->shape, fill->pixel);
  return TRUE;
}

int SelectClipRgn(HDC dc, HRGN region) {
  DeviceContext* const context = FindContext(dc);
  if (!context) return 0;
  const auto area = region ? FindDrawing<RegionObject>(region) : nullptr;
  if (region && !area) return FailWithStatus(ERROR_INVALID_HANDLE);
  context->clip.reset();
  if (area) context->clip = RectsOfRegion(area->shape, {0, 0, kLongestSide, kLongestSide});
  context->canvas->SetClip(context->clip ? &*context->clip : nullptr);
  if (!context->clip) return SIMPLEREGION;
  return context->clip->empty() ? NULLREGION : context->clip->size() == 1 ? SIMPLEREGION : COMPLEXREGION;
}

// ---- text

int SetBkMode(HDC dc, int mode) {
  DeviceContext* const context = FindContext(dc);
  if (!context) return 0;
  if (mode != TRANSPARENT && mode != OPAQUE) return FailWithStatus(ERROR_INVALID_PARAMETER);
  return std::exchange(context->opaque, mode == OPAQUE) ? OPAQUE : TRANSPARENT;
}

COLORREF SetTextColor(HDC dc, COLORREF color) {
  DeviceContext* const context = FindContext(dc);
  return context ? std::exchange(context->textColor, color & 0xFFFFFF) : CLR_INVALID;
}

BOOL TextOutW(HDC dc, int x, int y, LPCWSTR text, int length) {
  DeviceContext* const context = FindContext(dc);
  if (!context) return FALSE;
  if (length < 0 || (!text && length > 0)) return FailWithStatus(ERROR_INVALID_PARAMETER);
  if (length == 0) return TRUE;
  const TextSettings settings = {context->font.object->Description(), PixelOf(context->textColor), GapsOf(*context)};
  return context->canvas->DrawText({x, y}, ViewOf(text, length), settings) || FailWithStatus(ERROR_NOT_SUPPORTED);
}

BOOL GetTextExtentPoint32W(HDC dc, LPCWSTR text, int length, SIZE* size) {
  DeviceContext* const context = FindContext(dc);
  if (!context) return FALSE;
  if (length < 0 || (!text && length > 0) || !size) return FailWithStatus(ERROR_INVALID_PARAMETER);
  return context->canvas->MeasureText(ViewOf(text, length), context->font.object->Description(), *size) ||
         FailWithStatus(ERROR_NOT_SUPPORTED);
}
