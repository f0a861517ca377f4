// Result codes of interface calls, and the base of the interfaces.
#pragma once

#include "platform/types.h"

#ifdef _WIN32

#include <objbase.h>

#else

using HRESULT = std::int32_t;

struct GUID {
  DWORD Data1;
  WORD Data2;
  WORD Data3;
  BYTE Data4[8];
};
using CLSID = GUID;
using IID = GUID;

inline constexpr bool SUCCEEDED(HRESULT result) { return result >= 0; }
inline constexpr bool FAILED(HRESULT result) { return result < 0; }

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_POINTER = HRESULT(0x80004003);
inline constexpr HRESULT E_FAIL = HRESULT(0x80004005);
inline constexpr HRESULT E_OUTOFMEMORY = HRESULT(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = HRESULT(0x80070057);

struct IUnknown {
  // Both return the new number of references. The last Release deletes the object.
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;

 protected:
  ~IUnknown() = default;
};

#endif
