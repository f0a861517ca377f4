// Operations on lists that check whether an element is a node.
#include "share/objects/node_lists.h"

#include <vector>

#include "share/objects/object.h"
#include "share/utilities/pointer_set.h"

namespace {

bool IsNode(const CObject* object) { return object && object->IsKindOf(RUNTIME_CLASS(QFObject)); }

}  // namespace

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

// ---- names

namespace {

// The number of a candidate from the text after the common beginning: 1 for an empty text, n for "n " as "%d " writes
// it; 0 for any other text and for a number above limit.
LONGLONG CandidateNumber(TextView text, LONGLONG limit) {
  if (text.empty()) return 1;
  if (text.size() < 2 || text.back() != _T(' ') || text.front() == _T('0')) return 0;
  text.remove_suffix(1);
  LONGLONG number = 0;
  for (const TCHAR digit : text) {
    if (digit < _T('0') || digit > _T('9')) return 0;
    number = number * 10 + (digit - _T('0'));
    if (number > limit) return 0;
  }
  return number > 1 ? number : 0;
}

}  // namespace

void ChangeNameForCopiedFeatAndOper(CObList& list, const CString& word, const CString& name, CString& result) {
  CString candidate = name + _T(" - ") + word + _T(" ");
  // With n elements, one of the first n + 1 candidates is free.
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
