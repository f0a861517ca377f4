// The operations on whole lists. A set of pointers, built for each call, answers whether a list has an element, so that
// no operation walks one list for each element of another.
#include "share/utilities/object_lists.h"

#include <algorithm>
#include <cstdlib>

#include "share/utilities/pointer_set.h"

namespace {

// The target of a set operation: see the header.
CObList& TargetOf(CObList& a, CObList* result) {
  if (!result) return a;
  result->AddTail(&a);
  return *result;
}

}  // namespace

// ---- deleting

LONGLONG DeleteAllElements_CObList(CObList& list) {
  const LONGLONG count = list.GetCount();
  while (!list.IsEmpty()) delete list.RemoveHead();
  return count;
}

LONGLONG DeleteAllElements_CObArray(CObArray& array) {
  const LONGLONG count = array.GetCount();
  CObArray elements;
  elements.Copy(array);
  array.RemoveAll();
  for (LONGLONG i = 0; i < count; ++i) delete elements[i];
  return count;
}

int DeleteCObListWithCObject(CObList* list) {
  if (!list) return 0;
  DeleteAllElements_CObList(*list);
  delete list;
  return 1;
}

// ---- searching, purging, copying

LONGLONG GetIndexOfObject(CObList& list, CObject* object) {
  LONGLONG index = 0;
  for (POSITION at = list.GetHeadPosition(); at; ++index)
    if (list.GetNext(at) == object) return index;
  return -1;
}

LONGLONG PurgeNullNodesFromList(CObList& list) {
  const LONGLONG before = list.GetCount();
  for (POSITION at = list.GetHeadPosition(); at;) {
    const POSITION here = at;
    if (!list.GetNext(at)) list.RemoveAt(here);
  }
  return before - list.GetCount();
}

LONGLONG CObArray_To_CObList(CObArray& source, CObList& target) {
  target.RemoveAll();
  for (LONGLONG i = 0; i < source.GetCount(); ++i) target.AddTail(source[i]);
  return target.GetCount();
}

LONGLONG CObList_To_CObArray(CObList& source, CObArray& target) {
  target.SetSize(source.GetCount());
  LONGLONG i = 0;
  for (POSITION at = source.GetHeadPosition(); at; ++i) target.SetAt(i, source.GetNext(at));
  return target.GetCount();
}

// ---- set operations

LONGLONG CObList_Union(CObList& a, CObList& b, CObList* result) {
  CObList& target = TargetOf(a, result);
  if (&b == &target) return target.GetCount();
  PointerSet met(target.GetCount() + b.GetCount());
  InsertAll(target, met);
  for (POSITION at = b.GetHeadPosition(); at;) {
    CObject* object = b.GetNext(at);
    if (met.Insert(object)) target.AddTail(object);
  }
  return target.GetCount();
}

LONGLONG CObList_Xtion(CObList& a, CObList& b, CObList* result) {
  CObList& target = TargetOf(a, result);
  if (&b == &target) return target.GetCount();
  PointerSet wanted(b.GetCount());
  InsertAll(b, wanted);
  for (POSITION at = target.GetHeadPosition(); at;) {
    const POSITION here = at;
    if (!wanted.Contains(target.GetNext(at))) target.RemoveAt(here);
  }
  return target.GetCount();
}

// ---- sorting

int CObList_Sort(CObList* list, CObListCompare compare) {
  if (!list || list->IsEmpty() || !compare) return 0;
  CObArray cells;
  CObList_To_CObArray(*list, cells);
  std::qsort(cells.GetData(), std::size_t(cells.GetCount()), sizeof(void*), compare);
  LONGLONG i = 0;
  for (POSITION at = list->GetHeadPosition(); at; ++i) list->GetNext(at) = cells[i];
  return 1;
}
