// Automation values under the platform's names: texts, values of any type, and arrays of values.
//
// One thread at a time may use a value, text or array. The caller owns every result and frees it with the matching
// call; an object pointer from an array is a reference that the caller releases.
#pragma once

#include "platform/interfaces.h"
#include "platform/types.h"

#ifdef _WIN32

#include <oleauto.h>

#else

inline constexpr HRESULT DISP_E_BADVARTYPE = HRESULT(0x80020008);
inline constexpr HRESULT DISP_E_BADINDEX = HRESULT(0x8002000B);

// ---- texts: counted, NUL-terminated; null is an empty one

using BSTR = WCHAR*;

// The text's length in units; 0 for null. The four bytes before a text hold its length in bytes.
KVSHARE_API UINT SysStringLen(BSTR text);

// ---- values

using VARTYPE = WORD;
using VARIANT_BOOL = std::int16_t;  // -1 for true, 0 for false

enum VARENUM : VARTYPE {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_BOOL = 11,
  VT_UNKNOWN = 13,
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  VT_ARRAY = 0x2000,  // combined with a type above: parray is used
  VT_BYREF = 0x4000,  // combined with a type above: byref points to the value, which the VARIANT does not own
};

// An object of the host's automation interface. This library only stores and passes on references.
struct IDispatch : IUnknown {
 protected:
  ~IDispatch() = default;
};

struct SAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
};

struct SAFEARRAY {
  WORD cDims;
  WORD fFeatures;
  ULONG cbElements;  // bytes of one element
  ULONG cLocks;
  void* pvData;
  SAFEARRAYBOUND rgsabound[1];
};

struct VARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    LONGLONG llVal;
    ULONGLONG ullVal;
    LONG lVal;
    ULONG ulVal;
    int intVal;
    UINT uintVal;
    std::int16_t iVal;
    WORD uiVal;
    signed char cVal;
    BYTE bVal;
    float fltVal;
    double dblVal;
    VARIANT_BOOL boolVal;
    BSTR bstrVal;
    IUnknown* punkVal;
    IDispatch* pdispVal;
    SAFEARRAY* parray;
    void* byref;
  };
};

// Sets the value to VT_EMPTY without freeing the old content.
KVSHARE_API void VariantInit(VARIANT* value);
// Frees the array or releases the reference that the value owns, and sets VT_EMPTY. A text is not freed: it belongs to
// the module that made it. For an unknown type returns DISP_E_BADVARTYPE and changes nothing.
KVSHARE_API HRESULT VariantClear(VARIANT* value);

// ---- arrays
// All elements have one type: a number, VT_BOOL, VT_DISPATCH or VT_UNKNOWN. Dimensions are numbered from 1, and only
// arrays with one dimension are supported. A null array gives E_INVALIDARG, another dimension or an index outside the
// bounds DISP_E_BADINDEX.

// Returns a new array whose elements are 0 or null. Null for another type or number of dimensions, or without memory.
KVSHARE_API SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds);
// The number of dimensions; 0 for null.
KVSHARE_API UINT SafeArrayGetDim(SAFEARRAY* array);
KVSHARE_API HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
// The first and the last index. An empty array has a last index one below the first.
KVSHARE_API HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
KVSHARE_API HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);
// Copies the element. An object gets another reference, which the caller releases.
KVSHARE_API HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element);
// Stores a copy; an object gets another reference. `element` is the address of a number, or the object pointer itself.
KVSHARE_API HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element);

#endif
