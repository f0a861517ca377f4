// Operations on lists that depend on which elements are nodes; share/utilities/object_lists.h has those for any
// objects. One thread at a time uses a list. The order of a list says nothing about owners: the element before a node
// need not be its parent.
#pragma once

#include "framework/ob_list.h"
#include "framework/text.h"

// Appends all elements of source to an empty target. To any other target it appends only the nodes (QFObject) that the
// target does not have; it skips nulls and other objects.
KVSHARE_API void FindAndAdd(CObList& target, CObList& source);

// Sets result to a name for a copied feature or operation that no node of the list has: the first free one of
// "name - word ", "name - word 2 ", "name - word 3 " and so on, each with a blank at the end. Names are compared
// exactly; elements that are no nodes are skipped. result may be the same object as word or name.
KVSHARE_API void ChangeNameForCopiedFeatAndOper(CObList& list, const CString& word, const CString& name,
                                                CString& result);
