#include "framework/drawing_objects.h"

#include <mutex>
#include <unordered_map>
#include <utility>

IMPLEMENT_DYNAMIC(CGdiObject, CObject)
IMPLEMENT_DYNAMIC(CPen, CGdiObject)
IMPLEMENT_DYNAMIC(CBrush, CGdiObject)
IMPLEMENT_DYNAMIC(CRgn, CGdiObject)

namespace {

struct Holders {
  std::mutex mutex;
  std::unordered_map<HGDIOBJ, CGdiObject*> objects;
};

Holders& AllHolders() {
  static auto* const holders = new Holders;  // objects may go until the process ends
  return *holders;
}

}  // namespace

CGdiObject::~CGdiObject() { CGdiObject::DeleteObject(); }

BOOL CGdiObject::Attach(HGDIOBJ handle) {
  if (!handle || m_hObject) return FALSE;
  const std::lock_guard lock(AllHolders().mutex);
  AllHolders().objects[handle] = this;
  m_hObject = handle;
  return TRUE;
}

HGDIOBJ CGdiObject::Detach() {
  if (!m_hObject) return nullptr;
  const std::lock_guard lock(AllHolders().mutex);
  AllHolders().objects.erase(m_hObject);
  return std::exchange(m_hObject, nullptr);
}

BOOL CGdiObject::DeleteObject() {
  const HGDIOBJ handle = Detach();
  return handle && ::DeleteObject(handle);
}

CGdiObject* CGdiObject::FromHandlePermanent(HGDIOBJ handle) {
  const std::lock_guard lock(AllHolders().mutex);
  const auto found = AllHolders().objects.find(handle);
  return found == AllHolders().objects.end() ? nullptr : found->second;
}

BOOL CPen::CreatePen(int style, int width, COLORREF color) {
  return !m_hObject && Attach(::CreatePen(style, width, color));
}

BOOL CBrush::CreateSolidBrush(COLORREF color) { return !m_hObject && Attach(::CreateSolidBrush(color)); }

BOOL CRgn::CreateRectRgn(int left, int top, int right, int bottom) {
  return !m_hObject && Attach(::CreateRectRgn(left, top, right, bottom));
}

BOOL CRgn::CreatePolygonRgn(const POINT* points, int count, int mode) {
  return !m_hObject && Attach(::CreatePolygonRgn(points, count, mode));
}
