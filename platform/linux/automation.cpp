// Automation values on the heap. A block stores the array's type before the address that the caller gets.
#include "platform/automation.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr std::size_t kTypeBytes = 16;  // before an array; keeps the array aligned

// Bytes per element; 0 for a type that arrays cannot have.
ULONG ElementBytes(VARTYPE type) {
  switch (type) {
    case VT_I1:
    case VT_UI1: return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL: return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4: return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8: return 8;
    case VT_DISPATCH:
    case VT_UNKNOWN: return sizeof(void*);
    default: return 0;
  }
}

bool IsObject(VARTYPE type) { return type == VT_DISPATCH || type == VT_UNKNOWN; }

VARTYPE TypeOf(const SAFEARRAY* array) {
  VARTYPE type = VT_EMPTY;
  std::memcpy(&type, reinterpret_cast<const char*>(array) - kTypeBytes, sizeof type);
  return type;
}

// Frees an array and releases the references of its elements. Null does nothing.
void Free(SAFEARRAY* array) {
  if (!array) return;
  if (IsObject(TypeOf(array))) {
    auto* const cells = static_cast<IUnknown**>(array->pvData);
    for (ULONG i = 0; i < array->rgsabound[0].cElements; ++i)
      if (cells[i]) cells[i]->Release();
  }
  std::free(array->pvData);
  std::free(reinterpret_cast<char*>(array) - kTypeBytes);
}

// Finds the element at the index.
HRESULT FindCell(SAFEARRAY* array, const LONG* index, void*& cell) {
  if (!array || !index) return E_INVALIDARG;
  const LONGLONG at = LONGLONG(*index) - array->rgsabound[0].lLbound;
  if (at < 0 || at >= LONGLONG(array->rgsabound[0].cElements)) return DISP_E_BADINDEX;
  cell = static_cast<char*>(array->pvData) + at * array->cbElements;
  return S_OK;
}

HRESULT CheckDimension(const SAFEARRAY* array, UINT dimension) {
  if (!array) return E_INVALIDARG;
  return dimension == 1 && array->cDims == 1 ? S_OK : DISP_E_BADINDEX;
}

}  // namespace

// ---- texts

UINT SysStringLen(BSTR text) {
  std::uint32_t bytes = 0;
  if (text) std::memcpy(&bytes, reinterpret_cast<const char*>(text) - sizeof bytes, sizeof bytes);
  return UINT(bytes / sizeof(WCHAR));
}

// ---- values

void VariantInit(VARIANT* value) { std::memset(value, 0, sizeof *value); }

HRESULT VariantClear(VARIANT* value) {
  const VARTYPE type = value->vt & ~(VT_ARRAY | VT_BYREF);
  const bool simple = type == value->vt && (type == VT_EMPTY || type == VT_NULL);
  const bool text = (value->vt & VT_ARRAY) == 0 && type == VT_BSTR;
  if (!simple && !text && ElementBytes(type) == 0) return DISP_E_BADVARTYPE;
  if ((value->vt & VT_BYREF) == 0) {
    if (value->vt & VT_ARRAY) {
      Free(value->parray);
    } else if (IsObject(type) && value->punkVal) {
      value->punkVal->Release();
    }
  }
  VariantInit(value);
  return S_OK;
}

// ---- arrays

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
  const ULONG bytes = ElementBytes(type);
  if (bytes == 0 || dimensions != 1 || !bounds) return nullptr;
  const LONGLONG last = LONGLONG(bounds->lLbound) + bounds->cElements - 1;
  if (last > std::numeric_limits<LONG>::max()) return nullptr;
  void* const cells = std::calloc(std::size_t(bounds->cElements) + 1, bytes);
  char* const block = cells ? static_cast<char*>(std::calloc(1, kTypeBytes + sizeof(SAFEARRAY))) : nullptr;
  if (!block) {
    std::free(cells);
    return nullptr;
  }
  std::memcpy(block, &type, sizeof type);
  auto* const array = reinterpret_cast<SAFEARRAY*>(block + kTypeBytes);
  *array = {1, 0, bytes, 0, cells, {*bounds}};
  return array;
}

UINT SafeArrayGetDim(SAFEARRAY* array) { return array ? array->cDims : 0; }

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
  if (!array || !type) return E_INVALIDARG;
  *type = TypeOf(array);
  return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
  const HRESULT checked = CheckDimension(array, dimension);
  if (checked == S_OK) *bound = array->rgsabound[0].lLbound;
  return checked;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
  const HRESULT checked = CheckDimension(array, dimension);
  if (checked == S_OK) *bound = LONG(LONGLONG(array->rgsabound[0].lLbound) + array->rgsabound[0].cElements - 1);
  return checked;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element) {
  void* cell = nullptr;
  const HRESULT found = FindCell(array, index, cell);
  if (found != S_OK) return found;
  std::memcpy(element, cell, array->cbElements);
  auto* const object = IsObject(TypeOf(array)) ? *static_cast<IUnknown**>(element) : nullptr;
  if (object) object->AddRef();
  return S_OK;
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element) {
  void* cell = nullptr;
  const HRESULT found = FindCell(array, index, cell);
  if (found != S_OK) return found;
  if (!IsObject(TypeOf(array))) {
    std::memcpy(cell, element, array->cbElements);
    return S_OK;
  }
  auto& kept = *static_cast<IUnknown**>(cell);
  IUnknown* const before = kept;
  kept = static_cast<IUnknown*>(element);
  if (kept) kept->AddRef();
  if (before) before->Release();
  return S_OK;
}
