// Operations on whole lists and arrays of objects: deleting, searching, set operations, sorting.
//
// Elements are compared as pointers. Null is an element like any other, if an operation says nothing else. Lists and
// arrays own no objects: only the operations named Delete delete objects. One call may get the same list twice. The
// time of a call is proportional to the number of elements, for CObList_Sort to n log n. One thread at a time uses a
// list.
#pragma once

#include "framework/ob_array.h"
#include "framework/ob_list.h"

// ---- deleting; a list must not have an object twice

// Delete all elements and empty the list. The list's operation starts at the first element and removes each element
// before it calls the destructor; the array's operation empties the array first. Return the previous number of
// elements, nulls included.
KVSHARE_API LONGLONG DeleteAllElements_CObList(CObList& list);
KVSHARE_API LONGLONG DeleteAllElements_CObArray(CObArray& array);

// Deletes all elements and then the list, which must have been created with new: 1. 0 for a null list.
KVSHARE_API int DeleteCObListWithCObject(CObList* list);

// ---- searching, purging, copying

// Returns the object's first index, from 0; -1 if the list does not have it.
KVSHARE_API LONGLONG GetIndexOfObject(CObList& list, CObject* object);

// Removes all null elements and returns their number.
KVSHARE_API LONGLONG PurgeNullNodesFromList(CObList& list);

// Replace the target's elements by the source's, in their order. Return the target's new count.
KVSHARE_API LONGLONG CObArray_To_CObList(CObArray& source, CObList& target);
KVSHARE_API LONGLONG CObList_To_CObArray(CObList& source, CObArray& target);

// ---- set operations
//
// The target is result, to which a is appended first; its previous elements stay. If result is null, the target is a.
// Both operations return the target's count.

// Appends each element of b that the target does not have, once. Duplicates in the target stay.
KVSHARE_API LONGLONG CObList_Union(CObList& a, CObList& b, CObList* result);

// Removes each element of the target that b does not have, also previous elements of result.
KVSHARE_API LONGLONG CObList_Xtion(CObList& a, CObList& b, CObList* result);

// ---- sorting

// A comparison for std::qsort. left and right point to CObject*; the result is negative, 0 or positive.
using CObListCompare = int (*)(const void* left, const void* right);

// Sorts the list: 1. 0 for a null or empty list or a null comparison. The order of equal elements is not defined. If
// the comparison throws, the list does not change.
KVSHARE_API int CObList_Sort(CObList* list, CObListCompare compare);
