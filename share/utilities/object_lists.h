// Operations on whole lists and arrays of objects: deleting, searching, sorting, set operations, names for copies.
//
// Elements are compared as pointers, and null is an element like any other unless an operation says otherwise. Lists
// and arrays own nothing by themselves: only the operations named Delete delete objects. A list may be given twice to
// one call. The time of a call grows with the number of elements, that of CObList_Sort as n log n. One list is used by
// one thread at a time.
#pragma once

#include "framework/ob_array.h"
#include "framework/ob_list.h"

// ---- deleting; an object that stands in the list twice may not be given

// Delete each element that is not null and leave the list empty. Elements go from the first on, each taken off its list
// ahead of its destructor. Give the number of elements before.
KVSHARE_API LONGLONG DeleteAllElements_CObList(CObList& list);
KVSHARE_API LONGLONG DeleteAllElements_CObArray(CObArray& array);

// Deletes each element and then the list itself, which was made by new: the caller's pointer is left dangling. Gives 1,
// or 0 for a null list.
KVSHARE_API int DeleteCObListWithCObject(CObList* list);

// ---- searching, purging, copying

// The index of the first such element, from 0; -1 if there is none.
KVSHARE_API LONGLONG GetIndexOfObject(CObList& list, CObject* object);

// Removes every null element. Gives the number removed.
KVSHARE_API LONGLONG PurgeNullNodesFromList(CObList& list);

// Replace the target's content by the source's elements in their order. Give the target's new count.
KVSHARE_API LONGLONG CObArray_To_CObList(CObArray& source, CObList& target);
KVSHARE_API LONGLONG CObList_To_CObArray(CObList& source, CObArray& target);

// ---- set operations
//
// The target is result if it is given: then a is first appended to it, and what it held stays. With null, a itself is
// the target. Both give the target's count.

// Appends each element of b that is not in the target yet, so once each. Duplicates that stood in the target stay.
KVSHARE_API LONGLONG CObList_Union(CObList& a, CObList& b, CObList* result);

// Removes each element of the target that is not in b, also what the target held before.
KVSHARE_API LONGLONG CObList_Xtion(CObList& a, CObList& b, CObList* result);

// ---- sorting

// As the standard library's qsort wants it: it gets pointers to two cells that hold CObject*, and gives a negative
// number, 0 or a positive one.
using CObListCompare = int (*)(const void* left, const void* right);

// The order of equal elements is not defined. Gives 1; 0, and does nothing, for a null or empty list and without a
// comparison. If the comparison throws, the list is as it was.
KVSHARE_API int CObList_Sort(CObList* list, CObListCompare compare);
