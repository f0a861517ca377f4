// Automation arrays and values (platform/automation.h) as C++ arrays, lists and texts, and back.
//
// A value that is handed in stays the caller's and unchanged. Values by reference and arrays of more than one dimension
// are of a wrong type here. Nothing throws but for memory; a value is used by one thread at a time.
#pragma once

#include "framework/list.h"
#include "framework/text.h"
#include "platform/automation.h"

// The number of elements of an array of doubles; -1 for any other value.
KVSHARE_API int GetNumberOfElementsFromSafearrayDoubleVal(const VARIANT& value);
// Fills out, which has room for them all, and gives their number; -1 for a null pointer or any other value.
KVSHARE_API int UnpackFromSafearrayDoubleVal(const VARIANT& value, double* out);

// Appends each object of an array of objects that is not null, and gives how many; -1 for any other value. Each is a
// reference of the caller's own, to be ended with Release.
KVSHARE_API int UnpackIDispPointersFromSafearray(const VARIANT& value, CList<IDispatch*>& list);

// Makes value an array of the list's objects, from index 0, with references of its own: VariantClear frees it. What
// stood in value is overwritten, not freed. E_FAIL, with an empty value, for an empty list; E_OUTOFMEMORY.
KVSHARE_API HRESULT PackIDispatchPointersToVariant(const CList<IDispatch*>& list, VARIANT& value);

// The text of a value: a text itself (also one by reference), a number in decimal with up to 15 digits and a point, -1
// or 0 for a truth. Empty for anything else.
KVSHARE_API CString VARIANT2CString(const VARIANT& value);
