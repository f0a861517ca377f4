// Automation values: texts, values of any type and arrays of them, under the platform's names.
//
// A value, text or array belongs to one thread at a time. What a call gives belongs to the caller, who frees it with
// the call of its kind; an object pointer that comes out of an array is a reference, ended with Release.
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

// Null for a null text and when memory runs out.
KVSHARE_API BSTR SysAllocString(LPCWSTR text);
// With units from source, which may be null: then they are undefined.
KVSHARE_API BSTR SysAllocStringLen(LPCWSTR source, UINT units);
KVSHARE_API UINT SysStringLen(BSTR text);
KVSHARE_API void SysFreeString(BSTR text);

// ---- values

using VARTYPE = WORD;
using VARIANT_BOOL = std::int16_t;  // VARIANT_TRUE or VARIANT_FALSE
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

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
  VT_ARRAY = 0x2000,  // with one of the above: parray
  VT_BYREF = 0x4000,  // with one of the above: byref points to the value, which is another's
};

// An object of the host's automation interface. This library only keeps and hands on references.
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

// Makes an empty value of whatever stands there.
KVSHARE_API void VariantInit(VARIANT* value);
// Frees what the value owns and empties it. DISP_E_BADVARTYPE, with the value left alone, for a type that there is not.
KVSHARE_API HRESULT VariantClear(VARIANT* value);

// ---- arrays
//
// Elements are of one type: a number, VT_BOOL, VT_BSTR, VT_DISPATCH or VT_UNKNOWN. Dimensions count from 1, and there
// is one only. A null array is E_INVALIDARG, another dimension or an index outside the bounds DISP_E_BADINDEX.

// A new array of zeros and nulls; null for another type or number of dimensions, and when memory runs out.
KVSHARE_API SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds);
// With its texts, and ending its references.
KVSHARE_API HRESULT SafeArrayDestroy(SAFEARRAY* array);
// 0 for null.
KVSHARE_API UINT SafeArrayGetDim(SAFEARRAY* array);
KVSHARE_API HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
// The first and the last index; the last is one below the first for an array without elements.
KVSHARE_API HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
KVSHARE_API HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);
// Copies the element at the index: of a text a copy, of an object a further reference.
KVSHARE_API HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element);
// Puts in a copy. A number is handed in by its address, a text or an object itself.
KVSHARE_API HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element);

#endif
