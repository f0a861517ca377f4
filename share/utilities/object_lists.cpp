// The operations on whole lists. Membership is looked up in a set of pointers made for the one call, so that none of
// them walks a list once for each element of another.
#include "share/utilities/object_lists.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "share/objects/object.h"
#include "share/utilities/pointer_set.h"

namespace {

void InsertAll(const CObList& list, PointerSet& set) {
  for (POSITION at = list.GetHeadPosition(); at;) set.Insert(list.GetNext(at));
}

// Where a set operation works: see the header.
CObList& TargetOf(CObList& a, CObList* result) {
  if (!result) return a;
  result->AddTail(&a);
  return *result;
}

bool IsNode(const CObject* object) { return object && object->IsKindOf(RUNTIME_CLASS(QFObject)); }

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

void FindAndAdd(CObList& target, CObList& source) {
  if (&source == &target) return;
  if (target.IsEmpty()) return target.AddTail(&source);
  PointerSet met(target.GetCount() + source.GetCount());
  InsertAll(target, met);
  for (POSITION at = source.GetHeadPosition(); at;) {
    CObject* object = source.GetNext(at);
    if (IsNode(object) && met.Insert(object)) target.AddTail(object);
  }
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

// ---- names

namespace {

// The number of the candidate that stands behind the common beginning: 1 for nothing, n for "n " as "%d " writes it; 0
// for any other text and for a number above limit.
LONGLONG CandidateNumber(std::u16string_view text, LONGLONG limit) {
  if (text.empty()) return 1;
  if (text.size() < 2 || text.back() != u' ' || text.front() == u'0') return 0;
  text.remove_suffix(1);
  LONGLONG number = 0;
  for (const char16_t digit : text) {
    if (digit < u'0' || digit > u'9') return 0;
    number = number * 10 + (digit - u'0');
    if (number > limit) return 0;
  }
  return number > 1 ? number : 0;
}

}  // namespace

void ChangeNameForCopiedFeatAndOper(CObList& list, const CString& word, const CString& name, CString& result) {
  CString candidate = name + _T(" - ") + word + _T(" ");
  // With n elements one of the first n + 1 candidates is free.
  const LONGLONG last = list.GetCount() + 1;
  std::vector<bool> taken(std::size_t(last) + 1);
  for (POSITION at = list.GetHeadPosition(); at;) {
    CObject* object = list.GetNext(at);
    if (!IsNode(object)) continue;
    const CString used = static_cast<QFObject*>(object)->Name();
    if (used.View().starts_with(candidate.View()))
      taken[std::size_t(CandidateNumber(used.View().substr(candidate.View().size()), last))] = true;
  }
  LONGLONG number = 1;
  while (taken[std::size_t(number)]) ++number;
  if (number > 1) candidate.AppendFormat(_T("%d "), number);
  result = candidate;
}
