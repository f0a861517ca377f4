// The table of drawing handles, and the calls that make and delete objects.
#include "platform/linux/drawing_objects.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <mutex>

#include "platform/errors.h"
#include "platform/linux/errno_status.h"

namespace {

constexpr std::size_t kMostObjects = 10'000;  // of a process
constexpr LONGLONG kMostPixels = LONGLONG(1) << 28;
constexpr int kWidestPen = 4096;
constexpr int kMostPoints = 1 << 26;

// A handle is the number of its slot, from 1, and above it how often the slot was used before: a deleted handle stays
// invalid when its slot is used again.
struct Slot {
  std::shared_ptr<DrawingObject> object;
  std::atomic<DeviceContext*> context = nullptr;
  std::atomic<std::uintptr_t> handle = 0;  // 0: free
  std::uintptr_t uses = 0;
};

std::mutex g_mutex;
Slot g_slots[kMostObjects];
std::size_t g_begun = 0;  // slots that were ever used
std::vector<std::size_t>& FreeSlots() {
  static auto* const slots = new std::vector<std::size_t>;  // used until the process ends
  return *slots;
}

constexpr unsigned kSlotBits = 16;

Slot* SlotOf(void* handle) {
  const auto number = reinterpret_cast<std::uintptr_t>(handle);
  const std::size_t index = (number & ((1U << kSlotBits) - 1)) - 1;
  if (number == 0 || index >= kMostObjects) return nullptr;
  return g_slots[index].handle.load(std::memory_order_relaxed) == number ? &g_slots[index] : nullptr;
}

template <class Handle, class Object, class... Arguments>
Handle NewObject(Arguments&&... arguments) {
  return static_cast<Handle>(AddDrawingObject(std::make_shared<Object>(std::forward<Arguments>(arguments)...)));
}

template <class Handle>
Handle Refused(LONG status) {
  SetLastError(DWORD(status));
  return nullptr;
}

}  // namespace

BitmapObject::~BitmapObject() { std::free(pixels.first); }

DeviceContext::~DeviceContext() {
  canvas.reset();
  if (bitmap.object) bitmap.object->selected = false;
}

void* AddDrawingObject(std::shared_ptr<DrawingObject> object) {
  const std::lock_guard lock(g_mutex);
  std::size_t index = g_begun;
  if (!FreeSlots().empty()) {
    index = FreeSlots().back();
    FreeSlots().pop_back();
  } else if (g_begun == kMostObjects) {
    return Refused<void*>(ERROR_NOT_ENOUGH_MEMORY);
  } else {
    ++g_begun;
  }
  Slot& slot = g_slots[index];
  const std::uintptr_t handle = (++slot.uses << kSlotBits) | (index + 1);
  if (object->kind == DrawingObject::Kind::kContext) slot.context = static_cast<DeviceContext*>(object.get());
  slot.object = std::move(object);
  slot.handle = handle;
  return reinterpret_cast<void*>(handle);
}

std::shared_ptr<DrawingObject> RemoveDrawingObject(void* handle) {
  const std::lock_guard lock(g_mutex);
  Slot* const slot = SlotOf(handle);
  if (!slot) return Refused<DrawingObject*>(ERROR_INVALID_HANDLE), nullptr;
  slot->handle = 0;
  slot->context = nullptr;
  FreeSlots().push_back(std::size_t(slot - g_slots));
  return std::move(slot->object);
}

std::shared_ptr<DrawingObject> FindDrawingObject(void* handle) {
  const std::lock_guard lock(g_mutex);
  const Slot* const slot = SlotOf(handle);
  if (!slot) SetLastError(DWORD(ERROR_INVALID_HANDLE));
  return slot ? slot->object : nullptr;
}

DeviceContext* FindContext(HDC dc) {
  const Slot* const slot = SlotOf(dc);
  DeviceContext* const context = slot ? slot->context.load(std::memory_order_acquire) : nullptr;
  return context ? context : Refused<DeviceContext*>(ERROR_INVALID_HANDLE);
}

// ---- making and deleting

HPEN CreatePen(int style, int width, COLORREF color) {
  if (style != PS_SOLID && style != PS_DOT) return Refused<HPEN>(ERROR_NOT_SUPPORTED);
  const int pixels = std::clamp(width, 1, kWidestPen);
  return NewObject<HPEN, PenObject>(PenSettings{pixels, style == PS_DOT && pixels == 1, PixelOf(color)});
}

HBRUSH CreateSolidBrush(COLORREF color) { return NewObject<HBRUSH, BrushObject>(PixelOf(color)); }

HFONT CreateFontIndirectW(const LOGFONTW* font) {
  if (!font) return Refused<HFONT>(ERROR_INVALID_PARAMETER);
  return NewObject<HFONT, FontObject>(*font);
}

HRGN CreateRectRgn(int left, int top, int right, int bottom) {
  RegionShape shape;
  shape.rect = {std::min(left, right), std::min(top, bottom), std::max(left, right), std::max(top, bottom)};
  return NewObject<HRGN, RegionObject>(std::move(shape));
}

HRGN CreatePolygonRgn(const POINT* points, int count, int mode) {
  if (!points || count < 0 || count > kMostPoints) return Refused<HRGN>(ERROR_INVALID_PARAMETER);
  if (mode != ALTERNATE) return Refused<HRGN>(ERROR_NOT_SUPPORTED);
  RegionShape shape;
  shape.points.assign(points, points + count);
  return NewObject<HRGN, RegionObject>(std::move(shape));
}

HBITMAP CreateDIBSection(HDC, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section, DWORD) {
  if (bits) *bits = nullptr;
  if (!info) return Refused<HBITMAP>(ERROR_INVALID_PARAMETER);
  const BITMAPINFOHEADER& header = info->bmiHeader;
  const LONGLONG width = header.biWidth, height = -LONGLONG(header.biHeight);
  if (header.biSize < sizeof header || header.biPlanes != 1 || width <= 0 || height == 0)
    return Refused<HBITMAP>(ERROR_INVALID_PARAMETER);
  if (usage != DIB_RGB_COLORS || header.biBitCount != 32 || header.biCompression != BI_RGB || height < 0 || section)
    return Refused<HBITMAP>(ERROR_NOT_SUPPORTED);
  if (width > kLongestSide || height > kLongestSide || width > kMostPixels / height)
    return Refused<HBITMAP>(ERROR_NOT_ENOUGH_MEMORY);
  auto* const pixels = static_cast<DWORD*>(std::calloc(std::size_t(width * height), sizeof(DWORD)));
  if (!pixels) return Refused<HBITMAP>(ERROR_NOT_ENOUGH_MEMORY);
  const auto bitmap = NewObject<HBITMAP, BitmapObject>(PixelMemory{pixels, int(width), int(height), width});
  if (bitmap && bits) *bits = pixels;
  return bitmap;
}

BOOL DeleteObject(HGDIOBJ object) {
  const auto found = FindDrawingObject(object);
  if (!found || found->kind == DrawingObject::Kind::kContext) return FALSE;
  return found->permanent || RemoveDrawingObject(object) != nullptr;
}
