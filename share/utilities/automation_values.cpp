// Conversions of automation arrays and values.
#include "share/utilities/automation_values.h"

#include <limits>

namespace {

struct Bounds {
  LONG lower = 0;
  LONG upper = 0;
  LONGLONG Count() const { return LONGLONG(upper) - lower + 1; }
};

// False unless the value is an array of that type with one dimension and at most INT_MAX elements.
bool GetBounds(const VARIANT& value, VARTYPE type, Bounds& bounds) {
  if (value.vt != (VT_ARRAY | type)) return false;
  VARTYPE held = VT_EMPTY;  // the array's own type must match the value's
  return SafeArrayGetDim(value.parray) == 1 && SafeArrayGetVartype(value.parray, &held) == S_OK && held == type &&
         SafeArrayGetLBound(value.parray, 1, &bounds.lower) == S_OK &&
         SafeArrayGetUBound(value.parray, 1, &bounds.upper) == S_OK && bounds.Count() >= 0 &&
         bounds.Count() <= std::numeric_limits<int>::max();
}

template <class Number>
CString Printed(LPCTSTR format, Number number) {
  CString text;
  text.Format(format, number);
  return text;
}

CString TextOf(BSTR text) { return CString(text, int(SysStringLen(text))); }

}  // namespace

int GetNumberOfElementsFromSafearrayDoubleVal(const VARIANT& value) {
  Bounds bounds;
  return GetBounds(value, VT_R8, bounds) ? int(bounds.Count()) : -1;
}

int UnpackFromSafearrayDoubleVal(const VARIANT& value, double* out) {
  Bounds bounds;
  if (!out || !GetBounds(value, VT_R8, bounds)) return -1;
  for (LONGLONG i = 0; i < bounds.Count(); ++i) {
    LONG index = LONG(bounds.lower + i);
    if (SafeArrayGetElement(value.parray, &index, out + i) != S_OK) return -1;
  }
  return int(bounds.Count());
}

int UnpackIDispPointersFromSafearray(const VARIANT& value, CList<IDispatch*>& list) {
  Bounds bounds;
  if (!GetBounds(value, VT_DISPATCH, bounds)) return -1;
  int count = 0;
  for (LONGLONG i = 0; i < bounds.Count(); ++i) {
    LONG index = LONG(bounds.lower + i);
    IDispatch* object = nullptr;
    if (SafeArrayGetElement(value.parray, &index, &object) != S_OK) return -1;
    if (!object) continue;
    list.AddTail(object);
    ++count;
  }
  return count;
}

HRESULT PackIDispatchPointersToVariant(const CList<IDispatch*>& list, VARIANT& value) {
  VariantInit(&value);
  if (list.IsEmpty()) return E_FAIL;
  SAFEARRAYBOUND bound = {ULONG(list.GetCount()), 0};
  SAFEARRAY* const array = SafeArrayCreate(VT_DISPATCH, 1, &bound);
  if (!array) return E_OUTOFMEMORY;
  LONG index = 0;
  for (POSITION at = list.GetHeadPosition(); at; ++index) SafeArrayPutElement(array, &index, list.GetNext(at));
  value.vt = VT_ARRAY | VT_DISPATCH;
  value.parray = array;
  return S_OK;
}

CString VARIANT2CString(const VARIANT& value) {
  switch (value.vt) {
    case VT_BSTR: return TextOf(value.bstrVal);
    case VT_BYREF | VT_BSTR: return value.byref ? TextOf(*static_cast<BSTR*>(value.byref)) : CString();
    case VT_I1: return Printed(_T("%d"), int(value.cVal));
    case VT_I2:
    case VT_BOOL: return Printed(_T("%d"), value.iVal);
    case VT_I4: return Printed(_T("%d"), value.lVal);
    case VT_INT: return Printed(_T("%d"), value.intVal);
    case VT_I8: return Printed(_T("%d"), value.llVal);
    case VT_UI1: return Printed(_T("%u"), UINT(value.bVal));
    case VT_UI2: return Printed(_T("%u"), UINT(value.uiVal));
    case VT_UI4: return Printed(_T("%u"), value.ulVal);
    case VT_UINT: return Printed(_T("%u"), value.uintVal);
    case VT_UI8: return Printed(_T("%u"), value.ullVal);
    case VT_R4: return Printed(_T("%.7G"), value.fltVal);
    case VT_R8: return Printed(_T("%.15G"), value.dblVal);
    default: return {};
  }
}
