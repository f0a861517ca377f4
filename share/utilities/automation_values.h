// Conversions between automation arrays and values (platform/automation.h) and C++ arrays, lists and texts.
//
// The caller owns a value that it passes; const values do not change. Values by reference and arrays of more than one
// dimension count as a wrong type. Only missing memory throws. One thread at a time uses a value.
#pragma once

#include "framework/list.h"
#include "framework/text.h"
#include "platform/automation.h"

// The number of elements of an array of doubles; -1 for any other value.
KVSHARE_API int GetNumberOfElementsFromSafearrayDoubleVal(const VARIANT& value);
// Copies the elements of an array of doubles to out, which must have room for all, and returns their number. -1 for a
// null out or any other value.
KVSHARE_API int UnpackFromSafearrayDoubleVal(const VARIANT& value, double* out);

// Appends the objects of an array of objects to the list, without nulls, and returns their number; -1 for any other
// value. The caller gets a reference to each object and must call Release.
KVSHARE_API int UnpackIDispPointersFromSafearray(const VARIANT& value, CList<IDispatch*>& list);

// Sets value to an array of the list's objects from index 0, with its own references; VariantClear frees it. The old
// content of value is overwritten without being freed. Returns S_OK; E_FAIL with an empty value for an empty list;
// E_OUTOFMEMORY.
KVSHARE_API HRESULT PackIDispatchPointersToVariant(const CList<IDispatch*>& list, VARIANT& value);

// The value as text: a text itself (also by reference), a number with up to 15 digits and a decimal point (7 digits for
// a float), -1 or 0 for a Boolean. Empty for any other value.
KVSHARE_API CString VARIANT2CString(const VARIANT& value);
