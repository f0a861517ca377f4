// Automation values on the heap. A block stores the text's length or the array's type before the address that the
// caller gets.
#include "platform/automation.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

constexpr std::size_t kPrefixBytes = 16;  // bytes before the caller's part, a multiple of its alignment

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
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN: return sizeof(void*);
    default: return 0;
  }
}

bool IsObject(VARTYPE type) { return type == VT_DISPATCH || type == VT_UNKNOWN; }

// Allocates a block, stores the number before it and returns the address after the number; null without memory.
template <class Number>
void* NewBlock(Number number, std::size_t bytes) {
  char* const block = static_cast<char*>(std::calloc(1, kPrefixBytes + bytes));
  if (!block) return nullptr;
  std::memcpy(block, &number, sizeof number);
  return block + kPrefixBytes;
}

template <class Number>
Number StoredNumber(const void* place) {
  Number number;
  std::memcpy(&number, static_cast<const char*>(place) - kPrefixBytes, sizeof number);
  return number;
}

void FreeBlock(void* place) {
  if (place) std::free(static_cast<char*>(place) - kPrefixBytes);
}

// Copies a pointer value: a text is duplicated, an object gets a reference. Returns false without memory.
bool CopyPointer(VARTYPE type, void* const* from, void** to) {
  void* const source = *from;
  *to = source;
  if (!source) return true;
  if (IsObject(type)) static_cast<IUnknown*>(source)->AddRef();
  if (type == VT_BSTR) *to = SysAllocStringLen(static_cast<BSTR>(source), SysStringLen(static_cast<BSTR>(source)));
  return *to != nullptr;
}

void FreePointer(VARTYPE type, void* pointer) {
  if (type == VT_BSTR) SysFreeString(static_cast<BSTR>(pointer));
  if (IsObject(type) && pointer) static_cast<IUnknown*>(pointer)->Release();
}

bool HoldsPointers(VARTYPE type) { return type == VT_BSTR || IsObject(type); }

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

BSTR SysAllocString(LPCWSTR text) {
  return text ? SysAllocStringLen(text, UINT(std::u16string_view(text).size())) : nullptr;
}

BSTR SysAllocStringLen(LPCWSTR source, UINT units) {
  if (units > UINT(std::numeric_limits<int>::max())) return nullptr;
  auto* const text = static_cast<BSTR>(NewBlock(units, (std::size_t(units) + 1) * sizeof(WCHAR)));
  if (text && source) std::memcpy(text, source, units * sizeof(WCHAR));
  return text;
}

UINT SysStringLen(BSTR text) { return text ? StoredNumber<UINT>(text) : 0; }

void SysFreeString(BSTR text) { FreeBlock(text); }

// ---- values

void VariantInit(VARIANT* value) { std::memset(value, 0, sizeof *value); }

HRESULT VariantClear(VARIANT* value) {
  const VARTYPE type = value->vt & ~(VT_ARRAY | VT_BYREF);
  const bool simple = type == value->vt && (type == VT_EMPTY || type == VT_NULL);
  if (!simple && ElementBytes(type) == 0) return DISP_E_BADVARTYPE;
  if ((value->vt & VT_BYREF) == 0) {
    if (value->vt & VT_ARRAY) {
      if (value->parray) SafeArrayDestroy(value->parray);
    } else if (HoldsPointers(type)) {
      FreePointer(type, value->byref);
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
  auto* const array = cells ? static_cast<SAFEARRAY*>(NewBlock(type, sizeof(SAFEARRAY))) : nullptr;
  if (!array) {
    std::free(cells);
    return nullptr;
  }
  *array = {1, 0, bytes, 0, cells, {*bounds}};
  return array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
  if (!array) return E_INVALIDARG;
  const auto type = StoredNumber<VARTYPE>(array);
  if (HoldsPointers(type)) {
    auto* const cells = static_cast<void**>(array->pvData);
    for (ULONG i = 0; i < array->rgsabound[0].cElements; ++i) FreePointer(type, cells[i]);
  }
  std::free(array->pvData);
  FreeBlock(array);
  return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) { return array ? array->cDims : 0; }

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
  if (!array || !type) return E_INVALIDARG;
  *type = StoredNumber<VARTYPE>(array);
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
  const auto type = StoredNumber<VARTYPE>(array);
  if (HoldsPointers(type))
    return CopyPointer(type, static_cast<void**>(cell), static_cast<void**>(element)) ? S_OK : E_OUTOFMEMORY;
  std::memcpy(element, cell, array->cbElements);
  return S_OK;
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element) {
  void* cell = nullptr;
  const HRESULT found = FindCell(array, index, cell);
  if (found != S_OK) return found;
  const auto type = StoredNumber<VARTYPE>(array);
  if (!HoldsPointers(type)) {
    std::memcpy(cell, element, array->cbElements);
    return S_OK;
  }
  void* copy = nullptr;
  if (!CopyPointer(type, &element, &copy)) return E_OUTOFMEMORY;
  FreePointer(type, *static_cast<void**>(cell));
  *static_cast<void**>(cell) = copy;
  return S_OK;
}
